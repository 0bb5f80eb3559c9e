// The inventory's conversions on plain inputs: the processor's decimal
// texts, the firmware column's join, and one change-history record made
// into a row.
#include "inventory.h"
#include "text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

struct Decimal {
    const char *text;
    uint32_t value;
};

class DecimalText : public ::testing::TestWithParam<Decimal> {};

TEST_P(DecimalText, IsReadAsThousandthsOnlyWhenItHasAPoint)
{
    EXPECT_EQ(cpuVpdDecimal_parse(GetParam().text), GetParam().value) << '"' << GetParam().text << '"';
}

INSTANTIATE_TEST_SUITE_P(Texts, DecimalText,
                         ::testing::Values(Decimal{"2.10", 2100}, Decimal{"2.1", 2100}, Decimal{"2.1234", 2123},
                                           Decimal{"2100", 2100}, Decimal{"2,1", 2}, Decimal{"1.8V", 1800},
                                           Decimal{"1.35", 1350}, Decimal{"2.4", 2400}, Decimal{"3", 3}, Decimal{"", 0},
                                           Decimal{".5", 500}, Decimal{"1.2.3", 1230}, Decimal{"1.234.5", 1234},
                                           Decimal{"V1.8", 0}, Decimal{"64", 64}),
                         [](const auto &info) { return "Text" + std::to_string(info.index); });

TEST(DecimalText, NoTextIsZero)
{
    EXPECT_EQ(cpuVpdDecimal_parse(nullptr), 0u);
}

TEST(DecimalText, WrapsAsAnUnsigned32BitWordWhenTooLarge)
{
    EXPECT_EQ(cpuVpdDecimal_parse("4294967297"), 1u);
    EXPECT_EQ(cpuVpdDecimal_parse("4294968.000"), static_cast<uint32_t>(4294968000ULL));
}

TEST(ProcessorConversions, StoreOnlyWhenBitZeroOfTheFlagsIsSet)
{
    systemCPUVpdTable_entry_t row{};
    row.speed = row.voltage = row.data_width = row.cores = row.threads = -1;
    for (int flags : {0, 2}) {
        EXPECT_EQ(cpuVpdSpeed_conv(flags, &row, "2.1"), 0);
        EXPECT_EQ(cpuVpdVoltage_conv(flags, &row, "1.8V"), 0);
        EXPECT_EQ(cpuVpdDataWidth_conv(flags, &row, "64"), 0);
        EXPECT_EQ(cpuVpdCores_conv(flags, &row, "16"), 0);
        EXPECT_EQ(cpuVpdThreads_conv(flags, &row, "32"), 0);
    }
    EXPECT_EQ(row.speed, -1);
    EXPECT_EQ(row.cores, -1);
    cpuVpdSpeed_conv(1, &row, "2.1");
    cpuVpdVoltage_conv(3, &row, "1.8V");
    cpuVpdDataWidth_conv(1, &row, "64");
    cpuVpdCores_conv(1, &row, "16 cores");
    cpuVpdThreads_conv(1, &row, "32");
    EXPECT_EQ(row.speed, 2100);
    EXPECT_EQ(row.voltage, 1800);
    EXPECT_EQ(row.data_width, 64);
    EXPECT_EQ(row.cores, 16);
    EXPECT_EQ(row.threads, 32);
}

TEST(ProcessorConversions, AMissingTextIsZero)
{
    systemCPUVpdTable_entry_t row{};
    row.speed = row.voltage = row.data_width = row.cores = row.threads = -1;
    cpuVpdSpeed_conv(1, &row, nullptr);
    cpuVpdVoltage_conv(1, &row, nullptr);
    cpuVpdDataWidth_conv(1, &row, nullptr);
    cpuVpdCores_conv(1, &row, nullptr);
    cpuVpdThreads_conv(1, &row, "no digits");
    EXPECT_EQ(row.speed, 0);
    EXPECT_EQ(row.voltage, 0);
    EXPECT_EQ(row.data_width, 0);
    EXPECT_EQ(row.cores, 0);
    EXPECT_EQ(row.threads, 0);
}

TEST(JoinTexts, PutsOneBlankBetweenIdentifierAndVersion)
{
    char out[256];
    EXPECT_EQ(orv3::joinTexts(out, sizeof out, "ABC", 256, "1.20", 256), 8u);
    EXPECT_STREQ(out, "ABC 1.20");
    EXPECT_EQ(orv3::joinTexts(out, sizeof out, "ABC", 256, "", 256), 4u);
    EXPECT_STREQ(out, "ABC ");
}

TEST(JoinTexts, CutsAtTheBoundLessOne)
{
    std::string id(200, 'I'), version(200, 'V');
    char out[256];
    EXPECT_EQ(orv3::joinTexts(out, 256, id.c_str(), 256, version.c_str(), 256), 255u);
    EXPECT_EQ(std::string(out), id + " " + std::string(54, 'V'));
}

TEST(JoinTexts, ReadsEachTextNoFurtherThanItsCapacity)
{
    const char id[4] = {'A', 'B', 'C', 'D'}; // no terminator
    const char version[3] = {'1', '.', '2'}; // no terminator
    char out[16];
    EXPECT_EQ(orv3::joinTexts(out, sizeof out, id, sizeof id, version, sizeof version), 8u);
    EXPECT_STREQ(out, "ABCD 1.2");
}

class ChangeRecordRow : public ::testing::Test {
protected:
    void TearDown() override
    {
        systemComponentLevelVpdTrackingTable_clear();
        orv3::reclaimRetiredRows();
    }
    static change_history_record_t record(uint32_t category, const std::string &text1, const std::string &text2)
    {
        change_history_record_t bytes;
        memset(&bytes, 0, sizeof bytes);
        memcpy(bytes.text1, text1.data(), std::min(text1.size(), sizeof bytes.text1));
        memcpy(bytes.text2, text2.data(), std::min(text2.size(), sizeof bytes.text2));
        bytes.category = category;
        return bytes;
    }
};

TEST_F(ChangeRecordRow, TakesTheRunningIndexAndNamesTheCategory)
{
    int32_t index = 1;
    systemComponentLevelVpdTrackingTable_entry_t scratch{};
    for (uint32_t category : {0u, 1u, 7u, 2u}) {
        change_history_record_t bytes = record(category, "text one", "text two");
        arrangeSystemComponentAndCreateArow(&bytes, &scratch, &index);
    }
    EXPECT_EQ(index, 5);
    std::vector<std::string> categories;
    for (orv3_row_head_t *at = systemComponentLevelVpdTrackingTable_head; at; at = at->next) {
        auto *row = reinterpret_cast<systemComponentLevelVpdTrackingTable_entry_t *>(at);
        categories.emplace_back(row->category.text, row->category.len);
        EXPECT_EQ(std::string(row->text1.text, row->text1.len), "text one");
        EXPECT_EQ(std::string(row->text2.text, row->text2.len), "text two");
    }
    EXPECT_EQ(categories, (std::vector<std::string>{"Firmware", "Hardware", "Configuration", "Configuration"}));
}

TEST_F(ChangeRecordRow, TextsThatFillTheirFieldsAreReadNoFurther)
{
    int32_t index = 1;
    systemComponentLevelVpdTrackingTable_entry_t scratch{};
    change_history_record_t bytes = record(0x41414141, std::string(128, 'x'), std::string(64, 'y'));
    arrangeSystemComponentAndCreateArow(&bytes, &scratch, &index);
    auto *row =
        reinterpret_cast<systemComponentLevelVpdTrackingTable_entry_t *>(systemComponentLevelVpdTrackingTable_head);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(std::string(row->text1.text, row->text1.len), std::string(128, 'x'));
    EXPECT_EQ(std::string(row->text2.text, row->text2.len), std::string(64, 'y'));
    EXPECT_EQ(std::string(row->category.text, row->category.len), "Configuration");
}

TEST_F(ChangeRecordRow, CreateEntryListsACopyOfTheFilledRow)
{
    systemComponentLevelVpdTrackingTable_entry_t filled{};
    filled.head.index = 9;
    filled.text1.len = orv3::copyText(filled.text1.text, 256, "copied", 256);
    systemComponentLevelVpdTrackingTable_entry_t *listed = systemComponentLevelVpdTrackingTable_createEntry(&filled);
    ASSERT_NE(listed, nullptr);
    EXPECT_NE(listed, &filled);
    EXPECT_EQ(&listed->head, systemComponentLevelVpdTrackingTable_head);
    EXPECT_EQ(listed->head.index, 9);
    EXPECT_STREQ(listed->text1.text, "copied");
}

} // namespace

// The persistent-memory table's conversions on records built byte by byte:
// capacities as the controller shows them, and the columns each kind of
// extra data fills.
#include "persistent_memory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

std::string capacity(uint64_t bytes)
{
    char text[128];
    const int length =
        ConvertCapacity(static_cast<uint32_t>(bytes), static_cast<uint32_t>(bytes >> 32), text, sizeof text);
    EXPECT_EQ(length, static_cast<int>(strlen(text)));
    return text;
}

TEST(ConvertCapacity, PicksTheLargestUnitOfAtLeastOne)
{
    EXPECT_EQ(capacity(1073741824), "1.0 GB");
    EXPECT_EQ(capacity(1023), "1023 B");
    EXPECT_EQ(capacity(1024), "1.0 KB");
    EXPECT_EQ(capacity(1048576), "1.0 MB");
    EXPECT_EQ(capacity(0), "0 B");
    EXPECT_EQ(capacity(512), "512 B");
    EXPECT_EQ(capacity(2147483648), "2.0 GB");
    EXPECT_EQ(capacity(137438953472), "128.0 GB");
    EXPECT_EQ(capacity(uint64_t{1} << 50), "1048576.0 GB");
}

// A value that is not whole loses 0.05 in single precision before it is
// printed to a tenth, so most values are cut down rather than rounded.
TEST(ConvertCapacity, CutsToTheTenthBelowInSinglePrecision)
{
    EXPECT_EQ(capacity(1610612736), "1.5 GB") << "1.5f - 0.05f is 1.4500000477";
    EXPECT_EQ(capacity(1288490188), "1.2 GB");
    EXPECT_EQ(capacity(2136746229), "1.9 GB") << "1.99 GiB";
    EXPECT_EQ(capacity(1536), "1.5 KB");
    EXPECT_EQ(capacity(1946157056), "1.8 GB") << "1.8125 GiB";
}

TEST(ConvertCapacity, ClearsAndBoundsTheBuffer)
{
    char text[5];
    memset(text, 'x', sizeof text);
    ConvertCapacity(0, 1, text, sizeof text); // 4 GiB
    EXPECT_STREQ(text, "4.0 ");
}

inventory_db_memory_t module(uint8_t kind)
{
    inventory_db_memory_t memory;
    memset(&memory, 0, sizeof memory);
    memory.speed1 = 2666;
    memory.speed2 = 3200;
    strcpy(memory.text1, " DIMM 3 ");
    memset(memory.text7, 'Z', sizeof memory.text7); // fills its field
    memory.capacity1 = 1610612736;
    memory.count = 0x10003;
    memory.percentage = 97;
    memory.security_state = 1;
    memory.health_state = 0;
    memory.extra_kind = kind;
    return memory;
}

std::string textOf(const orv3_text256_t &column)
{
    return std::string(column.text, column.len);
}

struct ArrangedRow {
    systemAepDIMMVpdTable_entry_t row;
    explicit ArrangedRow(uint8_t kind)
    {
        memset(&row, 0, sizeof row);
        inventory_db_memory_t memory = module(kind);
        int32_t index = 4;
        EXPECT_EQ(arrangeAepDIMMDataAndCreateArow(&memory, &row, &index), 0);
        EXPECT_EQ(index, 5);
    }
    ~ArrangedRow()
    {
        systemAepDIMMVpdTable_clear();
        orv3::reclaimRetiredRows();
    }
};

TEST(PersistentMemoryRow, FillsEveryColumnFromTheRecord)
{
    ArrangedRow arranged(3);
    const auto &row = arranged.row;
    EXPECT_EQ(row.head.index, 4);
    EXPECT_EQ(textOf(row.text1), "DIMM 3");
    EXPECT_EQ(textOf(row.speed1), "2666 MHz");
    EXPECT_EQ(textOf(row.speed2), "3200 MHz");
    EXPECT_EQ(textOf(row.capacity[0]), "1.5 GB");
    EXPECT_EQ(textOf(row.capacity[1]), "0 B");
    EXPECT_EQ(textOf(row.count), "3") << "the low 16 bits";
    EXPECT_EQ(textOf(row.text7), std::string(65, 'Z'));
    EXPECT_EQ(textOf(row.percentage), "97%");
    EXPECT_EQ(textOf(row.securityState), "Unlocked");
    EXPECT_EQ(textOf(row.healthState), "Healthy");
    ASSERT_NE(systemAepDIMMVpdTable_head, nullptr);
    EXPECT_EQ(systemAepDIMMVpdTable_head->index, 4);
}

TEST(PersistentMemoryRow, EachKindFillsItsOwnExtraColumns)
{
    {
        ArrangedRow kind1(1);
        EXPECT_EQ(textOf(kind1.row.percentage), "97%");
        EXPECT_EQ(textOf(kind1.row.securityState), "");
        EXPECT_EQ(textOf(kind1.row.healthState), "Healthy");
    }
    {
        ArrangedRow kind2(2);
        EXPECT_EQ(textOf(kind2.row.percentage), "");
        EXPECT_EQ(textOf(kind2.row.securityState), "Unlocked");
        EXPECT_EQ(textOf(kind2.row.healthState), "");
    }
    {
        ArrangedRow other(4);
        EXPECT_EQ(textOf(other.row.percentage), "");
        EXPECT_EQ(textOf(other.row.securityState), "");
        EXPECT_EQ(textOf(other.row.healthState), "");
    }
}

} // namespace

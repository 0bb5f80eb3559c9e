// The simulated change-history log: the change records of the machine
// description, handed out as a malloc'ed array of 196-byte records that the
// caller frees.
#include "machine.h"
#include "unit_machine.h"

#include "orv3/change_history.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

using orv3::test::machineFileError;

using orv3::test::ServedMachine;

std::string machineWithChanges(const nlohmann::json &changes, const nlohmann::json &faults = nlohmann::json::array())
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["changeHistory"] = changes;
    machine["faults"] = faults;
    return machine.dump(2);
}

nlohmann::json change(uint32_t category, const std::string &text1, const std::string &text2)
{
    return {{"category", category}, {"text1", text1}, {"text2", text2}};
}

// The array a call hands out, freed with free as the module does.
struct Log {
    change_history_record_t *records = nullptr;
    int32_t count = 0;

    Log() { count = get_chghist_log(&records, 1); }
    ~Log() { free(records); }
    Log(const Log &) = delete;
    Log &operator=(const Log &) = delete;

    // The record's bytes, read at their offsets as a caller on the
    // controller does.
    const unsigned char *bytes(size_t i) const
    {
        return reinterpret_cast<const unsigned char *>(records) + i * CHANGE_HISTORY_RECORD_SIZE;
    }
    std::string text1(size_t i) const { return bounded(0, 128, i); }
    std::string text2(size_t i) const { return bounded(128, 64, i); }
    uint32_t category(size_t i) const
    {
        uint32_t value;
        memcpy(&value, bytes(i) + 192, sizeof value);
        return value;
    }

private:
    std::string bounded(size_t offset, size_t width, size_t i) const
    {
        const char *field = reinterpret_cast<const char *>(bytes(i) + offset);
        return std::string(field, strnlen(field, width));
    }
};

// The bytes a record of these values must have: texts from their offsets,
// zero bytes after them, the category little-endian at 192.
std::string expectedRecord(const std::string &text1, const std::string &text2, uint32_t category)
{
    std::string record(CHANGE_HISTORY_RECORD_SIZE, '\0');
    record.replace(0, text1.size(), text1);
    record.replace(128, text2.size(), text2);
    for (int i = 0; i < 4; ++i)
        record[192 + i] = static_cast<char>((category >> (8 * i)) & 0xff);
    return record;
}

std::string recordBytes(const Log &log, size_t i)
{
    return std::string(reinterpret_cast<const char *>(log.bytes(i)), CHANGE_HISTORY_RECORD_SIZE);
}

TEST(SimChangeHistory, SampleMachineHasChangesOfEveryCategory)
{
    Log log;
    ASSERT_GT(log.count, 0);
    ASSERT_NE(log.records, nullptr);
    bool firmware = false, hardware = false, configuration = false;
    for (int32_t i = 0; i < log.count; ++i) {
        uint32_t category = log.category(i);
        firmware |= category == CHANGE_HISTORY_CATEGORY_FIRMWARE;
        hardware |= category == CHANGE_HISTORY_CATEGORY_HARDWARE;
        configuration |= category != CHANGE_HISTORY_CATEGORY_FIRMWARE && category != CHANGE_HISTORY_CATEGORY_HARDWARE;
        // The sample's texts are terminated within their fields.
        EXPECT_NE(memchr(log.bytes(i), '\0', 128), nullptr) << "record " << i;
        EXPECT_NE(memchr(log.bytes(i) + 128, '\0', 64), nullptr) << "record " << i;
        EXPECT_FALSE(log.text1(i).empty()) << "record " << i;
    }
    EXPECT_TRUE(firmware);
    EXPECT_TRUE(hardware);
    EXPECT_TRUE(configuration);
}

TEST(SimChangeHistory, RecordsLieBackToBackWithTheirBytesExact)
{
    ServedMachine served(machineWithChanges(nlohmann::json::array({
        change(0, "Controller firmware updated from 4.02 to 4.12", "admin via Web"),
        change(1, "Power Supply 2 added in bay 2", "Hot-plug"),
        change(7, "Boot order changed", ""),
    })));
    Log log;
    ASSERT_EQ(log.count, 3);
    ASSERT_NE(log.records, nullptr);
    EXPECT_EQ(recordBytes(log, 0), expectedRecord("Controller firmware updated from 4.02 to 4.12", "admin via Web", 0));
    EXPECT_EQ(recordBytes(log, 1), expectedRecord("Power Supply 2 added in bay 2", "Hot-plug", 1));
    EXPECT_EQ(recordBytes(log, 2), expectedRecord("Boot order changed", "", 7));
}

TEST(SimChangeHistory, CategoryIsPassedThroughAsItIs)
{
    ServedMachine served(machineWithChanges(nlohmann::json::array({
        change(2, "a", "b"),
        change(4294967295u, "c", "d"),
    })));
    Log log;
    ASSERT_EQ(log.count, 2);
    EXPECT_EQ(log.category(0), 2u);
    EXPECT_EQ(log.category(1), 4294967295u);
    EXPECT_EQ(recordBytes(log, 1), expectedRecord("c", "d", 4294967295u));
}

TEST(SimChangeHistory, TextsDefaultToEmpty)
{
    ServedMachine served(machineWithChanges(nlohmann::json::array({{{"category", 1}}})));
    Log log;
    ASSERT_EQ(log.count, 1);
    EXPECT_EQ(recordBytes(log, 0), expectedRecord("", "", 1));
}

TEST(SimChangeHistory, TextAsLongAsItsFieldFillsItWithoutTerminator)
{
    std::string text1(128, 'x');
    std::string text2(64, 'y');
    for (size_t i = 0; i < text1.size(); ++i)
        text1[i] = static_cast<char>('a' + i % 26);
    ServedMachine served(machineWithChanges(nlohmann::json::array({
        change(0, text1, "after a full first text"),
        change(1, "before a full second text", text2),
    })));
    Log log;
    ASSERT_EQ(log.count, 2);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(log.bytes(0)), 128), text1);
    EXPECT_EQ(log.text2(0), "after a full first text") << "the second text follows at 128, intact";
    EXPECT_EQ(recordBytes(log, 0), expectedRecord(text1, "after a full first text", 0));
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(log.bytes(1)) + 128, 64), text2);
    EXPECT_EQ(log.category(1), 1u) << "the category follows at 192, intact";
    EXPECT_EQ(recordBytes(log, 1), expectedRecord("before a full second text", text2, 1));
}

TEST(SimChangeHistory, LongerTextIsCutToItsField)
{
    std::string text1(300, '1');
    std::string text2(100, '2');
    ServedMachine served(machineWithChanges(nlohmann::json::array({change(7, text1, text2), change(0, "next", "")})));
    Log log;
    ASSERT_EQ(log.count, 2);
    EXPECT_EQ(recordBytes(log, 0), expectedRecord(text1.substr(0, 128), text2.substr(0, 64), 7));
    EXPECT_EQ(recordBytes(log, 1), expectedRecord("next", "", 0)) << "the next record is intact";
}

TEST(SimChangeHistory, EmptyLogIsZeroAndNoArray)
{
    ServedMachine served(machineWithChanges(nlohmann::json::array()));
    Log log;
    EXPECT_EQ(log.count, 0);
    EXPECT_EQ(log.records, nullptr);
}

TEST(SimChangeHistory, MachineWithoutTheSectionHasAnEmptyLog)
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine.erase("changeHistory");
    ServedMachine served(machine.dump());
    Log log;
    EXPECT_EQ(log.count, 0);
    EXPECT_EQ(log.records, nullptr);
}

TEST(SimChangeHistory, EachCallHandsOutItsOwnArray)
{
    Log first;
    Log second;
    ASSERT_GT(first.count, 0);
    ASSERT_EQ(second.count, first.count);
    EXPECT_NE(first.records, second.records);
    EXPECT_EQ(memcmp(first.records, second.records, first.count * sizeof(change_history_record_t)), 0);
}

TEST(SimChangeHistory, OtherModeOrNoPointerFails)
{
    change_history_record_t *records = nullptr;
    EXPECT_EQ(get_chghist_log(&records, 0), -1);
    EXPECT_EQ(get_chghist_log(&records, 2), -1);
    EXPECT_EQ(records, nullptr);
    EXPECT_EQ(get_chghist_log(nullptr, 1), -1);
}

TEST(SimChangeHistory, FaultReturnsItsResultAndHandsOutNothing)
{
    ServedMachine served(machineWithChanges(
        nlohmann::json::array({change(0, "a", "b")}),
        nlohmann::json::array({{{"call", "get_chghist_log"}, {"result", -1}, {"times", 1}},
                               {{"call", "get_chghist_log"}, {"key", ""}, {"result", 0}, {"times", 1}}})));
    {
        Log log;
        EXPECT_EQ(log.count, -1);
        EXPECT_EQ(log.records, nullptr);
    }
    {
        Log log;
        EXPECT_EQ(log.count, 0) << "a log that reads as empty";
        EXPECT_EQ(log.records, nullptr);
    }
    Log log;
    EXPECT_EQ(log.count, 1) << "both faults were for one call";
    EXPECT_EQ(recordBytes(log, 0), expectedRecord("a", "b", 0));
}

TEST(SimChangeHistory, FaultLeavesAGivenPointerAsItWas)
{
    ServedMachine served(machineWithChanges(nlohmann::json::array({change(0, "a", "b")}),
                                            nlohmann::json::array({{{"call", "get_chghist_log"}, {"result", -4}}})));
    auto *const untouched = reinterpret_cast<change_history_record_t *>(0x1234);
    change_history_record_t *records = untouched;
    EXPECT_EQ(get_chghist_log(&records, 1), -4);
    EXPECT_EQ(records, untouched);
}

TEST(SimChangeHistory, FaultCountLargerThanTheLogGivesZeroRecordsAfterIt)
{
    ServedMachine served(
        machineWithChanges(nlohmann::json::array({change(0, "first", "1"), change(1, "second", "2")}),
                           nlohmann::json::array({{{"call", "get_chghist_log"}, {"result", -1}, {"count", 5}}})));
    Log log;
    ASSERT_EQ(log.count, 5) << "the count wins over the result";
    ASSERT_NE(log.records, nullptr);
    EXPECT_EQ(recordBytes(log, 0), expectedRecord("first", "1", 0));
    EXPECT_EQ(recordBytes(log, 1), expectedRecord("second", "2", 1));
    // Every record the count promises can be read: zero bytes after the log's own.
    for (size_t i = 2; i < 5; ++i)
        EXPECT_EQ(recordBytes(log, i), std::string(CHANGE_HISTORY_RECORD_SIZE, '\0')) << "record " << i;
}

TEST(SimChangeHistory, FaultCountSmallerThanTheLogReportsOnlyThat)
{
    ServedMachine served(machineWithChanges(
        nlohmann::json::array({change(0, "first", ""), change(1, "second", ""), change(7, "third", "")}),
        nlohmann::json::array({{{"call", "get_chghist_log"}, {"count", 1}}})));
    Log log;
    ASSERT_EQ(log.count, 1);
    ASSERT_NE(log.records, nullptr);
    EXPECT_EQ(recordBytes(log, 0), expectedRecord("first", "", 0));
}

TEST(SimChangeHistory, FaultCountOfZeroOrLessHandsOutNothing)
{
    ServedMachine served(
        machineWithChanges(nlohmann::json::array({change(0, "first", "")}),
                           nlohmann::json::array({{{"call", "get_chghist_log"}, {"count", -3}, {"times", 1}},
                                                  {{"call", "get_chghist_log"}, {"count", 0}, {"times", 1}}})));
    {
        Log log;
        EXPECT_EQ(log.count, -3);
        EXPECT_EQ(log.records, nullptr);
    }
    Log log;
    EXPECT_EQ(log.count, 0);
    EXPECT_EQ(log.records, nullptr);
}

TEST(SimChangeHistory, ArrayHandedOutOutlivesAReload)
{
    auto log = std::make_unique<Log>();
    ASSERT_GT(log->count, 0);
    std::string before = recordBytes(*log, 0);
    {
        ServedMachine served(machineWithChanges(nlohmann::json::array({change(1, "other", "")})));
        Log other;
        ASSERT_EQ(other.count, 1);
    }
    EXPECT_EQ(recordBytes(*log, 0), before) << "the caller's array is its own";
}

TEST(SimChangeHistoryDescription, ReadsChangesInOrder)
{
    auto machine = orv3::sim::parseMachine(R"({"changeHistory": [
        {"category": 0, "text1": "a", "text2": "b"},
        {"text2": "d", "category": 7},
        {"category": 4294967295}
    ]})",
                                           "m.json");
    ASSERT_EQ(machine->changeHistory.size(), 3u);
    EXPECT_EQ(machine->changeHistory[0].category, 0u);
    EXPECT_EQ(machine->changeHistory[0].text1, "a");
    EXPECT_EQ(machine->changeHistory[0].text2, "b");
    EXPECT_EQ(machine->changeHistory[1].category, 7u);
    EXPECT_EQ(machine->changeHistory[1].text1, "");
    EXPECT_EQ(machine->changeHistory[1].text2, "d");
    EXPECT_EQ(machine->changeHistory[2].category, 4294967295u);
    EXPECT_TRUE(orv3::sim::parseMachine(R"({"changeHistory": []})", "m.json")->changeHistory.empty());
    EXPECT_TRUE(orv3::sim::parseMachine(R"({})", "m.json")->changeHistory.empty());
}

TEST(SimChangeHistoryDescription, BrokenChangesAreReportedWithTheirLine)
{
    EXPECT_EQ(
        machineFileError("{\"changeHistory\": [\n{\"category\": 0, \"text1\": \"a\"},\n{\"category\": \"1\"}\n]}"),
        "m.json:3: /changeHistory/1/category: must be an integer");
    EXPECT_EQ(machineFileError("{\"changeHistory\": [\n{\"category\": 1.5}]}"),
              "m.json:2: /changeHistory/0/category: must be an integer");
    EXPECT_EQ(machineFileError("{\"changeHistory\": [\n{\"category\": -1}]}"),
              "m.json:2: /changeHistory/0/category: must be between 0 and 4294967295");
    EXPECT_EQ(machineFileError("{\"changeHistory\": [\n{\"category\": 4294967296}]}"),
              "m.json:2: /changeHistory/0/category: must be between 0 and 4294967295");
    EXPECT_EQ(machineFileError("{\"changeHistory\": [\n{\"category\": 0,\n \"text1\": 5}]}"),
              "m.json:3: /changeHistory/0/text1: must be a text");
    EXPECT_EQ(machineFileError("{\"changeHistory\": [\n{\"category\": 0,\n\n \"text2\": null}]}"),
              "m.json:4: /changeHistory/0/text2: must be a text");
    EXPECT_EQ(machineFileError("{\"changeHistory\": [\n{\"category\": 0,\n \"text3\": \"c\"}]}"),
              "m.json:3: /changeHistory/0/text3: unknown change record field (known: category, text1, text2)");
    EXPECT_EQ(machineFileError("{\"changeHistory\": [\n{\"text1\": \"a\"}]}"),
              "m.json:2: /changeHistory/0: a change record needs \"category\" (unsigned integer)");
    EXPECT_EQ(machineFileError("{\"changeHistory\": {}}"),
              "m.json:1: /changeHistory: must be an array of change records");
    EXPECT_EQ(machineFileError("{\"changeHistory\": [\n\"a\"]}"),
              "m.json:2: /changeHistory/0: a change record must be an object");
}

TEST(SimChangeHistoryDescription, FaultMayGiveACount)
{
    auto machine = orv3::sim::parseMachine(R"({"faults": [{"call": "get_chghist_log", "count": 3}]})", "m.json");
    ASSERT_EQ(machine->faults.size(), 1u);
    EXPECT_EQ(machine->faults[0].count, 3);
    EXPECT_EQ(machineFileError("{\"faults\": [\n{\"call\": \"CEM_Db_GetActiveEventList\",\n \"count\": 2}]}"),
              "m.json:3: /faults/0/count: only quel_dm_GetRowCount and get_chghist_log have a count to give");
}

} // namespace

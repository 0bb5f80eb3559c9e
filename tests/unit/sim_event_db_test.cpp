// The simulated event database: active events of the machine description,
// handed out as arrays of records owned by a handle.
#include "machine.h"
#include "unit_machine.h"

#include "orv3/event_db.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>
#include <string>

namespace {

using orv3::test::machineFileError;

using orv3::test::ServedMachine;

std::string machineWithEvents(const nlohmann::json &events, const nlohmann::json &faults = nlohmann::json::array())
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["events"] = events;
    machine["faults"] = faults;
    return machine.dump(2);
}

// Reads the two public fields the way a caller on the controller does: at
// their byte offsets in the record.
int32_t severityAt(const event_db_active_event_t *records, size_t i)
{
    const auto *bytes = reinterpret_cast<const unsigned char *>(records) + i * EVENT_DB_ACTIVE_EVENT_SIZE;
    int32_t severity;
    memcpy(&severity, bytes + 2212, sizeof severity);
    return severity;
}

const char *messageAt(const event_db_active_event_t *records, size_t i)
{
    return reinterpret_cast<const char *>(records) + i * EVENT_DB_ACTIVE_EVENT_SIZE + 4558;
}

TEST(SimEventDb, SampleMachineHasTwoWarningsAndOneError)
{
    uint16_t count = 0;
    event_db_handle_t handle = CEM_Db_GetActiveEventHandle(1, &count);
    ASSERT_NE(handle, nullptr);
    ASSERT_EQ(count, 3);
    event_db_active_event_t *records = nullptr;
    ASSERT_EQ(CEM_Db_GetActiveEventList(handle, &records), 0);
    ASSERT_NE(records, nullptr);
    EXPECT_EQ(severityAt(records, 0), EVENT_DB_SEVERITY_WARNING);
    EXPECT_EQ(severityAt(records, 1), EVENT_DB_SEVERITY_ERROR);
    EXPECT_EQ(severityAt(records, 2), EVENT_DB_SEVERITY_WARNING);
    EXPECT_STREQ(messageAt(records, 1), "Fan 3A Tach has failed.");
    EXPECT_EQ(CEM_Db_FreeActiveEventHandle(handle), 0);
}

TEST(SimEventDb, SeveritiesAndMessagesLieAtTheirOffsets)
{
    ServedMachine served(machineWithEvents(nlohmann::json::array({
        {{"severity", 3}, {"message", "Fan 3A Tach has failed."}},
        {{"severity", 7}, {"message", "Audit record."}},
        {{"severity", -2}, {"message", ""}},
    })));
    uint16_t count = 0;
    event_db_handle_t handle = CEM_Db_GetActiveEventHandle(1, &count);
    ASSERT_NE(handle, nullptr);
    ASSERT_EQ(count, 3);
    event_db_active_event_t *records = nullptr;
    ASSERT_EQ(CEM_Db_GetActiveEventList(handle, &records), 0);
    EXPECT_EQ(severityAt(records, 0), 3);
    EXPECT_STREQ(messageAt(records, 0), "Fan 3A Tach has failed.");
    EXPECT_EQ(severityAt(records, 1), 7) << "other severities are passed through";
    EXPECT_STREQ(messageAt(records, 1), "Audit record.");
    EXPECT_EQ(severityAt(records, 2), -2);
    EXPECT_STREQ(messageAt(records, 2), "");
    // Every byte other than the two fields is zero.
    const auto *bytes = reinterpret_cast<const unsigned char *>(&records[1]);
    for (size_t at = 0; at < 2212; ++at)
        ASSERT_EQ(bytes[at], 0) << "byte " << at;
    for (size_t at = 2216; at < 4558; ++at)
        ASSERT_EQ(bytes[at], 0) << "byte " << at;
    for (size_t at = 4558 + strlen("Audit record."); at < EVENT_DB_ACTIVE_EVENT_SIZE; ++at)
        ASSERT_EQ(bytes[at], 0) << "byte " << at;
    EXPECT_EQ(CEM_Db_FreeActiveEventHandle(handle), 0);
}

TEST(SimEventDb, LongMessageIsBoundedWithItsTerminatorInsideTheRecord)
{
    std::string message(2000, 'x');
    for (size_t i = 0; i < message.size(); ++i)
        message[i] = static_cast<char>('a' + i % 26);
    ServedMachine served(machineWithEvents(nlohmann::json::array({
        {{"severity", 2}, {"message", message}},
        {{"severity", 3}, {"message", "next"}},
    })));
    uint16_t count = 0;
    event_db_handle_t handle = CEM_Db_GetActiveEventHandle(1, &count);
    ASSERT_NE(handle, nullptr);
    ASSERT_EQ(count, 2);
    event_db_active_event_t *records = nullptr;
    ASSERT_EQ(CEM_Db_GetActiveEventList(handle, &records), 0);
    const size_t capacity = EVENT_DB_ACTIVE_EVENT_SIZE - 4558;
    EXPECT_EQ(capacity, 1118u);
    const char *first = messageAt(records, 0);
    EXPECT_EQ(std::string(first, capacity - 1), message.substr(0, capacity - 1));
    EXPECT_EQ(first[capacity - 1], '\0') << "the last byte of the record terminates the message";
    EXPECT_EQ(severityAt(records, 1), 3) << "the next record is intact";
    EXPECT_STREQ(messageAt(records, 1), "next");
    EXPECT_EQ(CEM_Db_FreeActiveEventHandle(handle), 0);
}

TEST(SimEventDb, NoEventsGiveAHandleWithCountZero)
{
    ServedMachine served(machineWithEvents(nlohmann::json::array()));
    uint16_t count = 99;
    event_db_handle_t handle = CEM_Db_GetActiveEventHandle(1, &count);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(count, 0);
    event_db_active_event_t *records = nullptr;
    EXPECT_EQ(CEM_Db_GetActiveEventList(handle, &records), 0);
    EXPECT_EQ(CEM_Db_FreeActiveEventHandle(handle), 0);
}

TEST(SimEventDb, MachineWithoutEventsSectionHasNone)
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine.erase("events");
    ServedMachine served(machine.dump());
    uint16_t count = 99;
    event_db_handle_t handle = CEM_Db_GetActiveEventHandle(1, &count);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(CEM_Db_FreeActiveEventHandle(handle), 0);
}

TEST(SimEventDb, FreedHandleIsUnknown)
{
    uint16_t count = 0;
    event_db_handle_t handle = CEM_Db_GetActiveEventHandle(1, &count);
    ASSERT_NE(handle, nullptr);
    ASSERT_EQ(CEM_Db_FreeActiveEventHandle(handle), 0);
    EXPECT_EQ(CEM_Db_FreeActiveEventHandle(handle), 1) << "freed twice";
    auto *const untouched = reinterpret_cast<event_db_active_event_t *>(0x1234);
    event_db_active_event_t *records = untouched;
    EXPECT_EQ(CEM_Db_GetActiveEventList(handle, &records), 1);
    EXPECT_EQ(records, untouched);
    EXPECT_EQ(CEM_Db_GetActiveEventList(nullptr, &records), 1);
    EXPECT_EQ(CEM_Db_FreeActiveEventHandle(nullptr), 1);
}

TEST(SimEventDb, EachHandleHasItsOwnArray)
{
    uint16_t count = 0;
    event_db_handle_t first = CEM_Db_GetActiveEventHandle(1, &count);
    event_db_handle_t second = CEM_Db_GetActiveEventHandle(1, &count);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    event_db_active_event_t *firstRecords = nullptr;
    event_db_active_event_t *secondRecords = nullptr;
    ASSERT_EQ(CEM_Db_GetActiveEventList(first, &firstRecords), 0);
    ASSERT_EQ(CEM_Db_FreeActiveEventHandle(first), 0);
    ASSERT_EQ(CEM_Db_GetActiveEventList(second, &secondRecords), 0);
    EXPECT_NE(firstRecords, secondRecords);
    EXPECT_STREQ(messageAt(secondRecords, 1), "Fan 3A Tach has failed.") << "freeing one leaves the other";
    EXPECT_EQ(CEM_Db_FreeActiveEventHandle(second), 0);
}

TEST(SimEventDb, MissingCountGivesNoHandle)
{
    EXPECT_EQ(CEM_Db_GetActiveEventHandle(1, nullptr), nullptr);
}

TEST(SimEventDb, HandleNeverFreedStaysWithTheDatabase)
{
    // Nothing leaks: the database owns every handle it hands out.
    uint16_t count = 0;
    EXPECT_NE(CEM_Db_GetActiveEventHandle(1, &count), nullptr);
}

TEST(SimEventDb, FaultOnTheHandleGivesNoneWhateverItsResult)
{
    ServedMachine served(
        machineWithEvents(nlohmann::json::array({{{"severity", 3}, {"message", "x"}}}),
                          nlohmann::json::array({{{"call", "CEM_Db_GetActiveEventHandle"}, {"result", 1}}})));
    uint16_t count = 42;
    EXPECT_EQ(CEM_Db_GetActiveEventHandle(1, &count), nullptr);
    EXPECT_EQ(count, 42) << "the count is left as it was";
}

TEST(SimEventDb, FaultOnTheListReturnsItsResultAndLeavesThePointer)
{
    ServedMachine served(machineWithEvents(
        nlohmann::json::array({{{"severity", 3}, {"message", "x"}}}),
        nlohmann::json::array({{{"call", "CEM_Db_GetActiveEventList"}, {"key", ""}, {"result", 6}, {"times", 1}}})));
    uint16_t count = 0;
    event_db_handle_t handle = CEM_Db_GetActiveEventHandle(1, &count);
    ASSERT_NE(handle, nullptr);
    event_db_active_event_t *records = nullptr;
    EXPECT_EQ(CEM_Db_GetActiveEventList(handle, &records), 6);
    EXPECT_EQ(records, nullptr);
    EXPECT_EQ(CEM_Db_GetActiveEventList(handle, &records), 0) << "the fault was for one call";
    EXPECT_NE(records, nullptr);
    EXPECT_EQ(CEM_Db_FreeActiveEventHandle(handle), 0);
}

TEST(SimEventDb, FaultOnFreeReturnsItsResultButReleasesTheHandle)
{
    ServedMachine served(machineWithEvents(
        nlohmann::json::array(),
        nlohmann::json::array({{{"call", "CEM_Db_FreeActiveEventHandle"}, {"result", 5}, {"times", 1}}})));
    uint16_t count = 0;
    event_db_handle_t handle = CEM_Db_GetActiveEventHandle(1, &count);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(CEM_Db_FreeActiveEventHandle(handle), 5);
    event_db_active_event_t *records = nullptr;
    EXPECT_EQ(CEM_Db_GetActiveEventList(handle, &records), 1) << "released in spite of the fault";
}

TEST(SimEventDbDescription, ReadsEventsInOrder)
{
    auto machine = orv3::sim::parseMachine(
        R"({"events": [{"severity": 2, "message": "a"}, {"message": "b", "severity": 9}]})", "m.json");
    ASSERT_EQ(machine->events.size(), 2u);
    EXPECT_EQ(machine->events[0].severity, 2);
    EXPECT_EQ(machine->events[0].message, "a");
    EXPECT_EQ(machine->events[1].severity, 9);
    EXPECT_EQ(machine->events[1].message, "b");
}

TEST(SimEventDbDescription, BrokenEventsAreReportedWithTheirLine)
{
    EXPECT_EQ(machineFileError(
                  "{\"events\": [\n{\"severity\": 2, \"message\": \"a\"},\n{\"severity\": 3, \"message\": \"b\"},\n"
                  "{\"severity\": \"3\", \"message\": \"c\"}\n]}"),
              "m.json:4: /events/2/severity: must be an integer");
    EXPECT_EQ(machineFileError("{\"events\": [\n{\"severity\": 4294967296, \"message\": \"a\"}]}"),
              "m.json:2: /events/0/severity: does not fit in 32 bits");
    EXPECT_EQ(machineFileError("{\"events\": [\n{\"severity\": 2, \"message\": 5}]}"),
              "m.json:2: /events/0/message: must be a text");
    EXPECT_EQ(machineFileError("{\"events\": [\n{\"severity\": 2}]}"),
              "m.json:2: /events/0: an event needs \"message\" (text)");
    EXPECT_EQ(machineFileError("{\"events\": [\n{\"message\": \"a\"}]}"),
              "m.json:2: /events/0: an event needs \"severity\" (integer)");
    EXPECT_EQ(machineFileError("{\"events\": [\n{\"severity\": 2, \"message\": \"a\",\n \"text\": \"b\"}]}"),
              "m.json:3: /events/0/text: unknown event field (known: severity, message)");
    EXPECT_EQ(machineFileError("{\"events\": {}}"), "m.json:1: /events: must be an array of events");
    EXPECT_EQ(machineFileError("{\"events\": [3]}"), "m.json:1: /events/0: an event must be an object");
}

} // namespace

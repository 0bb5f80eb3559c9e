// The simulated session manager: the login sessions of the machine
// description, listed by id and described into fixed records.
#include "machine.h"
#include "unit_machine.h"

#include "orv3/session_manager.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using orv3::test::machineFileError;

using orv3::test::ServedMachine;

std::string machineWithSessions(const nlohmann::json &sessions, const nlohmann::json &faults = nlohmann::json::array())
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["sessions"] = sessions;
    machine["faults"] = faults;
    return machine.dump(2);
}

nlohmann::json session(int id, const std::string &user, const std::string &access, const std::string &address,
                       bool describable = true)
{
    return {{"id", id}, {"user", user}, {"access", access}, {"address", address}, {"describable", describable}};
}

// A record full of a byte that no description gives, to see what was written.
session_manager_info_t filledRecord()
{
    session_manager_info_t info;
    memset(&info, 0x5a, sizeof info);
    return info;
}

bool untouched(const session_manager_info_t &info)
{
    session_manager_info_t before = filledRecord();
    return memcmp(&info, &before, sizeof info) == 0;
}

const char *fieldAt(const session_manager_info_t &info, size_t offset)
{
    return reinterpret_cast<const char *>(&info) + offset;
}

TEST(SimSessionManager, SampleMachineListsItsSessionsInOrder)
{
    uint32_t selector = 0;
    int32_t count = 256;
    std::vector<int32_t> ids(256, 0);
    ASSERT_EQ(sm_session_get_type_info(&selector, &count, ids.data()), 0);
    ASSERT_EQ(count, 4);
    EXPECT_EQ(std::vector<int32_t>(ids.begin(), ids.begin() + 4), (std::vector<int32_t>{3, 7, 8, 12}));
    EXPECT_EQ(ids[4], 0) << "nothing beyond the sessions is written";

    session_manager_info_t info = filledRecord();
    ASSERT_EQ(sm_session_get_info(7, &info), 1);
    EXPECT_STREQ(fieldAt(info, 0), "SSH");
    EXPECT_STREQ(fieldAt(info, 68), "operator");
    EXPECT_STREQ(fieldAt(info, 132), "2001:db8:10::25");
    info = filledRecord();
    EXPECT_EQ(sm_session_get_info(12, &info), 0) << "the IPMI session cannot be described any more";
    EXPECT_TRUE(untouched(info));
}

TEST(SimSessionManager, DescribedRecordIsZeroedBesidesItsTexts)
{
    session_manager_info_t info = filledRecord();
    ASSERT_EQ(sm_session_get_info(3, &info), 1);
    const auto *bytes = reinterpret_cast<const unsigned char *>(&info);
    for (size_t at = strlen("Web"); at < 68; ++at)
        ASSERT_EQ(bytes[at], 0) << "byte " << at;
    for (size_t at = 68 + strlen("admin"); at < 132; ++at)
        ASSERT_EQ(bytes[at], 0) << "byte " << at;
    for (size_t at = 132 + strlen("192.0.2.15"); at < SESSION_MANAGER_INFO_SIZE; ++at)
        ASSERT_EQ(bytes[at], 0) << "byte " << at;
}

TEST(SimSessionManager, CapacityLimitsTheIdsFilled)
{
    ServedMachine served(machineWithSessions(nlohmann::json::array({
        session(21, "admin", "Web", "192.0.2.15"),
        session(22, "operator", "SSH", "192.0.2.16"),
        session(23, "monitor", "Redfish", "192.0.2.17"),
    })));
    uint32_t selector = 0;
    int32_t count = 2;
    int32_t ids[3] = {-1, -1, -1};
    ASSERT_EQ(sm_session_get_type_info(&selector, &count, ids), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(ids[0], 21);
    EXPECT_EQ(ids[1], 22);
    EXPECT_EQ(ids[2], -1) << "nothing is written beyond the capacity";
}

TEST(SimSessionManager, NoSessionsFillNothing)
{
    ServedMachine served(machineWithSessions(nlohmann::json::array()));
    uint32_t selector = 0;
    int32_t count = 256;
    int32_t ids[1] = {-1};
    ASSERT_EQ(sm_session_get_type_info(&selector, &count, ids), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(ids[0], -1);
}

TEST(SimSessionManager, MissingArgumentsOrNegativeCapacityAreRefused)
{
    uint32_t selector = 0;
    int32_t count = 4;
    int32_t ids[4] = {};
    EXPECT_EQ(sm_session_get_type_info(nullptr, &count, ids), 1);
    EXPECT_EQ(sm_session_get_type_info(&selector, nullptr, ids), 1);
    EXPECT_EQ(sm_session_get_type_info(&selector, &count, nullptr), 1);
    EXPECT_EQ(count, 4);
    count = -1;
    EXPECT_EQ(sm_session_get_type_info(&selector, &count, ids), 1);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(sm_session_get_info(3, nullptr), 0);
}

TEST(SimSessionManager, UndescribableOrUnknownSessionLeavesTheRecordUntouched)
{
    ServedMachine served(machineWithSessions(nlohmann::json::array({
        session(1, "admin", "Web", "192.0.2.15"),
        session(2, "operator", "SSH", "192.0.2.16", false),
        session(3, "monitor", "Redfish", "192.0.2.17"),
    })));
    uint32_t selector = 0;
    int32_t count = 256;
    int32_t ids[256] = {};
    ASSERT_EQ(sm_session_get_type_info(&selector, &count, ids), 0);
    EXPECT_EQ(count, 3) << "an undescribable session is still listed";

    session_manager_info_t info = filledRecord();
    EXPECT_EQ(sm_session_get_info(2, &info), 0);
    EXPECT_TRUE(untouched(info));
    EXPECT_EQ(sm_session_get_info(99, &info), 0);
    EXPECT_TRUE(untouched(info));
    EXPECT_EQ(sm_session_get_info(3, &info), 1);
    EXPECT_STREQ(fieldAt(info, 68), "monitor");
}

TEST(SimSessionManager, SeventyCharacterUserNameFillsItsFieldWithoutTerminator)
{
    std::string name(70, 'u');
    for (size_t i = 0; i < name.size(); ++i)
        name[i] = static_cast<char>('a' + i % 26);
    ServedMachine served(machineWithSessions(nlohmann::json::array({session(5, name, "Web", "198.51.100.7")})));
    session_manager_info_t info = filledRecord();
    ASSERT_EQ(sm_session_get_info(5, &info), 1);
    EXPECT_EQ(std::string(fieldAt(info, 68), 64), name.substr(0, 64)) << "bytes 68..131 are the first 64 characters";
    EXPECT_STREQ(fieldAt(info, 132), "198.51.100.7") << "the address after the name is intact";
    EXPECT_STREQ(fieldAt(info, 0), "Web");
}

TEST(SimSessionManager, TextsThatFillTheirFieldsExactlyHaveNoTerminator)
{
    std::string access(68, 'A');
    std::string user(64, 'U');
    std::string address(88, '1');
    ServedMachine served(machineWithSessions(nlohmann::json::array({session(6, user, access, address)})));
    session_manager_info_t info = filledRecord();
    ASSERT_EQ(sm_session_get_info(6, &info), 1);
    EXPECT_EQ(std::string(fieldAt(info, 0), SESSION_MANAGER_INFO_SIZE), access + user + address);
}

TEST(SimSessionManager, FaultOnTheListReturnsItsResultAndFillsNothing)
{
    ServedMachine served(machineWithSessions(
        nlohmann::json::array({session(1, "admin", "Web", "192.0.2.15")}),
        nlohmann::json::array({{{"call", "sm_session_get_type_info"}, {"key", ""}, {"result", -3}}})));
    uint32_t selector = 0;
    int32_t count = 8;
    int32_t ids[8] = {};
    EXPECT_EQ(sm_session_get_type_info(&selector, &count, ids), -3);
    EXPECT_EQ(count, 8);
    EXPECT_EQ(ids[0], 0);
}

TEST(SimSessionManager, FaultKeyedByIdMakesOneSessionUndescribable)
{
    ServedMachine served(machineWithSessions(
        nlohmann::json::array({session(1, "admin", "Web", "192.0.2.15"), session(2, "operator", "SSH", "192.0.2.16")}),
        nlohmann::json::array({{{"call", "sm_session_get_info"}, {"key", "2"}, {"result", 0}}})));
    session_manager_info_t info = filledRecord();
    EXPECT_EQ(sm_session_get_info(2, &info), 0);
    EXPECT_TRUE(untouched(info));
    EXPECT_EQ(sm_session_get_info(1, &info), 1);
    EXPECT_STREQ(fieldAt(info, 68), "admin");
}

TEST(SimSessionManagerDescription, ReadsSessionsWithDescribableByDefault)
{
    auto machine = orv3::sim::parseMachine(R"({"sessions": [
        {"id": 4, "user": "admin", "access": "Web", "address": "192.0.2.15"},
        {"id": -1, "user": "", "access": "IPMI", "address": "", "describable": false}]})",
                                           "m.json");
    ASSERT_EQ(machine->sessions.size(), 2u);
    EXPECT_EQ(machine->sessions[0].id, 4);
    EXPECT_EQ(machine->sessions[0].user, "admin");
    EXPECT_EQ(machine->sessions[0].access, "Web");
    EXPECT_EQ(machine->sessions[0].address, "192.0.2.15");
    EXPECT_TRUE(machine->sessions[0].describable);
    EXPECT_EQ(machine->sessions[1].id, -1);
    EXPECT_FALSE(machine->sessions[1].describable);
}

TEST(SimSessionManagerDescription, BrokenSessionsAreReportedWithTheirLine)
{
    const std::string fields = R"("user": "u", "access": "Web", "address": "192.0.2.1")";
    EXPECT_EQ(machineFileError("{\"sessions\": [\n{\"id\": \"1\", " + fields + "}]}"),
              "m.json:2: /sessions/0/id: must be an integer");
    EXPECT_EQ(machineFileError("{\"sessions\": [\n{\"id\": 1, " + fields + ",\n\"describable\": 1}]}"),
              "m.json:3: /sessions/0/describable: must be true or false");
    EXPECT_EQ(machineFileError("{\"sessions\": [\n{\"id\": 1, " + fields + ", \"ip\": \"x\"}]}"),
              "m.json:2: /sessions/0/ip: unknown session field (known: id, user, access, address, describable)");
    EXPECT_EQ(machineFileError("{\"sessions\": [\n{\"id\": 1, \"user\": 7, \"access\": \"Web\", \"address\": \"\"}]}"),
              "m.json:2: /sessions/0/user: must be a text");
    EXPECT_EQ(machineFileError("{\"sessions\": [\n{" + fields + "}]}"),
              "m.json:2: /sessions/0: a session needs \"id\" (integer)");
    EXPECT_EQ(machineFileError("{\"sessions\": [\n{\"id\": 1, \"user\": \"u\", \"access\": \"Web\"}]}"),
              "m.json:2: /sessions/0: a session needs \"address\" (text)");
    EXPECT_EQ(machineFileError("{\"sessions\": [\n{\"id\": 1, " + fields + "},\n{\"id\": 1, " + fields + "}]}"),
              "m.json:3: /sessions/1/id: session id 1 is already that of /sessions/0");
    EXPECT_EQ(machineFileError("{\"sessions\": 1}"), "m.json:1: /sessions: must be an array of sessions");
}

} // namespace

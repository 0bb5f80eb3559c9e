// currentlyLoggedInTable through the real agent, from the session manager.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kUsersTable = oidJoin(kMonitorsRoot, {6, 1, 1});

AgentOptions agentFor(const MachineBuilder &machine, std::string debugTokens = "")
{
    return fanAgent(machine.json(), std::move(debugTokens));
}

std::vector<VarBind> column(Agent &agent, int number)
{
    return agent.client().walk(oidJoin(kUsersTable, {1, number}));
}

TEST(LoggedInUsers, SessionThatCanNoLongerBeDescribedLeavesNoGap)
{
    MachineBuilder machine;
    machine.session(11, "admin", "Web")
        .session(12, "operator", "SSH", "192.0.2.20", false)
        .session(13, "monitor", "Redfish");
    Agent agent(agentFor(machine, "currentlyLoggedInTable"));
    std::vector<VarBind> indexes = column(agent, 1);
    ASSERT_EQ(indexes.size(), 2u);
    EXPECT_EQ(indexes[0].integer, 1);
    EXPECT_EQ(indexes[1].integer, 2);
    std::vector<VarBind> users = column(agent, 2);
    ASSERT_EQ(users.size(), 2u);
    EXPECT_EQ(users[0].octets, "admin");
    EXPECT_EQ(users[1].octets, "monitor");
    EXPECT_EQ(column(agent, 3).at(1).octets, "Redfish");
    EXPECT_EQ(agent.countInStdout("currentlyLoggedInTable: 2) user monitor by Redfish, IP 192.0.2.10\n"), 1u);
    EXPECT_EQ(agent.countInStdout("currentlyLoggedInTable: session ID = 12\n"), 1u);
}

TEST(LoggedInUsers, NoSessionsGiveAnEmptyTableAndNoMessage)
{
    Agent agent(agentFor(MachineBuilder()));
    EXPECT_TRUE(agent.client().walk(kUsersTable).empty());
    EXPECT_EQ(agent.countInStdout("initialize_currentlyLoggedInTable_local"), 0u);
}

TEST(LoggedInUsers, AtMost256SessionsAreAskedFor)
{
    MachineBuilder machine;
    for (int id = 1; id <= 300; ++id)
        machine.session(id, "user" + std::to_string(id), "IPMI");
    Agent agent(agentFor(machine));
    std::vector<VarBind> indexes = column(agent, 1);
    EXPECT_EQ(indexes.size(), 256u);
    EXPECT_EQ(agent.countCalls("sm_session_get_info"), 256u);
    EXPECT_EQ(indexes.back().integer, 256);
}

TEST(LoggedInUsers, UserNameOfSeventyCharactersIsServedAsItsFirst64)
{
    std::string name(70, 'u');
    for (size_t i = 0; i < name.size(); ++i)
        name[i] = static_cast<char>('a' + i % 26);
    MachineBuilder machine;
    machine.session(5, name, "Web");
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({oidJoin(kUsersTable, {1, 2, 1}), oidJoin(kUsersTable, {1, 3, 1})});
    ASSERT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(reply.varbinds.at(0).octets, name.substr(0, 64));
    EXPECT_EQ(reply.varbinds.at(1).octets, "Web");
}

TEST(LoggedInUsers, RequestsWithinASecondAreServedFromTheSameReload)
{
    MachineBuilder before;
    before.session(1, "admin", "Web");
    Agent agent(agentFor(before));
    EXPECT_EQ(column(agent, 2).size(), 1u);

    MachineBuilder after;
    after.session(1, "admin", "Web").session(2, "guest", "SSH");
    agent.replaceMachine(after.json());
    // Half a second later may be the next whole second at the most.
    agent.setClock(kStartTime + 1);
    EXPECT_EQ(column(agent, 2).size(), 1u);
    EXPECT_EQ(agent.countCalls("sm_session_get_type_info"), 1u);
}

TEST(LoggedInUsers, FailedSessionQueryIsPrintedAndTriedAgainLater)
{
    MachineBuilder machine;
    machine.session(1, "admin", "Web").fault("sm_session_get_type_info", "", 1, 0, 1);
    Agent agent(agentFor(machine));
    EXPECT_TRUE(agent.client().walk(kUsersTable).empty());
    EXPECT_TRUE(
        agent.waitForStdout("initialize_currentlyLoggedInTable_local: sm_session_get_type_info() failed! (1)\n"));
    agent.setClock(kStartTime + 5);
    EXPECT_EQ(column(agent, 2).size(), 1u);
}

TEST(LoggedInUsers, SetIsRefused)
{
    MachineBuilder machine;
    machine.session(1, "admin", "Web");
    Agent agent(agentFor(machine));
    Response reply = agent.client("private").set({SetValue::ofOctets(oidJoin(kUsersTable, {1, 2, 1}), "root")});
    EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_NOTWRITABLE));
}

} // namespace
} // namespace orv3::test

// systemHealthStat and systemHealthSummaryTable through the real agent,
// computed in one pass over the event database's active events.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kHealthStat = oidJoin(kMonitorsRoot, {4, 1, 0});
const std::string kSummaryTable = oidJoin(kMonitorsRoot, {4, 2});

std::string summaryCell(int column, int index)
{
    return oidJoin(kSummaryTable, {1, column, index});
}

AgentOptions agentFor(const MachineBuilder &machine, std::string debugTokens = "")
{
    return fanAgent(machine.json(), std::move(debugTokens));
}

long healthState(Agent &agent)
{
    Response reply = agent.client().get({kHealthStat});
    EXPECT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(typeName(reply.varbinds.at(0).type), "INTEGER");
    return reply.varbinds.at(0).integer;
}

std::vector<std::string> severities(Agent &agent)
{
    std::vector<std::string> texts;
    for (const VarBind &vb : agent.client().walk(oidJoin(kSummaryTable, {1, 2})))
        texts.push_back(vb.octets);
    return texts;
}

TEST(SystemHealth, NoActiveEventsIsAHealthyServer)
{
    Agent agent(agentFor(MachineBuilder(), "systemHealthSummaryTable"));
    EXPECT_EQ(healthState(agent), 255);
    EXPECT_TRUE(agent.client().walk(kSummaryTable).empty());
    EXPECT_EQ(agent.countInStdout(
                  "systemHealthSummaryTable: initialize_systemHealthSummaryTable_local No any active log! \n"),
              1u);
    EXPECT_EQ(agent.countInStdout(
                  "systemHealthSummaryTable: initialize_systemHealthSummaryTable_local gSystemHealthState = 255\n"),
              1u);
}

TEST(SystemHealth, FailingEventDatabaseReadsAsHealthy)
{
    MachineBuilder machine;
    machine.event(3, "Fan 3A Tach has failed.").fault("CEM_Db_GetActiveEventHandle", "", 0, 0);
    Agent agent(agentFor(machine, "systemHealthSummaryTable"));
    EXPECT_EQ(healthState(agent), 255);
    EXPECT_TRUE(agent.client().walk(kSummaryTable).empty());
    EXPECT_EQ(agent.countInStdout("initialize_systemHealthSummaryTable_local CEM_Db_GetActiveEventHandle() failed! \n"),
              1u);
}

TEST(SystemHealth, FailingEventListReadsAsHealthyAndReleasesTheHandle)
{
    MachineBuilder machine;
    machine.event(3, "Fan 3A Tach has failed.").fault("CEM_Db_GetActiveEventList", "", 1, 0);
    Agent agent(agentFor(machine, "systemHealthSummaryTable"));
    EXPECT_EQ(healthState(agent), 255);
    EXPECT_TRUE(agent.client().walk(kSummaryTable).empty());
    EXPECT_EQ(agent.countInStdout("initialize_systemHealthSummaryTable_local CEM_Db_GetActiveEventList() failed! \n"),
              1u);
    EXPECT_EQ(agent.countCalls("CEM_Db_FreeActiveEventHandle"), 1u);
}

TEST(SystemHealth, WarningErrorWarningIsAnError)
{
    MachineBuilder machine;
    machine.event(2, "Sensor Planar 3.3V has transitioned to non-critical from normal.")
        .event(3, "Fan 3A Tach has failed.")
        .event(2, "Drive 2 predicted failure.");
    Agent agent(agentFor(machine));
    EXPECT_EQ(healthState(agent), 2);
    EXPECT_EQ(severities(agent), (std::vector<std::string>{"Warning", "Error", "Warning"}));
    Response reply = agent.client().get({summaryCell(1, 2), summaryCell(3, 2)});
    ASSERT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(reply.varbinds.at(0).integer, 2);
    EXPECT_EQ(reply.varbinds.at(1).octets, "Fan 3A Tach has failed.");
}

TEST(SystemHealth, IgnoredSeverityBeforeAnyWarningHasAnEmptyText)
{
    MachineBuilder machine;
    machine.event(5, "Informational event.").event(2, "Drive 2 predicted failure.");
    Agent agent(agentFor(machine, "systemHealthSummaryTable"));
    EXPECT_EQ(healthState(agent), 4);
    EXPECT_EQ(severities(agent), (std::vector<std::string>{"", "Warning"}));
    EXPECT_EQ(agent.countInStdout("initialize_systemHealthSummaryTable_local pRec[0].enumLogServ = 5 (Ignored)\n"), 1u);
}

TEST(SystemHealth, IgnoredSeverityCarriesTheLastTextOver)
{
    MachineBuilder machine;
    machine.event(3, "Fan 3A Tach has failed.").event(7, "Audit record.");
    Agent agent(agentFor(machine));
    EXPECT_EQ(healthState(agent), 2);
    EXPECT_EQ(severities(agent), (std::vector<std::string>{"Error", "Error"}));
}

TEST(SystemHealth, MessageOfThreeHundredCharactersIsServedAsItsFirst256)
{
    std::string message;
    for (int i = 0; i < 300; ++i)
        message += static_cast<char>('A' + i % 26);
    MachineBuilder machine;
    machine.event(2, message);
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({summaryCell(3, 1)});
    ASSERT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(reply.varbinds.at(0).octets, message.substr(0, 256));
}

TEST(SystemHealth, PollingEveryTwoSecondsNeverRefreshesAndAPauseDoes)
{
    MachineBuilder healthy;
    Agent agent(agentFor(healthy));
    EXPECT_EQ(healthState(agent), 255);

    MachineBuilder failing;
    failing.event(3, "Fan 3A Tach has failed.");
    agent.replaceMachine(failing.json());
    for (long second = 2; second <= 10; second += 2) {
        agent.setClock(kStartTime + second);
        EXPECT_EQ(healthState(agent), 255) << "at +" << second << " s";
    }
    agent.setClock(kStartTime + 14);
    EXPECT_EQ(healthState(agent), 2) << "after a pause of four seconds";
    EXPECT_EQ(agent.countCalls("CEM_Db_GetActiveEventHandle"), 2u);
}

TEST(SystemHealth, ScalarAndTableComeFromTheSameReload)
{
    MachineBuilder machine;
    machine.event(2, "Drive 2 predicted failure.");
    Agent agent(agentFor(machine));
    EXPECT_EQ(healthState(agent), 4);
    EXPECT_EQ(severities(agent), (std::vector<std::string>{"Warning"}));
    EXPECT_EQ(agent.countCalls("CEM_Db_GetActiveEventHandle"), 1u);
}

TEST(SystemHealth, SetIsRefused)
{
    MachineBuilder machine;
    machine.event(2, "Drive 2 predicted failure.");
    Agent agent(agentFor(machine));
    SnmpClient writer = agent.client("private");
    EXPECT_EQ(errorStatusName(writer.set({SetValue::ofInteger(kHealthStat, 2)}).errorStatus),
              errorStatusName(SNMP_ERR_NOTWRITABLE));
    EXPECT_EQ(errorStatusName(writer.set({SetValue::ofOctets(summaryCell(2, 1), "Error")}).errorStatus),
              errorStatusName(SNMP_ERR_NOTWRITABLE));
}

} // namespace
} // namespace orv3::test

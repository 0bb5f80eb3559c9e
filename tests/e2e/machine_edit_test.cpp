// Editing the machine description while the agent runs.
#include "fan_machines.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

std::string speedOf(Agent &agent, int index)
{
    Response reply = agent.client().get({fanCell(3, index)});
    return reply.varbinds.empty() ? "" : reply.varbinds[0].octets;
}

TEST(MachineEdits, ChangedSpeedAndRemovedFanAreServedAfterTheRefresh)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    EXPECT_EQ(agent.client().walk(oidJoin(kFanTable, {1, 1})).size(), 3u);

    agent.replaceMachine(machineWithFans({{1, "Fan 1A Tach", 64}, {3, "Fan 2A Tach", 5}}));
    agent.setClock(kStartTime + 2);
    EXPECT_EQ(speedOf(agent, 1), " 64% of maximum");
    std::vector<VarBind> indexes = agent.client().walk(oidJoin(kFanTable, {1, 1}));
    ASSERT_EQ(indexes.size(), 2u);
    EXPECT_EQ(indexes[0].integer, 1);
    EXPECT_EQ(indexes[1].integer, 3);
    EXPECT_EQ(agent.client().get({kFanNumber}).varbinds.at(0).integer, 2);
    EXPECT_TRUE(agent.waitForStderr("machine.json: reloaded"));
}

TEST(MachineEdits, BrokenEditKeepsTheAnswersAndSaysWhereItIsBroken)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    EXPECT_EQ(speedOf(agent, 1), " 42% of maximum");

    agent.replaceMachine("{\n  \"store\": {\n    \"s/fans/status/fantbl\": [\n      {\"index\": 1,}\n    ]\n  }\n}\n");
    agent.setClock(kStartTime + 2);
    EXPECT_EQ(speedOf(agent, 1), " 42% of maximum");
    EXPECT_EQ(agent.client().get({kFanNumber}).varbinds.at(0).integer, 3);
    EXPECT_TRUE(agent.waitForStderr(agent.machinePath() + ":4: syntax error")) << agent.stderrText();
    EXPECT_EQ(agent.countInStderr("still serving the last good description"), 1u) << agent.stderrText();
}

TEST(MachineEdits, ValueOfTheWrongKindIsReportedWithItsLine)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    agent.replaceMachine("{\n\"store\": {\"s/fans/status/fantbl\": [\n{\"index\": \"first\"}\n]}\n}\n");
    agent.setClock(kStartTime + 2);
    EXPECT_EQ(speedOf(agent, 3), "  5% of maximum");
    EXPECT_TRUE(
        agent.waitForStderr(agent.machinePath() + ":3: /store/s~1fans~1status~1fantbl/0/index: must be an integer"))
        << agent.stderrText();
}

TEST(MachineEdits, MissingMachineFileAtStartIsAClearErrorNamingTheFile)
{
    AgentOptions options;
    options.clockStart = kStartTime;
    try {
        Agent agent(options);
        FAIL() << "the agent started without a machine description";
    } catch (const std::runtime_error &error) {
        std::string said = error.what();
        EXPECT_NE(said.find("machine.json: cannot read the machine description: No such file or directory"),
                  std::string::npos)
            << said;
    }
}

TEST(MachineEdits, BrokenMachineFileAtStartIsAClearErrorWithItsLine)
{
    AgentOptions options = fanAgent("{\n\"store\": [\n");
    try {
        Agent agent(options);
        FAIL() << "the agent started with a broken machine description";
    } catch (const std::runtime_error &error) {
        std::string said = error.what();
        EXPECT_NE(said.find("machine.json:3: syntax error"), std::string::npos) << said;
    }
}

} // namespace
} // namespace orv3::test

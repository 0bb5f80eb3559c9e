// How the fan table's loader uses the data manager, seen from the agent's
// standard output and the simulator's call log.
#include "fan_machines.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kBindRow = "quel_dm_BindRow " + kFanStoreTable;
const std::string kFirstRow = "quel_dm_GetFirstRow " + kFanStoreTable;
const std::string kFreeBinding = "quel_dm_FreeBinding " + kFanStoreTable;
const std::string kEndOfRows = "initialize_fanTable_local quel_dm_GetNextRow error 3-no more rows\n";

size_t fanRows(Agent &agent)
{
    return agent.client().walk(oidJoin(kFanTable, {1, 1})).size();
}

TEST(FanTableLoad, StoreWithNRowsGivesNRowsAndOneEndOfRowsLinePerLoad)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    EXPECT_EQ(fanRows(agent), 3u);
    EXPECT_EQ(agent.countInStdout(kEndOfRows), 1u);

    agent.setClock(kStartTime + 2);
    EXPECT_EQ(fanRows(agent), 3u);
    EXPECT_EQ(agent.countInStdout(kEndOfRows), 2u);
    EXPECT_EQ(agent.countCalls(kFreeBinding), 2u);
}

TEST(FanTableLoad, RefusedBindLeavesTheTableEmptyAndIsPrintedOncePerLoad)
{
    const std::string message = "initialize_fanTable_local failed to create bindings 7-namespace locked\n";
    Agent agent(fanAgent(machineWithFans(kThreeFans, {fault("quel_dm_BindRow", 1, 7)})));
    EXPECT_EQ(fanRows(agent), 0u);
    EXPECT_EQ(agent.countInStdout(message), 1u);
    EXPECT_EQ(agent.countCalls(kFirstRow), 0u);

    agent.setClock(kStartTime + 2);
    EXPECT_EQ(fanRows(agent), 0u);
    EXPECT_EQ(agent.countInStdout(message), 2u);
}

TEST(FanTableLoad, FailedFirstRowKeepsTheBindingForTheNextLoad)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans, {fault("quel_dm_GetFirstRow", 1, 9, 1)})));
    EXPECT_EQ(fanRows(agent), 0u);
    EXPECT_EQ(
        agent.countInStdout("initialize_fanTable_local quel_dm_GetFirstRow error 9-operation failed, varStatus = 1\n"),
        1u);
    EXPECT_EQ(agent.countCalls(kBindRow), 1u);
    EXPECT_EQ(agent.countCalls(kFreeBinding), 0u);

    agent.setClock(kStartTime + 2);
    EXPECT_EQ(fanRows(agent), 3u);
    EXPECT_EQ(agent.countCalls(kBindRow), 1u) << "the kept binding is used as it stands";
    EXPECT_EQ(agent.countCalls(kFirstRow), 2u);
    EXPECT_EQ(agent.countCalls(kFreeBinding), 1u);
}

TEST(FanTableLoad, FailedFreeIsPrintedAndTheNextLoadBindsAgain)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans, {fault("quel_dm_FreeBinding", 1, 4)})));
    EXPECT_EQ(fanRows(agent), 3u);
    EXPECT_EQ(agent.countInStdout("failed to call quel_dm_FreeBinding\n"), 1u);

    agent.setClock(kStartTime + 2);
    EXPECT_EQ(fanRows(agent), 3u);
    EXPECT_EQ(agent.countCalls(kBindRow), 2u);
}

TEST(FanTableLoad, RowThatFailsMidwayKeepsTheRowsReadBeforeIt)
{
    // The second next-row call fails: two rows were read, the failure ends the load.
    nlohmann::json faults = {{{"call", "quel_dm_GetNextRow"}, {"key", kFanStoreTable}, {"result", 1}, {"status", 5}}};
    Agent agent(fanAgent(machineWithFans(kThreeFans, faults)));
    EXPECT_EQ(fanRows(agent), 1u);
    EXPECT_EQ(agent.countInStdout("initialize_fanTable_local quel_dm_GetNextRow error 5-type mismatch\n"), 1u);
}

TEST(FanTableLoad, AStoreThatDoesNotAdvanceStopsTheLoadAtOnce)
{
    // Next-row calls that succeed without writing: the holders keep the
    // first row, and a second copy of it is never made.
    nlohmann::json faults = {{{"call", "quel_dm_GetNextRow"}, {"key", kFanStoreTable}, {"result", 0}, {"status", 0}}};
    Agent agent(fanAgent(machineWithFans(kThreeFans, faults)));
    EXPECT_EQ(fanRows(agent), 1u);
    EXPECT_EQ(agent.countInStdout("initialize_fanTable_local quel_dm_GetNextRow returned row 1 again: the store is not "
                                  "advancing, load stopped\n"),
              1u)
        << agent.stdoutText();
    EXPECT_EQ(agent.countCalls("quel_dm_GetNextRow " + kFanStoreTable), 1u);
    EXPECT_EQ(agent.countCalls(kFreeBinding), 1u);
}

} // namespace
} // namespace orv3::test

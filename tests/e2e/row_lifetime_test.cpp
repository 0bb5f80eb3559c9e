// Rows outlive the request that found them. With a clock that moves two
// seconds at every look, every pass of the table iterator reloads the fan
// table, also the passes within one request; the rows found by an earlier
// pass must still be readable when the handler answers. The sanitized run
// turns any use of a freed row into a failure of the agent.
#include "fan_machines.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

std::vector<Fan> manyFans()
{
    std::vector<Fan> fans;
    for (int index = 1; index <= 12; ++index)
        fans.push_back({index, "Fan " + std::to_string(index), index * 7});
    return fans;
}

AgentOptions fastClockAgent()
{
    AgentOptions options = fanAgent(machineWithFans(manyFans()));
    options.clockStep = 2;
    return options;
}

std::vector<std::string> allColumns()
{
    std::vector<std::string> columns;
    for (int column = 1; column <= 10; ++column)
        columns.push_back(oidJoin(kFanTable, {1, column}));
    return columns;
}

TEST(RowLifetime, MultiVarbindGetNextWalkAcrossReloadsAnswersEveryRow)
{
    Agent agent(fastClockAgent());
    SnmpClient client = agent.client();
    std::vector<std::string> cursor = allColumns();
    int rows = 0;
    for (;; ++rows) {
        Response reply = client.getNext(cursor);
        ASSERT_TRUE(reply.ok()) << reply;
        ASSERT_EQ(reply.varbinds.size(), 10u);
        if (!oidStartsWith(reply.varbinds[0].oid, oidJoin(kFanTable, {1, 1})))
            break;
        int index = static_cast<int>(reply.varbinds[0].integer);
        EXPECT_EQ(index, rows + 1);
        EXPECT_EQ(reply.varbinds[1].octets, "Fan " + std::to_string(index));
        for (int column = 0; column < 10; ++column)
            cursor[column] = reply.varbinds[column].oid;
    }
    EXPECT_EQ(rows, 12);
    // Every request reloaded the table at least once.
    EXPECT_GE(agent.countCalls("quel_dm_BindRow " + kFanStoreTable), 13u);
}

TEST(RowLifetime, GetBulkWhoseColumnsWrapWhileOthersHoldRowsAcrossReloads)
{
    Agent agent(fastClockAgent());
    SnmpClient client = agent.client();
    // Odd columns start at row 9 and wrap to the next column in their fourth
    // repetition, in a new pass, while even columns (from row 3) still hold
    // rows that the first pass of that repetition found.
    std::vector<std::string> cursors;
    for (int column = 1; column <= 9; ++column)
        cursors.push_back(fanCell(column, column % 2 ? 9 : 3));
    for (int round = 0; round < 3; ++round) {
        Response reply = client.getBulk(0, 6, cursors);
        ASSERT_TRUE(reply.ok()) << reply;
        ASSERT_EQ(reply.varbinds.size(), 54u);
        for (int repetition = 0; repetition < 6; ++repetition) {
            for (int column = 1; column <= 9; ++column) {
                const VarBind &vb = reply.varbinds[repetition * 9 + column - 1];
                int row = (column % 2 ? 10 : 4) + repetition;
                EXPECT_EQ(vb.oid, row <= 12 ? fanCell(column, row) : fanCell(column + 1, row - 12));
            }
        }
        EXPECT_EQ(reply.varbinds[3 * 9 + 1].octets, "Fan 7") << "fan 7's description, held across the wrap";
        EXPECT_EQ(reply.varbinds[3 * 9 + 0].octets, "Fan 1") << "column 1 wrapped to fan 1's description";
    }
    agent.stop();
    EXPECT_EQ(agent.sanitizerFindings(), "");
}

TEST(RowLifetime, GetNextThatWrapsToTheNextColumnAcrossAReload)
{
    Agent agent(fastClockAgent());
    agent.clearCallLog();
    // Each of these runs off the end of its column and is answered from a later pass.
    Response reply = agent.client().getNext({fanCell(2, 12), fanCell(3, 12), fanCell(9, 12), fanCell(1, 5)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 4u);
    EXPECT_EQ(reply.varbinds[0].oid, fanCell(3, 1));
    EXPECT_EQ(reply.varbinds[0].octets, "  7% of maximum");
    EXPECT_EQ(reply.varbinds[1].oid, fanCell(4, 1));
    EXPECT_EQ(reply.varbinds[2].oid, fanCell(10, 1));
    EXPECT_EQ(reply.varbinds[2].octets, "Normal");
    EXPECT_EQ(reply.varbinds[3].oid, fanCell(1, 6));
    EXPECT_GE(agent.countCalls("quel_dm_BindRow " + kFanStoreTable), 2u) << "each pass of the request reloaded";
    agent.stop();
    EXPECT_EQ(agent.sanitizerFindings(), "");
}

} // namespace
} // namespace orv3::test

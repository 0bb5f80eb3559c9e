// Tables keep their rows in index order and tell the iterator so: whatever
// order the store delivers rows in, walks and GETNEXT steps find every row
// in ascending index order, and a GETNEXT that stops at the first row past
// the requested one still finds the right row.
#include "fan_machines.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

std::vector<Fan> fansInStoreOrder(std::initializer_list<int> indexes)
{
    std::vector<Fan> fans;
    for (int index : indexes)
        fans.push_back({index, "Fan " + std::to_string(index), index});
    return fans;
}

std::vector<long> indexColumn(Agent &agent)
{
    std::vector<long> seen;
    for (const VarBind &vb : agent.client().walk(oidJoin(kFanTable, {1, 1})))
        seen.push_back(vb.integer);
    return seen;
}

class RowOrder : public ::testing::TestWithParam<std::vector<int>> {};

TEST_P(RowOrder, AWalkFindsEveryRowInIndexOrder)
{
    std::vector<Fan> fans;
    for (int index : GetParam())
        fans.push_back({index, "Fan " + std::to_string(index), index});
    Agent agent(fanAgent(machineWithFans(fans)));

    EXPECT_EQ(indexColumn(agent), (std::vector<long>{1, 3, 5, 7, 9}));
    std::vector<VarBind> walk = agent.client().walk(kFanTable);
    ASSERT_EQ(walk.size(), 5u * 10u);
    for (size_t i = 1; i < walk.size(); ++i)
        EXPECT_LT(oidParse(walk[i - 1].oid), oidParse(walk[i].oid)) << walk[i].oid;
    // Each row's cells stay with their own row.
    for (int index : {1, 3, 5, 7, 9}) {
        Response reply = agent.client().get({fanCell(2, index)});
        ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
        EXPECT_EQ(reply.varbinds[0].octets, "Fan " + std::to_string(index));
    }
}

INSTANTIATE_TEST_SUITE_P(StoreOrders, RowOrder,
                         ::testing::Values(std::vector<int>{1, 3, 5, 7, 9}, std::vector<int>{9, 7, 5, 3, 1},
                                           std::vector<int>{5, 1, 9, 3, 7}));

TEST(RowOrder, GetNextBetweenIndexesFindsTheNextRow)
{
    Agent agent(fanAgent(machineWithFans(fansInStoreOrder({9, 3, 5, 1, 7}))));
    Response reply = agent.client().getNext({fanCell(1, 4), fanCell(2, 0), fanCell(3, 8)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 3u);
    EXPECT_EQ(reply.varbinds[0].oid, fanCell(1, 5));
    EXPECT_EQ(reply.varbinds[0].integer, 5);
    EXPECT_EQ(reply.varbinds[1].oid, fanCell(2, 1));
    EXPECT_EQ(reply.varbinds[1].octets, "Fan 1");
    EXPECT_EQ(reply.varbinds[2].oid, fanCell(3, 9));
}

TEST(RowOrder, GetNextPastTheLastRowGoesOnToTheNextColumnsFirstRow)
{
    Agent agent(fanAgent(machineWithFans(fansInStoreOrder({9, 3, 5, 1, 7}))));
    Response reply = agent.client().getNext({fanCell(1, 9), fanCell(2, 100)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 2u);
    EXPECT_EQ(reply.varbinds[0].oid, fanCell(2, 1));
    EXPECT_EQ(reply.varbinds[1].oid, fanCell(3, 1));
}

// A store index of -1 is the arc 4294967295 on the wire, and the row sorts
// there: GETNEXT from that arc moves on to the next column instead of
// answering the same OID again, so a walk passes it.
TEST(RowOrder, ANegativeIndexIsTheLastArcAndGetNextMovesPastIt)
{
    Agent agent(fanAgent(machineWithFans(fansInStoreOrder({3, -1, 1}))));
    Response reply = agent.client().getNext({fanCell(1, 4294967295u), fanCell(1, 3)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 2u);
    EXPECT_EQ(reply.varbinds[0].oid, fanCell(2, 1));
    EXPECT_EQ(reply.varbinds[1].oid, fanCell(1, 4294967295u));
    EXPECT_EQ(reply.varbinds[1].integer, -1) << "the index column keeps the store's value";

    std::vector<VarBind> walk = agent.client().walk(kFanTable);
    ASSERT_EQ(walk.size(), 3u * 10u);
    for (size_t i = 1; i < walk.size(); ++i)
        EXPECT_LT(oidParse(walk[i - 1].oid), oidParse(walk[i].oid)) << walk[i].oid;
    Response bulk = agent.client().getBulk(0, 3, {fanCell(2, 3)});
    ASSERT_TRUE(bulk.ok()) << bulk;
    ASSERT_EQ(bulk.varbinds.size(), 3u);
    EXPECT_EQ(bulk.varbinds[0].oid, fanCell(2, 4294967295u));
    EXPECT_EQ(bulk.varbinds[1].oid, fanCell(3, 1));
    EXPECT_EQ(bulk.varbinds[2].oid, fanCell(3, 3));
}

TEST(RowOrder, GetBulkAcrossEveryColumnAsSnmptableSendsIt)
{
    Agent agent(fanAgent(machineWithFans(fansInStoreOrder({9, 3, 5, 1, 7}))));
    std::vector<std::string> columns;
    for (int column = 1; column <= 10; ++column)
        columns.push_back(oidJoin(kFanTable, {1, column}));
    Response reply = agent.client().getBulk(0, 5, columns);
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 50u);
    // Repetition r answers row r of every column, rows in index order.
    const int rows[] = {1, 3, 5, 7, 9};
    for (int repetition = 0; repetition < 5; ++repetition) {
        for (int column = 1; column <= 10; ++column) {
            const VarBind &vb = reply.varbinds[static_cast<size_t>(repetition * 10 + column - 1)];
            EXPECT_EQ(vb.oid, fanCell(column, rows[repetition]));
        }
    }
}

TEST(RowOrder, RowsOfAReloadComeInIndexOrderToo)
{
    Agent agent(fanAgent(machineWithFans(fansInStoreOrder({1, 2}))));
    EXPECT_EQ(indexColumn(agent), (std::vector<long>{1, 2}));
    agent.replaceMachine(machineWithFans(fansInStoreOrder({8, 4, 6, 2})));
    agent.setClock(kStartTime + 5);
    EXPECT_EQ(indexColumn(agent), (std::vector<long>{2, 4, 6, 8}));
}

} // namespace
} // namespace orv3::test

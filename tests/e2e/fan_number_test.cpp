// fanNumber, the fan count scalar, through the real agent.
#include "fan_machines.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

VarBind getOne(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << reply;
    return reply.varbinds.empty() ? VarBind{} : reply.varbinds[0];
}

TEST(FanNumber, IsAnIntegerEqualToTheStoresFanCount)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    VarBind count = getOne(agent, kFanNumber);
    EXPECT_EQ(typeName(count.type), "INTEGER");
    EXPECT_EQ(count.integer, 3);
}

TEST(FanNumber, IsZeroWithoutFans)
{
    Agent agent(fanAgent(machineWithFans({})));
    VarBind count = getOne(agent, kFanNumber);
    EXPECT_EQ(typeName(count.type), "INTEGER");
    EXPECT_EQ(count.integer, 0);
}

TEST(FanNumber, IsZeroWhenTheCountFails)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans, {fault("quel_dm_GetRowCount", 1, 9)})));
    VarBind count = getOne(agent, kFanNumber);
    EXPECT_EQ(typeName(count.type), "INTEGER");
    EXPECT_EQ(count.integer, 0);
}

TEST(FanNumber, IsTheStoresCountNotTheNumberOfCachedRows)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    EXPECT_EQ(agent.client().walk(kFanTable).size(), 30u);

    agent.replaceMachine(machineWithFans({{1, "Fan 1A Tach", 42}}));
    EXPECT_EQ(getOne(agent, kFanNumber).integer, 1);
    EXPECT_EQ(agent.client().walk(kFanTable).size(), 30u) << "the table is still cached";
}

TEST(FanNumber, IsAnsweredNextToAnObjectThatDoesNotExist)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    Response reply = agent.client().get({oidJoin(kMonitorsRoot, {3, 5, 0}), kFanNumber});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 2u);
    EXPECT_EQ(typeName(reply.varbinds[0].type), "noSuchObject");
    EXPECT_EQ(typeName(reply.varbinds[1].type), "INTEGER");
    EXPECT_EQ(reply.varbinds[1].integer, 3);
}

TEST(FanNumber, SetIsRefused)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    Response reply = agent.client("private").set({SetValue::ofInteger(kFanNumber, 9)});
    EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_NOTWRITABLE));
    EXPECT_EQ(getOne(agent, kFanNumber).integer, 3);
}

TEST(FlashDimmCount, IsNotServed)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    VarBind fdNumber = getOne(agent, oidJoin(kMonitorsRoot, {13, 2, 1, 0}));
    EXPECT_TRUE(fdNumber.isException()) << fdNumber;
    EXPECT_EQ(typeName(fdNumber.type), "noSuchObject");
}

} // namespace
} // namespace orv3::test

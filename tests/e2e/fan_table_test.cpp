// fanTable through the real agent: columns, formats, caching and errors.
#include "fan_machines.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace orv3::test {
namespace {

std::vector<VarBind> walkFanTable(Agent &agent)
{
    return agent.client().walk(kFanTable);
}

std::string textAt(Agent &agent, int column, int index)
{
    Response reply = agent.client().get({fanCell(column, index)});
    EXPECT_TRUE(reply.ok()) << reply;
    if (reply.varbinds.size() != 1)
        return "<no answer>";
    EXPECT_EQ(typeName(reply.varbinds[0].type), "OCTET STRING") << reply;
    return reply.varbinds[0].octets;
}

std::string sampleMachine()
{
    std::ifstream in(std::string(ORV3_SOURCE_DIR) + "/machines/sample.json");
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(FanTable, WalkOfTheSampleMachineAnswersEveryColumnOfEveryFan)
{
    std::string machine = sampleMachine();
    Agent agent(fanAgent(machine));
    nlohmann::json fans = nlohmann::json::parse(machine)["store"][kFanStoreTable];

    // The walk goes column by column; build the expected answers the same way.
    std::vector<std::tuple<std::string, std::string, std::string>> expected; // oid, type, value
    const char *limits[] = {"nonRecovLimitHigh", "critLimitHigh", "nonCritLimitHigh",
                            "nonRecovLimitLow",  "critLimitLow",  "nonCritLimitLow"};
    for (int column = 1; column <= 10; ++column) {
        for (const auto &fan : fans) {
            int index = fan["index"];
            std::string type = "OCTET STRING", value;
            if (column == 1) {
                type = "INTEGER";
                value = std::to_string(index);
            } else if (column == 2) {
                value = fan["descr"].get<std::string>().substr(0, 30);
            } else if (column == 3) {
                int speed = fan["speedPct"];
                char text[32];
                snprintf(text, sizeof text, "%3d%% of maximum", speed);
                value = speed == 0 ? "offline" : text;
            } else if (column <= 9) {
                type = "Gauge32";
                value = std::to_string(static_cast<uint32_t>(fan[limits[column - 4]].get<int32_t>()));
            } else {
                value = fan["status"];
            }
            expected.emplace_back(fanCell(column, index), type, value);
        }
    }

    std::vector<VarBind> walked = walkFanTable(agent);
    ASSERT_EQ(walked.size(), expected.size());
    for (size_t i = 0; i < walked.size(); ++i) {
        const auto &[oid, type, value] = expected[i];
        EXPECT_EQ(walked[i].oid, oid);
        EXPECT_EQ(typeName(walked[i].type), type) << walked[i];
        std::string served = walked[i].type == ASN_OCTET_STR ? walked[i].octets
                             : walked[i].type == ASN_GAUGE   ? std::to_string(walked[i].unsignedValue)
                                                             : std::to_string(walked[i].integer);
        EXPECT_EQ(served, value) << oid;
    }
}

TEST(FanTable, FanAtZeroPercentReadsOffline)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    std::string speed = textAt(agent, 3, 2);
    EXPECT_EQ(speed, "offline");
    EXPECT_EQ(speed.size(), 7u);
}

TEST(FanTable, FanAtFivePercentHasTwoLeadingBlanks)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    EXPECT_EQ(textAt(agent, 3, 3), "  5% of maximum");
    EXPECT_EQ(textAt(agent, 3, 1), " 42% of maximum");
}

TEST(FanTable, FullSpeedFillsAllThreePlaces)
{
    Agent agent(fanAgent(machineWithFans({{1, "Fan", 100}})));
    EXPECT_EQ(textAt(agent, 3, 1), "100% of maximum");
}

TEST(FanTable, DescriptionOfFortyCharactersIsServedAsItsFirstThirty)
{
    std::string forty = "Power Supply 1 Fan, rear exhaust, slot A";
    ASSERT_EQ(forty.size(), 40u);
    Agent agent(fanAgent(machineWithFans({{1, forty, 40}})));
    EXPECT_EQ(textAt(agent, 2, 1), forty.substr(0, 30));
}

TEST(FanTable, LimitsAreGauge32OfTheSameThirtyTwoBits)
{
    Fan fan{1, "PSU Fan", 30};
    int limits[6] = {-1, -2, 3000, 0, 300, 600};
    std::copy(limits, limits + 6, fan.limits);
    Agent agent(fanAgent(machineWithFans({fan})));
    Response reply = agent.client().get({fanCell(4, 1), fanCell(5, 1), fanCell(6, 1), fanCell(9, 1)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 4u);
    for (const VarBind &vb : reply.varbinds)
        EXPECT_EQ(typeName(vb.type), "Gauge32") << vb;
    EXPECT_EQ(reply.varbinds[0].unsignedValue, 4294967295ul);
    EXPECT_EQ(reply.varbinds[1].unsignedValue, 4294967294ul);
    EXPECT_EQ(reply.varbinds[2].unsignedValue, 3000ul);
    EXPECT_EQ(reply.varbinds[3].unsignedValue, 600ul);
}

TEST(FanTable, SetOnAnyColumnIsRefusedAndChangesNothing)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    SnmpClient writer = agent.client("private");
    for (int column = 1; column <= 10; ++column) {
        SetValue value = column == 1 || column >= 4 ? SetValue::ofInteger(fanCell(column, 1), 7)
                                                    : SetValue::ofOctets(fanCell(column, 1), "changed");
        if (column >= 4 && column <= 9)
            value = SetValue::ofGauge(fanCell(column, 1), 7);
        Response reply = writer.set({value});
        EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_NOTWRITABLE)) << "column " << column;
        EXPECT_EQ(reply.errorIndex, 1) << "column " << column;
    }
    EXPECT_EQ(textAt(agent, 2, 1), "Fan 1A Tach");
}

TEST(FanTable, ColumnBeyondTheLastGivesNoSuchObjectForThatCellOnly)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    Response reply = agent.client().get({fanCell(11, 1), fanCell(2, 1)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 2u);
    EXPECT_EQ(typeName(reply.varbinds[0].type), "noSuchObject");
    EXPECT_EQ(reply.varbinds[1].octets, "Fan 1A Tach");
}

TEST(FanTable, IndexWithoutARowGivesNoSuchInstanceForEveryVarbind)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    Response reply = agent.client().get({fanCell(2, 1), fanCell(3, 2), fanCell(2, 99)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 3u);
    for (const VarBind &vb : reply.varbinds)
        EXPECT_EQ(typeName(vb.type), "noSuchInstance") << vb;
}

TEST(FanTable, StoreWithoutFansGivesAnEmptyTableAndGetNextPassesOn)
{
    Agent agent(fanAgent(machineWithFans({})));
    EXPECT_TRUE(walkFanTable(agent).empty());
    Response reply = agent.client().getNext({kFanTable});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 1u);
    EXPECT_FALSE(oidStartsWith(reply.varbinds[0].oid, kFanTable)) << reply;
    EXPECT_GT(oidCompare(reply.varbinds[0].oid, kFanTable), 0) << reply;
}

TEST(FanTable, FirstRequestAfterStartLoadsTheTable)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    EXPECT_EQ(agent.countCalls("quel_dm_BindRow " + kFanStoreTable), 0u);
    EXPECT_EQ(textAt(agent, 2, 3), "Fan 2A Tach");
    EXPECT_EQ(agent.countCalls("quel_dm_BindRow " + kFanStoreTable), 1u);
}

TEST(FanTable, WalksWithinTwoSecondsSeeTheSameRowsEvenIfTheStoreChanged)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    EXPECT_EQ(textAt(agent, 3, 1), " 42% of maximum");

    agent.replaceMachine(machineWithFans({{1, "Fan 1A Tach", 90}}));
    agent.setClock(kStartTime + 1);
    EXPECT_EQ(textAt(agent, 3, 1), " 42% of maximum");
    EXPECT_EQ(walkFanTable(agent).size(), 30u);

    agent.setClock(kStartTime + 2);
    EXPECT_EQ(textAt(agent, 3, 1), " 90% of maximum");
    EXPECT_EQ(walkFanTable(agent).size(), 10u);
    EXPECT_EQ(agent.countCalls("quel_dm_BindRow " + kFanStoreTable), 2u);
}

} // namespace
} // namespace orv3::test

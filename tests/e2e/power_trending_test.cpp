// The power trending table through the real agent: rows from the power
// history up to its first sample without a time, the readings in their
// columns, the time text, and the 30-second cache.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kTrendingTable = oidJoin(kMonitorsRoot, {10, 3, 1});

std::string trendingCell(int column, int index)
{
    return oidJoin(kTrendingTable, {1, column, index});
}

nlohmann::json sample(int number, long time, int base)
{
    return {{"sample", number}, {"time", time},  {"a", base + 1}, {"b", base + 2},
            {"c", base + 3},    {"d", base + 4}, {"e", base + 5}, {"f", base + 6}};
}

nlohmann::json historyOf(int samples, long firstTime = 1750000000)
{
    nlohmann::json history = nlohmann::json::array();
    for (int i = 0; i < samples; ++i)
        history.push_back(sample(i + 1, firstTime + 720L * i, 100 * (i + 1)));
    return history;
}

// The agent formats times in UTC and the C locale, so that the texts are known.
AgentOptions agentFor(const nlohmann::json &history, nlohmann::json faults = nlohmann::json::array(),
                      std::string debugTokens = "")
{
    MachineBuilder machine;
    machine.power({{"history", history}});
    for (const auto &fault : faults)
        machine.fault(fault["call"], "", fault["result"], 0);
    AgentOptions options = fanAgent(machine.json(), std::move(debugTokens));
    options.env = {{"TZ", "UTC"}, {"LC_ALL", "C"}};
    return options;
}

TEST(PowerTrending, ServesEachReadingInItsColumnAndTheTimeAsText)
{
    Agent agent(agentFor(historyOf(2)));
    std::vector<VarBind> walk = agent.client().walk(kTrendingTable);
    ASSERT_EQ(walk.size(), 16u);
    auto at = [&](int column, int row) { return walk.at(static_cast<size_t>((column - 1) * 2 + row)); };
    EXPECT_EQ(at(1, 0).oid, trendingCell(1, 1));
    EXPECT_EQ(at(1, 1).integer, 2);
    EXPECT_EQ(typeName(at(2, 0).type), "OCTET STRING");
    EXPECT_EQ(at(2, 0).octets, "Sun 15:06:40");
    EXPECT_EQ(at(2, 1).octets, "Sun 15:18:40");
    for (int column = 3; column <= 8; ++column) {
        EXPECT_EQ(typeName(at(column, 1).type), "INTEGER");
        EXPECT_EQ(at(column, 1).integer, 200 + column - 2) << "column " << column; // a..f = base+1..base+6
    }
}

TEST(PowerTrending, AFirstSampleWithoutATimeIsAnEmptyTable)
{
    nlohmann::json history = historyOf(3);
    history[0]["time"] = 0;
    Agent agent(agentFor(history, nlohmann::json::array(), "powerTrendingSampleTable"));
    EXPECT_TRUE(agent.client().walk(kTrendingTable).empty());
    EXPECT_GE(agent.countInStdout("powerTrendingSampleTable: initialize_powerTrendingSampleTable_local: The timestamp "
                                  "of row(1) is 0 so break.\n"),
              1u)
        << agent.stdoutText();
}

TEST(PowerTrending, ASampleWithoutATimeEndsTheTable)
{
    nlohmann::json history = historyOf(5);
    history[3]["time"] = 0;
    Agent agent(agentFor(history));
    EXPECT_EQ(agent.client().walk(oidJoin(kTrendingTable, {1, 1})).size(), 3u);
}

TEST(PowerTrending, AFullHistoryIs120Rows)
{
    Agent agent(agentFor(historyOf(150)));
    std::vector<VarBind> indexes = agent.client().walk(oidJoin(kTrendingTable, {1, 1}));
    ASSERT_EQ(indexes.size(), 120u);
    EXPECT_EQ(indexes.front().integer, 1);
    EXPECT_EQ(indexes.back().integer, 120);
}

TEST(PowerTrending, IsReadOnceIn30SecondsCountedInWholeSeconds)
{
    Agent agent(agentFor(historyOf(120)));
    const std::string call = "pwrmgt_get_history_power";
    agent.client().get({trendingCell(3, 1)});
    agent.setClock(kStartTime + 30); // exactly the last load + 30: still cached
    agent.client().get({trendingCell(3, 1)});
    EXPECT_EQ(agent.countCalls(call), 1u);
    agent.setClock(kStartTime + 31);
    agent.client().get({trendingCell(3, 1)});
    EXPECT_EQ(agent.countCalls(call), 2u);
}

TEST(PowerTrending, AFailedHistoryIsAnEmptyTableUntilTheNextLoad)
{
    Agent agent(
        agentFor(historyOf(4), {{{"call", "pwrmgt_get_history_power"}, {"result", 3}}}, "powerTrendingSampleTable"));
    EXPECT_TRUE(agent.client().walk(kTrendingTable).empty());
    EXPECT_GE(agent.countInStdout("initialize_powerTrendingSampleTable_local: Failed to call pwrmgt_get_history_power( "
                                  "SYS_PWR_DOMAIN, LAST_HOUR_24 ), rc:3.\n"),
              1u)
        << agent.stdoutText();
}

TEST(PowerTrending, IsReadOnlyWithNoSuchObjectPastColumnEight)
{
    Agent agent(agentFor(historyOf(2)));
    Response reply = agent.client().get({trendingCell(9, 1)});
    ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
    EXPECT_EQ(reply.varbinds[0].type, SNMP_NOSUCHOBJECT);
    reply = agent.client("private").set({SetValue::ofInteger(trendingCell(3, 1), 1)});
    EXPECT_EQ(reply.errorStatus, SNMP_ERR_NOTWRITABLE) << reply;
}

} // namespace
} // namespace orv3::test

// The module's debug traces, as snmpd prints them with -D.
#include "fan_machines.h"

#include <gtest/gtest.h>

#include <regex>

namespace orv3::test {
namespace {

// A trace line: the "trace" header naming routine, source and line, then the message.
std::string traced(const std::string &routine, const std::string &source, const std::string &token,
                   const std::string &message)
{
    return "trace: " + routine + R"(\(\): [^\n]*)" + source + R"(, [0-9]+:\n)" + token + ": " + message;
}

bool contains(const std::string &text, const std::string &pattern)
{
    return std::regex_search(text, std::regex(pattern));
}

TEST(Traces, FanCountRegistrationNamesGaugeAlthoughItServesInteger)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans), "trace,fans_scalars"));
    std::string out = agent.stdoutText();
    EXPECT_TRUE(contains(out, traced("init_fans_scalars", "fans_scalars.cpp", "fans_scalars",
                                     R"(Registering fans_scalars variables\n)")))
        << out;
    EXPECT_TRUE(contains(out, traced("init_fans_scalars", "fans_scalars.cpp", "fans_scalars",
                                     R"(Registering fanNumber\[ASN_GAUGE\] OK\n)")))
        << out;
}

TEST(Traces, RowCountNamesTheCountAndTheLastLoad)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans), "trace,fanTable"));
    agent.client().get({kFanNumber});
    EXPECT_TRUE(
        contains(agent.stdoutText(), traced("fanTable_get_row_count", "fanTable_local.cpp", "fanTable",
                                            R"(fanTable_get_row_count curRowCount=3, gFanTableLastRowCount=0\n)")));

    agent.client().walk(kFanTable);
    agent.client().get({kFanNumber});
    EXPECT_EQ(agent.countInStdout("fanTable: fanTable_get_row_count curRowCount=3, gFanTableLastRowCount=3\n"), 1u);
}

TEST(Traces, TableHandlerNamesTheMode)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans), "fanTable"));
    agent.client().get({fanCell(2, 1)});
    EXPECT_EQ(agent.countInStdout("fanTable: fanTable_handler: reqinfo->mode = 160\n"), 1u);
}

TEST(Traces, NothingIsTracedWithoutDebugging)
{
    Agent agent(fanAgent(machineWithFans(kThreeFans)));
    agent.client().walk(kMonitorsRoot);
    EXPECT_EQ(agent.countInStdout("fanTable:"), 0u);
    EXPECT_EQ(agent.countInStdout("fans_scalars:"), 0u);
}

} // namespace
} // namespace orv3::test

// Several managers at once: walks (GETNEXT and GETBULK) of the subtree and
// the fan table, whole fan rows by GET and GETBULK, and SETs of the LEDs
// and the power-capping settings, while the machine file gets a new version
// every 20 ms and the clock moves on so that the tables reload. Every cell
// of a fan row carries its version, so a row put together from two loads
// shows. scripts/soak --concurrent runs the same campaign for a minute.
#include "fan_machines.h"
#include "harness/campaign.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

constexpr int kFans = 8;

TEST(Concurrency, ManagersWalkingAndSettingWhileTheMachineChangesSeeWholeRowsAndLoseNoSet)
{
    nlohmann::json base = nlohmann::json::parse(readFileText(std::string(ORV3_SOURCE_DIR) + "/machines/sample.json"));
    AgentOptions options;
    options.machineJson = versionedMachine(base, 0, kFans);
    options.clockStart = kStartTime;
    Agent agent(options);

    ConcurrencyReport report = runConcurrencyCampaign(agent, base, kFans, kStartTime, 4, std::chrono::seconds(3),
                                                      std::chrono::milliseconds(20));
    for (const std::string &failure : report.failures)
        ADD_FAILURE() << failure;
    EXPECT_GT(report.walks, 0);
    EXPECT_GT(report.rowsChecked, 0);
    EXPECT_GT(report.setsReadBack, 0);
    EXPECT_GT(report.edits, 10);
    EXPECT_TRUE(agent.running());
    agent.stop();
    EXPECT_EQ(agent.sanitizerFindings(), "");
}

} // namespace
} // namespace orv3::test

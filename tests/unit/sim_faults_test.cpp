// When the simulator's faults fire: after a number of calls that go
// through, for a number of calls, and slow calls that still answer.
#include "platform.h"
#include "unit_machine.h"

#include "orv3/feature_query.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace orv3::test {
namespace {

std::string featureMachine(const std::string &fault)
{
    return R"({"description": "feature 17 offered", "features": {"17": 1}, "faults": [)" + fault + "]}";
}

int32_t askForPciInventory(uint8_t &supported)
{
    supported = 0xEE;
    return agentless_get_supported_status(&supported, 17);
}

TEST(SimFaults, AfterLetsThatManyCallsThroughAndTimesBoundsTheFailures)
{
    ServedMachine served(featureMachine(
        R"({"call": "agentless_get_supported_status", "key": "17", "result": 3, "after": 2, "times": 1})"));
    uint8_t supported = 0;
    EXPECT_EQ(askForPciInventory(supported), 0);
    EXPECT_EQ(supported, 1);
    EXPECT_EQ(askForPciInventory(supported), 0);
    EXPECT_EQ(askForPciInventory(supported), 3) << "the third call fails";
    EXPECT_EQ(supported, 0xEE) << "and writes nothing";
    EXPECT_EQ(askForPciInventory(supported), 0) << "once only";
    EXPECT_EQ(supported, 1);
}

TEST(SimFaults, ADelayAloneMakesTheCallSlowButLetsItAnswer)
{
    ServedMachine served(featureMachine(R"({"call": "agentless_get_supported_status", "delayMs": 60, "times": 1})"));
    uint8_t supported = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(askForPciInventory(supported), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
    EXPECT_EQ(supported, 1);

    const auto again = std::chrono::steady_clock::now();
    EXPECT_EQ(askForPciInventory(supported), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - again, std::chrono::milliseconds(60)) << "times bounds the delays";
}

TEST(SimFaults, ADelayWithAResultIsASlowFailure)
{
    ServedMachine served(featureMachine(R"({"call": "agentless_get_supported_status", "delayMs": 30, "result": 2})"));
    uint8_t supported = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(askForPciInventory(supported), 2);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
    EXPECT_EQ(supported, 0xEE);
}

TEST(SimFaults, AFillAloneLetsTheCallAnswerWithEveryByteItWritesSetToTheFill)
{
    ServedMachine served(featureMachine(R"({"call": "agentless_get_supported_status", "fill": 65, "times": 1})"));
    uint8_t supported = 0;
    EXPECT_EQ(askForPciInventory(supported), 0);
    EXPECT_EQ(supported, 0x41);
    EXPECT_EQ(askForPciInventory(supported), 0);
    EXPECT_EQ(supported, 1) << "times bounds the fills";
}

TEST(SimFaults, AFillWithAResultIsAFailureThatWritesNothing)
{
    ServedMachine served(featureMachine(R"({"call": "agentless_get_supported_status", "fill": 255, "result": 4})"));
    uint8_t supported = 0;
    EXPECT_EQ(askForPciInventory(supported), 4);
    EXPECT_EQ(supported, 0xEE);
}

TEST(SimFaults, NegativeCountsAndLongDelaysAreRefusedWithTheirLine)
{
    EXPECT_NE(
        machineFileError(featureMachine(R"({"call": "x", "after": -1})")).find("/faults/0/after: must not be negative"),
        std::string::npos);
    EXPECT_NE(machineFileError(featureMachine(R"({"call": "x", "delayMs": 10001})"))
                  .find("/faults/0/delayMs: must be between 0 and 10000"),
              std::string::npos);
    EXPECT_NE(machineFileError(featureMachine(R"({"call": "x", "fill": 256})"))
                  .find("/faults/0/fill: must be a byte, between 0 and 255"),
              std::string::npos);
}

} // namespace
} // namespace orv3::test

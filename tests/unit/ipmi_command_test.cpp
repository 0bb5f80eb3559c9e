// doIpmiCmd in-process, against the simulated IPMI channel: the exchange
// rendered as text, five attempts before giving up, a failed completion
// code, and messages that stay within the caller's 512 bytes.
#include "ipmi_command.h"
#include "unit_machine.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <string>
#include <vector>

namespace {

using orv3::test::ServedMachine;

std::string machineWithIpmi(const std::vector<nlohmann::json> &exchanges,
                            const nlohmann::json &faults = nlohmann::json::array())
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["ipmi"] = nlohmann::json::array();
    for (const nlohmann::json &known : exchanges)
        machine["ipmi"].push_back(known);
    machine["faults"] = faults;
    return machine.dump();
}

nlohmann::json knownExchange(const std::string &request, const std::string &response)
{
    return {{"request", request}, {"response", response}};
}

nlohmann::json failing(int result, int times = -1)
{
    nlohmann::json fault = {{"call", "IPMI_DoIPMICmd"}, {"result", result}};
    if (times >= 0)
        fault["times"] = times;
    return nlohmann::json::array({fault});
}

struct Outcome {
    int result = -1;
    int32_t responseLength = -1;
    std::vector<uint8_t> response = std::vector<uint8_t>(16, 0xee);
    std::string message;
};

Outcome run(std::vector<uint8_t> request)
{
    Outcome outcome;
    char message[512 + 8];
    memset(message, 'x', sizeof message);
    outcome.result = doIpmiCmd(request.data(), static_cast<int32_t>(request.size()), outcome.response.data(),
                               &outcome.responseLength, message);
    EXPECT_NE(memchr(message, '\0', 512), nullptr) << "the message ends within 512 bytes";
    EXPECT_EQ(std::string(message + 512, 8), std::string(8, 'x')) << "nothing is written past 512 bytes";
    outcome.message = message;
    return outcome;
}

TEST(DoIpmiCmd, ATwoByteRequestSendsNoDataAndRendersTheExchange)
{
    ServedMachine served(machineWithIpmi({knownExchange("06 01", "00")}));
    Outcome outcome = run({0x06, 0x01});
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.responseLength, 1);
    EXPECT_EQ(outcome.message, "IPMI_DoIPMICmd(06 01 )->00 , rc=0\n");
    EXPECT_EQ(std::vector<uint8_t>(outcome.response.begin() + 1, outcome.response.end()), std::vector<uint8_t>(15, 0))
        << "16 response bytes are cleared before the call";
}

TEST(DoIpmiCmd, CommandDataFollowsNetworkFunctionAndCommand)
{
    ServedMachine served(machineWithIpmi({knownExchange("2e 01 9d d2 00", "00 9d d2 00 7f")}));
    Outcome outcome = run({0x2e, 0x01, 0x9d, 0xd2, 0x00});
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.responseLength, 5);
    EXPECT_EQ(outcome.message, "IPMI_DoIPMICmd(2e 01 9d d2 00 )->00 9d d2 00 7f , rc=0\n");
}

TEST(DoIpmiCmd, AFailedCompletionCodeIsReportedInDecimal)
{
    ServedMachine served(machineWithIpmi({}));
    Outcome outcome = run({0x06, 0x01});
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.message, "IPMI failed response=193\n"); // 0xc1, invalid command
}

TEST(DoIpmiCmd, GivesUpAfterFiveFailedAttempts)
{
    ServedMachine served(machineWithIpmi({knownExchange("06 01", "00 20")}, failing(0x83, 5)));
    Outcome outcome = run({0x06, 0x01});
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.message, "IPMI_DoIPMICmd call failed for NetFun: 6 Cmd:1 rc=131\n");
    EXPECT_EQ(outcome.responseLength, 0);
}

TEST(DoIpmiCmd, SucceedsOnTheFifthAttempt)
{
    ServedMachine served(machineWithIpmi({knownExchange("06 01", "00 20")}, failing(-1, 4)));
    Outcome outcome = run({0x06, 0x01});
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.message, "IPMI_DoIPMICmd(06 01 )->00 20 , rc=0\n");
}

TEST(DoIpmiCmd, ALongRequestRendersAsAtMost255Characters)
{
    std::vector<uint8_t> request(100, 0xab);
    request[0] = 0x30;
    request[1] = 0x40;
    std::string requestHex = "30 40";
    for (int i = 2; i < 100; ++i)
        requestHex += " ab";
    ServedMachine served(machineWithIpmi({knownExchange(requestHex, "00 01 02 03 04 05 06 07 08 09 0a 0b "
                                                                    "0c 0d 0e 0f")}));
    Outcome outcome = run(request);
    EXPECT_EQ(outcome.result, 1);
    std::string requestText = "30 40 ";
    for (int i = 2; i < 85; ++i)
        requestText += "ab ";
    ASSERT_EQ(requestText.size(), 255u);
    EXPECT_EQ(outcome.message,
              "IPMI_DoIPMICmd(" + requestText + ")->00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f , rc=0\n");
}

TEST(DoIpmiCmd, MissingBuffersAreRefused)
{
    uint8_t request[2] = {6, 1};
    uint8_t response[16];
    int32_t length = 0;
    char message[512];
    EXPECT_EQ(doIpmiCmd(nullptr, 2, response, &length, message), 0);
    EXPECT_EQ(doIpmiCmd(request, 2, nullptr, &length, message), 0);
    EXPECT_EQ(doIpmiCmd(request, 2, response, nullptr, message), 0);
    EXPECT_EQ(doIpmiCmd(request, 2, response, &length, nullptr), 0);
}

} // namespace

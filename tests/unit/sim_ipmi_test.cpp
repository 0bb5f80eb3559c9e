// The simulated IPMI channel: answers from the machine's exchanges, matched
// on the whole request, with the IPMI completion codes for an unknown
// command or unusable data, faults keyed by the request, and the machine
// file's checks of the "ipmi" section.
#include "machine.h"
#include "unit_machine.h"

#include "orv3/ipmi.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace {

using orv3::test::machineFileError;
using orv3::test::ServedMachine;

std::string machineWithIpmi(const nlohmann::json &exchanges, const nlohmann::json &faults = nlohmann::json::array())
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["ipmi"] = exchanges;
    machine["faults"] = faults;
    return machine.dump(2);
}

struct Answer {
    int32_t result = -1;
    std::vector<uint8_t> response;
};

// Sends netfn, command and data; the response buffer is 16 bytes.
Answer send(uint8_t netfn, uint8_t cmd, std::vector<uint8_t> data)
{
    uint8_t response[16];
    memset(response, 0xee, sizeof response);
    int32_t length = -1;
    Answer answer;
    answer.result = IPMI_DoIPMICmd(netfn, cmd, data.data(), static_cast<int32_t>(data.size()), response, &length);
    if (answer.result == 0 && length >= 0 && length <= 16)
        answer.response.assign(response, response + length);
    return answer;
}

const nlohmann::json kExchanges = nlohmann::json::array({
    {{"request", "06 01"}, {"response", "00 20 01 03 10 02 bf 9d d2 00 01 00 04 0a 00 00"}},
    {{"request", "2e 01 9d d2 00"}, {"response", "00 9d d2 00 7f"}},
});

TEST(SimIpmi, AnswersAKnownCommandWithItsResponse)
{
    ServedMachine served(machineWithIpmi(kExchanges));
    Answer answer = send(0x06, 0x01, {});
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.response, (std::vector<uint8_t>{0x00, 0x20, 0x01, 0x03, 0x10, 0x02, 0xbf, 0x9d, 0xd2, 0x00, 0x01,
                                                     0x00, 0x04, 0x0a, 0x00, 0x00}));
}

TEST(SimIpmi, MatchesTheWholeRequestDataIncluded)
{
    ServedMachine served(machineWithIpmi(kExchanges));
    EXPECT_EQ(send(0x2e, 0x01, {0x9d, 0xd2, 0x00}).response, (std::vector<uint8_t>{0x00, 0x9d, 0xd2, 0x00, 0x7f}));
    EXPECT_EQ(send(0x2e, 0x01, {0x9d, 0xd2}).response, (std::vector<uint8_t>{0xc1}));
    EXPECT_EQ(send(0x06, 0x01, {0x00}).response, (std::vector<uint8_t>{0xc1}));
}

TEST(SimIpmi, AnUnknownCommandIsInvalidCommand)
{
    ServedMachine served(machineWithIpmi(kExchanges));
    Answer answer = send(0x0a, 0x10, {});
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.response, (std::vector<uint8_t>{0xc1}));
}

TEST(SimIpmi, UnusableDataIsInvalidDataLength)
{
    ServedMachine served(machineWithIpmi(kExchanges));
    uint8_t response[16] = {};
    int32_t length = 0;
    EXPECT_EQ(IPMI_DoIPMICmd(0x06, 0x01, nullptr, -1, response, &length), 0);
    EXPECT_EQ(length, 1);
    EXPECT_EQ(response[0], 0xc7);
    EXPECT_EQ(IPMI_DoIPMICmd(0x06, 0x01, nullptr, 3, response, &length), 0);
    EXPECT_EQ(response[0], 0xc7);
    std::vector<uint8_t> huge(300, 0);
    EXPECT_EQ(IPMI_DoIPMICmd(0x06, 0x01, huge.data(), 300, response, &length), 0);
    EXPECT_EQ(response[0], 0xc7);
}

TEST(SimIpmi, WithoutAResponseBufferThereIsNoResponse)
{
    int32_t length = 0;
    uint8_t response[16];
    EXPECT_EQ(IPMI_DoIPMICmd(0x06, 0x01, nullptr, 0, nullptr, &length), 1);
    EXPECT_EQ(IPMI_DoIPMICmd(0x06, 0x01, nullptr, 0, response, nullptr), 1);
}

TEST(SimIpmi, FaultIsKeyedByTheRequestAndWritesNothing)
{
    ServedMachine served(machineWithIpmi(
        kExchanges,
        nlohmann::json::array({{{"call", "IPMI_DoIPMICmd"}, {"key", "2e 01 9d d2 00"}, {"result", 0x83}}})));
    uint8_t response[16];
    memset(response, 0xee, sizeof response);
    int32_t length = -1;
    const uint8_t data[] = {0x9d, 0xd2, 0x00};
    EXPECT_EQ(IPMI_DoIPMICmd(0x2e, 0x01, data, 3, response, &length), 0x83);
    EXPECT_EQ(length, -1);
    EXPECT_EQ(response[0], 0xee);
    EXPECT_EQ(send(0x06, 0x01, {}).result, 0);
}

TEST(SimIpmi, SampleMachineKnowsGetDeviceId)
{
    Answer answer = send(0x06, 0x01, {});
    ASSERT_EQ(answer.result, 0);
    ASSERT_EQ(answer.response.size(), 16u);
    EXPECT_EQ(answer.response[0], 0x00);
}

TEST(SimIpmiMachineFile, BytesAreHexadecimalSeparatedByBlanks)
{
    EXPECT_EQ(machineFileError("{ \"ipmi\": [\n { \"request\": \"06 1\", \"response\": \"0\" } ] }"), "");
    EXPECT_EQ(machineFileError("{ \"ipmi\": [\n { \"request\": \"06 0x1\",\n \"response\": \"00\" } ] }"),
              "m.json:2: /ipmi/0/request: \"0x1\" is not a hexadecimal byte (\"00\" to \"ff\")");
    EXPECT_EQ(machineFileError("{ \"ipmi\": [\n { \"request\": \"06 01\",\n \"response\": 0 } ] }"),
              "m.json:3: /ipmi/0/response: must be a text of hexadecimal bytes separated by blanks (\"06 01\")");
}

TEST(SimIpmiMachineFile, ARequestNamesNetworkFunctionAndCommand)
{
    EXPECT_EQ(machineFileError("{ \"ipmi\": [\n { \"request\": \"06\",\n \"response\": \"00\" } ] }"),
              "m.json:2: /ipmi/0/request: a request holds at least the network function and the command");
}

TEST(SimIpmiMachineFile, AResponseFitsTheCallersSixteenBytes)
{
    EXPECT_EQ(machineFileError("{ \"ipmi\": [\n { \"request\": \"06 01\",\n \"response\": \"\" } ] }"),
              "m.json:3: /ipmi/0/response: a response holds the completion code and at most 15 bytes after it");
    EXPECT_EQ(machineFileError("{ \"ipmi\": [\n { \"request\": \"06 01\",\n"
                               " \"response\": \"00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10\" } ] }"),
              "m.json:3: /ipmi/0/response: a response holds the completion code and at most 15 bytes after it");
}

TEST(SimIpmiMachineFile, AnExchangeNeedsBothSidesAndKnownFields)
{
    EXPECT_EQ(machineFileError("{ \"ipmi\": [\n { \"request\": \"06 01\" } ] }"),
              "m.json:2: /ipmi/0: an IPMI exchange needs \"request\" and \"response\"");
    EXPECT_EQ(machineFileError("{ \"ipmi\": [\n { \"request\": \"06 01\", \"response\": \"00\",\n \"reply\": 1 } ] }"),
              "m.json:3: /ipmi/0/reply: unknown IPMI exchange field (known: request, response; names starting with "
              "\"_\" are free for comments)");
    EXPECT_EQ(machineFileError("{ \"ipmi\": {} }"), "m.json:1: /ipmi: must be an array of IPMI exchanges");
}

} // namespace

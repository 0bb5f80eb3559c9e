// doIpmiCmd as another module of the agent calls it: a probe module loaded
// next to the monitors module sends the bytes of a GET's OID through it and
// answers the message, while the simulated IPMI channel logs each attempt.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kProbe = "1.3.6.1.4.1.53917.99.1";

AgentOptions agentWithProbe(const MachineBuilder &machine)
{
    AgentOptions options = fanAgent(machine.json());
    options.extraConfig.push_back(std::string("dlmod ipmi_probe ") + ORV3_IPMI_PROBE_PATH);
    return options;
}

std::string probe(Agent &agent, const std::vector<int> &requestBytes)
{
    std::string oid = kProbe;
    for (int byte : requestBytes)
        oid += "." + std::to_string(byte);
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << reply;
    return reply.varbinds.size() == 1 ? reply.varbinds[0].octets : "";
}

TEST(IpmiHelper, ATwoByteRequestRendersRequestAndResponse)
{
    MachineBuilder machine;
    machine.ipmiExchange("06 01", "00");
    Agent agent(agentWithProbe(machine));
    agent.clearCallLog();
    EXPECT_EQ(probe(agent, {6, 1}), "1 IPMI_DoIPMICmd(06 01 )->00 , rc=0\n");
    EXPECT_EQ(agent.callLog(), (std::vector<std::string>{"IPMI_DoIPMICmd 06 01 -> 00"}));
}

TEST(IpmiHelper, CommandDataAndALongerResponse)
{
    MachineBuilder machine;
    machine.ipmiExchange("06 01", "00").ipmiExchange("2e 01 9d d2 00", "00 9d d2 00 7f");
    Agent agent(agentWithProbe(machine));
    EXPECT_EQ(probe(agent, {0x2e, 1, 0x9d, 0xd2, 0}), "1 IPMI_DoIPMICmd(2e 01 9d d2 00 )->00 9d d2 00 7f , rc=0\n");
}

TEST(IpmiHelper, AnUnknownCommandIsAFailedResponse)
{
    MachineBuilder machine;
    Agent agent(agentWithProbe(machine));
    EXPECT_EQ(probe(agent, {0x0a, 0x10}), "0 IPMI failed response=193\n");
}

TEST(IpmiHelper, FiveFailedAttemptsAreLoggedAndReported)
{
    MachineBuilder machine;
    machine.ipmiExchange("06 01", "00").fault("IPMI_DoIPMICmd", "06 01", 0x83, 0);
    Agent agent(agentWithProbe(machine));
    agent.clearCallLog();
    EXPECT_EQ(probe(agent, {6, 1}), "0 IPMI_DoIPMICmd call failed for NetFun: 6 Cmd:1 rc=131\n");
    EXPECT_EQ(agent.callLog(), std::vector<std::string>(5, "IPMI_DoIPMICmd 06 01 -> rc 131"));
}

TEST(IpmiHelper, ARetrySucceedsAfterFailedAttempts)
{
    MachineBuilder machine;
    machine.ipmiExchange("06 01", "00 20").fault("IPMI_DoIPMICmd", "", 1, 0, 4);
    Agent agent(agentWithProbe(machine));
    agent.clearCallLog();
    EXPECT_EQ(probe(agent, {6, 1}), "1 IPMI_DoIPMICmd(06 01 )->00 20 , rc=0\n");
    EXPECT_EQ(agent.countCalls("IPMI_DoIPMICmd 06 01 -> rc 1"), 4u);
    EXPECT_EQ(agent.countCalls("IPMI_DoIPMICmd 06 01 -> 00 20"), 1u);
}

TEST(IpmiHelper, TheSampleMachineAnswersGetDeviceId)
{
    AgentOptions options;
    options.machinePath = "sample.json";
    options.extraConfig.push_back(std::string("dlmod ipmi_probe ") + ORV3_IPMI_PROBE_PATH);
    Agent agent(options);
    EXPECT_EQ(probe(agent, {6, 1}),
              "1 IPMI_DoIPMICmd(06 01 )->00 20 01 03 10 02 bf 9d d2 00 01 00 04 0a 00 00 , rc=0\n");
}

} // namespace
} // namespace orv3::test

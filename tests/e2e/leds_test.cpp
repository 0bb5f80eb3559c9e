// identityLED, informationLED and allLEDsTable through the real agent:
// SETs pass the module's state machine and the data manager's validation.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kLedStore = "s/lightpathstatus/status/lightpathstatustbl";
const std::string kIdentityLED = oidJoin(kMonitorsRoot, {8, 1, 0});
const std::string kInformationLED = oidJoin(kMonitorsRoot, {8, 3, 0});
const std::string kLedTable = oidJoin(kMonitorsRoot, {8, 2});
const std::string kUserName = "s/lightpathstatus/data/swe_username";

std::string ledCell(int column, int index)
{
    return oidJoin(kLedTable, {1, column, index});
}

nlohmann::json ledRow(int index, const std::string &label, int state = 0, const std::string &color = "Amber")
{
    return {{"index", index}, {"ledid", 100 + index}, {"descr", label}, {"status", state}, {"color", color}};
}

MachineBuilder lightPath()
{
    MachineBuilder machine;
    machine.table(kLedStore, {ledRow(1, "Identify", 1, "Blue"), ledRow(2, "Fault"), ledRow(3, "CPU 1")})
        .variable("s/lightpathstatus/other/identification", {{"value", 0}, {"accepted", {0, 1, 2}}})
        .variable("s/lightpathstatus/other/info", {{"value", 0}, {"accepted", {0, 1}}})
        .variable(kUserName, "");
    return machine;
}

AgentOptions agentFor(const MachineBuilder &machine, std::string debugTokens = "")
{
    return fanAgent(machine.json(), std::move(debugTokens));
}

long ledValue(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(typeName(reply.varbinds.at(0).type), "INTEGER");
    return reply.varbinds.at(0).integer;
}

Response setLed(Agent &agent, const std::string &oid, long value)
{
    return agent.client("private").set({SetValue::ofInteger(oid, value)});
}

TEST(Leds, SetOfIdentityLedReachesTheStoreWithTheRequesterName)
{
    Agent agent(agentFor(lightPath(), "leds"));
    EXPECT_EQ(ledValue(agent, kIdentityLED), 0);
    Response reply = setLed(agent, kIdentityLED, 2);
    ASSERT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(ledValue(agent, kIdentityLED), 2);
    EXPECT_EQ(agent.countCalls("quel_dm_UpdateVars s/lightpathstatus/other/identification=2," + kUserName + "=SNMPv1"),
              1u);
    EXPECT_EQ(agent.countInStdout("leds: Handler state change from ACTION_DONE to IDLE\n"), 1u);
}

TEST(Leds, ValueTheDataManagerRejectsLeavesTheStoredValueAndTheNextSetWorks)
{
    Agent agent(agentFor(lightPath(), "leds"));
    agent.clearCallLog();
    // The validation's rejection sets no error by itself; the store then
    // refuses the update at COMMIT.
    Response rejected = setLed(agent, kIdentityLED, 7);
    EXPECT_EQ(errorStatusName(rejected.errorStatus), errorStatusName(SNMP_ERR_GENERR)) << rejected;
    EXPECT_EQ(rejected.errorIndex, 0) << "the agent reports a failed COMMIT for the request as a whole";
    EXPECT_EQ(agent.countCalls("quel_dm_ValidateVars"), 1u);
    EXPECT_EQ(ledValue(agent, kIdentityLED), 0);
    EXPECT_EQ(agent.countCalls("quel_dm_DeleteVarList"), 1u) << "no variable list is left behind";

    ASSERT_TRUE(setLed(agent, kIdentityLED, 1).ok());
    EXPECT_EQ(ledValue(agent, kIdentityLED), 1);
    EXPECT_EQ(agent.countCalls("quel_dm_DeleteVarList"), 2u);
}

TEST(Leds, FailedNamespaceLockGivesGenErrAndTheNextSetWorks)
{
    MachineBuilder machine = lightPath();
    machine.fault("quel_dm_LockNamespaces", "", 1, 7, 1);
    Agent agent(agentFor(machine, "leds"));
    agent.clearCallLog();
    Response locked = setLed(agent, kInformationLED, 1);
    EXPECT_EQ(errorStatusName(locked.errorStatus), errorStatusName(SNMP_ERR_GENERR)) << locked;
    EXPECT_EQ(locked.errorIndex, 1);
    EXPECT_EQ(ledValue(agent, kInformationLED), 0);
    EXPECT_EQ(agent.countCalls("quel_dm_DeleteVarList"), 1u);

    Response next = setLed(agent, kInformationLED, 1);
    ASSERT_TRUE(next.ok()) << next;
    EXPECT_EQ(ledValue(agent, kInformationLED), 1);
}

// The unlock comes after the update: the value is written, the request is
// told genErr, and the store has taken the lock back all the same, so the
// group's next SET locks as usual.
TEST(Leds, FailedNamespaceUnlockGivesGenErrForAWrittenValueAndTheNextSetWorks)
{
    MachineBuilder machine = lightPath();
    machine.fault("quel_dm_UnlockNamespaces", "", 1, 9, 1);
    Agent agent(agentFor(machine, "leds"));
    Response unlocked = setLed(agent, kInformationLED, 1);
    EXPECT_EQ(errorStatusName(unlocked.errorStatus), errorStatusName(SNMP_ERR_GENERR)) << unlocked;
    EXPECT_EQ(unlocked.errorIndex, 0) << "the agent reports a failed COMMIT for the request as a whole";
    EXPECT_EQ(ledValue(agent, kInformationLED), 1);

    for (long value : {0, 1, 0}) {
        Response next = setLed(agent, kInformationLED, value);
        ASSERT_TRUE(next.ok()) << next;
        EXPECT_EQ(ledValue(agent, kInformationLED), value);
    }
    Response identify = setLed(agent, kIdentityLED, 2);
    ASSERT_TRUE(identify.ok()) << identify;
}

TEST(Leds, SetOfBothLedsInOneRequestValidatesTheStoreOnce)
{
    Agent agent(agentFor(lightPath()));
    agent.clearCallLog();
    Response reply =
        agent.client("private").set({SetValue::ofInteger(kIdentityLED, 1), SetValue::ofInteger(kInformationLED, 1)});
    ASSERT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(agent.countCalls("quel_dm_ValidateVars"), 1u);
    EXPECT_EQ(agent.countCalls("quel_dm_UpdateVars"), 1u);
    EXPECT_EQ(agent.countCalls("quel_dm_LockNamespaces"), 1u);
    EXPECT_EQ(ledValue(agent, kIdentityLED), 1);
    EXPECT_EQ(ledValue(agent, kInformationLED), 1);
}

TEST(Leds, SetOfAnotherTypeIsRefused)
{
    Agent agent(agentFor(lightPath()));
    Response reply = agent.client("private").set({SetValue::ofOctets(kIdentityLED, "on")});
    EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_WRONGTYPE));
    EXPECT_EQ(ledValue(agent, kIdentityLED), 0);
}

TEST(Leds, ReadOnlyCommunityCannotSet)
{
    Agent agent(agentFor(lightPath()));
    Response reply = agent.client("public").set({SetValue::ofInteger(kIdentityLED, 1)});
    EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_NOACCESS)) << reply;
    EXPECT_EQ(ledValue(agent, kIdentityLED), 0);
}

TEST(LedTable, ColumnThreeIsNoSuchObjectInEveryRow)
{
    Agent agent(agentFor(lightPath()));
    Response reply = agent.client().get({ledCell(3, 1), ledCell(3, 2), ledCell(4, 1)});
    ASSERT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(typeName(reply.varbinds.at(0).type), "noSuchObject");
    EXPECT_EQ(typeName(reply.varbinds.at(1).type), "noSuchObject");
    EXPECT_EQ(reply.varbinds.at(2).octets, "Identify");
}

TEST(LedTable, WalkSkipsTheEmptyColumn)
{
    Agent agent(agentFor(lightPath()));
    std::vector<VarBind> walked = agent.client().walk(kLedTable);
    ASSERT_EQ(walked.size(), 15u);
    for (const VarBind &vb : walked)
        EXPECT_FALSE(oidStartsWith(vb.oid, oidJoin(kLedTable, {1, 3}))) << vb;
    EXPECT_EQ(walked[3].oid, ledCell(2, 1));
    EXPECT_EQ(walked[3].integer, 101);
    EXPECT_EQ(walked[9].oid, ledCell(5, 1));
    EXPECT_EQ(walked[9].integer, 1);
    EXPECT_EQ(walked[12].octets, "Blue");
}

TEST(LedTable, SetOfLedStateIsRefusedOnEveryVarbind)
{
    Agent agent(agentFor(lightPath()));
    Response reply =
        agent.client("private").set({SetValue::ofInteger(ledCell(5, 1), 0), SetValue::ofInteger(ledCell(5, 2), 1)});
    EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_NOTWRITABLE));
    EXPECT_EQ(agent.client().get({ledCell(5, 1)}).varbinds.at(0).integer, 1);
}

TEST(LedTable, LabelOfThreeHundredCharactersIsServedAsItsFirst255)
{
    std::string label(300, 'L');
    for (size_t i = 0; i < label.size(); ++i)
        label[i] = static_cast<char>('a' + i % 26);
    MachineBuilder machine = lightPath();
    machine.table(kLedStore, {ledRow(1, label)});
    Agent agent(agentFor(machine));
    EXPECT_EQ(agent.client().get({ledCell(4, 1)}).varbinds.at(0).octets, label.substr(0, 255));
}

TEST(LedTable, PollingEverySecondReloadsEveryFourthSecond)
{
    Agent agent(agentFor(lightPath()));
    for (long second = 0; second <= 12; ++second) {
        agent.setClock(kStartTime + second);
        ASSERT_EQ(agent.client().get({ledCell(1, 1)}).varbinds.at(0).integer, 1);
    }
    // Loads at the first request and 4, 8 and 12 seconds later.
    EXPECT_EQ(agent.countCalls("quel_dm_BindRow " + kLedStore), 4u);
}

TEST(LedTable, HandlerTracesTheModeAndTheLedGroupsState)
{
    Agent agent(agentFor(lightPath(), "allLEDsTable"));
    agent.client().get({ledCell(1, 1)});
    EXPECT_EQ(agent.countInStdout("allLEDsTable: allLEDsTable_handler: reqmode = 160-MODE_GET State IDLE\n"), 1u);
    EXPECT_EQ(agent.countInStdout("allLEDsTable: initialize_allLEDsTable_local iIndex = 3\n"), 1u);
}

} // namespace
} // namespace orv3::test

// Component VPD and the change-history table through the real agent.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

#include <regex>

namespace orv3::test {
namespace {

const std::string kComponentTable = oidJoin(kMonitorsRoot, {5, 17});
const std::string kTrackingTable = oidJoin(kMonitorsRoot, {5, 18});
const std::string kComponentStore = "s/vpd/componenttbl";

std::string componentCell(int column, int index)
{
    return oidJoin(kComponentTable, {1, column, index});
}

std::string trackingCell(int column, int index)
{
    return oidJoin(kTrackingTable, {1, column, index});
}

AgentOptions agentFor(const MachineBuilder &machine, std::string debugTokens = "")
{
    return fanAgent(machine.json(), std::move(debugTokens));
}

nlohmann::json component(int index, const std::string &fruName)
{
    return {{"index", index},
            {"fruNo", "01PF" + std::to_string(100 + index)},
            {"fruName", fruName},
            {"serialNo", "Y01UW0" + std::to_string(index)},
            {"mfgId", "TRVX"}};
}

TEST(ComponentVpd, ServesEveryColumnOfEveryComponent)
{
    MachineBuilder machine;
    machine.table(kComponentStore, {component(1, "System Board"), component(2, "Power Supply 1")});
    Agent agent(agentFor(machine));
    std::vector<VarBind> walk = agent.client().walk(kComponentTable);
    ASSERT_EQ(walk.size(), 10u);
    EXPECT_EQ(walk[0].oid, componentCell(1, 1));
    EXPECT_EQ(typeName(walk[0].type), "INTEGER");
    EXPECT_EQ(walk[2].octets, "01PF101");
    EXPECT_EQ(walk[4].octets, "System Board");
    EXPECT_EQ(walk[5].octets, "Power Supply 1");
    EXPECT_EQ(walk[7].octets, "Y01UW02");
    EXPECT_EQ(walk[8].octets, "TRVX");
    EXPECT_EQ(typeName(walk[8].type), "OCTET STRING");
}

TEST(ComponentVpd, AFruNameOf300CharactersIsServedAsItsFirst255)
{
    std::string name;
    for (int i = 0; i < 300; ++i)
        name += static_cast<char>('a' + i % 26);
    MachineBuilder machine;
    machine.table(kComponentStore, {component(1, name)});
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({componentCell(3, 1)});
    ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
    EXPECT_EQ(reply.varbinds[0].octets, name.substr(0, 255));
}

TEST(ComponentVpd, SteadyRequestsKeepTheRowsAndAPauseReloads)
{
    MachineBuilder machine;
    machine.table(kComponentStore, {component(1, "System Board")});
    Agent agent(agentFor(machine));
    const std::string bind = "quel_dm_BindRow " + kComponentStore;
    for (long now = kStartTime; now <= kStartTime + 9; now += 3) {
        agent.setClock(now);
        agent.client().get({componentCell(3, 1)});
    }
    EXPECT_EQ(agent.countCalls(bind), 1u);
    agent.setClock(kStartTime + 13);
    agent.client().get({componentCell(3, 1)});
    EXPECT_EQ(agent.countCalls(bind), 2u);
}

TEST(ComponentVpd, AFailedFirstRowIsPrintedUnderTheLoadersName)
{
    MachineBuilder machine;
    machine.table(kComponentStore, {component(1, "System Board")}).fault("quel_dm_GetFirstRow", kComponentStore, 1, 9);
    Agent agent(agentFor(machine));
    EXPECT_TRUE(agent.client().walk(kComponentTable).empty());
    EXPECT_TRUE(agent.waitForStdout("initialize_systemComponentLevelVpdTable_local quel_dm_GetFirstRow error "
                                    "9-operation failed, varStatus = 1\n"))
        << agent.stdoutText();
}

// ---- the change-history table ------------------------------------------------------

// A trace-log line of loadMaintancelog: its name, a source line, the text.
bool tracedLoad(const Agent &agent, const std::string &text)
{
    return std::regex_search(agent.traceLogText(), std::regex(R"(loadMaintancelog\[[0-9]+\] )" + text + "\r\n"));
}

TEST(ChangeTracking, CategoriesZeroOneAndSevenAreFirmwareHardwareAndConfiguration)
{
    MachineBuilder machine;
    machine.changeRecord(0, "BMC firmware updated to 5.10", "TGBT52L")
        .changeRecord(1, "Power Supply 2 replaced", "Serial D1DG94A001")
        .changeRecord(7, "NTP server changed", "admin");
    Agent agent(agentFor(machine));
    std::vector<VarBind> walk = agent.client().walk(kTrackingTable);
    ASSERT_EQ(walk.size(), 12u);
    EXPECT_EQ(walk[0].integer, 1);
    EXPECT_EQ(walk[2].integer, 3);
    EXPECT_EQ(walk[3].oid, trackingCell(2, 1));
    EXPECT_EQ(walk[3].octets, "Firmware");
    EXPECT_EQ(walk[4].octets, "Hardware");
    EXPECT_EQ(walk[5].octets, "Configuration");
    EXPECT_EQ(typeName(walk[5].type), "OCTET STRING");
    EXPECT_EQ(walk[6].octets, "BMC firmware updated to 5.10");
    EXPECT_EQ(walk[10].octets, "Serial D1DG94A001");
    EXPECT_EQ(walk[11].octets, "admin");
    EXPECT_TRUE(tracedLoad(agent, "count:3")) << agent.traceLogText();
}

TEST(ChangeTracking, ALogOfNoRecordsIsAnEmptyTableWithoutAFailure)
{
    MachineBuilder machine;
    Agent agent(agentFor(machine));
    EXPECT_TRUE(agent.client().walk(kTrackingTable).empty());
    EXPECT_TRUE(tracedLoad(agent, "count:0")) << agent.traceLogText();
    EXPECT_EQ(agent.traceLogText().find("failed"), std::string::npos) << agent.traceLogText();
}

TEST(ChangeTracking, ANegativeCountIsAnEmptyTableAndTracedAsAFailure)
{
    MachineBuilder machine;
    machine.changeRecord(0, "BMC firmware updated to 5.10", "TGBT52L").fault("get_chghist_log", "", -1, 0);
    Agent agent(agentFor(machine));
    EXPECT_TRUE(agent.client().walk(kTrackingTable).empty());
    EXPECT_TRUE(tracedLoad(agent, "count:-1")) << agent.traceLogText();
    EXPECT_TRUE(tracedLoad(agent, "get_chghist_log failed")) << agent.traceLogText();
}

TEST(ChangeTracking, AFailureEmptiesTheRowsOfTheLastGoodLoad)
{
    MachineBuilder machine;
    machine.changeRecord(0, "BMC firmware updated to 5.10", "TGBT52L");
    Agent agent(agentFor(machine));
    EXPECT_EQ(agent.client().walk(kTrackingTable).size(), 4u);
    machine.fault("get_chghist_log", "", -5, 0);
    agent.replaceMachine(machine.json());
    agent.setClock(kStartTime + 4);
    EXPECT_TRUE(agent.client().walk(kTrackingTable).empty());
}

TEST(ChangeTracking, TwoWalksWithinThreeSecondsReadTheLogOnce)
{
    MachineBuilder machine;
    machine.changeRecord(0, "BMC firmware updated to 5.10", "TGBT52L");
    Agent agent(agentFor(machine));
    agent.client().walk(kTrackingTable);
    agent.setClock(kStartTime + 3);
    agent.client().walk(kTrackingTable);
    EXPECT_EQ(agent.countCalls("get_chghist_log"), 1u);
    agent.setClock(kStartTime + 4);
    agent.client().walk(kTrackingTable);
    EXPECT_EQ(agent.countCalls("get_chghist_log"), 2u);
}

TEST(ChangeTracking, TextsThatFillTheirFieldsAreReadNoFurther)
{
    MachineBuilder machine;
    machine.changeRecord(1, std::string(200, 'A'), std::string(100, 'B'));
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({trackingCell(3, 1), trackingCell(4, 1)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 2u);
    EXPECT_EQ(reply.varbinds[0].octets, std::string(128, 'A'));
    EXPECT_EQ(reply.varbinds[1].octets, std::string(64, 'B'));
}

TEST(ChangeTracking, IsReadOnlyAndAnswersNoSuchObjectPastItsColumns)
{
    MachineBuilder machine;
    machine.changeRecord(0, "BMC firmware updated to 5.10", "TGBT52L");
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({trackingCell(5, 1)});
    ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
    EXPECT_EQ(reply.varbinds[0].type, SNMP_NOSUCHOBJECT);
    reply = agent.client("private").set({SetValue::ofOctets(trackingCell(3, 1), "x")});
    EXPECT_EQ(reply.errorStatus, SNMP_ERR_NOTWRITABLE) << reply;
}

} // namespace
} // namespace orv3::test

// voltNumber, tempNumber, voltTable and tempTable through the real agent.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kVoltStore = "s/voltages/status/voltagetbl";
const std::string kTempStore = "s/temperatures/status/temperaturetbl";
const std::string kVoltNumber = oidJoin(kMonitorsRoot, {2, 1, 0});
const std::string kTempNumber = oidJoin(kMonitorsRoot, {1, 1, 0});

std::string voltCell(int column, int index)
{
    return oidJoin(kMonitorsRoot, {2, 2, 1, column, index});
}
std::string tempCell(int column, int index)
{
    return oidJoin(kMonitorsRoot, {1, 2, 1, column, index});
}

// A sensor row; `reading` goes to the table's own reading variable.
nlohmann::json sensorRow(int index, const std::string &descr, const std::string &readingVariable,
                         const std::string &reading)
{
    return {{"index", index},
            {"descr", descr},
            {"str",
             {{readingVariable, reading},
              {"nominalReading", "12.00 Volts"},
              {"nonRecovLimitHigh", "N/A"},
              {"critLimitHigh", "13.20 Volts"},
              {"nonCritLimitHigh", "12.96 Volts"},
              {"nonRecovLimitLow", "N/A"},
              {"critLimitLow", "10.80 Volts"},
              {"nonCritLimitLow", "11.04 Volts"}}},
            {"status", "Normal"}};
}

MachineBuilder sensors(const std::string &voltReading = "12.10 Volts", const std::string &tempReading = "38 C")
{
    MachineBuilder machine;
    machine
        .table(kVoltStore, {sensorRow(1, "Planar 12V", "voltage", voltReading),
                            sensorRow(2, "Planar 3.3V", "voltage", "3.31 Volts")})
        .variable("s/voltages/status/count", 2)
        .table(kTempStore, {sensorRow(1, "Ambient Temp", "reading", tempReading)})
        .variable("s/temperatures/status/count", 1);
    return machine;
}

AgentOptions agentFor(const MachineBuilder &machine, std::string debugTokens = "")
{
    return fanAgent(machine.json(), std::move(debugTokens));
}

VarBind getOne(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << reply;
    return reply.varbinds.empty() ? VarBind{} : reply.varbinds[0];
}

TEST(SensorCounts, AreIntegersReadFromTheStoreVariables)
{
    Agent agent(agentFor(sensors()));
    VarBind volts = getOne(agent, kVoltNumber);
    EXPECT_EQ(typeName(volts.type), "INTEGER");
    EXPECT_EQ(volts.integer, 2);
    VarBind temps = getOne(agent, kTempNumber);
    EXPECT_EQ(typeName(temps.type), "INTEGER");
    EXPECT_EQ(temps.integer, 1);
}

TEST(SensorCounts, FailedStoreReadIsTheRequestsErrorAndNoValue)
{
    MachineBuilder machine = sensors();
    machine.fault("update_binding_from_TIRO_v3", "s/voltages/status/count", SNMP_ERR_GENERR, 0);
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({kVoltNumber});
    EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_GENERR)) << reply;
    EXPECT_EQ(reply.errorIndex, 1);
}

TEST(SensorCounts, SetIsRefusedByTheAgentBeforeTheHandlerRuns)
{
    Agent agent(agentFor(sensors(), "voltage"));
    Response reply = agent.client("private").set({SetValue::ofInteger(kVoltNumber, 5)});
    EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_NOTWRITABLE));
    EXPECT_EQ(agent.countInStdout("voltage_handler: reqmode = 0"), 0u);
    EXPECT_EQ(getOne(agent, kVoltNumber).integer, 2);
}

TEST(SensorTables, WalkServesEveryColumnAsText)
{
    Agent agent(agentFor(sensors()));
    std::vector<VarBind> walked = agent.client().walk(oidJoin(kMonitorsRoot, {2, 2}));
    ASSERT_EQ(walked.size(), 22u);
    EXPECT_EQ(walked[0].oid, voltCell(1, 1));
    EXPECT_EQ(typeName(walked[0].type), "INTEGER");
    const char *expected[] = {"Planar 12V",  "12.10 Volts", "12.00 Volts", "N/A",         "13.20 Volts",
                              "12.96 Volts", "N/A",         "10.80 Volts", "11.04 Volts", "Normal"};
    for (int column = 2; column <= 11; ++column) {
        const VarBind &cell = walked[(column - 1) * 2];
        EXPECT_EQ(cell.oid, voltCell(column, 1));
        EXPECT_EQ(typeName(cell.type), "OCTET STRING");
        EXPECT_EQ(cell.octets, expected[column - 2]) << "column " << column;
    }
}

TEST(SensorTables, ReadingLongerThanThirtyIsCutToThirtyForVoltagesAndTwentyNineForTemperatures)
{
    std::string forty = "12.1000000000000000000000 Volts (avg)";
    forty.resize(40, '.');
    Agent agent(agentFor(sensors(forty, forty)));
    EXPECT_EQ(getOne(agent, voltCell(3, 1)).octets, forty.substr(0, 30));
    EXPECT_EQ(getOne(agent, tempCell(3, 1)).octets, forty.substr(0, 29));
}

TEST(SensorTables, WalkInANewSecondReloadsTheVoltageTable)
{
    Agent agent(agentFor(sensors()));
    EXPECT_EQ(getOne(agent, voltCell(3, 1)).octets, "12.10 Volts");
    agent.replaceMachine(sensors("11.90 Volts").json());
    EXPECT_EQ(getOne(agent, voltCell(3, 1)).octets, "12.10 Volts") << "same second: the cache";
    agent.setClock(kStartTime + 1);
    EXPECT_EQ(getOne(agent, voltCell(3, 1)).octets, "11.90 Volts") << "a new second reloads";
    EXPECT_EQ(agent.countCalls("quel_dm_BindRow " + kVoltStore), 2u);
}

TEST(SensorTables, MissingRowMarksOnlyTheFirstVarbindNoSuchInstance)
{
    Agent agent(agentFor(sensors()));
    Response reply = agent.client().get({voltCell(2, 1), voltCell(2, 99), voltCell(2, 2)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 3u);
    // The handler marks the first varbind and stops; the agent answers the
    // varbinds it left unanswered noSuchInstance itself.
    for (const VarBind &vb : reply.varbinds)
        EXPECT_EQ(typeName(vb.type), "noSuchInstance") << reply;
}

TEST(SensorTables, LoadsAndRequestsAreTraced)
{
    Agent agent(agentFor(sensors(), "voltTable"));
    getOne(agent, voltCell(2, 1));
    EXPECT_EQ(agent.countInStdout("voltTable: initialize_voltTable_local enter\n"), 1u);
    EXPECT_EQ(agent.countInStdout("voltTable: initialize_voltTable_local iIndex = 2\n"), 1u);
    EXPECT_EQ(agent.countInStdout("voltTable: voltTable_handler: reqmode = 160-MODE_GET State IDLE\n"), 1u);
}

TEST(SensorTables, SetOnAnyColumnIsRefused)
{
    Agent agent(agentFor(sensors()));
    SnmpClient writer = agent.client("private");
    for (int column = 1; column <= 11; ++column) {
        SetValue value =
            column == 1 ? SetValue::ofInteger(voltCell(column, 1), 3) : SetValue::ofOctets(voltCell(column, 1), "x");
        EXPECT_EQ(errorStatusName(writer.set({value}).errorStatus), errorStatusName(SNMP_ERR_NOTWRITABLE))
            << "column " << column;
    }
}

} // namespace
} // namespace orv3::test

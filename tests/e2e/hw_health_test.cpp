// powerNumber, powerTable, diskNumber and diskTable through the real agent,
// and the platform families without a power group.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kPowerStore = "s/hw_health/power_modules";
const std::string kDiskStore = "s/hw_health/disks";
const std::string kPowerNumber = oidJoin(kMonitorsRoot, {11, 1, 0});
const std::string kDiskNumber = oidJoin(kMonitorsRoot, {12, 1, 0});
const std::string kPowerTable = oidJoin(kMonitorsRoot, {11, 2});
const std::string kDiskTable = oidJoin(kMonitorsRoot, {12, 2});

MachineBuilder hardware()
{
    MachineBuilder machine;
    machine
        .table(kPowerStore, {{{"index", 1},
                              {"name", "Power Supply 1"},
                              {"part_number", "SP57A02334"},
                              {"fru_number", "03LE218"},
                              {"serial_number", "D1DG94C001X"},
                              {"status", "Normal"}},
                             {{"index", 2},
                              {"name", "Power Supply 2"},
                              {"part_number", "SP57A02334"},
                              {"fru_number", "03LE218"},
                              {"serial_number", "D1DG94C002Y"},
                              {"status", "Critical"}}})
        .table(kDiskStore, {{{"index", 1}, {"name", "Drive 0"}, {"status", "Normal"}},
                            {{"index", 2}, {"name", "Drive 1 (front bay, hot-swap, NVMe Gen4)"}, {"status", "Normal"}},
                            {{"index", 3}, {"name", "Drive 2"}, {"status", "Warning"}}});
    return machine;
}

AgentOptions agentFor(const MachineBuilder &machine, std::map<std::string, std::string> env = {},
                      std::string debugTokens = "")
{
    AgentOptions options = fanAgent(machine.json(), std::move(debugTokens));
    options.env = std::move(env);
    return options;
}

TEST(HardwareCounts, PowerAndDiskCountsAreGauge32UnlikeTheFanCount)
{
    Agent agent(agentFor(hardware()));
    Response reply = agent.client().get({kPowerNumber, kDiskNumber, kFanNumber});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 3u);
    EXPECT_EQ(typeName(reply.varbinds[0].type), "Gauge32");
    EXPECT_EQ(reply.varbinds[0].unsignedValue, 2u);
    EXPECT_EQ(typeName(reply.varbinds[1].type), "Gauge32");
    EXPECT_EQ(reply.varbinds[1].unsignedValue, 3u);
    EXPECT_EQ(typeName(reply.varbinds[2].type), "INTEGER");
}

TEST(HardwareCounts, PowerHandlerPrintsTheModeOfEveryRequest)
{
    Agent agent(agentFor(hardware()));
    agent.client().get({kPowerNumber});
    agent.client().get({kDiskNumber});
    EXPECT_TRUE(agent.waitForStdout("powerModule_handler reqinfo->mode = 160\n"));
    EXPECT_EQ(agent.countInStdout("reqinfo->mode = 160\n"), 1u) << "the disk handler prints nothing";
}

TEST(HardwareCounts, CountWithAPositiveStatusWordReadsZero)
{
    MachineBuilder machine = hardware();
    machine.faultWithCount("quel_dm_GetRowCount", kPowerStore, 0, 5, 2);
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({kPowerNumber});
    ASSERT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(reply.varbinds.at(0).unsignedValue, 0u);
    EXPECT_TRUE(agent.waitForStdout("powerTable_get_row_count quel_dm_GetRowCount error 5-type mismatch\n"));
}

TEST(HardwareCounts, NegativeStatusWordIsServedNegatedAsTheCount)
{
    MachineBuilder machine = hardware();
    machine.faultWithCount("quel_dm_GetRowCount", kDiskStore, 0, -3, 9);
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({kDiskNumber});
    ASSERT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(reply.varbinds.at(0).unsignedValue, 3u);
}

TEST(PlatformFamilies, PlintaberHasNoPowerGroupButKeepsTheDisks)
{
    Agent agent(agentFor(hardware(), {{"ORV_FAMILY", "plintaber"}}, "powerModule"));
    Response reply = agent.client().get({kPowerNumber, kDiskNumber});
    ASSERT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(typeName(reply.varbinds.at(0).type), "noSuchObject");
    EXPECT_EQ(reply.varbinds.at(1).unsignedValue, 3u);
    EXPECT_TRUE(agent.client().walk(kPowerTable).empty());
    EXPECT_EQ(agent.client().walk(kDiskTable).size(), 9u);
    for (const char *routine : {"init_powerModule", "initialize_table_powerTable"})
        EXPECT_EQ(agent.countInStdout(std::string("powerModule: ") + routine +
                                      ": sorvinel or tamberlow or plintaber server not be currently supported.\n"),
                  1u)
            << routine;
}

class FamiliesWithoutPower : public ::testing::TestWithParam<const char *> {};

TEST_P(FamiliesWithoutPower, ServeNoPowerObjects)
{
    Agent agent(agentFor(hardware(), {{"ORV_FAMILY", GetParam()}}));
    EXPECT_EQ(typeName(agent.client().get({kPowerNumber}).varbinds.at(0).type), "noSuchObject");
    EXPECT_TRUE(agent.client().walk(kPowerTable).empty());
}

INSTANTIATE_TEST_SUITE_P(ThreeFamilies, FamiliesWithoutPower, ::testing::Values("sorvinel", "tamberlow", "plintaber"));

class OtherFamilies : public ::testing::TestWithParam<const char *> {};

TEST_P(OtherFamilies, ServeBothPowerObjects)
{
    Agent agent(agentFor(hardware(), {{"ORV_FAMILY", GetParam()}}));
    EXPECT_EQ(agent.client().get({kPowerNumber}).varbinds.at(0).unsignedValue, 2u);
    EXPECT_EQ(agent.client().walk(kPowerTable).size(), 12u);
}

INSTANTIATE_TEST_SUITE_P(NamesThatOnlyLookAlike, OtherFamilies,
                         ::testing::Values("plint", "Plintaber", "sorvinel2", ""));

TEST(PowerTable, WalkServesEveryColumn)
{
    Agent agent(agentFor(hardware()));
    std::vector<VarBind> walked = agent.client().walk(kPowerTable);
    ASSERT_EQ(walked.size(), 12u);
    const char *second[] = {"Power Supply 2", "SP57A02334", "03LE218", "D1DG94C002Y", "Critical"};
    for (int column = 2; column <= 6; ++column) {
        const VarBind &cell = walked[(column - 1) * 2 + 1];
        EXPECT_EQ(cell.oid, oidJoin(kPowerTable, {1, column, 2}));
        EXPECT_EQ(typeName(cell.type), "OCTET STRING");
        EXPECT_EQ(cell.octets, second[column - 2]);
    }
}

TEST(PowerTable, FirstRowFailureMessageHasNoTrailingResult)
{
    MachineBuilder machine = hardware();
    machine.fault("quel_dm_GetFirstRow", kPowerStore, 1, 9);
    Agent agent(agentFor(machine));
    EXPECT_TRUE(agent.client().walk(kPowerTable).empty());
    EXPECT_TRUE(agent.waitForStdout("initialize_powerTable_local quel_dm_GetFirstRow error 9-operation failed\n"));
    EXPECT_EQ(agent.countInStdout("varStatus"), 0u);
}

TEST(DiskTable, NamesAreCutToThirtyCharactersAndTheHandlerTracesItsMode)
{
    Agent agent(agentFor(hardware(), {}, "diskTable"));
    Response reply = agent.client().get({oidJoin(kDiskTable, {1, 2, 2}), oidJoin(kDiskTable, {1, 3, 3})});
    ASSERT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(reply.varbinds.at(0).octets, std::string("Drive 1 (front bay, hot-swap, NVMe Gen4)").substr(0, 30));
    EXPECT_EQ(reply.varbinds.at(1).octets, "Warning");
    EXPECT_EQ(agent.countInStdout("diskTable: diskTable_handler: reqinfo->mode = 160\n"), 1u);
}

TEST(DiskTable, SetOnAnyColumnIsRefused)
{
    Agent agent(agentFor(hardware()));
    Response reply = agent.client("private").set({SetValue::ofOctets(oidJoin(kDiskTable, {1, 3, 1}), "Failed")});
    EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_NOTWRITABLE));
}

} // namespace
} // namespace orv3::test

// The power policy table and the restore settings through the real agent:
// rows by platform code name, the platform flag and families that leave the
// groups out, the usage in the controller's integer arithmetic, the mode in
// force, and the restore values with their errors.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kPolicyTable = oidJoin(kMonitorsRoot, {10, 2, 1});
const std::string kRestorePolicy = oidJoin(kMonitorsRoot, {10, 2, 2, 1, 0});
const std::string kRestoreDelay = oidJoin(kMonitorsRoot, {10, 2, 2, 2, 0});

std::string policyCell(int column, int index)
{
    return oidJoin(kPolicyTable, {1, column, index});
}

nlohmann::json mode(long systemPower, long maxLimit, int count)
{
    return {{"systemPower", systemPower}, {"maxLimit", maxLimit}, {"count", count}};
}

nlohmann::json powerSection(int inForce = 1)
{
    return {{"redundancyMode", inForce},
            {"modes", {{"1", mode(450, 1100, 2)}, {"2", mode(450, 2200, 1)}, {"4", mode(450, 1650, 3)}}},
            {"restorePolicy", {{"value", 2}}},
            {"restoreDelay", {{"value", 1}}}};
}

std::vector<long> indexes(Agent &agent)
{
    std::vector<long> seen;
    for (const VarBind &vb : agent.client().walk(oidJoin(kPolicyTable, {1, 1})))
        seen.push_back(vb.integer);
    return seen;
}

long integerAt(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << reply;
    if (reply.varbinds.size() != 1)
        return -999;
    EXPECT_EQ(typeName(reply.varbinds[0].type), "INTEGER") << reply;
    return reply.varbinds[0].integer;
}

TEST(PowerPolicyTable, ServesEveryColumnOfTheTwoUsualModes)
{
    Agent agent(powerAgent(powerSection()));
    std::vector<VarBind> walk = agent.client().walk(kPolicyTable);
    ASSERT_EQ(walk.size(), 12u);
    EXPECT_EQ(walk[0].oid, policyCell(1, 0));
    EXPECT_EQ(walk[0].integer, 0);
    EXPECT_EQ(walk[2].octets, "Power Module Redundant");
    EXPECT_EQ(typeName(walk[2].type), "OCTET STRING");
    EXPECT_EQ(walk[3].octets, "Power Module Non-Redundant");
    EXPECT_EQ(walk[4].integer, 2); // count
    EXPECT_EQ(walk[5].integer, 1);
    EXPECT_EQ(walk[6].integer, 1100); // maximum limit
    EXPECT_EQ(walk[7].integer, 2200);
    EXPECT_EQ(walk[8].integer, 41); // (450000 / 1100 + 5) / 10
    EXPECT_EQ(walk[9].integer, 20); // (450000 / 2200 + 5) / 10
    EXPECT_EQ(walk[10].integer, 1); // in force
    EXPECT_EQ(walk[11].integer, 0);
    EXPECT_EQ(walk[11].oid, policyCell(6, 1));
}

class CodeName : public ::testing::TestWithParam<std::string> {};

TEST_P(CodeName, OfAKelpoPlatformGivesThreeRows)
{
    Agent agent(powerAgent(powerSection(), {{"ORV_CODENAME", GetParam()}}));
    EXPECT_EQ(indexes(agent), (std::vector<long>{0, 1, 2}));
    Response reply = agent.client().get({policyCell(2, 2)});
    ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
    EXPECT_EQ(reply.varbinds[0].octets, "Power Module N_1 Redundant");
}

INSTANTIATE_TEST_SUITE_P(Kelpo, CodeName, ::testing::Values("KELPO7", "kelpo", "KeLpO7-rack"));

TEST(PowerPolicyTable, WithoutACodeNameHasTwoRows)
{
    Agent agent(powerAgent(powerSection()));
    EXPECT_EQ(indexes(agent), (std::vector<long>{0, 1}));
}

TEST(PowerPolicyTable, AnotherCodeNameHasTwoRows)
{
    Agent agent(powerAgent(powerSection(), {{"ORV_CODENAME", "kelp"}}));
    EXPECT_EQ(indexes(agent), (std::vector<long>{0, 1}));
}

class PlatformFlags : public ::testing::TestWithParam<std::pair<std::string, bool>> {};

TEST_P(PlatformFlags, Bit8000RemovesTheTableButNotTheRestoreScalars)
{
    auto [flags, tableServed] = GetParam();
    Agent agent(powerAgent(powerSection(), {{"PLATFLAGS", flags}}));
    EXPECT_EQ(agent.client().walk(kPolicyTable).size(), tableServed ? 12u : 0u);
    EXPECT_EQ(integerAt(agent, kRestorePolicy), 2);
    EXPECT_EQ(integerAt(agent, kRestoreDelay), 1);
}

INSTANTIATE_TEST_SUITE_P(Values, PlatformFlags,
                         ::testing::Values(std::make_pair("8000", false), std::make_pair("18000", false),
                                           std::make_pair("7fff", true), std::make_pair("0", true)),
                         [](const auto &info) { return "Flags" + info.param.first; });

class FamilyWithoutPower : public ::testing::TestWithParam<std::string> {};

TEST_P(FamilyWithoutPower, RegistersNeitherGroupAndSaysSo)
{
    Agent agent(powerAgent(powerSection(), {{"ORV_FAMILY", GetParam()}}, "powerPolicyTable,powerPolicyInformation"));
    EXPECT_TRUE(agent.client().walk(kPolicyTable).empty());
    Response reply = agent.client().get({kRestorePolicy});
    ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
    EXPECT_EQ(reply.varbinds[0].type, SNMP_NOSUCHOBJECT);
    EXPECT_EQ(agent.countInStdout("powerPolicyTable: init_powerPolicyTable: sorvinel or tamberlow or plintaber "
                                  "server not be currently supported.\n"),
              1u)
        << agent.stdoutText();
    EXPECT_EQ(agent.countInStdout("powerPolicyInformation: init_powerPolicyInformation: sorvinel or tamberlow or "
                                  "plintaber server not be currently supported.\n"),
              1u);
    EXPECT_EQ(agent.countInStdout("powerPolicyInformation: Registering powerPolicyInformation variables\n"), 1u);
}

INSTANTIATE_TEST_SUITE_P(Families, FamilyWithoutPower, ::testing::Values("sorvinel", "tamberlow", "plintaber"));

TEST(PowerPolicyTable, UsageIsComputedInUnsigned32BitWordsAndWrapsAsTheControllersDoes)
{
    nlohmann::json power = powerSection();
    power["modes"]["1"] = mode(5000000, 4000000, 2);
    power["modes"]["2"] = mode(1, 3, 2);
    Agent agent(powerAgent(power));
    uint32_t wrapped = ((5000000u * 1000u) / 4000000u + 5u) / 10u;
    EXPECT_EQ(integerAt(agent, policyCell(5, 0)), static_cast<long>(wrapped));
    EXPECT_EQ(integerAt(agent, policyCell(5, 1)), 33); // (1000 / 3 + 5) / 10
}

TEST(PowerPolicyTable, AZeroLimitIsAnUnknownUsage)
{
    nlohmann::json power = powerSection();
    power["modes"]["1"] = mode(450, 0, 2);
    Agent agent(powerAgent(power, {}, "powerPolicyTable"));
    EXPECT_EQ(integerAt(agent, policyCell(4, 0)), 0);
    EXPECT_EQ(integerAt(agent, policyCell(5, 0)), -1);
    EXPECT_GE(agent.countInStdout("powerPolicyTable: initialize_powerPolicyTable_local: The value of u32MaxLimit is "
                                  "0.\n"),
              1u)
        << agent.stdoutText();
}

TEST(PowerPolicyTable, AModeWhoseFiguresFailKeepsItsRowWithMinusOnes)
{
    nlohmann::json power = powerSection();
    power["modes"].erase("2");
    Agent agent(powerAgent(power, {}, "powerPolicyTable"));
    EXPECT_EQ(indexes(agent), (std::vector<long>{0, 1}));
    for (int column : {3, 4, 5})
        EXPECT_EQ(integerAt(agent, policyCell(column, 1)), -1) << column;
    EXPECT_EQ(integerAt(agent, policyCell(5, 0)), 41);
    EXPECT_GE(agent.countInStdout("powerPolicyTable: initialize_powerPolicyTable_local: Failed to call "
                                  "pwrmgt_get_powerInfo_perRedunMode(), rc:"),
              1u)
        << agent.stdoutText();
}

TEST(PowerPolicyTable, ExactlyTheModeInForceIsActivated)
{
    Agent agent(powerAgent(powerSection(2), {{"ORV_CODENAME", "KELPO7"}}));
    EXPECT_EQ(integerAt(agent, policyCell(6, 0)), 0);
    EXPECT_EQ(integerAt(agent, policyCell(6, 1)), 1);
    EXPECT_EQ(integerAt(agent, policyCell(6, 2)), 0);
}

TEST(PowerPolicyTable, NoRowIsActivatedWhenTheModeInForceIsNotListed)
{
    Agent agent(powerAgent(powerSection(4)));
    std::vector<VarBind> activated = agent.client().walk(oidJoin(kPolicyTable, {1, 6}));
    ASSERT_EQ(activated.size(), 2u);
    EXPECT_EQ(activated[0].integer, 0);
    EXPECT_EQ(activated[1].integer, 0);
}

TEST(PowerPolicyTable, ABladeFamilySettingOrAFailedSettingLeavesItEmpty)
{
    nlohmann::json blade = powerSection();
    blade["bladeFamily"] = 1;
    Agent bladeAgent(powerAgent(blade, {}, "powerPolicyTable"));
    EXPECT_TRUE(bladeAgent.client().walk(kPolicyTable).empty());
    EXPECT_GE(bladeAgent.countInStdout(
                  "powerPolicyTable: initialize_powerPolicyTable_local: SORVINEL server not be currently supported.\n"),
              1u);

    MachineBuilder machine;
    machine.power(powerSection()).fault("pwrmgt_get_power_policy_setting", "", 7, 0);
    AgentOptions options = fanAgent(machine.json(), "powerPolicyTable");
    Agent failing(options);
    Response reply = failing.client().get({policyCell(2, 0)});
    ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
    EXPECT_EQ(reply.varbinds[0].type, SNMP_NOSUCHINSTANCE);
    EXPECT_GE(failing.countInStdout("powerPolicyTable: initialize_powerPolicyTable_local: Failed to call "
                                    "pwrmgt_get_power_policy_setting(), rc:7.\n"),
              1u)
        << failing.stdoutText();
}

TEST(PowerPolicyTable, IsRebuiltForEveryRequest)
{
    Agent agent(powerAgent(powerSection()));
    agent.clearCallLog();
    agent.client().get({policyCell(2, 0)});
    agent.client().get({policyCell(2, 1)});
    EXPECT_EQ(agent.countCalls("pwrmgt_get_power_policy_setting"), 2u);
}

TEST(PowerPolicyTable, AnSnmptableStyleGetBulkAcrossItReadsNoFreedRow)
{
    Agent agent(powerAgent(powerSection(), {{"ORV_CODENAME", "kelpo7"}}));
    std::vector<std::string> columns;
    for (int column = 1; column <= 6; ++column)
        columns.push_back(oidJoin(kPolicyTable, {1, column}));
    Response reply = agent.client().getBulk(0, 5, columns); // 30 varbinds, rebuilt on every pass
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 30u);
    EXPECT_EQ(reply.varbinds[1].octets, "Power Module Redundant");
    EXPECT_EQ(reply.varbinds[7].octets, "Power Module Non-Redundant");
    EXPECT_EQ(reply.varbinds[13].octets, "Power Module N_1 Redundant");
    EXPECT_TRUE(agent.sanitizerFindings().empty()) << agent.sanitizerFindings();
}

TEST(PowerPolicyTable, IsReadOnly)
{
    Agent agent(powerAgent(powerSection()));
    Response reply = agent.client("private").set({SetValue::ofInteger(policyCell(6, 0), 0)});
    EXPECT_EQ(reply.errorStatus, SNMP_ERR_NOTWRITABLE) << reply;
}

// ---- the restore settings --------------------------------------------------------

TEST(RestoreSettings, ServeThePlatformsValuesAndPrintTheMode)
{
    Agent agent(powerAgent(powerSection()));
    EXPECT_EQ(integerAt(agent, kRestorePolicy), 2);
    EXPECT_EQ(integerAt(agent, kRestoreDelay), 1);
    EXPECT_EQ(agent.countInStdout("powerPolicyInformation_handler reqinfo->mode = 160\n"), 2u) << agent.stdoutText();
}

TEST(RestoreSettings, APolicyOfThreeIsBadValue)
{
    nlohmann::json power = powerSection();
    power["restorePolicy"]["value"] = 3;
    Agent agent(powerAgent(power));
    Response reply = agent.client().get({kRestorePolicy});
    EXPECT_EQ(reply.errorStatus, SNMP_ERR_BADVALUE) << reply;
    EXPECT_EQ(integerAt(agent, kRestoreDelay), 1);
}

TEST(RestoreSettings, ADelayOfTwoIsBadValueAndAGoodOneIsServedAgain)
{
    nlohmann::json power = powerSection();
    MachineBuilder machine;
    machine.power(power);
    Agent agent(fanAgent(machine.json()));
    EXPECT_EQ(integerAt(agent, kRestoreDelay), 1);
    power["restoreDelay"]["value"] = 2;
    machine.power(power);
    agent.replaceMachine(machine.json());
    EXPECT_EQ(agent.client().get({kRestoreDelay}).errorStatus, SNMP_ERR_BADVALUE);
    power["restoreDelay"]["value"] = 0;
    machine.power(power);
    agent.replaceMachine(machine.json());
    EXPECT_EQ(integerAt(agent, kRestoreDelay), 0);
}

TEST(RestoreSettings, AFailedReadIsGenErrAndTraced)
{
    nlohmann::json power = powerSection();
    power["restorePolicy"]["completionCode"] = 0xc1;
    Agent agent(powerAgent(power, {}, "powerPolicyInformation"));
    EXPECT_EQ(agent.client().get({kRestorePolicy}).errorStatus, SNMP_ERR_GENERR);
    EXPECT_TRUE(agent.waitForStdout("powerPolicyInformation: powerPolicyInformation_update_powerRestorePolicy["))
        << agent.stdoutText();
    EXPECT_GE(agent.countInStdout("]: Failed to get Power Restore Policy. Status:0.\n"), 1u) << agent.stdoutText();

    MachineBuilder machine;
    machine.power(powerSection()).fault("GetPowerRestoreDelay", "", 5, 0);
    Agent failing(fanAgent(machine.json(), "powerPolicyInformation"));
    EXPECT_EQ(failing.client().get({kRestoreDelay}).errorStatus, SNMP_ERR_GENERR);
    EXPECT_GE(failing.countInStdout("]: Failed to get Power Restore Delay. Status:5.\n"), 1u) << failing.stdoutText();
}

TEST(RestoreSettings, ABladeFamilySettingKeepsTheValueWithoutAnError)
{
    nlohmann::json power = powerSection();
    power["bladeFamily"] = 1;
    Agent agent(powerAgent(power));
    EXPECT_EQ(integerAt(agent, kRestorePolicy), 0);
}

TEST(RestoreSettings, RegistrationIsTraced)
{
    Agent agent(powerAgent(powerSection(), {}, "powerPolicyInformation"));
    EXPECT_EQ(agent.countInStdout("powerPolicyInformation: Registering powerPolicyInformation variables\n"), 1u);
    EXPECT_EQ(agent.countInStdout("powerPolicyInformation: Registering powerRestorePolicy[ASN_INTEGER] OK\n"), 1u);
    EXPECT_EQ(agent.countInStdout("powerPolicyInformation: Registering powerRestoreDelay[ASN_INTEGER] OK\n"), 1u);
}

} // namespace
} // namespace orv3::test

// The fuel gauge through the real agent: the budget, the caps of the active
// cap domain and the live readings, which objects each platform variant
// registers, the errors and kept values of odd platform answers, and SETs
// that change only the module's copy.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

#include <set>

namespace orv3::test {
namespace {

const std::string kFuelGauge = oidJoin(kMonitorsRoot, {10, 1});

std::string object(int arc)
{
    return oidJoin(kFuelGauge, {arc, 0});
}

enum Arc {
    kCappingPolicy = 1,
    kSoftMin = 2,
    kMin = 3,
    kCurrentCap = 4,
    kMax = 5,
    kCapMode = 6,
    kSystemMaxPower = 7,
    kRemaining = 8,
    kTotalAvailable = 9,
    kInUse = 10,
    kCpu = 11,
    kMemory = 12,
    kOther = 13,
};

const char *const kNames[] = {
    "",
    "fuelGaugePowerCappingPolicySetting",
    "fuelGaugeStaticPowerPcapSoftMin",
    "fuelGaugeStaticPowerPcapMin",
    "fuelGaugeStaticPowerPcapCurrentSetting",
    "fuelGaugeStaticPowerPcapMax",
    "fuelGaugeStaticPowerPcapMode",
    "fuelGaugeSystemMaxPower",
    "fuelGaugePowerRemaining",
    "fuelGaugeTotalPowerAvaialble",
    "fuelGaugeTotalPowerInUse",
    "fuelGaugePowerConsumptionCpu",
    "fuelGaugePowerConsumptionMemory",
    "fuelGaugePowerConsumptionOther",
};

nlohmann::json capping(int policy, int domain)
{
    return {{"policy", policy},         {"domain", domain},     {"currentCap", 750},
            {"softMinCap", {220, 200}}, {"minCap", {310, 285}}, {"maxCap", {760, 690}}};
}

nlohmann::json powerSection()
{
    return {{"redundancyMode", 1},
            {"modes",
             {{"1", {{"systemPower", 450}, {"maxLimit", 1100}, {"count", 2}}},
              {"2", {{"systemPower", 450}, {"maxLimit", 2200}, {"count", 1}}}}},
            {"capping", capping(1, 0)},
            {"realtime", {{"total", 431}, {"cpu", 198}, {"memory", 61}}}};
}

void serve(Agent &agent, const nlohmann::json &power)
{
    MachineBuilder machine;
    machine.power(power);
    agent.replaceMachine(machine.json());
}

long integerAt(Agent &agent, int arc)
{
    Response reply = agent.client().get({object(arc)});
    EXPECT_TRUE(reply.ok()) << kNames[arc] << ": " << reply;
    if (reply.varbinds.size() != 1)
        return -999999;
    EXPECT_EQ(typeName(reply.varbinds[0].type), "INTEGER") << kNames[arc] << ": " << reply;
    return reply.varbinds[0].integer;
}

long errorOf(Agent &agent, int arc)
{
    return agent.client().get({object(arc)}).errorStatus;
}

// The arcs a walk of the group finds.
std::set<int> servedArcs(Agent &agent)
{
    std::set<int> arcs;
    for (const VarBind &vb : agent.client().walk(kFuelGauge)) {
        size_t dot = vb.oid.rfind('.');
        size_t before = vb.oid.rfind('.', dot - 1);
        arcs.insert(std::stoi(vb.oid.substr(before + 1, dot - before - 1)));
    }
    return arcs;
}

TEST(FuelGauge, ServesTheBudgetCapsAndReadingsOfARackServer)
{
    Agent agent(powerAgent(powerSection()));
    const std::map<int, long> expected = {
        {kCappingPolicy, 1},    {kSoftMin, 220},   {kMin, 310},
        {kCurrentCap, 750},     {kMax, 760},       {kCapMode, 1}, // domain 0 is mode 1
        {kSystemMaxPower, 450}, {kRemaining, 650}, {kTotalAvailable, 1100},
        {kInUse, 431},          {kCpu, 198},       {kMemory, 61},
        {kOther, 172}, // 431 - 198 - 61
    };
    std::vector<VarBind> walk = agent.client().walk(kFuelGauge);
    ASSERT_EQ(walk.size(), 13u);
    for (const VarBind &vb : walk) {
        EXPECT_EQ(typeName(vb.type), "INTEGER") << vb.oid;
    }
    for (const auto &[arc, value] : expected) {
        EXPECT_EQ(walk[arc - 1].oid, object(arc));
        EXPECT_EQ(walk[arc - 1].integer, value) << kNames[arc];
    }
    EXPECT_EQ(agent.countInStdout("fuelGaugeInformation_handler reqinfo->mode = 160\n"), 13u) << agent.stdoutText();
}

TEST(FuelGauge, RegistersEveryObjectInArcOrderAndSaysSo)
{
    Agent agent(powerAgent(powerSection(), {}, "fuelGaugeInformation"));
    EXPECT_EQ(agent.countInStdout("fuelGaugeInformation: Registering fuelGaugeInformation variables\n"), 1u);
    size_t previous = 0;
    for (int arc = 1; arc <= 13; ++arc) {
        std::string line = std::string("fuelGaugeInformation: Registering ") + kNames[arc] + "[ASN_INTEGER] OK\n";
        EXPECT_EQ(agent.countInStdout(line), 1u) << line;
        size_t at = agent.stdoutText().find(line);
        EXPECT_GT(at, previous) << line;
        previous = at == std::string::npos ? previous : at;
    }
}

// ---- which objects a platform registers ----------------------------------------------

struct Variant {
    const char *name;
    std::map<std::string, std::string> env;
    std::set<int> arcs;
};

class PlatformVariant : public ::testing::TestWithParam<Variant> {};

TEST_P(PlatformVariant, RegistersExactlyItsObjects)
{
    const Variant &variant = GetParam();
    Agent agent(powerAgent(powerSection(), variant.env, "fuelGaugeInformation"));
    EXPECT_EQ(servedArcs(agent), variant.arcs);
    for (int arc = 1; arc <= 13; ++arc) {
        std::string line = std::string("Registering ") + kNames[arc] + "[ASN_INTEGER] OK\n";
        EXPECT_EQ(agent.countInStdout(line), variant.arcs.count(arc)) << line;
    }
    for (int arc = 1; arc <= 13; ++arc) {
        if (variant.arcs.count(arc))
            continue;
        Response reply = agent.client().get({object(arc)});
        ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
        EXPECT_EQ(reply.varbinds[0].type, SNMP_NOSUCHOBJECT) << kNames[arc];
    }
}

const std::set<int> kAll = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
INSTANTIATE_TEST_SUITE_P(
    Variants, PlatformVariant,
    ::testing::Values(Variant{"Rack", {}, kAll}, Variant{"RackFlags7fff", {{"PLATFLAGS", "7fff"}}, kAll},
                      Variant{"RackFlags8000", {{"PLATFLAGS", "8000"}}, {9, 10, 11, 13}},
                      Variant{"RackFlags18000", {{"PLATFLAGS", "18000"}}, {9, 10, 11, 13}},
                      Variant{"Plintaber", {{"ORV_FAMILY", "plintaber"}}, {10, 11, 12, 13}},
                      Variant{"PlintaberFlags8000", {{"ORV_FAMILY", "plintaber"}, {"PLATFLAGS", "8000"}}, {10, 11, 13}},
                      Variant{"Sorvinel", {{"ORV_FAMILY", "sorvinel"}}, {10, 11, 12, 13}},
                      Variant{"Tamberlow", {{"ORV_FAMILY", "tamberlow"}}, {10, 11, 12, 13}},
                      Variant{"FamilyComparedExactly", {{"ORV_FAMILY", "Plintaber"}}, kAll}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(FuelGauge, WithoutAMemoryReadingTheRestIsTotalMinusProcessors)
{
    Agent agent(powerAgent(powerSection(), {{"PLATFLAGS", "8000"}}));
    EXPECT_EQ(integerAt(agent, kOther), 431 - 198);
    EXPECT_EQ(integerAt(agent, kTotalAvailable), 1100);
}

TEST(FuelGauge, TheRestGoesNegativeWhenProcessorsAndMemoryExceedTheTotal)
{
    nlohmann::json power = powerSection();
    power["realtime"] = {{"total", 100}, {"cpu", 80}, {"memory", 50}};
    Agent agent(powerAgent(power));
    EXPECT_EQ(integerAt(agent, kOther), -30);
}

// ---- caps and the cap domain ---------------------------------------------------------

TEST(FuelGauge, CapDomainOneServesItsCapsAndModeZero)
{
    nlohmann::json power = powerSection();
    power["capping"] = capping(0, 1);
    Agent agent(powerAgent(power));
    EXPECT_EQ(integerAt(agent, kSoftMin), 200);
    EXPECT_EQ(integerAt(agent, kMin), 285);
    EXPECT_EQ(integerAt(agent, kMax), 690);
    EXPECT_EQ(integerAt(agent, kCapMode), 0);
    EXPECT_EQ(integerAt(agent, kCappingPolicy), 0);
}

TEST(FuelGauge, CapDomainTwoKeepsTheCapsWithoutAnErrorAndTheModeIsBadValue)
{
    nlohmann::json power = powerSection();
    Agent agent(powerAgent(power));
    EXPECT_EQ(integerAt(agent, kSoftMin), 220);
    EXPECT_EQ(integerAt(agent, kMin), 310);
    EXPECT_EQ(integerAt(agent, kMax), 760);
    EXPECT_EQ(integerAt(agent, kCapMode), 1);

    power["capping"] = capping(1, 2);
    power["capping"]["softMinCap"] = {1, 2};
    power["capping"]["minCap"] = {3, 4};
    power["capping"]["maxCap"] = {5, 6};
    serve(agent, power);
    EXPECT_EQ(integerAt(agent, kSoftMin), 220);
    EXPECT_EQ(integerAt(agent, kMin), 310);
    EXPECT_EQ(integerAt(agent, kMax), 760);
    EXPECT_EQ(errorOf(agent, kCapMode), SNMP_ERR_BADVALUE);

    power["capping"] = capping(1, 1);
    power["capping"]["maxCap"] = {5, 6};
    serve(agent, power);
    EXPECT_EQ(integerAt(agent, kCapMode), 0); // served again once the domain is known
    EXPECT_EQ(integerAt(agent, kMax), 6);
}

TEST(FuelGauge, ACappingPolicyOtherThanZeroOrOneIsBadValue)
{
    nlohmann::json power = powerSection();
    power["capping"] = capping(2, 0);
    Agent agent(powerAgent(power));
    EXPECT_EQ(errorOf(agent, kCappingPolicy), SNMP_ERR_BADVALUE);
    EXPECT_EQ(integerAt(agent, kCurrentCap), 750);
}

TEST(FuelGauge, CapsAreServedAsUnsigned16BitFigures)
{
    nlohmann::json power = powerSection();
    power["capping"]["currentCap"] = 65535;
    power["capping"]["maxCap"] = {40000, 1};
    Agent agent(powerAgent(power));
    EXPECT_EQ(integerAt(agent, kCurrentCap), 65535);
    EXPECT_EQ(integerAt(agent, kMax), 40000);
}

TEST(FuelGauge, AFailedSettingReadIsGenErrAndTraced)
{
    MachineBuilder machine;
    machine.power(powerSection()).fault("pwrmgt_get_power_policy_setting", "", 4, 0);
    Agent agent(fanAgent(machine.json(), "fuelGaugeInformation,powerPolicyInformation"));
    for (int arc :
         {kCappingPolicy, kSoftMin, kMin, kCurrentCap, kMax, kCapMode, kSystemMaxPower, kRemaining, kTotalAvailable})
        EXPECT_EQ(errorOf(agent, arc), SNMP_ERR_GENERR) << kNames[arc];
    EXPECT_EQ(agent.countInStdout("fuelGaugeInformation: fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMin: "
                                  "Failed to call pwrmgt_get_power_policy_setting(), rc:4.\n"),
              1u)
        << agent.stdoutText();
    EXPECT_EQ(agent.countInStdout("powerPolicyInformation: fuelGaugeInformation_update_fuelGaugePowerRemaining: "
                                  "Failed to call pwrmgt_get_power_policy_setting(), rc:4.\n"),
              1u);
    EXPECT_EQ(integerAt(agent, kInUse), 431); // the readings do not need the setting
}

// ---- the budget of the mode in force --------------------------------------------------

TEST(FuelGauge, ASystemThatCanDrawMoreThanTheLimitHasNegativePowerRemaining)
{
    nlohmann::json power = powerSection();
    power["modes"]["1"] = {{"systemPower", 900}, {"maxLimit", 800}, {"count", 2}};
    Agent agent(powerAgent(power));
    EXPECT_EQ(integerAt(agent, kRemaining), -100);
    EXPECT_EQ(integerAt(agent, kSystemMaxPower), 900);
    EXPECT_EQ(integerAt(agent, kTotalAvailable), 800);
}

TEST(FuelGauge, TheBudgetFollowsTheModeInForce)
{
    nlohmann::json power = powerSection();
    power["redundancyMode"] = 2;
    Agent agent(powerAgent(power));
    EXPECT_EQ(integerAt(agent, kTotalAvailable), 2200);
    EXPECT_EQ(integerAt(agent, kRemaining), 1750);
}

TEST(FuelGauge, ABladeFamilySettingKeepsTheBudgetWithoutAnErrorAndSaysSo)
{
    nlohmann::json power = powerSection();
    Agent agent(powerAgent(power, {}, "powerPolicyInformation"));
    EXPECT_EQ(integerAt(agent, kTotalAvailable), 1100);
    power["bladeFamily"] = 1;
    power["modes"]["1"]["maxLimit"] = 5000;
    serve(agent, power);
    EXPECT_EQ(integerAt(agent, kTotalAvailable), 1100);
    EXPECT_EQ(agent.countInStdout("powerPolicyInformation: fuelGaugeInformation_update_fuelGaugeTotalPowerAvaialble: "
                                  "SORVINEL server not be currently supported.\n"),
              1u)
        << agent.stdoutText();
}

TEST(FuelGauge, AnUnsupportedModeInForceKeepsTheBudgetWithoutAnError)
{
    nlohmann::json power = powerSection();
    power["redundancyMode"] = 3;
    power["modes"]["3"] = {{"systemPower", 1}, {"maxLimit", 2}, {"count", 1}};
    Agent agent(powerAgent(power, {}, "powerPolicyInformation"));
    EXPECT_EQ(integerAt(agent, kSystemMaxPower), 0);
    EXPECT_EQ(agent.countInStdout("powerPolicyInformation: fuelGaugeInformation_update_fuelGaugeSystemMaxPower: "
                                  "Unsupported redundancy mode:3.\n"),
              1u)
        << agent.stdoutText();
}

TEST(FuelGauge, AFailedModeReadIsGenErrAndTraced)
{
    MachineBuilder machine;
    machine.power(powerSection()).fault("pwrmgt_get_powerInfo_perRedunMode", "1", 6, 0);
    Agent agent(fanAgent(machine.json(), "powerPolicyInformation"));
    EXPECT_EQ(errorOf(agent, kSystemMaxPower), SNMP_ERR_GENERR);
    EXPECT_EQ(agent.countInStdout("powerPolicyInformation: fuelGaugeInformation_update_fuelGaugeSystemMaxPower: "
                                  "Failed to call pwrmgt_get_powerInfo_perRedunMode(), rc:6.\n"),
              1u)
        << agent.stdoutText();
}

// ---- the real-time readings ----------------------------------------------------------

TEST(FuelGauge, ARealtimeResultOfTwoIsSuccessAndTheRecordIsPublished)
{
    nlohmann::json power = powerSection();
    power["realtime"]["result"] = 2;
    Agent agent(powerAgent(power));
    EXPECT_EQ(integerAt(agent, kInUse), 431);
    EXPECT_EQ(integerAt(agent, kMemory), 61);

    // A call that returns 2 without writing publishes the zeroed record.
    MachineBuilder machine;
    machine.power(powerSection()).fault("pwrmgt_get_realtime_powers", "", 2, 0);
    agent.replaceMachine(machine.json());
    EXPECT_EQ(integerAt(agent, kInUse), 0);
    EXPECT_EQ(integerAt(agent, kCpu), 0);
    EXPECT_EQ(integerAt(agent, kOther), 0);
}

TEST(FuelGauge, ARealtimeResultOfOneIsGenErrAndTraced)
{
    nlohmann::json power = powerSection();
    power["realtime"]["result"] = 1;
    Agent agent(powerAgent(power, {}, "fuelGaugeInformation"));
    for (int arc : {kInUse, kCpu, kMemory, kOther})
        EXPECT_EQ(errorOf(agent, arc), SNMP_ERR_GENERR) << kNames[arc];
    EXPECT_EQ(agent.countInStdout("fuelGaugeInformation: fuelGaugeInformation_update_fuelGaugePowerConsumptionCpu: "
                                  "Failed to call pwrmgt_get_realtime_powers(), rc:1.\n"),
              1u)
        << agent.stdoutText();
}

// ---- SETs ----------------------------------------------------------------------------

TEST(FuelGauge, ASetOfAWritableObjectChangesOnlyTheModulesCopy)
{
    Agent agent(powerAgent(powerSection()));
    agent.clearCallLog();
    Response set = agent.client("private").set({SetValue::ofInteger(object(kCappingPolicy), 0),
                                                SetValue::ofInteger(object(kCurrentCap), 600),
                                                SetValue::ofInteger(object(kCapMode), 0)});
    ASSERT_TRUE(set.ok()) << set;
    ASSERT_EQ(set.varbinds.size(), 3u);
    EXPECT_EQ(set.varbinds[0].integer, 0);
    EXPECT_EQ(set.varbinds[1].integer, 600);
    EXPECT_EQ(set.varbinds[2].integer, 0);
    EXPECT_EQ(agent.countCalls("pwrmgt_"), 0u) << "nothing reaches the power library";
    // The next GET serves the platform's values again.
    EXPECT_EQ(integerAt(agent, kCappingPolicy), 1);
    EXPECT_EQ(integerAt(agent, kCurrentCap), 750);
    EXPECT_EQ(integerAt(agent, kCapMode), 1);
}

TEST(FuelGauge, ReadOnlyObjectsRefuseASet)
{
    Agent agent(powerAgent(powerSection()));
    for (int arc :
         {kSoftMin, kMin, kMax, kSystemMaxPower, kRemaining, kTotalAvailable, kInUse, kCpu, kMemory, kOther}) {
        Response reply = agent.client("private").set({SetValue::ofInteger(object(arc), 1)});
        EXPECT_EQ(reply.errorStatus, SNMP_ERR_NOTWRITABLE) << kNames[arc] << ": " << reply;
    }
}

TEST(FuelGauge, ASetOfAnotherTypeIsWrongType)
{
    Agent agent(powerAgent(powerSection()));
    Response reply = agent.client("private").set({SetValue::ofOctets(object(kCurrentCap), "600")});
    EXPECT_EQ(reply.errorStatus, SNMP_ERR_WRONGTYPE) << reply;
    EXPECT_EQ(integerAt(agent, kCurrentCap), 750);
}

} // namespace
} // namespace orv3::test

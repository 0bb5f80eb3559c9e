// The fuel gauge's update routines in-process, against the simulated power
// library: a failed read, an unknown cap domain or mode and a blade-family
// setting all leave the value of the last good read in the cell.
#include "fuel_gauge.h"
#include "unit_machine.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <functional>

namespace {

using orv3::test::ServedMachine;

std::string machineWith(const std::function<void(nlohmann::json &power)> &edit,
                        const nlohmann::json &faults = nlohmann::json::array())
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    edit(machine["power"]);
    machine["faults"] = faults;
    return machine.dump();
}

// A cell holding the value of an earlier good read.
struct Cell {
    orv3::ScalarCell cell = 0;
    size_t size = 4;
    explicit Cell(int32_t earlier) { orv3::storeInt32(&cell, &size, earlier); }
    int32_t value() const
    {
        int32_t value;
        memcpy(&value, &cell, sizeof value);
        return value;
    }
};

using Update = int (*)(void *, size_t *);

const Update kSettingUpdates[] = {
    fuelGaugeInformation_update_fuelGaugePowerCappingPolicySetting,
    fuelGaugeInformation_update_fuelGaugeStaticPowerPcapSoftMin,
    fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMin,
    fuelGaugeInformation_update_fuelGaugeStaticPowerPcapCurrentSetting,
    fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMax,
    fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMode,
    fuelGaugeInformation_update_fuelGaugeSystemMaxPower,
    fuelGaugeInformation_update_fuelGaugePowerRemaining,
    fuelGaugeInformation_update_fuelGaugeTotalPowerAvaialble,
};
const Update kBudgetUpdates[] = {
    fuelGaugeInformation_update_fuelGaugeSystemMaxPower,
    fuelGaugeInformation_update_fuelGaugePowerRemaining,
    fuelGaugeInformation_update_fuelGaugeTotalPowerAvaialble,
};
const Update kReadingUpdates[] = {
    fuelGaugeInformation_update_fuelGaugeTotalPowerInUse,
    fuelGaugeInformation_update_fuelGaugePowerConsumptionCpu,
    fuelGaugeInformation_update_fuelGaugePowerConsumptionMemory,
    fuelGaugeInformation_update_fuelGaugePowerConsumptionOther,
};

TEST(FuelGaugeUpdate, AFailedSettingReadIsGenErrAndKeepsTheValue)
{
    ServedMachine served(
        machineWith([](nlohmann::json &) {}, nlohmann::json::array({{{"call", "pwrmgt_get_power_policy_setting"}}})));
    for (Update update : kSettingUpdates) {
        Cell cell(1234);
        EXPECT_EQ(update(&cell.cell, &cell.size), SNMP_ERR_GENERR);
        EXPECT_EQ(cell.value(), 1234);
    }
}

TEST(FuelGaugeUpdate, AFailedReadingIsGenErrAndKeepsTheValue)
{
    ServedMachine served(machineWith([](nlohmann::json &power) { power["realtime"]["result"] = 1; }));
    for (Update update : kReadingUpdates) {
        Cell cell(77);
        EXPECT_EQ(update(&cell.cell, &cell.size), SNMP_ERR_GENERR);
        EXPECT_EQ(cell.value(), 77);
    }
}

TEST(FuelGaugeUpdate, AnUnknownCapDomainKeepsTheCapsWithoutAnError)
{
    ServedMachine served(machineWith([](nlohmann::json &power) { power["capping"]["domain"] = 2; }));
    for (Update update : {fuelGaugeInformation_update_fuelGaugeStaticPowerPcapSoftMin,
                          fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMin,
                          fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMax}) {
        Cell cell(500);
        EXPECT_EQ(update(&cell.cell, &cell.size), 0);
        EXPECT_EQ(cell.value(), 500);
    }
    Cell mode(1);
    EXPECT_EQ(fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMode(&mode.cell, &mode.size), SNMP_ERR_BADVALUE);
    EXPECT_EQ(mode.value(), 1);
    Cell current(0);
    EXPECT_EQ(fuelGaugeInformation_update_fuelGaugeStaticPowerPcapCurrentSetting(&current.cell, &current.size), 0);
    EXPECT_EQ(current.value(), 750);
}

TEST(FuelGaugeUpdate, ABadCappingPolicyKeepsTheValue)
{
    ServedMachine served(machineWith([](nlohmann::json &power) { power["capping"]["policy"] = 255; }));
    Cell cell(1);
    EXPECT_EQ(fuelGaugeInformation_update_fuelGaugePowerCappingPolicySetting(&cell.cell, &cell.size),
              SNMP_ERR_BADVALUE);
    EXPECT_EQ(cell.value(), 1);
}

TEST(FuelGaugeUpdate, ABladeFamilyOrAnUnsupportedModeKeepsTheBudgetWithoutAnError)
{
    for (auto edit : {+[](nlohmann::json &power) { power["bladeFamily"] = 1; },
                      +[](nlohmann::json &power) { power["redundancyMode"] = 0; },
                      +[](nlohmann::json &power) { power["redundancyMode"] = 3; }}) {
        ServedMachine served(machineWith(edit));
        for (Update update : kBudgetUpdates) {
            Cell cell(-5);
            EXPECT_EQ(update(&cell.cell, &cell.size), 0);
            EXPECT_EQ(cell.value(), -5);
        }
    }
}

TEST(FuelGaugeUpdate, AFailedModeReadIsGenErrAndKeepsTheValue)
{
    ServedMachine served(machineWith([](nlohmann::json &power) { power["modes"].erase("1"); }));
    for (Update update : kBudgetUpdates) {
        Cell cell(9);
        EXPECT_EQ(update(&cell.cell, &cell.size), SNMP_ERR_GENERR);
        EXPECT_EQ(cell.value(), 9);
    }
}

TEST(FuelGaugeUpdate, RemainingWrapsIn32Bits)
{
    ServedMachine served(machineWith([](nlohmann::json &power) {
        power["modes"]["1"] = {{"systemPower", 0}, {"maxLimit", 4294967295u}, {"count", 1}};
    }));
    Cell cell(0);
    EXPECT_EQ(fuelGaugeInformation_update_fuelGaugePowerRemaining(&cell.cell, &cell.size), 0);
    EXPECT_EQ(cell.value(), -1);
    EXPECT_EQ(fuelGaugeInformation_update_fuelGaugeTotalPowerAvaialble(&cell.cell, &cell.size), 0);
    EXPECT_EQ(cell.value(), -1);
}

TEST(FuelGaugeUpdate, TheServedCellsStartAtZero)
{
    size_t objects = 0;
    for (const scalar_decl_ex_t *decl = fuelGaugeInformation; decl->name; ++decl, ++objects) {
        int32_t value;
        memcpy(&value, decl->value, sizeof value);
        EXPECT_EQ(value, 0) << decl->name;
        EXPECT_EQ(decl->oid_len, 14u) << decl->name;
        EXPECT_EQ(decl->oid[decl->oid_len - 2], objects + 1) << decl->name;
        EXPECT_EQ(decl->asn_type, ASN_INTEGER);
        EXPECT_EQ(decl->validate, nullptr);
        EXPECT_EQ(decl->commit, nullptr);
    }
    EXPECT_EQ(objects, 13u);
}

} // namespace

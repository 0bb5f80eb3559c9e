// The restore settings' update routines in-process, against the simulated
// power library: a value out of range or a failed read leaves the value of
// the last good read in the cell.
#include "power_policy.h"
#include "unit_machine.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>

namespace {

using orv3::test::ServedMachine;

std::string machineWithRestore(int policy, int delay, int completionCode = 0)
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["power"]["restorePolicy"] = {{"value", policy}, {"completionCode", completionCode}};
    machine["power"]["restoreDelay"] = {{"value", delay}, {"completionCode", completionCode}};
    return machine.dump();
}

int32_t cellValue(const orv3::ScalarCell &cell)
{
    int32_t value;
    memcpy(&value, &cell, sizeof value);
    return value;
}

TEST(RestoreSettingsUpdate, StoresAValueInRange)
{
    ServedMachine served(machineWithRestore(1, 1));
    orv3::ScalarCell cell = 0;
    size_t size = 0;
    EXPECT_EQ(powerPolicyInformation_update_powerRestorePolicy(&cell, &size), 0);
    EXPECT_EQ(cellValue(cell), 1);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(powerPolicyInformation_update_powerRestoreDelay(&cell, &size), 0);
    EXPECT_EQ(cellValue(cell), 1);
}

TEST(RestoreSettingsUpdate, APolicyAboveTwoIsBadValueAndLeavesTheCell)
{
    ServedMachine served(machineWithRestore(3, 2));
    orv3::ScalarCell cell = 0;
    size_t size = 0;
    orv3::storeInt32(&cell, &size, 2); // the value of an earlier good read
    EXPECT_EQ(powerPolicyInformation_update_powerRestorePolicy(&cell, &size), SNMP_ERR_BADVALUE);
    EXPECT_EQ(cellValue(cell), 2);
    EXPECT_EQ(powerPolicyInformation_update_powerRestoreDelay(&cell, &size), SNMP_ERR_BADVALUE);
    EXPECT_EQ(cellValue(cell), 2);
}

TEST(RestoreSettingsUpdate, AFailedReadIsGenErrAndLeavesTheCell)
{
    ServedMachine served(machineWithRestore(1, 1, 0xc1));
    orv3::ScalarCell cell = 0;
    size_t size = 4;
    EXPECT_EQ(powerPolicyInformation_update_powerRestorePolicy(&cell, &size), SNMP_ERR_GENERR);
    EXPECT_EQ(cellValue(cell), 0);
}

TEST(RestoreSettingsUpdate, TheServedCellsStartAtZero)
{
    for (const scalar_decl_ex_t *decl = powerPolicyInformation; decl->name; ++decl) {
        int32_t value;
        memcpy(&value, decl->value, sizeof value);
        EXPECT_EQ(value, 0) << decl->name;
    }
}

} // namespace

// powerPolicyTable, 1.3.6.1.4.1.53917.11.1.1.10.2.1: one row per
// power-supply redundancy mode of the catalogue sPolicyData, indexed from 0.
// Rows come from the power-management library (powerPolicyTable_local.cpp)
// and are rebuilt at the start of every walk and every GET. Not offered on
// the families without power objects, nor when PLATFLAGS has bit 0x8000.
#include "platform_variant.h"
#include "power_policy.h"

static const oid powerPolicyTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 10, 2, 1};

// The platform flag that leaves the table out.
constexpr unsigned long kNoPowerPolicyTable = 0x8000;

extern "C" {
orv3_row_head_t *powerPolicyTable_head = nullptr;
size_t powerPolicyTable_oid_len = OID_LENGTH(powerPolicyTable_oid);
}

namespace {

using Row = powerPolicyTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_COLUMN(2, Row, powerPolicyName, powerPolicyNameLen),
    ORV3_INTEGER_COLUMN(3, Row, powerPolicyPwrSupplyCount),
    ORV3_INTEGER_COLUMN(4, Row, powerPolicyMaxPowerLimit),
    ORV3_INTEGER_COLUMN(5, Row, powerPolicyEstimatedUsage),
    ORV3_INTEGER_COLUMN(6, Row, powerPolicyActivated),
};

const orv3::RegistrationGate powerPolicyTableRegistration = {
    .withheld =
        [](const char *routine) {
            return orv3::familyWithoutPower(routine, "powerPolicyTable") || orv3::platformFlagSet(kNoPowerPolicyTable);
        },
    .askedByInit = true,
};

constinit orv3::TableOf<powerPolicyTable_entry_t> powerPolicyTable_table = {{
    .name = "powerPolicyTable",
    .rootOid = powerPolicyTable_oid,
    .rootOidLength = OID_LENGTH(powerPolicyTable_oid),
    .maxColumn = 6,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::EveryWalk, 0},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_powerPolicyTable_local,
    .registration = &powerPolicyTableRegistration,
    .handler = orv3::wholeListHandler("powerPolicyTable_handler: reqmode = %d.\n"),
    .rows = orv3::RowList(powerPolicyTable_head),
}};

} // namespace

ORV3_TABLE(powerPolicyTable, powerPolicyTable_table)

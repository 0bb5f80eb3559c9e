// powerTable, 1.3.6.1.4.1.53917.11.1.1.11.2: one row per power supply,
// indexed by powerIndex. Rows come from the store table
// "s/hw_health/power_modules" (powerTable_local.cpp), reloaded once two
// whole seconds have passed. Not registered on three platform families.
#include "hw_health_tables.h"

static const oid powerTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 11, 2};

extern "C" {
orv3_row_head_t *powerTable_head = nullptr;
size_t powerTable_oid_len = OID_LENGTH(powerTable_oid);
}

namespace {

using Row = powerTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),   ORV3_TEXT32_COLUMN(2, Row, fru_name),
    ORV3_TEXT32_COLUMN(3, Row, part_number),   ORV3_TEXT32_COLUMN(4, Row, fru_number),
    ORV3_TEXT32_COLUMN(5, Row, serial_number), ORV3_TEXT32_COLUMN(6, Row, health_status),
};

// The three families without power supply objects leave the table out.
const orv3::RegistrationGate powerTableRegistration = {
    .withheld = [](const char *routine) { return powerModule_family_unsupported(routine) != 0; },
    .askedByInit = false,
};

constinit orv3::TableOf<powerTable_entry_t> powerTable_table = {{
    .name = "powerTable",
    .rootOid = powerTable_oid,
    .rootOidLength = OID_LENGTH(powerTable_oid),
    .maxColumn = 6,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::FixedPeriod, 1},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_powerTable_local,
    .registration = &powerTableRegistration,
    .handler = orv3::wholeListHandler("powerTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(powerTable_head),
}};

} // namespace

ORV3_TABLE(powerTable, powerTable_table)

extern "C" {

int powerTable_commit_row(int request_id, powerTable_entry_t *row)
{
    return orv3::commitRowOnce(__func__, &row->head, request_id);
}

} // extern "C"

// voltTable, 1.3.6.1.4.1.53917.11.1.1.2.2: one row per voltage sensor, indexed by voltIndex.
// Rows come from the store table "s/voltages/status/voltagetbl" (voltTable_tiro.cpp) and are
// reloaded in every new second; readings and thresholds are served as the
// store formats them.
#include "voltTable.h"

#include "voltage.h"

static const oid voltTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 2, 2};

extern "C" {
orv3_row_head_t *voltTable_head = nullptr;
size_t voltTable_oid_len = OID_LENGTH(voltTable_oid);
}

namespace {

constinit orv3::TableOf<sensor_text_entry_t> voltTable_table = {{
    .name = "voltTable",
    .rootOid = voltTable_oid,
    .rootOidLength = OID_LENGTH(voltTable_oid),
    .maxColumn = 11,
    .columns = orv3::kSensorTextColumns,
    .refresh = {orv3::RefreshRule::NewSecond, 0},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_voltTable_local,
    .handler = orv3::perRequestHandler(&voltageHandlerState),
    .rows = orv3::RowList(voltTable_head),
}};

} // namespace

ORV3_TABLE(voltTable, voltTable_table)

extern "C" {

// Nothing reaches this while the table is read-only; it writes nothing.
int voltTable_commit_row(int request_id, sensor_text_entry_t *row)
{
    return orv3::sensorTableCommitRow(__func__, "voltTable", "s/voltages/status/voltagetbl[%ld]", pvoltageVars,
                                      request_id, row);
}

} // extern "C"

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

const orv3::TableInfo voltTable_info = {
    .name = "voltTable",
    .rootOid = voltTable_oid,
    .rootOidLength = OID_LENGTH(voltTable_oid),
    .maxColumn = 11,
    .columns = orv3::kSensorTextColumns,
    .handlerStyle = {.kind = orv3::TableHandlerStyle::PerRequest,
                     .entryTrace = nullptr,
                     .groupState = &voltageHandlerState},
};
const orv3::RefreshRule voltTable_refresh = {orv3::RefreshRule::NewSecond, 0};
int32_t voltTable_stamp = 0;
orv3::RowList voltTable_rows(voltTable_head);

} // namespace

ORV3_ROW_TABLE_ROUTINES(voltTable, sensor_text_entry_t)
ORV3_ROW_TABLE_REGISTRATION(voltTable)

extern "C" {

int voltTable_update_row(int, sensor_text_entry_t *)
{
    return 0;
}

// Nothing reaches this while the table is read-only; it writes nothing.
int voltTable_commit_row(int request_id, sensor_text_entry_t *row)
{
    return orv3::sensorTableCommitRow(__func__, "voltTable", "s/voltages/status/voltagetbl[%ld]", pvoltageVars,
                                      request_id, row);
}

} // extern "C"

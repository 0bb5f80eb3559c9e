// tempTable, 1.3.6.1.4.1.53917.11.1.1.1.2: one row per temperature sensor, indexed by tempIndex.
// Rows come from the store table "s/temperatures/status/temperaturetbl" (tempTable_tiro.cpp) and are
// reloaded in every new second; readings and thresholds are served as the
// store formats them.
#include "tempTable.h"

#include "temperature.h"

static const oid tempTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 1, 2};

extern "C" {
orv3_row_head_t *tempTable_head = nullptr;
size_t tempTable_oid_len = OID_LENGTH(tempTable_oid);
}

namespace {

constinit orv3::TableOf<sensor_text_entry_t> tempTable_table = {{
    .name = "tempTable",
    .rootOid = tempTable_oid,
    .rootOidLength = OID_LENGTH(tempTable_oid),
    .maxColumn = 11,
    .columns = orv3::kSensorTextColumns,
    .refresh = {orv3::RefreshRule::NewSecond, 0},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_tempTable_local,
    .handler = orv3::perRequestHandler(&temperatureHandlerState),
    .rows = orv3::RowList(tempTable_head),
}};

} // namespace

ORV3_TABLE(tempTable, tempTable_table)

extern "C" {

// Nothing reaches this while the table is read-only; it writes nothing.
int tempTable_commit_row(int request_id, sensor_text_entry_t *row)
{
    return orv3::sensorTableCommitRow(__func__, "tempTable", "s/temperatures/status/temperaturetbl[%ld]",
                                      ptemperatureVars, request_id, row);
}

} // extern "C"

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

const orv3::TableInfo tempTable_info = {
    .name = "tempTable",
    .rootOid = tempTable_oid,
    .rootOidLength = OID_LENGTH(tempTable_oid),
    .maxColumn = 11,
    .columns = orv3::kSensorTextColumns,
    .handlerStyle = {.kind = orv3::TableHandlerStyle::PerRequest,
                     .entryTrace = nullptr,
                     .groupState = &temperatureHandlerState},
};
const orv3::RefreshRule tempTable_refresh = {orv3::RefreshRule::NewSecond, 0};
int32_t tempTable_stamp = 0;
orv3::RowList tempTable_rows(tempTable_head);

} // namespace

ORV3_ROW_TABLE_ROUTINES(tempTable, sensor_text_entry_t)
ORV3_ROW_TABLE_REGISTRATION(tempTable)

extern "C" {

int tempTable_update_row(int, sensor_text_entry_t *)
{
    return 0;
}

// Nothing reaches this while the table is read-only; it writes nothing.
int tempTable_commit_row(int request_id, sensor_text_entry_t *row)
{
    return orv3::sensorTableCommitRow(__func__, "tempTable", "s/temperatures/status/temperaturetbl[%ld]",
                                      ptemperatureVars, request_id, row);
}

} // extern "C"

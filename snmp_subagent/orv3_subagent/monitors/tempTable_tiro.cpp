// Loader of tempTable: binds the store table "s/temperatures/status/temperaturetbl" column by
// column; every text is copied with a bound of 30 (at most 29 characters).
#include "bound_rows.h"
#include "tempTable.h"
#include "trace.h"

static quel_dm_binding_t tempTable_binding = nullptr;

// A 32-byte text buffer and the holder the store fills it through.
#define ORV3_SENSOR_HOLDER(name)                                                                                       \
    char name##_string[32];                                                                                            \
    quel_dm_string_holder_t name##_value = {name##_string, sizeof name##_string};

extern "C" {

int32_t tempIndex_value;
ORV3_SENSOR_HOLDER(tempDescr)
ORV3_SENSOR_HOLDER(tempReading)
ORV3_SENSOR_HOLDER(tempNominalReading)
ORV3_SENSOR_HOLDER(tempNonRecovLimitHigh)
ORV3_SENSOR_HOLDER(tempCritLimitHigh)
ORV3_SENSOR_HOLDER(tempNonCritLimitHigh)
ORV3_SENSOR_HOLDER(tempNonRecovLimitLow)
ORV3_SENSOR_HOLDER(tempCritLimitLow)
ORV3_SENSOR_HOLDER(tempNonCritLimitLow)
ORV3_SENSOR_HOLDER(tempHealthStatus)

quel_dm_column_binding_t tempTable_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &tempIndex_value},
    {QUEL_DM_TYPE_STRING, 0, "descr", &tempDescr_value},
    {QUEL_DM_TYPE_STRING, 0, "str/reading", &tempReading_value},
    {QUEL_DM_TYPE_STRING, 0, "str/nominalReading", &tempNominalReading_value},
    {QUEL_DM_TYPE_STRING, 0, "str/nonRecovLimitHigh", &tempNonRecovLimitHigh_value},
    {QUEL_DM_TYPE_STRING, 0, "str/critLimitHigh", &tempCritLimitHigh_value},
    {QUEL_DM_TYPE_STRING, 0, "str/nonCritLimitHigh", &tempNonCritLimitHigh_value},
    {QUEL_DM_TYPE_STRING, 0, "str/nonRecovLimitLow", &tempNonRecovLimitLow_value},
    {QUEL_DM_TYPE_STRING, 0, "str/critLimitLow", &tempCritLimitLow_value},
    {QUEL_DM_TYPE_STRING, 0, "str/nonCritLimitLow", &tempNonCritLimitLow_value},
    {QUEL_DM_TYPE_STRING, 0, "status", &tempHealthStatus_value},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

} // extern "C"

// Where the rows come from and the holders each is read into, in column order.
static const orv3::SensorStore tempStore = {
    .source =
        {
            .ns = "s/temperatures/status/temperaturetbl",
            .columns = tempTable_columns,
            .binding = &tempTable_binding,
            .loaderName = "initialize_tempTable_local",
            .firstRowMessageWithResult = true,
            .token = "tempTable",
            .traceEnter = true,
            .traceRowsLoaded = true,
        },
    .textBound = 30,
    .index = &tempIndex_value,
    .holders =
        {
            &tempDescr_value,
            &tempReading_value,
            &tempNominalReading_value,
            &tempNonRecovLimitHigh_value,
            &tempCritLimitHigh_value,
            &tempNonCritLimitHigh_value,
            &tempNonRecovLimitLow_value,
            &tempCritLimitLow_value,
            &tempNonCritLimitLow_value,
            &tempHealthStatus_value,
        },
};

extern "C" {

int copy_bindings_to_tempTable_entry(sensor_text_entry_t *row)
{
    orv3::copySensorRow(tempStore, row);
    return 0;
}

int initialize_tempTable_local(void)
{
    orv3::loadBoundRows(tempStore.source, tempTable_clear, ORV3_BOUND_ROW_ADDER(tempTable));
    return 0;
}

int32_t tempTable_get_row_count(void)
{
    return orv3::sensorTableRowCount(__func__, tempStore);
}

} // extern "C"

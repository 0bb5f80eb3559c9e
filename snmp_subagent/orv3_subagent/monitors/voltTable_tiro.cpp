// Loader of voltTable: binds the store table "s/voltages/status/voltagetbl" column by
// column; every text is copied with a bound of 31 (at most 30 characters).
#include "bound_rows.h"
#include "trace.h"
#include "voltTable.h"

static quel_dm_binding_t voltTable_binding = nullptr;

// A 32-byte text buffer and the holder the store fills it through.
#define ORV3_SENSOR_HOLDER(name)                                                                                       \
    char name##_string[32];                                                                                            \
    quel_dm_string_holder_t name##_value = {name##_string, sizeof name##_string};

extern "C" {

int32_t voltIndex_value;
ORV3_SENSOR_HOLDER(voltDescr)
ORV3_SENSOR_HOLDER(voltReading)
ORV3_SENSOR_HOLDER(voltNominalReading)
ORV3_SENSOR_HOLDER(voltNonRecovLimitHigh)
ORV3_SENSOR_HOLDER(voltCritLimitHigh)
ORV3_SENSOR_HOLDER(voltNonCritLimitHigh)
ORV3_SENSOR_HOLDER(voltNonRecovLimitLow)
ORV3_SENSOR_HOLDER(voltCritLimitLow)
ORV3_SENSOR_HOLDER(voltNonCritLimitLow)
ORV3_SENSOR_HOLDER(voltHealthStatus)

quel_dm_column_binding_t voltTable_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &voltIndex_value},
    {QUEL_DM_TYPE_STRING, 0, "descr", &voltDescr_value},
    {QUEL_DM_TYPE_STRING, 0, "str/voltage", &voltReading_value},
    {QUEL_DM_TYPE_STRING, 0, "str/nominalReading", &voltNominalReading_value},
    {QUEL_DM_TYPE_STRING, 0, "str/nonRecovLimitHigh", &voltNonRecovLimitHigh_value},
    {QUEL_DM_TYPE_STRING, 0, "str/critLimitHigh", &voltCritLimitHigh_value},
    {QUEL_DM_TYPE_STRING, 0, "str/nonCritLimitHigh", &voltNonCritLimitHigh_value},
    {QUEL_DM_TYPE_STRING, 0, "str/nonRecovLimitLow", &voltNonRecovLimitLow_value},
    {QUEL_DM_TYPE_STRING, 0, "str/critLimitLow", &voltCritLimitLow_value},
    {QUEL_DM_TYPE_STRING, 0, "str/nonCritLimitLow", &voltNonCritLimitLow_value},
    {QUEL_DM_TYPE_STRING, 0, "status", &voltHealthStatus_value},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

} // extern "C"

// Where the rows come from and the holders each is read into, in column order.
static const orv3::SensorStore voltStore = {
    .source =
        {
            .ns = "s/voltages/status/voltagetbl",
            .columns = voltTable_columns,
            .binding = &voltTable_binding,
            .loaderName = "initialize_voltTable_local",
            .firstRowMessageWithResult = true,
            .token = "voltTable",
            .traceEnter = true,
            .traceRowsLoaded = true,
        },
    .textBound = 31,
    .index = &voltIndex_value,
    .holders =
        {
            &voltDescr_value,
            &voltReading_value,
            &voltNominalReading_value,
            &voltNonRecovLimitHigh_value,
            &voltCritLimitHigh_value,
            &voltNonCritLimitHigh_value,
            &voltNonRecovLimitLow_value,
            &voltCritLimitLow_value,
            &voltNonCritLimitLow_value,
            &voltHealthStatus_value,
        },
};

extern "C" {

int copy_bindings_to_voltTable_entry(sensor_text_entry_t *row)
{
    orv3::copySensorRow(voltStore, row);
    return 0;
}

int initialize_voltTable_local(void)
{
    orv3::loadBoundRows(voltStore.source, voltTable_clear, ORV3_BOUND_ROW_ADDER(voltTable));
    return 0;
}

int32_t voltTable_get_row_count(void)
{
    return orv3::sensorTableRowCount(__func__, voltStore);
}

} // extern "C"

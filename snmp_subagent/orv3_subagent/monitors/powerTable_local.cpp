// Loader of powerTable: binds the store table "s/hw_health/power_modules";
// texts are copied with a bound of 31 (at most 30 characters).
#include "bound_rows.h"
#include "hw_health_tables.h"
#include "text.h"

static const char kPowerStoreTable[] = "s/hw_health/power_modules";
static quel_dm_binding_t powerTable_binding = nullptr;

extern "C" {

int32_t gPowerTableLastRowCount = 0;

int32_t powerNo_value;
char szPowerFruName_string[31];
quel_dm_string_holder_t powerFruName_value = {szPowerFruName_string, sizeof szPowerFruName_string};
char szPowerPartNumber_string[31];
quel_dm_string_holder_t powerPartNumber_value = {szPowerPartNumber_string, sizeof szPowerPartNumber_string};
char szPowerFRUNumber_string[31];
quel_dm_string_holder_t powerFRUNumber_value = {szPowerFRUNumber_string, sizeof szPowerFRUNumber_string};
char szPowerFRUSerialNumber_string[31];
quel_dm_string_holder_t powerFRUSerialNumber_value = {szPowerFRUSerialNumber_string,
                                                      sizeof szPowerFRUSerialNumber_string};
char szPowerHealthStatus_string[31];
quel_dm_string_holder_t powerHealthStatus_value = {szPowerHealthStatus_string, sizeof szPowerHealthStatus_string};

quel_dm_column_binding_t mypower_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &powerNo_value},
    {QUEL_DM_TYPE_STRING, 0, "name", &powerFruName_value},
    {QUEL_DM_TYPE_STRING, 0, "part_number", &powerPartNumber_value},
    {QUEL_DM_TYPE_STRING, 0, "fru_number", &powerFRUNumber_value},
    {QUEL_DM_TYPE_STRING, 0, "serial_number", &powerFRUSerialNumber_value},
    {QUEL_DM_TYPE_STRING, 0, "status", &powerHealthStatus_value},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

int copy_bindings_to_powerTable_entry(powerTable_entry_t *row)
{
    auto copy = [](orv3_text32_t &field, const char *holder) {
        field.len = orv3::copyText(field.text, 31, holder, 31);
    };
    row->head.index = powerNo_value;
    copy(row->fru_name, szPowerFruName_string);
    copy(row->part_number, szPowerPartNumber_string);
    copy(row->fru_number, szPowerFRUNumber_string);
    copy(row->serial_number, szPowerFRUSerialNumber_string);
    copy(row->health_status, szPowerHealthStatus_string);
    return 0;
}

int initialize_powerTable_local(void)
{
    static const orv3::BoundTableSource source = {kPowerStoreTable, mypower_columns, &powerTable_binding,
                                                  "initialize_powerTable_local", false};
    gPowerTableLastRowCount = orv3::loadBoundRows(source, powerTable_clear, ORV3_BOUND_ROW_ADDER(powerTable));
    return 0;
}

int32_t powerTable_get_row_count(void)
{
    return orv3::hwHealthRowCount(__func__, "powerTable", kPowerStoreTable, gPowerTableLastRowCount,
                                  "gPowerTableLastRowCount");
}

} // extern "C"

// Loader of diskTable: binds the store table "s/hw_health/disks"; texts are
// copied with a bound of 31 (at most 30 characters).
#include "bound_rows.h"
#include "hw_health_tables.h"
#include "text.h"

static const char kDiskStoreTable[] = "s/hw_health/disks";
static quel_dm_binding_t diskTable_binding = nullptr;

extern "C" {

int32_t gDiskTableLastRowCount = 0;

int32_t diskNo_value;
char szDiskFruName_string[31];
quel_dm_string_holder_t diskFruName_value = {szDiskFruName_string, sizeof szDiskFruName_string};
char szDiskHealthStatus_string[31];
quel_dm_string_holder_t diskHealthStatus_value = {szDiskHealthStatus_string, sizeof szDiskHealthStatus_string};

quel_dm_column_binding_t mydisk_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &diskNo_value},
    {QUEL_DM_TYPE_STRING, 0, "name", &diskFruName_value},
    {QUEL_DM_TYPE_STRING, 0, "status", &diskHealthStatus_value},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

int copy_bindings_to_diskTable_entry(diskTable_entry_t *row)
{
    row->head.index = diskNo_value;
    row->fru_name.len = orv3::copyText(row->fru_name.text, 31, szDiskFruName_string, sizeof szDiskFruName_string);
    row->health_status.len =
        orv3::copyText(row->health_status.text, 31, szDiskHealthStatus_string, sizeof szDiskHealthStatus_string);
    return 0;
}

int initialize_diskTable_local(void)
{
    static const orv3::BoundTableSource source = {kDiskStoreTable, mydisk_columns, &diskTable_binding,
                                                  "initialize_diskTable_local", false};
    gDiskTableLastRowCount = orv3::loadBoundRows(source, diskTable_clear, ORV3_BOUND_ROW_ADDER(diskTable));
    return 0;
}

int32_t diskTable_get_row_count(void)
{
    return orv3::hwHealthRowCount(__func__, "diskTable", kDiskStoreTable, gDiskTableLastRowCount,
                                  "gDiskTableLastRowCount");
}

} // extern "C"

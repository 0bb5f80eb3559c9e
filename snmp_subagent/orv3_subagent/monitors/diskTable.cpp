// diskTable, 1.3.6.1.4.1.53917.11.1.1.12.2: one row per disk, indexed by
// diskIndex. Rows come from the store table "s/hw_health/disks"
// (diskTable_local.cpp), reloaded once two whole seconds have passed.
#include "hw_health_tables.h"

static const oid diskTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 12, 2};

extern "C" {
orv3_row_head_t *diskTable_head = nullptr;
size_t diskTable_oid_len = OID_LENGTH(diskTable_oid);
}

namespace {

using Row = diskTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT32_COLUMN(2, Row, fru_name),
    ORV3_TEXT32_COLUMN(3, Row, health_status),
};

constinit orv3::TableOf<diskTable_entry_t> diskTable_table = {{
    .name = "diskTable",
    .rootOid = diskTable_oid,
    .rootOidLength = OID_LENGTH(diskTable_oid),
    .maxColumn = 3,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::FixedPeriod, 1},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_diskTable_local,
    .handler = orv3::wholeListHandler("diskTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(diskTable_head),
}};

} // namespace

ORV3_TABLE(diskTable, diskTable_table)

extern "C" {

int diskTable_commit_row(int request_id, diskTable_entry_t *row)
{
    return orv3::commitRowOnce(__func__, &row->head, request_id);
}

} // extern "C"

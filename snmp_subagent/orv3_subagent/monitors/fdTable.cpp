// fdTable, 1.3.6.1.4.1.53917.11.1.1.13.2.2: one row per flash DIMM,
// indexed by fdimmIndex. Rows come from the store table
// "s/hw_health/flashdimms" (fdTable_local.cpp), reloaded once a whole
// second has passed.
#include "hw_health_tables.h"

static const oid fdTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 13, 2, 2};

extern "C" {
orv3_row_head_t *fdTable_head = nullptr;
size_t fdTable_oid_len = OID_LENGTH(fdTable_oid);
}

namespace {

using Row = fdTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),     ORV3_TEXT32_COLUMN(2, Row, name),
    ORV3_TEXT32_COLUMN(3, Row, health_status),   ORV3_TEXT32_COLUMN(4, Row, op_status),
    ORV3_TEXT32_COLUMN(5, Row, capacity),        ORV3_TEXT32_COLUMN(6, Row, model_type),
    ORV3_TEXT32_COLUMN(7, Row, part_number),     ORV3_TEXT32_COLUMN(8, Row, serial_number),
    ORV3_TEXT32_COLUMN(9, Row, manufacturer),    ORV3_TEXT32_COLUMN(10, Row, temperature),
    ORV3_TEXT32_COLUMN(11, Row, warranty_life),  ORV3_TEXT32_COLUMN(12, Row, endurance_life),
    ORV3_TEXT32_COLUMN(13, Row, firmware_level),
};

constinit orv3::TableOf<fdTable_entry_t> fdTable_table = {{
    .name = "fdTable",
    .rootOid = fdTable_oid,
    .rootOidLength = OID_LENGTH(fdTable_oid),
    .maxColumn = 13,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::FixedPeriod, 1},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_fdTable_local,
    .handler = orv3::wholeListHandler("fdTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(fdTable_head),
}};

} // namespace

ORV3_TABLE(fdTable, fdTable_table)

extern "C" {

int fdTable_commit_row(int request_id, fdTable_entry_t *row)
{
    return orv3::commitRowOnce(__func__, &row->head, request_id);
}

} // extern "C"

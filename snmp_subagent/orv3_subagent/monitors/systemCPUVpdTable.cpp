// systemCPUVpdTable, 1.3.6.1.4.1.53917.11.1.1.5.20: one row per processor,
// indexed by cpuVpdIndex. Rows come from the store table
// "s/hw_health/processors" (its _local.cpp, with the conversions of the
// numbers the store keeps as text); the table reloads when more than one
// second has passed since the previous request.
#include "inventory.h"

static const oid systemCPUVpdTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 5, 20};

extern "C" {

orv3_row_head_t *systemCPUVpdTable_head = nullptr;
size_t systemCPUVpdTable_oid_len = OID_LENGTH(systemCPUVpdTable_oid);

} // extern "C"

namespace {

using Row = systemCPUVpdTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, description),
    ORV3_INTEGER_COLUMN(3, Row, speed),
    ORV3_TEXT_FIELD_COLUMN(4, Row, identifier),
    ORV3_TEXT_FIELD_COLUMN(5, Row, type),
    ORV3_TEXT_FIELD_COLUMN(6, Row, family),
    ORV3_INTEGER_COLUMN(7, Row, cores),
    ORV3_INTEGER_COLUMN(8, Row, threads),
    ORV3_INTEGER_COLUMN(9, Row, voltage),
    ORV3_INTEGER_COLUMN(10, Row, data_width),
    ORV3_TEXT_FIELD_COLUMN(11, Row, health_status),
    ORV3_TEXT_FIELD_COLUMN(12, Row, model),
};

constinit orv3::TableOf<systemCPUVpdTable_entry_t> systemCPUVpdTable_table = {{
    .name = "systemCPUVpdTable",
    .rootOid = systemCPUVpdTable_oid,
    .rootOidLength = OID_LENGTH(systemCPUVpdTable_oid),
    .maxColumn = 12,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::SlidingPeriod, 1},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_systemCPUVpdTable_local,
    .handler = orv3::wholeListHandler("systemCPUVpdTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(systemCPUVpdTable_head),
}};

} // namespace

ORV3_TABLE(systemCPUVpdTable, systemCPUVpdTable_table)

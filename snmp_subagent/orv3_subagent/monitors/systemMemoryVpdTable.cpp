// systemMemoryVpdTable, 1.3.6.1.4.1.53917.11.1.1.5.21: one row per memory
// module, persistent-memory modules included (memoryAEPFlag tells them
// apart), indexed by memoryVpdIndex. Rows come from the store table
// "s/hw_health/memory" (its _local.cpp); the table reloads when more than
// three seconds have passed since the previous request.
#include "inventory.h"

static const oid systemMemoryVpdTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 5, 21};

extern "C" {

orv3_row_head_t *systemMemoryVpdTable_head = nullptr;
size_t systemMemoryVpdTable_oid_len = OID_LENGTH(systemMemoryVpdTable_oid);
// The table is never written: no SET reaches its rows, so this stays empty.
quel_dm_varlist_t psystemMemoryVpdTableVars = nullptr;

int systemMemoryVpdTable_commit_row(int request_id, systemMemoryVpdTable_entry_t *row)
{
    return orv3::commitRowOfGroup(__func__, "systemMemoryVpdTable", "s/hw_health/memory[%ld]",
                                  psystemMemoryVpdTableVars, request_id, &row->head);
}

} // extern "C"

namespace {

using Row = systemMemoryVpdTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, description),
    ORV3_TEXT_FIELD_COLUMN(3, Row, part_number),
    ORV3_TEXT_FIELD_COLUMN(4, Row, serial_number),
    ORV3_TEXT_FIELD_COLUMN(5, Row, manufacture_date),
    ORV3_TEXT_FIELD_COLUMN(6, Row, type),
    ORV3_INTEGER_COLUMN(7, Row, size),
    ORV3_TEXT_FIELD_COLUMN(8, Row, health_status),
    ORV3_INTEGER_COLUMN(9, Row, config_speed),
    ORV3_INTEGER_COLUMN(10, Row, rated_speed),
    ORV3_TEXT_FIELD_COLUMN(11, Row, udi_part_number),
    ORV3_INTEGER_COLUMN(12, Row, aep_flag),
};

constinit orv3::TableOf<systemMemoryVpdTable_entry_t> systemMemoryVpdTable_table = {{
    .name = "systemMemoryVpdTable",
    .rootOid = systemMemoryVpdTable_oid,
    .rootOidLength = OID_LENGTH(systemMemoryVpdTable_oid),
    .maxColumn = 12,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::SlidingPeriod, 3},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_systemMemoryVpdTable_local,
    .handler = orv3::wholeListHandler("systemMemoryVpdTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(systemMemoryVpdTable_head),
}};

} // namespace

ORV3_TABLE(systemMemoryVpdTable, systemMemoryVpdTable_table)

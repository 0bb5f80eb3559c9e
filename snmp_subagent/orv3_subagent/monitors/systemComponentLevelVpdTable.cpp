// systemComponentLevelVpdTable, 1.3.6.1.4.1.53917.11.1.1.5.17: one row per
// field-replaceable component, indexed by componentLevelVpdIndex. Rows come
// from the store table "s/vpd/componenttbl" (its _local.cpp); the table
// reloads when more than three seconds have passed since the previous request.
#include "inventory.h"

static const oid systemComponentLevelVpdTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 5, 17};

extern "C" {

orv3_row_head_t *systemComponentLevelVpdTable_head = nullptr;
size_t systemComponentLevelVpdTable_oid_len = OID_LENGTH(systemComponentLevelVpdTable_oid);

} // extern "C"

namespace {

using Row = systemComponentLevelVpdTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),          ORV3_TEXT_FIELD_COLUMN(2, Row, fru_number),
    ORV3_TEXT_FIELD_COLUMN(3, Row, fru_name),         ORV3_TEXT_FIELD_COLUMN(4, Row, serial_number),
    ORV3_TEXT_FIELD_COLUMN(5, Row, manufacturing_id),
};

constinit orv3::TableOf<systemComponentLevelVpdTable_entry_t> systemComponentLevelVpdTable_table = {{
    .name = "systemComponentLevelVpdTable",
    .rootOid = systemComponentLevelVpdTable_oid,
    .rootOidLength = OID_LENGTH(systemComponentLevelVpdTable_oid),
    .maxColumn = 5,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::SlidingPeriod, 3},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_systemComponentLevelVpdTable_local,
    .handler = orv3::wholeListHandler("systemComponentLevelVpdTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(systemComponentLevelVpdTable_head),
}};

} // namespace

ORV3_TABLE(systemComponentLevelVpdTable, systemComponentLevelVpdTable_table)

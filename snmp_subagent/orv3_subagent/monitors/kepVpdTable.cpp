// kepVpdTable, 1.3.6.1.4.1.53917.11.1.1.5.1: one row per firmware image of
// the controller, indexed by kepVpdIndex. Rows come from the store table
// "s/vpd/firmwaretbl" (kepVpdTable_local.cpp); the table reloads when more
// than three seconds have passed since the previous request.
#include "inventory.h"

static const oid kepVpdTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 5, 1};

extern "C" {
orv3_row_head_t *kepVpdTable_head = nullptr;
size_t kepVpdTable_oid_len = OID_LENGTH(kepVpdTable_oid);
}

namespace {

using Row = kepVpdTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, type),
    ORV3_TEXT_FIELD_COLUMN(3, Row, id_version),
    ORV3_TEXT_FIELD_COLUMN(4, Row, release_date),
};

constinit orv3::TableOf<kepVpdTable_entry_t> kepVpdTable_table = {{
    .name = "kepVpdTable",
    .rootOid = kepVpdTable_oid,
    .rootOidLength = OID_LENGTH(kepVpdTable_oid),
    .maxColumn = 4,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::SlidingPeriod, 3},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_kepVpdTable_local,
    .handler = orv3::wholeListHandler("kepVpdTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(kepVpdTable_head),
}};

} // namespace

ORV3_TABLE(kepVpdTable, kepVpdTable_table)

// systemHealthSummaryTable, 1.3.6.1.4.1.53917.11.1.1.4.2: one row per active
// event of the controller's event database, indexed by its position.
// Rows come from systemHealthSummaryTable_local.cpp; the table reloads when
// more than three seconds have passed since the previous request (for the
// table or for systemHealthStat), so steady polling keeps the same rows.
#include "health.h"

static const oid systemHealthSummaryTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 4, 2};

extern "C" {
orv3_row_head_t *systemHealthSummaryTable_head = nullptr;
size_t systemHealthSummaryTable_oid_len = OID_LENGTH(systemHealthSummaryTable_oid);
}

namespace {

using Row = systemHealthSummaryTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_COLUMN(2, Row, severity, severity_len),
    ORV3_TEXT_COLUMN(3, Row, description, description_len),
};

constinit orv3::TableOf<systemHealthSummaryTable_entry_t> systemHealthSummaryTable_table = {{
    .name = "systemHealthSummaryTable",
    .rootOid = systemHealthSummaryTable_oid,
    .rootOidLength = OID_LENGTH(systemHealthSummaryTable_oid),
    .maxColumn = 3,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::SlidingPeriod, 3},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_systemHealthSummaryTable_local,
    .handler = orv3::wholeListHandler("systemHealthSummaryTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(systemHealthSummaryTable_head),
}};

} // namespace

ORV3_TABLE(systemHealthSummaryTable, systemHealthSummaryTable_table)

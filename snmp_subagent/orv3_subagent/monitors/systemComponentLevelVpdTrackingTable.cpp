// systemComponentLevelVpdTrackingTable, 1.3.6.1.4.1.53917.11.1.1.5.18: the
// change history of firmware, hardware and configuration, one row per
// record of the controller's change-history log in log order, indexed from 1.
// Rows come from get_chghist_log (its _local.cpp), loaded when a walk begins
// and more than three seconds have passed since the last load.
//
// Unlike the store-bound tables, its check answers whether the rows are
// fresh (1) or a load is due (0), and its createEntry lists a copy of a row
// the loader has filled.
#include "inventory.h"

static const oid systemComponentLevelVpdTrackingTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 5, 18};

extern "C" {
orv3_row_head_t *systemComponentLevelVpdTrackingTable_head = nullptr;
size_t systemComponentLevelVpdTrackingTable_oid_len = OID_LENGTH(systemComponentLevelVpdTrackingTable_oid);
}

namespace {

using Row = systemComponentLevelVpdTrackingTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, category),
    ORV3_TEXT_FIELD_COLUMN(3, Row, text1),
    ORV3_TEXT_FIELD_COLUMN(4, Row, text2),
};

constinit orv3::TableOf<systemComponentLevelVpdTrackingTable_entry_t> systemComponentLevelVpdTrackingTable_table = {{
    .name = "systemComponentLevelVpdTrackingTable",
    .rootOid = systemComponentLevelVpdTrackingTable_oid,
    .rootOidLength = OID_LENGTH(systemComponentLevelVpdTrackingTable_oid),
    .maxColumn = 4,
    .columns = servedColumns,
    .rowMaking = orv3::Table::RowMaking::CopyOfFilledRow,
    .refresh = {orv3::RefreshRule::FixedPeriod, 3},
    .check = orv3::Table::Check::ReportsFreshness,
    .load = loadMaintancelog, // a failed log read: an empty table for this walk
    .loadFailure = orv3::Table::LoadFailure::EndsTheWalk,
    .handler = orv3::wholeListHandler("systemComponentLevelVpdTrackingTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(systemComponentLevelVpdTrackingTable_head),
}};

} // namespace

ORV3_TABLE(systemComponentLevelVpdTrackingTable, systemComponentLevelVpdTrackingTable_table)

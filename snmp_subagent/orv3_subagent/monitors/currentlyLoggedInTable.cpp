// currentlyLoggedInTable, 1.3.6.1.4.1.53917.11.1.1.6.1.1: one row per user
// session the session manager can describe, numbered from 1. Rows come
// from currentlyLoggedInTable_local.cpp; the table reloads when more than
// one second has passed since the previous request.
#include "currentlyLoggedInTable.h"

static const oid currentlyLoggedInTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 6, 1, 1};

extern "C" {
orv3_row_head_t *currentlyLoggedInTable_head = nullptr;
size_t currentlyLoggedInTable_oid_len = OID_LENGTH(currentlyLoggedInTable_oid);
}

namespace {

using Row = currentlyLoggedInTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_COLUMN(2, Row, user_name, user_name_len),
    ORV3_TEXT_COLUMN(3, Row, access_method, access_method_len),
};

constinit orv3::TableOf<currentlyLoggedInTable_entry_t> currentlyLoggedInTable_table = {{
    .name = "currentlyLoggedInTable",
    .rootOid = currentlyLoggedInTable_oid,
    .rootOidLength = OID_LENGTH(currentlyLoggedInTable_oid),
    .maxColumn = 3,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::SlidingPeriod, 1},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_currentlyLoggedInTable_local,
    .handler = orv3::wholeListHandler("currentlyLoggedInTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(currentlyLoggedInTable_head),
}};

} // namespace

ORV3_TABLE(currentlyLoggedInTable, currentlyLoggedInTable_table)

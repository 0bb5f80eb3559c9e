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

constexpr orv3::Column currentlyLoggedInTable_columns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_COLUMN(2, Row, user_name, user_name_len),
    ORV3_TEXT_COLUMN(3, Row, access_method, access_method_len),
};

const orv3::TableInfo currentlyLoggedInTable_info = {
    .name = "currentlyLoggedInTable",
    .rootOid = currentlyLoggedInTable_oid,
    .rootOidLength = OID_LENGTH(currentlyLoggedInTable_oid),
    .maxColumn = 3,
    .columns = currentlyLoggedInTable_columns,
    .handlerStyle = {.kind = orv3::TableHandlerStyle::WholeList,
                     .entryTrace = "currentlyLoggedInTable_handler: reqinfo->mode = %d\n",
                     .groupState = nullptr},
};
const orv3::RefreshRule currentlyLoggedInTable_refresh = {orv3::RefreshRule::SlidingPeriod, 1};
int32_t currentlyLoggedInTable_stamp = 0;
orv3::RowList currentlyLoggedInTable_rows(currentlyLoggedInTable_head);

} // namespace

ORV3_ROW_TABLE_ROUTINES(currentlyLoggedInTable, currentlyLoggedInTable_entry_t)
ORV3_ROW_TABLE_REGISTRATION(currentlyLoggedInTable)

extern "C" int currentlyLoggedInTable_update_row(int, currentlyLoggedInTable_entry_t *)
{
    return 0;
}

// allLEDsTable, 1.3.6.1.4.1.53917.11.1.1.8.2: one row per light-path LED,
// indexed by ledIndex. Rows come from "s/lightpathstatus/status/lightpathstatustbl"
// (allLEDsTable_local.cpp), reloaded when more than three seconds have
// passed since the last load, so steady polling still sees a reload at
// least every fourth second. Columns 1 to 6 are registered, but column 3
// holds no object and always answers noSuchObject.
#include "leds.h"

static const oid allLEDsTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 8, 2};

extern "C" {
orv3_row_head_t *allLEDsTable_head = nullptr;
size_t allLEDsTable_oid_len = OID_LENGTH(allLEDsTable_oid);
}

namespace {

using Row = allLEDsTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),    ORV3_INTEGER_COLUMN(2, Row, identifier),
    ORV3_TEXT_COLUMN(4, Row, label, label_len), ORV3_INTEGER_COLUMN(5, Row, state),
    ORV3_TEXT_COLUMN(6, Row, color, color_len),
};

constinit orv3::TableOf<allLEDsTable_entry_t> allLEDsTable_table = {{
    .name = "allLEDsTable",
    .rootOid = allLEDsTable_oid,
    .rootOidLength = OID_LENGTH(allLEDsTable_oid),
    .maxColumn = 6,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::FixedPeriod, 3},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_allLEDsTable_local,
    .handler = orv3::perRequestHandler(&ledsHandlerState),
    .rows = orv3::RowList(allLEDsTable_head),
}};

} // namespace

ORV3_TABLE(allLEDsTable, allLEDsTable_table)

extern "C" {

// Nothing reaches this while the table is read-only; it writes nothing.
int allLEDsTable_commit_row(int request_id, allLEDsTable_entry_t *row)
{
    return orv3::commitRowOfGroup(__func__, "allLEDsTable", "s/lightpathstatus/status/lightpathstatustbl[%ld]",
                                  pledsVars, request_id, &row->head);
}

} // extern "C"

// fanTable, 1.3.6.1.4.1.53917.11.1.1.3.2: one row per fan, indexed by fanIndex.
// Rows come from the store table "s/fans/status/fantbl" (fanTable_local.cpp)
// and are reloaded once two whole seconds have passed since the last load.
#include "fanTable.h"
#include "hw_health_tables.h"

#include <cstdio>

static const oid fanTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 3, 2};

extern "C" {
orv3_row_head_t *fanTable_head = nullptr;
size_t fanTable_oid_len = OID_LENGTH(fanTable_oid);
}

namespace {

using Row = fanTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_COLUMN(2, Row, descr, descr_len),
    ORV3_TEXT_COLUMN(3, Row, speed_text, speed_text_len),
    ORV3_GAUGE_COLUMN(4, Row, nonRecovLimitHigh),
    ORV3_GAUGE_COLUMN(5, Row, critLimitHigh),
    ORV3_GAUGE_COLUMN(6, Row, nonCritLimitHigh),
    ORV3_GAUGE_COLUMN(7, Row, nonRecovLimitLow),
    ORV3_GAUGE_COLUMN(8, Row, critLimitLow),
    ORV3_GAUGE_COLUMN(9, Row, nonCritLimitLow),
    ORV3_TEXT_COLUMN(10, Row, health_status, health_status_len),
};

constinit orv3::TableOf<fanTable_entry_t> fanTable_table = {{
    .name = "fanTable",
    .rootOid = fanTable_oid,
    .rootOidLength = OID_LENGTH(fanTable_oid),
    .maxColumn = 10,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::FixedPeriod, 1},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_fanTable_local,
    .handler = orv3::wholeListHandler("fanTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(fanTable_head),
}};

} // namespace

ORV3_TABLE(fanTable, fanTable_table)

extern "C" {

int fanTable_commit_row(int request_id, fanTable_entry_t *row)
{
    return orv3::commitRowOnce(__func__, &row->head, request_id);
}

// Checks for a writable variant of the table; they accept every value.
#define FAN_LIMIT_VALIDATOR(column)                                                                                    \
    int fanTable_validate_##column(fanTable_entry_t *row)                                                              \
    {                                                                                                                  \
        printf("%s row=%ld\n", __func__, static_cast<long>(row->head.index));                                          \
        return 0;                                                                                                      \
    }
FAN_LIMIT_VALIDATOR(fanNonRecovLimitHigh)
FAN_LIMIT_VALIDATOR(fanCritLimitHigh)
FAN_LIMIT_VALIDATOR(fanNonCritLimitHigh)
FAN_LIMIT_VALIDATOR(fanNonRecovLimitLow)
FAN_LIMIT_VALIDATOR(fanCritLimitLow)
FAN_LIMIT_VALIDATOR(fanNonCritLimitLow)

} // extern "C"

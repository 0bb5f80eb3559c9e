// powerTrendingSampleTable, 1.3.6.1.4.1.53917.11.1.1.10.3.1: one row per
// sample of the system power domain's last 24 hours, indexed by the sample
// number. Rows come from the power library's history
// (powerTrendingSampleTable_local.cpp), reloaded when more than 30 seconds
// have passed since the last load.
#include "power_trending.h"

static const oid powerTrendingSampleTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 10, 3, 1};

extern "C" {
orv3_row_head_t *powerTrendingSampleTable_head = nullptr;
size_t powerTrendingSampleTable_oid_len = OID_LENGTH(powerTrendingSampleTable_oid);
}

namespace {

using Row = powerTrendingSampleTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_COLUMN(2, Row, powerTrendingSampleTimeStamp, powerTrendingSampleTimeStampLen),
    ORV3_INTEGER_COLUMN(3, Row, powerTrendingSampleReadingA),
    ORV3_INTEGER_COLUMN(4, Row, powerTrendingSampleReadingB),
    ORV3_INTEGER_COLUMN(5, Row, powerTrendingSampleReadingC),
    ORV3_INTEGER_COLUMN(6, Row, powerTrendingSampleReadingD),
    ORV3_INTEGER_COLUMN(7, Row, powerTrendingSampleReadingE),
    ORV3_INTEGER_COLUMN(8, Row, powerTrendingSampleReadingF),
};

constinit orv3::TableOf<powerTrendingSampleTable_entry_t> powerTrendingSampleTable_table = {{
    .name = "powerTrendingSampleTable",
    .rootOid = powerTrendingSampleTable_oid,
    .rootOidLength = OID_LENGTH(powerTrendingSampleTable_oid),
    .maxColumn = 8,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::FixedPeriod, 30},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_powerTrendingSampleTable_local,
    .handler = orv3::wholeListHandler("powerTrendingSampleTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(powerTrendingSampleTable_head),
}};

} // namespace

ORV3_TABLE(powerTrendingSampleTable, powerTrendingSampleTable_table)

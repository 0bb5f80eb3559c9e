// powerTable, 1.3.6.1.4.1.53917.11.1.1.11.2: one row per power supply,
// indexed by powerIndex. Rows come from the store table
// "s/hw_health/power_modules" (powerTable_local.cpp), reloaded once two
// whole seconds have passed. Not registered on three platform families.
#include "hw_health_tables.h"

static const oid powerTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 11, 2};

extern "C" {
orv3_row_head_t *powerTable_head = nullptr;
size_t powerTable_oid_len = OID_LENGTH(powerTable_oid);
}

namespace {

using Row = powerTable_entry_t;

constexpr orv3::Column powerTable_columns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),   ORV3_TEXT32_COLUMN(2, Row, fru_name),
    ORV3_TEXT32_COLUMN(3, Row, part_number),   ORV3_TEXT32_COLUMN(4, Row, fru_number),
    ORV3_TEXT32_COLUMN(5, Row, serial_number), ORV3_TEXT32_COLUMN(6, Row, health_status),
};

const orv3::TableInfo powerTable_info = {
    .name = "powerTable",
    .rootOid = powerTable_oid,
    .rootOidLength = OID_LENGTH(powerTable_oid),
    .maxColumn = 6,
    .columns = powerTable_columns,
    .handlerStyle = {.kind = orv3::TableHandlerStyle::WholeList,
                     .entryTrace = "powerTable_handler: reqinfo->mode = %d\n",
                     .groupState = nullptr},
};
const orv3::RefreshRule powerTable_refresh = {orv3::RefreshRule::FixedPeriod, 1};
int32_t powerTable_stamp = 0;
orv3::RowList powerTable_rows(powerTable_head);

} // namespace

ORV3_ROW_TABLE_ROUTINES(powerTable, powerTable_entry_t)

extern "C" {

int powerTable_update_row(int, powerTable_entry_t *)
{
    return 0;
}

int powerTable_commit_row(int request_id, powerTable_entry_t *row)
{
    return orv3::commitRowOnce(__func__, &row->head, request_id);
}

int initialize_table_powerTable(void)
{
    if (powerModule_family_unsupported(__func__))
        return 0;
    return orv3::registerTable(powerTable_info, powerTable_handler, powerTable_get_first_data_point,
                               powerTable_get_next_data_point);
}

int init_powerTable(void)
{
    return initialize_table_powerTable();
}

} // extern "C"

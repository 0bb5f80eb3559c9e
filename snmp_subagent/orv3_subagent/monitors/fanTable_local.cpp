// Loader of fanTable: binds the store table "s/fans/status/fantbl" column by
// column and copies each store row into a fresh fan row.
#include "bound_rows.h"
#include "fanTable.h"
#include "text.h"
#include "trace.h"

static const char kFanStoreTable[] = "s/fans/status/fantbl";
static quel_dm_binding_t fanTable_binding = nullptr;

extern "C" {

int32_t gFanTableLastRowCount = 0;

// Value holders the store fills for the current row.
int32_t fanNo_value;
char szfanDescr_string[31];
quel_dm_string_holder_t fanDescr_value = {szfanDescr_string, sizeof szfanDescr_string};
int32_t fanSpeedPct_value;
int32_t fanNonRecovLimitHigh_value;
int32_t fanCritLimitHigh_value;
int32_t fanNonCritLimitHigh_value;
int32_t fanNonRecovLimitLow_value;
int32_t fanCritLimitLow_value;
int32_t fanNonCritLimitLow_value;
char szfanHealthStatus_string[31];
quel_dm_string_holder_t fanHealthStatus_value = {szfanHealthStatus_string, sizeof szfanHealthStatus_string};

quel_dm_column_binding_t myfan_columns[] = {
    {QUEL_DM_TYPE_INT, 0, "index", &fanNo_value},
    {QUEL_DM_TYPE_STRING, 0, "descr", &fanDescr_value},
    {QUEL_DM_TYPE_INT, 0, "speedPct", &fanSpeedPct_value},
    {QUEL_DM_TYPE_INT, 0, "nonRecovLimitHigh", &fanNonRecovLimitHigh_value},
    {QUEL_DM_TYPE_INT, 0, "critLimitHigh", &fanCritLimitHigh_value},
    {QUEL_DM_TYPE_INT, 0, "nonCritLimitHigh", &fanNonCritLimitHigh_value},
    {QUEL_DM_TYPE_INT, 0, "nonRecovLimitLow", &fanNonRecovLimitLow_value},
    {QUEL_DM_TYPE_INT, 0, "critLimitLow", &fanCritLimitLow_value},
    {QUEL_DM_TYPE_INT, 0, "nonCritLimitLow", &fanNonCritLimitLow_value},
    {QUEL_DM_TYPE_STRING, 0, "status", &fanHealthStatus_value},
    {QUEL_DM_TYPE_END, 0, nullptr, nullptr},
};

int copy_bindings_to_fanTable_entry(fanTable_entry_t *row)
{
    row->head.index = fanNo_value;
    row->descr_len = orv3::copyText(row->descr, 31, szfanDescr_string, sizeof szfanDescr_string);
    row->nonRecovLimitHigh = fanNonRecovLimitHigh_value;
    row->critLimitHigh = fanCritLimitHigh_value;
    row->nonCritLimitHigh = fanNonCritLimitHigh_value;
    row->nonRecovLimitLow = fanNonRecovLimitLow_value;
    row->critLimitLow = fanCritLimitLow_value;
    row->nonCritLimitLow = fanNonCritLimitLow_value;
    row->health_status_len =
        orv3::copyText(row->health_status, 31, szfanHealthStatus_string, sizeof szfanHealthStatus_string);
    row->speed_text_len = orv3::formatFanSpeed(row->speed_text, sizeof row->speed_text, fanSpeedPct_value);
    return 0;
}

int initialize_fanTable_local(void)
{
    static const orv3::BoundTableSource source = {kFanStoreTable, myfan_columns, &fanTable_binding,
                                                  "initialize_fanTable_local", true};
    gFanTableLastRowCount = orv3::loadBoundRows(source, fanTable_clear, ORV3_BOUND_ROW_ADDER(fanTable));
    return 0;
}

int32_t fanTable_get_row_count(void)
{
    orv3::RowCountReply reply = orv3::queryRowCount(kFanStoreTable);
    ORV3_TRACE("fanTable", "%s curRowCount=%ld, gFanTableLastRowCount=%ld\n", __func__, static_cast<long>(reply.count),
               static_cast<long>(gFanTableLastRowCount));
    return reply.result != 0 ? orv3::negated(reply.result) : reply.count;
}

} // extern "C"

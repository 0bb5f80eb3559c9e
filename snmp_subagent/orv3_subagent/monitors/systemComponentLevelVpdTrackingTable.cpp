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

#include <cstdlib>
#include <cstring>

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

const orv3::TableInfo systemComponentLevelVpdTrackingTable_info = {
    .name = "systemComponentLevelVpdTrackingTable",
    .rootOid = systemComponentLevelVpdTrackingTable_oid,
    .rootOidLength = OID_LENGTH(systemComponentLevelVpdTrackingTable_oid),
    .maxColumn = 4,
    .columns = servedColumns,
    .handlerStyle = {.kind = orv3::TableHandlerStyle::WholeList,
                     .entryTrace = "systemComponentLevelVpdTrackingTable_handler: reqinfo->mode = %d\n",
                     .groupState = nullptr},
};
const orv3::RefreshRule loadRule = {orv3::RefreshRule::FixedPeriod, 3};
int32_t lastLoad = 0;
orv3::RowList systemComponentLevelVpdTrackingTable_rows(systemComponentLevelVpdTrackingTable_head);

} // namespace

ORV3_ROW_TABLE_LIST_ROUTINES(systemComponentLevelVpdTrackingTable, systemComponentLevelVpdTrackingTable_entry_t)
ORV3_ROW_TABLE_WALK_ROUTINES(systemComponentLevelVpdTrackingTable, systemComponentLevelVpdTrackingTable_entry_t)
ORV3_ROW_TABLE_REGISTRATION(systemComponentLevelVpdTrackingTable)

extern "C" {

Row *systemComponentLevelVpdTrackingTable_createEntry(const Row *filled)
{
    auto *row = static_cast<Row *>(malloc(sizeof(Row)));
    if (!row)
        return nullptr;
    memcpy(row, filled, sizeof(Row));
    return systemComponentLevelVpdTrackingTable_insertEntry(row);
}

int systemComponentLevelVpdTrackingTable_check_for_update(void)
{
    return orv3::refreshDue(loadRule, lastLoad, orv3::nowSeconds()) ? 0 : 1;
}

netsnmp_variable_list *systemComponentLevelVpdTrackingTable_get_first_data_point(void **loop, void **data,
                                                                                 netsnmp_variable_list *index,
                                                                                 netsnmp_iterator_info *info)
{
    if (systemComponentLevelVpdTrackingTable_check_for_update() == 0 && loadMaintancelog() != 0)
        return nullptr; // a failed log read: an empty table for this walk
    *loop = systemComponentLevelVpdTrackingTable_rows.head();
    return systemComponentLevelVpdTrackingTable_get_next_data_point(loop, data, index, info);
}

int systemComponentLevelVpdTrackingTable_update_row(int, Row *)
{
    return 0;
}

} // extern "C"

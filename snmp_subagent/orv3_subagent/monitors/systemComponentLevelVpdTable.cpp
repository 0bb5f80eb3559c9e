// systemComponentLevelVpdTable, 1.3.6.1.4.1.53917.11.1.1.5.17: one row per
// field-replaceable component, indexed by componentLevelVpdIndex. Rows come
// from the store table "s/vpd/componenttbl" (its _local.cpp); the table
// reloads when more than three seconds have passed since the previous request.
#include "inventory.h"

static const oid systemComponentLevelVpdTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 5, 17};

extern "C" {

orv3_row_head_t *systemComponentLevelVpdTable_head = nullptr;
size_t systemComponentLevelVpdTable_oid_len = OID_LENGTH(systemComponentLevelVpdTable_oid);

int systemComponentLevelVpdTable_update_row(int, systemComponentLevelVpdTable_entry_t *)
{
    return 0;
}

} // extern "C"

namespace {

using Row = systemComponentLevelVpdTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),          ORV3_TEXT_FIELD_COLUMN(2, Row, fru_number),
    ORV3_TEXT_FIELD_COLUMN(3, Row, fru_name),         ORV3_TEXT_FIELD_COLUMN(4, Row, serial_number),
    ORV3_TEXT_FIELD_COLUMN(5, Row, manufacturing_id),
};

const orv3::TableInfo systemComponentLevelVpdTable_info = {
    .name = "systemComponentLevelVpdTable",
    .rootOid = systemComponentLevelVpdTable_oid,
    .rootOidLength = OID_LENGTH(systemComponentLevelVpdTable_oid),
    .maxColumn = 5,
    .columns = servedColumns,
    .handlerStyle = {.kind = orv3::TableHandlerStyle::WholeList,
                     .entryTrace = "systemComponentLevelVpdTable_handler: reqinfo->mode = %d\n",
                     .groupState = nullptr},
};
const orv3::RefreshRule systemComponentLevelVpdTable_refresh = {orv3::RefreshRule::SlidingPeriod, 3};
int32_t systemComponentLevelVpdTable_stamp = 0;
orv3::RowList systemComponentLevelVpdTable_rows(systemComponentLevelVpdTable_head);

} // namespace

ORV3_ROW_TABLE_ROUTINES(systemComponentLevelVpdTable, systemComponentLevelVpdTable_entry_t)
ORV3_ROW_TABLE_REGISTRATION(systemComponentLevelVpdTable)

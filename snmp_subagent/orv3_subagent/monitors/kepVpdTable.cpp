// kepVpdTable, 1.3.6.1.4.1.53917.11.1.1.5.1: one row per firmware image of
// the controller, indexed by kepVpdIndex. Rows come from the store table
// "s/vpd/firmwaretbl" (kepVpdTable_local.cpp); the table reloads when more
// than three seconds have passed since the previous request.
#include "inventory.h"

static const oid kepVpdTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 5, 1};

extern "C" {
orv3_row_head_t *kepVpdTable_head = nullptr;
size_t kepVpdTable_oid_len = OID_LENGTH(kepVpdTable_oid);
}

namespace {

using Row = kepVpdTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, type),
    ORV3_TEXT_FIELD_COLUMN(3, Row, id_version),
    ORV3_TEXT_FIELD_COLUMN(4, Row, release_date),
};

const orv3::TableInfo kepVpdTable_info = {
    .name = "kepVpdTable",
    .rootOid = kepVpdTable_oid,
    .rootOidLength = OID_LENGTH(kepVpdTable_oid),
    .maxColumn = 4,
    .columns = servedColumns,
    .handlerStyle = {.kind = orv3::TableHandlerStyle::WholeList,
                     .entryTrace = "kepVpdTable_handler: reqinfo->mode = %d\n",
                     .groupState = nullptr},
};
const orv3::RefreshRule kepVpdTable_refresh = {orv3::RefreshRule::SlidingPeriod, 3};
int32_t kepVpdTable_stamp = 0;
orv3::RowList kepVpdTable_rows(kepVpdTable_head);

} // namespace

ORV3_ROW_TABLE_ROUTINES(kepVpdTable, kepVpdTable_entry_t)
ORV3_ROW_TABLE_REGISTRATION(kepVpdTable)

extern "C" int kepVpdTable_update_row(int, kepVpdTable_entry_t *)
{
    return 0;
}

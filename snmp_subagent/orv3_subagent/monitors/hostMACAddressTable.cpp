// hostMACAddressTable, 1.3.6.1.4.1.53917.11.1.1.5.19: one row per MAC address
// of the host, indexed by hostMACAddressIndex. Rows come from the store table
// "s/vpd/nictbl" (its _local.cpp); the table reloads when more than three
// seconds have passed since the previous request.
#include "inventory.h"

static const oid hostMACAddressTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 5, 19};

extern "C" {

orv3_row_head_t *hostMACAddressTable_head = nullptr;
size_t hostMACAddressTable_oid_len = OID_LENGTH(hostMACAddressTable_oid);
// The table is never written: no SET reaches its rows, so this stays empty.
quel_dm_varlist_t phostMACAddressTableVars = nullptr;

int hostMACAddressTable_commit_row(int request_id, hostMACAddressTable_entry_t *row)
{
    return orv3::commitRowOfGroup(__func__, "hostMACAddressTable", "s/vpd/nictbl[%ld]", phostMACAddressTableVars,
                                  request_id, &row->head);
}

} // extern "C"

namespace {

using Row = hostMACAddressTable_entry_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, description),
    ORV3_TEXT_FIELD_COLUMN(3, Row, address),
};

constinit orv3::TableOf<hostMACAddressTable_entry_t> hostMACAddressTable_table = {{
    .name = "hostMACAddressTable",
    .rootOid = hostMACAddressTable_oid,
    .rootOidLength = OID_LENGTH(hostMACAddressTable_oid),
    .maxColumn = 3,
    .columns = servedColumns,
    .refresh = {orv3::RefreshRule::SlidingPeriod, 3},
    .check = orv3::Table::Check::LoadsWhenDue,
    .load = initialize_hostMACAddressTable_local,
    .handler = orv3::wholeListHandler("hostMACAddressTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(hostMACAddressTable_head),
}};

} // namespace

ORV3_TABLE(hostMACAddressTable, hostMACAddressTable_table)

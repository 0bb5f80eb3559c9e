// adapterRAIDFunctionTable (.14.7): one row per storage function (RAID,
// SCSI, SAS, Mass Storage) with its VPD and PCI description.
#include "adapter_function_rows.h"

orv3_row_head_t *adapterRAIDFunctionTable_head = nullptr;

namespace {

using Row = adapterRAIDFunctionTable_entry_t;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_FUNCTION_IDENTITY_COLUMNS(Row),
    ORV3_FUNCTION_PCI_COLUMNS(Row, 12),
};

constinit orv3::TableOf<adapterRAIDFunctionTable_entry_t> adapterRAIDFunctionTable_table =
    orv3::familyTable<adapterRAIDFunctionTable_entry_t>(
        orv3::kAdapterTables, "adapterRAIDFunctionTable", adapterRAIDFunctionTable_oid,
        adapterRAIDFunctionTable_lastColumn, servedColumns, adapterRAIDFunctionTable_loadData,
        adapterRAIDFunctionTable_head);

const orv3::FunctionFill<Row> kFills[] = {
    ORV3_FUNCTION_IDENTITY_FILLS(adapterRAIDFunctionTable, raid, Row),
    ORV3_FUNCTION_PCI_FILLS(adapterRAIDFunctionTable, raid, Row),
};

} // namespace

extern "C" int adapterRAIDFunctionTable_loadData(void)
{
    return orv3::loadFunctionRows(adapterRAIDFunctionTable_table, ADAPTERS_RAID_FUNCTIONS,
                                  std::span<const orv3::FunctionFill<Row>>(kFills));
}

ORV3_TABLE(adapterRAIDFunctionTable, adapterRAIDFunctionTable_table)

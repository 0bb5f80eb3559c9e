// adapterRAIDFunctionTable (.14.7): one row per storage function (RAID,
// SCSI, SAS, Mass Storage) with its VPD and PCI description.
#include "adapter_function_rows.h"

orv3_row_head_t *adapterRAIDFunctionTable_head = nullptr;

namespace {

using Row = adapterRAIDFunctionTable_entry_t;

const orv3::Column kColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_FUNCTION_IDENTITY_COLUMNS(Row),
    ORV3_FUNCTION_PCI_COLUMNS(Row, 12),
};

orv3::TableOf<adapterRAIDFunctionTable_entry_t> adapterRAIDFunctionTable_table = {{
    .name = "adapterRAIDFunctionTable",
    .rootOid = adapterRAIDFunctionTable_oid,
    .rootOidLength = OID_LENGTH(adapterRAIDFunctionTable_oid),
    .maxColumn = adapterRAIDFunctionTable_lastColumn,
    .columns = kColumns,
    .rowMaking = orv3::Table::RowMaking::CopyOfFilledRow,
    .refresh = orv3::kAdapterCache,
    .check = orv3::Table::Check::ReportsFreshness,
    .load = adapterRAIDFunctionTable_loadData,
    .loadFailure = orv3::Table::LoadFailure::EmptiesTheTable,
    .clearedBeforeLoad = true,
    .gate = &orv3::kPciInventoryGate,
    .handler = orv3::kAdapterHandler,
    .rows = orv3::RowList(adapterRAIDFunctionTable_head),
}};

const orv3::FunctionFill<Row> kFills[] = {
    ORV3_FUNCTION_IDENTITY_FILLS(adapterRAIDFunctionTable, raid, Row),
    ORV3_FUNCTION_PCI_FILLS(adapterRAIDFunctionTable, raid, Row),
};

} // namespace

extern "C" int adapterRAIDFunctionTable_loadData(void)
{
    return orv3::loadFunctionRows(adapterRAIDFunctionTable_table,
                                  get_pci_raid_funckey_list, ADAPTERS_RAID_FUNCTIONS,
                                  std::span<const orv3::FunctionFill<Row>>(kFills));
}

ORV3_TABLE(adapterRAIDFunctionTable, adapterRAIDFunctionTable_table)

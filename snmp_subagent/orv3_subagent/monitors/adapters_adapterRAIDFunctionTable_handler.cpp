// adapterRAIDFunctionTable (.14.7): one row per storage function (RAID,
// SCSI, SAS, Mass Storage) with its VPD and PCI description.
#include "adapter_function_rows.h"

orv3_row_head_t *adapterRAIDFunctionTable_head = nullptr;

namespace {

using Row = adapterRAIDFunctionTable_entry_t;

orv3::RowList adapterRAIDFunctionTable_rows(adapterRAIDFunctionTable_head);
int32_t adapterRAIDFunctionTable_stamp = 0;

const orv3::Column kColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_FUNCTION_IDENTITY_COLUMNS(Row),
    ORV3_FUNCTION_PCI_COLUMNS(Row, 12),
};

const orv3::AdapterTable adapterRAIDFunctionTable_table = {"adapterRAIDFunctionTable", 23, kColumns};

const orv3::FunctionFill<Row> kFills[] = {
    ORV3_FUNCTION_IDENTITY_FILLS(adapterRAIDFunctionTable, raid, Row),
    ORV3_FUNCTION_PCI_FILLS(adapterRAIDFunctionTable, raid, Row),
};

} // namespace

extern "C" uint32_t adapterRAIDFunctionTable_loadData(void)
{
    return orv3::loadFunctionRows(adapterRAIDFunctionTable_table, adapterRAIDFunctionTable_rows,
                                  get_pci_raid_funckey_list, ADAPTERS_RAID_FUNCTIONS,
                                  std::span<const orv3::FunctionFill<Row>>(kFills));
}

ORV3_ADAPTER_TABLE_ROUTINES(adapterRAIDFunctionTable, adapterRAIDFunctionTable_entry_t)

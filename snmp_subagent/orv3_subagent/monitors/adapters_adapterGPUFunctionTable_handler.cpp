// adapterGPUFunctionTable (.14.5): one row per GPU function with its VPD,
// video memory, number of chips and PCI description.
#include "adapter_function_rows.h"

orv3_row_head_t *adapterGPUFunctionTable_head = nullptr;

namespace {

using Row = adapterGPUFunctionTable_entry_t;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_FUNCTION_IDENTITY_COLUMNS(Row),
    ORV3_TEXT_FIELD_COLUMN(12, Row, gpuVideoMemorySize),
    ORV3_TEXT_FIELD_COLUMN(13, Row, gpuVideoMemoryType),
    ORV3_INTEGER_COLUMN(14, Row, gpuChipNumber),
    ORV3_FUNCTION_PCI_COLUMNS(Row, 15),
};

constinit orv3::TableOf<adapterGPUFunctionTable_entry_t> adapterGPUFunctionTable_table =
    orv3::familyTable<adapterGPUFunctionTable_entry_t>(orv3::kAdapterTables, "adapterGPUFunctionTable",
                                                       adapterGPUFunctionTable_oid, adapterGPUFunctionTable_lastColumn,
                                                       servedColumns, adapterGPUFunctionTable_loadData,
                                                       adapterGPUFunctionTable_head);

// The video memory is described only by a GPU whose adapter has VPD and
// miscellaneous data out of band; the columns stay empty otherwise.
template <orv3_text256_t Row::*column, auto field>
uint32_t fillVideoMemory(const char *routine, const orv3::FunctionSource &s, Row &row)
{
    if (s.func.oobSupported != INVENTORY_DB_OOB_VPD_AND_MISC)
        return ADAPTERS_OK;
    inventory_db_gpu_device_t device;
    memset(&device, 0, sizeof device);
    if (orvdb_get_gpu_device_info(s.func.funcKey, &device) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE_AS(routine, "GPU Function %u cannot get gpu info.\n", s.func.funcKey);
        return ADAPTERS_PARTIAL;
    }
    return orv3::fillTrimmed(row.*column, device.*field);
}

uint32_t fillChipNumber(const char *routine, const orv3::FunctionSource &s, Row &row)
{
    if (s.func.oobSupported != INVENTORY_DB_OOB_VPD_AND_MISC)
        return ADAPTERS_OK;
    inventory_db_gpu_chip_list_t chips = {};
    if (orvdb_get_gpu_chip_list(s.func.funcKey, &chips) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE_AS(routine, "GPU Function %u cannot get gpu chip list.\n", s.func.funcKey);
        return ADAPTERS_PARTIAL;
    }
    free(chips.chips);
    row.gpuChipNumber = static_cast<int32_t>(chips.count);
    return ADAPTERS_OK;
}

using Gpu = inventory_db_gpu_device_t;
const orv3::FunctionFill<Row> kFills[] = {
    ORV3_FUNCTION_IDENTITY_FILLS(adapterGPUFunctionTable, gpu, Row),
    {"adapterGPUFunctionTable_fill_gpuVideoMemorySize",
     fillVideoMemory<&Row::gpuVideoMemorySize, &Gpu::video_memory_size>},
    {"adapterGPUFunctionTable_fill_gpuVideoMemoryType",
     fillVideoMemory<&Row::gpuVideoMemoryType, &Gpu::video_memory_type>},
    {"adapterGPUFunctionTable_fill_gpuChipNumber", fillChipNumber},
    ORV3_FUNCTION_PCI_FILLS(adapterGPUFunctionTable, gpu, Row),
};

} // namespace

extern "C" int adapterGPUFunctionTable_loadData(void)
{
    return orv3::loadFunctionRows(adapterGPUFunctionTable_table, ADAPTERS_GPU_FUNCTIONS,
                                  std::span<const orv3::FunctionFill<Row>>(kFills));
}

ORV3_TABLE(adapterGPUFunctionTable, adapterGPUFunctionTable_table)

// adapterGPUChipTable (.14.6): one row per graphics chip of every GPU
// function whose adapter has VPD and miscellaneous data out of band.
#include "adapter_tables.h"

#include <memory>

orv3_row_head_t *adapterGPUChipTable_head = nullptr;

namespace {

using Row = adapterGPUChipTable_entry_t;
using Chip = inventory_db_gpu_chip_t;

struct ChipSource {
    const inventory_db_func_key_t &func;
    const Chip &chip;
};
using Fill = orv3::AdapterFill<ChipSource, Row>;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, gpuVPDProdName),
    ORV3_INTEGER_COLUMN(3, Row, chipNo),
    ORV3_TEXT_FIELD_COLUMN(4, Row, chipName),
    ORV3_TEXT_FIELD_COLUMN(5, Row, chipFamily),
    ORV3_TEXT_FIELD_COLUMN(6, Row, chipManufacturer),
    ORV3_INTEGER_COLUMN(7, Row, chipCoresEnabled),
    ORV3_GAUGE_COLUMN(8, Row, chipMaxClockSpeed),
    ORV3_GAUGE_COLUMN(9, Row, chipExtBusClockSpeed),
    ORV3_INTEGER_COLUMN(10, Row, chipAddressWidth),
    ORV3_INTEGER_COLUMN(11, Row, chipDataWidth),
    ORV3_TEXT_FIELD_COLUMN(12, Row, chipFormFactor),
    ORV3_TEXT_FIELD_COLUMN(13, Row, chipModel),
    ORV3_TEXT_FIELD_COLUMN(14, Row, chipSerialNo),
    ORV3_TEXT_FIELD_COLUMN(15, Row, chipFRUNo),
    ORV3_TEXT_FIELD_COLUMN(16, Row, chipPartNo),
    ORV3_TEXT_FIELD_COLUMN(17, Row, chipUniqueID),
};

constinit orv3::TableOf<adapterGPUChipTable_entry_t> adapterGPUChipTable_table =
    orv3::familyTable<adapterGPUChipTable_entry_t>(orv3::kAdapterTables, "adapterGPUChipTable", adapterGPUChipTable_oid,
                                                   adapterGPUChipTable_lastColumn, servedColumns,
                                                   adapterGPUChipTable_loadData, adapterGPUChipTable_head);

template <orv3_text256_t Row::*column, auto field>
uint32_t fillChipText(const char *, const ChipSource &source, Row &row)
{
    return orv3::fillTrimmed(row.*column, source.chip.*field);
}

// A number of the chip record, which keeps its fields packed: read by
// place and width, little-endian.
template <int32_t Row::*column, size_t offset, size_t width>
uint32_t fillChipNumber(const char *, const ChipSource &source, Row &row)
{
    uint8_t bytes[sizeof(uint32_t)] = {};
    memcpy(bytes, reinterpret_cast<const uint8_t *>(&source.chip) + offset, width);
    uint32_t value = 0;
    for (size_t i = width; i-- > 0;)
        value = value << 8 | bytes[i];
    row.*column = static_cast<int32_t>(value);
    return ADAPTERS_OK;
}
#define ORV3_CHIP_NUMBER(column, field) fillChipNumber<&Row::column, offsetof(Chip, field), sizeof(Chip::field)>

uint32_t fillCardName(const char *, const ChipSource &source, Row &row)
{
    return orv3::fillTrimmed(row.gpuVPDProdName, source.func.cardName);
}

const Fill kFills[] = {
    {"adapterGPUChipTable_fill_gpuVPDProdName", fillCardName},
    {"adapterGPUChipTable_fill_chipNo", ORV3_CHIP_NUMBER(chipNo, chip_number)},
    {"adapterGPUChipTable_fill_chipName", fillChipText<&Row::chipName, &Chip::chip_name>},
    {"adapterGPUChipTable_fill_chipFamily", fillChipText<&Row::chipFamily, &Chip::family>},
    {"adapterGPUChipTable_fill_chipManufacturer", fillChipText<&Row::chipManufacturer, &Chip::manufacturer>},
    {"adapterGPUChipTable_fill_chipCoresEnabled", ORV3_CHIP_NUMBER(chipCoresEnabled, cores_enabled)},
    {"adapterGPUChipTable_fill_chipMaxClockSpeed", ORV3_CHIP_NUMBER(chipMaxClockSpeed, max_clock)},
    {"adapterGPUChipTable_fill_chipExtBusClockSpeed", ORV3_CHIP_NUMBER(chipExtBusClockSpeed, ext_bus_clock)},
    {"adapterGPUChipTable_fill_chipAddressWidth", ORV3_CHIP_NUMBER(chipAddressWidth, address_width)},
    {"adapterGPUChipTable_fill_chipDataWidth", ORV3_CHIP_NUMBER(chipDataWidth, data_width)},
    {"adapterGPUChipTable_fill_chipFormFactor", fillChipText<&Row::chipFormFactor, &Chip::form_factor>},
    {"adapterGPUChipTable_fill_chipModel", fillChipText<&Row::chipModel, &Chip::model>},
    {"adapterGPUChipTable_fill_chipSerialNo", fillChipText<&Row::chipSerialNo, &Chip::serial_number>},
    {"adapterGPUChipTable_fill_chipFRUNo", fillChipText<&Row::chipFRUNo, &Chip::fru_number>},
    {"adapterGPUChipTable_fill_chipPartNo", fillChipText<&Row::chipPartNo, &Chip::part_number>},
    {"adapterGPUChipTable_fill_chipUniqueID", fillChipText<&Row::chipUniqueID, &Chip::unique_id>},
};

} // namespace

extern "C" int adapterGPUChipTable_loadData(void)
{
    int32_t index = 1;
    return orv3::forEachFunction(
        adapterGPUChipTable_table, ADAPTERS_GPU_FUNCTIONS, [&index](const inventory_db_func_key_t &func) {
            // Chips are known only with miscellaneous data out of band.
            if (func.oobSupported != INVENTORY_DB_OOB_VPD_AND_MISC)
                return static_cast<uint32_t>(ADAPTERS_OK);
            inventory_db_gpu_chip_list_t chips = {};
            if (orvdb_get_gpu_chip_list(func.funcKey, &chips) != ORV_DB_STATUS_SUCCESS) {
                ORV3_ADAPTERS_TRACE_AS("adapterGPUChipTable_loadData", "GPU Function %u cannot get chip list.\n",
                                       func.funcKey);
                return static_cast<uint32_t>(ADAPTERS_PARTIAL);
            }
            const std::unique_ptr<Chip, decltype(&free)> ownedChips(chips.chips, free);
            orv3::AdapterResult result;
            for (uint32_t c = 0; c < chips.count && chips.chips; ++c)
                if (!result.take(orv3::addAdapterRow(adapterGPUChipTable_table, index++, std::span<const Fill>(kFills),
                                                     ChipSource{func, chips.chips[c]})))
                    return static_cast<uint32_t>(ADAPTERS_FAILED);
            return result.value;
        });
}

ORV3_TABLE(adapterGPUChipTable, adapterGPUChipTable_table)

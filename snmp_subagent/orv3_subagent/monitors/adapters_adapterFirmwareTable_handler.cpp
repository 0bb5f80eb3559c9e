// adapterFirmwareTable (.14.8): one row per firmware component of every
// function of every adapter whose VPD and miscellaneous data the database
// has out of band, numbered on across adapters and functions.
#include "adapter_tables.h"

#include <memory>

orv3_row_head_t *adapterFirmwareTable_head = nullptr;

namespace {

using Row = adapterFirmwareTable_entry_t;

// A firmware row is made from the component and its function's card name.
struct FirmwareSource {
    const char *cardName;
    const inventory_db_firmware_t &firmware;
};
using Fill = orv3::AdapterFill<FirmwareSource, Row>;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, adapterFwCardName),
    ORV3_TEXT_FIELD_COLUMN(3, Row, adapterFwName),
    ORV3_TEXT_FIELD_COLUMN(4, Row, adapterFwClassification),
    ORV3_TEXT_FIELD_COLUMN(5, Row, adapterFwDescription),
    ORV3_TEXT_FIELD_COLUMN(6, Row, adapterFwManufacture),
    ORV3_TEXT_FIELD_COLUMN(7, Row, adapterFwVersion),
    ORV3_TEXT_FIELD_COLUMN(8, Row, adapterFwReleaseDate),
    ORV3_TEXT_FIELD_COLUMN(9, Row, adapterFwSoftwareID),
};

constinit orv3::TableOf<adapterFirmwareTable_entry_t> adapterFirmwareTable_table =
    orv3::familyTable<adapterFirmwareTable_entry_t>(
        orv3::kAdapterTables, "adapterFirmwareTable", adapterFirmwareTable_oid, adapterFirmwareTable_lastColumn,
        servedColumns, adapterFirmwareTable_loadData, adapterFirmwareTable_head);

// Every column is a firmware text, trimmed.
template <orv3_text256_t Row::*column, auto field>
uint32_t fillFirmwareText(const char *, const FirmwareSource &source, Row &row)
{
    return orv3::fillTrimmed(row.*column, source.firmware.*field);
}

uint32_t fillCardName(const char *, const FirmwareSource &source, Row &row)
{
    orv3::trimInto(row.adapterFwCardName.text, sizeof row.adapterFwCardName.text, source.cardName,
                   sizeof(inventory_db_func_key_t::cardName));
    row.adapterFwCardName.len = static_cast<uint32_t>(strlen(row.adapterFwCardName.text));
    return ADAPTERS_OK;
}

using Fw = inventory_db_firmware_t;
const Fill kFills[] = {
    {"adapterFirmwareTable_addRow_byFunc", fillCardName},
    {"adapterFirmwareTable_fill_adapterFwName", fillFirmwareText<&Row::adapterFwName, &Fw::name>},
    {"adapterFirmwareTable_fill_adapterFwClassification",
     fillFirmwareText<&Row::adapterFwClassification, &Fw::classification>},
    {"adapterFirmwareTable_fill_adapterFwDescription", fillFirmwareText<&Row::adapterFwDescription, &Fw::description>},
    {"adapterFirmwareTable_fill_adapterFwManufacture", fillFirmwareText<&Row::adapterFwManufacture, &Fw::manufacturer>},
    {"adapterFirmwareTable_fill_adapterFwVersion", fillFirmwareText<&Row::adapterFwVersion, &Fw::version>},
    {"adapterFirmwareTable_fill_adapterFwReleaseDate", fillFirmwareText<&Row::adapterFwReleaseDate, &Fw::release_date>},
    {"adapterFirmwareTable_fill_adapterFwSoftwareID", fillFirmwareText<&Row::adapterFwSoftwareID, &Fw::software_id>},
};

// The rows of one function's firmware components.
uint32_t adapterFirmwareTable_addRow_byFunc(uint32_t funcKey, int32_t &index)
{
    char cardName[sizeof(inventory_db_func_key_t::cardName)] = {};
    if (get_pci_CardName_byFunc(funcKey, cardName, INVENTORY_DB_OOB_VPD_AND_MISC) != ADAPTERS_OK)
        return ADAPTERS_PARTIAL;
    inventory_db_firmware_list_t list = {};
    if (orvdb_get_pci_firmware_list(funcKey, &list) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE("funcKey %u cannot get firmware list.\n", funcKey);
        return ADAPTERS_PARTIAL;
    }
    const std::unique_ptr<inventory_db_firmware_t, decltype(&free)> owned(list.firmware, free);
    if (list.count > 0 && !list.firmware) {
        ORV3_ADAPTERS_TRACE("fwInfo, iFWCount or cardName is null.\n");
        return ADAPTERS_PARTIAL;
    }
    orv3::AdapterResult result;
    for (uint32_t f = 0; f < list.count; ++f) {
        const uint32_t made = orv3::addAdapterRow(adapterFirmwareTable_table, index++, std::span<const Fill>(kFills),
                                                  FirmwareSource{cardName, list.firmware[f]});
        if (!result.take(made))
            return ADAPTERS_FAILED;
    }
    return result.value;
}

// The rows of every function of one adapter.
uint32_t adapterFirmwareTable_addRow_byAdapter(const inventory_db_adapter_t &adapter, int32_t &index)
{
    inventory_db_id_list_t keys = {};
    if (orvdb_get_pci_funkey_list(adapter.adapterKey, &keys) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE("adapters %u cannot get func list.\n", adapter.adapterKey);
        return ADAPTERS_PARTIAL;
    }
    const std::unique_ptr<uint32_t, decltype(&free)> owned(keys.ids, free);
    orv3::AdapterResult result;
    for (uint32_t k = 0; k < keys.count && keys.ids; ++k) {
        const uint32_t made = adapterFirmwareTable_addRow_byFunc(keys.ids[k], index);
        if (!result.take(made))
            return ADAPTERS_FAILED;
    }
    return result.value;
}

} // namespace

extern "C" int adapterFirmwareTable_loadData(void)
{
    int32_t index = 1;
    return orv3::forEachAdapter(adapterFirmwareTable_table, __func__,
                                [&index](const inventory_db_adapter_t &adapter, uint32_t) {
                                    // Only an adapter with VPD and miscellaneous data out of band
                                    // reports its firmware.
                                    if (adapter.oobSupported != INVENTORY_DB_OOB_VPD_AND_MISC)
                                        return static_cast<uint32_t>(ADAPTERS_OK);
                                    return adapterFirmwareTable_addRow_byAdapter(adapter, index);
                                });
}

ORV3_TABLE(adapterFirmwareTable, adapterFirmwareTable_table)

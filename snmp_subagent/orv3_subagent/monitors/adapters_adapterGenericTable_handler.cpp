// adapterGenericTable (.14.2): one row per PCI adapter of the inventory
// database, in the database's order: its name, slot, whether it sits on
// the board or in a slot, and its card interface.
#include "adapter_tables.h"

#include <memory>

orv3_row_head_t *adapterGenericTable_head = nullptr;

namespace {

using Row = adapterGenericTable_entry_t;
using Fill = orv3::AdapterFill<inventory_db_adapter_t, Row>;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, adapterVPDProdName),
    ORV3_INTEGER_COLUMN(3, Row, adapterSlotNo),
    ORV3_TEXT_FIELD_COLUMN(4, Row, adapterLocation),
    ORV3_TEXT_FIELD_COLUMN(5, Row, adapterCardInterface),
};

constinit orv3::TableOf<adapterGenericTable_entry_t> adapterGenericTable_table =
    orv3::familyTable<adapterGenericTable_entry_t>(orv3::kAdapterTables, "adapterGenericTable", adapterGenericTable_oid,
                                                   adapterGenericTable_lastColumn, servedColumns,
                                                   adapterGenericTable_loadData, adapterGenericTable_head);

uint32_t fillProductName(const char *, const inventory_db_adapter_t &adapter, Row &row)
{
    char name[ADAPTERS_ADAPTER_NAME_SIZE] = {};
    const uint32_t result = get_pci_AdapterName_byAdapterInfo(&adapter, name);
    orv3::setText(row.adapterVPDProdName, name);
    return result;
}

// Only a card in a PCI slot has a slot number to show: an on-board device
// carries its instance number in slotNo, and an adapter whose location the
// database does not know shows 0 like the on-board ones.
uint32_t fillSlotNo(const char *, const inventory_db_adapter_t &adapter, Row &row)
{
    row.adapterSlotNo = adapter.location == INVENTORY_DB_LOCATION_ADD_ON ? adapter.slotNo : 0;
    return ADAPTERS_OK;
}

uint32_t fillLocation(const char *, const inventory_db_adapter_t &adapter, Row &row)
{
    switch (adapter.location) {
    case INVENTORY_DB_LOCATION_ON_BOARD: orv3::setText(row.adapterLocation, "OnBoard"); return ADAPTERS_OK;
    case INVENTORY_DB_LOCATION_ADD_ON: orv3::setText(row.adapterLocation, "AddOn"); return ADAPTERS_OK;
    default: orv3::setText(row.adapterLocation, "Unknown"); return ADAPTERS_PARTIAL;
    }
}

uint32_t fillCardInterface(const char *, const inventory_db_adapter_t &adapter, Row &row)
{
    return orv3::fillTrimmed(row.adapterCardInterface, adapter.cardInterface);
}

const Fill kFills[] = {
    {"adapterGenericTable_fill_adapterVPDProdName", fillProductName},
    {"adapterGenericTable_fill_adapterSlotNo", fillSlotNo},
    {"adapterGenericTable_fill_adapterLocation", fillLocation},
    {"adapterGenericTable_fill_adapterCardInterface", fillCardInterface},
};

} // namespace

extern "C" int adapterGenericTable_loadData(void)
{
    return orv3::forEachAdapter(
        adapterGenericTable_table, __func__, [](const inventory_db_adapter_t &adapter, uint32_t position) {
            return orv3::addAdapterRow(adapterGenericTable_table, static_cast<int32_t>(position + 1),
                                       std::span<const Fill>(kFills), adapter);
        });
}

ORV3_TABLE(adapterGenericTable, adapterGenericTable_table)

// What the network, GPU and storage function tables share: a row per PCI
// function of one class, made from the function's record and its PCI, VPD
// and miscellaneous records, with the same columns for the function's
// names and VPD (2 to 11) and for its PCI description (the last twelve).
// Only the network and GPU tables have columns of their own in between.
#pragma once

#include "adapter_tables.h"

#include <memory>

namespace orv3 {

// The records one function row is made from.
struct FunctionSource {
    const inventory_db_func_key_t &func;
    const inventory_db_pci_info_t &pci;
    const inventory_db_pci_vpd_t &vpd;
    const inventory_db_pci_misc_t &misc;
};

template <class Row> using FunctionFill = AdapterFill<FunctionSource, Row>;

// One row per function of the class `mask` (ADAPTERS_NETWORK_FUNCTIONS, ...)
// in the order get_pci_funckey_list gives them, numbered from 1. A class
// list that cannot be built, or a row that fails outright, ends the load
// with ADAPTERS_FAILED.
template <class Row> uint32_t loadFunctionRows(Table &table, uint32_t mask, std::span<const FunctionFill<Row>> fills);

// Where each column of a function row comes from.
namespace function_fills {

template <class Row> uint32_t cardName(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.identity.vpdProdName, s.func.cardName);
}
template <class Row> uint32_t adapterName(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.identity.adapterVPDProdName, s.func.adapterName);
}
template <class Row> uint32_t manufacturer(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.identity.vpdManufacturer, s.vpd.manufacturer);
}
template <class Row> uint32_t uuid(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.identity.vpdUUID, s.vpd.uuid);
}
template <class Row> uint32_t model(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.identity.vpdModel, s.vpd.model);
}
template <class Row> uint32_t serialNumber(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.identity.vpdSerialNo, s.vpd.serial_number);
}
template <class Row> uint32_t fruNumber(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.identity.vpdFRUNo, s.vpd.fru_number);
}
template <class Row> uint32_t partNumber(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.identity.vpdPartNo, s.vpd.part_number);
}
template <class Row> uint32_t fodUid(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.identity.foDUID, s.misc.fod_uid);
}
template <class Row> uint32_t hotPlug(const char *, const FunctionSource &s, Row &row)
{
    row.identity.supportHotPlug = s.pci.hot_plug;
    return ADAPTERS_OK;
}
template <class Row> uint32_t maxDataWidth(const char *, const FunctionSource &s, Row &row)
{
    row.pci.maxDataWidth = s.misc.max_data_width;
    return ADAPTERS_OK;
}
template <class Row> uint32_t packageType(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.pci.packageType, s.misc.package_type);
}
template <class Row> uint32_t busNo(const char *, const FunctionSource &s, Row &row)
{
    row.pci.pciBusNo = s.pci.bus;
    return ADAPTERS_OK;
}
template <class Row> uint32_t devNo(const char *, const FunctionSource &s, Row &row)
{
    row.pci.pciDevNo = s.pci.device;
    return ADAPTERS_OK;
}
template <class Row> uint32_t funcNo(const char *, const FunctionSource &s, Row &row)
{
    row.pci.pciFuncNo = s.pci.function;
    return ADAPTERS_OK;
}
template <class Row> uint32_t vendorId(const char *, const FunctionSource &s, Row &row)
{
    formatInto(row.pci.pciVendorId, "0x%.4X", static_cast<unsigned>(s.pci.vendor_id));
    return ADAPTERS_OK;
}
template <class Row> uint32_t devId(const char *, const FunctionSource &s, Row &row)
{
    formatInto(row.pci.pciDevId, "0x%.4X", static_cast<unsigned>(s.pci.device_id));
    return ADAPTERS_OK;
}
template <class Row> uint32_t devType(const char *, const FunctionSource &s, Row &row)
{
    char type[ADAPTERS_FUNC_TYPE_TEXT_SIZE] = {};
    const uint32_t result = get_pci_func_type_string(s.pci.func_type, type);
    setText(row.pci.pciDevType, type);
    return result;
}
template <class Row> uint32_t revId(const char *, const FunctionSource &s, Row &row)
{
    formatInto(row.pci.pciRevId, "0x%.2X", static_cast<unsigned>(s.pci.revision_id));
    return ADAPTERS_OK;
}
template <class Row> uint32_t subVendorId(const char *, const FunctionSource &s, Row &row)
{
    formatInto(row.pci.pciSubVendorId, "0x%.4X", static_cast<unsigned>(s.pci.subsystem_vendor_id));
    return ADAPTERS_OK;
}
template <class Row> uint32_t subDevId(const char *, const FunctionSource &s, Row &row)
{
    formatInto(row.pci.pciSubDevId, "0x%.4X", static_cast<unsigned>(s.pci.subsystem_device_id));
    return ADAPTERS_OK;
}
template <class Row> uint32_t slotDesignation(const char *, const FunctionSource &s, Row &row)
{
    return fillTrimmed(row.pci.pciSlotDesignation, s.pci.slot_designation);
}

} // namespace function_fills

} // namespace orv3

// clang-format off
// The fills of columns 2 to 11 of function table T, whose column names
// start with PREFIX ("network", "gpu", "raid").
#define ORV3_FUNCTION_IDENTITY_FILLS(T, PREFIX, Row)                                        \
    {#T "_fill_" #PREFIX "VPDProdName", ::orv3::function_fills::cardName<Row>},             \
    {#T "_fill_adapterVPDProdName", ::orv3::function_fills::adapterName<Row>},              \
    {#T "_fill_" #PREFIX "VPDManufacturer", ::orv3::function_fills::manufacturer<Row>},     \
    {#T "_fill_" #PREFIX "VPDUUID", ::orv3::function_fills::uuid<Row>},                     \
    {#T "_fill_" #PREFIX "VPDModel", ::orv3::function_fills::model<Row>},                   \
    {#T "_fill_" #PREFIX "VPDSerialNo", ::orv3::function_fills::serialNumber<Row>},         \
    {#T "_fill_" #PREFIX "VPDFRUNo", ::orv3::function_fills::fruNumber<Row>},               \
    {#T "_fill_" #PREFIX "VPDPartNo", ::orv3::function_fills::partNumber<Row>},             \
    {#T "_fill_" #PREFIX "FoDUID", ::orv3::function_fills::fodUid<Row>},                    \
    {#T "_fill_" #PREFIX "SupportHotPlug", ::orv3::function_fills::hotPlug<Row>}

// The fills of the last twelve columns.
#define ORV3_FUNCTION_PCI_FILLS(T, PREFIX, Row)                                             \
    {#T "_fill_" #PREFIX "MaxDataWidth", ::orv3::function_fills::maxDataWidth<Row>},        \
    {#T "_fill_" #PREFIX "PackageType", ::orv3::function_fills::packageType<Row>},          \
    {#T "_fill_" #PREFIX "PCIBusNo", ::orv3::function_fills::busNo<Row>},                   \
    {#T "_fill_" #PREFIX "PCIDevNo", ::orv3::function_fills::devNo<Row>},                   \
    {#T "_fill_" #PREFIX "PCIFuncNo", ::orv3::function_fills::funcNo<Row>},                 \
    {#T "_fill_" #PREFIX "PCIVendorId", ::orv3::function_fills::vendorId<Row>},             \
    {#T "_fill_" #PREFIX "PCIDevId", ::orv3::function_fills::devId<Row>},                   \
    {#T "_fill_" #PREFIX "PCIDevType", ::orv3::function_fills::devType<Row>},               \
    {#T "_fill_" #PREFIX "PCIRevId", ::orv3::function_fills::revId<Row>},                   \
    {#T "_fill_" #PREFIX "PCISubVendorId", ::orv3::function_fills::subVendorId<Row>},       \
    {#T "_fill_" #PREFIX "PCISubDevId", ::orv3::function_fills::subDevId<Row>},             \
    {#T "_fill_" #PREFIX "PCISlotDesignation", ::orv3::function_fills::slotDesignation<Row>}
// clang-format on

// The served columns 2 to 11, and the last twelve from column FIRST on.
#define ORV3_FUNCTION_IDENTITY_COLUMNS(Row)                                                                            \
    ORV3_TEXT_FIELD_COLUMN(2, Row, identity.vpdProdName), ORV3_TEXT_FIELD_COLUMN(3, Row, identity.adapterVPDProdName), \
        ORV3_TEXT_FIELD_COLUMN(4, Row, identity.vpdManufacturer), ORV3_TEXT_FIELD_COLUMN(5, Row, identity.vpdUUID),    \
        ORV3_TEXT_FIELD_COLUMN(6, Row, identity.vpdModel), ORV3_TEXT_FIELD_COLUMN(7, Row, identity.vpdSerialNo),       \
        ORV3_TEXT_FIELD_COLUMN(8, Row, identity.vpdFRUNo), ORV3_TEXT_FIELD_COLUMN(9, Row, identity.vpdPartNo),         \
        ORV3_TEXT_FIELD_COLUMN(10, Row, identity.foDUID), ORV3_INTEGER_COLUMN(11, Row, identity.supportHotPlug)

#define ORV3_FUNCTION_PCI_COLUMNS(Row, FIRST)                                                                          \
    ORV3_INTEGER_COLUMN(FIRST, Row, pci.maxDataWidth), ORV3_TEXT_FIELD_COLUMN(FIRST + 1, Row, pci.packageType),        \
        ORV3_INTEGER_COLUMN(FIRST + 2, Row, pci.pciBusNo), ORV3_INTEGER_COLUMN(FIRST + 3, Row, pci.pciDevNo),          \
        ORV3_INTEGER_COLUMN(FIRST + 4, Row, pci.pciFuncNo), ORV3_TEXT_FIELD_COLUMN(FIRST + 5, Row, pci.pciVendorId),   \
        ORV3_TEXT_FIELD_COLUMN(FIRST + 6, Row, pci.pciDevId), ORV3_TEXT_FIELD_COLUMN(FIRST + 7, Row, pci.pciDevType),  \
        ORV3_TEXT_FIELD_COLUMN(FIRST + 8, Row, pci.pciRevId),                                                          \
        ORV3_TEXT_FIELD_COLUMN(FIRST + 9, Row, pci.pciSubVendorId),                                                    \
        ORV3_TEXT_FIELD_COLUMN(FIRST + 10, Row, pci.pciSubDevId),                                                      \
        ORV3_TEXT_FIELD_COLUMN(FIRST + 11, Row, pci.pciSlotDesignation)

namespace orv3 {

template <class Row> uint32_t loadFunctionRows(Table &table, uint32_t mask, std::span<const FunctionFill<Row>> fills)
{
    int32_t index = 1;
    return forEachFunction(table, mask, [&](const inventory_db_func_key_t &func) {
        inventory_db_pci_info_t pci;
        inventory_db_pci_vpd_t vpd;
        inventory_db_pci_misc_t misc;
        memset(&pci, 0, sizeof pci);
        memset(&vpd, 0, sizeof vpd);
        memset(&misc, 0, sizeof misc);
        // A record that could not be read leaves its columns empty: the row
        // is made, and only its own fills say whether it is partial.
        if (get_pci_func_info(&func, &pci, &vpd, &misc) == ADAPTERS_FAILED)
            return static_cast<uint32_t>(ADAPTERS_FAILED);
        return addAdapterRow(table, index++, fills, FunctionSource{func, pci, vpd, misc});
    });
}

} // namespace orv3

// raidControllerTable (.13.1.2): one row per RAID controller, built from
// five RAID link records: its hardware (identity, cache, battery), its
// firmware components, its ports, its storage pools and its drives.
#include "raid.h"
#include "raid_rows.h"

#include "orv3/trace_log.h"

#include <cstdlib>
#include <cstring>

orv3_row_head_t *raidControllerTable_head = nullptr;

namespace {

using Row = raidControllerTable_entry_t;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, raidCtrlLabel),
    ORV3_TEXT_FIELD_COLUMN(3, Row, raidCtrlProductName),
    ORV3_TEXT_FIELD_COLUMN(4, Row, raidCtrlText664),
    ORV3_INTEGER_COLUMN(5, Row, raidCtrlBatteryPresent),
    ORV3_TEXT_FIELD_COLUMN(6, Row, raidCtrlText162),
    ORV3_TEXT_FIELD_COLUMN(7, Row, raidCtrlText0),
    ORV3_TEXT_FIELD_COLUMN(8, Row, raidCtrlText195),
    ORV3_TEXT_FIELD_COLUMN(9, Row, raidCtrlText212),
    ORV3_TEXT_FIELD_COLUMN(10, Row, raidCtrlText245),
    ORV3_TEXT_FIELD_COLUMN(11, Row, raidCtrlText278),
    ORV3_TEXT_FIELD_COLUMN(12, Row, raidCtrlText295),
    ORV3_TEXT_FIELD_COLUMN(13, Row, raidCtrlCacheModuleStatus),
    ORV3_TEXT_FIELD_COLUMN(14, Row, raidCtrlCacheSize),
    ORV3_TEXT_FIELD_COLUMN(15, Row, raidCtrlText584),
    ORV3_INTEGER_COLUMN(16, Row, raidCtrlSlotNumber),
    ORV3_INTEGER_COLUMN(17, Row, raidCtrlByte321),
    ORV3_INTEGER_COLUMN(18, Row, raidCtrlByte322),
    ORV3_INTEGER_COLUMN(19, Row, raidCtrlByte323),
    ORV3_TEXT_FIELD_COLUMN(20, Row, raidCtrlPciId314),
    ORV3_TEXT_FIELD_COLUMN(21, Row, raidCtrlPciId318),
    ORV3_TEXT_FIELD_COLUMN(22, Row, raidCtrlBatteryText325),
    ORV3_TEXT_FIELD_COLUMN(23, Row, raidCtrlBatteryText454),
    ORV3_TEXT_FIELD_COLUMN(24, Row, raidCtrlBatteryStatus),
    ORV3_TEXT_FIELD_COLUMN(25, Row, raidCtrlBatteryType),
    ORV3_TEXT_FIELD_COLUMN(26, Row, raidCtrlBatteryText537),
    ORV3_TEXT_FIELD_COLUMN(27, Row, raidCtrlBatteryText471),
    ORV3_TEXT_FIELD_COLUMN(28, Row, raidCtrlBatteryCapacity),
    ORV3_TEXT_FIELD_COLUMN(29, Row, raidCtrlBatteryText504),
    ORV3_TEXT_FIELD_COLUMN(30, Row, raidCtrlBatteryVoltage568),
    ORV3_TEXT_FIELD_COLUMN(31, Row, raidCtrlBatteryVoltage570),
    ORV3_TEXT_FIELD_COLUMN(32, Row, raidCtrlBatteryCurrent),
    ORV3_TEXT_FIELD_COLUMN(33, Row, raidCtrlBatteryEnergy),
    ORV3_TEXT_FIELD_COLUMN(34, Row, raidCtrlBatteryTemperature),
    ORV3_TEXT_COLUMN(35, Row, raidCtrlFirmwareNames, raidCtrlFirmwareNamesLen),
    ORV3_TEXT_COLUMN(36, Row, raidCtrlPortAddresses, raidCtrlPortAddressesLen),
    ORV3_TEXT_COLUMN(37, Row, raidCtrlStoragepoolLabels, raidCtrlStoragepoolLabelsLen),
    ORV3_TEXT_COLUMN(38, Row, raidCtrlDriveLabels, raidCtrlDriveLabelsLen),
};

constinit orv3::TableOf<raidControllerTable_entry_t> raidControllerTable_table =
    orv3::familyTable<raidControllerTable_entry_t>(
        orv3::kRaidControllerTables, "raidControllerTable", raidControllerTable_oid, raidControllerTable_lastColumn,
        servedColumns, raidControllerTable_loadData, raidControllerTable_head);

// Energy-based batteries (type 6 and up, or type 5 with the energy flag)
// count joules; the others milliampere-hours.
void arrangeBattery(Row &row, const raid_link_ctrl_hw_t &hw)
{
    const uint32_t type = hw.battery_type;
    const bool energyFlag = hw.battery_energy_flag != 0;
    const uint16_t remaining = hw.battery_remaining;
    const uint16_t full = hw.battery_full;
    const double percent = full ? static_cast<double>(remaining) / full * 100 : 0;
    char capacity[128] = {};
    if (type < 6 && !(type == 5 && energyFlag)) {
        if (full == 0 || full < remaining)
            snprintf(capacity, sizeof capacity, "%hu mAh", full);
        else
            snprintf(capacity, sizeof capacity, "%hu mAh (Remaining %hu mAh, %.0lf%%)", full, remaining, percent);
    } else if (type == 6) {
        snprintf(capacity, sizeof capacity, "Remaining %hu J", remaining);
    } else if (full == 0) {
        snprintf(capacity, sizeof capacity, "Remaining %hu J", remaining);
    } else {
        snprintf(capacity, sizeof capacity, "%hu J (Remaining %hu J, %.0lf%%)", full, remaining, percent);
    }
    orv3::formatInto(row.raidCtrlBatteryCapacity, "%s", capacity);

    if (type < 7 && !(type == 5 && energyFlag)) {
        orv3::codeTextInto(row.raidCtrlBatteryType, getControllerBatBCKTypeString, static_cast<int32_t>(type));
    } else {
        orv3::trimCopyStrInto(row.raidCtrlBatteryType, hw.battery_text_325);
    }
    orv3::trimCopyStrInto(row.raidCtrlBatteryText325, hw.battery_text_325);
    orv3::trimCopyStrInto(row.raidCtrlBatteryText454, hw.battery_text_454);
    orv3::codeTextInto(row.raidCtrlBatteryStatus, getControllerBatBCKStatusString,
                       static_cast<int32_t>(hw.battery_status));
    orv3::trimCopyStrInto(row.raidCtrlBatteryText537, hw.battery_text_537);
    orv3::trimCopyStrInto(row.raidCtrlBatteryText471, hw.battery_text_471);
    orv3::trimCopyStrInto(row.raidCtrlBatteryText504, hw.battery_text_504);
    orv3::formatInto(row.raidCtrlBatteryVoltage568, "%d mV", hw.battery_voltage_568);
    orv3::formatInto(row.raidCtrlBatteryVoltage570, "%d mV", hw.battery_voltage_570);
    orv3::formatInto(row.raidCtrlBatteryCurrent, "%d mA", hw.battery_current);
    orv3::formatInto(row.raidCtrlBatteryEnergy, "%hu J", hw.battery_energy);
    orv3::formatInto(row.raidCtrlBatteryTemperature, "%hu C", hw.battery_temperature);
}

// Component names stripped, joined by a bare comma: each piece but the last
// is "<name>, " cut to the name's length plus one character.
void arrangeFirmwareNames(Row &row, const raid_link_fw_info_t &fw)
{
    orv3::ListText names(row.raidCtrlFirmwareNames, sizeof row.raidCtrlFirmwareNames, row.raidCtrlFirmwareNamesLen);
    const size_t count = orv3::listed(fw.count, RAID_LINK_MAX_FW_COMPONENTS);
    for (size_t i = 0; i < count; ++i) {
        char name[128];
        trimCopyStr(name, fw.components[i].name, sizeof name, sizeof fw.components[i].name);
        const size_t length = strnlen(name, sizeof name);
        if (i + 1 < count)
            names.appendFormatted(length + 2, "%.*s, ", static_cast<int>(length), name);
        else
            names.appendFormatted(SIZE_MAX, "%.*s", static_cast<int>(length), name);
    }
}

void arrangePortAddresses(Row &row, const raid_link_ctrl_port_t &ports)
{
    orv3::ListText addresses(row.raidCtrlPortAddresses, sizeof row.raidCtrlPortAddresses, row.raidCtrlPortAddressesLen);
    const size_t count = orv3::listed(ports.count, RAID_LINK_MAX_PORTS);
    for (size_t i = 0; i < count; ++i) {
        const uint64_t address = static_cast<uint64_t>(ports.ports[i].address_high) << 32 | ports.ports[i].address_low;
        addresses.appendFormatted(SIZE_MAX, i + 1 < count ? "%.16llX, " : "%.16llX",
                                  static_cast<unsigned long long>(address));
    }
}

} // namespace

extern "C" {

int arrangeAllRaidCtrlData(raidControllerTable_entry_t *row, int32_t *index, const raid_link_ctrl_hw_t *hw,
                           const raid_link_fw_info_t *fw, const raid_link_ctrl_port_t *ports,
                           const raid_link_array_list_t *pools, const raid_link_ctrl_disk_list_t *drives)
{
    if (!row || !index || !hw || !fw || !ports || !pools || !drives)
        return 1;
    row->head.index = (*index)++;

    char product[64];
    trimCopyStr(product, hw->product_name, sizeof product, sizeof hw->product_name);
    char label[128];
    const uint32_t zel = hw->zel_flag;
    snprintf(label, sizeof label, zel == 1 ? "%.*s (PCI Slot %d, ZEL)" : "%.*s (PCI Slot %d)",
             static_cast<int>(strnlen(product, sizeof product)), product, hw->slot_number);
    orv3::formatInto(row->raidCtrlLabel, "%s", label);

    orv3::trimCopyStrInto(row->raidCtrlProductName, hw->product_name);
    orv3::trimCopyStrInto(row->raidCtrlText664, hw->text_664);
    const uint32_t flag815 = hw->flag_815;
    const uint32_t value801 = hw->value_801;
    row->raidCtrlBatteryPresent = flag815 == 1 && value801 != 0 ? 2 : hw->battery_present;
    orv3::trimCopyStrInto(row->raidCtrlText162, hw->text_162);
    orv3::trimCopyStrInto(row->raidCtrlText0, hw->text_0);
    orv3::trimCopyStrInto(row->raidCtrlText195, hw->text_195);
    orv3::trimCopyStrInto(row->raidCtrlText212, hw->text_212);
    orv3::trimCopyStrInto(row->raidCtrlText245, hw->text_245);
    orv3::trimCopyStrInto(row->raidCtrlText278, hw->text_278);
    orv3::trimCopyStrInto(row->raidCtrlText295, hw->text_295);
    orv3::codeTextInto(row->raidCtrlCacheModuleStatus, getControllerCacheMdlStatusString,
                       static_cast<int32_t>(hw->cache_module_status));
    orv3::formatInto(row->raidCtrlCacheSize, "%llu MB", static_cast<unsigned long long>(hw->cache_size_mb));
    orv3::trimCopyStrInto(row->raidCtrlText584, hw->text_584);
    row->raidCtrlSlotNumber = hw->slot_number;
    row->raidCtrlByte321 = hw->byte_321;
    row->raidCtrlByte322 = hw->byte_322;
    row->raidCtrlByte323 = hw->byte_323;
    orv3::formatInto(row->raidCtrlPciId314, "0x%.4X", hw->pci_id_314);
    orv3::formatInto(row->raidCtrlPciId318, "0x%.4X", hw->pci_id_318);
    if (hw->battery_present == 1)
        arrangeBattery(*row, *hw);

    arrangeFirmwareNames(*row, *fw);
    arrangePortAddresses(*row, *ports);
    orv3::joinLabels(row->raidCtrlStoragepoolLabels, row->raidCtrlStoragepoolLabelsLen, pools->array_ids,
                     orv3::listed(pools->count, RAID_LINK_MAX_ARRAYS), fetchArrayInfo);
    orv3::joinLabels(row->raidCtrlDriveLabels, row->raidCtrlDriveLabelsLen, drives->disk_ids,
                     orv3::listed(drives->count, RAID_LINK_MAX_CTRL_DISKS), fetchDiskProdSlot);
    return 0;
}

int raidControllerTable_loadData(void)
{
    int32_t index = 1;
    // The five records of a controller, reused for each.
    auto *hw = static_cast<raid_link_ctrl_hw_t *>(calloc(1, sizeof(raid_link_ctrl_hw_t)));
    auto *fw = static_cast<raid_link_fw_info_t *>(calloc(1, sizeof(raid_link_fw_info_t)));
    auto *ports = static_cast<raid_link_ctrl_port_t *>(calloc(1, sizeof(raid_link_ctrl_port_t)));
    auto *pools = static_cast<raid_link_array_list_t *>(calloc(1, sizeof(raid_link_array_list_t)));
    auto *drives = static_cast<raid_link_ctrl_disk_list_t *>(calloc(1, sizeof(raid_link_ctrl_disk_list_t)));
    const bool room = hw && fw && ports && pools && drives;
    const int result = orv3::forEachController(
        raidControllerTable_table, orv3::ListFailureText::Separate, __func__, __LINE__, [&](uint32_t id) {
            if (!room)
                return false;
            memset(hw, 0, sizeof *hw);
            hw->ctrl_id = id;
            memset(fw, 0, sizeof *fw);
            fw->id = id;
            memset(ports, 0, sizeof *ports);
            ports->ctrl_id = id;
            memset(pools, 0, sizeof *pools);
            pools->ctrl_id = id;
            memset(drives, 0, sizeof *drives);
            drives->ctrl_id = id;
            const char *failed = nullptr;
            if (raidlink_get_ctrl_hw_info(hw) != RAIDLINK_STATUS_SUCCESS)
                failed = "raidlink_get_ctrl_hw_info";
            else if (raidlink_get_ctrl_fw_info(fw) != RAIDLINK_STATUS_SUCCESS)
                failed = "raidlink_get_ctrl_fw_info";
            else if (raidlink_get_ctrl_port_info(ports) != RAIDLINK_STATUS_SUCCESS)
                failed = "raidlink_get_ctrl_port_info";
            else if (raidlink_get_array_list(pools) != RAIDLINK_STATUS_SUCCESS)
                failed = "array_list_info";
            else if (raidlink_get_ctrl_disk_list(drives) != RAIDLINK_STATUS_SUCCESS)
                failed = "disk_list_info";
            if (failed) {
                orv3::logFailedCall("raidControllerTable_loadData", __LINE__, failed);
                return true;
            }
            auto *arranged = static_cast<Row *>(calloc(1, sizeof(Row)));
            if (!arranged)
                return false;
            if (arrangeAllRaidCtrlData(arranged, &index, hw, fw, ports, pools, drives) == 0)
                raidControllerTable_createEntry(arranged);
            free(arranged);
            return true;
        });
    free(hw);
    free(fw);
    free(ports);
    free(pools);
    free(drives);
    return result;
}

} // extern "C"

ORV3_TABLE(raidControllerTable, raidControllerTable_table)

// raidDriveTable (.13.1.3): one row per drive of every RAID controller,
// from the drive's hardware and firmware records, numbered across
// controllers.
#include "raid.h"
#include "raid_rows.h"

#include <cstring>

orv3_row_head_t *raidDriveTable_head = nullptr;

namespace {

using Row = raidDriveTable_entry_t;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, raidDriveLabel),
    ORV3_TEXT_FIELD_COLUMN(3, Row, raidDriveText33),
    ORV3_TEXT_FIELD_COLUMN(4, Row, raidDriveState),
    ORV3_INTEGER_COLUMN(5, Row, raidDriveNumber),
    ORV3_TEXT_FIELD_COLUMN(6, Row, raidDriveNumber411),
    ORV3_TEXT_FIELD_COLUMN(7, Row, raidDriveInterfaceType),
    ORV3_TEXT_FIELD_COLUMN(8, Row, raidDriveMediaType),
    ORV3_TEXT_FIELD_COLUMN(9, Row, raidDriveSpeed),
    ORV3_TEXT_FIELD_COLUMN(10, Row, raidDriveTemperature),
    ORV3_TEXT_FIELD_COLUMN(11, Row, raidDriveHealth),
    ORV3_TEXT_FIELD_COLUMN(12, Row, raidDriveCapacity),
    ORV3_TEXT_FIELD_COLUMN(13, Row, raidDriveText162),
    ORV3_TEXT_FIELD_COLUMN(14, Row, raidDriveId413),
    ORV3_TEXT_FIELD_COLUMN(15, Row, raidDriveText195),
    ORV3_TEXT_FIELD_COLUMN(16, Row, raidDriveText212),
    ORV3_TEXT_FIELD_COLUMN(17, Row, raidDriveText245),
    ORV3_TEXT_FIELD_COLUMN(18, Row, raidDriveText311),
    ORV3_TEXT_FIELD_COLUMN(19, Row, raidDriveText344),
    ORV3_TEXT_COLUMN(20, Row, raidDriveFirmwareNames, raidDriveFirmwareNamesLen),
    ORV3_TEXT_FIELD_COLUMN(21, Row, raidDriveRotationSpeed),
    ORV3_GAUGE_COLUMN(22, Row, raidDriveCounter539),
    ORV3_GAUGE_COLUMN(23, Row, raidDriveCounter543),
    ORV3_GAUGE_COLUMN(24, Row, raidDriveCounter547),
    ORV3_TEXT_FIELD_COLUMN(25, Row, raidDriveRemainingLife),
    ORV3_INTEGER_COLUMN(26, Row, raidDriveFlagBit0),
    ORV3_INTEGER_COLUMN(27, Row, raidDriveFlagBit2),
};

constinit orv3::TableOf<raidDriveTable_entry_t> raidDriveTable_table = orv3::familyTable<raidDriveTable_entry_t>(
    orv3::kRaidTables, "raidDriveTable", raidDriveTable_oid, raidDriveTable_lastColumn, servedColumns,
    raidDriveTable_loadData, raidDriveTable_head);

// Component names as the library gives them, joined by ", ".
void arrangeFirmwareNames(Row &row, const raid_link_fw_info_t &fw)
{
    orv3::ListText names(row.raidDriveFirmwareNames, sizeof row.raidDriveFirmwareNames, row.raidDriveFirmwareNamesLen);
    const size_t count = orv3::listed(fw.count, RAID_LINK_MAX_FW_COMPONENTS);
    for (size_t i = 0; i < count; ++i) {
        const char *name = fw.components[i].name;
        const int length = static_cast<int>(strnlen(name, sizeof fw.components[i].name));
        names.appendFormatted(128, i + 1 < count ? "%.*s, " : "%.*s", length, name);
    }
}

} // namespace

extern "C" {

int arrangeDiskDataAndCreateArow(const raid_link_disk_hw_t *hw, const raid_link_fw_info_t *fw, int32_t *index)
{
    if (!hw || !fw || !index)
        return 1;
    Row row;
    memset(&row, 0, sizeof row);
    row.head.index = (*index)++;
    fetchDiskProdSlot(hw->disk_id, row.raidDriveLabel.text, sizeof row.raidDriveLabel.text);
    row.raidDriveLabel.len = static_cast<uint32_t>(strnlen(row.raidDriveLabel.text, sizeof row.raidDriveLabel.text));
    orv3::trimCopyStrInto(row.raidDriveText33, hw->text_33);
    getDriveStateString(static_cast<int32_t>(hw->state), row.raidDriveState.text, sizeof row.raidDriveState.text,
                        hw->dedicated_spare, static_cast<int32_t>(hw->ready_to_remove), hw->foreign);
    row.raidDriveState.len = static_cast<uint32_t>(strnlen(row.raidDriveState.text, sizeof row.raidDriveState.text));
    row.raidDriveNumber = hw->drive_number;
    orv3::formatInto(row.raidDriveNumber411, "%d", hw->number_411);
    orv3::codeTextInto(row.raidDriveInterfaceType, getDriveDiskTypeString, static_cast<int32_t>(hw->interface_type));
    const uint32_t media = hw->media_type;
    orv3::codeTextInto(row.raidDriveMediaType, getDriveMediaTypeString, static_cast<int32_t>(media));
    orv3::codeTextInto(row.raidDriveSpeed, getDriveSpeedString, static_cast<int32_t>(hw->speed));
    orv3::formatInto(row.raidDriveTemperature, "%hu C", hw->temperature);
    orv3::codeTextInto(row.raidDriveHealth, getControllerOrDiskHealthString, static_cast<int32_t>(hw->health));
    // Binary gigabytes, labelled GB; the product wraps in 64 bits.
    const uint64_t bytes = uint64_t{hw->block_size} * hw->block_count;
    orv3::formatInto(row.raidDriveCapacity, "%.3lf GB", static_cast<double>(bytes) * orv3::kBytesToGigabytes);
    orv3::trimCopyStrInto(row.raidDriveText162, hw->text_162);
    orv3::formatInto(row.raidDriveId413, "0x%.4X", hw->id_413);
    orv3::trimCopyStrInto(row.raidDriveText195, hw->text_195);
    orv3::trimCopyStrInto(row.raidDriveText212, hw->text_212);
    orv3::trimCopyStrInto(row.raidDriveText245, hw->text_245);
    orv3::trimCopyStrInto(row.raidDriveText311, hw->text_311);
    orv3::trimCopyStrInto(row.raidDriveText344, hw->text_344);
    arrangeFirmwareNames(row, *fw);
    const int32_t rotation = hw->rotation_speed;
    if (rotation != RAID_LINK_ROTATION_UNKNOWN)
        orv3::formatInto(row.raidDriveRotationSpeed, "%uRPM", static_cast<uint32_t>(rotation));
    row.raidDriveCounter539 = static_cast<int32_t>(hw->counter_539);
    row.raidDriveCounter543 = static_cast<int32_t>(hw->counter_543);
    row.raidDriveCounter547 = static_cast<int32_t>(hw->counter_547);
    if (media == RAID_LINK_MEDIA_SSD)
        orv3::formatInto(row.raidDriveRemainingLife, "%d%%", hw->remaining_life);
    else
        orv3::formatInto(row.raidDriveRemainingLife, "Not Available");
    row.raidDriveFlagBit0 = hw->flags & 1;
    row.raidDriveFlagBit2 = (hw->flags & 7) >> 2;
    raidDriveTable_createEntry(&row);
    return 0;
}

int raidDriveTable_loadData(void)
{
    constexpr char kLoader[] = "raidDriveTable_loadData";
    int32_t index = 1;
    raid_link_ctrl_disk_list_t drives;
    raid_link_disk_hw_t hw;
    raid_link_fw_info_t fw;
    return orv3::forEachController(
        raidDriveTable_table, orv3::ListFailureText::SeparateWithBlank, __func__, __LINE__, [&](uint32_t ctrlId) {
            memset(&drives, 0, sizeof drives);
            memcpy(&drives.ctrl_id, &ctrlId, sizeof drives.ctrl_id);
            if (raidlink_get_ctrl_disk_list(&drives) != RAIDLINK_STATUS_SUCCESS) {
                orv3::logFailedCall(kLoader, __LINE__, "raidlink_get_ctrl_disk_list", orv3::LineEnd::AfterBlank);
                return true;
            }
            for (size_t d = 0; d < orv3::listed(drives.count, RAID_LINK_MAX_CTRL_DISKS); ++d) {
                uint32_t id;
                memcpy(&id, &drives.disk_ids[d], sizeof id);
                memset(&hw, 0, sizeof hw);
                hw.disk_id = id;
                memset(&fw, 0, sizeof fw);
                fw.id = id;
                if (raidlink_get_disk_hw_info(&hw) != RAIDLINK_STATUS_SUCCESS) {
                    orv3::logFailedCall(kLoader, __LINE__, "raidlink_get_disk_hw_info", orv3::LineEnd::AfterBlank);
                    continue;
                }
                if (raidlink_get_disk_fw_info(&fw) != RAIDLINK_STATUS_SUCCESS) {
                    orv3::logFailedCall(kLoader, __LINE__, "raidlink_get_disk_fw_info", orv3::LineEnd::AfterBlank);
                    continue;
                }
                arrangeDiskDataAndCreateArow(&hw, &fw, &index);
            }
            return true;
        });
}

} // extern "C"

ORV3_TABLE(raidDriveTable, raidDriveTable_table)

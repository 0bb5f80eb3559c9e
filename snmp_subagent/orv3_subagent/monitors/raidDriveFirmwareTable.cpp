// raidDriveFirmwareTable (.13.1.5): one row per firmware component of every
// drive of every RAID controller, numbered across drives.
#include "raid.h"
#include "raid_rows.h"

#include <cstring>

orv3_row_head_t *raidDriveFirmwareTable_head = nullptr;

namespace {

constinit orv3::TableOf<raidFirmwareTable_entry_t> raidDriveFirmwareTable_table =
    orv3::familyTable<raidFirmwareTable_entry_t>(
        orv3::kRaidTables, "raidDriveFirmwareTable", raidDriveFirmwareTable_oid, raidDriveFirmwareTable_lastColumn,
        orv3::kRaidFirmwareColumns, raidDriveFirmwareTable_loadData, raidDriveFirmwareTable_head);

} // namespace

extern "C" {

int arrangeDiskFirmwareDataAndCreateArow(const raid_link_fw_info_t *fw, int32_t *index, uint32_t diskId)
{
    if (!fw || !index)
        return 1;
    char label[256];
    fetchDiskProdSlot(diskId, label, sizeof label);
    orv3::arrangeFirmwareRows(*fw, *index, label, raidDriveFirmwareTable_createEntry);
    return 0;
}

int raidDriveFirmwareTable_loadData(void)
{
    constexpr char kLoader[] = "raidDriveFirmwareTable_loadData";
    int32_t index = 1;
    raid_link_ctrl_disk_list_t drives;
    raid_link_fw_info_t fw;
    return orv3::forEachController(
        raidDriveFirmwareTable_table, orv3::ListFailureText::SeparateWithBlank, __func__, __LINE__,
        [&](uint32_t ctrlId) {
            memset(&drives, 0, sizeof drives);
            memcpy(&drives.ctrl_id, &ctrlId, sizeof drives.ctrl_id);
            if (raidlink_get_ctrl_disk_list(&drives) != RAIDLINK_STATUS_SUCCESS || drives.count == 0) {
                orv3::logFailedOrEmpty(kLoader, __LINE__, "raidlink_get_ctrl_disk_list", "disk_list_info.count = 0");
                return true;
            }
            for (size_t d = 0; d < orv3::listed(drives.count, RAID_LINK_MAX_CTRL_DISKS); ++d) {
                uint32_t id;
                memcpy(&id, &drives.disk_ids[d], sizeof id);
                memset(&fw, 0, sizeof fw);
                fw.id = id;
                if (raidlink_get_disk_fw_info(&fw) != RAIDLINK_STATUS_SUCCESS || fw.count == 0) {
                    orv3::logFailedOrEmpty(kLoader, __LINE__, "raidlink_get_disk_fw_info", "disk_fw_info.count = 0");
                    continue;
                }
                arrangeDiskFirmwareDataAndCreateArow(&fw, &index, id);
            }
            return true;
        });
}

} // extern "C"

ORV3_TABLE(raidDriveFirmwareTable, raidDriveFirmwareTable_table)

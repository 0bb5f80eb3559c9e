// raidControllerFirmwareTable (.13.1.4): one row per firmware component of
// every RAID controller, numbered across controllers.
#include "raid.h"
#include "raid_rows.h"

#include <cstring>

orv3_row_head_t *raidControllerFirmwareTable_head = nullptr;

namespace {

constinit orv3::TableOf<raidFirmwareTable_entry_t> raidControllerFirmwareTable_table =
    orv3::familyTable<raidFirmwareTable_entry_t>(
        orv3::kRaidTables, "raidControllerFirmwareTable", raidControllerFirmwareTable_oid,
        raidControllerFirmwareTable_lastColumn, orv3::kRaidFirmwareColumns, raidControllerFirmwareTable_loadData,
        raidControllerFirmwareTable_head);

} // namespace

extern "C" {

int arrangeCtrlFirmwareDataAndCreateArow(const raid_link_fw_info_t *fw, int32_t *index, uint32_t ctrlId)
{
    if (!fw || !index)
        return 1;
    char label[256];
    fetchCtrlProdSlot(ctrlId, label, sizeof label);
    orv3::arrangeFirmwareRows(*fw, *index, label, raidControllerFirmwareTable_createEntry);
    return 0;
}

int raidControllerFirmwareTable_loadData(void)
{
    int32_t index = 1;
    raid_link_fw_info_t fw;
    return orv3::forEachController(
        raidControllerFirmwareTable_table, orv3::ListFailureText::Separate, __func__, __LINE__, [&](uint32_t id) {
            memset(&fw, 0, sizeof fw);
            fw.id = id;
            if (raidlink_get_ctrl_fw_info(&fw) != RAIDLINK_STATUS_SUCCESS)
                orv3::logFailedCall("raidControllerFirmwareTable_loadData", __LINE__, "raidlink_get_ctrl_fw_info");
            else
                arrangeCtrlFirmwareDataAndCreateArow(&fw, &index, id);
            return true;
        });
}

} // extern "C"

ORV3_TABLE(raidControllerFirmwareTable, raidControllerFirmwareTable_table)

// raidControllerFirmwareTable (.13.1.4): one row per firmware component of
// every RAID controller, numbered across controllers.
#include "raid.h"
#include "raid_rows.h"

#include <cstring>

orv3_row_head_t *raidControllerFirmwareTable_head = nullptr;

namespace {

using Row = raidFirmwareTable_entry_t;

const orv3::Column kColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index), ORV3_TEXT_FIELD_COLUMN(2, Row, name),
    ORV3_TEXT_FIELD_COLUMN(3, Row, label),   ORV3_TEXT_FIELD_COLUMN(4, Row, text131),
    ORV3_TEXT_FIELD_COLUMN(5, Row, text98),  ORV3_TEXT_FIELD_COLUMN(6, Row, text0),
    ORV3_TEXT_FIELD_COLUMN(7, Row, text260),
};

orv3::TableOf<raidFirmwareTable_entry_t> raidControllerFirmwareTable_table = {{
    .name = "raidControllerFirmwareTable",
    .rootOid = raidControllerFirmwareTable_oid,
    .rootOidLength = OID_LENGTH(raidControllerFirmwareTable_oid),
    .maxColumn = raidControllerFirmwareTable_lastColumn,
    .columns = kColumns,
    .rowMaking = orv3::Table::RowMaking::CopyOfFilledRow,
    .refresh = orv3::kRaidCache,
    .check = orv3::Table::Check::ReportsFreshness,
    .load = raidControllerFirmwareTable_loadData,
    .loadFailure = orv3::Table::LoadFailure::EndsTheWalk,
    .gate = &orv3::kRaidLinkGate,
    .handler = orv3::kRaidHandler,
    .rows = orv3::RowList(raidControllerFirmwareTable_head),
}};

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
    clearAllraidControllerFirmwareTableRows(reinterpret_cast<Row *>(raidControllerFirmwareTable_head));
    raid_link_ctrl_list_t list;
    if (!orv3::readControllerList(list, orv3::ListFailureText::Separate, __func__, __LINE__))
        return 1;
    int32_t index = 1;
    raid_link_fw_info_t fw;
    for (size_t i = 0; i < orv3::listed(list.count, RAID_LINK_MAX_CTRLS); ++i) {
        uint32_t id;
        memcpy(&id, &list.ctrl_ids[i], sizeof id);
        memset(&fw, 0, sizeof fw);
        fw.id = id;
        if (raidlink_get_ctrl_fw_info(&fw) != RAIDLINK_STATUS_SUCCESS) {
            orv3::logFailedCall(__func__, __LINE__, "raidlink_get_ctrl_fw_info");
            continue;
        }
        arrangeCtrlFirmwareDataAndCreateArow(&fw, &index, id);
    }
    return 0;
}

} // extern "C"

ORV3_TABLE(raidControllerFirmwareTable, raidControllerFirmwareTable_table)

// raidVolumeTable (.13.1.7): one row per volume of every storage pool, with
// its state, capacity, stripe size and boot flag.
#include "raid.h"
#include "raid_rows.h"

#include <cstring>

orv3_row_head_t *raidVolumeTable_head = nullptr;

namespace {

using Row = raidVolumeTable_entry_t;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, raidVolumeLabel),
    ORV3_TEXT_FIELD_COLUMN(3, Row, raidVolumeCtrlLabel),
    ORV3_TEXT_FIELD_COLUMN(4, Row, raidVolumeState),
    ORV3_TEXT_FIELD_COLUMN(5, Row, raidVolumeCapacity),
    ORV3_TEXT_FIELD_COLUMN(6, Row, raidVolumeStripeSize),
    ORV3_TEXT_FIELD_COLUMN(7, Row, raidVolumeBootable),
};

constinit orv3::TableOf<raidVolumeTable_entry_t> raidVolumeTable_table = orv3::familyTable<raidVolumeTable_entry_t>(
    orv3::kRaidTables, "raidVolumeTable", raidVolumeTable_oid, raidVolumeTable_lastColumn, servedColumns,
    raidVolumeTable_loadData, raidVolumeTable_head);

void formatStripeSize(orv3_text256_t &column, uint32_t bytes)
{
    if (bytes >= 1u << 30)
        orv3::formatInto(column, "%u GB", bytes >> 30);
    else if (bytes >= 1u << 20)
        orv3::formatInto(column, "%u MB", bytes >> 20);
    else if (bytes >= 1024)
        orv3::formatInto(column, "%u KB", bytes >> 10);
    else
        orv3::formatInto(column, "%u Byte", bytes);
}

const char *bootText(uint8_t bootable)
{
    switch (bootable) {
    case 1: return "Bootable";
    case 0: return "Not Bootable";
    default: return "Not Available";
    }
}

} // namespace

extern "C" {

int arrangeAllVolumeData(uint32_t arrayId, int32_t *index, uint32_t ctrlId)
{
    if (!index)
        return 1;
    raid_link_array_volume_list_t volumes;
    memset(&volumes, 0, sizeof volumes);
    volumes.array_id = arrayId;
    if (raidlink_get_array_volume_list(&volumes) != RAIDLINK_STATUS_SUCCESS || volumes.count == 0) {
        orv3::logFailedOrEmpty(__func__, __LINE__, "raidlink_get_array_volume_list", "volume_list_info.count = 0");
        return 1;
    }
    raid_link_volume_t volume;
    for (size_t v = 0; v < orv3::listed(volumes.count, RAID_LINK_MAX_ARRAY_VOLUMES); ++v) {
        uint32_t volumeId;
        memcpy(&volumeId, &volumes.volume_ids[v], sizeof volumeId);
        memset(&volume, 0, sizeof volume);
        volume.volume_id = volumeId;
        if (raidlink_get_volume_info(&volume) != RAIDLINK_STATUS_SUCCESS)
            continue;
        Row row;
        memset(&row, 0, sizeof row);
        row.head.index = (*index)++;
        fetchVolumeInfo(volumeId, row.raidVolumeLabel.text, sizeof row.raidVolumeLabel.text);
        row.raidVolumeLabel.len = static_cast<uint32_t>(strnlen(row.raidVolumeLabel.text, 256));
        fetchCtrlProdSlot(ctrlId, row.raidVolumeCtrlLabel.text, sizeof row.raidVolumeCtrlLabel.text);
        row.raidVolumeCtrlLabel.len = static_cast<uint32_t>(strnlen(row.raidVolumeCtrlLabel.text, 256));
        orv3::codeTextInto(row.raidVolumeState, getVolumeStateString, static_cast<int32_t>(volume.state));
        // Single precision, as the controller prints volume sizes: large
        // volumes show the rounding of a 24-bit mantissa.
        const uint64_t bytes = uint64_t{volume.block_size} * volume.block_count;
        const float gigabytes = static_cast<float>(bytes) * 9.313226e-10f;
        orv3::formatInto(row.raidVolumeCapacity, "%.3f GB", static_cast<double>(gigabytes));
        formatStripeSize(row.raidVolumeStripeSize, volume.stripe_size);
        orv3::formatInto(row.raidVolumeBootable, "%s", bootText(volume.bootable));
        raidVolumeTable_createEntry(&row);
    }
    return 0;
}

int raidVolumeTable_loadData(void)
{
    int32_t index = 1;
    raid_link_array_list_t pools;
    return orv3::forEachController(
        raidVolumeTable_table, orv3::ListFailureText::Combined, __func__, __LINE__, [&](uint32_t ctrlId) {
            memset(&pools, 0, sizeof pools);
            pools.ctrl_id = ctrlId;
            if (raidlink_get_array_list(&pools) != RAIDLINK_STATUS_SUCCESS) {
                orv3::logFailedCall("raidVolumeTable_loadData", __LINE__, "raidlink_get_array_list");
                return true;
            }
            for (size_t p = 0; p < orv3::listed(pools.count, RAID_LINK_MAX_ARRAYS); ++p) {
                uint32_t arrayId;
                memcpy(&arrayId, &pools.array_ids[p], sizeof arrayId);
                arrangeAllVolumeData(arrayId, &index, ctrlId);
            }
            return true;
        });
}

} // extern "C"

ORV3_TABLE(raidVolumeTable, raidVolumeTable_table)

// raidStoragepoolTable (.13.1.6): one row per storage pool (RAID array) of
// every RAID controller, with its level, size and free space and the labels
// of its volumes and drives.
#include "raid.h"
#include "raid_rows.h"

#include <cstdlib>
#include <cstring>

orv3_row_head_t *raidStoragepoolTable_head = nullptr;

namespace {

using Row = raidStoragepoolTable_entry_t;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, raidStoragepoolLabel),
    ORV3_TEXT_FIELD_COLUMN(3, Row, raidStoragepoolCtrlLabel),
    ORV3_TEXT_FIELD_COLUMN(4, Row, raidStoragepoolRaidLevel),
    ORV3_TEXT_FIELD_COLUMN(5, Row, raidStoragepoolCapacity),
    ORV3_TEXT_COLUMN(6, Row, raidStoragepoolVolumeLabels, raidStoragepoolVolumeLabelsLen),
    ORV3_TEXT_COLUMN(7, Row, raidStoragepoolDriveLabels, raidStoragepoolDriveLabelsLen),
};

constinit orv3::TableOf<raidStoragepoolTable_entry_t> raidStoragepoolTable_table =
    orv3::familyTable<raidStoragepoolTable_entry_t>(orv3::kRaidTables, "raidStoragepoolTable", raidStoragepoolTable_oid,
                                                    raidStoragepoolTable_lastColumn, servedColumns,
                                                    raidStoragepoolTable_loadData, raidStoragepoolTable_head);

} // namespace

extern "C" {

// The row takes its index before the pool's lists are read: a pool whose
// lists cannot be read leaves a gap in the numbering.
int arrangeArrayInfoAndCreateArow(const raid_link_array_t *array, int32_t *index, uint32_t ctrlId)
{
    if (!array || !index)
        return 1;
    auto *row = static_cast<Row *>(calloc(1, sizeof(Row)));
    if (!row)
        return 1;
    row->head.index = (*index)++;
    const int32_t number = static_cast<int32_t>(array->pool_number);
    orv3::formatInto(row->raidStoragepoolLabel, "Storage Pool %d", number);
    fetchCtrlProdSlot(ctrlId, row->raidStoragepoolCtrlLabel.text, sizeof row->raidStoragepoolCtrlLabel.text);
    row->raidStoragepoolCtrlLabel.len =
        static_cast<uint32_t>(strnlen(row->raidStoragepoolCtrlLabel.text, sizeof row->raidStoragepoolCtrlLabel.text));
    const char *level = raidlink_raidlevel_string(
        raidlink_db_prl2raidlevel(array->raid_level_part1, array->raid_level_part2, array->raid_level_part3));
    orv3::formatInto(row->raidStoragepoolRaidLevel, "%s", level ? level : "");
    const uint64_t total = array->total_size;
    const uint64_t freeBytes = array->free_size;
    orv3::formatInto(row->raidStoragepoolCapacity, "%.3lf GB (%.3lf GB free)",
                     static_cast<double>(total) * orv3::kBytesToGigabytes,
                     static_cast<double>(freeBytes) * orv3::kBytesToGigabytes);

    const uint32_t arrayId = array->array_id;
    raid_link_array_volume_list_t volumes;
    memset(&volumes, 0, sizeof volumes);
    volumes.array_id = arrayId;
    raid_link_array_disk_list_t drives;
    memset(&drives, 0, sizeof drives);
    drives.array_id = arrayId;
    int result = 1;
    if (raidlink_get_array_volume_list(&volumes) == RAIDLINK_STATUS_SUCCESS &&
        raidlink_get_array_disk_list(&drives) == RAIDLINK_STATUS_SUCCESS) {
        orv3::joinLabels(row->raidStoragepoolVolumeLabels, row->raidStoragepoolVolumeLabelsLen, volumes.volume_ids,
                         orv3::listed(volumes.count, RAID_LINK_MAX_ARRAY_VOLUMES), fetchVolumeInfo);
        orv3::joinLabels(row->raidStoragepoolDriveLabels, row->raidStoragepoolDriveLabelsLen, drives.disk_ids,
                         orv3::listed(drives.count, RAID_LINK_MAX_ARRAY_DISKS), fetchDiskProdSlot);
        raidStoragepoolTable_createEntry(row);
        result = 0;
    }
    free(row);
    return result;
}

int raidStoragepoolTable_loadData(void)
{
    constexpr char kLoader[] = "raidStoragepoolTable_loadData";
    int32_t index = 1;
    raid_link_array_list_t pools;
    raid_link_array_t array;
    return orv3::forEachController(
        raidStoragepoolTable_table, orv3::ListFailureText::Combined, __func__, __LINE__, [&](uint32_t ctrlId) {
            memset(&pools, 0, sizeof pools);
            pools.ctrl_id = ctrlId;
            if (raidlink_get_array_list(&pools) != RAIDLINK_STATUS_SUCCESS || pools.count == 0) {
                orv3::logFailedOrEmpty(kLoader, __LINE__, "raidlink_get_array_list", "array_list_info.count = 0");
                return true;
            }
            for (size_t p = 0; p < orv3::listed(pools.count, RAID_LINK_MAX_ARRAYS); ++p) {
                memset(&array, 0, sizeof array);
                memcpy(&array.array_id, &pools.array_ids[p], sizeof array.array_id);
                if (raidlink_get_array_info(&array) != RAIDLINK_STATUS_SUCCESS) {
                    orv3::logFailedCall(kLoader, __LINE__, "raidlink_get_array_info");
                    continue;
                }
                arrangeArrayInfoAndCreateArow(&array, &index, ctrlId);
            }
            return true;
        });
}

} // extern "C"

ORV3_TABLE(raidStoragepoolTable, raidStoragepoolTable_table)

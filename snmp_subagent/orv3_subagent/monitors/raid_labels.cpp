// The labels the RAID tables show for a controller, drive, storage pool or
// volume, each read from the RAID link library's record of the identifier.
#include "raid_text.h"

#include "orv3/raid_link.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr int32_t kStrippedSize = 128;

// Empties the caller's label; false when there is no room to write one.
bool startLabel(char *destination, int32_t size)
{
    if (!destination || size < 1)
        return false;
    memset(destination, 0, static_cast<size_t>(size));
    return true;
}

// A stripped name may fill all 128 bytes without a terminator.
int strippedLength(const char (&stripped)[kStrippedSize])
{
    return static_cast<int>(strnlen(stripped, sizeof stripped));
}

} // namespace

extern "C" {

void fetchCtrlProdSlot(uint32_t ctrlId, char *destination, int32_t size)
{
    if (!startLabel(destination, size))
        return;
    raid_link_ctrl_hw_t hw;
    memset(&hw, 0, sizeof hw);
    hw.ctrl_id = ctrlId;
    if (raidlink_get_ctrl_hw_info(&hw) != RAIDLINK_STATUS_SUCCESS)
        return;
    char product[kStrippedSize];
    trimCopyStr(product, hw.product_name, sizeof product, sizeof hw.product_name);
    const uint32_t zel = hw.zel_flag;
    snprintf(destination, static_cast<size_t>(size), zel == 1 ? "%.*s (PCI Slot %d, ZEL)" : "%.*s (PCI Slot %d)",
             strippedLength(product), product, hw.slot_number);
}

void fetchDiskProdSlot(uint32_t diskId, char *destination, int32_t size)
{
    if (!startLabel(destination, size))
        return;
    raid_link_disk_hw_t hw;
    memset(&hw, 0, sizeof hw);
    hw.disk_id = diskId;
    if (raidlink_get_disk_hw_info(&hw) != RAIDLINK_STATUS_SUCCESS)
        return;
    const uint32_t zel = hw.zel_flag;
    const uint16_t number = hw.drive_number;
    snprintf(destination, static_cast<size_t>(size), zel == 1 ? "ZEL Drive %d " : "Drive %d ", number);
}

void fetchArrayInfo(uint32_t arrayId, char *destination, int32_t size)
{
    if (!startLabel(destination, size))
        return;
    raid_link_array_t array;
    memset(&array, 0, sizeof array);
    array.array_id = arrayId;
    if (raidlink_get_array_info(&array) != RAIDLINK_STATUS_SUCCESS)
        return;
    const int32_t number = static_cast<int32_t>(array.pool_number);
    snprintf(destination, static_cast<size_t>(size), "Storage Pool %d", number);
}

void fetchVolumeInfo(uint32_t volumeId, char *destination, int32_t size)
{
    if (!startLabel(destination, size))
        return;
    raid_link_volume_t volume;
    memset(&volume, 0, sizeof volume);
    volume.volume_id = volumeId;
    if (raidlink_get_volume_info(&volume) != RAIDLINK_STATUS_SUCCESS)
        return;
    char name[kStrippedSize];
    trimCopyStr(name, volume.name, sizeof name, sizeof volume.name);
    const int32_t number = static_cast<int32_t>(volume.volume_number);
    if (name[0])
        snprintf(destination, static_cast<size_t>(size), "%.*s", strippedLength(name), name);
    else
        snprintf(destination, static_cast<size_t>(size), "Volume %d", number);
}

} // extern "C"

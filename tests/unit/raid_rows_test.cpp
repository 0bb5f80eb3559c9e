// The RAID tables' conversions on records built byte by byte: drive and
// pool capacities in binary gigabytes, the battery capacity texts, the
// remaining life and the rotation speed.
#include "raid.h"
#include "unit_machine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

std::string textOf(const orv3_text256_t &column)
{
    return std::string(column.text, column.len);
}

template <class Record> Record zeroed()
{
    Record record;
    memset(&record, 0, sizeof record);
    return record;
}

// The first row of a table's list, freed with the list afterwards.
template <class Row> struct ListedRow {
    orv3_row_head_t *&head;
    void (*clear)(Row *);
    const Row &row() const { return *reinterpret_cast<const Row *>(head); }
    ~ListedRow()
    {
        clear(reinterpret_cast<Row *>(head));
        orv3::reclaimRetiredRows();
    }
};

TEST(RaidDriveRow, CapacityIsBlockSizeTimesBlockCountInBinaryGigabytes)
{
    auto hw = zeroed<raid_link_disk_hw_t>();
    hw.block_size = 512;
    hw.block_count = 1953525168;
    hw.media_type = RAID_LINK_MEDIA_SSD;
    hw.remaining_life = 97;
    hw.rotation_speed = RAID_LINK_ROTATION_UNKNOWN;
    hw.disk_id = 0xdead; // unknown to the library: the label stays empty
    auto fw = zeroed<raid_link_fw_info_t>();
    int32_t index = 1;
    ASSERT_EQ(arrangeDiskDataAndCreateArow(&hw, &fw, &index), 0);
    ListedRow<raidDriveTable_entry_t> listed{raidDriveTable_head, clearAllraidDriveTableRows};
    ASSERT_NE(raidDriveTable_head, nullptr);
    EXPECT_EQ(index, 2);
    EXPECT_EQ(textOf(listed.row().raidDriveCapacity), "931.513 GB");
    EXPECT_EQ(textOf(listed.row().raidDriveRemainingLife), "97%");
    EXPECT_EQ(textOf(listed.row().raidDriveRotationSpeed), "");
    EXPECT_EQ(textOf(listed.row().raidDriveLabel), "");
}

TEST(RaidDriveRow, TheProductWrapsIn64BitsAndAHardDiskHasNoRemainingLife)
{
    auto hw = zeroed<raid_link_disk_hw_t>();
    hw.block_size = 0x8000;
    hw.block_count = (1ull << 49) + 3; // 2^64 + 3 * 2^15 wraps to 98304 bytes
    hw.rotation_speed = 7200;
    auto fw = zeroed<raid_link_fw_info_t>();
    int32_t index = 1;
    ASSERT_EQ(arrangeDiskDataAndCreateArow(&hw, &fw, &index), 0);
    ListedRow<raidDriveTable_entry_t> listed{raidDriveTable_head, clearAllraidDriveTableRows};
    EXPECT_EQ(textOf(listed.row().raidDriveCapacity), "0.000 GB");
    EXPECT_EQ(textOf(listed.row().raidDriveRemainingLife), "Not Available");
    EXPECT_EQ(textOf(listed.row().raidDriveRotationSpeed), "7200RPM");
}

TEST(RaidPoolRow, SizesAreInBinaryGigabytes)
{
    auto array = zeroed<raid_link_array_t>();
    array.total_size = 1ull << 40;
    array.free_size = 1ull << 39;
    array.pool_number = 4;
    array.array_id = 3001; // the sample machine's pool, whose lists the library answers
    int32_t index = 7;
    ASSERT_EQ(arrangeArrayInfoAndCreateArow(&array, &index, 1001), 0);
    ListedRow<raidStoragepoolTable_entry_t> listed{raidStoragepoolTable_head, clearAllraidStoragepoolTableRows};
    ASSERT_NE(raidStoragepoolTable_head, nullptr);
    EXPECT_EQ(listed.row().head.index, 7);
    EXPECT_EQ(textOf(listed.row().raidStoragepoolCapacity), "1024.000 GB (512.000 GB free)");
    EXPECT_EQ(textOf(listed.row().raidStoragepoolLabel), "Storage Pool 4");
}

std::string batteryCapacity(uint32_t type, uint8_t energyFlag, uint16_t full, uint16_t remaining)
{
    auto hw = zeroed<raid_link_ctrl_hw_t>();
    hw.battery_present = 1;
    hw.battery_type = type;
    hw.battery_energy_flag = energyFlag;
    hw.battery_full = full;
    hw.battery_remaining = remaining;
    auto fw = zeroed<raid_link_fw_info_t>();
    auto ports = zeroed<raid_link_ctrl_port_t>();
    auto pools = zeroed<raid_link_array_list_t>();
    auto drives = zeroed<raid_link_ctrl_disk_list_t>();
    std::unique_ptr<raidControllerTable_entry_t, decltype(&free)> row(
        static_cast<raidControllerTable_entry_t *>(calloc(1, sizeof(raidControllerTable_entry_t))), free);
    int32_t index = 1;
    EXPECT_EQ(arrangeAllRaidCtrlData(row.get(), &index, &hw, &fw, &ports, &pools, &drives), 0);
    return textOf(row->raidCtrlBatteryCapacity);
}

TEST(RaidControllerRow, BatteryCapacityReadsAsTheBatteryCounts)
{
    EXPECT_EQ(batteryCapacity(2, 0, 0, 120), "0 mAh");
    EXPECT_EQ(batteryCapacity(2, 0, 1000, 800), "1000 mAh (Remaining 800 mAh, 80%)");
    EXPECT_EQ(batteryCapacity(2, 0, 1000, 1001), "1000 mAh");
    EXPECT_EQ(batteryCapacity(2, 0, 3, 2), "3 mAh (Remaining 2 mAh, 67%)");
    EXPECT_EQ(batteryCapacity(5, 0, 1000, 500), "1000 mAh (Remaining 500 mAh, 50%)");
    EXPECT_EQ(batteryCapacity(5, 1, 1000, 500), "1000 J (Remaining 500 J, 50%)");
    EXPECT_EQ(batteryCapacity(6, 0, 1000, 500), "Remaining 500 J");
    EXPECT_EQ(batteryCapacity(9, 0, 0, 65535), "Remaining 65535 J");
    EXPECT_EQ(batteryCapacity(9, 0, 200, 300), "200 J (Remaining 300 J, 150%)");
}

TEST(RaidControllerRow, WithoutABatteryItsColumnsStayEmpty)
{
    auto hw = zeroed<raid_link_ctrl_hw_t>();
    hw.battery_present = 0;
    hw.battery_type = 2;
    hw.battery_full = 1000;
    hw.flag_815 = 1;
    hw.value_801 = 3;
    auto fw = zeroed<raid_link_fw_info_t>();
    auto ports = zeroed<raid_link_ctrl_port_t>();
    auto pools = zeroed<raid_link_array_list_t>();
    auto drives = zeroed<raid_link_ctrl_disk_list_t>();
    std::unique_ptr<raidControllerTable_entry_t, decltype(&free)> row(
        static_cast<raidControllerTable_entry_t *>(calloc(1, sizeof(raidControllerTable_entry_t))), free);
    int32_t index = 4;
    ASSERT_EQ(arrangeAllRaidCtrlData(row.get(), &index, &hw, &fw, &ports, &pools, &drives), 0);
    EXPECT_EQ(row->head.index, 4);
    EXPECT_EQ(index, 5);
    EXPECT_EQ(row->raidCtrlBatteryPresent, 2) << "the flag at 815 and the value at 801";
    EXPECT_EQ(textOf(row->raidCtrlBatteryCapacity), "");
    EXPECT_EQ(textOf(row->raidCtrlBatteryType), "");
    EXPECT_EQ(textOf(row->raidCtrlLabel), " (PCI Slot 0)");
    EXPECT_EQ(textOf(row->raidCtrlCacheSize), "0 MB");
}

} // namespace

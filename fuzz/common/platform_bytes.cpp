#include "platform_bytes.h"

#include "orv3/change_history.h"
#include "orv3/inventory_db.h"
#include "orv3/power.h"
#include "orv3/raid_link.h"
#include "orv3/session_manager.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

const uint8_t *nextByte = nullptr;
const uint8_t *endOfInput = nullptr;

bool takeCount(uint32_t &count)
{
    if (nextByte == endOfInput)
        return false;
    count = *nextByte++;
    return true;
}

// 0 (success, for the RAID link library and the database alike) with the
// record's first `dataSize` bytes filled, 1 without.
template <class Record> int32_t answer(Record *record, size_t dataSize = sizeof(Record))
{
    return record && orv3::fuzz::takeRecord(record, dataSize) ? 0 : 1;
}

// `count` records in a heap block the caller frees, as the database hands
// its lists out; null for none.
template <class Item> Item *takeArray(uint32_t count)
{
    if (count == 0)
        return nullptr;
    auto *items = static_cast<Item *>(calloc(count, sizeof(Item)));
    for (uint32_t i = 0; i < count; ++i)
        orv3::fuzz::takeRecord(&items[i], sizeof(Item));
    return items;
}

template <class List, class Item> int32_t answerList(List *list, Item *List::*array)
{
    uint32_t count;
    if (!list || !takeCount(count))
        return 1;
    list->count = count;
    list->*array = takeArray<Item>(count);
    return 0;
}

// The persistent-memory id list stays the database's.
std::vector<uint32_t> persistentMemoryIds;

} // namespace

namespace orv3::fuzz {

void servePlatformBytes(const uint8_t *data, size_t size)
{
    nextByte = data;
    endOfInput = data + size;
}

bool takeRecord(void *record, size_t size)
{
    if (nextByte == endOfInput)
        return false;
    const size_t taken = std::min(size, static_cast<size_t>(endOfInput - nextByte));
    memcpy(record, nextByte, taken);
    memset(static_cast<uint8_t *>(record) + taken, 0, size - taken);
    nextByte += taken;
    return true;
}

void silenceTraceLog()
{
    setenv("ORV3_SIM_TRACE_LOG", "/dev/null", 1);
}

} // namespace orv3::fuzz

extern "C" {

// ---- RAID link library: the bytes before the identifier the caller stored ----

int32_t raidlink_get_ctrl_list(raid_link_ctrl_list_t *list)
{
    return answer(list);
}
int32_t raidlink_get_ctrl_hw_info(raid_link_ctrl_hw_t *hw)
{
    return answer(hw, offsetof(raid_link_ctrl_hw_t, ctrl_id));
}
int32_t raidlink_get_ctrl_fw_info(raid_link_fw_info_t *fw)
{
    return answer(fw, offsetof(raid_link_fw_info_t, id));
}
int32_t raidlink_get_ctrl_port_info(raid_link_ctrl_port_t *ports)
{
    return answer(ports, offsetof(raid_link_ctrl_port_t, ctrl_id));
}
int32_t raidlink_get_array_list(raid_link_array_list_t *list)
{
    return answer(list, offsetof(raid_link_array_list_t, ctrl_id));
}
int32_t raidlink_get_ctrl_disk_list(raid_link_ctrl_disk_list_t *list)
{
    return answer(list, offsetof(raid_link_ctrl_disk_list_t, ctrl_id));
}
int32_t raidlink_get_disk_hw_info(raid_link_disk_hw_t *hw)
{
    return answer(hw, offsetof(raid_link_disk_hw_t, disk_id));
}
int32_t raidlink_get_disk_fw_info(raid_link_fw_info_t *fw)
{
    return answer(fw, offsetof(raid_link_fw_info_t, id));
}
int32_t raidlink_get_array_info(raid_link_array_t *array)
{
    return answer(array, offsetof(raid_link_array_t, array_id));
}
int32_t raidlink_get_array_volume_list(raid_link_array_volume_list_t *list)
{
    return answer(list, offsetof(raid_link_array_volume_list_t, array_id));
}
int32_t raidlink_get_array_disk_list(raid_link_array_disk_list_t *list)
{
    return answer(list, offsetof(raid_link_array_disk_list_t, array_id));
}
int32_t raidlink_get_volume_info(raid_link_volume_t *volume)
{
    return answer(volume, offsetof(raid_link_volume_t, volume_id));
}

// ---- inventory database ----

int32_t orvdb_get_AEP_memory_list(inventory_db_id_list_t *list)
{
    uint32_t count;
    if (!list || !takeCount(count))
        return 1;
    persistentMemoryIds.assign(count, 0);
    for (uint32_t &id : persistentMemoryIds)
        orv3::fuzz::takeRecord(&id, sizeof id);
    list->count = count;
    list->ids = count ? persistentMemoryIds.data() : nullptr;
    return 0;
}
int32_t orvdb_get_memory_by_id(inventory_db_memory_t *memory, uint32_t)
{
    return answer(memory);
}
int32_t orvdb_get_pci_adapter_list(uint32_t *count, inventory_db_adapter_t **adapters)
{
    if (!count || !adapters || !takeCount(*count))
        return 1;
    *adapters = takeArray<inventory_db_adapter_t>(*count);
    return 0;
}
int32_t orvdb_get_pci_funkey_list(uint32_t, inventory_db_id_list_t *funcKeys)
{
    return answerList(funcKeys, &inventory_db_id_list_t::ids);
}
int32_t orvdb_get_pci_function_type(uint32_t, uint32_t *type)
{
    return answer(type);
}
int32_t orvdb_get_pci_generic_info(uint32_t, inventory_db_pci_info_t *pciInfo)
{
    return answer(pciInfo);
}
int32_t orvdb_get_pci_vpd_info(uint32_t, inventory_db_pci_vpd_t *vpdInfo)
{
    return answer(vpdInfo);
}
int32_t orvdb_get_pci_misc_info(uint32_t, inventory_db_pci_misc_t *miscInfo)
{
    return answer(miscInfo);
}
int32_t orvdb_get_pci_firmware_list(uint32_t, inventory_db_firmware_list_t *list)
{
    return answerList(list, &inventory_db_firmware_list_t::firmware);
}
int32_t orvdb_get_network_info(uint32_t, inventory_db_network_info_t *info)
{
    return answer(info);
}
int32_t orvdb_get_network_physical_port_list(uint32_t, inventory_db_physical_port_list_t *list)
{
    return answerList(list, &inventory_db_physical_port_list_t::ports);
}
int32_t orvdb_get_network_logical_port_list2(uint32_t, uint32_t, inventory_db_logical_port_list_t *list)
{
    return answerList(list, &inventory_db_logical_port_list_t::ports);
}
int32_t orvdb_get_gpu_device_info(uint32_t, inventory_db_gpu_device_t *info)
{
    return answer(info);
}
int32_t orvdb_get_gpu_chip_list(uint32_t, inventory_db_gpu_chip_list_t *list)
{
    return answerList(list, &inventory_db_gpu_chip_list_t::chips);
}

// ---- change-history log: a count byte, then that many records ----

int32_t get_chghist_log(change_history_record_t **records, int32_t mode)
{
    uint32_t count;
    if (!records || mode != 1 || !takeCount(count))
        return -1;
    if (count > 0)
        *records = takeArray<change_history_record_t>(count);
    return static_cast<int32_t>(count);
}

// ---- power history: all the samples the caller asks for ----

int32_t pwrmgt_get_history_power(uint32_t, uint32_t, power_history_sample_t *samples, uint32_t count)
{
    return samples && orv3::fuzz::takeRecord(samples, count * sizeof *samples) ? 0 : 1;
}

// ---- session manager ----

// The count reported is any 32-bit number; only as many ids as the
// caller's array holds are written.
int32_t sm_session_get_type_info(uint32_t *selector, int32_t *count, int32_t *ids)
{
    int32_t reported;
    if (!selector || !count || !ids || *count < 0 || !orv3::fuzz::takeRecord(&reported, sizeof reported))
        return 1;
    const int32_t filled = std::clamp(reported, 0, *count);
    if (filled > 0)
        orv3::fuzz::takeRecord(ids, static_cast<size_t>(filled) * sizeof *ids);
    *count = reported;
    return 0;
}

// One byte says whether the session can still be described (nonzero), then
// its record.
int32_t sm_session_get_info(int32_t, session_manager_info_t *info)
{
    uint32_t describable;
    if (!info || !takeCount(describable) || describable == 0)
        return 0;
    return orv3::fuzz::takeRecord(info, sizeof *info) ? 1 : 0;
}

} // extern "C"

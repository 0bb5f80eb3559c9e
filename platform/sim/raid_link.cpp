// The simulated RAID link library and the platform's feature query, from the
// machine description's "raid" and "features" sections. A query finds the
// identifier its caller stored in the record, writes every byte before the
// identifier and returns RAIDLINK_STATUS_SUCCESS; an unknown identifier or a
// fault (keyed by the identifier in decimal) writes nothing and fails.
#include "orv3/raid_link.h"
#include "lookup_calls.h"
#include "orv3/feature_query.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

using orv3::sim::Platform;
using orv3::sim::RaidController;
using orv3::sim::RaidDrive;
using orv3::sim::RaidInventory;
using orv3::sim::RaidPool;
using orv3::sim::RaidVolume;
using orv3::sim::RecordImage;

namespace {

void putLittleEndian(uint8_t *record, size_t offset, uint64_t value, size_t width)
{
    for (size_t i = 0; i < width; ++i)
        record[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

template <class Record> uint32_t identifierOf(const Record *record, size_t offset)
{
    uint32_t id;
    memcpy(&id, reinterpret_cast<const uint8_t *>(record) + offset, sizeof id);
    return id;
}

template <class Item> const Item *find(const std::vector<Item> &items, uint32_t id)
{
    auto found = std::find_if(items.begin(), items.end(), [id](const Item &item) { return item.id == id; });
    return found == items.end() ? nullptr : &*found;
}

// Writes the bytes before the identifier: the image, zeros after it.
void writeImage(void *record, size_t dataSize, const orv3::sim::RecordImage &image)
{
    auto *bytes = static_cast<uint8_t *>(record);
    memset(bytes, 0, dataSize);
    memcpy(bytes, image.data(), std::min(image.size(), dataSize));
    orv3::sim::fillWritten(bytes, dataSize);
}

// A list record: the 16-bit count, then the identifiers.
void writeIdList(void *record, size_t dataSize, const std::vector<uint32_t> &ids, std::optional<uint32_t> count)
{
    auto *bytes = static_cast<uint8_t *>(record);
    memset(bytes, 0, dataSize);
    putLittleEndian(bytes, 0, count.value_or(static_cast<uint32_t>(ids.size())), 2);
    const size_t room = (dataSize - 2) / 4;
    for (size_t i = 0; i < ids.size() && i < room; ++i)
        putLittleEndian(bytes, 2 + 4 * i, ids[i], 4);
    orv3::sim::fillWritten(bytes, dataSize);
}

// A firmware record: the one-byte count, then the components.
void writeFirmware(void *record, size_t dataSize, const std::vector<orv3::sim::RecordImage> &components,
                   std::optional<uint32_t> count)
{
    auto *bytes = static_cast<uint8_t *>(record);
    memset(bytes, 0, dataSize);
    bytes[0] = static_cast<uint8_t>(count.value_or(static_cast<uint32_t>(components.size())));
    for (size_t i = 0; i < components.size() && i < RAID_LINK_MAX_FW_COMPONENTS; ++i)
        memcpy(bytes + offsetof(raid_link_fw_info_t, components) + i * RAID_LINK_FW_COMPONENT_SIZE,
               components[i].data(), std::min<size_t>(components[i].size(), RAID_LINK_FW_COMPONENT_SIZE));
    orv3::sim::fillWritten(bytes, dataSize);
}

// The port addresses, each split into its low and high 32 bits.
void writePorts(void *record, size_t dataSize, const orv3::sim::RaidController &controller)
{
    auto *bytes = static_cast<uint8_t *>(record);
    memset(bytes, 0, dataSize);
    bytes[0] = static_cast<uint8_t>(controller.portCount.value_or(static_cast<uint32_t>(controller.ports.size())));
    for (size_t i = 0; i < controller.ports.size() && i < RAID_LINK_MAX_PORTS; ++i) {
        const size_t at = offsetof(raid_link_ctrl_port_t, ports) + i * sizeof(raid_link_port_t);
        putLittleEndian(bytes, at + offsetof(raid_link_port_t, address_low), controller.ports[i] & 0xffffffffu, 4);
        putLittleEndian(bytes, at + offsetof(raid_link_port_t, address_high), controller.ports[i] >> 32, 4);
    }
    orv3::sim::fillWritten(bytes, dataSize);
}

// What a getter writes from its item: a record image, a list of identifiers
// with the count it reports, or the firmware components.
template <class Item> auto imageOf(RecordImage Item::*image)
{
    return [image](void *record, size_t dataSize, const Item &item) { writeImage(record, dataSize, item.*image); };
}

template <class Item> auto idListOf(std::vector<uint32_t> Item::*ids, std::optional<uint32_t> Item::*count)
{
    return [ids, count](void *record, size_t dataSize, const Item &item) {
        writeIdList(record, dataSize, item.*ids, item.*count);
    };
}

template <class Item> auto firmwareOf()
{
    return [](void *record, size_t dataSize, const Item &item) {
        writeFirmware(record, dataSize, item.firmware, item.firmwareCount);
    };
}

constexpr int32_t kFail = RAIDLINK_STATUS_FAIL;
constexpr int32_t kSuccess = RAIDLINK_STATUS_SUCCESS;

// A query of the library: the identifier the caller stored at `idOffset` of
// `record` picks the item of the machine's `list` (and keys the call's
// fault), and `write` writes the `idOffset` bytes before the identifier
// from it. A null record fails before the call is entered: it has no
// identifier to log the call or key a fault with.
template <class Record, class Item, class Write>
int32_t answerById(const char *call, Record *record, size_t idOffset, const std::vector<Item> RaidInventory::*list,
                   Write write)
{
    if (!record)
        return kFail;
    const uint32_t id = identifierOf(record, idOffset);
    return orv3::sim::answerLookup(
        call, std::to_string(id), {kFail, kSuccess},
        [&](const orv3::sim::Machine &machine) { return find(machine.raid.*list, id); },
        [&](const Item &item) { write(record, idOffset, item); });
}

} // namespace

extern "C" {

int32_t agentless_get_supported_status(uint8_t *supported, uint32_t feature)
{
    if (auto fault = Platform::instance().enter(__func__, std::to_string(feature)))
        return fault->result;
    if (!supported)
        return 1;
    auto machine = Platform::instance().machine();
    auto found = machine->features.find(feature);
    *supported = found == machine->features.end() ? 0 : found->second;
    orv3::sim::fillWritten(supported);
    return 0;
}

int32_t raidlink_get_ctrl_list(raid_link_ctrl_list_t *list)
{
    if (auto fault = Platform::instance().enter(__func__, ""))
        return fault->result;
    if (!list)
        return kFail;
    auto machine = Platform::instance().machine();
    std::vector<uint32_t> ids;
    for (const auto &controller : machine->raid.controllers)
        ids.push_back(controller.id);
    writeIdList(list, sizeof *list, ids, machine->raid.controllerCount);
    return kSuccess;
}

int32_t raidlink_get_ctrl_hw_info(raid_link_ctrl_hw_t *hw)
{
    return answerById(__func__, hw, offsetof(raid_link_ctrl_hw_t, ctrl_id), &RaidInventory::controllers,
                      imageOf(&RaidController::hardware));
}

int32_t raidlink_get_ctrl_fw_info(raid_link_fw_info_t *fw)
{
    return answerById(__func__, fw, offsetof(raid_link_fw_info_t, id), &RaidInventory::controllers,
                      firmwareOf<RaidController>());
}

int32_t raidlink_get_ctrl_port_info(raid_link_ctrl_port_t *ports)
{
    return answerById(__func__, ports, offsetof(raid_link_ctrl_port_t, ctrl_id), &RaidInventory::controllers,
                      writePorts);
}

int32_t raidlink_get_array_list(raid_link_array_list_t *list)
{
    return answerById(__func__, list, offsetof(raid_link_array_list_t, ctrl_id), &RaidInventory::controllers,
                      idListOf(&RaidController::pools, &RaidController::poolCount));
}

int32_t raidlink_get_ctrl_disk_list(raid_link_ctrl_disk_list_t *list)
{
    return answerById(__func__, list, offsetof(raid_link_ctrl_disk_list_t, ctrl_id), &RaidInventory::controllers,
                      idListOf(&RaidController::drives, &RaidController::driveCount));
}

int32_t raidlink_get_disk_hw_info(raid_link_disk_hw_t *hw)
{
    return answerById(__func__, hw, offsetof(raid_link_disk_hw_t, disk_id), &RaidInventory::drives,
                      imageOf(&RaidDrive::hardware));
}

int32_t raidlink_get_disk_fw_info(raid_link_fw_info_t *fw)
{
    return answerById(__func__, fw, offsetof(raid_link_fw_info_t, id), &RaidInventory::drives, firmwareOf<RaidDrive>());
}

int32_t raidlink_get_array_info(raid_link_array_t *array)
{
    return answerById(__func__, array, offsetof(raid_link_array_t, array_id), &RaidInventory::pools,
                      imageOf(&RaidPool::record));
}

int32_t raidlink_get_array_volume_list(raid_link_array_volume_list_t *list)
{
    return answerById(__func__, list, offsetof(raid_link_array_volume_list_t, array_id), &RaidInventory::pools,
                      idListOf(&RaidPool::volumes, &RaidPool::volumeCount));
}

int32_t raidlink_get_array_disk_list(raid_link_array_disk_list_t *list)
{
    return answerById(__func__, list, offsetof(raid_link_array_disk_list_t, array_id), &RaidInventory::pools,
                      idListOf(&RaidPool::drives, &RaidPool::driveCount));
}

int32_t raidlink_get_volume_info(raid_link_volume_t *volume)
{
    return answerById(__func__, volume, offsetof(raid_link_volume_t, volume_id), &RaidInventory::volumes,
                      imageOf(&RaidVolume::record));
}

// The simulator's numbering: the primary level (0, 1, 5, 6), times ten
// when the pool spans more than one array (RAID 10, 50, 60).
int32_t raidlink_db_prl2raidlevel(uint8_t part1, uint8_t part2, uint8_t part3)
{
    (void)part2;
    return part3 > 1 ? part1 * 10 : part1;
}

const char *raidlink_raidlevel_string(int32_t level)
{
    switch (level) {
    case 0: return "RAID 0";
    case 1: return "RAID 1";
    case 5: return "RAID 5";
    case 6: return "RAID 6";
    case 10: return "RAID 10";
    case 50: return "RAID 50";
    case 60: return "RAID 60";
    default: return "Unknown RAID level";
    }
}

} // extern "C"

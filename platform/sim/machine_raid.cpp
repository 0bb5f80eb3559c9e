// The "features" and "raid" sections of a machine description, each RAID
// object packed into the records the RAID link library hands out (see
// machine_records.h).
#include "machine_records.h"

#include "orv3/raid_link.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <span>
#include <vector>

namespace orv3::sim {

namespace {

using Hw = raid_link_ctrl_hw_t;
const PackedField kControllerFields[] = {
    ORV3_PACK_TEXT("text0", Hw, text_0),
    ORV3_PACK_TEXT("productName", Hw, product_name),
    ORV3_PACK_TEXT("text162", Hw, text_162),
    ORV3_PACK_TEXT("text195", Hw, text_195),
    ORV3_PACK_TEXT("text212", Hw, text_212),
    ORV3_PACK_TEXT("text245", Hw, text_245),
    ORV3_PACK_TEXT("text278", Hw, text_278),
    ORV3_PACK_TEXT("text295", Hw, text_295),
    ORV3_PACK_UNSIGNED("pciId314", Hw, pci_id_314),
    ORV3_PACK_UNSIGNED("pciId318", Hw, pci_id_318),
    ORV3_PACK_UNSIGNED("slot", Hw, slot_number),
    ORV3_PACK_UNSIGNED("byte321", Hw, byte_321),
    ORV3_PACK_UNSIGNED("byte322", Hw, byte_322),
    ORV3_PACK_UNSIGNED("byte323", Hw, byte_323),
    ORV3_PACK_UNSIGNED("cacheModuleStatus", Hw, cache_module_status),
    ORV3_PACK_TEXT("text584", Hw, text_584),
    ORV3_PACK_UNSIGNED("cacheSizeMb", Hw, cache_size_mb),
    ORV3_PACK_TEXT("text664", Hw, text_664),
    ORV3_PACK_UNSIGNED("value801", Hw, value_801),
    ORV3_PACK_UNSIGNED("zel", Hw, zel_flag),
    ORV3_PACK_UNSIGNED("flag815", Hw, flag_815),
};

const PackedField kBatteryFields[] = {
    ORV3_PACK_UNSIGNED("present", Hw, battery_present),
    ORV3_PACK_TEXT("text325", Hw, battery_text_325),
    ORV3_PACK_TEXT("text454", Hw, battery_text_454),
    ORV3_PACK_TEXT("text471", Hw, battery_text_471),
    ORV3_PACK_TEXT("text504", Hw, battery_text_504),
    ORV3_PACK_TEXT("text537", Hw, battery_text_537),
    ORV3_PACK_UNSIGNED("type", Hw, battery_type),
    ORV3_PACK_UNSIGNED("energyFlag", Hw, battery_energy_flag),
    ORV3_PACK_UNSIGNED("energy", Hw, battery_energy),
    ORV3_PACK_UNSIGNED("remaining", Hw, battery_remaining),
    ORV3_PACK_UNSIGNED("full", Hw, battery_full),
    ORV3_PACK_UNSIGNED("voltage568", Hw, battery_voltage_568),
    ORV3_PACK_UNSIGNED("voltage570", Hw, battery_voltage_570),
    ORV3_PACK_SIGNED("current", Hw, battery_current),
    ORV3_PACK_UNSIGNED("temperature", Hw, battery_temperature),
    ORV3_PACK_UNSIGNED("status", Hw, battery_status),
};

using Fw = raid_link_fw_component_t;
const PackedField kFirmwareFields[] = {
    ORV3_PACK_TEXT("text0", Fw, text_0),     ORV3_PACK_TEXT("name", Fw, name),
    ORV3_PACK_TEXT("text98", Fw, text_98),   ORV3_PACK_TEXT("text131", Fw, text_131),
    ORV3_PACK_TEXT("text260", Fw, text_260),
};

using Disk = raid_link_disk_hw_t;
const PackedField kDriveFields[] = {
    ORV3_PACK_TEXT("text33", Disk, text_33),
    ORV3_PACK_TEXT("text162", Disk, text_162),
    ORV3_PACK_TEXT("text195", Disk, text_195),
    ORV3_PACK_TEXT("text212", Disk, text_212),
    ORV3_PACK_TEXT("text245", Disk, text_245),
    ORV3_PACK_TEXT("text311", Disk, text_311),
    ORV3_PACK_TEXT("text344", Disk, text_344),
    ORV3_PACK_UNSIGNED("flags", Disk, flags),
    ORV3_PACK_UNSIGNED("number411", Disk, number_411),
    ORV3_PACK_UNSIGNED("id413", Disk, id_413),
    ORV3_PACK_UNSIGNED("speed", Disk, speed),
    ORV3_PACK_UNSIGNED("blockSize", Disk, block_size),
    ORV3_PACK_UNSIGNED("blockCount", Disk, block_count),
    ORV3_PACK_UNSIGNED("driveNumber", Disk, drive_number),
    ORV3_PACK_UNSIGNED("mediaType", Disk, media_type),
    ORV3_PACK_UNSIGNED("interfaceType", Disk, interface_type),
    ORV3_PACK_UNSIGNED("temperature", Disk, temperature),
    ORV3_PACK_UNSIGNED("state", Disk, state),
    ORV3_PACK_UNSIGNED("health", Disk, health),
    ORV3_PACK_UNSIGNED("zel", Disk, zel_flag),
    ORV3_PACK_UNSIGNED("foreign", Disk, foreign),
    ORV3_PACK_UNSIGNED("dedicatedSpare", Disk, dedicated_spare),
    ORV3_PACK_UNSIGNED("readyToRemove", Disk, ready_to_remove),
    ORV3_PACK_SIGNED("rotationSpeed", Disk, rotation_speed),
    ORV3_PACK_UNSIGNED("counter539", Disk, counter_539),
    ORV3_PACK_UNSIGNED("counter543", Disk, counter_543),
    ORV3_PACK_UNSIGNED("counter547", Disk, counter_547),
    ORV3_PACK_UNSIGNED("remainingLife", Disk, remaining_life),
};

using Pool = raid_link_array_t;
const PackedField kPoolFields[] = {
    ORV3_PACK_UNSIGNED("number", Pool, pool_number),
    ORV3_PACK_UNSIGNED("totalSize", Pool, total_size),
    ORV3_PACK_UNSIGNED("freeSize", Pool, free_size),
};

using Volume = raid_link_volume_t;
const PackedField kVolumeFields[] = {
    ORV3_PACK_TEXT("name", Volume, name),
    ORV3_PACK_UNSIGNED("number", Volume, volume_number),
    ORV3_PACK_UNSIGNED("stripeSize", Volume, stripe_size),
    ORV3_PACK_UNSIGNED("bootable", Volume, bootable),
    ORV3_PACK_UNSIGNED("blockSize", Volume, block_size),
    ORV3_PACK_UNSIGNED("blockCount", Volume, block_count),
    ORV3_PACK_UNSIGNED("state", Volume, state),
};

// The library hands out whatever its records hold, an overlong text cut to
// its field as the controller would cut it: a state to simulate.
constexpr Overflow kRaidTexts = Overflow::Cut;

// Packs the fields of `entry` that `fields` names, over the bytes its "raw"
// gives when it has one; names in `own` are the caller's.
void packRecord(const json &entry, const std::string &pointer, const Checker &check,
                std::span<const PackedField> fields, std::vector<const char *> own, const char *what,
                RecordImage &image)
{
    if (entry.is_object() && entry.contains("raw")) {
        std::vector<uint8_t> raw = hexBytes(entry["raw"], pointer + "/raw", check);
        check.expect(raw.size() <= image.size(), pointer + "/raw",
                     "a raw record holds at most " + std::to_string(image.size()) + " bytes");
        std::copy(raw.begin(), raw.end(), image.begin());
    }
    own.push_back("raw");
    packObject(entry, pointer, check, fields, own, what, kRaidTexts, image.data());
}

uint32_t identifier(const json &entry, const std::string &pointer, const Checker &check, const char *what,
                    std::set<uint32_t> &seen)
{
    check.expect(entry.is_object() && entry.contains("id"), pointer, std::string("a ") + what + " needs \"id\"");
    const uint32_t id = wordField(entry["id"], pointer + "/id", check);
    check.expect(seen.insert(id).second, pointer + "/id",
                 "another " + std::string(what) + " has the identifier " + std::to_string(id));
    return id;
}

std::vector<uint32_t> identifiers(const json &value, const std::string &pointer, const Checker &check, size_t capacity)
{
    check.expect(value.is_array(), pointer, "must be an array of identifiers");
    check.expect(value.size() <= capacity, pointer,
                 "the library's list holds at most " + std::to_string(capacity) + " identifiers");
    std::vector<uint32_t> ids;
    size_t i = 0;
    for (const json &id : value)
        ids.push_back(wordField(id, pointer + "/" + std::to_string(i++), check));
    return ids;
}

std::vector<RecordImage> firmwareComponents(const json &value, const std::string &pointer, const Checker &check)
{
    check.expect(value.is_array(), pointer, "must be an array of firmware components");
    check.expect(value.size() <= RAID_LINK_MAX_FW_COMPONENTS, pointer,
                 "the firmware record holds at most " + std::to_string(RAID_LINK_MAX_FW_COMPONENTS) + " components");
    std::vector<RecordImage> components;
    size_t i = 0;
    for (const json &entry : value) {
        RecordImage image(RAID_LINK_FW_COMPONENT_SIZE, 0);
        packRecord(entry, pointer + "/" + std::to_string(i++), check, kFirmwareFields, {}, "firmware component", image);
        components.push_back(std::move(image));
    }
    return components;
}

// "counts": {"pools": 300}: counts the library reports instead of the lists' lengths.
void readCounts(const json &entry, const std::string &pointer, const Checker &check,
                std::initializer_list<std::pair<const char *, std::pair<std::optional<uint32_t> *, uint32_t>>> counts)
{
    if (!entry.contains("counts"))
        return;
    const json &value = entry["counts"];
    const std::string at = pointer + "/counts";
    check.expect(value.is_object(), at, "must be an object of counts by list");
    for (const auto &[name, count] : value.items()) {
        bool known = false;
        for (const auto &[listName, target] : counts) {
            if (name != listName)
                continue;
            *target.first =
                static_cast<uint32_t>(unsignedUpTo(count, at + "/" + escapeToken(name), target.second, check));
            known = true;
        }
        if (!known) {
            std::string names;
            for (const auto &[listName, target] : counts)
                names += (names.empty() ? "" : ", ") + std::string(listName);
            check.fail(at + "/" + escapeToken(name), "unknown count (known: " + names + ")");
        }
    }
}

uint64_t portAddress(const json &value, const std::string &pointer, const Checker &check)
{
    check.expect(value.is_string() && !value.get<std::string>().empty() && value.get<std::string>().size() <= 16 &&
                     value.get<std::string>().find_first_not_of("0123456789abcdefABCDEF") == std::string::npos,
                 pointer, "a port address is up to 16 hexadecimal digits (\"500605B00A1B2C3D\")");
    return std::stoull(value.get<std::string>(), nullptr, 16);
}

RaidController readController(const json &entry, const std::string &pointer, const Checker &check,
                              std::set<uint32_t> &seen)
{
    RaidController controller;
    controller.id = identifier(entry, pointer, check, "controller", seen);
    controller.hardware.assign(offsetof(raid_link_ctrl_hw_t, ctrl_id), 0);
    packRecord(entry, pointer, check, kControllerFields,
               {"id", "battery", "firmware", "ports", "pools", "drives", "counts"}, "controller", controller.hardware);
    if (entry.contains("battery"))
        packRecord(entry["battery"], pointer + "/battery", check, kBatteryFields, {}, "battery", controller.hardware);
    if (entry.contains("firmware"))
        controller.firmware = firmwareComponents(entry["firmware"], pointer + "/firmware", check);
    if (entry.contains("ports")) {
        const json &ports = entry["ports"];
        check.expect(ports.is_array() && ports.size() <= RAID_LINK_MAX_PORTS, pointer + "/ports",
                     "must be an array of at most " + std::to_string(RAID_LINK_MAX_PORTS) + " port addresses");
        size_t i = 0;
        for (const json &port : ports)
            controller.ports.push_back(portAddress(port, pointer + "/ports/" + std::to_string(i++), check));
    }
    if (entry.contains("pools"))
        controller.pools = identifiers(entry["pools"], pointer + "/pools", check, RAID_LINK_MAX_ARRAYS);
    if (entry.contains("drives"))
        controller.drives = identifiers(entry["drives"], pointer + "/drives", check, RAID_LINK_MAX_CTRL_DISKS);
    readCounts(entry, pointer, check,
               {{"firmware", {&controller.firmwareCount, UINT8_MAX}},
                {"ports", {&controller.portCount, UINT8_MAX}},
                {"pools", {&controller.poolCount, UINT16_MAX}},
                {"drives", {&controller.driveCount, UINT16_MAX}}});
    return controller;
}

RaidDrive readDrive(const json &entry, const std::string &pointer, const Checker &check, std::set<uint32_t> &seen)
{
    RaidDrive drive;
    drive.id = identifier(entry, pointer, check, "drive", seen);
    drive.hardware.assign(offsetof(raid_link_disk_hw_t, disk_id), 0);
    packRecord(entry, pointer, check, kDriveFields, {"id", "firmware", "counts"}, "drive", drive.hardware);
    if (entry.contains("firmware"))
        drive.firmware = firmwareComponents(entry["firmware"], pointer + "/firmware", check);
    readCounts(entry, pointer, check, {{"firmware", {&drive.firmwareCount, UINT8_MAX}}});
    return drive;
}

RaidPool readPool(const json &entry, const std::string &pointer, const Checker &check, std::set<uint32_t> &seen)
{
    RaidPool pool;
    pool.id = identifier(entry, pointer, check, "pool", seen);
    pool.record.assign(offsetof(raid_link_array_t, array_id), 0);
    packRecord(entry, pointer, check, kPoolFields, {"id", "raidLevel", "volumes", "drives", "counts"}, "pool",
               pool.record);
    if (entry.contains("raidLevel")) {
        const json &level = entry["raidLevel"];
        const std::string at = pointer + "/raidLevel";
        check.expect(level.is_array() && level.size() == 3, at,
                     "must be the three level bytes [primary level, secondary level, span depth]");
        for (size_t i = 0; i < 3; ++i)
            pool.record[offsetof(raid_link_array_t, raid_level_part1) + i] =
                byteField(level[i], at + "/" + std::to_string(i), check);
    }
    if (entry.contains("volumes"))
        pool.volumes = identifiers(entry["volumes"], pointer + "/volumes", check, RAID_LINK_MAX_ARRAY_VOLUMES);
    if (entry.contains("drives"))
        pool.drives = identifiers(entry["drives"], pointer + "/drives", check, RAID_LINK_MAX_ARRAY_DISKS);
    readCounts(entry, pointer, check,
               {{"volumes", {&pool.volumeCount, UINT16_MAX}}, {"drives", {&pool.driveCount, UINT16_MAX}}});
    return pool;
}

RaidVolume readVolume(const json &entry, const std::string &pointer, const Checker &check, std::set<uint32_t> &seen)
{
    RaidVolume volume;
    volume.id = identifier(entry, pointer, check, "volume", seen);
    volume.record.assign(offsetof(raid_link_volume_t, volume_id), 0);
    packRecord(entry, pointer, check, kVolumeFields, {"id"}, "volume", volume.record);
    return volume;
}

template <class Item, class Reader>
std::vector<Item> readList(const json &section, const char *name, const std::string &pointer, const Checker &check,
                           Reader read, size_t capacity = SIZE_MAX)
{
    std::vector<Item> items;
    if (!section.contains(name))
        return items;
    const std::string at = pointer + "/" + name;
    const json &list = section[name];
    check.expect(list.is_array(), at, std::string("must be an array of ") + name);
    check.expect(list.size() <= capacity, at,
                 "the library's list holds at most " + std::to_string(capacity) + " " + name);
    std::set<uint32_t> seen;
    size_t i = 0;
    for (const json &entry : list)
        items.push_back(read(entry, at + "/" + std::to_string(i++), check, seen));
    return items;
}

} // namespace

std::map<uint32_t, uint8_t> readFeatures(const json &section, const std::string &pointer, const Checker &check)
{
    check.expect(section.is_object(), pointer, "must be an object of flags by feature number (\"18\": 1)");
    std::map<uint32_t, uint8_t> features;
    for (const auto &[key, value] : section.items()) {
        const std::string at = pointer + "/" + escapeToken(key);
        if (key.rfind("_", 0) == 0)
            continue;
        const bool digits = !key.empty() && key.size() <= 10 &&
                            key.find_first_not_of("0123456789") == std::string::npos &&
                            (key.size() == 1 || key[0] != '0') && std::stoull(key) <= UINT32_MAX;
        check.expect(digits, at, "a feature is named by its number in decimal (\"17\", \"18\")");
        features[static_cast<uint32_t>(std::stoull(key))] = byteField(value, at, check);
    }
    return features;
}

RaidInventory readRaid(const json &section, const std::string &pointer, const Checker &check)
{
    check.expect(section.is_object(), pointer, "must be an object");
    for (const auto &[name, value] : section.items()) {
        (void)value;
        const bool known = name == "controllers" || name == "drives" || name == "pools" || name == "volumes" ||
                           name == "counts" || name.rfind("_", 0) == 0;
        check.expect(known, pointer + "/" + escapeToken(name),
                     "unknown raid field (known: controllers, drives, pools, volumes, counts)");
    }
    RaidInventory raid;
    raid.controllers =
        readList<RaidController>(section, "controllers", pointer, check, readController, RAID_LINK_MAX_CTRLS);
    raid.drives = readList<RaidDrive>(section, "drives", pointer, check, readDrive);
    raid.pools = readList<RaidPool>(section, "pools", pointer, check, readPool);
    raid.volumes = readList<RaidVolume>(section, "volumes", pointer, check, readVolume);
    readCounts(section, pointer, check, {{"controllers", {&raid.controllerCount, UINT16_MAX}}});
    return raid;
}

} // namespace orv3::sim

// The "features" and "raid" sections of a machine description. Every field
// of a RAID link record is described by its own name; a table of fields per
// record says where each goes and how wide it is, and the reader packs the
// record's bytes once, as the library will hand them out.
#include "machine_checks.h"

#include "orv3/raid_link.h"

#include <cstddef>
#include <cstring>
#include <set>
#include <span>

namespace orv3::sim {

namespace {

enum class FieldKind { Text, Unsigned, Signed };

struct RecordField {
    const char *name;
    size_t offset;
    FieldKind kind;
    size_t width; // bytes
};

#define ORV3_TEXT_FIELD(name, T, member)                                                                               \
    RecordField                                                                                                        \
    {                                                                                                                  \
        name, offsetof(T, member), FieldKind::Text, sizeof(T::member)                                                  \
    }
#define ORV3_UNSIGNED_FIELD(name, T, member)                                                                           \
    RecordField                                                                                                        \
    {                                                                                                                  \
        name, offsetof(T, member), FieldKind::Unsigned, sizeof(T::member)                                              \
    }
#define ORV3_SIGNED_FIELD(name, T, member)                                                                             \
    RecordField                                                                                                        \
    {                                                                                                                  \
        name, offsetof(T, member), FieldKind::Signed, sizeof(T::member)                                                \
    }

using Hw = raid_link_ctrl_hw_t;
const RecordField kControllerFields[] = {
    ORV3_TEXT_FIELD("text0", Hw, text_0),
    ORV3_TEXT_FIELD("productName", Hw, product_name),
    ORV3_TEXT_FIELD("text162", Hw, text_162),
    ORV3_TEXT_FIELD("text195", Hw, text_195),
    ORV3_TEXT_FIELD("text212", Hw, text_212),
    ORV3_TEXT_FIELD("text245", Hw, text_245),
    ORV3_TEXT_FIELD("text278", Hw, text_278),
    ORV3_TEXT_FIELD("text295", Hw, text_295),
    ORV3_UNSIGNED_FIELD("pciId314", Hw, pci_id_314),
    ORV3_UNSIGNED_FIELD("pciId318", Hw, pci_id_318),
    ORV3_UNSIGNED_FIELD("slot", Hw, slot_number),
    ORV3_UNSIGNED_FIELD("byte321", Hw, byte_321),
    ORV3_UNSIGNED_FIELD("byte322", Hw, byte_322),
    ORV3_UNSIGNED_FIELD("byte323", Hw, byte_323),
    ORV3_UNSIGNED_FIELD("cacheModuleStatus", Hw, cache_module_status),
    ORV3_TEXT_FIELD("text584", Hw, text_584),
    ORV3_UNSIGNED_FIELD("cacheSizeMb", Hw, cache_size_mb),
    ORV3_TEXT_FIELD("text664", Hw, text_664),
    ORV3_UNSIGNED_FIELD("value801", Hw, value_801),
    ORV3_UNSIGNED_FIELD("zel", Hw, zel_flag),
    ORV3_UNSIGNED_FIELD("flag815", Hw, flag_815),
};

const RecordField kBatteryFields[] = {
    ORV3_UNSIGNED_FIELD("present", Hw, battery_present),
    ORV3_TEXT_FIELD("text325", Hw, battery_text_325),
    ORV3_TEXT_FIELD("text454", Hw, battery_text_454),
    ORV3_TEXT_FIELD("text471", Hw, battery_text_471),
    ORV3_TEXT_FIELD("text504", Hw, battery_text_504),
    ORV3_TEXT_FIELD("text537", Hw, battery_text_537),
    ORV3_UNSIGNED_FIELD("type", Hw, battery_type),
    ORV3_UNSIGNED_FIELD("energyFlag", Hw, battery_energy_flag),
    ORV3_UNSIGNED_FIELD("energy", Hw, battery_energy),
    ORV3_UNSIGNED_FIELD("remaining", Hw, battery_remaining),
    ORV3_UNSIGNED_FIELD("full", Hw, battery_full),
    ORV3_UNSIGNED_FIELD("voltage568", Hw, battery_voltage_568),
    ORV3_UNSIGNED_FIELD("voltage570", Hw, battery_voltage_570),
    ORV3_SIGNED_FIELD("current", Hw, battery_current),
    ORV3_UNSIGNED_FIELD("temperature", Hw, battery_temperature),
    ORV3_UNSIGNED_FIELD("status", Hw, battery_status),
};

using Fw = raid_link_fw_component_t;
const RecordField kFirmwareFields[] = {
    ORV3_TEXT_FIELD("text0", Fw, text_0),     ORV3_TEXT_FIELD("name", Fw, name),
    ORV3_TEXT_FIELD("text98", Fw, text_98),   ORV3_TEXT_FIELD("text131", Fw, text_131),
    ORV3_TEXT_FIELD("text260", Fw, text_260),
};

using Disk = raid_link_disk_hw_t;
const RecordField kDriveFields[] = {
    ORV3_TEXT_FIELD("text33", Disk, text_33),
    ORV3_TEXT_FIELD("text162", Disk, text_162),
    ORV3_TEXT_FIELD("text195", Disk, text_195),
    ORV3_TEXT_FIELD("text212", Disk, text_212),
    ORV3_TEXT_FIELD("text245", Disk, text_245),
    ORV3_TEXT_FIELD("text311", Disk, text_311),
    ORV3_TEXT_FIELD("text344", Disk, text_344),
    ORV3_UNSIGNED_FIELD("flags", Disk, flags),
    ORV3_UNSIGNED_FIELD("number411", Disk, number_411),
    ORV3_UNSIGNED_FIELD("id413", Disk, id_413),
    ORV3_UNSIGNED_FIELD("speed", Disk, speed),
    ORV3_UNSIGNED_FIELD("blockSize", Disk, block_size),
    ORV3_UNSIGNED_FIELD("blockCount", Disk, block_count),
    ORV3_UNSIGNED_FIELD("driveNumber", Disk, drive_number),
    ORV3_UNSIGNED_FIELD("mediaType", Disk, media_type),
    ORV3_UNSIGNED_FIELD("interfaceType", Disk, interface_type),
    ORV3_UNSIGNED_FIELD("temperature", Disk, temperature),
    ORV3_UNSIGNED_FIELD("state", Disk, state),
    ORV3_UNSIGNED_FIELD("health", Disk, health),
    ORV3_UNSIGNED_FIELD("zel", Disk, zel_flag),
    ORV3_UNSIGNED_FIELD("foreign", Disk, foreign),
    ORV3_UNSIGNED_FIELD("dedicatedSpare", Disk, dedicated_spare),
    ORV3_UNSIGNED_FIELD("readyToRemove", Disk, ready_to_remove),
    ORV3_SIGNED_FIELD("rotationSpeed", Disk, rotation_speed),
    ORV3_UNSIGNED_FIELD("counter539", Disk, counter_539),
    ORV3_UNSIGNED_FIELD("counter543", Disk, counter_543),
    ORV3_UNSIGNED_FIELD("counter547", Disk, counter_547),
    ORV3_UNSIGNED_FIELD("remainingLife", Disk, remaining_life),
};

using Pool = raid_link_array_t;
const RecordField kPoolFields[] = {
    ORV3_UNSIGNED_FIELD("number", Pool, pool_number),
    ORV3_UNSIGNED_FIELD("totalSize", Pool, total_size),
    ORV3_UNSIGNED_FIELD("freeSize", Pool, free_size),
};

using Volume = raid_link_volume_t;
const RecordField kVolumeFields[] = {
    ORV3_TEXT_FIELD("name", Volume, name),
    ORV3_UNSIGNED_FIELD("number", Volume, volume_number),
    ORV3_UNSIGNED_FIELD("stripeSize", Volume, stripe_size),
    ORV3_UNSIGNED_FIELD("bootable", Volume, bootable),
    ORV3_UNSIGNED_FIELD("blockSize", Volume, block_size),
    ORV3_UNSIGNED_FIELD("blockCount", Volume, block_count),
    ORV3_UNSIGNED_FIELD("state", Volume, state),
};

std::string knownNames(std::span<const RecordField> fields, std::initializer_list<const char *> others)
{
    std::string names;
    for (const RecordField &field : fields)
        names += (names.empty() ? "" : ", ") + std::string(field.name);
    for (const char *other : others)
        names += std::string(", ") + other;
    return names;
}

void putLittleEndian(RecordImage &image, size_t offset, uint64_t value, size_t width)
{
    for (size_t i = 0; i < width; ++i)
        image[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

// A text shorter than its field is NUL-padded; one of the field's width or
// longer fills the field, cut to it, without a terminator.
void packField(const RecordField &field, const json &value, const std::string &pointer, const Checker &check,
               RecordImage &image)
{
    switch (field.kind) {
    case FieldKind::Text: {
        check.expect(value.is_string(), pointer, "must be a text");
        const std::string &text = value.get_ref<const std::string &>();
        std::fill_n(image.begin() + static_cast<ptrdiff_t>(field.offset), field.width, 0);
        memcpy(image.data() + field.offset, text.data(), std::min(text.size(), field.width));
        return;
    }
    case FieldKind::Unsigned: {
        const uint64_t max = field.width == 8 ? UINT64_MAX : (uint64_t{1} << (8 * field.width)) - 1;
        putLittleEndian(image, field.offset, unsignedUpTo(value, pointer, max, check), field.width);
        return;
    }
    case FieldKind::Signed: {
        const int64_t max = (int64_t{1} << (8 * field.width - 1)) - 1;
        check.expect(value.is_number_integer(), pointer, "must be an integer");
        const bool fits = value.is_number_unsigned() ? value.get<uint64_t>() <= static_cast<uint64_t>(max)
                                                     : value.get<int64_t>() >= -max - 1 && value.get<int64_t>() <= max;
        check.expect(fits, pointer, "must be between " + std::to_string(-max - 1) + " and " + std::to_string(max));
        putLittleEndian(image, field.offset, static_cast<uint64_t>(value.get<int64_t>()), field.width);
        return;
    }
    }
}

// Packs the fields of `entry` that `fields` names; names in `own` are the
// caller's, names starting with "_" comments, any other name an error.
void packRecord(const json &entry, const std::string &pointer, const Checker &check,
                std::span<const RecordField> fields, std::initializer_list<const char *> own, const char *what,
                RecordImage &image)
{
    check.expect(entry.is_object(), pointer, std::string("a ") + what + " must be an object");
    if (entry.contains("raw")) {
        std::vector<uint8_t> raw = hexBytes(entry["raw"], pointer + "/raw", check);
        check.expect(raw.size() <= image.size(), pointer + "/raw",
                     "a raw record holds at most " + std::to_string(image.size()) + " bytes");
        std::copy(raw.begin(), raw.end(), image.begin());
    }
    for (const auto &[name, value] : entry.items()) {
        const std::string field = pointer + "/" + escapeToken(name);
        bool taken = name == "raw" || name.rfind("_", 0) == 0;
        for (const char *ownName : own)
            taken = taken || name == ownName;
        if (taken)
            continue;
        const RecordField *known = nullptr;
        for (const RecordField &candidate : fields)
            if (name == candidate.name)
                known = &candidate;
        if (!known)
            check.fail(field, std::string("unknown ") + what + " field (known: " + knownNames(fields, own) + ", raw)");
        packField(*known, value, field, check, image);
    }
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

// The "adapters" section of a machine description: the PCI adapters of the
// inventory database, each with its functions, and each function with its
// PCI, VPD and miscellaneous records, firmware, network ports and GPU chips.
#include "machine_inventory.h"

#include <set>

namespace orv3::sim {

namespace {

using Adapter = inventory_db_adapter_t;
const PackedField kAdapterFields[] = {
    ORV3_PACK_UNSIGNED("key", Adapter, adapterKey),
    ORV3_PACK_UNSIGNED("number", Adapter, adapterNumber),
    ORV3_PACK_UNSIGNED("slot", Adapter, slotNo),
    ORV3_PACK_UNSIGNED("location", Adapter, location),
    ORV3_PACK_UNSIGNED("oobSupported", Adapter, oobSupported),
    ORV3_PACK_TEXT("cardInterface", Adapter, cardInterface),
    ORV3_PACK_TEXT("productName", Adapter, adapterProdName),
};

using Pci = inventory_db_pci_info_t;
const PackedField kPciFields[] = {
    ORV3_PACK_UNSIGNED("bus", Pci, bus),
    ORV3_PACK_UNSIGNED("device", Pci, device),
    ORV3_PACK_UNSIGNED("function", Pci, function),
    ORV3_PACK_UNSIGNED("vendorId", Pci, vendor_id),
    ORV3_PACK_UNSIGNED("deviceId", Pci, device_id),
    ORV3_PACK_UNSIGNED("revisionId", Pci, revision_id),
    ORV3_PACK_UNSIGNED("subsystemVendorId", Pci, subsystem_vendor_id),
    ORV3_PACK_UNSIGNED("subsystemDeviceId", Pci, subsystem_device_id),
    ORV3_PACK_TEXT("slotDesignation", Pci, slot_designation),
    ORV3_PACK_UNSIGNED("hotPlug", Pci, hot_plug),
    ORV3_PACK_UNSIGNED("type", Pci, func_type),
};

using Vpd = inventory_db_pci_vpd_t;
const PackedField kVpdFields[] = {
    ORV3_PACK_TEXT("uuid", Vpd, uuid),
    ORV3_PACK_TEXT("productName", Vpd, product_name),
    ORV3_PACK_TEXT("manufacturer", Vpd, manufacturer),
    ORV3_PACK_TEXT("serialNumber", Vpd, serial_number),
    ORV3_PACK_TEXT("partNumber", Vpd, part_number),
    ORV3_PACK_TEXT("model", Vpd, model),
    ORV3_PACK_TEXT("fruNumber", Vpd, fru_number),
};

using Misc = inventory_db_pci_misc_t;
const PackedField kMiscFields[] = {
    ORV3_PACK_TEXT("fodUid", Misc, fod_uid),
    ORV3_PACK_UNSIGNED("maxDataWidth", Misc, max_data_width),
    ORV3_PACK_TEXT("packageType", Misc, package_type),
};

using Firmware = inventory_db_firmware_t;
const PackedField kFirmwareFields[] = {
    ORV3_PACK_TEXT("name", Firmware, name),
    ORV3_PACK_TEXT("version", Firmware, version),
    ORV3_PACK_TEXT("description", Firmware, description),
    ORV3_PACK_TEXT("releaseDate", Firmware, release_date),
    ORV3_PACK_TEXT("classification", Firmware, classification),
    ORV3_PACK_TEXT("manufacturer", Firmware, manufacturer),
    ORV3_PACK_TEXT("softwareId", Firmware, software_id),
};

using Network = inventory_db_network_info_t;
const PackedField kNetworkFields[] = {
    ORV3_PACK_UNSIGNED("maxPortCount", Network, max_port_count),
};

using Physical = inventory_db_physical_port_t;
const PackedField kPhysicalPortFields[] = {
    ORV3_PACK_TEXT("burnedInAddress", Physical, burned_in_address),
    ORV3_PACK_TEXT("connector", Physical, connector),
    ORV3_PACK_UNSIGNED("linkStatus", Physical, link_status),
    ORV3_PACK_UNSIGNED("linkSpeed", Physical, link_speed),
    ORV3_PACK_UNSIGNED("logicalPortCount", Physical, logical_port_count),
};

using Logical = inventory_db_logical_port_t;
const PackedField kLogicalPortFields[] = {
    ORV3_PACK_UNSIGNED("maxDataSize", Logical, max_data_size),
    ORV3_PACK_TEXT("permanentAddress", Logical, permanent_address),
    ORV3_PACK_TEXT("networkAddress", Logical, network_address),
    ORV3_PACK_UNSIGNED("physicalPortNumber", Logical, physical_port_number),
    ORV3_PACK_UNSIGNED("portNumber", Logical, port_number),
    ORV3_PACK_UNSIGNED("maxSpeed", Logical, max_speed),
    ORV3_PACK_UNSIGNED("ethernet", Logical, protocol_ethernet),
    ORV3_PACK_UNSIGNED("fcoeFc", Logical, protocol_fcoe_fc),
    ORV3_PACK_UNSIGNED("iscsi", Logical, protocol_iscsi),
    ORV3_PACK_TEXT("fcoePermanentAddress", Logical, fcoe_permanent_address),
    ORV3_PACK_TEXT("fcoeNetworkAddress", Logical, fcoe_network_address),
    ORV3_PACK_UNSIGNED("targetRelativePortNumber", Logical, target_relative_port),
    ORV3_PACK_TEXT("linkTechnology", Logical, link_technology),
    ORV3_PACK_TEXT("vnicMode", Logical, vnic_mode),
    ORV3_PACK_TEXT("protocolType", Logical, protocol_type),
    ORV3_PACK_TEXT("connectionType", Logical, connection_type),
    ORV3_PACK_TEXT("role", Logical, role),
};

using Gpu = inventory_db_gpu_device_t;
const PackedField kGpuFields[] = {
    ORV3_PACK_TEXT("videoMemoryType", Gpu, video_memory_type),
    ORV3_PACK_TEXT("videoMemorySize", Gpu, video_memory_size),
};

using Chip = inventory_db_gpu_chip_t;
const PackedField kChipFields[] = {
    ORV3_PACK_TEXT("name", Chip, chip_name),
    ORV3_PACK_TEXT("manufacturer", Chip, manufacturer),
    ORV3_PACK_TEXT("model", Chip, model),
    ORV3_PACK_TEXT("partNumber", Chip, part_number),
    ORV3_PACK_TEXT("fruNumber", Chip, fru_number),
    ORV3_PACK_TEXT("serialNumber", Chip, serial_number),
    ORV3_PACK_TEXT("family", Chip, family),
    ORV3_PACK_TEXT("uniqueId", Chip, unique_id),
    ORV3_PACK_TEXT("formFactor", Chip, form_factor),
    ORV3_PACK_UNSIGNED("number", Chip, chip_number),
    ORV3_PACK_UNSIGNED("coresEnabled", Chip, cores_enabled),
    ORV3_PACK_UNSIGNED("extBusClockSpeed", Chip, ext_bus_clock),
    ORV3_PACK_UNSIGNED("maxClockSpeed", Chip, max_clock),
    ORV3_PACK_UNSIGNED("addressWidth", Chip, address_width),
    ORV3_PACK_UNSIGNED("dataWidth", Chip, data_width),
};

// A record described by one object of fields.
template <class Record>
Record packed(const json &entry, const std::string &pointer, const Checker &check, std::span<const PackedField> fields,
              const char *what, Record record = {})
{
    packObject(entry, pointer, check, fields, {}, what, kInventoryTexts, record);
    return record;
}

// The logical ports of physical port `position` carry that number unless
// they say otherwise, as the database numbers them.
NetworkPhysicalPort readPhysicalPort(const json &entry, const std::string &pointer, const Checker &check,
                                     uint16_t position)
{
    NetworkPhysicalPort port;
    packObject(entry, pointer, check, kPhysicalPortFields, {"logicalPorts"}, "physical port", kInventoryTexts,
               port.record);
    if (entry.contains("logicalPorts")) {
        port.logicalPorts = readArray<inventory_db_logical_port_t>(
            entry["logicalPorts"], pointer + "/logicalPorts", check, "logical ports",
            [&](const json &logical, const std::string &at) {
                Logical record{};
                record.physical_port_number = position;
                return packed(logical, at, check, kLogicalPortFields, "logical port", record);
            });
        check.expect(port.logicalPorts.size() <= UINT16_MAX, pointer + "/logicalPorts",
                     "a physical port counts at most 65535 logical ports");
    }
    // The count the record tells is the list's length unless given.
    if (!entry.contains("logicalPortCount"))
        port.record.logical_port_count = static_cast<uint16_t>(port.logicalPorts.size());
    return port;
}

PciFunction readFunction(const json &entry, const std::string &pointer, const Checker &check,
                         std::set<uint32_t> &seenKeys)
{
    check.expect(entry.is_object(), pointer, "a function must be an object");
    PciFunction function;
    auto at = [&pointer](const char *name) { return pointer + "/" + name; };
    if (entry.contains("key"))
        function.key = wordField(entry["key"], at("key"), check);
    check.expect(seenKeys.insert(function.key).second, entry.contains("key") ? at("key") : pointer,
                 "another function has the key " + std::to_string(function.key));
    if (entry.contains("type"))
        function.type = wordField(entry["type"], at("type"), check);
    // The generic record tells the function's type too, unless given apart.
    function.pci.func_type = function.type;
    for (const auto &[name, value] : entry.items()) {
        const std::string field = pointer + "/" + escapeToken(name);
        if (name == "key" || name == "type" || name.rfind("_", 0) == 0)
            continue;
        if (name == "pci") {
            function.pci = packed(value, field, check, kPciFields, "pci", function.pci);
        } else if (name == "vpd") {
            function.vpd = packed<Vpd>(value, field, check, kVpdFields, "vpd");
        } else if (name == "misc") {
            function.misc = packed<Misc>(value, field, check, kMiscFields, "misc");
        } else if (name == "network") {
            function.network = packed<Network>(value, field, check, kNetworkFields, "network");
        } else if (name == "gpu") {
            function.gpu = packed<Gpu>(value, field, check, kGpuFields, "gpu");
        } else if (name == "firmware") {
            function.firmware = readArray<Firmware>(
                value, field, check, "firmware components", [&](const json &component, const std::string &componentAt) {
                    return packed<Firmware>(component, componentAt, check, kFirmwareFields, "firmware component");
                });
        } else if (name == "chips") {
            function.chips =
                readArray<Chip>(value, field, check, "GPU chips", [&](const json &chip, const std::string &chipAt) {
                    return packed<Chip>(chip, chipAt, check, kChipFields, "chip");
                });
        } else if (name == "physicalPorts") {
            uint16_t position = 0;
            function.physicalPorts = readArray<NetworkPhysicalPort>(
                value, field, check, "physical ports", [&](const json &port, const std::string &portAt) {
                    check.expect(position < UINT16_MAX, portAt, "a function has at most 65535 physical ports");
                    return readPhysicalPort(port, portAt, check, ++position);
                });
        } else {
            check.fail(field, "unknown function field (known: key, type, pci, vpd, misc, firmware, network, "
                              "physicalPorts, gpu, chips)");
        }
    }
    return function;
}

PciAdapter readAdapter(const json &entry, const std::string &pointer, const Checker &check,
                       std::set<uint32_t> &seenAdapters, std::set<uint32_t> &seenFunctions)
{
    PciAdapter adapter;
    packObject(entry, pointer, check, kAdapterFields, {"functions"}, "adapter", kInventoryTexts, adapter.record);
    const uint32_t key = adapter.record.adapterKey;
    check.expect(seenAdapters.insert(key).second, entry.contains("key") ? pointer + "/key" : pointer,
                 "another adapter has the key " + std::to_string(key));
    if (entry.contains("functions"))
        adapter.functions = readArray<PciFunction>(entry["functions"], pointer + "/functions", check, "functions",
                                                   [&](const json &function, const std::string &at) {
                                                       return readFunction(function, at, check, seenFunctions);
                                                   });
    return adapter;
}

} // namespace

PciInventory readAdapters(const json &section, const std::string &pointer, const Checker &check)
{
    // Keys name adapters and functions in the database's calls, so each
    // names one: function keys over all adapters.
    std::set<uint32_t> seenAdapters, seenFunctions;
    PciInventory inventory;
    inventory.adapters =
        readArray<PciAdapter>(section, pointer, check, "adapters", [&](const json &entry, const std::string &at) {
            return readAdapter(entry, at, check, seenAdapters, seenFunctions);
        });
    return inventory;
}

} // namespace orv3::sim

// The simulated inventory database: every described field lands at its
// offset of the record, little-endian; a text of its field's width fills it
// unterminated and a longer one is refused with its line; lists are handed
// out in blocks the caller frees, except the persistent-memory ids, which
// stay the database's; unknown keys, missing outputs and faults write
// nothing. Also the persistent-memory state texts.
#include "machine.h"
#include "unit_machine.h"

#include "orv3/inventory_db.h"
#include "orv3/pmem_text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using nlohmann::json;
using orv3::test::machineFileError;
using orv3::test::ServedMachine;

std::string machineWith(const json &adapters, const json &memory = json::array(), const json &faults = json::array())
{
    json machine = json::parse(orv3::test::sampleMachineText());
    machine["adapters"] = adapters;
    machine["persistentMemory"] = memory;
    machine["faults"] = faults;
    return machine.dump(2);
}

json faultOf(const std::string &call, const std::string &key, int result = 1)
{
    return {{"call", call}, {"key", key}, {"result", result}};
}

uint64_t littleEndianAt(const void *record, size_t offset, size_t width)
{
    const auto *bytes = static_cast<const uint8_t *>(record);
    uint64_t value = 0;
    for (size_t i = 0; i < width; ++i)
        value |= uint64_t{bytes[offset + i]} << (8 * i);
    return value;
}

std::string bytesAt(const void *record, size_t offset, size_t width)
{
    return std::string(static_cast<const char *>(record) + offset, width);
}

// A text as it lands in a field: the text, then NULs to the field's end.
std::string field(const std::string &text, size_t width)
{
    return text + std::string(width - text.size(), '\0');
}

template <class Record> Record untouched()
{
    Record record;
    memset(&record, 0xcc, sizeof record);
    return record;
}

template <class Record> bool isUntouched(const Record &record)
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(&record);
    for (size_t i = 0; i < sizeof record; ++i)
        if (bytes[i] != 0xcc)
            return false;
    return true;
}

json networkFunction(uint32_t key)
{
    json logical1 = {{"maxDataSize", 9000},
                     {"permanentAddress", "0A:1B:2C:3D:4E:5F"},
                     {"networkAddress", "0A:1B:2C:3D:4E:60"},
                     {"portNumber", 7},
                     {"maxSpeed", 25000000000ull},
                     {"ethernet", 1},
                     {"fcoeFc", 2},
                     {"iscsi", 3},
                     {"fcoePermanentAddress", "20:00:0A:1B"},
                     {"fcoeNetworkAddress", "0E:FC:00:01"},
                     {"targetRelativePortNumber", 0x01020304},
                     {"linkTechnology", "Ethernet"},
                     {"vnicMode", "None"},
                     {"protocolType", "FCoE"},
                     {"connectionType", "SFP28"},
                     {"role", "Primary"}};
    json logical2 = {{"portNumber", 8}, {"physicalPortNumber", 9}};
    json function = {{"key", key}, {"type", 1}};
    function["pci"] = {{"bus", 0x1a},
                       {"device", 2},
                       {"function", 3},
                       {"vendorId", 0x14e4},
                       {"deviceId", 0x16d7},
                       {"revisionId", 1},
                       {"subsystemVendorId", 0x17aa},
                       {"subsystemDeviceId", 0x4025},
                       {"slotDesignation", " Slot 2 "},
                       {"hotPlug", 1}};
    function["vpd"] = {{"uuid", "UUID-1"},       {"productName", "NIC"}, {"manufacturer", "Broadcom"},
                       {"serialNumber", "SN-1"}, {"partNumber", "PN-1"}, {"model", "BCM57414"},
                       {"fruNumber", "FRU-1"}};
    function["misc"] = {{"fodUid", "FOD-9"}, {"maxDataWidth", 0x0810}, {"packageType", "PCIe card"}};
    function["network"] = {{"maxPortCount", 0x0102}};
    function["firmware"] = json::array({{{"name", "Boot Code"},
                                         {"version", "227.0.115.0"},
                                         {"description", "Boot code"},
                                         {"releaseDate", "2025-06-30"},
                                         {"classification", "Firmware"},
                                         {"manufacturer", "Broadcom"},
                                         {"softwareId", "BC-57414"}},
                                        {{"name", "NCSI"}}});
    function["physicalPorts"] = json::array();
    function["physicalPorts"].push_back({{"burnedInAddress", "0A:1B:2C:3D:4E:5F"},
                                         {"connector", "SFP28"},
                                         {"linkStatus", 200},
                                         {"linkSpeed", 25000},
                                         {"logicalPorts", json::array({logical1, logical2})}});
    function["physicalPorts"].push_back({{"linkStatus", 2}, {"logicalPortCount", 5}});
    return function;
}

json gpuFunction(uint32_t key)
{
    json function = {{"key", key}, {"type", 4}};
    function["gpu"] = {{"videoMemoryType", "GDDR6"}, {"videoMemorySize", " 48 GB "}};
    function["chips"] = json::array({{{"name", "AD102"},
                                      {"manufacturer", "NVIDIA"},
                                      {"model", "L40S"},
                                      {"partNumber", "900-2G133"},
                                      {"fruNumber", "03KH123"},
                                      {"serialNumber", "1654220"},
                                      {"family", "Ada Lovelace"},
                                      {"uniqueId", "GPU-0"},
                                      {"formFactor", "Dual slot"},
                                      {"number", 1},
                                      {"coresEnabled", 142},
                                      {"extBusClockSpeed", 100},
                                      {"maxClockSpeed", 2520},
                                      {"addressWidth", 64},
                                      {"dataWidth", 384}}});
    return function;
}

json adapterWith(uint32_t key, json functions)
{
    return {{"key", key},
            {"number", 0x0203},
            {"slot", 0x0405},
            {"location", 2},
            {"oobSupported", 7},
            {"cardInterface", " PCIe 4.0 x8 "},
            {"productName", "ThinkNIC 25GbE"},
            {"functions", std::move(functions)}};
}

// One adapter (key 1) with a network function (11) and a GPU (12), and one
// adapter (key 2) without functions.
json twoAdapters()
{
    return json::array(
        {adapterWith(1, json::array({networkFunction(11), gpuFunction(12)})), {{"key", 2}, {"productName", "Empty"}}});
}

// ---- adapters and functions ----------------------------------------------------------

TEST(SimInventoryDb, TheAdapterListCopiesEachAdapterInOrderIntoABlockTheCallerFrees)
{
    ServedMachine served(machineWith(twoAdapters()));
    uint32_t count = 0;
    inventory_db_adapter_t *adapters = nullptr;
    ASSERT_EQ(orvdb_get_pci_adapter_list(&count, &adapters), ORV_DB_STATUS_SUCCESS);
    ASSERT_EQ(count, 2u);
    const inventory_db_adapter_t *first = &adapters[0];
    EXPECT_EQ(littleEndianAt(first, 0, 4), 1u);
    EXPECT_EQ(littleEndianAt(first, 4, 2), 0x0203u);
    EXPECT_EQ(littleEndianAt(first, 6, 2), 0x0405u);
    EXPECT_EQ(bytesAt(first, 10, 65), field(" PCIe 4.0 x8 ", 65)) << "blanks kept: the caller trims";
    EXPECT_EQ(bytesAt(first, 75, 129), field("ThinkNIC 25GbE", 129));
    EXPECT_EQ(littleEndianAt(first, 204, 1), 7u) << "an invalid support byte passes through";
    EXPECT_EQ(littleEndianAt(first, 205, 1), 2u) << "an unknown location passes through";
    EXPECT_EQ(littleEndianAt(&adapters[1], 0, 4), 2u);
    EXPECT_EQ(littleEndianAt(&adapters[1], 204, 2), 0u) << "fields not described are zero";
    free(adapters);
}

TEST(SimInventoryDb, TheFunctionKeyListNamesAnAdaptersFunctionsInOrder)
{
    ServedMachine served(machineWith(twoAdapters()));
    inventory_db_id_list_t keys = {99, nullptr};
    ASSERT_EQ(orvdb_get_pci_funkey_list(1, &keys), ORV_DB_STATUS_SUCCESS);
    ASSERT_EQ(keys.count, 2u);
    EXPECT_EQ(keys.ids[0], 11u);
    EXPECT_EQ(keys.ids[1], 12u);
    free(keys.ids);

    inventory_db_id_list_t none = {99, reinterpret_cast<uint32_t *>(0x1)};
    ASSERT_EQ(orvdb_get_pci_funkey_list(2, &none), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(none.count, 0u);
    EXPECT_EQ(none.ids, nullptr) << "no block for no functions";
}

TEST(SimInventoryDb, NoAdaptersGiveACountOfZeroAndNoBlock)
{
    ServedMachine served(machineWith(json::array()));
    uint32_t count = 99;
    inventory_db_adapter_t *adapters = reinterpret_cast<inventory_db_adapter_t *>(0x1);
    ASSERT_EQ(orvdb_get_pci_adapter_list(&count, &adapters), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(adapters, nullptr);
}

TEST(SimInventoryDb, TheGenericRecordHoldsEveryPciFieldAndTheFunctionsType)
{
    json adapters = twoAdapters();
    adapters[0]["functions"][1]["pci"] = {{"type", 12}};
    ServedMachine served(machineWith(adapters));
    auto pci = untouched<inventory_db_pci_info_t>();
    ASSERT_EQ(orvdb_get_pci_generic_info(11, &pci), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&pci, 9, 3), 0x03021au) << "bus, device, function";
    EXPECT_EQ(littleEndianAt(&pci, 12, 2), 0x14e4u);
    EXPECT_EQ(littleEndianAt(&pci, 14, 2), 0x16d7u);
    EXPECT_EQ(littleEndianAt(&pci, 20, 1), 1u);
    EXPECT_EQ(littleEndianAt(&pci, 22, 2), 0x17aau);
    EXPECT_EQ(littleEndianAt(&pci, 24, 2), 0x4025u);
    EXPECT_EQ(bytesAt(&pci, 29, 65), field(" Slot 2 ", 65));
    EXPECT_EQ(littleEndianAt(&pci, 96, 1), 1u);
    EXPECT_EQ(littleEndianAt(&pci, 100, 4), 1u) << "the function's type unless the record gives its own";
    EXPECT_EQ(bytesAt(&pci, 0, 9), std::string(9, '\0')) << "bytes not described are zero";

    ASSERT_EQ(orvdb_get_pci_generic_info(12, &pci), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&pci, 100, 4), 12u) << "a code past the known ones passes through";
    uint32_t type = 0;
    ASSERT_EQ(orvdb_get_pci_function_type(12, &type), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(type, 4u) << "the type query answers the function's own type";
}

TEST(SimInventoryDb, AFunctionWithoutATypeIsOther)
{
    ServedMachine served(machineWith(json::array({adapterWith(1, json::array({{{"key", 5}}}))})));
    uint32_t type = 0;
    ASSERT_EQ(orvdb_get_pci_function_type(5, &type), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(type, static_cast<uint32_t>(INVENTORY_DB_FUNC_OTHER));
    auto pci = untouched<inventory_db_pci_info_t>();
    ASSERT_EQ(orvdb_get_pci_generic_info(5, &pci), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&pci, 100, 4), 7u);
}

TEST(SimInventoryDb, VpdMiscNetworkAndGpuRecordsHoldTheirFields)
{
    ServedMachine served(machineWith(twoAdapters()));
    auto vpd = untouched<inventory_db_pci_vpd_t>();
    ASSERT_EQ(orvdb_get_pci_vpd_info(11, &vpd), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(bytesAt(&vpd, 0, 33), field("UUID-1", 33));
    EXPECT_EQ(bytesAt(&vpd, 33, 129), field("NIC", 129));
    EXPECT_EQ(bytesAt(&vpd, 162, 33), field("Broadcom", 33));
    EXPECT_EQ(bytesAt(&vpd, 195, 17), field("SN-1", 17));
    EXPECT_EQ(bytesAt(&vpd, 212, 17), field("PN-1", 17));
    EXPECT_EQ(bytesAt(&vpd, 229, 33), field("BCM57414", 33));
    EXPECT_EQ(bytesAt(&vpd, 262, 17), field("FRU-1", 17));

    auto misc = untouched<inventory_db_pci_misc_t>();
    ASSERT_EQ(orvdb_get_pci_misc_info(11, &misc), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(bytesAt(&misc, 0, 33), field("FOD-9", 33));
    EXPECT_EQ(littleEndianAt(&misc, 33, 1), 0u);
    EXPECT_EQ(littleEndianAt(&misc, 34, 2), 0x0810u);
    EXPECT_EQ(bytesAt(&misc, 105, 65), field("PCIe card", 65));

    auto network = untouched<inventory_db_network_info_t>();
    ASSERT_EQ(orvdb_get_network_info(11, &network), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&network, 0, 4), 0x01020000u) << "the maximum port count in the upper half";

    auto gpu = untouched<inventory_db_gpu_device_t>();
    ASSERT_EQ(orvdb_get_gpu_device_info(12, &gpu), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(bytesAt(&gpu, 45, 65), field("GDDR6", 65));
    EXPECT_EQ(bytesAt(&gpu, 110, 65), field(" 48 GB ", 65));

    auto empty = untouched<inventory_db_gpu_device_t>();
    ASSERT_EQ(orvdb_get_gpu_device_info(11, &empty), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(bytesAt(&empty, 0, sizeof empty), std::string(sizeof empty, '\0'))
        << "a part the description leaves out reads as zeros";
}

TEST(SimInventoryDb, TheFirmwareListHoldsEachComponentsTexts)
{
    ServedMachine served(machineWith(twoAdapters()));
    inventory_db_firmware_list_t list = {};
    ASSERT_EQ(orvdb_get_pci_firmware_list(11, &list), ORV_DB_STATUS_SUCCESS);
    ASSERT_EQ(list.count, 2u);
    const inventory_db_firmware_t *boot = &list.firmware[0];
    EXPECT_EQ(bytesAt(boot, 0, 33), field("Boot Code", 33));
    EXPECT_EQ(bytesAt(boot, 33, 33), field("227.0.115.0", 33));
    EXPECT_EQ(bytesAt(boot, 66, 129), field("Boot code", 129));
    EXPECT_EQ(bytesAt(boot, 195, 19), field("2025-06-30", 19));
    EXPECT_EQ(bytesAt(boot, 214, 65), field("Firmware", 65));
    EXPECT_EQ(bytesAt(boot, 279, 33), field("Broadcom", 33));
    EXPECT_EQ(bytesAt(boot, 312, 18), field("BC-57414", 18));
    EXPECT_EQ(bytesAt(&list.firmware[1], 0, 5), field("NCSI", 5));
    free(list.firmware);

    inventory_db_firmware_list_t none = {7, nullptr};
    ASSERT_EQ(orvdb_get_pci_firmware_list(12, &none), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(none.count, 0u);
    EXPECT_EQ(none.firmware, nullptr);
}

TEST(SimInventoryDb, PhysicalPortsCountTheirLogicalPortsUnlessToldOtherwise)
{
    ServedMachine served(machineWith(twoAdapters()));
    inventory_db_physical_port_list_t list = {};
    ASSERT_EQ(orvdb_get_network_physical_port_list(11, &list), ORV_DB_STATUS_SUCCESS);
    ASSERT_EQ(list.count, 2u);
    const inventory_db_physical_port_t *port = &list.ports[0];
    EXPECT_EQ(littleEndianAt(port, 4, 2), 2u) << "the listed logical ports";
    EXPECT_EQ(bytesAt(port, 6, 65), field("0A:1B:2C:3D:4E:5F", 65));
    EXPECT_EQ(bytesAt(port, 71, 65), field("SFP28", 65));
    EXPECT_EQ(littleEndianAt(port, 136, 4), 200u) << "an undocumented link status passes through";
    EXPECT_EQ(littleEndianAt(port, 140, 4), 25000u);
    EXPECT_EQ(littleEndianAt(&list.ports[1], 4, 2), 5u) << "a count told apart from the list";
    EXPECT_EQ(littleEndianAt(&list.ports[1], 136, 4), 2u);
    free(list.ports);
}

TEST(SimInventoryDb, LogicalPortsAreAskedForByThePhysicalPortsPosition)
{
    ServedMachine served(machineWith(twoAdapters()));
    inventory_db_logical_port_list_t list = {};
    ASSERT_EQ(orvdb_get_network_logical_port_list2(11, 1, &list), ORV_DB_STATUS_SUCCESS);
    ASSERT_EQ(list.count, 2u);
    const inventory_db_logical_port_t *port = &list.ports[0];
    EXPECT_EQ(littleEndianAt(port, 0, 4), 9000u);
    EXPECT_EQ(bytesAt(port, 4, 65), field("0A:1B:2C:3D:4E:5F", 65));
    EXPECT_EQ(bytesAt(port, 69, 65), field("0A:1B:2C:3D:4E:60", 65));
    EXPECT_EQ(littleEndianAt(port, 134, 2), 1u) << "its physical port's position unless told";
    EXPECT_EQ(littleEndianAt(port, 136, 2), 7u);
    EXPECT_EQ(littleEndianAt(port, 144, 8), 25000000000ull);
    EXPECT_EQ(littleEndianAt(port, 154, 3), 0x030201u) << "Ethernet, FCoE/FC and iSCSI flags";
    EXPECT_EQ(bytesAt(port, 157, 17), field("20:00:0A:1B", 17));
    EXPECT_EQ(bytesAt(port, 174, 17), field("0E:FC:00:01", 17));
    EXPECT_EQ(littleEndianAt(port, 196, 4), 0x01020304u);
    EXPECT_EQ(bytesAt(port, 200, 65), field("Ethernet", 65));
    EXPECT_EQ(bytesAt(port, 265, 65), field("None", 65));
    EXPECT_EQ(bytesAt(port, 330, 65), field("FCoE", 65));
    EXPECT_EQ(bytesAt(port, 395, 65), field("SFP28", 65));
    EXPECT_EQ(bytesAt(port, 460, 65), field("Primary", 65));
    EXPECT_EQ(littleEndianAt(&list.ports[1], 134, 2), 9u) << "a number told apart";
    EXPECT_EQ(littleEndianAt(&list.ports[1], 136, 2), 8u);
    free(list.ports);

    inventory_db_logical_port_list_t none = {7, nullptr};
    ASSERT_EQ(orvdb_get_network_logical_port_list2(11, 2, &none), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(none.count, 0u) << "physical port 2 lists no logical port, whatever count it tells";
    EXPECT_EQ(none.ports, nullptr);

    for (uint32_t missing : {0u, 3u}) {
        inventory_db_logical_port_list_t kept = {7, nullptr};
        EXPECT_EQ(orvdb_get_network_logical_port_list2(11, missing, &kept), ORV_DB_STATUS_FAIL) << missing;
        EXPECT_EQ(kept.count, 7u) << missing;
    }
}

TEST(SimInventoryDb, TheChipListHoldsEachChipsFields)
{
    ServedMachine served(machineWith(twoAdapters()));
    inventory_db_gpu_chip_list_t list = {};
    ASSERT_EQ(orvdb_get_gpu_chip_list(12, &list), ORV_DB_STATUS_SUCCESS);
    ASSERT_EQ(list.count, 1u);
    const inventory_db_gpu_chip_t *chip = &list.chips[0];
    EXPECT_EQ(bytesAt(chip, 0, 33), field("AD102", 33));
    EXPECT_EQ(bytesAt(chip, 33, 17), field("NVIDIA", 17));
    EXPECT_EQ(bytesAt(chip, 50, 17), field("L40S", 17));
    EXPECT_EQ(bytesAt(chip, 67, 17), field("900-2G133", 17));
    EXPECT_EQ(bytesAt(chip, 84, 17), field("03KH123", 17));
    EXPECT_EQ(bytesAt(chip, 101, 17), field("1654220", 17));
    EXPECT_EQ(bytesAt(chip, 118, 33), field("Ada Lovelace", 33));
    EXPECT_EQ(bytesAt(chip, 151, 17), field("GPU-0", 17));
    EXPECT_EQ(bytesAt(chip, 168, 65), field("Dual slot", 65));
    EXPECT_EQ(littleEndianAt(chip, 234, 1), 1u);
    EXPECT_EQ(littleEndianAt(chip, 235, 1), 142u);
    EXPECT_EQ(littleEndianAt(chip, 236, 4), 100u);
    EXPECT_EQ(littleEndianAt(chip, 240, 4), 2520u);
    EXPECT_EQ(littleEndianAt(chip, 244, 2), 64u);
    EXPECT_EQ(littleEndianAt(chip, 246, 2), 384u);
    free(list.chips);
}

TEST(SimInventoryDb, ATextAsLongAsItsFieldFillsItWithoutATerminator)
{
    json adapters = twoAdapters();
    adapters[0]["productName"] = std::string(129, 'N');
    adapters[0]["functions"][0]["vpd"]["serialNumber"] = std::string(17, 'S');
    ServedMachine served(machineWith(adapters));
    uint32_t count = 0;
    inventory_db_adapter_t *list = nullptr;
    ASSERT_EQ(orvdb_get_pci_adapter_list(&count, &list), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(bytesAt(&list[0], 75, 129), std::string(129, 'N'));
    EXPECT_EQ(littleEndianAt(&list[0], 204, 1), 7u) << "the next field untouched";
    free(list);
    auto vpd = untouched<inventory_db_pci_vpd_t>();
    ASSERT_EQ(orvdb_get_pci_vpd_info(11, &vpd), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(bytesAt(&vpd, 195, 18), std::string(17, 'S') + 'P') << "runs into the part number";
}

// ---- failures ------------------------------------------------------------------------

TEST(SimInventoryDb, AnUnknownKeyOrAMissingOutputFailsAndWritesNothing)
{
    ServedMachine served(machineWith(twoAdapters()));
    auto pci = untouched<inventory_db_pci_info_t>();
    EXPECT_EQ(orvdb_get_pci_generic_info(99, &pci), ORV_DB_STATUS_FAIL);
    EXPECT_TRUE(isUntouched(pci));
    auto vpd = untouched<inventory_db_pci_vpd_t>();
    EXPECT_EQ(orvdb_get_pci_vpd_info(99, &vpd), ORV_DB_STATUS_FAIL);
    EXPECT_TRUE(isUntouched(vpd));
    uint32_t type = 0xcccccccc;
    EXPECT_EQ(orvdb_get_pci_function_type(99, &type), ORV_DB_STATUS_FAIL);
    EXPECT_EQ(type, 0xccccccccu);
    inventory_db_id_list_t keys = {7, nullptr};
    EXPECT_EQ(orvdb_get_pci_funkey_list(99, &keys), ORV_DB_STATUS_FAIL);
    EXPECT_EQ(keys.count, 7u);
    inventory_db_gpu_chip_list_t chips = {7, nullptr};
    EXPECT_EQ(orvdb_get_gpu_chip_list(99, &chips), ORV_DB_STATUS_FAIL);
    EXPECT_EQ(chips.count, 7u);
    inventory_db_memory_t memory;
    memset(&memory, 0xcc, sizeof memory);
    EXPECT_EQ(orvdb_get_memory_by_id(&memory, 99), ORV_DB_STATUS_FAIL);
    EXPECT_TRUE(isUntouched(memory));

    uint32_t count = 0;
    inventory_db_adapter_t *adapters = nullptr;
    EXPECT_EQ(orvdb_get_pci_adapter_list(nullptr, &adapters), ORV_DB_STATUS_FAIL);
    EXPECT_EQ(orvdb_get_pci_adapter_list(&count, nullptr), ORV_DB_STATUS_FAIL);
    EXPECT_EQ(orvdb_get_pci_generic_info(11, nullptr), ORV_DB_STATUS_FAIL);
    EXPECT_EQ(orvdb_get_network_physical_port_list(11, nullptr), ORV_DB_STATUS_FAIL);
    EXPECT_EQ(orvdb_get_network_logical_port_list2(11, 1, nullptr), ORV_DB_STATUS_FAIL);
    EXPECT_EQ(orvdb_get_AEP_memory_list(nullptr), ORV_DB_STATUS_FAIL);
    EXPECT_EQ(orvdb_get_memory_by_id(nullptr, 7), ORV_DB_STATUS_FAIL);
}

// Each call with the key its fault names; a fault returns its result and
// writes nothing, and the same call for another key still answers.
TEST(SimInventoryDb, FaultsAreKeyedByTheKeyTheCallIsAskedFor)
{
    json faults = json::array(
        {faultOf("orvdb_get_pci_funkey_list", "1", 5), faultOf("orvdb_get_pci_function_type", "11", 5),
         faultOf("orvdb_get_pci_generic_info", "11", 5), faultOf("orvdb_get_pci_vpd_info", "11", 5),
         faultOf("orvdb_get_pci_misc_info", "11", 5), faultOf("orvdb_get_pci_firmware_list", "11", 5),
         faultOf("orvdb_get_network_info", "11", 5), faultOf("orvdb_get_network_physical_port_list", "11", 5),
         faultOf("orvdb_get_network_logical_port_list2", "11/1", 5), faultOf("orvdb_get_gpu_device_info", "12", 5),
         faultOf("orvdb_get_gpu_chip_list", "12", 5), faultOf("orvdb_get_memory_by_id", "7", 5)});
    json memory = json::array({{{"id", 7}}, {{"id", 8}}});
    ServedMachine served(machineWith(twoAdapters(), memory, faults));

    inventory_db_id_list_t keys = {7, nullptr};
    EXPECT_EQ(orvdb_get_pci_funkey_list(1, &keys), 5);
    EXPECT_EQ(keys.count, 7u);
    EXPECT_EQ(orvdb_get_pci_funkey_list(2, &keys), ORV_DB_STATUS_SUCCESS);

    uint32_t type = 0xcccccccc;
    EXPECT_EQ(orvdb_get_pci_function_type(11, &type), 5);
    EXPECT_EQ(type, 0xccccccccu);
    EXPECT_EQ(orvdb_get_pci_function_type(12, &type), ORV_DB_STATUS_SUCCESS);

    auto pci = untouched<inventory_db_pci_info_t>();
    EXPECT_EQ(orvdb_get_pci_generic_info(11, &pci), 5);
    EXPECT_TRUE(isUntouched(pci));
    auto vpd = untouched<inventory_db_pci_vpd_t>();
    EXPECT_EQ(orvdb_get_pci_vpd_info(11, &vpd), 5);
    EXPECT_TRUE(isUntouched(vpd));
    auto misc = untouched<inventory_db_pci_misc_t>();
    EXPECT_EQ(orvdb_get_pci_misc_info(11, &misc), 5);
    EXPECT_TRUE(isUntouched(misc));
    auto network = untouched<inventory_db_network_info_t>();
    EXPECT_EQ(orvdb_get_network_info(11, &network), 5);
    EXPECT_TRUE(isUntouched(network));
    auto gpu = untouched<inventory_db_gpu_device_t>();
    EXPECT_EQ(orvdb_get_gpu_device_info(12, &gpu), 5);
    EXPECT_TRUE(isUntouched(gpu));

    inventory_db_firmware_list_t firmware = {7, nullptr};
    EXPECT_EQ(orvdb_get_pci_firmware_list(11, &firmware), 5);
    EXPECT_EQ(firmware.count, 7u);
    inventory_db_physical_port_list_t physical = {7, nullptr};
    EXPECT_EQ(orvdb_get_network_physical_port_list(11, &physical), 5);
    EXPECT_EQ(physical.count, 7u);
    inventory_db_logical_port_list_t logical = {7, nullptr};
    EXPECT_EQ(orvdb_get_network_logical_port_list2(11, 1, &logical), 5);
    EXPECT_EQ(logical.count, 7u);
    EXPECT_EQ(orvdb_get_network_logical_port_list2(11, 2, &logical), ORV_DB_STATUS_SUCCESS)
        << "another physical port of the function answers";
    inventory_db_gpu_chip_list_t chips = {7, nullptr};
    EXPECT_EQ(orvdb_get_gpu_chip_list(12, &chips), 5);
    EXPECT_EQ(chips.count, 7u);

    inventory_db_memory_t record;
    memset(&record, 0xcc, sizeof record);
    EXPECT_EQ(orvdb_get_memory_by_id(&record, 7), 5);
    EXPECT_TRUE(isUntouched(record));
    EXPECT_EQ(orvdb_get_memory_by_id(&record, 8), ORV_DB_STATUS_SUCCESS);
}

TEST(SimInventoryDb, TheListCallsWithoutAKeyFailOnAnEmptyKey)
{
    json faults =
        json::array({faultOf("orvdb_get_pci_adapter_list", "", 0), faultOf("orvdb_get_AEP_memory_list", "", 1)});
    ServedMachine served(machineWith(twoAdapters(), json::array({{{"id", 7}}}), faults));
    uint32_t count = 99;
    inventory_db_adapter_t *adapters = nullptr;
    EXPECT_EQ(orvdb_get_pci_adapter_list(&count, &adapters), 0) << "the fault's result, however it reads";
    EXPECT_EQ(count, 99u);
    EXPECT_EQ(adapters, nullptr);
    inventory_db_id_list_t ids = {99, nullptr};
    EXPECT_EQ(orvdb_get_AEP_memory_list(&ids), ORV_DB_STATUS_FAIL);
    EXPECT_EQ(ids.count, 99u);
}

// ---- persistent memory ---------------------------------------------------------------

json fullModule(uint32_t id)
{
    return {{"id", id},
            {"speed1", 2666},
            {"speed2", 3200},
            {"text1", "DIMM 7"},
            {"text2", "Intel"},
            {"text3", "NMA1XXD128GPS"},
            {"text4", "8089A2"},
            {"text5", "01.02.00.5446"},
            {"text6", " 0x0001 "},
            {"text7", std::string(65, 'Z')},
            {"capacity1", 0x0102030405060708ull},
            {"capacity2", 2},
            {"capacity3", 3},
            {"capacity4", 4},
            {"capacity5", 5},
            {"capacity6", 18446744073709551615ull},
            {"count", 0x10003},
            {"percentage", -1},
            {"securityState", 0x11223344},
            {"healthState", 200},
            {"extraKind", 3}};
}

TEST(SimInventoryDbMemory, AModulesRecordHoldsEveryFieldAtItsOffset)
{
    ServedMachine served(machineWith(json::array(), json::array({fullModule(7)})));
    inventory_db_memory_t memory;
    memset(&memory, 0xcc, sizeof memory);
    ASSERT_EQ(orvdb_get_memory_by_id(&memory, 7), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&memory, 24, 2), 2666u);
    EXPECT_EQ(littleEndianAt(&memory, 26, 2), 3200u);
    EXPECT_EQ(bytesAt(&memory, 28, 65), field("DIMM 7", 65));
    EXPECT_EQ(bytesAt(&memory, 93, 65), field("Intel", 65));
    EXPECT_EQ(bytesAt(&memory, 158, 65), field("NMA1XXD128GPS", 65));
    EXPECT_EQ(bytesAt(&memory, 223, 65), field("8089A2", 65));
    EXPECT_EQ(bytesAt(&memory, 353, 65), field("01.02.00.5446", 65));
    EXPECT_EQ(littleEndianAt(&memory, 424, 8), 0x0102030405060708ull);
    EXPECT_EQ(littleEndianAt(&memory, 432, 8), 2u);
    EXPECT_EQ(littleEndianAt(&memory, 440, 8), 3u);
    EXPECT_EQ(littleEndianAt(&memory, 448, 8), 4u);
    EXPECT_EQ(littleEndianAt(&memory, 456, 8), 5u);
    EXPECT_EQ(littleEndianAt(&memory, 464, 8), UINT64_MAX);
    EXPECT_EQ(littleEndianAt(&memory, 472, 4), 0x10003u);
    EXPECT_EQ(littleEndianAt(&memory, 476, 4), 0xffffffffu) << "-1, two's complement";
    EXPECT_EQ(littleEndianAt(&memory, 480, 4), 0x11223344u);
    EXPECT_EQ(littleEndianAt(&memory, 484, 1), 200u);
    EXPECT_EQ(littleEndianAt(&memory, 497, 1), 3u);
    EXPECT_EQ(bytesAt(&memory, 516, 65), field(" 0x0001 ", 65));
    EXPECT_EQ(bytesAt(&memory, 581, 65), std::string(65, 'Z')) << "fills its field unterminated";
    EXPECT_EQ(bytesAt(&memory, 0, 24), std::string(24, '\0')) << "bytes not described are zero";
    EXPECT_EQ(bytesAt(&memory, 646, 10), std::string(10, '\0'));
}

TEST(SimInventoryDbMemory, TheIdArrayStaysTheDatabasesAndHoldsTheIdsInOrder)
{
    ServedMachine served(machineWith(json::array(), json::array({{{"id", 20}}, {{"id", 14}}, {{"id", 17}}})));
    inventory_db_id_list_t first = {};
    ASSERT_EQ(orvdb_get_AEP_memory_list(&first), ORV_DB_STATUS_SUCCESS);
    ASSERT_EQ(first.count, 3u);
    EXPECT_EQ(std::vector<uint32_t>(first.ids, first.ids + 3), (std::vector<uint32_t>{20, 14, 17}));

    // The caller never frees the array; it stays readable while the caller
    // reads each module, and a second listing gives the same ids.
    inventory_db_memory_t memory;
    for (uint32_t i = 0; i < first.count; ++i)
        EXPECT_EQ(orvdb_get_memory_by_id(&memory, first.ids[i]), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(std::vector<uint32_t>(first.ids, first.ids + 3), (std::vector<uint32_t>{20, 14, 17}));
    inventory_db_id_list_t second = {};
    ASSERT_EQ(orvdb_get_AEP_memory_list(&second), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(std::vector<uint32_t>(second.ids, second.ids + second.count), (std::vector<uint32_t>{20, 14, 17}));
}

TEST(SimInventoryDbMemory, NoModulesGiveACountOfZero)
{
    ServedMachine served(machineWith(json::array(), json::array()));
    inventory_db_id_list_t list = {99, reinterpret_cast<uint32_t *>(0x1)};
    ASSERT_EQ(orvdb_get_AEP_memory_list(&list), ORV_DB_STATUS_SUCCESS);
    EXPECT_EQ(list.count, 0u);
    EXPECT_EQ(list.ids, nullptr);
}

TEST(SimPmemText, StatesReadAsTheControllerNamesThem)
{
    const std::vector<std::pair<uint32_t, const char *>> security = {{0, "Disabled"}, {1, "Unlocked"}, {2, "Locked"},
                                                                     {3, "Frozen"},   {4, "Exceeded"}, {5, "Unknown"}};
    char text[PMEM_TEXT_SIZE];
    for (const auto &[state, expected] : security) {
        bps_format_security_str(state, text, sizeof text);
        EXPECT_STREQ(text, expected) << state;
    }
    const std::vector<std::pair<uint8_t, const char *>> health = {{0, "Healthy"}, {1, "Noncritical"}, {2, "Critical"},
                                                                  {3, "Fatal"},   {4, "Unknown"},     {255, "Unknown"}};
    for (const auto &[state, expected] : health) {
        bps_format_hstate_str(state, text, sizeof text);
        EXPECT_STREQ(text, expected) << int{state};
    }
}

TEST(SimPmemText, TextsAreCutToTheBufferAndAlwaysTerminated)
{
    char text[8];
    memset(text, 'x', sizeof text);
    bps_format_hstate_str(1, text, 5);
    EXPECT_EQ(std::string(text, 6), std::string("Nonc") + '\0' + 'x');
    bps_format_security_str(1, text, 1);
    EXPECT_EQ(text[0], '\0');
    memset(text, 'x', sizeof text);
    bps_format_security_str(1, text, 0);
    bps_format_hstate_str(0, text, -1);
    EXPECT_EQ(std::string(text, sizeof text), std::string(8, 'x')) << "no room, nothing written";
}

// ---- the sample machine ----------------------------------------------------------------

TEST(SimInventoryDbSample, HasFourAdaptersOfEachKindAndThreePersistentMemoryModules)
{
    uint32_t count = 0;
    inventory_db_adapter_t *adapters = nullptr;
    ASSERT_EQ(orvdb_get_pci_adapter_list(&count, &adapters), ORV_DB_STATUS_SUCCESS);
    ASSERT_EQ(count, 4u);
    std::vector<uint32_t> types;
    uint32_t physicalPorts = 0, chips = 0;
    for (uint32_t a = 0; a < count; ++a) {
        inventory_db_id_list_t keys = {};
        ASSERT_EQ(orvdb_get_pci_funkey_list(adapters[a].adapterKey, &keys), ORV_DB_STATUS_SUCCESS);
        for (uint32_t f = 0; f < keys.count; ++f) {
            uint32_t type = 0;
            ASSERT_EQ(orvdb_get_pci_function_type(keys.ids[f], &type), ORV_DB_STATUS_SUCCESS);
            types.push_back(type);
            inventory_db_physical_port_list_t ports = {};
            ASSERT_EQ(orvdb_get_network_physical_port_list(keys.ids[f], &ports), ORV_DB_STATUS_SUCCESS);
            physicalPorts += ports.count;
            free(ports.ports);
            inventory_db_gpu_chip_list_t chipList = {};
            ASSERT_EQ(orvdb_get_gpu_chip_list(keys.ids[f], &chipList), ORV_DB_STATUS_SUCCESS);
            chips += chipList.count;
            free(chipList.chips);
        }
        free(keys.ids);
    }
    EXPECT_EQ(adapters[0].location, INVENTORY_DB_LOCATION_ON_BOARD);
    for (uint32_t a = 1; a < count; ++a)
        EXPECT_EQ(adapters[a].location, INVENTORY_DB_LOCATION_ADD_ON) << a;
    free(adapters);
    EXPECT_EQ(types, (std::vector<uint32_t>{1, 1, 1, 1, 1, 1, 6, 4}));
    EXPECT_EQ(physicalPorts, 6u) << "four on board, two on the card";
    EXPECT_EQ(chips, 2u);

    inventory_db_id_list_t ids = {};
    ASSERT_EQ(orvdb_get_AEP_memory_list(&ids), ORV_DB_STATUS_SUCCESS);
    ASSERT_EQ(ids.count, 3u);
    std::vector<std::string> names;
    std::vector<int> kinds;
    for (uint32_t i = 0; i < ids.count; ++i) {
        inventory_db_memory_t memory = {};
        ASSERT_EQ(orvdb_get_memory_by_id(&memory, ids.ids[i]), ORV_DB_STATUS_SUCCESS);
        names.push_back(memory.text1);
        kinds.push_back(memory.extra_kind);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"DIMM 14", "DIMM 17", "DIMM 20"}));
    EXPECT_EQ(kinds, (std::vector<int>{1, 2, 3}));
}

// ---- the machine file ------------------------------------------------------------------

std::string adaptersError(const std::string &section)
{
    return machineFileError("{ \"adapters\": " + section + " }");
}

std::string memoryError(const std::string &section)
{
    return machineFileError("{ \"persistentMemory\": " + section + " }");
}

TEST(SimInventoryDbMachineFile, ATextLongerThanItsFieldIsRefusedWithItsLine)
{
    EXPECT_EQ(adaptersError("[ { \"key\": 1,\n \"productName\": \"" + std::string(130, 'N') + "\" } ]"),
              "m.json:2: /adapters/0/productName: is 130 characters long; the field holds at most 129 (a text of "
              "129 fills it without a terminating NUL)");
    EXPECT_EQ(adaptersError("[ { \"key\": 1, \"functions\": [ { \"key\": 2, \"vpd\": {\n \"serialNumber\": \"" +
                            std::string(18, 'S') + "\" } } ] } ]"),
              "m.json:2: /adapters/0/functions/0/vpd/serialNumber: is 18 characters long; the field holds at most "
              "17 (a text of 17 fills it without a terminating NUL)");
    EXPECT_EQ(memoryError("[ { \"id\": 1,\n \"text7\": \"" + std::string(66, 'Z') + "\" } ]"),
              "m.json:2: /persistentMemory/0/text7: is 66 characters long; the field holds at most 65 (a text of 65 "
              "fills it without a terminating NUL)");
}

TEST(SimInventoryDbMachineFile, NumbersMustFitTheirFields)
{
    EXPECT_EQ(adaptersError("[ { \"key\": 1,\n \"location\": 256 } ]"),
              "m.json:2: /adapters/0/location: must be between 0 and 255");
    EXPECT_EQ(adaptersError("[ { \"key\": 1,\n \"slot\": -1 } ]"),
              "m.json:2: /adapters/0/slot: must be between 0 and 65535");
    EXPECT_EQ(adaptersError("[ { \"functions\": [ { \"physicalPorts\": [ {\n \"linkStatus\": 4294967296 } ] } ] } ]"),
              "m.json:2: /adapters/0/functions/0/physicalPorts/0/linkStatus: must be between 0 and 4294967295");
    EXPECT_EQ(memoryError("[ { \"id\": 1,\n \"percentage\": 2147483648 } ]"),
              "m.json:2: /persistentMemory/0/percentage: must be between -2147483648 and 2147483647");
    EXPECT_EQ(memoryError("[ { \"id\": 1,\n \"speed1\": \"fast\" } ]"),
              "m.json:2: /persistentMemory/0/speed1: must be an integer");
}

TEST(SimInventoryDbMachineFile, UnknownFieldsAreRefusedWithTheKnownOnes)
{
    EXPECT_EQ(adaptersError("[ { \"key\": 1,\n \"slotNo\": 2 } ]"),
              "m.json:2: /adapters/0/slotNo: unknown adapter field (known: key, number, slot, location, "
              "oobSupported, cardInterface, productName, functions)");
    EXPECT_EQ(adaptersError("[ { \"functions\": [ {\n \"ports\": [] } ] } ]"),
              "m.json:2: /adapters/0/functions/0/ports: unknown function field (known: key, type, pci, vpd, misc, "
              "firmware, network, physicalPorts, gpu, chips)");
    EXPECT_EQ(adaptersError("[ { \"functions\": [ { \"gpu\": {\n \"memoryType\": \"GDDR6\" } } ] } ]"),
              "m.json:2: /adapters/0/functions/0/gpu/memoryType: unknown gpu field (known: videoMemoryType, "
              "videoMemorySize)");
    EXPECT_EQ(memoryError("[ { \"id\": 1,\n \"kind\": 3 } ]"),
              "m.json:2: /persistentMemory/0/kind: unknown persistent-memory module field (known: speed1, speed2, "
              "text1, text2, text3, text4, text5, text6, text7, capacity1, capacity2, capacity3, capacity4, "
              "capacity5, capacity6, count, percentage, securityState, healthState, extraKind, id)");
    EXPECT_EQ(adaptersError("[ { \"_what\": \"a comment\" } ]"), "") << "names starting with _ are comments";
}

TEST(SimInventoryDbMachineFile, KeysNameOneAdapterFunctionOrModuleEach)
{
    EXPECT_EQ(adaptersError("[ { \"key\": 1 },\n { \"key\": 1 } ]"),
              "m.json:2: /adapters/1/key: another adapter has the key 1");
    EXPECT_EQ(adaptersError("[ { \"key\": 1, \"functions\": [ { \"key\": 5 } ] },\n"
                            " { \"key\": 2, \"functions\": [ { \"key\": 5 } ] } ]"),
              "m.json:2: /adapters/1/functions/0/key: another function has the key 5");
    EXPECT_EQ(memoryError("[ { \"id\": 3 },\n { \"id\": 3 } ]"),
              "m.json:2: /persistentMemory/1/id: another module has the id 3");
    EXPECT_EQ(adaptersError("{\n}"), "m.json:1: /adapters: must be an array of adapters");
}

} // namespace

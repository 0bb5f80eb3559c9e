// The simulated RAID link library and feature query: every described field
// lands at its offset of the record, little-endian; texts are NUL-padded or
// fill their field unterminated; lists, counts, raw records, unknown
// identifiers and faults; and the machine file's checks of the sections.
#include "machine.h"
#include "unit_machine.h"

#include "orv3/feature_query.h"
#include "orv3/raid_link.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <string>
#include <vector>

namespace {

using orv3::test::machineFileError;
using orv3::test::ServedMachine;

std::string machineWithRaid(const nlohmann::json &raid, const nlohmann::json &faults = nlohmann::json::array())
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["raid"] = raid;
    machine["faults"] = faults;
    return machine.dump(2);
}

std::string raidError(const std::string &raidText)
{
    return machineFileError("{ \"raid\": " + raidText + " }");
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

// A record of `Record` filled with 0xcc and holding `id` at `idOffset`.
template <class Record> Record asking(uint32_t id, size_t idOffset)
{
    Record record;
    memset(&record, 0xcc, sizeof record);
    memcpy(reinterpret_cast<uint8_t *>(&record) + idOffset, &id, sizeof id);
    return record;
}

nlohmann::json controllerHardware()
{
    return {{"id", 7},
            {"productName", "ThinkRAID 940-8i"},
            {"text0", "SP1"},
            {"pciId314", 0x1000},
            {"pciId318", 0x10e2},
            {"slot", 3},
            {"byte321", 4},
            {"byte322", 5},
            {"byte323", 6},
            {"cacheModuleStatus", 1},
            {"cacheSizeMb", 0x0102030405060708ull},
            {"value801", 0x11223344},
            {"zel", 1},
            {"flag815", 1},
            {"battery",
             {{"present", 1},
              {"type", 5},
              {"energyFlag", 1},
              {"energy", 0x0a0b},
              {"remaining", 800},
              {"full", 1000},
              {"voltage568", 4010},
              {"voltage570", 4100},
              {"current", -12},
              {"temperature", 27},
              {"status", 1},
              {"text325", "CVPM05"}}}};
}

TEST(SimRaidLink, ControllerHardwareFieldsLandAtTheirOffsets)
{
    nlohmann::json raid;
    raid["controllers"] = nlohmann::json::array();
    raid["controllers"].push_back(controllerHardware());
    ServedMachine served(machineWithRaid(raid));
    auto hw = asking<raid_link_ctrl_hw_t>(7, 819);
    ASSERT_EQ(raidlink_get_ctrl_hw_info(&hw), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(bytesAt(&hw, 33, 17), std::string("ThinkRAID 940-8i") + '\0');
    EXPECT_EQ(bytesAt(&hw, 0, 4), std::string("SP1") + '\0');
    EXPECT_EQ(littleEndianAt(&hw, 314, 2), 0x1000u);
    EXPECT_EQ(littleEndianAt(&hw, 318, 2), 0x10e2u);
    EXPECT_EQ(littleEndianAt(&hw, 320, 4), 0x06050403u) << "slot and the three bytes after it";
    EXPECT_EQ(littleEndianAt(&hw, 324, 1), 1u);
    EXPECT_EQ(bytesAt(&hw, 325, 7), std::string("CVPM05") + '\0');
    EXPECT_EQ(littleEndianAt(&hw, 556, 4), 5u);
    EXPECT_EQ(littleEndianAt(&hw, 560, 1), 1u);
    EXPECT_EQ(littleEndianAt(&hw, 562, 2), 0x0a0bu);
    EXPECT_EQ(littleEndianAt(&hw, 564, 2), 800u);
    EXPECT_EQ(littleEndianAt(&hw, 566, 2), 1000u);
    EXPECT_EQ(littleEndianAt(&hw, 568, 2), 4010u);
    EXPECT_EQ(littleEndianAt(&hw, 570, 2), 4100u);
    EXPECT_EQ(littleEndianAt(&hw, 572, 2), 0xfff4u) << "-12, two's complement";
    EXPECT_EQ(littleEndianAt(&hw, 574, 2), 27u);
    EXPECT_EQ(littleEndianAt(&hw, 576, 4), 1u);
    EXPECT_EQ(littleEndianAt(&hw, 580, 4), 1u);
    EXPECT_EQ(littleEndianAt(&hw, 620, 8), 0x0102030405060708ull);
    EXPECT_EQ(littleEndianAt(&hw, 801, 4), 0x11223344u);
    EXPECT_EQ(littleEndianAt(&hw, 811, 4), 1u);
    EXPECT_EQ(littleEndianAt(&hw, 815, 4), 1u);
    EXPECT_EQ(littleEndianAt(&hw, 819, 4), 7u) << "the identifier stays";
    EXPECT_EQ(littleEndianAt(&hw, 312, 2), 0u) << "bytes not described are zero";
}

TEST(SimRaidLink, ATextOfItsFieldsWidthOrLongerFillsItUnterminated)
{
    nlohmann::json raid;
    raid["controllers"] = nlohmann::json::array();
    raid["controllers"].push_back({{"id", 1}, {"text0", std::string(40, 'x')}, {"text162", std::string(33, 'y')}});
    ServedMachine served(machineWithRaid(raid));
    auto hw = asking<raid_link_ctrl_hw_t>(1, 819);
    ASSERT_EQ(raidlink_get_ctrl_hw_info(&hw), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(bytesAt(&hw, 0, 34), std::string(33, 'x') + '\0') << "cut at 33, the next field untouched";
    EXPECT_EQ(bytesAt(&hw, 162, 33), std::string(33, 'y'));
}

TEST(SimRaidLink, DriveHardwareFieldsLandAtTheirOffsets)
{
    nlohmann::json raid;
    raid["drives"] = nlohmann::json::array();
    raid["drives"].push_back({{"id", 9},
                              {"text33", "ST2000"},
                              {"flags", 5},
                              {"number411", 0x0102},
                              {"id413", 0x0304},
                              {"speed", 3},
                              {"blockSize", 512},
                              {"blockCount", 1953525168ull},
                              {"driveNumber", 11},
                              {"mediaType", 1},
                              {"interfaceType", 2},
                              {"temperature", 31},
                              {"state", 6},
                              {"health", 2},
                              {"zel", 1},
                              {"foreign", 1},
                              {"dedicatedSpare", 1},
                              {"readyToRemove", 1},
                              {"rotationSpeed", -1},
                              {"counter539", 7},
                              {"counter543", 8},
                              {"counter547", 9},
                              {"remainingLife", 97}});
    ServedMachine served(machineWithRaid(raid));
    auto hw = asking<raid_link_disk_hw_t>(9, 560);
    ASSERT_EQ(raidlink_get_disk_hw_info(&hw), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(bytesAt(&hw, 33, 7), std::string("ST2000") + '\0');
    EXPECT_EQ(littleEndianAt(&hw, 410, 1), 5u);
    EXPECT_EQ(littleEndianAt(&hw, 411, 2), 0x0102u);
    EXPECT_EQ(littleEndianAt(&hw, 413, 2), 0x0304u);
    EXPECT_EQ(littleEndianAt(&hw, 419, 4), 3u);
    EXPECT_EQ(littleEndianAt(&hw, 427, 2), 512u);
    EXPECT_EQ(littleEndianAt(&hw, 429, 8), 1953525168ull);
    EXPECT_EQ(littleEndianAt(&hw, 438, 2), 11u);
    EXPECT_EQ(littleEndianAt(&hw, 442, 4), 1u);
    EXPECT_EQ(littleEndianAt(&hw, 446, 4), 2u);
    EXPECT_EQ(littleEndianAt(&hw, 450, 2), 31u);
    EXPECT_EQ(littleEndianAt(&hw, 452, 4), 6u);
    EXPECT_EQ(littleEndianAt(&hw, 456, 4), 2u);
    EXPECT_EQ(littleEndianAt(&hw, 460, 4), 1u);
    EXPECT_EQ(littleEndianAt(&hw, 529, 2), 0x0101u);
    EXPECT_EQ(littleEndianAt(&hw, 531, 4), 1u);
    EXPECT_EQ(littleEndianAt(&hw, 535, 4), 0xffffffffu);
    EXPECT_EQ(littleEndianAt(&hw, 539, 4), 7u);
    EXPECT_EQ(littleEndianAt(&hw, 543, 4), 8u);
    EXPECT_EQ(littleEndianAt(&hw, 547, 4), 9u);
    EXPECT_EQ(littleEndianAt(&hw, 551, 1), 97u);
    EXPECT_EQ(littleEndianAt(&hw, 560, 4), 9u);
}

TEST(SimRaidLink, PoolAndVolumeRecordsHoldTheirFields)
{
    nlohmann::json raid;
    raid["pools"] = nlohmann::json::array();
    raid["pools"].push_back(
        {{"id", 30}, {"number", 2}, {"raidLevel", {5, 0, 2}}, {"totalSize", 1ull << 40}, {"freeSize", 1ull << 39}});
    raid["volumes"] = nlohmann::json::array();
    raid["volumes"].push_back({{"id", 40},
                               {"number", 3},
                               {"name", "data"},
                               {"stripeSize", 65536},
                               {"bootable", 2},
                               {"blockSize", 4096},
                               {"blockCount", 1000},
                               {"state", 1}});
    ServedMachine served(machineWithRaid(raid));
    auto array = asking<raid_link_array_t>(30, 98);
    ASSERT_EQ(raidlink_get_array_info(&array), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&array, 0, 4), 2u);
    EXPECT_EQ(littleEndianAt(&array, 6, 3), 0x020005u);
    EXPECT_EQ(littleEndianAt(&array, 9, 8), 1ull << 40);
    EXPECT_EQ(littleEndianAt(&array, 17, 8), 1ull << 39);
    EXPECT_EQ(littleEndianAt(&array, 98, 4), 30u);
    EXPECT_EQ(raidlink_raidlevel_string(raidlink_db_prl2raidlevel(5, 0, 2)), std::string("RAID 50"));
    EXPECT_EQ(raidlink_raidlevel_string(raidlink_db_prl2raidlevel(1, 0, 1)), std::string("RAID 1"));
    EXPECT_EQ(raidlink_raidlevel_string(raidlink_db_prl2raidlevel(3, 0, 1)), std::string("Unknown RAID level"));

    auto volume = asking<raid_link_volume_t>(40, 137);
    ASSERT_EQ(raidlink_get_volume_info(&volume), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&volume, 0, 4), 3u);
    EXPECT_EQ(bytesAt(&volume, 8, 5), std::string("data") + '\0');
    EXPECT_EQ(littleEndianAt(&volume, 49, 4), 65536u);
    EXPECT_EQ(littleEndianAt(&volume, 53, 1), 2u);
    EXPECT_EQ(littleEndianAt(&volume, 54, 2), 4096u);
    EXPECT_EQ(littleEndianAt(&volume, 56, 8), 1000u);
    EXPECT_EQ(littleEndianAt(&volume, 64, 4), 1u);
    EXPECT_EQ(littleEndianAt(&volume, 141, 4), 0xccccccccu) << "bytes after the identifier are not the library's";
}

TEST(SimRaidLink, ListsFirmwareAndPortsFollowTheDescription)
{
    nlohmann::json raid;
    raid["controllers"] = nlohmann::json::array();
    nlohmann::json controller = {{"id", 5}, {"pools", {30, 31}}, {"drives", {9}}, {"ports", {"500605B00A1B2C3D"}}};
    controller["firmware"] = nlohmann::json::array();
    controller["firmware"].push_back({{"name", "Firmware"}, {"text98", "1.2"}});
    raid["controllers"].push_back(controller);
    ServedMachine served(machineWithRaid(raid));

    raid_link_ctrl_list_t list;
    memset(&list, 0xcc, sizeof list);
    ASSERT_EQ(raidlink_get_ctrl_list(&list), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&list, 0, 2), 1u);
    EXPECT_EQ(littleEndianAt(&list, 2, 4), 5u);
    EXPECT_EQ(littleEndianAt(&list, 6, 4), 0u);

    auto pools = asking<raid_link_array_list_t>(5, 1026);
    ASSERT_EQ(raidlink_get_array_list(&pools), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&pools, 0, 2), 2u);
    EXPECT_EQ(littleEndianAt(&pools, 2, 8), (31ull << 32) | 30u);

    auto drives = asking<raid_link_ctrl_disk_list_t>(5, 1538);
    ASSERT_EQ(raidlink_get_ctrl_disk_list(&drives), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&drives, 0, 6), (9ull << 16) | 1u);

    auto ports = asking<raid_link_ctrl_port_t>(5, 194);
    ASSERT_EQ(raidlink_get_ctrl_port_info(&ports), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&ports, 0, 1), 1u);
    EXPECT_EQ(littleEndianAt(&ports, 2, 4), 0x0A1B2C3Du);
    EXPECT_EQ(littleEndianAt(&ports, 6, 4), 0x500605B0u);
    EXPECT_EQ(littleEndianAt(&ports, 194, 4), 5u);

    auto fw = asking<raid_link_fw_info_t>(5, 2745);
    ASSERT_EQ(raidlink_get_ctrl_fw_info(&fw), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&fw, 0, 1), 1u);
    EXPECT_EQ(bytesAt(&fw, 1 + 33, 9), std::string("Firmware") + '\0');
    EXPECT_EQ(bytesAt(&fw, 1 + 98, 4), std::string("1.2") + '\0');
    EXPECT_EQ(littleEndianAt(&fw, 1 + 343, 8), 0u) << "the second component is zero";
}

TEST(SimRaidLink, CountsAreReportedAsDescribedAndIdentifiersAsListed)
{
    nlohmann::json raid;
    raid["counts"] = {{"controllers", 60}};
    raid["controllers"] = nlohmann::json::array();
    raid["controllers"].push_back({{"id", 5}, {"counts", {{"firmware", 255}, {"ports", 40}, {"pools", 300}}}});
    ServedMachine served(machineWithRaid(raid));
    raid_link_ctrl_list_t list;
    ASSERT_EQ(raidlink_get_ctrl_list(&list), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&list, 0, 2), 60u);
    auto fw = asking<raid_link_fw_info_t>(5, 2745);
    ASSERT_EQ(raidlink_get_ctrl_fw_info(&fw), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&fw, 0, 1), 255u);
    auto ports = asking<raid_link_ctrl_port_t>(5, 194);
    ASSERT_EQ(raidlink_get_ctrl_port_info(&ports), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&ports, 0, 1), 40u);
    auto pools = asking<raid_link_array_list_t>(5, 1026);
    ASSERT_EQ(raidlink_get_array_list(&pools), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&pools, 0, 2), 300u);
}

TEST(SimRaidLink, ARawRecordReplacesTheBytesAndFieldsGoOverIt)
{
    nlohmann::json raid;
    raid["volumes"] = nlohmann::json::array();
    raid["volumes"].push_back({{"id", 40}, {"raw", "01 02 03 04 05 06 07 08 41 42"}, {"stripeSize", 1000}});
    ServedMachine served(machineWithRaid(raid));
    auto volume = asking<raid_link_volume_t>(40, 137);
    ASSERT_EQ(raidlink_get_volume_info(&volume), RAIDLINK_STATUS_SUCCESS);
    EXPECT_EQ(littleEndianAt(&volume, 0, 8), 0x0807060504030201ull);
    EXPECT_EQ(bytesAt(&volume, 8, 3), std::string("AB") + '\0');
    EXPECT_EQ(littleEndianAt(&volume, 49, 4), 1000u);
}

TEST(SimRaidLink, AnUnknownIdentifierFailsAndWritesNothing)
{
    auto hw = asking<raid_link_ctrl_hw_t>(424242, 819);
    EXPECT_EQ(raidlink_get_ctrl_hw_info(&hw), RAIDLINK_STATUS_FAIL);
    EXPECT_EQ(littleEndianAt(&hw, 0, 8), 0xccccccccccccccccull);
    auto volume = asking<raid_link_volume_t>(424242, 137);
    EXPECT_EQ(raidlink_get_volume_info(&volume), RAIDLINK_STATUS_FAIL);
    EXPECT_EQ(raidlink_get_ctrl_hw_info(nullptr), RAIDLINK_STATUS_FAIL);
    EXPECT_EQ(raidlink_get_ctrl_list(nullptr), RAIDLINK_STATUS_FAIL);
}

TEST(SimRaidLink, AFaultIsKeyedByTheIdentifierAndWritesNothing)
{
    nlohmann::json raid;
    raid["controllers"] = nlohmann::json::array();
    raid["controllers"].push_back({{"id", 5}});
    raid["controllers"].push_back({{"id", 6}});
    nlohmann::json faults = nlohmann::json::array();
    faults.push_back({{"call", "raidlink_get_ctrl_hw_info"}, {"key", "5"}, {"result", 7}});
    ServedMachine served(machineWithRaid(raid, faults));
    auto failing = asking<raid_link_ctrl_hw_t>(5, 819);
    EXPECT_EQ(raidlink_get_ctrl_hw_info(&failing), 7);
    EXPECT_EQ(littleEndianAt(&failing, 0, 8), 0xccccccccccccccccull);
    auto answering = asking<raid_link_ctrl_hw_t>(6, 819);
    EXPECT_EQ(raidlink_get_ctrl_hw_info(&answering), RAIDLINK_STATUS_SUCCESS);
}

TEST(SimRaidLink, TheSampleMachineHasTwoControllersEightDrivesTwoPoolsThreeVolumes)
{
    raid_link_ctrl_list_t list;
    ASSERT_EQ(raidlink_get_ctrl_list(&list), RAIDLINK_STATUS_SUCCESS);
    ASSERT_EQ(littleEndianAt(&list, 0, 2), 2u);
    size_t drives = 0, pools = 0;
    for (size_t c = 0; c < 2; ++c) {
        const uint32_t id = static_cast<uint32_t>(littleEndianAt(&list, 2 + 4 * c, 4));
        auto driveList = asking<raid_link_ctrl_disk_list_t>(id, 1538);
        ASSERT_EQ(raidlink_get_ctrl_disk_list(&driveList), RAIDLINK_STATUS_SUCCESS);
        drives += littleEndianAt(&driveList, 0, 2);
        auto poolList = asking<raid_link_array_list_t>(id, 1026);
        ASSERT_EQ(raidlink_get_array_list(&poolList), RAIDLINK_STATUS_SUCCESS);
        pools += littleEndianAt(&poolList, 0, 2);
    }
    EXPECT_EQ(drives, 8u);
    EXPECT_EQ(pools, 2u);
    uint8_t supported = 0;
    ASSERT_EQ(agentless_get_supported_status(&supported, AGENTLESS_FEATURE_RAID_LINK), 0);
    EXPECT_EQ(supported, 1);
}

TEST(SimFeatureQuery, AnUndescribedFeatureIsNotOfferedAndAFaultWritesNothing)
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["features"] = {{"18", 0}, {"17", 3}};
    machine["faults"] = nlohmann::json::array();
    machine["faults"].push_back({{"call", "agentless_get_supported_status"}, {"key", "17"}, {"result", 9}});
    ServedMachine served(machine.dump());
    uint8_t supported = 0xee;
    EXPECT_EQ(agentless_get_supported_status(&supported, 18), 0);
    EXPECT_EQ(supported, 0);
    EXPECT_EQ(agentless_get_supported_status(&supported, 99), 0);
    EXPECT_EQ(supported, 0);
    supported = 0xee;
    EXPECT_EQ(agentless_get_supported_status(&supported, 17), 9);
    EXPECT_EQ(supported, 0xee);
    EXPECT_EQ(agentless_get_supported_status(nullptr, 18), 1);
}

TEST(SimRaidMachineFile, FieldsAreCheckedWithTheirLines)
{
    EXPECT_EQ(raidError("{ \"controllers\": [ { \"id\": 1,\n \"slot\": 256 } ] }"),
              "m.json:2: /raid/controllers/0/slot: must be between 0 and 255");
    EXPECT_EQ(raidError("{ \"drives\": [ { \"id\": 1,\n \"rotationSpeed\": 2147483648 } ] }"),
              "m.json:2: /raid/drives/0/rotationSpeed: must be between -2147483648 and 2147483647");
    EXPECT_EQ(raidError("{ \"volumes\": [ { \"id\": 1,\n \"nme\": \"x\" } ] }"),
              "m.json:2: /raid/volumes/0/nme: unknown volume field (known: name, number, stripeSize, bootable, "
              "blockSize, blockCount, state, id, raw)");
    EXPECT_EQ(raidError("{ \"pools\": [ { \"id\": 1 },\n { \"id\": 1 } ] }"),
              "m.json:2: /raid/pools/1/id: another pool has the identifier 1");
    EXPECT_EQ(raidError("{ \"pools\": [\n { \"number\": 1 } ] }"), "m.json:2: /raid/pools/0: a pool needs \"id\"");
    std::string overlong;
    for (int i = 0; i < 138; ++i)
        overlong += "00 ";
    EXPECT_EQ(raidError("{ \"volumes\": [ { \"id\": 1,\n \"raw\": \"" + overlong + "\" } ] }"),
              "m.json:2: /raid/volumes/0/raw: a raw record holds at most 137 bytes");
}

TEST(SimRaidMachineFile, ListsAreBoundedByTheirRecords)
{
    std::string drives;
    for (int i = 0; i < 385; ++i)
        drives += (i ? "," : "") + std::to_string(i);
    EXPECT_EQ(raidError("{ \"controllers\": [ { \"id\": 1,\n \"drives\": [" + drives + "] } ] }"),
              "m.json:2: /raid/controllers/0/drives: the library's list holds at most 384 identifiers");
    EXPECT_EQ(raidError("{ \"controllers\": [ { \"id\": 1,\n \"counts\": { \"ports\": 256 } } ] }"),
              "m.json:2: /raid/controllers/0/counts/ports: must be between 0 and 255");
    EXPECT_EQ(raidError("{ \"controllers\": [ { \"id\": 1,\n \"ports\": [ \"0x12\" ] } ] }"),
              "m.json:2: /raid/controllers/0/ports/0: a port address is up to 16 hexadecimal digits "
              "(\"500605B00A1B2C3D\")");
    EXPECT_EQ(raidError("{\n \"arrays\": [] }"),
              "m.json:2: /raid/arrays: unknown raid field (known: controllers, drives, pools, volumes, counts)");
}

TEST(SimRaidMachineFile, FeaturesAreNamedByTheirNumber)
{
    EXPECT_EQ(machineFileError("{ \"features\": {\n \"raid\": 1 } }"),
              "m.json:2: /features/raid: a feature is named by its number in decimal (\"17\", \"18\")");
    EXPECT_EQ(machineFileError("{ \"features\": {\n \"18\": 256 } }"),
              "m.json:2: /features/18: must be between 0 and 255");
}

} // namespace

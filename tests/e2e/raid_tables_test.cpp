// The local-storage group through the real agent: RAIDOOBCapable, the six
// RAID tables built from the RAID link library's records, their 5-second
// cache, the loss of the RAID link function, and what a failing library
// call leaves out.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace orv3::test {
namespace {

const std::string kLocalStorage = oidJoin(kMonitorsRoot, {13, 1});
const std::string kRaidOobCapable = oidJoin(kLocalStorage, {1, 0});

enum Table {
    kControllers = 2,
    kDrives = 3,
    kControllerFirmware = 4,
    kDriveFirmware = 5,
    kPools = 6,
    kVolumes = 7,
};

std::string cell(Table table, unsigned column, unsigned index)
{
    return oidJoin(kLocalStorage, {table, 1, column, index});
}

nlohmann::json firmware(const std::string &name)
{
    return {{"name", name},
            {"text0", "Active"},
            {"text98", "7.713.05.0"},
            {"text131", "ThinkRAID Firmware"},
            {"text260", "2025-03-11"}};
}

nlohmann::json controller(uint32_t id, int slot, std::vector<uint32_t> pools, std::vector<uint32_t> drives)
{
    nlohmann::json entry = {{"id", id},
                            {"productName", "ThinkRAID 940-8i 4GB Flash"},
                            {"slot", slot},
                            {"pciId314", 0x1000},
                            {"pciId318", 0x10e2},
                            {"cacheSizeMb", 4096},
                            {"cacheModuleStatus", 0}};
    entry["firmware"] = nlohmann::json::array();
    entry["firmware"].push_back(firmware("Firmware "));
    entry["firmware"].push_back(firmware(" BIOS"));
    entry["ports"] = nlohmann::json::array();
    entry["ports"].push_back("500605B00A1B2C3D");
    entry["pools"] = pools;
    entry["drives"] = drives;
    return entry;
}

nlohmann::json drive(uint32_t id, int number, int media = 0)
{
    nlohmann::json entry = {{"id", id},
                            {"text33", "ST2000NM000A-2J"},
                            {"driveNumber", number},
                            {"state", 6},
                            {"health", 2},
                            {"mediaType", media},
                            {"interfaceType", 1},
                            {"speed", 3},
                            {"temperature", 31},
                            {"blockSize", 512},
                            {"blockCount", 1953525168ull},
                            {"rotationSpeed", 7200},
                            {"remainingLife", 97}};
    entry["firmware"] = nlohmann::json::array();
    entry["firmware"].push_back(firmware("SN04"));
    return entry;
}

nlohmann::json pool(uint32_t id, int number, std::vector<uint32_t> volumes, std::vector<uint32_t> drives)
{
    nlohmann::json entry = {
        {"id", id}, {"number", number}, {"raidLevel", {1, 0, 1}}, {"totalSize", 1ull << 40}, {"freeSize", 1ull << 39}};
    entry["volumes"] = volumes;
    entry["drives"] = drives;
    return entry;
}

nlohmann::json volume(uint32_t id, int number, const std::string &name)
{
    return {{"id", id},      {"number", number}, {"name", name},          {"stripeSize", 65536},
            {"bootable", 1}, {"blockSize", 512}, {"blockCount", 4194304}, {"state", 3}};
}

// One controller with two drives, a pool of both and one volume on it.
nlohmann::json smallRaid()
{
    nlohmann::json raid;
    raid["controllers"] = nlohmann::json::array();
    raid["controllers"].push_back(controller(1001, 3, {3001}, {2001, 2002}));
    raid["drives"] = nlohmann::json::array();
    raid["drives"].push_back(drive(2001, 0));
    raid["drives"].push_back(drive(2002, 1, 1));
    raid["pools"] = nlohmann::json::array();
    raid["pools"].push_back(pool(3001, 0, {4001}, {2001, 2002}));
    raid["volumes"] = nlohmann::json::array();
    raid["volumes"].push_back(volume(4001, 0, "os"));
    return raid;
}

nlohmann::json raidLinkOffered(bool offered = true)
{
    return {{"18", offered ? 1 : 0}};
}

MachineBuilder raidMachine(const nlohmann::json &raid, bool offered = true)
{
    MachineBuilder machine;
    machine.features(raidLinkOffered(offered)).raid(raid);
    return machine;
}

AgentOptions raidAgent(const MachineBuilder &machine, std::string debugTokens = "")
{
    return fanAgent(machine.json(), std::move(debugTokens));
}

std::string textAt(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << oid << ": " << reply;
    if (reply.varbinds.size() != 1)
        return "<no answer>";
    EXPECT_EQ(typeName(reply.varbinds[0].type), "OCTET STRING") << oid;
    return reply.varbinds[0].octets;
}

long integerAt(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << oid << ": " << reply;
    return reply.varbinds.size() == 1 ? reply.varbinds[0].integer : -999;
}

std::vector<long> indexes(Agent &agent, Table table)
{
    std::vector<long> seen;
    for (const VarBind &vb : agent.client().walk(oidJoin(kLocalStorage, {table, 1, 1})))
        seen.push_back(vb.integer);
    return seen;
}

// ---- RAIDOOBCapable ------------------------------------------------------------------

TEST(RaidOobCapable, IsOneWhenThePlatformOffersTheRaidLinkFunction)
{
    Agent agent(raidAgent(raidMachine(smallRaid()), "localStorage,localStorage:init"));
    Response reply = agent.client().get({kRaidOobCapable});
    ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
    EXPECT_EQ(typeName(reply.varbinds[0].type), "INTEGER");
    EXPECT_EQ(reply.varbinds[0].integer, 1);
    EXPECT_EQ(agent.countInStdout("localStorage: Registering RAIDOOBCapable[ASN_INTEGER] OK\n"), 1u)
        << agent.stdoutText();
    EXPECT_EQ(agent.countInStdout("localStorage:init: initializing tables\n"), 6u);
}

TEST(RaidOobCapable, IsZeroAndLoggedWithoutTheFunction)
{
    Agent agent(raidAgent(raidMachine(smallRaid(), false)));
    EXPECT_EQ(integerAt(agent, kRaidOobCapable), 0);
    EXPECT_NE(agent.traceLogText().find(
                  "localStorage_update_RAIDOOBCapable[19] The platform does not support the raid link function.\r\n"),
              std::string::npos)
        << agent.traceLogText();
}

TEST(RaidOobCapable, IsZeroAndLoggedWhenTheQueryFails)
{
    MachineBuilder machine = raidMachine(smallRaid());
    machine.fault("agentless_get_supported_status", "18", 3, 0);
    Agent agent(raidAgent(machine));
    EXPECT_EQ(integerAt(agent, kRaidOobCapable), 0);
    EXPECT_NE(agent.traceLogText().find(
                  "localStorage_update_RAIDOOBCapable[14] agentless_get_supported_status return is not ok!\r\n"),
              std::string::npos)
        << agent.traceLogText();
}

// ---- controllers ---------------------------------------------------------------------

TEST(RaidControllerTable, ServesAControllerWithItsListsAndLabels)
{
    Agent agent(raidAgent(raidMachine(smallRaid())));
    EXPECT_EQ(indexes(agent, kControllers), (std::vector<long>{1}));
    EXPECT_EQ(textAt(agent, cell(kControllers, 2, 1)), "ThinkRAID 940-8i 4GB Flash (PCI Slot 3)");
    EXPECT_EQ(textAt(agent, cell(kControllers, 3, 1)), "ThinkRAID 940-8i 4GB Flash");
    EXPECT_EQ(integerAt(agent, cell(kControllers, 5, 1)), 0);
    EXPECT_EQ(textAt(agent, cell(kControllers, 13, 1)), "OK");
    EXPECT_EQ(textAt(agent, cell(kControllers, 14, 1)), "4096 MB");
    EXPECT_EQ(integerAt(agent, cell(kControllers, 16, 1)), 3);
    EXPECT_EQ(textAt(agent, cell(kControllers, 20, 1)), "0x1000");
    EXPECT_EQ(textAt(agent, cell(kControllers, 21, 1)), "0x10E2");
    EXPECT_EQ(textAt(agent, cell(kControllers, 22, 1)), "") << "no battery";
    EXPECT_EQ(textAt(agent, cell(kControllers, 35, 1)), "Firmware,BIOS");
    EXPECT_EQ(textAt(agent, cell(kControllers, 36, 1)), "500605B00A1B2C3D");
    EXPECT_EQ(textAt(agent, cell(kControllers, 37, 1)), "Storage Pool 0");
    EXPECT_EQ(textAt(agent, cell(kControllers, 38, 1)), "Drive 0 ,Drive 1 ");
}

// A name whose only non-blank character is its first comes out empty, so
// "A " and " B" read ",B"; longer names are kept whole.
TEST(RaidControllerTable, FirmwareNamesAreStrippedAndJoinedByABareComma)
{
    nlohmann::json raid = smallRaid();
    raid["controllers"][0]["firmware"] = nlohmann::json::array();
    raid["controllers"][0]["firmware"].push_back(firmware("A "));
    raid["controllers"][0]["firmware"].push_back(firmware(" B"));
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(textAt(agent, cell(kControllers, 35, 1)), ",B");

    raid["controllers"][0]["firmware"][0] = firmware("AB ");
    raid["controllers"][0]["firmware"][1] = firmware(" A");
    agent.replaceMachine(raidMachine(raid).json());
    agent.setClock(kStartTime + 6);
    EXPECT_EQ(textAt(agent, cell(kControllers, 35, 1)), "AB,A");
}

TEST(RaidControllerTable, AControllerWhosePortQueryFailsIsSkippedWithoutAGap)
{
    nlohmann::json raid = smallRaid();
    // The failing controller comes first in the list.
    raid["controllers"].insert(raid["controllers"].begin(), controller(1002, 5, {}, {}));
    MachineBuilder machine = raidMachine(raid);
    machine.fault("raidlink_get_ctrl_port_info", "1002", 1, 0);
    Agent agent(raidAgent(machine));
    EXPECT_EQ(indexes(agent, kControllers), (std::vector<long>{1}));
    EXPECT_EQ(textAt(agent, cell(kControllers, 2, 1)), "ThinkRAID 940-8i 4GB Flash (PCI Slot 3)");
    EXPECT_NE(agent.traceLogText().find("] Failed: raidlink_get_ctrl_port_info return RAIDLINK_STATUS_FAIL\r\n"),
              std::string::npos)
        << agent.traceLogText();
}

struct BatteryCase {
    const char *name;
    int type;
    int energyFlag;
    int full;
    int remaining;
    const char *capacity;
};

class BatteryCapacity : public ::testing::TestWithParam<BatteryCase> {};

TEST_P(BatteryCapacity, ReadsAsTheBatteryCounts)
{
    const BatteryCase &battery = GetParam();
    nlohmann::json raid = smallRaid();
    raid["controllers"][0]["battery"] = {
        {"present", 1},         {"type", battery.type},           {"energyFlag", battery.energyFlag},
        {"full", battery.full}, {"remaining", battery.remaining}, {"text325", "CVPM05"}};
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(textAt(agent, cell(kControllers, 28, 1)), battery.capacity);
    EXPECT_EQ(integerAt(agent, cell(kControllers, 5, 1)), 1);
}

INSTANTIATE_TEST_SUITE_P(Batteries, BatteryCapacity,
                         ::testing::Values(BatteryCase{"BbuWithoutFullCapacity", 2, 0, 0, 120, "0 mAh"},
                                           BatteryCase{"BbuAt80Percent", 2, 0, 1000, 800,
                                                       "1000 mAh (Remaining 800 mAh, 80%)"},
                                           BatteryCase{"RemainingAboveFull", 2, 0, 100, 120, "100 mAh"},
                                           BatteryCase{"Tmmc", 6, 0, 500, 321, "Remaining 321 J"},
                                           BatteryCase{"EnergyIbbu08", 5, 1, 400, 100, "400 J (Remaining 100 J, 25%)"},
                                           BatteryCase{"EnergyWithoutFull", 7, 0, 0, 77, "Remaining 77 J"}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(RaidControllerTable, ATypeSevenBatteryIsNamedByItsOwnText)
{
    nlohmann::json raid = smallRaid();
    raid["controllers"][0]["battery"] = {{"present", 1}, {"type", 7}, {"text325", "  Supercap Module  "}};
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(textAt(agent, cell(kControllers, 25, 1)), "Supercap Module");
}

TEST(RaidControllerTable, LosingTheRaidLinkFunctionFreesTheRows)
{
    MachineBuilder machine = raidMachine(smallRaid());
    Agent agent(raidAgent(machine));
    EXPECT_EQ(indexes(agent, kControllers), (std::vector<long>{1}));
    agent.replaceMachine(raidMachine(smallRaid(), false).json());
    agent.setClock(kStartTime + 6);
    EXPECT_TRUE(agent.client().walk(oidJoin(kLocalStorage, {kControllers})).empty());
    const std::string log = agent.traceLogText();
    EXPECT_NE(log.find("raidControllerTable_get_first_data_point["), std::string::npos) << log;
    EXPECT_NE(log.find("] the platform not support RaidLink function.\r\n"), std::string::npos) << log;
    EXPECT_NE(log.find("] raidControllerTable_head has been released!\r\n"), std::string::npos) << log;
}

// Every table frees its rows; only the controller table says so.
TEST(RaidTables, LosingTheRaidLinkFunctionFreesEveryTablesRows)
{
    Agent agent(raidAgent(raidMachine(smallRaid())));
    const Table tables[] = {kControllers, kDrives, kControllerFirmware, kDriveFirmware, kPools, kVolumes};
    for (Table table : tables)
        EXPECT_FALSE(agent.client().walk(oidJoin(kLocalStorage, {table})).empty()) << table;
    agent.replaceMachine(raidMachine(smallRaid(), false).json());
    agent.setClock(kStartTime + 6);
    for (Table table : tables)
        EXPECT_TRUE(agent.client().walk(oidJoin(kLocalStorage, {table})).empty()) << table;
    const std::string log = agent.traceLogText();
    size_t notOffered = 0;
    for (size_t at = log.find("the platform not support RaidLink function."); at != std::string::npos;
         at = log.find("the platform not support RaidLink function.", at + 1))
        ++notOffered;
    EXPECT_EQ(notOffered, 6u) << log;
    EXPECT_EQ(log.find("has been released!"), log.rfind("has been released!")) << "once, by the controller table";
    EXPECT_NE(log.find("raidDriveTable_get_first_data_point["), std::string::npos) << log;
}

TEST(RaidTables, TheHandlerTracesEachRequest)
{
    Agent agent(raidAgent(raidMachine(smallRaid()), "localStorage:handler"));
    textAt(agent, cell(kVolumes, 2, 1));
    EXPECT_EQ(agent.countInStdout("localStorage:handler: Processing request (160)\n"), 1u) << agent.stdoutText();
}

TEST(RaidControllerTable, IsLoadedAtMostOnceIn5Seconds)
{
    Agent agent(raidAgent(raidMachine(smallRaid())));
    agent.clearCallLog();
    textAt(agent, cell(kControllers, 2, 1));
    EXPECT_EQ(agent.countCalls("raidlink_get_ctrl_list"), 1u);
    agent.setClock(kStartTime + 5);
    textAt(agent, cell(kControllers, 3, 1));
    EXPECT_EQ(agent.countCalls("raidlink_get_ctrl_list"), 1u) << "last + 5 is still fresh";
    agent.setClock(kStartTime + 6);
    textAt(agent, cell(kControllers, 3, 1));
    EXPECT_EQ(agent.countCalls("raidlink_get_ctrl_list"), 2u);
}

TEST(RaidControllerFirmwareTable, HasARowPerComponentWithTheControllersLabel)
{
    Agent agent(raidAgent(raidMachine(smallRaid())));
    EXPECT_EQ(indexes(agent, kControllerFirmware), (std::vector<long>{1, 2}));
    EXPECT_EQ(textAt(agent, cell(kControllerFirmware, 2, 1)), "Firmware");
    EXPECT_EQ(textAt(agent, cell(kControllerFirmware, 2, 2)), "BIOS");
    EXPECT_EQ(textAt(agent, cell(kControllerFirmware, 3, 2)), "ThinkRAID 940-8i 4GB Flash (PCI Slot 3)");
    EXPECT_EQ(textAt(agent, cell(kControllerFirmware, 4, 1)), "ThinkRAID Firmware");
    EXPECT_EQ(textAt(agent, cell(kControllerFirmware, 5, 1)), "7.713.05.0");
    EXPECT_EQ(textAt(agent, cell(kControllerFirmware, 6, 1)), "Active");
    EXPECT_EQ(textAt(agent, cell(kControllerFirmware, 7, 1)), "2025-03-11");
}

// ---- drives --------------------------------------------------------------------------

TEST(RaidDriveTable, ServesCapacityMediaAndRotation)
{
    Agent agent(raidAgent(raidMachine(smallRaid())));
    EXPECT_EQ(indexes(agent, kDrives), (std::vector<long>{1, 2}));
    EXPECT_EQ(textAt(agent, cell(kDrives, 2, 1)), "Drive 0 ");
    EXPECT_EQ(textAt(agent, cell(kDrives, 4, 1)), "Online");
    EXPECT_EQ(textAt(agent, cell(kDrives, 7, 1)), "SAS");
    EXPECT_EQ(textAt(agent, cell(kDrives, 8, 1)), "HDD");
    EXPECT_EQ(textAt(agent, cell(kDrives, 9, 1)), "12.0Gb/s");
    EXPECT_EQ(textAt(agent, cell(kDrives, 10, 1)), "31 C");
    EXPECT_EQ(textAt(agent, cell(kDrives, 11, 1)), "Normal");
    EXPECT_EQ(textAt(agent, cell(kDrives, 12, 1)), "931.513 GB");
    EXPECT_EQ(textAt(agent, cell(kDrives, 20, 1)), "SN04");
    EXPECT_EQ(textAt(agent, cell(kDrives, 21, 1)), "7200RPM");
    EXPECT_EQ(textAt(agent, cell(kDrives, 25, 1)), "Not Available") << "a hard disk";
    EXPECT_EQ(textAt(agent, cell(kDrives, 8, 2)), "SSD");
    EXPECT_EQ(textAt(agent, cell(kDrives, 25, 2)), "97%");
}

TEST(RaidDriveTable, CapacityIsInDoublePrecision)
{
    nlohmann::json raid = smallRaid();
    raid["drives"][0]["blockCount"] = (1ull << 37) + 4915;
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(textAt(agent, cell(kDrives, 12, 1)), "65536.002 GB") << "the same size reads 65536.000 GB as a volume";
}

TEST(RaidDriveTable, AnUnknownRotationSpeedIsEmpty)
{
    nlohmann::json raid = smallRaid();
    raid["drives"][0]["rotationSpeed"] = -1;
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(textAt(agent, cell(kDrives, 21, 1)), "");
}

TEST(RaidDriveTable, AForeignDriveReadyToRemoveSaysBoth)
{
    nlohmann::json raid = smallRaid();
    raid["drives"][1]["state"] = 0;
    raid["drives"][1]["foreign"] = 1;
    raid["drives"][1]["readyToRemove"] = 1;
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(textAt(agent, cell(kDrives, 4, 2)), "(Foreign) Ready to Remove");
}

TEST(RaidDriveTable, ADriveWhoseFirmwareQueryFailsHasNoRowInEitherTable)
{
    nlohmann::json raid = smallRaid();
    raid["controllers"][0]["drives"].push_back(2003);
    raid["drives"].push_back(drive(2003, 2));
    MachineBuilder machine = raidMachine(raid);
    machine.fault("raidlink_get_disk_fw_info", "2001", 1, 0);
    Agent agent(raidAgent(machine));
    EXPECT_EQ(indexes(agent, kDrives), (std::vector<long>{1, 2}));
    EXPECT_EQ(textAt(agent, cell(kDrives, 2, 1)), "Drive 1 ");
    EXPECT_EQ(textAt(agent, cell(kDrives, 2, 2)), "Drive 2 ");
    EXPECT_EQ(indexes(agent, kDriveFirmware), (std::vector<long>{1, 2}));
    EXPECT_EQ(textAt(agent, cell(kDriveFirmware, 3, 1)), "Drive 1 ");
    EXPECT_NE(agent.traceLogText().find("] Failed: raidlink_get_disk_fw_info return RAIDLINK_STATUS_FAIL \r\n"),
              std::string::npos)
        << agent.traceLogText();
}

// ---- pools and volumes ---------------------------------------------------------------

TEST(RaidStoragepoolTable, ServesLevelSizesAndLists)
{
    Agent agent(raidAgent(raidMachine(smallRaid())));
    EXPECT_EQ(indexes(agent, kPools), (std::vector<long>{1}));
    EXPECT_EQ(textAt(agent, cell(kPools, 2, 1)), "Storage Pool 0");
    EXPECT_EQ(textAt(agent, cell(kPools, 3, 1)), "ThinkRAID 940-8i 4GB Flash (PCI Slot 3)");
    EXPECT_EQ(textAt(agent, cell(kPools, 4, 1)), "RAID 1");
    EXPECT_EQ(textAt(agent, cell(kPools, 5, 1)), "1024.000 GB (512.000 GB free)");
    EXPECT_EQ(textAt(agent, cell(kPools, 6, 1)), "os");
    EXPECT_EQ(textAt(agent, cell(kPools, 7, 1)), "Drive 0 ,Drive 1 ");
}

TEST(RaidStoragepoolTable, APoolWhoseDriveListFailsLeavesAGap)
{
    nlohmann::json raid = smallRaid();
    raid["controllers"][0]["pools"].push_back(3002);
    raid["pools"].push_back(pool(3002, 1, {}, {2002}));
    MachineBuilder machine = raidMachine(raid);
    machine.fault("raidlink_get_array_disk_list", "3001", 1, 0);
    Agent agent(raidAgent(machine));
    EXPECT_EQ(indexes(agent, kPools), (std::vector<long>{2}));
    EXPECT_EQ(textAt(agent, cell(kPools, 2, 2)), "Storage Pool 1");
}

TEST(RaidVolumeTable, ServesStateCapacityStripeAndBoot)
{
    Agent agent(raidAgent(raidMachine(smallRaid())));
    EXPECT_EQ(indexes(agent, kVolumes), (std::vector<long>{1}));
    EXPECT_EQ(textAt(agent, cell(kVolumes, 2, 1)), "os");
    EXPECT_EQ(textAt(agent, cell(kVolumes, 3, 1)), "ThinkRAID 940-8i 4GB Flash (PCI Slot 3)");
    EXPECT_EQ(textAt(agent, cell(kVolumes, 4, 1)), "Optimal");
    EXPECT_EQ(textAt(agent, cell(kVolumes, 5, 1)), "2.000 GB");
    EXPECT_EQ(textAt(agent, cell(kVolumes, 6, 1)), "64 KB");
    EXPECT_EQ(textAt(agent, cell(kVolumes, 7, 1)), "Bootable");
}

// 2^37 + 4915 blocks of 512 bytes: 2^46 + 2516480 bytes.
constexpr uint64_t kSixtyFourTebibytesAndABit = (1ull << 37) + 4915;

struct VolumeCase {
    const char *name;
    const char *field;
    nlohmann::json value;
    int column;
    const char *text;
};

class VolumeColumn : public ::testing::TestWithParam<VolumeCase> {};

TEST_P(VolumeColumn, ReadsAsTheControllerPrintsIt)
{
    const VolumeCase &volumeCase = GetParam();
    nlohmann::json raid = smallRaid();
    raid["volumes"][0][volumeCase.field] = volumeCase.value;
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(textAt(agent, cell(kVolumes, volumeCase.column, 1)), volumeCase.text);
}

INSTANTIATE_TEST_SUITE_P(Volumes, VolumeColumn,
                         ::testing::Values(VolumeCase{"Stripe1MB", "stripeSize", 1048576, 6, "1 MB"},
                                           VolumeCase{"Stripe1000", "stripeSize", 1000, 6, "1000 Byte"},
                                           VolumeCase{"Stripe1GB", "stripeSize", 1u << 30, 6, "1 GB"},
                                           VolumeCase{"NotBootable", "bootable", 0, 7, "Not Bootable"},
                                           VolumeCase{"BootByteTwo", "bootable", 2, 7, "Not Available"},
                                           VolumeCase{"Degraded", "state", 2, 4, "Degraded"},
                                           VolumeCase{"UnknownState", "state", 9, 4, "Unknown"},
                                           // 64 TiB and 2.4 MB: single precision keeps 24 bits and drops the 2.4 MB.
                                           VolumeCase{"SinglePrecision", "blockCount", kSixtyFourTebibytesAndABit, 5,
                                                      "65536.000 GB"},
                                           VolumeCase{"OnlyBlanksInTheName", "name", "        ", 2, "Volume 0"}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(RaidVolumeTable, AVolumeWithABlankNameIsLabelledByItsNumber)
{
    nlohmann::json raid = smallRaid();
    raid["volumes"][0]["name"] = "   ";
    raid["volumes"][0]["number"] = 3;
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(textAt(agent, cell(kVolumes, 2, 1)), "Volume 3");
    EXPECT_EQ(textAt(agent, cell(kPools, 6, 1)), "Volume 3");
}

// ---- every table ---------------------------------------------------------------------

// The most the library's lists hold: 52 controllers, 384 drives on one of them.
TEST(RaidTables, FullListsWalkCompletely)
{
    nlohmann::json raid;
    raid["controllers"] = nlohmann::json::array();
    raid["drives"] = nlohmann::json::array();
    std::vector<uint32_t> drives;
    for (uint32_t d = 0; d < 384; ++d) {
        drives.push_back(20000 + d);
        raid["drives"].push_back(drive(20000 + d, static_cast<int>(d)));
    }
    raid["controllers"].push_back(controller(10000, 1, {}, drives));
    for (uint32_t c = 1; c < 52; ++c)
        raid["controllers"].push_back(controller(10000 + c, static_cast<int>(c % 8), {}, {}));
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(agent.client().walk(oidJoin(kLocalStorage, {kControllers, 1, 1})).size(), 52u);
    EXPECT_EQ(agent.client().walk(oidJoin(kLocalStorage, {kDrives, 1, 1})).size(), 384u);
    EXPECT_EQ(agent.client().walk(oidJoin(kLocalStorage, {kDriveFirmware, 1, 2})).size(), 384u);
    const std::string labels = textAt(agent, cell(kControllers, 38, 1));
    EXPECT_EQ(labels.substr(0, 18), "Drive 0 ,Drive 1 ,");
    EXPECT_EQ(labels.substr(labels.size() - 11), ",Drive 383 ");
    EXPECT_TRUE(agent.sanitizerFindings().empty()) << agent.sanitizerFindings();
}

// Counts the library reports beyond what its records hold are bounded to
// the records, never trusted.
TEST(RaidTables, CountsBeyondTheRecordsAreBoundedToThem)
{
    nlohmann::json raid = smallRaid();
    raid["counts"] = {{"controllers", 60}};
    raid["controllers"][0]["counts"] = {{"firmware", 20}, {"ports", 40}, {"pools", 300}, {"drives", 500}};
    raid["drives"][0]["counts"] = {{"firmware", 255}};
    raid["pools"][0]["counts"] = {{"volumes", 200}, {"drives", 300}};
    Agent agent(raidAgent(raidMachine(raid)));
    // The controller list's 51 unused slots hold identifier 0, which the library does not know.
    EXPECT_EQ(indexes(agent, kControllers), (std::vector<long>{1}));
    EXPECT_EQ(indexes(agent, kControllerFirmware).size(), 8u) << "a firmware record holds 8 components";
    EXPECT_EQ(indexes(agent, kDriveFirmware).size(), 8u + 1u);
    const std::string ports = textAt(agent, cell(kControllers, 36, 1));
    EXPECT_EQ(ports.substr(0, 18), "500605B00A1B2C3D, ");
    EXPECT_EQ(std::count(ports.begin(), ports.end(), ','), 15) << "16 ports at most";
    EXPECT_EQ(indexes(agent, kDrives), (std::vector<long>{1, 2}));
    EXPECT_EQ(indexes(agent, kPools), (std::vector<long>{1}));
    EXPECT_EQ(indexes(agent, kVolumes), (std::vector<long>{1}));
    const std::string poolLabels = textAt(agent, cell(kControllers, 37, 1));
    EXPECT_EQ(std::count(poolLabels.begin(), poolLabels.end(), ','), 255) << "256 pools at most";
    const std::string volumeLabels = textAt(agent, cell(kPools, 6, 1));
    EXPECT_EQ(std::count(volumeLabels.begin(), volumeLabels.end(), ','), 127) << "128 volumes at most";
    const std::string poolDrives = textAt(agent, cell(kPools, 7, 1));
    EXPECT_EQ(std::count(poolDrives.begin(), poolDrives.end(), ','), 255) << "256 drives at most";
    EXPECT_TRUE(agent.sanitizerFindings().empty()) << agent.sanitizerFindings();
}

// Texts that fill their field without a terminator, and a raw record.
TEST(RaidTables, UnterminatedTextsAreReadNoFurtherThanTheirField)
{
    nlohmann::json raid = smallRaid();
    raid["controllers"][0]["productName"] = std::string(200, 'P');
    raid["controllers"][0]["text0"] = std::string(33, 'S');
    raid["drives"][0]["text33"] = std::string(129, 'M');
    raid["volumes"][0]["name"] = std::string(40, 'v');
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(textAt(agent, cell(kControllers, 3, 1)), std::string(129, 'P'));
    EXPECT_EQ(textAt(agent, cell(kControllers, 7, 1)), std::string(33, 'S'));
    EXPECT_EQ(textAt(agent, cell(kControllers, 2, 1)), " (PCI Slot 3)") << "a name longer than 64 is dropped whole";
    EXPECT_EQ(textAt(agent, cell(kDrives, 3, 1)), std::string(129, 'M'));
    EXPECT_EQ(textAt(agent, cell(kVolumes, 2, 1)), std::string(33, 'v'));
    EXPECT_TRUE(agent.sanitizerFindings().empty()) << agent.sanitizerFindings();
}

TEST(RaidTables, ARawRecordIsServedAsTheLibraryGivesIt)
{
    nlohmann::json raid = smallRaid();
    // Pool number 0x01020304 and RAID level bytes 6, 0, 2 (RAID 60), sizes zero.
    raid["pools"][0] = pool(3001, 0, {4001}, {2001});
    raid["pools"][0].erase("number");
    raid["pools"][0].erase("raidLevel");
    raid["pools"][0].erase("totalSize");
    raid["pools"][0].erase("freeSize");
    raid["pools"][0]["raw"] = "04 03 02 01 00 00 06 00 02";
    Agent agent(raidAgent(raidMachine(raid)));
    EXPECT_EQ(textAt(agent, cell(kPools, 2, 1)), "Storage Pool 16909060");
    EXPECT_EQ(textAt(agent, cell(kPools, 4, 1)), "RAID 60");
    EXPECT_EQ(textAt(agent, cell(kPools, 5, 1)), "0.000 GB (0.000 GB free)");
}

TEST(RaidTables, AreEmptyWithoutTheRaidLinkFunction)
{
    Agent agent(raidAgent(raidMachine(smallRaid(), false)));
    for (Table table : {kControllers, kDrives, kControllerFirmware, kDriveFirmware, kPools, kVolumes})
        EXPECT_TRUE(agent.client().walk(oidJoin(kLocalStorage, {table})).empty()) << table;
}

TEST(RaidTables, ColumnsOutsideATableAreNoSuchObjectAndMissingRowsNoSuchInstance)
{
    Agent agent(raidAgent(raidMachine(smallRaid())));
    Response reply = agent.client().get({cell(kControllers, 39, 1), cell(kVolumes, 2, 9)});
    ASSERT_EQ(reply.varbinds.size(), 2u) << reply;
    EXPECT_EQ(reply.varbinds[0].type, SNMP_NOSUCHOBJECT);
    EXPECT_EQ(reply.varbinds[1].type, SNMP_NOSUCHINSTANCE);
}

TEST(RaidTables, AreReadOnly)
{
    Agent agent(raidAgent(raidMachine(smallRaid())));
    Response reply = agent.client("private").set({SetValue::ofOctets(cell(kVolumes, 2, 1), "x")});
    EXPECT_EQ(reply.errorStatus, SNMP_ERR_NOTWRITABLE) << reply;
}

TEST(RaidTables, ASnmptableStyleGetBulkOfEveryTableReadsNoFreedRow)
{
    Agent agent(raidAgent(raidMachine(smallRaid())));
    for (Table table : {kControllers, kDrives, kControllerFirmware, kDriveFirmware, kPools, kVolumes}) {
        std::vector<std::string> columns;
        for (unsigned column = 1; column <= 7; ++column)
            columns.push_back(oidJoin(kLocalStorage, {table, 1, column}));
        agent.setClock(kStartTime + 10 * table); // stale: the bulk's first pass reloads the table
        Response reply = agent.client().getBulk(0, 4, columns);
        EXPECT_TRUE(reply.ok()) << reply;
    }
    EXPECT_TRUE(agent.sanitizerFindings().empty()) << agent.sanitizerFindings();
}

} // namespace
} // namespace orv3::test

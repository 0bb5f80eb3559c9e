// The adapters group through the real agent: adapterOOBCapable, the seven
// adapter tables built from the inventory database, their 5-second cache,
// the PCI-support gate, and how adapters and functions are named.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kAdapters = oidJoin(kMonitorsRoot, {14});
const std::string kAdapterOobCapable = oidJoin(kAdapters, {1, 0});
const std::string kAdaptersSource = ORV3_SOURCE_DIR "/snmp_subagent/orv3_subagent/monitors/adapters.cpp";

enum Table {
    kGeneric = 2,
    kNetworkFunctions = 3,
    kNetworkPorts = 4,
    kGpuFunctions = 5,
    kGpuChips = 6,
    kRaidFunctions = 7,
    kFirmware = 8,
};

std::string cell(Table table, unsigned column, unsigned index)
{
    return oidJoin(kAdapters, {table, 1, column, index});
}

// ---- machines ------------------------------------------------------------------------

nlohmann::json firmware(const std::string &name, const std::string &version)
{
    return {{"name", name},
            {"version", version},
            {"description", "  Boot code  "},
            {"releaseDate", "2025-06-30"},
            {"classification", "Firmware"},
            {"manufacturer", "Broadcom"},
            {"softwareId", "BC-57414"}};
}

nlohmann::json pci(int bus, int device, int function, int type)
{
    return {{"bus", bus},
            {"device", device},
            {"function", function},
            {"vendorId", 0x14e4},
            {"deviceId", 0x16d7},
            {"revisionId", 1},
            {"subsystemVendorId", 0x17aa},
            {"subsystemDeviceId", 0x4025},
            {"slotDesignation", " Slot 2 "},
            {"hotPlug", 1},
            {"type", type}};
}

nlohmann::json function(uint32_t key, int type, int bus, const std::string &product = "ThinkNIC 25GbE SFP28")
{
    nlohmann::json entry = {{"key", key}, {"type", type}, {"pci", pci(bus, 0, static_cast<int>(key % 100), type)}};
    entry["vpd"] = {{"uuid", "5CE1A0A2-0001"},      {"productName", product},  {"manufacturer", "Broadcom"},
                    {"serialNumber", "AR12345678"}, {"partNumber", "01PE123"}, {"model", "BCM57414"},
                    {"fruNumber", "01PE124"}};
    entry["misc"] = {{"fodUid", "FOD-9"}, {"maxDataWidth", 8}, {"packageType", "PCIe card"}};
    return entry;
}

nlohmann::json logicalPort(int physical, int number, uint64_t maxSpeed, int ethernet, int fcoe, int iscsi)
{
    return {{"maxDataSize", 9000},
            {"permanentAddress", "0A:1B:2C:3D:4E:5F"},
            {"networkAddress", "0A:1B:2C:3D:4E:60"},
            {"physicalPortNumber", physical},
            {"portNumber", number},
            {"maxSpeed", maxSpeed},
            {"ethernet", ethernet},
            {"fcoeFc", fcoe},
            {"iscsi", iscsi},
            {"targetRelativePortNumber", 4},
            {"linkTechnology", "Ethernet"},
            {"vnicMode", "None"},
            {"protocolType", "Ethernet"},
            {"connectionType", "SFP28"},
            {"role", "Primary"}};
}

nlohmann::json physicalPort(int linkStatus, int linkSpeed, nlohmann::json logical)
{
    nlohmann::json entry = {{"burnedInAddress", "0A:1B:2C:3D:4E:5F"},
                            {"connector", "SFP28"},
                            {"linkStatus", linkStatus},
                            {"linkSpeed", linkSpeed}};
    entry["logicalPorts"] = nlohmann::json::array();
    entry["logicalPorts"].push_back(std::move(logical));
    return entry;
}

nlohmann::json adapter(uint32_t key, int location, int slot, int oob, const std::string &name)
{
    nlohmann::json entry = {{"key", key},           {"number", key},       {"slot", slot},
                            {"location", location}, {"oobSupported", oob}, {"cardInterface", " PCIe 4.0 x8 "},
                            {"productName", name}};
    entry["functions"] = nlohmann::json::array();
    return entry;
}

nlohmann::json pciInventoryOffered(bool offered = true)
{
    return {{"17", offered ? 1 : 0}};
}

AgentOptions adapterAgent(const nlohmann::json &adapters, bool offered = true, std::string debugTokens = "")
{
    MachineBuilder machine;
    machine.features(pciInventoryOffered(offered)).adapters(adapters);
    return fanAgent(machine.json(), std::move(debugTokens));
}

// A dual-port network card in slot 2 with VPD and firmware out of band.
nlohmann::json networkCard(uint32_t key = 1, int slot = 2)
{
    nlohmann::json card = adapter(key, 1, slot, 1, "ThinkNIC 25GbE SFP28 2-port ");
    nlohmann::json port = function(key * 100 + 1, 1, 0x1a);
    port["network"] = {{"maxPortCount", 2}};
    port["physicalPorts"] = nlohmann::json::array();
    port["physicalPorts"].push_back(physicalPort(3, 25000, logicalPort(1, 1, 25000000000ull, 1, 0, 0)));
    port["physicalPorts"].push_back(physicalPort(2, 0, logicalPort(2, 2, 10000000000ull, 1, 1, 1)));
    port["firmware"] = nlohmann::json::array();
    port["firmware"].push_back(firmware("Boot Code", "227.0.115.0"));
    port["firmware"].push_back(firmware("NCSI", "1.5.22"));
    card["functions"].push_back(port);
    return card;
}

nlohmann::json oneAdapter(nlohmann::json entry)
{
    nlohmann::json adapters = nlohmann::json::array();
    adapters.push_back(std::move(entry));
    return adapters;
}

// ---- reading ---------------------------------------------------------------------------

std::string textAt(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << oid << ": " << reply;
    if (reply.varbinds.size() != 1)
        return "<no answer>";
    EXPECT_EQ(typeName(reply.varbinds[0].type), "OCTET STRING") << oid;
    return reply.varbinds[0].octets;
}

long integerAt(Agent &agent, const std::string &oid, const char *type = "INTEGER")
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << oid << ": " << reply;
    if (reply.varbinds.size() != 1)
        return -999;
    EXPECT_EQ(typeName(reply.varbinds[0].type), type) << oid;
    return reply.varbinds[0].integer;
}

std::string exceptionAt(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << reply;
    return reply.varbinds.size() == 1 ? typeName(reply.varbinds[0].type) : "<no answer>";
}

std::vector<long> indexes(Agent &agent, Table table)
{
    std::vector<long> seen;
    for (const VarBind &vb : agent.client().walk(oidJoin(kAdapters, {table, 1, 1})))
        seen.push_back(vb.integer);
    return seen;
}

// A trace of the adapters group: the routine and line header, then the
// message under the source file's path.
bool tracedFromAdapters(Agent &agent, const std::string &routine, const std::string &message)
{
    const std::string text = agent.stdoutText();
    const std::string header = "trace: " + routine + "(): " + kAdaptersSource + ", ";
    const std::string body = kAdaptersSource + ": " + routine + ", ";
    for (size_t at = text.find(header); at != std::string::npos; at = text.find(header, at + 1)) {
        size_t line = text.find('\n', at);
        if (line == std::string::npos)
            return false;
        if (text.compare(line + 1, body.size(), body) != 0)
            continue;
        size_t colon = text.find(": ", line + 1 + body.size());
        if (colon != std::string::npos && text.compare(colon + 2, message.size(), message) == 0)
            return true;
    }
    return false;
}

// ---- adapterOOBCapable ---------------------------------------------------------------

TEST(AdapterOobCapable, IsOneWithPciInventoryAndPrintsTheModeInEveryRequest)
{
    Agent agent(adapterAgent(oneAdapter(networkCard()), true, "adapters_scalar"));
    EXPECT_EQ(integerAt(agent, kAdapterOobCapable), 1);
    EXPECT_EQ(agent.countInStdout("adapters_scalar_handler reqinfo->mode = 160\n"), 1u) << agent.stdoutText();
    EXPECT_EQ(agent.countInStdout("adapters_scalar: Registering adapters_scalar variables\n"), 1u);
    EXPECT_EQ(agent.countInStdout("adapters_scalar: Registering adapterOOBCapable[ASN_INTEGER] OK\n"), 1u);

    Response next = agent.client().getNext({kAdapters});
    ASSERT_EQ(next.varbinds.size(), 1u);
    EXPECT_EQ(next.varbinds[0].oid, kAdapterOobCapable);
    EXPECT_EQ(agent.countInStdout("adapters_scalar_handler reqinfo->mode = "), 2u);
}

TEST(AdapterOobCapable, IsZeroAndTheTablesEmptyWithoutPciInventory)
{
    Agent agent(adapterAgent(oneAdapter(networkCard()), false));
    EXPECT_EQ(integerAt(agent, kAdapterOobCapable), 0);
    for (Table table :
         {kGeneric, kNetworkFunctions, kNetworkPorts, kGpuFunctions, kGpuChips, kRaidFunctions, kFirmware})
        EXPECT_TRUE(agent.client().walk(oidJoin(kAdapters, {table})).empty()) << table;
    EXPECT_EQ(exceptionAt(agent, cell(kGeneric, 2, 1)), "noSuchInstance");
    EXPECT_EQ(exceptionAt(agent, cell(kFirmware, 3, 1)), "noSuchInstance");
}

// (That the value cell keeps its value is shown where the cell can be seen,
// in the unit tests.)
TEST(AdapterOobCapable, AFailingQueryIsAnError)
{
    MachineBuilder machine;
    machine.features(pciInventoryOffered()).adapters(oneAdapter(networkCard()));
    machine.fault("agentless_get_supported_status", "17", 1, 0, 1);
    std::string failingOnce = machine.json();
    Agent agent(fanAgent(failingOnce));
    Response failed = agent.client().get({kAdapterOobCapable});
    // The update's failure code, 2, is the request's error: noSuchName.
    EXPECT_EQ(failed.errorStatus, SNMP_ERR_NOSUCHNAME) << failed;

    EXPECT_EQ(integerAt(agent, kAdapterOobCapable), 1);
    machine = MachineBuilder();
    machine.features(pciInventoryOffered()).adapters(oneAdapter(networkCard()));
    machine.fault("agentless_get_supported_status", "17", 1, 0);
    agent.replaceMachine(machine.json());
    Response again = agent.client().get({kAdapterOobCapable});
    EXPECT_EQ(again.errorStatus, SNMP_ERR_NOSUCHNAME) << again;
}

// ---- adapterGenericTable -------------------------------------------------------------

TEST(AdapterGenericTable, NamesOnBoardAndAddOnAdapters)
{
    nlohmann::json adapters = nlohmann::json::array();
    adapters.push_back(adapter(1, 0, 1, 1, "  Intel X722 LOM  "));
    adapters.push_back(networkCard(2, 2));
    Agent agent(adapterAgent(adapters, true, "adapters:init"));
    EXPECT_EQ(agent.countInStdout("adapters:init: initializing tables\n"), 1u) << agent.stdoutText();
    EXPECT_EQ(indexes(agent, kGeneric), (std::vector<long>{1, 2}));
    EXPECT_EQ(textAt(agent, cell(kGeneric, 2, 1)), "Intel X722 LOM #1");
    EXPECT_EQ(integerAt(agent, cell(kGeneric, 3, 1)), 0) << "on board: no slot";
    EXPECT_EQ(textAt(agent, cell(kGeneric, 4, 1)), "OnBoard");
    EXPECT_EQ(textAt(agent, cell(kGeneric, 5, 1)), "PCIe 4.0 x8");
    EXPECT_EQ(textAt(agent, cell(kGeneric, 2, 2)), "ThinkNIC 25GbE SFP28 2-port (PCI Slot 2)");
    EXPECT_EQ(integerAt(agent, cell(kGeneric, 3, 2)), 2);
    EXPECT_EQ(textAt(agent, cell(kGeneric, 4, 2)), "AddOn");
}

TEST(AdapterGenericTable, AnUnknownLocationGivesTheBareNameSlotZeroAndUnknown)
{
    Agent agent(adapterAgent(oneAdapter(adapter(7, 2, 5, 1, " Mystery Card ")), true, "trace," + kAdaptersSource));
    EXPECT_EQ(textAt(agent, cell(kGeneric, 2, 1)), "Mystery Card");
    EXPECT_EQ(integerAt(agent, cell(kGeneric, 3, 1)), 0);
    EXPECT_EQ(textAt(agent, cell(kGeneric, 4, 1)), "Unknown");
    EXPECT_TRUE(tracedFromAdapters(agent, "get_pci_AdapterName_byAdapterInfo", "the location of the adapter 7 is 2.\n"))
        << agent.stdoutText();
}

TEST(AdapterGenericTable, AWhiteSpaceNameLeavesOnlyTheSlotText)
{
    nlohmann::json adapters = nlohmann::json::array();
    adapters.push_back(adapter(1, 0, 3, 1, " \t "));
    adapters.push_back(adapter(2, 1, 4, 1, "   "));
    Agent agent(adapterAgent(adapters));
    EXPECT_EQ(textAt(agent, cell(kGeneric, 2, 1)), " #3");
    EXPECT_EQ(textAt(agent, cell(kGeneric, 2, 2)), " (PCI Slot 4)");
}

TEST(AdapterGenericTable, AProductNameFillingItsWholeFieldIsCutToTheWorkBuffer)
{
    const std::string longName(129, 'N'); // the whole field, no terminator
    Agent agent(adapterAgent(oneAdapter(adapter(1, 1, 9, 1, longName))));
    EXPECT_EQ(textAt(agent, cell(kGeneric, 2, 1)), std::string(127, 'N') + " (PCI Slot 9)");
}

// A walk's last GETNEXT runs into the next table, whose own load reads the
// adapter list too: a walk's loads are counted by the first walk itself.
TEST(AdapterGenericTable, TwoWalksFiveSecondsApartUseOneLoad)
{
    Agent agent(adapterAgent(oneAdapter(networkCard())));
    EXPECT_EQ(indexes(agent, kGeneric), (std::vector<long>{1}));
    const size_t loadsPerWalk = agent.countCalls("orvdb_get_pci_adapter_list");
    EXPECT_GE(loadsPerWalk, 1u);
    agent.setClock(kStartTime + 5);
    EXPECT_EQ(indexes(agent, kGeneric), (std::vector<long>{1}));
    EXPECT_EQ(agent.countCalls("orvdb_get_pci_adapter_list"), loadsPerWalk);
    agent.setClock(kStartTime + 6);
    EXPECT_EQ(indexes(agent, kGeneric), (std::vector<long>{1}));
    EXPECT_EQ(agent.countCalls("orvdb_get_pci_adapter_list"), 2 * loadsPerWalk);
}

TEST(AdapterGenericTable, TwoReadsWithinFiveSecondsLoadOnce)
{
    Agent agent(adapterAgent(oneAdapter(networkCard())));
    EXPECT_EQ(textAt(agent, cell(kGeneric, 4, 1)), "AddOn");
    EXPECT_EQ(agent.countCalls("orvdb_get_pci_adapter_list"), 1u);
    agent.setClock(kStartTime + 5);
    EXPECT_EQ(textAt(agent, cell(kGeneric, 2, 1)), "ThinkNIC 25GbE SFP28 2-port (PCI Slot 2)");
    EXPECT_EQ(agent.countCalls("orvdb_get_pci_adapter_list"), 1u);
    agent.setClock(kStartTime + 6);
    EXPECT_EQ(integerAt(agent, cell(kGeneric, 3, 1)), 2);
    EXPECT_EQ(agent.countCalls("orvdb_get_pci_adapter_list"), 2u);
}

TEST(AdapterGenericTable, NoAdaptersLeaveEveryTableEmpty)
{
    Agent agent(adapterAgent(nlohmann::json::array()));
    EXPECT_EQ(integerAt(agent, kAdapterOobCapable), 1);
    for (Table table :
         {kGeneric, kNetworkFunctions, kNetworkPorts, kGpuFunctions, kGpuChips, kRaidFunctions, kFirmware})
        EXPECT_TRUE(agent.client().walk(oidJoin(kAdapters, {table})).empty()) << table;
}

// ---- adapterFirmwareTable ------------------------------------------------------------

TEST(AdapterFirmwareTable, IndexesRunOnAcrossAdaptersAndFunctions)
{
    nlohmann::json first = networkCard(1, 2);
    nlohmann::json second = function(102, 1, 0x1a);
    second["firmware"] = nlohmann::json::array();
    second["firmware"].push_back(firmware("UEFI", "1.0.3"));
    first["functions"].push_back(second);
    nlohmann::json adapters = oneAdapter(first);
    adapters.push_back(networkCard(3, 6));
    Agent agent(adapterAgent(adapters));
    EXPECT_EQ(indexes(agent, kFirmware), (std::vector<long>{1, 2, 3, 4, 5}));
    EXPECT_EQ(textAt(agent, cell(kFirmware, 2, 1)), "ThinkNIC 25GbE SFP28 1A:00:01");
    EXPECT_EQ(textAt(agent, cell(kFirmware, 3, 1)), "Boot Code");
    EXPECT_EQ(textAt(agent, cell(kFirmware, 4, 1)), "Firmware");
    EXPECT_EQ(textAt(agent, cell(kFirmware, 5, 1)), "Boot code");
    EXPECT_EQ(textAt(agent, cell(kFirmware, 6, 1)), "Broadcom");
    EXPECT_EQ(textAt(agent, cell(kFirmware, 7, 1)), "227.0.115.0");
    EXPECT_EQ(textAt(agent, cell(kFirmware, 8, 1)), "2025-06-30");
    EXPECT_EQ(textAt(agent, cell(kFirmware, 9, 1)), "BC-57414");
    EXPECT_EQ(textAt(agent, cell(kFirmware, 3, 3)), "UEFI");
    EXPECT_EQ(textAt(agent, cell(kFirmware, 2, 3)), "ThinkNIC 25GbE SFP28 1A:00:02");
    EXPECT_EQ(textAt(agent, cell(kFirmware, 3, 4)), "Boot Code") << "the second adapter's first component";
}

TEST(AdapterFirmwareTable, AdaptersWithoutMiscellaneousDataHaveNoFirmwareRows)
{
    nlohmann::json adapters = nlohmann::json::array();
    nlohmann::json none = networkCard(1, 2);
    none["oobSupported"] = 0;
    nlohmann::json vpdOnly = networkCard(2, 3);
    vpdOnly["oobSupported"] = 2;
    adapters.push_back(none);
    adapters.push_back(vpdOnly);
    Agent agent(adapterAgent(adapters));
    EXPECT_EQ(indexes(agent, kGeneric), (std::vector<long>{1, 2}));
    EXPECT_TRUE(indexes(agent, kFirmware).empty());
}

TEST(AdapterFirmwareTable, AColumnPastTheLastIsNoSuchObject)
{
    Agent agent(adapterAgent(oneAdapter(networkCard())));
    EXPECT_EQ(textAt(agent, cell(kFirmware, 3, 1)), "Boot Code");
    EXPECT_EQ(exceptionAt(agent, cell(kFirmware, 10, 1)), "noSuchObject");
    EXPECT_EQ(exceptionAt(agent, cell(kFirmware, 3, 9)), "noSuchInstance");
}

// ---- adapterNetworkFunctionTable and adapterNetworkPortTable -------------------------

TEST(AdapterNetworkFunctionTable, ServesTheFunctionWithItsVpdPciAndPortCounts)
{
    Agent agent(adapterAgent(oneAdapter(networkCard())));
    EXPECT_EQ(indexes(agent, kNetworkFunctions), (std::vector<long>{1}));
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 2, 1)), "ThinkNIC 25GbE SFP28 1A:00:01");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 3, 1)), "ThinkNIC 25GbE SFP28 2-port (PCI Slot 2)");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 4, 1)), "Broadcom");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 5, 1)), "5CE1A0A2-0001");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 6, 1)), "BCM57414");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 7, 1)), "AR12345678");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 8, 1)), "01PE124");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 9, 1)), "01PE123");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 10, 1)), "FOD-9");
    EXPECT_EQ(integerAt(agent, cell(kNetworkFunctions, 11, 1)), 1);
    EXPECT_EQ(integerAt(agent, cell(kNetworkFunctions, 12, 1)), 2);
    EXPECT_EQ(integerAt(agent, cell(kNetworkFunctions, 13, 1)), 2);
    EXPECT_EQ(integerAt(agent, cell(kNetworkFunctions, 14, 1)), 2);
    EXPECT_EQ(integerAt(agent, cell(kNetworkFunctions, 15, 1)), 8);
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 16, 1)), "PCIe card");
    EXPECT_EQ(integerAt(agent, cell(kNetworkFunctions, 17, 1)), 0x1a);
    EXPECT_EQ(integerAt(agent, cell(kNetworkFunctions, 18, 1)), 0);
    EXPECT_EQ(integerAt(agent, cell(kNetworkFunctions, 19, 1)), 1);
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 20, 1)), "0x14E4");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 21, 1)), "0x16D7");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 22, 1)), "Ethernet");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 23, 1)), "0x01");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 24, 1)), "0x17AA");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 25, 1)), "0x4025");
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 26, 1)), "Slot 2");
    EXPECT_EQ(exceptionAt(agent, cell(kNetworkFunctions, 27, 1)), "noSuchObject");
}

TEST(AdapterNetworkFunctionTable, WithoutOutOfBandDataThePortCountsAreZeroAndThereAreNoPorts)
{
    nlohmann::json card = networkCard();
    card["oobSupported"] = 0;
    Agent agent(adapterAgent(oneAdapter(card)));
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 2, 1)), "Function 1A:00:01");
    for (unsigned column : {12u, 13u, 14u})
        EXPECT_EQ(integerAt(agent, cell(kNetworkFunctions, column, 1)), 0) << column;
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 4, 1)), "") << "no VPD read";
    EXPECT_TRUE(indexes(agent, kNetworkPorts).empty());
}

TEST(AdapterNetworkFunctionTable, AFunctionWhoseTypeQueryFailsIsSkippedAlone)
{
    nlohmann::json card = networkCard();
    card["functions"].push_back(function(103, 1, 0x1b));
    MachineBuilder machine;
    machine.features(pciInventoryOffered()).adapters(oneAdapter(card));
    machine.fault("orvdb_get_pci_function_type", "101", 1, 0);
    Agent agent(fanAgent(machine.json(), "trace," + kAdaptersSource));
    EXPECT_EQ(indexes(agent, kNetworkFunctions), (std::vector<long>{1}));
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 2, 1)), "ThinkNIC 25GbE SFP28 1B:00:03");
    EXPECT_TRUE(tracedFromAdapters(agent, "create_funckey_list_by_adapter", "func 101 is null.\n"))
        << agent.stdoutText();
}

TEST(AdapterNetworkFunctionTable, PciTypeCodesPastNetworkReadOther)
{
    nlohmann::json card = networkCard();
    card["functions"][0]["pci"]["type"] = 12;
    Agent agent(adapterAgent(oneAdapter(card)));
    EXPECT_EQ(textAt(agent, cell(kNetworkFunctions, 22, 1)), "Other");
}

TEST(AdapterNetworkPortTable, ServesEveryLogicalPortWithItsSpeedsAndProtocols)
{
    Agent agent(adapterAgent(oneAdapter(networkCard())));
    EXPECT_EQ(indexes(agent, kNetworkPorts), (std::vector<long>{1, 2}));
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 2, 1)), "ThinkNIC 25GbE SFP28 1A:00:01");
    EXPECT_EQ(integerAt(agent, cell(kNetworkPorts, 3, 2)), 2);
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 4, 1)), "SFP28");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 5, 1)), "0A:1B:2C:3D:4E:5F");
    EXPECT_EQ(integerAt(agent, cell(kNetworkPorts, 6, 2)), 2);
    EXPECT_EQ(integerAt(agent, cell(kNetworkPorts, 7, 1), "Gauge32"), 9000);
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 8, 1)), "0A:1B:2C:3D:4E:5F");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 9, 1)), "0A:1B:2C:3D:4E:60");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 10, 1)), "Ethernet");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 11, 1)), "None");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 12, 1)), "23Gbps") << "25,000,000,000 >> 30";
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 12, 2)), "9Gbps") << "10,000,000,000 >> 30";
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 14, 1)), "Ethernet");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 14, 2)), "Ethernet, FCoE/FC, iSCSI");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 17, 1)), "SFP28");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 18, 1)), "Primary");
    EXPECT_EQ(integerAt(agent, cell(kNetworkPorts, 19, 1), "Gauge32"), 4);
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 20, 1)), "UP");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 20, 2)), "DOWN");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 21, 1)), "25Gbps");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 21, 2)), "0Gbps");
}

TEST(AdapterNetworkPortTable, OnlyTheIscsiFlagReadsAsOneWord)
{
    nlohmann::json card = networkCard();
    card["functions"][0]["physicalPorts"][0]["logicalPorts"][0]["ethernet"] = 0;
    card["functions"][0]["physicalPorts"][0]["logicalPorts"][0]["iscsi"] = 1;
    card["functions"][0]["physicalPorts"][1]["logicalPorts"][0]["ethernet"] = 0;
    card["functions"][0]["physicalPorts"][1]["logicalPorts"][0]["fcoeFc"] = 0;
    card["functions"][0]["physicalPorts"][1]["logicalPorts"][0]["iscsi"] = 0;
    Agent agent(adapterAgent(oneAdapter(card)));
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 14, 1)), "iSCSI");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 14, 2)), "");
}

TEST(AdapterNetworkPortTable, EveryLinkStatusFromThreeOnReadsUp)
{
    nlohmann::json card = networkCard();
    card["functions"][0]["physicalPorts"][0]["linkStatus"] = 0;
    card["functions"][0]["physicalPorts"][1]["linkStatus"] = 1;
    nlohmann::json more = function(102, 9, 0x1c);
    more["physicalPorts"] = nlohmann::json::array();
    more["physicalPorts"].push_back(physicalPort(3, 1000, logicalPort(1, 1, 1ull << 30, 1, 0, 0)));
    more["physicalPorts"].push_back(physicalPort(200, 100000, logicalPort(2, 2, 100ull << 30, 1, 0, 0)));
    card["functions"].push_back(more);
    Agent agent(adapterAgent(oneAdapter(card)));
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 20, 1)), "NONSUPPORT");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 20, 2)), "UNKNOWN");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 20, 3)), "UP");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 20, 4)), "UP");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 21, 4)), "100Gbps");
    EXPECT_EQ(textAt(agent, cell(kNetworkPorts, 12, 4)), "100Gbps");
}

// ---- GPU and storage functions ---------------------------------------------------------

nlohmann::json gpuAdapter(int oob)
{
    nlohmann::json card = adapter(4, 1, 4, oob, "ThinkGPU L40S 48GB");
    nlohmann::json gpu = function(401, 4, 0x81, "ThinkGPU L40S");
    gpu["gpu"] = {{"videoMemoryType", "GDDR6"}, {"videoMemorySize", " 48 GB "}};
    gpu["chips"] = nlohmann::json::array();
    for (int chip = 0; chip < 2; ++chip)
        gpu["chips"].push_back({{"name", "AD102"},
                                {"manufacturer", "NVIDIA"},
                                {"model", "L40S"},
                                {"partNumber", "900-2G133"},
                                {"fruNumber", "03KH123"},
                                {"serialNumber", "165422" + std::to_string(chip)},
                                {"family", "Ada Lovelace"},
                                {"uniqueId", "GPU-" + std::to_string(chip)},
                                {"formFactor", "Dual slot"},
                                {"number", chip},
                                {"coresEnabled", 142},
                                {"extBusClockSpeed", 100},
                                {"maxClockSpeed", 2520},
                                {"addressWidth", 64},
                                {"dataWidth", 384}});
    card["functions"].push_back(gpu);
    return card;
}

TEST(AdapterGpuTables, ServeTheGpuAndEachOfItsChips)
{
    Agent agent(adapterAgent(oneAdapter(gpuAdapter(1))));
    EXPECT_EQ(indexes(agent, kGpuFunctions), (std::vector<long>{1}));
    EXPECT_EQ(textAt(agent, cell(kGpuFunctions, 2, 1)), "ThinkGPU L40S 81:00:01");
    EXPECT_EQ(textAt(agent, cell(kGpuFunctions, 12, 1)), "48 GB");
    EXPECT_EQ(textAt(agent, cell(kGpuFunctions, 13, 1)), "GDDR6");
    EXPECT_EQ(integerAt(agent, cell(kGpuFunctions, 14, 1)), 2);
    EXPECT_EQ(textAt(agent, cell(kGpuFunctions, 22, 1)), "GPU");
    EXPECT_EQ(indexes(agent, kGpuChips), (std::vector<long>{1, 2}));
    EXPECT_EQ(textAt(agent, cell(kGpuChips, 2, 2)), "ThinkGPU L40S 81:00:01");
    EXPECT_EQ(integerAt(agent, cell(kGpuChips, 3, 2)), 1);
    EXPECT_EQ(textAt(agent, cell(kGpuChips, 4, 1)), "AD102");
    EXPECT_EQ(textAt(agent, cell(kGpuChips, 5, 1)), "Ada Lovelace");
    EXPECT_EQ(textAt(agent, cell(kGpuChips, 6, 1)), "NVIDIA");
    EXPECT_EQ(integerAt(agent, cell(kGpuChips, 7, 1)), 142);
    EXPECT_EQ(integerAt(agent, cell(kGpuChips, 8, 1), "Gauge32"), 2520);
    EXPECT_EQ(integerAt(agent, cell(kGpuChips, 9, 1), "Gauge32"), 100);
    EXPECT_EQ(integerAt(agent, cell(kGpuChips, 10, 1)), 64);
    EXPECT_EQ(integerAt(agent, cell(kGpuChips, 11, 1)), 384);
    EXPECT_EQ(textAt(agent, cell(kGpuChips, 12, 1)), "Dual slot");
    EXPECT_EQ(textAt(agent, cell(kGpuChips, 13, 1)), "L40S");
    EXPECT_EQ(textAt(agent, cell(kGpuChips, 14, 2)), "1654221");
    EXPECT_EQ(textAt(agent, cell(kGpuChips, 15, 1)), "03KH123");
    EXPECT_EQ(textAt(agent, cell(kGpuChips, 16, 1)), "900-2G133");
    EXPECT_EQ(textAt(agent, cell(kGpuChips, 17, 2)), "GPU-1");
    EXPECT_EQ(exceptionAt(agent, cell(kGpuChips, 18, 1)), "noSuchObject");
}

TEST(AdapterGpuTables, AGpuWithVpdOnlyHasNoMemoryTextsNoChipCountAndNoChipRows)
{
    Agent agent(adapterAgent(oneAdapter(gpuAdapter(2))));
    EXPECT_EQ(indexes(agent, kGpuFunctions), (std::vector<long>{1}));
    EXPECT_EQ(textAt(agent, cell(kGpuFunctions, 2, 1)), "Function 81:00:01");
    EXPECT_EQ(textAt(agent, cell(kGpuFunctions, 4, 1)), "Broadcom") << "the VPD is read";
    EXPECT_EQ(textAt(agent, cell(kGpuFunctions, 12, 1)), "");
    EXPECT_EQ(textAt(agent, cell(kGpuFunctions, 13, 1)), "");
    EXPECT_EQ(integerAt(agent, cell(kGpuFunctions, 14, 1)), 0);
    EXPECT_TRUE(indexes(agent, kGpuChips).empty());
}

TEST(AdapterRaidFunctionTable, ListsASasStorageFunction)
{
    nlohmann::json card = adapter(3, 1, 3, 2, "ThinkSystem 440-16i SAS/SATA HBA");
    card["functions"].push_back(function(301, 6, 0x3b, "440-16i HBA"));
    card["functions"].push_back(function(302, 7, 0x3b)); // "Other": in no table
    Agent agent(adapterAgent(oneAdapter(card)));
    EXPECT_EQ(indexes(agent, kRaidFunctions), (std::vector<long>{1}));
    EXPECT_EQ(textAt(agent, cell(kRaidFunctions, 2, 1)), "Function 3B:00:01");
    EXPECT_EQ(textAt(agent, cell(kRaidFunctions, 3, 1)), "ThinkSystem 440-16i SAS/SATA HBA (PCI Slot 3)");
    EXPECT_EQ(textAt(agent, cell(kRaidFunctions, 4, 1)), "Broadcom");
    EXPECT_EQ(textAt(agent, cell(kRaidFunctions, 10, 1)), "") << "no miscellaneous data with VPD only";
    EXPECT_EQ(integerAt(agent, cell(kRaidFunctions, 14, 1)), 0x3b);
    EXPECT_EQ(textAt(agent, cell(kRaidFunctions, 19, 1)), "SAS");
    EXPECT_EQ(textAt(agent, cell(kRaidFunctions, 23, 1)), "Slot 2");
    EXPECT_EQ(exceptionAt(agent, cell(kRaidFunctions, 24, 1)), "noSuchObject");
    EXPECT_TRUE(indexes(agent, kNetworkFunctions).empty());
    EXPECT_TRUE(indexes(agent, kGpuFunctions).empty());
}

// ---- a large inventory ---------------------------------------------------------------

TEST(AdapterTables, SixtyFourAdaptersOfEightFunctionsWalkCompletely)
{
    nlohmann::json adapters = nlohmann::json::array();
    for (uint32_t a = 1; a <= 64; ++a) {
        nlohmann::json card = adapter(a, 1, static_cast<int>(a), 1, "ThinkNIC 8-function card");
        for (uint32_t f = 0; f < 8; ++f) {
            nlohmann::json entry = function(a * 100 + f, f % 2 == 0 ? 1 : 6, static_cast<int>(a));
            entry["firmware"] = nlohmann::json::array();
            entry["firmware"].push_back(firmware("Boot Code", "1.0"));
            entry["physicalPorts"] = nlohmann::json::array();
            entry["physicalPorts"].push_back(physicalPort(3, 25000, logicalPort(1, 1, 25000000000ull, 1, 0, 0)));
            card["functions"].push_back(entry);
        }
        adapters.push_back(card);
    }
    Agent agent(adapterAgent(adapters));
    EXPECT_EQ(indexes(agent, kGeneric).size(), 64u);
    EXPECT_EQ(indexes(agent, kNetworkFunctions).size(), 256u);
    EXPECT_EQ(indexes(agent, kRaidFunctions).size(), 256u);
    EXPECT_EQ(indexes(agent, kNetworkPorts).size(), 256u);
    EXPECT_EQ(indexes(agent, kFirmware).size(), 512u);
    Response walk = agent.client().walkResponse(kAdapters);
    EXPECT_TRUE(walk.failure.empty()) << walk.failure;
    EXPECT_EQ(textAt(agent, cell(kGeneric, 2, 64)), "ThinkNIC 8-function card (PCI Slot 64)");
    EXPECT_EQ(agent.sanitizerFindings(), "");
}

} // namespace
} // namespace orv3::test

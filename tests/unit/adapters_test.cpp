// The adapters group's own logic on records built byte by byte and on
// small served inventories: trimming, adapter and card names, the type
// texts, the classification of functions by type mask, the protocol words,
// and adapterOOBCapable's update.
#include "adapter_tables.h"
#include "scalar_group.h"
#include "unit_machine.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

extern "C" int adapters_update_adapterOOBCapable(void *value, size_t *size);

namespace {

using orv3::test::ServedMachine;

inventory_db_adapter_t adapterRecord(const char *name, uint8_t location, uint16_t slot)
{
    inventory_db_adapter_t adapter;
    memset(&adapter, 0, sizeof adapter);
    adapter.adapterKey = 7;
    adapter.slotNo = slot;
    adapter.location = location;
    strncpy(adapter.adapterProdName, name, sizeof adapter.adapterProdName);
    return adapter;
}

std::string adapterName(const inventory_db_adapter_t &adapter, uint32_t expectedResult = ADAPTERS_OK)
{
    char name[ADAPTERS_ADAPTER_NAME_SIZE];
    memset(name, 'x', sizeof name);
    EXPECT_EQ(get_pci_AdapterName_byAdapterInfo(&adapter, name), expectedResult);
    return std::string(name, strnlen(name, sizeof name));
}

// ---- trimming ------------------------------------------------------------------------

TEST(Strtrim, RemovesLeadingAndTrailingWhiteSpaceOnly)
{
    char dst[32];
    EXPECT_EQ(strtrim(dst, " \t\n\v\f\r two  words \r\n"), ADAPTERS_OK);
    EXPECT_STREQ(dst, "two  words");
    EXPECT_EQ(strtrim(dst, ""), ADAPTERS_OK);
    EXPECT_STREQ(dst, "");
    EXPECT_EQ(strtrim(dst, " \t "), ADAPTERS_OK);
    EXPECT_STREQ(dst, "");
}

TEST(Strtrim, ANullArgumentWritesNothing)
{
    char dst[4] = "abc";
    EXPECT_EQ(strtrim(nullptr, "x"), ADAPTERS_PARTIAL);
    EXPECT_EQ(strtrim(dst, nullptr), ADAPTERS_PARTIAL);
    EXPECT_STREQ(dst, "abc");
}

TEST(TrimInto, ReadsNoFurtherThanTheFieldAndCutsToTheBuffer)
{
    const char field[4] = {' ', 'a', 'b', 'c'}; // no terminator
    char dst[8];
    EXPECT_EQ(orv3::trimInto(dst, field), 3u);
    EXPECT_STREQ(dst, "abc");
    char small[3];
    EXPECT_EQ(orv3::trimInto(small, field), 2u);
    EXPECT_STREQ(small, "ab");
}

// ---- names ---------------------------------------------------------------------------

TEST(AdapterName, OnBoardAndAddOnCarryTheSlot)
{
    EXPECT_EQ(adapterName(adapterRecord("  Intel X722  ", INVENTORY_DB_LOCATION_ON_BOARD, 1)), "Intel X722 #1");
    EXPECT_EQ(adapterName(adapterRecord("ThinkNIC", INVENTORY_DB_LOCATION_ADD_ON, 12)), "ThinkNIC (PCI Slot 12)");
}

TEST(AdapterName, AnyOtherLocationGivesTheBareTrimmedNameAndResultOne)
{
    EXPECT_EQ(adapterName(adapterRecord(" Card ", 2, 5), ADAPTERS_PARTIAL), "Card");
    EXPECT_EQ(adapterName(adapterRecord("Card", 255, 5), ADAPTERS_PARTIAL), "Card");
}

TEST(AdapterName, AWhiteSpaceNameLeavesTheFormatAroundNothing)
{
    EXPECT_EQ(adapterName(adapterRecord(" \t ", INVENTORY_DB_LOCATION_ON_BOARD, 3)), " #3");
    EXPECT_EQ(adapterName(adapterRecord("   ", INVENTORY_DB_LOCATION_ADD_ON, 4)), " (PCI Slot 4)");
}

TEST(AdapterName, AFullFieldIsCutToTheWorkBufferAndTheNameTo151Characters)
{
    inventory_db_adapter_t adapter = adapterRecord("", INVENTORY_DB_LOCATION_ADD_ON, 65535);
    memset(adapter.adapterProdName, 'N', sizeof adapter.adapterProdName); // no terminator
    const std::string name = adapterName(adapter);
    EXPECT_EQ(name, std::string(127, 'N') + " (PCI Slot 65535)");
    EXPECT_LE(name.size(), 151u);
}

TEST(FuncTypeString, NamesEveryCodeAndOtherPastNine)
{
    const char *expected[] = {"RAID", "Ethernet", "Fibre Channel", "InfiniBand",   "GPU",
                              "SCSI", "SAS",      "Other",         "Mass Storage", "Network"};
    char text[ADAPTERS_FUNC_TYPE_TEXT_SIZE];
    for (uint32_t code = 0; code < 10; ++code) {
        EXPECT_EQ(get_pci_func_type_string(code, text), ADAPTERS_OK);
        EXPECT_STREQ(text, expected[code]) << code;
    }
    for (uint32_t code : {10u, 31u, 32u, 0xffffffffu}) {
        get_pci_func_type_string(code, text);
        EXPECT_STREQ(text, "Other") << code;
    }
    EXPECT_EQ(get_pci_func_type_string(1, nullptr), ADAPTERS_PARTIAL);
}

TEST(ProtocolWords, JoinTheFlagsSetWithACommaAndABlank)
{
    char text[65];
    EXPECT_EQ(orv3::joinProtocolWords(text, sizeof text, 1, 1, 1), 24u);
    EXPECT_STREQ(text, "Ethernet, FCoE/FC, iSCSI");
    orv3::joinProtocolWords(text, sizeof text, 0, 0, 1);
    EXPECT_STREQ(text, "iSCSI");
    orv3::joinProtocolWords(text, sizeof text, 0, 1, 1);
    EXPECT_STREQ(text, "FCoE/FC, iSCSI");
    orv3::joinProtocolWords(text, sizeof text, 0, 0, 0);
    EXPECT_STREQ(text, "");
    char tiny[6];
    orv3::joinProtocolWords(tiny, sizeof tiny, 1, 1, 1);
    EXPECT_STREQ(tiny, "Ether");
}

// ---- classification over a served inventory -------------------------------------------

nlohmann::json adapterJson(uint32_t key, int location, int slot, int oob, std::vector<std::pair<uint32_t, int>> funcs)
{
    nlohmann::json adapter = {{"key", key},          {"number", key},
                              {"slot", slot},        {"location", location},
                              {"oobSupported", oob}, {"productName", "Card " + std::to_string(key)}};
    adapter["functions"] = nlohmann::json::array();
    for (auto [funcKey, type] : funcs)
        adapter["functions"].push_back(
            {{"key", funcKey}, {"type", type}, {"pci", {{"bus", key}, {"device", 0}, {"function", funcKey % 10}}}});
    return adapter;
}

std::string inventory(nlohmann::json adapters, nlohmann::json faults = nlohmann::json::array())
{
    return nlohmann::json{{"description", "adapters"},
                          {"features", {{"17", 1}}},
                          {"adapters", std::move(adapters)},
                          {"faults", std::move(faults)}}
        .dump();
}

struct ClassList {
    uint32_t result;
    std::vector<uint32_t> keys;
    std::vector<inventory_db_func_key_t> records;
};

ClassList classList(uint32_t (*build)(inventory_db_func_key_list_t *))
{
    inventory_db_func_key_list_t list = {};
    ClassList out;
    out.result = build(&list);
    for (uint32_t i = 0; i < list.count; ++i) {
        out.keys.push_back(list.keyList[i].funcKey);
        out.records.push_back(list.keyList[i]);
    }
    free(list.keyList);
    return out;
}

TEST(FunctionClasses, NoAdaptersGiveEmptyListsAndResultZero)
{
    ServedMachine machine(inventory(nlohmann::json::array()));
    for (auto build : {get_pci_network_funckey_list, get_pci_gpu_funckey_list, get_pci_raid_funckey_list,
                       get_pci_other_funckey_list}) {
        inventory_db_func_key_list_t list = {99, nullptr};
        EXPECT_EQ(build(&list), ADAPTERS_OK);
        EXPECT_EQ(list.count, 0u);
        EXPECT_EQ(list.keyList, nullptr);
    }
}

TEST(FunctionClasses, EachListKeepsTheTypesOfItsMaskInAdapterAndKeyOrder)
{
    nlohmann::json adapters = nlohmann::json::array();
    adapters.push_back(adapterJson(1, 0, 1, 1, {{11, 1}, {12, 4}, {13, 6}, {14, 2}}));
    adapters.push_back(adapterJson(2, 1, 5, 0, {{21, 9}, {22, 0}, {23, 8}, {24, 3}, {25, 5}, {26, 7}, {27, 12}}));
    ServedMachine machine(inventory(adapters));
    EXPECT_EQ(classList(get_pci_network_funckey_list).keys, (std::vector<uint32_t>{11, 14, 21, 24}));
    EXPECT_EQ(classList(get_pci_gpu_funckey_list).keys, (std::vector<uint32_t>{12}));
    EXPECT_EQ(classList(get_pci_raid_funckey_list).keys, (std::vector<uint32_t>{13, 22, 23, 25}));
    // Code 12 reads "Other" too, but only code 7 has the "other" list's bit.
    EXPECT_EQ(classList(get_pci_other_funckey_list).keys, (std::vector<uint32_t>{26}));
}

TEST(FunctionClasses, ARecordCarriesItsAdapterAndItsNames)
{
    nlohmann::json adapters = nlohmann::json::array();
    adapters.push_back(adapterJson(1, 0, 3, 0, {{11, 1}}));
    adapters.push_back(adapterJson(2, 1, 5, 2, {{21, 1}}));
    ServedMachine machine(inventory(adapters));
    ClassList list = classList(get_pci_network_funckey_list);
    ASSERT_EQ(list.result, ADAPTERS_OK);
    ASSERT_EQ(list.records.size(), 2u);
    EXPECT_EQ(list.records[0].adapterNumber, 1);
    EXPECT_EQ(list.records[0].slotNo, 0) << "on board";
    EXPECT_STREQ(list.records[0].adapterName, "Card 1 #3");
    EXPECT_STREQ(list.records[0].cardName, "Function 01:00:01");
    EXPECT_EQ(list.records[0].funcType, 1u);
    EXPECT_EQ(list.records[0].oobSupported, 0);
    EXPECT_EQ(list.records[1].slotNo, 5);
    EXPECT_STREQ(list.records[1].adapterName, "Card 2 (PCI Slot 5)");
    EXPECT_STREQ(list.records[1].cardName, "Function 02:00:01");
    EXPECT_EQ(list.records[1].oobSupported, 2);
}

TEST(FunctionClasses, AFailingTypeQuerySkipsOnlyThatFunctionWithResultOne)
{
    nlohmann::json adapters = nlohmann::json::array();
    adapters.push_back(adapterJson(1, 1, 2, 1, {{11, 1}, {12, 1}, {13, 1}}));
    nlohmann::json faults = nlohmann::json::array();
    faults.push_back({{"call", "orvdb_get_pci_function_type"}, {"key", "12"}});
    ServedMachine machine(inventory(adapters, faults));
    ClassList list = classList(get_pci_network_funckey_list);
    EXPECT_EQ(list.result, ADAPTERS_PARTIAL);
    EXPECT_EQ(list.keys, (std::vector<uint32_t>{11, 13}));
}

TEST(FunctionClasses, AnAdapterWithAnUnknownLocationIsKeptWithResultOne)
{
    nlohmann::json adapters = nlohmann::json::array();
    adapters.push_back(adapterJson(1, 2, 2, 0, {{11, 1}}));
    ServedMachine machine(inventory(adapters));
    ClassList list = classList(get_pci_network_funckey_list);
    EXPECT_EQ(list.result, ADAPTERS_PARTIAL);
    ASSERT_EQ(list.records.size(), 1u);
    EXPECT_STREQ(list.records[0].adapterName, "Card 1");
    EXPECT_EQ(list.records[0].slotNo, 2) << "not on board";
}

TEST(FunctionClasses, AFailingAdapterListFailsTheBuild)
{
    nlohmann::json faults = nlohmann::json::array();
    faults.push_back({{"call", "orvdb_get_pci_adapter_list"}});
    ServedMachine machine(inventory(nlohmann::json::array(), faults));
    EXPECT_EQ(classList(get_pci_network_funckey_list).result, ADAPTERS_FAILED);
}

TEST(CardName, OutOfBandVpdGivesTheProductNameAndAnInvalidSupportByteFails)
{
    nlohmann::json adapters = nlohmann::json::array();
    adapters.push_back(adapterJson(1, 1, 2, 1, {{11, 1}}));
    adapters[0]["functions"][0]["vpd"] = {{"productName", "  ThinkNIC 25GbE  "}};
    ServedMachine machine(inventory(adapters));
    char name[sizeof(inventory_db_func_key_t::cardName)];
    EXPECT_EQ(get_pci_CardName_byFunc(11, name, 1), ADAPTERS_OK);
    EXPECT_STREQ(name, "ThinkNIC 25GbE 01:00:01");
    EXPECT_EQ(get_pci_CardName_byFunc(11, name, 2), ADAPTERS_OK);
    EXPECT_STREQ(name, "Function 01:00:01");
    EXPECT_EQ(get_pci_CardName_byFunc(11, name, 3), ADAPTERS_PARTIAL);
    EXPECT_EQ(get_pci_CardName_byFunc(99, name, 1), ADAPTERS_PARTIAL) << "no VPD for an unknown function";
}

TEST(CheckSupportPci, ReportsTheFeatureFlag)
{
    uint32_t supported = 7;
    {
        ServedMachine machine(R"({"description": "no PCI inventory", "features": {"17": 0}})");
        EXPECT_EQ(check_support_pci(&supported), ADAPTERS_OK);
        EXPECT_EQ(supported, 0u);
    }
    {
        ServedMachine machine(R"({"description": "PCI inventory", "features": {"17": 5}})");
        EXPECT_EQ(check_support_pci(&supported), ADAPTERS_OK);
        EXPECT_EQ(supported, 1u);
    }
    EXPECT_EQ(check_support_pci(nullptr), ADAPTERS_FAILED);
}

TEST(AdapterOobCapableUpdate, AFailingQueryKeepsTheValue)
{
    orv3::ScalarCell cell = 0;
    size_t size = 0;
    {
        ServedMachine machine(R"({"description": "PCI inventory", "features": {"17": 1}})");
        EXPECT_EQ(adapters_update_adapterOOBCapable(&cell, &size), ADAPTERS_OK);
        EXPECT_EQ(static_cast<int32_t>(cell), 1);
        EXPECT_EQ(size, 4u);
    }
    {
        ServedMachine machine(R"({"description": "failing", "features": {"17": 0},
            "faults": [{"call": "agentless_get_supported_status", "key": "17"}]})");
        EXPECT_EQ(adapters_update_adapterOOBCapable(&cell, &size), ADAPTERS_FAILED);
        EXPECT_EQ(static_cast<int32_t>(cell), 1);
    }
    EXPECT_EQ(adapters_update_adapterOOBCapable(nullptr, &size), ADAPTERS_FAILED);
}

} // namespace

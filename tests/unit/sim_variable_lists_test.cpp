// The simulated data manager's variable lists: writes are put into a list,
// validated against the variables' accepted values and ranges, and applied
// all together or not at all. Runs against the sample machine's LED
// variables and puts every value it changes back.
#include "platform.h"
#include "unit_machine.h"
#include "variable_store.h"

#include "orv3/agent_binding.h"
#include "orv3/data_manager.h"

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <string>

namespace {

const char kIdentification[] = "s/lightpathstatus/other/identification";
const char kInfo[] = "s/lightpathstatus/other/info";
const char kUserName[] = "s/lightpathstatus/data/swe_username";
const char *const kLightPath[] = {"s/lightpathstatus", nullptr};
const oid kSomeOid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 8, 1, 0};

// A bound scalar record as the settable groups declare them.
struct Record {
    long cell = 0;
    char text[64] = {};
    uint32_t cursize = 0;
    agent_binding_scalar_t rec{};

    Record(const char *storeVar, int32_t storeType, const char *userVar = nullptr)
    {
        rec.name = "testRecord";
        rec.store_var = storeVar;
        rec.store_type = storeType;
        rec.user_var = userVar;
        rec.mib_value = storeType == QUEL_DM_TYPE_INT ? static_cast<void *>(&cell) : text;
        rec.mib_cursize = &cursize;
        rec.mib_maxsize = storeType == QUEL_DM_TYPE_INT ? 4 : sizeof text;
        strcpy(rec.requester, "SNMPv1");
    }
};

struct VarBind {
    netsnmp_variable_list *vb = nullptr;
    explicit VarBind(long value)
    {
        snmp_varlist_add_variable(&vb, kSomeOid, OID_LENGTH(kSomeOid), ASN_INTEGER, &value, sizeof value);
    }
    explicit VarBind(const std::string &value)
    {
        snmp_varlist_add_variable(&vb, kSomeOid, OID_LENGTH(kSomeOid), ASN_OCTET_STR, value.data(), value.size());
    }
    ~VarBind() { snmp_free_varbind(vb); }
    VarBind(const VarBind &) = delete;
    VarBind &operator=(const VarBind &) = delete;
};

// A fresh updatable list over "s/lightpathstatus", deleted at the end.
struct List {
    quel_dm_varlist_t handle = nullptr;
    int32_t status = -1;
    List()
    {
        EXPECT_EQ(quel_dm_GetUpdatableVars("myCfgVars", g_coHandle, 0, 0, kLightPath, &handle, &status), 0);
        EXPECT_EQ(status, 0);
        EXPECT_NE(handle, nullptr);
    }
    ~List()
    {
        int32_t word = -1;
        EXPECT_EQ(quel_dm_DeleteVarList(handle, g_coHandle, 0, 0, &word), 0);
    }
    int32_t validate(int32_t &word) { return quel_dm_ValidateVars(handle, g_coHandle, 0, 0, &word); }
    int32_t update(int32_t &word) { return quel_dm_UpdateVars(handle, g_coHandle, 0, 0, &word); }
};

long readInteger(const char *storeVar)
{
    Record record(storeVar, QUEL_DM_TYPE_INT);
    record.cell = -12345;
    EXPECT_EQ(update_binding_from_TIRO_v3("test", &record.rec, -1), 0) << storeVar;
    return static_cast<int32_t>(record.cell);
}

std::string readText(const char *path)
{
    char buffer[256] = {};
    int32_t status = -1;
    GetVarValueSTRING(-1, g_coHandle, 0, 0, path, &status, buffer, sizeof buffer);
    EXPECT_EQ(status, 0) << path;
    return buffer;
}

// Writes an LED variable with the requester's name as a SET does; returns
// UpdateVars's status word.
int32_t setLed(const char *storeVar, long value)
{
    List list;
    Record record(storeVar, QUEL_DM_TYPE_INT, kUserName);
    VarBind vb(value);
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, vb.vb, list.handle), 0);
    int32_t word = -1;
    list.update(word);
    return word;
}

// Puts the sample machine's values back.
void restoreLeds()
{
    EXPECT_EQ(setLed(kIdentification, 0), 0);
    EXPECT_EQ(setLed(kInfo, 0), 0);
    List list;
    Record user(kUserName, QUEL_DM_TYPE_STRING);
    VarBind empty(std::string(""));
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", &user.rec, empty.vb, list.handle), 0);
    int32_t word = -1;
    EXPECT_EQ(list.update(word), 0);
    EXPECT_EQ(readText(kUserName), "");
}

TEST(SimVariableLists, UpdatableListOverTheLightPathNamespace)
{
    quel_dm_varlist_t list = nullptr;
    int32_t status = -1;
    ASSERT_EQ(quel_dm_GetUpdatableVars("myCfgVars", g_coHandle, 0, 0, kLightPath, &list, &status), 0);
    EXPECT_EQ(status, 0);
    ASSERT_NE(list, nullptr);
    status = -1;
    EXPECT_EQ(quel_dm_ValidateVars(list, g_coHandle, 0, 0, &status), 0) << "a list without writes is valid";
    EXPECT_EQ(status, 0);
    EXPECT_EQ(quel_dm_DeleteVarList(list, g_coHandle, 0, 0, &status), 0);
    EXPECT_EQ(status, 0);
}

TEST(SimVariableLists, ReadListOfSeveralNamespaces)
{
    const char *const namespaces[] = {"s/voltages", "s/temperatures", nullptr};
    quel_dm_varlist_t list = nullptr;
    int32_t status = -1;
    ASSERT_EQ(quel_dm_GetVars("myCfgVars", g_coHandle, 0, 0, namespaces, &list, &status), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(quel_dm_DeleteVarList(list, g_coHandle, 0, 0, &status), 0);
}

TEST(SimVariableLists, MissingNamespacesOrOutPointerAreBadArguments)
{
    const char *const none[] = {nullptr};
    const char *const emptyPath[] = {"", nullptr};
    quel_dm_varlist_t list = nullptr;
    int32_t status = -1;
    EXPECT_EQ(quel_dm_GetVars("myCfgVars", g_coHandle, 0, 0, nullptr, &list, &status), 1);
    EXPECT_EQ(status, orv3::sim::kBadArgument);
    status = -1;
    EXPECT_EQ(quel_dm_GetUpdatableVars("myCfgVars", g_coHandle, 0, 0, none, &list, &status), 1);
    EXPECT_EQ(status, orv3::sim::kBadArgument);
    status = -1;
    EXPECT_EQ(quel_dm_GetUpdatableVars("myCfgVars", g_coHandle, 0, 0, emptyPath, &list, &status), 1);
    EXPECT_EQ(status, orv3::sim::kBadArgument);
    status = -1;
    EXPECT_EQ(quel_dm_GetUpdatableVars("myCfgVars", g_coHandle, 0, 0, kLightPath, nullptr, &status), 1);
    EXPECT_EQ(status, orv3::sim::kBadArgument);
    EXPECT_EQ(list, nullptr) << "a failed call hands out no list";
}

TEST(SimVariableLists, NamespaceWithNothingInItIsNotFound)
{
    const char *const namespaces[] = {"s/lightpathstatus", "s/nothing/here", nullptr};
    quel_dm_varlist_t list = nullptr;
    int32_t status = -1;
    EXPECT_EQ(quel_dm_GetVars("myCfgVars", g_coHandle, 0, 0, namespaces, &list, &status), 1);
    EXPECT_EQ(status, orv3::sim::kNoSuchNamespace);
    EXPECT_EQ(list, nullptr);
}

TEST(SimVariableLists, ValueOutsideAcceptedIsRejectedAndNeverStored)
{
    List list;
    Record record(kIdentification, QUEL_DM_TYPE_INT, kUserName);
    VarBind seven(7L);
    ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, seven.vb, list.handle), 0);
    int32_t word = -1;
    EXPECT_EQ(list.validate(word), 1);
    EXPECT_EQ(word, orv3::sim::kValueRejected);
    EXPECT_STREQ(quel_dm_GetVarListErrorStr(word), "value rejected by validation");
    word = -1;
    EXPECT_EQ(list.update(word), 1);
    EXPECT_EQ(word, orv3::sim::kValueRejected);
    EXPECT_EQ(readInteger(kIdentification), 0);
    EXPECT_EQ(readText(kUserName), "") << "nothing of a rejected list is written";
}

TEST(SimVariableLists, InformationLedTakesOnlyOffAndOn)
{
    List list;
    Record record(kInfo, QUEL_DM_TYPE_INT);
    VarBind blink(2L);
    ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, blink.vb, list.handle), 0);
    int32_t word = -1;
    EXPECT_EQ(list.validate(word), 1);
    EXPECT_EQ(word, orv3::sim::kValueRejected);
}

TEST(SimVariableLists, TextForAnIntegerVariableIsRejected)
{
    List list;
    Record record(kIdentification, QUEL_DM_TYPE_STRING);
    VarBind text(std::string("1"));
    ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, text.vb, list.handle), 0);
    int32_t word = -1;
    EXPECT_EQ(list.validate(word), 1);
    EXPECT_EQ(word, orv3::sim::kValueRejected);
}

TEST(SimVariableLists, WriteOutsideTheListsNamespacesIsABadArgument)
{
    List list;
    Record record("s/voltages/status/count", QUEL_DM_TYPE_INT);
    VarBind nine(9L);
    ASSERT_EQ(update_TIRO_from_varbind_v3("voltage", &record.rec, nine.vb, list.handle), 0);
    int32_t word = -1;
    EXPECT_EQ(list.validate(word), 1);
    EXPECT_EQ(word, orv3::sim::kBadArgument);
    word = -1;
    EXPECT_EQ(list.update(word), 1);
    EXPECT_EQ(word, orv3::sim::kBadArgument);
    EXPECT_EQ(readInteger("s/voltages/status/count"), 9);
}

TEST(SimVariableLists, TablesAndTheirRowsAreNotWrittenThroughLists)
{
    for (const char *path :
         {"s/lightpathstatus/status/lightpathstatustbl", "s/lightpathstatus/status/lightpathstatustbl[3]/status"}) {
        List list;
        Record record(path, QUEL_DM_TYPE_INT);
        VarBind on(1L);
        ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, on.vb, list.handle), 0);
        int32_t word = -1;
        EXPECT_EQ(list.validate(word), 1) << path;
        EXPECT_EQ(word, orv3::sim::kValueRejected) << path;
    }
}

TEST(SimVariableLists, UpdateAppliesEveryWriteAndReadsSeeIt)
{
    List list;
    Record identity(kIdentification, QUEL_DM_TYPE_INT, kUserName);
    Record info(kInfo, QUEL_DM_TYPE_INT, kUserName);
    VarBind blink(2L), on(1L);
    ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &identity.rec, blink.vb, list.handle), 0);
    ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &info.rec, on.vb, list.handle), 0);
    int32_t word = -1;
    EXPECT_EQ(list.validate(word), 0);
    EXPECT_EQ(word, 0);
    word = -1;
    EXPECT_EQ(list.update(word), 0);
    EXPECT_EQ(word, 0);

    EXPECT_EQ(readInteger(kIdentification), 2);
    EXPECT_EQ(readInteger(kInfo), 1);
    EXPECT_EQ(readText(kUserName), "SNMPv1");
    EXPECT_EQ(readText(kIdentification), "2");
    restoreLeds();
    EXPECT_EQ(readInteger(kIdentification), 0);
    EXPECT_EQ(readInteger(kInfo), 0);
}

TEST(SimVariableLists, OneRejectedWriteKeepsTheWholeListOut)
{
    List list;
    Record identity(kIdentification, QUEL_DM_TYPE_INT, kUserName);
    Record info(kInfo, QUEL_DM_TYPE_INT, kUserName);
    VarBind good(1L), bad(5L);
    ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &identity.rec, good.vb, list.handle), 0);
    ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &info.rec, bad.vb, list.handle), 0);
    int32_t word = -1;
    EXPECT_EQ(list.update(word), 1);
    EXPECT_EQ(word, orv3::sim::kValueRejected);
    EXPECT_EQ(readInteger(kIdentification), 0);
    EXPECT_EQ(readText(kUserName), "");
}

TEST(SimVariableLists, UnknownListIsAnInvalidHandle)
{
    quel_dm_varlist_t list = nullptr;
    int32_t status = -1;
    ASSERT_EQ(quel_dm_GetVars("myCfgVars", g_coHandle, 0, 0, kLightPath, &list, &status), 0);
    ASSERT_EQ(quel_dm_DeleteVarList(list, g_coHandle, 0, 0, &status), 0);
    status = -1;
    EXPECT_EQ(quel_dm_DeleteVarList(list, g_coHandle, 0, 0, &status), 1) << "deleted twice";
    EXPECT_EQ(status, orv3::sim::kBadHandle);
    status = -1;
    EXPECT_EQ(quel_dm_ValidateVars(list, g_coHandle, 0, 0, &status), 1);
    EXPECT_EQ(status, orv3::sim::kBadHandle);
    status = -1;
    EXPECT_EQ(quel_dm_UpdateVars(nullptr, g_coHandle, 0, 0, &status), 1);
    EXPECT_EQ(status, orv3::sim::kBadHandle);
}

TEST(SimVariableLists, ListNeverDeletedStaysWithTheStore)
{
    // Nothing leaks: the store owns every list it hands out.
    quel_dm_varlist_t list = nullptr;
    int32_t status = -1;
    ASSERT_EQ(quel_dm_GetUpdatableVars("abandoned", g_coHandle, 0, 0, kLightPath, &list, &status), 0);
    Record record(kIdentification, QUEL_DM_TYPE_INT, kUserName);
    VarBind on(1L);
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, on.vb, list), 0);
}

TEST(SimVariableLists, CallLogKeysNameTheNamespacesAndThePendingWrites)
{
    EXPECT_EQ(orv3::sim::joinNamespaces({"s/voltages", "s/temperatures"}), "s/voltages,s/temperatures");
    EXPECT_EQ(orv3::sim::describeWrites({{kIdentification, 1}, {kUserName, "SNMPv1"}}),
              "s/lightpathstatus/other/identification=1,s/lightpathstatus/data/swe_username=SNMPv1");
}

class SimVariableListsServed : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!getenv("ORV3_UNIT_MACHINE"))
            GTEST_SKIP() << "needs the unit tests' private machine copy";
    }
    static std::string sampleWith(const std::string &path, nlohmann::json value)
    {
        nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
        machine["store"][path] = std::move(value);
        return machine.dump();
    }
};

TEST_F(SimVariableListsServed, RangeOfAnIntegerVariable)
{
    const char brightness[] = "s/lightpathstatus/other/brightness";
    orv3::test::ServedMachine served(sampleWith(brightness, {{"value", 50}, {"min", 10}, {"max", 100}}));
    EXPECT_EQ(readInteger(brightness), 50);
    for (long refused : {9L, 101L, -1L}) {
        EXPECT_EQ(setLed(brightness, refused), orv3::sim::kValueRejected) << refused;
        EXPECT_EQ(readInteger(brightness), 50);
    }
    for (long accepted : {10L, 100L}) {
        EXPECT_EQ(setLed(brightness, accepted), orv3::sim::kOk) << accepted;
        EXPECT_EQ(readInteger(brightness), accepted);
    }
}

TEST_F(SimVariableListsServed, AcceptedTextsOfATextVariable)
{
    const char mode[] = "s/lightpathstatus/other/mode";
    orv3::test::ServedMachine served(sampleWith(mode, {{"value", "auto"}, {"accepted", {"auto", "manual"}}}));
    EXPECT_EQ(readText(mode), "auto");
    for (const char *text : {"manual", "bogus"}) {
        List list;
        Record record(mode, QUEL_DM_TYPE_STRING);
        VarBind vb{std::string(text)};
        ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, vb.vb, list.handle), 0);
        int32_t word = -1;
        list.update(word);
        EXPECT_EQ(word, std::string(text) == "manual" ? orv3::sim::kOk : orv3::sim::kValueRejected) << text;
    }
    EXPECT_EQ(readText(mode), "manual");
}

TEST_F(SimVariableListsServed, ReloadedDescriptionIsTheTruthAgain)
{
    ASSERT_EQ(setLed(kIdentification, 1), 0);
    ASSERT_EQ(readInteger(kIdentification), 1);
    {
        // Any change of the file drops every written value.
        orv3::test::ServedMachine served(sampleWith("_edited", "yes"));
        EXPECT_EQ(readInteger(kIdentification), 0);
        EXPECT_EQ(readText(kUserName), "");
        ASSERT_EQ(setLed(kIdentification, 2), 0);
        EXPECT_EQ(readInteger(kIdentification), 2);
    }
    EXPECT_EQ(readInteger(kIdentification), 0) << "the sample served again";
}

TEST_F(SimVariableListsServed, UserNameIsStoredEvenWhenTheFileLacksIt)
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["store"].erase(kUserName);
    orv3::test::ServedMachine served(machine.dump());
    char buffer[16];
    int32_t status = -1;
    EXPECT_EQ(GetVarValueSTRING(-1, g_coHandle, 0, 0, kUserName, &status, buffer, sizeof buffer), 1);
    EXPECT_EQ(status, orv3::sim::kNoSuchVariable);
    EXPECT_EQ(setLed(kIdentification, 1), 0);
    EXPECT_EQ(readText(kUserName), "SNMPv1");
}

} // namespace

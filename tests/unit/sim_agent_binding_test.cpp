// The simulated agent-process binding routines: reading store variables
// into bound scalar records, putting varbinds into variable lists, reading
// one variable as text, and the trace names. Runs against the sample
// machine and puts back every value it changes.
#include "platform.h"
#include "unit_machine.h"

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
const char kUserName[] = "s/lightpathstatus/data/swe_username";
const char *const kLightPath[] = {"s/lightpathstatus", nullptr};
const oid kSomeOid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 8, 1, 0};
constexpr char kFill = '#';

// A bound scalar record with a value buffer of `maxsize` bytes and a
// guard area behind it.
struct Record {
    union {
        long cell;
        char bytes[128];
    } value;
    uint32_t cursize = 999;
    agent_binding_scalar_t rec{};

    Record(const char *storeVar, int32_t storeType, uint32_t maxsize, const char *userVar = nullptr)
    {
        memset(&value, kFill, sizeof value);
        rec.name = "testRecord";
        rec.store_var = storeVar;
        rec.store_type = storeType;
        rec.user_var = userVar;
        rec.mib_value = &value;
        rec.mib_cursize = &cursize;
        rec.mib_maxsize = maxsize;
        strcpy(rec.requester, "SNMPv1");
    }
    int32_t integer() const
    {
        int32_t number;
        memcpy(&number, value.bytes, sizeof number);
        return number;
    }
    bool untouchedFrom(size_t offset) const
    {
        for (size_t i = offset; i < sizeof value.bytes; ++i)
            if (value.bytes[i] != kFill)
                return false;
        return true;
    }
};

struct VarBind {
    netsnmp_variable_list *vb = nullptr;
    VarBind(u_char type, const void *value, size_t length)
    {
        snmp_varlist_add_variable(&vb, kSomeOid, OID_LENGTH(kSomeOid), type, value, length);
    }
    ~VarBind() { snmp_free_varbind(vb); }
    VarBind(const VarBind &) = delete;
    VarBind &operator=(const VarBind &) = delete;
};

std::string readText(const char *path)
{
    char buffer[256] = {};
    int32_t status = -1;
    GetVarValueSTRING(-1, g_coHandle, 0, 0, path, &status, buffer, sizeof buffer);
    EXPECT_EQ(status, 0) << path;
    return buffer;
}

// Runs a list through validation and update as a SET does.
int32_t update(quel_dm_varlist_t list)
{
    int32_t word = -1;
    quel_dm_UpdateVars(list, g_coHandle, 0, 0, &word);
    int32_t ignored;
    quel_dm_DeleteVarList(list, g_coHandle, 0, 0, &ignored);
    return word;
}

quel_dm_varlist_t newList()
{
    quel_dm_varlist_t list = nullptr;
    int32_t status = -1;
    EXPECT_EQ(quel_dm_GetUpdatableVars("myCfgVars", g_coHandle, 0, 0, kLightPath, &list, &status), 0);
    return list;
}

void writeIdentification(long value, const char *requester)
{
    quel_dm_varlist_t list = newList();
    Record record(kIdentification, QUEL_DM_TYPE_INT, 4, kUserName);
    memcpy(record.rec.requester, requester, std::min(strlen(requester) + 1, sizeof record.rec.requester));
    VarBind vb(ASN_INTEGER, &value, sizeof value);
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, vb.vb, list), 0);
    EXPECT_EQ(update(list), 0);
}

void restoreUserName()
{
    quel_dm_varlist_t list = newList();
    Record record(kUserName, QUEL_DM_TYPE_STRING, 64);
    VarBind vb(ASN_OCTET_STR, "", 0);
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, vb.vb, list), 0);
    EXPECT_EQ(update(list), 0);
}

TEST(SimAgentBinding, IntegerVariableFillsFourBytes)
{
    Record record(kIdentification, QUEL_DM_TYPE_INT, 4);
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &record.rec, -1), SNMP_ERR_NOERROR);
    EXPECT_EQ(record.integer(), 0);
    EXPECT_EQ(record.cursize, 4u);
    EXPECT_TRUE(record.untouchedFrom(4));

    Record count("s/voltages/status/count", QUEL_DM_TYPE_INT, 4);
    EXPECT_EQ(update_binding_from_TIRO_v2("voltage", &count.rec, -1), SNMP_ERR_NOERROR);
    EXPECT_EQ(count.integer(), 9);
}

TEST(SimAgentBinding, TextIsBoundedByTheRecordsCapacity)
{
    Record record("s/voltages/status/voltagetbl[%ld]/descr", QUEL_DM_TYPE_STRING, 10);
    EXPECT_EQ(update_binding_from_TIRO_v3("voltage", &record.rec, 7), SNMP_ERR_NOERROR);
    EXPECT_STREQ(record.value.bytes, "CPU 1 Mem");
    EXPECT_EQ(record.cursize, 9u);
    EXPECT_TRUE(record.untouchedFrom(10));

    Record reading("s/temperatures/status/temperaturetbl[%ld]/str/reading", QUEL_DM_TYPE_STRING, 64);
    EXPECT_EQ(update_binding_from_TIRO_v3("temperature", &reading.rec, 2), SNMP_ERR_NOERROR);
    EXPECT_STREQ(reading.value.bytes, "45.00 Centigrade");
    EXPECT_EQ(reading.cursize, 16u);
}

TEST(SimAgentBinding, IntegerOfATableRowAndAsText)
{
    Record state("s/lightpathstatus/status/lightpathstatustbl[%ld]/status", QUEL_DM_TYPE_INT, 4);
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &state.rec, 14), SNMP_ERR_NOERROR);
    EXPECT_EQ(state.integer(), 2) << "Drive 2 blinks";
    Record text("s/voltages/status/count", QUEL_DM_TYPE_STRING, 8);
    EXPECT_EQ(update_binding_from_TIRO_v3("voltage", &text.rec, -1), SNMP_ERR_NOERROR);
    EXPECT_STREQ(text.value.bytes, "9");
    EXPECT_EQ(text.cursize, 1u);
}

TEST(SimAgentBinding, RowArgumentOfAScalarPathIsIgnored)
{
    Record record(kIdentification, QUEL_DM_TYPE_INT, 4);
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &record.rec, 3), SNMP_ERR_NOERROR);
    EXPECT_EQ(record.integer(), 0);
}

TEST(SimAgentBinding, MissingVariableIsGenErrAndLeavesTheRecord)
{
    for (const char *path : {"s/lightpathstatus/other/nothing", "s/lightpathstatus/status/lightpathstatustbl",
                             "s/lightpathstatus/status/lightpathstatustbl[99]/status"}) {
        Record record(path, QUEL_DM_TYPE_INT, 4);
        EXPECT_EQ(update_binding_from_TIRO_v3("leds", &record.rec, -1), SNMP_ERR_GENERR) << path;
        EXPECT_TRUE(record.untouchedFrom(0));
        EXPECT_EQ(record.cursize, 999u);
    }
    Record text("s/hw_health/disks", QUEL_DM_TYPE_STRING, 64);
    EXPECT_EQ(update_binding_from_TIRO_v3("disks", &text.rec, -1), SNMP_ERR_GENERR);
    EXPECT_TRUE(text.untouchedFrom(0));
}

TEST(SimAgentBinding, RecordThatCannotHoldTheValueIsGenErr)
{
    Record textIntoInteger("s/lightpathstatus/data/swe_username", QUEL_DM_TYPE_INT, 4);
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &textIntoInteger.rec, -1), SNMP_ERR_GENERR);
    Record tooSmall(kIdentification, QUEL_DM_TYPE_INT, 2);
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &tooSmall.rec, -1), SNMP_ERR_GENERR);
    EXPECT_TRUE(tooSmall.untouchedFrom(0));
    Record noRoom(kIdentification, QUEL_DM_TYPE_STRING, 0);
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &noRoom.rec, -1), SNMP_ERR_GENERR);
    Record otherType(kIdentification, 4, 4);
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &otherType.rec, -1), SNMP_ERR_GENERR);
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", nullptr, -1), SNMP_ERR_GENERR);
    Record noCursize(kIdentification, QUEL_DM_TYPE_INT, 4);
    noCursize.rec.mib_cursize = nullptr;
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &noCursize.rec, -1), SNMP_ERR_GENERR);
}

TEST(SimAgentBinding, VarbindOfTheWrongTypeIsWrongType)
{
    quel_dm_varlist_t list = newList();
    Record integer(kIdentification, QUEL_DM_TYPE_INT, 4, kUserName);
    VarBind text(ASN_OCTET_STR, "on", 2);
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", &integer.rec, text.vb, list), SNMP_ERR_WRONGTYPE);
    Record string(kUserName, QUEL_DM_TYPE_STRING, 64);
    long one = 1;
    VarBind number(ASN_INTEGER, &one, sizeof one);
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", &string.rec, number.vb, list), SNMP_ERR_WRONGTYPE);
    u_long gaugeValue = 1;
    VarBind gauge(ASN_GAUGE, &gaugeValue, sizeof gaugeValue);
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", &integer.rec, gauge.vb, list), SNMP_ERR_WRONGTYPE);
    EXPECT_EQ(update(list), 0) << "nothing was put into the list";
}

TEST(SimAgentBinding, UnknownListIsGenErr)
{
    quel_dm_varlist_t list = newList();
    int32_t status;
    ASSERT_EQ(quel_dm_DeleteVarList(list, g_coHandle, 0, 0, &status), 0);
    Record record(kIdentification, QUEL_DM_TYPE_INT, 4, kUserName);
    long one = 1;
    VarBind vb(ASN_INTEGER, &one, sizeof one);
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, vb.vb, list), SNMP_ERR_GENERR);
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, vb.vb, nullptr), SNMP_ERR_GENERR);
    EXPECT_EQ(update_TIRO_from_varbind_v3("leds", nullptr, vb.vb, nullptr), SNMP_ERR_GENERR);
}

TEST(SimAgentBinding, SetWritesTheValueAndTheRequesterAndReadsGiveThemBack)
{
    writeIdentification(1, "SNMPv1");
    Record record(kIdentification, QUEL_DM_TYPE_INT, 4);
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &record.rec, -1), SNMP_ERR_NOERROR);
    EXPECT_EQ(record.integer(), 1);
    EXPECT_EQ(readText(kUserName), "SNMPv1");

    writeIdentification(0, "SNMPv1");
    restoreUserName();
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &record.rec, -1), SNMP_ERR_NOERROR);
    EXPECT_EQ(record.integer(), 0);
    EXPECT_EQ(readText(kUserName), "");
}

TEST(SimAgentBinding, RequesterWithoutTerminatorIsTakenUpTo64Bytes)
{
    quel_dm_varlist_t list = newList();
    Record record(kIdentification, QUEL_DM_TYPE_INT, 4, kUserName);
    memset(record.rec.requester, 'x', sizeof record.rec.requester);
    long two = 2;
    VarBind vb(ASN_INTEGER, &two, sizeof two);
    ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, vb.vb, list), 0);
    ASSERT_EQ(update(list), 0);
    EXPECT_EQ(readText(kUserName), std::string(64, 'x'));
    writeIdentification(0, "SNMPv1");
    restoreUserName();
}

TEST(SimAgentBinding, TextVarbindIsTakenByItsLength)
{
    quel_dm_varlist_t list = newList();
    Record record(kUserName, QUEL_DM_TYPE_STRING, 64);
    VarBind vb(ASN_OCTET_STR, "operatorXYZ", 8);
    ASSERT_EQ(update_TIRO_from_varbind_v3("leds", &record.rec, vb.vb, list), 0);
    ASSERT_EQ(update(list), 0);
    EXPECT_EQ(readText(kUserName), "operator");
    restoreUserName();
}

TEST(SimAgentBinding, OneVariableAsText)
{
    char buffer[32];
    int32_t status = -1;
    EXPECT_EQ(GetVarValueSTRING(-1, g_coHandle, 0, 0, "s/temperatures/status/count", &status, buffer, sizeof buffer),
              0);
    EXPECT_EQ(status, 0);
    EXPECT_STREQ(buffer, "9");

    memset(buffer, kFill, sizeof buffer);
    status = -1;
    EXPECT_EQ(GetVarValueSTRING(-1, g_coHandle, 0, 0, "s/hw_health/disks[4]/name", &status, buffer, 8), 0);
    EXPECT_EQ(status, 0);
    EXPECT_STREQ(buffer, "M.2 Boo") << "bounded by the size, terminator included";
    EXPECT_EQ(buffer[8], kFill);
}

TEST(SimAgentBinding, OneMissingVariableAsTextIsVariableNotFound)
{
    char buffer[32] = "unchanged";
    int32_t status = -1;
    EXPECT_EQ(GetVarValueSTRING(-1, g_coHandle, 0, 0, "s/vpd/machine/missing", &status, buffer, sizeof buffer), 1);
    EXPECT_EQ(status, orv3::sim::kNoSuchVariable);
    status = -1;
    EXPECT_EQ(GetVarValueSTRING(-1, g_coHandle, 0, 0, "s/hw_health/disks", &status, buffer, sizeof buffer), 1);
    EXPECT_EQ(status, orv3::sim::kNoSuchVariable) << "a table is not a single variable";
    status = -1;
    EXPECT_EQ(GetVarValueSTRING(-1, g_coHandle, 0, 0, nullptr, &status, buffer, sizeof buffer), 1);
    EXPECT_EQ(status, orv3::sim::kBadArgument);
    status = -1;
    EXPECT_EQ(GetVarValueSTRING(-1, g_coHandle, 0, 0, kUserName, &status, buffer, 0), 1);
    EXPECT_EQ(status, orv3::sim::kBadArgument);
    EXPECT_STREQ(buffer, "unchanged");
}

TEST(SimAgentBinding, NamesOfHandlerStatesAndModes)
{
    EXPECT_STREQ(getHandlerStateName(0), "IDLE");
    EXPECT_STREQ(getHandlerStateName(1), "RESERVE1_DONE");
    EXPECT_STREQ(getHandlerStateName(2), "RESERVE2_DONE");
    EXPECT_STREQ(getHandlerStateName(3), "ACTION_DONE");
    EXPECT_STREQ(getHandlerStateName(4), "UNKNOWN");
    EXPECT_STREQ(getHandlerStateName(-1), "UNKNOWN");
    const char *modes[] = {"MODE_SET_RESERVE1", "MODE_SET_RESERVE2", "MODE_SET_ACTION",
                           "MODE_SET_COMMIT",   "MODE_SET_FREE",     "MODE_SET_UNDO"};
    for (int mode = 0; mode < 6; ++mode)
        EXPECT_STREQ(getSNMPModeName(mode), modes[mode]);
    EXPECT_STREQ(getSNMPModeName(160), "MODE_GET");
    EXPECT_STREQ(getSNMPModeName(161), "MODE_GETNEXT");
    EXPECT_STREQ(getSNMPModeName(165), "MODE_GETBULK");
    for (int other : {-1, 6, 162, 163, 164, 166})
        EXPECT_STREQ(getSNMPModeName(other), "MODE_UNKNOWN") << other;
}

TEST(SimAgentBinding, FaultGivesItsResultAsTheSnmpStatus)
{
    if (!getenv("ORV3_UNIT_MACHINE"))
        GTEST_SKIP() << "needs the unit tests' private machine copy";
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["faults"] = {
        {{"call", "update_binding_from_TIRO_v3"}, {"key", kIdentification}, {"result", SNMP_ERR_RESOURCEUNAVAILABLE}},
        {{"call", "GetVarValueSTRING"}, {"result", 1}, {"status", 3}, {"times", 1}},
    };
    orv3::test::ServedMachine served(machine.dump());
    Record record(kIdentification, QUEL_DM_TYPE_INT, 4);
    EXPECT_EQ(update_binding_from_TIRO_v3("leds", &record.rec, -1), SNMP_ERR_RESOURCEUNAVAILABLE);
    EXPECT_TRUE(record.untouchedFrom(0));
    EXPECT_EQ(update_binding_from_TIRO_v2("leds", &record.rec, -1), SNMP_ERR_NOERROR) << "v2 is a call of its own";

    char buffer[16];
    int32_t status = -1;
    EXPECT_EQ(GetVarValueSTRING(-1, g_coHandle, 0, 0, kUserName, &status, buffer, sizeof buffer), 1);
    EXPECT_EQ(status, 3);
    EXPECT_EQ(GetVarValueSTRING(-1, g_coHandle, 0, 0, kUserName, &status, buffer, sizeof buffer), 0);
    EXPECT_EQ(status, 0);
}

} // namespace

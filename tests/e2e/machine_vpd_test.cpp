// The machine's VPD scalars and the controller-firmware table through the
// real agent: the manufacturer rule that splits type and model, the error
// statuses of a failed read, and the firmware table's joined column and cache.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kMachineVpd = oidJoin(kMonitorsRoot, {5, 2, 1});
const std::string kType = oidJoin(kMachineVpd, {1, 0});
const std::string kModel = oidJoin(kMachineVpd, {2, 0});
const std::string kSerial = oidJoin(kMachineVpd, {3, 0});
const std::string kUuid = oidJoin(kMachineVpd, {4, 0});
const std::string kProductName = oidJoin(kMachineVpd, {5, 0});
const std::string kFirmwareTable = oidJoin(kMonitorsRoot, {5, 1});
const std::string kFirmwareStore = "s/vpd/firmwaretbl";

std::string firmwareCell(int column, int index)
{
    return oidJoin(kFirmwareTable, {1, column, index});
}

MachineBuilder machineMadeBy(const std::string &manufacturer, const std::string &typeModel)
{
    MachineBuilder machine;
    machine.variable("s/vpd/machine/productmfg", manufacturer)
        .variable("s/vpd/machine/typemodel", typeModel)
        .variable("s/vpd/machine/serialNo", "J30A1B2C")
        .variable("s/vpd/machine/uuid", "8F3C2A1E0B5D4C6F9A7B1C2D3E4F5061")
        .variable("s/vpd/machine/prodName", "ThinkRack TR650 V3");
    return machine;
}

AgentOptions agentFor(const MachineBuilder &machine, std::string debugTokens = "")
{
    return fanAgent(machine.json(), std::move(debugTokens));
}

// The value of one scalar, which must be an OCTET STRING.
std::string textOf(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << reply;
    if (reply.varbinds.size() != 1)
        return "<no answer>";
    EXPECT_EQ(typeName(reply.varbinds[0].type), "OCTET STRING") << reply;
    return reply.varbinds[0].octets;
}

long errorOf(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_FALSE(reply.timedOut);
    return reply.errorStatus;
}

TEST(MachineVpd, MakerTrvxSplitsTypeAndModelAfterFourCharacters)
{
    Agent agent(agentFor(machineMadeBy("TRVX", "ABCDEFGH")));
    EXPECT_EQ(textOf(agent, kType), "ABCD");
    EXPECT_EQ(textOf(agent, kModel), "EFGH");
}

TEST(MachineVpd, MakerOemServesTheWholeTextAsTypeAndAsModel)
{
    Agent agent(agentFor(machineMadeBy("OEM", "ABCDEFGH")));
    EXPECT_EQ(textOf(agent, kType), "ABCDEFGH");
    EXPECT_EQ(textOf(agent, kModel), "ABCDEFGH");
}

TEST(MachineVpd, ATypeModelShorterThanFourIsAllTypeAndNoModel)
{
    Agent agent(agentFor(machineMadeBy("TRVX", "AB")));
    EXPECT_EQ(textOf(agent, kType), "AB");
    EXPECT_EQ(textOf(agent, kModel), "");
}

TEST(MachineVpd, TheOtherThreeAreTheStoresTexts)
{
    Agent agent(agentFor(machineMadeBy("TRVX", "7D2VCTO1WW")));
    EXPECT_EQ(textOf(agent, kSerial), "J30A1B2C");
    EXPECT_EQ(textOf(agent, kUuid), "8F3C2A1E0B5D4C6F9A7B1C2D3E4F5061");
    EXPECT_EQ(textOf(agent, kProductName), "ThinkRack TR650 V3");
}

class UnknownMaker : public ::testing::TestWithParam<std::string> {};

TEST_P(UnknownMaker, GivesBadValueOnTypeAndModelWhileTheOthersAreServed)
{
    Agent agent(agentFor(machineMadeBy(GetParam(), "ABCDEFGH"), "trace,SNMP_Error"));
    EXPECT_EQ(errorOf(agent, kType), SNMP_ERR_BADVALUE);
    EXPECT_EQ(errorOf(agent, kModel), SNMP_ERR_BADVALUE);
    EXPECT_EQ(textOf(agent, kSerial), "J30A1B2C");
    EXPECT_EQ(textOf(agent, kUuid), "8F3C2A1E0B5D4C6F9A7B1C2D3E4F5061");
    EXPECT_EQ(textOf(agent, kProductName), "ThinkRack TR650 V3");
    EXPECT_EQ(agent.countInStdout("SNMP_Error : updateOEMTypeModel: GETVARVALUE (s/vpd/machine/productmfg) "
                                  "error 0:productmfg data is not correct\n"),
              2u)
        << agent.stdoutText();
}

const char *const kMakerNames[] = {"TrailingBlank", "LowerCase", "Shorter", "Longer", "Empty"};
INSTANTIATE_TEST_SUITE_P(Manufacturers, UnknownMaker, ::testing::Values("TRVX ", "trvx", "TRV", "OEM2", ""),
                         [](const auto &info) { return std::string(kMakerNames[info.index]); });

struct FailedRead {
    int statusWord;
    long snmpError;
};

class FailedManufacturerRead : public ::testing::TestWithParam<FailedRead> {};

TEST_P(FailedManufacturerRead, IsMappedToTheRequestsErrorAndTraced)
{
    MachineBuilder machine = machineMadeBy("TRVX", "ABCDEFGH");
    machine.fault("GetVarValueSTRING", "s/vpd/machine/productmfg", 1, GetParam().statusWord);
    Agent agent(agentFor(machine, "trace,SNMP_Error"));
    EXPECT_EQ(errorOf(agent, kType), GetParam().snmpError);
    EXPECT_EQ(errorOf(agent, kModel), GetParam().snmpError);
    EXPECT_EQ(textOf(agent, kSerial), "J30A1B2C");
    std::string line = "SNMP_Error : getSingleValueFromTIRO: GETVARVALUE (s/vpd/machine/productmfg) error " +
                       std::to_string(GetParam().statusWord) + ":";
    EXPECT_EQ(agent.countInStdout(line), 2u) << agent.stdoutText();
}

// Status 2 reads as wrongType, 3 as badValue, any other as genErr.
INSTANTIATE_TEST_SUITE_P(StatusWords, FailedManufacturerRead,
                         ::testing::Values(FailedRead{2, SNMP_ERR_WRONGTYPE}, FailedRead{3, SNMP_ERR_BADVALUE},
                                           FailedRead{9, SNMP_ERR_GENERR}, FailedRead{1, SNMP_ERR_GENERR}),
                         [](const auto &info) { return "Status" + std::to_string(info.param.statusWord); });

TEST(MachineVpd, AFailedTypeModelReadIsMappedToo)
{
    MachineBuilder machine = machineMadeBy("TRVX", "ABCDEFGH");
    machine.fault("GetVarValueSTRING", "s/vpd/machine/typemodel", 1, 2);
    Agent agent(agentFor(machine));
    EXPECT_EQ(errorOf(agent, kType), SNMP_ERR_WRONGTYPE);
    EXPECT_EQ(errorOf(agent, kModel), SNMP_ERR_WRONGTYPE);
}

TEST(MachineVpd, AreTextsOfAtMost255Characters)
{
    std::string longText(300, 'S');
    MachineBuilder machine = machineMadeBy("OEM", std::string(300, 'M'));
    machine.variable("s/vpd/machine/serialNo", longText);
    Agent agent(agentFor(machine));
    EXPECT_EQ(textOf(agent, kSerial), std::string(255, 'S'));
    EXPECT_EQ(textOf(agent, kType), std::string(255, 'M'));
    EXPECT_EQ(textOf(agent, kModel), std::string(255, 'M'));
}

TEST(MachineVpd, EveryGetReadsTheStoreAgain)
{
    MachineBuilder machine = machineMadeBy("TRVX", "ABCDEFGH");
    Agent agent(agentFor(machine));
    EXPECT_EQ(textOf(agent, kSerial), "J30A1B2C");
    agent.clearCallLog();
    textOf(agent, kSerial);
    textOf(agent, kSerial);
    EXPECT_EQ(agent.countCalls("update_binding_from_TIRO_v2 s/vpd/machine/serialNo"), 2u);
    machine.variable("s/vpd/machine/serialNo", "K40Z9Y8X");
    agent.replaceMachine(machine.json());
    EXPECT_EQ(textOf(agent, kSerial), "K40Z9Y8X");
}

TEST(MachineVpd, RegistrationIsTracedAsTexts)
{
    Agent agent(agentFor(machineMadeBy("TRVX", "ABCDEFGH"), "machineVpd"));
    std::string out = agent.stdoutText();
    EXPECT_EQ(agent.countInStdout("machineVpd: Registering machineVpd variables\n"), 1u) << out;
    for (const char *name : {"machineLevelVpdMachineType", "machineLevelVpdMachineModel", "machineLevelSerialNumber",
                             "machineLevelUUID", "machineLevelProductName"})
        EXPECT_EQ(agent.countInStdout(std::string("machineVpd: Registering ") + name + "[ASN_OCTET_STR] OK\n"), 1u)
            << out;
}

TEST(MachineVpd, IsReadOnly)
{
    Agent agent(agentFor(machineMadeBy("TRVX", "ABCDEFGH")));
    Response reply = agent.client("private").set({SetValue::ofOctets(kSerial, "X")});
    EXPECT_EQ(reply.errorStatus, SNMP_ERR_NOTWRITABLE) << reply;
    EXPECT_EQ(textOf(agent, kSerial), "J30A1B2C");
}

// ---- kepVpdTable ---------------------------------------------------------------

nlohmann::json firmwareRow(int index, const std::string &type, const std::string &id, const std::string &version,
                           const std::string &date)
{
    return {{"index", index}, {"type", type}, {"id", id}, {"version", version}, {"releaseDate", date}};
}

TEST(FirmwareTable, ServesTypeIdentifierWithVersionAndDate)
{
    MachineBuilder machine;
    machine.table(kFirmwareStore, {firmwareRow(1, "BMC (Primary)", "TGBT52L", "5.10", "2026-03-14"),
                                   firmwareRow(2, "UEFI", "U8E128F", "2.30", "2026-02-01")});
    Agent agent(agentFor(machine));
    std::vector<VarBind> walk = agent.client().walk(kFirmwareTable);
    ASSERT_EQ(walk.size(), 8u);
    EXPECT_EQ(walk[0].oid, firmwareCell(1, 1));
    EXPECT_EQ(typeName(walk[0].type), "INTEGER");
    EXPECT_EQ(walk[0].integer, 1);
    EXPECT_EQ(walk[2].octets, "BMC (Primary)");
    EXPECT_EQ(typeName(walk[2].type), "OCTET STRING");
    EXPECT_EQ(walk[4].octets, "TGBT52L 5.10");
    EXPECT_EQ(walk[5].octets, "U8E128F 2.30");
    EXPECT_EQ(walk[6].octets, "2026-03-14");
    EXPECT_EQ(walk[7].oid, firmwareCell(4, 2));
}

TEST(FirmwareTable, AnEmptyVersionLeavesTheIdentifierAndOneBlank)
{
    MachineBuilder machine;
    machine.table(kFirmwareStore, {firmwareRow(1, "LXPM", "PDL142H", "", "2025-11-30")});
    Agent agent(agentFor(machine));
    EXPECT_EQ(textOf(agent, firmwareCell(3, 1)), "PDL142H ");
}

TEST(FirmwareTable, IdentifierAndVersionAreCutAt255)
{
    MachineBuilder machine;
    machine.table(kFirmwareStore, {firmwareRow(1, std::string(300, 'T'), std::string(200, 'I'), std::string(200, 'V'),
                                               std::string(300, 'D'))});
    Agent agent(agentFor(machine));
    EXPECT_EQ(textOf(agent, firmwareCell(3, 1)), std::string(200, 'I') + " " + std::string(54, 'V'));
    EXPECT_EQ(textOf(agent, firmwareCell(2, 1)), std::string(255, 'T'));
    EXPECT_EQ(textOf(agent, firmwareCell(4, 1)), std::string(255, 'D'));
}

TEST(FirmwareTable, RequestsTwoSecondsApartNeverReloadAndAPauseOfFourDoes)
{
    MachineBuilder machine;
    machine.table(kFirmwareStore, {firmwareRow(1, "UEFI", "U8E128F", "2.30", "2026-02-01")});
    Agent agent(agentFor(machine));
    const std::string bind = "quel_dm_BindRow " + kFirmwareStore;
    long now = kStartTime;
    for (int request = 0; request < 5; ++request, now += 2) {
        agent.setClock(now);
        EXPECT_EQ(textOf(agent, firmwareCell(3, 1)), "U8E128F 2.30");
    }
    EXPECT_EQ(agent.countCalls(bind), 1u);
    agent.setClock(now - 2 + 4);
    textOf(agent, firmwareCell(3, 1));
    EXPECT_EQ(agent.countCalls(bind), 2u);
}

TEST(FirmwareTable, LoadsAreTracedWithTheirRows)
{
    MachineBuilder machine;
    machine.table(kFirmwareStore, {firmwareRow(1, "UEFI", "U8E128F", "2.30", "2026-02-01"),
                                   firmwareRow(2, "BMC", "TGBT52L", "5.10", "2026-03-14")});
    Agent agent(agentFor(machine, "kepVpdTable"));
    agent.client().walk(kFirmwareTable);
    EXPECT_EQ(agent.countInStdout("kepVpdTable: initialize_kepVpdTable_local iIndex = 2\n"), 1u) << agent.stdoutText();
}

TEST(FirmwareTable, AFailedFirstRowLeavesItEmptyAndIsPrinted)
{
    MachineBuilder machine;
    machine.table(kFirmwareStore, {firmwareRow(1, "UEFI", "U8E128F", "2.30", "2026-02-01")})
        .fault("quel_dm_GetFirstRow", kFirmwareStore, 1, 9);
    Agent agent(agentFor(machine));
    EXPECT_TRUE(agent.client().walk(kFirmwareTable).empty());
    EXPECT_TRUE(agent.waitForStdout(
        "initialize_kepVpdTable_local quel_dm_GetFirstRow error 9-operation failed, varStatus = 1\n"))
        << agent.stdoutText();
}

TEST(FirmwareTable, ColumnFiveIsNoSuchObjectAndAMissingRowNoSuchInstance)
{
    MachineBuilder machine;
    machine.table(kFirmwareStore, {firmwareRow(1, "UEFI", "U8E128F", "2.30", "2026-02-01")});
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({firmwareCell(5, 1)});
    ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
    EXPECT_EQ(reply.varbinds[0].type, SNMP_NOSUCHOBJECT);
    reply = agent.client().get({firmwareCell(2, 7)});
    ASSERT_EQ(reply.varbinds.size(), 1u) << reply;
    EXPECT_EQ(reply.varbinds[0].type, SNMP_NOSUCHINSTANCE);
}

} // namespace
} // namespace orv3::test

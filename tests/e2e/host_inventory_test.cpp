// The host's MAC addresses, processors and memory modules through the real
// agent: columns, text bounds, the conversions of the processor's numbers
// and the tables' refresh.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kMacTable = oidJoin(kMonitorsRoot, {5, 19});
const std::string kCpuTable = oidJoin(kMonitorsRoot, {5, 20});
const std::string kMemoryTable = oidJoin(kMonitorsRoot, {5, 21});
const std::string kCpuStore = "s/hw_health/processors";
const std::string kMemoryStore = "s/hw_health/memory";

std::string cell(const std::string &table, int column, int index)
{
    return oidJoin(table, {1, column, index});
}

AgentOptions agentFor(const MachineBuilder &machine)
{
    return fanAgent(machine.json());
}

nlohmann::json processor(int index, nlohmann::json changes = nlohmann::json::object())
{
    nlohmann::json row = {{"index", index},
                          {"fru_name", "CPU " + std::to_string(index)},
                          {"clock_speed", "2.10"},
                          {"part_id", "Intel Xeon Gold 6430"},
                          {"cpu_type", "Central Processor"},
                          {"cpu_model", "Intel(R) Xeon(R) Gold 6430 CPU @ 2.10GHz"},
                          {"family", "Intel Xeon Scalable"},
                          {"cores", "32"},
                          {"threads", "64"},
                          {"voltage", "1.8V"},
                          {"max_data_width", "64"},
                          {"status", "Normal"}};
    row.update(changes);
    return row;
}

nlohmann::json memoryModule(int index, nlohmann::json changes = nlohmann::json::object())
{
    nlohmann::json row = {{"index", index},
                          {"description", "DIMM " + std::to_string(index)},
                          {"part_number", "M321R4GA3BB6-CQK"},
                          {"serial_number", "S3A1B2C" + std::to_string(index)},
                          {"manuf_date", "2324"},
                          {"type", "DDR5"},
                          {"capacity", 32},
                          {"status", "Normal"},
                          {"config_speed", 4400},
                          {"mem_speed", 4800},
                          {"aep_flag", 0},
                          {"udi_part_number", "01KR521"}};
    row.update(changes);
    return row;
}

Response getCpu(Agent &agent, int column)
{
    Response reply = agent.client().get({cell(kCpuTable, column, 1)});
    EXPECT_TRUE(reply.ok()) << reply;
    EXPECT_EQ(reply.varbinds.size(), 1u) << reply;
    return reply;
}

long cpuNumber(Agent &agent, int column)
{
    Response reply = getCpu(agent, column);
    if (reply.varbinds.size() != 1)
        return -999;
    EXPECT_EQ(typeName(reply.varbinds[0].type), "INTEGER") << reply;
    return reply.varbinds[0].integer;
}

std::string cpuText(Agent &agent, int column)
{
    Response reply = getCpu(agent, column);
    if (reply.varbinds.size() != 1)
        return "<no answer>";
    EXPECT_EQ(typeName(reply.varbinds[0].type), "OCTET STRING") << reply;
    return reply.varbinds[0].octets;
}

TEST(HostMacAddresses, ServeDescriptionAndAddress)
{
    MachineBuilder machine;
    machine.table("s/vpd/nictbl", {{{"index", 1}, {"name", "Onboard LOM Port 1"}, {"macAddr", "08:94:ef:12:34:56"}},
                                   {{"index", 2}, {"name", std::string(300, 'n')}, {"macAddr", "08:94:ef:12:34:57"}}});
    Agent agent(agentFor(machine));
    std::vector<VarBind> walk = agent.client().walk(kMacTable);
    ASSERT_EQ(walk.size(), 6u);
    EXPECT_EQ(walk[1].integer, 2);
    EXPECT_EQ(walk[2].octets, "Onboard LOM Port 1");
    EXPECT_EQ(walk[3].octets, std::string(255, 'n'));
    EXPECT_EQ(walk[5].oid, cell(kMacTable, 3, 2));
    EXPECT_EQ(walk[5].octets, "08:94:ef:12:34:57");
    EXPECT_EQ(typeName(walk[5].type), "OCTET STRING");
}

TEST(HostMacAddresses, SteadyRequestsKeepTheRowsAndAPauseReloads)
{
    MachineBuilder machine;
    machine.table("s/vpd/nictbl", {{{"index", 1}, {"name", "LOM 1"}, {"macAddr", "08:94:ef:12:34:56"}}});
    Agent agent(agentFor(machine));
    for (long now = kStartTime; now <= kStartTime + 9; now += 3) {
        agent.setClock(now);
        agent.client().get({cell(kMacTable, 3, 1)});
    }
    EXPECT_EQ(agent.countCalls("quel_dm_BindRow s/vpd/nictbl"), 1u);
    agent.setClock(kStartTime + 13);
    agent.client().get({cell(kMacTable, 3, 1)});
    EXPECT_EQ(agent.countCalls("quel_dm_BindRow s/vpd/nictbl"), 2u);
}

TEST(Processors, ServeEveryColumnWithTheNumbersConverted)
{
    MachineBuilder machine;
    machine.table(kCpuStore, {processor(1)});
    Agent agent(agentFor(machine));
    EXPECT_EQ(cpuNumber(agent, 1), 1);
    EXPECT_EQ(cpuText(agent, 2), "CPU 1");
    EXPECT_EQ(cpuNumber(agent, 3), 2100);
    EXPECT_EQ(cpuText(agent, 4), "Intel Xeon Gold 6430");
    EXPECT_EQ(cpuText(agent, 5), "Central Processor");
    EXPECT_EQ(cpuText(agent, 6), "Intel Xeon Scalable");
    EXPECT_EQ(cpuNumber(agent, 7), 32);
    EXPECT_EQ(cpuNumber(agent, 8), 64);
    EXPECT_EQ(cpuNumber(agent, 9), 1800);
    EXPECT_EQ(cpuNumber(agent, 10), 64);
    EXPECT_EQ(cpuText(agent, 11), "Normal");
    EXPECT_EQ(cpuText(agent, 12), "Intel(R) Xeon(R) Gold 6430 CPU @ 2.10GHz");
}

struct SpeedText {
    const char *text;
    long served;
};

class ProcessorSpeed : public ::testing::TestWithParam<SpeedText> {};

TEST_P(ProcessorSpeed, IsTheDecimalTextInThousandthsOnlyWhenItHasAPoint)
{
    MachineBuilder machine;
    machine.table(kCpuStore, {processor(1, {{"clock_speed", GetParam().text}})});
    Agent agent(agentFor(machine));
    EXPECT_EQ(cpuNumber(agent, 3), GetParam().served);
}

INSTANTIATE_TEST_SUITE_P(Texts, ProcessorSpeed,
                         ::testing::Values(SpeedText{"2.10", 2100}, SpeedText{"2.1", 2100}, SpeedText{"2.1234", 2123},
                                           SpeedText{"2100", 2100}, SpeedText{"2,1", 2}, SpeedText{"", 0},
                                           SpeedText{"3", 3}),
                         [](const auto &info) { return "Text" + std::to_string(info.index); });

TEST(Processors, VoltageOf1Point8VIs1800AndAnEmptyOneIs0)
{
    MachineBuilder machine;
    machine.table(kCpuStore, {processor(1, {{"voltage", "1.8V"}}), processor(2, {{"voltage", ""}})});
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({cell(kCpuTable, 9, 1), cell(kCpuTable, 9, 2)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 2u);
    EXPECT_EQ(reply.varbinds[0].integer, 1800);
    EXPECT_EQ(reply.varbinds[1].integer, 0);
}

TEST(Processors, CoresAndThreadsAreTheLeadingIntegerOfTheirText)
{
    MachineBuilder machine;
    machine.table(kCpuStore, {processor(1, {{"cores", "16 cores"}, {"threads", "none"}})});
    Agent agent(agentFor(machine));
    EXPECT_EQ(cpuNumber(agent, 7), 16);
    EXPECT_EQ(cpuNumber(agent, 8), 0);
}

TEST(Processors, LongTextsAreCutToTheirColumns)
{
    std::string eighty(80, 'f'), forty(40, 'd');
    MachineBuilder machine;
    machine.table(kCpuStore, {processor(1, {{"family", eighty},
                                            {"cpu_model", eighty},
                                            {"fru_name", forty},
                                            {"part_id", forty},
                                            {"cpu_type", forty},
                                            {"status", forty}})});
    Agent agent(agentFor(machine));
    EXPECT_EQ(cpuText(agent, 6), std::string(63, 'f'));
    EXPECT_EQ(cpuText(agent, 12), std::string(63, 'f'));
    EXPECT_EQ(cpuText(agent, 2), std::string(30, 'd'));
    EXPECT_EQ(cpuText(agent, 4), std::string(30, 'd'));
    EXPECT_EQ(cpuText(agent, 5), std::string(30, 'd'));
    EXPECT_EQ(cpuText(agent, 11), std::string(30, 'd'));
}

TEST(Processors, TwoRequestsInOneSecondAreServedFromOneLoadAndOneTwoSecondsLaterReloads)
{
    MachineBuilder machine;
    machine.table(kCpuStore, {processor(1)});
    Agent agent(agentFor(machine));
    const std::string bind = "quel_dm_BindRow " + kCpuStore;
    cpuNumber(agent, 3);
    cpuNumber(agent, 3);
    EXPECT_EQ(agent.countCalls(bind), 1u);
    agent.setClock(kStartTime + 2);
    cpuNumber(agent, 3);
    EXPECT_EQ(agent.countCalls(bind), 2u);
    agent.setClock(kStartTime + 4);
    cpuNumber(agent, 3);
    EXPECT_EQ(agent.countCalls(bind), 3u);
}

TEST(MemoryModules, ServeEveryColumnWithTheFlagLast)
{
    MachineBuilder machine;
    machine.table(kMemoryStore, {memoryModule(1), memoryModule(2, {{"aep_flag", 1}, {"capacity", 128}})});
    Agent agent(agentFor(machine));
    std::vector<VarBind> walk = agent.client().walk(kMemoryTable);
    ASSERT_EQ(walk.size(), 24u);
    auto at = [&](int column, int index) { return walk.at(static_cast<size_t>((column - 1) * 2 + index - 1)); };
    EXPECT_EQ(at(2, 1).octets, "DIMM 1");
    EXPECT_EQ(at(3, 1).octets, "M321R4GA3BB6-CQK");
    EXPECT_EQ(at(4, 2).octets, "S3A1B2C2");
    EXPECT_EQ(at(5, 1).octets, "2324");
    EXPECT_EQ(at(6, 1).octets, "DDR5");
    EXPECT_EQ(typeName(at(7, 2).type), "INTEGER");
    EXPECT_EQ(at(7, 2).integer, 128);
    EXPECT_EQ(at(8, 1).octets, "Normal");
    EXPECT_EQ(at(9, 1).integer, 4400);
    EXPECT_EQ(at(10, 1).integer, 4800);
    EXPECT_EQ(at(11, 1).octets, "01KR521");
    EXPECT_EQ(at(12, 1).integer, 0);
    EXPECT_EQ(at(12, 2).oid, cell(kMemoryTable, 12, 2));
    EXPECT_EQ(at(12, 2).integer, 1);
}

TEST(MemoryModules, APartNumberOf31OrMoreCharactersIsServedAsItsFirst30)
{
    MachineBuilder machine;
    machine.table(kMemoryStore, {memoryModule(1, {{"part_number", std::string(31, 'p')}}),
                                 memoryModule(2, {{"part_number", std::string(60, 'q')}})});
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({cell(kMemoryTable, 3, 1), cell(kMemoryTable, 3, 2)});
    ASSERT_TRUE(reply.ok()) << reply;
    ASSERT_EQ(reply.varbinds.size(), 2u);
    EXPECT_EQ(reply.varbinds[0].octets, std::string(30, 'p'));
    EXPECT_EQ(reply.varbinds[1].octets, std::string(30, 'q'));
}

TEST(InventoryTables, AreReadOnlyWithNoSuchObjectPastTheirColumns)
{
    MachineBuilder machine;
    machine.table(kCpuStore, {processor(1)}).table(kMemoryStore, {memoryModule(1)});
    Agent agent(agentFor(machine));
    Response reply = agent.client().get({cell(kCpuTable, 13, 1), cell(kMemoryTable, 13, 1)});
    ASSERT_EQ(reply.varbinds.size(), 2u) << reply;
    EXPECT_EQ(reply.varbinds[0].type, SNMP_NOSUCHOBJECT);
    EXPECT_EQ(reply.varbinds[1].type, SNMP_NOSUCHOBJECT);
    reply = agent.client("private").set({SetValue::ofInteger(cell(kMemoryTable, 7, 1), 64)});
    EXPECT_EQ(reply.errorStatus, SNMP_ERR_NOTWRITABLE) << reply;
}

} // namespace
} // namespace orv3::test

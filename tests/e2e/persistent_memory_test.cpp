// Flash DIMMs and persistent-memory modules through the real agent: fdTable
// from the data manager (fdNumber is not served), and systemAepDIMMVpdTable
// from the inventory database with its capacities, the columns each kind of
// extra data fills, and its 5-second cache.
#include "fan_machines.h"
#include "machine_builder.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

const std::string kFlashDimms = oidJoin(kMonitorsRoot, {13, 2});
const std::string kFdNumber = oidJoin(kFlashDimms, {1, 0});
const std::string kFdTable = oidJoin(kFlashDimms, {2});
const std::string kPmemTable = oidJoin(kMonitorsRoot, {5, 22});

std::string cell(const std::string &table, unsigned column, unsigned index)
{
    return oidJoin(table, {1, column, index});
}

Response getOne(Agent &agent, const std::string &oid)
{
    Response reply = agent.client().get({oid});
    EXPECT_TRUE(reply.ok()) << oid << ": " << reply;
    return reply;
}

std::string textAt(Agent &agent, const std::string &oid)
{
    Response reply = getOne(agent, oid);
    if (reply.varbinds.size() != 1)
        return "<no answer>";
    EXPECT_EQ(typeName(reply.varbinds[0].type), "OCTET STRING") << oid << ": " << reply;
    return reply.varbinds[0].octets;
}

nlohmann::json flashDimm(int index, int capacity, int warranty)
{
    return {{"index", index},
            {"name", "FDIMM " + std::to_string(index)},
            {"status", "Normal"},
            {"op_status", "Online"},
            {"temperature", "41 C"},
            {"capacity", capacity},
            {"warranty_write", warranty},
            {"endurance_write", 95},
            {"model_type", "ULLtraDIMM"},
            {"fw_level", "S1.3.5"},
            {"part_number", "00FE001"},
            {"serial_number", "FD12345678901234567890123456789"},
            {"manuf_id", "SanDisk"}};
}

TEST(FlashDimms, TheTableFormatsCapacityAndWearAndFdNumberIsNotServed)
{
    MachineBuilder machine;
    machine.table("s/hw_health/flashdimms", {flashDimm(1, 16, 97), flashDimm(2, 200, 100)});
    Agent agent(fanAgent(machine.json()));
    EXPECT_EQ(textAt(agent, cell(kFdTable, 2, 1)), "FDIMM 1");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 3, 1)), "Normal");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 4, 1)), "Online");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 5, 1)), "16 GB");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 6, 1)), "ULLtraDIMM");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 7, 1)), "00FE001");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 8, 1)), "FD1234567890123456789012345678") << "at most 30 characters";
    EXPECT_EQ(textAt(agent, cell(kFdTable, 9, 1)), "SanDisk");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 10, 1)), "41 C");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 11, 1)), "97%");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 12, 1)), "95%");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 13, 1)), "S1.3.5");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 5, 2)), "200 GB");
    EXPECT_EQ(textAt(agent, cell(kFdTable, 11, 2)), "100%");

    Response count = agent.client().get({kFdNumber});
    ASSERT_EQ(count.varbinds.size(), 1u) << count;
    EXPECT_EQ(typeName(count.varbinds[0].type), "noSuchObject");
    Response first = agent.client().getNext({kFlashDimms});
    ASSERT_EQ(first.varbinds.size(), 1u);
    EXPECT_EQ(first.varbinds[0].oid, cell(kFdTable, 1, 1)) << "a walk starts at the table";
}

TEST(FlashDimms, TheTableIsReadOnly)
{
    MachineBuilder machine;
    machine.table("s/hw_health/flashdimms", {flashDimm(1, 16, 97)});
    Agent agent(fanAgent(machine.json()));
    Response reply = agent.client("private").set({SetValue::ofOctets(cell(kFdTable, 2, 1), "x")});
    EXPECT_EQ(reply.errorStatus, SNMP_ERR_NOTWRITABLE) << reply;
}

nlohmann::json pmemModule(uint32_t id, int kind, uint64_t capacity)
{
    return {{"id", id},
            {"speed1", 2666},
            {"speed2", 3200},
            {"text1", "DIMM " + std::to_string(id)},
            {"text2", "Intel"},
            {"text3", "NMA1XXD128GPS"},
            {"text4", "8089A2"},
            {"text5", "01.02.00.5446"},
            {"capacity1", capacity},
            {"capacity2", 1073741824},
            {"capacity3", 1288490188},
            {"capacity4", 1023},
            {"capacity5", 1024},
            {"capacity6", 0},
            {"count", 2},
            {"percentage", 97},
            {"securityState", 2},
            {"healthState", 1},
            {"extraKind", kind},
            {"text6", " 0x0001 "},
            {"text7", "AppDirect"}};
}

AgentOptions pmemAgent(std::vector<nlohmann::json> modules, MachineBuilder machine = MachineBuilder())
{
    nlohmann::json section = nlohmann::json::array();
    for (auto &entry : modules)
        section.push_back(std::move(entry));
    machine.persistentMemory(section);
    return fanAgent(machine.json());
}

TEST(PersistentMemory, ServesEveryColumnOfAModule)
{
    Agent agent(pmemAgent({pmemModule(7, 3, 1610612736)}));
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 2, 1)), "DIMM 7");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 3, 1)), "Intel");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 4, 1)), "2666 MHz");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 5, 1)), "3200 MHz");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 6, 1)), "NMA1XXD128GPS");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 7, 1)), "8089A2");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 8, 1)), "01.02.00.5446");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 9, 1)), "1.5 GB");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 10, 1)), "1.0 GB");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 11, 1)), "1.2 GB");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 12, 1)), "1023 B");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 13, 1)), "1.0 KB");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 14, 1)), "0 B");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 15, 1)), "2");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 16, 1)), "0x0001");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 17, 1)), "AppDirect");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 18, 1)), "97%");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 19, 1)), "Locked");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 20, 1)), "Noncritical");
    Response past = agent.client().get({cell(kPmemTable, 21, 1)});
    ASSERT_EQ(past.varbinds.size(), 1u);
    EXPECT_EQ(typeName(past.varbinds[0].type), "noSuchObject");
}

TEST(PersistentMemory, KindTwoLeavesThePercentageAndHealthEmpty)
{
    Agent agent(pmemAgent({pmemModule(7, 1, 1 << 30), pmemModule(8, 2, 1 << 30)}));
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 18, 1)), "97%");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 19, 1)), "");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 20, 1)), "Noncritical");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 18, 2)), "");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 19, 2)), "Locked");
    EXPECT_EQ(textAt(agent, cell(kPmemTable, 20, 2)), "");
}

TEST(PersistentMemory, TwoWalksWithinFiveSecondsReadTheDatabaseOnce)
{
    Agent agent(pmemAgent({pmemModule(7, 3, 1 << 30), pmemModule(8, 3, 1 << 30)}));
    EXPECT_EQ(agent.client().walk(kPmemTable).size(), 2u * 20u);
    EXPECT_EQ(agent.countCalls("orvdb_get_AEP_memory_list"), 1u);
    EXPECT_EQ(agent.countCalls("orvdb_get_memory_by_id"), 2u);
    agent.setClock(kStartTime + 5);
    EXPECT_EQ(agent.client().walk(kPmemTable).size(), 2u * 20u);
    EXPECT_EQ(agent.countCalls("orvdb_get_AEP_memory_list"), 1u);
    agent.setClock(kStartTime + 6);
    agent.client().walk(kPmemTable);
    EXPECT_EQ(agent.countCalls("orvdb_get_AEP_memory_list"), 2u);
}

TEST(PersistentMemory, AModuleThatCannotBeReadIsLeftOutWithoutAGap)
{
    MachineBuilder machine;
    machine.fault("orvdb_get_memory_by_id", "7", 1, 0);
    Agent agent(pmemAgent({pmemModule(7, 3, 1 << 30), pmemModule(8, 3, 1 << 30)}, machine));
    std::vector<VarBind> indexes = agent.client().walk(oidJoin(kPmemTable, {1, 2}));
    ASSERT_EQ(indexes.size(), 1u);
    EXPECT_EQ(indexes[0].oid, cell(kPmemTable, 2, 1));
    EXPECT_EQ(indexes[0].octets, "DIMM 8");
    EXPECT_NE(agent.traceLogText().find("] Failed: orvdb_get_memory_by_id return ORV_DB_STATUS_FAIL \r\n"),
              std::string::npos)
        << agent.traceLogText();
}

TEST(PersistentMemory, AFailedOrEmptyIdListEmptiesTheTable)
{
    {
        Agent agent(pmemAgent({}));
        EXPECT_TRUE(agent.client().walk(kPmemTable).empty());
        EXPECT_NE(agent.traceLogText().find("AepDIMM_loadData["), std::string::npos);
        EXPECT_NE(agent.traceLogText().find("] the idlist.count = 0 \r\n"), std::string::npos) << agent.traceLogText();
    }
    MachineBuilder machine;
    machine.fault("orvdb_get_AEP_memory_list", "", 1, 0);
    Agent agent(pmemAgent({pmemModule(7, 3, 1 << 30)}, machine));
    EXPECT_TRUE(agent.client().walk(kPmemTable).empty());
    EXPECT_NE(agent.traceLogText().find("] Failed: orvdb_get_AEP_memory_list return ORV_DB_STATUS_FAIL \r\n"),
              std::string::npos)
        << agent.traceLogText();
}

} // namespace
} // namespace orv3::test

// Reading machine descriptions: what is accepted, and how a broken one is reported.
#include "machine.h"
#include "unit_machine.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <unistd.h>

using orv3::sim::MachineFileError;
using orv3::sim::MachineSource;
using orv3::sim::parseMachine;

namespace {

using orv3::test::machineFileError;

TEST(MachineFile, ReadsTablesAndFaults)
{
    auto machine = parseMachine(R"({
      "description": "two fans",
      "store": {"s/fans/status/fantbl": [{"index": 1}, {"index": 2}]},
      "faults": [{"call": "quel_dm_BindRow", "key": "s/fans/status/fantbl", "result": 1, "status": 7, "times": 2}]
    })",
                                "m.json");
    EXPECT_EQ(machine->description, "two fans");
    EXPECT_EQ(machine->store["s/fans/status/fantbl"].size(), 2u);
    ASSERT_EQ(machine->faults.size(), 1u);
    EXPECT_EQ(machine->faults[0].call, "quel_dm_BindRow");
    EXPECT_EQ(machine->faults[0].status, 7);
    EXPECT_EQ(machine->faults[0].times, 2);
}

TEST(MachineFile, SyntaxErrorNamesFileAndLine)
{
    std::string error = machineFileError("{\n  \"store\": {\n    \"s/x\": [1,\n  }\n}\n");
    EXPECT_EQ(error.rfind("m.json:4: syntax error", 0), 0u) << error;
}

TEST(MachineFile, WrongKindOfValueNamesItsLine)
{
    std::string error = machineFileError(
        "{\n  \"store\": {\n    \"s/fans/status/fantbl\": [\n      {\"index\": \"one\"}\n    ]\n  }\n}\n");
    EXPECT_EQ(error, "m.json:4: /store/s~1fans~1status~1fantbl/0/index: must be an integer");
}

TEST(MachineFile, UnknownSectionIsRefused)
{
    EXPECT_EQ(
        machineFileError("{\n\"fans\": []\n}"),
        "m.json:2: /fans: unknown section (known: description, store, events, sessions, changeHistory, power, ipmi, "
        "features, raid, adapters, persistentMemory, faults)");
}

TEST(MachineFile, ReadsAdaptersAndPersistentMemoryIntoTheDatabasesRecords)
{
    auto machine = parseMachine(R"({
      "adapters": [{"key": 4, "slot": 2, "productName": "NIC",
                    "functions": [{"key": 41, "type": 1, "physicalPorts": [{"logicalPorts": [{}, {}]}]}]}],
      "persistentMemory": [{"id": 14, "text1": "DIMM 14", "extraKind": 3}]
    })",
                                "m.json");
    ASSERT_EQ(machine->pci.adapters.size(), 1u);
    const auto &adapter = machine->pci.adapters[0];
    EXPECT_EQ(adapter.record.adapterKey, 4u);
    EXPECT_EQ(adapter.record.slotNo, 2);
    EXPECT_STREQ(adapter.record.adapterProdName, "NIC");
    ASSERT_EQ(adapter.functions.size(), 1u);
    EXPECT_EQ(adapter.functions[0].key, 41u);
    EXPECT_EQ(adapter.functions[0].pci.func_type, 1u) << "the generic record tells the function's type";
    ASSERT_EQ(adapter.functions[0].physicalPorts.size(), 1u);
    EXPECT_EQ(adapter.functions[0].physicalPorts[0].record.logical_port_count, 2);
    ASSERT_EQ(machine->persistentMemory.size(), 1u);
    EXPECT_EQ(machine->persistentMemory[0].id, 14u);
    EXPECT_STREQ(machine->persistentMemory[0].record.text1, "DIMM 14");
    EXPECT_EQ(machine->persistentMemory[0].record.extra_kind, 3);
}

TEST(MachineFile, ANumberPastTheRangeOfADoubleIsReportedWithItsLine)
{
    EXPECT_EQ(machineFileError("{\n \"description\":\n 1e400 }"), "m.json:3: number overflow parsing '1e400'");
}

TEST(MachineFile, FaultNeedsACall)
{
    EXPECT_EQ(machineFileError("{\"faults\": [\n {\"key\": \"x\"}\n]}"),
              "m.json:2: /faults/0: a fault needs \"call\" (text)");
}

TEST(MachineFile, UnderscoreSectionsAreComments)
{
    EXPECT_EQ(machineFileError(R"({"_comment": "anything", "store": {}})"), "");
}

class MachineFileOnDisk : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/orv3-machine-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
        path = dir + "/machine.json";
    }
    void TearDown() override
    {
        std::remove(path.c_str());
        rmdir(dir.c_str());
    }
    void write(const std::string &text)
    {
        std::string temporary = path + ".new";
        std::ofstream(temporary) << text;
        std::rename(temporary.c_str(), path.c_str());
        orv3::test::settleFiles();
    }
    std::string dir, path;
};

TEST_F(MachineFileOnDisk, MissingFileIsAClearErrorNamingIt)
{
    MachineSource source(path);
    try {
        source.loadOrThrow();
        FAIL() << "expected an error";
    } catch (const MachineFileError &error) {
        EXPECT_EQ(std::string(error.what()), path + ": cannot read the machine description: No such file or directory");
    }
}

TEST_F(MachineFileOnDisk, ChangedFileIsReadAgain)
{
    write(R"({"description": "first"})");
    MachineSource source(path);
    source.loadOrThrow();
    EXPECT_EQ(source.current()->description, "first");
    write(R"({"description": "second"})");
    EXPECT_EQ(source.current()->description, "second");
}

TEST_F(MachineFileOnDisk, BrokenEditKeepsTheLastGoodDescriptionAndSaysWhy)
{
    write(R"({"description": "good"})");
    MachineSource source(path);
    source.loadOrThrow();
    write("{\"description\": \n\"broken\"");
    testing::internal::CaptureStderr();
    EXPECT_EQ(source.current()->description, "good");
    EXPECT_EQ(source.current()->description, "good");
    std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find(path + ":2: syntax error"), std::string::npos) << said;
    EXPECT_NE(said.find("still serving the last good description"), std::string::npos) << said;
    EXPECT_EQ(said.find("syntax error", said.find("syntax error") + 1), std::string::npos) << "reported once";
}

} // namespace

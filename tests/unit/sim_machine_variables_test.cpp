// Machine descriptions: single variables with accepted values or a range,
// and faults that hand out a row count.
#include "machine.h"
#include "platform.h"
#include "unit_machine.h"

#include "orv3/data_manager.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

using orv3::sim::MachineFileError;
using orv3::sim::parseMachine;

namespace {

using orv3::test::machineFileError;

// A description whose store holds one variable, on line 3.
std::string withVariable(const std::string &variable)
{
    return "{\n  \"store\": {\n    \"s/lightpathstatus/other/info\": " + variable + "\n  }\n}\n";
}

TEST(SimMachineVariables, VariableFormsAreRead)
{
    auto machine = parseMachine(R"({"store": {
      "s/a/plain": 3,
      "s/a/text": "x",
      "s/a/accepted": {"value": 0, "accepted": [0, 1, 2]},
      "s/a/range": {"value": 5, "min": 0, "max": 10},
      "s/a/both": {"value": 5, "accepted": [5, 50], "max": 10},
      "s/a/lower": {"value": -5, "min": -10},
      "s/a/texts": {"value": "auto", "accepted": ["auto", "manual"]},
      "s/a/free": {"value": ""}
    }})",
                                "m.json");
    EXPECT_EQ(machine->store["s/a/accepted"]["accepted"].size(), 3u);
    EXPECT_EQ(machine->store["s/a/range"]["max"], 10);
}

TEST(SimMachineVariables, WrongFieldsAreToldWithTheVariableAndTheFieldsLine)
{
    EXPECT_EQ(machineFileError(withVariable("{\"value\": 0,\n \"min\": \"low\"}")),
              "m.json:4: /store/s~1lightpathstatus~1other~1info: \"min\" must be an integer");
    EXPECT_EQ(machineFileError(withVariable("{\"value\": 0, \"max\": 1.5}")),
              "m.json:3: /store/s~1lightpathstatus~1other~1info: \"max\" must be an integer");
    EXPECT_EQ(machineFileError(withVariable("{\"accepted\": [0, 1]}")),
              "m.json:3: /store/s~1lightpathstatus~1other~1info: a variable object needs \"value\" (an integer or a "
              "text)");
    EXPECT_EQ(machineFileError(withVariable("{\"value\": [0]}")),
              "m.json:3: /store/s~1lightpathstatus~1other~1info: \"value\" must be an integer or a text");
    EXPECT_EQ(machineFileError(withVariable("{\"value\": 4294967296}")),
              "m.json:3: /store/s~1lightpathstatus~1other~1info: \"value\" does not fit in 32 bits");
    EXPECT_EQ(machineFileError(withVariable("{\"value\": 0,\n \"accepted\": [\n0,\n\"1\"]}")),
              "m.json:6: /store/s~1lightpathstatus~1other~1info: \"accepted\" must be an array of integers (the kind "
              "of \"value\")");
    EXPECT_EQ(machineFileError(withVariable("{\"value\": \"on\", \"accepted\": \"on\"}")),
              "m.json:3: /store/s~1lightpathstatus~1other~1info: \"accepted\" must be an array of texts (the kind of "
              "\"value\")");
    EXPECT_EQ(machineFileError(withVariable("{\"value\": \"on\", \"min\": 0}")),
              "m.json:3: /store/s~1lightpathstatus~1other~1info: \"min\" applies only to an integer \"value\"");
    EXPECT_EQ(machineFileError(withVariable("{\"value\": 5, \"min\": 10, \"max\": 1}")),
              "m.json:3: /store/s~1lightpathstatus~1other~1info: \"min\" must not be greater than \"max\"");
    EXPECT_EQ(machineFileError(withVariable("{\"value\": 5, \"accept\": [5]}")),
              "m.json:3: /store/s~1lightpathstatus~1other~1info: unknown variable field \"accept\" (known: value, "
              "accepted, min, max)");
    EXPECT_EQ(machineFileError(withVariable("true")),
              "m.json:3: /store/s~1lightpathstatus~1other~1info: must be a table "
              "(array of rows), an integer, a text or an object with \"value\"");
}

TEST(SimMachineVariables, FaultWithACount)
{
    auto machine = parseMachine(
        R"({"faults": [{"call": "quel_dm_GetRowCount", "key": "s/hw_health/disks", "result": 0, "status": 5, "count": 2}]})",
        "m.json");
    ASSERT_EQ(machine->faults.size(), 1u);
    EXPECT_EQ(machine->faults[0].count, 2);
    EXPECT_FALSE(parseMachine(R"({"faults": [{"call": "quel_dm_GetRowCount"}]})", "m.json")->faults[0].count);

    EXPECT_EQ(machineFileError("{\"faults\": [\n{\"call\": \"quel_dm_BindRow\",\n \"count\": 2}]}"),
              "m.json:3: /faults/0/count: only quel_dm_GetRowCount and get_chghist_log have a count to give");
    EXPECT_EQ(machineFileError("{\"faults\": [\n{\"call\": \"quel_dm_GetRowCount\", \"count\": \"two\"}]}"),
              "m.json:2: /faults/0/count: must be an integer");
}

TEST(SimMachineVariables, FailingRowCountHandsOutTheFaultsCount)
{
    if (!getenv("ORV3_UNIT_MACHINE"))
        GTEST_SKIP() << "needs the unit tests' private machine copy";
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["faults"] = {{{"call", "quel_dm_GetRowCount"},
                          {"key", "s/hw_health/disks"},
                          {"result", 0},
                          {"status", 5},
                          {"count", 2},
                          {"times", 1}},
                         {{"call", "quel_dm_GetRowCount"}, {"key", "s/hw_health/power_modules"}, {"result", 1}}};
    orv3::test::ServedMachine served(machine.dump());

    int32_t count = -1, status = -1;
    EXPECT_EQ(quel_dm_GetRowCount("s/hw_health/disks", g_coHandle, 0, 0, &count, &status), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(status, 5);
    EXPECT_EQ(quel_dm_GetRowCount("s/hw_health/disks", g_coHandle, 0, 0, &count, &status), 0);
    EXPECT_EQ(count, 4) << "the fault has been used up";
    EXPECT_EQ(status, 0);

    count = -1;
    EXPECT_EQ(quel_dm_GetRowCount("s/hw_health/power_modules", g_coHandle, 0, 0, &count, &status), 1);
    EXPECT_EQ(count, -1) << "without a count, a failing call leaves the count unset";
    EXPECT_EQ(status, 9);
}

TEST(SimMachineVariables, SampleMachineHasTheSensorAndLedData)
{
    auto machine = parseMachine(orv3::test::sampleMachineText(), "sample.json");
    const auto &store = machine->store;
    EXPECT_EQ(store["s/fans/status/fantbl"].size(), 8u);
    EXPECT_EQ(store["s/voltages/status/count"], store["s/voltages/status/voltagetbl"].size());
    EXPECT_EQ(store["s/temperatures/status/count"], store["s/temperatures/status/temperaturetbl"].size());
    EXPECT_GE(store["s/voltages/status/voltagetbl"].size(), 8u);
    EXPECT_GE(store["s/temperatures/status/temperaturetbl"].size(), 8u);
    EXPECT_EQ(store["s/hw_health/power_modules"].size(), 2u);
    EXPECT_EQ(store["s/hw_health/disks"].size(), 4u);
    EXPECT_GE(store["s/lightpathstatus/status/lightpathstatustbl"].size(), 12u);

    auto longest = [](const nlohmann::json &rows, const std::string &pointer) {
        size_t length = 0;
        for (const auto &row : rows)
            length = std::max(length, row.at(nlohmann::json::json_pointer(pointer)).get<std::string>().size());
        return length;
    };
    EXPECT_GT(longest(store["s/voltages/status/voltagetbl"], "/descr"), 30u);
    EXPECT_GT(longest(store["s/voltages/status/voltagetbl"], "/str/voltage"), 30u);
    EXPECT_GT(longest(store["s/hw_health/disks"], "/name"), 30u);
    bool thirty = false;
    for (const auto &row : store["s/temperatures/status/temperaturetbl"])
        thirty = thirty || row["descr"].get<std::string>().size() == 30;
    EXPECT_TRUE(thirty) << "one temperature text of exactly 30 characters";
    for (const auto &row : store["s/temperatures/status/temperaturetbl"])
        EXPECT_TRUE(row["str"].contains("reading")) << row;
}

} // namespace

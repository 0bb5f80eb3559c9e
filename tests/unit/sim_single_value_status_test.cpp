// Single-value reads (GetVarValueSTRING) of the machine VPD, and the status
// words a fault keyed by a variable's path makes them fail with.
#include "platform.h"
#include "unit_machine.h"

#include "orv3/agent_binding.h"
#include "orv3/data_manager.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>
#include <string>

namespace {

const char kManufacturer[] = "s/vpd/machine/productmfg";
const char kTypeModel[] = "s/vpd/machine/typemodel";

struct Read {
    int32_t result = -1;
    int32_t status = -1;
    std::string text;
};

Read readValue(const char *path)
{
    char buffer[256];
    memset(buffer, '#', sizeof buffer);
    buffer[sizeof buffer - 1] = '\0';
    Read read;
    read.result = GetVarValueSTRING(-1, g_coHandle, 0, 0, path, &read.status, buffer, sizeof buffer);
    read.text = buffer;
    return read;
}

std::string machineWithFaults(const nlohmann::json &faults)
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    machine["faults"] = faults;
    return machine.dump(2);
}

TEST(SimSingleValue, SampleMachineVpdReadsAsText)
{
    Read manufacturer = readValue(kManufacturer);
    EXPECT_EQ(manufacturer.result, 0);
    EXPECT_EQ(manufacturer.status, orv3::sim::kOk);
    EXPECT_EQ(manufacturer.text, "TRVX");
    Read typeModel = readValue(kTypeModel);
    EXPECT_EQ(typeModel.status, orv3::sim::kOk);
    EXPECT_GT(typeModel.text.size(), 4u) << "a type of four characters followed by a model";
}

class SingleValueFault : public testing::TestWithParam<int32_t> {};

TEST_P(SingleValueFault, StatusReachesTheCallerAndOtherVariablesReadOn)
{
    const int32_t status = GetParam();
    orv3::test::ServedMachine served(machineWithFaults(
        nlohmann::json::array({{{"call", "GetVarValueSTRING"}, {"key", kManufacturer}, {"status", status}}})));
    Read failed = readValue(kManufacturer);
    EXPECT_EQ(failed.result, 1) << "the fault's default result";
    EXPECT_EQ(failed.status, status);
    EXPECT_EQ(failed.text, std::string(255, '#')) << "the buffer is left as it was";
    EXPECT_EQ(readValue(kManufacturer).status, status) << "every read of it fails";

    Read other = readValue(kTypeModel);
    EXPECT_EQ(other.result, 0);
    EXPECT_EQ(other.status, orv3::sim::kOk);
    EXPECT_FALSE(other.text.empty());
}

INSTANTIATE_TEST_SUITE_P(VariableNotFoundAndNoMoreRows, SingleValueFault,
                         testing::Values(orv3::sim::kNoSuchVariable, orv3::sim::kNoMoreRows));

TEST(SimSingleValue, FaultResultAndStatusAreTheFaults)
{
    orv3::test::ServedMachine served(machineWithFaults(nlohmann::json::array(
        {{{"call", "GetVarValueSTRING"}, {"key", kTypeModel}, {"result", 0}, {"status", 9}, {"times", 1}}})));
    Read failed = readValue(kTypeModel);
    EXPECT_EQ(failed.result, 0) << "callers judge by the status word alone";
    EXPECT_EQ(failed.status, 9);
    Read next = readValue(kTypeModel);
    EXPECT_EQ(next.status, orv3::sim::kOk) << "the fault was for one read";
}

} // namespace

// The sample machine's inventory: every table the inventory reads has the
// variables it binds, of the kind it binds them as, and the machine VPD is
// shaped as a controller gives it.
#include "unit_machine.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cctype>
#include <set>
#include <string>
#include <vector>

namespace {

using nlohmann::json;

enum class Kind { Integer, Text };

struct Variable {
    const char *name;
    Kind kind;
};

struct InventoryTable {
    const char *path;
    size_t minRows;
    std::vector<Variable> variables;
};

const std::vector<InventoryTable> kInventoryTables = {
    {"s/vpd/firmwaretbl",
     4,
     {{"index", Kind::Integer},
      {"type", Kind::Text},
      {"id", Kind::Text},
      {"version", Kind::Text},
      {"releaseDate", Kind::Text}}},
    {"s/vpd/componenttbl",
     12,
     {{"index", Kind::Integer},
      {"fruNo", Kind::Text},
      {"fruName", Kind::Text},
      {"serialNo", Kind::Text},
      {"mfgId", Kind::Text}}},
    {"s/vpd/nictbl", 4, {{"index", Kind::Integer}, {"name", Kind::Text}, {"macAddr", Kind::Text}}},
    {"s/hw_health/processors",
     2,
     {{"index", Kind::Integer},
      {"fru_name", Kind::Text},
      {"clock_speed", Kind::Text},
      {"part_id", Kind::Text},
      {"cpu_type", Kind::Text},
      {"cpu_model", Kind::Text},
      {"family", Kind::Text},
      {"cores", Kind::Text},
      {"threads", Kind::Text},
      {"voltage", Kind::Text},
      {"max_data_width", Kind::Text},
      {"status", Kind::Text}}},
    {"s/hw_health/memory",
     8,
     {{"index", Kind::Integer},
      {"description", Kind::Text},
      {"part_number", Kind::Text},
      {"serial_number", Kind::Text},
      {"manuf_date", Kind::Text},
      {"type", Kind::Text},
      {"capacity", Kind::Integer},
      {"status", Kind::Text},
      {"config_speed", Kind::Integer},
      {"mem_speed", Kind::Integer},
      {"aep_flag", Kind::Integer},
      {"udi_part_number", Kind::Text}}},
    {"s/hw_health/flashdimms",
     2,
     {{"index", Kind::Integer},
      {"name", Kind::Text},
      {"status", Kind::Text},
      {"op_status", Kind::Text},
      {"temperature", Kind::Text},
      {"capacity", Kind::Integer},
      {"warranty_write", Kind::Integer},
      {"endurance_write", Kind::Integer},
      {"model_type", Kind::Text},
      {"fw_level", Kind::Text},
      {"part_number", Kind::Text},
      {"serial_number", Kind::Text},
      {"manuf_id", Kind::Text}}},
};

json sample()
{
    return json::parse(orv3::test::sampleMachineText());
}

class SampleInventoryTable : public testing::TestWithParam<InventoryTable> {};

TEST_P(SampleInventoryTable, RowsHaveExactlyTheBoundVariablesOfTheirKind)
{
    const InventoryTable &table = GetParam();
    json store = sample()["store"];
    ASSERT_TRUE(store.contains(table.path));
    const json &rows = store[table.path];
    ASSERT_TRUE(rows.is_array());
    EXPECT_GE(rows.size(), table.minRows);
    std::set<int> indexes;
    for (const json &row : rows) {
        EXPECT_EQ(row.size(), table.variables.size()) << row.dump();
        for (const Variable &variable : table.variables) {
            ASSERT_TRUE(row.contains(variable.name)) << variable.name << " in " << row.dump();
            const json &value = row[variable.name];
            if (variable.kind == Kind::Integer)
                EXPECT_TRUE(value.is_number_integer()) << variable.name << " in " << row.dump();
            else
                EXPECT_TRUE(value.is_string()) << variable.name << " in " << row.dump();
            // The sample stays readable: its texts are short, far from the module's bounds.
            if (value.is_string()) {
                EXPECT_LT(value.get<std::string>().size(), 64u) << variable.name << " in " << row.dump();
            }
        }
        EXPECT_TRUE(indexes.insert(row["index"].get<int>()).second) << "index repeated: " << row.dump();
    }
}

INSTANTIATE_TEST_SUITE_P(Sample, SampleInventoryTable, testing::ValuesIn(kInventoryTables),
                         [](const testing::TestParamInfo<InventoryTable> &info) {
                             std::string name = info.param.path;
                             for (char &c : name)
                                 if (!isalnum(static_cast<unsigned char>(c)))
                                     c = '_';
                             return name;
                         });

TEST(SampleInventory, MachineVpdIsShapedAsTheControllerGivesIt)
{
    json store = sample()["store"];
    EXPECT_EQ(store["s/vpd/machine/productmfg"], "TRVX");
    std::string typeModel = store["s/vpd/machine/typemodel"];
    EXPECT_GT(typeModel.size(), 4u) << "a type of four characters followed by a model";
    std::string uuid = store["s/vpd/machine/uuid"];
    EXPECT_EQ(uuid.size(), 32u);
    for (char c : uuid)
        EXPECT_TRUE(isxdigit(static_cast<unsigned char>(c))) << uuid;
    EXPECT_FALSE(store["s/vpd/machine/serialNo"].get<std::string>().empty());
    EXPECT_FALSE(store["s/vpd/machine/prodName"].get<std::string>().empty());
}

TEST(SampleInventory, FirmwareTableHasAnImageWithoutVersion)
{
    json machine = sample();
    bool empty = false;
    for (const json &row : machine["store"]["s/vpd/firmwaretbl"])
        empty |= row["version"].get<std::string>().empty();
    EXPECT_TRUE(empty);
}

TEST(SampleInventory, OrdinaryDimmsOnly)
{
    json machine = sample();
    for (const json &row : machine["store"]["s/hw_health/memory"])
        EXPECT_EQ(row["aep_flag"], 0) << row.dump();
}

// The persistent-memory modules sit in slots of their own, apart from the
// ordinary DIMMs of the memory table, and each kind of extra data is shown.
TEST(SampleInventory, PersistentMemoryModulesAreApartFromTheOrdinaryDimms)
{
    json machine = sample();
    std::set<std::string> ordinary;
    for (const json &row : machine["store"]["s/hw_health/memory"])
        ordinary.insert(row["description"].get<std::string>());
    std::set<int> kinds;
    for (const json &module : machine["persistentMemory"]) {
        EXPECT_EQ(ordinary.count(module["text1"].get<std::string>()), 0u) << module.dump();
        kinds.insert(module["extraKind"].get<int>());
    }
    EXPECT_EQ(kinds, (std::set<int>{1, 2, 3}));
}

TEST(SampleInventory, ChangeHistoryHasEveryCategoryAndTextsThatFitTheirFields)
{
    json machine = sample();
    std::set<unsigned> categories;
    for (const json &change : machine["changeHistory"]) {
        categories.insert(change["category"].get<unsigned>());
        EXPECT_LE(change["text1"].get<std::string>().size(), 127u) << change.dump();
        EXPECT_LE(change["text2"].get<std::string>().size(), 63u) << change.dump();
    }
    EXPECT_EQ(categories, (std::set<unsigned>{0, 1, 7}));
}

} // namespace

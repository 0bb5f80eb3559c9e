// The lint of the module's tables: every declared table hangs at its own
// place below the module's subtree, and its column list is one the engine
// and net-snmp's table helper can serve.
#include "row_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

const oid kModuleRoot[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1};

std::vector<const orv3::Table *> tables()
{
    const auto declared = orv3::declaredTables();
    return {declared.begin(), declared.end()};
}

bool isPrefix(const orv3::Table &shorter, const orv3::Table &longer)
{
    return shorter.rootOidLength <= longer.rootOidLength &&
           std::equal(shorter.rootOid, shorter.rootOid + shorter.rootOidLength, longer.rootOid);
}

TEST(TableRegistry, EveryTableOfTheModuleIsDeclaredOnceByName)
{
    std::set<std::string> names;
    for (const orv3::Table *table : tables())
        EXPECT_TRUE(names.insert(table->name).second) << table->name << " is declared twice";
    EXPECT_EQ(names.size(), 31u);
}

TEST(TableRegistry, EveryTableHangsBelowTheModuleAndNoneInsideAnother)
{
    const auto all = tables();
    for (const orv3::Table *table : all) {
        ASSERT_NE(table->rootOid, nullptr) << table->name;
        EXPECT_GT(table->rootOidLength, OID_LENGTH(kModuleRoot)) << table->name;
        EXPECT_TRUE(std::equal(kModuleRoot, kModuleRoot + OID_LENGTH(kModuleRoot), table->rootOid)) << table->name;
        for (const orv3::Table *other : all) {
            if (other != table) {
                EXPECT_FALSE(isPrefix(*other, *table)) << table->name << " lies inside " << other->name;
            }
        }
    }
}

TEST(TableRegistry, ColumnsAscendFromTheIndexAndEndAtOrBeforeTheLastRegisteredColumn)
{
    for (const orv3::Table *table : tables()) {
        ASSERT_FALSE(table->columns.empty()) << table->name;
        EXPECT_TRUE(orv3::columnsAscendWithin(table->columns, table->maxColumn)) << table->name;
        const orv3::Column &index = table->columns.front();
        EXPECT_EQ(index.number, 1u) << table->name;
        EXPECT_EQ(index.asnType, ASN_INTEGER) << table->name;
        EXPECT_EQ(index.offset, offsetof(orv3_row_head_t, index)) << table->name;
    }
}

TEST(TableRegistry, TextColumnsHaveRoomAndTheirLengthLiesOutsideTheText)
{
    for (const orv3::Table *table : tables()) {
        for (const orv3::Column &column : table->columns) {
            if (column.asnType != ASN_OCTET_STR)
                continue;
            EXPECT_GT(column.capacity, 0u) << table->name << " column " << column.number;
            const bool before = column.lengthOffset + sizeof(uint32_t) <= column.offset;
            const bool after = column.lengthOffset >= column.offset + column.capacity;
            EXPECT_TRUE(before || after) << table->name << " column " << column.number;
        }
    }
}

TEST(TableRegistry, EveryTableIsLoadedAndAnswered)
{
    for (const orv3::Table *table : tables()) {
        EXPECT_NE(table->load, nullptr) << table->name;
        EXPECT_GT(table->maxColumn, 0u) << table->name;
        if (table->handler.entry == orv3::HandlerPolicy::EntryTrace::ModeAndGroupState) {
            EXPECT_NE(table->handler.groupState, nullptr) << table->name;
        }
        if (table->handler.entry == orv3::HandlerPolicy::EntryTrace::Mode) {
            EXPECT_NE(table->handler.entryTrace, nullptr) << table->name;
        }
    }
}

} // namespace

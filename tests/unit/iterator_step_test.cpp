// The iterator's step over a row list: it hands out each row in turn and
// sets the index varbind to the row's index, whatever the varbind held.
#include "row_table.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

struct Rows {
    orv3_row_head_t second{0, 0, nullptr, -7};
    orv3_row_head_t first{0, 0, &second, 12};
};

TEST(IteratorStep, HandsOutEveryRowInListOrderThenStops)
{
    Rows rows;
    netsnmp_variable_list index{};
    void *loop = &rows.first, *data = nullptr;

    ASSERT_EQ(orv3::nextDataPoint(&loop, &data, &index), &index);
    EXPECT_EQ(data, &rows.first);
    EXPECT_EQ(index.type, ASN_INTEGER);
    EXPECT_EQ(*index.val.integer, 12);

    ASSERT_EQ(orv3::nextDataPoint(&loop, &data, &index), &index);
    EXPECT_EQ(data, &rows.second);
    // The agent makes the arc of the INTEGER as an oid: index -7 is the arc
    // 2^32 - 7, as it goes on the wire, whatever the width of long.
    EXPECT_EQ(static_cast<oid>(*index.val.integer), oid{4294967289});
    EXPECT_EQ(index.val_len, sizeof(long));

    EXPECT_EQ(orv3::nextDataPoint(&loop, &data, &index), nullptr);
    snmp_free_var_internals(&index);
}

TEST(IteratorStep, ReplacesAValueTheVarbindHeldOfAnotherKind)
{
    Rows rows;
    netsnmp_variable_list index{};
    // A text longer than the varbind's own buffer lives on the heap.
    char text[100];
    std::memset(text, 'x', sizeof text);
    snmp_set_var_typed_value(&index, ASN_OCTET_STR, text, sizeof text);
    ASSERT_NE(index.val.string, index.buf);

    void *loop = &rows.first, *data = nullptr;
    ASSERT_EQ(orv3::nextDataPoint(&loop, &data, &index), &index);
    EXPECT_EQ(index.type, ASN_INTEGER);
    EXPECT_EQ(index.val.integer, reinterpret_cast<long *>(index.buf));
    EXPECT_EQ(*index.val.integer, 12);
    snmp_free_var_internals(&index);
}

} // namespace

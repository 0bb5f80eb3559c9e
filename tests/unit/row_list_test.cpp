// The fan table's list routines, and rows outliving the request that found them.
#include "fanTable.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class FanTableList : public ::testing::Test {
protected:
    void SetUp() override { emptyTable(); }
    void TearDown() override { emptyTable(); }

    static void emptyTable()
    {
        fanTable_clear();
        orv3::reclaimRetiredRows();
    }
    static fanTable_entry_t *row(int index)
    {
        int hint;
        fanTable_entry_t *entry = fanTable_createEntry(&hint);
        entry->head.index = index;
        return entry;
    }
    static std::vector<int> indexes()
    {
        std::vector<int> seen;
        for (orv3_row_head_t *at = fanTable_head; at; at = at->next)
            seen.push_back(at->index);
        return seen;
    }
};

TEST_F(FanTableList, CreateEntryGivesAZeroFilledRow)
{
    int hint;
    fanTable_entry_t *entry = fanTable_createEntry(&hint);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->head.reserved, 0);
    EXPECT_EQ(entry->head.last_request_id, 0);
    EXPECT_EQ(entry->descr_len, 0u);
    EXPECT_EQ(entry->descr[0], '\0');
    fanTable_insertEntry(entry);
}

TEST_F(FanTableList, CreateEntryWithoutAHintGivesNothing)
{
    EXPECT_EQ(fanTable_createEntry(nullptr), nullptr);
}

TEST_F(FanTableList, RowsFromAnAscendingStoreStayInIndexOrder)
{
    fanTable_insertEntry(row(1));
    fanTable_insertEntry(row(2));
    fanTable_insertEntry(row(3));
    EXPECT_EQ(indexes(), (std::vector<int>{1, 2, 3}));
}

TEST_F(FanTableList, RowsFromADescendingStoreAreKeptInIndexOrder)
{
    fanTable_insertEntry(row(3));
    fanTable_insertEntry(row(2));
    fanTable_insertEntry(row(1));
    EXPECT_EQ(indexes(), (std::vector<int>{1, 2, 3}));
}

TEST_F(FanTableList, RowsInAnyOrderAreKeptInIndexOrder)
{
    for (int index : {5, 1, 9, 3, 7, 2, 8})
        fanTable_insertEntry(row(index));
    EXPECT_EQ(indexes(), (std::vector<int>{1, 2, 3, 5, 7, 8, 9}));
}

TEST_F(FanTableList, NegativeIndexesSortAsTheUnsignedArcsTheIteratorBuilds)
{
    for (int index : {-1, 4, -2, 0, 2147483647})
        fanTable_insertEntry(row(index));
    // -2 and -1 become the arcs 4294967294 and 4294967295.
    EXPECT_EQ(indexes(), (std::vector<int>{0, 4, 2147483647, -2, -1}));
}

TEST_F(FanTableList, OfTwoRowsWithOneIndexTheLaterDeliveredComesFirst)
{
    fanTable_entry_t *first = fanTable_insertEntry(row(2));
    fanTable_insertEntry(row(1));
    fanTable_insertEntry(row(3));
    fanTable_entry_t *second = fanTable_insertEntry(row(2));
    EXPECT_EQ(indexes(), (std::vector<int>{1, 2, 2, 3}));
    EXPECT_EQ(fanTable_head->next, &second->head);
    EXPECT_EQ(second->head.next, &first->head);
}

TEST_F(FanTableList, RemoveUnlinksAListedRow)
{
    fanTable_insertEntry(row(1));
    fanTable_entry_t *middle = fanTable_insertEntry(row(2));
    fanTable_insertEntry(row(3));
    fanTable_removeEntry(middle);
    EXPECT_EQ(indexes(), (std::vector<int>{1, 3}));
}

TEST_F(FanTableList, RowsGoOnInOrderAfterTheLastRowWasRemoved)
{
    fanTable_insertEntry(row(1));
    fanTable_entry_t *last = fanTable_insertEntry(row(5));
    fanTable_removeEntry(last);
    fanTable_insertEntry(row(4));
    fanTable_insertEntry(row(2));
    EXPECT_EQ(indexes(), (std::vector<int>{1, 2, 4}));
}

TEST_F(FanTableList, RowsGoOnInOrderAfterAClear)
{
    fanTable_insertEntry(row(8));
    fanTable_clear();
    fanTable_insertEntry(row(6));
    fanTable_insertEntry(row(3));
    fanTable_insertEntry(row(7));
    EXPECT_EQ(indexes(), (std::vector<int>{3, 6, 7}));
}

TEST_F(FanTableList, RemoveLeavesAnUnlistedRowAlone)
{
    fanTable_insertEntry(row(1));
    fanTable_entry_t *stranger = row(9);
    fanTable_removeEntry(stranger);
    fanTable_removeEntry(nullptr);
    EXPECT_EQ(indexes(), (std::vector<int>{1}));
    EXPECT_EQ(orv3::retiredRowCount(), 0u);
    free(stranger);
}

TEST_F(FanTableList, ClearEmptiesTheList)
{
    fanTable_insertEntry(row(1));
    fanTable_insertEntry(row(2));
    fanTable_clear();
    EXPECT_EQ(fanTable_head, nullptr);
}

TEST_F(FanTableList, ClearedRowsStayReadableUntilTheRequestIsOver)
{
    fanTable_entry_t *held = fanTable_insertEntry(row(7));
    fanTable_clear();
    // The iterator may still hold this row for the request being served.
    EXPECT_EQ(held->head.index, 7);
    EXPECT_EQ(orv3::retiredRowCount(), 1u);
    orv3::reclaimRetiredRows();
    EXPECT_EQ(orv3::retiredRowCount(), 0u);
}

TEST_F(FanTableList, CommitRowRemembersTheRequest)
{
    fanTable_entry_t *entry = fanTable_insertEntry(row(4));
    testing::internal::CaptureStdout();
    EXPECT_EQ(fanTable_commit_row(77, entry), 0);
    EXPECT_EQ(fanTable_commit_row(77, entry), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "fanTable_commit_row row=4\n");
    EXPECT_EQ(entry->head.last_request_id, 77);
}

TEST_F(FanTableList, LimitValidatorsAcceptEveryValueAndSaySo)
{
    fanTable_entry_t *entry = fanTable_insertEntry(row(3));
    testing::internal::CaptureStdout();
    EXPECT_EQ(fanTable_validate_fanCritLimitLow(entry), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "fanTable_validate_fanCritLimitLow row=3\n");
}

} // namespace

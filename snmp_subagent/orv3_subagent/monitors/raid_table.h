// The RAID table pattern: the six tables of the local-storage group rebuild
// all their rows from several RAID link records in a loader of their own,
// at most once in 5 seconds, and only while the platform offers the RAID
// link function; without it their rows are freed. They serve GET (and so
// GETNEXT through the iterator) and nothing else.
//
// A table's own file gives its row record, its columns and its loader
// (`T_loadData`, 0 on success); ORV3_RAID_TABLE_ROUTINES stamps out the
// rest. The local-storage group registers the tables (localStorage.cpp).
#pragma once

#include "row_table.h"

#include <source_location>
#include <span>

namespace orv3 {

struct RaidTable {
    const char *name; // registration name, e.g. "raidControllerTable"
    std::span<const Column> columns;
    // "raidControllerTable_head" for the table that logs the release of its
    // rows when the RAID link function goes away; null for the others.
    const char *releasedHead;
};

// The 5-second cache: true while the last load is at most 5 whole seconds
// old; a stale check stamps the time, so a failed load waits 5 seconds too.
bool raidRowsFresh(int32_t &stamp);

// The row a walk starts at. A stale check first asks whether the platform
// offers the RAID link function: without it the rows are freed and the walk
// ends at once; with it the loader runs, and a failed load ends the walk.
orv3_row_head_t *raidFirstRow(const RaidTable &table, RowList &rows, bool fresh, int (*load)(), const char *routine,
                              int line);

// Frees `from` and every row after it.
void clearRaidRowsFrom(RowList &rows, orv3_row_head_t *from);

// GET only: a column the table does not have is noSuchObject, a request
// without a row noSuchInstance.
int raidTableHandler(const RaidTable &table, const char *handlerName, netsnmp_agent_request_info *reqinfo,
                     netsnmp_request_info *requests, std::source_location where = std::source_location::current());

// True when the platform says it offers the RAID link function.
bool raidLinkOffered();

} // namespace orv3

// The routines of RAID table T with row record ROW, given `T_table`
// (RaidTable), `T_rows` (RowList) and `T_stamp` (int32_t) in the table's
// file and its loader `T_loadData`. CLEAR is the name of the routine that
// frees the rows from a given one on (clearAllraidDriveTableRows).
#define ORV3_RAID_TABLE_ROUTINES(T, ROW, CLEAR)                                                                        \
    extern "C" {                                                                                                       \
    int T##_check_for_update(void)                                                                                     \
    {                                                                                                                  \
        return ::orv3::raidRowsFresh(T##_stamp) ? 1 : 0;                                                               \
    }                                                                                                                  \
    netsnmp_variable_list *T##_get_next_data_point(void **loop, void **data, netsnmp_variable_list *index,             \
                                                   netsnmp_iterator_info *)                                            \
    {                                                                                                                  \
        return ::orv3::nextDataPoint(loop, data, index);                                                               \
    }                                                                                                                  \
    netsnmp_variable_list *T##_get_first_data_point(void **loop, void **data, netsnmp_variable_list *index,            \
                                                    netsnmp_iterator_info *info)                                       \
    {                                                                                                                  \
        *loop =                                                                                                        \
            ::orv3::raidFirstRow(T##_table, T##_rows, T##_check_for_update() == 1, T##_loadData, __func__, __LINE__);  \
        return T##_get_next_data_point(loop, data, index, info);                                                       \
    }                                                                                                                  \
    /* A copy of the arranged record becomes a row, listed in index order. */                                          \
    ROW *T##_createEntry(const ROW *arranged)                                                                          \
    {                                                                                                                  \
        auto *row = reinterpret_cast<ROW *>(::orv3::allocateRow(arranged, sizeof(ROW)));                               \
        if (!row)                                                                                                      \
            return nullptr;                                                                                            \
        memcpy(row, arranged, sizeof(ROW));                                                                            \
        row->head.next = nullptr;                                                                                      \
        T##_rows.insertInOrder(&row->head);                                                                            \
        return row;                                                                                                    \
    }                                                                                                                  \
    void T##_removeEntry(ROW *row)                                                                                     \
    {                                                                                                                  \
        T##_rows.remove(row ? &row->head : nullptr);                                                                   \
    }                                                                                                                  \
    void CLEAR(ROW *from)                                                                                              \
    {                                                                                                                  \
        ::orv3::clearRaidRowsFrom(T##_rows, from ? &from->head : nullptr);                                             \
    }                                                                                                                  \
    int T##_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,        \
                    netsnmp_request_info *requests)                                                                    \
    {                                                                                                                  \
        return ::orv3::raidTableHandler(T##_table, #T "_handler", reqinfo, requests);                                  \
    }                                                                                                                  \
    }

// Declarations of the routines of RAID table T, for raid.h.
#define ORV3_RAID_TABLE_DECLARATIONS(T, ROW, CLEAR)                                                                    \
    extern "C" {                                                                                                       \
    extern orv3_row_head_t *T##_head;                                                                                  \
    int T##_check_for_update(void);                                                                                    \
    netsnmp_variable_list *T##_get_first_data_point(void **loop, void **data, netsnmp_variable_list *index,            \
                                                    netsnmp_iterator_info *info);                                      \
    netsnmp_variable_list *T##_get_next_data_point(void **loop, void **data, netsnmp_variable_list *index,             \
                                                   netsnmp_iterator_info *info);                                       \
    int T##_loadData(void);                                                                                            \
    ROW *T##_createEntry(const ROW *arranged);                                                                         \
    void T##_removeEntry(ROW *row);                                                                                    \
    void CLEAR(ROW *from);                                                                                             \
    int T##_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,                               \
                    netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);                              \
    }

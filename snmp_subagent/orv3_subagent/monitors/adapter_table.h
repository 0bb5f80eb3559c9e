// The adapter table pattern: the seven tables of the adapters group rebuild
// their rows from the inventory database at most once in 5 seconds, and
// only while the platform offers the PCI adapter inventory; without it they
// are empty. A row is made by running the table's fill routines, one per
// column from column 2 on, in column order, on a zeroed work row; a fill
// that fails outright empties the table until the next load. The tables
// serve GET (and so GETNEXT through the iterator) and nothing else.
//
// A table's own file gives its row record, its columns, its fills and its
// source walk (`T_loadData`); ORV3_ADAPTER_TABLE_ROUTINES stamps out the
// rest, and init_adapters registers the tables (adapters.cpp).
#pragma once

#include "adapters.h"
#include "row_table.h"
#include "trace.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <source_location>
#include <span>

namespace orv3 {

struct AdapterTable {
    const char *name; // registration name, e.g. "adapterGenericTable"
    unsigned maxColumn;
    std::span<const Column> columns;
};

// One fill routine: writes its column of `row` from the table's source and
// returns ADAPTERS_OK, ADAPTERS_PARTIAL or ADAPTERS_FAILED. `routine` is the
// fill's name, for its traces.
template <class Source, class Row> struct AdapterFill {
    const char *routine; // e.g. "adapterGenericTable_fill_adapterSlotNo"
    uint32_t (*fill)(const char *routine, const Source &source, Row &row);
};

// Runs a table's load when 5 whole seconds have passed since the last one:
// without PCI support the rows are freed; otherwise they are rebuilt by
// `load`, and a load that fails outright (ADAPTERS_FAILED) leaves none.
void loadAdapterRows(RowList &rows, int32_t &stamp, uint32_t (*load)());

// GET only: a column past the table's last is noSuchObject, a request
// without a row noSuchInstance.
int adapterTableHandler(const AdapterTable &table, const char *handlerName, netsnmp_agent_request_info *reqinfo,
                        netsnmp_request_info *requests, std::source_location where = std::source_location::current());

// A zero-filled row record, or null (traced) when there is no room.
orv3_row_head_t *allocateAdapterRow(const AdapterTable &table, size_t size);

// Lists a copy of the work row and returns it; null (traced) when there is
// no room.
orv3_row_head_t *listAdapterRow(const AdapterTable &table, RowList &rows, const orv3_row_head_t &work, size_t size);

// One row numbered `index`, filled from `source` by `fills` in order and
// listed. Returns ADAPTERS_PARTIAL when a fill did, ADAPTERS_FAILED when a
// fill failed outright or there was no room (nothing is listed then).
template <class Source, class Row>
uint32_t addAdapterRow(const AdapterTable &table, RowList &rows, int32_t index,
                       std::span<const AdapterFill<Source, Row>> fills, const Source &source)
{
    auto *work = reinterpret_cast<Row *>(allocateAdapterRow(table, sizeof(Row)));
    if (!work)
        return ADAPTERS_FAILED;
    work->head.index = index;
    uint32_t result = ADAPTERS_OK;
    for (const AdapterFill<Source, Row> &fill : fills) {
        const uint32_t filled = fill.fill(fill.routine, source, *work);
        if (filled == ADAPTERS_FAILED) {
            free(work);
            return ADAPTERS_FAILED;
        }
        if (filled == ADAPTERS_PARTIAL)
            result = ADAPTERS_PARTIAL;
    }
    const orv3_row_head_t *listed = listAdapterRow(table, rows, work->head, sizeof(Row));
    free(work);
    return listed ? result : static_cast<uint32_t>(ADAPTERS_FAILED);
}

// Text columns: the source field without its leading and trailing white
// space, read no further than the field and cut to 255 characters.
size_t trimmedFieldInto(orv3_text256_t &column, const char *field, size_t fieldSize);
template <size_t N> uint32_t fillTrimmed(orv3_text256_t &column, const char (&field)[N])
{
    trimmedFieldInto(column, field, N);
    return ADAPTERS_OK;
}

// A text the table derives itself, cut to 255 characters.
void setText(orv3_text256_t &column, const char *text);
__attribute__((format(printf, 2, 3))) void formatText(orv3_text256_t &column, const char *format, ...);

} // namespace orv3

// The routines of adapter table T with row record ROW, given `T_table`
// (AdapterTable), `T_rows` (RowList) and `T_stamp` (int32_t) in the table's
// file and its source walk `T_loadData`.
#define ORV3_ADAPTER_TABLE_ROUTINES(T, ROW)                                                                            \
    extern "C" {                                                                                                       \
    ROW *T##_createEntry(const ROW *work)                                                                              \
    {                                                                                                                  \
        return reinterpret_cast<ROW *>(::orv3::listAdapterRow(T##_table, T##_rows, work->head, sizeof(ROW)));          \
    }                                                                                                                  \
    void T##_clear(void)                                                                                               \
    {                                                                                                                  \
        T##_rows.clear();                                                                                              \
    }                                                                                                                  \
    netsnmp_variable_list *T##_get_next_data_point(void **loop, void **data, netsnmp_variable_list *index,             \
                                                   netsnmp_iterator_info *)                                            \
    {                                                                                                                  \
        return ::orv3::nextDataPoint(loop, data, index);                                                               \
    }                                                                                                                  \
    netsnmp_variable_list *T##_get_first_data_point(void **loop, void **data, netsnmp_variable_list *index,            \
                                                    netsnmp_iterator_info *info)                                       \
    {                                                                                                                  \
        ::orv3::loadAdapterRows(T##_rows, T##_stamp, T##_loadData);                                                    \
        *loop = T##_rows.head();                                                                                       \
        return T##_get_next_data_point(loop, data, index, info);                                                       \
    }                                                                                                                  \
    int T##_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,        \
                    netsnmp_request_info *requests)                                                                    \
    {                                                                                                                  \
        return ::orv3::adapterTableHandler(T##_table, #T "_handler", reqinfo, requests);                               \
    }                                                                                                                  \
    }

// Declarations of the routines of adapter table T.
#define ORV3_ADAPTER_TABLE_DECLARATIONS(T, ROW)                                                                        \
    extern "C" {                                                                                                       \
    extern orv3_row_head_t *T##_head;                                                                                  \
    uint32_t T##_loadData(void);                                                                                       \
    ROW *T##_createEntry(const ROW *work);                                                                             \
    void T##_clear(void);                                                                                              \
    netsnmp_variable_list *T##_get_first_data_point(void **loop, void **data, netsnmp_variable_list *index,            \
                                                    netsnmp_iterator_info *info);                                      \
    netsnmp_variable_list *T##_get_next_data_point(void **loop, void **data, netsnmp_variable_list *index,             \
                                                   netsnmp_iterator_info *info);                                       \
    int T##_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,                               \
                    netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);                              \
    }

namespace orv3 {

// The protocols a logical port runs, as the port table shows them: the
// words "Ethernet", "FCoE/FC" and "iSCSI" of the flags set, joined by ", ",
// cut to `size - 1` characters. Returns the length.
size_t joinProtocolWords(char *buffer, size_t size, uint8_t ethernet, uint8_t fcoeFc, uint8_t iscsi);

} // namespace orv3

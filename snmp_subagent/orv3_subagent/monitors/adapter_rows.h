// What the adapter tables' loaders share: a row is made by running the
// table's fill routines, one per column from column 2 on, in column order,
// on a zeroed work row, and listed as a copy of it; a fill that fails
// outright fails the row. Text columns take trimmed database fields.
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

// One fill routine: writes its column of `row` from the table's source and
// returns ADAPTERS_OK, ADAPTERS_PARTIAL or ADAPTERS_FAILED. `routine` is the
// fill's name, for its traces.
template <class Source, class Row> struct AdapterFill {
    const char *routine; // e.g. "adapterGenericTable_fill_adapterSlotNo"
    uint32_t (*fill)(const char *routine, const Source &source, Row &row);
};

// A zero-filled work row, or null (traced) when there is no room.
orv3_row_head_t *allocateAdapterRow(const Table &table, size_t size);

// Lists a copy of the work row through the table and returns it; null
// (traced) when there is no room.
orv3_row_head_t *listAdapterRow(Table &table, const orv3_row_head_t &work, size_t size);

// One row numbered `index`, filled from `source` by `fills` in order and
// listed. Returns ADAPTERS_PARTIAL when a fill did, ADAPTERS_FAILED when a
// fill failed outright or there was no room (nothing is listed then).
template <class Source, class Row>
uint32_t addAdapterRow(Table &table, int32_t index, std::span<const AdapterFill<Source, Row>> fills,
                       const Source &source)
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
    const orv3_row_head_t *listed = listAdapterRow(table, work->head, sizeof(Row));
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

namespace orv3 {

// The protocols a logical port runs, as the port table shows them: the
// words "Ethernet", "FCoE/FC" and "iSCSI" of the flags set, joined by ", ",
// cut to `size - 1` characters. Returns the length.
size_t joinProtocolWords(char *buffer, size_t size, uint8_t ethernet, uint8_t fcoeFc, uint8_t iscsi);

} // namespace orv3

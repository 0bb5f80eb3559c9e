// What the adapter tables' loaders share: a row is made by running the
// table's fill routines, one per column from column 2 on, in column order,
// on a zeroed work row, and listed as a copy of it; a fill that fails
// outright fails the row. Text columns take trimmed database fields.
#pragma once

#include "adapters.h"
#include "row_table.h"
#include "text.h"
#include "trace.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <source_location>
#include <span>

namespace orv3 {

// The result of a load made of steps: ADAPTERS_PARTIAL once a step was
// partial, ADAPTERS_FAILED at the first step that failed outright (where the
// load stops).
struct AdapterResult {
    uint32_t value = ADAPTERS_OK;
    // Takes a step's result; false when it failed outright.
    bool take(uint32_t step)
    {
        if (step == ADAPTERS_FAILED)
            value = ADAPTERS_FAILED;
        else if (step == ADAPTERS_PARTIAL)
            value = ADAPTERS_PARTIAL;
        return step != ADAPTERS_FAILED;
    }
};

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
    AdapterResult result;
    for (const AdapterFill<Source, Row> &fill : fills) {
        if (!result.take(fill.fill(fill.routine, source, *work))) {
            free(work);
            return ADAPTERS_FAILED;
        }
    }
    const orv3_row_head_t *listed = listAdapterRow(table, work->head, sizeof(Row));
    free(work);
    return listed ? result.value : static_cast<uint32_t>(ADAPTERS_FAILED);
}

// ---- the walks over the inventory ------------------------------------------
//
// Every adapter loader builds its table from nothing: a walk first frees
// the table's rows. Each visit answers ADAPTERS_OK, ADAPTERS_PARTIAL or
// ADAPTERS_FAILED; the walk stops at the first failure and answers the fold
// of the rest.

// Every adapter, in the database's order, with its position from 0. A list
// that cannot be read fails the load, traced as the loader's own failure.
template <class Visit>
uint32_t forEachAdapter(Table &table, const char *loader, Visit visit,
                        std::source_location where = std::source_location::current())
{
    table.rows.clear();
    uint32_t count = 0;
    inventory_db_adapter_t *adapters = nullptr;
    if (orvdb_get_pci_adapter_list(&count, &adapters) != ORV_DB_STATUS_SUCCESS) {
        if (snmp_get_do_debugging())
            traceLine(loader, where.file_name(), static_cast<int>(where.line()), where.file_name(),
                      "%s, %d: cannot get adapters list.\n", loader, static_cast<int>(where.line()));
        return ADAPTERS_FAILED;
    }
    const std::unique_ptr<inventory_db_adapter_t, decltype(&free)> owned(adapters, free);
    AdapterResult result;
    for (uint32_t a = 0; a < count && adapters; ++a)
        if (!result.take(visit(adapters[a], a)))
            return ADAPTERS_FAILED;
    return result.value;
}

// Every function of the class `mask` (ADAPTERS_NETWORK_FUNCTIONS, ...), as
// get_pci_funckey_list lists them: by adapter, then in the database's order.
template <class Visit> uint32_t forEachFunction(Table &table, uint32_t mask, Visit visit)
{
    table.rows.clear();
    inventory_db_func_key_list_t functions = {};
    if (get_pci_funckey_list(&functions, mask) == ADAPTERS_FAILED)
        return ADAPTERS_FAILED;
    const std::unique_ptr<inventory_db_func_key_t, decltype(&free)> owned(functions.keyList, free);
    AdapterResult result;
    for (uint32_t f = 0; f < functions.count && functions.keyList; ++f)
        if (!result.take(visit(functions.keyList[f])))
            return ADAPTERS_FAILED;
    return result.value;
}

// A text column from a database field, by strtrim's rule (text.h).
template <size_t N> uint32_t fillTrimmed(orv3_text256_t &column, const char (&field)[N])
{
    strtrimInto(column, field);
    return ADAPTERS_OK;
}

// The protocols a logical port runs, as the port table shows them: the
// words "Ethernet", "FCoE/FC" and "iSCSI" of the flags set, joined by ", ",
// cut to `size - 1` characters. Returns the length.
size_t joinProtocolWords(char *buffer, size_t size, uint8_t ethernet, uint8_t fcoeFc, uint8_t iscsi);

} // namespace orv3

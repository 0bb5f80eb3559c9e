// Loading row tables from the data manager through column bindings.
//
// A table's binding handle lives across loads: it is created when it is 0,
// reused as it stands otherwise, and freed after the last row. When the
// first-row call fails the binding is kept and the next load goes straight
// to it. The store reports the end of the rows like an error, so the
// "GetNextRow error" line is printed at the end of every load.
#pragma once

#include "orv3/data_manager.h"

#include <cstdint>
#include <source_location>

namespace orv3 {

struct BoundTableSource {
    const char *ns; // the store table, e.g. "s/fans/status/fantbl"
    quel_dm_column_binding_t *columns;
    quel_dm_binding_t *binding; // the table's module-wide handle
    const char *loaderName;     // printed first in every message
    // The first-row failure message ends with the call's own result
    // (", varStatus = %d") in most tables; some print the status only.
    bool firstRowMessageWithResult;
    // Traces under `token`: "<loader> enter" at the start of a load, and
    // "<loader> iIndex = <rows>" at its end.
    const char *token = nullptr;
    bool traceEnter = false;
    bool traceRowsLoaded = false;
};

// A load never takes more rows than this from one binding, so that a store
// that never reports the end of its rows cannot hold the agent. A load also
// stops, with a message, at a next-row call that succeeds without moving
// on: one that leaves every holder as the row before left it.
constexpr int kMaxRowsPerLoad = 65536;

// Binds if needed and reads every row, calling `addRow` with the holders
// filled for each. Returns the number of rows read.
// A table that traces its loads clears itself after the "enter" trace, so
// the loader's own clear routine is passed in.
int loadBoundRows(const BoundTableSource &source, void (*clear)(), void (*addRow)(),
                  std::source_location where = std::source_location::current());

// A row of table T for the store row whose values the holders hold now:
// created, filled by copy_bindings_to_T_entry and listed.
#define ORV3_BOUND_ROW_ADDER(T)                                                                                        \
    [] {                                                                                                               \
        auto *row = T##_createEntry(&T##_binding);                                                                     \
        if (!row)                                                                                                      \
            return;                                                                                                    \
        copy_bindings_to_##T##_entry(row);                                                                             \
        T##_insertEntry(row);                                                                                          \
    }

// initialize_T_local of a table that is loaded through a column binding
// alone, from `source` (a BoundTableSource) and the handle `T_binding`.
#define ORV3_BOUND_TABLE_LOADER(T, source)                                                                             \
    extern "C" int initialize_##T##_local(void)                                                                        \
    {                                                                                                                  \
        ::orv3::loadBoundRows(source, T##_clear, ORV3_BOUND_ROW_ADDER(T));                                             \
        return 0;                                                                                                      \
    }

// The store's row count of a table, with the call's own result and status.
struct RowCountReply {
    int32_t result;
    int32_t count;
    int32_t status;
};
RowCountReply queryRowCount(const char *ns);

// The store's text for a status word, never null.
const char *statusText(int32_t status);

// -x without overflow: the controller's words wrap.
inline int32_t negated(int32_t x)
{
    return static_cast<int32_t>(0u - static_cast<uint32_t>(x));
}

} // namespace orv3

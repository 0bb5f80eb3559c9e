#include "bound_rows.h"

#include "trace.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace orv3 {

const char *statusText(int32_t status)
{
    const char *text = quel_dm_GetVarListErrorStr(status);
    return text ? text : "";
}

// Every value the holders hold after a row call, byte for byte.
static std::string heldValues(const quel_dm_column_binding_t *columns)
{
    std::string values;
    for (const quel_dm_column_binding_t *column = columns; column->type != QUEL_DM_TYPE_END; ++column) {
        if (!column->holder)
            continue;
        if (column->type == QUEL_DM_TYPE_INT) {
            values.append(static_cast<const char *>(column->holder), sizeof(int32_t));
        } else if (column->type == QUEL_DM_TYPE_STRING) {
            const auto *holder = static_cast<const quel_dm_string_holder_t *>(column->holder);
            if (holder->buffer && holder->capacity > 0)
                values.append(holder->buffer, strnlen(holder->buffer, static_cast<size_t>(holder->capacity)));
            values.push_back('\0');
        }
    }
    return values;
}

// A next-row call that succeeds but leaves every holder as the last row left
// it has not moved the store's cursor (two rows of one table differ at least
// in their index), and calling again would not either.
static bool advanced(const quel_dm_column_binding_t *columns, std::string &lastRow)
{
    std::string row = heldValues(columns);
    if (row == lastRow)
        return false;
    lastRow = std::move(row);
    return true;
}

static int readBoundRows(const BoundTableSource &source, void (*addRow)())
{
    int32_t status = 0;
    if (!*source.binding) {
        if (quel_dm_BindRow(-1, source.ns, g_coHandle, 0, 0, source.columns, source.binding, &status) != 0)
            printf("%s failed to create bindings %d-%s\n", source.loaderName, status, statusText(status));
        if (!*source.binding)
            return 0;
    }

    int32_t result = quel_dm_GetFirstRow(*source.binding, g_coHandle, 0, 0, &status);
    if (result != 0) {
        if (source.firstRowMessageWithResult)
            printf("%s quel_dm_GetFirstRow error %d-%s, varStatus = %d\n", source.loaderName, status,
                   statusText(status), result);
        else
            printf("%s quel_dm_GetFirstRow error %d-%s\n", source.loaderName, status, statusText(status));
        return 0;
    }

    int rows = 0;
    std::string lastRow = heldValues(source.columns);
    bool advancing = true;
    do {
        addRow();
        ++rows;
    } while (rows < kMaxRowsPerLoad && quel_dm_GetNextRow(*source.binding, g_coHandle, 0, 0, &status) == 0 &&
             (advancing = advanced(source.columns, lastRow)));
    if (!advancing)
        printf("%s quel_dm_GetNextRow returned row %d again: the store is not advancing, load stopped\n",
               source.loaderName, rows);
    else if (rows == kMaxRowsPerLoad)
        printf("%s stopped at %d rows, the most one load takes\n", source.loaderName, kMaxRowsPerLoad);
    else
        printf("%s quel_dm_GetNextRow error %d-%s\n", source.loaderName, status, statusText(status));

    if (quel_dm_FreeBinding(*source.binding, &status) != 0)
        puts("failed to call quel_dm_FreeBinding");
    *source.binding = nullptr;
    return rows;
}

int loadBoundRows(const BoundTableSource &source, void (*clear)(), void (*addRow)(), std::source_location where)
{
    if (source.traceEnter)
        ORV3_TRACE_AT(source.loaderName, where, source.token, "%s enter\n", source.loaderName);
    clear();
    int rows = readBoundRows(source, addRow);
    if (source.traceRowsLoaded)
        ORV3_TRACE_AT(source.loaderName, where, source.token, "%s iIndex = %d\n", source.loaderName, rows);
    return rows;
}

RowCountReply queryRowCount(const char *ns)
{
    RowCountReply reply{0, 0, 0};
    reply.result = quel_dm_GetRowCount(ns, g_coHandle, 0, 0, &reply.count, &reply.status);
    return reply;
}

} // namespace orv3

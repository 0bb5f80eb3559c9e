#include "bound_rows.h"

#include "trace.h"

#include <cstdio>

namespace orv3 {

const char *statusText(int32_t status)
{
    const char *text = quel_dm_GetVarListErrorStr(status);
    return text ? text : "";
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
    do {
        addRow();
        ++rows;
    } while (rows < kMaxRowsPerLoad && quel_dm_GetNextRow(*source.binding, g_coHandle, 0, 0, &status) == 0);
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

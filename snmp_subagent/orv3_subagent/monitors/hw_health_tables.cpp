#include "hw_health_tables.h"

#include "bound_rows.h"
#include "trace.h"

#include <cstdio>

namespace orv3 {

int32_t hwHealthRowCount(const char *routine, const char *token, const char *storeTable, int32_t lastLoadRows,
                         const char *lastLoadName, std::source_location where)
{
    RowCountReply reply = queryRowCount(storeTable);
    ORV3_TRACE_AT(routine, where, token, "%s curRowCount=%ld, %s=%ld\n", routine, static_cast<long>(reply.count),
                  lastLoadName, static_cast<long>(lastLoadRows));
    if (reply.status != 0) {
        printf("%s quel_dm_GetRowCount error %d-%s\n", routine, reply.status, statusText(reply.status));
        return negated(reply.status);
    }
    return reply.count;
}

int commitRowOnce(const char *routine, orv3_row_head_t *row, int requestId)
{
    if (row->last_request_id == requestId)
        return 0;
    printf("%s row=%ld\n", routine, static_cast<long>(row->index));
    row->last_request_id = requestId;
    return 0;
}

} // namespace orv3

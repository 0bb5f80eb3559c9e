#include "sensor_text_table.h"

#include "bound_rows.h"
#include "settable_group.h"
#include "text.h"
#include "trace.h"

#include <cstdio>

namespace orv3 {

void copySensorRow(const SensorStore &store, sensor_text_entry_t *row)
{
    row->head.index = *store.index;
    for (size_t i = 0; i < 10; ++i) {
        orv3_text32_t &field = row->*kSensorTexts[i];
        const quel_dm_string_holder_t &holder = *store.holders[i];
        size_t capacity = holder.capacity > 0 ? static_cast<size_t>(holder.capacity) : 0;
        field.len = copyText(field.text, store.textBound, holder.buffer, capacity);
    }
}

int32_t sensorTableRowCount(const char *routine, const SensorStore &store, std::source_location where)
{
    RowCountReply reply = queryRowCount(store.source.ns);
    ORV3_TRACE_AT(routine, where, store.source.token, "%s curRowCount=%ld\n", routine, static_cast<long>(reply.count));
    if (reply.result != 0) {
        printf("%s quel_dm_GetRowCount error %d-%s\n", routine, reply.status, statusText(reply.status));
        return negated(reply.status);
    }
    return reply.count;
}

int sensorTableCommitRow(const char *routine, const char *token, const char *rowPathFormat, quel_dm_varlist_t vars,
                         int requestId, sensor_text_entry_t *row, std::source_location where)
{
    ORV3_TRACE_AT(routine, where, token, "%s: reqid = %d, index = %ld\n", routine, requestId,
                  static_cast<long>(row->head.index));
    return commitRowOfGroup(routine, token, rowPathFormat, vars, requestId, &row->head, where);
}

} // namespace orv3

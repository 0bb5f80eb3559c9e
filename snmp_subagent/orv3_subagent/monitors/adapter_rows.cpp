#include "adapter_rows.h"

namespace orv3 {

namespace {

// The failure message of a table's routine, named after the table.
void traceTableFailure(const Table &table, const char *suffix, const char *message, int line)
{
    if (!snmp_get_do_debugging())
        return;
    char routine[96];
    snprintf(routine, sizeof routine, "%s%s", table.name, suffix);
    traceLine(routine, __FILE__, line, __FILE__, "%s, %d: %s", routine, line, message);
}

} // namespace

orv3_row_head_t *allocateAdapterRow(const Table &table, size_t size)
{
    auto *row = static_cast<orv3_row_head_t *>(calloc(1, size));
    if (!row)
        traceTableFailure(table, "_addRow", "pRow cannot allocate space.\n", __LINE__);
    return row;
}

orv3_row_head_t *listAdapterRow(Table &table, const orv3_row_head_t &work, size_t size)
{
    orv3_row_head_t *row = createEntry(table, &work, size);
    if (!row) {
        char message[96];
        snprintf(message, sizeof message, "%s_createEntry failed.\n", table.name);
        traceTableFailure(table, "_addRow", message, __LINE__);
        return nullptr;
    }
    return row;
}

} // namespace orv3

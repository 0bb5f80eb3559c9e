#include "adapter_rows.h"

#include <cstdarg>

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

size_t trimmedFieldInto(orv3_text256_t &column, const char *field, size_t fieldSize)
{
    column.len = static_cast<uint32_t>(trimInto(column.text, sizeof column.text, field, fieldSize));
    return column.len;
}

void setText(orv3_text256_t &column, const char *text)
{
    column.len = static_cast<uint32_t>(strnlen(text, sizeof column.text - 1));
    memcpy(column.text, text, column.len);
    column.text[column.len] = '\0';
}

void formatText(orv3_text256_t &column, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const int written = vsnprintf(column.text, sizeof column.text, format, args);
    va_end(args);
    column.len = written < 0 ? 0 : static_cast<uint32_t>(strnlen(column.text, sizeof column.text - 1));
}

} // namespace orv3

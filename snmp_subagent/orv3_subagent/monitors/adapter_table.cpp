#include "adapter_table.h"

#include <cstdarg>

namespace orv3 {

namespace {

constexpr RefreshRule kAdapterCache = {RefreshRule::FixedPeriod, 5};

// The failure message of a table's routine, named after the table.
void traceTableFailure(const AdapterTable &table, const char *suffix, const char *message, int line)
{
    if (!snmp_get_do_debugging())
        return;
    char routine[96];
    snprintf(routine, sizeof routine, "%s%s", table.name, suffix);
    traceLine(routine, __FILE__, line, __FILE__, "%s, %d: %s", routine, line, message);
}

} // namespace

void loadAdapterRows(RowList &rows, int32_t &stamp, uint32_t (*load)())
{
    if (!refreshDue(kAdapterCache, stamp, nowSeconds()))
        return;
    uint32_t supported = 0;
    if (check_support_pci(&supported) != ADAPTERS_OK || supported == 0) {
        rows.clear();
        return;
    }
    rows.clear();
    if (load() == ADAPTERS_FAILED)
        rows.clear();
}

orv3_row_head_t *allocateAdapterRow(const AdapterTable &table, size_t size)
{
    auto *row = static_cast<orv3_row_head_t *>(calloc(1, size));
    if (!row)
        traceTableFailure(table, "_addRow", "pRow cannot allocate space.\n", __LINE__);
    return row;
}

orv3_row_head_t *listAdapterRow(const AdapterTable &table, RowList &rows, const orv3_row_head_t &work, size_t size)
{
    orv3_row_head_t *row = allocateRow(&work, size);
    if (!row) {
        char message[96];
        snprintf(message, sizeof message, "%s_createEntry failed.\n", table.name);
        traceTableFailure(table, "_addRow", message, __LINE__);
        return nullptr;
    }
    memcpy(row, &work, size);
    row->next = nullptr;
    rows.insertInOrder(row);
    return row;
}

int adapterTableHandler(const AdapterTable &table, const char *handlerName, netsnmp_agent_request_info *reqinfo,
                        netsnmp_request_info *requests, std::source_location where)
{
    DEBUGMSGTL(("trace", "%s(): %s, %d:\n", handlerName, where.file_name(), static_cast<int>(where.line())));
    if (reqinfo->mode != MODE_GET)
        return SNMP_ERR_NOERROR;
    for (netsnmp_request_info *request = requests; request; request = request->next) {
        // The table helper has answered this one already: a column beyond
        // the table (noSuchObject), or, in a GETNEXT, one it passes on past
        // the table. Answering it again would turn a GETNEXT backwards.
        if (request->processed)
            continue;
        netsnmp_table_request_info *info = netsnmp_extract_table_info(request);
        const unsigned number = info ? info->colnum : 0;
        const Column *column = nullptr;
        for (const Column &candidate : table.columns)
            if (candidate.number == number)
                column = &candidate;
        if (!column || number > table.maxColumn) {
            netsnmp_set_request_error(reqinfo, request, SNMP_NOSUCHOBJECT);
            continue;
        }
        auto *row = static_cast<orv3_row_head_t *>(netsnmp_extract_iterator_context(request));
        if (!row) {
            netsnmp_set_request_error(reqinfo, request, SNMP_NOSUCHINSTANCE);
            continue;
        }
        answerColumn(*column, row, request);
    }
    return SNMP_ERR_NOERROR;
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

#include "row_table.h"

#include "trace.h"

#include "orv3/agent_binding.h"
#include "orv3/trace_log.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

namespace orv3 {

bool refreshDue(const RefreshRule &rule, int32_t &stamp, int32_t now)
{
    // The controller keeps these times in signed 32-bit words; the sums wrap
    // as they do there instead of overflowing.
    auto plus = [](int32_t a, int32_t b) {
        return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
    };
    bool due = false;
    switch (rule.kind) {
    case RefreshRule::FixedPeriod:
        due = plus(stamp, rule.seconds) < now;
        if (due)
            stamp = now;
        break;
    case RefreshRule::SlidingPeriod:
        due = plus(stamp, rule.seconds) < now;
        stamp = now;
        break;
    case RefreshRule::NewSecond:
        due = stamp < now;
        if (due)
            stamp = now;
        break;
    case RefreshRule::EveryWalk:
        due = true;
        stamp = now;
        break;
    }
    return due;
}

int32_t nowSeconds()
{
    return static_cast<int32_t>(time(nullptr));
}

// ---- row lifetime --------------------------------------------------------

namespace {

orv3_row_head_t *retiredRows = nullptr;
bool reclaimScheduled = false;

void reclaimAlarm(unsigned int, void *)
{
    reclaimScheduled = false;
    reclaimRetiredRows();
}

void retire(orv3_row_head_t *first, orv3_row_head_t *last)
{
    last->next = retiredRows;
    retiredRows = first;
    if (!reclaimScheduled) {
        // The agent runs alarms from its main loop, after the request that
        // retired these rows has been answered.
        struct timeval soon = {0, 1};
        reclaimScheduled = snmp_alarm_register_hr(soon, 0, reclaimAlarm, nullptr) != 0;
    }
}

} // namespace

void reclaimRetiredRows()
{
    while (retiredRows) {
        orv3_row_head_t *next = retiredRows->next;
        free(retiredRows);
        retiredRows = next;
    }
}

size_t retiredRowCount()
{
    size_t count = 0;
    for (const orv3_row_head_t *row = retiredRows; row; row = row->next)
        ++count;
    return count;
}

orv3_row_head_t *allocateRow(const void *hint, size_t size)
{
    if (!hint)
        return nullptr;
    return static_cast<orv3_row_head_t *>(calloc(1, size));
}

void RowList::insertInOrder(orv3_row_head_t *row)
{
    if (!head_ || indexArc(row) <= indexArc(head_)) {
        row->next = head_;
        head_ = row;
        if (!row->next)
            tail_ = row;
        return;
    }
    if (indexArc(row) > indexArc(tail_)) {
        row->next = nullptr;
        tail_->next = row;
        tail_ = row;
        return;
    }
    orv3_row_head_t *before = head_;
    while (indexArc(before->next) < indexArc(row))
        before = before->next;
    row->next = before->next;
    before->next = row;
}

void RowList::remove(orv3_row_head_t *row)
{
    if (!row || !head_)
        return;
    orv3_row_head_t *previous = nullptr;
    for (orv3_row_head_t **link = &head_; *link; previous = *link, link = &(*link)->next) {
        if (*link == row) {
            *link = row->next;
            if (row == tail_)
                tail_ = previous;
            retire(row, row);
            return;
        }
    }
}

void RowList::clear()
{
    if (!head_)
        return;
    orv3_row_head_t *first = head_;
    head_ = nullptr;
    retire(first, tail_);
    tail_ = nullptr;
}

// ---- serving ---------------------------------------------------------------

void answerColumn(const Column &column, const orv3_row_head_t *row, netsnmp_request_info *request)
{
    const char *base = reinterpret_cast<const char *>(row);
    if (column.asnType == ASN_OCTET_STR) {
        uint32_t length;
        memcpy(&length, base + column.lengthOffset, sizeof length);
        // A text may fill its buffer without a terminator; never serve past it.
        if (length > column.capacity)
            length = static_cast<uint32_t>(column.capacity);
        snmp_set_var_typed_value(request->requestvb, ASN_OCTET_STR, base + column.offset, length);
        return;
    }
    int32_t value;
    memcpy(&value, base + column.offset, sizeof value);
    // Gauge32 columns carry the same 32 bits as the signed store value.
    long wire =
        column.asnType == ASN_INTEGER ? static_cast<long>(value) : static_cast<long>(static_cast<uint32_t>(value));
    snmp_set_var_typed_integer(request->requestvb, column.asnType, wire);
}

namespace {

// The records a table registration hands to the agent live as long as the
// process; the module keeps them listed so that they stay reachable.
struct RegisteredTable {
    netsnmp_table_registration_info *tableInfo;
    netsnmp_iterator_info *iteratorInfo;
    RegisteredTable *next;
};
RegisteredTable *registeredTables = nullptr;

} // namespace

int registerIterator(const char *name, const oid *rootOid, size_t rootOidLength, unsigned maxColumn,
                     Netsnmp_Node_Handler *handler, Netsnmp_First_Data_Point *first, Netsnmp_Next_Data_Point *next)
{
    netsnmp_handler_registration *registration = netsnmp_create_handler_registration(
        name, handler, const_cast<oid *>(rootOid), rootOidLength, HANDLER_CAN_RONLY);
    if (!registration)
        return MIB_REGISTRATION_FAILED;
    auto *tableInfo = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    auto *iteratorInfo = SNMP_MALLOC_TYPEDEF(netsnmp_iterator_info);
    if (!tableInfo || !iteratorInfo)
        return MIB_REGISTRATION_FAILED;
    netsnmp_table_helper_add_indexes(tableInfo, ASN_INTEGER, 0);
    tableInfo->min_column = 1;
    tableInfo->max_column = maxColumn;
    iteratorInfo->get_first_data_point = first;
    iteratorInfo->get_next_data_point = next;
    // Every row list is kept in index order: a GETNEXT stops at the first
    // row past the requested index instead of comparing every row.
    iteratorInfo->flags |= NETSNMP_ITERATOR_FLAG_SORTED;
    iteratorInfo->table_reginfo = tableInfo;
    registeredTables = new RegisteredTable{tableInfo, iteratorInfo, registeredTables};
    return netsnmp_register_table_iterator(registration, iteratorInfo);
}

namespace {

std::vector<Table *> &tableList()
{
    static std::vector<Table *> tables;
    return tables;
}

} // namespace

bool declareTable(Table &table)
{
    tableList().push_back(&table);
    return true;
}

std::span<Table *const> declaredTables()
{
    return tableList();
}

int registerTable(const Table &table, const char *routine, Netsnmp_Node_Handler *handler,
                  Netsnmp_First_Data_Point *first, Netsnmp_Next_Data_Point *next)
{
    if (table.registration && !table.registration->askedByInit && table.registration->withheld(routine))
        return 0;
    return registerIterator(table.name, table.rootOid, table.rootOidLength, table.maxColumn, handler, first, next);
}

int initTable(const Table &table, const char *routine, int (*initializeTable)())
{
    if (table.registration && table.registration->askedByInit && table.registration->withheld(routine))
        return 0;
    return initializeTable();
}

// ---- loading ----------------------------------------------------------------

int checkForUpdate(Table &table)
{
    const bool due = refreshDue(table.refresh, table.stamp, nowSeconds());
    if (due && table.check == Table::Check::LoadsWhenDue)
        table.load();
    return due ? 0 : 1;
}

namespace {

// Runs the load of a table whose check does not; false when the walk is to
// find the table empty.
bool reload(Table &table, const char *routine, int line)
{
    if (table.gate && !table.gate->offered()) {
        if (table.gate->withdrawnLog)
            log_tlog(1, table.gate->withdrawnLog, routine, line);
        if (table.rows.head()) {
            table.rows.clear();
            if (table.gate->releasedLog) {
                char head[96];
                snprintf(head, sizeof head, "%s_head", table.name);
                log_tlog(1, table.gate->releasedLog, routine, line, head);
            }
        }
        return false;
    }
    const int result = table.load();
    switch (table.loadFailure) {
    case Table::LoadFailure::Ignored: break;
    case Table::LoadFailure::EndsTheWalk: return result == 0;
    case Table::LoadFailure::EmptiesTheTable:
        if (result == kLoadFailedOutright)
            table.rows.clear();
        break;
    }
    return true;
}

} // namespace

orv3_row_head_t *firstRow(Table &table, const char *routine, int line)
{
    const bool fresh = checkForUpdate(table) == 1;
    if (fresh || table.check == Table::Check::LoadsWhenDue)
        return table.rows.head();
    return reload(table, routine, line) ? table.rows.head() : nullptr;
}

orv3_row_head_t *createEntry(Table &table, const void *source, size_t rowSize)
{
    orv3_row_head_t *row = allocateRow(source, rowSize);
    if (!row || table.rowMaking == Table::RowMaking::ZeroFilled)
        return row;
    memcpy(row, source, rowSize);
    row->next = nullptr;
    table.rows.insertInOrder(row);
    return row;
}

void clearRowsFrom(RowList &rows, orv3_row_head_t *from)
{
    if (from == rows.head()) {
        rows.clear();
        return;
    }
    while (from) {
        orv3_row_head_t *next = from->next;
        rows.remove(from);
        from = next;
    }
}

// ---- answering --------------------------------------------------------------

static const Column *findColumn(const Table &table, const netsnmp_request_info *request)
{
    netsnmp_table_request_info *info = netsnmp_extract_table_info(const_cast<netsnmp_request_info *>(request));
    if (!info)
        return nullptr;
    for (const Column &column : table.columns)
        if (column.number == info->colnum)
            return &column;
    return nullptr;
}

static bool isSetPhase(int mode)
{
    return mode >= MODE_SET_RESERVE1 && mode <= MODE_SET_UNDO;
}

static void traceEntry(const Table &table, const char *handlerName, int mode, const std::source_location &where)
{
    const HandlerPolicy &policy = table.handler;
    switch (policy.entry) {
    case HandlerPolicy::EntryTrace::None: break;
    case HandlerPolicy::EntryTrace::Mode: ORV3_TRACE_AT(handlerName, where, table.name, policy.entryTrace, mode); break;
    case HandlerPolicy::EntryTrace::ModeAndGroupState:
        ORV3_TRACE_AT(handlerName, where, table.name, "%s: reqmode = %d-%s State %s\n", handlerName, mode,
                      getSNMPModeName(mode), getHandlerStateName(*policy.groupState));
        break;
    case HandlerPolicy::EntryTrace::HeaderOnly:
        DEBUGMSGTL(("trace", "%s(): %s, %d:\n", handlerName, where.file_name(), static_cast<int>(where.line())));
        break;
    }
}

int tableHandler(const Table &table, const char *handlerName, netsnmp_agent_request_info *reqinfo,
                 netsnmp_request_info *requests, std::source_location where)
{
    using Set = HandlerPolicy::SetAnswer;
    using Missing = HandlerPolicy::MissingRow;
    const HandlerPolicy &policy = table.handler;
    const int mode = reqinfo->mode;
    traceEntry(table, handlerName, mode, where);
    if (policy.set == Set::LeftAlone && mode != MODE_GET)
        return SNMP_ERR_NOERROR;
    if (policy.set == Set::ReadOnlyAtOnce && isSetPhase(mode)) {
        netsnmp_request_set_error_all(requests, SNMP_ERR_READONLY);
        return 0;
    }
    if (policy.set == Set::ReadOnlyAtOnce && (mode != MODE_GET || !requests))
        return 0;

    for (netsnmp_request_info *request = requests; request; request = request->next) {
        if (policy.requestTrace)
            ORV3_TRACE_AT(handlerName, where, policy.requestToken, policy.requestTrace, mode);
        // The table helper has answered this one already: a column beyond
        // the table (noSuchObject), or, in a GETNEXT, one it passes on past
        // the table. Answering it again would turn a GETNEXT backwards.
        if (request->processed)
            continue;
        const Column *column = findColumn(table, request);
        if (policy.columnBeforeRow && !column) {
            netsnmp_set_request_error(reqinfo, request, SNMP_NOSUCHOBJECT);
            continue;
        }
        auto *row = static_cast<orv3_row_head_t *>(netsnmp_extract_iterator_context(request));
        if (!row) {
            switch (policy.missingRow) {
            case Missing::EveryRequest:
                // Requests answered earlier in this pass are overwritten too.
                netsnmp_request_set_error_all(requests, SNMP_NOSUCHINSTANCE);
                return 0;
            case Missing::FirstRequest: netsnmp_request_set_error(requests, SNMP_NOSUCHINSTANCE); return 0;
            case Missing::ThatRequest: netsnmp_set_request_error(reqinfo, request, SNMP_NOSUCHINSTANCE); continue;
            }
        }
        if (policy.set == Set::ReadOnlyOnceARowIsFound && isSetPhase(mode)) {
            netsnmp_request_set_error_all(requests, SNMP_ERR_READONLY);
            continue;
        }
        if (mode != MODE_GET)
            continue;
        if (column)
            answerColumn(*column, row, request);
        else
            netsnmp_set_request_error(reqinfo, request, SNMP_NOSUCHOBJECT);
    }
    return 0;
}

} // namespace orv3

#include "row_table.h"

#include "trace.h"

#include "orv3/agent_binding.h"

#include <cstdlib>
#include <cstring>
#include <ctime>

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

int registerTable(const TableInfo &table, Netsnmp_Node_Handler *handler, Netsnmp_First_Data_Point *first,
                  Netsnmp_Next_Data_Point *next)
{
    netsnmp_handler_registration *registration = netsnmp_create_handler_registration(
        table.name, handler, const_cast<oid *>(table.rootOid), table.rootOidLength, HANDLER_CAN_RONLY);
    if (!registration)
        return MIB_REGISTRATION_FAILED;
    auto *tableInfo = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    auto *iteratorInfo = SNMP_MALLOC_TYPEDEF(netsnmp_iterator_info);
    if (!tableInfo || !iteratorInfo)
        return MIB_REGISTRATION_FAILED;
    netsnmp_table_helper_add_indexes(tableInfo, ASN_INTEGER, 0);
    tableInfo->min_column = 1;
    tableInfo->max_column = table.maxColumn;
    iteratorInfo->get_first_data_point = first;
    iteratorInfo->get_next_data_point = next;
    // Every row list is kept in index order: a GETNEXT stops at the first
    // row past the requested index instead of comparing every row.
    iteratorInfo->flags |= NETSNMP_ITERATOR_FLAG_SORTED;
    iteratorInfo->table_reginfo = tableInfo;
    registeredTables = new RegisteredTable{tableInfo, iteratorInfo, registeredTables};
    return netsnmp_register_table_iterator(registration, iteratorInfo);
}

static const Column *findColumn(const TableInfo &table, unsigned number)
{
    for (const Column &column : table.columns)
        if (column.number == number)
            return &column;
    return nullptr;
}

static bool isSetPhase(int mode)
{
    return mode >= MODE_SET_RESERVE1 && mode <= MODE_SET_UNDO;
}

static int requestIdOf(const netsnmp_agent_request_info *reqinfo)
{
    return reqinfo->asp && reqinfo->asp->pdu ? reqinfo->asp->pdu->reqid : 0;
}

// Answers the request's column from its row, or noSuchObject for a column
// the table does not serve.
static void answerRequest(const TableInfo &table, netsnmp_agent_request_info *reqinfo, netsnmp_request_info *request,
                          const orv3_row_head_t *row)
{
    netsnmp_table_request_info *info = netsnmp_extract_table_info(request);
    const Column *column = info ? findColumn(table, info->colnum) : nullptr;
    if (column)
        answerColumn(*column, row, request);
    else
        netsnmp_set_request_error(reqinfo, request, SNMP_NOSUCHOBJECT);
}

static int perRequestHandler(const TableInfo &table, const char *handlerName, int (*updateRow)(int, orv3_row_head_t *),
                             netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests,
                             std::source_location where)
{
    const int mode = reqinfo->mode;
    ORV3_TRACE_AT(handlerName, where, table.name, "%s: reqmode = %d-%s State %s\n", handlerName, mode,
                  getSNMPModeName(mode), getHandlerStateName(*table.handlerStyle.groupState));
    for (netsnmp_request_info *request = requests; request; request = request->next) {
        if (request->processed)
            continue;
        auto *row = static_cast<orv3_row_head_t *>(netsnmp_extract_iterator_context(request));
        if (!row) {
            netsnmp_request_set_error(requests, SNMP_NOSUCHINSTANCE);
            return 0;
        }
        if (isSetPhase(mode)) {
            netsnmp_request_set_error_all(requests, SNMP_ERR_READONLY);
        } else if (mode == MODE_GET) {
            if (updateRow(requestIdOf(reqinfo), row) != 0)
                netsnmp_request_set_error(request, SNMP_NOSUCHINSTANCE);
            else
                answerRequest(table, reqinfo, request, row);
        }
    }
    return 0;
}

int tableHandler(const TableInfo &table, const char *handlerName, int (*updateRow)(int, orv3_row_head_t *),
                 netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests, std::source_location where)
{
    if (table.handlerStyle.kind == TableHandlerStyle::PerRequest)
        return perRequestHandler(table, handlerName, updateRow, reqinfo, requests, where);

    ORV3_TRACE_AT(handlerName, where, table.name, table.handlerStyle.entryTrace, reqinfo->mode);
    if (isSetPhase(reqinfo->mode)) {
        netsnmp_request_set_error_all(requests, SNMP_ERR_READONLY);
        return 0;
    }
    if (reqinfo->mode != MODE_GET || !requests)
        return 0;

    for (netsnmp_request_info *request = requests; request; request = request->next) {
        // The table helper has already answered a column beyond the table
        // (noSuchObject) and marked it processed.
        if (request->processed)
            continue;
        auto *row = static_cast<orv3_row_head_t *>(netsnmp_extract_iterator_context(request));
        if (!row) {
            // Requests answered earlier in this pass are overwritten too.
            netsnmp_request_set_error_all(requests, SNMP_NOSUCHINSTANCE);
            return 0;
        }
        updateRow(requestIdOf(reqinfo), row);
        answerRequest(table, reqinfo, request, row);
    }
    return 0;
}

} // namespace orv3

// Cached row tables: one engine for every MIB table of the module.
//
// A table is a singly linked list of heap rows, rebuilt wholesale by its
// loader when its refresh rule says so, walked by net-snmp's table iterator
// through a get-first/get-next pair, and answered column by column from the
// row the iterator found. A table's own file gives only what is its own: the
// row record, the columns, the loader and the rule (see fanTable.cpp).
//
// How the iterator calls us, and why rows are retired instead of freed:
// for one request the iterator may call get_first_data_point several times
// (a GETNEXT that runs off the end of a column wraps to the next column in a
// new pass), and each pass may reload the table. The iterator keeps the row
// pointers it found in earlier passes and hands them to the table handler
// only after the last pass. Rows replaced by a reload are therefore moved to
// a retired list and freed once the request is over, from a zero-delay
// agent alarm that runs when the agent is back in its main loop.
#pragma once

#include "netsnmp.h"

#include <cstddef>
#include <cstdint>
#include <source_location>
#include <span>
#include <type_traits>

extern "C" {

// Common head of every row record.
typedef struct orv3_row_head {
    int32_t reserved;           // always 0
    int32_t last_request_id;    // request that last committed the row
    struct orv3_row_head *next; // next row, null at the end
    int32_t index;              // the row's single INTEGER index
} orv3_row_head_t;

// Text columns: a buffer with its served length.
typedef struct orv3_text32 {
    char text[32];
    uint32_t len;
} orv3_text32_t;

typedef struct orv3_text64 {
    char text[64];
    uint32_t len;
} orv3_text64_t;

typedef struct orv3_text256 {
    char text[256];
    uint32_t len;
} orv3_text256_t;

} // extern "C"

namespace orv3 {

// When a table reloads. Times are whole seconds compared as signed 32-bit
// numbers, wrapping as they do on the controller.
struct RefreshRule {
    enum Kind {
        FixedPeriod,   // load when stamp + seconds < now; stamp set on a load
        SlidingPeriod, // load when stamp + seconds < now; stamp set on every check
        NewSecond,     // load when stamp < now; stamp set on a load
        EveryWalk,     // load on every check
    } kind;
    int32_t seconds;
};

// Decides whether a load is due at `now` and moves the stamp as the rule says.
bool refreshDue(const RefreshRule &rule, int32_t &stamp, int32_t now);

// The current time in whole seconds, as the module sees it.
int32_t nowSeconds();

// One served column: where its value lives in the row record and how it
// goes on the wire.
struct Column {
    unsigned number;
    u_char asnType;  // ASN_INTEGER, ASN_GAUGE or ASN_OCTET_STR
    size_t offset;   // of the int32 value or of the text buffer
    size_t capacity; // text buffer size (text columns)
    size_t lengthOffset;
};

#define ORV3_INTEGER_COLUMN(n, Row, field)                                                                             \
    ::orv3::Column                                                                                                     \
    {                                                                                                                  \
        n, ASN_INTEGER, offsetof(Row, field), 0, 0                                                                     \
    }
#define ORV3_GAUGE_COLUMN(n, Row, field)                                                                               \
    ::orv3::Column                                                                                                     \
    {                                                                                                                  \
        n, ASN_GAUGE, offsetof(Row, field), 0, 0                                                                       \
    }
#define ORV3_TEXT_COLUMN(n, Row, field, lengthField)                                                                   \
    ::orv3::Column                                                                                                     \
    {                                                                                                                  \
        n, ASN_OCTET_STR, offsetof(Row, field), sizeof(Row::field), offsetof(Row, lengthField)                         \
    }

// A text column kept in one of the orv3_textN_t fields.
#define ORV3_TEXT_FIELD_COLUMN(n, Row, field)                                                                          \
    ::orv3::Column                                                                                                     \
    {                                                                                                                  \
        n, ASN_OCTET_STR, offsetof(Row, field.text), sizeof(Row::field.text), offsetof(Row, field.len)                 \
    }
#define ORV3_TEXT32_COLUMN(n, Row, field) ORV3_TEXT_FIELD_COLUMN(n, Row, field)

// Answers `column` of `row` into the request's varbind.
void answerColumn(const Column &column, const orv3_row_head_t *row, netsnmp_request_info *request);

// The row list of one table, headed by the table's exported head pointer.
//
// Rows stand in ascending order of their index as the iterator orders it
// (the index as an unsigned 32-bit OID arc), so that the iterator may stop
// at the first row past the one a GETNEXT asks for. A row goes in before
// any row with the same index, so that of two rows a store delivers with
// one index, the later one is found first. Stores deliver rows in
// ascending or descending order, and both take constant time per row.
class RowList {
public:
    constexpr explicit RowList(orv3_row_head_t *&head) : head_(head) {}

    orv3_row_head_t *head() const { return head_; }
    void insertInOrder(orv3_row_head_t *row);
    // Unlinks a listed row and retires it; a row not in the list is left alone.
    void remove(orv3_row_head_t *row);
    // Retires every row; the list becomes empty.
    void clear();

private:
    orv3_row_head_t *&head_;
    orv3_row_head_t *tail_ = nullptr; // last row, while head_ is not null
};

// Frees every retired row of every table now. The agent does this itself
// once the request that retired them is over.
void reclaimRetiredRows();
size_t retiredRowCount();

// A zero-filled row record, or null for a null hint (the loaders always
// pass one).
orv3_row_head_t *allocateRow(const void *hint, size_t size);

// ---- the table descriptor ---------------------------------------------------
//
// Every table is one declared `Table`: what it is (name, OID, columns), how
// its rows are kept fresh (refresh rule, loader, the platform function they
// depend on) and how requests are answered. The families of tables differ
// only in these fields; one walk, one handler and one registration serve
// them all.

// How requests reach the columns. Three behaviours, each kept exactly as its
// tables have always answered:
struct HandlerPolicy {
    // A SET phase: every request readOnly at once; readOnly for the whole
    // list once a request's row is found; or left alone (GET-only tables).
    enum class SetAnswer { ReadOnlyAtOnce, ReadOnlyOnceARowIsFound, LeftAlone } set;
    // A request without a row: noSuchInstance on every request of the list
    // and stop; on the first request of the list and stop; or on that
    // request alone, going on with the next.
    enum class MissingRow { EveryRequest, FirstRequest, ThatRequest } missingRow;
    // GET-only tables answer an unknown column before they look for a row.
    bool columnBeforeRow;
    // The trace at entry: `entryTrace` given the mode, under the table's
    // name; the mode and the state of the settable group the table belongs
    // with (`groupState`); or the bare "trace" header line.
    enum class EntryTrace { None, Mode, ModeAndGroupState, HeaderOnly } entry;
    const char *entryTrace;
    const int32_t *groupState;
    // A trace for every request: `requestTrace` given the mode, under
    // `requestToken`.
    const char *requestToken;
    const char *requestTrace;
};

// The data-manager tables' handler: every SET phase readOnly, a missing
// row fails the whole request.
constexpr HandlerPolicy wholeListHandler(const char *entryTrace)
{
    return {HandlerPolicy::SetAnswer::ReadOnlyAtOnce,
            HandlerPolicy::MissingRow::EveryRequest,
            false,
            HandlerPolicy::EntryTrace::Mode,
            entryTrace,
            nullptr,
            nullptr,
            nullptr};
}

// The handler of the tables that belong with a settable group (voltages,
// temperatures, LEDs): requests are taken one by one, and the trace names
// the group's SET state.
constexpr HandlerPolicy perRequestHandler(const int32_t *groupState)
{
    return {HandlerPolicy::SetAnswer::ReadOnlyOnceARowIsFound,
            HandlerPolicy::MissingRow::FirstRequest,
            false,
            HandlerPolicy::EntryTrace::ModeAndGroupState,
            nullptr,
            groupState,
            nullptr,
            nullptr};
}

// The RAID and adapter tables' handler: GET only, each request answered on
// its own.
constexpr HandlerPolicy getOnlyHandler(HandlerPolicy::EntryTrace entry, const char *requestToken = nullptr,
                                       const char *requestTrace = nullptr)
{
    return {HandlerPolicy::SetAnswer::LeftAlone,
            HandlerPolicy::MissingRow::ThatRequest,
            true,
            entry,
            nullptr,
            nullptr,
            requestToken,
            requestTrace};
}

// The platform function a table's rows depend on. While it is not offered
// the rows are freed and every walk finds the table empty.
struct SupportGate {
    bool (*offered)();
    // Logged to the controller's trace log from the table's get-first
    // routine ("%s[%d] ...": its name and line) when the function is not
    // offered; null for none.
    const char *withdrawnLog;
    // Logged as well when that freed rows ("%s[%d] %s has been released!",
    // with the list head's name); null for none.
    const char *releasedLog;
};

// A table whose registration depends on the platform: `withheld` answers
// true (and says why) for a platform without it, given the routine asking.
struct RegistrationGate {
    bool (*withheld)(const char *routine);
    // Asked in init_T rather than in initialize_table_T.
    bool askedByInit;
};

struct Table {
    // ---- what the table is
    const char *name; // registration name and debug token, e.g. "fanTable"
    const oid *rootOid;
    size_t rootOidLength;
    unsigned maxColumn;
    std::span<const Column> columns;

    // ---- how its rows are kept
    // How createEntry makes a row: zero-filled (listed later by insertEntry),
    // or as a copy of a row the loader filled, listed at once.
    enum class RowMaking { ZeroFilled, CopyOfFilledRow } rowMaking = RowMaking::ZeroFilled;
    RefreshRule refresh;
    // The data-manager tables load inside their check routine; the others'
    // check only answers whether the rows are fresh (1) or a load is due
    // (0), and their get-first routine loads.
    enum class Check { LoadsWhenDue, ReportsFreshness } check;
    int (*load)();
    // What a load's result means: nothing; nonzero ends this walk (the rows
    // stay as the loader left them); ADAPTERS_FAILED empties the table.
    enum class LoadFailure { Ignored, EndsTheWalk, EmptiesTheTable } loadFailure = LoadFailure::Ignored;
    const SupportGate *gate = nullptr;              // null: always offered
    const RegistrationGate *registration = nullptr; // null: always registered

    // ---- how requests are answered
    HandlerPolicy handler;

    // ---- state
    RowList rows;
    int32_t stamp = 0; // whole seconds of the last check or load, as the rule keeps it
};

// A table of `Row` rows; the row type gives the exported routines their
// signatures.
template <class RowRecord> struct TableOf : Table {
    using Row = RowRecord;
};
template <class T> using RowOf = typename std::remove_cvref_t<T>::Row;

// What the tables of one group share when their rows are built by a loader
// of the group's own from a platform library, as copies of rows it filled,
// and checked for freshness before the get-first routine loads: the RAID
// tables and the adapter tables.
struct TableFamily {
    RefreshRule refresh;
    Table::LoadFailure loadFailure;
    const SupportGate *gate;
    HandlerPolicy handler;
};

// The descriptor of a table of `family`.
template <class Row, size_t OidLength>
constexpr TableOf<Row> familyTable(const TableFamily &family, const char *name, const oid (&rootOid)[OidLength],
                                   unsigned lastColumn, std::span<const Column> columns, int (*load)(),
                                   orv3_row_head_t *&head)
{
    return {{
        .name = name,
        .rootOid = rootOid,
        .rootOidLength = OidLength,
        .maxColumn = lastColumn,
        .columns = columns,
        .rowMaking = Table::RowMaking::CopyOfFilledRow,
        .refresh = family.refresh,
        .check = Table::Check::ReportsFreshness,
        .load = load,
        .loadFailure = family.loadFailure,
        .gate = family.gate,
        .handler = family.handler,
        .rows = RowList(head),
    }};
}

// The result by which a loader says it failed outright (the adapter
// group's ADAPTERS_FAILED); 1 there means a partial load, which stands.
constexpr int kLoadFailedOutright = 2;

// The column list of a table: its numbers ascend, and the list ends at or
// before the table's last column.
constexpr bool columnsAscendWithin(std::span<const Column> columns, unsigned maxColumn)
{
    unsigned previous = 0;
    for (const Column &column : columns) {
        if (column.number <= previous || column.number > maxColumn)
            return false;
        previous = column.number;
    }
    return true;
}

// Registers a table with the iterator helper (columns 1 to maxColumn, one
// INTEGER index, rows sorted). Returns the agent's registration result. The
// RAID and adapter groups register their tables from their own arrays.
int registerIterator(const char *name, const oid *rootOid, size_t rootOidLength, unsigned maxColumn,
                     Netsnmp_Node_Handler *handler, Netsnmp_First_Data_Point *first, Netsnmp_Next_Data_Point *next);

// initialize_table_T and init_T: register the table unless its platform
// withholds it.
int registerTable(const Table &table, const char *routine, Netsnmp_Node_Handler *handler,
                  Netsnmp_First_Data_Point *first, Netsnmp_Next_Data_Point *next);
int initTable(const Table &table, const char *routine, int (*initializeTable)());

// Every table the module declares (ORV3_TABLE lists it as the library is
// loaded), for the table lint of the unit tests.
bool declareTable(Table &table);
std::span<Table *const> declaredTables();

// T_check_for_update: applies the refresh rule; a table that loads in its
// check loads when due. 1 when the rows are fresh, 0 when a load was due.
int checkForUpdate(Table &table);

// The row a walk starts at, after the check and, where the check does not
// load, the load; null when the walk finds the table empty. `routine` and
// `line` name the get-first routine in the gate's log lines.
orv3_row_head_t *firstRow(Table &table, const char *routine, int line);

// T_createEntry: a zero-filled row (null for a null hint), or a listed copy
// of the filled row `source` (null when there is no room).
orv3_row_head_t *createEntry(Table &table, const void *source, size_t rowSize);

// Frees `from` and every row after it.
void clearRowsFrom(RowList &rows, orv3_row_head_t *from);

// A row's index as its OID arc: the 32 bits of the stored index, unsigned,
// exactly as they go on the wire. Built any wider (a negative index sign-
// extended into a 64-bit arc), the agent would order and compare the row
// by an arc no manager can send back, and a GETNEXT from the wire's arc
// would answer that same OID again. Rows are ordered by this arc.
inline uint32_t indexArc(const orv3_row_head_t *row)
{
    return static_cast<uint32_t>(row->index);
}

// The INTEGER the iterator's index varbind holds for a row, from which the
// agent builds the arc (an oid, unsigned long). Where long has 64 bits the
// arc fits as it is; where it has 32 (the controller's ARM) the arc above
// 2^31 - 1 is held as its negative twin, which the agent turns back into
// the same unsigned arc.
inline long indexInteger(const orv3_row_head_t *row)
{
    return static_cast<long>(static_cast<oid>(indexArc(row)));
}

// The iterator's get-next step over a row list. A walk steps through about
// half the list for every varbind it answers, so the step is kept inline and
// sets the index in place once the varbind holds an integer of its own.
inline netsnmp_variable_list *nextDataPoint(void **loopContext, void **dataContext, netsnmp_variable_list *index)
{
    auto *row = static_cast<orv3_row_head_t *>(*loopContext);
    if (!row)
        return nullptr;
    if (index->type == ASN_INTEGER && index->val.integer == reinterpret_cast<long *>(index->buf) &&
        index->val_len == sizeof(long))
        *index->val.integer = indexInteger(row);
    else
        snmp_set_var_typed_integer(index, ASN_INTEGER, indexInteger(row));
    *dataContext = row;
    *loopContext = row->next;
    return index;
}

// The table handler: answers the requests of one pass from their rows, as
// the table's handler policy says.
int tableHandler(const Table &table, const char *handlerName, netsnmp_agent_request_info *reqinfo,
                 netsnmp_request_info *requests, std::source_location where = std::source_location::current());

} // namespace orv3

// Stamps out the exported routine family of table T from its descriptor (a
// TableOf<Row> defined before it in the table's file): the iterator's
// get-first and get-next pair, the check, the row routines, the handler and
// the registration. Which of them a table exports, exports.map says, as the
// module's design names them; a routine that differs for one table is
// written beside its descriptor instead.
#define ORV3_TABLE(T, descriptor)                                                                                      \
    using T##_row_t = ::orv3::RowOf<decltype(descriptor)>;                                                             \
    extern "C" {                                                                                                       \
    netsnmp_variable_list *T##_get_next_data_point(void **loop, void **data, netsnmp_variable_list *index,             \
                                                   netsnmp_iterator_info *)                                            \
    {                                                                                                                  \
        return ::orv3::nextDataPoint(loop, data, index);                                                               \
    }                                                                                                                  \
    netsnmp_variable_list *T##_get_first_data_point(void **loop, void **data, netsnmp_variable_list *index,            \
                                                    netsnmp_iterator_info *)                                           \
    {                                                                                                                  \
        *loop = ::orv3::firstRow(descriptor, __func__, __LINE__);                                                      \
        return ::orv3::nextDataPoint(loop, data, index);                                                               \
    }                                                                                                                  \
    int T##_check_for_update(void)                                                                                     \
    {                                                                                                                  \
        return ::orv3::checkForUpdate(descriptor);                                                                     \
    }                                                                                                                  \
    T##_row_t *T##_createEntry(void *source)                                                                           \
    {                                                                                                                  \
        return reinterpret_cast<T##_row_t *>(::orv3::createEntry(descriptor, source, sizeof(T##_row_t)));              \
    }                                                                                                                  \
    T##_row_t *T##_insertEntry(T##_row_t *row)                                                                         \
    {                                                                                                                  \
        descriptor.rows.insertInOrder(&row->head);                                                                     \
        return row;                                                                                                    \
    }                                                                                                                  \
    void T##_removeEntry(T##_row_t *row)                                                                               \
    {                                                                                                                  \
        descriptor.rows.remove(row ? &row->head : nullptr);                                                            \
    }                                                                                                                  \
    void T##_clear(void)                                                                                               \
    {                                                                                                                  \
        descriptor.rows.clear();                                                                                       \
    }                                                                                                                  \
    void clearAll##T##Rows(T##_row_t *from)                                                                            \
    {                                                                                                                  \
        ::orv3::clearRowsFrom(descriptor.rows, from ? &from->head : nullptr);                                          \
    }                                                                                                                  \
    int T##_update_row(int, T##_row_t *)                                                                               \
    {                                                                                                                  \
        return 0;                                                                                                      \
    }                                                                                                                  \
    int T##_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,        \
                    netsnmp_request_info *requests)                                                                    \
    {                                                                                                                  \
        return ::orv3::tableHandler(descriptor, #T "_handler", reqinfo, requests);                                     \
    }                                                                                                                  \
    int initialize_table_##T(void)                                                                                     \
    {                                                                                                                  \
        return ::orv3::registerTable(descriptor, __func__, T##_handler, T##_get_first_data_point,                      \
                                     T##_get_next_data_point);                                                         \
    }                                                                                                                  \
    int init_##T(void)                                                                                                 \
    {                                                                                                                  \
        return ::orv3::initTable(descriptor, __func__, initialize_table_##T);                                          \
    }                                                                                                                  \
    }                                                                                                                  \
    [[maybe_unused]] static const bool T##_declared = ::orv3::declareTable(descriptor);

// The record of table T in a group's registration array (init_set,
// adapter_tables): OID, its length, name, columns 1 to the last, handler,
// and the iterator's pair.
#define ORV3_TABLE_REGISTRATION_RECORD(T)                                                                              \
    {                                                                                                                  \
        T##_oid, OID_LENGTH(T##_oid), #T, 1, T##_lastColumn, T##_handler, T##_get_first_data_point,                    \
            T##_get_next_data_point                                                                                    \
    }

// Declares the routine family of table T (ROW rows) for the table's header.
// Routines particular to a table (copy, row count, commit) are declared
// beside it.
#define ORV3_TABLE_DECLARATIONS(T, ROW)                                                                                \
    extern "C" {                                                                                                       \
    extern orv3_row_head_t *T##_head;                                                                                  \
    netsnmp_variable_list *T##_get_first_data_point(void **loop, void **data, netsnmp_variable_list *index,            \
                                                    netsnmp_iterator_info *info);                                      \
    netsnmp_variable_list *T##_get_next_data_point(void **loop, void **data, netsnmp_variable_list *index,             \
                                                   netsnmp_iterator_info *info);                                       \
    int T##_check_for_update(void);                                                                                    \
    ROW *T##_createEntry(void *source);                                                                                \
    ROW *T##_insertEntry(ROW *row);                                                                                    \
    void T##_removeEntry(ROW *row);                                                                                    \
    void T##_clear(void);                                                                                              \
    void clearAll##T##Rows(ROW *from);                                                                                 \
    int T##_update_row(int request_id, ROW *row);                                                                      \
    int T##_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,                               \
                    netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);                              \
    int initialize_table_##T(void);                                                                                    \
    int init_##T(void);                                                                                                \
    }

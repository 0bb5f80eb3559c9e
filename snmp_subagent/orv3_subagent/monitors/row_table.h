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
    explicit RowList(orv3_row_head_t *&head) : head_(head) {}

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

// What a table handler does besides answering columns. Two handlers serve
// the module's tables:
// - whole-list (fan, power, disk): SET phases mark every request readOnly
//   before anything else; a request without a row marks every request of
//   the list noSuchInstance; the entry trace shows the mode (`entryTrace`);
// - per-request (voltage, temperature, LEDs): each request's row is checked
//   first, and a missing row marks only the first request of the list
//   noSuchInstance; the entry trace names the mode and the state of the
//   settable group the table belongs with (`groupState`).
struct TableHandlerStyle {
    enum Kind { WholeList, PerRequest } kind;
    const char *entryTrace;    // whole-list: printf format given the mode
    const int32_t *groupState; // per-request: e.g. &voltageHandlerState
};

// Everything the engine needs to know of one table.
struct TableInfo {
    const char *name; // registration name and debug token, e.g. "fanTable"
    const oid *rootOid;
    size_t rootOidLength;
    unsigned maxColumn;
    std::span<const Column> columns;
    TableHandlerStyle handlerStyle;
};

// Registers the table with the iterator helper (columns 1 to maxColumn,
// one INTEGER index, rows sorted). Returns the agent's registration result.
int registerTable(const TableInfo &table, Netsnmp_Node_Handler *handler, Netsnmp_First_Data_Point *first,
                  Netsnmp_Next_Data_Point *next);

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

// The table handler: readOnly for every SET phase, GET answered per column.
int tableHandler(const TableInfo &table, const char *handlerName, int (*updateRow)(int, orv3_row_head_t *),
                 netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests,
                 std::source_location where = std::source_location::current());

} // namespace orv3

// Stamps out the exported routine family of one cached row table T with row
// record ROW, given `T_info` (TableInfo), `T_rows` (RowList), `T_refresh`
// (RefreshRule) and `T_stamp` (int32_t) in the table's file, and the
// table-specific `initialize_T_local` and `T_update_row` defined there too.
// The registration routines come from ORV3_ROW_TABLE_REGISTRATION, unless a
// table registers in a way of its own. A table whose rows are made or whose
// cache is checked in a way of its own takes the parts it shares:
// ORV3_ROW_TABLE_LIST_ROUTINES and ORV3_ROW_TABLE_WALK_ROUTINES.
#define ORV3_ROW_TABLE_ROUTINES(T, ROW)                                                                                \
    extern "C" {                                                                                                       \
    ROW *T##_createEntry(void *hint)                                                                                   \
    {                                                                                                                  \
        return reinterpret_cast<ROW *>(::orv3::allocateRow(hint, sizeof(ROW)));                                        \
    }                                                                                                                  \
    }                                                                                                                  \
    ORV3_ROW_TABLE_LIST_ROUTINES(T, ROW)                                                                               \
    ORV3_ROW_TABLE_WALK_ROUTINES(T, ROW)                                                                               \
    extern "C" {                                                                                                       \
    void T##_check_for_update(void)                                                                                    \
    {                                                                                                                  \
        if (::orv3::refreshDue(T##_refresh, T##_stamp, ::orv3::nowSeconds()))                                          \
            initialize_##T##_local();                                                                                  \
    }                                                                                                                  \
    netsnmp_variable_list *T##_get_first_data_point(void **loop, void **data, netsnmp_variable_list *index,            \
                                                    netsnmp_iterator_info *info)                                       \
    {                                                                                                                  \
        T##_check_for_update();                                                                                        \
        *loop = T##_rows.head();                                                                                       \
        return T##_get_next_data_point(loop, data, index, info);                                                       \
    }                                                                                                                  \
    }

// insertEntry, removeEntry and clear over `T_rows`.
#define ORV3_ROW_TABLE_LIST_ROUTINES(T, ROW)                                                                           \
    extern "C" {                                                                                                       \
    ROW *T##_insertEntry(ROW *row)                                                                                     \
    {                                                                                                                  \
        T##_rows.insertInOrder(&row->head);                                                                            \
        return row;                                                                                                    \
    }                                                                                                                  \
    void T##_removeEntry(ROW *row)                                                                                     \
    {                                                                                                                  \
        T##_rows.remove(row ? &row->head : nullptr);                                                                   \
    }                                                                                                                  \
    void T##_clear(void)                                                                                               \
    {                                                                                                                  \
        T##_rows.clear();                                                                                              \
    }                                                                                                                  \
    }

// The iterator's get-next step and the table handler.
#define ORV3_ROW_TABLE_WALK_ROUTINES(T, ROW)                                                                           \
    extern "C" {                                                                                                       \
    netsnmp_variable_list *T##_get_next_data_point(void **loop, void **data, netsnmp_variable_list *index,             \
                                                   netsnmp_iterator_info *)                                            \
    {                                                                                                                  \
        return ::orv3::nextDataPoint(loop, data, index);                                                               \
    }                                                                                                                  \
    int T##_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,        \
                    netsnmp_request_info *requests)                                                                    \
    {                                                                                                                  \
        return ::orv3::tableHandler(                                                                                   \
            T##_info, #T "_handler",                                                                                   \
            [](int id, orv3_row_head_t *row) { return T##_update_row(id, reinterpret_cast<ROW *>(row)); }, reqinfo,    \
            requests);                                                                                                 \
    }                                                                                                                  \
    }

// init_T and initialize_table_T: register the table as it is.
#define ORV3_ROW_TABLE_REGISTRATION(T)                                                                                 \
    extern "C" {                                                                                                       \
    int initialize_table_##T(void)                                                                                     \
    {                                                                                                                  \
        return ::orv3::registerTable(T##_info, T##_handler, T##_get_first_data_point, T##_get_next_data_point);        \
    }                                                                                                                  \
    int init_##T(void)                                                                                                 \
    {                                                                                                                  \
        return initialize_table_##T();                                                                                 \
    }                                                                                                                  \
    }

// Declares the engine routines of table T (ROW rows) and its own loader
// and row hook, for the table's header. Routines particular to a table
// (copy, row count, commit) are declared beside it.
#define ORV3_ROW_TABLE_DECLARATIONS(T, ROW)                                                                            \
    extern "C" {                                                                                                       \
    extern orv3_row_head_t *T##_head;                                                                                  \
    extern size_t T##_oid_len;                                                                                         \
    ROW *T##_createEntry(void *hint);                                                                                  \
    ROW *T##_insertEntry(ROW *row);                                                                                    \
    void T##_removeEntry(ROW *row);                                                                                    \
    void T##_clear(void);                                                                                              \
    void T##_check_for_update(void);                                                                                   \
    int initialize_##T##_local(void);                                                                                  \
    int T##_update_row(int request_id, ROW *row);                                                                      \
    int T##_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,                               \
                    netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);                              \
    int init_##T(void);                                                                                                \
    int initialize_table_##T(void);                                                                                    \
    }

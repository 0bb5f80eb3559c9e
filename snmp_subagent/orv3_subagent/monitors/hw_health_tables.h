// powerTable and diskTable: the rows of the hardware-health store tables
// and the tables' exported routines.
#pragma once

#include "row_table.h"

#include "orv3/data_manager.h"

extern "C" {

typedef struct powerTable_entry {
    orv3_row_head_t head;
    orv3_text32_t fru_name;
    orv3_text32_t part_number;
    orv3_text32_t fru_number;
    orv3_text32_t serial_number;
    orv3_text32_t health_status;
} powerTable_entry_t;

typedef struct diskTable_entry {
    orv3_row_head_t head;
    orv3_text32_t fru_name;
    orv3_text32_t health_status;
} diskTable_entry_t;

extern orv3_row_head_t *powerTable_head;
extern orv3_row_head_t *diskTable_head;
extern size_t powerTable_oid_len;
extern size_t diskTable_oid_len;
extern int32_t gPowerTableLastRowCount;
extern int32_t gDiskTableLastRowCount;

#define ORV3_HW_HEALTH_TABLE_ROUTINES(T, ROW)                                                                          \
    ROW *T##_createEntry(void *hint);                                                                                  \
    ROW *T##_insertEntry(ROW *row);                                                                                    \
    void T##_removeEntry(ROW *row);                                                                                    \
    void T##_clear(void);                                                                                              \
    void T##_check_for_update(void);                                                                                   \
    int initialize_##T##_local(void);                                                                                  \
    int copy_bindings_to_##T##_entry(ROW *row);                                                                        \
    int32_t T##_get_row_count(void);                                                                                   \
    int T##_update_row(int request_id, ROW *row);                                                                      \
    int T##_commit_row(int request_id, ROW *row);                                                                      \
    int T##_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,                               \
                    netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);                              \
    int init_##T(void);                                                                                                \
    int initialize_table_##T(void);

ORV3_HW_HEALTH_TABLE_ROUTINES(powerTable, powerTable_entry_t)
ORV3_HW_HEALTH_TABLE_ROUTINES(diskTable, diskTable_entry_t)

// True on the platform families that have no power group.
int powerModule_family_unsupported(const char *routine);

} // extern "C"

namespace orv3 {

// The row count of powerTable and diskTable: the status word decides, and
// a nonzero one is printed and given negated.
int32_t hwHealthRowCount(const char *routine, const char *token, const char *storeTable, int32_t lastLoadRows,
                         const char *lastLoadName, std::source_location where = std::source_location::current());

// The commit routine of the fan, power and disk tables.
int commitRowOnce(const char *routine, orv3_row_head_t *row, int requestId);

} // namespace orv3

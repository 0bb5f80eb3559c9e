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

extern int32_t gPowerTableLastRowCount;
extern int32_t gDiskTableLastRowCount;

int copy_bindings_to_powerTable_entry(powerTable_entry_t *row);
int32_t powerTable_get_row_count(void);
int powerTable_commit_row(int request_id, powerTable_entry_t *row);
int copy_bindings_to_diskTable_entry(diskTable_entry_t *row);
int32_t diskTable_get_row_count(void);
int diskTable_commit_row(int request_id, diskTable_entry_t *row);

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

ORV3_ROW_TABLE_DECLARATIONS(powerTable, powerTable_entry_t)
ORV3_ROW_TABLE_DECLARATIONS(diskTable, diskTable_entry_t)

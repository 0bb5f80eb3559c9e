// powerTable, diskTable and fdTable: the rows of the hardware-health store
// tables
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

// fdTable: one row per flash DIMM, every column a text (capacity and the
// two wear figures formatted from the store's integers).
typedef struct fdTable_entry {
    orv3_row_head_t head;
    orv3_text32_t name;           // 2
    orv3_text32_t health_status;  // 3
    orv3_text32_t op_status;      // 4
    orv3_text32_t capacity;       // 5: "%ld GB"
    orv3_text32_t model_type;     // 6
    orv3_text32_t part_number;    // 7
    orv3_text32_t serial_number;  // 8
    orv3_text32_t manufacturer;   // 9
    orv3_text32_t temperature;    // 10
    orv3_text32_t warranty_life;  // 11: "%ld%%"
    orv3_text32_t endurance_life; // 12: "%ld%%"
    orv3_text32_t firmware_level; // 13
} fdTable_entry_t;

extern int32_t gPowerTableLastRowCount;
extern int32_t gDiskTableLastRowCount;
extern int32_t gFDimmTableLastRowCount;

int copy_bindings_to_powerTable_entry(powerTable_entry_t *row);
int32_t powerTable_get_row_count(void);
int powerTable_commit_row(int request_id, powerTable_entry_t *row);
int copy_bindings_to_diskTable_entry(diskTable_entry_t *row);
int32_t diskTable_get_row_count(void);
int diskTable_commit_row(int request_id, diskTable_entry_t *row);
int copy_bindings_to_fdTable_entry(fdTable_entry_t *row);
int32_t fdTable_get_row_count(void);
int fdTable_commit_row(int request_id, fdTable_entry_t *row);

// The flash DIMM count group. Its registration routine is kept but not
// called at start, so fdNumber is not served.
int init_flashdimm(void);
int flashdimm_update_fdNumber(void *value, size_t *size);
int flashdimm_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                      netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);

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

ORV3_TABLE_DECLARATIONS(powerTable, powerTable_entry_t)
extern "C" int initialize_powerTable_local(void);
ORV3_TABLE_DECLARATIONS(diskTable, diskTable_entry_t)
extern "C" int initialize_diskTable_local(void);
ORV3_TABLE_DECLARATIONS(fdTable, fdTable_entry_t)
extern "C" int initialize_fdTable_local(void);

// systemAepDIMMVpdTable: the persistent-memory modules of the inventory
// database, one row per module, every column after the index a text.
#pragma once

#include "row_table.h"

#include "orv3/inventory_db.h"

#include <cstdint>

extern "C" {

typedef struct systemAepDIMMVpdTable_entry {
    orv3_row_head_t head;         // 1: running number from 1
    orv3_text256_t text1;         // 2
    orv3_text256_t text2;         // 3
    orv3_text256_t speed1;        // 4: "%hu MHz"
    orv3_text256_t speed2;        // 5
    orv3_text256_t text3;         // 6
    orv3_text256_t text4;         // 7
    orv3_text256_t text5;         // 8
    orv3_text256_t capacity[6];   // 9-14: ConvertCapacity
    orv3_text256_t count;         // 15: "%hu"
    orv3_text256_t text6;         // 16
    orv3_text256_t text7;         // 17
    orv3_text256_t percentage;    // 18: "%d%%", kinds 1 and 3
    orv3_text256_t securityState; // 19: kinds 2 and 3
    orv3_text256_t healthState;   // 20: kinds 1 and 3
} systemAepDIMMVpdTable_entry_t;

extern orv3_row_head_t *systemAepDIMMVpdTable_head;
extern size_t systemAepDIMMVpdTable_oid_len;

int AepDIMM_loadData(void);
int arrangeAepDIMMDataAndCreateArow(const inventory_db_memory_t *memory, systemAepDIMMVpdTable_entry_t *row,
                                    int32_t *index);

// The byte count whose low and high 32-bit halves are given, as the
// controller shows capacities: "%.1f GB", "%.1f MB" or "%.1f KB" of the
// largest unit that is at least 1, or "%llu B". Returns the length.
int ConvertCapacity(uint32_t low, uint32_t high, char *buffer, int32_t size);

} // extern "C"

ORV3_TABLE_DECLARATIONS(systemAepDIMMVpdTable, systemAepDIMMVpdTable_entry_t)

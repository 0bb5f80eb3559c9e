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

int init_systemAepDIMMVpdTable(void);
int initialize_table_systemAepDIMMVpdTable(void);
// 1 while the rows are fresh, 0 when a load is due (the time is stamped).
int systemAepDIMMVpdTable_check_for_update(void);
systemAepDIMMVpdTable_entry_t *systemAepDIMMVpdTable_createEntry(const systemAepDIMMVpdTable_entry_t *row);
systemAepDIMMVpdTable_entry_t *systemAepDIMMVpdTable_insertEntry(systemAepDIMMVpdTable_entry_t *row);
void systemAepDIMMVpdTable_removeEntry(systemAepDIMMVpdTable_entry_t *row);
void systemAepDIMMVpdTable_clear(void);
int systemAepDIMMVpdTable_update_row(int request_id, systemAepDIMMVpdTable_entry_t *row);
netsnmp_variable_list *systemAepDIMMVpdTable_get_first_data_point(void **loop, void **data,
                                                                  netsnmp_variable_list *index,
                                                                  netsnmp_iterator_info *info);
netsnmp_variable_list *systemAepDIMMVpdTable_get_next_data_point(void **loop, void **data, netsnmp_variable_list *index,
                                                                 netsnmp_iterator_info *info);
int systemAepDIMMVpdTable_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                                  netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int AepDIMM_loadData(void);
int arrangeAepDIMMDataAndCreateArow(const inventory_db_memory_t *memory, systemAepDIMMVpdTable_entry_t *row,
                                    int32_t *index);

// The byte count whose low and high 32-bit halves are given, as the
// controller shows capacities: "%.1f GB", "%.1f MB" or "%.1f KB" of the
// largest unit that is at least 1, or "%llu B". Returns the length.
int ConvertCapacity(uint32_t low, uint32_t high, char *buffer, int32_t size);

} // extern "C"

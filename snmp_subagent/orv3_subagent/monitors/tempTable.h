// tempTable: the table's exported routines (rows: sensor_text_table.h).
#pragma once

#include "sensor_text_table.h"

extern "C" {

extern orv3_row_head_t *tempTable_head;
extern size_t tempTable_oid_len;
extern quel_dm_column_binding_t tempTable_columns[];

sensor_text_entry_t *tempTable_createEntry(void *hint);
sensor_text_entry_t *tempTable_insertEntry(sensor_text_entry_t *row);
void tempTable_removeEntry(sensor_text_entry_t *row);
void tempTable_clear(void);
void tempTable_check_for_update(void);
int initialize_tempTable_local(void);
int copy_bindings_to_tempTable_entry(sensor_text_entry_t *row);
int32_t tempTable_get_row_count(void);
int tempTable_update_row(int request_id, sensor_text_entry_t *row);
int tempTable_commit_row(int request_id, sensor_text_entry_t *row);
int tempTable_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                      netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int init_tempTable(void);
int initialize_table_tempTable(void);

} // extern "C"

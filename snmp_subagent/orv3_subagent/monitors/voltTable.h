// voltTable: the table's exported routines (rows: sensor_text_table.h).
#pragma once

#include "sensor_text_table.h"

extern "C" {

extern orv3_row_head_t *voltTable_head;
extern size_t voltTable_oid_len;
extern quel_dm_column_binding_t voltTable_columns[];

sensor_text_entry_t *voltTable_createEntry(void *hint);
sensor_text_entry_t *voltTable_insertEntry(sensor_text_entry_t *row);
void voltTable_removeEntry(sensor_text_entry_t *row);
void voltTable_clear(void);
void voltTable_check_for_update(void);
int initialize_voltTable_local(void);
int copy_bindings_to_voltTable_entry(sensor_text_entry_t *row);
int32_t voltTable_get_row_count(void);
int voltTable_update_row(int request_id, sensor_text_entry_t *row);
int voltTable_commit_row(int request_id, sensor_text_entry_t *row);
int voltTable_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                      netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int init_voltTable(void);
int initialize_table_voltTable(void);

} // extern "C"

// tempTable: the table's exported routines (rows: sensor_text_table.h).
#pragma once

#include "sensor_text_table.h"

extern "C" {

extern quel_dm_column_binding_t tempTable_columns[];

int copy_bindings_to_tempTable_entry(sensor_text_entry_t *row);
int32_t tempTable_get_row_count(void);
int tempTable_commit_row(int request_id, sensor_text_entry_t *row);

} // extern "C"

ORV3_TABLE_DECLARATIONS(tempTable, sensor_text_entry_t)
extern "C" int initialize_tempTable_local(void);

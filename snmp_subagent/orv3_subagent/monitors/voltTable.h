// voltTable: the table's exported routines (rows: sensor_text_table.h).
#pragma once

#include "sensor_text_table.h"

extern "C" {

extern quel_dm_column_binding_t voltTable_columns[];

int copy_bindings_to_voltTable_entry(sensor_text_entry_t *row);
int32_t voltTable_get_row_count(void);
int voltTable_commit_row(int request_id, sensor_text_entry_t *row);

} // extern "C"

ORV3_TABLE_DECLARATIONS(voltTable, sensor_text_entry_t)
extern "C" int initialize_voltTable_local(void);

// fanTable: the fan row record and the table's exported routines.
#pragma once

#include "row_table.h"

#include <cstdint>

extern "C" {

typedef struct fanTable_entry {
    orv3_row_head_t head;
    char descr[32];
    uint32_t descr_len;
    char speed_text[256];
    uint32_t speed_text_len;
    int32_t nonRecovLimitHigh;
    int32_t critLimitHigh;
    int32_t nonCritLimitHigh;
    int32_t nonRecovLimitLow;
    int32_t critLimitLow;
    int32_t nonCritLimitLow;
    char health_status[32];
    uint32_t health_status_len;
} fanTable_entry_t;

extern int32_t gFanTableLastRowCount;

int initialize_fanTable_local(void);
int copy_bindings_to_fanTable_entry(fanTable_entry_t *row);
int32_t fanTable_get_row_count(void);
int fanTable_commit_row(int request_id, fanTable_entry_t *row);
int fanTable_validate_fanNonRecovLimitHigh(fanTable_entry_t *row);
int fanTable_validate_fanCritLimitHigh(fanTable_entry_t *row);
int fanTable_validate_fanNonCritLimitHigh(fanTable_entry_t *row);
int fanTable_validate_fanNonRecovLimitLow(fanTable_entry_t *row);
int fanTable_validate_fanCritLimitLow(fanTable_entry_t *row);
int fanTable_validate_fanNonCritLimitLow(fanTable_entry_t *row);

} // extern "C"

ORV3_TABLE_DECLARATIONS(fanTable, fanTable_entry_t)

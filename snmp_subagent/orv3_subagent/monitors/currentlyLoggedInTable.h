// currentlyLoggedInTable: the users holding an open session on the controller.
#pragma once

#include "row_table.h"

extern "C" {

typedef struct currentlyLoggedInTable_entry {
    orv3_row_head_t head;
    char user_name[68]; // at most 64 characters
    uint32_t user_name_len;
    char access_method[68]; // at most 64 characters
    uint32_t access_method_len;
} currentlyLoggedInTable_entry_t;

} // extern "C"

ORV3_TABLE_DECLARATIONS(currentlyLoggedInTable, currentlyLoggedInTable_entry_t)
extern "C" int initialize_currentlyLoggedInTable_local(void);

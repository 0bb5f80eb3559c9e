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

extern orv3_row_head_t *currentlyLoggedInTable_head;
extern size_t currentlyLoggedInTable_oid_len;

currentlyLoggedInTable_entry_t *currentlyLoggedInTable_createEntry(void *hint);
currentlyLoggedInTable_entry_t *currentlyLoggedInTable_insertEntry(currentlyLoggedInTable_entry_t *row);
void currentlyLoggedInTable_removeEntry(currentlyLoggedInTable_entry_t *row);
void currentlyLoggedInTable_clear(void);
void currentlyLoggedInTable_check_for_update(void);
int initialize_currentlyLoggedInTable_local(void);
int currentlyLoggedInTable_update_row(int request_id, currentlyLoggedInTable_entry_t *row);
int currentlyLoggedInTable_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                                   netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int init_currentlyLoggedInTable(void);
int initialize_table_currentlyLoggedInTable(void);

} // extern "C"

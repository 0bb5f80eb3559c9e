// System health: systemHealthStat, systemHealthSummaryTable and the
// worst-severity word they share.
#pragma once

#include "row_table.h"
#include "scalar_group.h"

extern "C" {

// The worst severity among the active events: 255 none (or the event
// database could not be read), 4 a warning, 2 an error.
extern int32_t gSystemHealthState;

extern scalar_decl_ex_t systemHealth_decl[];
extern scalar_decl_ex_t *systemHealth;
int systemHealth_update_systemHealthStat(void *value, size_t *size);
int systemHealth_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                         netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int init_systemHealth(void);

typedef struct systemHealthSummaryTable_entry {
    orv3_row_head_t head;
    char severity[256];
    uint32_t severity_len;
    char description[256]; // a message of 256 characters or more fills it with no terminator
    uint32_t description_len;
} systemHealthSummaryTable_entry_t;

} // extern "C"

ORV3_TABLE_DECLARATIONS(systemHealthSummaryTable, systemHealthSummaryTable_entry_t)
extern "C" int initialize_systemHealthSummaryTable_local(void);

// leds: the writable identify and information LEDs, and allLEDsTable.
#pragma once

#include "row_table.h"
#include "settable_group.h"

extern "C" {

extern int32_t ledsHandlerState;
extern quel_dm_varlist_t pledsVars;
extern int32_t ledsVarListValidateStatus;
extern quel_dm_lock_t pledsLockHandle;
extern const char *as_ledsVarsToUpdate[];
extern agent_binding_scalar_t leds_decl[];
extern agent_binding_scalar_t *leds;

int leds_validate_identityLED(agent_binding_scalar_t *record, netsnmp_variable_list *vb);
int leds_validate_informationLED(agent_binding_scalar_t *record, netsnmp_variable_list *vb);
int leds_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                 netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int init_leds(void);

typedef struct allLEDsTable_entry {
    orv3_row_head_t head;
    int32_t identifier;
    char label[256];
    uint32_t label_len;
    int32_t state;
    char color[256];
    uint32_t color_len;
} allLEDsTable_entry_t;

extern quel_dm_column_binding_t allLEDsTable_columns[];

int copy_bindings_to_allLEDsTable_entry(allLEDsTable_entry_t *row);
int allLEDsTable_commit_row(int request_id, allLEDsTable_entry_t *row);

} // extern "C"

ORV3_TABLE_DECLARATIONS(allLEDsTable, allLEDsTable_entry_t)
extern "C" int initialize_allLEDsTable_local(void);

// The inventory (VPD) groups: the machine's VPD scalars, and the tables of
// controller firmware, components with their change history, host MAC
// addresses, processors and memory modules.
#pragma once

#include "row_table.h"
#include "settable_group.h"

#include "orv3/change_history.h"
#include "orv3/data_manager.h"

extern "C" {

// ---- machineVpd: five read-only text scalars ---------------------------------

extern int32_t machineVpdHandlerState;
extern quel_dm_varlist_t pmachineVpdVars;
extern int32_t machineVpdVarListValidateStatus;
extern const char *as_machineVpdVarsToUpdate[];
extern agent_binding_scalar_t machineVpd_decl[];
extern agent_binding_scalar_t *machineVpd;

int init_machineVpd(void);
int machineVpd_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                       netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int32_t updateOEMTypeModel(agent_binding_scalar_t *record, int32_t transaction);
int32_t getSingleValueFromTIRO(int32_t transaction, const char *path, char *buffer, int32_t size);

// ---- kepVpdTable: controller firmware ------------------------------------------

typedef struct kepVpdTable_entry {
    orv3_row_head_t head;
    orv3_text256_t type;
    orv3_text256_t id_version; // identifier, one blank, version
    orv3_text256_t release_date;
} kepVpdTable_entry_t;

extern quel_dm_column_binding_t kepVpdTable_columns[];
int copy_bindings_to_kepVpdTable_entry(kepVpdTable_entry_t *row);

// ---- systemComponentLevelVpdTable: field-replaceable components ---------------

typedef struct systemComponentLevelVpdTable_entry {
    orv3_row_head_t head;
    orv3_text256_t fru_number;
    orv3_text256_t fru_name;
    orv3_text256_t serial_number;
    orv3_text256_t manufacturing_id;
} systemComponentLevelVpdTable_entry_t;

extern quel_dm_column_binding_t systemComponentLevelVpdTable_columns[];
int copy_bindings_to_systemComponentLevelVpdTable_entry(systemComponentLevelVpdTable_entry_t *row);

// ---- systemComponentLevelVpdTrackingTable: the change-history log -------------

typedef struct systemComponentLevelVpdTrackingTable_entry {
    orv3_row_head_t head;
    orv3_text64_t category; // "Firmware", "Hardware" or "Configuration"
    orv3_text256_t text1;
    orv3_text256_t text2;
} systemComponentLevelVpdTrackingTable_entry_t;

extern size_t systemComponentLevelVpdTrackingTable_oid_len;
int loadMaintancelog(void);
void arrangeSystemComponentAndCreateArow(const change_history_record_t *record,
                                         systemComponentLevelVpdTrackingTable_entry_t *scratch, int32_t *index);

// ---- hostMACAddressTable ---------------------------------------------------------

typedef struct hostMACAddressTable_entry {
    orv3_row_head_t head;
    orv3_text256_t description;
    orv3_text256_t address;
} hostMACAddressTable_entry_t;

extern quel_dm_column_binding_t hostMACAddressTable_columns[];
extern quel_dm_varlist_t phostMACAddressTableVars;
int copy_bindings_to_hostMACAddressTable_entry(hostMACAddressTable_entry_t *row);
int hostMACAddressTable_commit_row(int request_id, hostMACAddressTable_entry_t *row);

// ---- systemCPUVpdTable -----------------------------------------------------------

typedef struct systemCPUVpdTable_entry {
    orv3_row_head_t head;
    orv3_text32_t description;
    int32_t speed; // thousandths of the store's unit when it has a point
    orv3_text32_t identifier;
    orv3_text32_t type;
    orv3_text64_t family;
    int32_t cores;
    int32_t threads;
    int32_t voltage;
    int32_t data_width;
    orv3_text32_t health_status;
    orv3_text64_t model;
} systemCPUVpdTable_entry_t;

extern quel_dm_column_binding_t systemCPUVpdTable_columns[];
int copy_bindings_to_systemCPUVpdTable_entry(systemCPUVpdTable_entry_t *row);
uint32_t cpuVpdDecimal_parse(const char *text);
int cpuVpdSpeed_conv(int flags, systemCPUVpdTable_entry_t *row, const char *text);
int cpuVpdCores_conv(int flags, systemCPUVpdTable_entry_t *row, const char *text);
int cpuVpdThreads_conv(int flags, systemCPUVpdTable_entry_t *row, const char *text);
int cpuVpdVoltage_conv(int flags, systemCPUVpdTable_entry_t *row, const char *text);
int cpuVpdDataWidth_conv(int flags, systemCPUVpdTable_entry_t *row, const char *text);

// ---- systemMemoryVpdTable ----------------------------------------------------------

typedef struct systemMemoryVpdTable_entry {
    orv3_row_head_t head;
    orv3_text32_t description;
    orv3_text32_t part_number;
    orv3_text32_t serial_number;
    orv3_text32_t manufacture_date;
    orv3_text32_t type;
    int32_t size;
    orv3_text32_t health_status;
    int32_t config_speed;
    int32_t rated_speed;
    int32_t aep_flag; // kept before the part number, served last
    orv3_text32_t udi_part_number;
} systemMemoryVpdTable_entry_t;

extern quel_dm_column_binding_t systemMemoryVpdTable_columns[];
extern quel_dm_varlist_t psystemMemoryVpdTableVars;
int copy_bindings_to_systemMemoryVpdTable_entry(systemMemoryVpdTable_entry_t *row);
int systemMemoryVpdTable_commit_row(int request_id, systemMemoryVpdTable_entry_t *row);

} // extern "C"

ORV3_TABLE_DECLARATIONS(kepVpdTable, kepVpdTable_entry_t)
extern "C" int initialize_kepVpdTable_local(void);
ORV3_TABLE_DECLARATIONS(systemComponentLevelVpdTable, systemComponentLevelVpdTable_entry_t)
extern "C" int initialize_systemComponentLevelVpdTable_local(void);
ORV3_TABLE_DECLARATIONS(hostMACAddressTable, hostMACAddressTable_entry_t)
extern "C" int initialize_hostMACAddressTable_local(void);
ORV3_TABLE_DECLARATIONS(systemCPUVpdTable, systemCPUVpdTable_entry_t)
extern "C" int initialize_systemCPUVpdTable_local(void);
ORV3_TABLE_DECLARATIONS(systemMemoryVpdTable, systemMemoryVpdTable_entry_t)
extern "C" int initialize_systemMemoryVpdTable_local(void);
ORV3_TABLE_DECLARATIONS(systemComponentLevelVpdTrackingTable, systemComponentLevelVpdTrackingTable_entry_t)

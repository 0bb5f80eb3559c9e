// voltage: the settable group of voltNumber and its module-wide state.
#pragma once

#include "settable_group.h"

extern "C" {

extern int32_t voltageHandlerState;
extern quel_dm_varlist_t pvoltageVars;
extern int32_t voltageVarListValidateStatus;
extern const char *as_voltageVarsToUpdate[];
extern agent_binding_scalar_t voltage_decl[];
extern agent_binding_scalar_t *voltage;

int voltage_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                    netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int init_voltage(void);

} // extern "C"

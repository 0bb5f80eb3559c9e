// temperature: the settable group of tempNumber and its module-wide state.
#pragma once

#include "settable_group.h"

extern "C" {

extern int32_t temperatureHandlerState;
extern quel_dm_varlist_t ptemperatureVars;
extern int32_t temperatureVarListValidateStatus;
extern const char *as_temperatureVarsToUpdate[];
extern agent_binding_scalar_t temperature_decl[];
extern agent_binding_scalar_t *temperature;

int temperature_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                        netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int init_temperature(void);

} // extern "C"

// voltage: voltNumber, 1.3.6.1.4.1.53917.11.1.1.2.1.0, bound to the store variable
// "s/voltages/status/count". Registered read-only: a SET is refused by the agent
// before the handler runs, so only the GET path is used.
#include "voltage.h"

static const oid voltNumber_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 2, 1, 0};

extern "C" {

// Value buffers as wide as the agent's long, which its instance helper reads.
long voltNumber_vbvalue;
uint32_t voltNumber_vbsize;
long voltNumber_mibvalue;
uint32_t voltNumber_mibcursize;

int32_t voltageHandlerState = 0;
quel_dm_varlist_t pvoltageVars = nullptr;
int32_t voltageVarListValidateStatus = 0;
const char *as_voltageVarsToUpdate[] = {"s/voltages", nullptr};

agent_binding_scalar_t voltage_decl[] = {
    {
        .oid = voltNumber_oid,
        .oid_len = OID_LENGTH(voltNumber_oid),
        .name = "voltNumber",
        .asn_type = ASN_INTEGER,
        .vb_value = &voltNumber_vbvalue,
        .vb_size = &voltNumber_vbsize,
        .mib_value = &voltNumber_mibvalue,
        .mib_cursize = &voltNumber_mibcursize,
        .mib_maxsize = 4,
        .store_var = "s/voltages/status/count",
        .store_type = QUEL_DM_TYPE_INT,
        .reserved = 0,
        .store_size = 4,
        .user_var = nullptr,
        .requester = "",
        .get_fn = nullptr,
        .validate_fn = nullptr,
        .set_fn = nullptr,
        .reserved2 = 0,
    },
    {},
};
agent_binding_scalar_t *voltage = voltage_decl;

} // extern "C"

static const orv3::SettableGroup voltageGroup = {
    .name = "voltage",
    .handlerName = "voltage_handler",
    .records = voltage_decl,
    .state = &voltageHandlerState,
    .vars = &pvoltageVars,
    .validateStatus = &voltageVarListValidateStatus,
    .namespaces = as_voltageVarsToUpdate,
    .lock = nullptr,
};

extern "C" {

int voltage_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                    netsnmp_request_info *requests)
{
    return orv3::settableGroupHandler(voltageGroup, reqinfo, requests);
}

int init_voltage(void)
{
    // The group's store variables are read once as the agent starts.
    quel_dm_varlist_t vars = nullptr;
    int32_t status = 0;
    if (quel_dm_GetVars("myCfgVars", g_coHandle, 0, 0, as_voltageVarsToUpdate, &vars, &status) == 0 && vars)
        quel_dm_DeleteVarList(vars, g_coHandle, 0, 0, &status);
    orv3::registerSettableGroup(__func__, voltageGroup, false, voltage_handler);
    return 0;
}

} // extern "C"

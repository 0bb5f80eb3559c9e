// temperature: tempNumber, 1.3.6.1.4.1.53917.11.1.1.1.1.0, bound to the store variable
// "s/temperatures/status/count". Registered read-only: a SET is refused by the agent
// before the handler runs, so only the GET path is used.
#include "temperature.h"

static const oid tempNumber_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 1, 1, 0};

extern "C" {

// Value buffers as wide as the agent's long, which its instance helper reads.
long tempNumber_vbvalue;
uint32_t tempNumber_vbsize;
long tempNumber_mibvalue;
uint32_t tempNumber_mibcursize;

int32_t temperatureHandlerState = 0;
quel_dm_varlist_t ptemperatureVars = nullptr;
int32_t temperatureVarListValidateStatus = 0;
const char *as_temperatureVarsToUpdate[] = {"s/temperatures", nullptr};

agent_binding_scalar_t temperature_decl[] = {
    {
        .oid = tempNumber_oid,
        .oid_len = OID_LENGTH(tempNumber_oid),
        .name = "tempNumber",
        .asn_type = ASN_INTEGER,
        .vb_value = &tempNumber_vbvalue,
        .vb_size = &tempNumber_vbsize,
        .mib_value = &tempNumber_mibvalue,
        .mib_cursize = &tempNumber_mibcursize,
        .mib_maxsize = 4,
        .store_var = "s/temperatures/status/count",
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
agent_binding_scalar_t *temperature = temperature_decl;

} // extern "C"

static const orv3::SettableGroup temperatureGroup = {
    .name = "temperature",
    .handlerName = "temperature_handler",
    .records = temperature_decl,
    .state = &temperatureHandlerState,
    .vars = &ptemperatureVars,
    .validateStatus = &temperatureVarListValidateStatus,
    .namespaces = as_temperatureVarsToUpdate,
    .lock = nullptr,
};

extern "C" {

int temperature_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                        netsnmp_request_info *requests)
{
    return orv3::settableGroupHandler(temperatureGroup, reqinfo, requests);
}

int init_temperature(void)
{
    orv3::registerSettableGroup(__func__, temperatureGroup, false, temperature_handler);
    return 0;
}

} // extern "C"

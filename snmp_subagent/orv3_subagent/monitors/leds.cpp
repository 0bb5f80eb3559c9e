// leds: identityLED (1.3.6.1.4.1.53917.11.1.1.8.1.0) and informationLED
// (.8.3.0), writable INTEGERs bound to "s/lightpathstatus/other/identification"
// and "s/lightpathstatus/other/info". A SET writes the requester ("SNMPv1")
// to "s/lightpathstatus/data/swe_username" with the value, under a lock of
// the "s/lightpathstatus" namespace from validation to commit. The module
// accepts every value; the data manager's own validation decides.
#include "leds.h"

static const oid identityLED_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 8, 1, 0};
static const oid informationLED_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 8, 3, 0};
static const char kUserNameVariable[] = "s/lightpathstatus/data/swe_username";

extern "C" {

// Value buffers as wide as the agent's long, which its instance helper
// reads and, during a SET, writes.
long identityLED_vbvalue;
uint32_t identityLED_vbsize;
long identityLED_mibvalue;
uint32_t identityLED_mibcursize;
long informationLED_vbvalue;
uint32_t informationLED_vbsize;
long informationLED_mibvalue;
uint32_t informationLED_mibcursize;

int32_t ledsHandlerState = 0;
quel_dm_varlist_t pledsVars = nullptr;
int32_t ledsVarListValidateStatus = 0;
quel_dm_lock_t pledsLockHandle = nullptr;
const char *as_ledsVarsToUpdate[] = {"s/lightpathstatus", nullptr};

int leds_validate_identityLED(agent_binding_scalar_t *, netsnmp_variable_list *)
{
    return 0;
}

int leds_validate_informationLED(agent_binding_scalar_t *, netsnmp_variable_list *)
{
    return 0;
}

#define LED_RECORD(led, storeVariable)                                                                                 \
    {                                                                                                                  \
        .oid = led##_oid, .oid_len = OID_LENGTH(led##_oid), .name = #led, .asn_type = ASN_INTEGER,                     \
        .vb_value = &led##_vbvalue, .vb_size = &led##_vbsize, .mib_value = &led##_mibvalue,                            \
        .mib_cursize = &led##_mibcursize, .mib_maxsize = 4, .store_var = storeVariable,                                \
        .store_type = QUEL_DM_TYPE_INT, .reserved = 0, .store_size = 4, .user_var = kUserNameVariable,                 \
        .requester = "", .get_fn = nullptr,                                                                            \
        .validate_fn = reinterpret_cast<agent_binding_validate_fn_t>(leds_validate_##led), .set_fn = nullptr,          \
        .reserved2 = 0,                                                                                                \
    }

agent_binding_scalar_t leds_decl[] = {
    LED_RECORD(identityLED, "s/lightpathstatus/other/identification"),
    LED_RECORD(informationLED, "s/lightpathstatus/other/info"),
    {},
};
agent_binding_scalar_t *leds = leds_decl;

} // extern "C"

static const orv3::SettableGroup ledsGroup = {
    .name = "leds",
    .handlerName = "leds_handler",
    .records = leds_decl,
    .state = &ledsHandlerState,
    .vars = &pledsVars,
    .validateStatus = &ledsVarListValidateStatus,
    .namespaces = as_ledsVarsToUpdate,
    .lock = &pledsLockHandle,
};

extern "C" {

int leds_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                 netsnmp_request_info *requests)
{
    return orv3::settableGroupHandler(ledsGroup, reqinfo, requests);
}

int init_leds(void)
{
    orv3::registerSettableGroup(__func__, ledsGroup, true, leds_handler);
    return 0;
}

} // extern "C"

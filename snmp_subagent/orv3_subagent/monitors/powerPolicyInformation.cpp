// powerPolicyInformation: powerRestorePolicy (.10.2.2.1.0) and
// powerRestoreDelay (.10.2.2.2.0), what the server does when AC power
// returns, read from the platform on every GET. A value the platform cannot
// give, or gives out of range, is the request's error while the value of the
// last good GET stays (0 until one succeeds). Not offered on the families
// without power objects.
#include "platform_variant.h"
#include "power_policy.h"
#include "trace.h"

#include "orv3/power.h"

namespace {

constexpr char kToken[] = "powerPolicyInformation";

const oid powerRestorePolicy_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 10, 2, 2, 1, 0};
const oid powerRestoreDelay_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 10, 2, 2, 2, 0};
orv3::ScalarCell powerRestorePolicy_value;
orv3::ScalarCell powerRestoreDelay_value;
size_t powerRestorePolicy_size = 4;
size_t powerRestoreDelay_size = 4;

// One restore setting: the platform call, its response length, the largest
// valid value and the text of a failure.
struct RestoreSetting {
    int32_t (*get)(uint8_t *work, uint32_t length, int32_t instance, uint8_t *response);
    uint32_t responseLength;
    uint8_t maxValue;
    const char *failure;
};

int update(const char *routine, int line, const RestoreSetting &restore, void *value, size_t *size)
{
    // A blade-family setting leaves the value as it stands, without an error.
    power_policy_setting_t setting;
    switch (orv3::readPolicySetting(routine, kToken, setting)) {
    case orv3::PolicySetting::Failed: return SNMP_ERR_GENERR;
    case orv3::PolicySetting::BladeFamily: return 0;
    case orv3::PolicySetting::Offered: break;
    }
    uint8_t work[4] = {};
    uint8_t response[POWER_RESTORE_POLICY_RESPONSE_SIZE] = {};
    int32_t status = restore.get(work, restore.responseLength, 0, response);
    if (status != 0 || response[0] != 0) {
        ORV3_TRACE_AT(routine, std::source_location::current(), kToken, "%s[%d]: Failed to get %s. Status:%d.\n",
                      routine, line, restore.failure, status);
        return SNMP_ERR_GENERR;
    }
    if (response[1] > restore.maxValue)
        return SNMP_ERR_BADVALUE;
    orv3::storeInt32(value, size, response[1]);
    return 0;
}

} // namespace

extern "C" {

int powerPolicyInformation_update_powerRestorePolicy(void *value, size_t *size)
{
    static const RestoreSetting policy = {GetPowerRestorePolicy, POWER_RESTORE_POLICY_RESPONSE_SIZE, 2,
                                          "Power Restore Policy"};
    return update(__func__, __LINE__, policy, value, size);
}

int powerPolicyInformation_update_powerRestoreDelay(void *value, size_t *size)
{
    static const RestoreSetting delay = {GetPowerRestoreDelay, POWER_RESTORE_DELAY_RESPONSE_SIZE, 1,
                                         "Power Restore Delay"};
    return update(__func__, __LINE__, delay, value, size);
}

scalar_decl_ex_t powerPolicyInformation_decl[] = {
    {powerRestorePolicy_oid, OID_LENGTH(powerRestorePolicy_oid), "powerRestorePolicy", ASN_INTEGER,
     &powerRestorePolicy_value, &powerRestorePolicy_size, 4, powerPolicyInformation_update_powerRestorePolicy, nullptr,
     nullptr},
    {powerRestoreDelay_oid, OID_LENGTH(powerRestoreDelay_oid), "powerRestoreDelay", ASN_INTEGER,
     &powerRestoreDelay_value, &powerRestoreDelay_size, 4, powerPolicyInformation_update_powerRestoreDelay, nullptr,
     nullptr},
    {},
};
scalar_decl_ex_t *powerPolicyInformation = powerPolicyInformation_decl;

int powerPolicyInformation_handler(netsnmp_mib_handler *, netsnmp_handler_registration *,
                                   netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests)
{
    return orv3::scalarGroupHandler(powerPolicyInformation, "powerPolicyInformation_handler", reqinfo, requests,
                                    orv3::UpdateStatus::SetOnRequest);
}

int init_powerPolicyInformation(void)
{
    ORV3_TRACE(kToken, "Registering powerPolicyInformation variables\n");
    if (orv3::familyWithoutPower(__func__, kToken))
        return 0;
    orv3::registerScalarGroup(__func__, kToken, powerPolicyInformation, orv3::InstanceKind::ReadOnlyLong, "ASN_INTEGER",
                              powerPolicyInformation_handler, orv3::RegistrationHeader::AlreadyTraced);
    return 0;
}

} // extern "C"

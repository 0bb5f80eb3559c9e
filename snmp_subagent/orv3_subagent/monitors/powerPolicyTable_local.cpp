// Loader of powerPolicyTable: the mode in force from the power library's
// policy setting, then for each mode of the catalogue (three on the "kelpo"
// platforms, else two) its power figures. A mode whose figures cannot be
// read keeps its row, with -1 for count, limit and usage.
#include "platform_variant.h"
#include "power_policy.h"
#include "text.h"
#include "trace.h"

#include "orv3/power.h"

#include <cstring>

namespace {

constexpr char kToken[] = "powerPolicyTable";

} // namespace

namespace orv3 {

bool readPolicySettingRecord(const char *routine, const char *token, power_policy_setting_t &setting,
                             std::source_location where)
{
    memset(&setting, 0, sizeof setting);
    if (int32_t rc = pwrmgt_get_power_policy_setting(&setting); rc != 0) {
        ORV3_TRACE_AT(routine, where, token, "%s: Failed to call pwrmgt_get_power_policy_setting(), rc:%d.\n", routine,
                      rc);
        return false;
    }
    return true;
}

PolicySetting readPolicySetting(const char *routine, const char *token, power_policy_setting_t &setting,
                                std::source_location where)
{
    if (!readPolicySettingRecord(routine, token, setting, where))
        return PolicySetting::Failed;
    if (setting.blade_family != 0) {
        ORV3_TRACE_AT(routine, where, token, "%s: SORVINEL server not be currently supported.\n", routine);
        return PolicySetting::BladeFamily;
    }
    return PolicySetting::Offered;
}

} // namespace orv3

extern "C" {

power_policy_data_t sPolicyData[3] = {
    {"Power Module Redundant", POWER_MODE_REDUNDANT},
    {"Power Module Non-Redundant", POWER_MODE_NON_REDUNDANT},
    {"Power Module N_1 Redundant", POWER_MODE_N_1_REDUNDANT},
};

int initialize_powerPolicyTable_local(void)
{
    ORV3_TRACE(kToken, "%s: Begin.\n", __func__);
    powerPolicyTable_clear();
    power_policy_setting_t setting;
    if (orv3::readPolicySetting(__func__, kToken, setting) != orv3::PolicySetting::Offered)
        return 0;
    const int modes = orv3::codenameStartsWith("kelpo") ? 3 : 2;
    const uint8_t inForce = setting.redundancy_mode;
    uint32_t power = 0, maxLimit = 0;
    uint8_t count = 0;
    for (int i = 0; i < modes; ++i) {
        powerPolicyTable_entry_t *row = powerPolicyTable_createEntry(&setting);
        if (!row)
            continue;
        row->head.index = i;
        orv3::copyText(row->powerPolicyName, sizeof row->powerPolicyName, sPolicyData[i].name,
                       sizeof sPolicyData[i].name);
        row->powerPolicyNameLen = static_cast<uint32_t>(strlen(sPolicyData[i].name));
        if (int32_t rc = pwrmgt_get_powerInfo_perRedunMode(sPolicyData[i].mode, &power, &maxLimit, &count); rc != 0) {
            ORV3_TRACE(kToken, "%s: Failed to call pwrmgt_get_powerInfo_perRedunMode(), rc:%d.\n", __func__, rc);
            row->powerPolicyPwrSupplyCount = -1;
            row->powerPolicyMaxPowerLimit = -1;
            row->powerPolicyEstimatedUsage = -1;
        } else {
            row->powerPolicyPwrSupplyCount = count;
            row->powerPolicyMaxPowerLimit = static_cast<int32_t>(maxLimit);
            if (maxLimit == 0) {
                ORV3_TRACE(kToken, "%s: The value of u32MaxLimit is 0.\n", __func__);
                row->powerPolicyEstimatedUsage = -1;
            } else {
                row->powerPolicyEstimatedUsage = static_cast<int32_t>(orv3::usagePercent(power, maxLimit));
            }
        }
        row->powerPolicyActivated = inForce == sPolicyData[i].mode ? 1 : 0;
        powerPolicyTable_insertEntry(row);
    }
    ORV3_TRACE(kToken, "%s: End.\n", __func__);
    return 0;
}

} // extern "C"

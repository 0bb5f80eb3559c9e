// Power policy and restore settings: powerPolicyTable, one row per
// power-supply redundancy mode the platform offers, and the restore scalars
// of powerPolicyInformation.
#pragma once

#include "row_table.h"
#include "scalar_group.h"

#include "orv3/power.h"

#include <source_location>

extern "C" {

// One redundancy mode of the catalogue: its name and the power library's code.
typedef struct power_policy_data {
    char name[256];
    uint32_t mode;
} power_policy_data_t;

extern power_policy_data_t sPolicyData[3];

typedef struct powerPolicyTable_entry {
    orv3_row_head_t head; // index: the mode's position in sPolicyData, from 0
    char powerPolicyName[256];
    uint32_t powerPolicyNameLen;
    int32_t powerPolicyPwrSupplyCount;
    int32_t powerPolicyMaxPowerLimit;
    int32_t powerPolicyEstimatedUsage;
    int32_t powerPolicyActivated;
} powerPolicyTable_entry_t;

extern scalar_decl_ex_t powerPolicyInformation_decl[];
extern scalar_decl_ex_t *powerPolicyInformation;

int init_powerPolicyInformation(void);
int powerPolicyInformation_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                                   netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int powerPolicyInformation_update_powerRestorePolicy(void *value, size_t *size);
int powerPolicyInformation_update_powerRestoreDelay(void *value, size_t *size);

} // extern "C"

ORV3_TABLE_DECLARATIONS(powerPolicyTable, powerPolicyTable_entry_t)
extern "C" int initialize_powerPolicyTable_local(void);

namespace orv3 {

// Zeroes `setting` and reads the power library's policy setting into it;
// false, traced by `routine` under `token`, when the read fails.
bool readPolicySettingRecord(const char *routine, const char *token, power_policy_setting_t &setting,
                             std::source_location where = std::source_location::current());

// Whether power policies are offered, from the power library's policy
// setting: a failed read and a blade-family setting are traced by `routine`
// under `token`. `setting` holds the record read.
enum class PolicySetting { Failed, BladeFamily, Offered };
PolicySetting readPolicySetting(const char *routine, const char *token, power_policy_setting_t &setting,
                                std::source_location where = std::source_location::current());

// The share of `maxLimit` that `power` is, in percent rounded half up,
// computed in unsigned 32-bit words as the controller does: the
// multiplication by 1000 wraps for a power above 4294967.
inline uint32_t usagePercent(uint32_t power, uint32_t maxLimit)
{
    return ((power * 1000u) / maxLimit + 5u) / 10u;
}

} // namespace orv3

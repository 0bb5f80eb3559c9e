// fuelGaugeInformation: the power budget, thirteen INTEGER scalars
// (.10.1.n.0) read from the power library on every GET. Objects 1 to 6 come
// from the policy setting (the capping policy and the static caps of the
// active cap domain), 7 to 9 from the figures of the redundancy mode in
// force, 10 to 13 from the real-time readings.
//
// Which objects a controller serves depends on its platform: the blade and
// dense chassis families have no capping and no power budget, and PLATFLAGS
// bit 0x8000 marks a platform without capping and without a memory reading.
//
// Objects 1, 4 and 6 are writable instances without validate or commit
// routines: a SET the agent accepts changes the module's copy only, and the
// next GET serves the platform's value again. Capping is not changed here.
#include "fuel_gauge.h"
#include "platform_variant.h"
#include "power_policy.h"
#include "trace.h"

#include "orv3/power.h"

#include <cstring>

namespace {

constexpr char kToken[] = "fuelGaugeInformation";
// The budget objects trace under the policy group's token, as the policy
// scalars beside them do.
constexpr char kPerModeToken[] = "powerPolicyInformation";
constexpr unsigned long kNoCappingFlag = 0x8000;

#define ORV3_FUEL_GAUGE_OID(arc)                                                                                       \
    {                                                                                                                  \
        1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 10, 1, arc, 0                                                               \
    }
constexpr size_t kObjects = 13;
const oid kOids[kObjects][14] = {
    ORV3_FUEL_GAUGE_OID(1),  ORV3_FUEL_GAUGE_OID(2),  ORV3_FUEL_GAUGE_OID(3),  ORV3_FUEL_GAUGE_OID(4),
    ORV3_FUEL_GAUGE_OID(5),  ORV3_FUEL_GAUGE_OID(6),  ORV3_FUEL_GAUGE_OID(7),  ORV3_FUEL_GAUGE_OID(8),
    ORV3_FUEL_GAUGE_OID(9),  ORV3_FUEL_GAUGE_OID(10), ORV3_FUEL_GAUGE_OID(11), ORV3_FUEL_GAUGE_OID(12),
    ORV3_FUEL_GAUGE_OID(13),
};
#undef ORV3_FUEL_GAUGE_OID

orv3::ScalarCell cells[kObjects];
size_t sizes[kObjects] = {4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4};

// ---- the policy setting: capping policy and static caps ------------------------------

// The three caps of one cap domain, read by value out of the packed record.
struct DomainCaps {
    uint16_t softMin;
    uint16_t min;
    uint16_t max;
};

DomainCaps capsOfDomain(const power_policy_setting_t &setting, uint8_t domain)
{
    if (domain == 0)
        return {setting.soft_min_cap_domain0, setting.min_cap_domain0, setting.max_cap_domain0};
    return {setting.soft_min_cap_domain1, setting.min_cap_domain1, setting.max_cap_domain1};
}

// A cap of the active domain. An unknown domain keeps the value without an error.
int serveDomainCap(const char *routine, void *value, size_t *size, uint16_t DomainCaps::*cap,
                   std::source_location where = std::source_location::current())
{
    power_policy_setting_t setting;
    if (!orv3::readPolicySettingRecord(routine, kToken, setting, where))
        return SNMP_ERR_GENERR;
    const uint8_t domain = setting.cap_domain;
    if (domain > 1)
        return 0;
    orv3::storeInt32(value, size, capsOfDomain(setting, domain).*cap);
    return 0;
}

// A setting byte that holds 0 or 1, served as it is or inverted; any other
// byte is a bad value and keeps the value.
enum class Served { AsItIs, Inverted };
int serveBinaryByte(const char *routine, void *value, size_t *size, uint8_t power_policy_setting_t::*field,
                    Served served, std::source_location where = std::source_location::current())
{
    power_policy_setting_t setting;
    if (!orv3::readPolicySettingRecord(routine, kToken, setting, where))
        return SNMP_ERR_GENERR;
    const uint8_t byte = setting.*field;
    if (byte > 1)
        return SNMP_ERR_BADVALUE;
    orv3::storeInt32(value, size, served == Served::AsItIs ? byte : 1 - byte);
    return 0;
}

// ---- the budget of the redundancy mode in force --------------------------------------

struct ModeBudget {
    uint32_t systemPower;
    uint32_t maxLimit;
};

int serveModeBudget(const char *routine, void *value, size_t *size, int32_t (*figure)(const ModeBudget &),
                    std::source_location where = std::source_location::current())
{
    power_policy_setting_t setting;
    switch (orv3::readPolicySetting(routine, kPerModeToken, setting, where)) {
    case orv3::PolicySetting::Failed: return SNMP_ERR_GENERR;
    case orv3::PolicySetting::BladeFamily: return 0;
    case orv3::PolicySetting::Offered: break;
    }
    const uint8_t mode = setting.redundancy_mode;
    if (mode != POWER_MODE_REDUNDANT && mode != POWER_MODE_NON_REDUNDANT && mode != POWER_MODE_N_1_REDUNDANT) {
        ORV3_TRACE_AT(routine, where, kPerModeToken, "%s: Unsupported redundancy mode:%d.\n", routine, mode);
        return 0;
    }
    // Preset so that a library that reports success without writing shows.
    ModeBudget budget = {0xFFFFFFFFu, 0xFFFFFFFFu};
    uint8_t count = 0xFF;
    if (int32_t rc = pwrmgt_get_powerInfo_perRedunMode(mode, &budget.systemPower, &budget.maxLimit, &count); rc != 0) {
        ORV3_TRACE_AT(routine, where, kPerModeToken, "%s: Failed to call pwrmgt_get_powerInfo_perRedunMode(), rc:%d.\n",
                      routine, rc);
        return SNMP_ERR_GENERR;
    }
    orv3::storeInt32(value, size, figure(budget));
    return 0;
}

// ---- the real-time readings ----------------------------------------------------------

struct Readings {
    uint16_t total;
    uint16_t cpu;
    uint16_t memory;
};

// Only a result of 1 is a failure: the library reports other conditions
// with other results and still fills what it can.
int serveReading(const char *routine, void *value, size_t *size, int32_t (*figure)(const Readings &),
                 std::source_location where = std::source_location::current())
{
    power_realtime_t powers;
    memset(&powers, 0, sizeof powers);
    if (int32_t rc = pwrmgt_get_realtime_powers(&powers); rc == 1) {
        ORV3_TRACE_AT(routine, where, kToken, "%s: Failed to call pwrmgt_get_realtime_powers(), rc:%d.\n", routine, rc);
        return SNMP_ERR_GENERR;
    }
    orv3::storeInt32(value, size, figure({powers.total, powers.cpu, powers.memory}));
    return 0;
}

// Platforms without a memory reading count memory in the rest.
int32_t otherConsumption(const Readings &readings)
{
    int32_t other = int32_t{readings.total} - int32_t{readings.cpu};
    if (!orv3::platformFlagSet(kNoCappingFlag))
        other -= readings.memory;
    return other;
}

// ---- which objects a platform serves -------------------------------------------------

enum class Presence {
    CappingPlatform, // not a family without power, and no PLATFLAGS bit 0x8000
    PowerFamily,     // not a family without power
    Always,
    MemoryReading, // no PLATFLAGS bit 0x8000
};

struct Registration {
    Presence presence;
    orv3::InstanceKind kind;
};

using orv3::InstanceKind;
constexpr Registration kRegistrations[kObjects] = {
    {Presence::CappingPlatform, InstanceKind::WritableLong}, // 1 capping policy
    {Presence::CappingPlatform, InstanceKind::ReadOnlyLong}, // 2 soft minimum
    {Presence::CappingPlatform, InstanceKind::ReadOnlyLong}, // 3 minimum
    {Presence::CappingPlatform, InstanceKind::WritableLong}, // 4 current cap
    {Presence::CappingPlatform, InstanceKind::ReadOnlyLong}, // 5 maximum
    {Presence::CappingPlatform, InstanceKind::WritableLong}, // 6 cap mode
    {Presence::CappingPlatform, InstanceKind::ReadOnlyLong}, // 7 system power
    {Presence::CappingPlatform, InstanceKind::ReadOnlyLong}, // 8 remaining
    {Presence::PowerFamily, InstanceKind::ReadOnlyLong},     // 9 total available
    {Presence::Always, InstanceKind::ReadOnlyLong},          // 10 in use
    {Presence::Always, InstanceKind::ReadOnlyLong},          // 11 processors
    {Presence::MemoryReading, InstanceKind::ReadOnlyLong},   // 12 memory
    {Presence::Always, InstanceKind::ReadOnlyLong},          // 13 the rest
};

bool isPresent(Presence presence)
{
    switch (presence) {
    case Presence::CappingPlatform: return !orv3::isFamilyWithoutPower() && !orv3::platformFlagSet(kNoCappingFlag);
    case Presence::PowerFamily: return !orv3::isFamilyWithoutPower();
    case Presence::Always: return true;
    case Presence::MemoryReading: return !orv3::platformFlagSet(kNoCappingFlag);
    }
    return false;
}

} // namespace

extern "C" {

int fuelGaugeInformation_update_fuelGaugePowerCappingPolicySetting(void *value, size_t *size)
{
    return serveBinaryByte(__func__, value, size, &power_policy_setting_t::capping_policy, Served::AsItIs);
}

int fuelGaugeInformation_update_fuelGaugeStaticPowerPcapSoftMin(void *value, size_t *size)
{
    return serveDomainCap(__func__, value, size, &DomainCaps::softMin);
}

int fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMin(void *value, size_t *size)
{
    return serveDomainCap(__func__, value, size, &DomainCaps::min);
}

int fuelGaugeInformation_update_fuelGaugeStaticPowerPcapCurrentSetting(void *value, size_t *size)
{
    power_policy_setting_t setting;
    if (!orv3::readPolicySettingRecord(__func__, kToken, setting))
        return SNMP_ERR_GENERR;
    orv3::storeInt32(value, size, setting.current_cap);
    return 0;
}

int fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMax(void *value, size_t *size)
{
    return serveDomainCap(__func__, value, size, &DomainCaps::max);
}

// The MIB counts the modes the other way round from the cap domain.
int fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMode(void *value, size_t *size)
{
    return serveBinaryByte(__func__, value, size, &power_policy_setting_t::cap_domain, Served::Inverted);
}

int fuelGaugeInformation_update_fuelGaugeSystemMaxPower(void *value, size_t *size)
{
    return serveModeBudget(__func__, value, size,
                           [](const ModeBudget &budget) { return static_cast<int32_t>(budget.systemPower); });
}

// Negative when the system can draw more than the mode allows.
int fuelGaugeInformation_update_fuelGaugePowerRemaining(void *value, size_t *size)
{
    return serveModeBudget(__func__, value, size, [](const ModeBudget &budget) {
        return static_cast<int32_t>(budget.maxLimit - budget.systemPower);
    });
}

int fuelGaugeInformation_update_fuelGaugeTotalPowerAvaialble(void *value, size_t *size)
{
    return serveModeBudget(__func__, value, size,
                           [](const ModeBudget &budget) { return static_cast<int32_t>(budget.maxLimit); });
}

int fuelGaugeInformation_update_fuelGaugeTotalPowerInUse(void *value, size_t *size)
{
    return serveReading(__func__, value, size, [](const Readings &readings) { return int32_t{readings.total}; });
}

int fuelGaugeInformation_update_fuelGaugePowerConsumptionCpu(void *value, size_t *size)
{
    return serveReading(__func__, value, size, [](const Readings &readings) { return int32_t{readings.cpu}; });
}

int fuelGaugeInformation_update_fuelGaugePowerConsumptionMemory(void *value, size_t *size)
{
    return serveReading(__func__, value, size, [](const Readings &readings) { return int32_t{readings.memory}; });
}

int fuelGaugeInformation_update_fuelGaugePowerConsumptionOther(void *value, size_t *size)
{
    return serveReading(__func__, value, size, otherConsumption);
}

#define ORV3_FUEL_GAUGE_DECL(arc, name)                                                                                \
    {                                                                                                                  \
        kOids[(arc)-1], OID_LENGTH(kOids[(arc)-1]), #name, ASN_INTEGER, &cells[(arc)-1], &sizes[(arc)-1], 4,           \
            fuelGaugeInformation_update_##name, nullptr, nullptr                                                       \
    }
scalar_decl_ex_t fuelGaugeInformation_decl[] = {
    ORV3_FUEL_GAUGE_DECL(1, fuelGaugePowerCappingPolicySetting),
    ORV3_FUEL_GAUGE_DECL(2, fuelGaugeStaticPowerPcapSoftMin),
    ORV3_FUEL_GAUGE_DECL(3, fuelGaugeStaticPowerPcapMin),
    ORV3_FUEL_GAUGE_DECL(4, fuelGaugeStaticPowerPcapCurrentSetting),
    ORV3_FUEL_GAUGE_DECL(5, fuelGaugeStaticPowerPcapMax),
    ORV3_FUEL_GAUGE_DECL(6, fuelGaugeStaticPowerPcapMode),
    ORV3_FUEL_GAUGE_DECL(7, fuelGaugeSystemMaxPower),
    ORV3_FUEL_GAUGE_DECL(8, fuelGaugePowerRemaining),
    ORV3_FUEL_GAUGE_DECL(9, fuelGaugeTotalPowerAvaialble),
    ORV3_FUEL_GAUGE_DECL(10, fuelGaugeTotalPowerInUse),
    ORV3_FUEL_GAUGE_DECL(11, fuelGaugePowerConsumptionCpu),
    ORV3_FUEL_GAUGE_DECL(12, fuelGaugePowerConsumptionMemory),
    ORV3_FUEL_GAUGE_DECL(13, fuelGaugePowerConsumptionOther),
    {},
};
#undef ORV3_FUEL_GAUGE_DECL
scalar_decl_ex_t *fuelGaugeInformation = fuelGaugeInformation_decl;

int fuelGaugeInformation_handler(netsnmp_mib_handler *, netsnmp_handler_registration *,
                                 netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests)
{
    return orv3::scalarGroupHandler(fuelGaugeInformation, "fuelGaugeInformation_handler", reqinfo, requests,
                                    orv3::UpdateStatus::SetOnRequest);
}

int init_fuelGaugeInformation(void)
{
    ORV3_TRACE(kToken, "Registering fuelGaugeInformation variables\n");
    for (size_t i = 0; i < kObjects; ++i)
        if (isPresent(kRegistrations[i].presence))
            orv3::registerScalar(__func__, kToken, fuelGaugeInformation_decl[i], kRegistrations[i].kind, "ASN_INTEGER",
                                 fuelGaugeInformation_handler);
    return 0;
}

} // extern "C"

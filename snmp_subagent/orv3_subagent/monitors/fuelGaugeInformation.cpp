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
#include <iterator>

namespace {

constexpr char kToken[] = "fuelGaugeInformation";
// The budget objects trace under the policy group's token, as the policy
// scalars beside them do.
constexpr char kPerModeToken[] = "powerPolicyInformation";
constexpr unsigned long kNoCappingFlag = 0x8000;

// ---- the objects, one row each ------------------------------------------------------

using orv3::InstanceKind;

// Two independent platform tests, because the memory reading goes with the
// PLATFLAGS bit but not with the family.
struct Needs {
    bool powerFamily;       // not one of the families without power objects
    bool cappingAndReading; // no PLATFLAGS bit 0x8000
};
constexpr Needs kCappingPlatform = {.powerFamily = true, .cappingAndReading = true};
constexpr Needs kPowerFamily = {.powerFamily = true, .cappingAndReading = false};
constexpr Needs kMemoryReading = {.powerFamily = false, .cappingAndReading = true};
constexpr Needs kEveryPlatform = {.powerFamily = false, .cappingAndReading = false};

bool offers(Needs needs)
{
    return (!needs.powerFamily || !orv3::isFamilyWithoutPower()) &&
           (!needs.cappingAndReading || !orv3::platformFlagSet(kNoCappingFlag));
}

// A settable object has no validate or commit routine: the agent's instance
// helper takes a SET into the cell and nothing further happens.
struct Kind {
    InstanceKind instance;
    int32_t asnType;
    const char *typeLabel; // what the registration trace calls the type
    int32_t maxSize;
};
constexpr Kind kReadOnlyInteger = {InstanceKind::ReadOnlyLong, ASN_INTEGER, "ASN_INTEGER", 4};
constexpr Kind kSettableInteger = {InstanceKind::WritableLong, ASN_INTEGER, "ASN_INTEGER", 4};

constexpr oid kGroupOid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 10, 1};
constexpr size_t kOidLength = OID_LENGTH(kGroupOid) + 2; // the object's arc, then the instance arc 0

// The rows are constants so that the exported declarations can be built
// from them at compile time; only the value cell and its size change, so
// they alone are mutable. The full OID lives in the row because the
// exported record and the agent's registration point at it.
struct Row {
    constexpr Row(oid arc, const char *name, scalar_fn_t update, Needs needs, Kind kind)
        : name(name), update(update), needs(needs), kind(kind)
    {
        for (size_t i = 0; i < OID_LENGTH(kGroupOid); ++i)
            fullOid[i] = kGroupOid[i];
        fullOid[kOidLength - 2] = arc;
        fullOid[kOidLength - 1] = 0;
    }
    constexpr oid arc() const { return fullOid[kOidLength - 2]; }

    oid fullOid[kOidLength] = {};
    const char *name;
    scalar_fn_t update;
    Needs needs;
    Kind kind;
    mutable orv3::ScalarCell cell = 0;
    mutable size_t size = 4;
};

// Spells the name once, so that the traced name and the update routine
// cannot part.
#define ORV3_FUEL_GAUGE_OBJECT(name) #name, fuelGaugeInformation_update_##name

constexpr Row rows[] = {
    {1, ORV3_FUEL_GAUGE_OBJECT(fuelGaugePowerCappingPolicySetting), kCappingPlatform, kSettableInteger},
    {2, ORV3_FUEL_GAUGE_OBJECT(fuelGaugeStaticPowerPcapSoftMin), kCappingPlatform, kReadOnlyInteger},
    {3, ORV3_FUEL_GAUGE_OBJECT(fuelGaugeStaticPowerPcapMin), kCappingPlatform, kReadOnlyInteger},
    {4, ORV3_FUEL_GAUGE_OBJECT(fuelGaugeStaticPowerPcapCurrentSetting), kCappingPlatform, kSettableInteger},
    {5, ORV3_FUEL_GAUGE_OBJECT(fuelGaugeStaticPowerPcapMax), kCappingPlatform, kReadOnlyInteger},
    {6, ORV3_FUEL_GAUGE_OBJECT(fuelGaugeStaticPowerPcapMode), kCappingPlatform, kSettableInteger},
    {7, ORV3_FUEL_GAUGE_OBJECT(fuelGaugeSystemMaxPower), kCappingPlatform, kReadOnlyInteger},
    {8, ORV3_FUEL_GAUGE_OBJECT(fuelGaugePowerRemaining), kCappingPlatform, kReadOnlyInteger},
    {9, ORV3_FUEL_GAUGE_OBJECT(fuelGaugeTotalPowerAvaialble), kPowerFamily, kReadOnlyInteger},
    {10, ORV3_FUEL_GAUGE_OBJECT(fuelGaugeTotalPowerInUse), kEveryPlatform, kReadOnlyInteger},
    {11, ORV3_FUEL_GAUGE_OBJECT(fuelGaugePowerConsumptionCpu), kEveryPlatform, kReadOnlyInteger},
    {12, ORV3_FUEL_GAUGE_OBJECT(fuelGaugePowerConsumptionMemory), kMemoryReading, kReadOnlyInteger},
    {13, ORV3_FUEL_GAUGE_OBJECT(fuelGaugePowerConsumptionOther), kEveryPlatform, kReadOnlyInteger},
};
#undef ORV3_FUEL_GAUGE_OBJECT
constexpr size_t kObjects = std::size(rows);

// The registration trace lists the objects in row order, and has always
// listed them by arc.
constexpr bool inArcOrder()
{
    for (size_t i = 0; i < kObjects; ++i)
        if (rows[i].arc() != i + 1)
            return false;
    return true;
}
static_assert(inArcOrder(), "rows run from arc 1 without a gap");

constexpr scalar_decl_ex_t recordOf(size_t object)
{
    const Row &row = rows[object];
    return {row.fullOid, kOidLength,       row.name,   row.kind.asnType, &row.cell,
            &row.size,   row.kind.maxSize, row.update, nullptr,          nullptr};
}

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

// A C array takes only a written list, and the exported declarations stay
// constant data: one record per row, by index, then the end.
scalar_decl_ex_t fuelGaugeInformation_decl[] = {
    recordOf(0), recordOf(1), recordOf(2), recordOf(3),  recordOf(4),  recordOf(5),  recordOf(6),
    recordOf(7), recordOf(8), recordOf(9), recordOf(10), recordOf(11), recordOf(12), {},
};
static_assert(std::size(fuelGaugeInformation_decl) == kObjects + 1, "a record for every row");
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
        if (offers(rows[i].needs))
            orv3::registerScalar(__func__, kToken, fuelGaugeInformation_decl[i], rows[i].kind.instance,
                                 rows[i].kind.typeLabel, fuelGaugeInformation_handler);
    return 0;
}

} // extern "C"

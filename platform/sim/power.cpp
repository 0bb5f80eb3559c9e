// The simulated power-management library and restore settings: the policy
// setting record, the figures of each redundancy mode, the real-time
// readings, the power history and the two restore replies, from the machine
// description's "power" section.
#include "orv3/power.h"
#include "platform.h"

#include <cstddef>
#include <cstring>
#include <string>

using orv3::sim::Platform;

namespace {

constexpr int32_t kFailed = 1;

// 16-bit fields of the setting record are little-endian and unaligned: they
// are stored byte by byte, never through a uint16_t pointer.
void putLittleEndian16(uint8_t *record, size_t offset, uint16_t value)
{
    const uint8_t bytes[2] = {static_cast<uint8_t>(value & 0xff), static_cast<uint8_t>(value >> 8)};
    memcpy(record + offset, bytes, sizeof bytes);
}

void putLittleEndian32(uint8_t *record, size_t offset, uint32_t value)
{
    putLittleEndian16(record, offset, static_cast<uint16_t>(value & 0xffff));
    putLittleEndian16(record, offset + 2, static_cast<uint16_t>(value >> 16));
}

// Where each reading of a sample (a to f) lies in a history record.
constexpr size_t kReadingOffsets[6] = {
    offsetof(power_history_sample_t, reading_a), offsetof(power_history_sample_t, reading_b),
    offsetof(power_history_sample_t, reading_c), offsetof(power_history_sample_t, reading_d),
    offsetof(power_history_sample_t, reading_e), offsetof(power_history_sample_t, reading_f),
};

// Writes the reply into the caller's `length` bytes and no further: the
// completion code in byte 0, the value in byte 1, zeros after them.
int32_t answerRestore(const char *call, uint32_t length, uint8_t *response,
                      orv3::sim::RestoreReply orv3::sim::PowerManagement::*setting)
{
    if (auto fault = Platform::instance().enter(call, ""))
        return fault->result;
    if (!response)
        return kFailed;
    const orv3::sim::RestoreReply reply = Platform::instance().machine()->power.*setting;
    memset(response, 0, length);
    if (length > 0)
        response[0] = reply.completionCode;
    if (length > 1)
        response[1] = reply.value;
    orv3::sim::fillWritten(response, length);
    return 0;
}

} // namespace

extern "C" {

// Fills the whole 22-byte record (reserved bytes zero). A fault returns its
// result and leaves the record as it was.
int32_t pwrmgt_get_power_policy_setting(power_policy_setting_t *setting)
{
    if (auto fault = Platform::instance().enter(__func__, ""))
        return fault->result;
    if (!setting)
        return kFailed;
    const orv3::sim::PowerManagement &power = Platform::instance().machine()->power;
    uint8_t record[POWER_POLICY_SETTING_SIZE] = {};
    record[offsetof(power_policy_setting_t, blade_family)] = power.bladeFamily;
    record[offsetof(power_policy_setting_t, redundancy_mode)] = power.redundancyMode;
    record[offsetof(power_policy_setting_t, capping_policy)] = power.cappingPolicy;
    record[offsetof(power_policy_setting_t, cap_domain)] = power.capDomain;
    putLittleEndian16(record, offsetof(power_policy_setting_t, current_cap), power.currentCap);
    putLittleEndian16(record, offsetof(power_policy_setting_t, soft_min_cap_domain0), power.softMinCap[0]);
    putLittleEndian16(record, offsetof(power_policy_setting_t, min_cap_domain0), power.minCap[0]);
    putLittleEndian16(record, offsetof(power_policy_setting_t, max_cap_domain0), power.maxCap[0]);
    putLittleEndian16(record, offsetof(power_policy_setting_t, soft_min_cap_domain1), power.softMinCap[1]);
    putLittleEndian16(record, offsetof(power_policy_setting_t, min_cap_domain1), power.minCap[1]);
    putLittleEndian16(record, offsetof(power_policy_setting_t, max_cap_domain1), power.maxCap[1]);
    memcpy(setting, record, sizeof record);
    orv3::sim::fillWritten(setting, sizeof record);
    return 0;
}

// A mode the machine does not describe fails (1) and writes nothing, as does
// a fault (keyed by the mode in decimal), which returns its result.
int32_t pwrmgt_get_powerInfo_perRedunMode(uint32_t mode, uint32_t *system_power, uint32_t *max_limit, uint8_t *count)
{
    if (auto fault = Platform::instance().enter(__func__, std::to_string(mode)))
        return fault->result;
    if (!system_power || !max_limit || !count)
        return kFailed;
    auto machine = Platform::instance().machine();
    auto described = machine->power.modes.find(mode);
    if (described == machine->power.modes.end())
        return kFailed;
    *system_power = described->second.systemPower;
    *max_limit = described->second.maxLimit;
    *count = described->second.count;
    orv3::sim::fillWritten(system_power);
    orv3::sim::fillWritten(max_limit);
    orv3::sim::fillWritten(count);
    return 0;
}

// Fills the readings and returns the machine's result for them: 1 is the
// library's failure, other results come with usable readings. A fault
// returns its result and writes nothing.
int32_t pwrmgt_get_realtime_powers(power_realtime_t *powers)
{
    if (auto fault = Platform::instance().enter(__func__, ""))
        return fault->result;
    if (!powers)
        return kFailed;
    const orv3::sim::RealtimePowers &realtime = Platform::instance().machine()->power.realtime;
    uint8_t record[POWER_REALTIME_SIZE] = {};
    putLittleEndian16(record, offsetof(power_realtime_t, total), realtime.total);
    putLittleEndian16(record, offsetof(power_realtime_t, cpu), realtime.cpu);
    putLittleEndian16(record, offsetof(power_realtime_t, memory), realtime.memory);
    memcpy(powers, record, sizeof record);
    orv3::sim::fillWritten(powers, sizeof record);
    return realtime.result;
}

// Only the system domain's last 24 hours are kept. The caller's `count`
// records are all written: the described samples first (as many as fit),
// zeros after them, so that a time of 0 ends the history.
int32_t pwrmgt_get_history_power(uint32_t domain, uint32_t period, power_history_sample_t *samples, uint32_t count)
{
    if (auto fault = Platform::instance().enter(__func__, ""))
        return fault->result;
    if (!samples || domain != SYS_PWR_DOMAIN || period != LAST_HOUR_24)
        return kFailed;
    auto machine = Platform::instance().machine();
    const auto &history = machine->power.history;
    for (uint32_t i = 0; i < count; ++i) {
        uint8_t record[POWER_HISTORY_SAMPLE_SIZE] = {};
        if (i < history.size()) {
            putLittleEndian16(record, offsetof(power_history_sample_t, sample_number), history[i].sample);
            putLittleEndian32(record, offsetof(power_history_sample_t, timestamp), history[i].time);
            for (size_t reading = 0; reading < 6; ++reading)
                putLittleEndian16(record, kReadingOffsets[reading], history[i].readings[reading]);
        }
        memcpy(&samples[i], record, sizeof record);
    }
    orv3::sim::fillWritten(samples, static_cast<size_t>(count) * POWER_HISTORY_SAMPLE_SIZE);
    return 0;
}

// The work buffer and the instance are not looked at: the controller has one
// restore setting of each kind.
int32_t GetPowerRestorePolicy(uint8_t *work, uint32_t length, int32_t instance, uint8_t *response)
{
    (void)work;
    (void)instance;
    return answerRestore(__func__, length, response, &orv3::sim::PowerManagement::restorePolicy);
}

int32_t GetPowerRestoreDelay(uint8_t *work, uint32_t length, int32_t instance, uint8_t *response)
{
    (void)work;
    (void)instance;
    return answerRestore(__func__, length, response, &orv3::sim::PowerManagement::restoreDelay);
}

} // extern "C"

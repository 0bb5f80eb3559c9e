// The simulated power-management library and restore settings: the 22-byte
// policy setting record, the figures of each redundancy mode and the restore
// replies, from the machine description's "power" section.
#include "machine.h"
#include "unit_machine.h"

#include "orv3/power.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using orv3::test::machineFileError;
using orv3::test::ServedMachine;

std::string machineWithPower(const nlohmann::json &power, const nlohmann::json &faults = nlohmann::json::array())
{
    nlohmann::json machine = nlohmann::json::parse(orv3::test::sampleMachineText());
    if (power.is_null())
        machine.erase("power");
    else
        machine["power"] = power;
    machine["faults"] = faults;
    return machine.dump(2);
}

nlohmann::json fault(const std::string &call, const std::string &key, int result)
{
    return {{"call", call}, {"key", key}, {"result", result}};
}

using Record = std::array<uint8_t, POWER_POLICY_SETTING_SIZE>;

// Calls the setting query on a record filled with `fill`, as bytes.
int32_t readSetting(Record &bytes, uint8_t fill = 0)
{
    bytes.fill(fill);
    power_policy_setting_t setting;
    memcpy(&setting, bytes.data(), sizeof setting);
    int32_t result = pwrmgt_get_power_policy_setting(&setting);
    memcpy(bytes.data(), &setting, sizeof setting);
    return result;
}

struct ModeAnswer {
    int32_t result = -1;
    uint32_t systemPower = 0xdeadbeef;
    uint32_t maxLimit = 0xdeadbeef;
    uint8_t count = 0xee;
};

ModeAnswer askMode(uint32_t mode)
{
    ModeAnswer answer;
    answer.result = pwrmgt_get_powerInfo_perRedunMode(mode, &answer.systemPower, &answer.maxLimit, &answer.count);
    return answer;
}

// A response buffer of `length` bytes followed by canary bytes that no call
// may touch.
struct Response {
    static constexpr uint8_t kUnwritten = 0xa5;
    static constexpr uint8_t kCanary = 0x5a;
    uint32_t length;
    std::vector<uint8_t> bytes;

    explicit Response(uint32_t length) : length(length), bytes(length + 4, kCanary)
    {
        std::fill(bytes.begin(), bytes.begin() + length, kUnwritten);
    }
    bool canaryIntact() const
    {
        for (size_t i = length; i < bytes.size(); ++i)
            if (bytes[i] != kCanary)
                return false;
        return true;
    }
};

int32_t restorePolicy(Response &response)
{
    uint8_t work[4] = {};
    return GetPowerRestorePolicy(work, response.length, 0, response.bytes.data());
}

int32_t restoreDelay(Response &response)
{
    uint8_t work[4] = {};
    return GetPowerRestoreDelay(work, response.length, 0, response.bytes.data());
}

TEST(SimPower, SettingRecordHoldsEveryFieldAtItsOffsetLittleEndian)
{
    ServedMachine served(machineWithPower({
        {"bladeFamily", 1},
        {"redundancyMode", 4},
        {"capping",
         {{"policy", 1},
          {"domain", 1},
          {"currentCap", 0x1234},
          {"softMinCap", {0x0102, 0x0708}},
          {"minCap", {0x0304, 0x090a}},
          {"maxCap", {0x0506, 0xfffe}}}},
    }));
    Record bytes;
    ASSERT_EQ(readSetting(bytes, 0xcc), 0);
    const Record expected = {1,    4,    0,    1,    1,    0,    0x34, 0x12, 0x02, 0x01, 0x04,
                             0x03, 0x06, 0x05, 0x08, 0x07, 0x0a, 0x09, 0xfe, 0xff, 0,    0};
    EXPECT_EQ(bytes, expected) << "reserved bytes are zeroed, 16-bit caps low byte first";
}

TEST(SimPower, SampleMachineRunsRedundantWithCappingOn)
{
    Record bytes;
    ASSERT_EQ(readSetting(bytes), 0);
    EXPECT_EQ(bytes[0], 0) << "not a blade";
    EXPECT_EQ(bytes[1], POWER_MODE_REDUNDANT);
    EXPECT_EQ(bytes[3], 1) << "capping on";
    uint16_t maxCap0 = static_cast<uint16_t>(bytes[12] | bytes[13] << 8);
    uint16_t minCap0 = static_cast<uint16_t>(bytes[10] | bytes[11] << 8);
    EXPECT_GT(maxCap0, minCap0);
}

TEST(SimPower, SampleMachineDescribesTheThreeModes)
{
    ModeAnswer redundant = askMode(POWER_MODE_REDUNDANT);
    ASSERT_EQ(redundant.result, 0);
    EXPECT_EQ(redundant.systemPower, 450u);
    EXPECT_EQ(redundant.maxLimit, 1100u);
    EXPECT_EQ(redundant.count, 2);
    EXPECT_EQ(askMode(POWER_MODE_NON_REDUNDANT).result, 0);
    EXPECT_EQ(askMode(POWER_MODE_N_1_REDUNDANT).result, 0);
}

TEST(SimPower, DescribedModeAnswersItsFigures)
{
    ServedMachine served(machineWithPower({{"modes",
                                            {{"2", {{"systemPower", 2200}, {"maxLimit", 4294967295u}, {"count", 255}}},
                                             {"4", {{"systemPower", 1650}}}}}}));
    ModeAnswer two = askMode(2);
    ASSERT_EQ(two.result, 0);
    EXPECT_EQ(two.systemPower, 2200u);
    EXPECT_EQ(two.maxLimit, 4294967295u);
    EXPECT_EQ(two.count, 255);
    ModeAnswer four = askMode(4);
    ASSERT_EQ(four.result, 0);
    EXPECT_EQ(four.systemPower, 1650u);
    EXPECT_EQ(four.maxLimit, 0u) << "an omitted figure is 0";
    EXPECT_EQ(four.count, 0);
}

TEST(SimPower, UndescribedModeFailsAndWritesNothing)
{
    ServedMachine served(machineWithPower({{"modes", {{"1", {{"systemPower", 450}, {"maxLimit", 1100}}}}}}));
    ModeAnswer answer = askMode(4);
    EXPECT_NE(answer.result, 0);
    EXPECT_EQ(answer.systemPower, 0xdeadbeef);
    EXPECT_EQ(answer.maxLimit, 0xdeadbeef);
    EXPECT_EQ(answer.count, 0xee);
}

TEST(SimPower, RestoreRepliesGiveCompletionCodeThenValue)
{
    ServedMachine served(machineWithPower({{"restorePolicy", {{"value", 3}, {"completionCode", 0}}},
                                           {"restoreDelay", {{"value", 1}, {"completionCode", 0xc1}}}}));
    Response policy(POWER_RESTORE_POLICY_RESPONSE_SIZE);
    ASSERT_EQ(restorePolicy(policy), 0);
    EXPECT_EQ(policy.bytes[0], 0);
    EXPECT_EQ(policy.bytes[1], 3) << "an out-of-range value is served as described";
    EXPECT_EQ(policy.bytes[2], 0);
    EXPECT_EQ(policy.bytes[3], 0);
    EXPECT_TRUE(policy.canaryIntact());

    Response delay(POWER_RESTORE_DELAY_RESPONSE_SIZE);
    ASSERT_EQ(restoreDelay(delay), 0);
    EXPECT_EQ(delay.bytes[0], 0xc1);
    EXPECT_EQ(delay.bytes[1], 1);
    EXPECT_TRUE(delay.canaryIntact());
}

TEST(SimPower, RestoreCallsNeverWritePastTheLength)
{
    for (uint32_t length : {0u, 1u, 2u}) {
        Response policy(length);
        Response delay(length);
        EXPECT_EQ(restorePolicy(policy), 0);
        EXPECT_EQ(restoreDelay(delay), 0);
        EXPECT_TRUE(policy.canaryIntact()) << "length " << length;
        EXPECT_TRUE(delay.canaryIntact()) << "length " << length;
        if (length >= 2) {
            EXPECT_EQ(policy.bytes[1], 2) << "the sample machine's policy";
        }
    }
}

TEST(SimPower, SampleMachineRestoresPolicyTwoWithoutDelay)
{
    Response policy(POWER_RESTORE_POLICY_RESPONSE_SIZE);
    Response delay(POWER_RESTORE_DELAY_RESPONSE_SIZE);
    ASSERT_EQ(restorePolicy(policy), 0);
    ASSERT_EQ(restoreDelay(delay), 0);
    EXPECT_EQ(std::vector<uint8_t>(policy.bytes.begin(), policy.bytes.begin() + 4), (std::vector<uint8_t>{0, 2, 0, 0}));
    EXPECT_EQ(std::vector<uint8_t>(delay.bytes.begin(), delay.bytes.begin() + 2), (std::vector<uint8_t>{0, 0}));
}

TEST(SimPower, MachineWithoutTheSectionHasZeroedSettingAndNoModes)
{
    ServedMachine served(machineWithPower(nullptr));
    Record bytes;
    ASSERT_EQ(readSetting(bytes, 0xcc), 0);
    EXPECT_EQ(bytes, Record{}) << "the whole record is written, all zero";
    for (uint32_t mode : {0u, 1u, 2u, 4u})
        EXPECT_NE(askMode(mode).result, 0) << "mode " << mode;

    Response policy(POWER_RESTORE_POLICY_RESPONSE_SIZE);
    Response delay(POWER_RESTORE_DELAY_RESPONSE_SIZE);
    ASSERT_EQ(restorePolicy(policy), 0);
    ASSERT_EQ(restoreDelay(delay), 0);
    EXPECT_EQ(policy.bytes[0], 0);
    EXPECT_EQ(policy.bytes[1], 0);
    EXPECT_EQ(delay.bytes[0], 0);
    EXPECT_EQ(delay.bytes[1], 0);
    EXPECT_TRUE(delay.canaryIntact());
}

TEST(SimPower, EmptySectionIsLikeNoSection)
{
    ServedMachine served(machineWithPower(nlohmann::json::object()));
    Record bytes;
    ASSERT_EQ(readSetting(bytes, 0xcc), 0);
    EXPECT_EQ(bytes, Record{});
    EXPECT_NE(askMode(1).result, 0);
}

TEST(SimPower, SettingFaultReturnsItsResultAndWritesNothing)
{
    ServedMachine served(
        machineWithPower(nullptr, nlohmann::json::array({fault("pwrmgt_get_power_policy_setting", "", 7)})));
    Record bytes;
    EXPECT_EQ(readSetting(bytes, 0xcc), 7);
    Record untouched;
    untouched.fill(0xcc);
    EXPECT_EQ(bytes, untouched);
}

TEST(SimPower, ModeFaultIsKeyedByTheModeInDecimal)
{
    ServedMachine served(machineWithPower(nlohmann::json::parse(orv3::test::sampleMachineText())["power"],
                                          nlohmann::json::array({fault("pwrmgt_get_powerInfo_perRedunMode", "2", 5)})));
    EXPECT_EQ(askMode(1).result, 0);
    ModeAnswer failed = askMode(2);
    EXPECT_EQ(failed.result, 5);
    EXPECT_EQ(failed.systemPower, 0xdeadbeef);
    EXPECT_EQ(failed.maxLimit, 0xdeadbeef);
    EXPECT_EQ(failed.count, 0xee);
    EXPECT_EQ(askMode(4).result, 0);
}

TEST(SimPower, RestoreFaultsReturnTheirResultAndWriteNothing)
{
    ServedMachine served(machineWithPower(nullptr, {fault("GetPowerRestorePolicy", "", 3),
                                                    {{"call", "GetPowerRestoreDelay"}, {"result", 9}, {"times", 1}}}));
    Response policy(POWER_RESTORE_POLICY_RESPONSE_SIZE);
    EXPECT_EQ(restorePolicy(policy), 3);
    for (size_t i = 0; i < policy.length; ++i)
        EXPECT_EQ(policy.bytes[i], Response::kUnwritten) << "byte " << i;

    Response delay(POWER_RESTORE_DELAY_RESPONSE_SIZE);
    EXPECT_EQ(restoreDelay(delay), 9);
    EXPECT_EQ(delay.bytes[0], Response::kUnwritten);
    EXPECT_EQ(delay.bytes[1], Response::kUnwritten);
    EXPECT_EQ(restoreDelay(delay), 0) << "the fault was for one call";
    EXPECT_EQ(delay.bytes[0], 0);
}

TEST(SimPower, MissingOutputsFailWithoutWriting)
{
    uint32_t value = 0;
    uint8_t count = 0;
    EXPECT_NE(pwrmgt_get_power_policy_setting(nullptr), 0);
    EXPECT_NE(pwrmgt_get_powerInfo_perRedunMode(1, nullptr, &value, &count), 0);
    EXPECT_NE(pwrmgt_get_powerInfo_perRedunMode(1, &value, nullptr, &count), 0);
    EXPECT_NE(pwrmgt_get_powerInfo_perRedunMode(1, &value, &value, nullptr), 0);
    uint8_t work[4] = {};
    EXPECT_NE(GetPowerRestorePolicy(work, 4, 0, nullptr), 0);
    EXPECT_NE(GetPowerRestoreDelay(work, 2, 0, nullptr), 0);
}

// The machine-file errors: each names the field and its line.
std::string powerError(const std::string &section)
{
    return machineFileError("{\n  \"power\": " + section + "\n}\n");
}

TEST(SimPower, HistoryRecordsCarryEachFieldAtItsOffsetAndZerosAfterTheSamples)
{
    ServedMachine served(machineWithPower({{"history",
                                            {{{"sample", 7},
                                              {"time", 0x65A1B2C3},
                                              {"a", 0x0A0A},
                                              {"b", 0x0B0B},
                                              {"c", 0x0C0C},
                                              {"d", 0x0D0D},
                                              {"e", 0x0E0E},
                                              {"f", 0x0F0F}},
                                             {{"sample", 8}, {"time", 1}}}}}));
    power_history_sample_t samples[4];
    memset(samples, 0xAA, sizeof samples);
    ASSERT_EQ(pwrmgt_get_history_power(SYS_PWR_DOMAIN, LAST_HOUR_24, samples, 3), 0);
    const uint8_t *bytes = reinterpret_cast<const uint8_t *>(samples);
    const uint8_t first[20] = {0x07, 0x00, 0x00, 0x00, 0xC3, 0xB2, 0xA1, 0x65, 0x0D, 0x0D,
                               0x0F, 0x0F, 0x0E, 0x0E, 0x0A, 0x0A, 0x0C, 0x0C, 0x0B, 0x0B};
    EXPECT_EQ(memcmp(bytes, first, sizeof first), 0);
    EXPECT_EQ(bytes[20], 8);
    EXPECT_EQ(bytes[24], 1);
    for (size_t i = 40; i < 60; ++i)
        EXPECT_EQ(bytes[i], 0) << "byte " << i << " of the record after the samples";
    EXPECT_EQ(bytes[60], 0xAA) << "the fourth record is not the caller's to give";
}

TEST(SimPower, HistoryIsOnlyTheSystemDomainsLastDay)
{
    ServedMachine served(machineWithPower({{"history", nlohmann::json::array({{{"sample", 1}, {"time", 5}}})}}));
    power_history_sample_t samples[2] = {};
    EXPECT_EQ(pwrmgt_get_history_power(1, LAST_HOUR_24, samples, 2), 1);
    EXPECT_EQ(pwrmgt_get_history_power(SYS_PWR_DOMAIN, 2, samples, 2), 1);
    EXPECT_EQ(pwrmgt_get_history_power(SYS_PWR_DOMAIN, LAST_HOUR_24, nullptr, 2), 1);
}

TEST(SimPower, HistoryFaultReturnsItsResultAndWritesNothing)
{
    ServedMachine served(machineWithPower({{"history", nlohmann::json::array({{{"sample", 1}, {"time", 5}}})}},
                                          nlohmann::json::array({fault("pwrmgt_get_history_power", "", 4)})));
    power_history_sample_t samples[1];
    memset(samples, 0xAA, sizeof samples);
    EXPECT_EQ(pwrmgt_get_history_power(SYS_PWR_DOMAIN, LAST_HOUR_24, samples, 1), 4);
    EXPECT_EQ(reinterpret_cast<const uint8_t *>(samples)[0], 0xAA);
}

using RealtimeRecord = std::array<uint8_t, POWER_REALTIME_SIZE>;

int32_t readRealtime(RealtimeRecord &bytes, uint8_t fill = 0)
{
    bytes.fill(fill);
    power_realtime_t powers;
    memcpy(&powers, bytes.data(), sizeof powers);
    int32_t result = pwrmgt_get_realtime_powers(&powers);
    memcpy(bytes.data(), &powers, sizeof powers);
    return result;
}

TEST(SimPower, RealtimeRecordHoldsTheReadingsAtTheirOffsetsAndZerosElsewhere)
{
    ServedMachine served(machineWithPower({{"realtime", {{"total", 0x0102}, {"cpu", 0x0304}, {"memory", 0xfffe}}}}));
    RealtimeRecord bytes;
    ASSERT_EQ(readRealtime(bytes, 0xcc), 0);
    const RealtimeRecord expected = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x02, 0x01, 0x04, 0x03, 0xfe, 0xff, 0, 0, 0, 0};
    EXPECT_EQ(bytes, expected);
}

TEST(SimPower, RealtimeResultComesWithTheReadings)
{
    ServedMachine served(machineWithPower({{"realtime", {{"total", 500}, {"result", 2}}}}));
    RealtimeRecord bytes;
    EXPECT_EQ(readRealtime(bytes), 2);
    EXPECT_EQ(bytes[10] | bytes[11] << 8, 500);
}

TEST(SimPower, RealtimeFaultReturnsItsResultAndWritesNothing)
{
    ServedMachine served(machineWithPower({{"realtime", {{"total", 500}}}},
                                          nlohmann::json::array({fault("pwrmgt_get_realtime_powers", "", 1)})));
    RealtimeRecord bytes;
    EXPECT_EQ(readRealtime(bytes, 0xcc), 1);
    RealtimeRecord untouched;
    untouched.fill(0xcc);
    EXPECT_EQ(bytes, untouched);
}

TEST(SimPower, SampleMachineDrawsLessThanItsCap)
{
    RealtimeRecord bytes;
    ASSERT_EQ(readRealtime(bytes), 0);
    const int total = bytes[10] | bytes[11] << 8;
    const int cpu = bytes[12] | bytes[13] << 8;
    const int memory = bytes[14] | bytes[15] << 8;
    EXPECT_GT(total, cpu + memory);
    Record setting;
    ASSERT_EQ(readSetting(setting), 0);
    EXPECT_LT(total, setting[6] | setting[7] << 8);
}

TEST(SimPowerMachineFile, SectionMustBeAnObject)
{
    EXPECT_EQ(powerError("[]"), "m.json:2: /power: must be an object");
}

TEST(SimPowerMachineFile, UnknownFieldIsNamedWithItsLine)
{
    EXPECT_EQ(powerError("{\n    \"redundancyMode\": 1,\n    \"redundancy\": 2 }"),
              "m.json:4: /power/redundancy: unknown power field (known: bladeFamily, redundancyMode, modes, "
              "capping, restorePolicy, restoreDelay, history, realtime)");
    EXPECT_EQ(powerError("{ \"modes\": { \"1\": {\n \"watts\": 5 } } }"),
              "m.json:3: /power/modes/1/watts: unknown mode field (known: systemPower, maxLimit, count)");
    EXPECT_EQ(powerError("{ \"capping\": {\n \"cap\": 5 } }"),
              "m.json:3: /power/capping/cap: unknown capping field (known: policy, domain, currentCap, softMinCap, "
              "minCap, maxCap)");
    EXPECT_EQ(powerError("{ \"restoreDelay\": {\n \"delay\": 5 } }"),
              "m.json:3: /power/restoreDelay/delay: unknown restore field (known: value, completionCode)");
}

TEST(SimPowerMachineFile, WrongKindIsAnError)
{
    EXPECT_EQ(powerError("{\n \"redundancyMode\": \"1\" }"), "m.json:3: /power/redundancyMode: must be an integer");
    EXPECT_EQ(powerError("{\n \"bladeFamily\": true }"), "m.json:3: /power/bladeFamily: must be an integer");
    EXPECT_EQ(powerError("{\n \"modes\": [] }"),
              "m.json:3: /power/modes: must be an object of modes by their code (\"1\", \"2\", \"4\")");
    EXPECT_EQ(powerError("{ \"modes\": {\n \"1\": 450 } }"), "m.json:3: /power/modes/1: a mode must be an object");
    EXPECT_EQ(powerError("{ \"capping\": {\n \"minCap\": 5 } }"),
              "m.json:3: /power/capping/minCap: must be an array of two caps (cap domain 0, cap domain 1)");
    EXPECT_EQ(powerError("{ \"capping\": {\n \"maxCap\": [1, 2, 3] } }"),
              "m.json:3: /power/capping/maxCap: must be an array of two caps (cap domain 0, cap domain 1)");
    EXPECT_EQ(powerError("{\n \"restorePolicy\": 2 }"), "m.json:3: /power/restorePolicy: must be an object");
}

TEST(SimPowerMachineFile, ValuesMustFitTheirFieldWidth)
{
    EXPECT_EQ(powerError("{\n \"redundancyMode\": 256 }"),
              "m.json:3: /power/redundancyMode: must be between 0 and 255");
    EXPECT_EQ(powerError("{\n \"bladeFamily\": -1 }"), "m.json:3: /power/bladeFamily: must be between 0 and 255");
    EXPECT_EQ(powerError("{ \"modes\": { \"1\": {\n \"count\": 256 } } }"),
              "m.json:3: /power/modes/1/count: must be between 0 and 255");
    EXPECT_EQ(powerError("{ \"modes\": { \"1\": {\n \"maxLimit\": 4294967296 } } }"),
              "m.json:3: /power/modes/1/maxLimit: must be between 0 and 4294967295");
    EXPECT_EQ(powerError("{ \"capping\": {\n \"currentCap\": 65536 } }"),
              "m.json:3: /power/capping/currentCap: must be between 0 and 65535");
    EXPECT_EQ(powerError("{ \"capping\": { \"softMinCap\": [0,\n 70000] } }"),
              "m.json:3: /power/capping/softMinCap/1: must be between 0 and 65535");
    EXPECT_EQ(powerError("{ \"restorePolicy\": {\n \"completionCode\": 300 } }"),
              "m.json:3: /power/restorePolicy/completionCode: must be between 0 and 255");
}

TEST(SimPowerMachineFile, ModeIsNamedByItsDecimalCode)
{
    for (const char *key : {"redundant", "01", "-1", "", "4294967296", "1.0"})
        EXPECT_EQ(powerError(std::string("{ \"modes\": {\n \"") + key + "\": {} } }"),
                  std::string("m.json:3: /power/modes/") + key +
                      ": a mode must be named by its code in decimal, from 0 to 4294967295 (\"1\", \"2\", \"4\")")
            << key;
    EXPECT_EQ(powerError("{ \"modes\": { \"0\": {}, \"4294967295\": {} } }"), "");
}

TEST(SimPowerMachineFile, SampleSectionIsTaken)
{
    EXPECT_EQ(machineFileError(orv3::test::sampleMachineText()), "");
}

} // namespace

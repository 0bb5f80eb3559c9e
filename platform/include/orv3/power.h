/* Power management: redundancy policy, per-mode budget, real-time and
 * historical power readings, and the power-restore settings. Every call
 * fills caller-owned records that the caller zeroes first; 0 is success
 * (except pwrmgt_get_realtime_powers, where only 1 means failure). */
#ifndef ORV3_POWER_H
#define ORV3_POWER_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

/* Redundancy-mode codes. */
enum {
    POWER_MODE_REDUNDANT = 1,
    POWER_MODE_NON_REDUNDANT = 2,
    POWER_MODE_N_1_REDUNDANT = 4,
};

/* History selectors and size. */
enum {
    SYS_PWR_DOMAIN = 0, /* the system power domain */
    LAST_HOUR_24 = 3,   /* the last 24 hours */
    POWER_HISTORY_SAMPLES = 120,
};

enum {
    POWER_POLICY_SETTING_SIZE = 22,
    POWER_REALTIME_SIZE = 20,
    POWER_HISTORY_SAMPLE_SIZE = 20,
    POWER_RESTORE_POLICY_RESPONSE_SIZE = 4,
    POWER_RESTORE_DELAY_RESPONSE_SIZE = 2,
};

#pragma pack(push, 1)
/* Power-policy setting. 16-bit fields are little-endian and unaligned. */
typedef struct power_policy_setting {
    uint8_t blade_family;    /* 0: nonzero = no per-mode power information */
    uint8_t redundancy_mode; /* 1: POWER_MODE_* in force */
    uint8_t reserved_2[1];
    uint8_t capping_policy; /* 3: power-capping policy setting, 0 or 1 */
    uint8_t cap_domain;     /* 4: 0 or 1 */
    uint8_t reserved_5[1];
    uint16_t current_cap;          /* 6: current static cap */
    uint16_t soft_min_cap_domain0; /* 8 */
    uint16_t min_cap_domain0;      /* 10 */
    uint16_t max_cap_domain0;      /* 12 */
    uint16_t soft_min_cap_domain1; /* 14 */
    uint16_t min_cap_domain1;      /* 16 */
    uint16_t max_cap_domain1;      /* 18 */
    uint8_t reserved_20[2];
} power_policy_setting_t;

/* Real-time power readings; 16-bit little-endian. */
typedef struct power_realtime {
    uint8_t reserved_0[10];
    uint16_t total;  /* 10: total power in use */
    uint16_t cpu;    /* 12: processor power */
    uint16_t memory; /* 14: memory power */
    uint8_t reserved_16[4];
} power_realtime_t;

/* One history sample; little-endian. The readings are named after the table
 * objects that publish them (reading_a is powerTrendingSampleReadingA). */
typedef struct power_history_sample {
    uint16_t sample_number; /* 0 */
    uint8_t reserved_2[2];
    uint32_t timestamp; /* 4: seconds since the epoch; 0 ends the list */
    uint16_t reading_d; /* 8 */
    uint16_t reading_f; /* 10 */
    uint16_t reading_e; /* 12 */
    uint16_t reading_a; /* 14 */
    uint16_t reading_c; /* 16 */
    uint16_t reading_b; /* 18 */
} power_history_sample_t;
#pragma pack(pop)

ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, blade_family) == 0, "blade_family at 0");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, redundancy_mode) == 1, "redundancy_mode at 1");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, reserved_2) == 2, "reserved_2 at 2");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, capping_policy) == 3, "capping_policy at 3");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, cap_domain) == 4, "cap_domain at 4");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, current_cap) == 6, "current_cap at 6");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, soft_min_cap_domain0) == 8, "soft_min_cap_domain0 at 8");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, min_cap_domain0) == 10, "min_cap_domain0 at 10");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, max_cap_domain0) == 12, "max_cap_domain0 at 12");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, soft_min_cap_domain1) == 14, "soft_min_cap_domain1 at 14");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, min_cap_domain1) == 16, "min_cap_domain1 at 16");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, max_cap_domain1) == 18, "max_cap_domain1 at 18");
ORV3_STATIC_ASSERT(offsetof(power_policy_setting_t, reserved_20) == 20, "reserved_20 at 20");
ORV3_STATIC_ASSERT(sizeof(power_policy_setting_t) == POWER_POLICY_SETTING_SIZE, "22 bytes");

ORV3_STATIC_ASSERT(offsetof(power_realtime_t, total) == 10, "total at 10");
ORV3_STATIC_ASSERT(offsetof(power_realtime_t, cpu) == 12, "cpu at 12");
ORV3_STATIC_ASSERT(offsetof(power_realtime_t, memory) == 14, "memory at 14");
ORV3_STATIC_ASSERT(offsetof(power_realtime_t, reserved_16) == 16, "reserved_16 at 16");
ORV3_STATIC_ASSERT(sizeof(power_realtime_t) == POWER_REALTIME_SIZE, "20 bytes");

ORV3_STATIC_ASSERT(offsetof(power_history_sample_t, sample_number) == 0, "sample_number at 0");
ORV3_STATIC_ASSERT(offsetof(power_history_sample_t, timestamp) == 4, "timestamp at 4");
ORV3_STATIC_ASSERT(offsetof(power_history_sample_t, reading_d) == 8, "reading_d at 8");
ORV3_STATIC_ASSERT(offsetof(power_history_sample_t, reading_f) == 10, "reading_f at 10");
ORV3_STATIC_ASSERT(offsetof(power_history_sample_t, reading_e) == 12, "reading_e at 12");
ORV3_STATIC_ASSERT(offsetof(power_history_sample_t, reading_a) == 14, "reading_a at 14");
ORV3_STATIC_ASSERT(offsetof(power_history_sample_t, reading_c) == 16, "reading_c at 16");
ORV3_STATIC_ASSERT(offsetof(power_history_sample_t, reading_b) == 18, "reading_b at 18");
ORV3_STATIC_ASSERT(sizeof(power_history_sample_t) == POWER_HISTORY_SAMPLE_SIZE, "20 bytes");

/* Nonzero on failure. */
int32_t pwrmgt_get_power_policy_setting(power_policy_setting_t *setting);

/* Power figures of one redundancy mode: the system power, the mode's maximum
 * limit and a one-byte count. Nonzero on failure. */
int32_t pwrmgt_get_powerInfo_perRedunMode(uint32_t mode, uint32_t *system_power, uint32_t *max_limit, uint8_t *count);

/* A result of exactly 1 is failure; any other result leaves `powers` usable. */
int32_t pwrmgt_get_realtime_powers(power_realtime_t *powers);

/* Fills `count` samples in the caller's array; callers pass SYS_PWR_DOMAIN,
 * LAST_HOUR_24 and POWER_HISTORY_SAMPLES. Nonzero on failure. */
int32_t pwrmgt_get_history_power(uint32_t domain, uint32_t period, power_history_sample_t *samples, uint32_t count);

/* Restore settings. Callers pass a zeroed 4-byte work buffer, `length` 4 for
 * the policy or 2 for the delay, `instance` 0, and a zeroed response buffer of
 * `length` bytes. The response holds the completion code in byte 0 (0 =
 * success) and the value in byte 1 (a policy of 0 to 2, a delay of 0 or 1;
 * larger values are invalid). Nonzero result on failure. */
int32_t GetPowerRestorePolicy(uint8_t *work, uint32_t length, int32_t instance, uint8_t *response);
int32_t GetPowerRestoreDelay(uint8_t *work, uint32_t length, int32_t instance, uint8_t *response);

ORV3_EXTERN_C_END

#endif

/* Change-history log: the controller's record of firmware, hardware and
 * configuration changes. get_chghist_log allocates the record array, which the
 * caller releases with free; it returns the number of records, 0 for none
 * (the pointer may then stay null), or a negative number on failure. */
#ifndef ORV3_CHANGE_HISTORY_H
#define ORV3_CHANGE_HISTORY_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

/* Categories; any other value is a configuration change. */
enum {
    CHANGE_HISTORY_CATEGORY_FIRMWARE = 0,
    CHANGE_HISTORY_CATEGORY_HARDWARE = 1,
};

enum { CHANGE_HISTORY_RECORD_SIZE = 196 };

#pragma pack(push, 1)
/* One change; records lie back to back. The category is little-endian. */
typedef struct change_history_record {
    char text1[128];   /* 0: NUL-terminated */
    char text2[64];    /* 128: NUL-terminated */
    uint32_t category; /* 192: CHANGE_HISTORY_CATEGORY_* */
} change_history_record_t;
#pragma pack(pop)

ORV3_STATIC_ASSERT(offsetof(change_history_record_t, text1) == 0, "text1 at 0");
ORV3_STATIC_ASSERT(offsetof(change_history_record_t, text2) == 128, "text2 at 128");
ORV3_STATIC_ASSERT(offsetof(change_history_record_t, category) == 192, "category at 192");
ORV3_STATIC_ASSERT(sizeof(change_history_record_t) == CHANGE_HISTORY_RECORD_SIZE, "196 bytes");

/* `records` points to a null pointer on entry; callers pass mode 1. */
int32_t get_chghist_log(change_history_record_t **records, int32_t mode);

ORV3_EXTERN_C_END

#endif

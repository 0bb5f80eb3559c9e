/* Session manager: the controller's open login sessions.
 * sm_session_get_type_info fills a caller-owned id array (0 = success);
 * sm_session_get_info describes one session into a caller-owned record and
 * returns nonzero when it did, 0 when the session is gone. */
#ifndef ORV3_SESSION_MANAGER_H
#define ORV3_SESSION_MANAGER_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

enum { SESSION_MANAGER_INFO_SIZE = 220 };

#pragma pack(push, 1)
/* Session-information record; every text is NUL-terminated. */
typedef struct session_manager_info {
    char access[68];     /* 0: how the user came in */
    char user_name[64];  /* 68 */
    char ip_address[88]; /* 132: client address as text */
} session_manager_info_t;
#pragma pack(pop)

ORV3_STATIC_ASSERT(offsetof(session_manager_info_t, access) == 0, "access at 0");
ORV3_STATIC_ASSERT(offsetof(session_manager_info_t, user_name) == 68, "user_name at 68");
ORV3_STATIC_ASSERT(offsetof(session_manager_info_t, ip_address) == 132, "ip_address at 132");
ORV3_STATIC_ASSERT(sizeof(session_manager_info_t) == SESSION_MANAGER_INFO_SIZE, "220 bytes");

/* *count holds the capacity of `ids` on entry and the number of ids filled
 * on return. Callers pass a selector of 0 (all sessions). 0 = success. */
int32_t sm_session_get_type_info(uint32_t *selector, int32_t *count, int32_t *ids);
/* Nonzero when `info` was filled, 0 when the session cannot be described. */
int32_t sm_session_get_info(int32_t id, session_manager_info_t *info);

ORV3_EXTERN_C_END

#endif

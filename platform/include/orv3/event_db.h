/* Event database: the controller's list of currently active events.
 * A caller takes a handle (nonzero, with the event count), reads the record
 * array through it and releases the handle, which also frees the array: the
 * array belongs to the handle and is never freed by the caller. */
#ifndef ORV3_EVENT_DB_H
#define ORV3_EVENT_DB_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

typedef struct event_db_active_set *event_db_handle_t; /* 0 = no handle */

/* Severities in enumLogServ; other values are neither warning nor error. */
enum {
    EVENT_DB_SEVERITY_WARNING = 2,
    EVENT_DB_SEVERITY_ERROR = 3,
};

enum { EVENT_DB_ACTIVE_EVENT_SIZE = 5676 };

#pragma pack(push, 1)
/* Active-event record; records lie back to back in the array. Only the
 * severity and the message are public; the rest is the database's. The
 * severity is little-endian and unaligned. */
typedef struct event_db_active_event {
    uint8_t reserved_0[2212];
    int32_t enumLogServ; /* 2212: EVENT_DB_SEVERITY_* */
    uint8_t reserved_2216[2342];
    char message[1118]; /* 4558: NUL-terminated message text */
} event_db_active_event_t;
#pragma pack(pop)

ORV3_STATIC_ASSERT(offsetof(event_db_active_event_t, enumLogServ) == 2212, "enumLogServ at 2212");
ORV3_STATIC_ASSERT(offsetof(event_db_active_event_t, reserved_2216) == 2216, "reserved_2216 at 2216");
ORV3_STATIC_ASSERT(offsetof(event_db_active_event_t, message) == 4558, "message at 4558");
ORV3_STATIC_ASSERT(sizeof(event_db_active_event_t) == EVENT_DB_ACTIVE_EVENT_SIZE, "5676 bytes");

/* Callers pass kind 1. Returns a handle and sets *count, or 0 on failure. */
event_db_handle_t CEM_Db_GetActiveEventHandle(int32_t kind, uint16_t *count);
/* Sets *records to the handle's array of *count records; 0 on success. */
int32_t CEM_Db_GetActiveEventList(event_db_handle_t handle, event_db_active_event_t **records);
/* Releases the handle and its array; callers ignore the result. */
int32_t CEM_Db_FreeActiveEventHandle(event_db_handle_t handle);

ORV3_EXTERN_C_END

#endif

/* Data manager: the controller's path-addressed data store ("quel_dm_").
 *
 * Every call returns 0 on success. Calls with a status out-parameter also
 * write a variable-list status word there; quel_dm_GetVarListErrorStr turns
 * that word into a static text. The row selector and the two zero arguments
 * of the bind and row calls belong to the library; callers pass -1, 0, 0. */
#ifndef ORV3_DATA_MANAGER_H
#define ORV3_DATA_MANAGER_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

typedef struct quel_dm_connection *quel_dm_co_t;   /* the agent's store connection */
typedef struct quel_dm_binding *quel_dm_binding_t; /* a table bound to holders */
typedef struct quel_dm_varlist *quel_dm_varlist_t; /* a list of store variables */
typedef struct quel_dm_lock *quel_dm_lock_t;       /* held namespace locks */

/* The agent process's one open connection to the store. */
extern quel_dm_co_t g_coHandle;

/* Column binding record: one per column, the array ends with QUEL_DM_TYPE_END. */
enum {
    QUEL_DM_TYPE_INT = 2,    /* holder: int32_t */
    QUEL_DM_TYPE_STRING = 5, /* holder: quel_dm_string_holder_t */
    QUEL_DM_TYPE_END = 6,
};

typedef struct quel_dm_column_binding {
    int32_t type;         /* 0: QUEL_DM_TYPE_* */
    int32_t reserved;     /* 4: always 0 */
    const char *var_name; /* 8: "index", "descr", "str/reading", ... */
    void *holder;         /* 12 on the controller */
} quel_dm_column_binding_t;

ORV3_STATIC_ASSERT(offsetof(quel_dm_column_binding_t, type) == 0, "type at 0");
ORV3_STATIC_ASSERT(offsetof(quel_dm_column_binding_t, reserved) == 4, "reserved at 4");
ORV3_STATIC_ASSERT(offsetof(quel_dm_column_binding_t, var_name) == 8, "var_name at 8");
ORV3_STATIC_ASSERT(offsetof(quel_dm_column_binding_t, holder) == 8 + sizeof(void *), "holder after var_name");
ORV3_STATIC_ASSERT(sizeof(quel_dm_column_binding_t) == ORV3_RECORD_SIZE(2, 2), "16 bytes on the controller");

/* String holder: the store writes a NUL-terminated text of at most
 * `capacity` bytes (terminator included) into `buffer`. */
typedef struct quel_dm_string_holder {
    char *buffer;     /* 0 */
    int32_t capacity; /* 4 on the controller */
} quel_dm_string_holder_t;

ORV3_STATIC_ASSERT(offsetof(quel_dm_string_holder_t, buffer) == 0, "buffer at 0");
ORV3_STATIC_ASSERT(offsetof(quel_dm_string_holder_t, capacity) == sizeof(void *), "capacity after buffer");

/* Row bindings and counts. */
int32_t quel_dm_BindRow(int32_t row, const char *ns, quel_dm_co_t co, int32_t a, int32_t b,
                        quel_dm_column_binding_t *columns, quel_dm_binding_t *handle, int32_t *status);
int32_t quel_dm_GetFirstRow(quel_dm_binding_t handle, quel_dm_co_t co, int32_t a, int32_t b, int32_t *status);
/* Nonzero at the end of the rows and on error alike. */
int32_t quel_dm_GetNextRow(quel_dm_binding_t handle, quel_dm_co_t co, int32_t a, int32_t b, int32_t *status);
int32_t quel_dm_FreeBinding(quel_dm_binding_t handle, int32_t *status);
int32_t quel_dm_GetRowCount(const char *ns, quel_dm_co_t co, int32_t a, int32_t b, int32_t *count, int32_t *status);
const char *quel_dm_GetVarListErrorStr(int32_t status);

/* Variable lists, validation, update and namespace locks (settable groups).
 * `namespaces` is a null-terminated array of namespace paths. */
int32_t quel_dm_GetVars(const char *list_name, quel_dm_co_t co, int32_t a, int32_t b, const char *const *namespaces,
                        quel_dm_varlist_t *list, int32_t *status);
int32_t quel_dm_GetUpdatableVars(const char *list_name, quel_dm_co_t co, int32_t a, int32_t b,
                                 const char *const *namespaces, quel_dm_varlist_t *list, int32_t *status);
int32_t quel_dm_ValidateVars(quel_dm_varlist_t list, quel_dm_co_t co, int32_t a, int32_t b, int32_t *status);
int32_t quel_dm_UpdateVars(quel_dm_varlist_t list, quel_dm_co_t co, int32_t a, int32_t b, int32_t *status);
int32_t quel_dm_DeleteVarList(quel_dm_varlist_t list, quel_dm_co_t co, int32_t a, int32_t b, int32_t *status);
int32_t quel_dm_LockNamespaces(const char *const *namespaces, quel_dm_co_t co, quel_dm_lock_t *lock);
int32_t quel_dm_UnlockNamespaces(quel_dm_lock_t lock, quel_dm_co_t co, int32_t *status);

ORV3_EXTERN_C_END

#endif

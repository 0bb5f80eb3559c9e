/* Agent-process binding routines: the agent moves values between bound scalar
 * records and data-manager variables, and names handler states and SNMP modes.
 * The update routines return an SNMP error status (0 = no error). Records,
 * their buffers and the variable lists stay owned by the caller. */
#ifndef ORV3_AGENT_BINDING_H
#define ORV3_AGENT_BINDING_H

#include "orv3/data_manager.h"
#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

/* net-snmp's varbind; callers include the agent headers for its fields. */
struct variable_list;

typedef struct agent_binding_scalar agent_binding_scalar_t;

/* Optional per-record overrides. `row` is -1 for a scalar. */
typedef int32_t (*agent_binding_get_fn_t)(agent_binding_scalar_t *rec, int32_t row);
typedef int32_t (*agent_binding_validate_fn_t)(agent_binding_scalar_t *rec, struct variable_list *vb);
typedef int32_t (*agent_binding_set_fn_t)(agent_binding_scalar_t *rec, struct variable_list *vb,
                                          quel_dm_varlist_t list);

/* Bound scalar record: one settable or store-backed scalar; an array of them
 * ends with a record whose name is null. All fields are 32-bit words or
 * pointers except `requester`. */
struct agent_binding_scalar {
    const unsigned long *oid;                /* net-snmp `oid` arcs, instance arc 0 last */
    uint32_t oid_len;                        /* arcs */
    const char *name;                        /* MIB object name; null ends the array */
    uint32_t asn_type;                       /* ASN.1 tag of the answer, low byte */
    void *vb_value;                          /* varbind-side value buffer */
    uint32_t *vb_size;                       /* its length */
    void *mib_value;                         /* served value buffer */
    uint32_t *mib_cursize;                   /* served value's current length */
    uint32_t mib_maxsize;                    /* capacity of mib_value */
    const char *store_var;                   /* data-store variable path */
    int32_t store_type;                      /* QUEL_DM_TYPE_INT or QUEL_DM_TYPE_STRING */
    int32_t reserved;                        /* 0 */
    uint32_t store_size;                     /* store value size */
    const char *user_var;                    /* written with the requester's name, or null */
    char requester[64];                      /* who writes: "SNMPv1" */
    agent_binding_get_fn_t get_fn;           /* read override, or null */
    agent_binding_validate_fn_t validate_fn; /* RESERVE1 check, or null */
    agent_binding_set_fn_t set_fn;           /* write override, or null */
    int32_t reserved2;                       /* 0 */
};

/* Offsets for pointers of `p` bytes aligned to their size: p = 4 gives the
 * controller's layout (136 bytes), p = sizeof(void *) the host's. */
#define AGENT_BINDING_ALIGN(p, off) ((((off) + (p)-1) / (p)) * (p))
#define AGENT_BINDING_OFF_OID(p) 0
#define AGENT_BINDING_OFF_OID_LEN(p) (AGENT_BINDING_OFF_OID(p) + (p))
#define AGENT_BINDING_OFF_NAME(p) AGENT_BINDING_ALIGN(p, AGENT_BINDING_OFF_OID_LEN(p) + 4)
#define AGENT_BINDING_OFF_ASN_TYPE(p) (AGENT_BINDING_OFF_NAME(p) + (p))
#define AGENT_BINDING_OFF_VB_VALUE(p) AGENT_BINDING_ALIGN(p, AGENT_BINDING_OFF_ASN_TYPE(p) + 4)
#define AGENT_BINDING_OFF_VB_SIZE(p) (AGENT_BINDING_OFF_VB_VALUE(p) + (p))
#define AGENT_BINDING_OFF_MIB_VALUE(p) (AGENT_BINDING_OFF_VB_SIZE(p) + (p))
#define AGENT_BINDING_OFF_MIB_CURSIZE(p) (AGENT_BINDING_OFF_MIB_VALUE(p) + (p))
#define AGENT_BINDING_OFF_MIB_MAXSIZE(p) (AGENT_BINDING_OFF_MIB_CURSIZE(p) + (p))
#define AGENT_BINDING_OFF_STORE_VAR(p) AGENT_BINDING_ALIGN(p, AGENT_BINDING_OFF_MIB_MAXSIZE(p) + 4)
#define AGENT_BINDING_OFF_STORE_TYPE(p) (AGENT_BINDING_OFF_STORE_VAR(p) + (p))
#define AGENT_BINDING_OFF_RESERVED(p) (AGENT_BINDING_OFF_STORE_TYPE(p) + 4)
#define AGENT_BINDING_OFF_STORE_SIZE(p) (AGENT_BINDING_OFF_RESERVED(p) + 4)
#define AGENT_BINDING_OFF_USER_VAR(p) AGENT_BINDING_ALIGN(p, AGENT_BINDING_OFF_STORE_SIZE(p) + 4)
#define AGENT_BINDING_OFF_REQUESTER(p) (AGENT_BINDING_OFF_USER_VAR(p) + (p))
#define AGENT_BINDING_OFF_GET_FN(p) AGENT_BINDING_ALIGN(p, AGENT_BINDING_OFF_REQUESTER(p) + 64)
#define AGENT_BINDING_OFF_VALIDATE_FN(p) (AGENT_BINDING_OFF_GET_FN(p) + (p))
#define AGENT_BINDING_OFF_SET_FN(p) (AGENT_BINDING_OFF_VALIDATE_FN(p) + (p))
#define AGENT_BINDING_OFF_RESERVED2(p) (AGENT_BINDING_OFF_SET_FN(p) + (p))
#define AGENT_BINDING_SCALAR_SIZE(p) AGENT_BINDING_ALIGN(p, AGENT_BINDING_OFF_RESERVED2(p) + 4)

/* The controller's numbers. */
ORV3_STATIC_ASSERT(AGENT_BINDING_OFF_NAME(4) == 8, "controller: name at 8");
ORV3_STATIC_ASSERT(AGENT_BINDING_OFF_MIB_MAXSIZE(4) == 32, "controller: mib_maxsize at 32");
ORV3_STATIC_ASSERT(AGENT_BINDING_OFF_STORE_SIZE(4) == 48, "controller: store_size at 48");
ORV3_STATIC_ASSERT(AGENT_BINDING_OFF_REQUESTER(4) == 56, "controller: requester at 56");
ORV3_STATIC_ASSERT(AGENT_BINDING_OFF_GET_FN(4) == 120, "controller: get_fn at 120");
ORV3_STATIC_ASSERT(AGENT_BINDING_OFF_RESERVED2(4) == 132, "controller: reserved2 at 132");
ORV3_STATIC_ASSERT(AGENT_BINDING_SCALAR_SIZE(4) == 136, "controller: 136 bytes");

/* This build's layout. */
#define AGENT_BINDING_P sizeof(void *)
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, oid) == AGENT_BINDING_OFF_OID(AGENT_BINDING_P), "oid");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, oid_len) == AGENT_BINDING_OFF_OID_LEN(AGENT_BINDING_P), "oid_len");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, name) == AGENT_BINDING_OFF_NAME(AGENT_BINDING_P), "name");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, asn_type) == AGENT_BINDING_OFF_ASN_TYPE(AGENT_BINDING_P),
                   "asn_type");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, vb_value) == AGENT_BINDING_OFF_VB_VALUE(AGENT_BINDING_P),
                   "vb_value");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, vb_size) == AGENT_BINDING_OFF_VB_SIZE(AGENT_BINDING_P), "vb_size");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, mib_value) == AGENT_BINDING_OFF_MIB_VALUE(AGENT_BINDING_P),
                   "mib_value");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, mib_cursize) == AGENT_BINDING_OFF_MIB_CURSIZE(AGENT_BINDING_P),
                   "mib_cursize");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, mib_maxsize) == AGENT_BINDING_OFF_MIB_MAXSIZE(AGENT_BINDING_P),
                   "mib_maxsize");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, store_var) == AGENT_BINDING_OFF_STORE_VAR(AGENT_BINDING_P),
                   "store_var");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, store_type) == AGENT_BINDING_OFF_STORE_TYPE(AGENT_BINDING_P),
                   "store_type");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, reserved) == AGENT_BINDING_OFF_RESERVED(AGENT_BINDING_P),
                   "reserved");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, store_size) == AGENT_BINDING_OFF_STORE_SIZE(AGENT_BINDING_P),
                   "store_size");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, user_var) == AGENT_BINDING_OFF_USER_VAR(AGENT_BINDING_P),
                   "user_var");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, requester) == AGENT_BINDING_OFF_REQUESTER(AGENT_BINDING_P),
                   "requester");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, get_fn) == AGENT_BINDING_OFF_GET_FN(AGENT_BINDING_P), "get_fn");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, validate_fn) == AGENT_BINDING_OFF_VALIDATE_FN(AGENT_BINDING_P),
                   "validate_fn");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, set_fn) == AGENT_BINDING_OFF_SET_FN(AGENT_BINDING_P), "set_fn");
ORV3_STATIC_ASSERT(offsetof(agent_binding_scalar_t, reserved2) == AGENT_BINDING_OFF_RESERVED2(AGENT_BINDING_P),
                   "reserved2");
ORV3_STATIC_ASSERT(sizeof(agent_binding_scalar_t) == AGENT_BINDING_SCALAR_SIZE(AGENT_BINDING_P), "record size");
#undef AGENT_BINDING_P

/* Refresh the record's mib_value and *mib_cursize from store_var (row -1 for
 * a scalar). `token` is the group's debug token. v2 and v3 behave alike. */
int32_t update_binding_from_TIRO_v2(const char *token, agent_binding_scalar_t *rec, int32_t row);
int32_t update_binding_from_TIRO_v3(const char *token, agent_binding_scalar_t *rec, int32_t row);

/* Put the varbind's value into `list` for store_var, and the requester's
 * name for user_var when that is set. */
int32_t update_TIRO_from_varbind_v3(const char *token, agent_binding_scalar_t *rec, struct variable_list *vb,
                                    quel_dm_varlist_t list);

/* Read one string variable into `buffer` (NUL-terminated, at most `size`
 * bytes). Callers pass -1, g_coHandle, 0, 0 and judge the outcome by the
 * status word alone (0 = success); the result carries nothing more. */
int32_t GetVarValueSTRING(int32_t transaction, quel_dm_co_t co, int32_t a, int32_t b, const char *path, int32_t *status,
                          char *buffer, int32_t size);

/* Static texts for traces. */
const char *getHandlerStateName(int32_t state);
const char *getSNMPModeName(int32_t mode);

ORV3_EXTERN_C_END

#endif

// The settable groups of the sensor counts, voltage and temperature: one
// INTEGER scalar bound to a store variable, registered read-only so that
// only its GET path is used. The two are the same code over different
// namespaces; each group's file gives only its init routine.
#pragma once

#include "settable_group.h"

// Defines the group G's module-wide state, its bound record for SCALAR at
// arc ARC below 1.3.6.1.4.1.53917.11.1.1, and G_handler.
#define ORV3_SENSOR_COUNT_GROUP(G, SCALAR, ARC, COUNT_VARIABLE, NAMESPACE)                                             \
    static const oid SCALAR##_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, ARC, 1, 0};                                  \
    extern "C" {                                                                                                       \
    /* Value buffers as wide as the agent's long, which its instance helper reads. */                                  \
    long SCALAR##_vbvalue;                                                                                             \
    uint32_t SCALAR##_vbsize;                                                                                          \
    long SCALAR##_mibvalue;                                                                                            \
    uint32_t SCALAR##_mibcursize;                                                                                      \
    int32_t G##HandlerState = 0;                                                                                       \
    quel_dm_varlist_t p##G##Vars = nullptr;                                                                            \
    int32_t G##VarListValidateStatus = 0;                                                                              \
    const char *as_##G##VarsToUpdate[] = {NAMESPACE, nullptr};                                                         \
    agent_binding_scalar_t G##_decl[] = {                                                                              \
        {                                                                                                              \
            .oid = SCALAR##_oid,                                                                                       \
            .oid_len = OID_LENGTH(SCALAR##_oid),                                                                       \
            .name = #SCALAR,                                                                                           \
            .asn_type = ASN_INTEGER,                                                                                   \
            .vb_value = &SCALAR##_vbvalue,                                                                             \
            .vb_size = &SCALAR##_vbsize,                                                                               \
            .mib_value = &SCALAR##_mibvalue,                                                                           \
            .mib_cursize = &SCALAR##_mibcursize,                                                                       \
            .mib_maxsize = 4,                                                                                          \
            .store_var = COUNT_VARIABLE,                                                                               \
            .store_type = QUEL_DM_TYPE_INT,                                                                            \
            .reserved = 0,                                                                                             \
            .store_size = 4,                                                                                           \
            .user_var = nullptr,                                                                                       \
            .requester = "",                                                                                           \
            .get_fn = nullptr,                                                                                         \
            .validate_fn = nullptr,                                                                                    \
            .set_fn = nullptr,                                                                                         \
            .reserved2 = 0,                                                                                            \
        },                                                                                                             \
        {},                                                                                                            \
    };                                                                                                                 \
    agent_binding_scalar_t *G = G##_decl;                                                                              \
    }                                                                                                                  \
    static const orv3::SettableGroup G##Group = {                                                                      \
        .name = #G,                                                                                                    \
        .handlerName = #G "_handler",                                                                                  \
        .records = G##_decl,                                                                                           \
        .state = &G##HandlerState,                                                                                     \
        .vars = &p##G##Vars,                                                                                           \
        .validateStatus = &G##VarListValidateStatus,                                                                   \
        .namespaces = as_##G##VarsToUpdate,                                                                            \
        .lock = nullptr,                                                                                               \
    };                                                                                                                 \
    extern "C" int G##_handler(netsnmp_mib_handler *, netsnmp_handler_registration *,                                  \
                               netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests)                    \
    {                                                                                                                  \
        return orv3::settableGroupHandler(G##Group, reqinfo, requests);                                                \
    }

// Read-only scalar groups: a declaration array walked by one generic handler.
//
// Each group (fans_scalars, disks, powerModule, flashdimm, ...) declares its
// scalars in an array ending with a record whose name is null. The handler
// routes a request by the scalar's own arc (the one before the instance arc):
// the agent already matched the group's prefix when it chose the handler.
#pragma once

#include "netsnmp.h"

#include <cstddef>
#include <cstdint>
#include <source_location>

extern "C" {

typedef int (*scalar_fn_t)(void *value, size_t *size);

// Nine-field declaration record.
typedef struct scalar_decl {
    const oid *oid;       // full OID, ending in the instance arc 0
    const char *name;     // MIB object name; null ends the array
    int32_t asn_type;     // ASN.1 tag of the answer (low byte)
    void *value;          // value cell
    size_t *size;         // length of the value in bytes
    int32_t max_size;     // 4
    scalar_fn_t update;   // before each GET; may be null
    scalar_fn_t validate; // in SET RESERVE1; may be null
    scalar_fn_t commit;   // in SET COMMIT; may be null
} scalar_decl_t;

// Ten-field variant: the OID length is carried in the record.
typedef struct scalar_decl_ex {
    const oid *oid;
    size_t oid_len;
    const char *name;
    int32_t asn_type;
    void *value;
    size_t *size;
    int32_t max_size;
    scalar_fn_t update;
    scalar_fn_t validate;
    scalar_fn_t commit;
} scalar_decl_ex_t;

// Nine-field record of a group whose handler matches a request by its
// whole OID: the OID length in the record, no maximum size, and a set
// routine called in the SET modes when present.
typedef struct scalar_decl_oid {
    const oid *oid;
    size_t oid_len;
    const char *name; // null ends the array
    int32_t asn_type;
    void *value;
    size_t *size;
    scalar_fn_t update;  // before each GET
    scalar_fn_t further; // not called by the handler
    scalar_fn_t set;     // in SET RESERVE1 and COMMIT; may be null
} scalar_decl_oid_t;

} // extern "C"

#if UINTPTR_MAX == 0xffffffffu
static_assert(sizeof(scalar_decl_t) == 36, "nine 32-bit fields on the controller");
static_assert(sizeof(scalar_decl_ex_t) == 40, "ten 32-bit fields on the controller");
static_assert(sizeof(scalar_decl_oid_t) == 36, "nine 32-bit fields on the controller");
#endif

namespace orv3 {

// Scalars of the nine-field groups are registered with 13 arcs, or 14 when
// their OID ends a level deeper.
constexpr size_t kScalarOidLength = 13;

// Value cells are as wide as the agent's unsigned long, which its instance
// helpers read; the module stores and serves a 32-bit value in them.
using ScalarCell = u_long;

void storeInt32(void *cell, size_t *size, int32_t value);

// The update of a count scalar: the table's row count, or 0 when the count
// failed (a negative result).
int storeRowCount(void *cell, size_t *size, int32_t (*rowCount)());

// How a scalar is registered. A writable long instance lets the agent's
// instance helper check a SET's type and store its value in the cell; the
// group handler then runs the record's validate and commit routines.
enum class InstanceKind { ReadOnlyUlong, ReadOnlyLong, WritableLong };

// Whether registration traces "Registering <group> variables" itself, or
// the group already did (before a platform test of its own).
enum class RegistrationHeader { Traced, AlreadyTraced };

// Registers every scalar of a group and traces "Registering <group>
// variables" and one OK/failed line per scalar with `typeLabel`.
// Nine-field records are registered up to their instance arc 0 (13 or 14
// arcs), ten-field records with their own length.
void registerScalarGroup(const char *routine, const char *group, const scalar_decl_t *decls, InstanceKind kind,
                         const char *typeLabel, Netsnmp_Node_Handler *handler,
                         RegistrationHeader header = RegistrationHeader::Traced,
                         std::source_location where = std::source_location::current());
void registerScalarGroup(const char *routine, const char *group, const scalar_decl_ex_t *decls, InstanceKind kind,
                         const char *typeLabel, Netsnmp_Node_Handler *handler,
                         RegistrationHeader header = RegistrationHeader::Traced,
                         std::source_location where = std::source_location::current());

// Registers one ten-field record and traces "Registering <name>[<typeLabel>]
// OK" or "... failed" under `group`, for groups that choose which of their
// records exist.
void registerScalar(const char *routine, const char *group, const scalar_decl_ex_t &decl, InstanceKind kind,
                    const char *typeLabel, Netsnmp_Node_Handler *handler,
                    std::source_location where = std::source_location::current());

// What a GET does with an update routine's nonzero status: most groups
// return it from the handler; some also set it as the request's error.
enum class UpdateStatus { Returned, SetOnRequest };

// The generic group handler, for either record form. `stdoutRoutine`, when
// set, prints "<routine> reqinfo->mode = <mode>" for every request that
// matches. A GET answers the value cell even when its update failed.
int scalarGroupHandler(const scalar_decl_t *decls, const char *stdoutRoutine, netsnmp_agent_request_info *reqinfo,
                       netsnmp_request_info *requests, UpdateStatus onFailure = UpdateStatus::Returned);
int scalarGroupHandler(const scalar_decl_ex_t *decls, const char *stdoutRoutine, netsnmp_agent_request_info *reqinfo,
                       netsnmp_request_info *requests, UpdateStatus onFailure = UpdateStatus::Returned);
// Whole-OID records: a request is served by the record whose OID equals its
// name, and a GET answers the value cell with the length the update left.
int scalarGroupHandler(const scalar_decl_oid_t *decls, const char *stdoutRoutine, netsnmp_agent_request_info *reqinfo,
                       netsnmp_request_info *requests, UpdateStatus onFailure = UpdateStatus::Returned);
void registerScalarGroup(const char *routine, const char *group, const scalar_decl_oid_t *decls, InstanceKind kind,
                         const char *typeLabel, Netsnmp_Node_Handler *handler,
                         RegistrationHeader header = RegistrationHeader::Traced,
                         std::source_location where = std::source_location::current());

} // namespace orv3

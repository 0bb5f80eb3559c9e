#include "scalar_group.h"

#include "trace.h"

#include <cstdio>
#include <cstring>

namespace orv3 {

namespace {

// A nine-field record carries no length: its OID ends in the instance arc 0,
// 13 arcs for the count groups directly under a subsystem (fanNumber) and
// 14 for one a level deeper (fdNumber).
size_t oidLengthOf(const scalar_decl_t &decl)
{
    for (size_t length = kScalarOidLength; length < kScalarOidLength + 2; ++length)
        if (decl.oid[length - 1] == 0)
            return length;
    return kScalarOidLength;
}
size_t oidLengthOf(const scalar_decl_ex_t &decl)
{
    return decl.oid_len;
}
size_t oidLengthOf(const scalar_decl_oid_t &decl)
{
    return decl.oid_len;
}

// What the handler runs in each SET phase, and how much of the cell a GET
// answers.
template <class Decl> scalar_fn_t validateOf(const Decl &decl)
{
    return decl.validate;
}
template <class Decl> scalar_fn_t commitOf(const Decl &decl)
{
    return decl.commit;
}
template <class Decl> size_t answerSize(const Decl &decl)
{
    // The size cell never widens the answer past the record's own maximum.
    return *decl.size < size_t(decl.max_size) ? *decl.size : size_t(decl.max_size);
}
scalar_fn_t validateOf(const scalar_decl_oid_t &decl)
{
    return decl.set;
}
scalar_fn_t commitOf(const scalar_decl_oid_t &decl)
{
    return decl.set;
}
size_t answerSize(const scalar_decl_oid_t &decl)
{
    return *decl.size < sizeof(ScalarCell) ? *decl.size : sizeof(ScalarCell);
}

template <class Decl>
void registerDecl(const char *routine, const char *group, const Decl &decl, InstanceKind kind, const char *typeLabel,
                  Netsnmp_Node_Handler *handler, std::source_location where)
{
    // The registration takes its own copy of the OID, so the const arcs are
    // never written through.
    oid *arcs = const_cast<oid *>(decl.oid);
    auto *cell = static_cast<long *>(decl.value);
    int result = MIB_REGISTRATION_FAILED;
    switch (kind) {
    case InstanceKind::ReadOnlyUlong:
        result = netsnmp_register_read_only_ulong_instance(group, arcs, oidLengthOf(decl),
                                                           static_cast<u_long *>(decl.value), handler);
        break;
    case InstanceKind::ReadOnlyLong:
        result = netsnmp_register_read_only_long_instance(group, arcs, oidLengthOf(decl), cell, handler);
        break;
    case InstanceKind::WritableLong:
        result = netsnmp_register_long_instance(group, arcs, oidLengthOf(decl), cell, handler);
        break;
    }
    ORV3_TRACE_AT(routine, where, group, "Registering %s[%s] %s\n", decl.name, typeLabel,
                  result == MIB_REGISTERED_OK ? "OK" : "failed");
}

template <class Decl>
void registerDecls(const char *routine, const char *group, const Decl *decls, InstanceKind kind, const char *typeLabel,
                   Netsnmp_Node_Handler *handler, RegistrationHeader header, std::source_location where)
{
    if (header == RegistrationHeader::Traced)
        ORV3_TRACE_AT(routine, where, group, "Registering %s variables\n", group);
    for (const Decl *decl = decls; decl && decl->name; ++decl)
        registerDecl(routine, group, *decl, kind, typeLabel, handler, where);
}

template <class Decl> const Decl *findDecl(const Decl *decls, const netsnmp_variable_list *vb)
{
    if (vb->name_length < 2)
        return nullptr;
    size_t position = vb->name_length - 2;
    for (const Decl *decl = decls; decl && decl->name; ++decl)
        if (position < oidLengthOf(*decl) && decl->oid[position] == vb->name[position])
            return decl;
    return nullptr;
}

const scalar_decl_oid_t *findDecl(const scalar_decl_oid_t *decls, const netsnmp_variable_list *vb)
{
    for (const scalar_decl_oid_t *decl = decls; decl && decl->name; ++decl)
        if (snmp_oid_compare(vb->name, vb->name_length, decl->oid, decl->oid_len) == 0)
            return decl;
    return nullptr;
}

template <class Decl>
int handleScalars(const Decl *decls, const char *stdoutRoutine, netsnmp_agent_request_info *reqinfo,
                  netsnmp_request_info *requests, UpdateStatus onFailure)
{
    if (!requests)
        return 0;
    int status = 0;
    for (netsnmp_request_info *request = requests; request; request = request->next) {
        if (request->processed)
            continue;
        const Decl *decl = findDecl(decls, request->requestvb);
        if (!decl) {
            status = SNMP_ERR_NOSUCHNAME;
            continue;
        }
        if (stdoutRoutine)
            printf("%s reqinfo->mode = %d\n", stdoutRoutine, reqinfo->mode);
        switch (reqinfo->mode) {
        case MODE_GET:
            if (decl->update) {
                status = decl->update(decl->value, decl->size);
                if (status != 0 && onFailure == UpdateStatus::SetOnRequest)
                    netsnmp_request_set_error(request, status);
            }
            snmp_set_var_typed_value(request->requestvb, static_cast<u_char>(decl->asn_type), decl->value,
                                     answerSize(*decl));
            break;
        case MODE_SET_RESERVE1:
            if (scalar_fn_t validate = validateOf(*decl))
                status = validate(decl->value, decl->size);
            break;
        case MODE_SET_COMMIT:
            if (scalar_fn_t commit = commitOf(*decl))
                status = commit(decl->value, decl->size);
            break;
        default: break;
        }
    }
    return status;
}

} // namespace

void storeInt32(void *cell, size_t *size, int32_t value)
{
    memcpy(cell, &value, sizeof value);
    *size = sizeof value;
}

int storeRowCount(void *cell, size_t *size, int32_t (*rowCount)())
{
    storeInt32(cell, size, 0);
    int32_t count = rowCount();
    if (count >= 0)
        storeInt32(cell, size, count);
    return 0;
}

void registerScalarGroup(const char *routine, const char *group, const scalar_decl_t *decls, InstanceKind kind,
                         const char *typeLabel, Netsnmp_Node_Handler *handler, RegistrationHeader header,
                         std::source_location where)
{
    registerDecls(routine, group, decls, kind, typeLabel, handler, header, where);
}

void registerScalarGroup(const char *routine, const char *group, const scalar_decl_ex_t *decls, InstanceKind kind,
                         const char *typeLabel, Netsnmp_Node_Handler *handler, RegistrationHeader header,
                         std::source_location where)
{
    registerDecls(routine, group, decls, kind, typeLabel, handler, header, where);
}

int scalarGroupHandler(const scalar_decl_oid_t *decls, const char *stdoutRoutine, netsnmp_agent_request_info *reqinfo,
                       netsnmp_request_info *requests, UpdateStatus onFailure)
{
    return handleScalars(decls, stdoutRoutine, reqinfo, requests, onFailure);
}

void registerScalarGroup(const char *routine, const char *group, const scalar_decl_oid_t *decls, InstanceKind kind,
                         const char *typeLabel, Netsnmp_Node_Handler *handler, RegistrationHeader header,
                         std::source_location where)
{
    registerDecls(routine, group, decls, kind, typeLabel, handler, header, where);
}

void registerScalar(const char *routine, const char *group, const scalar_decl_ex_t &decl, InstanceKind kind,
                    const char *typeLabel, Netsnmp_Node_Handler *handler, std::source_location where)
{
    registerDecl(routine, group, decl, kind, typeLabel, handler, where);
}

int scalarGroupHandler(const scalar_decl_t *decls, const char *stdoutRoutine, netsnmp_agent_request_info *reqinfo,
                       netsnmp_request_info *requests, UpdateStatus onFailure)
{
    return handleScalars(decls, stdoutRoutine, reqinfo, requests, onFailure);
}

int scalarGroupHandler(const scalar_decl_ex_t *decls, const char *stdoutRoutine, netsnmp_agent_request_info *reqinfo,
                       netsnmp_request_info *requests, UpdateStatus onFailure)
{
    return handleScalars(decls, stdoutRoutine, reqinfo, requests, onFailure);
}

} // namespace orv3

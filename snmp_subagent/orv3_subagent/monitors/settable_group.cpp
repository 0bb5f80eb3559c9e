#include "settable_group.h"

#include "text.h"
#include "trace.h"

#include <cstdio>

namespace orv3 {

void registerSettableGroup(const char *routine, const SettableGroup &group, bool writable,
                           Netsnmp_Node_Handler *handler, std::source_location where)
{
    ORV3_TRACE_AT(routine, where, group.name, "Registering %s variables\n", group.name);
    for (agent_binding_scalar_t *record = group.records; record && record->name; ++record) {
        int result = MIB_REGISTRATION_FAILED;
        const char *typeName = "ASN_INTEGER";
        if (record->asn_type == ASN_OCTET_STR) {
            typeName = "ASN_OCTET_STR";
            if (netsnmp_handler_registration *registration = netsnmp_create_handler_registration(
                    group.name, handler, record->oid, record->oid_len, HANDLER_CAN_RONLY))
                result = netsnmp_register_read_only_instance(registration);
        } else {
            auto *cell = static_cast<long *>(record->mib_value);
            result = writable ? netsnmp_register_long_instance(group.name, record->oid, record->oid_len, cell, handler)
                              : netsnmp_register_read_only_long_instance(group.name, record->oid, record->oid_len, cell,
                                                                         handler);
        }
        ORV3_TRACE_AT(routine, where, group.name, "Registering %s[%s] %s\n", record->name, typeName,
                      result == MIB_REGISTERED_OK ? "OK" : "failed");
    }
}

namespace {

agent_binding_scalar_t *findRecord(const SettableGroup &group, const netsnmp_variable_list *vb)
{
    for (agent_binding_scalar_t *record = group.records; record && record->name; ++record)
        if (snmp_oid_compare(record->oid, record->oid_len, vb->name, vb->name_length) == 0)
            return record;
    return nullptr;
}

// One SET's walk through the group's state machine.
class SetPhases {
public:
    SetPhases(const SettableGroup &group, std::source_location where) : group_(group), where_(where) {}

    void moveTo(int32_t next)
    {
        ORV3_TRACE_AT(group_.handlerName, where_, group_.name, "Handler state change from %s to %s\n",
                      getHandlerStateName(*group_.state), getHandlerStateName(next));
        *group_.state = next;
    }

    // Releases what a SET holds, whatever failed: the state returns to 0
    // and no variable list (nor, for a locking group, lock) is left behind.
    void end(int &status)
    {
        *group_.validateStatus = 0;
        moveTo(0);
        int32_t word = 0;
        if (*group_.vars) {
            if (quel_dm_DeleteVarList(*group_.vars, g_coHandle, 0, 0, &word) != 0)
                status = SNMP_ERR_GENERR;
            *group_.vars = nullptr;
        }
        // A lock still held here belongs to a SET that ended before its
        // COMMIT (an UNDO or FREE after ACTION): keeping it would refuse
        // every later SET of the group.
        if (group_.lock && *group_.lock) {
            quel_dm_UnlockNamespaces(*group_.lock, g_coHandle, &word);
            *group_.lock = nullptr;
        }
    }

    // Locks the namespaces, then validates the list (locking groups unlock
    // again at once when the validation fails).
    void lockAndValidate(netsnmp_request_info *request)
    {
        if (group_.lock && quel_dm_LockNamespaces(group_.namespaces, g_coHandle, group_.lock) != 0)
            netsnmp_request_set_error(request, SNMP_ERR_GENERR);
        int32_t word = 0;
        *group_.validateStatus = quel_dm_ValidateVars(*group_.vars, g_coHandle, 0, 0, &word);
        if (group_.lock && *group_.validateStatus != 0 && *group_.lock) {
            if (quel_dm_UnlockNamespaces(*group_.lock, g_coHandle, &word) != 0)
                netsnmp_request_set_error(request, SNMP_ERR_GENERR);
            *group_.lock = nullptr;
        }
    }

    void commit(netsnmp_request_info *request, int &status)
    {
        int32_t word = 0;
        if (quel_dm_UpdateVars(*group_.vars, g_coHandle, 0, 0, &word) != 0) {
            status = SNMP_ERR_GENERR;
            netsnmp_request_set_error(request, SNMP_ERR_GENERR);
        }
        if (group_.lock && *group_.lock) {
            ORV3_TRACE_AT(group_.handlerName, where_, group_.name, "handler: unlocking NS\n");
            if (quel_dm_UnlockNamespaces(*group_.lock, g_coHandle, &word) != 0) {
                status = SNMP_ERR_GENERR;
                netsnmp_request_set_error(request, SNMP_ERR_GENERR);
            }
            *group_.lock = nullptr;
        }
    }

private:
    const SettableGroup &group_;
    std::source_location where_;
};

void answer(netsnmp_request_info *request, const agent_binding_scalar_t *record)
{
    uint32_t size = *record->mib_cursize < record->mib_maxsize ? *record->mib_cursize : record->mib_maxsize;
    snmp_set_var_typed_value(request->requestvb, static_cast<u_char>(record->asn_type), record->mib_value, size);
}

} // namespace

int commitRowOfGroup(const char *routine, const char *token, const char *rowPathFormat, quel_dm_varlist_t vars,
                     int requestId, orv3_row_head_t *row, std::source_location where)
{
    if (!vars)
        return SNMP_ERR_GENERR;
    char rowPath[256];
    snprintf(rowPath, sizeof rowPath, rowPathFormat, static_cast<long>(row->index));
    ORV3_TRACE_AT(routine, where, token, "sRow = %s\n", rowPath);
    row->last_request_id = requestId;
    return 0;
}

int settableGroupHandler(const SettableGroup &group, netsnmp_agent_request_info *reqinfo,
                         netsnmp_request_info *requests, std::source_location where)
{
    SetPhases phases(group, where);
    int status = 0;
    const int mode = reqinfo->mode;
    for (netsnmp_request_info *request = requests; request; request = request->next) {
        if (request->processed)
            continue;
        ORV3_TRACE_AT(group.handlerName, where, group.name, "%s: reqmode = %d-%s State %s\n", group.handlerName, mode,
                      getSNMPModeName(mode), getHandlerStateName(*group.state));
        agent_binding_scalar_t *record = findRecord(group, request->requestvb);
        if (!record) {
            status = SNMP_ERR_NOSUCHNAME;
            continue;
        }
        netsnmp_variable_list *vb = request->requestvb;
        switch (mode) {
        case MODE_GET:
            status = record->get_fn ? record->get_fn(record, -1) : group.read(group.name, record, -1);
            if (status != 0)
                netsnmp_request_set_error(request, status);
            else
                answer(request, record);
            break;

        case MODE_SET_RESERVE1:
            if (*group.state >= 2) {
                ORV3_TRACE_AT(group.handlerName, where, group.name, "%s: Unexpected state %d for MODE_RESERVE1\n",
                              group.handlerName, *group.state);
                break;
            }
            if (!record->validate_fn) {
                netsnmp_request_set_error(request, SNMP_ERR_READONLY);
            } else {
                status = record->validate_fn(record, vb);
                if (status != 0)
                    netsnmp_request_set_error(request, status);
            }
            phases.moveTo(1);
            break;

        case MODE_SET_RESERVE2: {
            if (*group.state == 1) {
                phases.moveTo(2);
                int32_t word = 0;
                if (quel_dm_GetUpdatableVars("myCfgVars", g_coHandle, 0, 0, group.namespaces, group.vars, &word) != 0) {
                    status = SNMP_ERR_GENERR;
                    netsnmp_request_set_error(request, SNMP_ERR_GENERR);
                    break;
                }
            } else if (*group.state != 2) {
                ORV3_TRACE_AT(group.handlerName, where, group.name, "handler: Unexpected state %d for RESERVE2!\n",
                              *group.state);
                break;
            }
            if (*group.vars) {
                copyText(record->requester, sizeof record->requester, kRequester, sizeof kRequester);
                status = record->set_fn ? record->set_fn(record, vb, *group.vars)
                                        : update_TIRO_from_varbind_v3(group.name, record, vb, *group.vars);
                if (status != 0) {
                    ORV3_TRACE_AT(group.handlerName, where, group.name, "handler: Failed to set (RESERVE2), %d\n",
                                  status);
                    netsnmp_request_set_error(request, status);
                }
            }
            break;
        }

        case MODE_SET_ACTION:
            if (*group.state == 2) {
                phases.moveTo(3);
                phases.lockAndValidate(request);
            } else if (*group.state != 3) {
                ORV3_TRACE_AT(group.handlerName, where, group.name, "handler: Unexpected state %d for ACTION!\n",
                              *group.state);
            }
            // A rejected list leaves the store as it was: serve the stored value again.
            if (*group.validateStatus != 0 && *group.vars) {
                *record->mib_cursize = record->mib_maxsize;
                int reread = update_binding_from_TIRO_v3(group.name, record, -1);
                if (reread != 0)
                    netsnmp_request_set_error(request, reread);
            }
            break;

        case MODE_SET_COMMIT:
            if (*group.state == 3)
                phases.commit(request, status);
            else if (*group.state != 0)
                ORV3_TRACE_AT(group.handlerName, where, group.name, "handler: Unexpected state %d for COMMIT!\n",
                              *group.state);
            phases.end(status);
            break;

        case MODE_SET_FREE:
        case MODE_SET_UNDO: phases.end(status); break;

        default: break;
        }
    }
    return status;
}

} // namespace orv3

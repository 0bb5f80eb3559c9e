// The agent process's binding routines: they move values between the
// module's bound scalar records and the data manager's variables, read one
// variable as text, and name handler states and SNMP modes for traces.
//
// Reads see the values written through variable lists (variable_store.h);
// writes go into a variable list and reach the store only when the list is
// updated. The two name routines are plain lookups: they are not logged and
// cannot be made to fail.
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include "orv3/agent_binding.h"
#include "platform.h"
#include "variable_lists.h"
#include "variable_store.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

using nlohmann::json;
using orv3::sim::Platform;

namespace {

// The variable a record reads: its store variable, with "%ld" replaced by
// the row for a row of a table (row -1 is a scalar).
std::string recordPath(const char *storeVar, int32_t row)
{
    std::string path = storeVar;
    if (row >= 0)
        if (size_t at = path.find("%ld"); at != std::string::npos)
            path.replace(at, 3, std::to_string(row));
    return path;
}

std::string textOf(const json &value)
{
    return value.is_string() ? value.get<std::string>() : value.dump();
}

int32_t updateBinding(const char *call, agent_binding_scalar_t *rec, int32_t row)
{
    const char *storeVar = rec ? rec->store_var : nullptr;
    if (auto fault = Platform::instance().enter(call, storeVar ? storeVar : ""))
        return fault->result;
    if (!rec || !storeVar || !rec->mib_value || !rec->mib_cursize)
        return SNMP_ERR_GENERR;
    auto value = orv3::sim::readVariable(recordPath(storeVar, row));
    if (!value)
        return SNMP_ERR_GENERR;
    if (rec->store_type == QUEL_DM_TYPE_INT) {
        if (!value->is_number_integer() || rec->mib_maxsize < sizeof(int32_t))
            return SNMP_ERR_GENERR;
        auto number = static_cast<int32_t>(value->get<int64_t>());
        memcpy(rec->mib_value, &number, sizeof number);
        *rec->mib_cursize = sizeof number;
    } else if (rec->store_type == QUEL_DM_TYPE_STRING) {
        if (rec->mib_maxsize == 0)
            return SNMP_ERR_GENERR;
        std::string text = textOf(*value);
        size_t length = std::min<size_t>(text.size(), rec->mib_maxsize - 1);
        auto *buffer = static_cast<char *>(rec->mib_value);
        memcpy(buffer, text.data(), length);
        buffer[length] = '\0';
        *rec->mib_cursize = static_cast<uint32_t>(length);
    } else {
        return SNMP_ERR_GENERR;
    }
    orv3::sim::fillWritten(rec->mib_value, rec->mib_maxsize);
    orv3::sim::fillWritten(rec->mib_cursize);
    return SNMP_ERR_NOERROR;
}

// A C text of at most `capacity` bytes that may lack its terminator.
std::string boundedText(const char *text, size_t capacity)
{
    if (!text)
        return "";
    const void *end = memchr(text, '\0', capacity);
    return std::string(text, end ? static_cast<const char *>(end) - text : capacity);
}

} // namespace

extern "C" {

int32_t update_binding_from_TIRO_v2(const char *, agent_binding_scalar_t *rec, int32_t row)
{
    return updateBinding(__func__, rec, row);
}

int32_t update_binding_from_TIRO_v3(const char *, agent_binding_scalar_t *rec, int32_t row)
{
    return updateBinding(__func__, rec, row);
}

int32_t update_TIRO_from_varbind_v3(const char *, agent_binding_scalar_t *rec, struct variable_list *vb,
                                    quel_dm_varlist_t list)
{
    const char *storeVar = rec ? rec->store_var : nullptr;
    if (auto fault = Platform::instance().enter(__func__, storeVar ? storeVar : ""))
        return fault->result;
    if (!rec || !storeVar || !vb)
        return SNMP_ERR_GENERR;

    std::vector<orv3::sim::VariableWrite> writes;
    if (rec->store_type == QUEL_DM_TYPE_INT) {
        if (vb->type != ASN_INTEGER)
            return SNMP_ERR_WRONGTYPE;
        if (!vb->val.integer)
            return SNMP_ERR_GENERR;
        writes.push_back({storeVar, json(static_cast<int64_t>(*vb->val.integer))});
    } else if (rec->store_type == QUEL_DM_TYPE_STRING) {
        if (vb->type != ASN_OCTET_STR)
            return SNMP_ERR_WRONGTYPE;
        const char *bytes = reinterpret_cast<const char *>(vb->val.string);
        writes.push_back({storeVar, json(boundedText(bytes, bytes ? vb->val_len : 0))});
    } else {
        return SNMP_ERR_GENERR;
    }
    if (rec->user_var)
        writes.push_back({rec->user_var, json(boundedText(rec->requester, sizeof rec->requester))});
    if (!orv3::sim::addPendingWrites(list, std::move(writes)))
        return SNMP_ERR_GENERR;
    return SNMP_ERR_NOERROR;
}

int32_t GetVarValueSTRING(int32_t, quel_dm_co_t, int32_t, int32_t, const char *path, int32_t *status, char *buffer,
                          int32_t size)
{
    int32_t result;
    if (orv3::sim::failedByFault(__func__, path ? path : "", status, result))
        return result;
    if (!path || !buffer || size <= 0)
        return orv3::sim::finish(status, 1, orv3::sim::kBadArgument);
    auto value = orv3::sim::readVariable(path);
    if (!value)
        return orv3::sim::finish(status, 1, orv3::sim::kNoSuchVariable);
    std::string text = textOf(*value);
    size_t length = std::min<size_t>(text.size(), static_cast<size_t>(size) - 1);
    memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    orv3::sim::fillWritten(buffer, static_cast<size_t>(size));
    return orv3::sim::finish(status, 0, orv3::sim::kOk);
}

const char *getHandlerStateName(int32_t state)
{
    switch (state) {
    case 0: return "IDLE";
    case 1: return "RESERVE1_DONE";
    case 2: return "RESERVE2_DONE";
    case 3: return "ACTION_DONE";
    default: return "UNKNOWN";
    }
}

// The agent's request modes: the SET phases, then the PDU types of the reads.
const char *getSNMPModeName(int32_t mode)
{
    switch (mode) {
    case 0: return "MODE_SET_RESERVE1";
    case 1: return "MODE_SET_RESERVE2";
    case 2: return "MODE_SET_ACTION";
    case 3: return "MODE_SET_COMMIT";
    case 4: return "MODE_SET_FREE";
    case 5: return "MODE_SET_UNDO";
    case SNMP_MSG_GET: return "MODE_GET";
    case SNMP_MSG_GETNEXT: return "MODE_GETNEXT";
    case SNMP_MSG_GETBULK: return "MODE_GETBULK";
    default: return "MODE_UNKNOWN";
    }
}

} // extern "C"

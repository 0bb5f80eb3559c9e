// The simulated session manager: the controller's open login sessions, from
// the machine description's "sessions" section. The id list gives every
// session in the order of the description; a session that is not
// describable stays in the list but cannot be described, as one that ended
// between the two calls.
#include "orv3/session_manager.h"
#include "platform.h"

#include <algorithm>
#include <cstring>
#include <string>

using orv3::sim::Platform;

namespace {

// Copies a text into a record field of `width` bytes that starts zeroed: a
// shorter text keeps a terminator after it; a text as long as the field or
// longer is cut to the field's width and has none.
void copyField(char *field, size_t width, const std::string &text)
{
    memcpy(field, text.data(), std::min(text.size(), width));
}

} // namespace

extern "C" {

// Any selector lists all sessions. *count holds the capacity of `ids`; at
// most that many ids are filled and *count becomes their number. Missing
// arguments or a negative capacity: 1 and nothing written. A fault returns
// its result and writes nothing.
int32_t sm_session_get_type_info(uint32_t *selector, int32_t *count, int32_t *ids)
{
    if (auto fault = Platform::instance().enter(__func__, ""))
        return fault->result;
    if (!selector || !count || !ids || *count < 0)
        return 1;
    auto machine = Platform::instance().machine();
    size_t filled = std::min(machine->sessions.size(), static_cast<size_t>(*count));
    for (size_t i = 0; i < filled; ++i)
        ids[i] = machine->sessions[i].id;
    *count = static_cast<int32_t>(filled);
    orv3::sim::fillWritten(ids, filled * sizeof *ids);
    orv3::sim::fillWritten(count);
    return 0;
}

// 1 and the record filled for a describable session; 0 and the record
// untouched for any other id or a missing record. A fault returns its
// result and leaves the record untouched.
int32_t sm_session_get_info(int32_t id, session_manager_info_t *info)
{
    if (auto fault = Platform::instance().enter(__func__, std::to_string(id)))
        return fault->result;
    if (!info)
        return 0;
    auto machine = Platform::instance().machine();
    auto session = std::find_if(machine->sessions.begin(), machine->sessions.end(),
                                [id](const orv3::sim::Session &candidate) { return candidate.id == id; });
    if (session == machine->sessions.end() || !session->describable)
        return 0;
    memset(info, 0, sizeof *info);
    copyField(info->access, sizeof info->access, session->access);
    copyField(info->user_name, sizeof info->user_name, session->user);
    copyField(info->ip_address, sizeof info->ip_address, session->address);
    orv3::sim::fillWritten(info);
    return 1;
}

} // extern "C"

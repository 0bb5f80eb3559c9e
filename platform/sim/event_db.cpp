// The simulated event database: the controller's currently active events,
// from the machine description's "events" section. A handle owns a record
// array built from the events as they are when the handle is taken, so a
// reload of the description does not change an array already handed out.
// The database owns every handle until it is freed: one a caller never
// frees stays here rather than leaking.
#include "orv3/event_db.h"
#include "platform.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_map>

using orv3::sim::Platform;

struct event_db_active_set {
    size_t count = 0;
    // At least one record is allocated, so that even an empty list has an
    // array to point to.
    std::unique_ptr<event_db_active_event_t[]> records;
};

namespace {

// The count is an unsigned 16-bit word: a longer list is cut to its first
// 65535 events.
constexpr size_t kMaxEvents = 65535;
// The message fills the record from its offset to the end, terminator included.
constexpr size_t kMessageCapacity = sizeof(event_db_active_event_t::message);

std::mutex handlesMutex;
std::unordered_map<event_db_active_set *, std::unique_ptr<event_db_active_set>> liveHandles;

std::unique_ptr<event_db_active_set> buildActiveSet(const orv3::sim::Machine &machine)
{
    auto set = std::make_unique<event_db_active_set>();
    set->count = std::min(machine.events.size(), kMaxEvents);
    // Value-initialized: every record starts as zero bytes.
    set->records.reset(new event_db_active_event_t[std::max<size_t>(set->count, 1)]());
    for (size_t i = 0; i < set->count; ++i) {
        const orv3::sim::ActiveEvent &event = machine.events[i];
        event_db_active_event_t &record = set->records[i];
        record.enumLogServ = event.severity;
        size_t length = std::min(event.message.size(), kMessageCapacity - 1);
        memcpy(record.message, event.message.data(), length);
        record.message[length] = '\0';
    }
    return set;
}

// Called with handlesMutex held.
event_db_active_set *findHandle(event_db_handle_t handle)
{
    return liveHandles.count(handle) ? handle : nullptr;
}

} // namespace

extern "C" {

// Any kind lists the active events. A fault makes the call fail, whatever
// its result: no handle, and the count left as it was.
event_db_handle_t CEM_Db_GetActiveEventHandle(int32_t, uint16_t *count)
{
    if (Platform::instance().enter(__func__, ""))
        return nullptr;
    if (!count)
        return nullptr;
    auto set = buildActiveSet(*Platform::instance().machine());
    std::lock_guard lock(handlesMutex);
    *count = static_cast<uint16_t>(set->count);
    event_db_active_set *handle = set.get();
    liveHandles.emplace(handle, std::move(set));
    return handle;
}

// A fault returns its result (1 when it says 0: the records are not given,
// so the call cannot succeed) and leaves the pointer as it was.
int32_t CEM_Db_GetActiveEventList(event_db_handle_t handle, event_db_active_event_t **records)
{
    if (auto fault = Platform::instance().enter(__func__, ""))
        return fault->result != 0 ? fault->result : 1;
    std::lock_guard lock(handlesMutex);
    event_db_active_set *set = findHandle(handle);
    if (!set || !records)
        return 1;
    *records = set->records.get();
    orv3::sim::fillWritten(set->records.get(), set->count * sizeof(event_db_active_event_t));
    return 0;
}

// A fault returns its result, but the handle is released all the same: the
// caller does not look at the result, and a failed release must not keep
// the array alive.
int32_t CEM_Db_FreeActiveEventHandle(event_db_handle_t handle)
{
    auto fault = Platform::instance().enter(__func__, "");
    std::lock_guard lock(handlesMutex);
    event_db_active_set *set = findHandle(handle);
    if (set)
        liveHandles.erase(set);
    if (fault)
        return fault->result;
    return set ? 0 : 1;
}

} // extern "C"

// Namespace locks of the simulated data manager. A lock holds namespaces
// against other locks: a namespace cannot be locked while another live lock
// holds it, a namespace below it, or one above it. Locks exclude only each
// other; reads and variable lists go on as before.
#include "orv3/data_manager.h"
#include "platform.h"
#include "variable_store.h"

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

using orv3::sim::Platform;

struct quel_dm_lock {
    std::vector<std::string> namespaces;
};

namespace {

// Locks handed out and not yet released, owned here: one the caller never
// releases keeps its namespaces held, as it would on the controller; one
// the caller hands back is released even when the unlock reports a failure.
std::mutex locksMutex;
std::unordered_map<quel_dm_lock *, std::unique_ptr<quel_dm_lock>> liveLocks;

bool overlaps(const std::string &a, const std::string &b)
{
    return orv3::sim::inNamespace(a, b) || orv3::sim::inNamespace(b, a);
}

// Called with locksMutex held.
bool heldByAnother(const std::vector<std::string> &wanted)
{
    for (const auto &[handle, lock] : liveLocks)
        for (const std::string &held : lock->namespaces)
            for (const std::string &ns : wanted)
                if (overlaps(held, ns))
                    return true;
    return false;
}

} // namespace

extern "C" {

// No status word: a refused lock is told by the result alone.
int32_t quel_dm_LockNamespaces(const char *const *namespaces, quel_dm_co_t, quel_dm_lock_t *lock)
{
    orv3::sim::NamespaceList names = orv3::sim::readNamespaces(namespaces);
    if (auto fault = Platform::instance().enter(__func__, orv3::sim::joinNamespaces(names.names)))
        return fault->result;
    if (!names.usable || !lock)
        return 1;
    std::lock_guard guard(locksMutex);
    if (heldByAnother(names.names))
        return 1;
    auto created = std::make_unique<quel_dm_lock>(quel_dm_lock{std::move(names.names)});
    *lock = created.get();
    liveLocks.emplace(created.get(), std::move(created));
    return 0;
}

// An unlock takes the handle back whatever it answers: a caller that is told
// the unlock failed has no better use for the handle than to drop it, so a
// failing unlock (a fault) reports its failure but the store releases the
// namespaces all the same. Kept held, they would refuse every later lock of
// them until the agent restarts.
int32_t quel_dm_UnlockNamespaces(quel_dm_lock_t handle, quel_dm_co_t, int32_t *status)
{
    std::lock_guard guard(locksMutex);
    quel_dm_lock *lock = liveLocks.count(handle) ? handle : nullptr;
    const std::string key = lock ? orv3::sim::joinNamespaces(lock->namespaces) : "";
    if (lock)
        liveLocks.erase(lock);
    int32_t result;
    if (orv3::sim::failedByFault(__func__, key, status, result))
        return result;
    if (!lock)
        return orv3::sim::finish(status, 1, orv3::sim::kBadHandle);
    return orv3::sim::finish(status, 0, orv3::sim::kOk);
}

} // extern "C"

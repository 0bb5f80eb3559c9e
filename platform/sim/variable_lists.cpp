// Variable lists of the simulated data manager: a list covers the store
// variables of its namespaces (each variable whose path is a namespace or
// lies below one; every namespace must hold at least one) and holds the writes that the agent-process routines put
// into it. Validation checks the writes against the variables' accepted
// values and ranges; an update checks them again and applies them all, or
// none, so the store never takes a rejected value.
#include "variable_lists.h"

#include "orv3/data_manager.h"
#include "platform.h"

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

using orv3::sim::failedByFault;
using orv3::sim::finish;
using orv3::sim::Platform;
using orv3::sim::VariableWrite;

struct quel_dm_varlist {
    std::string name;
    std::vector<std::string> namespaces;
    std::vector<VariableWrite> writes; // in the order they were added
};

namespace {

// Lists the store has handed out and not yet deleted, owned here: one the
// caller never deletes stays in the store, as it would on the controller.
std::mutex listsMutex;
std::unordered_map<quel_dm_varlist *, std::unique_ptr<quel_dm_varlist>> liveLists;

// Called with listsMutex held.
quel_dm_varlist *findList(quel_dm_varlist_t list)
{
    return liveLists.count(list) ? list : nullptr;
}

// A namespace exists when the description has a table or variable in it.
bool holdsSomething(const orv3::sim::Machine &machine, const std::string &ns)
{
    for (const auto &[path, entry] : machine.store.items())
        if (orv3::sim::inNamespace(path, ns))
            return true;
    return false;
}

int32_t createList(std::string_view call, const char *listName, const char *const *namespaces, quel_dm_varlist_t *list,
                   int32_t *status)
{
    orv3::sim::NamespaceList names = orv3::sim::readNamespaces(namespaces);
    int32_t result;
    if (failedByFault(call, orv3::sim::joinNamespaces(names.names), status, result))
        return result;
    if (!names.usable || !list)
        return finish(status, 1, orv3::sim::kBadArgument);
    auto machine = Platform::instance().machine();
    for (const std::string &ns : names.names)
        if (!holdsSomething(*machine, ns))
            return finish(status, 1, orv3::sim::kNoSuchNamespace);
    auto created = std::make_unique<quel_dm_varlist>();
    created->name = listName ? listName : "";
    created->namespaces = std::move(names.names);
    std::lock_guard lock(listsMutex);
    *list = created.get();
    liveLists.emplace(created.get(), std::move(created));
    return finish(status, 0, orv3::sim::kOk);
}

// Runs `action` on a list the store handed out, after the call's fault
// check (keyed by what `keyOf` tells of the list); any other list fails as
// an invalid handle.
template <class Key, class Action>
int32_t onList(std::string_view call, quel_dm_varlist_t handle, int32_t *status, Key keyOf, Action action)
{
    std::lock_guard lock(listsMutex);
    quel_dm_varlist *list = findList(handle);
    int32_t result;
    if (failedByFault(call, list ? keyOf(*list) : "", status, result))
        return result;
    if (!list)
        return finish(status, 1, orv3::sim::kBadHandle);
    int32_t word = action(*list);
    return finish(status, word == orv3::sim::kOk ? 0 : 1, word);
}

// The calls that check or apply a list's writes are keyed by the writes,
// the call that deletes it by its namespaces.
std::string writesOf(const quel_dm_varlist &list)
{
    return orv3::sim::describeWrites(list.writes);
}

std::string namespacesOf(const quel_dm_varlist &list)
{
    return orv3::sim::joinNamespaces(list.namespaces);
}

} // namespace

namespace orv3::sim {

bool addPendingWrites(quel_dm_varlist_t handle, std::vector<VariableWrite> writes)
{
    std::lock_guard lock(listsMutex);
    quel_dm_varlist *list = findList(handle);
    if (!list)
        return false;
    for (VariableWrite &write : writes)
        list->writes.push_back(std::move(write));
    return true;
}

} // namespace orv3::sim

extern "C" {

int32_t quel_dm_GetVars(const char *list_name, quel_dm_co_t, int32_t, int32_t, const char *const *namespaces,
                        quel_dm_varlist_t *list, int32_t *status)
{
    return createList(__func__, list_name, namespaces, list, status);
}

int32_t quel_dm_GetUpdatableVars(const char *list_name, quel_dm_co_t, int32_t, int32_t, const char *const *namespaces,
                                 quel_dm_varlist_t *list, int32_t *status)
{
    return createList(__func__, list_name, namespaces, list, status);
}

int32_t quel_dm_ValidateVars(quel_dm_varlist_t list, quel_dm_co_t, int32_t, int32_t, int32_t *status)
{
    return onList(__func__, list, status, writesOf,
                  [](quel_dm_varlist &vars) { return orv3::sim::checkWrites(vars.writes, vars.namespaces); });
}

int32_t quel_dm_UpdateVars(quel_dm_varlist_t list, quel_dm_co_t, int32_t, int32_t, int32_t *status)
{
    return onList(__func__, list, status, writesOf,
                  [](quel_dm_varlist &vars) { return orv3::sim::applyWrites(vars.writes, vars.namespaces); });
}

int32_t quel_dm_DeleteVarList(quel_dm_varlist_t handle, quel_dm_co_t, int32_t, int32_t, int32_t *status)
{
    return onList(__func__, handle, status, namespacesOf, [](quel_dm_varlist &vars) {
        liveLists.erase(&vars);
        return orv3::sim::kOk;
    });
}

} // extern "C"

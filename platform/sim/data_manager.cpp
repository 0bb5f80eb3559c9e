// The simulated data manager's tables: row bindings and row counts over the
// machine description's "store" section, addressed by namespace path. A
// table is an array of row objects; a row's variable "str/reading" is looked
// up as that key or as the nested object path str -> reading. Single
// variables are in variable_store.cpp, variable lists in variable_lists.cpp
// and namespace locks in namespace_locks.cpp.
#include "orv3/data_manager.h"
#include "platform.h"
#include "variable_store.h"

#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>

using nlohmann::json;
using orv3::sim::Platform;

struct quel_dm_connection {
    int unused;
};

struct quel_dm_binding {
    std::string ns;
    quel_dm_column_binding_t *columns;
    std::shared_ptr<const orv3::sim::Machine> snapshot; // rows stay stable while a binding walks them
    size_t nextRow;
};

namespace {

quel_dm_connection theConnection;
// Bindings the store has handed out and not yet freed, owned here: one the
// caller abandons (after a failed free) stays in the store, as it would on
// the controller.
std::unordered_map<quel_dm_binding *, std::unique_ptr<quel_dm_binding>> liveBindings;

// Bound columns are read up to the end marker, and never past this many,
// so that a binding table without one cannot run away.
constexpr int kMaxColumns = 1024;

using orv3::sim::failedByFault;
constexpr auto fail = orv3::sim::finish;

const json *findTable(const orv3::sim::Machine &machine, const char *ns)
{
    auto found = machine.store.find(ns);
    if (found == machine.store.end() || !found->is_array())
        return nullptr;
    return &*found;
}

// Fills the holders of one row. A variable the row lacks reads 0 or "".
int32_t fillHolders(const json &row, quel_dm_column_binding_t *columns)
{
    for (int i = 0; i < kMaxColumns && columns[i].type != QUEL_DM_TYPE_END; ++i) {
        const quel_dm_column_binding_t &column = columns[i];
        if (!column.holder || !column.var_name)
            return orv3::sim::kBadArgument;
        const json *value = orv3::sim::findRowVariable(row, column.var_name);
        if (column.type == QUEL_DM_TYPE_INT) {
            int32_t number = 0;
            if (value && value->is_number())
                number = static_cast<int32_t>(value->get<int64_t>());
            else if (value && value->is_boolean())
                number = value->get<bool>() ? 1 : 0;
            else if (value && !value->is_null())
                return orv3::sim::kTypeMismatch;
            memcpy(column.holder, &number, sizeof number);
            orv3::sim::fillWritten(column.holder, sizeof number);
        } else if (column.type == QUEL_DM_TYPE_STRING) {
            auto *holder = static_cast<quel_dm_string_holder_t *>(column.holder);
            if (!holder->buffer || holder->capacity <= 0)
                return orv3::sim::kBadArgument;
            std::string text;
            if (value && value->is_string())
                text = value->get<std::string>();
            else if (value && value->is_number())
                text = value->dump();
            else if (value && !value->is_null())
                return orv3::sim::kTypeMismatch;
            // Filled up to the capacity, terminator included.
            size_t length = std::min(text.size(), static_cast<size_t>(holder->capacity) - 1);
            memcpy(holder->buffer, text.data(), length);
            holder->buffer[length] = '\0';
            orv3::sim::fillWritten(holder->buffer, static_cast<size_t>(holder->capacity));
        } else {
            return orv3::sim::kBadArgument;
        }
    }
    return orv3::sim::kOk;
}

int32_t readRow(quel_dm_binding *binding, int32_t *status)
{
    const json *rows = findTable(*binding->snapshot, binding->ns.c_str());
    if (!rows || binding->nextRow >= rows->size())
        return fail(status, 1, orv3::sim::kNoMoreRows);
    int32_t word = fillHolders((*rows)[binding->nextRow], binding->columns);
    ++binding->nextRow;
    return word == orv3::sim::kOk ? fail(status, 0, word) : fail(status, 1, word);
}

// Runs `action` on a binding the store handed out, after the call's fault
// check; any other handle fails as invalid.
template <class Action>
int32_t onBinding(std::string_view call, quel_dm_binding_t handle, int32_t *status, Action action)
{
    quel_dm_binding *binding = liveBindings.count(handle) ? handle : nullptr;
    int32_t result;
    if (failedByFault(call, binding ? binding->ns : "", status, result))
        return result;
    if (!binding)
        return fail(status, 1, orv3::sim::kBadHandle);
    return action(*binding);
}

} // namespace

extern "C" {

quel_dm_co_t g_coHandle = &theConnection;

int32_t quel_dm_BindRow(int32_t, const char *ns, quel_dm_co_t, int32_t, int32_t, quel_dm_column_binding_t *columns,
                        quel_dm_binding_t *handle, int32_t *status)
{
    int32_t result;
    if (failedByFault(__func__, ns ? ns : "", status, result))
        return result;
    if (!ns || !columns || !handle)
        return fail(status, 1, orv3::sim::kBadArgument);
    auto machine = Platform::instance().machine();
    if (!findTable(*machine, ns))
        return fail(status, 1, orv3::sim::kNoSuchNamespace);
    auto binding = std::make_unique<quel_dm_binding>(quel_dm_binding{ns, columns, machine, 0});
    *handle = binding.get();
    liveBindings.emplace(binding.get(), std::move(binding));
    return fail(status, 0, orv3::sim::kOk);
}

int32_t quel_dm_GetFirstRow(quel_dm_binding_t handle, quel_dm_co_t, int32_t, int32_t, int32_t *status)
{
    return onBinding(__func__, handle, status, [status](quel_dm_binding &binding) {
        // Each walk of a binding sees the description as it is now.
        binding.snapshot = Platform::instance().machine();
        binding.nextRow = 0;
        return readRow(&binding, status);
    });
}

int32_t quel_dm_GetNextRow(quel_dm_binding_t handle, quel_dm_co_t, int32_t, int32_t, int32_t *status)
{
    return onBinding(__func__, handle, status,
                     [status](quel_dm_binding &binding) { return readRow(&binding, status); });
}

int32_t quel_dm_FreeBinding(quel_dm_binding_t handle, int32_t *status)
{
    return onBinding(__func__, handle, status, [status](quel_dm_binding &binding) {
        liveBindings.erase(&binding);
        return fail(status, 0, orv3::sim::kOk);
    });
}

int32_t quel_dm_GetRowCount(const char *ns, quel_dm_co_t, int32_t, int32_t, int32_t *count, int32_t *status)
{
    if (auto fault = Platform::instance().enter(__func__, ns ? ns : "")) {
        // A fault may hand out a count along with its failure.
        if (fault->count && count)
            *count = *fault->count;
        return fail(status, fault->result, fault->status);
    }
    if (!ns || !count)
        return fail(status, 1, orv3::sim::kBadArgument);
    auto machine = Platform::instance().machine();
    const json *rows = findTable(*machine, ns);
    if (!rows)
        return fail(status, 1, orv3::sim::kNoSuchNamespace);
    *count = static_cast<int32_t>(rows->size());
    orv3::sim::fillWritten(count);
    return fail(status, 0, orv3::sim::kOk);
}

const char *quel_dm_GetVarListErrorStr(int32_t status)
{
    Platform::instance().enter(__func__, std::to_string(status));
    return orv3::sim::statusWordText(status);
}

} // extern "C"

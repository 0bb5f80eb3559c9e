#include "variable_store.h"

#include "platform.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <mutex>

namespace orv3::sim {

using nlohmann::json;

namespace {

// Values written through variable lists, over the description they were
// written to. A reloaded description is a new object: the values written
// over the old one are dropped as soon as it is seen.
struct WrittenValues {
    std::mutex mutex;
    std::shared_ptr<const Machine> basis;
    std::map<std::string, json> values;

    // Called with the mutex held.
    void follow(const std::shared_ptr<const Machine> &machine)
    {
        if (basis != machine) {
            values.clear();
            basis = machine;
        }
    }
};

WrittenValues &written()
{
    static WrittenValues values;
    return values;
}

// "<table>[<index>]/<name>": a variable of one table row.
struct RowPath {
    std::string table;
    int64_t index = 0;
    std::string name;
};

std::optional<RowPath> parseRowPath(const std::string &path)
{
    size_t open = path.find('[');
    if (open == std::string::npos || open == 0)
        return std::nullopt;
    size_t close = path.find(']', open);
    if (close == std::string::npos || close + 2 > path.size() || path[close + 1] != '/')
        return std::nullopt;
    RowPath row;
    const char *first = path.data() + open + 1;
    const char *last = path.data() + close;
    auto [end, error] = std::from_chars(first, last, row.index);
    if (error != std::errc() || end != last)
        return std::nullopt;
    row.table = path.substr(0, open);
    row.name = path.substr(close + 2);
    return row;
}

// A row variable as a single value: the row calls read booleans and numbers
// as integers too.
std::optional<json> rowValue(const json &value)
{
    if (value.is_number_integer() || value.is_string())
        return value;
    if (value.is_number())
        return json(value.get<int64_t>());
    if (value.is_boolean())
        return json(value.get<bool>() ? 1 : 0);
    return std::nullopt;
}

// The description's value of a single variable, written values aside.
std::optional<json> describedValue(const Machine &machine, const std::string &path)
{
    if (auto entry = machine.store.find(path); entry != machine.store.end()) {
        if (entry->is_array())
            return std::nullopt; // a table, not a single variable
        if (entry->is_object())
            return entry->contains("value") ? std::optional<json>((*entry)["value"]) : std::nullopt;
        return *entry;
    }
    auto row = parseRowPath(path);
    if (!row)
        return std::nullopt;
    auto table = machine.store.find(row->table);
    if (table == machine.store.end() || !table->is_array())
        return std::nullopt;
    for (const json &candidate : *table) {
        if (!candidate.is_object())
            continue;
        auto index = candidate.find("index");
        if (index == candidate.end() || !index->is_number_integer() || index->get<int64_t>() != row->index)
            continue;
        const json *value = findRowVariable(candidate, row->name);
        return value ? rowValue(*value) : std::nullopt;
    }
    return std::nullopt;
}

int32_t checkWrite(const Machine &machine, const VariableWrite &write, const std::vector<std::string> &namespaces)
{
    if (std::none_of(namespaces.begin(), namespaces.end(),
                     [&write](const std::string &ns) { return inNamespace(write.path, ns); }))
        return kBadArgument;
    const json &value = write.value;
    const bool integer = value.is_number_integer();
    if (integer ? !fitsInt32(value) : !value.is_string())
        return kValueRejected;

    auto entry = machine.store.find(write.path);
    if (entry == machine.store.end())
        // Not in the description: a new variable takes any value, but the
        // rows of a table are not written through variable lists.
        return parseRowPath(write.path) ? kValueRejected : kOk;
    if (entry->is_array())
        return kValueRejected;
    const json &declared = entry->is_object() ? (*entry)["value"] : *entry;
    if (declared.is_number_integer() != integer)
        return kValueRejected;
    if (!entry->is_object())
        return kOk;
    if (auto accepted = entry->find("accepted"); accepted != entry->end() && accepted->is_array())
        if (std::find(accepted->begin(), accepted->end(), value) == accepted->end())
            return kValueRejected;
    if (auto min = entry->find("min"); min != entry->end() && value.get<int64_t>() < min->get<int64_t>())
        return kValueRejected;
    if (auto max = entry->find("max"); max != entry->end() && value.get<int64_t>() > max->get<int64_t>())
        return kValueRejected;
    return kOk;
}

int32_t checkAll(const Machine &machine, const std::vector<VariableWrite> &writes,
                 const std::vector<std::string> &namespaces)
{
    for (const VariableWrite &write : writes)
        if (int32_t word = checkWrite(machine, write, namespaces); word != kOk)
            return word;
    return kOk;
}

} // namespace

const json *findRowVariable(const json &row, const std::string &name)
{
    if (!row.is_object())
        return nullptr;
    if (auto direct = row.find(name); direct != row.end())
        return &*direct;
    const json *at = &row;
    size_t start = 0;
    while (start <= name.size()) {
        size_t slash = name.find('/', start);
        std::string part = name.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
        if (!at->is_object())
            return nullptr;
        auto next = at->find(part);
        if (next == at->end())
            return nullptr;
        at = &*next;
        if (slash == std::string::npos)
            return at;
        start = slash + 1;
    }
    return nullptr;
}

bool inNamespace(const std::string &path, const std::string &ns)
{
    if (ns.empty() || path.compare(0, ns.size(), ns) != 0)
        return false;
    return path.size() == ns.size() || ns.back() == '/' || path[ns.size()] == '/';
}

NamespaceList readNamespaces(const char *const *namespaces)
{
    NamespaceList list;
    if (!namespaces)
        return list;
    size_t i = 0;
    for (; i < kMaxNamespaces && namespaces[i]; ++i)
        list.names.emplace_back(namespaces[i]);
    list.usable = i < kMaxNamespaces && !list.names.empty() &&
                  std::none_of(list.names.begin(), list.names.end(), [](const std::string &ns) { return ns.empty(); });
    return list;
}

std::string joinNamespaces(const std::vector<std::string> &names)
{
    std::string text;
    for (size_t i = 0; i < names.size(); ++i)
        text.append(i ? "," : "").append(names[i]);
    return text;
}

std::string describeWrites(const std::vector<VariableWrite> &writes)
{
    std::string text;
    for (const VariableWrite &write : writes) {
        if (!text.empty())
            text += ',';
        text += write.path;
        text += '=';
        text += write.value.is_string() ? write.value.get<std::string>() : write.value.dump();
    }
    return text;
}

std::optional<json> readVariable(const std::string &path)
{
    auto machine = Platform::instance().machine();
    WrittenValues &values = written();
    std::lock_guard lock(values.mutex);
    values.follow(machine);
    if (auto found = values.values.find(path); found != values.values.end())
        return found->second;
    return describedValue(*machine, path);
}

int32_t checkWrites(const std::vector<VariableWrite> &writes, const std::vector<std::string> &namespaces)
{
    auto machine = Platform::instance().machine();
    return checkAll(*machine, writes, namespaces);
}

int32_t applyWrites(const std::vector<VariableWrite> &writes, const std::vector<std::string> &namespaces)
{
    auto machine = Platform::instance().machine();
    WrittenValues &values = written();
    std::lock_guard lock(values.mutex);
    values.follow(machine);
    if (int32_t word = checkAll(*machine, writes, namespaces); word != kOk)
        return word;
    for (const VariableWrite &write : writes)
        values.values[write.path] = write.value;
    return kOk;
}

} // namespace orv3::sim

// The data manager's single variables: what a read answers and what a write
// may change.
//
// A variable is read from the values written through variable lists first,
// then from the machine description: a plain integer or text of "store", the
// "value" of a variable object ({"value", "accepted", "min", "max"}), or a
// variable of a table row named "<table>[<index>]/<name>" (the row whose
// "index" is <index>). Written values live in memory only, until the
// description file is reloaded after a change: from then on the file is the
// truth again for every variable.
#pragma once

#include "machine.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orv3::sim {

// A value to write: an integer or a text.
struct VariableWrite {
    std::string path;
    nlohmann::json value;
};

// The variable `name` of a table row: the key itself, or the nested path
// ("str/reading" as str -> reading). Null when the row lacks it.
const nlohmann::json *findRowVariable(const nlohmann::json &row, const std::string &name);

// True when `path` is `ns` or lies below it ("ns/...").
bool inNamespace(const std::string &path, const std::string &ns);

// A caller's null-terminated array of namespace paths. `usable` is false
// for a null or empty array, an empty path, or an array that does not end
// within kMaxNamespaces entries; `names` holds what was read either way.
struct NamespaceList {
    std::vector<std::string> names;
    bool usable = false;
};
constexpr size_t kMaxNamespaces = 256;
NamespaceList readNamespaces(const char *const *namespaces);
// The paths joined with ",": the call-log key of the calls that take them.
std::string joinNamespaces(const std::vector<std::string> &names);

// "path=value" of each write, joined with ",": the call-log key of the
// calls that check or apply them.
std::string describeWrites(const std::vector<VariableWrite> &writes);

// The variable's value as served now (an integer or a text), or nothing
// when there is no such single variable.
std::optional<nlohmann::json> readVariable(const std::string &path);

// Checks every write against the variables' kinds and constraints in the
// current description. Returns the status word of the first refused write
// (kBadArgument for a path outside `namespaces`, kValueRejected for a value
// the variable does not take), or kOk.
int32_t checkWrites(const std::vector<VariableWrite> &writes, const std::vector<std::string> &namespaces);

// Checks the writes as checkWrites does and, only when all pass, makes them
// what later reads answer. Returns the status word.
int32_t applyWrites(const std::vector<VariableWrite> &writes, const std::vector<std::string> &namespaces);

} // namespace orv3::sim

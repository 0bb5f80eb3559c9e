// Settable scalar groups: scalars bound to data-store variables, with the
// agent's SET phases mapped onto the data manager's variable lists.
//
// A group (voltage, temperature, leds) declares bound records ending with a
// record whose name is null, and keeps its state in module-wide objects
// named after it. The handler runs one small state machine per group:
//
//   0 idle --RESERVE1--> 1 --RESERVE2--> 2 --ACTION--> 3 --COMMIT/FREE/UNDO--> 0
//
// RESERVE2 takes an updatable variable list for the group's namespaces and
// puts each varbind's value into it, ACTION validates the list once for the
// whole SET (a further varbind in state 3 reuses the result), COMMIT
// updates the store. The agent delivers the phases of one SET at a time,
// so one state per group is enough.
#pragma once

#include "netsnmp.h"
#include "orv3/agent_binding.h"
#include "row_table.h"

#include <source_location>

namespace orv3 {

struct SettableGroup {
    const char *name;        // registration name and debug token, e.g. "voltage"
    const char *handlerName; // e.g. "voltage_handler"
    agent_binding_scalar_t *records;
    int32_t *state;                // e.g. voltageHandlerState
    quel_dm_varlist_t *vars;       // e.g. pvoltageVars
    int32_t *validateStatus;       // e.g. voltageVarListValidateStatus
    const char *const *namespaces; // e.g. as_voltageVarsToUpdate
    quel_dm_lock_t *lock;          // namespace lock (leds), or null for groups that do not lock
    // How a GET reads a record that has no get_fn of its own: the settable
    // groups use the v3 routine, the read-only VPD group the v2 one.
    int32_t (*read)(const char *token, agent_binding_scalar_t *record, int32_t row) = update_binding_from_TIRO_v3;
};

// Registers every record, and traces "Registering <group> variables" and one
// OK/failed line per record: INTEGER records as long instances, writable or
// read-only; OCTET STRING records as read-only instances of mib_maxsize
// bytes, answered by the handler alone.
void registerSettableGroup(const char *routine, const SettableGroup &group, bool writable,
                           Netsnmp_Node_Handler *handler, std::source_location where = std::source_location::current());

int settableGroupHandler(const SettableGroup &group, netsnmp_agent_request_info *reqinfo,
                         netsnmp_request_info *requests, std::source_location where = std::source_location::current());

// The commit routine of a table that belongs with a settable group
// (voltTable, tempTable, allLEDsTable): while the group holds an updatable
// list, names the row's store path (`rowPathFormat` with the row's index)
// and records the request on the row; it writes nothing to the store.
// Without a list it answers genErr.
int commitRowOfGroup(const char *routine, const char *token, const char *rowPathFormat, quel_dm_varlist_t vars,
                     int requestId, orv3_row_head_t *row, std::source_location where = std::source_location::current());

// The requester recorded with every write to the store.
constexpr char kRequester[] = "SNMPv1";

} // namespace orv3

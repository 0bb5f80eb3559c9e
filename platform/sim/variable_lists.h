// Variable lists of the simulated data manager, as the agent-process
// routines fill them.
#pragma once

#include "orv3/data_manager.h"
#include "variable_store.h"

#include <vector>

namespace orv3::sim {

// Adds writes, in order, to a list the store handed out and has not yet
// deleted. False (and nothing added) for any other list.
bool addPendingWrites(quel_dm_varlist_t list, std::vector<VariableWrite> writes);

} // namespace orv3::sim

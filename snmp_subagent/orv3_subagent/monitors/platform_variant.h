// The platform variants the agent's environment selects: ORV_FAMILY,
// ORV_CODENAME and PLATFLAGS, as the controller sets them.
#pragma once

#include <source_location>

namespace orv3 {

// True on the blade and dense chassis families ("sorvinel", "tamberlow",
// "plintaber", exactly), which have no power-supply or budget objects.
bool isFamilyWithoutPower();

// isFamilyWithoutPower(), told in the trace: `routine` then traces
// "<routine>: sorvinel or tamberlow or plintaber server not be currently
// supported." under `token`.
bool familyWithoutPower(const char *routine, const char *token,
                        std::source_location where = std::source_location::current());

// True when PLATFLAGS is set and, read as a hexadecimal number, has a bit of `mask`.
bool platformFlagSet(unsigned long mask);

// True when ORV_CODENAME begins with `prefix`, in any case.
bool codenameStartsWith(const char *prefix);

} // namespace orv3

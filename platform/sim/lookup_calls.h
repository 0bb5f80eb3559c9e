// The lookup calls of the RAID link library and the inventory database: a
// call that finds one described item by its key and writes it for the
// caller. Both libraries answer them alike, so that a fault, an unknown key
// and a block that cannot be had fail the same way in every such call.
#pragma once

#include "platform.h"

#include <cstdint>
#include <string_view>
#include <type_traits>

namespace orv3::sim {

// What the library's calls return.
struct LookupResults {
    int32_t fail;
    int32_t success;
};

// Enters `call` with `key`: a fault returns its result and writes nothing.
// Otherwise `find` picks the item from the machine, null when there is none
// to answer with (the call fails), and `write` writes it for the caller;
// a `write` that returns false (a block it could not have) fails the call.
template <class Find, class Write>
int32_t answerLookup(std::string_view call, std::string_view key, LookupResults results, Find find, Write write)
{
    Entered entered = enter(call, key);
    if (entered.fault)
        return entered.fault->result;
    const auto *item = find(*entered.machine);
    if (!item)
        return results.fail;
    if constexpr (std::is_void_v<decltype(write(*item))>) {
        write(*item);
        return results.success;
    } else {
        return write(*item) ? results.success : results.fail;
    }
}

} // namespace orv3::sim

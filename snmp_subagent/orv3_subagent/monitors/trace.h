// Debug traces of the module.
//
// A trace line is two net-snmp debug outputs: a "trace" header naming the
// routine, source file and line, then the message under the group's own
// token (its registration name, e.g. "fanTable"). Both are skipped unless
// the agent runs with debugging on, so the arguments cost nothing otherwise.
#pragma once

#include "netsnmp.h"

#include <source_location>

namespace orv3 {

void traceLine(const char *routine, const char *file, int line, const char *token, const char *format, ...)
    __attribute__((format(printf, 5, 6)));

} // namespace orv3

// Trace from the routine that is running.
#define ORV3_TRACE(token, ...)                                                                                         \
    do {                                                                                                               \
        if (snmp_get_do_debugging())                                                                                   \
            ::orv3::traceLine(__func__, __FILE__, __LINE__, token, __VA_ARGS__);                                       \
    } while (0)

// Trace from shared code on behalf of an exported routine: `where` is the
// place in the group's own file that called the shared code.
#define ORV3_TRACE_AT(routine, where, token, ...)                                                                      \
    do {                                                                                                               \
        if (snmp_get_do_debugging())                                                                                   \
            ::orv3::traceLine(routine, (where).file_name(), static_cast<int>((where).line()), token, __VA_ARGS__);     \
    } while (0)

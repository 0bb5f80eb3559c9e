// The one place that includes net-snmp's headers: their order matters and
// their macros should not leak further than the module's own sources.
#pragma once

// clang-format off
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>
// clang-format on

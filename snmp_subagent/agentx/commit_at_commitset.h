// Makes a SET that the store refuses fail through AgentX as it fails in
// snmpd itself.
//
// The monitors module writes the store in the COMMIT phase and reports a
// refused write there. snmpd answers a SET only after COMMIT, so the
// manager sees the refusal. A subagent runs COMMIT when the master sends
// CleanupSet, which comes after the master has already answered the
// manager and has no answer of its own: the refusal would be lost. Handlers
// injected by injectCommitAtCommitSet therefore run COMMIT for the whole
// SET as soon as the last of its registrations has passed ACTION, inside
// the master's CommitSet, whose answer the master does wait for; the
// later CleanupSet then finds the work done. What AgentX cannot carry
// stays different: the master names a varbind of a failed CommitSet, the
// first of the part that failed (error index 1 or more), where snmpd gives
// a failed COMMIT index 0. The master sends a SET one registration at a
// time, so each part commits once it has passed ACTION.
#pragma once

// net-snmp's headers, in the order they need.
// clang-format off
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>
// clang-format on

namespace orv3::agentx {

// Injects the handler at the head of every registration below `root` of the
// default context; returns how many registrations it went into.
size_t injectCommitAtCommitSet(const oid *root, size_t rootLength);

} // namespace orv3::agentx

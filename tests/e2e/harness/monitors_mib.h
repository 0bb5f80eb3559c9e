// ORV3-MONITORS-MIB as net-snmp's parser reads it, for tests that compare
// what the agent serves with what the MIB declares.
#pragma once

#include "harness/oids.h"
#include "harness/snmp_client.h"

#include <net-snmp/library/parse.h>

#include <stdexcept>
#include <vector>

#ifndef ORV3_BASE_MIBS_DIR
#define ORV3_BASE_MIBS_DIR ORV3_SOURCE_DIR "/.deps/node_modules/net-snmp/lib/mibs"
#endif

namespace orv3::test {

// The MIB's node of the monitors root, the module loaded with the base
// modules it imports. Throws std::runtime_error when the MIB does not load
// or has no such node.
inline struct tree *monitorsMibSubtree()
{
    initSnmpLibrary();
    add_mibdir(ORV3_BASE_MIBS_DIR);
    add_mibdir(ORV3_SOURCE_DIR "/mibs");
    if (!read_module("ORV3-MONITORS-MIB"))
        throw std::runtime_error("ORV3-MONITORS-MIB did not load");
    std::vector<oid> root;
    for (unsigned long arc : oidParse(kMonitorsRoot))
        root.push_back(arc);
    struct tree *monitors = get_tree(root.data(), root.size(), get_tree_head());
    if (!monitors)
        throw std::runtime_error("the MIB has no monitors subtree");
    return monitors;
}

} // namespace orv3::test

// Everything the agent serves is named by the project's MIB: every OID a
// walk of the sample machine answers resolves to a scalar or a column of
// ORV3-MONITORS-MIB, and the answer's ASN type matches the object's SYNTAX.
#include "harness/agent.h"
#include "harness/oids.h"

#include <net-snmp/library/parse.h>

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <vector>

#ifndef ORV3_BASE_MIBS_DIR
#define ORV3_BASE_MIBS_DIR ORV3_SOURCE_DIR "/.deps/node_modules/net-snmp/lib/mibs"
#endif

namespace orv3::test {
namespace {

struct tree *loadProjectMib()
{
    initSnmpLibrary();
    add_mibdir(ORV3_BASE_MIBS_DIR);
    add_mibdir(ORV3_SOURCE_DIR "/mibs");
    return read_module("ORV3-MONITORS-MIB");
}

// The wire types an object of each MIB SYNTAX may be answered with.
bool syntaxAllows(int mibType, unsigned char wireType)
{
    switch (mibType) {
    case TYPE_INTEGER:
    case TYPE_INTEGER32: return wireType == ASN_INTEGER;
    case TYPE_GAUGE:
    case TYPE_UNSIGNED32: return wireType == ASN_GAUGE;
    case TYPE_OCTETSTR: return wireType == ASN_OCTET_STR;
    case TYPE_OBJID: return wireType == ASN_OBJECT_ID;
    default: return false;
    }
}

// Walks the monitors subtree of `agent` and checks every answer against the
// MIB; returns the object name of every OID answered.
std::map<std::string, std::string> crossCheckWalk(Agent &agent)
{
    std::map<std::string, std::string> labels;
    Response walk = agent.client().walkResponse(kMonitorsRoot);
    EXPECT_TRUE(walk.failure.empty()) << walk;
    EXPECT_FALSE(walk.varbinds.empty());
    for (const VarBind &vb : walk.varbinds) {
        std::vector<oid> name;
        for (unsigned long arc : oidParse(vb.oid))
            name.push_back(arc);
        struct tree *node = get_tree(name.data(), name.size(), get_tree_head());
        if (!node) {
            ADD_FAILURE() << vb.oid << " is not in the MIB";
            continue;
        }

        // The node's own OID length: the instance arcs follow it.
        size_t depth = 0;
        for (struct tree *up = node; up; up = up->parent)
            ++depth;
        size_t instanceArcs = name.size() - depth;
        bool isColumn = node->parent && node->parent->indexes;
        bool isScalar = !isColumn && instanceArcs == 1 && name.back() == 0;
        EXPECT_TRUE(isScalar || (isColumn && instanceArcs >= 1))
            << vb.oid << " resolves to " << node->label << ", which is neither a scalar nor a column";
        EXPECT_TRUE(syntaxAllows(node->type, vb.type))
            << vb.oid << " (" << node->label << ") is answered as " << typeName(vb.type)
            << " but its MIB SYNTAX is type " << node->type;
        labels[vb.oid] = node->label;
    }
    return labels;
}

// Every object of the monitors subtree the MIB declares readable: its
// scalars and columns, without the obsolete ones the agent never serves.
void collectReadableObjects(struct tree *node, std::set<std::string> &objects)
{
    for (struct tree *child = node->child_list; child; child = child->next_peer) {
        const bool readable = child->access == MIB_ACCESS_READONLY || child->access == MIB_ACCESS_READWRITE;
        if (readable && child->status != MIB_STATUS_OBSOLETE)
            objects.insert(child->label);
        collectReadableObjects(child, objects);
    }
}

TEST(MibCrossCheck, EveryReadableObjectOfTheMibIsServedForTheSampleMachine)
{
    ASSERT_NE(loadProjectMib(), nullptr) << "ORV3-MONITORS-MIB did not load";
    std::vector<oid> root;
    for (unsigned long arc : oidParse(kMonitorsRoot))
        root.push_back(arc);
    struct tree *monitors = get_tree(root.data(), root.size(), get_tree_head());
    ASSERT_NE(monitors, nullptr);
    std::set<std::string> declared;
    collectReadableObjects(monitors, declared);
    EXPECT_GT(declared.size(), 380u) << "the whole MIB was read";

    AgentOptions options;
    options.machinePath = "sample.json";
    Agent agent(options);
    std::set<std::string> served;
    for (const auto &[oid, label] : crossCheckWalk(agent))
        served.insert(label);
    std::vector<std::string> missing;
    for (const std::string &label : declared)
        if (!served.count(label))
            missing.push_back(label);
    EXPECT_TRUE(missing.empty()) << "declared but not served: " << ::testing::PrintToString(missing);
}

TEST(MibCrossCheck, EveryServedObjectIsInTheMibWithItsWireType)
{
    ASSERT_NE(loadProjectMib(), nullptr) << "ORV3-MONITORS-MIB did not load";
    AgentOptions options;
    options.machinePath = "sample.json";
    Agent agent(options);
    std::map<std::string, std::string> labels = crossCheckWalk(agent);
    // The resolution itself names the objects the operator sees.
    EXPECT_EQ(labels[oidJoin(kMonitorsRoot, {3, 1, 0})], "fanNumber");
    EXPECT_EQ(labels[oidJoin(kMonitorsRoot, {3, 2, 1, 3, 5})], "fanSpeed");
    EXPECT_EQ(labels[oidJoin(kMonitorsRoot, {3, 2, 1, 10, 1})], "fanHealthStatus");
    EXPECT_EQ(labels[oidJoin(kMonitorsRoot, {10, 1, 9, 0})], "fuelGaugeTotalPowerAvaialble");
    EXPECT_EQ(labels[oidJoin(kMonitorsRoot, {10, 2, 2, 1, 0})], "powerRestorePolicy");
}

// The platform variants register other sets of objects; each is named by the MIB.
class MibCrossCheckVariant : public ::testing::TestWithParam<std::pair<std::string, std::string>> {};

TEST_P(MibCrossCheckVariant, EveryServedObjectIsInTheMibWithItsWireType)
{
    ASSERT_NE(loadProjectMib(), nullptr) << "ORV3-MONITORS-MIB did not load";
    AgentOptions options;
    options.machinePath = "sample.json";
    options.env[GetParam().first] = GetParam().second;
    Agent agent(options);
    std::map<std::string, std::string> labels = crossCheckWalk(agent);
    EXPECT_EQ(labels[oidJoin(kMonitorsRoot, {10, 1, 10, 0})], "fuelGaugeTotalPowerInUse");
}

INSTANTIATE_TEST_SUITE_P(Variants, MibCrossCheckVariant,
                         ::testing::Values(std::make_pair("ORV_CODENAME", "KELPO7"),
                                           std::make_pair("PLATFLAGS", "8000"),
                                           std::make_pair("ORV_FAMILY", "plintaber")),
                         [](const auto &info) { return info.param.first + "_" + info.param.second; });

} // namespace
} // namespace orv3::test

// What the bad-input tests aim at: every scalar, settable object and table
// that ORV3-MONITORS-MIB declares, with the OIDs one walk of the sample
// machine answered, and one agent serving that machine per test suite.
#pragma once

#include "fan_machines.h"
#include "harness/agent.h"
#include "harness/monitors_mib.h"
#include "harness/oids.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace orv3::test {

struct MibScalar {
    std::string name;
    std::string oid; // the object, without its instance arc
    int syntax = 0;  // TYPE_* of net-snmp's MIB parser
    bool writable = false;

    std::string instance() const { return oid + ".0"; }
};

struct MibTable {
    std::string name;
    std::string oid;                          // the table object; its entry is oid.1
    std::map<unsigned long, int> columns;     // declared column arc -> TYPE_*
    std::vector<unsigned long> rows;          // the index arcs the walk answered, ascending
    std::vector<std::string> answeredColumns; // every cell OID of the first row

    std::string entry() const { return oid + ".1"; }
    std::string cell(unsigned long column, const std::string &index) const { return oidJoin(entry(), {column, index}); }
    unsigned long lastColumn() const { return columns.rbegin()->first; }
    bool hasRow(unsigned long index) const { return std::binary_search(rows.begin(), rows.end(), index); }
};

// The value a SET of an object's own SYNTAX carries.
inline SetValue ownTypeValue(const std::string &oid, int syntax)
{
    switch (syntax) {
    case TYPE_GAUGE:
    case TYPE_UNSIGNED32: return SetValue::ofGauge(oid, 1);
    case TYPE_OCTETSTR: return SetValue::ofOctets(oid, "x");
    case TYPE_OBJID: return SetValue::ofOid(oid, "1.3.6.1");
    default: return SetValue::ofInteger(oid, 1);
    }
}

class ServedObjects {
public:
    // Reads the MIB's objects below the monitors root and walks that subtree
    // of `agent`. Throws std::runtime_error when either fails.
    static ServedObjects of(Agent &agent)
    {
        ServedObjects served;
        served.collect(monitorsMibSubtree(), kMonitorsRoot);
        // The parser keeps siblings in no useful order; the tests go in OID order.
        auto inOidOrder = [](const auto &a, const auto &b) { return oidCompare(a.oid, b.oid) < 0; };
        std::sort(served.scalars.begin(), served.scalars.end(), inOidOrder);
        std::sort(served.tables.begin(), served.tables.end(), inOidOrder);

        Response walk = agent.client().walkResponse(kMonitorsRoot);
        if (!walk.failure.empty() || walk.varbinds.empty())
            throw std::runtime_error("the walk of the sample machine failed: " + walk.toString());
        served.walk_ = walk.varbinds;
        for (const VarBind &vb : served.walk_)
            served.walkArcs_.push_back(oidParse(vb.oid));
        for (MibTable &table : served.tables)
            served.fillRows(table);
        return served;
    }

    std::vector<MibScalar> scalars; // every readable scalar, the writable ones included
    std::vector<MibTable> tables;

    std::vector<MibScalar> writableScalars() const
    {
        std::vector<MibScalar> out;
        std::copy_if(scalars.begin(), scalars.end(), std::back_inserter(out),
                     [](const MibScalar &s) { return s.writable; });
        return out;
    }
    const MibScalar &scalar(const std::string &name) const
    {
        for (const MibScalar &s : scalars)
            if (s.name == name)
                return s;
        throw std::invalid_argument("no scalar " + name);
    }
    const MibTable &table(const std::string &name) const
    {
        for (const MibTable &t : tables)
            if (t.name == name)
                return t;
        throw std::invalid_argument("no table " + name);
    }

    const std::vector<VarBind> &walk() const { return walk_; }
    // The walk's answer for `oid`, if the walk answered it.
    const VarBind *answered(const std::string &oid) const
    {
        std::vector<unsigned long> arcs = oidParse(oid);
        auto it = std::lower_bound(walkArcs_.begin(), walkArcs_.end(), arcs);
        return it != walkArcs_.end() && *it == arcs ? &walk_[it - walkArcs_.begin()] : nullptr;
    }
    // The first walked OID after `oid`: what a GETNEXT of `oid` answers. Empty
    // when `oid` lies at or after the last OID of the subtree.
    std::optional<std::string> successor(const std::string &oid) const
    {
        auto it = std::upper_bound(walkArcs_.begin(), walkArcs_.end(), oidParse(oid));
        if (it == walkArcs_.end())
            return std::nullopt;
        return walk_[it - walkArcs_.begin()].oid;
    }

private:
    void collect(struct tree *node, const std::string &nodeOid)
    {
        for (struct tree *child = node->child_list; child; child = child->next_peer) {
            if (child->status == MIB_STATUS_OBSOLETE)
                continue;
            const std::string childOid = oidJoin(nodeOid, {child->subid});
            if (child->indexes) {
                MibTable table{node->label, nodeOid, {}, {}, {}};
                for (struct tree *column = child->child_list; column; column = column->next_peer)
                    table.columns[column->subid] = column->type;
                tables.push_back(table);
                continue;
            }
            const bool readable = child->access == MIB_ACCESS_READONLY || child->access == MIB_ACCESS_READWRITE;
            if (readable)
                scalars.push_back({child->label, childOid, child->type, child->access == MIB_ACCESS_READWRITE});
            collect(child, childOid);
        }
    }

    void fillRows(MibTable &table)
    {
        std::set<unsigned long> rows;
        for (const VarBind &vb : walk_) {
            if (!oidStartsWith(vb.oid, table.entry()))
                continue;
            std::vector<unsigned long> instance = oidParse(oidSuffix(vb.oid, table.entry()));
            if (instance.size() == 2)
                rows.insert(instance[1]);
        }
        table.rows.assign(rows.begin(), rows.end());
        if (table.rows.empty())
            return;
        for (const auto &[column, syntax] : table.columns) {
            std::string cell = table.cell(column, std::to_string(table.rows.front()));
            if (answered(cell))
                table.answeredColumns.push_back(cell);
        }
    }

    std::vector<VarBind> walk_;
    std::vector<std::vector<unsigned long>> walkArcs_;
};

// One agent serving machines/sample.json for a whole suite, and what it
// serves; tests only read it or restore what they change.
struct SampleAgent {
    std::unique_ptr<Agent> agent;
    std::unique_ptr<ServedObjects> served;
};
inline SampleAgent gSampleAgent;

inline Agent &agent()
{
    return *gSampleAgent.agent;
}
inline const ServedObjects &served()
{
    return *gSampleAgent.served;
}

// The single-varbind answer to a GET of `oid`.
inline VarBind getOne(const std::string &oid)
{
    Response reply = agent().client().get({oid});
    EXPECT_TRUE(reply.ok()) << reply;
    return reply.varbinds.empty() ? VarBind{} : reply.varbinds[0];
}

// The agent still answers a plain GET after a bad request.
inline void expectStillAnswers()
{
    Response reply = agent().client().get({kFanNumber});
    EXPECT_TRUE(reply.ok()) << reply;
    EXPECT_FALSE(reply.varbinds.empty() || reply.varbinds[0].isException()) << reply;
}

class SampleAgentSuite : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        AgentOptions options;
        options.machinePath = "sample.json";
        gSampleAgent.agent = std::make_unique<Agent>(options);
        gSampleAgent.served = std::make_unique<ServedObjects>(ServedObjects::of(*gSampleAgent.agent));
    }
    static void TearDownTestSuite()
    {
        if (gSampleAgent.agent) {
            gSampleAgent.agent->stop();
            EXPECT_EQ(gSampleAgent.agent->sanitizerFindings(), "");
        }
        gSampleAgent.served.reset();
        gSampleAgent.agent.reset();
    }
    void SetUp() override
    {
        ASSERT_TRUE(gSampleAgent.agent && gSampleAgent.served) << "the sample agent did not start";
        ASSERT_TRUE(gSampleAgent.agent->running());
    }
};

} // namespace orv3::test

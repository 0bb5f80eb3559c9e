// The largest machine the controller manages (machines/large.json, see
// docs/machine-description.md, "The largest machine") holds every table of
// the module at its largest. Each of the 31 tables walks whole with GETBULK,
// every row of it in index order, through snmpd with the module and through
// a master snmpd with the module's AgentX subagent alike; and the Prometheus
// exporter's scrape carries every row of every table it walks. The row
// counts are the machine's, worked out from what each table's loader makes
// of the description.
#include "fan_machines.h"
#include "harness/agent.h"
#include "harness/campaign.h"
#include "harness/monitors_mib.h"
#include "harness/oids.h"
#include "harness/prometheus_text.h"
#include "harness/snmp_exporter.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace orv3::test {
namespace {

struct LargeTable {
    const char *name;
    std::string oid;       // the table object; its rows are below oid.1
    unsigned long rows;    // the rows the large machine gives it
    unsigned long columns; // the columns the module serves of each row
    const char *index;     // the index object, whose name labels the exporter's samples of the table
};

std::string at(std::initializer_list<OidPart> arcs)
{
    return oidJoin(kMonitorsRoot, arcs);
}

const std::vector<LargeTable> kTables = {
    {"tempTable", at({1, 2}), 128, 11, "tempIndex"},
    {"voltTable", at({2, 2}), 128, 11, "voltIndex"},
    {"fanTable", at({3, 2}), 64, 10, "fanIndex"}, // 24 dual-rotor modules and 16 power-supply fans
    {"systemHealthSummaryTable", at({4, 2}), 256, 3, "systemHealthSummaryIndex"},
    {"kepVpdTable", at({5, 1}), 64, 4, "kepVpdIndex"},
    {"systemComponentLevelVpdTable", at({5, 17}), 256, 5, "componentLevelVpdIndex"},
    {"systemComponentLevelVpdTrackingTable", at({5, 18}), 1000, 4, "componentTrackingIndex"},
    {"hostMACAddressTable", at({5, 19}), 64, 3, "hostMACAddressIndex"},
    {"systemCPUVpdTable", at({5, 20}), 8, 12, "cpuVpdIndex"},
    {"systemMemoryVpdTable", at({5, 21}), 96, 12, "memoryVpdIndex"}, // the 24 persistent-memory DIMMs included
    {"systemAepDIMMVpdTable", at({5, 22}), 24, 20, "aepDIMMVpdIndex"},
    // 66 sessions listed, two of which end before they are described.
    {"currentlyLoggedInTable", at({6, 1, 1}), 64, 3, "loggedInUserIndex"},
    {"allLEDsTable", at({8, 2}), 128, 5, "ledIndex"},               // column 3 is not served
    {"powerPolicyTable", at({10, 2, 1}), 2, 6, "powerPolicyIndex"}, // the two modes of a platform other than "kelpo"
    {"powerTrendingSampleTable", at({10, 3, 1}), 120, 8, "powerTrendingSampleIndex"},
    {"powerTable", at({11, 2}), 16, 6, "powerIndex"},
    {"diskTable", at({12, 2}), 64, 3, "diskIndex"},
    {"raidControllerTable", at({13, 1, 2}), 8, 38, "raidCtrlIndex"},
    {"raidDriveTable", at({13, 1, 3}), 384, 27, "raidDriveIndex"}, // 8 controllers of 48 drives
    // 5 components on each of the seven 940 controllers, 2 on the 540.
    {"raidControllerFirmwareTable", at({13, 1, 4}), 37, 7, "raidCtrlFwIndex"},
    // One component on each of the 384 drives, a second on the 56 SAS SSDs.
    {"raidDriveFirmwareTable", at({13, 1, 5}), 440, 7, "raidDriveFwIndex"},
    {"raidStoragepoolTable", at({13, 1, 6}), 32, 7, "raidStoragepoolIndex"}, // 4 pools a controller
    {"raidVolumeTable", at({13, 1, 7}), 64, 7, "raidVolumeIndex"},           // 1, 2, 3 and 2 volumes in them
    {"fdTable", at({13, 2, 2}), 8, 13, "fdimmIndex"},
    {"adapterGenericTable", at({14, 2}), 32, 5, "adapterGenericIndex"},
    // 16 network adapters of 4 Ethernet, InfiniBand or Fibre Channel functions.
    {"adapterNetworkFunctionTable", at({14, 3}), 64, 26, "adapterNetworkFunctionIndex"},
    // One logical port on each function of 8 adapters, four on 4, two on 4.
    {"adapterNetworkPortTable", at({14, 4}), 128, 21, "adapterNetworkPortIndex"},
    // 8 GPUs; their audio and USB functions are of type Other, in no function table.
    {"adapterGPUFunctionTable", at({14, 5}), 8, 26, "adapterGPUFunctionIndex"},
    {"adapterGPUChipTable", at({14, 6}), 16, 17, "adapterGPUChipIndex"}, // 2 chips a GPU
    // The RAID, SAS, mass-storage and SCSI functions of the 8 RAID adapters.
    {"adapterRAIDFunctionTable", at({14, 7}), 32, 23, "adapterRAIDFunctionIndex"},
    // 2 or 3 components on the first function of every adapter.
    {"adapterFirmwareTable", at({14, 8}), 78, 9, "adapterFirmwareIndex"},
};

AgentOptions largeMachine()
{
    AgentOptions options;
    options.machinePath = "large.json";
    // A clock that stands: every table loads once, on its first walk, so
    // that both forms answer from the same rows.
    options.clockStart = kStartTime;
    // A sanitized agent answers the machine's 35000 varbinds several times
    // faster with allocation stacks unwound by frame pointers, which the
    // module and the simulator keep.
    options.extraAsanOptions = "fast_unwind_on_malloc=1";
    return options;
}

// Whether a GETBULK walk of `table` answered the whole table: rows x
// columns cells, all in the table, each column answering every row in
// ascending index order, and the index column each row's own index.
::testing::AssertionResult isWholeTable(const Response &walk, const LargeTable &table)
{
    if (!walk.ok())
        return ::testing::AssertionFailure() << "the walk failed: " << walk.failure << " " << walk.toString();
    const std::string entry = oidJoin(table.oid, {1});
    std::map<unsigned long, std::vector<unsigned long>> rowsOfColumn;
    for (const VarBind &vb : walk.varbinds) {
        if (!oidStartsWith(vb.oid, entry))
            return ::testing::AssertionFailure() << vb.oid << " lies outside the table";
        const std::vector<unsigned long> arcs = oidParse(oidSuffix(vb.oid, entry));
        if (arcs.size() != 2)
            return ::testing::AssertionFailure() << vb.oid << " is not a cell of the table";
        if (arcs[0] == 1 && (vb.type != ASN_INTEGER || static_cast<unsigned long>(vb.integer) != arcs[1]))
            return ::testing::AssertionFailure() << "the index column answers " << vb.toString();
        rowsOfColumn[arcs[0]].push_back(arcs[1]);
    }
    if (walk.varbinds.size() != table.rows * table.columns)
        return ::testing::AssertionFailure()
               << walk.varbinds.size() << " cells, not " << table.rows << " rows x " << table.columns << " columns";
    if (rowsOfColumn.size() != table.columns)
        return ::testing::AssertionFailure() << rowsOfColumn.size() << " columns, not " << table.columns;
    const std::vector<unsigned long> &rows = rowsOfColumn.begin()->second;
    for (const auto &[column, indexes] : rowsOfColumn) {
        if (indexes.size() != table.rows)
            return ::testing::AssertionFailure() << "column " << column << " has " << indexes.size() << " rows";
        for (size_t i = 1; i < indexes.size(); ++i)
            if (indexes[i - 1] >= indexes[i])
                return ::testing::AssertionFailure()
                       << "column " << column << ": row " << indexes[i] << " after row " << indexes[i - 1];
        if (indexes != rows)
            return ::testing::AssertionFailure()
                   << "column " << column << " answers other rows than column " << rowsOfColumn.begin()->first;
    }
    return ::testing::AssertionSuccess();
}

// The first varbind at which two walks differ, or "" when they are the same.
std::string firstDifference(const Response &expected, const Response &actual)
{
    const size_t common = std::min(expected.varbinds.size(), actual.varbinds.size());
    for (size_t i = 0; i < common; ++i)
        if (expected.varbinds[i].toString() != actual.varbinds[i].toString())
            return "varbind " + std::to_string(i) + ": " + actual.varbinds[i].toString() + " instead of " +
                   expected.varbinds[i].toString();
    if (expected.varbinds.size() != actual.varbinds.size())
        return std::to_string(actual.varbinds.size()) + " varbinds instead of " +
               std::to_string(expected.varbinds.size());
    return "";
}

// The tables ORV3-MONITORS-MIB declares below the module's root.
std::set<std::string> tablesOfTheMib()
{
    std::set<std::string> tables;
    std::vector<struct tree *> nodes = {monitorsMibSubtree()};
    while (!nodes.empty()) {
        struct tree *node = nodes.back();
        nodes.pop_back();
        for (struct tree *child = node ? node->child_list : nullptr; child; child = child->next_peer) {
            if (child->indexes)
                tables.insert(node->label);
            else
                nodes.push_back(child);
        }
    }
    return tables;
}

// The OIDs the exporter's module walks, as its generated snmp.yml lists them.
std::vector<std::string> walkedBy(const std::string &snmpYml, const std::string &module)
{
    std::istringstream lines(snmpYml);
    std::vector<std::string> walked;
    std::string line;
    bool inModule = false, inWalk = false;
    while (std::getline(lines, line)) {
        if (!line.empty() && line[0] != ' ' && line[0] != '#')
            inModule = line == module + ":";
        else if (inModule && line == "  walk:")
            inWalk = true;
        else if (inWalk && line.rfind("  - ", 0) == 0)
            walked.push_back(line.substr(4));
        else
            inWalk = false;
    }
    return walked;
}

// One agent of each form serving the large machine, for the whole suite,
// each started when a test first asks for it.
class LargeMachine : public ::testing::Test {
protected:
    static Agent &dlmod()
    {
        if (!dlmod_)
            dlmod_ = new Agent(largeMachine());
        return *dlmod_;
    }
    static AgentXPair &agentx()
    {
        if (!agentx_)
            agentx_ = new AgentXPair(largeMachine());
        return *agentx_;
    }
    static void TearDownTestSuite()
    {
        for (Agent *agent : {dlmod_, agentx_ ? &agentx_->subagent : nullptr})
            if (agent) {
                agent->stop();
                EXPECT_EQ(agent->sanitizerFindings(), "");
            }
        delete agentx_;
        delete dlmod_;
        agentx_ = nullptr;
        dlmod_ = nullptr;
    }

    static Agent *dlmod_;
    static AgentXPair *agentx_;
};

Agent *LargeMachine::dlmod_ = nullptr;
AgentXPair *LargeMachine::agentx_ = nullptr;

TEST_F(LargeMachine, TheTablesWalkedAreEveryTableOfTheMib)
{
    std::set<std::string> walked;
    for (const LargeTable &table : kTables)
        walked.insert(table.name);
    EXPECT_EQ(walked.size(), 31u);
    EXPECT_EQ(walked, tablesOfTheMib());
}

TEST_F(LargeMachine, EveryTableWalksCompletelyThroughSnmpd)
{
    SnmpClient client = dlmod().client();
    for (const LargeTable &table : kTables)
        EXPECT_TRUE(isWholeTable(bulkWalk(client, table.oid), table)) << table.name;
}

TEST_F(LargeMachine, EveryTableWalksCompletelyThroughTheMasterAsThroughSnmpd)
{
    SnmpClient throughSnmpd = dlmod().client(), throughMaster = agentx().subagent.client();
    for (const LargeTable &table : kTables) {
        const Response walk = bulkWalk(throughMaster, table.oid);
        EXPECT_TRUE(isWholeTable(walk, table)) << table.name;
        EXPECT_EQ(firstDifference(bulkWalk(throughSnmpd, table.oid), walk), "") << table.name;
    }
}

TEST_F(LargeMachine, ThePrometheusExporterScrapesEveryRowOfEveryTableItWalks)
{
    SnmpExporter exporter;
    const std::vector<std::string> walked = walkedBy(readFileText(exporter.configPath()), "orv3_monitors");
    ASSERT_FALSE(walked.empty()) << readFileText(exporter.configPath()).substr(0, 400);
    HttpResponse response = exporter.scrape(dlmod().port(), "orv3_monitors");
    ASSERT_TRUE(response.ok()) << "HTTP " << response.status << " " << response.error << "\n"
                               << response.body.substr(0, 2000) << "\n--- exporter.log ---\n"
                               << exporter.logText();
    const std::vector<Sample> samples = parseExposition(response.body);

    // Each row gives a sample of its index object labelled with the index.
    std::map<std::string, std::set<std::string>> rowsOfIndex;
    for (const Sample &sample : samples) {
        auto label = sample.labels.find(sample.name);
        if (label != sample.labels.end())
            rowsOfIndex[sample.name].insert(label->second);
    }
    size_t tablesWalked = 0;
    for (const LargeTable &table : kTables) {
        bool isWalked = false;
        for (const std::string &root : walked)
            isWalked = isWalked || oidStartsWith(table.oid, root);
        if (!isWalked)
            continue;
        ++tablesWalked;
        EXPECT_EQ(rowsOfIndex[table.index].size(), table.rows) << table.name << ", samples of " << table.index;
    }
    EXPECT_EQ(tablesWalked, kTables.size()) << "the exporter walks the whole subtree";
}

} // namespace
} // namespace orv3::test

// Unloading and reloading the module while snmpd runs, through net-snmp's
// UCD-DLMOD-MIB (1.3.6.1.4.1.2021.13.14). The module registers once for the
// life of the agent and is never unregistered: the agent's unload leaves it
// mapped and answering, and a load after it registers nothing twice. Every
// cycle answers exactly as the first load, with no duplicate registration
// and no memory taken per cycle.
//
// ORV3_RELOAD_CYCLES sets the number of cycles (scripts/soak --reload).
#include "fan_machines.h"
#include "harness/campaign.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace orv3::test {
namespace {

const std::string kDlmod = "1.3.6.1.4.1.2021.13.14";
const std::string kDlmodNext = oidJoin(kDlmod, {1, 0});

// dlmodStatus: what a read shows and what a write asks for.
enum DlmodStatus : long {
    kLoaded = 1,
    kUnloaded = 2,
    kLoad = 4,
    kUnload = 5,
    kCreate = 6,
    kDelete = 7,
};

std::string dlmodCell(int column, long index)
{
    // dlmodName 2, dlmodPath 3, dlmodError 4, dlmodStatus 5.
    return oidJoin(kDlmod, {2, 1, column, index});
}

// Twenty cycles in the quick suite; scripts/soak --reload runs a hundred.
int reloadCycles()
{
    const char *text = std::getenv("ORV3_RELOAD_CYCLES");
    return text && std::atoi(text) > 0 ? std::atoi(text) : 20;
}

AgentOptions sampleAgent()
{
    AgentOptions options;
    options.machinePath = "sample.json";
    options.clockStart = kStartTime;
    return options;
}

std::vector<std::string> lines(const std::vector<VarBind> &varbinds)
{
    std::vector<std::string> out;
    for (const VarBind &vb : varbinds)
        out.push_back(vb.toString());
    return out;
}

std::vector<std::string> walkSubtree(SnmpClient &client)
{
    Response walk = bulkWalk(client, kMonitorsRoot);
    EXPECT_TRUE(walk.failure.empty() && walk.ok()) << walk;
    return lines(walk.varbinds);
}

// Index of the module's row in dlmodTable: the one whose path is the module.
long moduleRow(SnmpClient &client)
{
    for (const VarBind &vb : client.walk(oidJoin(kDlmod, {2, 1, 3}))) {
        if (vb.octets == ORV3_MODULE_PATH)
            return std::stol(oidSuffix(vb.oid, oidJoin(kDlmod, {2, 1, 3})));
    }
    return -1;
}

long dlmodStatus(SnmpClient &client, long row)
{
    Response reply = client.get({dlmodCell(5, row)});
    return reply.ok() && reply.varbinds.size() == 1 && reply.varbinds[0].type == ASN_INTEGER ? reply.varbinds[0].integer
                                                                                             : -1;
}

long residentKib(pid_t pid)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stol(line.substr(6));
    return -1;
}

TEST(ModuleReload, EveryUnloadAndReloadAnswersAsTheFirstLoadAndTakesNoMemory)
{
    Agent agent(sampleAgent());
    SnmpClient reader = agent.client();
    SnmpClient writer = agent.client("private");
    long row = moduleRow(reader);
    ASSERT_GT(row, 0) << "no dlmodTable row names " << ORV3_MODULE_PATH;
    ASSERT_EQ(dlmodStatus(reader, row), kLoaded);
    const std::vector<std::string> first = walkSubtree(reader);
    ASSERT_GT(first.size(), 1000u);

    const int cycles = reloadCycles();
    long warmKib = 0;
    for (int cycle = 1; cycle <= cycles; ++cycle) {
        Response unload = writer.set({SetValue::ofInteger(dlmodCell(5, row), kUnload)});
        ASSERT_TRUE(unload.ok()) << "cycle " << cycle << ": " << unload;
        ASSERT_EQ(dlmodStatus(reader, row), kUnloaded) << "cycle " << cycle;
        ASSERT_EQ(walkSubtree(reader), first) << "unloaded, cycle " << cycle << ": still registered";

        Response load = writer.set({SetValue::ofInteger(dlmodCell(5, row), kLoad)});
        ASSERT_TRUE(load.ok()) << "cycle " << cycle << ": " << load;
        ASSERT_EQ(dlmodStatus(reader, row), kLoaded) << "cycle " << cycle;
        ASSERT_EQ(walkSubtree(reader), first) << "cycle " << cycle << " of " << cycles;
        ASSERT_TRUE(agent.running()) << "cycle " << cycle;
        if (cycle == std::min(cycles, 5))
            warmKib = residentKib(agent.pid());
    }
    EXPECT_EQ(agent.countInStdout("duplicate registration"), 0u) << agent.stdoutText();
    EXPECT_EQ(agent.countInStderr("duplicate registration"), 0u);
    // A cycle that kept what it allocated would show here; allocator and
    // walk noise stay far below a mebibyte.
    EXPECT_LT(residentKib(agent.pid()) - warmKib, 1024) << "after " << cycles << " cycles";
    agent.stop();
    EXPECT_EQ(agent.sanitizerFindings(), "");
}

TEST(ModuleReload, RowDeletedAndCreatedAgainThroughTheMibLoadsTheModuleAgain)
{
    Agent agent(sampleAgent());
    SnmpClient reader = agent.client();
    SnmpClient writer = agent.client("private");
    long row = moduleRow(reader);
    ASSERT_GT(row, 0);
    const std::vector<std::string> first = walkSubtree(reader);

    ASSERT_TRUE(writer.set({SetValue::ofInteger(dlmodCell(5, row), kUnload)}).ok());
    ASSERT_TRUE(writer.set({SetValue::ofInteger(dlmodCell(5, row), kDelete)}).ok());
    EXPECT_EQ(reader.get({dlmodCell(5, row)}).varbinds.at(0).type, SNMP_NOSUCHINSTANCE);
    EXPECT_EQ(walkSubtree(reader), first) << "the module stays registered without its row";

    Response next = reader.get({kDlmodNext});
    ASSERT_TRUE(next.ok() && next.varbinds.size() == 1) << next;
    long created = next.varbinds[0].integer;
    ASSERT_TRUE(writer.set({SetValue::ofInteger(dlmodCell(5, created), kCreate)}).ok());
    ASSERT_EQ(dlmodStatus(reader, created), kUnloaded);
    Response named = writer.set({SetValue::ofOctets(dlmodCell(2, created), "snmp_module_monitors"),
                                 SetValue::ofOctets(dlmodCell(3, created), ORV3_MODULE_PATH)});
    ASSERT_TRUE(named.ok()) << named;
    ASSERT_TRUE(writer.set({SetValue::ofInteger(dlmodCell(5, created), kLoad)}).ok());
    EXPECT_EQ(dlmodStatus(reader, created), kLoaded);
    EXPECT_EQ(walkSubtree(reader), first);
    EXPECT_EQ(agent.countInStdout("duplicate registration"), 0u);
    agent.stop();
    EXPECT_EQ(agent.sanitizerFindings(), "");
}

} // namespace
} // namespace orv3::test

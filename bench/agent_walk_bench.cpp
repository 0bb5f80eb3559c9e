// A full walk of the fan table through the real snmpd, by table size, and
// the agent's resident memory once the table is cached.
#include "agent_process.h"
#include "fan_rows.h"
#include "harness/agent.h"
#include "harness/oids.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using orv3::test::Agent;
using orv3::test::AgentOptions;

void WalkFanTable(benchmark::State &state)
{
    int fans = static_cast<int>(state.range(0));
    AgentOptions options;
    options.machineJson = machineWithManyFans(fans);
    Agent agent(options);
    long before = residentKiB(agent.pid());
    orv3::test::SnmpClient client = agent.client();
    const std::string table = orv3::test::oidJoin(orv3::test::kMonitorsRoot, {3, 2});
    size_t varbinds = 0;
    for (auto _ : state)
        varbinds = client.walk(table).size();
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(varbinds));
    state.counters["varbinds"] = static_cast<double>(varbinds);
    state.counters["rss_KiB"] = static_cast<double>(residentKiB(agent.pid()));
    state.counters["rss_growth_KiB"] = static_cast<double>(residentKiB(agent.pid()) - before);
}
BENCHMARK(WalkFanTable)->Arg(8)->Arg(256)->Unit(benchmark::kMillisecond)->MinTime(1.0);

} // namespace

BENCHMARK_MAIN();

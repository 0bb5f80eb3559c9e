// How long a fan table load takes, by table size: bind, read every row
// through the column holders, copy into fresh rows, free the binding.
#include "fanTable.h"
#include "fan_rows.h"
#include "platform.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <unistd.h>

namespace {

const char *kMachine = "/tmp/orv3-bench-fans.json";

void writeMachine(int fans)
{
    std::string temporary = std::string(kMachine) + ".new";
    std::ofstream(temporary) << machineWithManyFans(fans);
    std::rename(temporary.c_str(), kMachine);
}

void FanTableLoad(benchmark::State &state)
{
    int fans = static_cast<int>(state.range(0));
    writeMachine(fans);
    // The load's own end-of-rows line would flood the figures.
    fflush(stdout);
    int savedStdout = dup(STDOUT_FILENO);
    int devNull = open("/dev/null", O_WRONLY);
    dup2(devNull, STDOUT_FILENO);
    for (auto _ : state) {
        initialize_fanTable_local();
        orv3::reclaimRetiredRows();
    }
    fflush(stdout);
    dup2(savedStdout, STDOUT_FILENO);
    close(savedStdout);
    close(devNull);
    state.SetItemsProcessed(state.iterations() * fans);
    state.counters["rows"] = static_cast<double>(gFanTableLastRowCount);
    state.counters["row_bytes"] = sizeof(fanTable_entry_t);
    state.counters["table_KiB"] = static_cast<double>(sizeof(fanTable_entry_t) * fans) / 1024.0;
}
BENCHMARK(FanTableLoad)->Arg(8)->Arg(64)->Arg(1024)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    // The benchmark serves its own machine, unless ORV3_SIM_MACHINE names one.
    if (!getenv("ORV3_SIM_MACHINE")) {
        writeMachine(8);
        orv3::sim::Platform::instance().serveFile(kMachine);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

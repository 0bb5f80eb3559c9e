// What a monitoring system's walks cost the agent: the agent's CPU time per
// varbind for walks of the module's tables, against zero-work net-snmp
// iterator tables of the same shape loaded into the same snmpd (unsorted and
// with the iterator's sorted hint), walked alternately so that other load on
// the machine falls on both alike.
//
//   walk_cost_bench [--quick] [--sizes 10,100,1000] [--walks N] [--memory-walks N]
//
// For each table size it starts one snmpd with the module, the simulator
// (machine generated here, clock frozen) and the reference tables; walks each
// table with snmpbulkwalk -Cr25 and snmpwalk; reads the agent's CPU time from
// /proc/PID/task/*/schedstat around every walk; checks every walk returned
// rows x columns varbinds; and prints medians. Cold walks (the first after a
// reload, forced by moving the clock on) are set against warm ones. Last, the
// agent's resident memory before and after a run of warm walks.
//
// Every table walked, the module's and the references, is followed by the
// same zero-work guard table, so that the requests a walk sends past the
// table's end cost the same on both sides: without it, a small table's
// figure would mostly measure the objects that happen to follow it.
#include "agent_process.h"
#include "fan_rows.h"
#include "harness/agent.h"
#include "harness/oids.h"
#include "machine_builder.h"

#include <sched.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#ifndef ORV3_REFERENCE_PATH
#define ORV3_REFERENCE_PATH "liborv3_reference_tables.so"
#endif

extern char **environ;

namespace {

using orv3::test::Agent;
using orv3::test::AgentOptions;
using orv3::test::MachineBuilder;

constexpr long kFrozenClock = 1750000000;

// ---- the tables measured ---------------------------------------------------

// One table of the module, with the machine rows that fill it and the shape
// of its reference: column kinds as ORV3_REFERENCE_TABLES reads them, texts
// as long as the module's texts for these rows.
struct MeasuredTable {
    const char *name;
    const char *family;              // how its rows are loaded
    std::vector<unsigned long> arcs; // below the monitors root
    int columns;
    const char *referenceShape;
    void (*addRows)(MachineBuilder &machine, int rows);
};

void addFans(MachineBuilder &machine, int rows)
{
    machine.table("s/fans/status/fantbl", manyFanRows(rows));
}

void addEvents(MachineBuilder &machine, int rows)
{
    for (int index = 1; index <= rows; ++index) {
        char message[48];
        std::snprintf(message, sizeof message, "Sensor %04d reading above upper non-critical", index % 10000);
        machine.event(3, message);
    }
}

const MeasuredTable kTables[] = {
    // "System Fan Tach 001 (front bay)" is cut to 30, " 42% of maximum" is 15.
    {"fanTable", "data-manager binding", {3, 2}, 10, "i,s30,s15,u,u,u,u,u,u,s6", addFans},
    {"systemHealthSummaryTable", "event records", {4, 2}, 3, "i,s5,s44", addEvents},
};

// ---- measuring ---------------------------------------------------------------

// CPU seconds the whole machine spent busy (steal included: time another
// guest of the host took from this one).
double machineBusySeconds()
{
    std::ifstream in("/proc/stat");
    std::string cpu;
    long long user = 0, nice = 0, system = 0, idle = 0, iowait = 0, irq = 0, softirq = 0, steal = 0;
    in >> cpu >> user >> nice >> system >> idle >> iowait >> irq >> softirq >> steal;
    return static_cast<double>(user + nice + system + irq + softirq + steal) /
           static_cast<double>(sysconf(_SC_CLK_TCK));
}

// CPU seconds of this program and of the children it has waited for (the
// agents and the walking clients).
double ownCpuSeconds()
{
    auto seconds = [](const rusage &usage) {
        return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
               static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    };
    rusage self{}, children{};
    getrusage(RUSAGE_SELF, &self);
    getrusage(RUSAGE_CHILDREN, &children);
    return seconds(self) + seconds(children);
}

double monotonicSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

enum class WalkKind { Bulk, Next };
const char *kindName(WalkKind kind)
{
    return kind == WalkKind::Bulk ? "GETBULK" : "GETNEXT";
}

// Runs snmpbulkwalk or snmpwalk as a monitoring system would and counts the
// varbinds it printed (one line each with -Oq).
class Walker {
public:
    Walker(int port, const std::string &stateDir) : port_(port)
    {
        std::filesystem::create_directories(stateDir + "/persist/cert_indexes");
        std::filesystem::create_directories(stateDir + "/conf");
        for (char **e = environ; e && *e; ++e) {
            std::string kv = *e;
            if (kv.rfind("SNMP_PERSISTENT_DIR=", 0) && kv.rfind("SNMPCONFPATH=", 0) && kv.rfind("MIBS=", 0) &&
                kv.rfind("MIBDIRS=", 0) && kv.rfind("LD_PRELOAD=", 0))
                env_.push_back(kv);
        }
        env_.push_back("SNMP_PERSISTENT_DIR=" + stateDir + "/persist");
        env_.push_back("SNMPCONFPATH=" + stateDir + "/conf");
        env_.push_back("MIBS=");
    }

    size_t walk(WalkKind kind, const std::string &root) const
    {
        std::vector<std::string> args = {kind == WalkKind::Bulk ? "/usr/bin/snmpbulkwalk" : "/usr/bin/snmpwalk",
                                         "-v2c",
                                         "-c",
                                         "public",
                                         "-On",
                                         "-Oq",
                                         "-t",
                                         "5",
                                         "-r",
                                         "1"};
        if (kind == WalkKind::Bulk)
            args.push_back("-Cr25");
        args.push_back("udp:127.0.0.1:" + std::to_string(port_));
        args.push_back(root);
        return countLines(args);
    }

private:
    size_t countLines(const std::vector<std::string> &args) const
    {
        int out[2];
        if (pipe(out) != 0)
            throw std::runtime_error("pipe failed");
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, out[1], 1);
        posix_spawn_file_actions_addclose(&actions, out[0]);
        posix_spawn_file_actions_addclose(&actions, out[1]);
        std::vector<char *> argv, envp;
        for (const auto &a : args)
            argv.push_back(const_cast<char *>(a.c_str()));
        argv.push_back(nullptr);
        for (const auto &e : env_)
            envp.push_back(const_cast<char *>(e.c_str()));
        envp.push_back(nullptr);
        pid_t pid;
        int rc = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data());
        posix_spawn_file_actions_destroy(&actions);
        close(out[1]);
        if (rc != 0) {
            close(out[0]);
            throw std::runtime_error(std::string("cannot run ") + argv[0] + ": " + std::strerror(rc));
        }
        size_t lines = 0;
        char buffer[65536];
        for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;)
            lines += static_cast<size_t>(std::count(buffer, buffer + n, '\n'));
        close(out[0]);
        int status = 0;
        waitpid(pid, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
            throw std::runtime_error(std::string(argv[0]) + " failed (status " + std::to_string(status) + ")");
        return lines;
    }

    int port_;
    std::vector<std::string> env_;
};

// A sample is as many walks as make this many varbinds at least, so that
// small tables are measured over enough work to rise above the noise.
constexpr size_t kVarbindsPerSample = 3000;

// The agent's CPU time for one walk, per varbind, in microseconds.
double measureWalk(const Agent &agent, const Walker &walker, WalkKind kind, const std::string &root,
                   size_t expectedVarbinds, const std::string &what)
{
    long long before = cpuNanoseconds(agent.pid());
    size_t varbinds = walker.walk(kind, root);
    // Let the agent finish what it does after its last answer (freeing
    // retired rows from its alarm) before reading its time.
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    long long after = cpuNanoseconds(agent.pid());
    if (varbinds != expectedVarbinds)
        throw std::runtime_error(what + ": " + kindName(kind) + " walk returned " + std::to_string(varbinds) +
                                 " varbinds, expected " + std::to_string(expectedVarbinds));
    return static_cast<double>(after - before) / 1000.0 / static_cast<double>(varbinds);
}

// With two cores or more, the agent gets the first and this program and
// its clients another, so that neither moves the other around.
bool pinAgentApart(pid_t agent)
{
    if (std::thread::hardware_concurrency() < 2)
        return false;
    cpu_set_t agentCpu, clientCpu;
    CPU_ZERO(&agentCpu);
    CPU_ZERO(&clientCpu);
    CPU_SET(0, &agentCpu);
    CPU_SET(1, &clientCpu);
    return sched_setaffinity(agent, sizeof agentCpu, &agentCpu) == 0 &&
           sched_setaffinity(0, sizeof clientCpu, &clientCpu) == 0;
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    size_t mid = values.size() / 2;
    return values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
}

// Interquartile range relative to the median: how much repeated
// measurements of one figure disagree.
double spread(std::vector<double> values)
{
    if (values.size() < 4)
        return 0;
    std::sort(values.begin(), values.end());
    double q1 = values[values.size() / 4], q3 = values[(values.size() * 3) / 4];
    double m = median(values);
    return m > 0 ? (q3 - q1) / m : 0;
}

struct Options {
    std::vector<int> sizes = {10, 100, 1000};
    int walks = 11;
    int coldWalks = 5;
    int memoryWalks = 2000;
    int countedWalks = 3; // walks of each table under callgrind
    int countedRows = 100;
};

Options parseOptions(int argc, char **argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= argc)
                throw std::runtime_error(arg + " needs a value");
            return argv[++i];
        };
        if (arg == "--quick") {
            options.sizes = {100};
            options.walks = 3;
            options.coldWalks = 3;
            options.memoryWalks = 100;
            options.countedWalks = 1;
        } else if (arg == "--sizes") {
            options.sizes.clear();
            std::stringstream list(value());
            for (std::string size; std::getline(list, size, ',');)
                options.sizes.push_back(std::stoi(size));
        } else if (arg == "--walks") {
            options.walks = std::max(1, std::stoi(value()));
        } else if (arg == "--memory-walks") {
            options.memoryWalks = std::max(0, std::stoi(value()));
        } else {
            throw std::runtime_error("unknown option " + arg +
                                     " (use --quick, --sizes 10,100,1000, --walks N, --memory-walks N)");
        }
    }
    return options;
}

struct Figures {
    std::vector<double> module, reference, sortedReference;
};

// Walks start at a table's entry; the guard table that follows every
// measured table sits beside the entry (see reference_tables.c).
std::string referenceRoot(size_t tableNumber, bool sorted)
{
    return "1.3.6.1.4.1.53917.99.1.1." + std::to_string(tableNumber) + (sorted ? ".2" : ".1") + ".1";
}

std::string moduleTable(const MeasuredTable &table)
{
    return orv3::test::oidJoin(orv3::test::kMonitorsRoot, table.arcs);
}

std::string moduleRoot(const MeasuredTable &table)
{
    return moduleTable(table) + ".1";
}

AgentOptions agentFor(int rows)
{
    MachineBuilder machine;
    std::string shapes, guards;
    for (const MeasuredTable &table : kTables) {
        table.addRows(machine, rows);
        if (!shapes.empty()) {
            shapes += ';';
            guards += ',';
        }
        shapes += std::to_string(rows) + ":" + table.referenceShape;
        guards += moduleTable(table) + ".2";
    }
    AgentOptions options;
    options.machineJson = machine.json();
    options.clockStart = kFrozenClock;
    options.env["ORV3_REFERENCE_TABLES"] = shapes;
    options.env["ORV3_REFERENCE_GUARDS"] = guards;
    // The call log is a test instrument that a controller does not have.
    options.env["ORV3_SIM_CALL_LOG"] = "";
    options.extraConfig.push_back(std::string("dlmod orv3_reference_tables ") + ORV3_REFERENCE_PATH);
    return options;
}

// User-space instructions the agent executes per varbind of GETBULK walks,
// counted by callgrind: exact, and untouched by other load on the machine,
// where CPU time (kernel time included) is what a user feels but is noisy.
void countInstructions(const Options &options)
{
    const int rows = options.countedRows;
    AgentOptions agentOptions = agentFor(rows);
    // The dumps go to the agent's directory, found from the persistent
    // directory the harness gives the agent inside it.
    const std::string dumps = "callgrind.out";
    // time() is left out: here it is the simulator's controllable clock, which
    // under callgrind's slowness reads its file on nearly every call; on a
    // controller it is the C library's.
    agentOptions.wrapper = {"/usr/bin/valgrind", "--tool=callgrind", "--toggle-collect=time", "--collect-atstart=yes",
                            "--callgrind-out-file=%q{SNMP_PERSISTENT_DIR}/../" + dumps};
    agentOptions.startTimeout = std::chrono::seconds(120);
    Agent agent(agentOptions);
    Walker walker(agent.port(), agent.dir() + "/walker");
    const std::string pid = std::to_string(agent.pid());
    auto control = [&](const std::string &option) {
        std::string command = "/usr/bin/callgrind_control " + option + " " + pid + " >/dev/null 2>&1";
        if (std::system(command.c_str()) != 0)
            throw std::runtime_error("callgrind_control " + option + " failed");
    };
    int dumpNumber = 0;
    // Instructions since the last zeroing, from the dump callgrind writes.
    auto instructionsSinceZero = [&]() {
        control("--dump");
        std::ifstream dump(agent.dir() + "/" + dumps + "." + std::to_string(++dumpNumber));
        for (std::string line; std::getline(dump, line);)
            if (line.rfind("summary: ", 0) == 0)
                return std::stod(line.substr(9));
        throw std::runtime_error("no callgrind summary in dump " + std::to_string(dumpNumber));
    };

    std::printf("\nUser-space instructions of the agent per varbind (callgrind), GETBULK walks of %d rows, %d "
                "walks each:\n",
                rows, options.countedWalks);
    std::printf("  %-26s %10s %10s %6s %10s %6s\n", "table", "module", "ref", "ratio", "sorted", "ratio");
    for (size_t t = 0; t < std::size(kTables); ++t) {
        const MeasuredTable &table = kTables[t];
        const size_t expected = static_cast<size_t>(rows) * static_cast<size_t>(table.columns);
        const std::string roots[3] = {moduleRoot(table), referenceRoot(t + 1, false), referenceRoot(t + 1, true)};
        double perVarbind[3];
        for (int side = 0; side < 3; ++side) {
            measureWalk(agent, walker, WalkKind::Bulk, roots[side], expected, table.name); // warm
            control("--zero");
            for (int walk = 0; walk < options.countedWalks; ++walk)
                measureWalk(agent, walker, WalkKind::Bulk, roots[side], expected, table.name);
            perVarbind[side] = instructionsSinceZero() / static_cast<double>(expected * options.countedWalks);
        }
        std::printf("  %-26s %10.0f %10.0f %6.3f %10.0f %6.3f\n", table.name, perVarbind[0], perVarbind[1],
                    perVarbind[0] / perVarbind[1], perVarbind[2], perVarbind[0] / perVarbind[2]);
        std::fflush(stdout);
    }
    agent.stop();
}

int run(const Options &options)
{
    unsigned cores = std::thread::hardware_concurrency();
    const double busyAtStart = machineBusySeconds(), ownAtStart = ownCpuSeconds(), startedAt = monotonicSeconds();
    std::printf("Agent CPU per varbind (us): the module's tables against zero-work iterator tables of the same\n");
    std::printf("shape in the same snmpd (ref: unsorted; sorted: with the iterator's sorted hint), walked\n");
    std::printf("alternately in %d rounds of one sample each (at least %zu varbinds a sample). Figures are\n",
                options.walks, kVarbindsPerSample);
    std::printf("medians; a ratio is the median of the rounds' ratios, and its spread the interquartile range\n");
    std::printf("of those. Machine: %u cores.\n\n", cores);
    std::printf("%-26s %-21s %5s %-7s %10s %10s %6s %10s %6s %7s\n", "table", "loaded from", "rows", "walk",
                "module us", "ref us", "ratio", "sorted us", "ratio", "spread");

    double worstSpread = 0;
    bool pinned = false;
    std::vector<std::string> coldLines, scaleLines;
    std::map<std::string, std::vector<double>> ratios; // for the summary
    std::string memoryLine;
    for (int rows : options.sizes) {
        AgentOptions agentOptions = agentFor(rows);
        Agent agent(agentOptions);
        pinned = pinAgentApart(agent.pid());
        Walker walker(agent.port(), agent.dir() + "/walker");
        for (size_t t = 0; t < std::size(kTables); ++t) {
            const MeasuredTable &table = kTables[t];
            const size_t expected = static_cast<size_t>(rows) * static_cast<size_t>(table.columns);
            const std::string roots[3] = {moduleRoot(table), referenceRoot(t + 1, false), referenceRoot(t + 1, true)};
            for (WalkKind kind : {WalkKind::Bulk, WalkKind::Next}) {
                // One walk of each before measuring: the module's first load,
                // and both sides' first touch of their pages.
                for (const std::string &root : roots)
                    measureWalk(agent, walker, kind, root, expected, table.name);
                Figures figures;
                std::vector<double> *sides[3] = {&figures.module, &figures.reference, &figures.sortedReference};
                // A round's samples are made of single walks of the three
                // sides in turn, so that a drift of the machine's speed within
                // the round falls on all three alike.
                const size_t walksPerSample = std::max<size_t>(1, kVarbindsPerSample / expected);
                for (int round = 0; round < options.walks; ++round) {
                    double sum[3] = {0, 0, 0};
                    for (size_t walk = 0; walk < walksPerSample; ++walk) {
                        for (int k = 0; k < 3; ++k) {
                            int side = (round + static_cast<int>(walk) + k) % 3; // rotate who goes first
                            sum[side] += measureWalk(agent, walker, kind, roots[side], expected, table.name);
                        }
                    }
                    for (int side = 0; side < 3; ++side)
                        sides[side]->push_back(sum[side] / static_cast<double>(walksPerSample));
                }
                // The machine's speed drifts more between rounds than within
                // one: ratios are taken round by round, then their median.
                std::vector<double> toReference, toSorted;
                for (size_t round = 0; round < figures.module.size(); ++round) {
                    toReference.push_back(figures.module[round] / figures.reference[round]);
                    toSorted.push_back(figures.module[round] / figures.sortedReference[round]);
                }
                double ratio = median(toReference), sortedRatio = median(toSorted);
                double tableSpread = std::max(spread(toReference), spread(toSorted));
                worstSpread = std::max(worstSpread, tableSpread);
                std::printf("%-26s %-21s %5d %-7s %10.2f %10.2f %6.2f %10.2f %6.2f %6.0f%%\n", table.name, table.family,
                            rows, kindName(kind), median(figures.module), median(figures.reference), ratio,
                            median(figures.sortedReference), sortedRatio, tableSpread * 100);
                std::fflush(stdout);
                ratios[std::string(kindName(kind)) + " vs reference"].push_back(ratio);
                ratios[std::string(kindName(kind)) + " vs sorted reference"].push_back(sortedRatio);
            }
            // Cold: the first walk after a reload, forced by moving the clock on.
            std::vector<double> cold, warm;
            long clock = kFrozenClock;
            for (int walk = 0; walk < options.coldWalks; ++walk) {
                clock += 60;
                agent.setClock(clock);
                cold.push_back(measureWalk(agent, walker, WalkKind::Bulk, roots[0], expected, table.name));
                warm.push_back(measureWalk(agent, walker, WalkKind::Bulk, roots[0], expected, table.name));
            }
            char line[200];
            std::snprintf(line, sizeof line, "%-26s %5d rows: cold %8.2f us/varbind, warm %8.2f, cold/warm %.2f",
                          table.name, rows, median(cold), median(warm), median(cold) / median(warm));
            coldLines.push_back(line);
            agent.setClock(kFrozenClock);
            std::snprintf(line, sizeof line, "%-26s %5d rows: every walk complete, %zu varbinds each", table.name, rows,
                          expected);
            scaleLines.push_back(line);
        }

        // Memory over many warm walks of every table, at the middle size measured.
        if (rows == options.sizes[options.sizes.size() / 2] && options.memoryWalks > 0) {
            orv3::test::SnmpClient client = agent.client();
            auto walkAll = [&] {
                for (const MeasuredTable &table : kTables) {
                    const std::string root = moduleRoot(table);
                    std::string at = root;
                    while (true) {
                        orv3::test::Response r = client.getBulk(0, 25, {at});
                        if (!r.ok() || r.varbinds.empty())
                            throw std::runtime_error("memory walk failed: " + r.toString());
                        bool done = false;
                        for (const auto &vb : r.varbinds) {
                            if (vb.oid.rfind(root + ".", 0) != 0 || vb.isException()) {
                                done = true;
                                break;
                            }
                            at = vb.oid;
                        }
                        if (done)
                            break;
                    }
                }
            };
            for (int walk = 0; walk < 20; ++walk)
                walkAll();
            long before = residentKiB(agent.pid());
            for (int walk = 0; walk < options.memoryWalks; ++walk)
                walkAll();
            long after = residentKiB(agent.pid());
            char line[200];
            std::snprintf(line, sizeof line,
                          "Resident memory of snmpd, %d rows per table: %ld KiB before %d warm walks of every "
                          "table, %ld KiB after (growth %ld KiB)",
                          rows, before, options.memoryWalks, after, after - before);
            memoryLine = line;
        }
        agent.stop();
    }

    std::printf("\nCold walks (GETBULK, the first after a reload) against warm ones, medians of %d:\n",
                options.coldWalks);
    for (const auto &line : coldLines)
        std::printf("  %s\n", line.c_str());
    std::printf("\nScale:\n");
    for (const auto &line : scaleLines)
        std::printf("  %s\n", line.c_str());
    if (!memoryLine.empty())
        std::printf("\n%s\n", memoryLine.c_str());
    countInstructions(options);
    std::printf("\nWorst ratios of CPU time:");
    for (const auto &[what, values] : ratios)
        std::printf(" %s %.2f;", what.c_str(), *std::max_element(values.begin(), values.end()));
    const double elapsed = monotonicSeconds() - startedAt;
    const double otherLoad =
        std::max(0.0, (machineBusySeconds() - busyAtStart) - (ownCpuSeconds() - ownAtStart)) / elapsed;
    std::printf("\nRun of %.0f s; %s; other load on the machine meanwhile: %.2f cores on average.\n", elapsed,
                pinned ? "agent on core 0, clients on core 1" : "agent and clients not pinned", otherLoad);
    std::string reasons;
    if (otherLoad > 0.2)
        reasons += "other programs kept " + std::to_string(otherLoad).substr(0, 4) + " cores busy";
    if (worstSpread > 0.10) {
        if (!reasons.empty())
            reasons += " and ";
        reasons += "the rounds' ratios of one figure scatter by up to " +
                   std::to_string(static_cast<int>(worstSpread * 100 + 0.5)) + "% (interquartile range)";
    }
    if (!reasons.empty())
        std::printf("WARNING: some figures are unreliable: %s; run again on a quiet machine.\n", reasons.c_str());
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(parseOptions(argc, argv));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "walk_cost_bench: %s\n", error.what());
        return 1;
    }
}

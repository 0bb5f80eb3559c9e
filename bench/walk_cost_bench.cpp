// What monitoring costs the agent, table by table and for a whole
// Prometheus scrape, on the sample machine and on the largest controller.
//
//   walk_cost_bench [--quick] [--machines sample.json,large.json] [--rounds N]
//                   [--cold N] [--scrapes N] [--memory-scrapes N] [--instructions]
//
// For each machine, one snmpd serves it with the module and the simulator
// (clock frozen). Every table the module declares is walked once to learn
// its rows and its columns' kinds and text lengths (bench/table_survey.h);
// then a second snmpd serves the machine beside a zero-work iterator table
// of each table's shape (bench/reference_tables.c, registered with the
// iterator's sorted hint as the module's tables are), and each table is
// asked for as monitoring systems ask:
//
//  - a GETBULK walk, as snmpbulkwalk -Cr25 makes it: one varbind,
//    max-repetitions 25, again from the last varbind answered;
//  - an snmptable-style request: GETBULK with one varbind per column and
//    max-repetitions = rows, repeated from the last row answered until every
//    column has left the table (the agent caps how many varbinds one answer
//    holds).
//
// The agent's CPU time is read from /proc/PID/task/*/schedstat around every
// request; module and reference are asked alternately in rounds, the ratio
// taken round by round, and the median printed with its spread. Cold walks
// (the first after a reload, forced by moving the clock on) are set against
// warm ones. Last, Debian's Prometheus SNMP exporter scrapes the module with
// the shipped generator configuration, warm and cold (every table due, as at
// each scrape interval): wall time, the exporter's snmp_scrape_duration_seconds,
// the agent's CPU per scrape, samples and packets; and the agent's resident
// memory over many cold scrapes of the last machine.
//
// With --instructions it also counts, under callgrind, the user-space
// instructions the agent executes per varbind for each table and its
// reference: exact and untouched by other load, where CPU time (kernel time
// included) is what a user feels but is noisy. The dumps stay in the agent's
// directory when ORV3_E2E_KEEP is set, for callgrind_annotate.
#include "agent_process.h"
#include "bench_measure.h"
#include "harness/agent.h"
#include "harness/prometheus_text.h"
#include "harness/snmp_exporter.h"
#include "table_survey.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#ifndef ORV3_REFERENCE_PATH
#define ORV3_REFERENCE_PATH "liborv3_reference_tables.so"
#endif

namespace {

using orv3::test::Agent;
using orv3::test::AgentOptions;
using orv3::test::SnmpClient;

constexpr long kFrozenClock = 1750000000;
// How far the clock moves to make every table due: past the longest
// refresh period of any table (the power samples' 30 s).
constexpr long kClockMove = 60;

// What the figures are held to on this machine.
constexpr double kTableTarget = 1.05;        // module / zero-work table, per varbind
constexpr double kColdTarget = 1.5;          // first walk after a reload / warm walk
constexpr double kScrapeWallTargetMs = 1000; // a whole cold scrape of the largest machine
constexpr double kScrapeCpuTargetMs = 300;
constexpr long kGrowthTargetKiB = 97; // 100 kB of resident memory over the memory scrapes

struct Options {
    std::vector<std::string> machines = {"sample.json", "large.json"};
    int rounds = 7;
    int coldWalks = 5;
    int scrapes = 11;
    int memoryScrapes = 2000;
    // Varbinds a sample of one side is made of, at least.
    size_t varbindsPerSample = 3000;
    bool instructions = false;
    bool quick = false;
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
            options.quick = true;
            options.rounds = 1;
            options.coldWalks = 1;
            options.scrapes = 2;
            options.memoryScrapes = 20;
            options.varbindsPerSample = 100;
        } else if (arg == "--machines") {
            options.machines.clear();
            std::stringstream list(value());
            for (std::string machine; std::getline(list, machine, ',');)
                options.machines.push_back(machine);
        } else if (arg == "--rounds") {
            options.rounds = std::max(1, std::stoi(value()));
        } else if (arg == "--cold") {
            options.coldWalks = std::max(1, std::stoi(value()));
        } else if (arg == "--scrapes") {
            options.scrapes = std::max(1, std::stoi(value()));
        } else if (arg == "--memory-scrapes") {
            options.memoryScrapes = std::max(0, std::stoi(value()));
        } else if (arg == "--instructions") {
            options.instructions = true;
        } else {
            throw std::runtime_error("unknown option " + arg +
                                     " (use --quick, --machines A,B, --rounds N, --cold N, --scrapes N, "
                                     "--memory-scrapes N, --instructions)");
        }
    }
    return options;
}

// ---- asking the agent ----------------------------------------------------------

enum class Ask { Walk, Table };
const char *askName(Ask ask)
{
    return ask == Ask::Walk ? "walk" : "table";
}

bool inside(const std::string &oid, const std::string &root)
{
    return oid.size() > root.size() && oid.compare(0, root.size(), root) == 0 && oid[root.size()] == '.';
}

// What snmptable asks: every column at once, max-repetitions = rows, again
// from the last row answered while any column is still inside the table.
// Returns the varbinds answered inside the columns; `passes` counts the
// repetitions the agent made, each one call of the table's handler.
size_t tableRequest(SnmpClient &client, const std::vector<std::string> &columns, size_t rows, size_t &passes)
{
    std::vector<std::string> cursor = columns;
    std::vector<size_t> open(columns.size());
    for (size_t c = 0; c < open.size(); ++c)
        open[c] = c;
    size_t varbinds = 0;
    while (!open.empty()) {
        std::vector<std::string> ask;
        for (size_t c : open)
            ask.push_back(cursor[c]);
        orv3::test::Response response = client.getBulk(0, static_cast<int>(rows), ask);
        if (!response.ok() || response.varbinds.empty())
            throw std::runtime_error("table request failed: " + response.toString());
        passes += (response.varbinds.size() + open.size() - 1) / open.size();
        std::vector<bool> ended(columns.size(), false);
        for (size_t i = 0; i < response.varbinds.size(); ++i) {
            const size_t c = open[i % open.size()];
            const orv3::test::VarBind &varbind = response.varbinds[i];
            if (ended[c])
                continue;
            if (varbind.isException() || !inside(varbind.oid, columns[c])) {
                ended[c] = true;
                continue;
            }
            cursor[c] = varbind.oid;
            ++varbinds;
        }
        std::vector<size_t> still;
        for (size_t c : open)
            if (!ended[c])
                still.push_back(c);
        open = still;
    }
    return varbinds;
}

// One side of a comparison: a table, the module's or its reference, and how
// to ask for it.
struct Side {
    std::string entry;
    std::vector<std::string> columns;
};

class Asker {
public:
    Asker(const Agent &agent) : agent_(agent), client_(agent.client()) {}

    // The agent's CPU time for one request of a table, per varbind, in
    // microseconds; checks that every row and column came back. `passes`
    // gets the number of times the table's handler was called: once for each
    // repetition of a GETBULK that reached the table.
    double measure(Ask ask, const Side &side, size_t rows, size_t expected, const std::string &what,
                   size_t *passes = nullptr)
    {
        size_t handlerPasses = 0;
        long long before = cpuNanoseconds(agent_.pid());
        size_t varbinds = ask == Ask::Walk ? bulkWalk(client_, side.entry).size()
                                           : tableRequest(client_, side.columns, rows, handlerPasses);
        // Let the agent finish what it does after its last answer (freeing
        // retired rows from its alarm) before reading its time.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        long long after = cpuNanoseconds(agent_.pid());
        if (varbinds != expected)
            throw std::runtime_error(what + ": " + askName(ask) + " returned " + std::to_string(varbinds) +
                                     " varbinds, expected " + std::to_string(expected));
        // A walk's repetitions hold one varbind each, and one more leaves the table.
        if (passes)
            *passes = ask == Ask::Walk ? varbinds + 1 : handlerPasses;
        return static_cast<double>(after - before) / 1000.0 / static_cast<double>(varbinds);
    }

    // The agent's CPU time for a GETNEXT past the table's last row: one start
    // of a request by the table and a look through its rows, then the answer
    // from the guard table that follows. In microseconds.
    double pastLastRow(const Side &side)
    {
        long long before = cpuNanoseconds(agent_.pid());
        orv3::test::Response response = client_.getNext({side.columns.back() + ".2147483647"});
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        long long after = cpuNanoseconds(agent_.pid());
        if (!response.ok() || response.varbinds.size() != 1 || inside(response.varbinds[0].oid, side.entry))
            throw std::runtime_error("GETNEXT past the last row of " + side.entry + ": " + response.toString());
        return static_cast<double>(after - before) / 1000.0;
    }

    SnmpClient &client() { return client_; }

private:
    const Agent &agent_;
    SnmpClient client_;
};

// ---- the agents -----------------------------------------------------------------

AgentOptions moduleAgent(const std::string &machine)
{
    AgentOptions options;
    options.machinePath = machine;
    options.clockStart = kFrozenClock;
    // The call log is a test instrument that a controller does not have.
    options.env["ORV3_SIM_CALL_LOG"] = "";
    return options;
}

// The module beside a zero-work table of each surveyed table's shape, the
// k-th (from 1) at 1.3.6.1.4.1.53917.99.1.1.k.2.1 (sorted), each followed by
// a guard table as the module's tables are (see reference_tables.c).
AgentOptions comparingAgent(const std::string &machine, const std::vector<TableShape> &shapes)
{
    AgentOptions options = moduleAgent(machine);
    std::string tables, guards;
    for (const TableShape &shape : shapes) {
        tables += (tables.empty() ? "" : ";") + std::to_string(shape.rows) + ":" + shape.referenceKinds;
        guards += (guards.empty() ? "" : ",") + shape.oid + ".2";
    }
    options.env["ORV3_REFERENCE_TABLES"] = tables;
    options.env["ORV3_REFERENCE_GUARDS"] = guards;
    options.extraConfig.push_back(std::string("dlmod orv3_reference_tables ") + ORV3_REFERENCE_PATH);
    return options;
}

Side moduleSide(const TableShape &shape)
{
    Side side{shape.entry(), {}};
    for (unsigned column : shape.columns)
        side.columns.push_back(shape.column(column));
    return side;
}

Side referenceSide(size_t number, const TableShape &shape)
{
    const std::string entry = "1.3.6.1.4.1.53917.99.1.1." + std::to_string(number) + ".2.1";
    Side side{entry, {}};
    for (size_t column = 1; column <= shape.columns.size(); ++column)
        side.columns.push_back(entry + "." + std::to_string(column));
    return side;
}

// ---- the figures ----------------------------------------------------------------

struct Comparison {
    double module = 0, reference = 0, ratio = 0, spread = 0;
    // For a table rebuilt on every request: its figure and ratio with the
    // rebuilds taken off.
    double moduleWithoutRebuild = 0, ratioWithoutRebuild = 0;
};

struct TableFigures {
    std::string machine;
    TableShape shape;
    Comparison byAsk[2];
    double cold = 0, warm = 0; // module, GETBULK walk, us per varbind
    double rebuild = 0;        // us a request, for tables rebuilt on every request
};

// What a request of a table rebuilt on every request costs more than one of
// its reference: a GETNEXT past the last row of each, alternately.
double rebuildCost(Asker &asker, const Side &module, const Side &reference, const Options &options)
{
    std::vector<double> differences;
    const int requests = std::max(5, static_cast<int>(options.varbindsPerSample / 100));
    for (int round = 0; round < options.rounds; ++round) {
        double sum = 0;
        for (int request = 0; request < requests; ++request)
            sum += (request + round) % 2 ? -asker.pastLastRow(reference) + asker.pastLastRow(module)
                                         : asker.pastLastRow(module) - asker.pastLastRow(reference);
        differences.push_back(sum / requests);
    }
    return median(differences);
}

// A sample is as many requests as make options.varbindsPerSample, so that
// small tables are measured over enough work to rise above the noise.
Comparison compare(Asker &asker, Ask ask, const Side &module, const Side &reference, const TableShape &shape,
                   const Options &options, double rebuild)
{
    const size_t expected = shape.varbinds();
    const Side *sides[2] = {&module, &reference};
    // One request of each before measuring: the module's first load, and
    // both sides' first touch of their pages.
    for (const Side *side : sides)
        asker.measure(ask, *side, shape.rows, expected, shape.name);
    std::vector<double> perSide[2], ratios, withoutRebuild, ratiosWithoutRebuild;
    const size_t perSample = std::max<size_t>(1, options.varbindsPerSample / expected);
    for (int round = 0; round < options.rounds; ++round) {
        double sum[2] = {0, 0};
        size_t modulePasses = 0;
        // Single requests of the two sides in turn, so that a drift of the
        // machine's speed within the round falls on both alike.
        for (size_t request = 0; request < perSample; ++request)
            for (int k = 0; k < 2; ++k) {
                const int side = (round + static_cast<int>(request) + k) % 2;
                size_t passes = 0;
                sum[side] += asker.measure(ask, *sides[side], shape.rows, expected, shape.name, &passes);
                if (side == 0)
                    modulePasses += passes;
            }
        for (int side = 0; side < 2; ++side)
            perSide[side].push_back(sum[side] / static_cast<double>(perSample));
        ratios.push_back(perSide[0].back() / perSide[1].back());
        const double rebuilds = rebuild * static_cast<double>(modulePasses) /
                                static_cast<double>(perSample * expected);
        withoutRebuild.push_back(perSide[0].back() - rebuilds);
        ratiosWithoutRebuild.push_back(withoutRebuild.back() / perSide[1].back());
    }
    return {median(perSide[0]), median(perSide[1]),  median(ratios),
            spread(ratios),     median(withoutRebuild), median(ratiosWithoutRebuild)};
}

// ---- the exporter's scrape ---------------------------------------------------------

struct ScrapeFigures {
    double wallMs = 0, exporterMs = 0, agentCpuMs = 0;
    size_t samples = 0, packets = 0;
};

long inPackets(SnmpClient &client)
{
    orv3::test::Response response = client.get({"1.3.6.1.2.1.11.1.0"}); // snmpInPkts
    if (!response.ok() || response.varbinds.empty() || response.varbinds[0].isException())
        throw std::runtime_error("cannot read snmpInPkts: " + response.toString());
    return static_cast<long>(response.varbinds[0].unsignedValue);
}

ScrapeFigures scrapeOnce(Agent &agent, const orv3::test::SnmpExporter &exporter, SnmpClient &client)
{
    const long packetsBefore = inPackets(client);
    const long long cpuBefore = cpuNanoseconds(agent.pid());
    const double startedAt = monotonicSeconds();
    orv3::test::HttpResponse response = exporter.scrape(agent.port(), "orv3_monitors");
    const double wall = monotonicSeconds() - startedAt;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const long long cpuAfter = cpuNanoseconds(agent.pid());
    if (!response.ok())
        throw std::runtime_error("scrape failed: HTTP " + std::to_string(response.status) + " " + response.error +
                                 "\n" + exporter.logText());
    ScrapeFigures figures;
    figures.wallMs = wall * 1000;
    figures.agentCpuMs = static_cast<double>(cpuAfter - cpuBefore) / 1e6;
    // The read of the counter after the scrape counts itself too.
    figures.packets = static_cast<size_t>(inPackets(client) - packetsBefore - 1);
    for (const orv3::test::Sample &sample : orv3::test::parseExposition(response.body)) {
        if (sample.name == "snmp_scrape_duration_seconds")
            figures.exporterMs = sample.value * 1000;
        else if (sample.name.rfind("snmp_scrape_", 0) != 0)
            ++figures.samples;
    }
    return figures;
}

ScrapeFigures medianScrape(const std::vector<ScrapeFigures> &scrapes)
{
    std::vector<double> wall, exporter, cpu;
    for (const ScrapeFigures &s : scrapes) {
        wall.push_back(s.wallMs);
        exporter.push_back(s.exporterMs);
        cpu.push_back(s.agentCpuMs);
    }
    return {median(wall), median(exporter), median(cpu), scrapes.back().samples, scrapes.back().packets};
}

// ---- the run ---------------------------------------------------------------------

struct MachineRun {
    std::string machine;
    std::vector<TableFigures> tables;
    ScrapeFigures warmScrape, coldScrape;
    long loadedKiB = 0, residentKiB = 0, residentAfterKiB = 0;
    int warmUpScrapes = 0, memoryScrapes = 0;
};

std::string machineName(const std::string &file)
{
    return std::filesystem::path(file).stem().string();
}

// Survey, scrapes and memory, on an agent with the module alone.
std::vector<TableShape> surveyAndScrape(const Options &options, MachineRun &run, bool measureMemory)
{
    Agent agent(moduleAgent(run.machine));
    SnmpClient client = agent.client();
    std::vector<TableShape> shapes = surveyTables(client);

    orv3::test::SnmpExporter exporter;
    long clock = kFrozenClock;
    std::vector<ScrapeFigures> warm, cold;
    for (int scrape = 0; scrape < options.scrapes; ++scrape) {
        clock += kClockMove;
        agent.setClock(clock);
        cold.push_back(scrapeOnce(agent, exporter, client));
        warm.push_back(scrapeOnce(agent, exporter, client));
    }
    run.coldScrape = medianScrape(cold);
    run.warmScrape = medianScrape(warm);
    if (measureMemory) {
        auto coldScrapes = [&](int count) {
            for (int scrape = 0; scrape < count; ++scrape) {
                clock += kClockMove;
                agent.setClock(clock);
                scrapeOnce(agent, exporter, client);
            }
        };
        run.loadedKiB = residentKiB(agent.pid());
        // The agent's heap and net-snmp's buffers settle over the first
        // scrapes; growth is what comes after.
        run.warmUpScrapes = std::max(10, options.memoryScrapes / 10);
        coldScrapes(run.warmUpScrapes);
        run.residentKiB = residentKiB(agent.pid());
        coldScrapes(options.memoryScrapes);
        run.residentAfterKiB = residentKiB(agent.pid());
        run.memoryScrapes = options.memoryScrapes;
    }
    return shapes;
}

void measureTables(const Options &options, MachineRun &run, const std::vector<TableShape> &shapes)
{
    std::vector<TableShape> measured;
    for (const TableShape &shape : shapes)
        if (shape.rows > 0)
            measured.push_back(shape);
    Agent agent(comparingAgent(run.machine, measured));
    pinAgentApart(agent.pid());
    Asker asker(agent);
    for (size_t t = 0; t < measured.size(); ++t) {
        const TableShape &shape = measured[t];
        TableFigures figures{machineName(run.machine), shape, {}, 0, 0};
        const Side module = moduleSide(shape), reference = referenceSide(t + 1, shape);
        if (shape.rebuiltEveryRequest)
            figures.rebuild = rebuildCost(asker, module, reference, options);
        for (Ask ask : {Ask::Walk, Ask::Table})
            figures.byAsk[static_cast<int>(ask)] =
                compare(asker, ask, module, reference, shape, options, figures.rebuild);
        // Cold: the first walk after a reload, forced by moving the clock on.
        std::vector<double> cold, warm;
        long clock = kFrozenClock;
        for (int walk = 0; walk < options.coldWalks; ++walk) {
            clock += kClockMove;
            agent.setClock(clock);
            cold.push_back(asker.measure(Ask::Walk, module, shape.rows, shape.varbinds(), shape.name));
            warm.push_back(asker.measure(Ask::Walk, module, shape.rows, shape.varbinds(), shape.name));
        }
        agent.setClock(kFrozenClock);
        figures.cold = median(cold);
        figures.warm = median(warm);
        const Comparison &walk = figures.byAsk[0], &table = figures.byAsk[1];
        std::printf("%-8s %-36s %5zu %6zu %8.2f %8.2f %6.2f %8.2f %8.2f %6.2f %9.2f %6.2f %6.0f%%\n",
                    figures.machine.c_str(), shape.name.c_str(), shape.rows, shape.varbinds(), walk.module,
                    walk.reference, walk.ratio, table.module, table.reference, table.ratio, figures.cold,
                    figures.cold / figures.warm, std::max(walk.spread, table.spread) * 100);
        if (shape.rebuiltEveryRequest)
            std::printf("%-8s   %-34s %5s %6s %8.2f %8s %6.2f %8.2f %8s %6.2f  (rebuilt on every request: %.1f us "
                        "a request, taken off)\n",
                        "", "  without the rebuilds", "", "", walk.moduleWithoutRebuild, "", walk.ratioWithoutRebuild,
                        table.moduleWithoutRebuild, "", table.ratioWithoutRebuild, figures.rebuild);
        std::fflush(stdout);
        run.tables.push_back(figures);
    }
    // Every declared table is accounted for, also those this machine leaves empty.
    for (const TableShape &shape : shapes)
        if (shape.rows == 0)
            std::printf("%-8s %-36s     0: no rows on this machine\n", machineName(run.machine).c_str(),
                        shape.name.c_str());
}

// User-space instructions per varbind of a GETBULK walk of every table and
// of its reference, counted by callgrind.
void countInstructions(const std::string &machine, const std::vector<TableShape> &shapes)
{
    std::vector<TableShape> measured;
    for (const TableShape &shape : shapes)
        if (shape.rows > 0)
            measured.push_back(shape);
    AgentOptions agentOptions = comparingAgent(machine, measured);
    // The dumps go to the agent's directory, found from the persistent
    // directory the harness gives the agent inside it. time() is left out:
    // here it is the simulator's controllable clock, which under callgrind's
    // slowness reads its file on nearly every call; on a controller it is
    // the C library's.
    const std::string dumps = "callgrind.out";
    agentOptions.wrapper = {"/usr/bin/valgrind", "--tool=callgrind", "--toggle-collect=time", "--collect-atstart=yes",
                            "--callgrind-out-file=%q{SNMP_PERSISTENT_DIR}/../" + dumps};
    agentOptions.startTimeout = std::chrono::seconds(120);
    Agent agent(agentOptions);
    Asker asker(agent);
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
    std::printf("\nUser-space instructions of the agent per varbind (callgrind), %s, one GETBULK walk each"
                " (dumps %s/%s.N):\n",
                machineName(machine).c_str(), agent.dir().c_str(), dumps.c_str());
    std::printf("  %-36s %10s %10s %6s\n", "table", "module", "ref", "ratio");
    for (size_t t = 0; t < measured.size(); ++t) {
        const TableShape &shape = measured[t];
        const Side sides[2] = {moduleSide(shape), referenceSide(t + 1, shape)};
        double perVarbind[2];
        for (int side = 0; side < 2; ++side) {
            asker.measure(Ask::Walk, sides[side], shape.rows, shape.varbinds(), shape.name); // warm
            control("--zero");
            asker.measure(Ask::Walk, sides[side], shape.rows, shape.varbinds(), shape.name);
            perVarbind[side] = instructionsSinceZero() / static_cast<double>(shape.varbinds());
        }
        std::printf("  %-36s %10.0f %10.0f %6.3f\n", shape.name.c_str(), perVarbind[0], perVarbind[1],
                    perVarbind[0] / perVarbind[1]);
        std::fflush(stdout);
    }
}

int run(const Options &options)
{
    const double busyAtStart = machineBusySeconds(), ownAtStart = ownCpuSeconds(), startedAt = monotonicSeconds();
    std::printf("Agent CPU per varbind (us) of every table of the module against a zero-work iterator table of\n"
                "the same rows and columns in the same snmpd: a GETBULK walk (as snmpbulkwalk -Cr25) and an\n"
                "snmptable-style request (GETBULK, a varbind per column, max-repetitions = rows). Medians of %d\n"
                "round(s), each of at least %zu varbinds a side; a ratio is the median of the rounds' ratios and\n"
                "its spread their interquartile range. Cold: the first walk after a reload, us per varbind and\n"
                "against a warm walk. Machine: %u cores.\n\n",
                options.rounds, options.varbindsPerSample, std::thread::hardware_concurrency());
    std::printf("%-8s %-36s %5s %6s %8s %8s %6s %8s %8s %6s %9s %6s %7s\n", "machine", "table", "rows", "vbs",
                "walk us", "ref us", "ratio", "table us", "ref us", "ratio", "cold us", "c/w", "spread");

    std::vector<MachineRun> runs;
    for (size_t m = 0; m < options.machines.size(); ++m) {
        MachineRun run;
        run.machine = options.machines[m];
        const bool last = m + 1 == options.machines.size();
        std::vector<TableShape> shapes = surveyAndScrape(options, run, last && options.memoryScrapes > 0);
        measureTables(options, run, shapes);
        if (options.instructions)
            countInstructions(run.machine, shapes);
        runs.push_back(run);
    }

    std::printf("\nA whole scrape by prometheus-snmp-exporter (module orv3_monitors of the shipped generator\n"
                "configuration), medians of %d: cold (every table due, as at each scrape interval) and warm.\n\n",
                options.scrapes);
    std::printf("%-8s %-5s %9s %12s %12s %8s %8s\n", "machine", "cache", "wall ms", "exporter ms", "agent CPU ms",
                "samples", "packets");
    for (const MachineRun &run : runs)
        for (const auto &[cache, figures] : {std::pair{"cold", run.coldScrape}, std::pair{"warm", run.warmScrape}})
            std::printf("%-8s %-5s %9.1f %12.1f %12.1f %8zu %8zu\n", machineName(run.machine).c_str(), cache,
                        figures.wallMs, figures.exporterMs, figures.agentCpuMs, figures.samples, figures.packets);
    // Most of a large scrape is net-snmp's table iterator, which looks
    // through the rows before the one asked for at every varbind, for the
    // module's tables and the zero-work ones alike.
    for (const MachineRun &run : runs) {
        double module = 0, reference = 0;
        for (const TableFigures &figures : run.tables) {
            const double varbinds = static_cast<double>(figures.shape.varbinds());
            module += (figures.shape.rebuiltEveryRequest ? figures.byAsk[0].moduleWithoutRebuild
                                                          : figures.byAsk[0].module) * varbinds;
            reference += figures.byAsk[0].reference * varbinds;
        }
        std::printf("%s: one warm GETBULK walk of every table costs the agent %.1f ms; of the zero-work tables of "
                    "the same shapes, %.1f ms.\n",
                    machineName(run.machine).c_str(), module / 1000, reference / 1000);
    }
    for (const MachineRun &run : runs)
        if (run.memoryScrapes > 0)
            std::printf("\nResident memory of snmpd serving %s: %ld KiB after the first scrapes, %ld KiB after %d "
                        "more cold scrapes, %ld KiB after %d more (growth %ld KiB).\n",
                        machineName(run.machine).c_str(), run.loadedKiB, run.residentKiB, run.warmUpScrapes,
                        run.residentAfterKiB, run.memoryScrapes, run.residentAfterKiB - run.residentKiB);

    // The targets, and which tables miss them.
    double worstSpread = 0;
    std::string costMisses, coldMisses;
    const MachineRun &largest = runs.back();
    for (const MachineRun &run : runs)
        for (const TableFigures &figures : run.tables) {
            for (int ask = 0; ask < 2; ++ask) {
                const Comparison &c = figures.byAsk[ask];
                worstSpread = std::max(worstSpread, c.spread);
                const double ratio = figures.shape.rebuiltEveryRequest ? c.ratioWithoutRebuild : c.ratio;
                if (ratio > kTableTarget) {
                    char miss[120];
                    std::snprintf(miss, sizeof miss, " %s %s %s %.2f;", figures.machine.c_str(),
                                  figures.shape.name.c_str(), askName(static_cast<Ask>(ask)), ratio);
                    costMisses += miss;
                }
            }
            if (&run == &largest && figures.cold / figures.warm > kColdTarget) {
                char miss[120];
                std::snprintf(miss, sizeof miss, " %s %.2f;", figures.shape.name.c_str(),
                              figures.cold / figures.warm);
                coldMisses += miss;
            }
        }
    auto verdict = [](const std::string &misses) { return misses.empty() ? std::string(" holds") : " misses:" + misses; };
    std::printf("\nTargets%s:\n", options.quick ? " (--quick: one short round, too few to hold a figure to them; every "
                                                    "request was answered whole)"
                                                  : "");
    std::printf("  every table <= %.2fx its zero-work table (walk and table, every machine; rebuilds taken off):%s\n",
                kTableTarget, verdict(costMisses).c_str());
    std::printf("  cold <= %.1fx warm for every table of %s:%s\n", kColdTarget,
                machineName(largest.machine).c_str(), verdict(coldMisses).c_str());
    const ScrapeFigures &scrape = largest.coldScrape;
    std::printf("  a cold scrape of %s in <= %.0f ms wall and <= %.0f ms agent CPU: %.0f ms and %.0f ms,%s\n",
                machineName(largest.machine).c_str(), kScrapeWallTargetMs, kScrapeCpuTargetMs, scrape.wallMs,
                scrape.agentCpuMs,
                scrape.wallMs <= kScrapeWallTargetMs && scrape.agentCpuMs <= kScrapeCpuTargetMs ? " holds" : " misses");
    if (largest.memoryScrapes > 0)
        std::printf("  memory growth <= %ld KiB over %d scrapes of %s: %ld KiB,%s\n", kGrowthTargetKiB,
                    largest.memoryScrapes, machineName(largest.machine).c_str(),
                    largest.residentAfterKiB - largest.residentKiB,
                    largest.residentAfterKiB - largest.residentKiB <= kGrowthTargetKiB ? " holds" : " misses");

    const double elapsed = monotonicSeconds() - startedAt;
    const double otherLoad =
        std::max(0.0, (machineBusySeconds() - busyAtStart) - (ownCpuSeconds() - ownAtStart)) / elapsed;
    std::printf("Run of %.0f s; other load on the machine meanwhile: %.2f cores on average.\n", elapsed, otherLoad);
    std::string reasons;
    if (otherLoad > 0.2)
        reasons += "other programs kept " + std::to_string(otherLoad).substr(0, 4) + " cores busy";
    if (worstSpread > 0.10)
        reasons += std::string(reasons.empty() ? "" : " and ") + "the rounds' ratios of one figure scatter by up to " +
                   std::to_string(static_cast<int>(worstSpread * 100 + 0.5)) + "% (interquartile range)";
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

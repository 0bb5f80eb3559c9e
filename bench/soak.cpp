// Soak campaigns against one snmpd with the module, the simulator and a
// private copy of machines/sample.json.
//
//   soak [--walks N] [--port P] [--edit-every W] [--warm-up W] [--tolerance-kib K]
//   soak --concurrent [--seconds S] [--managers M] [--port P]
//
// The first form walks the whole subtree N times (GETBULK, every hundredth walk
// GETNEXT) and every W walks makes the next live edit of the machine file
// (MachineEditCycle: a fan's speed, a fan removed, an LED's state, a RAID
// drive's state, an adapter function removed, and back), moving the
// simulated clock on so that every table reloads. Every walk must end
// cleanly and return as many varbinds as the first walk of the same machine
// state; after every edit the fan count and the edited fan's speed must be
// the new ones. It prints the agent's resident memory after the warm-up, in
// the middle and at the end, and fails when it grew by more than K KiB.
//
// The second form runs the concurrency campaign of the end-to-end suite
// (several managers walking and setting while the machine changes) for S
// seconds.
//
// Exit status: 0 when everything held, 1 when something failed, 2 for a
// usage error. On failure the agent's directory is kept and named.
#include "agent_process.h"
#include "harness/agent.h"
#include "harness/campaign.h"
#include "harness/oids.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace orv3::test;
using Clock = std::chrono::steady_clock;

constexpr long kStartTime = 1700000000;
// Every edit moves the clock past the longest refresh period (5 seconds).
constexpr long kClockStepPerEdit = 10;

struct Options {
    long walks = 10000;
    long editEvery = 50;
    long warmUp = 100;
    // The agent's heap holds one load of each table (the sample machine's
    // rows are a few tens of KiB) and the retired rows of the last request;
    // glibc reuses freed chunks of the same sizes. What a healthy agent adds
    // after the warm-up is page-granular noise of a few hundred KiB at most,
    // while a leak of 100 bytes a walk already adds 1 MiB in 10000 walks.
    long toleranceKiB = 1024;
    int port = 0;
    bool concurrent = false;
    long seconds = 60;
    int managers = 4;
};

[[noreturn]] void usage(const char *why)
{
    std::fprintf(stderr,
                 "soak: %s\nusage: soak [--walks N] [--port P] [--edit-every W] [--warm-up W] [--tolerance-kib K]\n"
                 "       soak --concurrent [--seconds S] [--managers M] [--port P]\n",
                 why);
    std::exit(2);
}

Options parse(int argc, char **argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        auto number = [&]() -> long {
            if (i + 1 >= argc)
                usage((arg + " needs a number").c_str());
            char *end = nullptr;
            long value = std::strtol(argv[++i], &end, 10);
            if (*end != '\0' || value < 0)
                usage((arg + " needs a number, not " + argv[i]).c_str());
            return value;
        };
        if (arg == "--walks")
            options.walks = number();
        else if (arg == "--edit-every")
            options.editEvery = number();
        else if (arg == "--warm-up")
            options.warmUp = number();
        else if (arg == "--tolerance-kib")
            options.toleranceKiB = number();
        else if (arg == "--port")
            options.port = static_cast<int>(number());
        else if (arg == "--concurrent")
            options.concurrent = true;
        else if (arg == "--seconds")
            options.seconds = number();
        else if (arg == "--managers")
            options.managers = static_cast<int>(number());
        else
            usage(("unknown option " + arg).c_str());
    }
    if (options.walks == 0 || options.editEvery == 0)
        usage("--walks and --edit-every must be at least 1");
    options.warmUp = std::min(options.warmUp, options.walks / 2);
    return options;
}

nlohmann::json sampleMachine()
{
    std::string text = readFileText(std::string(ORV3_SOURCE_DIR) + "/machines/sample.json");
    if (text.empty())
        throw std::runtime_error("cannot read " + std::string(ORV3_SOURCE_DIR) + "/machines/sample.json");
    return nlohmann::json::parse(text);
}

// Collects failures, prints the first few as they come.
struct Failures {
    long count = 0;
    void add(const std::string &what)
    {
        if (++count <= 20)
            std::printf("FAIL: %s\n", what.c_str());
        else if (count == 21)
            std::printf("FAIL: ... (further failures counted, not printed)\n");
        std::fflush(stdout);
    }
};

// Stops the agent and adds what went wrong with it; keeps its directory then.
void finish(Agent &agent, Failures &failures)
{
    if (!agent.running())
        failures.add("snmpd is no longer running (wait status " + std::to_string(agent.waitStatus()) + ")");
    std::string findings = agent.sanitizerFindings();
    if (!findings.empty())
        failures.add("sanitizer findings:\n" + findings);
    if (failures.count != 0) {
        setenv("ORV3_E2E_KEEP", "1", 1);
        std::printf("agent directory kept: %s\n", agent.dir().c_str());
    }
}

int soakWalks(const Options &options)
{
    MachineEditCycle cycle(sampleMachine());
    AgentOptions agentOptions;
    agentOptions.machineJson = cycle.at(0);
    agentOptions.clockStart = kStartTime;
    agentOptions.port = options.port;
    Agent agent(agentOptions);
    std::printf("soak: snmpd %d on 127.0.0.1:%d, %ld walks, an edit every %ld walks, warm-up %ld walks\n",
                static_cast<int>(agent.pid()), agent.port(), options.walks, options.editEvery, options.warmUp);
    std::fflush(stdout);

    SnmpClient client = agent.client("public", 2000000, 2);
    Failures failures;
    std::map<int, size_t> varbindsOfState;
    long clock = kStartTime, step = 0, varbinds = 0, rssWarm = -1, rssMiddle = -1;
    const long middle = options.warmUp + (options.walks - options.warmUp) / 2;
    Clock::time_point started = Clock::now(), warmEnd = started;

    for (long walk = 1; walk <= options.walks; ++walk) {
        bool getNext = walk % 100 == 0;
        Response reply = getNext ? client.walkResponse(kMonitorsRoot) : bulkWalk(client, kMonitorsRoot);
        int state = static_cast<int>(step % MachineEditCycle::kStates);
        varbinds += static_cast<long>(reply.varbinds.size());
        std::string what = std::string(getNext ? "GETNEXT" : "GETBULK") + " walk " + std::to_string(walk) +
                           " (machine: " + cycle.describe(state) + ")";
        if (!reply.failure.empty() || reply.timedOut || reply.errorStatus != SNMP_ERR_NOERROR) {
            failures.add(what + " failed after " + std::to_string(reply.varbinds.size()) +
                         " varbinds: " + reply.toString());
        } else if (auto [known, first] = varbindsOfState.try_emplace(state, reply.varbinds.size());
                   !first && known->second != reply.varbinds.size()) {
            failures.add(what + " returned " + std::to_string(reply.varbinds.size()) +
                         " varbinds, the first walk of "
                         "this machine state " +
                         std::to_string(known->second));
        }

        if (walk == options.warmUp) {
            rssWarm = residentKiB(agent.pid());
            warmEnd = Clock::now();
            std::printf("  after warm-up (%ld walks): VmRSS %ld KiB\n", walk, rssWarm);
        } else if (walk == middle && walk != options.warmUp) {
            rssMiddle = residentKiB(agent.pid());
            std::printf("  middle (%ld walks): VmRSS %ld KiB\n", walk, rssMiddle);
        }
        std::fflush(stdout);

        if (walk % options.editEvery == 0 && walk != options.walks) {
            ++step;
            agent.replaceMachine(cycle.at(static_cast<int>(step)));
            clock += kClockStepPerEdit;
            agent.setClock(clock);
            Response check = client.get(
                {oidJoin(kMonitorsRoot, {3, 1, 0}), oidJoin(kMonitorsRoot, {3, 2, 1, 3, cycle.editedFan()})});
            int next = static_cast<int>(step);
            if (!check.ok() || check.varbinds.size() != 2 || check.varbinds[0].integer != cycle.fanCount(next) ||
                check.varbinds[1].octets != cycle.editedFanSpeed(next))
                failures.add("after edit " + std::to_string(step) + " (" + cycle.describe(next) +
                             "): fanNumber and the edited fan's speed are not the new ones: " + check.toString() +
                             " (expected " + std::to_string(cycle.fanCount(next)) + " and \"" +
                             cycle.editedFanSpeed(next) + "\")");
        }
    }

    long rssEnd = residentKiB(agent.pid());
    double seconds = std::chrono::duration<double>(Clock::now() - started).count();
    double measuredSeconds = std::chrono::duration<double>(Clock::now() - warmEnd).count();
    std::printf("  end (%ld walks): VmRSS %ld KiB\n", options.walks, rssEnd);
    std::printf("soak: %ld walks, %ld varbinds, %ld edits, %.1f s (%.0f walks/s); machine states seen:", options.walks,
                varbinds, step, seconds, static_cast<double>(options.walks) / seconds);
    for (const auto &[state, count] : varbindsOfState)
        std::printf(" %d:%zu", state, count);
    std::printf(" varbinds\n");
    long growth = rssEnd - rssWarm;
    std::printf("soak: VmRSS after warm-up %ld KiB, middle %ld KiB, end %ld KiB: %+ld KiB over %ld walks "
                "(%.1f s), tolerance %ld KiB\n",
                rssWarm, rssMiddle, rssEnd, growth, options.walks - options.warmUp, measuredSeconds,
                options.toleranceKiB);
    if (rssWarm < 0 || rssEnd < 0)
        failures.add("cannot read the agent's VmRSS");
    else if (ORV3_SANITIZE)
        std::printf("soak: VmRSS not judged: AddressSanitizer holds freed memory in quarantine\n");
    else if (growth > options.toleranceKiB)
        failures.add("snmpd's VmRSS grew by " + std::to_string(growth) + " KiB after the warm-up, more than " +
                     std::to_string(options.toleranceKiB) + " KiB");
    finish(agent, failures);
    std::printf("soak: %ld errors\n", failures.count);
    return failures.count == 0 ? 0 : 1;
}

int soakConcurrent(const Options &options)
{
    constexpr int kFans = 8;
    nlohmann::json base = sampleMachine();
    AgentOptions agentOptions;
    agentOptions.machineJson = versionedMachine(base, 0, kFans);
    agentOptions.clockStart = kStartTime;
    agentOptions.port = options.port;
    Agent agent(agentOptions);
    std::printf("soak: snmpd %d on 127.0.0.1:%d, %d managers, %ld s\n", static_cast<int>(agent.pid()), agent.port(),
                options.managers, options.seconds);
    std::fflush(stdout);
    long rssBefore = residentKiB(agent.pid());
    ConcurrencyReport report =
        runConcurrencyCampaign(agent, base, kFans, kStartTime, options.managers, std::chrono::seconds(options.seconds),
                               std::chrono::milliseconds(20));
    long rssAfter = residentKiB(agent.pid());
    Failures failures;
    for (const std::string &failure : report.failures)
        failures.add(failure);
    std::printf("soak: %ld complete walks, %ld whole fan rows checked, %ld SETs answered noError (%ld read back), "
                "%ld machine versions; VmRSS %ld -> %ld KiB\n",
                report.walks, report.rowsChecked, report.sets, report.setsReadBack, report.edits, rssBefore, rssAfter);
    finish(agent, failures);
    std::printf("soak: %ld errors\n", failures.count);
    return failures.count == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    Options options = parse(argc, argv);
    try {
        return options.concurrent ? soakConcurrent(options) : soakWalks(options);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "soak: %s\n", error.what());
        return 1;
    }
}

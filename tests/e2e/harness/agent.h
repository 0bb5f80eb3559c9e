// Runs a real /usr/sbin/snmpd for one test, with the monitors module loaded via
// dlmod and the simulated platform library preloaded, in a private temp directory.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "harness/child_process.h"
#include "harness/snmp_client.h"

// Build facts; CMake passes the real values as compile definitions.
#ifndef ORV3_MODULE_PATH
#define ORV3_MODULE_PATH "liborv3_monitors.so"
#endif
#ifndef ORV3_SIM_PATH
#define ORV3_SIM_PATH "liborv3_platform_sim.so"
#endif
#ifndef ORV3_AGENTX_PATH
#define ORV3_AGENTX_PATH "orv3-monitors-agentx"
#endif
#ifndef ORV3_SOURCE_DIR
#define ORV3_SOURCE_DIR "."
#endif
#ifndef ORV3_SANITIZE
#define ORV3_SANITIZE 0
#endif
#ifndef ORV3_ASAN_RUNTIME
#define ORV3_ASAN_RUNTIME "libasan.so"
#endif

namespace orv3::test {

struct AgentOptions {
    // Contents of the machine file (<dir>/machine.json). When empty, the file named by
    // machinePath is copied there instead (a relative name that does not exist from the
    // current directory is looked up in ORV3_SOURCE_DIR/machines). When both are empty
    // no machine file is written (ORV3_SIM_MACHINE still names <dir>/machine.json).
    std::string machineJson;
    std::string machinePath;
    // Extra environment for snmpd (ORV_FAMILY, ORV_CODENAME, PLATFLAGS, ...); overrides
    // anything the harness sets.
    std::map<std::string, std::string> env;
    // Debug tokens for snmpd -D (e.g. "monitors,dlmod"); empty = no -D.
    std::string debugTokens;
    // Initial simulated clock (written to <dir>/clock before start); absent = real time.
    // A step without a start starts the simulated clock at the current real time.
    std::optional<long> clockStart;
    std::optional<long> clockStep;
    // Plain snmpd: no dlmod line and no LD_PRELOAD (for testing the harness itself).
    bool bareAgent = false;
    // Extra lines appended to the snmpd configuration file.
    std::vector<std::string> extraConfig;
    // The communities "public" (read) and "private" (write) from 127.0.0.1.
    // Without them (an agent for SNMPv3 only, whose users extraConfig
    // gives), the agent counts as started once it logs its version line.
    bool communityAccess = true;
    // The agent executable, and a command it runs under (e.g. valgrind and its options).
    std::string executable = "/usr/sbin/snmpd";
    std::vector<std::string> wrapper;
    // AddressSanitizer flags of a sanitized agent, after the harness's own
    // ("flag=value:flag=value"; a later flag overrides an earlier one). The
    // harness records every allocation's stack with the slow unwinder, so
    // that a leak's stack reaches the module's frames through libraries
    // built without frame pointers; an agent that answers tens of thousands
    // of varbinds can take "fast_unwind_on_malloc=1" to run several times
    // faster, its leaks still caught and attributed wherever the module or
    // the simulator allocates.
    std::string extraAsanOptions;
    // How long to wait for the agent to answer a GET of sysUpTime. A
    // sanitized agent tracing every registration, on a machine busy with
    // the suite's other agents, can take well over ten seconds; the wait
    // only ever runs out when something is wrong.
    std::chrono::milliseconds startTimeout{60000};
    // The UDP port on 127.0.0.1 to serve; 0 picks a free one.
    int port = 0;
    // The AgentX socket of a master agent (e.g. "unix:/tmp/x/master"): the
    // module is then served by orv3-monitors-agentx as that master's
    // subagent, instead of by snmpd through dlmod, and `port` is the
    // master's, which the clients ask. See AgentXPair.
    std::string agentxSocket;
};

class Agent {
public:
    // Starts snmpd and waits until it answers. Throws std::runtime_error (with snmpd's
    // output in the message) when it cannot be started; the directory is removed then,
    // unless ORV3_E2E_KEEP is set in the environment.
    explicit Agent(AgentOptions options = {});
    // Stops snmpd (see stop()) and removes the directory unless the current test
    // failed (or ORV3_E2E_KEEP is set in the environment), in which case its path is printed.
    ~Agent();
    Agent(const Agent &) = delete;
    Agent &operator=(const Agent &) = delete;

    int port() const { return port_; }
    const std::string &dir() const { return dir_; }
    pid_t pid() const { return process_.pid(); }
    // True while the snmpd process has not exited.
    bool running();

    // A new v2c session to this agent ("public" is read-only, "private" read-write).
    SnmpClient client(const std::string &community = "public", long timeoutUs = SnmpClient::kDefaultTimeoutUs,
                      int retries = SnmpClient::kDefaultRetries) const;

    // snmpd's stdout (log output, -D debug output) and stderr, re-read on each call.
    std::string stdoutText() const;
    std::string stderrText() const;
    bool waitForStdout(const std::string &needle,
                       std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) const;
    bool waitForStderr(const std::string &needle,
                       std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) const;
    size_t countInStdout(const std::string &needle) const;
    size_t countInStderr(const std::string &needle) const;

    // Lines of <dir>/calls.log ("<operation> <path-or-key>"); empty if absent.
    std::vector<std::string> callLog() const;
    void clearCallLog();
    // Number of call-log lines starting with `prefix`.
    size_t countCalls(const std::string &prefix) const;
    // Waits until countCalls(prefix) >= atLeast.
    bool waitForCalls(const std::string &prefix, size_t atLeast = 1,
                      std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) const;

    // Atomically rewrites the clock file: "<seconds>" or "<seconds> <step>".
    void setClock(long seconds, long step = 0);
    // Empties the clock file (back to real time).
    void clearClock();
    std::string clockPath() const { return dir_ + "/clock"; }

    // Atomically replaces the machine file; the new file always has a new inode and a
    // modification time different from all earlier versions. Returns once the agent's
    // next platform call sees it.
    void replaceMachine(const std::string &json);
    // Removes the machine file, likewise.
    void removeMachine();
    std::string machinePath() const { return dir_ + "/machine.json"; }
    std::string callLogPath() const { return dir_ + "/calls.log"; }
    // The controller trace log the simulator appends log_tlog lines to
    // (ORV3_SIM_TRACE_LOG), and its content (empty if absent).
    std::string traceLogPath() const { return dir_ + "/tlog.log"; }
    std::string traceLogText() const;

    // SIGTERM, wait up to 5 s, then SIGKILL. Idempotent. Reports (ADD_FAILURE) a crash,
    // an unexpected earlier exit, a hang on shutdown, and sanitizer findings.
    void stop();
    // Offending sanitizer report text (empty if none). Before stop() it scans the logs
    // written so far; after stop() it returns what stop() found.
    std::string sanitizerFindings() const;
    // Raw wait status of snmpd after it exited (valid once running() is false).
    int waitStatus() const { return process_.waitStatus(); }

private:
    void start();
    bool spawn(std::string &error);
    std::string scanSanitizerLogs() const;
    void writeAtomically(const std::string &path, const std::string &contents);

    AgentOptions options_;
    std::string dir_;
    int port_ = 0;
    ChildProcess process_;
    bool stopped_ = false;
    std::string findings_;
    unsigned long writeCounter_ = 0;
    long lastMachineMtime_ = 0;
};

// A master snmpd with AgentX and the module served to it by
// orv3-monitors-agentx: `subagent` is the module's process (its output,
// call log, clock, machine file and sanitizer reports), and its clients
// ask the master, as a manager would.
class AgentXPair {
public:
    // `masterConfig`: lines added to the master's snmpd.conf (what the
    // master itself does with the module's objects, such as its event MIB).
    explicit AgentXPair(AgentOptions subagentOptions = {}, std::vector<std::string> masterConfig = {});
    ~AgentXPair();
    AgentXPair(const AgentXPair &) = delete;
    AgentXPair &operator=(const AgentXPair &) = delete;

private:
    std::string socketDir_; // holds the master's AgentX socket

public:
    Agent master;
    Agent subagent;
};

// Picks a currently free UDP port on 127.0.0.1 (bind to port 0, read it, close).
int pickFreeUdpPort();

// Reads a whole file; empty string when it does not exist.
std::string readFileText(const std::string &path);

// From the text of sanitizer logs, returns the parts that count as failures:
// every AddressSanitizer (non-leak) report, every UBSan "runtime error:" line with
// its stack, and the LeakSanitizer "Direct leak"/"Indirect leak" blocks whose stack
// mentions one of `ownMarkers` (e.g. "liborv3_", the source directory).
std::string extractSanitizerFailures(const std::string &logText, const std::vector<std::string> &ownMarkers);

} // namespace orv3::test

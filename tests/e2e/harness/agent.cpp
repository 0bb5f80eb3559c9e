#include "harness/agent.h"
#include "harness/oids.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

extern char **environ;

namespace orv3::test {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds kPollInterval{10};
constexpr milliseconds kStopTimeout{5000};

void sleepPoll()
{
    std::this_thread::sleep_for(kPollInterval);
}

void writeAll(int fd, const std::string &data, const std::string &what)
{
    size_t off = 0;
    while (off < data.size()) {
        ssize_t n = ::write(fd, data.data() + off, data.size() - off);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            throw std::runtime_error("write " + what + ": " + std::strerror(errno));
        }
        off += static_cast<size_t>(n);
    }
}

void writeFile(const std::string &path, const std::string &contents)
{
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        throw std::runtime_error("open " + path + ": " + std::strerror(errno));
    try {
        writeAll(fd, contents, path);
    } catch (...) {
        ::close(fd);
        throw;
    }
    ::close(fd);
}

size_t countOccurrences(const std::string &hay, const std::string &needle)
{
    if (needle.empty())
        return 0;
    size_t n = 0;
    for (size_t pos = hay.find(needle); pos != std::string::npos; pos = hay.find(needle, pos + needle.size()))
        ++n;
    return n;
}

std::string tail(const std::string &s, size_t max)
{
    if (s.size() <= max)
        return s;
    return "...[" + std::to_string(s.size() - max) + " bytes cut]...\n" + s.substr(s.size() - max);
}

bool waitForText(const std::string &path, const std::string &needle, milliseconds timeout)
{
    auto deadline = Clock::now() + timeout;
    while (true) {
        if (readFileText(path).find(needle) != std::string::npos)
            return true;
        if (Clock::now() >= deadline)
            return false;
        sleepPoll();
    }
}

std::string resolveMachinePath(const std::string &p)
{
    if (p.empty() || p.front() == '/' || fs::exists(p))
        return p;
    std::string candidate = std::string(ORV3_SOURCE_DIR) + "/machines/" + p;
    return fs::exists(candidate) ? candidate : p;
}

std::string quoteArgs(const std::vector<std::string> &args)
{
    std::string out;
    for (const auto &a : args) {
        if (!out.empty())
            out += ' ';
        out += a;
    }
    return out;
}

bool currentTestFailed()
{
    return ::testing::Test::HasFailure();
}

} // namespace

int pickFreeUdpPort()
{
    int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        throw std::runtime_error(std::string("socket: ") + std::strerror(errno));
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    a.sin_port = 0;
    socklen_t len = sizeof a;
    if (::bind(fd, reinterpret_cast<sockaddr *>(&a), sizeof a) != 0 ||
        ::getsockname(fd, reinterpret_cast<sockaddr *>(&a), &len) != 0) {
        int e = errno;
        ::close(fd);
        throw std::runtime_error(std::string("bind/getsockname: ") + std::strerror(e));
    }
    ::close(fd);
    return ntohs(a.sin_port);
}

std::string readFileText(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return {};
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

std::string extractSanitizerFailures(const std::string &logText, const std::vector<std::string> &ownMarkers)
{
    enum class State { None, Asan, Leak, LeakBlock, Ubsan };
    State state = State::None;
    std::string cur, out;

    auto mentionsOwnCode = [&](const std::string &block) {
        for (const auto &m : ownMarkers) {
            if (!m.empty() && block.find(m) != std::string::npos)
                return true;
        }
        return false;
    };
    auto flush = [&] {
        switch (state) {
        case State::Asan:
        case State::Ubsan:
            out += cur;
            out += '\n';
            break;
        case State::LeakBlock:
            if (mentionsOwnCode(cur)) {
                out += "LeakSanitizer: ";
                out += cur;
                out += '\n';
            }
            break;
        default: break;
        }
        cur.clear();
    };

    std::istringstream in(logText);
    std::string line;
    while (std::getline(in, line)) {
        if (line.find("runtime error:") != std::string::npos) {
            flush();
            state = State::Ubsan;
            cur = line + '\n';
        } else if (line.find("ERROR: LeakSanitizer") != std::string::npos) {
            flush();
            state = State::Leak;
        } else if (line.find("ERROR: AddressSanitizer") != std::string::npos ||
                   line.find("AddressSanitizer CHECK failed") != std::string::npos ||
                   line.find("ASan runtime does not come first") != std::string::npos) {
            flush();
            state = State::Asan;
            cur = line + '\n';
        } else if (state == State::Asan) {
            cur += line + '\n';
            if (line.find("ABORTING") != std::string::npos) {
                flush();
                state = State::None;
            }
        } else if (state == State::Leak || state == State::LeakBlock) {
            if (line.find("Direct leak of") != std::string::npos ||
                line.find("Indirect leak of") != std::string::npos) {
                flush();
                state = State::LeakBlock;
                cur = line + '\n';
            } else if (line.find("SUMMARY:") != std::string::npos) {
                flush();
                state = State::None;
            } else if (state == State::LeakBlock) {
                if (line.find_first_not_of(" \t\r") == std::string::npos) {
                    flush();
                    state = State::Leak;
                } else {
                    cur += line + '\n';
                }
            }
        } else if (state == State::Ubsan) {
            if (line.rfind("    #", 0) == 0 || line.rfind("SUMMARY: UndefinedBehaviorSanitizer", 0) == 0) {
                cur += line + '\n';
            } else {
                flush();
                state = State::None;
            }
        }
    }
    flush();
    return out;
}

// ---------------------------------------------------------------------------

Agent::Agent(AgentOptions options) : options_(std::move(options))
{
    if (options_.machineJson.empty() && !options_.machinePath.empty()) {
        std::string src = resolveMachinePath(options_.machinePath);
        if (!fs::is_regular_file(src))
            throw std::runtime_error("machine file not found: " + options_.machinePath);
        options_.machineJson = readFileText(src);
    }
    char tmpl[] = "/tmp/orv3-e2e-XXXXXX";
    if (!::mkdtemp(tmpl))
        throw std::runtime_error(std::string("mkdtemp: ") + std::strerror(errno));
    dir_ = tmpl;
    try {
        start();
    } catch (...) {
        process_.stop(std::chrono::milliseconds(0));
        // The exception carries snmpd's output; the directory is kept only on request,
        // so that tests of start failures leave nothing behind.
        if (std::getenv("ORV3_E2E_KEEP")) {
            std::fprintf(stderr, "[ harness  ] snmpd failed to start; directory kept: %s\n", dir_.c_str());
        } else {
            std::error_code ec;
            fs::remove_all(dir_, ec);
        }
        throw;
    }
}

Agent::~Agent()
{
    stop();
    bool keep = currentTestFailed() || std::getenv("ORV3_E2E_KEEP") != nullptr;
    if (keep) {
        std::fprintf(stderr, "[ harness  ] agent directory kept: %s\n", dir_.c_str());
    } else {
        std::error_code ec;
        fs::remove_all(dir_, ec);
    }
}

void Agent::start()
{
    // Pre-created so that snmpd does not log "Created directory" lines.
    fs::create_directories(dir_ + "/persist/cert_indexes");
    fs::create_directories(dir_ + "/conf");
    fs::create_directories(dir_ + "/home");

    if (!options_.machineJson.empty())
        replaceMachine(options_.machineJson);

    // Clock file.
    if (options_.clockStart || options_.clockStep) {
        setClock(options_.clockStart.value_or(static_cast<long>(::time(nullptr))), options_.clockStep.value_or(0));
    }

    // Configuration.
    std::string conf = options_.communityAccess ? "rocommunity public 127.0.0.1\n"
                                                  "rwcommunity private 127.0.0.1\n"
                                                : "";
    conf += "dontLogTCPWrappersConnects yes\n";
    if (!options_.bareAgent && options_.agentxSocket.empty())
        conf += std::string("dlmod snmp_module_monitors ") + ORV3_MODULE_PATH + "\n";
    for (const auto &l : options_.extraConfig)
        conf += l + "\n";
    writeFile(dir_ + "/snmpd.conf", conf);

    // A port picked as free may be taken by someone else before snmpd binds it: retry then.
    std::string error;
    for (int attempt = 0; attempt < 5; ++attempt) {
        port_ = options_.port != 0 ? options_.port : pickFreeUdpPort();
        if (spawn(error))
            return;
        if (options_.port != 0)
            break;
        std::string all = stdoutText() + stderrText();
        bool portTaken =
            all.find("Error opening") != std::string::npos || all.find("Address already in use") != std::string::npos;
        if (!portTaken || !process_.exited())
            break;
    }
    std::string findings = scanSanitizerLogs();
    throw std::runtime_error("snmpd did not start (" + error + ") in " + dir_ + "\n--- snmpd.err ---\n" +
                             tail(stderrText(), 8000) + "\n--- snmpd.out ---\n" + tail(stdoutText(), 8000) +
                             (findings.empty() ? "" : "\n--- sanitizer ---\n" + findings));
}

bool Agent::spawn(std::string &error)
{
    const bool subagent = !options_.agentxSocket.empty();
    std::vector<std::string> args = options_.wrapper;
    if (subagent)
        args.insert(args.end(), {ORV3_AGENTX_PATH, "-x", options_.agentxSocket, "-M", ORV3_MODULE_PATH, "-Lo"});
    else
        args.insert(args.end(), {options_.executable, "-f", "-C", "-c", dir_ + "/snmpd.conf", "-Lo"});
    if (!options_.debugTokens.empty())
        args.push_back("-D" + options_.debugTokens);
    if (!subagent)
        args.push_back("udp:127.0.0.1:" + std::to_string(port_));

    std::map<std::string, std::string> env;
    for (char **e = environ; e && *e; ++e) {
        std::string kv = *e;
        size_t eq = kv.find('=');
        if (eq != std::string::npos)
            env[kv.substr(0, eq)] = kv.substr(eq + 1);
    }
    env["ORV3_SIM_MACHINE"] = machinePath();
    env["ORV3_SIM_CALL_LOG"] = callLogPath();
    env["ORV3_SIM_TRACE_LOG"] = traceLogPath();
    env["ORV3_SIM_CLOCK"] = clockPath();
    // Nothing of the machine's or the user's net-snmp state reaches the agent, and the
    // agent writes nothing outside its directory.
    env["SNMP_PERSISTENT_DIR"] = dir_ + "/persist";
    env["SNMPCONFPATH"] = dir_ + "/conf";
    env["HOME"] = dir_ + "/home";
    env["MIBS"] = "";
    env.erase("MIBDIRS");
    if (!options_.bareAgent) {
        if (ORV3_SANITIZE) {
            env["LD_PRELOAD"] = std::string(ORV3_ASAN_RUNTIME) + ":" + ORV3_SIM_PATH;
            env["ASAN_OPTIONS"] = "log_path=" + dir_ + "/asan:detect_leaks=1:abort_on_error=0:fast_unwind_on_malloc=0";
            if (!options_.extraAsanOptions.empty())
                env["ASAN_OPTIONS"] += ":" + options_.extraAsanOptions;
            env["UBSAN_OPTIONS"] = "print_stacktrace=1:log_path=" + dir_ + "/ubsan";
        } else {
            env["LD_PRELOAD"] = ORV3_SIM_PATH;
        }
    }
    for (const auto &[k, v] : options_.env)
        env[k] = v;

    std::vector<std::string> environment;
    for (const auto &[k, v] : env)
        environment.push_back(k + "=" + v);

    // Each attempt's output alone, from empty files.
    std::string outPath = dir_ + "/snmpd.out", errPath = dir_ + "/snmpd.err";
    writeFile(outPath, "");
    writeFile(errPath, "");
    writeFile(dir_ + "/command", quoteArgs(args) + "\n");
    try {
        process_.launch(args, outPath, errPath, ".", environment);
    } catch (const std::exception &e) {
        error = e.what();
        return false;
    }

    // Wait for an answer to GET sysUpTime; probe timeouts grow so that a slow
    // (sanitized) agent still gets a chance to answer one of them.
    auto deadline = Clock::now() + options_.startTimeout;
    long probeTimeoutUs = 10000;
    SnmpClient probe(port_, "public", probeTimeoutUs, 0);
    while (true) {
        if (process_.exited()) {
            error = "snmpd " + process_.describeExit() + " during start-up";
            return false;
        }
        // A subagent is ready once its master answers for the module.
        Response r;
        bool answered = false;
        if (!options_.communityAccess) {
            // snmpd logs its version once its sockets are open and the
            // module is loaded.
            answered = stdoutText().find("NET-SNMP version") != std::string::npos;
        } else {
            r = subagent ? probe.getNext({kMonitorsRoot}) : probe.get({"1.3.6.1.2.1.1.3.0"});
            answered = r.ok() && r.varbinds.size() == 1 &&
                       (subagent ? r.varbinds[0].oid.rfind(std::string(kMonitorsRoot) + ".", 0) == 0
                                 : r.varbinds[0].type == ASN_TIMETICKS);
        }
        if (answered) {
            // snmpd carries on without a module it could not load, and the dynamic loader
            // only warns about a preload library it cannot find: make both fatal here.
            if (!options_.bareAgent) {
                std::string out = stdoutText(), err = stderrText();
                size_t pos = out.find(std::string("dlopen(") + ORV3_MODULE_PATH + ")");
                if (pos != std::string::npos) {
                    error = "module not loaded: " + out.substr(pos, out.find('\n', pos) - pos);
                    return false;
                }
                pos = err.find("cannot be preloaded");
                if (pos != std::string::npos) {
                    size_t bol = err.rfind('\n', pos);
                    bol = bol == std::string::npos ? 0 : bol + 1;
                    error = "simulator not preloaded: " + err.substr(bol, err.find('\n', pos) - bol);
                    return false;
                }
            }
            return true;
        }
        if (Clock::now() >= deadline) {
            error =
                std::string(subagent ? "no answer for the module through the master" : "no answer to GET sysUpTime") +
                " within " + std::to_string(options_.startTimeout.count()) + " ms";
            if (!r.ok())
                error += ", last probe: " + r.toString();
            return false;
        }
        if (!r.timedOut)
            sleepPoll(); // an immediate error answer: do not spin
        if (r.timedOut && probeTimeoutUs < 1000000) {
            probeTimeoutUs *= 2;
            probe = SnmpClient(port_, "public", probeTimeoutUs, 0);
        }
    }
}

bool Agent::running()
{
    return process_.started() && !process_.exited();
}

void Agent::stop()
{
    if (stopped_ || !process_.started())
        return;
    stopped_ = true;

    bool earlyExit = process_.exited();
    bool hung = !earlyExit && !process_.stop(kStopTimeout);

    // One failure per agent, with everything that went wrong.
    std::string problems;
    if (earlyExit) {
        problems += "snmpd " + process_.describeExit() + " before the harness stopped it\n";
    } else if (hung) {
        problems += "snmpd did not exit within " + std::to_string(kStopTimeout.count()) + " ms of SIGTERM; killed\n";
    } else if (WIFSIGNALED(process_.waitStatus()) && WTERMSIG(process_.waitStatus()) != SIGTERM) {
        problems += "snmpd " + process_.describeExit() + " while shutting down\n";
    }
    findings_ = scanSanitizerLogs();
    if (!findings_.empty())
        problems += "--- sanitizer findings ---\n" + findings_;
    if (!problems.empty()) {
        ADD_FAILURE() << problems << "--- snmpd.err ---\n"
                      << tail(stderrText(), 6000) << "\n--- snmpd.out ---\n"
                      << tail(stdoutText(), 6000) << "\n(directory " << dir_ << ")";
    }
}

std::string Agent::sanitizerFindings() const
{
    // stop() leaves the agent exited and its findings read.
    return stopped_ ? findings_ : scanSanitizerLogs();
}

std::string Agent::scanSanitizerLogs() const
{
    std::string text;
    std::error_code ec;
    std::vector<std::string> logs;
    for (const auto &entry : fs::directory_iterator(dir_, ec)) {
        std::string name = entry.path().filename().string();
        if (name.rfind("asan.", 0) == 0 || name.rfind("ubsan.", 0) == 0)
            logs.push_back(entry.path().string());
    }
    std::sort(logs.begin(), logs.end());
    for (const auto &p : logs)
        text += readFileText(p) + "\n";
    text += stderrText();

    // "<unknown module>" is a frame in a library that was unloaded before the report was
    // written: snmpd dlcloses dlmod modules at shutdown, so that is the monitors module.
    std::vector<std::string> markers = {"liborv3_", "<unknown module>"};
    std::string src = ORV3_SOURCE_DIR;
    if (!src.empty() && src.front() == '/' && src != "/")
        markers.push_back(src.back() == '/' ? src : src + "/");
    return extractSanitizerFailures(text, markers);
}

// ---------------------------------------------------------------------------

SnmpClient Agent::client(const std::string &community, long timeoutUs, int retries) const
{
    return SnmpClient(port_, community, timeoutUs, retries);
}

std::string Agent::stdoutText() const
{
    return readFileText(dir_ + "/snmpd.out");
}
std::string Agent::stderrText() const
{
    return readFileText(dir_ + "/snmpd.err");
}

bool Agent::waitForStdout(const std::string &needle, milliseconds timeout) const
{
    return waitForText(dir_ + "/snmpd.out", needle, timeout);
}

bool Agent::waitForStderr(const std::string &needle, milliseconds timeout) const
{
    return waitForText(dir_ + "/snmpd.err", needle, timeout);
}

size_t Agent::countInStdout(const std::string &needle) const
{
    return countOccurrences(stdoutText(), needle);
}
size_t Agent::countInStderr(const std::string &needle) const
{
    return countOccurrences(stderrText(), needle);
}

std::vector<std::string> Agent::callLog() const
{
    std::vector<std::string> lines;
    std::istringstream in(readFileText(callLogPath()));
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!line.empty())
            lines.push_back(line);
    }
    return lines;
}

std::string Agent::traceLogText() const
{
    return readFileText(traceLogPath());
}

void Agent::clearCallLog()
{
    if (::truncate(callLogPath().c_str(), 0) != 0 && errno != ENOENT) {
        throw std::runtime_error("truncate " + callLogPath() + ": " + std::strerror(errno));
    }
}

size_t Agent::countCalls(const std::string &prefix) const
{
    size_t n = 0;
    for (const auto &l : callLog()) {
        if (l.rfind(prefix, 0) == 0)
            ++n;
    }
    return n;
}

bool Agent::waitForCalls(const std::string &prefix, size_t atLeast, milliseconds timeout) const
{
    auto deadline = Clock::now() + timeout;
    while (true) {
        if (countCalls(prefix) >= atLeast)
            return true;
        if (Clock::now() >= deadline)
            return false;
        sleepPoll();
    }
}

// The simulator looks for changes of its clock and machine files at most
// once a millisecond; once this much time has passed after a change, the
// agent's next time() or platform call sees it.
constexpr milliseconds kFileSettle{2};

void Agent::writeAtomically(const std::string &path, const std::string &contents)
{
    std::string tmp = path + ".tmp." + std::to_string(++writeCounter_);
    writeFile(tmp, contents);
    if (::rename(tmp.c_str(), path.c_str()) != 0) {
        int e = errno;
        ::unlink(tmp.c_str());
        throw std::runtime_error("rename " + tmp + " -> " + path + ": " + std::strerror(e));
    }
}



void Agent::setClock(long seconds, long step)
{
    std::string s = std::to_string(seconds);
    if (step != 0)
        s += " " + std::to_string(step);
    writeAtomically(clockPath(), s + "\n");
    std::this_thread::sleep_for(kFileSettle);
}

void Agent::clearClock()
{
    writeAtomically(clockPath(), "");
    std::this_thread::sleep_for(kFileSettle);
}

// With ORV3_E2E_MACHINES naming a directory, every machine an agent serves
// (with the platform-variant environment it is served under) is kept there,
// one file per distinct content, so that scripts/compare-answers can replay
// the suite's machines against two builds of the module.
static void collectMachine(const std::string &json, const std::map<std::string, std::string> &env)
{
    const char *dir = std::getenv("ORV3_E2E_MACHINES");
    if (!dir || !*dir)
        return;
    std::string variant;
    for (const char *name : {"ORV_FAMILY", "ORV_CODENAME", "PLATFLAGS"})
        if (auto it = env.find(name); it != env.end())
            variant += std::string(name) + "=" + it->second + "\n";
    const size_t key = std::hash<std::string>{}(variant + json);
    char name[32];
    std::snprintf(name, sizeof name, "%016zx", key);
    const std::string base = std::string(dir) + "/" + name;
    if (fs::exists(base + ".json"))
        return;
    writeFile(base + ".env.tmp", variant);
    writeFile(base + ".json.tmp", json);
    ::rename((base + ".env.tmp").c_str(), (base + ".env").c_str());
    ::rename((base + ".json.tmp").c_str(), (base + ".json").c_str());
}

void Agent::replaceMachine(const std::string &json)
{
    collectMachine(json, options_.env);
    const std::string path = machinePath();
    std::string tmp = path + ".tmp." + std::to_string(++writeCounter_);
    writeFile(tmp, json);

    // Distinct modification time per version, even within one second.
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    long sec = std::max<long>(now.tv_sec, lastMachineMtime_ + 1);
    lastMachineMtime_ = sec;
    timespec times[2] = {now, {sec, now.tv_nsec}};
    ::utimensat(AT_FDCWD, tmp.c_str(), times, 0);

    // Keep the previous version linked so that its inode number cannot be reused by a
    // later version.
    std::string keep = dir_ + "/.machine.prev." + std::to_string(writeCounter_);
    ::link(path.c_str(), keep.c_str()); // fails harmlessly when there is no previous version

    if (::rename(tmp.c_str(), path.c_str()) != 0) {
        int e = errno;
        ::unlink(tmp.c_str());
        throw std::runtime_error("rename " + tmp + " -> " + path + ": " + std::strerror(e));
    }
    std::this_thread::sleep_for(kFileSettle);
}

void Agent::removeMachine()
{
    std::string keep = dir_ + "/.machine.prev." + std::to_string(++writeCounter_);
    ::link(machinePath().c_str(), keep.c_str());
    ::unlink(machinePath().c_str());
    std::this_thread::sleep_for(kFileSettle);
}

// ---------------------------------------------------------------------------

namespace {

AgentOptions masterOptions(const std::string &socketDir, std::vector<std::string> masterConfig)
{
    AgentOptions options;
    options.bareAgent = true;
    options.extraConfig = {"master agentx", "agentXSocket unix:" + socketDir + "/master"};
    options.extraConfig.insert(options.extraConfig.end(), masterConfig.begin(), masterConfig.end());
    return options;
}

AgentOptions subagentOf(AgentOptions options, const std::string &socketDir, int masterPort)
{
    options.agentxSocket = "unix:" + socketDir + "/master";
    options.port = masterPort;
    return options;
}

std::string makeSocketDir()
{
    char tmpl[] = "/tmp/orv3-agentx-XXXXXX";
    if (!::mkdtemp(tmpl))
        throw std::runtime_error(std::string("mkdtemp: ") + std::strerror(errno));
    return tmpl;
}

} // namespace

AgentXPair::AgentXPair(AgentOptions subagentOptions, std::vector<std::string> masterConfig)
    : socketDir_(makeSocketDir()), master(masterOptions(socketDir_, std::move(masterConfig))),
      subagent(subagentOf(std::move(subagentOptions), socketDir_, master.port()))
{
}

AgentXPair::~AgentXPair()
{
    subagent.stop();
    master.stop();
    std::error_code ec;
    fs::remove_all(socketDir_, ec);
}

} // namespace orv3::test

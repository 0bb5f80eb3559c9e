// A program a test runs beside the agent (the Prometheus SNMP exporter, a
// notification receiver, a Prometheus server): started with its output
// appended to a log file, never outliving the test binary, stopped with
// SIGTERM and, if it does not exit in time, SIGKILL.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace orv3::test {

class ChildProcess {
public:
    ChildProcess() = default;
    // Kills a child still running.
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    // Starts args[0] (a path) with `args`, standard input from /dev/null,
    // standard output and error appended to `logPath`, in `workDir`, with the
    // test's environment and `env` ("NAME=value", each replacing a variable
    // of that name). Throws std::runtime_error when it cannot fork.
    void start(const std::vector<std::string> &args, const std::string &logPath, const std::string &workDir,
               const std::vector<std::string> &env = {});
    // The same with standard output and error appended to files of their
    // own (or one, when the paths are equal), and `environment` ("NAME=value")
    // as the child's whole environment.
    void launch(const std::vector<std::string> &args, const std::string &outPath, const std::string &errPath,
                const std::string &workDir, const std::vector<std::string> &environment);
    // True once the child has exited (reaped without blocking).
    bool exited();
    // Waits up to `timeout` for the child to exit by itself; true when it has.
    bool waitForExit(std::chrono::milliseconds timeout);
    // SIGTERM, then SIGKILL when the child has not exited within `timeout`;
    // true when SIGTERM was enough (or it had already exited).
    bool stop(std::chrono::milliseconds timeout);
    bool started() const { return pid_ > 0; }
    pid_t pid() const { return pid_; }
    int waitStatus() const { return waitStatus_; }
    // "exited with code 1", "was killed by signal 11 (SIGSEGV), core dumped", ...
    std::string describeExit() const;

private:
    bool reap(bool block);

    pid_t pid_ = -1;
    bool exited_ = false;
    int waitStatus_ = 0;
};

// A new private directory /tmp/<prefix>-XXXXXX.
std::string makePrivateDir(const std::string &prefix);

// Removes `dir` unless the current test failed or ORV3_E2E_KEEP is set, in
// which case it prints where `what` left it.
void removeUnlessKept(const std::string &dir, const std::string &what);

} // namespace orv3::test

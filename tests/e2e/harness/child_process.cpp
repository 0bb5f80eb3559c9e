#include "harness/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <thread>

extern char **environ;

namespace orv3::test {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPollInterval{10};

} // namespace

ChildProcess::~ChildProcess()
{
    if (pid_ > 0 && !exited()) {
        ::kill(pid_, SIGKILL);
        reap(true);
    }
}

void ChildProcess::start(const std::vector<std::string> &args, const std::string &logPath,
                         const std::string &workDir, const std::vector<std::string> &env)
{
    std::vector<std::string> environment = env;
    for (char **e = environ; *e; ++e) {
        std::string_view entry(*e);
        std::string_view name = entry.substr(0, entry.find('='));
        bool replaced = false;
        for (const auto &own : env)
            replaced = replaced || (own.size() > name.size() && own.compare(0, name.size(), name) == 0 &&
                                    own[name.size()] == '=');
        if (!replaced)
            environment.emplace_back(entry);
    }
    launch(args, logPath, logPath, workDir, environment);
}

void ChildProcess::launch(const std::vector<std::string> &args, const std::string &outPath,
                          const std::string &errPath, const std::string &workDir,
                          const std::vector<std::string> &environment)
{
    // Built before fork(): the child may only make async-signal-safe calls.
    std::vector<std::string> argStrings = args, envStrings = environment;
    std::vector<char *> argv, envp;
    for (auto &a : argStrings)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    for (auto &e : envStrings)
        envp.push_back(e.data());
    envp.push_back(nullptr);

    int devnull = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    int outFd = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    int errFd = errPath == outPath ? outFd : ::open(errPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    auto closeAll = [&] {
        for (int fd : {devnull, outFd, errFd == outFd ? -1 : errFd}) {
            if (fd >= 0)
                ::close(fd);
        }
    };
    if (devnull < 0 || outFd < 0 || errFd < 0) {
        int e = errno;
        closeAll();
        throw std::runtime_error("cannot open " + outPath + " or " + errPath + ": " + std::strerror(e));
    }
    pid_t parent = ::getpid();
    pid_t pid = ::fork();
    if (pid == 0) {
        // Child: only async-signal-safe calls from here on.
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL); // never outlive a crashed test binary
        if (::getppid() != parent)
            _exit(126);
        if (::chdir(workDir.c_str()) != 0)
            _exit(126);
        ::dup2(devnull, 0);
        ::dup2(outFd, 1);
        ::dup2(errFd, 2);
        ::close_range(3, ~0U, 0);
        ::execve(argv[0], argv.data(), envp.data());
        const char msg[] = "harness: execve failed\n";
        ssize_t ignored = ::write(2, msg, sizeof msg - 1);
        (void)ignored;
        _exit(127);
    }
    int forkErrno = errno;
    closeAll();
    if (pid < 0)
        throw std::runtime_error(std::string("fork: ") + std::strerror(forkErrno));
    pid_ = pid;
    exited_ = false;
    waitStatus_ = 0;
}

bool ChildProcess::reap(bool block)
{
    if (pid_ <= 0)
        return false;
    if (exited_)
        return true;
    while (true) {
        pid_t r = ::waitpid(pid_, &waitStatus_, block ? 0 : WNOHANG);
        if (r == pid_) {
            exited_ = true;
            return true;
        }
        if (r < 0 && errno == EINTR)
            continue;
        return false;
    }
}

bool ChildProcess::exited()
{
    return reap(false);
}

bool ChildProcess::waitForExit(std::chrono::milliseconds timeout)
{
    auto deadline = Clock::now() + timeout;
    while (!reap(false)) {
        if (Clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(kPollInterval);
    }
    return true;
}

bool ChildProcess::stop(std::chrono::milliseconds timeout)
{
    if (pid_ <= 0 || exited())
        return true;
    ::kill(pid_, SIGTERM);
    if (waitForExit(timeout))
        return true;
    ::kill(pid_, SIGKILL);
    reap(true);
    return false;
}

std::string ChildProcess::describeExit() const
{
    if (WIFEXITED(waitStatus_))
        return "exited with code " + std::to_string(WEXITSTATUS(waitStatus_));
    if (WIFSIGNALED(waitStatus_)) {
        int sig = WTERMSIG(waitStatus_);
        const char *name = ::sigabbrev_np(sig);
        return "was killed by signal " + std::to_string(sig) + (name ? std::string(" (SIG") + name + ")" : "") +
               (WCOREDUMP(waitStatus_) ? ", core dumped" : "");
    }
    return "ended with wait status " + std::to_string(waitStatus_);
}

std::string makePrivateDir(const std::string &prefix)
{
    std::string pattern = "/tmp/" + prefix + "-XXXXXX";
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("mkdtemp " + pattern + ": " + std::strerror(errno));
    return pattern;
}

void removeUnlessKept(const std::string &dir, const std::string &what)
{
    if (::testing::Test::HasFailure() || std::getenv("ORV3_E2E_KEEP") != nullptr) {
        std::fprintf(stderr, "[ harness  ] %s directory kept: %s\n", what.c_str(), dir.c_str());
        return;
    }
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
}

} // namespace orv3::test

#include "harness/snmp_exporter.h"

#include "harness/agent.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <vector>

extern char **environ;

namespace orv3::test {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

constexpr const char *kExporter = "/usr/bin/prometheus-snmp-exporter";
constexpr const char *kGenerateScript = ORV3_SOURCE_DIR "/contrib/prometheus/generate";
constexpr milliseconds kPollInterval{10};
// Generating loads the MIB and writes a 160 kB file: a fraction of a second,
// more on a machine busy with the suite's other agents.
constexpr milliseconds kGenerateTimeout{60000};
// The exporter answers HTTP a few milliseconds after it starts.
constexpr milliseconds kStartTimeout{20000};
constexpr milliseconds kStopTimeout{5000};
// One scrape walks the whole subtree: about 110 GETBULK requests, which a
// sanitized agent answers several times slower than a plain one.
constexpr milliseconds kScrapeTimeout{60000};

// Starts `args` with its standard output and error appended to `logPath`,
// in `workDir`, with the test's environment. The child never outlives the
// test binary.
pid_t spawnLogged(const std::vector<std::string> &args, const std::string &logPath, const std::string &workDir)
{
    std::vector<std::string> argStrings = args;
    std::vector<char *> argv;
    for (auto &a : argStrings)
        argv.push_back(a.data());
    argv.push_back(nullptr);

    int devnull = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    int logFd = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (devnull < 0 || logFd < 0) {
        int e = errno;
        for (int fd : {devnull, logFd}) {
            if (fd >= 0)
                ::close(fd);
        }
        throw std::runtime_error("cannot open " + logPath + ": " + std::strerror(e));
    }
    pid_t parent = ::getpid();
    pid_t pid = ::fork();
    if (pid == 0) {
        // Child: only async-signal-safe calls from here on.
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent)
            _exit(126);
        if (::chdir(workDir.c_str()) != 0)
            _exit(126);
        ::dup2(devnull, 0);
        ::dup2(logFd, 1);
        ::dup2(logFd, 2);
        ::close_range(3, ~0U, 0);
        ::execve(argv[0], argv.data(), environ);
        const char msg[] = "harness: execve failed\n";
        ssize_t ignored = ::write(2, msg, sizeof msg - 1);
        (void)ignored;
        _exit(127);
    }
    int forkErrno = errno;
    ::close(devnull);
    ::close(logFd);
    if (pid < 0)
        throw std::runtime_error(std::string("fork: ") + std::strerror(forkErrno));
    return pid;
}

std::string describeWaitStatus(int status)
{
    if (WIFEXITED(status))
        return "exited with code " + std::to_string(WEXITSTATUS(status));
    if (WIFSIGNALED(status))
        return "was killed by signal " + std::to_string(WTERMSIG(status));
    return "ended with wait status " + std::to_string(status);
}

void closeQuietly(int fd)
{
    if (fd >= 0)
        ::close(fd);
}

} // namespace

int pickFreeTcpPort()
{
    int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        throw std::runtime_error(std::string("socket: ") + std::strerror(errno));
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
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

HttpResponse httpGet(int port, const std::string &target, milliseconds timeout)
{
    HttpResponse response;
    auto deadline = Clock::now() + timeout;
    auto remainingMs = [&] {
        auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now()).count();
        return left > 0 ? static_cast<int>(left) : 0;
    };

    int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        response.error = std::string("socket: ") + std::strerror(errno);
        return response;
    }
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    a.sin_port = htons(static_cast<uint16_t>(port));
    // A loopback connect is refused or accepted at once.
    if (::connect(fd, reinterpret_cast<sockaddr *>(&a), sizeof a) != 0) {
        response.error = "connect to 127.0.0.1:" + std::to_string(port) + ": " + std::strerror(errno);
        ::close(fd);
        return response;
    }
    // HTTP/1.0: the server sends the body unchunked and closes the connection after it.
    std::string request = "GET " + target + " HTTP/1.0\r\nHost: 127.0.0.1:" + std::to_string(port) + "\r\n\r\n";
    if (::send(fd, request.data(), request.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(request.size())) {
        response.error = std::string("send: ") + std::strerror(errno);
        ::close(fd);
        return response;
    }
    std::string raw;
    char buffer[65536];
    while (true) {
        pollfd p{fd, POLLIN, 0};
        int ready = ::poll(&p, 1, remainingMs());
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0) {
            response.error = ready == 0 ? "no complete answer within " + std::to_string(timeout.count()) + " ms"
                                        : std::string("poll: ") + std::strerror(errno);
            closeQuietly(fd);
            return response;
        }
        ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            response.error = std::string("recv: ") + std::strerror(errno);
            closeQuietly(fd);
            return response;
        }
        if (n == 0)
            break;
        raw.append(buffer, static_cast<size_t>(n));
    }
    ::close(fd);

    size_t headerEnd = raw.find("\r\n\r\n");
    int status = 0;
    if (headerEnd == std::string::npos || std::sscanf(raw.c_str(), "HTTP/%*d.%*d %d", &status) != 1) {
        response.error = "not an HTTP answer: " + raw.substr(0, 200);
        return response;
    }
    response.status = status;
    response.body = raw.substr(headerEnd + 4);
    return response;
}

// ---------------------------------------------------------------------------

SnmpExporter::SnmpExporter()
{
    char tmpl[] = "/tmp/orv3-exporter-XXXXXX";
    if (!::mkdtemp(tmpl))
        throw std::runtime_error(std::string("mkdtemp: ") + std::strerror(errno));
    dir_ = tmpl;
    try {
        generateConfig();
        start();
    } catch (...) {
        if (pid_ > 0 && !exited_) {
            ::kill(pid_, SIGKILL);
            reap(true);
        }
        if (std::getenv("ORV3_E2E_KEEP")) {
            std::fprintf(stderr, "[ harness  ] exporter failed to start; directory kept: %s\n", dir_.c_str());
        } else {
            std::error_code ec;
            fs::remove_all(dir_, ec);
        }
        throw;
    }
}

SnmpExporter::~SnmpExporter()
{
    stop();
    bool keep = ::testing::Test::HasFailure() || std::getenv("ORV3_E2E_KEEP") != nullptr;
    if (keep) {
        std::fprintf(stderr, "[ harness  ] exporter directory kept: %s\n", dir_.c_str());
    } else {
        std::error_code ec;
        fs::remove_all(dir_, ec);
    }
}

void SnmpExporter::generateConfig()
{
    const std::string log = dir_ + "/generate.log";
    pid_t pid = spawnLogged({"/bin/bash", kGenerateScript, "--base-mibs", ORV3_BASE_MIBS_DIR, configPath()}, log, dir_);
    auto deadline = Clock::now() + kGenerateTimeout;
    int status = 0;
    while (true) {
        pid_t r = ::waitpid(pid, &status, WNOHANG);
        if (r == pid)
            break;
        if (r < 0 && errno != EINTR)
            throw std::runtime_error(std::string("waitpid: ") + std::strerror(errno));
        if (Clock::now() >= deadline) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            throw std::runtime_error(std::string(kGenerateScript) + " did not finish within " +
                                     std::to_string(kGenerateTimeout.count()) + " ms:\n" + readFileText(log));
        }
        std::this_thread::sleep_for(kPollInterval);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || !fs::is_regular_file(configPath())) {
        throw std::runtime_error(std::string(kGenerateScript) + " " + describeWaitStatus(status) + ":\n" +
                                 readFileText(log));
    }
}

void SnmpExporter::start()
{
    // A port picked as free may be taken by someone else before the exporter
    // binds it: try another then.
    std::string error;
    for (int attempt = 0; attempt < 5; ++attempt) {
        port_ = pickFreeTcpPort();
        if (spawn(error))
            return;
        bool portTaken = logText().find("address already in use") != std::string::npos;
        if (!portTaken || !exited_)
            break;
        pid_ = -1;
        exited_ = false;
    }
    throw std::runtime_error("prometheus-snmp-exporter did not start (" + error + ") in " + dir_ +
                             "\n--- exporter.log ---\n" + logText());
}

bool SnmpExporter::spawn(std::string &error)
{
    pid_ = spawnLogged(
        {kExporter, "--config.file=" + configPath(), "--web.listen-address=127.0.0.1:" + std::to_string(port_)},
        dir_ + "/exporter.log", dir_);
    exited_ = false;
    auto deadline = Clock::now() + kStartTimeout;
    while (true) {
        if (reap(false)) {
            error = std::string("the exporter ") + describeWaitStatus(waitStatus_) + " during start-up";
            return false;
        }
        HttpResponse page = httpGet(port_, "/", milliseconds(1000));
        if (page.ok())
            return true;
        if (Clock::now() >= deadline) {
            error = "no answer on 127.0.0.1:" + std::to_string(port_) + " within " +
                    std::to_string(kStartTimeout.count()) +
                    " ms, last: " + (page.error.empty() ? "HTTP " + std::to_string(page.status) : page.error);
            return false;
        }
        std::this_thread::sleep_for(kPollInterval);
    }
}

bool SnmpExporter::reap(bool block)
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

void SnmpExporter::stop()
{
    if (pid_ <= 0 || exited_)
        return;
    ::kill(pid_, SIGTERM);
    auto deadline = Clock::now() + kStopTimeout;
    while (!reap(false) && Clock::now() < deadline)
        std::this_thread::sleep_for(kPollInterval);
    if (!exited_) {
        ::kill(pid_, SIGKILL);
        reap(true);
        ADD_FAILURE() << "prometheus-snmp-exporter did not exit within " << kStopTimeout.count()
                      << " ms of SIGTERM; killed\n--- exporter.log ---\n"
                      << logText();
    }
}

std::string SnmpExporter::logText() const
{
    return readFileText(dir_ + "/exporter.log");
}

HttpResponse SnmpExporter::scrape(int agentPort, const std::string &module) const
{
    return httpGet(port_, "/snmp?target=127.0.0.1:" + std::to_string(agentPort) + "&module=" + module, kScrapeTimeout);
}

} // namespace orv3::test

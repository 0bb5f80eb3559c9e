#include "harness/snmp_exporter.h"

#include "harness/agent.h"
#include "harness/child_process.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
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

SnmpExporter::SnmpExporter() : dir_(makePrivateDir("orv3-exporter"))
{
    try {
        generateConfig();
        start();
    } catch (...) {
        process_.stop(kStopTimeout);
        removeUnlessKept(dir_, "exporter");
        throw;
    }
}

SnmpExporter::~SnmpExporter()
{
    stop();
    removeUnlessKept(dir_, "exporter");
}

void SnmpExporter::generateConfig()
{
    const std::string log = dir_ + "/generate.log";
    ChildProcess generate;
    generate.start({"/bin/bash", kGenerateScript, "--base-mibs", ORV3_BASE_MIBS_DIR, configPath()}, log, dir_);
    if (!generate.waitForExit(kGenerateTimeout)) {
        generate.stop(milliseconds(0));
        throw std::runtime_error(std::string(kGenerateScript) + " did not finish within " +
                                 std::to_string(kGenerateTimeout.count()) + " ms:\n" + readFileText(log));
    }
    int status = generate.waitStatus();
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || !fs::is_regular_file(configPath())) {
        throw std::runtime_error(std::string(kGenerateScript) + " " + generate.describeExit() + ":\n" +
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
        if (!portTaken || !process_.exited())
            break;
    }
    throw std::runtime_error("prometheus-snmp-exporter did not start (" + error + ") in " + dir_ +
                             "\n--- exporter.log ---\n" + logText());
}

bool SnmpExporter::spawn(std::string &error)
{
    process_.start(
        {kExporter, "--config.file=" + configPath(), "--web.listen-address=127.0.0.1:" + std::to_string(port_)},
        dir_ + "/exporter.log", dir_);
    auto deadline = Clock::now() + kStartTimeout;
    while (true) {
        if (process_.exited()) {
            error = "the exporter " + process_.describeExit() + " during start-up";
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

void SnmpExporter::stop()
{
    if (!process_.stop(kStopTimeout)) {
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

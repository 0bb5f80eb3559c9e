#include "harness/http_service.h"

#include "harness/agent.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace orv3::test {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds kPollInterval{10};

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

void HttpService::start(Launch launch)
{
    launch_ = std::move(launch);
    std::string error;
    for (int attempt = 0; attempt < 5; ++attempt) {
        port_ = pickFreeTcpPort();
        if (spawn(error))
            return;
        bool portTaken = logText().find("address already in use") != std::string::npos;
        if (!portTaken || !process_.exited())
            break;
    }
    throw std::runtime_error(launch_.name + " did not start (" + error + ") in " + launch_.workDir + "\n--- " +
                             launch_.logPath + " ---\n" + logText());
}

bool HttpService::spawn(std::string &error)
{
    process_.start(launch_.command(port_), launch_.logPath, launch_.workDir);
    auto deadline = Clock::now() + launch_.startTimeout;
    while (true) {
        if (process_.exited()) {
            error = launch_.name + " " + process_.describeExit() + " during start-up";
            return false;
        }
        HttpResponse ready = httpGet(port_, launch_.readyPath, milliseconds(1000));
        if (ready.ok())
            return true;
        if (Clock::now() >= deadline) {
            error = "not ready on 127.0.0.1:" + std::to_string(port_) + launch_.readyPath + " within " +
                    std::to_string(launch_.startTimeout.count()) +
                    " ms, last: " + (ready.error.empty() ? "HTTP " + std::to_string(ready.status) : ready.error);
            return false;
        }
        std::this_thread::sleep_for(kPollInterval);
    }
}

void HttpService::stop()
{
    if (!process_.stop(launch_.stopTimeout)) {
        ADD_FAILURE() << launch_.name << " did not exit within " << launch_.stopTimeout.count()
                      << " ms of SIGTERM; killed\n--- " << launch_.logPath << " ---\n"
                      << logText();
    }
}

void HttpService::kill()
{
    process_.stop(milliseconds(0));
}

std::string HttpService::logText() const
{
    return readFileText(launch_.logPath);
}

HttpResponse HttpService::get(const std::string &target, milliseconds timeout) const
{
    return httpGet(port_, target, timeout);
}

} // namespace orv3::test

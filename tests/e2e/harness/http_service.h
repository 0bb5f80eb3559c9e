// A program a test runs that serves HTTP on a loopback port (the Prometheus
// SNMP exporter, the Prometheus server), and the one HTTP request the tests
// make of such programs.
#pragma once

#include "harness/child_process.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace orv3::test {

struct HttpResponse {
    int status = 0; // the HTTP status code; 0 when no complete answer came
    std::string body;
    std::string error; // why there is no answer

    bool ok() const { return status == 200; }
};

// One HTTP/1.0 GET of `target` ("/path?query") from 127.0.0.1:<port>, all of it
// within `timeout`.
HttpResponse httpGet(int port, const std::string &target, std::chrono::milliseconds timeout);

// Picks a currently free TCP port on 127.0.0.1 (bind to port 0, read it, close).
int pickFreeTcpPort();

class HttpService {
public:
    struct Launch {
        std::string name;                                // the program, in messages
        std::function<std::vector<std::string>(int)> command; // its command line to serve on a port
        std::string logPath;                             // its standard output and error
        std::string workDir;
        std::string readyPath;                           // answers 200 once it serves
        std::chrono::milliseconds startTimeout;
        std::chrono::milliseconds stopTimeout;
    };

    // Starts it on a free port and waits until `readyPath` answers. A port
    // picked as free may be taken by someone else before the program binds
    // it: another is tried then. Throws std::runtime_error with its log when
    // it exits or is not ready in time.
    void start(Launch launch);
    // SIGTERM, then SIGKILL after the stop timeout, which is a test failure.
    void stop();
    // SIGKILL at once (a start that went wrong).
    void kill();

    int port() const { return port_; }
    std::string logText() const;
    HttpResponse get(const std::string &target, std::chrono::milliseconds timeout) const;

private:
    bool spawn(std::string &error);

    Launch launch_;
    int port_ = 0;
    ChildProcess process_;
};

} // namespace orv3::test

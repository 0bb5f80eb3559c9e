// Runs Debian's Prometheus server (/usr/bin/prometheus) for one test: its
// configuration file and its time-series database in a private temp
// directory, its web interface and API on a free loopback TCP port.
#pragma once

#include "harness/http_service.h"

#include <string>

namespace orv3::test {

class PrometheusServer {
public:
    // Writes `config` (the text of a prometheus.yml) into the directory,
    // starts the server with it and waits until it reports itself ready
    // (its configuration and rule files loaded). Throws std::runtime_error
    // with the server's log when it exits or is not ready in time (a
    // configuration or rule file it rejects, say); the directory is removed
    // then, unless ORV3_E2E_KEEP is set in the environment.
    explicit PrometheusServer(const std::string &config);
    // Stops the server (SIGTERM, then SIGKILL after 10 s) and removes the
    // directory unless the current test failed (or ORV3_E2E_KEEP is set), in
    // which case its path is printed.
    ~PrometheusServer();
    PrometheusServer(const PrometheusServer &) = delete;
    PrometheusServer &operator=(const PrometheusServer &) = delete;

    int port() const { return service_.port(); }
    const std::string &dir() const { return dir_; }
    std::string configPath() const { return dir_ + "/prometheus.yml"; }
    // The server's log (its standard output and error).
    std::string logText() const;

    // One GET of `target` ("/api/v1/alerts", "/api/v1/query?query=up") from
    // the server.
    HttpResponse get(const std::string &target) const;

private:
    std::string dir_;
    HttpService service_;
};

} // namespace orv3::test

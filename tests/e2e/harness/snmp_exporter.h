// Runs Debian's Prometheus SNMP exporter for one test, set up the way the
// README tells a user to: contrib/prometheus/generate writes its snmp.yml from
// contrib/prometheus/generator.yml, and /usr/bin/prometheus-snmp-exporter
// serves it on a free loopback TCP port. Everything lives in a private temp
// directory.
#pragma once

#include "harness/http_service.h"

#include <chrono>
#include <string>

#ifndef ORV3_SOURCE_DIR
#define ORV3_SOURCE_DIR "."
#endif
#ifndef ORV3_BASE_MIBS_DIR
#define ORV3_BASE_MIBS_DIR ORV3_SOURCE_DIR "/.deps/node_modules/net-snmp/lib/mibs"
#endif

namespace orv3::test {

class SnmpExporter {
public:
    // Generates the configuration and starts the exporter, then waits until it
    // answers HTTP. Throws std::runtime_error with the generator's or the
    // exporter's output when either fails; the directory is removed then,
    // unless ORV3_E2E_KEEP is set in the environment.
    SnmpExporter();
    // Stops the exporter (SIGTERM, then SIGKILL after 5 s) and removes the
    // directory unless the current test failed (or ORV3_E2E_KEEP is set), in
    // which case its path is printed.
    ~SnmpExporter();
    SnmpExporter(const SnmpExporter &) = delete;
    SnmpExporter &operator=(const SnmpExporter &) = delete;

    int port() const { return service_.port(); }
    const std::string &dir() const { return dir_; }
    std::string configPath() const { return dir_ + "/snmp.yml"; }
    // The exporter's log (its standard output and error).
    std::string logText() const;

    // What Prometheus asks the exporter for: the samples of one exporter
    // module's walk of the agent at 127.0.0.1:<agentPort>.
    HttpResponse scrape(int agentPort, const std::string &module) const;

private:
    void generateConfig();
    void start();

    std::string dir_;
    HttpService service_;
};

} // namespace orv3::test

#include "harness/prometheus_server.h"

#include "harness/agent.h"

#include <fstream>
#include <stdexcept>
#include <vector>

namespace orv3::test {

using std::chrono::milliseconds;

namespace {

constexpr const char *kPrometheus = "/usr/bin/prometheus";
// Opening an empty database and loading the configuration take about a
// second; a machine busy with the suite's other agents may take several.
constexpr milliseconds kStartTimeout{30000};
// On SIGTERM the server stops its scrapes and rule groups and closes the
// database, which with a few seconds of samples is quick.
constexpr milliseconds kStopTimeout{10000};
// The API answers from memory.
constexpr milliseconds kRequestTimeout{10000};

} // namespace

PrometheusServer::PrometheusServer(const std::string &config) : dir_(makePrivateDir("orv3-prometheus"))
{
    try {
        std::ofstream out(configPath());
        out << config;
        out.close();
        if (!out)
            throw std::runtime_error("cannot write " + configPath());
        // /-/ready answers 503 until the database is open and the
        // configuration loaded.
        service_.start({"prometheus",
                        [this](int port) {
                            return std::vector<std::string>{kPrometheus, "--config.file=" + configPath(),
                                                            "--storage.tsdb.path=" + dir_ + "/data",
                                                            "--web.listen-address=127.0.0.1:" + std::to_string(port)};
                        },
                        dir_ + "/prometheus.log", dir_, "/-/ready", kStartTimeout, kStopTimeout});
    } catch (...) {
        service_.kill();
        removeUnlessKept(dir_, "Prometheus");
        throw;
    }
}

PrometheusServer::~PrometheusServer()
{
    service_.stop();
    removeUnlessKept(dir_, "Prometheus");
}

std::string PrometheusServer::logText() const
{
    return service_.logText();
}

HttpResponse PrometheusServer::get(const std::string &target) const
{
    return service_.get(target, kRequestTimeout);
}

} // namespace orv3::test

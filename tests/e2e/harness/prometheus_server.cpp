#include "harness/prometheus_server.h"

#include "harness/agent.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>
#include <thread>

namespace orv3::test {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

constexpr const char *kPrometheus = "/usr/bin/prometheus";
constexpr milliseconds kPollInterval{50};
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
        start();
    } catch (...) {
        process_.stop(milliseconds(0));
        removeUnlessKept(dir_, "Prometheus");
        throw;
    }
}

PrometheusServer::~PrometheusServer()
{
    stop();
    removeUnlessKept(dir_, "Prometheus");
}

void PrometheusServer::start()
{
    // A port picked as free may be taken by someone else before the server
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
    throw std::runtime_error("prometheus did not start (" + error + ") in " + dir_ + "\n--- prometheus.log ---\n" +
                             logText());
}

bool PrometheusServer::spawn(std::string &error)
{
    process_.start({kPrometheus, "--config.file=" + configPath(), "--storage.tsdb.path=" + dir_ + "/data",
                    "--web.listen-address=127.0.0.1:" + std::to_string(port_)},
                   dir_ + "/prometheus.log", dir_);
    auto deadline = Clock::now() + kStartTimeout;
    while (true) {
        if (process_.exited()) {
            error = "the server " + process_.describeExit() + " during start-up";
            return false;
        }
        // 503 until the database is open and the configuration loaded.
        HttpResponse ready = httpGet(port_, "/-/ready", milliseconds(1000));
        if (ready.ok())
            return true;
        if (Clock::now() >= deadline) {
            error = "not ready on 127.0.0.1:" + std::to_string(port_) + " within " +
                    std::to_string(kStartTimeout.count()) +
                    " ms, last: " + (ready.error.empty() ? "HTTP " + std::to_string(ready.status) : ready.error);
            return false;
        }
        std::this_thread::sleep_for(kPollInterval);
    }
}

void PrometheusServer::stop()
{
    if (!process_.stop(kStopTimeout)) {
        ADD_FAILURE() << "prometheus did not exit within " << kStopTimeout.count()
                      << " ms of SIGTERM; killed\n--- prometheus.log ---\n"
                      << logText();
    }
}

std::string PrometheusServer::logText() const
{
    return readFileText(dir_ + "/prometheus.log");
}

HttpResponse PrometheusServer::get(const std::string &target) const
{
    return httpGet(port_, target, kRequestTimeout);
}

} // namespace orv3::test

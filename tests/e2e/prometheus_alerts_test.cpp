// Alerting with Prometheus: Debian's Prometheus server scrapes the agent
// serving the sample machine through Debian's SNMP exporter, with the
// README's scrape job and contrib/prometheus/alerts.yml loaded as shipped.
// A fan that fails on the live machine raises its alert, which ends when the
// fan is Normal again; an agent that stops answering makes its target down.
//
// Prometheus scrapes every 2 seconds and evaluates every second, so that a
// change reaches the API within a few seconds: the fan table refreshes at
// most every 2 s, then one scrape and one evaluation. (That interval would
// freeze systemHealthStat, which refreshes only after 3 s without a request
// for it; no test here reads it.) The first scrape comes about 5 s after the
// server starts: its scrape manager takes up new targets on a 5 s tick.
#include "harness/agent.h"
#include "harness/prometheus_server.h"
#include "harness/snmp_exporter.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <thread>

namespace orv3::test {
namespace {

using json = nlohmann::json;
using Labels = std::map<std::string, std::string>;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char *kAlertRules = ORV3_SOURCE_DIR "/contrib/prometheus/alerts.yml";
constexpr const char *kFanStoreTable = "s/fans/status/fantbl";
// Long enough for a table refresh, a scrape and an evaluation several times
// over, on a machine busy with the suite's other agents.
constexpr milliseconds kAlertTimeout{20000};
constexpr milliseconds kPollInterval{100};

AgentOptions sampleMachine()
{
    AgentOptions options;
    options.machinePath = "sample.json";
    return options;
}

// The README's scrape job, scraping every 2 seconds (time enough for a
// sanitized agent) and evaluating every second.
std::string prometheusConfig(int agentPort, int exporterPort)
{
    return "global:\n"
           "  scrape_interval: 2s\n"
           "  scrape_timeout: 2s\n"
           "  evaluation_interval: 1s\n"
           "rule_files:\n"
           "  - " +
           std::string(kAlertRules) +
           "\n"
           "scrape_configs:\n"
           "  - job_name: orv3_monitors\n"
           "    metrics_path: /snmp\n"
           "    params: {module: [orv3_monitors]}\n"
           "    static_configs:\n"
           "      - targets: ['127.0.0.1:" +
           std::to_string(agentPort) +
           "']\n"
           "    relabel_configs:\n"
           "      - {source_labels: [__address__], target_label: __param_target}\n"
           "      - {source_labels: [__param_target], target_label: instance}\n"
           "      - {target_label: __address__, replacement: '127.0.0.1:" +
           std::to_string(exporterPort) + "'}\n";
}

Labels labelsOf(const json &alert)
{
    return alert.at("labels").get<Labels>();
}

// The active alert called `alertname` whose label `key` is `value`, from
// the alerts /api/v1/alerts lists; null when there is none.
json findAlert(const json &alerts, const std::string &alertname, const std::string &key, const std::string &value)
{
    for (const json &alert : alerts) {
        const json &labels = alert.at("labels");
        if (labels.value("alertname", "") == alertname && labels.value(key, "") == value)
            return alert;
    }
    return nullptr;
}

// The alert called `alertname` whose label `key` is `value` is active
// (pending or firing), or, with `state`, in that state.
std::function<bool(const json &)> hasAlert(const std::string &alertname, const std::string &key,
                                           const std::string &value, const std::string &state = "")
{
    return [=](const json &alerts) {
        json alert = findAlert(alerts, alertname, key, value);
        return !alert.is_null() && (state.empty() || alert.at("state") == state);
    };
}

class PrometheusAlerts : public ::testing::Test {
protected:
    Agent agent{sampleMachine()};
    SnmpExporter exporter;
    PrometheusServer prometheus{prometheusConfig(agent.port(), exporter.port())};

    std::string instance() const { return "127.0.0.1:" + std::to_string(agent.port()); }

    // The active (pending or firing) alerts, as /api/v1/alerts lists them.
    json activeAlerts()
    {
        HttpResponse response = prometheus.get("/api/v1/alerts");
        if (!response.ok())
            throw std::runtime_error("GET /api/v1/alerts: HTTP " + std::to_string(response.status) + " " +
                                     response.error + "\n" + response.body);
        return json::parse(response.body).at("data").at("alerts");
    }

    // Asks for the active alerts until `done` holds for them, and leaves the
    // last answer in `alerts`. When kAlertTimeout passes first, the failure
    // carries the last answer, the targets' scrape state and the logs.
    ::testing::AssertionResult waitForAlerts(const std::string &what, const std::function<bool(const json &)> &done,
                                             json &alerts)
    {
        auto deadline = Clock::now() + kAlertTimeout;
        alerts = activeAlerts();
        while (!done(alerts)) {
            if (Clock::now() >= deadline) {
                return ::testing::AssertionFailure()
                       << "not within " << kAlertTimeout.count() << " ms: " << what << "\n--- /api/v1/alerts ---\n"
                       << alerts.dump(2) << "\n--- /api/v1/targets ---\n"
                       << prometheus.get("/api/v1/targets").body << "\n--- prometheus.log ---\n"
                       << prometheus.logText() << "\n--- exporter.log ---\n"
                       << exporter.logText();
            }
            std::this_thread::sleep_for(kPollInterval);
            alerts = activeAlerts();
        }
        return ::testing::AssertionSuccess();
    }

    // The agent's machine with the status of the fan called `descr` replaced.
    static std::string machineWithFanStatus(const std::string &machineText, const std::string &descr,
                                            const std::string &status)
    {
        json machine = json::parse(machineText);
        for (json &row : machine.at("store").at(kFanStoreTable)) {
            if (row.at("descr") == descr) {
                row["status"] = status;
                return machine.dump(2);
            }
        }
        throw std::runtime_error("the machine has no fan " + descr);
    }
};

TEST_F(PrometheusAlerts, AFanThatFailsRaisesItsAlertUntilItIsNormalAgain)
{
    // The sample machine's stalled fan: the scrapes and the rules work.
    json alerts;
    ASSERT_TRUE(waitForAlerts("the sample's Critical fan Fan 3A Tach firing",
                              hasAlert("Orv3FanUnhealthy", "fanDescr", "Fan 3A Tach", "firing"), alerts));
    ASSERT_TRUE(findAlert(alerts, "Orv3FanUnhealthy", "fanDescr", "Fan 1A Tach").is_null()) << alerts.dump(2);

    const std::string sample = readFileText(agent.machinePath());
    agent.replaceMachine(machineWithFanStatus(sample, "Fan 1A Tach", "Critical"));
    ASSERT_TRUE(waitForAlerts("Fan 1A Tach's alert firing",
                              hasAlert("Orv3FanUnhealthy", "fanDescr", "Fan 1A Tach", "firing"), alerts));
    json alert = findAlert(alerts, "Orv3FanUnhealthy", "fanDescr", "Fan 1A Tach");
    EXPECT_EQ(labelsOf(alert), (Labels{{"alertname", "Orv3FanUnhealthy"},
                                       {"severity", "critical"},
                                       {"job", "orv3_monitors"},
                                       {"instance", instance()},
                                       {"fanDescr", "Fan 1A Tach"},
                                       {"fanIndex", "1"},
                                       {"fanHealthStatus", "Critical"}}));
    EXPECT_EQ(alert.at("annotations").at("summary"), "Fan \"Fan 1A Tach\" is Critical on " + instance());
    EXPECT_EQ(alert.at("annotations").at("description"),
              "The management controller at " + instance() +
                  " reports fan \"Fan 1A Tach\" (fan 1) as Critical. The server cools less while a fan is not "
                  "Normal: check the fan and replace it if it has failed.");

    // Back to Normal: the Critical series goes stale and the alert ends,
    // while the stalled fan's alert, still scraped, stays.
    agent.replaceMachine(sample);
    auto fan1AGone = [](const json &alerts) {
        return findAlert(alerts, "Orv3FanUnhealthy", "fanDescr", "Fan 1A Tach").is_null();
    };
    // Both in one answer: a scrape that fails (a sanitized agent on a busy
    // machine can miss the timeout) ends every alert until the next one.
    auto stalledFanStillFiring = hasAlert("Orv3FanUnhealthy", "fanDescr", "Fan 3A Tach", "firing");
    ASSERT_TRUE(waitForAlerts(
        "Fan 1A Tach's alert gone, Fan 3A Tach's still firing",
        [&](const json &alerts) { return fan1AGone(alerts) && stalledFanStillFiring(alerts); }, alerts));
}

TEST_F(PrometheusAlerts, AnAgentThatStopsAnsweringMakesItsUnreachableAlertPending)
{
    json alerts;
    ASSERT_TRUE(waitForAlerts("the first evaluation of the scraped sample",
                              hasAlert("Orv3FanUnhealthy", "fanDescr", "Fan 3A Tach"), alerts));
    ASSERT_TRUE(findAlert(alerts, "Orv3AgentUnreachable", "job", "orv3_monitors").is_null()) << alerts.dump(2);

    // The exporter answers an error for an agent that does not answer, so
    // the target is down and its series go stale: the fan's alert ends, and
    // the unreachable alert waits five minutes before it fires. (The rule
    // groups evaluate on timers of their own, so the two changes may be
    // seen one evaluation apart.)
    agent.stop();
    auto unreachable = hasAlert("Orv3AgentUnreachable", "job", "orv3_monitors");
    auto stalledFan = hasAlert("Orv3FanUnhealthy", "fanDescr", "Fan 3A Tach");
    ASSERT_TRUE(waitForAlerts(
        "Orv3AgentUnreachable pending and Fan 3A Tach's alert gone",
        [&](const json &alerts) { return unreachable(alerts) && !stalledFan(alerts); }, alerts));
    json alert = findAlert(alerts, "Orv3AgentUnreachable", "job", "orv3_monitors");
    EXPECT_EQ(alert.at("state"), "pending");
    EXPECT_EQ(labelsOf(alert), (Labels{{"alertname", "Orv3AgentUnreachable"},
                                       {"severity", "critical"},
                                       {"job", "orv3_monitors"},
                                       {"instance", instance()}}));
}

} // namespace
} // namespace orv3::test

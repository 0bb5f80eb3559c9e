// Monitoring with Prometheus: Debian's SNMP exporter, configured from
// contrib/prometheus/generator.yml, scrapes the agent serving the sample
// machine. Every row's samples carry the row's name, texts arrive as label
// values (also those longer than a DisplayString) and readings as numbers.
// The expected values are those of machines/sample.json. The second module,
// orv3_monitors_health, serves what the alert rules read as the first does.
#include "harness/agent.h"
#include "harness/prometheus_text.h"
#include "harness/snmp_exporter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace orv3::test {
namespace {

using Labels = std::map<std::string, std::string>;

class PrometheusExporter : public ::testing::Test {
protected:
    // One scrape of the orv3_monitors exporter module, as Prometheus makes it.
    std::vector<Sample> scrapeSampleMachine()
    {
        Agent agent(sampleMachine());
        SnmpExporter exporter;
        return scrape(exporter, agent, "orv3_monitors");
    }

    static AgentOptions sampleMachine()
    {
        AgentOptions options;
        options.machinePath = "sample.json";
        // Times are formatted in UTC and the C locale, so that their texts are known.
        options.env = {{"TZ", "UTC"}, {"LC_ALL", "C"}};
        return options;
    }

    static std::vector<Sample> scrape(const SnmpExporter &exporter, const Agent &agent, const std::string &module)
    {
        HttpResponse response = exporter.scrape(agent.port(), module);
        EXPECT_TRUE(response.ok()) << module << ": HTTP " << response.status << " " << response.error << "\n"
                                   << response.body << "\n--- exporter.log ---\n"
                                   << exporter.logText();
        return parseExposition(response.body);
    }

    // The sample called `name` with exactly these labels has this value.
    static ::testing::AssertionResult hasSample(const std::vector<Sample> &samples, const std::string &name,
                                                const Labels &labels, double value)
    {
        std::string sameName;
        for (const Sample &s : samples) {
            if (s.name != name)
                continue;
            if (s.labels == labels && s.value == value)
                return ::testing::AssertionSuccess();
            sameName += "\n    " + formatSample(s);
        }
        return ::testing::AssertionFailure()
               << "no sample " << formatSample({name, labels, value}) << "; the scrape has"
               << (sameName.empty() ? " no sample of that name" : ":" + sameName);
    }

    // No sample called `name` has this label.
    static ::testing::AssertionResult hasNoSample(const std::vector<Sample> &samples, const std::string &name,
                                                  const std::pair<std::string, std::string> &label)
    {
        for (const Sample &s : samples) {
            auto found = s.labels.find(label.first);
            if (s.name == name && found != s.labels.end() && found->second == label.second)
                return ::testing::AssertionFailure() << "the scrape has " << formatSample(s);
        }
        return ::testing::AssertionSuccess();
    }
};

TEST_F(PrometheusExporter, LabelsEveryRowWithItsNameAndServesTheMachinesValues)
{
    std::vector<Sample> samples = scrapeSampleMachine();

    // Fans: the fan table's status and speedPct; "Fan 3A Tach" stands still
    // ('offline' on the wire). A name longer than 30 characters is cut as
    // fanDescr serves it.
    EXPECT_TRUE(hasSample(samples, "fanHealthStatus",
                          {{"fanIndex", "5"}, {"fanDescr", "Fan 3A Tach"}, {"fanHealthStatus", "Critical"}}, 1));
    EXPECT_TRUE(hasSample(samples, "fanHealthStatus",
                          {{"fanIndex", "1"}, {"fanDescr", "Fan 1A Tach"}, {"fanHealthStatus", "Normal"}}, 1));
    EXPECT_TRUE(hasSample(samples, "fanSpeedPercent", {{"fanIndex", "1"}, {"fanDescr", "Fan 1A Tach"}}, 42));
    EXPECT_TRUE(hasSample(samples, "fanSpeedPercent", {{"fanIndex", "5"}, {"fanDescr", "Fan 3A Tach"}}, 0));
    EXPECT_TRUE(
        hasSample(samples, "fanSpeedPercent", {{"fanIndex", "7"}, {"fanDescr", "Power Supply 1 Fan (rear exhau"}}, 38));
    EXPECT_TRUE(hasSample(samples, "fanCritLimitLow", {{"fanIndex", "1"}, {"fanDescr", "Fan 1A Tach"}}, 300));

    // The overall health: an error event is active ("Fan 3A Tach has failed.").
    EXPECT_TRUE(hasSample(samples, "systemHealthStat", {}, 2));

    // Temperatures: "45.00 Centigrade" and "95.00 Centigrade" become numbers;
    // the health text stays a label.
    EXPECT_TRUE(hasSample(samples, "tempReadingCelsius", {{"tempIndex", "2"}, {"tempDescr", "CPU 1 Temp"}}, 45));
    EXPECT_TRUE(hasSample(samples, "tempCritLimitHighCelsius", {{"tempIndex", "2"}, {"tempDescr", "CPU 1 Temp"}}, 95));
    EXPECT_TRUE(hasSample(samples, "tempHealthStatus",
                          {{"tempIndex", "9"}, {"tempDescr", "Exhaust Temp"}, {"tempHealthStatus", "Warning"}}, 1));

    // Voltages, and an LED's state under its label.
    EXPECT_TRUE(hasSample(samples, "voltReadingVolts", {{"voltIndex", "1"}, {"voltDescr", "Planar 3.3V"}}, 3.31));
    EXPECT_TRUE(hasSample(samples, "ledState", {{"ledIndex", "14"}, {"ledLabel", "Drive 2"}}, 2));
}

TEST_F(PrometheusExporter, LeavesOutAReadingWhoseTextHoldsNoNumber)
{
    std::vector<Sample> samples = scrapeSampleMachine();

    // "CPU 1 Temp" has upper thresholds but no lower ones ('N/A'); "PSU 2 12V
    // Output" has a nominal reading but no current one ('Not available
    // (sensor initializing)', cut to 30 characters).
    EXPECT_TRUE(
        hasSample(samples, "tempNonCritLimitHighCelsius", {{"tempIndex", "2"}, {"tempDescr", "CPU 1 Temp"}}, 90));
    EXPECT_TRUE(hasNoSample(samples, "tempCritLimitLowCelsius", {"tempIndex", "2"}));
    EXPECT_TRUE(
        hasSample(samples, "voltNominalReadingVolts", {{"voltIndex", "9"}, {"voltDescr", "PSU 2 12V Output"}}, 12));
    EXPECT_TRUE(hasNoSample(samples, "voltReadingVolts", {"voltIndex", "9"}));
}

TEST_F(PrometheusExporter, ShowsTextsBeyondDisplayStringAsTextNotAsBytes)
{
    std::vector<Sample> samples = scrapeSampleMachine();

    // The event message (Orv3Text, up to 256 characters) names the event's rows.
    EXPECT_TRUE(hasSample(samples, "systemHealthSummarySeverity",
                          {{"systemHealthSummaryIndex", "2"},
                           {"systemHealthSummaryDescription", "Fan 3A Tach has failed."},
                           {"systemHealthSummarySeverity", "Error"}},
                          1));
    // The RAID lists (Orv3Text, up to 40959 characters).
    Labels driveLabels = {{"raidCtrlIndex", "2"},
                          {"raidCtrlLabel", "ThinkRAID 540-8i PCIe Gen4 12Gb Adapter (PCI Slot 5)"},
                          {"raidCtrlDriveLabels", "Drive 8 ,Drive 9 "}};
    EXPECT_TRUE(hasSample(samples, "raidCtrlDriveLabels", driveLabels, 1));
    Labels poolVolumes = {{"raidStoragepoolIndex", "2"},
                          {"raidStoragepoolLabel", "Storage Pool 1"},
                          {"raidStoragepoolVolumeLabels", "data,scratch"}};
    EXPECT_TRUE(hasSample(samples, "raidStoragepoolVolumeLabels", poolVolumes, 1));

    // The power trending time stamps (Orv3LocaleText): the machine's first
    // sample was taken at 1763880000, a Sunday at 06:40 UTC.
    EXPECT_TRUE(hasSample(samples, "powerTrendingSampleTimeStamp",
                          {{"powerTrendingSampleIndex", "1"}, {"powerTrendingSampleTimeStamp", "Sun 06:40:00"}}, 1));
    EXPECT_TRUE(hasSample(samples, "powerTrendingSampleReadingA", {{"powerTrendingSampleIndex", "1"}}, 426));
}

// The metric names contrib/prometheus/alerts.yml reads: every name followed
// by a selector on the job ("fanHealthStatus{job=...").
std::set<std::string> metricsTheAlertRulesRead()
{
    const std::string rules = readFileText(ORV3_SOURCE_DIR "/contrib/prometheus/alerts.yml");
    static const std::regex selector(R"(([A-Za-z_][A-Za-z0-9_]*)\{job=)");
    std::set<std::string> names;
    for (auto it = std::sregex_iterator(rules.begin(), rules.end(), selector); it != std::sregex_iterator(); ++it)
        names.insert((*it)[1]);
    return names;
}

std::vector<std::tuple<std::string, Labels, double>> samplesCalled(const std::vector<Sample> &samples,
                                                                   const std::string &name)
{
    std::vector<std::tuple<std::string, Labels, double>> found;
    for (const Sample &s : samples) {
        if (s.name == name)
            found.emplace_back(s.name, s.labels, s.value);
    }
    std::sort(found.begin(), found.end());
    return found;
}

TEST_F(PrometheusExporter, TheHealthModuleServesWhatTheAlertRulesReadAsTheWholeModuleDoes)
{
    Agent agent(sampleMachine());
    SnmpExporter exporter;
    std::vector<Sample> whole = scrape(exporter, agent, "orv3_monitors");
    std::vector<Sample> health = scrape(exporter, agent, "orv3_monitors_health");

    const std::set<std::string> read = metricsTheAlertRulesRead();
    ASSERT_TRUE(read.count("fanHealthStatus") && read.count("raidVolumeState") && read.count("tempReadingCelsius"));
    // up and scrape_* are Prometheus' own series of each target; the
    // exporter's snmp_* samples, of every module, time each scrape.
    auto prometheusOwn = [](const std::string &name) { return name == "up" || name.rfind("scrape_", 0) == 0; };
    auto exporterOwn = [](const std::string &name) { return name.rfind("snmp_", 0) == 0; };
    for (const std::string &name : read) {
        if (prometheusOwn(name)) {
            EXPECT_TRUE(samplesCalled(health, name).empty()) << name;
        } else if (exporterOwn(name)) {
            EXPECT_FALSE(samplesCalled(health, name).empty()) << name;
        } else {
            EXPECT_FALSE(samplesCalled(whole, name).empty()) << name;
            EXPECT_EQ(samplesCalled(health, name), samplesCalled(whole, name)) << name;
        }
    }
    // And nothing else but the health summary's index beside its texts.
    for (const Sample &s : health) {
        EXPECT_TRUE(read.count(s.name) || exporterOwn(s.name) || s.name == "systemHealthSummaryIndex")
            << formatSample(s);
    }
    EXPECT_LT(health.size() * 10, whole.size());
}

} // namespace
} // namespace orv3::test

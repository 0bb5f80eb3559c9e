#include "harness/snmp_exporter.h"

#include "harness/agent.h"

#include <sys/wait.h>

#include <filesystem>
#include <stdexcept>
#include <vector>

namespace orv3::test {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

namespace {

constexpr const char *kExporter = "/usr/bin/prometheus-snmp-exporter";
constexpr const char *kGenerateScript = ORV3_SOURCE_DIR "/contrib/prometheus/generate";
// Generating loads the MIB and writes a 160 kB file: a fraction of a second,
// more on a machine busy with the suite's other agents.
constexpr milliseconds kGenerateTimeout{60000};
// The exporter answers HTTP a few milliseconds after it starts.
constexpr milliseconds kStartTimeout{20000};
constexpr milliseconds kStopTimeout{5000};
// One scrape walks the whole subtree: about 110 GETBULK requests, which a
// sanitized agent answers several times slower than a plain one.
constexpr milliseconds kScrapeTimeout{60000};

} // namespace

SnmpExporter::SnmpExporter() : dir_(makePrivateDir("orv3-exporter"))
{
    try {
        generateConfig();
        start();
    } catch (...) {
        service_.kill();
        removeUnlessKept(dir_, "exporter");
        throw;
    }
}

SnmpExporter::~SnmpExporter()
{
    service_.stop();
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
    service_.start({"prometheus-snmp-exporter",
                    [this](int port) {
                        return std::vector<std::string>{kExporter, "--config.file=" + configPath(),
                                                        "--web.listen-address=127.0.0.1:" + std::to_string(port)};
                    },
                    dir_ + "/exporter.log", dir_, "/", kStartTimeout, kStopTimeout});
}

std::string SnmpExporter::logText() const
{
    return service_.logText();
}

HttpResponse SnmpExporter::scrape(int agentPort, const std::string &module) const
{
    return service_.get("/snmp?target=127.0.0.1:" + std::to_string(agentPort) + "&module=" + module, kScrapeTimeout);
}

} // namespace orv3::test

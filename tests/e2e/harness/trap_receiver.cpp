#include "harness/trap_receiver.h"

#include "harness/agent.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace orv3::test {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char *kSnmptrapd = "/usr/sbin/snmptrapd";
constexpr milliseconds kStartTimeout{20000};
constexpr milliseconds kStopTimeout{5000};
constexpr milliseconds kPollInterval{20};

// Each notification becomes one log line: this marker, how it came, a bar,
// then the varbinds separated by tabs (snmptrapd's own separator).
constexpr const char *kLineMarker = "NOTIFICATION ";
constexpr const char *kSysUpTime = "1.3.6.1.2.1.1.3.0";
constexpr const char *kSnmpTrapOid = "1.3.6.1.6.3.1.1.4.1.0";

std::string withoutLeadingDot(std::string oid)
{
    return !oid.empty() && oid[0] == '.' ? oid.substr(1) : oid;
}

Notification parseLine(const std::string &line)
{
    Notification n;
    size_t bar = line.find('|');
    n.delivery = line.substr(std::string(kLineMarker).size(), bar - std::string(kLineMarker).size());
    std::string rest = bar == std::string::npos ? "" : line.substr(bar + 1);
    std::stringstream fields(rest);
    std::string field;
    while (std::getline(fields, field, '\t')) {
        size_t eq = field.find(" = ");
        if (eq == std::string::npos)
            continue;
        n.varbinds.emplace_back(withoutLeadingDot(field.substr(0, eq)), field.substr(eq + 3));
    }
    return n;
}

} // namespace

std::string Notification::trapOid() const
{
    for (const auto &[oid, value] : varbinds) {
        if (oid == kSnmpTrapOid)
            return value.rfind("OID: ", 0) == 0 ? withoutLeadingDot(value.substr(5)) : value;
    }
    return {};
}

std::vector<std::pair<std::string, std::string>> Notification::objects() const
{
    std::vector<std::pair<std::string, std::string>> carried;
    for (const auto &vb : varbinds) {
        if (vb.first != kSysUpTime && vb.first != kSnmpTrapOid)
            carried.push_back(vb);
    }
    return carried;
}

std::string Notification::toString() const
{
    std::string text = delivery + ":";
    for (const auto &[oid, value] : varbinds)
        text += "\n  " + oid + " = " + value;
    return text;
}

TrapReceiver::TrapReceiver(std::vector<std::string> configLines) : dir_(makePrivateDir("orv3-traps"))
{
    try {
        namespace fs = std::filesystem;
        fs::create_directories(dir_ + "/persist/cert_indexes");
        fs::create_directories(dir_ + "/conf");
        fs::create_directories(dir_ + "/home");
        {
            std::ofstream conf(dir_ + "/snmptrapd.conf");
            for (const auto &line : configLines)
                conf << line << "\n";
        }
        port_ = pickFreeUdpPort();
        // The format leaves the OIDs numeric (-On) and no MIB is loaded, so
        // that a line reads the same on every machine.
        process_.start({kSnmptrapd, "-f", "-C", "-c", dir_ + "/snmptrapd.conf", "-Lf", dir_ + "/snmptrapd.log", "-On",
                        "-F", std::string(kLineMarker) + "%P|%v\n", "udp:127.0.0.1:" + std::to_string(port_)},
                       dir_ + "/stdout.log", dir_,
                       {"SNMP_PERSISTENT_DIR=" + dir_ + "/persist", "SNMPCONFPATH=" + dir_ + "/conf", "MIBS=",
                        "HOME=" + dir_ + "/home"});
        // snmptrapd logs its version once its sockets are open.
        auto deadline = Clock::now() + kStartTimeout;
        while (logText().find("NET-SNMP version") == std::string::npos) {
            if (process_.exited())
                throw std::runtime_error("snmptrapd " + process_.describeExit() + " during start-up");
            if (Clock::now() >= deadline)
                throw std::runtime_error("snmptrapd did not start within " + std::to_string(kStartTimeout.count()) +
                                         " ms");
            std::this_thread::sleep_for(kPollInterval);
        }
    } catch (const std::exception &e) {
        std::string log = logText() + readFileText(dir_ + "/stdout.log");
        process_.stop(kStopTimeout);
        removeUnlessKept(dir_, "trap receiver");
        throw std::runtime_error(std::string(e.what()) + " in " + dir_ + "\n--- snmptrapd ---\n" + log);
    }
}

TrapReceiver::~TrapReceiver()
{
    if (!process_.stop(kStopTimeout))
        ADD_FAILURE() << "snmptrapd did not exit within " << kStopTimeout.count() << " ms of SIGTERM; killed";
    removeUnlessKept(dir_, "trap receiver");
}

std::string TrapReceiver::logText() const
{
    return readFileText(dir_ + "/snmptrapd.log");
}

std::vector<Notification> TrapReceiver::notifications() const
{
    std::vector<Notification> received;
    std::stringstream log(logText());
    std::string line;
    while (std::getline(log, line)) {
        if (line.rfind(kLineMarker, 0) == 0)
            received.push_back(parseLine(line));
    }
    return received;
}

std::vector<Notification> TrapReceiver::notificationsUnder(const std::string &prefix) const
{
    std::vector<Notification> matching;
    for (auto &n : notifications()) {
        if (n.trapOid().rfind(prefix, 0) == 0)
            matching.push_back(std::move(n));
    }
    return matching;
}

std::vector<Notification> TrapReceiver::waitForUnder(const std::string &prefix, size_t count,
                                                     milliseconds timeout) const
{
    auto deadline = Clock::now() + timeout;
    while (true) {
        auto matching = notificationsUnder(prefix);
        if (matching.size() >= count || Clock::now() >= deadline)
            return matching;
        std::this_thread::sleep_for(kPollInterval);
    }
}

} // namespace orv3::test

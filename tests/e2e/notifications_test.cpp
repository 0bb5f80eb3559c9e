// Notifications as an operator receives them: snmpd with the module over
// the simulated platform runs the event MIB configuration that comes with
// the module (contrib/snmpd/notifications.conf, unchanged), and a real
// snmptrapd receives what it sends, as SNMPv2c traps and as SNMPv3
// INFORMs. A live edit of the machine file changes a status; the
// notification of ORV3-MONITORS-MIB that names the row and its new status
// arrives, and the edit undone, the recovery arrives too.
//
// The event MIB polls every 5 seconds of real time. The module's caches
// would add their own periods (2 seconds for a table, more than 3 for the
// health): each test runs the module on a simulated clock, which it moves
// on after every edit, so that the next poll sees the change.
#include "harness/agent.h"
#include "harness/trap_receiver.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <ctime>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace orv3::test {
namespace {

using std::chrono::milliseconds;
using Objects = std::vector<std::pair<std::string, std::string>>;

constexpr const char *kNotificationsConf = ORV3_SOURCE_DIR "/contrib/snmpd/notifications.conf";
// monitorsNotifications: every notification of ORV3-MONITORS-MIB.
constexpr const char *kOurs = "1.3.6.1.4.1.53917.11.1.0.";
// A change is seen by the next poll: at most 5 seconds, and the notification
// is on its way at once. 15 seconds is what an operator is promised.
constexpr milliseconds kDelivery{15000};

constexpr const char *kSystemHealthChanged = "1.3.6.1.4.1.53917.11.1.0.1";
constexpr const char *kFanStatusChanged = "1.3.6.1.4.1.53917.11.1.0.2";
constexpr const char *kVoltageStatusChanged = "1.3.6.1.4.1.53917.11.1.0.3";
constexpr const char *kTemperatureStatusChanged = "1.3.6.1.4.1.53917.11.1.0.4";
constexpr const char *kPowerSupplyStatusChanged = "1.3.6.1.4.1.53917.11.1.0.5";
constexpr const char *kDiskStatusChanged = "1.3.6.1.4.1.53917.11.1.0.6";
constexpr const char *kRaidDriveStatusChanged = "1.3.6.1.4.1.53917.11.1.0.7";
constexpr const char *kRaidVolumeStateChanged = "1.3.6.1.4.1.53917.11.1.0.8";

// The SNMPv3 user the agent sends INFORMs as, and the receiver knows.
constexpr const char *kNotifyUser = "orv3-notify";
constexpr const char *kNotifyAuth = "notify auth passphrase";
constexpr const char *kNotifyPriv = "notify privacy passphrase";

nlohmann::json sampleMachine()
{
    return nlohmann::json::parse(readFileText(ORV3_SOURCE_DIR "/machines/sample.json"));
}

std::string text(const std::string &value)
{
    return "STRING: \"" + value + "\"";
}

// The shipped configuration, the receiver, and a marker of the tests' own:
// a notification that the agent sends once, on its first poll, after every
// monitor of the shipped file has taken the first reading that later
// changes are compared with (monitors run in the order of the file). The
// object it watches, fanNumber.0, exists from the start and never changes.
constexpr const char *kFirstPollDone = "1.3.6.1.4.1.53917.99.0.1";

std::vector<std::string> notifyingConfig(const std::string &sinkLine)
{
    return {std::string("includeFile ") + kNotificationsConf, sinkLine,
            std::string("notificationEvent orv3TestFirstPollDone ") + kFirstPollDone,
            "monitor -I -r 5 -e orv3TestFirstPollDone \"orv3 test: first poll done\" .1.3.6.1.4.1.53917.11.1.1.3.1.0"};
}

// How the agent sends them: SNMPv2c traps, or SNMPv3 INFORMs (authPriv),
// which the receiver acknowledges.
enum class Delivery { Trap2c, InformV3 };

void PrintTo(Delivery delivery, std::ostream *os)
{
    *os << (delivery == Delivery::Trap2c ? "SNMPv2c traps" : "SNMPv3 INFORMs");
}

std::string deliveryName(const ::testing::TestParamInfo<Delivery> &info)
{
    return info.param == Delivery::Trap2c ? "AsTraps" : "AsSnmpV3Informs";
}

std::vector<std::string> receiverConfig(Delivery delivery)
{
    if (delivery == Delivery::Trap2c)
        return {"authCommunity log public"};
    return {std::string("createUser ") + kNotifyUser + " SHA-256 \"" + kNotifyAuth + "\" AES \"" + kNotifyPriv + "\"",
            std::string("authUser log ") + kNotifyUser + " priv"};
}

// The agent's line that names the receiver.
std::string sinkLine(Delivery delivery, const TrapReceiver &receiver)
{
    if (delivery == Delivery::Trap2c)
        return "trap2sink " + receiver.address() + " public";
    return std::string("trapsess -Ci -v 3 -u ") + kNotifyUser + " -l authPriv -a SHA-256 -A \"" + kNotifyAuth +
           "\" -x AES -X \"" + kNotifyPriv + "\" " + receiver.address();
}

// How snmptrapd reports the PDU.
std::string seenAs(Delivery delivery)
{
    return delivery == Delivery::Trap2c ? "TRAP2, SNMP v2c, community public"
                                        : "INFORM, SNMP v3, user orv3-notify, context ";
}

AgentOptions notifyingAgent(nlohmann::json machine, const std::string &sinkLine, long clockStart)
{
    AgentOptions options;
    options.machineJson = machine.dump(1);
    options.clockStart = clockStart;
    options.extraConfig = notifyingConfig(sinkLine);
    return options;
}

// Edits of the machine that `module` serves: snmpd itself, or the AgentX
// subagent of a master whose event MIB does the polling.
class Edits {
public:
    Edits(Agent &module, long clockStart) : module_(module), clock_(clockStart) {}

    // Serves `machine` from now on and moves the module's clock past every
    // cache period, so that the next poll reads the new values.
    void serve(const nlohmann::json &machine)
    {
        module_.replaceMachine(machine.dump(1));
        clock_ += 10;
        module_.setClock(clock_);
    }

private:
    Agent &module_;
    long clock_;
};

// Waits until the agent has taken its first reading of everything it
// watches; returns how many of the module's notifications came before.
size_t waitForFirstPoll(const TrapReceiver &receiver)
{
    EXPECT_EQ(receiver.waitForUnder(kFirstPollDone, 1, kDelivery).size(), 1u) << receiver.logText();
    return receiver.notificationsUnder(kOurs).size();
}

// Waits until the module's notifications number `count`, and checks that no
// more than that came.
std::vector<Notification> ourNotifications(const TrapReceiver &receiver, size_t count)
{
    auto received = receiver.waitForUnder(kOurs, count, kDelivery);
    EXPECT_EQ(received.size(), count) << receiver.logText();
    return received;
}

void expectNotification(const Notification &n, const std::string &trapOid, const Objects &objects,
                        const std::string &delivery)
{
    EXPECT_EQ(n.trapOid(), trapOid) << n.toString();
    EXPECT_EQ(n.objects(), objects) << n.toString();
    EXPECT_EQ(n.delivery, delivery) << n.toString();
    ASSERT_GE(n.varbinds.size(), 2u) << n.toString();
    EXPECT_EQ(n.varbinds[0].first, "1.3.6.1.2.1.1.3.0") << n.toString();
    EXPECT_EQ(n.varbinds[1].first, "1.3.6.1.6.3.1.1.4.1.0") << n.toString();
}

const Objects kFan1Critical = {{"1.3.6.1.4.1.53917.11.1.1.3.2.1.2.1", text("Fan 1A Tach")},
                               {"1.3.6.1.4.1.53917.11.1.1.3.2.1.10.1", text("Critical")}};
const Objects kFan1Normal = {{"1.3.6.1.4.1.53917.11.1.1.3.2.1.2.1", text("Fan 1A Tach")},
                             {"1.3.6.1.4.1.53917.11.1.1.3.2.1.10.1", text("Normal")}};

// Fails fan 1 (Normal in the sample), then mends it; both changes arrive,
// each with the fan's name and new status, and nothing else of ours.
// `earlier` notifications of ours came before the first edit.
void failAndMendFan1(Agent &module, long clockStart, const TrapReceiver &receiver, const std::string &delivery,
                     size_t earlier = 0)
{
    Edits edits(module, clockStart);
    nlohmann::json machine = sampleMachine();
    machine["store"]["s/fans/status/fantbl"][0]["status"] = "Critical";
    edits.serve(machine);
    auto received = ourNotifications(receiver, earlier + 1);
    if (received.size() == earlier + 1)
        expectNotification(received.back(), kFanStatusChanged, kFan1Critical, delivery);

    machine["store"]["s/fans/status/fantbl"][0]["status"] = "Normal";
    edits.serve(machine);
    received = ourNotifications(receiver, earlier + 2);
    if (received.size() == earlier + 2)
        expectNotification(received.back(), kFanStatusChanged, kFan1Normal, delivery);
}

long now()
{
    return static_cast<long>(::time(nullptr));
}

// Each test runs once with traps and once with SNMPv3 INFORMs.
class Notifications : public ::testing::TestWithParam<Delivery> {
protected:
    TrapReceiver receiver{receiverConfig(GetParam())};
    long start = now();

    std::string sink() const { return sinkLine(GetParam(), receiver); }
    std::string delivery() const { return seenAs(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(, Notifications, ::testing::Values(Delivery::Trap2c, Delivery::InformV3), deliveryName);

TEST_P(Notifications, AFanGoingCriticalIsSentWithItsNameAndStatusAndSoIsItsRecovery)
{
    Agent agent(notifyingAgent(sampleMachine(), sink(), start));
    ASSERT_EQ(waitForFirstPoll(receiver), 0u) << receiver.logText();
    failAndMendFan1(agent, start, receiver, delivery());
}

// The master's first poll comes before its subagent has connected, and
// finds no row; each row that appears later is a change for the event MIB.
// So when the subagent connects, the receiver gets every watched row once
// with its current status (and again after the subagent reconnects): 52 on
// the sample machine (the health value, 8 fans, 9 voltages, 9
// temperatures, 2 power supplies, 4 disks, 8 RAID drives for their state
// and again for their health, 3 volumes). After that, one per change.
TEST_P(Notifications, TheMasterOfTheAgentXSubagentAnnouncesEveryRowWhenItConnectsThenEachChange)
{
    AgentOptions subagent;
    subagent.machineJson = sampleMachine().dump(1);
    subagent.clockStart = start;
    AgentXPair pair(subagent, notifyingConfig(sink()));
    waitForFirstPoll(receiver);
    const size_t everyRow = 52;
    auto announced = ourNotifications(receiver, everyRow);
    ASSERT_EQ(announced.size(), everyRow);
    size_t fans = 0;
    for (const auto &n : announced)
        fans += n.trapOid() == kFanStatusChanged;
    EXPECT_EQ(fans, 8u);
    failAndMendFan1(pair.subagent, start, receiver, delivery(), everyRow);
}

TEST_P(Notifications, ARaisedEventChangesTheHealthAndItsClearingIsTheRecovery)
{
    nlohmann::json healthy = sampleMachine();
    healthy["events"] = nlohmann::json::array();
    Agent agent(notifyingAgent(healthy, sink(), start));
    ASSERT_EQ(waitForFirstPoll(receiver), 0u) << receiver.logText();
    Edits edits(agent, start);

    nlohmann::json failing = healthy;
    failing["events"] = {{{"severity", 3}, {"message", "Fan 1A Tach has failed."}}};
    edits.serve(failing);
    auto received = ourNotifications(receiver, 1);
    if (received.size() == 1)
        expectNotification(received[0], kSystemHealthChanged, {{"1.3.6.1.4.1.53917.11.1.1.4.1.0", "INTEGER: 2"}},
                           delivery());

    edits.serve(healthy);
    received = ourNotifications(receiver, 2);
    if (received.size() == 2)
        expectNotification(received[1], kSystemHealthChanged, {{"1.3.6.1.4.1.53917.11.1.1.4.1.0", "INTEGER: 255"}},
                           delivery());
}

TEST_P(Notifications, ARaidDriveLeavingOnlineIsSentWithItsLabelStateAndHealth)
{
    nlohmann::json machine = sampleMachine();
    Agent agent(notifyingAgent(machine, sink(), start));
    ASSERT_EQ(waitForFirstPoll(receiver), 0u) << receiver.logText();
    Edits edits(agent, start);

    // The first drive of the sample: "Drive 0 ", Online (6), Normal (2).
    machine["raid"]["drives"][0]["state"] = 4;
    edits.serve(machine);
    auto received = ourNotifications(receiver, 1);
    const std::string label = "1.3.6.1.4.1.53917.11.1.1.13.1.3.1.2.1";
    const std::string state = "1.3.6.1.4.1.53917.11.1.1.13.1.3.1.4.1";
    const std::string health = "1.3.6.1.4.1.53917.11.1.1.13.1.3.1.11.1";
    if (received.size() == 1)
        expectNotification(received[0], kRaidDriveStatusChanged,
                           {{label, text("Drive 0 ")}, {state, text("Failed")}, {health, text("Normal")}}, delivery());

    machine["raid"]["drives"][0]["state"] = 6;
    edits.serve(machine);
    received = ourNotifications(receiver, 2);
    if (received.size() == 2)
        expectNotification(received[1], kRaidDriveStatusChanged,
                           {{label, text("Drive 0 ")}, {state, text("Online")}, {health, text("Normal")}}, delivery());
}

TEST_P(Notifications, EveryOtherWatchedStatusIsSentWithTheRowsNameAndNewStatus)
{
    nlohmann::json machine = sampleMachine();
    Agent agent(notifyingAgent(machine, sink(), start));
    ASSERT_EQ(waitForFirstPoll(receiver), 0u) << receiver.logText();
    Edits edits(agent, start);

    // One row of each, all Normal (Optimal) in the sample, in one edit.
    auto &store = machine["store"];
    store["s/voltages/status/voltagetbl"][0]["status"] = "Critical";
    store["s/temperatures/status/temperaturetbl"][0]["status"] = "Warning";
    store["s/hw_health/power_modules"][0]["status"] = "Critical";
    store["s/hw_health/disks"][0]["status"] = "Warning";
    machine["raid"]["drives"][0]["health"] = 0;
    machine["raid"]["volumes"][0]["state"] = 2;
    edits.serve(machine);

    auto received = ourNotifications(receiver, 6);
    std::map<std::string, Objects> byNotification;
    for (const auto &n : received) {
        EXPECT_EQ(n.delivery, delivery());
        EXPECT_TRUE(byNotification.emplace(n.trapOid(), n.objects()).second) << "twice: " << n.toString();
    }
    const std::string drive = "1.3.6.1.4.1.53917.11.1.1.13.1.3.1.";
    std::map<std::string, Objects> expected = {
        {kVoltageStatusChanged,
         {{"1.3.6.1.4.1.53917.11.1.1.2.2.1.2.1", text("Planar 3.3V")},
          {"1.3.6.1.4.1.53917.11.1.1.2.2.1.11.1", text("Critical")}}},
        {kTemperatureStatusChanged,
         {{"1.3.6.1.4.1.53917.11.1.1.1.2.1.2.1", text("Ambient Temp")},
          {"1.3.6.1.4.1.53917.11.1.1.1.2.1.11.1", text("Warning")}}},
        {kPowerSupplyStatusChanged,
         {{"1.3.6.1.4.1.53917.11.1.1.11.2.1.2.1", text("Power Supply 1")},
          {"1.3.6.1.4.1.53917.11.1.1.11.2.1.6.1", text("Critical")}}},
        {kDiskStatusChanged,
         {{"1.3.6.1.4.1.53917.11.1.1.12.2.1.2.1", text("Drive 0")},
          {"1.3.6.1.4.1.53917.11.1.1.12.2.1.3.1", text("Warning")}}},
        {kRaidDriveStatusChanged,
         {{drive + "2.1", text("Drive 0 ")}, {drive + "4.1", text("Online")}, {drive + "11.1", text("Critical")}}},
        {kRaidVolumeStateChanged,
         {{"1.3.6.1.4.1.53917.11.1.1.13.1.7.1.2.1", text("os-mirror")},
          {"1.3.6.1.4.1.53917.11.1.1.13.1.7.1.4.1", text("Degraded")}}},
    };
    EXPECT_EQ(byNotification, expected) << receiver.logText();
}

} // namespace
} // namespace orv3::test

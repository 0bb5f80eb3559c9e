// Runs Debian's snmptrapd for one test: a real notification receiver on a
// free loopback UDP port, with its own configuration and net-snmp state in
// a private directory. It writes every notification it accepts as one line
// of its log, which notifications() reads back.
#pragma once

#include "harness/child_process.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orv3::test {

// One notification as snmptrapd received it.
struct Notification {
    // How it came: "TRAP2, SNMP v2c, community public",
    // "INFORM, SNMP v3, user orv3-notify, context ", ...
    std::string delivery;
    // Every varbind in order: numeric OID without a leading dot, and the
    // value as net-snmp prints it ("STRING: \"Fan 1A Tach\"", "INTEGER: 2").
    std::vector<std::pair<std::string, std::string>> varbinds;

    // The value of snmpTrapOID.0 ("1.3.6.1.4.1.53917.11.1.0.2"); empty if absent.
    std::string trapOid() const;
    // The varbinds after sysUpTime.0 and snmpTrapOID.0: the objects it carries.
    std::vector<std::pair<std::string, std::string>> objects() const;
    std::string toString() const;
};

class TrapReceiver {
public:
    // Starts snmptrapd with `configLines` as its snmptrapd.conf (for example
    // "authCommunity log public", or createUser and authUser lines for
    // SNMPv3) and waits until it listens. Throws std::runtime_error with its
    // log when it cannot start.
    explicit TrapReceiver(std::vector<std::string> configLines = {"authCommunity log public"});
    // Stops snmptrapd; removes the directory unless the test failed.
    ~TrapReceiver();
    TrapReceiver(const TrapReceiver &) = delete;
    TrapReceiver &operator=(const TrapReceiver &) = delete;

    int port() const { return port_; }
    // "127.0.0.1:<port>", as a trap sink names it.
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }
    const std::string &dir() const { return dir_; }

    // Every notification received so far, in order of arrival.
    std::vector<Notification> notifications() const;
    // Those whose snmpTrapOID.0 starts with `prefix` (a numeric OID without
    // a leading dot).
    std::vector<Notification> notificationsUnder(const std::string &prefix) const;
    // Waits until `count` notifications under `prefix` have arrived; returns
    // them all, however many there are by then (fewer when time ran out).
    std::vector<Notification> waitForUnder(const std::string &prefix, size_t count,
                                           std::chrono::milliseconds timeout) const;
    // snmptrapd's log.
    std::string logText() const;

private:
    std::string dir_;
    int port_ = 0;
    ChildProcess process_;
};

} // namespace orv3::test

// Machine descriptions with fans, written by the tests that need them.
#pragma once

#include "harness/agent.h"
#include "harness/oids.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace orv3::test {

// A fixed simulated second; tests move the clock explicitly from here.
constexpr long kStartTime = 1700000000;

inline const std::string kFanNumber = oidJoin(kMonitorsRoot, {3, 1, 0});
inline const std::string kFanTable = oidJoin(kMonitorsRoot, {3, 2});
inline const std::string kFanStoreTable = "s/fans/status/fantbl";

inline std::string fanCell(int column, unsigned long index)
{
    return oidJoin(kMonitorsRoot, {3, 2, 1, column, index});
}

struct Fan {
    int index;
    std::string descr;
    int speedPct;
    std::string status = "Normal";
    int limits[6] = {0, 0, 0, 0, 300, 600}; // nonRecov/crit/nonCrit high, then low
};

inline nlohmann::json fanRow(const Fan &fan)
{
    return {{"index", fan.index},
            {"descr", fan.descr},
            {"speedPct", fan.speedPct},
            {"nonRecovLimitHigh", fan.limits[0]},
            {"critLimitHigh", fan.limits[1]},
            {"nonCritLimitHigh", fan.limits[2]},
            {"nonRecovLimitLow", fan.limits[3]},
            {"critLimitLow", fan.limits[4]},
            {"nonCritLimitLow", fan.limits[5]},
            {"status", fan.status}};
}

// The single variables every controller's store holds: the module reads
// them for its scalars, and a walk passes through all of them.
inline nlohmann::json controllerVariables()
{
    return {{"s/voltages/status/count", 0},
            {"s/temperatures/status/count", 0},
            {"s/lightpathstatus/other/identification", 0},
            {"s/lightpathstatus/other/info", 0},
            {"s/lightpathstatus/data/swe_username", ""}};
}

inline std::string machineWithFans(const std::vector<Fan> &fans, nlohmann::json faults = nlohmann::json::array())
{
    nlohmann::json rows = nlohmann::json::array();
    for (const Fan &fan : fans)
        rows.push_back(fanRow(fan));
    nlohmann::json store = controllerVariables();
    store[kFanStoreTable] = rows;
    return nlohmann::json{{"description", "test machine"}, {"store", store}, {"faults", faults}}.dump(2);
}

inline const std::vector<Fan> kThreeFans = {
    {1, "Fan 1A Tach", 42},
    {2, "Fan 1B Tach", 0},
    {3, "Fan 2A Tach", 5},
};

inline AgentOptions fanAgent(const std::string &machineJson, std::string debugTokens = "")
{
    AgentOptions options;
    options.machineJson = machineJson;
    options.clockStart = kStartTime;
    options.debugTokens = std::move(debugTokens);
    return options;
}

inline nlohmann::json fault(const std::string &call, int result, int status, int times = -1)
{
    nlohmann::json entry = {{"call", call}, {"key", kFanStoreTable}, {"result", result}, {"status", status}};
    if (times >= 0)
        entry["times"] = times;
    return entry;
}

} // namespace orv3::test

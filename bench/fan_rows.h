// Fans for the benchmarks: N store rows, and a machine description with them.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>

// Every description is 31 characters ("System Fan Tach 001 (front bay)"),
// served cut to 30, so that all rows cost the same to answer.
inline nlohmann::json manyFanRows(int count)
{
    nlohmann::json rows = nlohmann::json::array();
    for (int index = 1; index <= count; ++index) {
        char descr[40];
        std::snprintf(descr, sizeof descr, "System Fan Tach %03d (front bay)", index % 1000);
        rows.push_back({{"index", index},
                        {"descr", descr},
                        {"speedPct", index % 101},
                        {"nonRecovLimitHigh", 0},
                        {"critLimitHigh", 0},
                        {"nonCritLimitHigh", 0},
                        {"nonRecovLimitLow", 0},
                        {"critLimitLow", 300},
                        {"nonCritLimitLow", 600},
                        {"status", "Normal"}});
    }
    return rows;
}

inline std::string machineWithManyFans(int count)
{
    return nlohmann::json{{"store", {{"s/fans/status/fantbl", manyFanRows(count)}}}}.dump();
}

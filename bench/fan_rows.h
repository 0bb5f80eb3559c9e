// A machine description with N fans, for the benchmarks.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

inline std::string machineWithManyFans(int count)
{
    nlohmann::json rows = nlohmann::json::array();
    for (int index = 1; index <= count; ++index)
        rows.push_back({{"index", index},
                        {"descr", "System Fan " + std::to_string(index) + " Tach (front bay)"},
                        {"speedPct", index % 101},
                        {"nonRecovLimitHigh", 0},
                        {"critLimitHigh", 0},
                        {"nonCritLimitHigh", 0},
                        {"nonRecovLimitLow", 0},
                        {"critLimitLow", 300},
                        {"nonCritLimitLow", 600},
                        {"status", "Normal"}});
    return nlohmann::json{{"store", {{"s/fans/status/fantbl", rows}}}}.dump();
}

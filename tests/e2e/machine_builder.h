// Machine descriptions written by the tests: a store of tables and
// variables, and the faults to inject.
#pragma once

#include "fan_machines.h"

#include <nlohmann/json.hpp>

#include <string>

namespace orv3::test {

class MachineBuilder {
public:
    MachineBuilder &table(const std::string &path, nlohmann::json rows)
    {
        store_[path] = std::move(rows);
        return *this;
    }
    MachineBuilder &variable(const std::string &path, nlohmann::json value)
    {
        store_[path] = std::move(value);
        return *this;
    }
    MachineBuilder &fault(const std::string &call, const std::string &key, int result, int status, int times = -1)
    {
        nlohmann::json entry = {{"call", call}, {"key", key}, {"result", result}, {"status", status}};
        if (times >= 0)
            entry["times"] = times;
        faults_.push_back(entry);
        return *this;
    }
    MachineBuilder &faultWithCount(const std::string &call, const std::string &key, int result, int status, int count)
    {
        faults_.push_back({{"call", call}, {"key", key}, {"result", result}, {"status", status}, {"count", count}});
        return *this;
    }
    MachineBuilder &event(int severity, const std::string &message)
    {
        events_.push_back({{"severity", severity}, {"message", message}});
        return *this;
    }
    MachineBuilder &session(int id, const std::string &user, const std::string &access,
                            const std::string &address = "192.0.2.10", bool describable = true)
    {
        sessions_.push_back(
            {{"id", id}, {"user", user}, {"access", access}, {"address", address}, {"describable", describable}});
        return *this;
    }
    std::string json() const
    {
        return nlohmann::json{{"description", "test machine"},
                              {"store", store_},
                              {"events", events_},
                              {"sessions", sessions_},
                              {"faults", faults_}}
            .dump(2);
    }

private:
    nlohmann::json store_ = controllerVariables();
    nlohmann::json faults_ = nlohmann::json::array();
    nlohmann::json events_ = nlohmann::json::array();
    nlohmann::json sessions_ = nlohmann::json::array();
};

} // namespace orv3::test

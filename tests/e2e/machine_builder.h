// Machine descriptions written by the tests: a store of tables and
// variables, and the faults to inject.
#pragma once

#include "fan_machines.h"

#include <nlohmann/json.hpp>

#include <map>
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
    // A record of the change-history log, after those added before:
    // category 0 firmware, 1 hardware, any other value configuration.
    MachineBuilder &changeRecord(unsigned category, std::string text1, std::string text2)
    {
        changeHistory_.push_back({{"category", category}, {"text1", std::move(text1)}, {"text2", std::move(text2)}});
        return *this;
    }
    // The whole "power" section: policy setting, per-mode figures, capping
    // and restore replies (docs/machine-description.md).
    MachineBuilder &power(nlohmann::json section)
    {
        power_ = std::move(section);
        return *this;
    }
    // The platform's optional functions by feature number ({"18": 1}: the RAID link library).
    MachineBuilder &features(nlohmann::json section)
    {
        features_ = std::move(section);
        return *this;
    }
    // The whole "raid" section: controllers, drives, pools and volumes.
    MachineBuilder &raid(nlohmann::json section)
    {
        raid_ = std::move(section);
        return *this;
    }
    // The whole "adapters" section: PCI adapters with their functions.
    MachineBuilder &adapters(nlohmann::json section)
    {
        adapters_ = std::move(section);
        return *this;
    }
    // The whole "persistentMemory" section: the persistent-memory modules.
    MachineBuilder &persistentMemory(nlohmann::json section)
    {
        persistentMemory_ = std::move(section);
        return *this;
    }
    // An exchange the IPMI channel knows: request and response bytes in hex ("06 01").
    MachineBuilder &ipmiExchange(const std::string &request, const std::string &response)
    {
        ipmi_.push_back({{"request", request}, {"response", response}});
        return *this;
    }
    std::string json() const
    {
        nlohmann::json machine;
        machine["description"] = "test machine";
        machine["store"] = store_;
        machine["events"] = events_;
        machine["sessions"] = sessions_;
        machine["changeHistory"] = changeHistory_;
        if (!power_.is_null())
            machine["power"] = power_;
        machine["ipmi"] = ipmi_;
        if (!features_.is_null())
            machine["features"] = features_;
        if (!raid_.is_null())
            machine["raid"] = raid_;
        if (!adapters_.is_null())
            machine["adapters"] = adapters_;
        if (!persistentMemory_.is_null())
            machine["persistentMemory"] = persistentMemory_;
        machine["faults"] = faults_;
        return machine.dump(2);
    }

private:
    nlohmann::json store_ = controllerVariables();
    nlohmann::json faults_ = nlohmann::json::array();
    nlohmann::json events_ = nlohmann::json::array();
    nlohmann::json sessions_ = nlohmann::json::array();
    nlohmann::json changeHistory_ = nlohmann::json::array();
    nlohmann::json power_; // null: no "power" section
    nlohmann::json ipmi_ = nlohmann::json::array();
    nlohmann::json features_;         // null: no "features" section
    nlohmann::json raid_;             // null: no "raid" section
    nlohmann::json adapters_;         // null: no "adapters" section
    nlohmann::json persistentMemory_; // null: no "persistentMemory" section
};

// An agent serving a machine whose "power" section is `power`, on the
// platform variant `env` (ORV_FAMILY, ORV_CODENAME, PLATFLAGS).
inline AgentOptions powerAgent(const nlohmann::json &power, std::map<std::string, std::string> env = {},
                               std::string debugTokens = "")
{
    MachineBuilder machine;
    machine.power(power);
    AgentOptions options = fanAgent(machine.json(), std::move(debugTokens));
    options.env = std::move(env);
    return options;
}

} // namespace orv3::test

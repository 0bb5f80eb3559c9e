// The machine description the simulated platform serves to this unit-test
// process (a private copy of the sample machine; see main.cpp).
#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace orv3::test {

inline std::string sampleMachinePath()
{
    return ORV3_SOURCE_DIR "/machines/sample.json";
}

inline std::string sampleMachineText()
{
    std::ifstream in(sampleMachinePath());
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Replaces the served machine; the simulator reads it again on its next call.
inline void serveMachine(const std::string &json)
{
    static int version = 0;
    std::string path = getenv("ORV3_UNIT_MACHINE");
    std::string temporary = path + ".new" + std::to_string(++version);
    std::ofstream(temporary) << json;
    std::rename(temporary.c_str(), path.c_str());
}

// Serves a changed machine for the life of a test, then the sample again.
class ServedMachine {
public:
    explicit ServedMachine(const std::string &json) { serveMachine(json); }
    ~ServedMachine() { serveMachine(sampleMachineText()); }
    ServedMachine(const ServedMachine &) = delete;
    ServedMachine &operator=(const ServedMachine &) = delete;
};

} // namespace orv3::test

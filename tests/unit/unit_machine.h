// The machine description the simulated platform serves to this unit-test
// process (a private copy of the sample machine; see main.cpp).
#pragma once

#include "machine.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

namespace orv3::test {

// What the machine-file loader says of `text` (as file "m.json"), or ""
// when it takes the text.
inline std::string machineFileError(const std::string &text)
{
    try {
        orv3::sim::parseMachine(text, "m.json");
    } catch (const orv3::sim::MachineFileError &error) {
        return error.what();
    }
    return "";
}

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

// Waits until the simulator's next look for changes of its files (once a
// millisecond at most) sees what was just written.
inline void settleFiles()
{
    std::this_thread::sleep_for(std::chrono::nanoseconds(2 * orv3::sim::FileWatch::kLookIntervalNanoseconds));
}

// Replaces the served machine; the simulator reads it again on its next call.
inline void serveMachine(const std::string &json)
{
    static int version = 0;
    std::string path = getenv("ORV3_UNIT_MACHINE");
    std::string temporary = path + ".new" + std::to_string(++version);
    std::ofstream(temporary) << json;
    std::rename(temporary.c_str(), path.c_str());
    settleFiles();
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

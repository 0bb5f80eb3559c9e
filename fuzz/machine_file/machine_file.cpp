// The simulator's machine-description loader on arbitrary text. A broken
// description is reported as a MachineFileError naming its line; any other
// way out of the loader (another exception, a crash) is a finding.
#include "machine.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    try {
        orv3::sim::parseMachine(std::string(reinterpret_cast<const char *>(data), size), "fuzz.json");
    } catch (const orv3::sim::MachineFileError &) {
    }
    return 0;
}

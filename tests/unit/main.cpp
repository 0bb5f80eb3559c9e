// The unit tests link the simulated platform, which serves the machine
// named by ORV3_SIM_MACHINE from the moment the process starts. Each test
// process gets its own copy of the sample machine, so that a test may
// rewrite it (to inject a fault) while other test processes run.
#include "unit_machine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace {

std::string privateDirectory;

void removePrivateDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(privateDirectory, ignored);
}

} // namespace

int main(int argc, char **argv)
{
    if (!getenv("ORV3_UNIT_MACHINE")) {
        char pattern[] = "/tmp/orv3-unit-XXXXXX";
        if (!mkdtemp(pattern))
            return 2;
        std::string machine = std::string(pattern) + "/machine.json";
        std::filesystem::copy_file(orv3::test::sampleMachinePath(), machine);
        setenv("ORV3_SIM_MACHINE", machine.c_str(), 1);
        setenv("ORV3_UNIT_MACHINE", machine.c_str(), 1);
        execv("/proc/self/exe", argv);
        return 2;
    }
    privateDirectory = std::filesystem::path(getenv("ORV3_UNIT_MACHINE")).parent_path();
    atexit(removePrivateDirectory);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

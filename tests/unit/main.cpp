// The unit tests link the simulated platform. Each test process serves its
// own copy of the sample machine, so that a test may rewrite it (to inject
// a fault) while other test processes run.
#include "platform.h"
#include "unit_machine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

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
    char pattern[] = "/tmp/orv3-unit-XXXXXX";
    if (!mkdtemp(pattern))
        return 2;
    privateDirectory = pattern;
    atexit(removePrivateDirectory);
    std::string machine = privateDirectory + "/machine.json";
    std::filesystem::copy_file(orv3::test::sampleMachinePath(), machine);
    setenv("ORV3_UNIT_MACHINE", machine.c_str(), 1);
    orv3::sim::Platform::instance().serveFile(machine);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

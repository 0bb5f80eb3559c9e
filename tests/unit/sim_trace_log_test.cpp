// The simulated controller trace log: log_tlog lines appended verbatim to
// the file ORV3_SIM_TRACE_LOG names, or written to standard error without it.
#include "orv3/trace_log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string fileText(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Points ORV3_SIM_TRACE_LOG at a fresh file for the life of a test, and
// unsets it again after.
class TraceLogFile : public testing::Test {
protected:
    void SetUp() override
    {
        const char *machine = getenv("ORV3_UNIT_MACHINE");
        std::filesystem::path dir =
            machine ? std::filesystem::path(machine).parent_path() : std::filesystem::temp_directory_path();
        path_ = (dir / ("tlog-" + std::to_string(getpid()) + ".log")).string();
        std::filesystem::remove(path_);
        setenv("ORV3_SIM_TRACE_LOG", path_.c_str(), 1);
    }
    void TearDown() override
    {
        unsetenv("ORV3_SIM_TRACE_LOG");
        std::filesystem::remove(path_);
    }
    std::string text() const { return fileText(path_); }

    std::string path_;
};

TEST_F(TraceLogFile, LineIsAppendedAsFormattedWithoutItsLevel)
{
    log_tlog(1, "%s[%d] count:%d\r\n", "loadMaintancelog", 57, 3);
    EXPECT_EQ(text(), "loadMaintancelog[57] count:3\r\n");
    log_tlog(1, "%s[%d] get_chghist_log failed\r\n", "loadMaintancelog", 61);
    EXPECT_EQ(text(), "loadMaintancelog[57] count:3\r\nloadMaintancelog[61] get_chghist_log failed\r\n");
}

TEST_F(TraceLogFile, EveryLevelWritesTheSameWay)
{
    log_tlog(0, "zero\r\n");
    log_tlog(7, "seven%%\r\n");
    log_tlog(-1, "%u %ld %c %5.2f|\r\n", 4294967295u, -2L, 'x', 1.5);
    EXPECT_EQ(text(), "zero\r\nseven%\r\n4294967295 -2 x  1.50|\r\n");
}

TEST_F(TraceLogFile, LineWithoutNewlineIsKeptAsItIs)
{
    log_tlog(1, "no end");
    log_tlog(1, "%s", "");
    log_tlog(1, " here\r\n");
    EXPECT_EQ(text(), "no end here\r\n");
}

TEST_F(TraceLogFile, LineLongerThanAnyBufferIsWrittenWhole)
{
    std::string longText(200000, 'x');
    for (size_t i = 0; i < longText.size(); ++i)
        longText[i] = static_cast<char>('a' + i % 26);
    log_tlog(1, "%s[%d] %s\r\n", "raidlink", 12, longText.c_str());
    EXPECT_EQ(text(), "raidlink[12] " + longText + "\r\n");
}

TEST_F(TraceLogFile, NullFormatWritesNothing)
{
    // Through a pointer, so that the compiler's format check lets it pass.
    void (*tlog)(int32_t, const char *, ...) = log_tlog;
    tlog(1, nullptr);
    EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST(TraceLogStderr, WithoutTheVariableTheLineGoesToStandardError)
{
    unsetenv("ORV3_SIM_TRACE_LOG");
    testing::internal::CaptureStderr();
    log_tlog(1, "%s[%d] count:%d\r\n", "loadMaintancelog", 57, -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "orv3-sim: tlog: loadMaintancelog[57] count:-1\r\n");
}

TEST(TraceLogStderr, LineWithoutNewlineIsEndedOnStandardError)
{
    unsetenv("ORV3_SIM_TRACE_LOG");
    testing::internal::CaptureStderr();
    log_tlog(1, "no end");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "orv3-sim: tlog: no end\n");
}

TEST(TraceLogStderr, EmptyVariableMeansStandardError)
{
    setenv("ORV3_SIM_TRACE_LOG", "", 1);
    testing::internal::CaptureStderr();
    log_tlog(1, "x\r\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "orv3-sim: tlog: x\r\n");
    unsetenv("ORV3_SIM_TRACE_LOG");
}

TEST(TraceLogStderr, FileThatCannotBeOpenedFallsBackToStandardError)
{
    setenv("ORV3_SIM_TRACE_LOG", "/nonexistent-directory/tlog.log", 1);
    testing::internal::CaptureStderr();
    log_tlog(1, "kept\r\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "orv3-sim: tlog: kept\r\n");
    unsetenv("ORV3_SIM_TRACE_LOG");
}

} // namespace

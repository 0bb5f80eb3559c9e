// Bounded copies and the fan speed text.
#include "text.h"

#include <gtest/gtest.h>

#include <string>

using orv3::copyText;
using orv3::formatFanSpeed;

TEST(CopyText, KeepsAShortTextWhole)
{
    char buffer[32];
    EXPECT_EQ(copyText(buffer, 31, "Fan 1A Tach", 31), 11u);
    EXPECT_STREQ(buffer, "Fan 1A Tach");
}

TEST(CopyText, CutsAtTheBoundLeavingRoomForTheTerminator)
{
    char buffer[32];
    std::string forty(40, 'x');
    EXPECT_EQ(copyText(buffer, 31, forty.c_str(), 64), 30u);
    EXPECT_EQ(std::string(buffer), std::string(30, 'x'));
}

TEST(CopyText, NeverReadsPastAnUnterminatedHolder)
{
    char holder[4] = {'a', 'b', 'c', 'd'};
    char buffer[32];
    EXPECT_EQ(copyText(buffer, 31, holder, sizeof holder), 4u);
    EXPECT_STREQ(buffer, "abcd");
}

TEST(CopyText, TreatsAMissingSourceAsEmpty)
{
    char buffer[8] = "junk";
    EXPECT_EQ(copyText(buffer, sizeof buffer, nullptr, 8), 0u);
    EXPECT_STREQ(buffer, "");
}

TEST(FanSpeed, ZeroReadsOffline)
{
    char buffer[256];
    EXPECT_EQ(formatFanSpeed(buffer, sizeof buffer, 0), 7u);
    EXPECT_STREQ(buffer, "offline");
}

TEST(FanSpeed, PercentagesAreRightAlignedInThreePlaces)
{
    char buffer[256];
    formatFanSpeed(buffer, sizeof buffer, 5);
    EXPECT_STREQ(buffer, "  5% of maximum");
    formatFanSpeed(buffer, sizeof buffer, 75);
    EXPECT_STREQ(buffer, " 75% of maximum");
    formatFanSpeed(buffer, sizeof buffer, 100);
    EXPECT_STREQ(buffer, "100% of maximum");
}

TEST(FanSpeed, OnlyExactlyZeroIsOffline)
{
    char buffer[256];
    formatFanSpeed(buffer, sizeof buffer, -3);
    EXPECT_STREQ(buffer, " -3% of maximum");
}

TEST(FanSpeed, StaysWithinTheBuffer)
{
    char buffer[8];
    EXPECT_EQ(formatFanSpeed(buffer, sizeof buffer, 100), 7u);
    EXPECT_STREQ(buffer, "100% of");
}

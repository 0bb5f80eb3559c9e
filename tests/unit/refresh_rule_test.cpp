// When a cached table reloads, rule by rule.
#include "row_table.h"

#include <gtest/gtest.h>

#include <climits>

using orv3::refreshDue;
using orv3::RefreshRule;

TEST(FixedPeriodRule, FirstRequestAfterStartAlwaysLoads)
{
    int32_t stamp = 0;
    EXPECT_TRUE(refreshDue({RefreshRule::FixedPeriod, 1}, stamp, 1000));
    EXPECT_EQ(stamp, 1000);
}

TEST(FixedPeriodRule, OneSecondTableWaitsTwoWholeSeconds)
{
    RefreshRule rule{RefreshRule::FixedPeriod, 1};
    int32_t stamp = 1000;
    EXPECT_FALSE(refreshDue(rule, stamp, 1000));
    EXPECT_FALSE(refreshDue(rule, stamp, 1001));
    EXPECT_EQ(stamp, 1000) << "the stamp moves only when a load is done";
    EXPECT_TRUE(refreshDue(rule, stamp, 1002));
    EXPECT_EQ(stamp, 1002);
}

TEST(FixedPeriodRule, SteadyPollingStillReloadsEveryPeriodPlusOne)
{
    RefreshRule rule{RefreshRule::FixedPeriod, 3};
    int32_t stamp = 100;
    int loads = 0;
    for (int32_t now = 101; now <= 112; ++now)
        loads += refreshDue(rule, stamp, now);
    EXPECT_EQ(loads, 3); // at 104, 108 and 112
}

TEST(SlidingPeriodRule, PollingFasterThanThePeriodNeverReloads)
{
    RefreshRule rule{RefreshRule::SlidingPeriod, 3};
    int32_t stamp = 100;
    for (int32_t now = 102; now <= 120; now += 2)
        EXPECT_FALSE(refreshDue(rule, stamp, now)) << "at " << now;
    EXPECT_EQ(stamp, 120) << "every check moves the stamp";
    EXPECT_TRUE(refreshDue(rule, stamp, 124)) << "a pause longer than the period reloads";
}

TEST(NewSecondRule, ReloadsInEveryNewSecond)
{
    RefreshRule rule{RefreshRule::NewSecond, 0};
    int32_t stamp = 0;
    EXPECT_TRUE(refreshDue(rule, stamp, 500));
    EXPECT_FALSE(refreshDue(rule, stamp, 500));
    EXPECT_TRUE(refreshDue(rule, stamp, 501));
}

TEST(EveryWalkRule, AlwaysReloads)
{
    RefreshRule rule{RefreshRule::EveryWalk, 0};
    int32_t stamp = 0;
    EXPECT_TRUE(refreshDue(rule, stamp, 5));
    EXPECT_TRUE(refreshDue(rule, stamp, 5));
}

TEST(RefreshRules, CompareAsSigned32BitWordsThatWrap)
{
    // stamp + 1 wraps to INT_MIN, which is earlier than any now.
    int32_t stamp = INT32_MAX;
    EXPECT_TRUE(refreshDue({RefreshRule::FixedPeriod, 1}, stamp, 0));
}

// The simulated data manager's namespace locks: a namespace is held by one
// lock at a time, until that lock is released.
#include "platform.h"
#include "unit_machine.h"

#include "orv3/data_manager.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const char *const kLightPath[] = {"s/lightpathstatus", nullptr};

TEST(SimNamespaceLocks, SecondLockIsRefusedUntilTheFirstIsReleased)
{
    quel_dm_lock_t first = nullptr;
    ASSERT_EQ(quel_dm_LockNamespaces(kLightPath, g_coHandle, &first), 0);
    ASSERT_NE(first, nullptr);

    auto *const untouched = reinterpret_cast<quel_dm_lock_t>(0x1234);
    quel_dm_lock_t second = untouched;
    EXPECT_EQ(quel_dm_LockNamespaces(kLightPath, g_coHandle, &second), 1);
    EXPECT_EQ(second, untouched) << "a refused lock leaves the handle as it was";

    int32_t status = -1;
    EXPECT_EQ(quel_dm_UnlockNamespaces(first, g_coHandle, &status), 0);
    EXPECT_EQ(status, 0);

    second = nullptr;
    ASSERT_EQ(quel_dm_LockNamespaces(kLightPath, g_coHandle, &second), 0);
    EXPECT_NE(second, nullptr);
    EXPECT_EQ(quel_dm_UnlockNamespaces(second, g_coHandle, &status), 0);
}

TEST(SimNamespaceLocks, NamespacesAboveAndBelowAHeldOneAreHeldToo)
{
    quel_dm_lock_t held = nullptr;
    ASSERT_EQ(quel_dm_LockNamespaces(kLightPath, g_coHandle, &held), 0);

    const char *const below[] = {"s/voltages", "s/lightpathstatus/other", nullptr};
    const char *const above[] = {"s", nullptr};
    const char *const besides[] = {"s/lightpath", "s/lightpathstatus2", nullptr};
    quel_dm_lock_t other = nullptr;
    EXPECT_EQ(quel_dm_LockNamespaces(below, g_coHandle, &other), 1);
    EXPECT_EQ(quel_dm_LockNamespaces(above, g_coHandle, &other), 1);
    EXPECT_EQ(other, nullptr);
    ASSERT_EQ(quel_dm_LockNamespaces(besides, g_coHandle, &other), 0) << "only a whole path element is a namespace";

    int32_t status = -1;
    EXPECT_EQ(quel_dm_UnlockNamespaces(other, g_coHandle, &status), 0);
    EXPECT_EQ(quel_dm_UnlockNamespaces(held, g_coHandle, &status), 0);
}

TEST(SimNamespaceLocks, UnknownLockIsAnInvalidHandle)
{
    quel_dm_lock_t lock = nullptr;
    ASSERT_EQ(quel_dm_LockNamespaces(kLightPath, g_coHandle, &lock), 0);
    int32_t status = -1;
    ASSERT_EQ(quel_dm_UnlockNamespaces(lock, g_coHandle, &status), 0);
    status = -1;
    EXPECT_EQ(quel_dm_UnlockNamespaces(lock, g_coHandle, &status), 1) << "released twice";
    EXPECT_EQ(status, orv3::sim::kBadHandle);
    status = -1;
    EXPECT_EQ(quel_dm_UnlockNamespaces(nullptr, g_coHandle, &status), 1);
    EXPECT_EQ(status, orv3::sim::kBadHandle);
}

TEST(SimNamespaceLocks, AFailingUnlockStillReleasesTheLock)
{
    orv3::test::ServedMachine served(
        R"({"description": "unlock fails once", "store": {"s/lightpathstatus/other/info": 0},
                            "faults": [{"call": "quel_dm_UnlockNamespaces", "key": "s/lightpathstatus",
                                        "result": 1, "status": 9, "times": 1}]})");
    quel_dm_lock_t lock = nullptr;
    ASSERT_EQ(quel_dm_LockNamespaces(kLightPath, g_coHandle, &lock), 0);
    int32_t status = -1;
    EXPECT_EQ(quel_dm_UnlockNamespaces(lock, g_coHandle, &status), 1);
    EXPECT_EQ(status, 9);

    EXPECT_EQ(quel_dm_UnlockNamespaces(lock, g_coHandle, &status), 1) << "the handle was taken back";
    EXPECT_EQ(status, orv3::sim::kBadHandle);

    quel_dm_lock_t again = nullptr;
    ASSERT_EQ(quel_dm_LockNamespaces(kLightPath, g_coHandle, &again), 0) << "the failed unlock released the namespace";
    EXPECT_EQ(quel_dm_UnlockNamespaces(again, g_coHandle, &status), 0);
}

TEST(SimNamespaceLocks, MissingNamespacesOrOutPointerAreRefused)
{
    const char *const none[] = {nullptr};
    quel_dm_lock_t lock = nullptr;
    EXPECT_EQ(quel_dm_LockNamespaces(nullptr, g_coHandle, &lock), 1);
    EXPECT_EQ(quel_dm_LockNamespaces(none, g_coHandle, &lock), 1);
    EXPECT_EQ(quel_dm_LockNamespaces(kLightPath, g_coHandle, nullptr), 1);
    EXPECT_EQ(lock, nullptr);
    // Nothing was held by the refused calls.
    ASSERT_EQ(quel_dm_LockNamespaces(kLightPath, g_coHandle, &lock), 0);
    int32_t status = -1;
    EXPECT_EQ(quel_dm_UnlockNamespaces(lock, g_coHandle, &status), 0);
}

TEST(SimNamespaceLocks, LockNeverReleasedStaysWithTheStore)
{
    // Nothing leaks: the store owns every lock it hands out. The namespace
    // is new at every run, as it stays held for the life of the process.
    static int runs = 0;
    std::string abandoned = "s/hw_health/abandoned" + std::to_string(++runs);
    const char *const namespaces[] = {abandoned.c_str(), nullptr};
    quel_dm_lock_t lock = nullptr;
    EXPECT_EQ(quel_dm_LockNamespaces(namespaces, g_coHandle, &lock), 0);
    quel_dm_lock_t again = nullptr;
    EXPECT_EQ(quel_dm_LockNamespaces(namespaces, g_coHandle, &again), 1);
}

} // namespace

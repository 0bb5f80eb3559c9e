// The local-storage group's texts: the blank-stripping copy with its exact
// boundaries, the code-to-text tables and the drive state with its prefix.
#include "raid_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

// trimCopyStr of `source` (all its bytes) into a destination of `size`
// bytes, returned whole (NULs included) so that a missing terminator shows.
std::string trimmed(const std::string &source, int32_t size)
{
    std::vector<char> destination(static_cast<size_t>(size) + 1, '#');
    trimCopyStr(destination.data(), source.data(), size, static_cast<int32_t>(source.size()));
    return std::string(destination.data(), static_cast<size_t>(size) + 1);
}

std::string text(const std::string &whole)
{
    return whole.substr(0, whole.find('\0'));
}

TEST(TrimCopyStr, StripsBlanksCarriageReturnsAndLineFeedsAtBothEnds)
{
    EXPECT_EQ(text(trimmed(std::string("  ABC \r\n", 8), 128)), "ABC");
    EXPECT_EQ(text(trimmed(std::string("\0\0ABC\0\0", 7), 128)), "ABC");
    EXPECT_EQ(text(trimmed(" A", 128)), "A");
}

TEST(TrimCopyStr, ATextWhoseOnlyCharacterIsTheFirstComesOutEmpty)
{
    EXPECT_EQ(text(trimmed("A      ", 128)), "");
    EXPECT_EQ(text(trimmed("A", 128)), "");
}

TEST(TrimCopyStr, OnlyBlanksGiveTheEmptyText)
{
    EXPECT_EQ(text(trimmed("        ", 128)), "");
    EXPECT_EQ(text(trimmed(std::string(8, '\0'), 128)), "");
}

TEST(TrimCopyStr, ATextLongerThanTheDestinationIsDroppedWhole)
{
    const std::string name40 = "ThinkSystem RAID 940-16i 8GB Flash PCIe4";
    ASSERT_EQ(name40.size(), 40u);
    std::string whole = trimmed(name40, 32);
    EXPECT_EQ(whole, std::string(32, '\0') + "#") << "cleared, nothing copied, nothing written past 32 bytes";
}

TEST(TrimCopyStr, ATextOfExactlyTheDestinationSizeFillsItWithoutATerminator)
{
    const std::string name = "  " + std::string(32, 'x') + "  ";
    EXPECT_EQ(trimmed(name, 32), std::string(32, 'x') + "#");
    EXPECT_EQ(trimmed(name, 33), std::string(32, 'x') + std::string(1, '\0') + "#");
}

TEST(TrimCopyStr, AnEmptySourceClearsAndANoRoomDestinationIsNotWritten)
{
    EXPECT_EQ(trimmed("", 4), std::string(4, '\0') + "#");
    char untouched[2] = {'#', '#'};
    trimCopyStr(untouched, "ABC  ", 0, 5);
    EXPECT_EQ(untouched[0], '#');
    trimCopyStr(nullptr, "ABC", 8, 3); // nothing to write into
}

struct CodeTable {
    const char *name;
    int (*routine)(int32_t, char *, int32_t);
    std::vector<std::string> texts; // of codes 0, 1, 2, ...
};

const CodeTable kTables[] = {
    {"health", getControllerOrDiskHealthString, {"Critical", "Warning", "Normal"}},
    {"cacheModule", getControllerCacheMdlStatusString, {"OK", "Failed"}},
    {"batteryStatus", getControllerBatBCKStatusString, {"Operational", "Non-Operational"}},
    {"batteryType", getControllerBatBCKTypeString, {"No BBU", "IBBU", "BBU", "ZCR Legacy", "iTBBU3", "iBBU08", "TMMC"}},
    {"interface", getDriveDiskTypeString, {"SCSI", "SAS", "SATA", "FC"}},
    {"media", getDriveMediaTypeString, {"HDD", "SSD", "FLASH"}},
    {"format", getDriveDiskFormatString, {"2.5 inch", "3.5 inch"}},
    {"speed", getDriveSpeedString, {"1.5Gb/s - SATA 150", "3.0Gb/s", "6.0Gb/s", "12.0Gb/s"}},
    {"volumeState", getVolumeStateString, {"Offline", "Partially Degraded", "Degraded", "Optimal"}},
};

TEST(RaidCodeTexts, EveryCodeHasItsTextAndEveryOtherIsUnknown)
{
    for (const CodeTable &table : kTables) {
        char buffer[64];
        for (size_t code = 0; code < table.texts.size(); ++code) {
            int written = table.routine(static_cast<int32_t>(code), buffer, sizeof buffer);
            EXPECT_EQ(std::string(buffer), table.texts[code]) << table.name << " " << code;
            EXPECT_EQ(written, static_cast<int>(table.texts[code].size()));
        }
        for (int32_t code : {-1, static_cast<int32_t>(table.texts.size()), 255, INT32_MIN}) {
            table.routine(code, buffer, sizeof buffer);
            EXPECT_EQ(std::string(buffer), "Unknown") << table.name << " " << code;
        }
    }
}

TEST(RaidCodeTexts, BatteryTypeSevenIsUnknown)
{
    char buffer[32];
    getControllerBatBCKTypeString(7, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "Unknown");
}

TEST(RaidCodeTexts, TheWholeBufferIsClearedAndTheTextCutToFit)
{
    char buffer[8];
    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(getDriveSpeedString(0, buffer, 8), 18) << "snprintf's count of the whole text";
    EXPECT_EQ(std::string(buffer, 8), std::string("1.5Gb/s") + '\0');
    memset(buffer, '#', sizeof buffer);
    getDriveMediaTypeString(0, buffer, 8);
    EXPECT_EQ(std::string(buffer, 8), std::string("HDD") + std::string(5, '\0'));
    EXPECT_EQ(getDriveMediaTypeString(1, nullptr, 8), 3) << "no buffer: only measured";
}

std::string driveState(int32_t state, int32_t dedicated = 0, int32_t readyToRemove = 0, int32_t foreign = 0)
{
    char buffer[64];
    getDriveStateString(state, buffer, sizeof buffer, dedicated, readyToRemove, foreign);
    return buffer;
}

TEST(DriveState, EveryStateHasItsText)
{
    const char *const texts[] = {"Unconfigured Good",
                                 "Unconfigured Bad",
                                 "Global Hot Spare",
                                 "Offline",
                                 "Failed",
                                 "Rebuilding",
                                 "Online",
                                 "Copyback",
                                 "JBOD",
                                 "Unconfigured - Shielded",
                                 "Hot Spare - Shielded",
                                 "Configured - Shielded"};
    for (int32_t state = 0; state < 12; ++state)
        EXPECT_EQ(driveState(state), texts[state]) << state;
    EXPECT_EQ(driveState(12), "Unknown");
    EXPECT_EQ(driveState(-1), "Unknown");
}

TEST(DriveState, FlagsChooseTheSecondTextOfStatesZeroAndTwo)
{
    EXPECT_EQ(driveState(0, 0, 1), "Ready to Remove");
    EXPECT_EQ(driveState(0, 0, 2), "Unconfigured Good") << "only a flag of exactly 1";
    EXPECT_EQ(driveState(2, 1), "Dedicated Hot Spare");
    EXPECT_EQ(driveState(2, 7), "Dedicated Hot Spare");
    EXPECT_EQ(driveState(6, 1, 1), "Online");
}

TEST(DriveState, AForeignDriveIsPrefixed)
{
    EXPECT_EQ(driveState(0, 0, 1, 1), "(Foreign) Ready to Remove");
    EXPECT_EQ(driveState(99, 0, 0, 5), "(Foreign) Unknown");
}

} // namespace

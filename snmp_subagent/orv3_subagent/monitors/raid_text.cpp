#include "raid_text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <span>

namespace {

// Clears the caller's buffer and formats into it; a null buffer or a size
// below 1 writes nothing and only measures.
__attribute__((format(printf, 3, 4))) int writeText(char *buffer, int32_t size, const char *format, ...)
{
    const size_t room = buffer && size > 0 ? static_cast<size_t>(size) : 0;
    if (room > 0)
        memset(buffer, 0, room);
    va_list arguments;
    va_start(arguments, format);
    int written = vsnprintf(room > 0 ? buffer : nullptr, room, format, arguments);
    va_end(arguments);
    return written;
}

// The texts of codes 0, 1, 2, ... of one enumeration.
int writeCodeText(std::span<const char *const> texts, int32_t code, char *buffer, int32_t size)
{
    const char *text = code >= 0 && static_cast<size_t>(code) < texts.size() ? texts[code] : "Unknown";
    return writeText(buffer, size, "%s", text);
}

constexpr const char *kHealth[] = {"Critical", "Warning", "Normal"};
constexpr const char *kCacheModuleStatus[] = {"OK", "Failed"};
constexpr const char *kBatteryStatus[] = {"Operational", "Non-Operational"};
constexpr const char *kBatteryType[] = {"No BBU", "IBBU", "BBU", "ZCR Legacy", "iTBBU3", "iBBU08", "TMMC"};
constexpr const char *kInterfaceType[] = {"SCSI", "SAS", "SATA", "FC"};
constexpr const char *kMediaType[] = {"HDD", "SSD", "FLASH"};
constexpr const char *kFormFactor[] = {"2.5 inch", "3.5 inch"};
// Only the first link speed names its SATA generation.
constexpr const char *kLinkSpeed[] = {"1.5Gb/s - SATA 150", "3.0Gb/s", "6.0Gb/s", "12.0Gb/s"};
constexpr const char *kVolumeState[] = {"Offline", "Partially Degraded", "Degraded", "Optimal"};

// State texts by code; 0 and 2 have a second text chosen by a flag.
constexpr const char *kDriveState[] = {
    "Unconfigured Good",
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
    "Configured - Shielded",
};

} // namespace

extern "C" {

int getControllerOrDiskHealthString(int32_t code, char *buffer, int32_t size)
{
    return writeCodeText(kHealth, code, buffer, size);
}

int getControllerCacheMdlStatusString(int32_t code, char *buffer, int32_t size)
{
    return writeCodeText(kCacheModuleStatus, code, buffer, size);
}

int getControllerBatBCKStatusString(int32_t code, char *buffer, int32_t size)
{
    return writeCodeText(kBatteryStatus, code, buffer, size);
}

int getControllerBatBCKTypeString(int32_t code, char *buffer, int32_t size)
{
    return writeCodeText(kBatteryType, code, buffer, size);
}

int getDriveDiskTypeString(int32_t code, char *buffer, int32_t size)
{
    return writeCodeText(kInterfaceType, code, buffer, size);
}

int getDriveMediaTypeString(int32_t code, char *buffer, int32_t size)
{
    return writeCodeText(kMediaType, code, buffer, size);
}

int getDriveDiskFormatString(int32_t code, char *buffer, int32_t size)
{
    return writeCodeText(kFormFactor, code, buffer, size);
}

int getDriveSpeedString(int32_t code, char *buffer, int32_t size)
{
    return writeCodeText(kLinkSpeed, code, buffer, size);
}

int getVolumeStateString(int32_t code, char *buffer, int32_t size)
{
    return writeCodeText(kVolumeState, code, buffer, size);
}

int getDriveStateString(int32_t state, char *buffer, int32_t size, int32_t dedicated, int32_t readyToRemove,
                        int32_t foreign)
{
    char prefix[11] = {};
    if (foreign)
        snprintf(prefix, sizeof prefix, "(Foreign) ");
    const char *text = "Unknown";
    if (state == 0 && readyToRemove == 1)
        text = "Ready to Remove";
    else if (state == 2 && dedicated)
        text = "Dedicated Hot Spare";
    else if (state >= 0 && static_cast<size_t>(state) < std::size(kDriveState))
        text = kDriveState[state];
    return writeText(buffer, size, "%s%s", prefix, text);
}

} // extern "C"

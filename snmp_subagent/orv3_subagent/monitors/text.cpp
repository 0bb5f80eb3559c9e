#include "text.h"

#include <cstdio>
#include <cstring>

namespace orv3 {

uint32_t copyText(char *dst, size_t bound, const char *src, size_t srcCapacity)
{
    if (bound == 0)
        return 0;
    size_t length = src ? strnlen(src, srcCapacity < bound - 1 ? srcCapacity : bound - 1) : 0;
    if (length)
        memcpy(dst, src, length);
    dst[length] = '\0';
    return static_cast<uint32_t>(length);
}

uint32_t joinTexts(char *dst, size_t bound, const char *first, size_t firstCapacity, const char *second,
                   size_t secondCapacity)
{
    if (bound == 0)
        return 0;
    int firstLength = first ? static_cast<int>(strnlen(first, firstCapacity)) : 0;
    int secondLength = second ? static_cast<int>(strnlen(second, secondCapacity)) : 0;
    int written =
        snprintf(dst, bound, "%.*s %.*s", firstLength, first ? first : "", secondLength, second ? second : "");
    if (written < 0) {
        dst[0] = '\0';
        return 0;
    }
    return static_cast<uint32_t>(static_cast<size_t>(written) < bound ? written : bound - 1);
}

uint32_t formatFanSpeed(char *dst, size_t size, int32_t speedPct)
{
    int written = speedPct == 0 ? snprintf(dst, size, "offline")
                                : snprintf(dst, size, "%3ld%% of maximum", static_cast<long>(speedPct));
    if (written < 0)
        return 0;
    return static_cast<uint32_t>(static_cast<size_t>(written) < size ? written : size - 1);
}

} // namespace orv3

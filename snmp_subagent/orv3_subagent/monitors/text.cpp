#include "text.h"

#include <algorithm>
#include <cctype>
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

uint32_t formatText(char *text, size_t size, const char *format, va_list arguments)
{
    if (size == 0)
        return 0;
    const int written = vsnprintf(text, size, format, arguments);
    return written < 0 ? 0 : static_cast<uint32_t>(strnlen(text, size - 1));
}

size_t trimInto(char *dst, size_t dstSize, const char *src, size_t srcCapacity)
{
    if (dstSize == 0)
        return 0;
    auto isSpace = [](char c) { return isspace(static_cast<unsigned char>(c)) != 0; };
    size_t end = strnlen(src, srcCapacity);
    size_t begin = 0;
    while (begin < end && isSpace(src[begin]))
        ++begin;
    while (end > begin && isSpace(src[end - 1]))
        --end;
    const size_t length = std::min(end - begin, dstSize - 1);
    memmove(dst, src + begin, length);
    dst[length] = '\0';
    return length;
}

} // namespace orv3

namespace {

bool isBlank(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return (byte & 0xDF) == 0 || byte == '\n' || byte == '\r';
}

} // namespace

extern "C" void trimCopyStr(char *destination, const char *source, int32_t destinationSize, int32_t sourceLength)
{
    if (!destination)
        return;
    if (sourceLength < 1 || !source) {
        if (destinationSize >= 1)
            memset(destination, 0, static_cast<size_t>(destinationSize));
        return;
    }
    int32_t start = 0;
    while (start < sourceLength && isBlank(source[start]))
        ++start;
    // The backward scan stops at index 1: the first byte is never looked at.
    int32_t end = sourceLength - 1;
    while (end > 0 && isBlank(source[end]))
        --end;
    if (destinationSize < 1)
        return;
    memset(destination, 0, static_cast<size_t>(destinationSize));
    if (end < start || start >= sourceLength || end == 0)
        return;
    if (destinationSize > end - start)
        strncpy(destination, source + start, static_cast<size_t>(end - start + 1));
}

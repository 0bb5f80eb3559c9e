// Text into the fixed buffers of row records: every copy, format and trim
// the module makes into a column goes through here, bounded by the
// destination's size (a template parameter wherever the destination is a
// column or an array), and reading a source no further than its field.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <type_traits>

extern "C" {

// The RAID library's trimming rule, exported under its own name: copies the
// `sourceLength` bytes of a library text field without their leading and
// trailing blanks (NUL, space, line feed, carriage return) into
// `destination`. A stripped text longer than the destination is dropped
// whole, never cut; one of exactly `destinationSize` bytes fills it without
// a terminator. A text whose only non-blank character is its first one
// comes out empty, as the controller has always shown it.
void trimCopyStr(char *destination, const char *source, int32_t destinationSize, int32_t sourceLength);

} // extern "C"

namespace orv3 {

// A text column of a row record (orv3_text32_t, orv3_text64_t,
// orv3_text256_t): a character array and its served length.
template <class C>
concept TextColumn = std::is_array_v<decltype(C::text)> && std::is_same_v<decltype(C::len), uint32_t>;

// Copies at most `bound - 1` characters of `src` into `dst` and terminates
// it, reading no further than `srcCapacity` bytes of `src` (a holder the
// store forgot to terminate is still read safely). Returns the copied length.
uint32_t copyText(char *dst, size_t bound, const char *src, size_t srcCapacity);

// `first`, one blank and `second` ("%s %s") in `dst`, cut at `bound - 1`
// characters and terminated; each source is read no further than its
// capacity. Returns the stored length.
uint32_t joinTexts(char *dst, size_t bound, const char *first, size_t firstCapacity, const char *second,
                   size_t secondCapacity);

// The fan speed as served: "offline" for exactly 0, otherwise the
// percentage right-aligned in three places, e.g. "  5% of maximum".
uint32_t formatFanSpeed(char *dst, size_t size, int32_t speedPct);

// The text (at most the column's size less one characters).
template <TextColumn C> void setText(C &column, const char *text)
{
    column.len = copyText(column.text, sizeof column.text, text, sizeof column.text - 1);
}

// printf into the column, cut to its size less one characters.
uint32_t formatText(char *text, size_t size, const char *format, va_list arguments);
template <TextColumn C> __attribute__((format(printf, 2, 3))) void formatInto(C &column, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    column.len = formatText(column.text, sizeof column.text, format, arguments);
    va_end(arguments);
}

// The adapter tables' trimming rule (strtrim's): `src` without its leading
// and trailing white space (isspace), read no further than `srcCapacity`
// bytes and cut to `dstSize - 1` characters. Returns the trimmed length.
size_t trimInto(char *dst, size_t dstSize, const char *src, size_t srcCapacity);
template <size_t N, size_t M> size_t trimInto(char (&dst)[N], const char (&src)[M])
{
    return trimInto(dst, N, src, M);
}
template <TextColumn C, size_t N> void strtrimInto(C &column, const char (&field)[N])
{
    column.len = static_cast<uint32_t>(trimInto(column.text, sizeof column.text, field, N));
}

// The RAID library's rule (trimCopyStr's) into a column, with the length of
// what it kept (the whole column when the text fills it unterminated).
template <TextColumn C, size_t N> void trimCopyStrInto(C &column, const char (&field)[N])
{
    trimCopyStr(column.text, field, sizeof column.text, static_cast<int32_t>(N));
    column.len = static_cast<uint32_t>(strnlen(column.text, sizeof column.text));
}

} // namespace orv3

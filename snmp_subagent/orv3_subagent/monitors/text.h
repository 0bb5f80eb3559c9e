// Bounded text copies into the fixed buffers of row records.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orv3 {

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

} // namespace orv3

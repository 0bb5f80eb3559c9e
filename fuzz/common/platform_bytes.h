// The controller's libraries as a fuzz target sees them: every record they
// hand out is the next bytes of the fuzz input.
//
// A target links platform_bytes.cpp, whose definitions of the RAID link,
// inventory database, change-history, power-history and session calls take
// the place of the simulator's (the executable's definitions come first).
// Each call takes the next bytes of the input as the record's content, cut
// or zero-padded to the record's exact size, and leaves the identifier the
// caller stored in the record alone. A list takes one byte as its count,
// then that many records. A call for which the input has no byte left
// fails, as the library does for an identifier it does not know; so every
// loader also meets its failure paths, and every loop ends with the input.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orv3::fuzz {

// Makes the platform answer from `data` from now on.
void servePlatformBytes(const uint8_t *data, size_t size);

// Fills the first `size` bytes of `record` from the input, zero-padded when
// the input ends inside it; false, and the record untouched, when no byte
// is left.
bool takeRecord(void *record, size_t size);

// A record the module decodes directly, taken whole (zeroed when the input
// has no byte left).
template <class Record> Record takeWhole()
{
    Record record{};
    takeRecord(&record, sizeof record);
    return record;
}

// The trace log goes to /dev/null: a fuzz run would otherwise spend its time
// writing the loaders' failure lines to standard error.
void silenceTraceLog();

} // namespace orv3::fuzz

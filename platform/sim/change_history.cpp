// The simulated change-history log: the controller's record of firmware,
// hardware and configuration changes, from the machine description's
// "changeHistory" section. Every call hands out a fresh array of records
// that the caller owns and releases with free, as on the controller.
#include "orv3/change_history.h"
#include "platform.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using orv3::sim::Platform;

namespace {

// The only mode the controller's callers use: the whole log, in log order.
constexpr int32_t kWholeLog = 1;
constexpr int32_t kFailed = -1;

// Copies a text into a record field that starts zeroed: a shorter text keeps
// a terminator after it; a text as long as the field or longer fills the
// field and has none, so a reader must bound its copy by the field's width.
void copyField(char *field, size_t width, const std::string &text)
{
    memcpy(field, text.data(), std::min(text.size(), width));
}

// Hands out `reported` as the record count with an array of at least that
// many records: the described ones first, zero-filled ones after them, so
// that a caller may read every record the count promises. A count of 0 or
// less hands out nothing and leaves *records as it was.
int32_t handOut(const orv3::sim::Machine &machine, change_history_record_t **records, int32_t reported)
{
    if (reported <= 0)
        return reported;
    size_t described = machine.changeHistory.size();
    size_t allocated = std::max(described, static_cast<size_t>(reported));
    auto *array = static_cast<change_history_record_t *>(calloc(allocated, sizeof(change_history_record_t)));
    if (!array) {
        fprintf(stderr, "orv3-sim: get_chghist_log: cannot allocate %zu change records\n", allocated);
        return kFailed;
    }
    for (size_t i = 0; i < described; ++i) {
        const orv3::sim::ChangeRecord &change = machine.changeHistory[i];
        change_history_record_t &record = array[i];
        copyField(record.text1, sizeof record.text1, change.text1);
        copyField(record.text2, sizeof record.text2, change.text2);
        record.category = change.category;
    }
    orv3::sim::fillWritten(array, allocated * sizeof(change_history_record_t));
    *records = array;
    return reported;
}

} // namespace

extern "C" {

// Mode 1 gives the whole log; another mode, or no place for the array, is a
// failure (-1). A fault returns its result without handing out anything,
// unless it has a count: the call then reports that count (see handOut).
int32_t get_chghist_log(change_history_record_t **records, int32_t mode)
{
    auto fault = Platform::instance().enter(__func__, "");
    if (fault && !fault->count)
        return fault->result;
    if (!records || mode != kWholeLog)
        return kFailed;
    auto machine = Platform::instance().machine();
    if (fault)
        return handOut(*machine, records, *fault->count);
    if (machine->changeHistory.size() > INT32_MAX)
        return kFailed;
    return handOut(*machine, records, static_cast<int32_t>(machine->changeHistory.size()));
}

} // extern "C"

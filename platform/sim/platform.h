// The simulated controller: one machine description, the faults it asks
// for, and the log of every platform call. Every service entry point starts
// with enter(), so faults and the call log work the same for all of them.
#pragma once

#include "machine.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace orv3::sim {

// Status words of the simulated data manager (see quel_dm_GetVarListErrorStr).
enum StatusWord : int32_t {
    kOk = 0,
    kNoSuchNamespace = 1,
    kNoSuchVariable = 2,
    kNoMoreRows = 3,
    kBadHandle = 4,
    kTypeMismatch = 5,
    kValueRejected = 6,
    kNamespaceLocked = 7,
    kBadArgument = 8,
    kFailed = 9,
};
const char *statusWordText(int32_t status);

class Platform {
public:
    static Platform &instance();

    // Logs the call and returns the fault that makes it fail, if any. A
    // service that logs its calls with their outcome passes
    // CallLog::ByService and calls logCall itself.
    enum class CallLog { OnEntry, ByService };
    std::optional<Fault> enter(std::string_view call, std::string_view key, CallLog log = CallLog::OnEntry);
    // Appends "<call> <text>" to the call log.
    void logCall(std::string_view call, std::string_view text);
    std::shared_ptr<const Machine> machine();
    const std::string &machinePath() const { return source_.path(); }
    // Serves the description in `path` from now on, in place of the one
    // ORV3_SIM_MACHINE named as the process started: for a program that
    // carries the simulator and makes its own description first (the unit
    // tests, the benchmarks), without running itself again. Throws
    // MachineFileError, serving the old one still, when it cannot be used.
    void serveFile(const std::string &path);

    Platform(const Platform &) = delete;
    Platform &operator=(const Platform &) = delete;

private:
    Platform();

    std::mutex mutex_;
    MachineSource source_;
    std::string callLogPath_;
    uint64_t faultGeneration_ = 0;
    std::vector<int64_t> faultUses_;    // calls each fault made fail (or slowed)
    std::vector<int64_t> faultMatches_; // calls each fault matched, the ones it let through first included
};

// The call's fault, or the machine to answer from: the start of a call
// that answers from the description. The caller fails when neither lets it
// answer.
struct Entered {
    std::optional<Fault> fault;
    std::shared_ptr<const Machine> machine;
};

inline Entered enter(std::string_view call, std::string_view key)
{
    Entered entered;
    entered.fault = Platform::instance().enter(call, key);
    if (!entered.fault)
        entered.machine = Platform::instance().machine();
    return entered;
}

// Sets the `size` bytes a call wrote for its caller at `bytes` to the fill
// byte of the fault the call entered with, when that fault has one. Every
// service passes each record, text buffer and count it writes, after
// writing it; the blocks it allocates are filled, their counts are kept.
void fillWritten(void *bytes, size_t size);
template <class Record> void fillWritten(Record *record)
{
    fillWritten(record, sizeof *record);
}

// Writes `word` to a call's status out-parameter, when it has one, and
// returns `result`: the last step of every data-manager call.
inline int32_t finish(int32_t *status, int32_t result, int32_t word)
{
    if (status)
        *status = word;
    return result;
}

// Enters a call that has a status word: true when a fault makes it fail,
// with `result` set to what the call returns and the fault's status written.
inline bool failedByFault(std::string_view call, std::string_view key, int32_t *status, int32_t &result)
{
    auto fault = Platform::instance().enter(call, key);
    if (!fault)
        return false;
    result = finish(status, fault->result, fault->status);
    return true;
}

} // namespace orv3::sim

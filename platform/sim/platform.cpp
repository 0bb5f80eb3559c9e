#include "platform.h"

#include <chrono>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifndef ORV3_SIM_DEFAULT_MACHINE
#define ORV3_SIM_DEFAULT_MACHINE "machines/sample.json"
#endif

namespace orv3::sim {

// The fill byte of the call this thread is in, set as each call enters.
static thread_local std::optional<uint8_t> callFill;

const char *statusWordText(int32_t status)
{
    switch (status) {
    case kOk: return "success";
    case kNoSuchNamespace: return "namespace not found";
    case kNoSuchVariable: return "variable not found";
    case kNoMoreRows: return "no more rows";
    case kBadHandle: return "invalid handle";
    case kTypeMismatch: return "type mismatch";
    case kValueRejected: return "value rejected by validation";
    case kNamespaceLocked: return "namespace locked";
    case kBadArgument: return "bad argument";
    case kFailed: return "operation failed";
    default: return "unknown status";
    }
}

static std::string machinePathFromEnvironment()
{
    const char *path = getenv("ORV3_SIM_MACHINE");
    return path && *path ? path : ORV3_SIM_DEFAULT_MACHINE;
}

Platform::Platform() : source_(machinePathFromEnvironment())
{
    if (const char *log = getenv("ORV3_SIM_CALL_LOG"); log && *log)
        callLogPath_ = log;
    try {
        source_.loadOrThrow();
    } catch (const MachineFileError &error) {
        // Without a description there is no controller to simulate.
        fprintf(stderr, "orv3-sim: %s\n", error.what());
        _exit(78);
    }
}

Platform &Platform::instance()
{
    static Platform platform;
    return platform;
}

void Platform::logCall(std::string_view call, std::string_view text)
{
    if (callLogPath_.empty())
        return;
    std::string line;
    line.reserve(call.size() + text.size() + 2);
    line.append(call).append(" ").append(text).append("\n");
    // Opened for every line: the agent closes the descriptors it inherits
    // as it starts, after the simulator is already loaded. One write per
    // line keeps lines whole when a test reads the log.
    int fd = open(callLogPath_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0)
        return;
    ssize_t written = write(fd, line.data(), line.size());
    (void)written;
    close(fd);
}

std::shared_ptr<const Machine> Platform::machine()
{
    std::lock_guard lock(mutex_);
    return source_.current();
}

void Platform::serveFile(const std::string &path)
{
    MachineSource replacement(path);
    replacement.loadOrThrow();
    std::lock_guard lock(mutex_);
    source_ = std::move(replacement);
}

std::optional<Fault> Platform::enter(std::string_view call, std::string_view key, CallLog log)
{
    std::optional<Fault> found;
    {
        std::lock_guard lock(mutex_);
        if (log == CallLog::OnEntry)
            logCall(call, key);
        std::shared_ptr<const Machine> machine = source_.current();
        if (faultGeneration_ != source_.generation()) {
            // A reloaded description starts its faults' counts afresh.
            faultGeneration_ = source_.generation();
            faultUses_.assign(machine->faults.size(), 0);
            faultMatches_.assign(machine->faults.size(), 0);
        }
        for (size_t i = 0; i < machine->faults.size() && !found; ++i) {
            const Fault &fault = machine->faults[i];
            if (fault.call != call || (!fault.key.empty() && fault.key != key))
                continue;
            if (faultMatches_[i]++ < fault.after)
                continue;
            if (fault.times >= 0 && faultUses_[i] >= fault.times)
                continue;
            ++faultUses_[i];
            found = fault;
        }
    }
    // A slow call keeps the agent waiting, not the other callers of the
    // simulator.
    if (found && found->delayMs > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(found->delayMs));
    callFill = found ? found->fill : std::nullopt;
    if (found && found->answersAsUsual)
        return std::nullopt;
    return found;
}

void fillWritten(void *bytes, size_t size)
{
    if (callFill && bytes && size > 0)
        memset(bytes, *callFill, size);
}

// Load the description as the agent starts, so that a missing or broken
// file is reported at once, and let the module's lines reach a log file
// as they are written.
__attribute__((constructor)) static void startPlatform()
{
    setvbuf(stdout, nullptr, _IOLBF, 0);
    Platform::instance();
}

} // namespace orv3::sim

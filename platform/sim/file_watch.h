// Whether a file of the simulator's (the machine description, the clock)
// was written, replaced, created or removed, told by an inotify watch of its
// directory. A controller's services make no file system call at all, and
// the simulator asks on nearly every platform call and every time(): a
// stat() or a read of the file each time showed in what every table costs
// the agent. So the watch is looked at once a millisecond at most, and a
// look is one read() of a non-blocking descriptor with no path to resolve.
// A writer that needs the very next platform call to see its change waits
// a millisecond or two after its close or rename (the test harness does).
#pragma once

#include <string>
#include <utility>

namespace orv3::sim {

class FileWatch {
public:
    // Nothing is opened yet: snmpd closes every descriptor it inherited
    // when main() begins, which would take a watch set up while the
    // simulator is preloaded. The watch starts at the first look.
    explicit FileWatch(std::string path) : path_(std::move(path)) {}
    ~FileWatch();
    FileWatch(FileWatch &&other) noexcept;
    FileWatch &operator=(FileWatch &&other) noexcept;
    FileWatch(const FileWatch &) = delete;
    FileWatch &operator=(const FileWatch &) = delete;

    // Whether the file may have been touched since the last look: false
    // when the last look was less than kLookInterval ago; true at the first
    // look (the watch starts then), and at every look where inotify cannot
    // be had; otherwise what the watch gathered, drained.
    bool changed();

    static constexpr long long kLookIntervalNanoseconds = 1000000; // 1 ms

private:
    void start();

    std::string path_;
    std::string name_; // of the file in its directory
    bool started_ = false;
    int fd_ = -1;
    long long lastLook_ = 0; // monotonic nanoseconds
};

} // namespace orv3::sim

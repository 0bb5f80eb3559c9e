// Whether a file of the simulator's (the machine description, the clock)
// was written, replaced, created or removed since the last look, told by an
// inotify watch of its directory: a look is one read() of a non-blocking
// descriptor, with no path to resolve. The simulator looks on nearly every
// platform call, where a controller's services make no file system call at
// all; a stat() each time showed in what every table costs the agent.
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

    // Whether the file may have been touched since the last look: true at
    // the first look (the watch starts then), and at every look where
    // inotify cannot be had; otherwise what the watch gathered, drained. A
    // change is seen by the first look after the writer's close or rename
    // returned.
    bool changed();

private:
    void start();

    std::string path_;
    std::string name_; // of the file in its directory
    bool started_ = false;
    int fd_ = -1;
};

} // namespace orv3::sim

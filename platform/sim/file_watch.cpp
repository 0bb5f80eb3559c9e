#include "file_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <ctime>

#include <utility>

namespace orv3::sim {

void FileWatch::start()
{
    started_ = true;
    const size_t slash = path_.rfind('/');
    const std::string directory = slash == std::string::npos ? "." : slash == 0 ? "/" : path_.substr(0, slash);
    name_ = slash == std::string::npos ? path_ : path_.substr(slash + 1);
    fd_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd_ >= 0 && inotify_add_watch(fd_, directory.c_str(),
                                      IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_CREATE | IN_DELETE |
                                          IN_ATTRIB) < 0) {
        close(fd_);
        fd_ = -1;
    }
}

FileWatch::~FileWatch()
{
    if (fd_ >= 0)
        close(fd_);
}

FileWatch::FileWatch(FileWatch &&other) noexcept
    : path_(std::move(other.path_)), name_(std::move(other.name_)), started_(other.started_),
      fd_(std::exchange(other.fd_, -1)), lastLook_(other.lastLook_)
{
}

FileWatch &FileWatch::operator=(FileWatch &&other) noexcept
{
    if (this != &other) {
        if (fd_ >= 0)
            close(fd_);
        path_ = std::move(other.path_);
        name_ = std::move(other.name_);
        started_ = other.started_;
        fd_ = std::exchange(other.fd_, -1);
        lastLook_ = other.lastLook_;
    }
    return *this;
}

namespace {

long long monotonicNanoseconds()
{
    struct timespec now {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1000000000LL + now.tv_nsec;
}

} // namespace

bool FileWatch::changed()
{
    const long long at = monotonicNanoseconds();
    if (started_ && at - lastLook_ < kLookIntervalNanoseconds)
        return false;
    lastLook_ = at;
    if (!started_) {
        start();
        return true;
    }
    if (fd_ < 0)
        return true;
    alignas(inotify_event) char events[4096];
    bool ours = false;
    for (ssize_t length; (length = read(fd_, events, sizeof events)) > 0;) {
        for (ssize_t at = 0; at < length;) {
            const auto *event = reinterpret_cast<const inotify_event *>(events + at);
            // A lost event (the queue overflowed) may have been ours.
            if ((event->mask & IN_Q_OVERFLOW) || (event->len > 0 && name_ == event->name))
                ours = true;
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
    return ours;
}

} // namespace orv3::sim

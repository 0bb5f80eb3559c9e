// The clock the module sees. With ORV3_SIM_CLOCK naming a file that holds
// "<seconds>" or "<seconds> <step>", time() answers those seconds since the
// epoch, advanced by <step> on every later call, until the file changes.
// Without the variable, or with the file absent or empty, it is real time.
//
// time() is called on every request of every table, and a controller's
// time() makes no system call: the file is read once, and again only when a
// watch of it says it changed (file_watch.h: looked at once a millisecond at
// most). A writer that needs its new clock seen by the very next call waits
// a millisecond or two after replacing the file (the test harness does).
#include "file_watch.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>

namespace {

std::mutex clockMutex;
char lastContent[64];
bool simulated = false;
long long current = 0;
long long step = 0;

// Reads the clock file and takes up a new content; false when the file is
// absent, empty or unreadable (real time then).
bool readClockFile(const char *path)
{
    char content[64] = {};
    int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    ssize_t length = read(fd, content, sizeof content - 1);
    close(fd);
    if (length <= 0)
        return false;
    content[length] = '\0';
    if (strcmp(content, lastContent) != 0) {
        long long start = 0, newStep = 0;
        if (sscanf(content, "%lld %lld", &start, &newStep) < 1)
            return false;
        memcpy(lastContent, content, sizeof lastContent);
        // The call that reads a new content answers its first number.
        current = start - newStep;
        step = newStep;
    }
    return true;
}

bool simulatedNow(long long &now)
{
    static const char *path = getenv("ORV3_SIM_CLOCK");
    if (!path || !*path)
        return false;

    std::lock_guard lock(clockMutex);
    // Its first look starts it, before the first read of the file, so that
    // no change slips in between.
    static orv3::sim::FileWatch watch(path);
    if (watch.changed())
        simulated = readClockFile(path);
    if (!simulated)
        return false;
    current += step;
    now = current;
    return true;
}

} // namespace

extern "C" time_t time(time_t *out)
{
    long long simulatedSeconds;
    time_t now;
    if (simulatedNow(simulatedSeconds)) {
        now = static_cast<time_t>(simulatedSeconds);
    } else {
        struct timespec real {};
        clock_gettime(CLOCK_REALTIME, &real);
        now = real.tv_sec;
    }
    if (out)
        *out = now;
    return now;
}

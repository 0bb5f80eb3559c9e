// The clock the module sees. With ORV3_SIM_CLOCK naming a file that holds
// "<seconds>" or "<seconds> <step>", time() answers those seconds since the
// epoch, advanced by <step> on every later call, until the file changes.
// Without the variable, or with the file absent or empty, it is real time.
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
long long current = 0;
long long step = 0;

bool simulatedNow(long long &now)
{
    const char *path = getenv("ORV3_SIM_CLOCK");
    if (!path || !*path)
        return false;
    char content[64] = {};
    int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    ssize_t length = read(fd, content, sizeof content - 1);
    close(fd);
    if (length <= 0)
        return false;
    content[length] = '\0';

    std::lock_guard lock(clockMutex);
    if (strcmp(content, lastContent) != 0) {
        long long start = 0, newStep = 0;
        if (sscanf(content, "%lld %lld", &start, &newStep) < 1)
            return false;
        memcpy(lastContent, content, sizeof lastContent);
        current = start;
        step = newStep;
    } else {
        current += step;
    }
    now = current;
    return true;
}

} // namespace

extern "C" time_t time(time_t *out)
{
    long long simulated;
    time_t now;
    if (simulatedNow(simulated)) {
        now = static_cast<time_t>(simulated);
    } else {
        struct timespec real {};
        clock_gettime(CLOCK_REALTIME, &real);
        now = real.tv_sec;
    }
    if (out)
        *out = now;
    return now;
}

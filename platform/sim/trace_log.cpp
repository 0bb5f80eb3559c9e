// The simulated controller trace log: each log_tlog line is appended, as
// formatted and without its level, to the file named by ORV3_SIM_TRACE_LOG,
// or written to standard error behind "orv3-sim: tlog: " when the variable
// is unset or the file cannot be opened. It is not in the call log (its
// lines are a log of their own) and no fault applies to it: it returns
// nothing that could fail.
#include "orv3/trace_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// The whole line, however long: measured first, then formatted into a
// string of that size.
std::string formatLine(const char *format, va_list args)
{
    va_list measuring;
    va_copy(measuring, args);
    int length = vsnprintf(nullptr, 0, format, measuring);
    va_end(measuring);
    if (length <= 0)
        return "";
    std::string line(static_cast<size_t>(length), '\0');
    // Writes the terminator into the string's own one past the end.
    vsnprintf(line.data(), line.size() + 1, format, args);
    return line;
}

bool writeAll(int fd, const std::string &bytes)
{
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t written = write(fd, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        done += static_cast<size_t>(written);
    }
    return true;
}

// Opened for every line: the agent closes the descriptors it inherits as it
// starts, after the simulator is already loaded. One write per line keeps
// lines whole when a test reads the file.
bool appendToFile(const char *path, const std::string &line)
{
    int fd = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    bool whole = writeAll(fd, line);
    close(fd);
    return whole;
}

} // namespace

extern "C" {

void log_tlog(int32_t, const char *format, ...)
{
    if (!format)
        return;
    va_list args;
    va_start(args, format);
    std::string line = formatLine(format, args);
    va_end(args);
    if (line.empty())
        return;
    if (const char *path = getenv("ORV3_SIM_TRACE_LOG"); path && *path && appendToFile(path, line))
        return;
    // On standard error a line ends with a newline, so that it does not run
    // into the next message.
    std::string message = "orv3-sim: tlog: " + line;
    if (message.back() != '\n')
        message += '\n';
    writeAll(STDERR_FILENO, message);
}

} // extern "C"

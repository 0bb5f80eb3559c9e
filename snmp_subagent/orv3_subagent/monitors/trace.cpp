#include "trace.h"

#include <cstdarg>
#include <cstdio>

namespace orv3 {

void traceLine(const char *routine, const char *file, int line, const char *token, const char *format, ...)
{
    debugmsgtoken("trace", "%s(): %s, %d:\n", routine, file, line);
    debugmsg("trace", "%s(): %s, %d:\n", routine, file, line);

    // Messages are short lines; a longer one is cut rather than lost.
    char message[1024];
    va_list args;
    va_start(args, format);
    vsnprintf(message, sizeof message, format, args);
    va_end(args);
    debugmsgtoken(token, "%s", message);
    debugmsg(token, "%s", message);
}

} // namespace orv3

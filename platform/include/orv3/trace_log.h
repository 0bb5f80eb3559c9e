/* Controller trace log: a printf-style line writer into the controller's
 * persistent trace. Callers write at level 1 and end their texts with
 * "\r\n"; nothing is returned. */
#ifndef ORV3_TRACE_LOG_H
#define ORV3_TRACE_LOG_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

#if defined(__GNUC__)
#define ORV3_TRACE_LOG_PRINTF(f, a) __attribute__((format(printf, f, a)))
#else
#define ORV3_TRACE_LOG_PRINTF(f, a)
#endif

void log_tlog(int32_t level, const char *format, ...) ORV3_TRACE_LOG_PRINTF(2, 3);

ORV3_EXTERN_C_END

#endif

/* Common definitions of the controller platform interface.
 *
 * The platform services are closed libraries of the controller firmware. The
 * module resolves them from the agent process when it is loaded; here the
 * simulated platform (liborv3_platform_sim) provides them. Records that hold
 * pointers are laid out for the 32-bit controller there; on a 64-bit host
 * only their pointer members widen. Byte records without pointers are the
 * same everywhere and are checked exactly. */
#ifndef ORV3_PLATFORM_TYPES_H
#define ORV3_PLATFORM_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define ORV3_EXTERN_C_BEGIN extern "C" {
#define ORV3_EXTERN_C_END }
#define ORV3_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define ORV3_EXTERN_C_BEGIN
#define ORV3_EXTERN_C_END
#define ORV3_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#endif

/* Size of a record that holds `words` 32-bit words and `pointers` pointers:
 * all 32-bit on the controller, wider pointers on a 64-bit host. */
#define ORV3_RECORD_SIZE(words, pointers) ((words)*4 + (pointers) * sizeof(void *))

#endif

/* Persistent-memory texts: turn the security and health states of a
 * persistent-memory module (as the inventory database reports them) into
 * display texts. Each writes a NUL-terminated text of at most `size` bytes
 * into the caller's buffer; callers pass 128-byte buffers. */
#ifndef ORV3_PMEM_TEXT_H
#define ORV3_PMEM_TEXT_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

enum { PMEM_TEXT_SIZE = 128 };

void bps_format_security_str(uint32_t security_state, char *buffer, int32_t size);
void bps_format_hstate_str(uint8_t health_state, char *buffer, int32_t size);

ORV3_EXTERN_C_END

#endif

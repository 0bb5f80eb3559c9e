/* Feature query: whether the platform offers an optional function.
 * agentless_get_supported_status writes a one-byte flag (nonzero =
 * supported) and returns 0 when the status could be read. */
#ifndef ORV3_FEATURE_QUERY_H
#define ORV3_FEATURE_QUERY_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

enum {
    AGENTLESS_FEATURE_PCI_INVENTORY = 17, /* out-of-band PCI adapter inventory */
    AGENTLESS_FEATURE_RAID_LINK = 18,     /* RAID link library */
};

int32_t agentless_get_supported_status(uint8_t *supported, uint32_t feature);

ORV3_EXTERN_C_END

#endif

// The controller's texts for the security and health states of a
// persistent-memory module, as the inventory database reports them.
#include "orv3/pmem_text.h"

#include <cstdio>

namespace {

const char *securityText(uint32_t state)
{
    switch (state) {
    case 0: return "Disabled";
    case 1: return "Unlocked";
    case 2: return "Locked";
    case 3: return "Frozen";
    case 4: return "Exceeded";
    default: return "Unknown";
    }
}

const char *healthText(uint8_t state)
{
    switch (state) {
    case 0: return "Healthy";
    case 1: return "Noncritical";
    case 2: return "Critical";
    case 3: return "Fatal";
    default: return "Unknown";
    }
}

// Cut to the buffer and always terminated; a buffer without room gets nothing.
void writeBounded(const char *text, char *buffer, int32_t size)
{
    if (!buffer || size <= 0)
        return;
    snprintf(buffer, static_cast<size_t>(size), "%s", text);
}

} // namespace

extern "C" {

void bps_format_security_str(uint32_t security_state, char *buffer, int32_t size)
{
    writeBounded(securityText(security_state), buffer, size);
}

void bps_format_hstate_str(uint8_t health_state, char *buffer, int32_t size)
{
    writeBounded(healthText(health_state), buffer, size);
}

} // extern "C"

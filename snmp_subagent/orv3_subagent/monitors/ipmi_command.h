// doIpmiCmd: one IPMI command through the controller's IPMI channel, for
// other modules of the agent. The module itself sends none.
#pragma once

#include <cstdint>

extern "C" {

// `request` holds the network function, the command and the command data;
// `requestLength` counts all of them. `response` holds at least 16 bytes and
// `message` 512, into which the exchange or its failure is written as text.
// Returns 1 when the command completed with completion code 0, else 0.
int doIpmiCmd(uint8_t *request, int32_t requestLength, uint8_t *response, int32_t *responseLength, char *message);

} // extern "C"

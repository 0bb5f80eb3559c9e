/* IPMI channel: sends one IPMI command to the controller's own IPMI stack.
 * The caller owns both buffers; the response starts with the completion
 * code (0 = success). The call returns 0 when a response was received. */
#ifndef ORV3_IPMI_H
#define ORV3_IPMI_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

enum {
    IPMI_COMPLETION_CODE_OK = 0, /* response byte 0 */
};

/* `data` is the command data (without network function and command),
 * `data_length` its length in bytes (0 allowed). On return *response_length
 * holds the number of response bytes, completion code included. */
int32_t IPMI_DoIPMICmd(uint8_t netfn, uint8_t cmd, const uint8_t *data, int32_t data_length, uint8_t *response,
                       int32_t *response_length);

ORV3_EXTERN_C_END

#endif

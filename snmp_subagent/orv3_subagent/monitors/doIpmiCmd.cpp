// doIpmiCmd sends one command with up to five attempts and writes the
// exchange into the caller's message as "IPMI_DoIPMICmd(<request>)-><response>,
// rc=0", each byte as two hex digits and a blank, for the caller's log.
#include "ipmi_command.h"

#include "orv3/ipmi.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace {

constexpr int kAttempts = 5;
constexpr size_t kMessageSize = 512;
constexpr size_t kClearedResponseBytes = 16;
constexpr size_t kByteTextSize = 256;

// Appends "%02x " for each byte while the text has room: at most 255
// characters are kept, so the bytes read stop there too.
void renderBytes(char (&text)[kByteTextSize], const uint8_t *bytes, int32_t length)
{
    size_t used = 0;
    text[0] = '\0';
    for (int32_t i = 0; i < length && used + 1 < sizeof text; ++i) {
        int written = snprintf(text + used, sizeof text - used, "%02x ", bytes[i]);
        if (written < 0)
            break;
        used += static_cast<size_t>(written);
        if (used >= sizeof text)
            used = sizeof text - 1;
    }
}

// A message longer than the caller's 512 bytes is cut there.
__attribute__((format(printf, 2, 3))) void writeMessage(char *message, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(message, kMessageSize, format, arguments);
    va_end(arguments);
}

} // namespace

extern "C" int doIpmiCmd(uint8_t *request, int32_t requestLength, uint8_t *response, int32_t *responseLength,
                         char *message)
{
    if (!request || !response || !responseLength || !message)
        return 0;
    message[0] = '\0';
    *responseLength = 0;
    memset(response, 0, kClearedResponseBytes);

    const uint8_t netfn = request[0];
    const uint8_t command = request[1];
    int32_t rc = 0;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        rc = IPMI_DoIPMICmd(netfn, command, request + 2, requestLength - 2, response, responseLength);
        if (rc == 0)
            break;
        usleep(1);
    }
    if (rc != 0) {
        writeMessage(message, "IPMI_DoIPMICmd call failed for NetFun: %i Cmd:%i rc=%i\n", netfn, command, rc);
        return 0;
    }
    if (response[0] != IPMI_COMPLETION_CODE_OK) {
        writeMessage(message, "IPMI failed response=%i\n", response[0]);
        return 0;
    }
    char requestText[kByteTextSize];
    char responseText[kByteTextSize];
    renderBytes(requestText, request, requestLength);
    renderBytes(responseText, response, *responseLength);
    writeMessage(message, "IPMI_DoIPMICmd(%s)->%s, rc=%i\n", requestText, responseText, 0);
    return 1;
}

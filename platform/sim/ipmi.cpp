// The simulated IPMI channel: answers each command from the machine
// description's "ipmi" exchanges, matched on the whole request (network
// function, command and data), and logs every exchange as one line of the
// call log: "IPMI_DoIPMICmd 06 01 -> 00 20 01 ..." or "... -> rc 1".
#include "orv3/ipmi.h"
#include "platform.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

using orv3::sim::Platform;

namespace {

constexpr char kCall[] = "IPMI_DoIPMICmd";
constexpr int32_t kNoResponse = 1;
// Completion codes of the IPMI specification.
constexpr uint8_t kInvalidCommand = 0xc1;
constexpr uint8_t kInvalidDataLength = 0xc7;
// The largest command data an IPMI message carries.
constexpr int32_t kMaxDataLength = 255;

std::string hexText(const std::vector<uint8_t> &bytes)
{
    std::string text;
    char hex[4];
    for (uint8_t byte : bytes) {
        snprintf(hex, sizeof hex, "%02x", byte);
        if (!text.empty())
            text += ' ';
        text += hex;
    }
    return text;
}

} // namespace

extern "C" int32_t IPMI_DoIPMICmd(uint8_t netfn, uint8_t cmd, const uint8_t *data, int32_t data_length,
                                  uint8_t *response, int32_t *response_length)
{
    const bool dataUsable = data_length >= 0 && data_length <= kMaxDataLength && (data_length == 0 || data);
    std::vector<uint8_t> request = {netfn, cmd};
    if (dataUsable && data_length > 0)
        request.insert(request.end(), data, data + data_length);
    std::string requestText = hexText(request);
    if (!dataUsable)
        requestText += " (data length " + std::to_string(data_length) + ")";

    Platform &platform = Platform::instance();
    auto answer = [&](int32_t result, const std::vector<uint8_t> &reply) {
        if (result == 0 && (!response || !response_length))
            result = kNoResponse;
        if (result != 0) {
            platform.logCall(kCall, requestText + " -> rc " + std::to_string(result));
            return result;
        }
        memcpy(response, reply.data(), reply.size());
        *response_length = static_cast<int32_t>(reply.size());
        orv3::sim::fillWritten(response, reply.size());
        orv3::sim::fillWritten(response_length);
        platform.logCall(kCall, requestText + " -> " + hexText(reply));
        return 0;
    };

    if (auto fault = platform.enter(kCall, requestText, Platform::CallLog::ByService))
        return answer(fault->result, {});
    if (!dataUsable)
        return answer(0, {kInvalidDataLength});
    auto machine = platform.machine();
    for (const orv3::sim::IpmiExchange &exchange : machine->ipmi)
        if (exchange.request == request)
            return answer(0, exchange.response);
    return answer(0, {kInvalidCommand});
}

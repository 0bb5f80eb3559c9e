// What the machine-file readers share: the line of every value by its JSON
// pointer, and the checks that report a value with its line.
#pragma once

#include "machine.h"

#include <nlohmann/json.hpp>

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace orv3::sim {

using nlohmann::json;

// Where each value of a description starts, by JSON pointer, so that a
// value of the wrong kind can be reported with its line.
class LineMap {
public:
    void record(const std::string &pointer, int line) { lines_.emplace(pointer, line); }
    int lineOf(std::string pointer) const
    {
        for (;;) {
            auto found = lines_.find(pointer);
            if (found != lines_.end())
                return found->second;
            auto slash = pointer.rfind('/');
            if (slash == std::string::npos)
                return 0;
            pointer.resize(slash);
        }
    }

private:
    std::map<std::string, int> lines_;
};

inline std::string escapeToken(const std::string &token)
{
    std::string escaped;
    for (char c : token) {
        if (c == '~')
            escaped += "~0";
        else if (c == '/')
            escaped += "~1";
        else
            escaped += c;
    }
    return escaped;
}

class Checker {
public:
    Checker(const std::string &file, const LineMap &lines) : file_(file), lines_(lines) {}

    [[noreturn]] void fail(const std::string &pointer, const std::string &reason) const
    {
        failAt(pointer, pointer, reason);
    }
    // Names `pointer` in the reason but reports the line of `linePointer`
    // (a field inside it), for values whose fields are told by name.
    [[noreturn]] void failAt(const std::string &linePointer, const std::string &pointer,
                             const std::string &reason) const
    {
        throw MachineFileError(file_, lines_.lineOf(linePointer), (pointer.empty() ? "" : pointer + ": ") + reason);
    }
    void expect(bool ok, const std::string &pointer, const std::string &reason) const
    {
        if (!ok)
            fail(pointer, reason);
    }
    int32_t int32(const json &value, const std::string &pointer) const
    {
        expect(value.is_number_integer(), pointer, "must be an integer");
        expect(fitsInt32(value), pointer, "does not fit in 32 bits");
        return static_cast<int32_t>(value.get<int64_t>());
    }

private:
    const std::string &file_;
    const LineMap &lines_;
};

// An unsigned integer of a record field `max` wide (255, 65535 or
// 4294967295).
inline uint64_t unsignedUpTo(const json &value, const std::string &pointer, uint64_t max, const Checker &check)
{
    check.expect(value.is_number_integer(), pointer, "must be an integer");
    check.expect(value.is_number_unsigned() && value.get<uint64_t>() <= max, pointer,
                 "must be between 0 and " + std::to_string(max));
    return value.get<uint64_t>();
}

inline uint8_t byteField(const json &value, const std::string &pointer, const Checker &check)
{
    return static_cast<uint8_t>(unsignedUpTo(value, pointer, UINT8_MAX, check));
}

inline uint16_t halfwordField(const json &value, const std::string &pointer, const Checker &check)
{
    return static_cast<uint16_t>(unsignedUpTo(value, pointer, UINT16_MAX, check));
}

inline uint32_t wordField(const json &value, const std::string &pointer, const Checker &check)
{
    return static_cast<uint32_t>(unsignedUpTo(value, pointer, UINT32_MAX, check));
}

// "06 01 2a": bytes as hexadecimal numbers of one or two digits, separated by blanks.
inline std::vector<uint8_t> hexBytes(const json &value, const std::string &pointer, const Checker &check)
{
    check.expect(value.is_string(), pointer, "must be a text of hexadecimal bytes separated by blanks (\"06 01\")");
    std::vector<uint8_t> bytes;
    std::istringstream words(value.get<std::string>());
    std::string word;
    while (words >> word) {
        check.expect(word.size() <= 2 && word.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos, pointer,
                     "\"" + word + "\" is not a hexadecimal byte (\"00\" to \"ff\")");
        bytes.push_back(static_cast<uint8_t>(std::stoul(word, nullptr, 16)));
    }
    return bytes;
}

// The "features" section: flags by feature number in decimal.
std::map<uint32_t, uint8_t> readFeatures(const json &section, const std::string &pointer, const Checker &check);

// The "raid" section: the RAID link library's controllers, drives, pools
// and volumes, each packed into the records the library hands out.
RaidInventory readRaid(const json &section, const std::string &pointer, const Checker &check);

} // namespace orv3::sim

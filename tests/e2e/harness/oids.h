// OID constants and small string helpers for the end-to-end tests.
//
// OIDs are handled as numeric dotted strings without a leading dot
// ("1.3.6.1.2.1.1.3.0"); helpers accept an optional leading dot on input.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orv3::test {

// Root of the subtree served by the monitors module.
inline constexpr const char *kMonitorsRoot = "1.3.6.1.4.1.53917.11.1.1";

// A few well-known objects of the stock agent (SNMPv2-MIB system group).
inline constexpr const char *kSystemGroup = "1.3.6.1.2.1.1";
inline constexpr const char *kSysDescr = "1.3.6.1.2.1.1.1.0";
inline constexpr const char *kSysObjectID = "1.3.6.1.2.1.1.2.0";
inline constexpr const char *kSysUpTime = "1.3.6.1.2.1.1.3.0";
inline constexpr const char *kSysContact = "1.3.6.1.2.1.1.4.0";
inline constexpr const char *kSysName = "1.3.6.1.2.1.1.5.0";

// Removes one leading dot, if any.
inline std::string oidNormalize(std::string_view oid)
{
    if (!oid.empty() && oid.front() == '.')
        oid.remove_prefix(1);
    return std::string(oid);
}

// Parses a numeric dotted OID (leading dot allowed) into its sub-identifiers.
// Throws std::invalid_argument on anything that is not a dotted number list.
inline std::vector<unsigned long> oidParse(std::string_view text)
{
    std::string s = oidNormalize(text);
    std::vector<unsigned long> out;
    if (s.empty())
        return out;
    std::size_t pos = 0;
    while (true) {
        std::size_t end = s.find('.', pos);
        std::string_view part =
            std::string_view(s).substr(pos, end == std::string::npos ? std::string::npos : end - pos);
        if (part.empty() || part.size() > 10 ||
            !std::all_of(part.begin(), part.end(), [](char c) { return c >= '0' && c <= '9'; })) {
            throw std::invalid_argument("not a numeric OID: '" + std::string(text) + "'");
        }
        unsigned long v = std::stoul(std::string(part));
        if (v > 0xffffffffUL)
            throw std::invalid_argument("OID sub-identifier out of range: '" + std::string(text) + "'");
        out.push_back(v);
        if (end == std::string::npos)
            break;
        pos = end + 1;
    }
    return out;
}

// One piece of an OID to append: an integer sub-identifier or a dotted suffix.
// Implicit constructors let `oidJoin(base, {1, i, "3.4"})` mix both, and accept
// any integer type without narrowing errors.
struct OidPart {
    std::string text;
    template <std::integral T> OidPart(T v) : text(std::to_string(v)) {} // NOLINT(google-explicit-constructor)
    OidPart(std::string_view s) : text(oidNormalize(s)) {}               // NOLINT(google-explicit-constructor)
    OidPart(const char *s) : text(oidNormalize(s)) {}                    // NOLINT(google-explicit-constructor)
    OidPart(const std::string &s) : text(oidNormalize(s)) {}             // NOLINT(google-explicit-constructor)
};

// oidJoin("1.3.6", {1, 2, 3}) == "1.3.6.1.2.3"; empty parts are skipped.
inline std::string oidJoin(std::string_view base, std::initializer_list<OidPart> parts)
{
    std::string out = oidNormalize(base);
    for (const OidPart &p : parts) {
        if (p.text.empty())
            continue;
        if (!out.empty())
            out += '.';
        out += p.text;
    }
    return out;
}

inline std::string oidJoin(std::string_view base, const std::vector<unsigned long> &parts)
{
    std::string out = oidNormalize(base);
    for (unsigned long p : parts) {
        if (!out.empty())
            out += '.';
        out += std::to_string(p);
    }
    return out;
}

// Numeric (not textual) ordering of two OIDs: <0, 0 or >0.
inline int oidCompare(std::string_view a, std::string_view b)
{
    std::vector<unsigned long> x = oidParse(a), y = oidParse(b);
    std::size_t n = std::min(x.size(), y.size());
    for (std::size_t i = 0; i < n; ++i) {
        if (x[i] != y[i])
            return x[i] < y[i] ? -1 : 1;
    }
    if (x.size() == y.size())
        return 0;
    return x.size() < y.size() ? -1 : 1;
}

// True when `oid` equals `root` or lies below it (whole sub-identifiers only:
// "1.3.61" is not under "1.3.6").
inline bool oidStartsWith(std::string_view oid, std::string_view root)
{
    std::string o = oidNormalize(oid), r = oidNormalize(root);
    if (r.empty())
        return true;
    if (o.size() < r.size() || o.compare(0, r.size(), r) != 0)
        return false;
    return o.size() == r.size() || o[r.size()] == '.';
}

// The part of `oid` after `root` ("" when equal); throws if `oid` is not under `root`.
inline std::string oidSuffix(std::string_view oid, std::string_view root)
{
    if (!oidStartsWith(oid, root)) {
        throw std::invalid_argument("OID " + std::string(oid) + " is not under " + std::string(root));
    }
    std::string o = oidNormalize(oid), r = oidNormalize(root);
    if (r.empty())
        return o;
    return o.size() == r.size() ? std::string() : o.substr(r.size() + 1);
}

// Index encoding of an OCTET STRING table index: "<len>.<b1>.<b2>..." or, for an
// IMPLIED index, just "<b1>.<b2>...".
inline std::string oidStringIndex(std::string_view s, bool implied = false)
{
    std::string out;
    if (!implied)
        out = std::to_string(s.size());
    for (unsigned char c : s) {
        if (!out.empty())
            out += '.';
        out += std::to_string(static_cast<unsigned>(c));
    }
    return out;
}

} // namespace orv3::test

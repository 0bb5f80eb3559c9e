// The fixed byte records of a machine description: the RAID link library's
// and the inventory database's records are described field by field, and a
// table of fields per record says where each goes and how wide it is, so
// that the reader packs each record once, as the library will hand it out.
//
// The libraries differ in what a text longer than its field means, so the
// caller says which (Overflow). A text of exactly the field's width fills it
// without a terminator either way, as a full field on the controller does;
// a shorter one is NUL-padded.
#pragma once

#include "machine_checks.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

namespace orv3::sim {

enum class PackedKind { Text, Unsigned, Signed };

struct PackedField {
    const char *name;
    size_t offset;
    PackedKind kind;
    size_t width; // bytes
};

#define ORV3_PACK_TEXT(name, T, member)                                                                                \
    PackedField                                                                                                        \
    {                                                                                                                  \
        name, offsetof(T, member), PackedKind::Text, sizeof(T::member)                                                 \
    }
#define ORV3_PACK_UNSIGNED(name, T, member)                                                                            \
    PackedField                                                                                                        \
    {                                                                                                                  \
        name, offsetof(T, member), PackedKind::Unsigned, sizeof(T::member)                                             \
    }
#define ORV3_PACK_SIGNED(name, T, member)                                                                              \
    PackedField                                                                                                        \
    {                                                                                                                  \
        name, offsetof(T, member), PackedKind::Signed, sizeof(T::member)                                               \
    }

// A text longer than its field: cut to the field, or refused as a mistake
// in the description (reported with its line).
enum class Overflow { Cut, Refuse };

inline void putLittleEndian(uint8_t *record, size_t offset, uint64_t value, size_t width)
{
    for (size_t i = 0; i < width; ++i)
        record[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

inline void packField(const PackedField &field, const json &value, const std::string &pointer, const Checker &check,
                      Overflow overflow, uint8_t *record)
{
    switch (field.kind) {
    case PackedKind::Text: {
        check.expect(value.is_string(), pointer, "must be a text");
        const std::string &text = value.get_ref<const std::string &>();
        if (overflow == Overflow::Refuse)
            check.expect(text.size() <= field.width, pointer,
                         "is " + std::to_string(text.size()) + " characters long; the field holds at most " +
                             std::to_string(field.width) + " (a text of " + std::to_string(field.width) +
                             " fills it without a terminating NUL)");
        memset(record + field.offset, 0, field.width);
        memcpy(record + field.offset, text.data(), std::min(text.size(), field.width));
        return;
    }
    case PackedKind::Unsigned: {
        const uint64_t max = field.width == 8 ? UINT64_MAX : (uint64_t{1} << (8 * field.width)) - 1;
        putLittleEndian(record, field.offset, unsignedUpTo(value, pointer, max, check), field.width);
        return;
    }
    case PackedKind::Signed: {
        const int64_t max = (int64_t{1} << (8 * field.width - 1)) - 1;
        check.expect(value.is_number_integer(), pointer, "must be an integer");
        const bool fits = value.is_number_unsigned() ? value.get<uint64_t>() <= static_cast<uint64_t>(max)
                                                     : value.get<int64_t>() >= -max - 1 && value.get<int64_t>() <= max;
        check.expect(fits, pointer, "must be between " + std::to_string(-max - 1) + " and " + std::to_string(max));
        putLittleEndian(record, field.offset, static_cast<uint64_t>(value.get<int64_t>()), field.width);
        return;
    }
    }
}

// Packs the fields of `entry` that `fields` names into `record`; names in
// `own` are the caller's to read, names starting with "_" are comments, and
// any other name is an error that lists the known ones, the caller's last.
inline void packObject(const json &entry, const std::string &pointer, const Checker &check,
                       std::span<const PackedField> fields, const std::vector<const char *> &own, const char *what,
                       Overflow overflow, uint8_t *record)
{
    check.expect(entry.is_object(), pointer, std::string("a ") + what + " must be an object");
    for (const auto &[name, value] : entry.items()) {
        bool taken = name.rfind("_", 0) == 0;
        for (const char *ownName : own)
            taken = taken || name == ownName;
        if (taken)
            continue;
        const PackedField *known = nullptr;
        for (const PackedField &candidate : fields)
            if (name == candidate.name)
                known = &candidate;
        const std::string at = pointer + "/" + escapeToken(name);
        if (!known) {
            std::string names;
            for (const PackedField &field : fields)
                names += (names.empty() ? "" : ", ") + std::string(field.name);
            for (const char *ownName : own)
                names += (names.empty() ? "" : ", ") + std::string(ownName);
            check.fail(at, std::string("unknown ") + what + " field (known: " + names + ")");
        }
        packField(*known, value, at, check, overflow, record);
    }
}

// The same into a record of the library's own type.
template <class Record>
void packObject(const json &entry, const std::string &pointer, const Checker &check,
                std::span<const PackedField> fields, const std::vector<const char *> &own, const char *what,
                Overflow overflow, Record &record)
{
    static_assert(std::is_trivially_copyable_v<Record> && std::is_standard_layout_v<Record>,
                  "a record the library hands out as bytes");
    packObject(entry, pointer, check, fields, own, what, overflow, reinterpret_cast<uint8_t *>(&record));
}

} // namespace orv3::sim

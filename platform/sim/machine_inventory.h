// The inventory database's sections of a machine description ("adapters"
// and "persistentMemory"). Every object is described field by field; a table
// of fields per record says where each goes and how wide it is, and the
// reader packs the record once, as the database will hand it out.
//
// Unlike the RAID link library's records, a text longer than its field is
// an error here: the database's texts are written by the controller within
// their fields, so an overlong one is a mistake in the description, not a
// state to simulate. A text of exactly the field's width still fills it
// without a terminator, as a full field on the controller does.
#pragma once

#include "machine_checks.h"

#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <span>
#include <string>

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

inline void packField(const PackedField &field, const json &value, const std::string &pointer, const Checker &check,
                      uint8_t *record)
{
    switch (field.kind) {
    case PackedKind::Text: {
        check.expect(value.is_string(), pointer, "must be a text");
        const std::string &text = value.get_ref<const std::string &>();
        check.expect(text.size() <= field.width, pointer,
                     "is " + std::to_string(text.size()) + " characters long; the field holds at most " +
                         std::to_string(field.width) + " (a text of " + std::to_string(field.width) +
                         " fills it without a terminating NUL)");
        memset(record + field.offset, 0, field.width);
        memcpy(record + field.offset, text.data(), text.size());
        return;
    }
    case PackedKind::Unsigned: {
        const uint64_t max = field.width == 8 ? UINT64_MAX : (uint64_t{1} << (8 * field.width)) - 1;
        const uint64_t number = unsignedUpTo(value, pointer, max, check);
        for (size_t i = 0; i < field.width; ++i)
            record[field.offset + i] = static_cast<uint8_t>(number >> (8 * i));
        return;
    }
    case PackedKind::Signed: {
        const int64_t max = (int64_t{1} << (8 * field.width - 1)) - 1;
        check.expect(value.is_number_integer(), pointer, "must be an integer");
        const bool fits = value.is_number_unsigned() ? value.get<uint64_t>() <= static_cast<uint64_t>(max)
                                                     : value.get<int64_t>() >= -max - 1 && value.get<int64_t>() <= max;
        check.expect(fits, pointer, "must be between " + std::to_string(-max - 1) + " and " + std::to_string(max));
        const auto number = static_cast<uint64_t>(value.get<int64_t>());
        for (size_t i = 0; i < field.width; ++i)
            record[field.offset + i] = static_cast<uint8_t>(number >> (8 * i));
        return;
    }
    }
}

// Packs the fields of `entry` that `fields` names into `record`; names in
// `own` are the caller's to read, names starting with "_" are comments, and
// any other name is an error that lists the known ones.
template <class Record>
void packObject(const json &entry, const std::string &pointer, const Checker &check,
                std::span<const PackedField> fields, std::initializer_list<const char *> own, const char *what,
                Record &record)
{
    check.expect(entry.is_object(), pointer, std::string("a ") + what + " must be an object");
    auto *bytes = reinterpret_cast<uint8_t *>(&record);
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
        packField(*known, value, at, check, bytes);
    }
}

// A list of described objects: each entry read by `read` with its pointer.
template <class Item, class Reader>
std::vector<Item> readArray(const json &value, const std::string &pointer, const Checker &check, const char *what,
                            Reader read)
{
    check.expect(value.is_array(), pointer, std::string("must be an array of ") + what);
    std::vector<Item> items;
    size_t i = 0;
    for (const json &entry : value)
        items.push_back(read(entry, pointer + "/" + std::to_string(i++)));
    return items;
}

// The "adapters" section: the PCI adapters with their functions.
PciInventory readAdapters(const json &section, const std::string &pointer, const Checker &check);

// The "persistentMemory" section: the persistent-memory modules in id-list order.
std::vector<PersistentMemoryModule> readPersistentMemory(const json &section, const std::string &pointer,
                                                         const Checker &check);

} // namespace orv3::sim

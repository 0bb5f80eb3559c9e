// The inventory database's sections of a machine description ("adapters"
// and "persistentMemory"), each object packed into the record the database
// hands out (see machine_records.h).
#pragma once

#include "machine_records.h"

#include <string>
#include <vector>

namespace orv3::sim {

// The database's texts are written by the controller within their fields,
// so an overlong one is a mistake in the description, not a state to
// simulate.
constexpr Overflow kInventoryTexts = Overflow::Refuse;

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

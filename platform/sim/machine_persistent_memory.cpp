// The "persistentMemory" section of a machine description: the inventory
// database's persistent-memory modules, one 656-byte record each, listed by
// orvdb_get_AEP_memory_list in the section's order.
#include "machine_inventory.h"

#include <set>

namespace orv3::sim {

namespace {

using Memory = inventory_db_memory_t;
const PackedField kMemoryFields[] = {
    ORV3_PACK_UNSIGNED("speed1", Memory, speed1),
    ORV3_PACK_UNSIGNED("speed2", Memory, speed2),
    ORV3_PACK_TEXT("text1", Memory, text1),
    ORV3_PACK_TEXT("text2", Memory, text2),
    ORV3_PACK_TEXT("text3", Memory, text3),
    ORV3_PACK_TEXT("text4", Memory, text4),
    ORV3_PACK_TEXT("text5", Memory, text5),
    ORV3_PACK_TEXT("text6", Memory, text6),
    ORV3_PACK_TEXT("text7", Memory, text7),
    ORV3_PACK_UNSIGNED("capacity1", Memory, capacity1),
    ORV3_PACK_UNSIGNED("capacity2", Memory, capacity2),
    ORV3_PACK_UNSIGNED("capacity3", Memory, capacity3),
    ORV3_PACK_UNSIGNED("capacity4", Memory, capacity4),
    ORV3_PACK_UNSIGNED("capacity5", Memory, capacity5),
    ORV3_PACK_UNSIGNED("capacity6", Memory, capacity6),
    ORV3_PACK_UNSIGNED("count", Memory, count),
    ORV3_PACK_SIGNED("percentage", Memory, percentage),
    ORV3_PACK_UNSIGNED("securityState", Memory, security_state),
    ORV3_PACK_UNSIGNED("healthState", Memory, health_state),
    ORV3_PACK_UNSIGNED("extraKind", Memory, extra_kind),
};

} // namespace

std::vector<PersistentMemoryModule> readPersistentMemory(const json &section, const std::string &pointer,
                                                         const Checker &check)
{
    // A module is asked for by its id, so an id names one module.
    std::set<uint32_t> seen;
    return readArray<PersistentMemoryModule>(
        section, pointer, check, "persistent-memory modules", [&](const json &entry, const std::string &at) {
            PersistentMemoryModule module;
            packObject(entry, at, check, kMemoryFields, {"id"}, "persistent-memory module", kInventoryTexts,
                       module.record);
            if (entry.contains("id"))
                module.id = wordField(entry["id"], at + "/id", check);
            check.expect(seen.insert(module.id).second, entry.contains("id") ? at + "/id" : at,
                         "another module has the id " + std::to_string(module.id));
            return module;
        });
}

} // namespace orv3::sim

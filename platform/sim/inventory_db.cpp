// The simulated inventory database: PCI adapters and their functions from the
// machine description's "adapters" section, persistent-memory modules from
// its "persistentMemory" section. A query for a known key copies the record
// packed when the description was read and returns ORV_DB_STATUS_SUCCESS; an
// unknown key, a missing output or a fault (keyed by the adapter, function
// or module key in decimal) writes nothing and fails.
//
// Lists are handed out as the database hands them out: PCI, firmware, port
// and chip arrays are malloc'ed blocks the caller frees, while the
// persistent-memory id array stays the database's and is never freed by its
// caller (see memoryIds below).
#include "orv3/inventory_db.h"
#include "lookup_calls.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

using orv3::sim::answerLookup;
using orv3::sim::Entered;
using orv3::sim::Machine;
using orv3::sim::PciFunction;

namespace {

constexpr int32_t kFail = ORV_DB_STATUS_FAIL;
constexpr int32_t kSuccess = ORV_DB_STATUS_SUCCESS;
constexpr orv3::sim::LookupResults kResults = {kFail, kSuccess};

const PciFunction *findFunction(const Machine &machine, uint32_t funcKey)
{
    for (const auto &adapter : machine.pci.adapters)
        for (const auto &function : adapter.functions)
            if (function.key == funcKey)
                return &function;
    return nullptr;
}

// A copy of `items` in a block the caller frees; no block for no items.
// False when the block cannot be had.
template <class Item> bool handOut(const std::vector<Item> &items, uint32_t &count, Item *&array)
{
    Item *block = nullptr;
    if (!items.empty()) {
        block = static_cast<Item *>(malloc(items.size() * sizeof(Item)));
        if (!block)
            return false;
        memcpy(block, items.data(), items.size() * sizeof(Item));
        orv3::sim::fillWritten(block, items.size() * sizeof(Item));
    }
    count = static_cast<uint32_t>(items.size());
    array = block;
    return true;
}

// A query of function `funcKey`, keyed by it; `write` answers from the
// function. A null output is looked at only after the call is entered, as
// the fault and the log line come first.
template <class Output, class Write>
int32_t answerFunction(const char *call, uint32_t funcKey, Output *out, Write write)
{
    return answerLookup(
        call, std::to_string(funcKey), kResults,
        [&](const Machine &machine) { return out ? findFunction(machine, funcKey) : nullptr; }, write);
}

// The function's record that `part` picks, copied into `out`.
template <class Record, class Part>
int32_t copyFunctionRecord(const char *call, uint32_t funcKey, Record *out, Part part)
{
    return answerFunction(call, funcKey, out, [&](const PciFunction &function) {
        memcpy(out, &(function.*part), sizeof(Record));
        orv3::sim::fillWritten(out);
    });
}

// The function's list that `part` picks, handed out into `list`.
template <class List, class Item, class Part>
int32_t handOutFunctionList(const char *call, uint32_t funcKey, List *list, Item *List::*array, Part part)
{
    return answerFunction(call, funcKey, list, [&](const PciFunction &function) {
        uint32_t count = 0;
        Item *items = nullptr;
        if (!handOut(function.*part, count, items))
            return false;
        list->count = count;
        list->*array = items;
        return true;
    });
}

// The persistent-memory id array stays the database's: its callers never
// free it. It lives here for the life of the process, reachable so that a
// leak checker sees it kept, and is rewritten in place by the next call.
struct MemoryIds {
    std::mutex mutex;
    std::vector<uint32_t> ids;
};

MemoryIds &memoryIds()
{
    static MemoryIds *kept = new MemoryIds;
    return *kept;
}

} // namespace

extern "C" {

int32_t orvdb_get_AEP_memory_list(inventory_db_id_list_t *list)
{
    Entered entered = orv3::sim::enter(__func__, "");
    if (entered.fault)
        return entered.fault->result;
    if (!list)
        return kFail;
    MemoryIds &kept = memoryIds();
    std::lock_guard lock(kept.mutex);
    kept.ids.clear();
    for (const auto &module : entered.machine->persistentMemory)
        kept.ids.push_back(module.id);
    list->count = static_cast<uint32_t>(kept.ids.size());
    list->ids = kept.ids.empty() ? nullptr : kept.ids.data();
    orv3::sim::fillWritten(kept.ids.data(), kept.ids.size() * sizeof(uint32_t));
    return kSuccess;
}

int32_t orvdb_get_memory_by_id(inventory_db_memory_t *memory, uint32_t id)
{
    return answerLookup(
        __func__, std::to_string(id), kResults,
        [&](const Machine &machine) -> const orv3::sim::PersistentMemoryModule * {
            if (!memory)
                return nullptr;
            for (const auto &module : machine.persistentMemory)
                if (module.id == id)
                    return &module;
            return nullptr;
        },
        [&](const orv3::sim::PersistentMemoryModule &module) {
            memcpy(memory, &module.record, sizeof *memory);
            orv3::sim::fillWritten(memory);
        });
}

int32_t orvdb_get_pci_adapter_list(uint32_t *count, inventory_db_adapter_t **adapters)
{
    Entered entered = orv3::sim::enter(__func__, "");
    if (entered.fault)
        return entered.fault->result;
    if (!count || !adapters)
        return kFail;
    std::vector<inventory_db_adapter_t> records;
    for (const auto &adapter : entered.machine->pci.adapters)
        records.push_back(adapter.record);
    return handOut(records, *count, *adapters) ? kSuccess : kFail;
}

int32_t orvdb_get_pci_funkey_list(uint32_t adapterKey, inventory_db_id_list_t *funcKeys)
{
    return answerLookup(
        __func__, std::to_string(adapterKey), kResults,
        [&](const Machine &machine) -> const orv3::sim::PciAdapter * {
            if (!funcKeys)
                return nullptr;
            for (const auto &adapter : machine.pci.adapters)
                if (adapter.record.adapterKey == adapterKey)
                    return &adapter;
            return nullptr;
        },
        [&](const orv3::sim::PciAdapter &adapter) {
            std::vector<uint32_t> keys;
            for (const auto &function : adapter.functions)
                keys.push_back(function.key);
            uint32_t count = 0;
            uint32_t *ids = nullptr;
            if (!handOut(keys, count, ids))
                return false;
            funcKeys->count = count;
            funcKeys->ids = ids;
            return true;
        });
}

int32_t orvdb_get_pci_function_type(uint32_t funcKey, uint32_t *type)
{
    return copyFunctionRecord(__func__, funcKey, type, &PciFunction::type);
}

int32_t orvdb_get_pci_generic_info(uint32_t funcKey, inventory_db_pci_info_t *pciInfo)
{
    return copyFunctionRecord(__func__, funcKey, pciInfo, &PciFunction::pci);
}

int32_t orvdb_get_pci_vpd_info(uint32_t funcKey, inventory_db_pci_vpd_t *vpdInfo)
{
    return copyFunctionRecord(__func__, funcKey, vpdInfo, &PciFunction::vpd);
}

int32_t orvdb_get_pci_misc_info(uint32_t funcKey, inventory_db_pci_misc_t *miscInfo)
{
    return copyFunctionRecord(__func__, funcKey, miscInfo, &PciFunction::misc);
}

int32_t orvdb_get_pci_firmware_list(uint32_t funcKey, inventory_db_firmware_list_t *list)
{
    return handOutFunctionList(__func__, funcKey, list, &inventory_db_firmware_list_t::firmware,
                               &PciFunction::firmware);
}

int32_t orvdb_get_network_info(uint32_t funcKey, inventory_db_network_info_t *info)
{
    return copyFunctionRecord(__func__, funcKey, info, &PciFunction::network);
}

int32_t orvdb_get_network_physical_port_list(uint32_t funcKey, inventory_db_physical_port_list_t *list)
{
    return answerFunction(__func__, funcKey, list, [&](const PciFunction &function) {
        std::vector<inventory_db_physical_port_t> records;
        for (const auto &port : function.physicalPorts)
            records.push_back(port.record);
        return handOut(records, list->count, list->ports);
    });
}

// Physical port `phyPortNo` is the function's physical port at that 1-based
// position; the fault key names both, "funcKey/phyPortNo".
int32_t orvdb_get_network_logical_port_list2(uint32_t funcKey, uint32_t phyPortNo,
                                             inventory_db_logical_port_list_t *list)
{
    return answerLookup(
        __func__, std::to_string(funcKey) + "/" + std::to_string(phyPortNo), kResults,
        [&](const Machine &machine) -> const orv3::sim::NetworkPhysicalPort * {
            const PciFunction *function = list ? findFunction(machine, funcKey) : nullptr;
            if (!function || phyPortNo == 0 || phyPortNo > function->physicalPorts.size())
                return nullptr;
            return &function->physicalPorts[phyPortNo - 1];
        },
        [&](const orv3::sim::NetworkPhysicalPort &port) {
            return handOut(port.logicalPorts, list->count, list->ports);
        });
}

int32_t orvdb_get_gpu_device_info(uint32_t funcKey, inventory_db_gpu_device_t *info)
{
    return copyFunctionRecord(__func__, funcKey, info, &PciFunction::gpu);
}

int32_t orvdb_get_gpu_chip_list(uint32_t funcKey, inventory_db_gpu_chip_list_t *list)
{
    return handOutFunctionList(__func__, funcKey, list, &inventory_db_gpu_chip_list_t::chips, &PciFunction::chips);
}

} // extern "C"

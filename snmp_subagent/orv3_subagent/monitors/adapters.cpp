// The adapters group (.14): registration of the seven adapter tables, the
// PCI-support gate, and the function lists and names they are built from.
//
// The inventory database lists adapters; each adapter lists its PCI
// functions by key, and each function has a type code. A table shows one
// class of functions (network, GPU, storage), selected by a mask over the
// type codes, so every class list is built the same way from the whole
// inventory, ordered by adapter and within an adapter by the database's
// key order.
#include "adapter_tables.h"

#include "orv3/feature_query.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

// The type texts by code; codes past the end read "Other".
const char *const kFuncTypeTexts[] = {
    "RAID", "Ethernet", "Fibre Channel", "InfiniBand", "GPU", "SCSI", "SAS", "Other", "Mass Storage", "Network",
};

// The functions of one adapter that `mask` keeps, with their names.
struct AdapterFunctions {
    std::unique_ptr<inventory_db_func_key_t[]> records;
    uint32_t count = 0;
};

} // namespace

extern "C" {

const adapter_table_registration_t adapter_tables[] = {
    ORV3_TABLE_REGISTRATION_RECORD(adapterGenericTable),
    ORV3_TABLE_REGISTRATION_RECORD(adapterNetworkFunctionTable),
    ORV3_TABLE_REGISTRATION_RECORD(adapterNetworkPortTable),
    ORV3_TABLE_REGISTRATION_RECORD(adapterGPUFunctionTable),
    ORV3_TABLE_REGISTRATION_RECORD(adapterGPUChipTable),
    ORV3_TABLE_REGISTRATION_RECORD(adapterRAIDFunctionTable),
    ORV3_TABLE_REGISTRATION_RECORD(adapterFirmwareTable),
    {},
};

int init_adapters(void)
{
    DEBUGMSGTL(("adapters:init", "initializing tables\n"));
    for (const adapter_table_registration_t *table = adapter_tables; table->table_oid; ++table) {
        orv3::registerIterator(table->name, table->table_oid, table->oid_len, table->max_column, table->handler,
                               table->get_first_data_point, table->get_next_data_point);
    }
    return 0;
}

uint32_t check_support_pci(uint32_t *supported)
{
    if (!supported) {
        ORV3_ADAPTERS_TRACE("bSupPCI is null.\n");
        return ADAPTERS_FAILED;
    }
    uint8_t flag = 0;
    if (agentless_get_supported_status(&flag, AGENTLESS_FEATURE_PCI_INVENTORY) != 0) {
        ORV3_ADAPTERS_TRACE("cannot get supported status.\n");
        return ADAPTERS_FAILED;
    }
    *supported = flag != 0 ? 1 : 0;
    return ADAPTERS_OK;
}

uint32_t strtrim(char *dst, const char *src)
{
    if (!dst || !src) {
        ORV3_ADAPTERS_TRACE("dest or src is null.\n");
        return ADAPTERS_PARTIAL;
    }
    const size_t length = strlen(src);
    orv3::trimInto(dst, length + 1, src, length + 1);
    return ADAPTERS_OK;
}

uint32_t get_pci_AdapterName_byAdapterInfo(const inventory_db_adapter_t *adapter, char *name)
{
    if (!adapter || !name) {
        ORV3_ADAPTERS_TRACE("adpGenInfo or adapterName is null.\n");
        return ADAPTERS_PARTIAL;
    }
    // A product name may fill its field to the last byte: the work buffer
    // takes what fits, trimmed.
    char product[128] = {};
    orv3::trimInto(product, adapter->adapterProdName);
    switch (adapter->location) {
    case INVENTORY_DB_LOCATION_ON_BOARD:
        snprintf(name, ADAPTERS_ADAPTER_NAME_SIZE, "%s #%u", product, static_cast<unsigned>(adapter->slotNo));
        return ADAPTERS_OK;
    case INVENTORY_DB_LOCATION_ADD_ON:
        snprintf(name, ADAPTERS_ADAPTER_NAME_SIZE, "%s (PCI Slot %u)", product, static_cast<unsigned>(adapter->slotNo));
        return ADAPTERS_OK;
    default:
        snprintf(name, ADAPTERS_ADAPTER_NAME_SIZE, "%s", product);
        ORV3_ADAPTERS_TRACE("the location of the adapter %u is %u.\n", adapter->adapterKey,
                            static_cast<unsigned>(adapter->location));
        return ADAPTERS_PARTIAL;
    }
}

uint32_t get_pci_CardName_byFunc(uint32_t funcKey, char *cardName, uint8_t oobSupported)
{
    if (!cardName) {
        ORV3_ADAPTERS_TRACE("cardName is null.\n");
        return ADAPTERS_PARTIAL;
    }
    char work[128] = {};
    switch (oobSupported) {
    case INVENTORY_DB_OOB_VPD_AND_MISC: {
        inventory_db_pci_vpd_t vpd;
        memset(&vpd, 0, sizeof vpd);
        if (orvdb_get_pci_vpd_info(funcKey, &vpd) != ORV_DB_STATUS_SUCCESS) {
            ORV3_ADAPTERS_TRACE("Function %u cannot get card name.\n", funcKey);
            return ADAPTERS_PARTIAL;
        }
        memcpy(work, vpd.product_name, strnlen(vpd.product_name, sizeof work - 1));
        break;
    }
    case INVENTORY_DB_OOB_NONE:
    case INVENTORY_DB_OOB_VPD_ONLY: strcpy(work, "Function"); break;
    default:
        ORV3_ADAPTERS_TRACE("The oobSupported of Function %u is %u.\n", funcKey, static_cast<unsigned>(oobSupported));
        return ADAPTERS_PARTIAL;
    }
    const size_t length = orv3::trimInto(cardName, sizeof work, work, sizeof work);
    inventory_db_pci_info_t pci;
    memset(&pci, 0, sizeof pci);
    if (orvdb_get_pci_generic_info(funcKey, &pci) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE("Function %u cannot get PCI Generic Info.\n", funcKey);
        return ADAPTERS_PARTIAL;
    }
    // " BB:DD:FF": the bus, device and function numbers in upper-case hex.
    snprintf(cardName + length, 24, " %.2X:%.2X:%.2X", pci.bus, pci.device, pci.function);
    return ADAPTERS_OK;
}

uint32_t get_pci_func_type_string(uint32_t code, char *text)
{
    if (!text) {
        ORV3_ADAPTERS_TRACE("devType is null.\n");
        return ADAPTERS_PARTIAL;
    }
    const char *type = code < std::size(kFuncTypeTexts) ? kFuncTypeTexts[code] : "Other";
    snprintf(text, ADAPTERS_FUNC_TYPE_TEXT_SIZE, "%s", type);
    return ADAPTERS_OK;
}

uint32_t get_pci_func_info(const inventory_db_func_key_t *funcKey, inventory_db_pci_info_t *pciInfo,
                           inventory_db_pci_vpd_t *vpdInfo, inventory_db_pci_misc_t *miscInfo)
{
    if (!funcKey || !pciInfo || !vpdInfo || !miscInfo) {
        ORV3_ADAPTERS_TRACE("funcKey, pciInfo, vpdInfo or miscInfo is null.\n");
        return ADAPTERS_PARTIAL;
    }
    orv3::AdapterResult result;
    const uint32_t key = funcKey->funcKey;
    if (orvdb_get_pci_generic_info(key, pciInfo) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE("Function %u cannot get PCI Generic Info.\n", key);
        result.take(ADAPTERS_PARTIAL);
    }
    switch (funcKey->oobSupported) {
    case INVENTORY_DB_OOB_NONE: break;
    case INVENTORY_DB_OOB_VPD_AND_MISC:
    case INVENTORY_DB_OOB_VPD_ONLY:
        if (orvdb_get_pci_vpd_info(key, vpdInfo) != ORV_DB_STATUS_SUCCESS) {
            ORV3_ADAPTERS_TRACE("Function %u cannot get PCI VPD Info.\n", key);
            result.take(ADAPTERS_PARTIAL);
        }
        if (funcKey->oobSupported == INVENTORY_DB_OOB_VPD_AND_MISC &&
            orvdb_get_pci_misc_info(key, miscInfo) != ORV_DB_STATUS_SUCCESS) {
            ORV3_ADAPTERS_TRACE("Function %u cannot get PCI MISC Info.\n", key);
            result.take(ADAPTERS_PARTIAL);
        }
        break;
    default:
        ORV3_ADAPTERS_TRACE("The oobSupported of Function %u is %u.\n", key,
                            static_cast<unsigned>(funcKey->oobSupported));
        result.take(ADAPTERS_PARTIAL);
    }
    return result.value;
}

// The functions of `adapter` whose type `mask` keeps, named. ADAPTERS_FAILED
// discards them all.
static uint32_t create_funckey_list_by_adapter(const inventory_db_adapter_t *adapter, uint32_t mask,
                                               AdapterFunctions &kept)
{
    if (!adapter) {
        ORV3_ADAPTERS_TRACE("pKeyList or adpGenInfo is null.\n");
        return ADAPTERS_PARTIAL;
    }
    inventory_db_id_list_t keys = {};
    if (orvdb_get_pci_funkey_list(adapter->adapterKey, &keys) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE("adapters %u cannot get func list.\n", adapter->adapterKey);
        return ADAPTERS_PARTIAL;
    }
    const std::unique_ptr<uint32_t, decltype(&free)> ownedKeys(keys.ids, free);
    if (keys.count == 0 || !keys.ids)
        return ADAPTERS_OK;
    kept.records.reset(new (std::nothrow) inventory_db_func_key_t[keys.count]);
    if (!kept.records) {
        ORV3_ADAPTERS_TRACE("pKeyList->keyList cannot allocate space.\n");
        return ADAPTERS_FAILED;
    }
    orv3::AdapterResult result;
    for (uint32_t k = 0; k < keys.count; ++k) {
        const uint32_t key = keys.ids[k];
        uint32_t type = INVENTORY_DB_FUNC_OTHER;
        if (orvdb_get_pci_function_type(key, &type) != ORV_DB_STATUS_SUCCESS) {
            ORV3_ADAPTERS_TRACE("func %u is null.\n", key);
            result.take(ADAPTERS_PARTIAL);
            continue;
        }
        if (type >= 32 || (mask & (1u << type)) == 0)
            continue;
        inventory_db_func_key_t &record = kept.records[kept.count];
        memset(&record, 0, sizeof record);
        record.adapterNumber = adapter->adapterNumber;
        record.slotNo = adapter->location == INVENTORY_DB_LOCATION_ON_BOARD ? 0 : adapter->slotNo;
        record.funcKey = key;
        record.funcType = type;
        record.oobSupported = adapter->oobSupported;
        for (uint32_t named : {get_pci_AdapterName_byAdapterInfo(adapter, record.adapterName),
                               get_pci_CardName_byFunc(key, record.cardName, adapter->oobSupported)}) {
            if (!result.take(named)) {
                kept = {};
                return ADAPTERS_FAILED;
            }
        }
        ++kept.count;
    }
    return result.value;
}

uint32_t get_pci_funckey_list(inventory_db_func_key_list_t *list, uint32_t mask)
{
    if (!list) {
        ORV3_ADAPTERS_TRACE("pFuncKeyList is null.\n");
        return ADAPTERS_PARTIAL;
    }
    list->count = 0;
    list->keyList = nullptr;
    uint32_t adapterCount = 0;
    inventory_db_adapter_t *adapters = nullptr;
    if (orvdb_get_pci_adapter_list(&adapterCount, &adapters) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE("cannot get adapters list.\n");
        return ADAPTERS_FAILED;
    }
    const std::unique_ptr<inventory_db_adapter_t, decltype(&free)> ownedAdapters(adapters, free);
    if (adapterCount == 0 || !adapters)
        return ADAPTERS_OK;

    std::unique_ptr<AdapterFunctions[]> perAdapter(new (std::nothrow) AdapterFunctions[adapterCount]);
    if (!perAdapter) {
        ORV3_ADAPTERS_TRACE("adpFuncList cannot allocate space.\n");
        return ADAPTERS_FAILED;
    }
    orv3::AdapterResult result;
    size_t total = 0;
    for (uint32_t a = 0; a < adapterCount; ++a) {
        const uint32_t built = create_funckey_list_by_adapter(&adapters[a], mask, perAdapter[a]);
        if (!result.take(built))
            return ADAPTERS_FAILED;
        total += perAdapter[a].count;
    }
    if (total == 0)
        return result.value;

    auto *records = static_cast<inventory_db_func_key_t *>(malloc(total * sizeof(inventory_db_func_key_t)));
    if (!records) {
        ORV3_ADAPTERS_TRACE("pFuncKeyList->keyList cannot allocate space.\n");
        return ADAPTERS_FAILED;
    }
    size_t copied = 0;
    for (uint32_t a = 0; a < adapterCount; ++a) {
        if (perAdapter[a].count == 0)
            continue;
        memcpy(records + copied, perAdapter[a].records.get(), perAdapter[a].count * sizeof(inventory_db_func_key_t));
        copied += perAdapter[a].count;
    }
    if (copied != total) {
        ORV3_ADAPTERS_TRACE("adapters' function key count error.\n");
        free(records);
        return ADAPTERS_FAILED;
    }
    list->count = static_cast<uint32_t>(total);
    list->keyList = records;
    return result.value;
}

uint32_t get_pci_network_funckey_list(inventory_db_func_key_list_t *list)
{
    return get_pci_funckey_list(list, ADAPTERS_NETWORK_FUNCTIONS);
}

uint32_t get_pci_gpu_funckey_list(inventory_db_func_key_list_t *list)
{
    return get_pci_funckey_list(list, ADAPTERS_GPU_FUNCTIONS);
}

uint32_t get_pci_raid_funckey_list(inventory_db_func_key_list_t *list)
{
    return get_pci_funckey_list(list, ADAPTERS_RAID_FUNCTIONS);
}

uint32_t get_pci_other_funckey_list(inventory_db_func_key_list_t *list)
{
    return get_pci_funckey_list(list, ADAPTERS_OTHER_FUNCTIONS);
}

} // extern "C"

namespace orv3 {

const SupportGate kPciInventoryGate = {
    .offered =
        [] {
            uint32_t supported = 0;
            return check_support_pci(&supported) == ADAPTERS_OK && supported != 0;
        },
    .withdrawnLog = nullptr,
    .releasedLog = nullptr,
};

} // namespace orv3

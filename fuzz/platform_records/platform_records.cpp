// Every decoder the module applies to the controller libraries' records,
// fed arbitrary bytes. The first input byte picks the decoder; the records
// it decodes directly come next, each cut or zero-padded to its exact size,
// and whatever the decoder then asks the platform for (the labels of the
// RAID tables, a loader's lists and records) is served from the rest (see
// platform_bytes.h). A decoder may fail on a record; it must not read or
// write past one, whatever its texts, counts and codes hold.
#include "platform_bytes.h"

#include "adapter_tables.h"
#include "currentlyLoggedInTable.h"
#include "inventory.h"
#include "persistent_memory.h"
#include "power_trending.h"
#include "raid.h"

#include <cstdlib>
#include <iterator>
#include <memory>

using orv3::fuzz::takeWhole;

namespace {

template <class Row> struct FreeRow {
    void operator()(Row *row) const { free(row); }
};

// A zeroed row record on the heap, as the loaders pass their scratch rows.
template <class Row> std::unique_ptr<Row, FreeRow<Row>> scratchRow()
{
    return std::unique_ptr<Row, FreeRow<Row>>(static_cast<Row *>(calloc(1, sizeof(Row))));
}

void raidControllerRow()
{
    const auto hw = takeWhole<raid_link_ctrl_hw_t>();
    const auto fw = takeWhole<raid_link_fw_info_t>();
    const auto ports = takeWhole<raid_link_ctrl_port_t>();
    const auto pools = takeWhole<raid_link_array_list_t>();
    const auto drives = takeWhole<raid_link_ctrl_disk_list_t>();
    auto row = scratchRow<raidControllerTable_entry_t>();
    int32_t index = 1;
    arrangeAllRaidCtrlData(row.get(), &index, &hw, &fw, &ports, &pools, &drives);
}

void raidControllerFirmwareRows()
{
    const auto fw = takeWhole<raid_link_fw_info_t>();
    int32_t index = 1;
    arrangeCtrlFirmwareDataAndCreateArow(&fw, &index, takeWhole<uint32_t>());
}

void raidDriveRow()
{
    const auto hw = takeWhole<raid_link_disk_hw_t>();
    const auto fw = takeWhole<raid_link_fw_info_t>();
    int32_t index = 1;
    arrangeDiskDataAndCreateArow(&hw, &fw, &index);
}

void raidDriveFirmwareRows()
{
    const auto fw = takeWhole<raid_link_fw_info_t>();
    int32_t index = 1;
    arrangeDiskFirmwareDataAndCreateArow(&fw, &index, takeWhole<uint32_t>());
}

void raidStoragepoolRow()
{
    const auto array = takeWhole<raid_link_array_t>();
    int32_t index = 1;
    arrangeArrayInfoAndCreateArow(&array, &index, takeWhole<uint32_t>());
}

void raidVolumeRows()
{
    const auto arrayId = takeWhole<uint32_t>();
    int32_t index = 1;
    arrangeAllVolumeData(arrayId, &index, takeWhole<uint32_t>());
}

void adapterName()
{
    const auto adapter = takeWhole<inventory_db_adapter_t>();
    // Exactly the room callers give, so that a longer name is caught.
    auto name = std::make_unique<char[]>(ADAPTERS_ADAPTER_NAME_SIZE);
    get_pci_AdapterName_byAdapterInfo(&adapter, name.get());
}

void cardName()
{
    const auto funcKey = takeWhole<uint32_t>();
    const auto oobSupported = takeWhole<uint8_t>();
    auto name = std::make_unique<char[]>(sizeof(inventory_db_func_key_t::cardName));
    get_pci_CardName_byFunc(funcKey, name.get(), oobSupported);
}

void functionInfo()
{
    const auto funcKey = takeWhole<inventory_db_func_key_t>();
    inventory_db_pci_info_t pci{};
    inventory_db_pci_vpd_t vpd{};
    inventory_db_pci_misc_t misc{};
    get_pci_func_info(&funcKey, &pci, &vpd, &misc);
}

void persistentMemoryRow()
{
    const auto memory = takeWhole<inventory_db_memory_t>();
    auto row = scratchRow<systemAepDIMMVpdTable_entry_t>();
    int32_t index = 1;
    arrangeAepDIMMDataAndCreateArow(&memory, row.get(), &index);
}

void changeHistoryRow()
{
    const auto record = takeWhole<change_history_record_t>();
    auto scratch = scratchRow<systemComponentLevelVpdTrackingTable_entry_t>();
    int32_t index = 1;
    arrangeSystemComponentAndCreateArow(&record, scratch.get(), &index);
}

// The loaders read everything from the platform.
template <auto load> void loader()
{
    load();
}

struct Decoder {
    const char *name;
    void (*decode)();
};

// The decoder of input byte 0 (modulo the count). Append new decoders at
// the end, so that the corpus keeps reaching the ones it was made for.
constexpr Decoder kDecoders[] = {
    {"arrangeAllRaidCtrlData", raidControllerRow},
    {"arrangeCtrlFirmwareDataAndCreateArow", raidControllerFirmwareRows},
    {"arrangeDiskDataAndCreateArow", raidDriveRow},
    {"arrangeDiskFirmwareDataAndCreateArow", raidDriveFirmwareRows},
    {"arrangeArrayInfoAndCreateArow", raidStoragepoolRow},
    {"arrangeAllVolumeData", raidVolumeRows},
    {"raidControllerTable_loadData", loader<raidControllerTable_loadData>},
    {"raidControllerFirmwareTable_loadData", loader<raidControllerFirmwareTable_loadData>},
    {"raidDriveTable_loadData", loader<raidDriveTable_loadData>},
    {"raidDriveFirmwareTable_loadData", loader<raidDriveFirmwareTable_loadData>},
    {"raidStoragepoolTable_loadData", loader<raidStoragepoolTable_loadData>},
    {"raidVolumeTable_loadData", loader<raidVolumeTable_loadData>},
    {"get_pci_AdapterName_byAdapterInfo", adapterName},
    {"get_pci_CardName_byFunc", cardName},
    {"get_pci_func_info", functionInfo},
    {"adapterGenericTable_loadData", loader<adapterGenericTable_loadData>},
    {"adapterFirmwareTable_loadData", loader<adapterFirmwareTable_loadData>},
    {"adapterNetworkFunctionTable_loadData", loader<adapterNetworkFunctionTable_loadData>},
    {"adapterNetworkPortTable_loadData", loader<adapterNetworkPortTable_loadData>},
    {"adapterGPUFunctionTable_loadData", loader<adapterGPUFunctionTable_loadData>},
    {"adapterGPUChipTable_loadData", loader<adapterGPUChipTable_loadData>},
    {"adapterRAIDFunctionTable_loadData", loader<adapterRAIDFunctionTable_loadData>},
    {"arrangeAepDIMMDataAndCreateArow", persistentMemoryRow},
    {"AepDIMM_loadData", loader<AepDIMM_loadData>},
    {"arrangeSystemComponentAndCreateArow", changeHistoryRow},
    {"loadMaintancelog", loader<loadMaintancelog>},
    {"initialize_powerTrendingSampleTable_local", loader<initialize_powerTrendingSampleTable_local>},
    {"initialize_currentlyLoggedInTable_local", loader<initialize_currentlyLoggedInTable_local>},
};

// Every row a decoder listed is freed before the next input.
void clearAllRows()
{
    clearAllraidControllerTableRows(reinterpret_cast<raidControllerTable_entry_t *>(raidControllerTable_head));
    clearAllraidControllerFirmwareTableRows(
        reinterpret_cast<raidFirmwareTable_entry_t *>(raidControllerFirmwareTable_head));
    clearAllraidDriveTableRows(reinterpret_cast<raidDriveTable_entry_t *>(raidDriveTable_head));
    clearAllraidDriveFirmwareTableRows(reinterpret_cast<raidFirmwareTable_entry_t *>(raidDriveFirmwareTable_head));
    clearAllraidStoragepoolTableRows(reinterpret_cast<raidStoragepoolTable_entry_t *>(raidStoragepoolTable_head));
    clearAllraidVolumeTableRows(reinterpret_cast<raidVolumeTable_entry_t *>(raidVolumeTable_head));
    adapterGenericTable_clear();
    adapterFirmwareTable_clear();
    adapterNetworkFunctionTable_clear();
    adapterNetworkPortTable_clear();
    adapterGPUFunctionTable_clear();
    adapterGPUChipTable_clear();
    adapterRAIDFunctionTable_clear();
    systemAepDIMMVpdTable_clear();
    systemComponentLevelVpdTrackingTable_clear();
    powerTrendingSampleTable_clear();
    currentlyLoggedInTable_clear();
    orv3::reclaimRetiredRows();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    orv3::fuzz::silenceTraceLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const Decoder &decoder = kDecoders[data[0] % std::size(kDecoders)];
    orv3::fuzz::servePlatformBytes(data + 1, size - 1);
    decoder.decode();
    clearAllRows();
    return 0;
}

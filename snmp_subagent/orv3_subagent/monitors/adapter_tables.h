// The rows of the seven adapter tables and their exported routines. A row
// holds its index and one slot per further column in column order: an
// INTEGER as a 32-bit value, a text as a 256-byte buffer with its length.
#pragma once

#include "adapter_rows.h"

extern "C" {

// adapterGenericTable (.14.2): one row per adapter.
typedef struct adapterGenericTable_entry {
    orv3_row_head_t head;                // 1: position in the adapter list
    orv3_text256_t adapterVPDProdName;   // 2
    int32_t adapterSlotNo;               // 3
    orv3_text256_t adapterLocation;      // 4
    orv3_text256_t adapterCardInterface; // 5
} adapterGenericTable_entry_t;

// adapterFirmwareTable (.14.8): one row per firmware component.
typedef struct adapterFirmwareTable_entry {
    orv3_row_head_t head;                   // 1: running number
    orv3_text256_t adapterFwCardName;       // 2
    orv3_text256_t adapterFwName;           // 3
    orv3_text256_t adapterFwClassification; // 4
    orv3_text256_t adapterFwDescription;    // 5
    orv3_text256_t adapterFwManufacture;    // 6
    orv3_text256_t adapterFwVersion;        // 7
    orv3_text256_t adapterFwReleaseDate;    // 8
    orv3_text256_t adapterFwSoftwareID;     // 9
} adapterFirmwareTable_entry_t;

// The columns the network, GPU and storage function tables share: the
// function's names and VPD first (columns 2 to 11), its PCI description
// last (the table's last twelve columns).
typedef struct adapter_function_identity {
    orv3_text256_t vpdProdName;        // card name
    orv3_text256_t adapterVPDProdName; // adapter name
    orv3_text256_t vpdManufacturer;
    orv3_text256_t vpdUUID;
    orv3_text256_t vpdModel;
    orv3_text256_t vpdSerialNo;
    orv3_text256_t vpdFRUNo;
    orv3_text256_t vpdPartNo;
    orv3_text256_t foDUID;
    int32_t supportHotPlug;
} adapter_function_identity_t;

typedef struct adapter_function_pci {
    int32_t maxDataWidth;
    orv3_text256_t packageType;
    int32_t pciBusNo;
    int32_t pciDevNo;
    int32_t pciFuncNo;
    orv3_text256_t pciVendorId;
    orv3_text256_t pciDevId;
    orv3_text256_t pciDevType;
    orv3_text256_t pciRevId;
    orv3_text256_t pciSubVendorId;
    orv3_text256_t pciSubDevId;
    orv3_text256_t pciSlotDesignation;
} adapter_function_pci_t;

// adapterNetworkFunctionTable (.14.3): one row per network function.
typedef struct adapterNetworkFunctionTable_entry {
    orv3_row_head_t head;                 // 1: running number
    adapter_function_identity_t identity; // 2-11
    int32_t networkPhysicalPortNumber;    // 12
    int32_t networkMaxPortNumber;         // 13
    int32_t networkPortNumber;            // 14
    adapter_function_pci_t pci;           // 15-26
} adapterNetworkFunctionTable_entry_t;

// adapterNetworkPortTable (.14.4): one row per logical port.
typedef struct adapterNetworkPortTable_entry {
    orv3_row_head_t head;                    // 1: running number
    orv3_text256_t networkVPDProdName;       // 2
    int32_t phyPortNo;                       // 3
    orv3_text256_t phyPortConnector;         // 4
    orv3_text256_t phyPortBurnedinAddress;   // 5
    int32_t portNo;                          // 6
    int32_t portMaxDataSize;                 // 7: Gauge32
    orv3_text256_t portPermanentAddress;     // 8
    orv3_text256_t portNetworkAddress;       // 9
    orv3_text256_t portLinkTechnology;       // 10
    orv3_text256_t portvNICMode;             // 11
    orv3_text256_t portMaxSpeed;             // 12
    orv3_text256_t portProtocolType;         // 13
    orv3_text256_t portCurrentProtocol;      // 14
    orv3_text256_t portFCoEPermanentAddress; // 15
    orv3_text256_t portFCoENetworkAddress;   // 16
    orv3_text256_t portConnectionType;       // 17
    orv3_text256_t portRole;                 // 18
    int32_t portTargetRelativePortNo;        // 19: Gauge32
    orv3_text256_t phyPortLinkStatus;        // 20
    orv3_text256_t phyPortLinkSpeed;         // 21
} adapterNetworkPortTable_entry_t;

// adapterGPUFunctionTable (.14.5): one row per GPU function.
typedef struct adapterGPUFunctionTable_entry {
    orv3_row_head_t head;                 // 1: running number
    adapter_function_identity_t identity; // 2-11
    orv3_text256_t gpuVideoMemorySize;    // 12
    orv3_text256_t gpuVideoMemoryType;    // 13
    int32_t gpuChipNumber;                // 14
    adapter_function_pci_t pci;           // 15-26
} adapterGPUFunctionTable_entry_t;

// adapterGPUChipTable (.14.6): one row per graphics chip.
typedef struct adapterGPUChipTable_entry {
    orv3_row_head_t head;            // 1: running number
    orv3_text256_t gpuVPDProdName;   // 2
    int32_t chipNo;                  // 3
    orv3_text256_t chipName;         // 4
    orv3_text256_t chipFamily;       // 5
    orv3_text256_t chipManufacturer; // 6
    int32_t chipCoresEnabled;        // 7
    int32_t chipMaxClockSpeed;       // 8: Gauge32
    int32_t chipExtBusClockSpeed;    // 9: Gauge32
    int32_t chipAddressWidth;        // 10
    int32_t chipDataWidth;           // 11
    orv3_text256_t chipFormFactor;   // 12
    orv3_text256_t chipModel;        // 13
    orv3_text256_t chipSerialNo;     // 14
    orv3_text256_t chipFRUNo;        // 15
    orv3_text256_t chipPartNo;       // 16
    orv3_text256_t chipUniqueID;     // 17
} adapterGPUChipTable_entry_t;

// adapterRAIDFunctionTable (.14.7): one row per storage function.
typedef struct adapterRAIDFunctionTable_entry {
    orv3_row_head_t head;                 // 1: running number
    adapter_function_identity_t identity; // 2-11
    adapter_function_pci_t pci;           // 12-23
} adapterRAIDFunctionTable_entry_t;

} // extern "C"

ORV3_TABLE_DECLARATIONS(adapterGenericTable, adapterGenericTable_entry_t)
ORV3_TABLE_DECLARATIONS(adapterFirmwareTable, adapterFirmwareTable_entry_t)
ORV3_TABLE_DECLARATIONS(adapterNetworkFunctionTable, adapterNetworkFunctionTable_entry_t)
ORV3_TABLE_DECLARATIONS(adapterNetworkPortTable, adapterNetworkPortTable_entry_t)
ORV3_TABLE_DECLARATIONS(adapterGPUFunctionTable, adapterGPUFunctionTable_entry_t)
ORV3_TABLE_DECLARATIONS(adapterGPUChipTable, adapterGPUChipTable_entry_t)
ORV3_TABLE_DECLARATIONS(adapterRAIDFunctionTable, adapterRAIDFunctionTable_entry_t)

extern "C" {
int adapterGenericTable_loadData(void);
int adapterFirmwareTable_loadData(void);
int adapterNetworkFunctionTable_loadData(void);
int adapterNetworkPortTable_loadData(void);
int adapterGPUFunctionTable_loadData(void);
int adapterGPUChipTable_loadData(void);
int adapterRAIDFunctionTable_loadData(void);
}

// Where each table hangs below the adapters group (.14) and its last
// column, read by the group's registration array and the tables' descriptors.
inline constexpr oid adapterGenericTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 14, 2};
inline constexpr unsigned adapterGenericTable_lastColumn = 5;
inline constexpr oid adapterNetworkFunctionTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 14, 3};
inline constexpr unsigned adapterNetworkFunctionTable_lastColumn = 26;
inline constexpr oid adapterNetworkPortTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 14, 4};
inline constexpr unsigned adapterNetworkPortTable_lastColumn = 21;
inline constexpr oid adapterGPUFunctionTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 14, 5};
inline constexpr unsigned adapterGPUFunctionTable_lastColumn = 26;
inline constexpr oid adapterGPUChipTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 14, 6};
inline constexpr unsigned adapterGPUChipTable_lastColumn = 17;
inline constexpr oid adapterRAIDFunctionTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 14, 7};
inline constexpr unsigned adapterRAIDFunctionTable_lastColumn = 23;
inline constexpr oid adapterFirmwareTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 14, 8};
inline constexpr unsigned adapterFirmwareTable_lastColumn = 9;

namespace orv3 {

extern const SupportGate kPciInventoryGate;
static_assert(ADAPTERS_FAILED == kLoadFailedOutright);

// How every adapter table is served: rows rebuilt from nothing by the
// table's loader at most once in 5 seconds, and only while the platform
// offers the PCI adapter inventory (without it the table is empty); a load
// that fails outright leaves no rows. GET only, the entry traced by its
// "trace" line alone.
inline constexpr TableFamily kAdapterTables = {
    .refresh = {RefreshRule::FixedPeriod, 5},
    .loadFailure = Table::LoadFailure::EmptiesTheTable,
    .gate = &kPciInventoryGate,
    .handler = getOnlyHandler(HandlerPolicy::EntryTrace::HeaderOnly),
};

} // namespace orv3

// The local-storage group: RAIDOOBCapable and the six RAID tables, their
// row records and routines.
#pragma once

#include "raid_text.h"
#include "row_table.h"

#include "orv3/raid_link.h"

extern "C" {

// raidControllerTable (.13.1.2): one row per RAID controller. Index in head.
typedef struct raidControllerTable_entry {
    orv3_row_head_t head;
    orv3_text256_t raidCtrlLabel;              // 2
    orv3_text256_t raidCtrlProductName;        // 3
    orv3_text256_t raidCtrlText664;            // 4
    int32_t raidCtrlBatteryPresent;            // 5: 0, 1, or 2 (see the loader)
    orv3_text256_t raidCtrlText162;            // 6
    orv3_text256_t raidCtrlText0;              // 7
    orv3_text256_t raidCtrlText195;            // 8
    orv3_text256_t raidCtrlText212;            // 9
    orv3_text256_t raidCtrlText245;            // 10
    orv3_text256_t raidCtrlText278;            // 11
    orv3_text256_t raidCtrlText295;            // 12
    orv3_text256_t raidCtrlCacheModuleStatus;  // 13
    orv3_text256_t raidCtrlCacheSize;          // 14
    orv3_text256_t raidCtrlText584;            // 15
    int32_t raidCtrlSlotNumber;                // 16
    int32_t raidCtrlByte321;                   // 17
    int32_t raidCtrlByte322;                   // 18
    int32_t raidCtrlByte323;                   // 19
    orv3_text256_t raidCtrlPciId314;           // 20
    orv3_text256_t raidCtrlPciId318;           // 21
    orv3_text256_t raidCtrlBatteryText325;     // 22
    orv3_text256_t raidCtrlBatteryText454;     // 23
    orv3_text256_t raidCtrlBatteryStatus;      // 24
    orv3_text256_t raidCtrlBatteryType;        // 25
    orv3_text256_t raidCtrlBatteryText537;     // 26
    orv3_text256_t raidCtrlBatteryText471;     // 27
    orv3_text256_t raidCtrlBatteryCapacity;    // 28
    orv3_text256_t raidCtrlBatteryText504;     // 29
    orv3_text256_t raidCtrlBatteryVoltage568;  // 30
    orv3_text256_t raidCtrlBatteryVoltage570;  // 31
    orv3_text256_t raidCtrlBatteryCurrent;     // 32
    orv3_text256_t raidCtrlBatteryEnergy;      // 33
    orv3_text256_t raidCtrlBatteryTemperature; // 34
    char raidCtrlFirmwareNames[10240];         // 35
    uint32_t raidCtrlFirmwareNamesLen;
    char raidCtrlPortAddresses[10240]; // 36
    uint32_t raidCtrlPortAddressesLen;
    char raidCtrlStoragepoolLabels[10240]; // 37
    uint32_t raidCtrlStoragepoolLabelsLen;
    char raidCtrlDriveLabels[40960]; // 38
    uint32_t raidCtrlDriveLabelsLen;
} raidControllerTable_entry_t;

// raidControllerFirmwareTable (.13.1.4) and raidDriveFirmwareTable (.13.1.5):
// one row per firmware component.
typedef struct raidFirmwareTable_entry {
    orv3_row_head_t head;
    orv3_text256_t name;    // 2: component name
    orv3_text256_t label;   // 3: the controller's or drive's label
    orv3_text256_t text131; // 4
    orv3_text256_t text98;  // 5
    orv3_text256_t text0;   // 6
    orv3_text256_t text260; // 7
} raidFirmwareTable_entry_t;
typedef raidFirmwareTable_entry_t raidControllerFirmwareTable_entry_t;
typedef raidFirmwareTable_entry_t raidDriveFirmwareTable_entry_t;

// raidDriveTable (.13.1.3): one row per drive of every controller.
typedef struct raidDriveTable_entry {
    orv3_row_head_t head;
    orv3_text256_t raidDriveLabel;         // 2
    orv3_text256_t raidDriveText33;        // 3
    orv3_text256_t raidDriveState;         // 4
    int32_t raidDriveNumber;               // 5
    orv3_text256_t raidDriveNumber411;     // 6
    orv3_text256_t raidDriveInterfaceType; // 7
    orv3_text256_t raidDriveMediaType;     // 8
    orv3_text256_t raidDriveSpeed;         // 9
    orv3_text256_t raidDriveTemperature;   // 10
    orv3_text256_t raidDriveHealth;        // 11
    orv3_text256_t raidDriveCapacity;      // 12
    orv3_text256_t raidDriveText162;       // 13
    orv3_text256_t raidDriveId413;         // 14
    orv3_text256_t raidDriveText195;       // 15
    orv3_text256_t raidDriveText212;       // 16
    orv3_text256_t raidDriveText245;       // 17
    orv3_text256_t raidDriveText311;       // 18
    orv3_text256_t raidDriveText344;       // 19
    char raidDriveFirmwareNames[2560];     // 20
    uint32_t raidDriveFirmwareNamesLen;
    orv3_text256_t raidDriveRotationSpeed; // 21
    int32_t raidDriveCounter539;           // 22
    int32_t raidDriveCounter543;           // 23
    int32_t raidDriveCounter547;           // 24
    orv3_text256_t raidDriveRemainingLife; // 25
    int32_t raidDriveFlagBit0;             // 26
    int32_t raidDriveFlagBit2;             // 27
} raidDriveTable_entry_t;

// raidStoragepoolTable (.13.1.6): one row per storage pool.
typedef struct raidStoragepoolTable_entry {
    orv3_row_head_t head;
    orv3_text256_t raidStoragepoolLabel;     // 2
    orv3_text256_t raidStoragepoolCtrlLabel; // 3
    orv3_text256_t raidStoragepoolRaidLevel; // 4
    orv3_text256_t raidStoragepoolCapacity;  // 5
    char raidStoragepoolVolumeLabels[10240]; // 6
    uint32_t raidStoragepoolVolumeLabelsLen;
    char raidStoragepoolDriveLabels[10240]; // 7
    uint32_t raidStoragepoolDriveLabelsLen;
} raidStoragepoolTable_entry_t;

// raidVolumeTable (.13.1.7): one row per volume.
typedef struct raidVolumeTable_entry {
    orv3_row_head_t head;
    orv3_text256_t raidVolumeLabel;      // 2
    orv3_text256_t raidVolumeCtrlLabel;  // 3
    orv3_text256_t raidVolumeState;      // 4
    orv3_text256_t raidVolumeCapacity;   // 5
    orv3_text256_t raidVolumeStripeSize; // 6
    orv3_text256_t raidVolumeBootable;   // 7
} raidVolumeTable_entry_t;

// One table of the group, as init_localStorage registers it.
typedef struct local_storage_table {
    const oid *table_oid;
    size_t oid_len;
    const char *name;
    uint32_t min_column;
    uint32_t max_column;
    Netsnmp_Node_Handler *handler;
    Netsnmp_First_Data_Point *get_first_data_point;
    Netsnmp_Next_Data_Point *get_next_data_point;
} local_storage_table_t;

extern local_storage_table_t init_set[];
extern const oid RAIDOOBCapable_oid[];
extern size_t OOBCapableOidLen;

int init_localStorage(void);
int initialize_integer_localStorage(void);
int initialize_tables_localStorage(void);
int RAIDOOBCapable_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                           netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
int localStorage_update_RAIDOOBCapable(int32_t *value, size_t *size);

int arrangeAllRaidCtrlData(raidControllerTable_entry_t *row, int32_t *index, const raid_link_ctrl_hw_t *hw,
                           const raid_link_fw_info_t *fw, const raid_link_ctrl_port_t *ports,
                           const raid_link_array_list_t *pools, const raid_link_ctrl_disk_list_t *drives);
int arrangeCtrlFirmwareDataAndCreateArow(const raid_link_fw_info_t *fw, int32_t *index, uint32_t ctrlId);
int arrangeDiskDataAndCreateArow(const raid_link_disk_hw_t *hw, const raid_link_fw_info_t *fw, int32_t *index);
int arrangeDiskFirmwareDataAndCreateArow(const raid_link_fw_info_t *fw, int32_t *index, uint32_t diskId);
int arrangeArrayInfoAndCreateArow(const raid_link_array_t *array, int32_t *index, uint32_t ctrlId);
int arrangeAllVolumeData(uint32_t arrayId, int32_t *index, uint32_t ctrlId);

} // extern "C"

ORV3_TABLE_DECLARATIONS(raidControllerTable, raidControllerTable_entry_t)
ORV3_TABLE_DECLARATIONS(raidControllerFirmwareTable, raidFirmwareTable_entry_t)
ORV3_TABLE_DECLARATIONS(raidDriveTable, raidDriveTable_entry_t)
ORV3_TABLE_DECLARATIONS(raidDriveFirmwareTable, raidFirmwareTable_entry_t)
ORV3_TABLE_DECLARATIONS(raidStoragepoolTable, raidStoragepoolTable_entry_t)
ORV3_TABLE_DECLARATIONS(raidVolumeTable, raidVolumeTable_entry_t)

extern "C" {
int raidControllerTable_loadData(void);
int raidControllerFirmwareTable_loadData(void);
int raidDriveTable_loadData(void);
int raidDriveFirmwareTable_loadData(void);
int raidStoragepoolTable_loadData(void);
int raidVolumeTable_loadData(void);
}

// Where each table hangs below local storage (.13.1) and its last column,
// read by the group's registration array and by the tables' descriptors.
inline constexpr oid raidControllerTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 13, 1, 2};
inline constexpr unsigned raidControllerTable_lastColumn = 38;
inline constexpr oid raidDriveTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 13, 1, 3};
inline constexpr unsigned raidDriveTable_lastColumn = 27;
inline constexpr oid raidControllerFirmwareTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 13, 1, 4};
inline constexpr unsigned raidControllerFirmwareTable_lastColumn = 7;
inline constexpr oid raidDriveFirmwareTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 13, 1, 5};
inline constexpr unsigned raidDriveFirmwareTable_lastColumn = 7;
inline constexpr oid raidStoragepoolTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 13, 1, 6};
inline constexpr unsigned raidStoragepoolTable_lastColumn = 7;
inline constexpr oid raidVolumeTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 13, 1, 7};
inline constexpr unsigned raidVolumeTable_lastColumn = 7;

namespace orv3 {

extern const SupportGate kRaidLinkGate;
// The controller table also logs that it released its rows.
extern const SupportGate kRaidLinkGateReleasingController;

// How every RAID table is served: rows rebuilt by the table's loader at
// most once in 5 seconds, and only while the platform offers the RAID link
// function (without it their rows are freed and the walk ends at once); a
// load that cannot read the controller list ends the walk; GET only, each
// request traced under "localStorage:handler".
inline constexpr TableFamily kRaidTables = {
    .refresh = {RefreshRule::FixedPeriod, 5},
    .loadFailure = Table::LoadFailure::EndsTheWalk,
    .gate = &kRaidLinkGate,
    .handler = getOnlyHandler(HandlerPolicy::EntryTrace::None, "localStorage:handler", "Processing request (%d)\n"),
};
inline constexpr TableFamily kRaidControllerTables = {
    .refresh = kRaidTables.refresh,
    .loadFailure = kRaidTables.loadFailure,
    .gate = &kRaidLinkGateReleasingController,
    .handler = kRaidTables.handler,
};

// True when the platform says it offers the RAID link function.
bool raidLinkOffered();

} // namespace orv3

// The adapters group (.14): the PCI adapters of the inventory database,
// their functions sorted into classes by type, and the names the tables
// show for them. The seven adapter tables and adapterOOBCapable build on
// the routines declared here.
//
// Every routine returns ADAPTERS_OK, ADAPTERS_PARTIAL (a bad argument, or
// a result that may still be used where the caller accepts it) or
// ADAPTERS_FAILED (nothing usable), and traces each failure under the
// debug token of its source file's path.
#pragma once

#include "netsnmp.h"
#include "text.h"

#include "orv3/inventory_db.h"

#include <cstdint>

extern "C" {

enum {
    ADAPTERS_OK = 0,
    ADAPTERS_PARTIAL = 1,
    ADAPTERS_FAILED = 2,
};

// Function classes: bit n of a mask keeps the functions of type code n.
enum {
    ADAPTERS_NETWORK_FUNCTIONS = 0x20E, // Ethernet, Fibre Channel, InfiniBand, Network
    ADAPTERS_GPU_FUNCTIONS = 0x10,
    ADAPTERS_RAID_FUNCTIONS = 0x161, // RAID, SCSI, SAS, Mass Storage
    ADAPTERS_OTHER_FUNCTIONS = 0x80,
};

// Room for an adapter's display name, and the longest one built.
enum {
    ADAPTERS_ADAPTER_NAME_SIZE = 152,
    ADAPTERS_FUNC_TYPE_TEXT_SIZE = 14,
};

// One adapter table as init_adapters registers it.
typedef struct adapter_table_registration {
    const oid *table_oid;
    uint32_t oid_len; // 12 for every table
    const char *name;
    uint32_t min_column;
    uint32_t max_column;
    Netsnmp_Node_Handler *handler;
    Netsnmp_First_Data_Point *get_first_data_point;
    Netsnmp_Next_Data_Point *get_next_data_point;
} adapter_table_registration_t;

// The seven tables, ended by a record whose OID is null.
extern const adapter_table_registration_t adapter_tables[];

int init_adapters(void);

uint32_t check_support_pci(uint32_t *supported);
uint32_t strtrim(char *dst, const char *src);
uint32_t get_pci_AdapterName_byAdapterInfo(const inventory_db_adapter_t *adapter, char *name);
uint32_t get_pci_CardName_byFunc(uint32_t funcKey, char *cardName, uint8_t oobSupported);
uint32_t get_pci_funckey_list(inventory_db_func_key_list_t *list, uint32_t mask);
uint32_t get_pci_network_funckey_list(inventory_db_func_key_list_t *list);
uint32_t get_pci_gpu_funckey_list(inventory_db_func_key_list_t *list);
uint32_t get_pci_raid_funckey_list(inventory_db_func_key_list_t *list);
uint32_t get_pci_other_funckey_list(inventory_db_func_key_list_t *list);
uint32_t get_pci_func_type_string(uint32_t code, char *text);
uint32_t get_pci_func_info(const inventory_db_func_key_t *funcKey, inventory_db_pci_info_t *pciInfo,
                           inventory_db_pci_vpd_t *vpdInfo, inventory_db_pci_misc_t *miscInfo);

} // extern "C"

// A failure message of the adapters group: the routine and line, then the
// text, under the source file's path.
#define ORV3_ADAPTERS_TRACE(format, ...) ORV3_TRACE(__FILE__, "%s, %d: " format, __func__, __LINE__, ##__VA_ARGS__)
#define ORV3_ADAPTERS_TRACE_AS(routine, format, ...)                                                                   \
    do {                                                                                                               \
        if (snmp_get_do_debugging())                                                                                   \
            ::orv3::traceLine(routine, __FILE__, __LINE__, __FILE__, "%s, %d: " format, routine, __LINE__,             \
                              ##__VA_ARGS__);                                                                          \
    } while (0)

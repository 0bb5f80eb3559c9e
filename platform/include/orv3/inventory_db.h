/* Inventory database: PCI adapters and their functions (VPD, firmware, network
 * ports, GPUs) and persistent memory. Every call returns 0 on success. Arrays
 * handed out by the PCI, firmware, network and GPU calls are heap blocks the
 * caller frees; the persistent-memory id array stays the database's. */
#ifndef ORV3_INVENTORY_DB_H
#define ORV3_INVENTORY_DB_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

enum {
    ORV_DB_STATUS_SUCCESS = 0,
    ORV_DB_STATUS_FAIL = 1,
};

/* PCI function type codes. */
enum {
    INVENTORY_DB_FUNC_RAID = 0,
    INVENTORY_DB_FUNC_ETHERNET = 1,
    INVENTORY_DB_FUNC_FIBRE_CHANNEL = 2,
    INVENTORY_DB_FUNC_INFINIBAND = 3,
    INVENTORY_DB_FUNC_GPU = 4,
    INVENTORY_DB_FUNC_SCSI = 5,
    INVENTORY_DB_FUNC_SAS = 6,
    INVENTORY_DB_FUNC_OTHER = 7,
    INVENTORY_DB_FUNC_MASS_STORAGE = 8,
    INVENTORY_DB_FUNC_NETWORK = 9,
};

/* Adapter oobSupported and location values. */
enum {
    INVENTORY_DB_OOB_NONE = 0,         /* no out-of-band data */
    INVENTORY_DB_OOB_VPD_AND_MISC = 1, /* VPD and miscellaneous data */
    INVENTORY_DB_OOB_VPD_ONLY = 2,
    INVENTORY_DB_LOCATION_ON_BOARD = 0,
    INVENTORY_DB_LOCATION_ADD_ON = 1,
};

/* Persistent-memory extra-data kinds (inventory_db_memory_t.extra_kind). */
enum {
    INVENTORY_DB_EXTRA_PERCENT_HEALTH = 1, /* percentage and health state */
    INVENTORY_DB_EXTRA_SECURITY = 2,       /* security state */
    INVENTORY_DB_EXTRA_ALL = 3,            /* all three */
};

enum {
    INVENTORY_DB_MEMORY_SIZE = 656,
    INVENTORY_DB_ADAPTER_SIZE = 212,
    INVENTORY_DB_FUNC_KEY_SIZE = 324,
    INVENTORY_DB_PCI_INFO_SIZE = 108,
    INVENTORY_DB_PCI_VPD_SIZE = 279,
    INVENTORY_DB_PCI_MISC_SIZE = 172,
    INVENTORY_DB_FIRMWARE_SIZE = 330,
    INVENTORY_DB_NETWORK_INFO_SIZE = 4,
    INVENTORY_DB_PHYSICAL_PORT_SIZE = 152,
    INVENTORY_DB_LOGICAL_PORT_SIZE = 528,
    INVENTORY_DB_GPU_DEVICE_SIZE = 176,
    INVENTORY_DB_GPU_CHIP_SIZE = 248,
};

/* Byte records: packed, little-endian, multi-byte fields often unaligned;
 * texts are NUL-ended. Bytes not named here belong to the database. Callers
 * zero a record before asking for it. */
#pragma pack(push, 1)

/* Persistent-memory module (orvdb_get_memory_by_id). The texts, speeds,
 * capacities and count are passed through by callers uninterpreted. The
 * database documents them only by their place in the record, so they are
 * numbered in record order (text1 ... text7), each with its offset beside
 * it, and mean what the column that serves them shows. */
typedef struct inventory_db_memory {
    uint8_t reserved_0[24];
    uint16_t speed1; /* 24: MHz */
    uint16_t speed2; /* 26: MHz */
    char text1[65];  /* 28 */
    char text2[65];  /* 93 */
    char text3[65];  /* 158 */
    char text4[65];  /* 223 */
    uint8_t reserved_288[65];
    char text5[65]; /* 353 */
    uint8_t reserved_418[6];
    uint64_t capacity1;      /* 424: bytes */
    uint64_t capacity2;      /* 432 */
    uint64_t capacity3;      /* 440 */
    uint64_t capacity4;      /* 448 */
    uint64_t capacity5;      /* 456 */
    uint64_t capacity6;      /* 464 */
    uint32_t count;          /* 472 */
    int32_t percentage;      /* 476 */
    uint32_t security_state; /* 480: for bps_format_security_str */
    uint8_t health_state;    /* 484: for bps_format_hstate_str */
    uint8_t reserved_485[12];
    uint8_t extra_kind; /* 497: INVENTORY_DB_EXTRA_* */
    uint8_t reserved_498[18];
    char text6[65]; /* 516 */
    char text7[65]; /* 581 */
    uint8_t reserved_646[10];
} inventory_db_memory_t;

/* PCI adapter (element of orvdb_get_pci_adapter_list's array). */
typedef struct inventory_db_adapter {
    uint32_t adapterKey;    /* 0: key for orvdb_get_pci_funkey_list */
    uint16_t adapterNumber; /* 4 */
    uint16_t slotNo;        /* 6: PCI slot, or on-board instance */
    uint8_t reserved_8[2];
    char cardInterface[65];    /* 10 */
    char adapterProdName[129]; /* 75 */
    uint8_t oobSupported;      /* 204: INVENTORY_DB_OOB_* */
    uint8_t location;          /* 205: INVENTORY_DB_LOCATION_* */
    uint8_t reserved_206[6];
} inventory_db_adapter_t;

/* PCI generic information of a function (orvdb_get_pci_generic_info). */
typedef struct inventory_db_pci_info {
    uint8_t reserved_0[9];
    uint8_t bus;        /* 9 */
    uint8_t device;     /* 10 */
    uint8_t function;   /* 11 */
    uint16_t vendor_id; /* 12 */
    uint16_t device_id; /* 14 */
    uint8_t reserved_16[4];
    uint8_t revision_id; /* 20 */
    uint8_t reserved_21[1];
    uint16_t subsystem_vendor_id; /* 22 */
    uint16_t subsystem_device_id; /* 24 */
    uint8_t reserved_26[3];
    char slot_designation[65]; /* 29 */
    uint8_t reserved_94[2];
    uint8_t hot_plug; /* 96: hot-plug support */
    uint8_t reserved_97[3];
    uint32_t func_type; /* 100: INVENTORY_DB_FUNC_* */
    uint8_t reserved_104[4];
} inventory_db_pci_info_t;

/* PCI VPD of a function (orvdb_get_pci_vpd_info). */
typedef struct inventory_db_pci_vpd {
    char uuid[33];          /* 0 */
    char product_name[129]; /* 33 */
    char manufacturer[33];  /* 162 */
    char serial_number[17]; /* 195 */
    char part_number[17];   /* 212 */
    char model[33];         /* 229 */
    char fru_number[17];    /* 262 */
} inventory_db_pci_vpd_t;

/* PCI miscellaneous information of a function (orvdb_get_pci_misc_info). */
typedef struct inventory_db_pci_misc {
    char fod_uid[33]; /* 0: feature-on-demand unique identifier */
    uint8_t reserved_33[1];
    uint16_t max_data_width; /* 34 */
    uint8_t reserved_36[69];
    char package_type[65]; /* 105 */
    uint8_t reserved_170[2];
} inventory_db_pci_misc_t;

/* Firmware component of a function (element of a firmware list). */
typedef struct inventory_db_firmware {
    char name[33];           /* 0 */
    char version[33];        /* 33 */
    char description[129];   /* 66 */
    char release_date[19];   /* 195 */
    char classification[65]; /* 214 */
    char manufacturer[33];   /* 279 */
    char software_id[18];    /* 312 */
} inventory_db_firmware_t;

/* Network information of a function (orvdb_get_network_info). */
typedef struct inventory_db_network_info {
    uint8_t reserved_0[2];
    uint16_t max_port_count; /* 2 */
} inventory_db_network_info_t;

/* Physical network port (element of a physical-port list). */
typedef struct inventory_db_physical_port {
    uint8_t reserved_0[4];
    uint16_t logical_port_count; /* 4 */
    char burned_in_address[65];  /* 6 */
    char connector[65];          /* 71 */
    uint32_t link_status;        /* 136: 0 unsupported, 1 unknown, 2 down, else up */
    uint32_t link_speed;         /* 140: Mbit/s */
    uint8_t reserved_144[8];
} inventory_db_physical_port_t;

/* Logical network port (element of a logical-port list). */
typedef struct inventory_db_logical_port {
    uint32_t max_data_size;        /* 0 */
    char permanent_address[65];    /* 4 */
    char network_address[65];      /* 69 */
    uint16_t physical_port_number; /* 134 */
    uint16_t port_number;          /* 136 */
    uint8_t reserved_138[6];
    uint64_t max_speed; /* 144: bit/s */
    uint8_t reserved_152[2];
    uint8_t protocol_ethernet;       /* 154 */
    uint8_t protocol_fcoe_fc;        /* 155 */
    uint8_t protocol_iscsi;          /* 156 */
    char fcoe_permanent_address[17]; /* 157 */
    char fcoe_network_address[17];   /* 174 */
    uint8_t reserved_191[5];
    uint32_t target_relative_port; /* 196 */
    char link_technology[65];      /* 200 */
    char vnic_mode[65];            /* 265 */
    char protocol_type[65];        /* 330 */
    char connection_type[65];      /* 395 */
    char role[65];                 /* 460 */
    uint8_t reserved_525[3];
} inventory_db_logical_port_t;

/* GPU device information of a function (orvdb_get_gpu_device_info). */
typedef struct inventory_db_gpu_device {
    uint8_t reserved_0[45];
    char video_memory_type[65]; /* 45 */
    char video_memory_size[65]; /* 110 */
    uint8_t reserved_175[1];
} inventory_db_gpu_device_t;

/* GPU chip (element of a chip list). */
typedef struct inventory_db_gpu_chip {
    char chip_name[33];     /* 0 */
    char manufacturer[17];  /* 33 */
    char model[17];         /* 50 */
    char part_number[17];   /* 67 */
    char fru_number[17];    /* 84 */
    char serial_number[17]; /* 101 */
    char family[33];        /* 118 */
    char unique_id[17];     /* 151 */
    char form_factor[65];   /* 168 */
    uint8_t reserved_233[1];
    uint8_t chip_number;    /* 234 */
    uint8_t cores_enabled;  /* 235 */
    uint32_t ext_bus_clock; /* 236 */
    uint32_t max_clock;     /* 240 */
    uint16_t address_width; /* 244 */
    uint16_t data_width;    /* 246 */
} inventory_db_gpu_chip_t;

/* One PCI function as the adapter tables keep it: the database's function
 * key and type with the names built for it and what its adapter tells. The
 * adapters' callers build these records themselves; the database never
 * hands them out. */
typedef struct inventory_db_func_key {
    uint16_t adapterNumber; /* 0: the adapter record's adapterNumber */
    uint16_t slotNo;        /* 2: the adapter's slotNo, 0 on board */
    char adapterName[156];  /* 4: e.g. "X (PCI Slot 2)", at most 151 characters */
    uint32_t funcKey;       /* 160 */
    uint32_t funcType;      /* 164: INVENTORY_DB_FUNC_* */
    char cardName[153];     /* 168: e.g. "Function 1A:00:01" */
    uint8_t oobSupported;   /* 321: the adapter's INVENTORY_DB_OOB_* */
    uint8_t reserved_322[2];
} inventory_db_func_key_t;

#pragma pack(pop)

ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, speed1) == 24, "speed1");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, speed2) == 26, "speed2");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, text1) == 28, "text1");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, text2) == 93, "text2");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, text3) == 158, "text3");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, text4) == 223, "text4");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, reserved_288) == 288, "reserved_288");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, text5) == 353, "text5");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, reserved_418) == 418, "reserved_418");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, capacity1) == 424, "capacity1");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, capacity2) == 432, "capacity2");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, capacity3) == 440, "capacity3");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, capacity4) == 448, "capacity4");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, capacity5) == 456, "capacity5");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, capacity6) == 464, "capacity6");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, count) == 472, "count");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, percentage) == 476, "percentage");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, security_state) == 480, "security_state");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, health_state) == 484, "health_state");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, reserved_485) == 485, "reserved_485");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, extra_kind) == 497, "extra_kind");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, reserved_498) == 498, "reserved_498");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, text6) == 516, "text6");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, text7) == 581, "text7");
ORV3_STATIC_ASSERT(offsetof(inventory_db_memory_t, reserved_646) == 646, "reserved_646");
ORV3_STATIC_ASSERT(sizeof(inventory_db_memory_t) == INVENTORY_DB_MEMORY_SIZE, "656 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_adapter_t, adapterKey) == 0, "adapterKey");
ORV3_STATIC_ASSERT(offsetof(inventory_db_adapter_t, adapterNumber) == 4, "adapterNumber");
ORV3_STATIC_ASSERT(offsetof(inventory_db_adapter_t, slotNo) == 6, "slotNo");
ORV3_STATIC_ASSERT(offsetof(inventory_db_adapter_t, reserved_8) == 8, "reserved_8");
ORV3_STATIC_ASSERT(offsetof(inventory_db_adapter_t, cardInterface) == 10, "cardInterface");
ORV3_STATIC_ASSERT(offsetof(inventory_db_adapter_t, adapterProdName) == 75, "adapterProdName");
ORV3_STATIC_ASSERT(offsetof(inventory_db_adapter_t, oobSupported) == 204, "oobSupported");
ORV3_STATIC_ASSERT(offsetof(inventory_db_adapter_t, location) == 205, "location");
ORV3_STATIC_ASSERT(offsetof(inventory_db_adapter_t, reserved_206) == 206, "reserved_206");
ORV3_STATIC_ASSERT(sizeof(inventory_db_adapter_t) == INVENTORY_DB_ADAPTER_SIZE, "212 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_func_key_t, adapterNumber) == 0, "adapterNumber");
ORV3_STATIC_ASSERT(offsetof(inventory_db_func_key_t, slotNo) == 2, "slotNo");
ORV3_STATIC_ASSERT(offsetof(inventory_db_func_key_t, adapterName) == 4, "adapterName");
ORV3_STATIC_ASSERT(offsetof(inventory_db_func_key_t, funcKey) == 160, "funcKey");
ORV3_STATIC_ASSERT(offsetof(inventory_db_func_key_t, funcType) == 164, "funcType");
ORV3_STATIC_ASSERT(offsetof(inventory_db_func_key_t, cardName) == 168, "cardName");
ORV3_STATIC_ASSERT(offsetof(inventory_db_func_key_t, oobSupported) == 321, "oobSupported");
ORV3_STATIC_ASSERT(sizeof(inventory_db_func_key_t) == INVENTORY_DB_FUNC_KEY_SIZE, "324 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, bus) == 9, "bus");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, device) == 10, "device");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, function) == 11, "function");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, vendor_id) == 12, "vendor_id");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, device_id) == 14, "device_id");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, reserved_16) == 16, "reserved_16");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, revision_id) == 20, "revision_id");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, reserved_21) == 21, "reserved_21");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, subsystem_vendor_id) == 22, "subsystem_vendor_id");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, subsystem_device_id) == 24, "subsystem_device_id");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, reserved_26) == 26, "reserved_26");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, slot_designation) == 29, "slot_designation");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, reserved_94) == 94, "reserved_94");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, hot_plug) == 96, "hot_plug");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, reserved_97) == 97, "reserved_97");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, func_type) == 100, "func_type");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_info_t, reserved_104) == 104, "reserved_104");
ORV3_STATIC_ASSERT(sizeof(inventory_db_pci_info_t) == INVENTORY_DB_PCI_INFO_SIZE, "108 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_vpd_t, uuid) == 0, "uuid");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_vpd_t, product_name) == 33, "product_name");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_vpd_t, manufacturer) == 162, "manufacturer");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_vpd_t, serial_number) == 195, "serial_number");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_vpd_t, part_number) == 212, "part_number");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_vpd_t, model) == 229, "model");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_vpd_t, fru_number) == 262, "fru_number");
ORV3_STATIC_ASSERT(sizeof(inventory_db_pci_vpd_t) == INVENTORY_DB_PCI_VPD_SIZE, "279 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_misc_t, fod_uid) == 0, "fod_uid");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_misc_t, reserved_33) == 33, "reserved_33");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_misc_t, max_data_width) == 34, "max_data_width");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_misc_t, reserved_36) == 36, "reserved_36");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_misc_t, package_type) == 105, "package_type");
ORV3_STATIC_ASSERT(offsetof(inventory_db_pci_misc_t, reserved_170) == 170, "reserved_170");
ORV3_STATIC_ASSERT(sizeof(inventory_db_pci_misc_t) == INVENTORY_DB_PCI_MISC_SIZE, "172 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_firmware_t, name) == 0, "name");
ORV3_STATIC_ASSERT(offsetof(inventory_db_firmware_t, version) == 33, "version");
ORV3_STATIC_ASSERT(offsetof(inventory_db_firmware_t, description) == 66, "description");
ORV3_STATIC_ASSERT(offsetof(inventory_db_firmware_t, release_date) == 195, "release_date");
ORV3_STATIC_ASSERT(offsetof(inventory_db_firmware_t, classification) == 214, "classification");
ORV3_STATIC_ASSERT(offsetof(inventory_db_firmware_t, manufacturer) == 279, "manufacturer");
ORV3_STATIC_ASSERT(offsetof(inventory_db_firmware_t, software_id) == 312, "software_id");
ORV3_STATIC_ASSERT(sizeof(inventory_db_firmware_t) == INVENTORY_DB_FIRMWARE_SIZE, "330 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_network_info_t, max_port_count) == 2, "max_port_count");
ORV3_STATIC_ASSERT(sizeof(inventory_db_network_info_t) == INVENTORY_DB_NETWORK_INFO_SIZE, "4 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_physical_port_t, logical_port_count) == 4, "logical_port_count");
ORV3_STATIC_ASSERT(offsetof(inventory_db_physical_port_t, burned_in_address) == 6, "burned_in_address");
ORV3_STATIC_ASSERT(offsetof(inventory_db_physical_port_t, connector) == 71, "connector");
ORV3_STATIC_ASSERT(offsetof(inventory_db_physical_port_t, link_status) == 136, "link_status");
ORV3_STATIC_ASSERT(offsetof(inventory_db_physical_port_t, link_speed) == 140, "link_speed");
ORV3_STATIC_ASSERT(offsetof(inventory_db_physical_port_t, reserved_144) == 144, "reserved_144");
ORV3_STATIC_ASSERT(sizeof(inventory_db_physical_port_t) == INVENTORY_DB_PHYSICAL_PORT_SIZE, "152 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, max_data_size) == 0, "max_data_size");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, permanent_address) == 4, "permanent_address");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, network_address) == 69, "network_address");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, physical_port_number) == 134, "physical_port_number");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, port_number) == 136, "port_number");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, reserved_138) == 138, "reserved_138");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, max_speed) == 144, "max_speed");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, reserved_152) == 152, "reserved_152");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, protocol_ethernet) == 154, "protocol_ethernet");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, protocol_fcoe_fc) == 155, "protocol_fcoe_fc");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, protocol_iscsi) == 156, "protocol_iscsi");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, fcoe_permanent_address) == 157, "fcoe_permanent_address");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, fcoe_network_address) == 174, "fcoe_network_address");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, reserved_191) == 191, "reserved_191");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, target_relative_port) == 196, "target_relative_port");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, link_technology) == 200, "link_technology");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, vnic_mode) == 265, "vnic_mode");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, protocol_type) == 330, "protocol_type");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, connection_type) == 395, "connection_type");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, role) == 460, "role");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_t, reserved_525) == 525, "reserved_525");
ORV3_STATIC_ASSERT(sizeof(inventory_db_logical_port_t) == INVENTORY_DB_LOGICAL_PORT_SIZE, "528 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_device_t, video_memory_type) == 45, "video_memory_type");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_device_t, video_memory_size) == 110, "video_memory_size");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_device_t, reserved_175) == 175, "reserved_175");
ORV3_STATIC_ASSERT(sizeof(inventory_db_gpu_device_t) == INVENTORY_DB_GPU_DEVICE_SIZE, "176 bytes");

ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, chip_name) == 0, "chip_name");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, manufacturer) == 33, "manufacturer");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, model) == 50, "model");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, part_number) == 67, "part_number");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, fru_number) == 84, "fru_number");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, serial_number) == 101, "serial_number");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, family) == 118, "family");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, unique_id) == 151, "unique_id");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, form_factor) == 168, "form_factor");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, reserved_233) == 233, "reserved_233");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, chip_number) == 234, "chip_number");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, cores_enabled) == 235, "cores_enabled");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, ext_bus_clock) == 236, "ext_bus_clock");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, max_clock) == 240, "max_clock");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, address_width) == 244, "address_width");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_t, data_width) == 246, "data_width");
ORV3_STATIC_ASSERT(sizeof(inventory_db_gpu_chip_t) == INVENTORY_DB_GPU_CHIP_SIZE, "248 bytes");

/* Lists: a 32-bit count and an array of that many elements (may be null when
 * the count is 0). On the controller a list is 8 bytes; on a wider host the
 * pointer widens and aligns. */
typedef struct inventory_db_id_list {
    uint32_t count;
    uint32_t *ids;
} inventory_db_id_list_t;

/* Function records of one class, in adapter order (a heap array the
 * caller frees with one free). */
typedef struct inventory_db_func_key_list {
    uint32_t count;
    inventory_db_func_key_t *keyList;
} inventory_db_func_key_list_t;

typedef struct inventory_db_firmware_list {
    uint32_t count;
    inventory_db_firmware_t *firmware;
} inventory_db_firmware_list_t;

typedef struct inventory_db_physical_port_list {
    uint32_t count;
    inventory_db_physical_port_t *ports;
} inventory_db_physical_port_list_t;

typedef struct inventory_db_logical_port_list {
    uint32_t count;
    inventory_db_logical_port_t *ports;
} inventory_db_logical_port_list_t;

typedef struct inventory_db_gpu_chip_list {
    uint32_t count;
    inventory_db_gpu_chip_t *chips;
} inventory_db_gpu_chip_list_t;

ORV3_STATIC_ASSERT(offsetof(inventory_db_id_list_t, ids) == sizeof(void *), "ids after count");
ORV3_STATIC_ASSERT(sizeof(inventory_db_id_list_t) == 2 * sizeof(void *), "8 bytes on the controller");
ORV3_STATIC_ASSERT(offsetof(inventory_db_firmware_list_t, firmware) == sizeof(void *), "firmware after count");
ORV3_STATIC_ASSERT(sizeof(inventory_db_firmware_list_t) == 2 * sizeof(void *), "8 bytes on the controller");
ORV3_STATIC_ASSERT(offsetof(inventory_db_physical_port_list_t, ports) == sizeof(void *), "ports after count");
ORV3_STATIC_ASSERT(sizeof(inventory_db_physical_port_list_t) == 2 * sizeof(void *), "8 bytes on the controller");
ORV3_STATIC_ASSERT(offsetof(inventory_db_logical_port_list_t, ports) == sizeof(void *), "ports after count");
ORV3_STATIC_ASSERT(sizeof(inventory_db_logical_port_list_t) == 2 * sizeof(void *), "8 bytes on the controller");
ORV3_STATIC_ASSERT(offsetof(inventory_db_func_key_list_t, keyList) == sizeof(void *), "keyList after count");
ORV3_STATIC_ASSERT(sizeof(inventory_db_func_key_list_t) == 2 * sizeof(void *), "8 bytes on the controller");
ORV3_STATIC_ASSERT(offsetof(inventory_db_gpu_chip_list_t, chips) == sizeof(void *), "chips after count");
ORV3_STATIC_ASSERT(sizeof(inventory_db_gpu_chip_list_t) == 2 * sizeof(void *), "8 bytes on the controller");

/* Persistent memory: the ids of all persistent-memory modules (the id array
 * stays the database's; callers do not free it), and one module's record. */
int32_t orvdb_get_AEP_memory_list(inventory_db_id_list_t *list);
int32_t orvdb_get_memory_by_id(inventory_db_memory_t *memory, uint32_t id);

/* PCI adapters and their functions. */
int32_t orvdb_get_pci_adapter_list(uint32_t *count, inventory_db_adapter_t **adapters);
int32_t orvdb_get_pci_funkey_list(uint32_t adapterKey, inventory_db_id_list_t *funcKeys);
int32_t orvdb_get_pci_function_type(uint32_t funcKey, uint32_t *type);
int32_t orvdb_get_pci_generic_info(uint32_t funcKey, inventory_db_pci_info_t *pciInfo);
int32_t orvdb_get_pci_vpd_info(uint32_t funcKey, inventory_db_pci_vpd_t *vpdInfo);
int32_t orvdb_get_pci_misc_info(uint32_t funcKey, inventory_db_pci_misc_t *miscInfo);
int32_t orvdb_get_pci_firmware_list(uint32_t funcKey, inventory_db_firmware_list_t *list);

/* Network functions. `phyPortNo` is the physical port's 1-based position in
 * the function's physical-port list, the number its logical ports carry in
 * physical_port_number. */
int32_t orvdb_get_network_info(uint32_t funcKey, inventory_db_network_info_t *info);
int32_t orvdb_get_network_physical_port_list(uint32_t funcKey, inventory_db_physical_port_list_t *list);
int32_t orvdb_get_network_logical_port_list2(uint32_t funcKey, uint32_t phyPortNo,
                                             inventory_db_logical_port_list_t *list);

/* GPU functions. */
int32_t orvdb_get_gpu_device_info(uint32_t funcKey, inventory_db_gpu_device_t *info);
int32_t orvdb_get_gpu_chip_list(uint32_t funcKey, inventory_db_gpu_chip_list_t *list);

ORV3_EXTERN_C_END

#endif

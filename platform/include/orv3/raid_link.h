/* RAID link library: out-of-band view of the RAID controllers, drives, storage
 * pools (arrays) and volumes. The caller zeroes a record, stores the id of what
 * it asks about in the record and passes it; the library fills the rest and
 * returns 0 (RAIDLINK_STATUS_SUCCESS). It allocates nothing.
 *
 * The library documents some fields only by where they lie in the record:
 * those keep the name of their byte offset (text_162 starts at byte 162), so
 * that each can be matched with the layout, and mean what the table that
 * serves them shows. */
#ifndef ORV3_RAID_LINK_H
#define ORV3_RAID_LINK_H

#include "orv3/platform_types.h"

ORV3_EXTERN_C_BEGIN

enum {
    RAIDLINK_STATUS_SUCCESS = 0,
    RAIDLINK_STATUS_FAIL = 1,
};

/* Capacities of the fixed lists. */
enum {
    RAID_LINK_MAX_CTRLS = 52,
    RAID_LINK_MAX_CTRL_DISKS = 384,
    RAID_LINK_MAX_ARRAYS = 256,
    RAID_LINK_MAX_ARRAY_DISKS = 256,
    RAID_LINK_MAX_ARRAY_VOLUMES = 128,
    RAID_LINK_MAX_PORTS = 16,
    RAID_LINK_MAX_FW_COMPONENTS = 8,
};

/* Battery type codes of raid_link_ctrl_hw_t.battery_type. */
enum {
    RAID_LINK_BATTERY_NO_BBU = 0,
    RAID_LINK_BATTERY_IBBU = 1,
    RAID_LINK_BATTERY_BBU = 2,
    RAID_LINK_BATTERY_ZCR_LEGACY = 3,
    RAID_LINK_BATTERY_ITBBU3 = 4,
    RAID_LINK_BATTERY_IBBU08 = 5,
    RAID_LINK_BATTERY_TMMC = 6,
};

/* Drive media codes and the unknown rotation speed of raid_link_disk_hw_t. */
enum {
    RAID_LINK_MEDIA_HDD = 0,
    RAID_LINK_MEDIA_SSD = 1,
    RAID_LINK_MEDIA_FLASH = 2,
    RAID_LINK_ROTATION_UNKNOWN = -1,
};

enum {
    RAID_LINK_CTRL_LIST_SIZE = 210,
    RAID_LINK_CTRL_HW_SIZE = 823,
    RAID_LINK_FW_INFO_SIZE = 2749,
    RAID_LINK_FW_COMPONENT_SIZE = 343,
    RAID_LINK_CTRL_PORT_SIZE = 198,
    RAID_LINK_CTRL_PORT_DATA_SIZE = 194,
    RAID_LINK_ARRAY_LIST_SIZE = 1030,
    RAID_LINK_CTRL_DISK_LIST_SIZE = 1544,
    RAID_LINK_DISK_HW_SIZE = 564,
    RAID_LINK_ARRAY_SIZE = 102,
    RAID_LINK_ARRAY_DATA_SIZE = 98,
    RAID_LINK_ARRAY_VOLUME_LIST_SIZE = 518,
    RAID_LINK_ARRAY_DISK_LIST_SIZE = 1030,
    RAID_LINK_VOLUME_SIZE = 145,
};

/* All records are packed; multi-byte fields are little-endian and mostly
 * unaligned. Plain text fields are NUL-padded and may carry blanks; their
 * meaning is the library's, so they are named after their offset. */
#pragma pack(push, 1)

/* Controllers (raidlink_get_ctrl_list). */
typedef struct raid_link_ctrl_list {
    uint16_t count;                         /* 0 */
    uint32_t ctrl_ids[RAID_LINK_MAX_CTRLS]; /* 2 */
} raid_link_ctrl_list_t;

/* Controller hardware (raidlink_get_ctrl_hw_info); caller sets ctrl_id. */
typedef struct raid_link_ctrl_hw {
    char text_0[33];        /* 0 */
    char product_name[129]; /* 33 */
    char text_162[33];      /* 162 */
    char text_195[17];      /* 195 */
    char text_212[33];      /* 212 */
    char text_245[33];      /* 245 */
    char text_278[17];      /* 278 */
    char text_295[17];      /* 295 */
    uint8_t reserved_312[2];
    uint16_t pci_id_314; /* 314 */
    uint8_t reserved_316[2];
    uint16_t pci_id_318;        /* 318 */
    uint8_t slot_number;        /* 320: PCI slot */
    uint8_t byte_321;           /* 321 */
    uint8_t byte_322;           /* 322 */
    uint8_t byte_323;           /* 323 */
    uint8_t battery_present;    /* 324: 1 = present */
    char battery_text_325[129]; /* 325 */
    char battery_text_454[17];  /* 454 */
    char battery_text_471[33];  /* 471 */
    char battery_text_504[33];  /* 504 */
    char battery_text_537[17];  /* 537 */
    uint8_t reserved_554[2];
    uint32_t battery_type;       /* 556: battery type code */
    uint8_t battery_energy_flag; /* 560: energy-based (type 5) */
    uint8_t reserved_561[1];
    uint16_t battery_energy;      /* 562 */
    uint16_t battery_remaining;   /* 564: remaining capacity */
    uint16_t battery_full;        /* 566: full capacity */
    uint16_t battery_voltage_568; /* 568: mV */
    uint16_t battery_voltage_570; /* 570: mV */
    int16_t battery_current;      /* 572: mA */
    uint16_t battery_temperature; /* 574 */
    uint32_t battery_status;      /* 576: battery status code */
    uint32_t cache_module_status; /* 580: cache module status code */
    char text_584[33];            /* 584 */
    uint8_t reserved_617[3];
    uint64_t cache_size_mb; /* 620 */
    uint8_t reserved_628[36];
    char text_664[129]; /* 664 */
    uint8_t reserved_793[8];
    uint32_t value_801; /* 801 */
    uint8_t reserved_805[6];
    uint32_t zel_flag; /* 811: 1 = set */
    uint32_t flag_815; /* 815 */
    uint32_t ctrl_id;  /* 819: controller identifier */
} raid_link_ctrl_hw_t;

/* One firmware component of a controller or a drive. */
typedef struct raid_link_fw_component {
    char text_0[33];    /* +0 */
    char name[65];      /* +33: component name */
    char text_98[33];   /* +98 */
    char text_131[129]; /* +131 */
    char text_260[17];  /* +260 */
    uint8_t reserved_277[66];
} raid_link_fw_component_t;

/* Firmware of a controller (raidlink_get_ctrl_fw_info) or a drive
 * (raidlink_get_disk_fw_info); caller sets id. */
typedef struct raid_link_fw_info {
    uint8_t count;                                                    /* 0 */
    raid_link_fw_component_t components[RAID_LINK_MAX_FW_COMPONENTS]; /* 1 + 343 * i */
    uint32_t id;                                                      /* 2745 */
} raid_link_fw_info_t;

/* One controller port. */
typedef struct raid_link_port {
    uint32_t address_low;  /* +0 */
    uint32_t address_high; /* +4 */
    uint8_t reserved_8[4];
} raid_link_port_t;

/* Controller ports (raidlink_get_ctrl_port_info): 194 bytes of data followed
 * by the controller identifier, which the caller sets. */
typedef struct raid_link_ctrl_port {
    uint8_t count; /* 0 */
    uint8_t reserved_1[1];
    raid_link_port_t ports[RAID_LINK_MAX_PORTS]; /* 2 + 12 * i */
    uint32_t ctrl_id;                            /* 194 */
} raid_link_ctrl_port_t;

/* Storage pools of a controller (raidlink_get_array_list). */
typedef struct raid_link_array_list {
    uint16_t count;                           /* 0 */
    uint32_t array_ids[RAID_LINK_MAX_ARRAYS]; /* 2 */
    uint32_t ctrl_id;                         /* 1026 */
} raid_link_array_list_t;

/* Drives of a controller (raidlink_get_ctrl_disk_list). */
typedef struct raid_link_ctrl_disk_list {
    uint16_t count;                              /* 0 */
    uint32_t disk_ids[RAID_LINK_MAX_CTRL_DISKS]; /* 2 */
    uint32_t ctrl_id;                            /* 1538 */
    uint8_t reserved_1542[2];
} raid_link_ctrl_disk_list_t;

/* Drive hardware (raidlink_get_disk_hw_info); caller sets disk_id. */
typedef struct raid_link_disk_hw {
    uint8_t reserved_0[33];
    char text_33[129]; /* 33 */
    char text_162[33]; /* 162 */
    char text_195[17]; /* 195 */
    char text_212[33]; /* 212 */
    char text_245[33]; /* 245 */
    uint8_t reserved_278[33];
    char text_311[33]; /* 311 */
    char text_344[33]; /* 344 */
    uint8_t reserved_377[33];
    uint8_t flags;       /* 410: bits 0 and 2 are published */
    uint16_t number_411; /* 411 */
    uint16_t id_413;     /* 413 */
    uint8_t reserved_415[4];
    uint32_t speed; /* 419: speed code */
    uint8_t reserved_423[4];
    uint16_t block_size;  /* 427 */
    uint64_t block_count; /* 429 */
    uint8_t reserved_437[1];
    uint16_t drive_number; /* 438 */
    uint8_t reserved_440[2];
    uint32_t media_type;     /* 442: RAID_LINK_MEDIA_* */
    uint32_t interface_type; /* 446 */
    uint16_t temperature;    /* 450 */
    uint32_t state;          /* 452: drive state code */
    uint32_t health;         /* 456: health code */
    uint32_t zel_flag;       /* 460: 1 = set */
    uint8_t reserved_464[65];
    uint8_t foreign;          /* 529 */
    uint8_t dedicated_spare;  /* 530 */
    uint32_t ready_to_remove; /* 531 */
    int32_t rotation_speed;   /* 535: RAID_LINK_ROTATION_UNKNOWN when not known */
    uint32_t counter_539;     /* 539 */
    uint32_t counter_543;     /* 543 */
    uint32_t counter_547;     /* 547 */
    uint8_t remaining_life;   /* 551: percent, solid-state drives */
    uint8_t reserved_552[8];
    uint32_t disk_id; /* 560: drive identifier */
} raid_link_disk_hw_t;

/* Storage pool (raidlink_get_array_info): 98 bytes of data followed by the
 * pool identifier, which the caller sets. */
typedef struct raid_link_array {
    uint32_t pool_number; /* 0 */
    uint8_t reserved_4[2];
    uint8_t raid_level_part1; /* 6 */
    uint8_t raid_level_part2; /* 7 */
    uint8_t raid_level_part3; /* 8 */
    uint64_t total_size;      /* 9: bytes */
    uint64_t free_size;       /* 17: bytes */
    uint8_t reserved_25[73];
    uint32_t array_id; /* 98 */
} raid_link_array_t;

/* Volumes of a pool (raidlink_get_array_volume_list). */
typedef struct raid_link_array_volume_list {
    uint16_t count;                                   /* 0 */
    uint32_t volume_ids[RAID_LINK_MAX_ARRAY_VOLUMES]; /* 2 */
    uint32_t array_id;                                /* 514 */
} raid_link_array_volume_list_t;

/* Drives of a pool (raidlink_get_array_disk_list). */
typedef struct raid_link_array_disk_list {
    uint16_t count;                               /* 0 */
    uint32_t disk_ids[RAID_LINK_MAX_ARRAY_DISKS]; /* 2 */
    uint32_t array_id;                            /* 1026 */
} raid_link_array_disk_list_t;

/* Volume (raidlink_get_volume_info); caller sets volume_id. */
typedef struct raid_link_volume {
    uint32_t volume_number; /* 0 */
    uint8_t reserved_4[4];
    char name[33]; /* 8 */
    uint8_t reserved_41[8];
    uint32_t stripe_size; /* 49: bytes */
    uint8_t bootable;     /* 53: 1 yes, 0 no */
    uint16_t block_size;  /* 54 */
    uint64_t block_count; /* 56 */
    uint32_t state;       /* 64: volume state code */
    uint8_t reserved_68[69];
    uint32_t volume_id; /* 137 */
    uint8_t reserved_141[4];
} raid_link_volume_t;

#pragma pack(pop)

ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_list_t, count) == 0, "count at 0");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_list_t, ctrl_ids) == 2, "ctrl_ids at 2");
ORV3_STATIC_ASSERT(sizeof(raid_link_ctrl_list_t) == RAID_LINK_CTRL_LIST_SIZE, "210 bytes");

ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, text_0) == 0, "text_0 at 0");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, product_name) == 33, "product_name at 33");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, text_162) == 162, "text_162");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, text_195) == 195, "text_195");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, text_212) == 212, "text_212");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, text_245) == 245, "text_245");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, text_278) == 278, "text_278");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, text_295) == 295, "text_295");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, reserved_312) == 312, "reserved_312");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, pci_id_314) == 314, "pci_id_314");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, reserved_316) == 316, "reserved_316");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, pci_id_318) == 318, "pci_id_318");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, slot_number) == 320, "slot_number");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, byte_321) == 321, "byte_321");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, byte_322) == 322, "byte_322");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, byte_323) == 323, "byte_323");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_present) == 324, "battery_present");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_text_325) == 325, "battery_text_325");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_text_454) == 454, "battery_text_454");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_text_471) == 471, "battery_text_471");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_text_504) == 504, "battery_text_504");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_text_537) == 537, "battery_text_537");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, reserved_554) == 554, "reserved_554");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_type) == 556, "battery_type");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_energy_flag) == 560, "battery_energy_flag");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, reserved_561) == 561, "reserved_561");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_energy) == 562, "battery_energy");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_remaining) == 564, "battery_remaining");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_full) == 566, "battery_full");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_voltage_568) == 568, "battery_voltage_568");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_voltage_570) == 570, "battery_voltage_570");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_current) == 572, "battery_current");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_temperature) == 574, "battery_temperature");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, battery_status) == 576, "battery_status");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, cache_module_status) == 580, "cache_module_status");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, text_584) == 584, "text_584");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, reserved_617) == 617, "reserved_617");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, cache_size_mb) == 620, "cache_size_mb");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, reserved_628) == 628, "reserved_628");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, text_664) == 664, "text_664");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, reserved_793) == 793, "reserved_793");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, value_801) == 801, "value_801");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, reserved_805) == 805, "reserved_805");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, zel_flag) == 811, "zel_flag");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, flag_815) == 815, "flag_815");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_hw_t, ctrl_id) == 819, "ctrl_id at 819");
ORV3_STATIC_ASSERT(sizeof(raid_link_ctrl_hw_t) == RAID_LINK_CTRL_HW_SIZE, "823 bytes");

ORV3_STATIC_ASSERT(offsetof(raid_link_fw_component_t, text_0) == 0, "text_0 at +0");
ORV3_STATIC_ASSERT(offsetof(raid_link_fw_component_t, name) == 33, "name at +33");
ORV3_STATIC_ASSERT(offsetof(raid_link_fw_component_t, text_98) == 98, "text_98 at +98");
ORV3_STATIC_ASSERT(offsetof(raid_link_fw_component_t, text_131) == 131, "text_131 at +131");
ORV3_STATIC_ASSERT(offsetof(raid_link_fw_component_t, text_260) == 260, "text_260 at +260");
ORV3_STATIC_ASSERT(offsetof(raid_link_fw_component_t, reserved_277) == 277, "reserved_277 at +277");
ORV3_STATIC_ASSERT(sizeof(raid_link_fw_component_t) == RAID_LINK_FW_COMPONENT_SIZE, "343 bytes");
ORV3_STATIC_ASSERT(offsetof(raid_link_fw_info_t, count) == 0, "count at 0");
ORV3_STATIC_ASSERT(offsetof(raid_link_fw_info_t, components) == 1, "components at 1");
ORV3_STATIC_ASSERT(offsetof(raid_link_fw_info_t, id) == 2745, "id at 2745");
ORV3_STATIC_ASSERT(sizeof(raid_link_fw_info_t) == RAID_LINK_FW_INFO_SIZE, "2749 bytes");

ORV3_STATIC_ASSERT(offsetof(raid_link_port_t, address_low) == 0, "address_low at +0");
ORV3_STATIC_ASSERT(offsetof(raid_link_port_t, address_high) == 4, "address_high at +4");
ORV3_STATIC_ASSERT(sizeof(raid_link_port_t) == 12, "12-byte ports");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_port_t, count) == 0, "count at 0");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_port_t, ports) == 2, "ports at 2");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_port_t, ctrl_id) == RAID_LINK_CTRL_PORT_DATA_SIZE, "ctrl_id at 194");
ORV3_STATIC_ASSERT(sizeof(raid_link_ctrl_port_t) == RAID_LINK_CTRL_PORT_SIZE, "198 bytes");

ORV3_STATIC_ASSERT(offsetof(raid_link_array_list_t, count) == 0, "count at 0");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_list_t, array_ids) == 2, "array_ids at 2");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_list_t, ctrl_id) == 1026, "ctrl_id at 1026");
ORV3_STATIC_ASSERT(sizeof(raid_link_array_list_t) == RAID_LINK_ARRAY_LIST_SIZE, "1030 bytes");

ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_disk_list_t, count) == 0, "count at 0");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_disk_list_t, disk_ids) == 2, "disk_ids at 2");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_disk_list_t, ctrl_id) == 1538, "ctrl_id at 1538");
ORV3_STATIC_ASSERT(offsetof(raid_link_ctrl_disk_list_t, reserved_1542) == 1542, "reserved_1542");
ORV3_STATIC_ASSERT(sizeof(raid_link_ctrl_disk_list_t) == RAID_LINK_CTRL_DISK_LIST_SIZE, "1544 bytes");

ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, text_33) == 33, "text_33");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, text_162) == 162, "text_162");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, text_195) == 195, "text_195");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, text_212) == 212, "text_212");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, text_245) == 245, "text_245");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, reserved_278) == 278, "reserved_278");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, text_311) == 311, "text_311");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, text_344) == 344, "text_344");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, reserved_377) == 377, "reserved_377");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, flags) == 410, "flags");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, number_411) == 411, "number_411");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, id_413) == 413, "id_413");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, reserved_415) == 415, "reserved_415");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, speed) == 419, "speed");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, reserved_423) == 423, "reserved_423");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, block_size) == 427, "block_size");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, block_count) == 429, "block_count");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, reserved_437) == 437, "reserved_437");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, drive_number) == 438, "drive_number");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, reserved_440) == 440, "reserved_440");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, media_type) == 442, "media_type");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, interface_type) == 446, "interface_type");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, temperature) == 450, "temperature");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, state) == 452, "state");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, health) == 456, "health");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, zel_flag) == 460, "zel_flag");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, reserved_464) == 464, "reserved_464");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, foreign) == 529, "foreign");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, dedicated_spare) == 530, "dedicated_spare");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, ready_to_remove) == 531, "ready_to_remove");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, rotation_speed) == 535, "rotation_speed");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, counter_539) == 539, "counter_539");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, counter_543) == 543, "counter_543");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, counter_547) == 547, "counter_547");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, remaining_life) == 551, "remaining_life");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, reserved_552) == 552, "reserved_552");
ORV3_STATIC_ASSERT(offsetof(raid_link_disk_hw_t, disk_id) == 560, "disk_id at 560");
ORV3_STATIC_ASSERT(sizeof(raid_link_disk_hw_t) == RAID_LINK_DISK_HW_SIZE, "564 bytes");

ORV3_STATIC_ASSERT(offsetof(raid_link_array_t, pool_number) == 0, "pool_number");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_t, raid_level_part1) == 6, "raid_level_part1");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_t, raid_level_part2) == 7, "raid_level_part2");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_t, raid_level_part3) == 8, "raid_level_part3");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_t, total_size) == 9, "total_size");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_t, free_size) == 17, "free_size");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_t, reserved_25) == 25, "reserved_25");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_t, array_id) == RAID_LINK_ARRAY_DATA_SIZE, "array_id at 98");
ORV3_STATIC_ASSERT(sizeof(raid_link_array_t) == RAID_LINK_ARRAY_SIZE, "102 bytes");

ORV3_STATIC_ASSERT(offsetof(raid_link_array_volume_list_t, count) == 0, "count at 0");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_volume_list_t, volume_ids) == 2, "volume_ids at 2");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_volume_list_t, array_id) == 514, "array_id at 514");
ORV3_STATIC_ASSERT(sizeof(raid_link_array_volume_list_t) == RAID_LINK_ARRAY_VOLUME_LIST_SIZE, "518 bytes");

ORV3_STATIC_ASSERT(offsetof(raid_link_array_disk_list_t, count) == 0, "count at 0");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_disk_list_t, disk_ids) == 2, "disk_ids at 2");
ORV3_STATIC_ASSERT(offsetof(raid_link_array_disk_list_t, array_id) == 1026, "array_id at 1026");
ORV3_STATIC_ASSERT(sizeof(raid_link_array_disk_list_t) == RAID_LINK_ARRAY_DISK_LIST_SIZE, "1030 bytes");

ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, volume_number) == 0, "volume_number");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, reserved_4) == 4, "reserved_4");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, name) == 8, "name at 8");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, reserved_41) == 41, "reserved_41");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, stripe_size) == 49, "stripe_size");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, bootable) == 53, "bootable");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, block_size) == 54, "block_size");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, block_count) == 56, "block_count");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, state) == 64, "state");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, reserved_68) == 68, "reserved_68");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, volume_id) == 137, "volume_id at 137");
ORV3_STATIC_ASSERT(offsetof(raid_link_volume_t, reserved_141) == 141, "reserved_141");
ORV3_STATIC_ASSERT(sizeof(raid_link_volume_t) == RAID_LINK_VOLUME_SIZE, "145 bytes");

/* Lists and per-object queries. */
int32_t raidlink_get_ctrl_list(raid_link_ctrl_list_t *list);
int32_t raidlink_get_ctrl_hw_info(raid_link_ctrl_hw_t *hw);
int32_t raidlink_get_ctrl_fw_info(raid_link_fw_info_t *fw);
int32_t raidlink_get_ctrl_port_info(raid_link_ctrl_port_t *ports);
int32_t raidlink_get_array_list(raid_link_array_list_t *list);
int32_t raidlink_get_ctrl_disk_list(raid_link_ctrl_disk_list_t *list);
int32_t raidlink_get_disk_hw_info(raid_link_disk_hw_t *hw);
int32_t raidlink_get_disk_fw_info(raid_link_fw_info_t *fw);
int32_t raidlink_get_array_info(raid_link_array_t *array);
int32_t raidlink_get_array_volume_list(raid_link_array_volume_list_t *list);
int32_t raidlink_get_array_disk_list(raid_link_array_disk_list_t *list);
int32_t raidlink_get_volume_info(raid_link_volume_t *volume);

/* RAID level of a pool's three level bytes, and its static display text. */
int32_t raidlink_db_prl2raidlevel(uint8_t part1, uint8_t part2, uint8_t part3);
const char *raidlink_raidlevel_string(int32_t level);

ORV3_EXTERN_C_END

#endif

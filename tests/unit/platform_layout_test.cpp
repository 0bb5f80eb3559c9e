// The platform records decode bytes laid down at their documented offsets:
// each test writes little-endian fields into a raw byte image, copies the
// image into the record type and reads the fields back by name.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "orv3/platform.h"

namespace {

using Bytes = std::vector<uint8_t>;

void put_le(Bytes &b, size_t off, uint64_t value, size_t width)
{
    for (size_t i = 0; i < width; ++i) {
        b.at(off + i) = static_cast<uint8_t>(value >> (8 * i));
    }
}

void put_text(Bytes &b, size_t off, const std::string &text)
{
    ASSERT_LE(off + text.size() + 1, b.size());
    std::memcpy(b.data() + off, text.c_str(), text.size() + 1);
}

// Copies a byte image into a heap record (some records are several KB).
template <typename T> std::unique_ptr<T> decode(const Bytes &b, size_t off = 0)
{
    auto rec = std::make_unique<T>();
    std::memcpy(static_cast<void *>(rec.get()), b.data() + off, sizeof(T));
    return rec;
}

} // namespace

TEST(PlatformLayout, ActiveEventSeverityAndMessage)
{
    // Two records back to back: the second one is read at 5676.
    Bytes b(2 * EVENT_DB_ACTIVE_EVENT_SIZE, 0xAA);
    put_le(b, 2212, EVENT_DB_SEVERITY_WARNING, 4);
    put_text(b, 4558, "Fan 1 failed");
    put_le(b, EVENT_DB_ACTIVE_EVENT_SIZE + 2212, EVENT_DB_SEVERITY_ERROR, 4);
    put_text(b, EVENT_DB_ACTIVE_EVENT_SIZE + 4558, "PSU 2 lost input");

    std::vector<event_db_active_event_t> recs(2);
    std::memcpy(static_cast<void *>(recs.data()), b.data(), b.size());
    const int32_t sev0 = recs[0].enumLogServ;
    const int32_t sev1 = recs[1].enumLogServ;
    EXPECT_EQ(sev0, 2);
    EXPECT_EQ(sev1, 3);
    EXPECT_EQ(std::string(recs[0].message), "Fan 1 failed");
    EXPECT_EQ(std::string(recs[1].message), "PSU 2 lost input");
}

TEST(PlatformLayout, SessionRecordTexts)
{
    Bytes b(SESSION_MANAGER_INFO_SIZE, 0);
    put_text(b, 0, "Web");
    put_text(b, 68, "operator");
    put_text(b, 132, "192.0.2.7");
    auto rec = decode<session_manager_info_t>(b);
    EXPECT_EQ(std::string(rec->access), "Web");
    EXPECT_EQ(std::string(rec->user_name), "operator");
    EXPECT_EQ(std::string(rec->ip_address), "192.0.2.7");
}

TEST(PlatformLayout, ChangeHistoryRecords)
{
    Bytes b(2 * CHANGE_HISTORY_RECORD_SIZE, 0);
    put_text(b, 0, "BMC firmware updated");
    put_text(b, 128, "1.20 -> 1.30");
    put_le(b, 192, CHANGE_HISTORY_CATEGORY_FIRMWARE, 4);
    put_le(b, CHANGE_HISTORY_RECORD_SIZE + 192, 7, 4);
    std::vector<change_history_record_t> recs(2);
    std::memcpy(static_cast<void *>(recs.data()), b.data(), b.size());
    EXPECT_EQ(std::string(recs[0].text1), "BMC firmware updated");
    EXPECT_EQ(std::string(recs[0].text2), "1.20 -> 1.30");
    const uint32_t c0 = recs[0].category;
    const uint32_t c1 = recs[1].category;
    EXPECT_EQ(c0, 0u);
    EXPECT_EQ(c1, 7u);
}

TEST(PlatformLayout, RaidControllerListCountAndIds)
{
    Bytes b(RAID_LINK_CTRL_LIST_SIZE, 0);
    put_le(b, 0, 3, 2);
    put_le(b, 2, 0x11223344u, 4);
    put_le(b, 6, 7, 4);
    put_le(b, 10, 0xFFFFFFFEu, 4);
    put_le(b, 2 + 4 * 51, 99, 4); // last slot
    auto list = decode<raid_link_ctrl_list_t>(b);
    const uint16_t count = list->count;
    const uint32_t id0 = list->ctrl_ids[0];
    const uint32_t id1 = list->ctrl_ids[1];
    const uint32_t id2 = list->ctrl_ids[2];
    const uint32_t id51 = list->ctrl_ids[RAID_LINK_MAX_CTRLS - 1];
    EXPECT_EQ(count, 3);
    EXPECT_EQ(id0, 0x11223344u);
    EXPECT_EQ(id1, 7u);
    EXPECT_EQ(id2, 0xFFFFFFFEu);
    EXPECT_EQ(id51, 99u);
}

TEST(PlatformLayout, RaidControllerHardware)
{
    Bytes b(RAID_LINK_CTRL_HW_SIZE, 0);
    put_text(b, 33, "  RAID 940-8i  ");
    put_le(b, 314, 0x1000, 2);
    put_le(b, 320, 5, 1);
    put_le(b, 324, 1, 1);
    put_le(b, 556, 2, 4);
    put_le(b, 564, 800, 2);
    put_le(b, 566, 1000, 2);
    put_le(b, 572, static_cast<uint16_t>(-120), 2);
    put_le(b, 620, 8192, 8);
    put_le(b, 811, 1, 4);
    put_le(b, 819, 42, 4);
    auto hw = decode<raid_link_ctrl_hw_t>(b);
    EXPECT_EQ(std::string(hw->product_name), "  RAID 940-8i  ");
    const uint16_t pci = hw->pci_id_314;
    const int16_t current = hw->battery_current;
    const uint16_t remaining = hw->battery_remaining;
    const uint16_t full = hw->battery_full;
    const uint32_t type = hw->battery_type;
    const uint64_t cache = hw->cache_size_mb;
    const uint32_t zel = hw->zel_flag;
    const uint32_t id = hw->ctrl_id;
    EXPECT_EQ(pci, 0x1000);
    EXPECT_EQ(hw->slot_number, 5);
    EXPECT_EQ(hw->battery_present, 1);
    EXPECT_EQ(type, 2u);
    EXPECT_EQ(remaining, 800);
    EXPECT_EQ(full, 1000);
    EXPECT_EQ(current, -120);
    EXPECT_EQ(cache, 8192u);
    EXPECT_EQ(zel, 1u);
    EXPECT_EQ(id, 42u);
}

TEST(PlatformLayout, RaidFirmwareComponentsAndPorts)
{
    Bytes fw(RAID_LINK_FW_INFO_SIZE, 0);
    put_le(fw, 0, 2, 1);
    put_text(fw, 1 + 33, "BIOS");
    put_text(fw, 1 + 343 + 33, "Firmware");
    put_text(fw, 1 + 343 + 260, "2024-01-02");
    put_le(fw, 2745, 9, 4);
    auto f = decode<raid_link_fw_info_t>(fw);
    EXPECT_EQ(f->count, 2);
    EXPECT_EQ(std::string(f->components[0].name), "BIOS");
    EXPECT_EQ(std::string(f->components[1].name), "Firmware");
    EXPECT_EQ(std::string(f->components[1].text_260), "2024-01-02");
    const uint32_t fid = f->id;
    EXPECT_EQ(fid, 9u);

    Bytes pb(RAID_LINK_CTRL_PORT_SIZE, 0);
    put_le(pb, 0, 2, 1);
    put_le(pb, 2 + 12, 0x89ABCDEFu, 4);
    put_le(pb, 6 + 12, 0x01234567u, 4);
    put_le(pb, 194, 3, 4);
    auto p = decode<raid_link_ctrl_port_t>(pb);
    const uint32_t lo = p->ports[1].address_low;
    const uint32_t hi = p->ports[1].address_high;
    const uint32_t pid = p->ctrl_id;
    EXPECT_EQ(p->count, 2);
    EXPECT_EQ((static_cast<uint64_t>(hi) << 32) | lo, 0x0123456789ABCDEFull);
    EXPECT_EQ(pid, 3u);
}

TEST(PlatformLayout, RaidDriveHardware)
{
    Bytes b(RAID_LINK_DISK_HW_SIZE, 0);
    put_le(b, 410, 0x05, 1);
    put_le(b, 427, 512, 2);
    put_le(b, 429, 1953525168ull, 8);
    put_le(b, 438, 4, 2);
    put_le(b, 442, RAID_LINK_MEDIA_SSD, 4);
    put_le(b, 535, 0xFFFFFFFFu, 4);
    put_le(b, 551, 97, 1);
    put_le(b, 560, 1234, 4);
    auto d = decode<raid_link_disk_hw_t>(b);
    const uint16_t block_size = d->block_size;
    const uint64_t block_count = d->block_count;
    const uint16_t number = d->drive_number;
    const uint32_t media = d->media_type;
    const int32_t rpm = d->rotation_speed;
    const uint32_t id = d->disk_id;
    EXPECT_EQ(d->flags, 0x05);
    EXPECT_EQ(block_size, 512);
    EXPECT_EQ(block_count, 1953525168ull);
    EXPECT_EQ(number, 4);
    EXPECT_EQ(media, 1u);
    EXPECT_EQ(rpm, RAID_LINK_ROTATION_UNKNOWN);
    EXPECT_EQ(d->remaining_life, 97);
    EXPECT_EQ(id, 1234u);
}

TEST(PlatformLayout, RaidPoolAndVolume)
{
    Bytes a(RAID_LINK_ARRAY_SIZE, 0);
    put_le(a, 0, 3, 4);
    put_le(a, 6, 1, 1);
    put_le(a, 7, 0, 1);
    put_le(a, 8, 2, 1);
    put_le(a, 9, 1ull << 40, 8);
    put_le(a, 17, 1ull << 39, 8);
    put_le(a, 98, 77, 4);
    auto pool = decode<raid_link_array_t>(a);
    const uint32_t number = pool->pool_number;
    const uint64_t total = pool->total_size;
    const uint64_t free_size = pool->free_size;
    const uint32_t pool_id = pool->array_id;
    EXPECT_EQ(number, 3u);
    EXPECT_EQ(pool->raid_level_part1, 1);
    EXPECT_EQ(pool->raid_level_part3, 2);
    EXPECT_EQ(total, 1ull << 40);
    EXPECT_EQ(free_size, 1ull << 39);
    EXPECT_EQ(pool_id, 77u);

    Bytes v(RAID_LINK_VOLUME_SIZE, 0);
    put_text(v, 8, "boot");
    put_le(v, 49, 65536, 4);
    put_le(v, 53, 1, 1);
    put_le(v, 54, 512, 2);
    put_le(v, 56, 1000, 8);
    put_le(v, 64, 3, 4);
    put_le(v, 137, 5, 4);
    auto vol = decode<raid_link_volume_t>(v);
    const uint32_t stripe = vol->stripe_size;
    const uint16_t bs = vol->block_size;
    const uint64_t bc = vol->block_count;
    const uint32_t state = vol->state;
    const uint32_t vid = vol->volume_id;
    EXPECT_EQ(std::string(vol->name), "boot");
    EXPECT_EQ(stripe, 65536u);
    EXPECT_EQ(vol->bootable, 1);
    EXPECT_EQ(bs, 512);
    EXPECT_EQ(bc, 1000u);
    EXPECT_EQ(state, 3u);
    EXPECT_EQ(vid, 5u);
}

TEST(PlatformLayout, PowerRecords)
{
    Bytes s(POWER_POLICY_SETTING_SIZE, 0);
    put_le(s, 1, POWER_MODE_NON_REDUNDANT, 1);
    put_le(s, 3, 1, 1);
    put_le(s, 4, 1, 1);
    put_le(s, 6, 450, 2);
    put_le(s, 14, 300, 2);
    put_le(s, 18, 65535, 2);
    auto set = decode<power_policy_setting_t>(s);
    const uint16_t cap = set->current_cap;
    const uint16_t soft1 = set->soft_min_cap_domain1;
    const uint16_t max1 = set->max_cap_domain1;
    EXPECT_EQ(set->blade_family, 0);
    EXPECT_EQ(set->redundancy_mode, 2);
    EXPECT_EQ(set->capping_policy, 1);
    EXPECT_EQ(set->cap_domain, 1);
    EXPECT_EQ(cap, 450);
    EXPECT_EQ(soft1, 300);
    EXPECT_EQ(max1, 65535);

    Bytes h(POWER_HISTORY_SAMPLE_SIZE, 0);
    put_le(h, 0, 17, 2);
    put_le(h, 4, 1700000000u, 4);
    for (unsigned i = 0; i < 6; ++i) {
        put_le(h, 8 + 2 * i, 100 + i, 2);
    }
    auto sample = decode<power_history_sample_t>(h);
    const uint16_t n = sample->sample_number;
    const uint32_t t = sample->timestamp;
    const uint16_t d = sample->reading_d, f = sample->reading_f, e = sample->reading_e;
    const uint16_t a = sample->reading_a, c = sample->reading_c, bb = sample->reading_b;
    EXPECT_EQ(n, 17);
    EXPECT_EQ(t, 1700000000u);
    EXPECT_EQ(d, 100);  // offset 8
    EXPECT_EQ(f, 101);  // offset 10
    EXPECT_EQ(e, 102);  // offset 12
    EXPECT_EQ(a, 103);  // offset 14
    EXPECT_EQ(c, 104);  // offset 16
    EXPECT_EQ(bb, 105); // offset 18
}

TEST(PlatformLayout, PersistentMemoryRecord)
{
    Bytes b(INVENTORY_DB_MEMORY_SIZE, 0);
    put_le(b, 24, 2666, 2);
    put_text(b, 28, "first");
    put_text(b, 353, "fifth");
    put_le(b, 424, 1610612736ull, 8);
    put_le(b, 464, 1ull << 31, 8);
    put_le(b, 476, 97, 4);
    put_le(b, 480, 0x12, 4);
    put_le(b, 484, 3, 1);
    put_le(b, 497, INVENTORY_DB_EXTRA_ALL, 1);
    put_text(b, 581, "seventh");
    auto m = decode<inventory_db_memory_t>(b);
    const uint16_t speed = m->speed1;
    const uint64_t cap1 = m->capacity1;
    const uint64_t cap6 = m->capacity6;
    const int32_t pct = m->percentage;
    const uint32_t sec = m->security_state;
    EXPECT_EQ(speed, 2666);
    EXPECT_EQ(std::string(m->text1), "first");
    EXPECT_EQ(std::string(m->text5), "fifth");
    EXPECT_EQ(std::string(m->text7), "seventh");
    EXPECT_EQ(cap1, 1610612736ull);
    EXPECT_EQ(cap6, 1ull << 31);
    EXPECT_EQ(pct, 97);
    EXPECT_EQ(sec, 0x12u);
    EXPECT_EQ(m->health_state, 3);
    EXPECT_EQ(m->extra_kind, 3);
}

TEST(PlatformLayout, AdapterAndLogicalPort)
{
    Bytes b(INVENTORY_DB_ADAPTER_SIZE, 0);
    put_le(b, 0, 0xCAFE, 4);
    put_le(b, 4, 2, 2);
    put_le(b, 6, 7, 2);
    put_text(b, 10, "PCIe x16");
    put_text(b, 75, " Dual Port 25GbE ");
    put_le(b, 204, INVENTORY_DB_OOB_VPD_AND_MISC, 1);
    put_le(b, 205, INVENTORY_DB_LOCATION_ADD_ON, 1);
    auto ad = decode<inventory_db_adapter_t>(b);
    const uint32_t key = ad->adapterKey;
    const uint16_t number = ad->adapterNumber;
    const uint16_t slot = ad->slotNo;
    EXPECT_EQ(key, 0xCAFEu);
    EXPECT_EQ(number, 2);
    EXPECT_EQ(slot, 7);
    EXPECT_EQ(std::string(ad->cardInterface), "PCIe x16");
    EXPECT_EQ(std::string(ad->adapterProdName), " Dual Port 25GbE ");
    EXPECT_EQ(ad->oobSupported, 1);
    EXPECT_EQ(ad->location, 1);

    Bytes l(INVENTORY_DB_LOGICAL_PORT_SIZE, 0);
    put_le(l, 0, 9000, 4);
    put_text(l, 4, "00:11:22:33:44:55");
    put_le(l, 134, 1, 2);
    put_le(l, 136, 2, 2);
    put_le(l, 144, 10000000000ull, 8);
    put_le(l, 156, 1, 1);
    put_le(l, 196, 12, 4);
    put_text(l, 460, "initiator");
    auto lp = decode<inventory_db_logical_port_t>(l);
    const uint32_t mtu = lp->max_data_size;
    const uint16_t phy = lp->physical_port_number;
    const uint16_t port = lp->port_number;
    const uint64_t speed = lp->max_speed;
    const uint32_t rel = lp->target_relative_port;
    EXPECT_EQ(mtu, 9000u);
    EXPECT_EQ(std::string(lp->permanent_address), "00:11:22:33:44:55");
    EXPECT_EQ(phy, 1);
    EXPECT_EQ(port, 2);
    EXPECT_EQ(speed >> 30, 9u);
    EXPECT_EQ(lp->protocol_ethernet, 0);
    EXPECT_EQ(lp->protocol_iscsi, 1);
    EXPECT_EQ(rel, 12u);
    EXPECT_EQ(std::string(lp->role), "initiator");
}

TEST(PlatformLayout, BoundScalarRecordKeepsPointersAndRequester)
{
    static const unsigned long oid_arcs[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 8, 1, 0};
    int32_t value = 0;
    uint32_t size = 4;
    agent_binding_scalar_t rec{};
    rec.oid = oid_arcs;
    rec.oid_len = 13;
    rec.name = "identityLED";
    rec.asn_type = 2;
    rec.mib_value = &value;
    rec.mib_cursize = &size;
    rec.mib_maxsize = 4;
    rec.store_var = "s/lightpathstatus/other/identification";
    rec.store_type = QUEL_DM_TYPE_INT;
    rec.store_size = 4;
    std::strncpy(rec.requester, "SNMPv1", sizeof rec.requester);
    // The requester sits inline in the record, right after user_var.
    const auto *base = reinterpret_cast<const char *>(&rec);
    EXPECT_EQ(std::string(base + AGENT_BINDING_OFF_REQUESTER(sizeof(void *))), "SNMPv1");
    EXPECT_EQ(rec.oid[6], 53917ul);
    EXPECT_EQ(*rec.mib_cursize, 4u);
    EXPECT_EQ(AGENT_BINDING_SCALAR_SIZE(4), 136u);
}

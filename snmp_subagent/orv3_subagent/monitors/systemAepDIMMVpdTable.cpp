// systemAepDIMMVpdTable, 1.3.6.1.4.1.53917.11.1.1.5.22: one row per
// persistent-memory module of the inventory database, reloaded when a walk
// begins more than 5 seconds after the last load. The module passes the
// record's texts, speeds, capacities and count through without reading
// meaning into them; which of the last three columns a module has depends
// on the kind of extra data it reports.
#include "persistent_memory.h"
#include "raid_text.h"

#include "orv3/pmem_text.h"
#include "orv3/trace_log.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

static const oid systemAepDIMMVpdTable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 5, 22};

extern "C" {
orv3_row_head_t *systemAepDIMMVpdTable_head = nullptr;
size_t systemAepDIMMVpdTable_oid_len = OID_LENGTH(systemAepDIMMVpdTable_oid);
}

namespace {

using Row = systemAepDIMMVpdTable_entry_t;
using Memory = inventory_db_memory_t;

constexpr orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),        ORV3_TEXT_FIELD_COLUMN(2, Row, text1),
    ORV3_TEXT_FIELD_COLUMN(3, Row, text2),          ORV3_TEXT_FIELD_COLUMN(4, Row, speed1),
    ORV3_TEXT_FIELD_COLUMN(5, Row, speed2),         ORV3_TEXT_FIELD_COLUMN(6, Row, text3),
    ORV3_TEXT_FIELD_COLUMN(7, Row, text4),          ORV3_TEXT_FIELD_COLUMN(8, Row, text5),
    ORV3_TEXT_FIELD_COLUMN(9, Row, capacity[0]),    ORV3_TEXT_FIELD_COLUMN(10, Row, capacity[1]),
    ORV3_TEXT_FIELD_COLUMN(11, Row, capacity[2]),   ORV3_TEXT_FIELD_COLUMN(12, Row, capacity[3]),
    ORV3_TEXT_FIELD_COLUMN(13, Row, capacity[4]),   ORV3_TEXT_FIELD_COLUMN(14, Row, capacity[5]),
    ORV3_TEXT_FIELD_COLUMN(15, Row, count),         ORV3_TEXT_FIELD_COLUMN(16, Row, text6),
    ORV3_TEXT_FIELD_COLUMN(17, Row, text7),         ORV3_TEXT_FIELD_COLUMN(18, Row, percentage),
    ORV3_TEXT_FIELD_COLUMN(19, Row, securityState), ORV3_TEXT_FIELD_COLUMN(20, Row, healthState),
};

// A load that cannot read the module list ends the walk with the rows it
// left (none: it frees them first).
constinit orv3::TableOf<systemAepDIMMVpdTable_entry_t> systemAepDIMMVpdTable_table = {{
    .name = "systemAepDIMMVpdTable",
    .rootOid = systemAepDIMMVpdTable_oid,
    .rootOidLength = OID_LENGTH(systemAepDIMMVpdTable_oid),
    .maxColumn = 20,
    .columns = servedColumns,
    .rowMaking = orv3::Table::RowMaking::CopyOfFilledRow,
    .refresh = {orv3::RefreshRule::FixedPeriod, 5},
    .check = orv3::Table::Check::ReportsFreshness,
    .load = AepDIMM_loadData,
    .loadFailure = orv3::Table::LoadFailure::EndsTheWalk,
    .handler = orv3::wholeListHandler("systemAepDIMMVpdTable_handler: reqinfo->mode = %d\n"),
    .rows = orv3::RowList(systemAepDIMMVpdTable_head),
}};

// A text field of the record, blank-stripped as the storage texts are.
void capacityInto(orv3_text256_t &column, uint64_t bytes)
{
    char text[128];
    ConvertCapacity(static_cast<uint32_t>(bytes), static_cast<uint32_t>(bytes >> 32), text, sizeof text);
    orv3::formatInto(column, "%s", text);
}

// The columns each kind of extra data fills; the others stay empty.
struct ExtraColumns {
    bool percentage, security, health;
};
ExtraColumns extraColumnsOf(uint8_t kind)
{
    switch (kind) {
    case INVENTORY_DB_EXTRA_PERCENT_HEALTH: return {true, false, true};
    case INVENTORY_DB_EXTRA_SECURITY: return {false, true, false};
    case INVENTORY_DB_EXTRA_ALL: return {true, true, true};
    default: return {false, false, false};
    }
}

} // namespace

extern "C" {

int ConvertCapacity(uint32_t low, uint32_t high, char *buffer, int32_t size)
{
    if (!buffer || size <= 0)
        return 0;
    memset(buffer, 0, static_cast<size_t>(size));
    const uint64_t bytes = uint64_t{high} << 32 | low;
    const double d = static_cast<double>(bytes);
    const char *format = nullptr;
    double scaled = 0;
    if (d / 1073741824.0 >= 1) {
        scaled = d / 1073741824.0;
        format = "%.1f GB";
    } else if (d / 1048576.0 >= 1) {
        scaled = d / 1048576.0;
        format = "%.1f MB";
    } else if (d / 1024.0 >= 1) {
        scaled = d / 1024.0;
        format = "%.1f KB";
    } else {
        return snprintf(buffer, static_cast<size_t>(size), "%llu B", static_cast<unsigned long long>(bytes));
    }
    // Held in single precision; a value that is not whole loses 0.05 before
    // printing, so that most values are cut to the tenth below instead of
    // rounded, as the controller has always shown them.
    float value = static_cast<float>(scaled);
    if (value != std::trunc(value))
        value = value - 0.05f;
    return snprintf(buffer, static_cast<size_t>(size), format, static_cast<double>(value));
}

int arrangeAepDIMMDataAndCreateArow(const inventory_db_memory_t *memory, systemAepDIMMVpdTable_entry_t *row,
                                    int32_t *index)
{
    if (!memory || !row || !index)
        return 1;
    row->head.index = (*index)++;
    orv3::trimCopyStrInto(row->text1, memory->text1);
    orv3::trimCopyStrInto(row->text2, memory->text2);
    orv3::formatInto(row->speed1, "%hu MHz", static_cast<unsigned short>(memory->speed1));
    orv3::formatInto(row->speed2, "%hu MHz", static_cast<unsigned short>(memory->speed2));
    orv3::trimCopyStrInto(row->text3, memory->text3);
    orv3::trimCopyStrInto(row->text4, memory->text4);
    orv3::trimCopyStrInto(row->text5, memory->text5);
    const uint64_t capacities[] = {memory->capacity1, memory->capacity2, memory->capacity3,
                                   memory->capacity4, memory->capacity5, memory->capacity6};
    for (size_t c = 0; c < std::size(capacities); ++c)
        capacityInto(row->capacity[c], capacities[c]);
    orv3::formatInto(row->count, "%hu", static_cast<unsigned short>(memory->count));
    orv3::trimCopyStrInto(row->text6, memory->text6);
    orv3::trimCopyStrInto(row->text7, memory->text7);

    const ExtraColumns extra = extraColumnsOf(memory->extra_kind);
    if (extra.percentage)
        orv3::formatInto(row->percentage, "%d%%", static_cast<int>(memory->percentage));
    char text[PMEM_TEXT_SIZE] = {};
    if (extra.security) {
        bps_format_security_str(memory->security_state, text, sizeof text);
        orv3::formatInto(row->securityState, "%.*s", static_cast<int>(sizeof text), text);
    }
    if (extra.health) {
        memset(text, 0, sizeof text);
        bps_format_hstate_str(memory->health_state, text, sizeof text);
        orv3::formatInto(row->healthState, "%.*s", static_cast<int>(sizeof text), text);
    }
    systemAepDIMMVpdTable_createEntry(row);
    return 0;
}

int AepDIMM_loadData(void)
{
    systemAepDIMMVpdTable_clear();
    int32_t index = 1;
    // The id array stays the database's: it is not released here.
    inventory_db_id_list_t ids = {};
    if (orvdb_get_AEP_memory_list(&ids) != ORV_DB_STATUS_SUCCESS) {
        log_tlog(1, "%s[%d] Failed: %s return ORV_DB_STATUS_FAIL \r\n", __func__, __LINE__,
                 "orvdb_get_AEP_memory_list");
        return 1;
    }
    if (ids.count == 0 || !ids.ids) {
        log_tlog(1, "%s[%d] the idlist.count = 0 \r\n", __func__, __LINE__);
        return 1;
    }
    Memory memory;
    for (uint32_t i = 0; i < ids.count; ++i) {
        memset(&memory, 0, sizeof memory);
        if (orvdb_get_memory_by_id(&memory, ids.ids[i]) != ORV_DB_STATUS_SUCCESS) {
            log_tlog(1, "%s[%d] Failed: %s return ORV_DB_STATUS_FAIL \r\n", __func__, __LINE__,
                     "orvdb_get_memory_by_id");
            continue;
        }
        auto *row = static_cast<Row *>(calloc(1, sizeof(Row)));
        if (!row)
            break;
        arrangeAepDIMMDataAndCreateArow(&memory, row, &index);
        free(row);
    }
    return 0;
}

} // extern "C"

ORV3_TABLE(systemAepDIMMVpdTable, systemAepDIMMVpdTable_table)

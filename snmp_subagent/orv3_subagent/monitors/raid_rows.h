// What the RAID table loaders share: filling text columns from the RAID
// link library's fields, building the list columns, and walking the
// library's lists no further than their records hold.
#pragma once

#include "raid.h"
#include "row_table.h"
#include "text.h"

#include "orv3/raid_link.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace orv3 {

// The text of `code` from one of the code-to-text tables, with its length.
void codeTextInto(orv3_text256_t &column, int (*text)(int32_t code, char *buffer, int32_t size), int32_t code);

// A list column: pieces appended one after another while they fit, the
// text always terminated within the buffer.
class ListText {
public:
    ListText(char *buffer, size_t capacity, uint32_t &length);
    // Appends `piece`, at most `bound - 1` characters of it (snprintf's cut).
    void append(const char *piece, size_t bound = SIZE_MAX);
    __attribute__((format(printf, 3, 4))) void appendFormatted(size_t bound, const char *format, ...);

private:
    char *buffer_;
    size_t capacity_;
    uint32_t &length_;
};

// The labels of `count` identifiers, each followed by "," but the last.
void joinLabels(ListText &labels, const uint32_t *ids, size_t count, void (*label)(uint32_t, char *, int32_t));
template <size_t Capacity>
void joinLabels(char (&buffer)[Capacity], uint32_t &length, const uint32_t *ids, size_t count,
                void (*label)(uint32_t, char *, int32_t))
{
    ListText labels(buffer, Capacity, length);
    joinLabels(labels, ids, count, label);
}

// The columns of both firmware tables, whose rows are one record.
inline constexpr Column kRaidFirmwareColumns[] = {
    ORV3_INTEGER_COLUMN(1, raidFirmwareTable_entry_t, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, raidFirmwareTable_entry_t, name),
    ORV3_TEXT_FIELD_COLUMN(3, raidFirmwareTable_entry_t, label),
    ORV3_TEXT_FIELD_COLUMN(4, raidFirmwareTable_entry_t, text131),
    ORV3_TEXT_FIELD_COLUMN(5, raidFirmwareTable_entry_t, text98),
    ORV3_TEXT_FIELD_COLUMN(6, raidFirmwareTable_entry_t, text0),
    ORV3_TEXT_FIELD_COLUMN(7, raidFirmwareTable_entry_t, text260),
};

// One firmware-table row per component of `fw` (as many as the record
// holds), numbered from `index` on, each with the `label` of its owner.
void arrangeFirmwareRows(const raid_link_fw_info_t &fw, int32_t &index, const char *label,
                         raidFirmwareTable_entry_t *(*create)(void *arranged));

// A list's count as far as its record holds entries.
inline size_t listed(uint32_t count, size_t capacity)
{
    return std::min<size_t>(count, capacity);
}

// The controller list, or false when it cannot be read or is empty; how
// each loader words that in the platform log.
enum class ListFailureText {
    Separate,          // "... RAIDLINK_STATUS_FAIL\r\n" and "... the raid_ctrl_list.count = 0\r\n"
    SeparateWithBlank, // the same with a blank before the line end of the first
    Combined,          // "... RAIDLINK_STATUS_FAIL or ctrl_list_info.count = 0\r\n" for both
};
bool readControllerList(raid_link_ctrl_list_t &list, ListFailureText text, const char *routine, int line);

// The walk every RAID loader makes: the table's rows freed, the controller
// list read (its failure worded as `text`), then `visit(ctrlId)` for each
// controller the list holds, until a visit answers false. 1 when the list
// could not be read, else 0: the loader's own result.
template <class Visit>
int forEachController(Table &table, ListFailureText text, const char *routine, int line, Visit visit)
{
    table.rows.clear();
    raid_link_ctrl_list_t list;
    if (!readControllerList(list, text, routine, line))
        return 1;
    for (size_t i = 0; i < listed(list.count, RAID_LINK_MAX_CTRLS); ++i) {
        uint32_t ctrlId;
        memcpy(&ctrlId, &list.ctrl_ids[i], sizeof ctrlId);
        if (!visit(ctrlId))
            break;
    }
    return 0;
}

// Logs "<routine>[<line>] Failed: <call> return RAIDLINK_STATUS_FAIL\r\n";
// the drive table's loader words it with a blank before the line end.
enum class LineEnd { Plain, AfterBlank };
void logFailedCall(const char *routine, int line, const char *call, LineEnd end = LineEnd::Plain);
// Logs "<routine>[<line>] Failed: <call> return RAIDLINK_STATUS_FAIL or <what>\r\n".
void logFailedOrEmpty(const char *routine, int line, const char *call, const char *what);

// Binary gigabytes of a byte count, as the tables print them.
constexpr double kBytesToGigabytes = 9.313225746154785e-10;

} // namespace orv3

#include "raid_rows.h"

#include "raid_text.h"

#include "orv3/trace_log.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace orv3 {

void codeTextInto(orv3_text256_t &column, int (*text)(int32_t code, char *buffer, int32_t size), int32_t code)
{
    text(code, column.text, sizeof column.text);
    column.len = static_cast<uint32_t>(strnlen(column.text, sizeof column.text));
}

ListText::ListText(char *buffer, size_t capacity, uint32_t &length)
    : buffer_(buffer), capacity_(capacity), length_(length)
{
    length_ = static_cast<uint32_t>(strnlen(buffer_, capacity_));
}

void ListText::append(const char *piece, size_t bound)
{
    appendFormatted(bound, "%s", piece);
}

void ListText::appendFormatted(size_t bound, const char *format, ...)
{
    size_t used = length_;
    if (used + 1 >= capacity_ || bound == 0)
        return;
    const size_t room = std::min(capacity_ - used, bound);
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(buffer_ + used, room, format, arguments);
    va_end(arguments);
    length_ = static_cast<uint32_t>(used + strnlen(buffer_ + used, room));
}

void joinLabels(ListText &labels, const uint32_t *ids, size_t count, void (*label)(uint32_t, char *, int32_t))
{
    for (size_t i = 0; i < count; ++i) {
        uint32_t id;
        memcpy(&id, &ids[i], sizeof id); // list entries are unaligned
        char text[256];
        label(id, text, sizeof text);
        labels.append(text);
        if (i + 1 < count)
            labels.append(",");
    }
}

void arrangeFirmwareRows(const raid_link_fw_info_t &fw, int32_t &index, const char *label,
                         raidFirmwareTable_entry_t *(*create)(void *arranged))
{
    const size_t count = listed(fw.count, RAID_LINK_MAX_FW_COMPONENTS);
    for (size_t i = 0; i < count; ++i) {
        const raid_link_fw_component_t &component = fw.components[i];
        raidFirmwareTable_entry_t row;
        memset(&row, 0, sizeof row);
        row.head.index = index++;
        trimCopyStrInto(row.name, component.name);
        formatInto(row.label, "%s", label);
        trimCopyStrInto(row.text131, component.text_131);
        trimCopyStrInto(row.text98, component.text_98);
        trimCopyStrInto(row.text0, component.text_0);
        trimCopyStrInto(row.text260, component.text_260);
        create(&row);
    }
}

void logFailedCall(const char *routine, int line, const char *call, LineEnd end)
{
    log_tlog(1,
             end == LineEnd::Plain ? "%s[%d] Failed: %s return RAIDLINK_STATUS_FAIL\r\n"
                                   : "%s[%d] Failed: %s return RAIDLINK_STATUS_FAIL \r\n",
             routine, line, call);
}

void logFailedOrEmpty(const char *routine, int line, const char *call, const char *what)
{
    log_tlog(1, "%s[%d] Failed: %s return RAIDLINK_STATUS_FAIL or %s\r\n", routine, line, call, what);
}

bool readControllerList(raid_link_ctrl_list_t &list, ListFailureText text, const char *routine, int line)
{
    memset(&list, 0, sizeof list);
    const bool failed = raidlink_get_ctrl_list(&list) != RAIDLINK_STATUS_SUCCESS;
    const uint16_t count = list.count;
    switch (text) {
    case ListFailureText::Combined:
        if (failed || count == 0) {
            logFailedOrEmpty(routine, line, "raidlink_get_ctrl_list", "ctrl_list_info.count = 0");
            return false;
        }
        return true;
    case ListFailureText::Separate:
    case ListFailureText::SeparateWithBlank:
        if (failed) {
            logFailedCall(routine, line, "raidlink_get_ctrl_list",
                          text == ListFailureText::Separate ? LineEnd::Plain : LineEnd::AfterBlank);
            return false;
        }
        if (count == 0) {
            log_tlog(1, "%s[%d] the raid_ctrl_list.count = 0\r\n", routine, line);
            return false;
        }
        return true;
    }
    return false;
}

} // namespace orv3

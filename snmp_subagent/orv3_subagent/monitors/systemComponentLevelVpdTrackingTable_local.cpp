// Loader of systemComponentLevelVpdTrackingTable: the controller's
// change-history log, read whole through get_chghist_log. Each record gives
// one row numbered in log order; its category is named and its two texts
// are kept as the log wrote them, read no further than their fields.
#include "inventory.h"
#include "text.h"

#include "orv3/trace_log.h"

#include <cstdlib>

namespace {

const char *categoryName(uint32_t category)
{
    switch (category) {
    case CHANGE_HISTORY_CATEGORY_FIRMWARE: return "Firmware";
    case CHANGE_HISTORY_CATEGORY_HARDWARE: return "Hardware";
    default: return "Configuration";
    }
}

} // namespace

extern "C" {

void arrangeSystemComponentAndCreateArow(const change_history_record_t *record,
                                         systemComponentLevelVpdTrackingTable_entry_t *scratch, int32_t *index)
{
    // A record whose row cannot be listed still uses up its index.
    scratch->head.index = (*index)++;
    const char *category = categoryName(record->category);
    scratch->category.len = orv3::copyText(scratch->category.text, sizeof scratch->category.text, category, 64);
    scratch->text1.len = orv3::copyText(scratch->text1.text, 256, record->text1, sizeof record->text1);
    scratch->text2.len = orv3::copyText(scratch->text2.text, 256, record->text2, sizeof record->text2);
    systemComponentLevelVpdTrackingTable_createEntry(scratch);
}

int loadMaintancelog(void)
{
    if (systemComponentLevelVpdTrackingTable_head)
        systemComponentLevelVpdTrackingTable_clear();
    int32_t index = 1;
    change_history_record_t *records = nullptr;
    int32_t count = get_chghist_log(&records, 1);
    log_tlog(1, "%s[%d] count:%d\r\n", __func__, __LINE__, count);
    if (count < 0) {
        log_tlog(1, "%s[%d] get_chghist_log failed\r\n", __func__, __LINE__);
        free(records); // a failing log hands out nothing, but the module owns whatever it did
        return 1;
    }
    if (count > 0 && records) {
        for (int32_t i = 0; i < count; ++i) {
            auto *scratch = static_cast<systemComponentLevelVpdTrackingTable_entry_t *>(
                calloc(1, sizeof(systemComponentLevelVpdTrackingTable_entry_t)));
            if (!scratch)
                break;
            arrangeSystemComponentAndCreateArow(&records[i], scratch, &index);
            free(scratch);
        }
    }
    free(records);
    return 0;
}

} // extern "C"

// Loader of systemHealthSummaryTable: one pass over the event database's
// active events makes a row per event and lowers gSystemHealthState to the
// worst severity seen (255, then 4 for a warning, 2 for an error).
//
// An event of any other severity still gets a row, carrying the severity
// text of the last warning or error before it (empty if none): the text is
// deliberately carried over.
#include "health.h"
#include "text.h"
#include "trace.h"

#include "orv3/event_db.h"

#include <cstring>

static const char kToken[] = "systemHealthSummaryTable";

namespace {

// Makes the row of the event at `position`, with `severity` as its text.
void addEventRow(int position, const char *severity, const event_db_active_event_t &event)
{
    systemHealthSummaryTable_entry_t *row = systemHealthSummaryTable_createEntry(&gSystemHealthState);
    if (!row) {
        ORV3_TRACE_AT("initialize_systemHealthSummaryTable_local", std::source_location::current(), kToken,
                      "%s Failed to create an entry!\n", "initialize_systemHealthSummaryTable_local");
        return;
    }
    row->head.index = position;
    row->severity_len = orv3::copyText(row->severity, sizeof row->severity, severity, 16);
    // Up to 256 characters of the message, with no terminator when it fills the column.
    size_t length = strnlen(event.message, sizeof event.message);
    if (length > sizeof row->description)
        length = sizeof row->description;
    memcpy(row->description, event.message, length);
    row->description_len = static_cast<uint32_t>(length);
    systemHealthSummaryTable_insertEntry(row);
}

} // namespace

extern "C" int initialize_systemHealthSummaryTable_local(void)
{
    ORV3_TRACE(kToken, "%s enter\n", __func__);
    systemHealthSummaryTable_clear();
    gSystemHealthState = 255;
    char severity[16] = "";

    uint16_t count = 0;
    event_db_handle_t handle = CEM_Db_GetActiveEventHandle(1, &count);
    if (!handle) {
        ORV3_TRACE(kToken, "%s CEM_Db_GetActiveEventHandle() failed! \n", __func__);
        return 0;
    }
    if (count == 0) {
        ORV3_TRACE(kToken, "%s No any active log! \n", __func__);
    } else {
        ORV3_TRACE(kToken, "u16Count = %d\n", count);
        event_db_active_event_t *records = nullptr;
        if (CEM_Db_GetActiveEventList(handle, &records) != 0 || !records) {
            CEM_Db_FreeActiveEventHandle(handle);
            ORV3_TRACE(kToken, "%s CEM_Db_GetActiveEventList() failed! \n", __func__);
            return 0;
        }
        for (int i = 0; i < count; ++i) {
            int32_t level = records[i].enumLogServ;
            if (level == EVENT_DB_SEVERITY_WARNING) {
                snprintf(severity, sizeof severity, "Warning");
                if (gSystemHealthState > 4)
                    gSystemHealthState = 4;
            } else if (level == EVENT_DB_SEVERITY_ERROR) {
                snprintf(severity, sizeof severity, "Error");
                if (gSystemHealthState > 2)
                    gSystemHealthState = 2;
            } else {
                ORV3_TRACE(kToken, "%s pRec[%d].enumLogServ = %d (Ignored)\n", __func__, i, level);
            }
            addEventRow(i + 1, severity, records[i]);
        }
    }
    CEM_Db_FreeActiveEventHandle(handle);
    ORV3_TRACE(kToken, "%s gSystemHealthState = %d\n", __func__, gSystemHealthState);
    return 0;
}

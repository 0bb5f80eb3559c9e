// Loader of powerTrendingSampleTable: one call for the system domain's last
// 24 hours, 120 records of 20 bytes, read until the first whose time is 0.
// The records keep their readings in an order of their own; each column
// takes its field (reading A at offset 14, B at 18, C at 16, D at 8, E at
// 12, F at 10). The time is served as "%a %X" in the process's locale.
#include "power_trending.h"
#include "text.h"
#include "trace.h"

#include "orv3/power.h"

#include <cstring>
#include <ctime>

namespace {

constexpr char kToken[] = "powerTrendingSampleTable";

} // namespace

extern "C" int initialize_powerTrendingSampleTable_local(void)
{
    ORV3_TRACE(kToken, "%s: Begin.\n", __func__);
    powerTrendingSampleTable_clear();
    static power_history_sample_t samples[POWER_HISTORY_SAMPLES];
    memset(samples, 0, sizeof samples);
    if (int32_t rc = pwrmgt_get_history_power(SYS_PWR_DOMAIN, LAST_HOUR_24, samples, POWER_HISTORY_SAMPLES); rc != 0) {
        ORV3_TRACE(kToken, "%s: Failed to call pwrmgt_get_history_power( SYS_PWR_DOMAIN, LAST_HOUR_24 ), rc:%d.\n",
                   __func__, rc);
        return 0;
    }
    for (const power_history_sample_t &sample : samples) {
        // Packed fields are read by value.
        const uint16_t number = sample.sample_number;
        const time_t stamp = static_cast<time_t>(sample.timestamp);
        if (stamp == 0) {
            ORV3_TRACE(kToken, "%s: The timestamp of row(%d) is 0 so break.\n", __func__, number);
            break;
        }
        powerTrendingSampleTable_entry_t *row = powerTrendingSampleTable_createEntry(samples);
        if (!row)
            continue;
        row->head.index = number;
        char formatted[1024] = {};
        struct tm local {};
        if (localtime_r(&stamp, &local))
            strftime(formatted, sizeof formatted, "%a %X", &local);
        orv3::copyText(row->powerTrendingSampleTimeStamp, sizeof row->powerTrendingSampleTimeStamp, formatted,
                       sizeof formatted);
        row->powerTrendingSampleTimeStampLen = static_cast<uint32_t>(strlen(formatted));
        row->powerTrendingSampleReadingA = sample.reading_a;
        row->powerTrendingSampleReadingB = sample.reading_b;
        row->powerTrendingSampleReadingC = sample.reading_c;
        row->powerTrendingSampleReadingD = sample.reading_d;
        row->powerTrendingSampleReadingE = sample.reading_e;
        row->powerTrendingSampleReadingF = sample.reading_f;
        powerTrendingSampleTable_insertEntry(row);
    }
    ORV3_TRACE(kToken, "%s: End.\n", __func__);
    return 0;
}

#include "raid_table.h"

#include "trace.h"

#include "orv3/feature_query.h"
#include "orv3/trace_log.h"

namespace orv3 {

namespace {

constexpr RefreshRule kRaidCache = {RefreshRule::FixedPeriod, 5};

} // namespace

bool raidRowsFresh(int32_t &stamp)
{
    return !refreshDue(kRaidCache, stamp, nowSeconds());
}

bool raidLinkOffered()
{
    uint8_t supported = 0;
    return agentless_get_supported_status(&supported, AGENTLESS_FEATURE_RAID_LINK) == 0 && supported != 0;
}

void clearRaidRowsFrom(RowList &rows, orv3_row_head_t *from)
{
    if (from == rows.head()) {
        rows.clear();
        return;
    }
    while (from) {
        orv3_row_head_t *next = from->next;
        rows.remove(from);
        from = next;
    }
}

orv3_row_head_t *raidFirstRow(const RaidTable &table, RowList &rows, bool fresh, int (*load)(), const char *routine,
                              int line)
{
    if (fresh)
        return rows.head();
    if (!raidLinkOffered()) {
        log_tlog(1, "%s[%d] the platform not support RaidLink function.\r\n", routine, line);
        if (rows.head()) {
            rows.clear();
            if (table.releasedHead)
                log_tlog(1, "%s[%d] %s has been released!\r\n", routine, line, table.releasedHead);
        }
        return nullptr;
    }
    return load() == 0 ? rows.head() : nullptr;
}

int raidTableHandler(const RaidTable &table, const char *handlerName, netsnmp_agent_request_info *reqinfo,
                     netsnmp_request_info *requests, std::source_location where)
{
    if (reqinfo->mode != MODE_GET)
        return SNMP_ERR_NOERROR;
    for (netsnmp_request_info *request = requests; request; request = request->next) {
        ORV3_TRACE_AT(handlerName, where, "localStorage:handler", "Processing request (%d)\n", reqinfo->mode);
        // The table helper has answered this one already: a column beyond
        // the table (noSuchObject), or, in a GETNEXT, one it passes on past
        // the table. Answering it again would turn a GETNEXT backwards.
        if (request->processed)
            continue;
        netsnmp_table_request_info *info = netsnmp_extract_table_info(request);
        const Column *column = nullptr;
        for (const Column &candidate : table.columns)
            if (info && candidate.number == info->colnum)
                column = &candidate;
        if (!column) {
            netsnmp_set_request_error(reqinfo, request, SNMP_NOSUCHOBJECT);
            continue;
        }
        auto *row = static_cast<orv3_row_head_t *>(netsnmp_extract_iterator_context(request));
        if (!row) {
            netsnmp_set_request_error(reqinfo, request, SNMP_NOSUCHINSTANCE);
            continue;
        }
        answerColumn(*column, row, request);
    }
    return SNMP_ERR_NOERROR;
}

} // namespace orv3

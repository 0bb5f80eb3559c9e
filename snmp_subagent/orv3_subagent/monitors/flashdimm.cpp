// flashdimm: fdNumber, 1.3.6.1.4.1.53917.11.1.1.13.2.1.0, the store's count
// of flash DIMMs as Gauge32. The module's entry does not call
// init_flashdimm, so fdNumber is not served; operators count the rows of
// fdTable instead. The group is kept whole so that the number can come
// back by adding the call.
#include "hw_health_tables.h"
#include "scalar_group.h"

static const oid fdNumber_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 13, 2, 1, 0};
static orv3::ScalarCell fdNumber_value;
static size_t fdNumber_size = 4;

extern "C" {

int flashdimm_update_fdNumber(void *value, size_t *size)
{
    return orv3::storeRowCount(value, size, fdTable_get_row_count);
}

// A nine-field record like the other count groups; its OID is a level
// deeper than theirs, so it would be registered with 14 arcs.
scalar_decl_t flashdimm_decl[] = {
    {fdNumber_oid, "fdNumber", ASN_GAUGE, &fdNumber_value, &fdNumber_size, 4, flashdimm_update_fdNumber, nullptr,
     nullptr},
    {},
};
scalar_decl_t *flashdimm = flashdimm_decl;

int flashdimm_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                      netsnmp_request_info *requests)
{
    return orv3::scalarGroupHandler(flashdimm, nullptr, reqinfo, requests);
}

int init_flashdimm(void)
{
    orv3::registerScalarGroup(__func__, "flashdimm", flashdimm, orv3::InstanceKind::ReadOnlyUlong, "ASN_GAUGE",
                              flashdimm_handler);
    return 0;
}

} // extern "C"

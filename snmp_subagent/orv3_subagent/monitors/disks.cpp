// disks: diskNumber, 1.3.6.1.4.1.53917.11.1.1.12.1.0, the store's count of
// disks as Gauge32.
#include "hw_health_tables.h"
#include "scalar_group.h"

static const oid diskNumber_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 12, 1, 0};
static orv3::ScalarCell diskNumber_value;
static size_t diskNumber_size = 4;

extern "C" {

int disks_update_diskNumber(void *value, size_t *size)
{
    return orv3::storeRowCount(value, size, diskTable_get_row_count);
}

scalar_decl_t disks_decl[] = {
    {diskNumber_oid, "diskNumber", ASN_GAUGE, &diskNumber_value, &diskNumber_size, 4, disks_update_diskNumber, nullptr,
     nullptr},
    {},
};
scalar_decl_t *disks = disks_decl;

int disks_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                  netsnmp_request_info *requests)
{
    return orv3::scalarGroupHandler(disks, nullptr, reqinfo, requests);
}

int init_disks(void)
{
    orv3::registerScalarGroup(__func__, "disks", disks, orv3::InstanceKind::ReadOnlyUlong, "ASN_GAUGE", disks_handler);
    return 0;
}

} // extern "C"

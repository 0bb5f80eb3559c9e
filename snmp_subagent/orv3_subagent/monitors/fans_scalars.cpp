// fans_scalars: fanNumber, 1.3.6.1.4.1.53917.11.1.1.3.1.0, the store's fan
// count. Served as INTEGER, unlike the other counts of the module, although
// its registration trace names ASN_GAUGE.
#include "fanTable.h"
#include "scalar_group.h"

static const oid fanNumber_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 3, 1, 0};
static orv3::ScalarCell fanNumber_value;
static size_t fanNumber_size = 4;

extern "C" {

// A failed count reads as 0 fans.
int fans_scalars_update_fanNumber(void *value, size_t *size)
{
    return orv3::storeRowCount(value, size, fanTable_get_row_count);
}

scalar_decl_t fans_scalars_decl[] = {
    {fanNumber_oid, "fanNumber", ASN_INTEGER, &fanNumber_value, &fanNumber_size, 4, fans_scalars_update_fanNumber,
     nullptr, nullptr},
    {},
};
scalar_decl_t *fans_scalars = fans_scalars_decl;

int fans_scalars_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                         netsnmp_request_info *requests)
{
    return orv3::scalarGroupHandler(fans_scalars, nullptr, reqinfo, requests);
}

int init_fans_scalars(void)
{
    orv3::registerScalarGroup(__func__, "fans_scalars", fans_scalars, orv3::InstanceKind::ReadOnlyUlong, "ASN_GAUGE",
                              fans_scalars_handler);
    return 0;
}

} // extern "C"

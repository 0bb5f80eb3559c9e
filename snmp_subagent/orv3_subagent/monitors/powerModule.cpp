// powerModule: powerNumber, 1.3.6.1.4.1.53917.11.1.1.11.1.0, the store's
// count of power supplies as Gauge32. Not offered on the sorvinel,
// tamberlow and plintaber platform families, named by ORV_FAMILY.
#include "hw_health_tables.h"
#include "platform_variant.h"
#include "scalar_group.h"
#include "trace.h"

#include <cstdlib>
#include <cstring>

static const oid powerNumber_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 11, 1, 0};
static orv3::ScalarCell powerNumber_value;
static size_t powerNumber_size = 4;

extern "C" {

int powerModule_family_unsupported(const char *routine)
{
    return orv3::familyWithoutPower(routine, "powerModule") ? 1 : 0;
}

int powerModule_update_powerNumber(void *value, size_t *size)
{
    return orv3::storeRowCount(value, size, powerTable_get_row_count);
}

scalar_decl_t powerModule_decl[] = {
    {powerNumber_oid, "powerNumber", ASN_GAUGE, &powerNumber_value, &powerNumber_size, 4,
     powerModule_update_powerNumber, nullptr, nullptr},
    {},
};
scalar_decl_t *powerModule = powerModule_decl;

int powerModule_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                        netsnmp_request_info *requests)
{
    return orv3::scalarGroupHandler(powerModule, __func__, reqinfo, requests);
}

int init_powerModule(void)
{
    if (powerModule_family_unsupported(__func__))
        return 0;
    orv3::registerScalarGroup(__func__, "powerModule", powerModule, orv3::InstanceKind::ReadOnlyUlong, "ASN_GAUGE",
                              powerModule_handler);
    return 0;
}

} // extern "C"

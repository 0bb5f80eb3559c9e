// systemHealth: systemHealthStat, 1.3.6.1.4.1.53917.11.1.1.4.1.0, the worst
// severity among the controller's active events. Reading it refreshes the
// health summary under that table's own rule, so that the scalar and the
// table always come from the same pass over the event database.
#include "health.h"

static const oid systemHealthStat_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 4, 1, 0};
static long systemHealthStat_value;
static size_t systemHealthStat_size = 4;

extern "C" {

int32_t gSystemHealthState = 255;

int systemHealth_update_systemHealthStat(void *value, size_t *size)
{
    systemHealthSummaryTable_check_for_update();
    orv3::storeInt32(value, size, gSystemHealthState);
    return 0;
}

scalar_decl_ex_t systemHealth_decl[] = {
    {systemHealthStat_oid, OID_LENGTH(systemHealthStat_oid), "systemHealthStat", ASN_INTEGER, &systemHealthStat_value,
     &systemHealthStat_size, 4, systemHealth_update_systemHealthStat, nullptr, nullptr},
    {},
};
scalar_decl_ex_t *systemHealth = systemHealth_decl;

int systemHealth_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                         netsnmp_request_info *requests)
{
    return orv3::scalarGroupHandler(systemHealth, nullptr, reqinfo, requests);
}

int init_systemHealth(void)
{
    orv3::registerScalarGroup(__func__, "systemHealth", systemHealth, orv3::InstanceKind::ReadOnlyLong, "ASN_INTEGER",
                              systemHealth_handler);
    return 0;
}

} // extern "C"

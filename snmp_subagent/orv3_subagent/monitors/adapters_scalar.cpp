// adapters_scalar: adapterOOBCapable, 1.3.6.1.4.1.53917.11.1.1.14.1.0, 1
// when the platform can inventory PCI adapters out of band (the adapter
// tables can hold rows), 0 when it cannot.
#include "adapters.h"
#include "scalar_group.h"
#include "trace.h"

#include "orv3/feature_query.h"

static const oid adapterOOBCapable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 14, 1, 0};
static orv3::ScalarCell adapterOOBCapable_value;
static size_t adapterOOBCapable_size = sizeof(int32_t);

extern "C" {

// A failed query keeps the value the last good one left.
int adapters_update_adapterOOBCapable(void *value, size_t *size)
{
    if (!value || !size) {
        ORV3_ADAPTERS_TRACE("value or plen is null.\n");
        return ADAPTERS_FAILED;
    }
    uint8_t supported = 0;
    if (agentless_get_supported_status(&supported, AGENTLESS_FEATURE_PCI_INVENTORY) != 0) {
        ORV3_ADAPTERS_TRACE_AS("check_support_pci", "cannot get supported status.\n");
        return ADAPTERS_FAILED;
    }
    orv3::storeInt32(value, size, supported != 0 ? 1 : 0);
    return ADAPTERS_OK;
}

scalar_decl_oid_t adapters_scalar_decl[] = {
    {adapterOOBCapable_oid, OID_LENGTH(adapterOOBCapable_oid), "adapterOOBCapable", ASN_INTEGER,
     &adapterOOBCapable_value, &adapterOOBCapable_size, adapters_update_adapterOOBCapable, nullptr, nullptr},
    {},
};

int adapters_scalar_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                            netsnmp_request_info *requests)
{
    return orv3::scalarGroupHandler(adapters_scalar_decl, "adapters_scalar_handler", reqinfo, requests,
                                    orv3::UpdateStatus::SetOnRequest);
}

int init_adapters_scalar(void)
{
    orv3::registerScalarGroup(__func__, "adapters_scalar", adapters_scalar_decl, orv3::InstanceKind::ReadOnlyLong,
                              "ASN_INTEGER", adapters_scalar_handler);
    return 0;
}

} // extern "C"

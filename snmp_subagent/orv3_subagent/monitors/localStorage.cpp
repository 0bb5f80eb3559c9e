// The local-storage group (.13.1): RAIDOOBCapable, whether the controller
// sees the RAID subsystem out of band, and the registration of the six RAID
// tables from one array, on every platform.
#include "raid.h"
#include "trace.h"

#include "orv3/feature_query.h"
#include "orv3/trace_log.h"

namespace {

constexpr char kToken[] = "localStorage";

// The registered cell; GETs are answered from the update's own value.
long RAIDOOBCapable_value = 0;

} // namespace

extern "C" {

const oid RAIDOOBCapable_oid[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 13, 1, 1, 0};
size_t OOBCapableOidLen = OID_LENGTH(RAIDOOBCapable_oid);

local_storage_table_t init_set[] = {
    ORV3_TABLE_REGISTRATION_RECORD(raidControllerTable),
    ORV3_TABLE_REGISTRATION_RECORD(raidDriveTable),
    ORV3_TABLE_REGISTRATION_RECORD(raidControllerFirmwareTable),
    ORV3_TABLE_REGISTRATION_RECORD(raidDriveFirmwareTable),
    ORV3_TABLE_REGISTRATION_RECORD(raidStoragepoolTable),
    ORV3_TABLE_REGISTRATION_RECORD(raidVolumeTable),
    {},
};

// 1 when the platform offers the RAID link function. A failed query and a
// platform without it answer 0 and say so in the controller's trace log.
int localStorage_update_RAIDOOBCapable(int32_t *value, size_t *size)
{
    uint8_t supported = 0;
    int32_t capable = 0;
    if (agentless_get_supported_status(&supported, AGENTLESS_FEATURE_RAID_LINK) != 0)
        log_tlog(1, "%s[%d] agentless_get_supported_status return is not ok!\r\n", __func__, 14);
    else if (supported == 0)
        log_tlog(1, "%s[%d] The platform does not support the raid link function.\r\n", __func__, 19);
    else
        capable = 1;
    if (value)
        *value = capable;
    if (size)
        *size = sizeof(int32_t);
    return 0;
}

int RAIDOOBCapable_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                           netsnmp_request_info *requests)
{
    for (netsnmp_request_info *request = requests; request; request = request->next) {
        const netsnmp_variable_list *vb = request->requestvb;
        if (request->status != SNMP_ERR_NOERROR ||
            snmp_oid_compare(vb->name, vb->name_length, RAIDOOBCapable_oid, OOBCapableOidLen) != 0)
            continue;
        if (reqinfo->mode != MODE_GET)
            continue;
        int32_t value = 0;
        size_t size = 0;
        localStorage_update_RAIDOOBCapable(&value, &size);
        snmp_set_var_typed_value(request->requestvb, ASN_INTEGER, &value, sizeof value);
    }
    return SNMP_ERR_NOERROR;
}

int initialize_integer_localStorage(void)
{
    int result =
        netsnmp_register_read_only_long_instance("RAIDOOBCapable", const_cast<oid *>(RAIDOOBCapable_oid),
                                                 OOBCapableOidLen, &RAIDOOBCapable_value, RAIDOOBCapable_handler);
    ORV3_TRACE(kToken, "Registering RAIDOOBCapable[ASN_INTEGER] %s\n", result == MIB_REGISTERED_OK ? "OK" : "failed");
    return 0;
}

int initialize_tables_localStorage(void)
{
    for (const local_storage_table_t *table = init_set; table->table_oid; ++table) {
        ORV3_TRACE("localStorage:init", "initializing tables\n");
        orv3::registerIterator(table->name, table->table_oid, table->oid_len, table->max_column, table->handler,
                               table->get_first_data_point, table->get_next_data_point);
    }
    return 0;
}

int init_localStorage(void)
{
    initialize_integer_localStorage();
    initialize_tables_localStorage();
    return 0;
}

} // extern "C"

namespace orv3 {

bool raidLinkOffered()
{
    uint8_t supported = 0;
    return agentless_get_supported_status(&supported, AGENTLESS_FEATURE_RAID_LINK) == 0 && supported != 0;
}

const SupportGate kRaidLinkGate = {raidLinkOffered, "%s[%d] the platform not support RaidLink function.\r\n", nullptr};
const SupportGate kRaidLinkGateReleasingController = {
    raidLinkOffered, "%s[%d] the platform not support RaidLink function.\r\n", "%s[%d] %s has been released!\r\n"};

} // namespace orv3

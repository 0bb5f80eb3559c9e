// adapterNetworkFunctionTable (.14.3): one row per network function
// (Ethernet, Fibre Channel, InfiniBand, Network) with its VPD, PCI
// description and port counts.
#include "adapter_function_rows.h"

orv3_row_head_t *adapterNetworkFunctionTable_head = nullptr;

namespace {

using Row = adapterNetworkFunctionTable_entry_t;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_FUNCTION_IDENTITY_COLUMNS(Row),
    ORV3_INTEGER_COLUMN(12, Row, networkPhysicalPortNumber),
    ORV3_INTEGER_COLUMN(13, Row, networkMaxPortNumber),
    ORV3_INTEGER_COLUMN(14, Row, networkPortNumber),
    ORV3_FUNCTION_PCI_COLUMNS(Row, 15),
};

constinit orv3::TableOf<adapterNetworkFunctionTable_entry_t> adapterNetworkFunctionTable_table =
    orv3::familyTable<adapterNetworkFunctionTable_entry_t>(
        orv3::kAdapterTables, "adapterNetworkFunctionTable", adapterNetworkFunctionTable_oid,
        adapterNetworkFunctionTable_lastColumn, servedColumns, adapterNetworkFunctionTable_loadData,
        adapterNetworkFunctionTable_head);

// The port counts are known only for a function whose adapter has data
// out of band; without it they read 0.
bool portsKnown(const char *routine, const inventory_db_func_key_t &func, uint32_t &result)
{
    switch (func.oobSupported) {
    case INVENTORY_DB_OOB_NONE: result = ADAPTERS_OK; return false;
    case INVENTORY_DB_OOB_VPD_AND_MISC:
    case INVENTORY_DB_OOB_VPD_ONLY: return true;
    default:
        ORV3_ADAPTERS_TRACE_AS(routine, "The oobSupported of Function %u is %u.\n", func.funcKey,
                               static_cast<unsigned>(func.oobSupported));
        result = ADAPTERS_PARTIAL;
        return false;
    }
}

uint32_t fillPhysicalPortNumber(const char *routine, const orv3::FunctionSource &s, Row &row)
{
    uint32_t result = ADAPTERS_OK;
    if (!portsKnown(routine, s.func, result))
        return result;
    inventory_db_physical_port_list_t ports = {};
    if (orvdb_get_network_physical_port_list(s.func.funcKey, &ports) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE_AS(routine, "Network Function %u cannot get physical port list.\n", s.func.funcKey);
        return ADAPTERS_PARTIAL;
    }
    free(ports.ports);
    row.networkPhysicalPortNumber = static_cast<int32_t>(ports.count);
    return ADAPTERS_OK;
}

uint32_t fillMaxPortNumber(const char *routine, const orv3::FunctionSource &s, Row &row)
{
    uint32_t result = ADAPTERS_OK;
    if (!portsKnown(routine, s.func, result))
        return result;
    inventory_db_network_info_t info;
    memset(&info, 0, sizeof info);
    if (orvdb_get_network_info(s.func.funcKey, &info) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE_AS(routine, "Network Function %u cannot get network info.\n", s.func.funcKey);
        return ADAPTERS_PARTIAL;
    }
    row.networkMaxPortNumber = info.max_port_count;
    return ADAPTERS_OK;
}

uint32_t fillPortNumber(const char *routine, const orv3::FunctionSource &s, Row &row)
{
    uint32_t result = ADAPTERS_OK;
    if (!portsKnown(routine, s.func, result))
        return result;
    inventory_db_physical_port_list_t ports = {};
    if (orvdb_get_network_physical_port_list(s.func.funcKey, &ports) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE_AS(routine, "Network Function %u cannot get network physical port list.\n", s.func.funcKey);
        return ADAPTERS_PARTIAL;
    }
    int32_t logicalPorts = 0;
    for (uint32_t p = 0; p < ports.count && ports.ports; ++p)
        logicalPorts += ports.ports[p].logical_port_count;
    free(ports.ports);
    row.networkPortNumber = logicalPorts;
    return ADAPTERS_OK;
}

const orv3::FunctionFill<Row> kFills[] = {
    ORV3_FUNCTION_IDENTITY_FILLS(adapterNetworkFunctionTable, network, Row),
    {"adapterNetworkFunctionTable_fill_networkPhysicalPortNumber", fillPhysicalPortNumber},
    {"adapterNetworkFunctionTable_fill_networkMaxPortNumber", fillMaxPortNumber},
    {"adapterNetworkFunctionTable_fill_networkPortNumber", fillPortNumber},
    ORV3_FUNCTION_PCI_FILLS(adapterNetworkFunctionTable, network, Row),
};

} // namespace

extern "C" int adapterNetworkFunctionTable_loadData(void)
{
    return orv3::loadFunctionRows(adapterNetworkFunctionTable_table, ADAPTERS_NETWORK_FUNCTIONS,
                                  std::span<const orv3::FunctionFill<Row>>(kFills));
}

ORV3_TABLE(adapterNetworkFunctionTable, adapterNetworkFunctionTable_table)

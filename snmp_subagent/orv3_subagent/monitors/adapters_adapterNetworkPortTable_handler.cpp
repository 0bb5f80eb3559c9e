// adapterNetworkPortTable (.14.4): one row per logical port of every
// physical port of every network function whose adapter has data out of
// band, with the port's addresses, speeds, protocols and link state.
#include "adapter_tables.h"

#include <memory>

orv3_row_head_t *adapterNetworkPortTable_head = nullptr;

namespace {

using Row = adapterNetworkPortTable_entry_t;
using PhysicalPort = inventory_db_physical_port_t;
using LogicalPort = inventory_db_logical_port_t;

struct PortSource {
    const inventory_db_func_key_t &func;
    const PhysicalPort &physical;
    const LogicalPort &logical;
};
using Fill = orv3::AdapterFill<PortSource, Row>;

const orv3::Column servedColumns[] = {
    ORV3_INTEGER_COLUMN(1, Row, head.index),
    ORV3_TEXT_FIELD_COLUMN(2, Row, networkVPDProdName),
    ORV3_INTEGER_COLUMN(3, Row, phyPortNo),
    ORV3_TEXT_FIELD_COLUMN(4, Row, phyPortConnector),
    ORV3_TEXT_FIELD_COLUMN(5, Row, phyPortBurnedinAddress),
    ORV3_INTEGER_COLUMN(6, Row, portNo),
    ORV3_GAUGE_COLUMN(7, Row, portMaxDataSize),
    ORV3_TEXT_FIELD_COLUMN(8, Row, portPermanentAddress),
    ORV3_TEXT_FIELD_COLUMN(9, Row, portNetworkAddress),
    ORV3_TEXT_FIELD_COLUMN(10, Row, portLinkTechnology),
    ORV3_TEXT_FIELD_COLUMN(11, Row, portvNICMode),
    ORV3_TEXT_FIELD_COLUMN(12, Row, portMaxSpeed),
    ORV3_TEXT_FIELD_COLUMN(13, Row, portProtocolType),
    ORV3_TEXT_FIELD_COLUMN(14, Row, portCurrentProtocol),
    ORV3_TEXT_FIELD_COLUMN(15, Row, portFCoEPermanentAddress),
    ORV3_TEXT_FIELD_COLUMN(16, Row, portFCoENetworkAddress),
    ORV3_TEXT_FIELD_COLUMN(17, Row, portConnectionType),
    ORV3_TEXT_FIELD_COLUMN(18, Row, portRole),
    ORV3_GAUGE_COLUMN(19, Row, portTargetRelativePortNo),
    ORV3_TEXT_FIELD_COLUMN(20, Row, phyPortLinkStatus),
    ORV3_TEXT_FIELD_COLUMN(21, Row, phyPortLinkSpeed),
};

constinit orv3::TableOf<adapterNetworkPortTable_entry_t> adapterNetworkPortTable_table =
    orv3::familyTable<adapterNetworkPortTable_entry_t>(orv3::kAdapterTables, "adapterNetworkPortTable",
                                                       adapterNetworkPortTable_oid, adapterNetworkPortTable_lastColumn,
                                                       servedColumns, adapterNetworkPortTable_loadData,
                                                       adapterNetworkPortTable_head);

template <orv3_text256_t Row::*column, auto field>
uint32_t fillLogicalText(const char *, const PortSource &source, Row &row)
{
    return orv3::fillTrimmed(row.*column, source.logical.*field);
}

template <orv3_text256_t Row::*column, auto field>
uint32_t fillPhysicalText(const char *, const PortSource &source, Row &row)
{
    return orv3::fillTrimmed(row.*column, source.physical.*field);
}

uint32_t fillCardName(const char *, const PortSource &source, Row &row)
{
    return orv3::fillTrimmed(row.networkVPDProdName, source.func.cardName);
}

uint32_t fillPhyPortNo(const char *, const PortSource &source, Row &row)
{
    row.phyPortNo = source.logical.physical_port_number;
    return ADAPTERS_OK;
}

uint32_t fillPortNo(const char *, const PortSource &source, Row &row)
{
    row.portNo = source.logical.port_number;
    return ADAPTERS_OK;
}

uint32_t fillMaxDataSize(const char *, const PortSource &source, Row &row)
{
    row.portMaxDataSize = static_cast<int32_t>(source.logical.max_data_size);
    return ADAPTERS_OK;
}

uint32_t fillTargetRelativePortNo(const char *, const PortSource &source, Row &row)
{
    row.portTargetRelativePortNo = static_cast<int32_t>(source.logical.target_relative_port);
    return ADAPTERS_OK;
}

// Bits per second shifted down by 30, so 10,000,000,000 bit/s reads 9Gbps:
// the controller has always divided by 2^30 here, not by 10^9.
uint32_t fillMaxSpeed(const char *, const PortSource &source, Row &row)
{
    char speed[32];
    snprintf(speed, sizeof speed, "%lluGbps", static_cast<unsigned long long>(source.logical.max_speed >> 30));
    orv3::setText(row.portMaxSpeed, speed);
    return ADAPTERS_OK;
}

uint32_t fillCurrentProtocol(const char *, const PortSource &source, Row &row)
{
    char protocols[65];
    orv3::joinProtocolWords(protocols, sizeof protocols, source.logical.protocol_ethernet,
                            source.logical.protocol_fcoe_fc, source.logical.protocol_iscsi);
    orv3::setText(row.portCurrentProtocol, protocols);
    return ADAPTERS_OK;
}

uint32_t fillLinkStatus(const char *, const PortSource &source, Row &row)
{
    static const char *const kStatusTexts[] = {"NONSUPPORT", "UNKNOWN", "DOWN"};
    const uint32_t status = source.physical.link_status;
    orv3::setText(row.phyPortLinkStatus, status < std::size(kStatusTexts) ? kStatusTexts[status] : "UP");
    return ADAPTERS_OK;
}

// The link runs at Mbit/s; the column shows whole Gbit/s, rounded down.
uint32_t fillLinkSpeed(const char *, const PortSource &source, Row &row)
{
    orv3::formatInto(row.phyPortLinkSpeed, "%uGbps", static_cast<unsigned>(source.physical.link_speed / 1000));
    return ADAPTERS_OK;
}

using Lp = LogicalPort;
using Pp = PhysicalPort;
const Fill kFills[] = {
    {"adapterNetworkPortTable_fill_networkVPDProdName", fillCardName},
    {"adapterNetworkPortTable_fill_phyPortNo", fillPhyPortNo},
    {"adapterNetworkPortTable_fill_phyPortConnector", fillPhysicalText<&Row::phyPortConnector, &Pp::connector>},
    {"adapterNetworkPortTable_fill_phyPortBurnedinAddress",
     fillPhysicalText<&Row::phyPortBurnedinAddress, &Pp::burned_in_address>},
    {"adapterNetworkPortTable_fill_portNo", fillPortNo},
    {"adapterNetworkPortTable_fill_portMaxDataSize", fillMaxDataSize},
    {"adapterNetworkPortTable_fill_portPermanentAddress",
     fillLogicalText<&Row::portPermanentAddress, &Lp::permanent_address>},
    {"adapterNetworkPortTable_fill_portNetworkAddress",
     fillLogicalText<&Row::portNetworkAddress, &Lp::network_address>},
    {"adapterNetworkPortTable_fill_portLinkTechnology",
     fillLogicalText<&Row::portLinkTechnology, &Lp::link_technology>},
    {"adapterNetworkPortTable_fill_portvNICMode", fillLogicalText<&Row::portvNICMode, &Lp::vnic_mode>},
    {"adapterNetworkPortTable_fill_portMaxSpeed", fillMaxSpeed},
    {"adapterNetworkPortTable_fill_portProtocolType", fillLogicalText<&Row::portProtocolType, &Lp::protocol_type>},
    {"adapterNetworkPortTable_fill_portCurrentProtocol", fillCurrentProtocol},
    {"adapterNetworkPortTable_fill_portFCoEPermanentAddress",
     fillLogicalText<&Row::portFCoEPermanentAddress, &Lp::fcoe_permanent_address>},
    {"adapterNetworkPortTable_fill_portFCoENetworkAddress",
     fillLogicalText<&Row::portFCoENetworkAddress, &Lp::fcoe_network_address>},
    {"adapterNetworkPortTable_fill_portConnectionType",
     fillLogicalText<&Row::portConnectionType, &Lp::connection_type>},
    {"adapterNetworkPortTable_fill_portRole", fillLogicalText<&Row::portRole, &Lp::role>},
    {"adapterNetworkPortTable_fill_portTargetRelativePortNo", fillTargetRelativePortNo},
    {"adapterNetworkPortTable_fill_phyPortLinkStatus", fillLinkStatus},
    {"adapterNetworkPortTable_fill_phyPortLinkSpeed", fillLinkSpeed},
};

// The rows of every logical port of one function.
uint32_t addFunctionPorts(const inventory_db_func_key_t &func, int32_t &index)
{
    inventory_db_physical_port_list_t physical = {};
    if (orvdb_get_network_physical_port_list(func.funcKey, &physical) != ORV_DB_STATUS_SUCCESS) {
        ORV3_ADAPTERS_TRACE("Network Function %u cannot get physical port list.\n", func.funcKey);
        return ADAPTERS_PARTIAL;
    }
    const std::unique_ptr<PhysicalPort, decltype(&free)> ownedPhysical(physical.ports, free);
    orv3::AdapterResult result;
    for (uint32_t p = 0; p < physical.count && physical.ports; ++p) {
        inventory_db_logical_port_list_t logical = {};
        if (orvdb_get_network_logical_port_list2(func.funcKey, p + 1, &logical) != ORV_DB_STATUS_SUCCESS) {
            ORV3_ADAPTERS_TRACE("Network Function %u, Physical Port %u cannot get logicall port list.\n", func.funcKey,
                                p + 1);
            result.take(ADAPTERS_PARTIAL);
            continue;
        }
        const std::unique_ptr<LogicalPort, decltype(&free)> ownedLogical(logical.ports, free);
        for (uint32_t l = 0; l < logical.count && logical.ports; ++l) {
            const uint32_t made =
                orv3::addAdapterRow(adapterNetworkPortTable_table, index++, std::span<const Fill>(kFills),
                                    PortSource{func, physical.ports[p], logical.ports[l]});
            if (!result.take(made))
                return ADAPTERS_FAILED;
        }
    }
    return result.value;
}

} // namespace

namespace orv3 {

size_t joinProtocolWords(char *buffer, size_t size, uint8_t ethernet, uint8_t fcoeFc, uint8_t iscsi)
{
    const struct {
        uint8_t set;
        const char *word;
    } words[] = {{ethernet, "Ethernet"}, {fcoeFc, "FCoE/FC"}, {iscsi, "iSCSI"}};
    size_t length = 0;
    buffer[0] = '\0';
    for (const auto &word : words) {
        if (!word.set)
            continue;
        const int written = snprintf(buffer + length, size - length, "%s%s", length == 0 ? "" : ", ", word.word);
        if (written < 0)
            break;
        length = std::min(length + static_cast<size_t>(written), size - 1);
    }
    return length;
}

} // namespace orv3

extern "C" int adapterNetworkPortTable_loadData(void)
{
    int32_t index = 1;
    return orv3::forEachFunction(
        adapterNetworkPortTable_table, ADAPTERS_NETWORK_FUNCTIONS, [&index](const inventory_db_func_key_t &func) {
            switch (func.oobSupported) {
            case INVENTORY_DB_OOB_NONE: return static_cast<uint32_t>(ADAPTERS_OK);
            case INVENTORY_DB_OOB_VPD_AND_MISC:
            case INVENTORY_DB_OOB_VPD_ONLY: return addFunctionPorts(func, index);
            default:
                ORV3_ADAPTERS_TRACE_AS("adapterNetworkPortTable_loadData", "The oobSupported of Function %u is %u.\n",
                                       func.funcKey, static_cast<unsigned>(func.oobSupported));
                return static_cast<uint32_t>(ADAPTERS_PARTIAL);
            }
        });
}

ORV3_TABLE(adapterNetworkPortTable, adapterNetworkPortTable_table)

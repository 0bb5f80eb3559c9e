// The module's entry: the agent calls init_snmp_module_monitors after loading
// the library, and every MIB group registers itself in a fixed order.
// A group that fails to register is only traced and stays absent. The flash
// DIMM count group (init_flashdimm) is deliberately not in the sequence.
#include "monitors.h"
#include "netsnmp.h"

// The module registers once for the life of the agent: nothing is ever
// unregistered, and the library stays mapped when the agent unloads it
// (it is linked nodelete). An agent that loads it again (dlmodStatus load
// after unload) finds every group still registered and answering; a second
// registration would only fail as duplicates and lose what each attempt
// allocated.
static bool registered = false;

extern "C" void init_snmp_module_monitors(void)
{
    if (registered) {
        DEBUGMSGTL(("monitors", "init_snmp_module_monitors: registered already, nothing to do\n"));
        return;
    }
    registered = true;
    init_fans_scalars();
    init_fanTable();
    init_voltage();
    init_voltTable();
    init_temperature();
    init_tempTable();
    init_currentlyLoggedInTable();
    // The firmware table's registration routine itself, not its init_ wrapper.
    initialize_table_kepVpdTable();
    init_machineVpd();
    init_systemComponentLevelVpdTable();
    init_systemComponentLevelVpdTrackingTable();
    init_leds();
    init_allLEDsTable();
    init_systemHealth();
    init_systemHealthSummaryTable();
    init_hostMACAddressTable();
    init_systemCPUVpdTable();
    init_systemMemoryVpdTable();
    init_systemAepDIMMVpdTable();
    init_powerModule();
    init_powerTable();
    init_disks();
    init_diskTable();
    init_fdTable();
    init_powerPolicyTable();
    init_powerPolicyInformation();
    init_powerTrendingSampleTable();
    init_fuelGaugeInformation();
    init_localStorage();
    init_adapters_scalar();
    init_adapters();
}

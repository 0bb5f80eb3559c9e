// The module's registration routines, called in order by the entry.
#pragma once

extern "C" {

void init_snmp_module_monitors(void);

int init_fans_scalars(void);
int init_fanTable(void);
int init_voltage(void);
int init_voltTable(void);
int init_temperature(void);
int init_tempTable(void);
int init_currentlyLoggedInTable(void);
int initialize_table_kepVpdTable(void);
int init_machineVpd(void);
int init_systemComponentLevelVpdTable(void);
int init_systemComponentLevelVpdTrackingTable(void);
int init_leds(void);
int init_systemHealth(void);
int init_systemHealthSummaryTable(void);
int init_hostMACAddressTable(void);
int init_systemCPUVpdTable(void);
int init_systemMemoryVpdTable(void);
int init_systemAepDIMMVpdTable(void);
int init_allLEDsTable(void);
int init_powerModule(void);
int init_powerTable(void);
int init_disks(void);
int init_diskTable(void);
int init_fdTable(void);
int init_powerPolicyTable(void);
int init_powerPolicyInformation(void);
int init_powerTrendingSampleTable(void);
int init_fuelGaugeInformation(void);
int init_localStorage(void);
int init_adapters_scalar(void);
int init_adapters(void);

} // extern "C"

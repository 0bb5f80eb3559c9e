// The module's registration routines, called in order by the entry.
#pragma once

extern "C" {

void init_snmp_module_monitors(void);

int init_fans_scalars(void);
int init_fanTable(void);

} // extern "C"

// voltage: voltNumber, 1.3.6.1.4.1.53917.11.1.1.2.1.0, bound to the store
// variable "s/voltages/status/count".
#include "voltage.h"

#include "sensor_count_group.h"

ORV3_SENSOR_COUNT_GROUP(voltage, voltNumber, 2, "s/voltages/status/count", "s/voltages")

extern "C" int init_voltage(void)
{
    // The group's store variables are read once as the agent starts.
    quel_dm_varlist_t vars = nullptr;
    int32_t status = 0;
    if (quel_dm_GetVars("myCfgVars", g_coHandle, 0, 0, as_voltageVarsToUpdate, &vars, &status) == 0 && vars)
        quel_dm_DeleteVarList(vars, g_coHandle, 0, 0, &status);
    orv3::registerSettableGroup(__func__, voltageGroup, false, voltage_handler);
    return 0;
}

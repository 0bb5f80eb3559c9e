// temperature: tempNumber, 1.3.6.1.4.1.53917.11.1.1.1.1.0, bound to the
// store variable "s/temperatures/status/count".
#include "temperature.h"

#include "sensor_count_group.h"

ORV3_SENSOR_COUNT_GROUP(temperature, tempNumber, 1, "s/temperatures/status/count", "s/temperatures")

extern "C" int init_temperature(void)
{
    orv3::registerSettableGroup(__func__, temperatureGroup, false, temperature_handler);
    return 0;
}

// The fuel gauge: the server's power budget, fuelGaugeInformation
// (.10.1.1 to .10.1.13), read from the power library on every GET.
#pragma once

#include "scalar_group.h"

extern "C" {

extern scalar_decl_ex_t fuelGaugeInformation_decl[];
extern scalar_decl_ex_t *fuelGaugeInformation;

int init_fuelGaugeInformation(void);
int fuelGaugeInformation_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                                 netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);

int fuelGaugeInformation_update_fuelGaugePowerCappingPolicySetting(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugeStaticPowerPcapSoftMin(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMin(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugeStaticPowerPcapCurrentSetting(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMax(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugeStaticPowerPcapMode(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugeSystemMaxPower(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugePowerRemaining(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugeTotalPowerAvaialble(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugeTotalPowerInUse(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugePowerConsumptionCpu(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugePowerConsumptionMemory(void *value, size_t *size);
int fuelGaugeInformation_update_fuelGaugePowerConsumptionOther(void *value, size_t *size);

} // extern "C"

// powerTrendingSampleTable: the system power domain's last 24 hours as up to
// 120 sampled rows, each with its time and six power readings.
#pragma once

#include "row_table.h"

extern "C" {

typedef struct powerTrendingSampleTable_entry {
    orv3_row_head_t head; // index: the sample number
    char powerTrendingSampleTimeStamp[256];
    uint32_t powerTrendingSampleTimeStampLen;
    int32_t powerTrendingSampleReadingA;
    int32_t powerTrendingSampleReadingB;
    int32_t powerTrendingSampleReadingC;
    int32_t powerTrendingSampleReadingD;
    int32_t powerTrendingSampleReadingE;
    int32_t powerTrendingSampleReadingF;
} powerTrendingSampleTable_entry_t;

} // extern "C"

ORV3_TABLE_DECLARATIONS(powerTrendingSampleTable, powerTrendingSampleTable_entry_t)
extern "C" int initialize_powerTrendingSampleTable_local(void);

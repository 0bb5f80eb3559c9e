/* Controller platform interface: every closed service of the controller
 * firmware that the monitoring module calls, in one include. Each service's
 * header says how its results are owned and what its return values mean. */
#ifndef ORV3_PLATFORM_H
#define ORV3_PLATFORM_H

#include "orv3/platform_types.h"

#include "orv3/agent_binding.h"
#include "orv3/change_history.h"
#include "orv3/data_manager.h"
#include "orv3/event_db.h"
#include "orv3/feature_query.h"
#include "orv3/inventory_db.h"
#include "orv3/ipmi.h"
#include "orv3/pmem_text.h"
#include "orv3/power.h"
#include "orv3/raid_link.h"
#include "orv3/session_manager.h"
#include "orv3/trace_log.h"

#endif

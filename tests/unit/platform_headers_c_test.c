/* Compiles the platform interface as C11: the headers must stay valid C and
 * their layout checks must hold for a C compiler too. */
#include "orv3/platform.h"

int platform_headers_c_test_record_sizes(void);

int platform_headers_c_test_record_sizes(void)
{
    return (int)(sizeof(event_db_active_event_t) + sizeof(session_manager_info_t) + sizeof(change_history_record_t) +
                 sizeof(raid_link_ctrl_hw_t) + sizeof(inventory_db_memory_t) + sizeof(power_policy_setting_t) +
                 sizeof(agent_binding_scalar_t));
}

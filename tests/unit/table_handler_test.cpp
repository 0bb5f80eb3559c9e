// The table handler's answers to the SET phases. The agent refuses a SET on
// a read-only registration before the handler runs, so these are driven
// directly: a table registered writable must still refuse every column.
#include "fanTable.h"

#include <gtest/gtest.h>

namespace {

struct TwoRequests {
    netsnmp_agent_request_info info{};
    netsnmp_request_info first{};
    netsnmp_request_info second{};
    netsnmp_variable_list firstVb{};
    netsnmp_variable_list secondVb{};

    explicit TwoRequests(int mode)
    {
        info.mode = mode;
        first.requestvb = &firstVb;
        second.requestvb = &secondVb;
        first.agent_req_info = &info;
        second.agent_req_info = &info;
        first.next = &second;
        second.prev = &first;
    }
};

class FanTableHandlerInSetMode : public ::testing::TestWithParam<int> {};

TEST_P(FanTableHandlerInSetMode, MarksEveryRequestReadOnly)
{
    TwoRequests requests(GetParam());
    EXPECT_EQ(fanTable_handler(nullptr, nullptr, &requests.info, &requests.first), 0);
    EXPECT_EQ(requests.first.status, SNMP_ERR_READONLY);
    EXPECT_EQ(requests.second.status, SNMP_ERR_READONLY);
}

INSTANTIATE_TEST_SUITE_P(EverySetPhase, FanTableHandlerInSetMode,
                         ::testing::Values(MODE_SET_RESERVE1, MODE_SET_RESERVE2, MODE_SET_ACTION, MODE_SET_COMMIT,
                                           MODE_SET_FREE, MODE_SET_UNDO));

TEST(FanTableHandler, IgnoresModesOtherThanGet)
{
    TwoRequests requests(MODE_GETNEXT);
    EXPECT_EQ(fanTable_handler(nullptr, nullptr, &requests.info, &requests.first), 0);
    EXPECT_EQ(requests.first.status, 0);
    EXPECT_EQ(requests.second.status, 0);
}

TEST(FanTableHandler, AcceptsAnEmptyList)
{
    netsnmp_agent_request_info info{};
    info.mode = MODE_GET;
    EXPECT_EQ(fanTable_handler(nullptr, nullptr, &info, nullptr), 0);
}

} // namespace

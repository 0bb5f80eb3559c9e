// The generic scalar-group handler, driven directly: the agent routes only
// exact instances to a group, so an arc that matches no record is reached
// here only.
#include "scalar_group.h"

#include <gtest/gtest.h>

#include <vector>

extern "C" {
extern scalar_decl_t fans_scalars_decl[];
int fans_scalars_handler(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *,
                         netsnmp_request_info *);
}

namespace {

struct Requests {
    netsnmp_agent_request_info info{};
    std::vector<netsnmp_request_info> requests;
    std::vector<netsnmp_variable_list *> varbinds;

    Requests(int mode, std::vector<std::vector<oid>> names) : requests(names.size())
    {
        info.mode = mode;
        for (size_t i = 0; i < names.size(); ++i) {
            netsnmp_variable_list *vb = nullptr;
            snmp_varlist_add_variable(&vb, names[i].data(), names[i].size(), ASN_NULL, nullptr, 0);
            varbinds.push_back(vb);
            requests[i].requestvb = vb;
            requests[i].agent_req_info = &info;
            if (i + 1 < names.size())
                requests[i].next = &requests[i + 1];
        }
    }
    ~Requests()
    {
        for (netsnmp_variable_list *vb : varbinds)
            snmp_free_varbind(vb);
    }
    int handle() { return fans_scalars_handler(nullptr, nullptr, &info, requests.data()); }
};

const std::vector<oid> fanNumber = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 3, 1, 0};
const std::vector<oid> unknownScalar = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 3, 9, 0};

TEST(ScalarGroupHandler, UnmatchedArcGivesNoSuchNameAndTheOthersAreStillAnswered)
{
    Requests get(MODE_GET, {fanNumber, unknownScalar});
    EXPECT_EQ(get.handle(), SNMP_ERR_NOSUCHNAME);
    ASSERT_EQ(get.varbinds[0]->type, ASN_INTEGER);
    EXPECT_EQ(*get.varbinds[0]->val.integer, 8) << "the sample machine's fans";
    EXPECT_EQ(get.varbinds[1]->type, ASN_NULL);
}

TEST(ScalarGroupHandler, TheStatusIsTheOneLastAssigned)
{
    // The fan count's update after the unmatched request assigns 0 again.
    Requests get(MODE_GET, {unknownScalar, fanNumber});
    EXPECT_EQ(get.handle(), 0);
    EXPECT_EQ(get.varbinds[0]->type, ASN_NULL);
    EXPECT_EQ(get.varbinds[1]->type, ASN_INTEGER);
}

TEST(ScalarGroupHandler, AnsweredRequestsReturnTheLastStatus)
{
    Requests get(MODE_GET, {fanNumber});
    EXPECT_EQ(get.handle(), 0);
    EXPECT_EQ(get.varbinds[0]->type, ASN_INTEGER);
}

TEST(ScalarGroupHandler, ProcessedRequestsAreSkipped)
{
    Requests get(MODE_GET, {unknownScalar});
    get.requests[0].processed = 1;
    EXPECT_EQ(get.handle(), 0);
}

TEST(ScalarGroupHandler, EmptyListIsReturnedUnchanged)
{
    netsnmp_agent_request_info info{};
    info.mode = MODE_GET;
    EXPECT_EQ(fans_scalars_handler(nullptr, nullptr, &info, nullptr), 0);
}

TEST(ScalarGroupHandler, SetPhasesWithoutValidatorOrCommitDoNothing)
{
    for (int mode : {MODE_SET_RESERVE1, MODE_SET_COMMIT, MODE_SET_FREE}) {
        Requests set(mode, {fanNumber});
        EXPECT_EQ(set.handle(), 0) << "mode " << mode;
        EXPECT_EQ(set.varbinds[0]->type, ASN_NULL);
    }
}

TEST(FanNumberUpdate, StoresTheCountInFourBytes)
{
    orv3::ScalarCell cell = ~0ul;
    size_t size = 0;
    EXPECT_EQ(fans_scalars_decl[0].update(&cell, &size), 0);
    int32_t value;
    memcpy(&value, &cell, sizeof value);
    EXPECT_EQ(value, 8);
    EXPECT_EQ(size, 4u);
}

} // namespace

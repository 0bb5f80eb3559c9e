// The two table-handler styles given rows as the table iterator gives them:
// a request without a row marks every request (fan) or only the first one
// of the list (voltage), leaving the agent to answer the rest.
#include "fanTable.h"
#include "voltTable.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

struct Cell {
    void *row;
    unsigned column;
};

class IteratedRequests {
public:
    explicit IteratedRequests(std::vector<Cell> cells) : requests_(cells.size()), tableInfo_(cells.size())
    {
        info_.mode = MODE_GET;
        for (size_t i = 0; i < cells.size(); ++i) {
            netsnmp_request_info &request = requests_[i];
            oid name[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1, 2, 2, 1, cells[i].column, i + 1};
            snmp_varlist_add_variable(&request.requestvb, name, OID_LENGTH(name), ASN_NULL, nullptr, 0);
            request.agent_req_info = &info_;
            tableInfo_[i].colnum = cells[i].column;
            netsnmp_request_add_list_data(&request,
                                          netsnmp_create_data_list(TABLE_HANDLER_NAME, &tableInfo_[i], nullptr));
            if (cells[i].row)
                netsnmp_request_add_list_data(&request,
                                              netsnmp_create_data_list(TABLE_ITERATOR_NAME, cells[i].row, nullptr));
            if (i + 1 < cells.size())
                request.next = &requests_[i + 1];
        }
    }
    ~IteratedRequests()
    {
        for (netsnmp_request_info &request : requests_) {
            netsnmp_free_request_data_sets(&request);
            snmp_free_varbind(request.requestvb);
        }
    }
    netsnmp_agent_request_info *info() { return &info_; }
    netsnmp_request_info *list() { return requests_.data(); }
    u_char typeOf(size_t i) const { return requests_[i].requestvb->type; }

private:
    netsnmp_agent_request_info info_{};
    std::vector<netsnmp_request_info> requests_;
    std::vector<netsnmp_table_request_info> tableInfo_;
};

TEST(WholeListHandler, MissingRowMarksEveryRequestEvenThoseAlreadyAnswered)
{
    fanTable_entry_t row{};
    row.head.index = 1;
    IteratedRequests get({{&row, 1}, {nullptr, 1}, {&row, 1}});
    fanTable_handler(nullptr, nullptr, get.info(), get.list());
    EXPECT_EQ(get.typeOf(0), SNMP_NOSUCHINSTANCE);
    EXPECT_EQ(get.typeOf(1), SNMP_NOSUCHINSTANCE);
    EXPECT_EQ(get.typeOf(2), SNMP_NOSUCHINSTANCE);
}

TEST(PerRequestHandler, MissingRowMarksOnlyTheFirstRequestAndStops)
{
    sensor_text_entry_t row{};
    row.head.index = 1;
    IteratedRequests get({{&row, 1}, {nullptr, 1}, {&row, 1}});
    voltTable_handler(nullptr, nullptr, get.info(), get.list());
    EXPECT_EQ(get.typeOf(0), SNMP_NOSUCHINSTANCE);
    EXPECT_EQ(get.typeOf(1), ASN_NULL);
    EXPECT_EQ(get.typeOf(2), ASN_NULL) << "the handler stopped at the missing row";
}

TEST(PerRequestHandler, AnswersTextColumnsWithTheirLength)
{
    sensor_text_entry_t row{};
    row.head.index = 3;
    memcpy(row.reading.text, "12.10 Volts", 11);
    row.reading.len = 11;
    IteratedRequests get({{&row, 3}, {&row, 1}, {&row, 12}});
    voltTable_handler(nullptr, nullptr, get.info(), get.list());
    ASSERT_EQ(get.typeOf(0), ASN_OCTET_STR);
    EXPECT_EQ(get.list()[0].requestvb->val_len, 11u);
    ASSERT_EQ(get.typeOf(1), ASN_INTEGER);
    EXPECT_EQ(*get.list()[1].requestvb->val.integer, 3);
    EXPECT_EQ(get.typeOf(2), SNMP_NOSUCHOBJECT) << "no column 12";
}

} // namespace

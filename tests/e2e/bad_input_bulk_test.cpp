// GETBULK with every extreme of non-repeaters and max-repetitions, from the
// root of the subtree, from every table and from its last object: the
// non-repeaters come back as GETNEXTs, every repeater column climbs the
// served OIDs one by one, and the agent answers the next request as before.
#include "bad_input.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

class BadInputBulk : public SampleAgentSuite {};

// `answer` is what a GETNEXT of `requested` may give: the next served OID
// inside the subtree, or past its end anything greater (or endOfMibView).
void expectNextOf(const std::string &requested, const VarBind &answer)
{
    if (std::optional<std::string> next = served().successor(requested)) {
        EXPECT_EQ(answer.oid, *next) << "after " << requested;
        return;
    }
    if (answer.type == SNMP_ENDOFMIBVIEW)
        return;
    EXPECT_FALSE(oidStartsWith(answer.oid, kMonitorsRoot)) << answer;
    EXPECT_GT(oidCompare(answer.oid, requested), 0) << answer << " after " << requested;
}

void expectWellFormedBulk(const std::vector<std::string> &oids, int nonRepeaters, int maxRepetitions,
                          const Response &reply)
{
    ASSERT_FALSE(reply.timedOut);
    ASSERT_TRUE(reply.failure.empty()) << reply.failure;
    ASSERT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_NOERROR)) << reply;
    const size_t n = std::min<size_t>(std::max(nonRepeaters, 0), oids.size());
    const size_t repeaters = oids.size() - n;
    const size_t m = std::max(maxRepetitions, 0);
    ASSERT_GE(reply.varbinds.size(), n);
    if (repeaters == 0 || m == 0)
        ASSERT_EQ(reply.varbinds.size(), n) << reply;
    else
        ASSERT_GE(reply.varbinds.size(), n + repeaters) << "at least one repetition";
    ASSERT_LE(reply.varbinds.size(), n + repeaters * m);

    for (size_t i = 0; i < n; ++i)
        expectNextOf(oids[i], reply.varbinds[i]);
    for (size_t i = n; i < reply.varbinds.size(); ++i) {
        const size_t column = (i - n) % repeaters;
        const bool firstRow = i - n < repeaters;
        const VarBind &answer = reply.varbinds[i];
        if (firstRow) {
            expectNextOf(oids[n + column], answer);
            continue;
        }
        const VarBind &previous = reply.varbinds[i - repeaters];
        if (previous.type == SNMP_ENDOFMIBVIEW) {
            EXPECT_EQ(answer.type, SNMP_ENDOFMIBVIEW) << "the view stays ended: " << answer;
            continue;
        }
        if (answer.type == SNMP_ENDOFMIBVIEW) {
            // The view ends here: the varbind keeps the name it was asked for.
            EXPECT_EQ(answer.oid, previous.oid) << "varbind " << i + 1;
            continue;
        }
        EXPECT_GT(oidCompare(answer.oid, previous.oid), 0) << "varbind " << i + 1 << ": " << answer;
        expectNextOf(previous.oid, answer);
    }
}

struct BulkStart {
    std::string what;
    std::vector<std::string> oids;
};

std::vector<BulkStart> bulkStarts()
{
    const std::string last = served().walk().back().oid;
    std::vector<BulkStart> out = {
        {"the subtree root", {kMonitorsRoot}},
        {"the last object", {last}},
        {"past the subtree", {oidJoin(kMonitorsRoot, {4294967295ul})}},
        {"root, a table and the last object", {kMonitorsRoot, served().tables.front().oid, last}},
    };
    for (const MibTable &t : served().tables)
        out.push_back({t.name, {t.oid}});
    for (const MibTable &t : served().tables)
        out.push_back({t.name + " from a bad index", {t.cell(1, "4294967295"), t.cell(t.lastColumn(), "0.0")}});
    return out;
}

TEST_F(BadInputBulk, EveryCombinationOfExtremesGivesAWellFormedClimbingAnswer)
{
    SnmpClient reader = agent().client();
    const std::vector<int> counts = {0, 1, 1000, 65535};
    size_t cases = 0;
    for (const BulkStart &start : bulkStarts()) {
        for (int nonRepeaters : counts) {
            for (int maxRepetitions : counts) {
                SCOPED_TRACE(start.what + ", non-repeaters " + std::to_string(nonRepeaters) + ", max-repetitions " +
                             std::to_string(maxRepetitions));
                Response reply = reader.getBulk(nonRepeaters, maxRepetitions, start.oids);
                expectWellFormedBulk(start.oids, nonRepeaters, maxRepetitions, reply);
                expectStillAnswers();
                ++cases;
            }
        }
    }
    EXPECT_GT(cases, 1000u);
}

TEST_F(BadInputBulk, NonRepeatersBeyondTheVarbindCountMakeEveryVarbindANonRepeater)
{
    SnmpClient reader = agent().client();
    for (const BulkStart &start : bulkStarts()) {
        SCOPED_TRACE(start.what);
        const int beyond = static_cast<int>(start.oids.size()) + 1;
        Response reply = reader.getBulk(beyond, 1000, start.oids);
        expectWellFormedBulk(start.oids, beyond, 1000, reply);
        expectStillAnswers();
    }
}

} // namespace
} // namespace orv3::test

// Requests that name no served instance: scalars asked with a wrong
// instance, table cells with impossible indexes or columns, and such
// varbinds mixed with good ones. A GET answers each varbind for itself, a
// GETNEXT always moves on to the next served OID, a SET creates nothing.
#include "bad_input.h"

#include <gtest/gtest.h>

namespace orv3::test {
namespace {

class BadInputAddress : public SampleAgentSuite {};

// The GETNEXT of `requested` answers the first served OID after it.
void expectGetNextMovesOn(const std::string &requested, const VarBind &answer)
{
    if (std::optional<std::string> next = served().successor(requested)) {
        EXPECT_EQ(answer.oid, *next) << "GETNEXT " << requested;
        return;
    }
    // Past the last object of the module: whatever the agent serves after it.
    EXPECT_FALSE(oidStartsWith(answer.oid, kMonitorsRoot)) << answer;
    if (answer.type != SNMP_ENDOFMIBVIEW) {
        EXPECT_GT(oidCompare(answer.oid, requested), 0) << answer;
    }
}

struct AddressCase {
    std::string oid;
    std::string get; // exception a GET answers, empty for a value
    long set;        // status of a SET of the object's own type (private community)
    SetValue setValue;
};

void runAddressCases(const std::vector<AddressCase> &cases)
{
    SnmpClient reader = agent().client();
    SnmpClient writer = agent().client("private");
    for (const AddressCase &c : cases) {
        SCOPED_TRACE(c.oid);
        Response got = reader.get({c.oid});
        ASSERT_TRUE(got.ok()) << got;
        ASSERT_EQ(got.varbinds.size(), 1u);
        if (c.get.empty())
            EXPECT_FALSE(got.varbinds[0].isException()) << got;
        else
            EXPECT_EQ(typeName(got.varbinds[0].type), c.get) << got;

        Response next = reader.getNext({c.oid});
        ASSERT_TRUE(next.ok()) << next;
        ASSERT_EQ(next.varbinds.size(), 1u);
        expectGetNextMovesOn(c.oid, next.varbinds[0]);

        Response set = writer.set({c.setValue});
        EXPECT_EQ(errorStatusName(set.errorStatus), errorStatusName(c.set)) << set;
        EXPECT_EQ(set.errorIndex, 1) << set;
        expectStillAnswers();
    }
}

TEST_F(BadInputAddress, EveryScalarAskedWithAWrongInstanceHasNoValueAndGetNextMovesOn)
{
    // Each scalar is registered as its own instance (object.0): a longer OID
    // lies inside that registration and is no instance of it, while a
    // sibling instance or the bare object lies outside every registration.
    std::vector<AddressCase> cases;
    for (const MibScalar &s : served().scalars) {
        const long belowInstance = s.writable ? SNMP_ERR_NOCREATION : SNMP_ERR_NOTWRITABLE;
        cases.push_back(
            {s.instance() + ".0", "noSuchInstance", belowInstance, ownTypeValue(s.instance() + ".0", s.syntax)});
        cases.push_back({s.oid + ".1", "noSuchObject", SNMP_ERR_NOTWRITABLE, ownTypeValue(s.oid + ".1", s.syntax)});
        cases.push_back({s.oid, "noSuchObject", SNMP_ERR_NOTWRITABLE, ownTypeValue(s.oid, s.syntax)});
    }
    EXPECT_GT(served().scalars.size(), 20u) << "every scalar of the MIB";
    runAddressCases(cases);
}

TEST_F(BadInputAddress, EveryTableAskedForAnIndexWithoutARowHasNoSuchInstance)
{
    std::vector<AddressCase> cases;
    for (const MibTable &t : served().tables) {
        ASSERT_FALSE(t.rows.empty()) << t.name << " has rows on the sample machine";
        const std::string row = std::to_string(t.rows.front());
        for (unsigned long column : {1ul, t.lastColumn()}) {
            // Indexes that no table can hold, and index parts too long or missing.
            std::vector<std::string> indexes = {
                "2147483648", "2147483649", "4294967295", row + ".0", row + ".1.2", "0.0", ""};
            if (!t.hasRow(0))
                indexes.push_back("0");
            for (const std::string &index : indexes) {
                std::string cell = t.cell(column, index);
                cases.push_back(
                    {cell, "noSuchInstance", SNMP_ERR_NOTWRITABLE, ownTypeValue(cell, t.columns.at(column))});
            }
        }
    }
    EXPECT_GE(served().tables.size(), 31u) << "every table of the MIB";
    runAddressCases(cases);
}

TEST_F(BadInputAddress, EveryTableAskedForAColumnItDoesNotHaveHasNoSuchObject)
{
    std::vector<AddressCase> cases;
    for (const MibTable &t : served().tables) {
        const std::string row = std::to_string(t.rows.front());
        for (unsigned long column = 0; column <= t.lastColumn() + 1; ++column) {
            if (t.columns.count(column))
                continue;
            std::string cell = t.cell(column, row);
            cases.push_back({cell, "noSuchObject", SNMP_ERR_NOTWRITABLE, SetValue::ofInteger(cell, 1)});
        }
        // The table and its entry themselves, and an entry arc other than 1.
        for (const std::string &oid : {t.oid, t.entry(), oidJoin(t.oid, {2, 1, row})})
            cases.push_back({oid, "noSuchObject", SNMP_ERR_NOTWRITABLE, SetValue::ofInteger(oid, 1)});
    }
    runAddressCases(cases);
}

TEST_F(BadInputAddress, ObjectsThatDoNotExistInsideTheSubtreeHaveNoSuchObject)
{
    std::vector<AddressCase> cases;
    for (const std::string &oid :
         {std::string(kMonitorsRoot), oidJoin(kMonitorsRoot, {0}), oidJoin(kMonitorsRoot, {0, 0}),
          oidJoin(kMonitorsRoot, {7, 1, 0}), oidJoin(kMonitorsRoot, {9, 1, 0}), oidJoin(kMonitorsRoot, {99}),
          oidJoin(kMonitorsRoot, {3, 99, 0}), oidJoin(kMonitorsRoot, {8, 4, 0}), oidJoin(kMonitorsRoot, {10, 9, 0}),
          oidJoin(kMonitorsRoot, {13, 2, 1, 0}), oidJoin(kMonitorsRoot, {4294967295ul}),
          oidJoin(kMonitorsRoot, {14, 4294967295ul, 1, 1})})
        cases.push_back({oid, "noSuchObject", SNMP_ERR_NOTWRITABLE, SetValue::ofInteger(oid, 1)});
    runAddressCases(cases);
}

// A multi-varbind request crossing groups and tables: bad varbinds beside
// good ones, at most one of them per table (a table answers a request with a
// missing row for the varbinds of that table together).
struct MixedRequest {
    std::vector<std::string> oids;
};

std::vector<MixedRequest> mixedRequests()
{
    std::vector<MixedRequest> out;
    const auto &scalars = served().scalars;
    const auto &tables = served().tables;
    for (size_t i = 0; i < tables.size(); ++i) {
        const MibTable &badIndex = tables[i];
        const MibTable &good = tables[(i + 1) % tables.size()];
        const MibTable &badColumn = tables[(i + 2) % tables.size()];
        const MibScalar &first = scalars[i % scalars.size()];
        const MibScalar &second = scalars[(i + 7) % scalars.size()];
        out.push_back(
            {{first.instance(), badIndex.cell(badIndex.lastColumn(), "2147483648"), good.answeredColumns.front(),
              second.oid + ".1", badColumn.cell(0, std::to_string(badColumn.rows.front())), second.instance(),
              first.instance() + ".0"}});
    }
    return out;
}

TEST_F(BadInputAddress, GetAcrossGroupsAnswersEachVarbindAsItsOwnGetWould)
{
    SnmpClient reader = agent().client();
    for (const MixedRequest &request : mixedRequests()) {
        SCOPED_TRACE(::testing::PrintToString(request.oids));
        std::vector<VarBind> alone;
        for (const std::string &oid : request.oids)
            alone.push_back(getOne(oid));
        Response reply = reader.get(request.oids);
        ASSERT_TRUE(reply.ok()) << reply;
        ASSERT_EQ(reply.varbinds.size(), request.oids.size()) << reply;
        for (size_t i = 0; i < alone.size(); ++i)
            EXPECT_EQ(reply.varbinds[i].toString(), alone[i].toString()) << "varbind " << i + 1;
        expectStillAnswers();
    }
}

TEST_F(BadInputAddress, GetNextAcrossGroupsMovesEachVarbindOnByItself)
{
    SnmpClient reader = agent().client();
    for (const MixedRequest &request : mixedRequests()) {
        SCOPED_TRACE(::testing::PrintToString(request.oids));
        Response reply = reader.getNext(request.oids);
        ASSERT_TRUE(reply.ok()) << reply;
        ASSERT_EQ(reply.varbinds.size(), request.oids.size()) << reply;
        for (size_t i = 0; i < request.oids.size(); ++i)
            expectGetNextMovesOn(request.oids[i], reply.varbinds[i]);
        expectStillAnswers();
    }
}

TEST_F(BadInputAddress, GetNextPastTheLastColumnMovesOnBesideACellOfTheSameTable)
{
    // Two varbinds of one table in one request: one lands on a row, the
    // other lies past the table's last column and so belongs to whatever
    // follows the table.
    SnmpClient reader = agent().client();
    for (const MibTable &t : served().tables) {
        const std::string row = std::to_string(t.rows.front());
        for (const std::string &pastTheEnd : {t.cell(t.lastColumn() + 1, row), t.cell(t.lastColumn() + 1, "")}) {
            const std::vector<std::string> oids = {t.cell(1, row), pastTheEnd};
            SCOPED_TRACE(t.name + ": " + ::testing::PrintToString(oids));
            Response reply = reader.getNext(oids);
            ASSERT_TRUE(reply.ok()) << reply;
            ASSERT_EQ(reply.varbinds.size(), 2u);
            expectGetNextMovesOn(oids[0], reply.varbinds[0]);
            expectGetNextMovesOn(oids[1], reply.varbinds[1]);
            expectStillAnswers();
        }
    }
}

} // namespace
} // namespace orv3::test

// The module served by orv3-monitors-agentx to a master snmpd answers as
// the module loaded into snmpd: the same walks, the same GETBULKs, the same
// SETs with the same errors, a refused store write included.
#include "bad_input.h"
#include "fan_machines.h"
#include "harness/campaign.h"

#include <gtest/gtest.h>

#include <memory>

namespace orv3::test {
namespace {

const std::string kIdentityLed = oidJoin(kMonitorsRoot, {8, 1, 0});
const std::string kInformationLed = oidJoin(kMonitorsRoot, {8, 3, 0});
const std::string kCappingPolicy = oidJoin(kMonitorsRoot, {10, 1, 1, 0});
const std::string kMissingObject = oidJoin(kMonitorsRoot, {99, 0});

AgentOptions sampleAt(long clock)
{
    AgentOptions options;
    options.machinePath = "sample.json";
    options.clockStart = clock;
    return options;
}

// One agent of each form, serving the sample machine from the same clock.
class AgentXForm : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        dlmod_ = new Agent(sampleAt(kStartTime));
        agentx_ = new AgentXPair(sampleAt(kStartTime));
        served_ = new ServedObjects(ServedObjects::of(*dlmod_));
    }
    static void TearDownTestSuite()
    {
        for (Agent *agent : {dlmod_, agentx_ ? &agentx_->subagent : nullptr})
            if (agent) {
                agent->stop();
                EXPECT_EQ(agent->sanitizerFindings(), "");
            }
        delete served_;
        delete agentx_;
        delete dlmod_;
        served_ = nullptr;
        agentx_ = nullptr;
        dlmod_ = nullptr;
    }

    static SnmpClient dlmodClient(const std::string &community = "public") { return dlmod_->client(community); }
    static SnmpClient agentxClient(const std::string &community = "public")
    {
        return agentx_->subagent.client(community);
    }

    static void expectSameAnswers(const Response &dlmod, const Response &agentx, const std::string &what)
    {
        EXPECT_EQ(agentx.toString(), dlmod.toString()) << what;
    }

    // A SET answers alike but for one thing AgentX cannot carry: snmpd
    // answers a refused store write (a failed COMMIT) with error index 0,
    // while the master always names a varbind: the first of the part of the
    // SET that failed, `refusedIndex`.
    static void expectSameSetAnswers(const Response &dlmod, const Response &agentx, const std::string &what,
                                     long refusedIndex = 1)
    {
        if (dlmod.errorStatus == SNMP_ERR_GENERR && dlmod.errorIndex == 0) {
            Response indexed = dlmod;
            indexed.errorIndex = refusedIndex;
            EXPECT_EQ(agentx.toString(), indexed.toString()) << what;
        } else {
            expectSameAnswers(dlmod, agentx, what);
        }
    }

    static Agent *dlmod_;
    static AgentXPair *agentx_;
    static ServedObjects *served_;
};

Agent *AgentXForm::dlmod_ = nullptr;
AgentXPair *AgentXForm::agentx_ = nullptr;
ServedObjects *AgentXForm::served_ = nullptr;

TEST_F(AgentXForm, AWalkThroughTheMasterAnswersAsSnmpdWithTheModule)
{
    Response dlmod = dlmodClient().walkResponse(kMonitorsRoot);
    Response agentx = agentxClient().walkResponse(kMonitorsRoot);
    ASSERT_TRUE(dlmod.failure.empty()) << dlmod.failure;
    ASSERT_TRUE(agentx.failure.empty()) << agentx.failure;
    EXPECT_GT(dlmod.varbinds.size(), 2000u);
    ASSERT_EQ(agentx.varbinds.size(), dlmod.varbinds.size());
    for (size_t i = 0; i < dlmod.varbinds.size(); ++i)
        ASSERT_EQ(agentx.varbinds[i].toString(), dlmod.varbinds[i].toString()) << "varbind " << i;
}

TEST_F(AgentXForm, AGetBulkWalkAnswersAsSnmpd)
{
    SnmpClient dlmod = dlmodClient(), agentx = agentxClient();
    expectSameAnswers(bulkWalk(dlmod, kMonitorsRoot), bulkWalk(agentx, kMonitorsRoot), "whole subtree");
}

TEST_F(AgentXForm, GetBulksWithEveryShapeAnswerAsSnmpd)
{
    SnmpClient dlmod = dlmodClient(), agentx = agentxClient();
    std::vector<std::string> starts = {kMonitorsRoot, kIdentityLed};
    for (const MibTable &table : served_->tables)
        starts.push_back(table.entry());
    for (const std::string &start : starts)
        for (int nonRepeaters : {0, 1})
            for (int repetitions : {0, 1, 7, 60}) {
                std::vector<std::string> oids = {start, kFanNumber};
                expectSameAnswers(dlmod.getBulk(nonRepeaters, repetitions, oids),
                                  agentx.getBulk(nonRepeaters, repetitions, oids),
                                  start + " non-repeaters " + std::to_string(nonRepeaters) + " max-repetitions " +
                                      std::to_string(repetitions));
            }
}

TEST_F(AgentXForm, GetsOfEveryScalarAndFirstRowAnswerAsSnmpd)
{
    SnmpClient dlmod = dlmodClient(), agentx = agentxClient();
    for (const MibScalar &scalar : served_->scalars)
        expectSameAnswers(dlmod.get({scalar.instance(), scalar.oid, scalar.oid + ".1"}),
                          agentx.get({scalar.instance(), scalar.oid, scalar.oid + ".1"}), scalar.name);
    for (const MibTable &table : served_->tables)
        for (const std::string &cell : table.answeredColumns)
            expectSameAnswers(dlmod.get({cell}), agentx.get({cell}), cell);
}

// The SETs of the comparison: each writable object with values in and out
// of its range and of other types, read-only and missing objects, and
// requests in which one varbind of several fails.
std::vector<std::vector<SetValue>> comparedSets(const ServedObjects &served)
{
    std::vector<std::vector<SetValue>> sets;
    for (const MibScalar &scalar : served.writableScalars()) {
        for (long value : {1L, 0L, 2L, 7L, -1L, 2147483647L})
            sets.push_back({SetValue::ofInteger(scalar.instance(), value)});
        sets.push_back({SetValue::ofOctets(scalar.instance(), "1")});
        sets.push_back({SetValue::ofGauge(scalar.instance(), 1)});
        sets.push_back({SetValue::ofInteger(scalar.oid + ".1", 1)});
        // Back to a value every group takes, so that the next case starts alike.
        sets.push_back({SetValue::ofInteger(scalar.instance(), 0)});
    }
    for (const MibScalar &scalar : served.scalars)
        if (!scalar.writable)
            sets.push_back({ownTypeValue(scalar.instance(), scalar.syntax)});
    for (const MibTable &table : served.tables)
        if (!table.answeredColumns.empty())
            sets.push_back({ownTypeValue(table.answeredColumns.back(), table.columns.rbegin()->second)});
    sets.push_back({SetValue::ofInteger(kMissingObject, 1)});
    sets.push_back({SetValue::ofInteger(kIdentityLed, 1), SetValue::ofInteger(kInformationLed, 7)});
    sets.push_back({SetValue::ofInteger(kIdentityLed, 2), SetValue::ofInteger(kFanNumber, 1)});
    sets.push_back({SetValue::ofInteger(kIdentityLed, 0), SetValue::ofInteger(kInformationLed, 0)});
    return sets;
}

std::string describe(const std::vector<SetValue> &set)
{
    std::string text;
    for (const SetValue &value : set)
        text += value.oid + " " + typeName(value.type) + " " +
                (value.type == ASN_OCTET_STR ? value.octets : std::to_string(value.integer)) + "; ";
    return text;
}

TEST_F(AgentXForm, EverySetAnswersAsSnmpdAndLeavesTheSameValues)
{
    SnmpClient dlmod = dlmodClient("private"), agentx = agentxClient("private");
    const std::vector<std::vector<SetValue>> sets = comparedSets(*served_);
    EXPECT_GT(sets.size(), 60u);
    for (const std::vector<SetValue> &set : sets) {
        const std::string what = describe(set);
        expectSameSetAnswers(dlmod.set(set), agentx.set(set), what);
        for (const SetValue &value : set)
            expectSameAnswers(dlmod.get({value.oid}), agentx.get({value.oid}), "after " + what);
    }
}

TEST_F(AgentXForm, AValueTheStoreRefusesIsAGenErrThroughTheMasterAsThroughSnmpd)
{
    SnmpClient agentx = agentxClient("private");
    ASSERT_TRUE(agentx.set({SetValue::ofInteger(kIdentityLed, 1)}).ok());

    // The store takes 0, 1 and 2 for an LED: 7 passes the module's checks and
    // is refused as the store is written.
    Response refused = agentx.set({SetValue::ofInteger(kIdentityLed, 7)});
    EXPECT_FALSE(refused.timedOut);
    EXPECT_EQ(refused.errorStatus, SNMP_ERR_GENERR);
    EXPECT_EQ(refused.errorIndex, 1);

    Response after = agentxClient().get({kIdentityLed});
    ASSERT_TRUE(after.ok()) << after;
    EXPECT_EQ(after.varbinds[0].integer, 1) << "the refused value was not taken";
    EXPECT_TRUE(agentx.set({SetValue::ofInteger(kIdentityLed, 0)}).ok()) << "and the next SET works";
}

TEST_F(AgentXForm, ASetAcrossTwoGroupsWithARefusedPartIsAGenErrAsThroughSnmpd)
{
    // The LED and the capping policy are registrations of their own: the
    // subagent commits both when the master asks it to commit, so the LED's
    // refusal reaches the manager through AgentX as well.
    SnmpClient dlmod = dlmodClient("private"), agentx = agentxClient("private");
    const std::vector<std::pair<std::vector<SetValue>, long>> sets = {
        {{SetValue::ofInteger(kIdentityLed, 7), SetValue::ofInteger(kCappingPolicy, 0)}, 1},
        {{SetValue::ofInteger(kCappingPolicy, 0), SetValue::ofInteger(kIdentityLed, 7)}, 2},
    };
    for (const auto &[set, ledIndex] : sets) {
        const std::string what = describe(set);
        Response throughSnmpd = dlmod.set(set);
        EXPECT_EQ(throughSnmpd.errorStatus, SNMP_ERR_GENERR) << what;
        Response throughAgentX = agentx.set(set);
        EXPECT_EQ(throughAgentX.errorStatus, SNMP_ERR_GENERR) << what;
        expectSameSetAnswers(throughSnmpd, throughAgentX, what, ledIndex);
        for (const std::string &oid : {kIdentityLed, kCappingPolicy})
            expectSameAnswers(dlmodClient().get({oid}), agentxClient().get({oid}), oid + " after " + what);
    }
}

TEST_F(AgentXForm, APartRefusedInActionLeavesTheSameValuesAsThroughSnmpd)
{
    // The master sends a SET to its subagent one registration at a time, and
    // each part commits once it has passed ACTION. A later part refused in
    // ACTION (here the LEDs' namespace lock) leaves the earlier part written,
    // as snmpd does.
    SnmpClient agentx = agentxClient("private");
    agentx_->subagent.clearCallLog();
    ASSERT_TRUE(agentx.set({SetValue::ofInteger(kIdentityLed, 0)}).ok());
    std::string ledNamespaces;
    for (const std::string &line : agentx_->subagent.callLog())
        if (line.rfind("quel_dm_LockNamespaces ", 0) == 0)
            ledNamespaces = line.substr(line.find(' ') + 1);
    ASSERT_FALSE(ledNamespaces.empty()) << "the LED group locks its namespaces";

    nlohmann::json machine = nlohmann::json::parse(readFileText(ORV3_SOURCE_DIR "/machines/sample.json"));
    machine["faults"] = {{{"call", "quel_dm_LockNamespaces"}, {"key", ledNamespaces}, {"result", 1}}};
    for (Agent *agent : {dlmod_, &agentx_->subagent})
        agent->replaceMachine(machine.dump());

    const std::vector<SetValue> set = {SetValue::ofInteger(kCappingPolicy, 1), SetValue::ofInteger(kIdentityLed, 1)};
    Response throughSnmpd = dlmodClient("private").set(set);
    Response throughAgentX = agentx.set(set);
    EXPECT_EQ(throughSnmpd.errorStatus, SNMP_ERR_GENERR) << throughSnmpd;
    EXPECT_EQ(throughAgentX.errorStatus, SNMP_ERR_GENERR) << throughAgentX;
    EXPECT_EQ(throughAgentX.errorIndex, throughSnmpd.errorIndex);
    Response policyThroughSnmpd = dlmodClient().get({kCappingPolicy});
    Response policyThroughAgentX = agentxClient().get({kCappingPolicy});
    ASSERT_TRUE(policyThroughSnmpd.ok() && policyThroughAgentX.ok());
    EXPECT_EQ(policyThroughSnmpd.varbinds[0].integer, 1);
    EXPECT_EQ(policyThroughAgentX.varbinds[0].integer, 1);
    expectSameAnswers(dlmodClient().get({kIdentityLed}), agentxClient().get({kIdentityLed}), "the LED after");

    // Back as they were, for the other tests.
    machine.erase("faults");
    for (Agent *agent : {dlmod_, &agentx_->subagent})
        agent->replaceMachine(machine.dump());
    EXPECT_TRUE(agentx.set({SetValue::ofInteger(kCappingPolicy, 0)}).ok());
    EXPECT_TRUE(dlmodClient("private").set({SetValue::ofInteger(kCappingPolicy, 0)}).ok());
}

TEST_F(AgentXForm, TheModulesTraceLinesComeFromTheSubagent)
{
    agentx_->subagent.clearCallLog();
    ASSERT_TRUE(agentxClient("private").set({SetValue::ofInteger(kIdentityLed, 0)}).ok());
    EXPECT_GT(agentx_->subagent.countInStdout("orv3-monitors-agentx: serving "), 0u) << agentx_->subagent.stdoutText();
    EXPECT_GT(agentx_->subagent.countCalls("quel_dm_"), 0u) << "the subagent called the platform";
    EXPECT_EQ(agentx_->master.countInStdout("dlopen("), 0u) << "the master loads no module";
}

} // namespace
} // namespace orv3::test

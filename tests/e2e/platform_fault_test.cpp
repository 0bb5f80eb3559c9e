// Platform faults by class, against every platform call the module makes
// while it serves the sample machine: each call failing always, failing once
// after it has worked, "succeeding" without writing anything, answering
// slowly, and answering with every byte it writes set to one value; then the clock going backwards, rows changing in
// the middle of a walk, and a store full of extreme numbers and overlong texts. Whatever the platform does, every walk
// of the subtree completes in ascending order, the agent keeps answering, and the sanitized build reports nothing.
#include "fan_machines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <set>
#include <sstream>

namespace orv3::test {
namespace {

const std::string kIdentityLed = oidJoin(kMonitorsRoot, {8, 1, 0});

nlohmann::json sampleMachine()
{
    std::ifstream file(ORV3_SOURCE_DIR "/machines/sample.json");
    return nlohmann::json::parse(file);
}

AgentOptions sampleAgent()
{
    AgentOptions options;
    options.machinePath = "sample.json";
    options.clockStart = kStartTime;
    return options;
}

// A walk of the whole subtree by GETBULK, as monitoring systems walk. An
// object whose platform call fails answers the error its group gives for
// that failure (genErr, noSuchName, ...), which ends a manager's walk; this
// one notes the error and goes on past that object, found in `objects` (the
// OIDs a walk of the healthy machine answered), so that the rest of the
// subtree is still read.
struct BulkWalk {
    size_t varbinds = 0;
    std::vector<std::string> errors; // "OID: status" of every object skipped
    std::string failure;             // no answer, or OIDs out of order
};

using Oid = std::vector<unsigned long>;

BulkWalk bulkWalk(SnmpClient &&client, const std::vector<Oid> &objects)
{
    BulkWalk walk;
    const Oid root = oidParse(kMonitorsRoot);
    Oid last = root;
    for (int requests = 0; requests < 2000; ++requests) {
        const std::string next = oidJoin("", last);
        Response reply = client.getBulk(0, 40, {next});
        if (reply.timedOut || !reply.failure.empty()) {
            walk.failure = "after " + next + ": " + reply.toString();
            return walk;
        }
        if (reply.errorStatus != SNMP_ERR_NOERROR) {
            auto failing = std::upper_bound(objects.begin(), objects.end(), last);
            if (failing == objects.end())
                return walk;
            walk.errors.push_back(oidJoin("", *failing) + ": " + errorStatusName(reply.errorStatus));
            last = *failing;
            continue;
        }
        if (reply.varbinds.empty()) {
            walk.failure = "an empty answer after " + next;
            return walk;
        }
        for (const VarBind &vb : reply.varbinds) {
            const Oid at = oidParse(vb.oid);
            const bool inside = at.size() > root.size() && std::equal(root.begin(), root.end(), at.begin());
            if (vb.type == SNMP_ENDOFMIBVIEW || !inside)
                return walk;
            if (!(last < at)) {
                walk.failure = vb.oid + " does not follow " + oidJoin("", last);
                return walk;
            }
            if (vb.isException()) {
                walk.failure = "an exception inside a walk: " + vb.toString();
                return walk;
            }
            last = at;
            ++walk.varbinds;
        }
    }
    walk.failure = "no end after 2000 requests";
    return walk;
}

// What every platform call the module makes while it serves the sample
// machine is called: one walk and one SET of the identify LED show them.
std::set<std::string> callsOfTheModule()
{
    Agent agent(sampleAgent());
    agent.clearCallLog();
    bulkWalk(agent.client(), {});
    agent.client("private").set({SetValue::ofInteger(kIdentityLed, 1)});
    std::set<std::string> calls;
    for (const std::string &line : agent.callLog())
        calls.insert(line.substr(0, line.find(' ')));
    return calls;
}

struct FaultClass {
    const char *name;
    nlohmann::json fields; // added to {"call": ...}
};

class PlatformFaults : public ::testing::TestWithParam<FaultClass> {
protected:
    static void SetUpTestSuite()
    {
        calls_ = new std::set<std::string>(callsOfTheModule());
        agent_ = new Agent(sampleAgent());
        objects_ = new std::vector<Oid>();
        for (const VarBind &vb : agent_->client().walk(kMonitorsRoot))
            objects_->push_back(oidParse(vb.oid));
    }
    static void TearDownTestSuite()
    {
        if (agent_) {
            EXPECT_EQ(agent_->sanitizerFindings(), "");
        }
        delete agent_;
        delete calls_;
        delete objects_;
        agent_ = nullptr;
        calls_ = nullptr;
        objects_ = nullptr;
    }

    // Serves the sample machine with `faults` from a clock 10 seconds on,
    // so that every cached table loads again under them.
    static void serveWithFaults(const nlohmann::json &faults)
    {
        nlohmann::json machine = sampleMachine();
        machine["faults"] = faults;
        const size_t reloads = agent_->countInStderr(": reloaded\n");
        agent_->replaceMachine(machine.dump());
        clock_ += 10;
        agent_->setClock(clock_);
        // The next platform call reads the new description.
        agent_->client().get({kFanNumber});
        ASSERT_EQ(agent_->countInStderr(": reloaded\n"), reloads + 1) << agent_->stderrText();
    }

    // A walk of the subtree, a SET of the identify LED and a GET afterwards:
    // the walk complete and ascending (objects whose call failed skipped with
    // their error), the SET answered, the agent still there.
    static BulkWalk expectServed(const std::string &what)
    {
        BulkWalk walk = bulkWalk(agent_->client(), *objects_);
        EXPECT_EQ(walk.failure, "") << what;
        EXPECT_GT(walk.varbinds, 100u) << what;
        Response set = agent_->client("private").set({SetValue::ofInteger(kIdentityLed, 1)});
        EXPECT_FALSE(set.timedOut) << what;
        Response after = agent_->client().get({kFanNumber});
        EXPECT_FALSE(after.timedOut) << what;
        EXPECT_TRUE(agent_->running()) << what;
        return walk;
    }

    static std::set<std::string> *calls_;
    static std::vector<Oid> *objects_;
    static Agent *agent_;
    static long clock_;
};

std::set<std::string> *PlatformFaults::calls_ = nullptr;
std::vector<Oid> *PlatformFaults::objects_ = nullptr;
Agent *PlatformFaults::agent_ = nullptr;
long PlatformFaults::clock_ = kStartTime;

TEST_F(PlatformFaults, TheModuleCallsEveryServiceOfThePlatform)
{
    // A sanity check of the list the classes run over.
    for (const char *call :
         {"quel_dm_GetFirstRow", "quel_dm_GetNextRow", "CEM_Db_GetActiveEventList", "sm_session_get_type_info",
          "get_chghist_log", "pwrmgt_get_history_power", "raidlink_get_ctrl_list", "orvdb_get_pci_adapter_list",
          "orvdb_get_memory_by_id", "agentless_get_supported_status", "quel_dm_UpdateVars", "quel_dm_UnlockNamespaces"})
        EXPECT_EQ(calls_->count(call), 1u) << call;
    EXPECT_GT(calls_->size(), 40u);
}

const FaultClass kFaultClasses[] = {
    {"fails on every call", {{"result", 1}, {"status", 9}}},
    {"fails on every call with a negative result", {{"result", -1}, {"status", 2}}},
    {"fails once, on its second call", {{"result", 1}, {"status", 9}, {"after", 1}, {"times", 1}}},
    {"succeeds without writing anything", {{"result", 0}, {"status", 0}}},
    {"answers slowly", {{"delayMs", 100}, {"times", 1}}},
    // Records, texts and counts the call writes, all of one byte: zero-filled
    // records; texts without a terminator, counts past the arrays they
    // describe and codes out of range (-1, 0xFF, "AAAA", 0x41414141).
    {"answers with every byte it writes zero", {{"fill", 0}}},
    {"answers with every byte it writes 0xFF", {{"fill", 255}}},
    {"answers with every byte it writes A", {{"fill", 0x41}}},
};

TEST_P(PlatformFaults, OnEveryCallLeavesTheSubtreeServed)
{
    const FaultClass &faultClass = GetParam();
    for (const std::string &call : *calls_) {
        nlohmann::json fault = faultClass.fields;
        fault["call"] = call;
        serveWithFaults(nlohmann::json::array({fault}));
        expectServed(call + " " + faultClass.name);
    }
}

INSTANTIATE_TEST_SUITE_P(Classes, PlatformFaults, ::testing::ValuesIn(kFaultClasses), [](const auto &info) {
    std::string name;
    for (const char *c = info.param.name; *c; ++c)
        if (std::isalnum(static_cast<unsigned char>(*c)))
            name += *c;
    return name;
});

TEST_F(PlatformFaults, EveryCallFailingAtOnceLeavesTheSubtreeServed)
{
    nlohmann::json faults = nlohmann::json::array();
    for (const std::string &call : *calls_)
        faults.push_back({{"call", call}, {"result", 1}, {"status", 9}});
    serveWithFaults(faults);
    expectServed("every call failing");
}

TEST_F(PlatformFaults, TheClockGoingBackwardsLeavesTheSubtreeServedAndLoadsResume)
{
    serveWithFaults(nlohmann::json::array());
    EXPECT_TRUE(expectServed("at the start").errors.empty());
    for (long step : {-3L, -100L, -86400L, 0L, 1L}) {
        agent_->setClock(clock_ + step);
        BulkWalk walk = expectServed("the clock moved by " + std::to_string(step));
        EXPECT_TRUE(walk.errors.empty()) << ::testing::PrintToString(walk.errors);
    }
    const size_t loads = agent_->countCalls("quel_dm_GetFirstRow " + kFanStoreTable);
    clock_ += 100;
    agent_->setClock(clock_);
    expectServed("the clock past where it was");
    EXPECT_GT(agent_->countCalls("quel_dm_GetFirstRow " + kFanStoreTable), loads);
}

TEST_F(PlatformFaults, RowsChangingInTheMiddleOfAWalkKeepItAscending)
{
    serveWithFaults(nlohmann::json::array());
    nlohmann::json machine = sampleMachine();
    nlohmann::json &fans = machine["store"][kFanStoreTable];
    std::vector<unsigned long> last = oidParse(kMonitorsRoot);
    std::string next = kMonitorsRoot;
    size_t steps = 0;
    for (; steps < 5000; ++steps) {
        if (steps % 200 == 100) {
            // Every other change drops the first rows, the others add rows
            // past the last; the clock moves on so that the tables reload.
            if (steps % 400 == 100 && fans.size() > 2)
                fans.erase(fans.begin());
            else
                fans.push_back({{"index", 100 + steps}, {"descr", "Fan " + std::to_string(steps)}, {"speedPct", 50}});
            agent_->replaceMachine(machine.dump());
            clock_ += 10;
            agent_->setClock(clock_);
        }
        Response reply = agent_->client().getNext({next});
        ASSERT_TRUE(reply.ok()) << reply;
        ASSERT_EQ(reply.varbinds.size(), 1u);
        const std::vector<unsigned long> at = oidParse(reply.varbinds[0].oid);
        if (reply.varbinds[0].type == SNMP_ENDOFMIBVIEW ||
            reply.varbinds[0].oid.rfind(std::string(kMonitorsRoot) + ".", 0) != 0)
            break;
        ASSERT_LT(last, at) << reply.varbinds[0].oid;
        last = at;
        next = reply.varbinds[0].oid;
    }
    EXPECT_LT(steps, 5000u) << "the walk ends";
    EXPECT_GT(steps, 400u);
}

TEST_F(PlatformFaults, AFilledRowIsServedUnderItsFilledIndexCutToItsColumn)
{
    // The first fan row's holders all "A": index 0x41414141, and a
    // description that fills its holder without a terminator.
    serveWithFaults(
        nlohmann::json::array({{{"call", "quel_dm_GetFirstRow"}, {"key", kFanStoreTable}, {"fill", 0x41}}}));
    Response descr = agent_->client().get({oidJoin(kFanTable, {1, 2, 0x41414141})});
    ASSERT_TRUE(descr.ok()) << descr;
    ASSERT_EQ(descr.varbinds.size(), 1u);
    EXPECT_EQ(descr.varbinds[0].type, ASN_OCTET_STR);
    EXPECT_EQ(descr.varbinds[0].octets, std::string(30, 'A'));
    expectServed("a filled first fan row");
}

// Every number of the store at an extreme of 32 bits and every text four
// times as long as any field that holds it.
void makeExtreme(nlohmann::json &value, size_t &turn)
{
    static const long kExtremes[] = {-1, 2147483647, -2147483648L, 0};
    if (value.is_object() || value.is_array()) {
        for (auto &child : value)
            makeExtreme(child, turn);
    } else if (value.is_number_integer()) {
        value = kExtremes[turn++ % std::size(kExtremes)];
    } else if (value.is_string()) {
        value = std::string(1024, static_cast<char>('A' + turn++ % 26));
    }
}

TEST_F(PlatformFaults, AStoreOfExtremeNumbersAndOverlongTextsIsServedWithinItsBounds)
{
    nlohmann::json machine = sampleMachine();
    size_t turn = 0;
    for (auto &[ns, value] : machine["store"].items())
        if (value.is_array())
            makeExtreme(value, turn);
    const size_t reloads = agent_->countInStderr(": reloaded\n");
    agent_->replaceMachine(machine.dump());
    clock_ += 10;
    agent_->setClock(clock_);
    expectServed("extreme store");
    ASSERT_EQ(agent_->countInStderr(": reloaded\n"), reloads + 1) << agent_->stderrText();
    // The fan descriptions arrive cut to their column.
    Response descr = agent_->client().getNext({oidJoin(kFanTable, {1, 2})});
    ASSERT_TRUE(descr.ok()) << descr;
    ASSERT_EQ(descr.varbinds.size(), 1u);
    EXPECT_LE(descr.varbinds[0].octets.size(), 255u);
    EXPECT_GT(descr.varbinds[0].octets.size(), 0u);
}

} // namespace
} // namespace orv3::test

// Tests of the end-to-end harness itself. They run a plain snmpd (no monitors
// module, no simulator) and exercise the client, the launcher and the log scanner.
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>

#include "harness/agent.h"
#include "harness/oids.h"
#include "harness/prometheus_text.h"
#include "harness/snmp_client.h"

namespace orv3::test {
namespace {

namespace fs = std::filesystem;

AgentOptions bare()
{
    AgentOptions o;
    o.bareAgent = true;
    return o;
}

// Reads /proc/<pid>/<file> with NUL separators turned into a vector.
std::vector<std::string> procList(pid_t pid, const char *file)
{
    std::string raw = readFileText("/proc/" + std::to_string(pid) + "/" + file);
    std::vector<std::string> out;
    std::string cur;
    for (char c : raw) {
        if (c == '\0') {
            out.push_back(cur);
            cur.clear();
        } else {
            cur += c;
        }
    }
    if (!cur.empty())
        out.push_back(cur);
    return out;
}

bool contains(const std::vector<std::string> &v, const std::string &s)
{
    return std::find(v.begin(), v.end(), s) != v.end();
}

// --- OID helpers ------------------------------------------------------------

TEST(HarnessOids, JoinParseCompare)
{
    EXPECT_EQ(oidJoin(kMonitorsRoot, {1, 2, 3}), "1.3.6.1.4.1.53917.11.1.1.1.2.3");
    size_t idx = 7;
    EXPECT_EQ(oidJoin(".1.3", {idx, "4.5", 6u}), "1.3.7.4.5.6");
    EXPECT_EQ(oidJoin("1.3", std::vector<unsigned long>{9, 10}), "1.3.9.10");
    EXPECT_EQ(oidParse(".1.3.6"), (std::vector<unsigned long>{1, 3, 6}));
    EXPECT_THROW(oidParse("1..3"), std::invalid_argument);
    EXPECT_THROW(oidParse("1.x"), std::invalid_argument);
    EXPECT_LT(oidCompare("1.3.6.2", "1.3.6.10"), 0);
    EXPECT_LT(oidCompare("1.3.6", "1.3.6.0"), 0);
    EXPECT_EQ(oidCompare(".1.3", "1.3"), 0);
    EXPECT_TRUE(oidStartsWith("1.3.6.1", "1.3.6"));
    EXPECT_TRUE(oidStartsWith("1.3.6", ".1.3.6"));
    EXPECT_FALSE(oidStartsWith("1.3.61", "1.3.6"));
    EXPECT_EQ(oidSuffix("1.3.6.1.2", "1.3.6"), "1.2");
    EXPECT_EQ(oidStringIndex("ab"), "2.97.98");
    EXPECT_EQ(oidStringIndex("ab", true), "97.98");
}

TEST(HarnessClient, TypeNames)
{
    EXPECT_EQ(typeName(ASN_INTEGER), "INTEGER");
    EXPECT_EQ(typeName(ASN_GAUGE), "Gauge32");
    EXPECT_EQ(typeName(ASN_OCTET_STR), "OCTET STRING");
    EXPECT_EQ(typeName(SNMP_NOSUCHOBJECT), "noSuchObject");
    EXPECT_EQ(typeName(SNMP_NOSUCHINSTANCE), "noSuchInstance");
    EXPECT_EQ(typeName(SNMP_ENDOFMIBVIEW), "endOfMibView");
    EXPECT_EQ(errorStatusName(SNMP_ERR_NOTWRITABLE), "notWritable");
}

TEST(HarnessClient, TimesOutWithoutAgent)
{
    SnmpClient c(pickFreeUdpPort(), "public", 30000, 0);
    Response r = c.get({kSysUpTime});
    EXPECT_TRUE(r.timedOut);
    EXPECT_FALSE(r.ok());
    EXPECT_TRUE(r.varbinds.empty());
    EXPECT_THROW(c.get({"not.an.oid"}), std::invalid_argument);
}

// --- Prometheus exposition format ---------------------------------------------

TEST(HarnessPrometheusText, ReadsNamesLabelsEscapesAndValues)
{
    std::vector<Sample> samples =
        parseExposition("# HELP fanNumber The number of fans\n"
                        "# TYPE fanNumber gauge\n"
                        "fanNumber 8\n"
                        "\n"
                        "fanCritLimitLow{fanDescr=\"Fan \\\"7\\\" \\\\ rear\\n\",fanIndex=\"7\"} "
                        "4.294967295e+09\n"
                        "empty{} -1.5\n");
    ASSERT_EQ(samples.size(), 3u);
    EXPECT_EQ(samples[0].name, "fanNumber");
    EXPECT_TRUE(samples[0].labels.empty());
    EXPECT_EQ(samples[0].value, 8);
    EXPECT_EQ(samples[1].name, "fanCritLimitLow");
    EXPECT_EQ(samples[1].labels,
              (std::map<std::string, std::string>{{"fanDescr", "Fan \"7\" \\ rear\n"}, {"fanIndex", "7"}}));
    EXPECT_EQ(samples[1].value, 4294967295.0);
    EXPECT_EQ(formatSample(samples[1]),
              "fanCritLimitLow{fanDescr=\"Fan \\\"7\\\" \\\\ rear\\n\",fanIndex=\"7\"} 4294967295");
    EXPECT_EQ(samples[2].name, "empty");
    EXPECT_EQ(samples[2].value, -1.5);
}

TEST(HarnessPrometheusText, RejectsWhatIsNotASample)
{
    EXPECT_THROW(parseExposition("fanNumber\n"), std::invalid_argument);
    EXPECT_THROW(parseExposition("fanNumber eight\n"), std::invalid_argument);
    EXPECT_THROW(parseExposition("fan{a=\"1\" 1\n"), std::invalid_argument);
    EXPECT_THROW(parseExposition("fan{a=\"1\",a=\"2\"} 1\n"), std::invalid_argument);
    EXPECT_THROW(parseExposition("fan{a=\"\\x\"} 1\n"), std::invalid_argument);
}

// --- Plain snmpd -------------------------------------------------------------

TEST(HarnessAgent, GetSysUpTime)
{
    Agent agent(bare());
    auto c = agent.client();
    Response r = c.get({kSysUpTime, "." + std::string(kSysDescr)});
    ASSERT_TRUE(r.ok()) << r;
    ASSERT_EQ(r.varbinds.size(), 2u);
    EXPECT_EQ(r.varbinds[0].oid, kSysUpTime);
    EXPECT_EQ(typeName(r.varbinds[0].type), "TimeTicks");
    EXPECT_EQ(r.varbinds[1].oid, kSysDescr);
    EXPECT_EQ(r.varbinds[1].type, ASN_OCTET_STR);
    EXPECT_FALSE(r.varbinds[1].octets.empty());
}

TEST(HarnessAgent, GetNextAndBulk)
{
    Agent agent(bare());
    auto c = agent.client();

    Response n = c.getNext({kSystemGroup});
    ASSERT_TRUE(n.ok()) << n;
    ASSERT_EQ(n.varbinds.size(), 1u);
    EXPECT_EQ(n.varbinds[0].oid, kSysDescr);
    EXPECT_EQ(n.varbinds[0].type, ASN_OCTET_STR);

    // One non-repeater (-> sysDescr.0) and one repeater from the system group.
    Response b = c.getBulk(1, 3, {kSystemGroup, kSystemGroup});
    ASSERT_TRUE(b.ok()) << b;
    ASSERT_EQ(b.varbinds.size(), 4u) << b;
    EXPECT_EQ(b.varbinds[0].oid, kSysDescr);
    EXPECT_EQ(b.varbinds[1].oid, kSysDescr);
    EXPECT_EQ(b.varbinds[2].oid, kSysObjectID);
    EXPECT_EQ(b.varbinds[2].type, ASN_OBJECT_ID);
    EXPECT_TRUE(oidStartsWith(b.varbinds[2].octets, "1.3.6.1.4.1")) << b;
    EXPECT_EQ(b.varbinds[3].oid, kSysUpTime);

    // Past the end of the MIB view.
    Response e = c.getNext({"1.4"});
    ASSERT_TRUE(e.ok()) << e;
    ASSERT_EQ(e.varbinds.size(), 1u);
    EXPECT_EQ(e.varbinds[0].type, SNMP_ENDOFMIBVIEW);
}

TEST(HarnessAgent, WalkSystemGroup)
{
    Agent agent(bare());
    auto c = agent.client();
    Response w = c.walkResponse(kSystemGroup);
    ASSERT_TRUE(w.ok()) << w;
    ASSERT_GE(w.varbinds.size(), 5u) << w;
    EXPECT_EQ(w.varbinds.front().oid, kSysDescr);
    for (size_t i = 0; i < w.varbinds.size(); ++i) {
        EXPECT_TRUE(oidStartsWith(w.varbinds[i].oid, kSystemGroup)) << w.varbinds[i];
        if (i > 0) {
            EXPECT_LT(oidCompare(w.varbinds[i - 1].oid, w.varbinds[i].oid), 0);
        }
    }
    EXPECT_EQ(c.walk(kSystemGroup).size(), w.varbinds.size());
    EXPECT_TRUE(c.walk("1.3.6.1.4.1.99999").empty());
}

TEST(HarnessAgent, SetReadOnlyAndWritable)
{
    Agent agent(bare());
    auto rw = agent.client("private");
    Response r = rw.set({SetValue::ofInteger(kSysUpTime, 5)});
    EXPECT_FALSE(r.timedOut);
    EXPECT_EQ(r.errorStatus, SNMP_ERR_NOTWRITABLE) << r;
    EXPECT_EQ(r.errorIndex, 1);

    // The read-only community may not write at all.
    Response ro = agent.client("public").set({SetValue::ofOctets(kSysContact, "x")});
    EXPECT_NE(ro.errorStatus, SNMP_ERR_NOERROR) << ro;

    Response w = rw.set({SetValue::ofOctets(kSysContact, "harness@test")});
    ASSERT_TRUE(w.ok()) << w;
    Response g = rw.get({kSysContact});
    ASSERT_TRUE(g.ok()) << g;
    EXPECT_EQ(g.varbinds.at(0).octets, "harness@test");

    // Wrong type for a writable object.
    Response t = rw.set({SetValue::ofInteger(kSysContact, 1)});
    EXPECT_EQ(t.errorStatus, SNMP_ERR_WRONGTYPE) << t;
}

TEST(HarnessAgent, UnknownObjects)
{
    Agent agent(bare());
    auto c = agent.client();
    Response r = c.get({"1.3.6.1.2.1.1.99.0", "1.3.6.1.2.1.1.3.1", "1.3.6.1.4.1.99999.1.0"});
    ASSERT_TRUE(r.ok()) << r;
    ASSERT_EQ(r.varbinds.size(), 3u);
    EXPECT_EQ(r.varbinds[0].type, SNMP_NOSUCHOBJECT) << r;
    EXPECT_EQ(r.varbinds[1].type, SNMP_NOSUCHINSTANCE) << r;
    EXPECT_EQ(r.varbinds[2].type, SNMP_NOSUCHOBJECT) << r;
}

TEST(HarnessAgent, EnvironmentFilesAndCommandLine)
{
    AgentOptions o = bare();
    o.machineJson = "{\"a\": 1}\n";
    o.env = {{"ORV_FAMILY", "fam"}, {"PLATFLAGS", "x,y"}};
    o.debugTokens = "snmpd";
    o.clockStart = 1700000000;
    o.clockStep = 2;
    Agent agent(o);

    std::vector<std::string> env = procList(agent.pid(), "environ");
    EXPECT_TRUE(contains(env, "ORV3_SIM_MACHINE=" + agent.machinePath()));
    EXPECT_TRUE(contains(env, "ORV3_SIM_CALL_LOG=" + agent.dir() + "/calls.log"));
    EXPECT_TRUE(contains(env, "ORV3_SIM_CLOCK=" + agent.dir() + "/clock"));
    EXPECT_TRUE(contains(env, "ORV3_SIM_TRACE_LOG=" + agent.dir() + "/tlog.log"));
    EXPECT_EQ(agent.traceLogPath(), agent.dir() + "/tlog.log");
    EXPECT_EQ(agent.traceLogText(), "") << "nothing traced, no file";
    EXPECT_TRUE(contains(env, "SNMP_PERSISTENT_DIR=" + agent.dir() + "/persist"));
    EXPECT_TRUE(contains(env, "SNMPCONFPATH=" + agent.dir() + "/conf"));
    EXPECT_TRUE(contains(env, "HOME=" + agent.dir() + "/home"));
    EXPECT_TRUE(contains(env, "MIBS="));
    EXPECT_TRUE(contains(env, "ORV_FAMILY=fam"));
    EXPECT_TRUE(contains(env, "PLATFLAGS=x,y"));
    for (const auto &e : env)
        EXPECT_NE(e.rfind("LD_PRELOAD=", 0), 0u) << e;

    std::vector<std::string> argv = procList(agent.pid(), "cmdline");
    EXPECT_TRUE(contains(argv, "-f"));
    EXPECT_TRUE(contains(argv, "-C"));
    EXPECT_TRUE(contains(argv, "-Lo"));
    EXPECT_TRUE(contains(argv, "-Dsnmpd"));
    EXPECT_TRUE(contains(argv, "udp:127.0.0.1:" + std::to_string(agent.port())));

    EXPECT_EQ(readFileText(agent.machinePath()), o.machineJson);
    EXPECT_EQ(readFileText(agent.clockPath()), "1700000000 2\n");
    std::string conf = readFileText(agent.dir() + "/snmpd.conf");
    EXPECT_NE(conf.find("rocommunity public 127.0.0.1"), std::string::npos);
    EXPECT_EQ(conf.find("dlmod"), std::string::npos);

    // -D output goes to stdout (-Lo) and is line buffered: visible while running.
    EXPECT_TRUE(agent.waitForStdout("snmpd/main: We're up"));
    EXPECT_GE(agent.countInStdout("NET-SNMP version"), 1u);
    EXPECT_EQ(agent.countInStdout("Connection from UDP"), 0u);
    EXPECT_FALSE(agent.waitForStdout("no such text", std::chrono::milliseconds(20)));
    EXPECT_TRUE(fs::exists(agent.dir() + "/persist"));
}

TEST(HarnessAgent, ClockMachineAndCallLogFiles)
{
    AgentOptions o = bare();
    o.machineJson = "{}";
    Agent agent(o);

    EXPECT_FALSE(fs::exists(agent.clockPath()));
    agent.setClock(1000);
    EXPECT_EQ(readFileText(agent.clockPath()), "1000\n");
    agent.setClock(2000, 5);
    EXPECT_EQ(readFileText(agent.clockPath()), "2000 5\n");
    agent.clearClock();
    EXPECT_EQ(readFileText(agent.clockPath()), "");

    // Every replacement is a new inode with a new modification time, even when the
    // size stays the same and all happens within one second.
    std::set<ino_t> inodes;
    std::set<std::pair<long, long>> mtimes;
    for (int i = 0; i < 5; ++i) {
        struct stat st {};
        ASSERT_EQ(::stat(agent.machinePath().c_str(), &st), 0);
        inodes.insert(st.st_ino);
        mtimes.insert({st.st_mtim.tv_sec, st.st_mtim.tv_nsec});
        agent.replaceMachine("{\"v\": " + std::to_string(i) + "}");
    }
    EXPECT_EQ(inodes.size(), 5u);
    EXPECT_EQ(mtimes.size(), 5u);
    EXPECT_EQ(readFileText(agent.machinePath()), "{\"v\": 4}");
    agent.removeMachine();
    EXPECT_FALSE(fs::exists(agent.machinePath()));

    // The call log is written by the simulator; emulate it here.
    EXPECT_TRUE(agent.callLog().empty());
    agent.clearCallLog(); // absent file: no error
    {
        std::ofstream log(agent.dir() + "/calls.log", std::ios::app);
        log << "quel_dm_BindRow s/fans/status/fantbl\nquel_dm_Get s/a\nquel_dm_BindRow s/psu/x\n";
    }
    EXPECT_EQ(agent.callLog().size(), 3u);
    EXPECT_EQ(agent.callLog()[1], "quel_dm_Get s/a");
    EXPECT_EQ(agent.countCalls("quel_dm_BindRow"), 2u);
    EXPECT_EQ(agent.countCalls("quel_dm_BindRow s/fans"), 1u);
    EXPECT_TRUE(agent.waitForCalls("quel_dm_Get", 1, std::chrono::milliseconds(10)));
    EXPECT_FALSE(agent.waitForCalls("quel_dm_Get", 2, std::chrono::milliseconds(20)));
    agent.clearCallLog();
    EXPECT_TRUE(agent.callLog().empty());
}

TEST(HarnessAgent, MachineFromPath)
{
    std::string src = fs::temp_directory_path() / ("orv3-e2e-selftest-machine-" + std::to_string(::getpid()) + ".json");
    {
        std::ofstream(src) << "{\"from\": \"file\"}";
    }
    AgentOptions o = bare();
    o.machinePath = src;
    {
        Agent agent(o);
        EXPECT_EQ(readFileText(agent.machinePath()), "{\"from\": \"file\"}");
        agent.replaceMachine("{}");
    }
    EXPECT_EQ(readFileText(src), "{\"from\": \"file\"}"); // the source is never modified
    fs::remove(src);

    o.machinePath = "/nonexistent/machine.json";
    EXPECT_THROW(Agent agent(o), std::runtime_error);
}

TEST(HarnessAgent, StopAndDirectoryCleanup)
{
    std::string dir;
    {
        Agent agent(bare());
        dir = agent.dir();
        EXPECT_TRUE(agent.running());
        auto start = std::chrono::steady_clock::now();
        agent.stop();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
        EXPECT_FALSE(agent.running());
        EXPECT_TRUE(WIFEXITED(agent.waitStatus())) << agent.waitStatus();
        EXPECT_TRUE(agent.waitForStdout("shutting down", std::chrono::milliseconds(10)));
        EXPECT_TRUE(agent.sanitizerFindings().empty());
        agent.stop(); // idempotent
        EXPECT_TRUE(fs::exists(dir));
    }
    EXPECT_FALSE(fs::exists(dir));
}

TEST(HarnessAgent, ReportsCrash)
{
    Agent agent(bare());
    ASSERT_EQ(::kill(agent.pid(), SIGSEGV), 0);
    for (int i = 0; i < 300 && agent.running(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_NONFATAL_FAILURE(agent.stop(), "before the harness stopped it");
    EXPECT_TRUE(WIFSIGNALED(agent.waitStatus()));
}

TEST(HarnessAgent, StartFailureCarriesOutput)
{
    for (const char *exe : {"/bin/false", "/nonexistent/snmpd"}) {
        AgentOptions o = bare();
        o.executable = exe;
        std::string message;
        try {
            Agent agent(o);
        } catch (const std::runtime_error &e) {
            message = e.what();
        }
        EXPECT_NE(message.find("exited with code"), std::string::npos) << message;
        EXPECT_NE(message.find("--- snmpd.err ---"), std::string::npos) << message;
        if (std::string(exe) == "/nonexistent/snmpd") {
            EXPECT_NE(message.find("execve failed"), std::string::npos) << message;
        }
        // The message names the directory, which is gone: nothing is left behind.
        size_t pos = message.find("/tmp/orv3-e2e-");
        ASSERT_NE(pos, std::string::npos) << message;
        EXPECT_FALSE(fs::exists(message.substr(pos, message.find_first_of(" \n", pos) - pos))) << message;
    }
}

TEST(HarnessAgent, TwoAgentsAtOnce)
{
    Agent a(bare()), b(bare());
    EXPECT_NE(a.port(), b.port());
    EXPECT_NE(a.dir(), b.dir());
    EXPECT_TRUE(a.client().get({kSysUpTime}).ok());
    EXPECT_TRUE(b.client().get({kSysUpTime}).ok());
}

TEST(HarnessAgent, ClientDoesNotWriteSystemState)
{
    // The client library must leave /var/lib/snmp as it found it (other
    // programs on the machine may well have written there before).
    auto snapshot = [] {
        std::vector<std::pair<std::string, long long>> entries;
        std::error_code ec;
        for (const char *path : {"/var/lib/snmp", "/var/lib/snmp/cert_indexes", "/var/lib/snmp/mib_indexes"}) {
            bool exists = fs::exists(path, ec);
            long long stamp = exists ? fs::last_write_time(path, ec).time_since_epoch().count() : -1;
            entries.emplace_back(path, stamp);
        }
        return entries;
    };
    auto before = snapshot();
    initSnmpLibrary();
    SnmpClient client(pickFreeUdpPort(), "public", 20000, 0);
    client.get({kSysUpTime});
    EXPECT_EQ(snapshot(), before);
}

// --- Sanitizer log scanning --------------------------------------------------

const char *kLeakLog = R"(
=================================================================
==1234==ERROR: LeakSanitizer: detected memory leaks

Direct leak of 32 byte(s) in 1 object(s) allocated from:
    #0 0x7f in malloc (/usr/lib/x86_64-linux-gnu/libasan.so.8+0xd9)
    #1 0x55 in netsnmp_config (/usr/sbin/snmpd+0x1234)

Direct leak of 16 byte(s) in 1 object(s) allocated from:
    #0 0x7f in operator new(unsigned long) (/usr/lib/x86_64-linux-gnu/libasan.so.8+0xdb)
    #1 0x7e in orv3::Cache::load() /src/repo/snmp_subagent/cache.cpp:42
    #2 0x7d in init_monitors (/build/liborv3_monitors.so+0x99)

Indirect leak of 8 byte(s) in 1 object(s) allocated from:
    #0 0x7f in malloc (/usr/lib/x86_64-linux-gnu/libasan.so.8+0xd9)
    #1 0x7c in helper /src/repo/platform/sim/sim.cpp:7

SUMMARY: AddressSanitizer: 56 byte(s) leaked in 3 allocation(s).
)";

TEST(HarnessSanitizer, LeaksOnlyCountInOwnCode)
{
    std::string f = extractSanitizerFailures(kLeakLog, {"liborv3_", "/src/repo/"});
    EXPECT_EQ(f.find("netsnmp_config"), std::string::npos) << f;
    EXPECT_NE(f.find("Direct leak of 16 byte(s)"), std::string::npos) << f;
    EXPECT_NE(f.find("Indirect leak of 8 byte(s)"), std::string::npos) << f;
    EXPECT_EQ(f.find("SUMMARY"), std::string::npos) << f;

    EXPECT_TRUE(extractSanitizerFailures(kLeakLog, {"liborv3_nothing"}).empty());
}

TEST(HarnessSanitizer, AddressErrorsAndUndefinedBehaviourAlwaysCount)
{
    const std::string asan = R"(==99==ERROR: AddressSanitizer: heap-buffer-overflow on address 0x6020 at pc 0x1
READ of size 4 at 0x6020 thread T0
    #0 0x1 in snmpd_thing (/usr/sbin/snmpd+0x1)
SUMMARY: AddressSanitizer: heap-buffer-overflow (/usr/sbin/snmpd+0x1) in snmpd_thing
==99==ABORTING
)";
    std::string f = extractSanitizerFailures(asan, {"liborv3_"});
    EXPECT_NE(f.find("heap-buffer-overflow"), std::string::npos);
    EXPECT_NE(f.find("READ of size 4"), std::string::npos);

    const std::string ubsan = "some normal line\n"
                              "/src/x.cpp:10:5: runtime error: signed integer overflow: 2147483647 + 1\n"
                              "    #0 0x2 in f /src/x.cpp:10\n"
                              "SUMMARY: UndefinedBehaviorSanitizer: undefined-behavior /src/x.cpp:10:5\n"
                              "later unrelated line\n";
    f = extractSanitizerFailures(ubsan, {});
    EXPECT_NE(f.find("signed integer overflow"), std::string::npos);
    EXPECT_NE(f.find("#0 0x2 in f"), std::string::npos);
    EXPECT_EQ(f.find("unrelated"), std::string::npos);

    EXPECT_TRUE(extractSanitizerFailures("NET-SNMP version 5.9.3\nshutting down\n", {"liborv3_"}).empty());
}

} // namespace
} // namespace orv3::test

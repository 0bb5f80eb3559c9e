// SETs the agent must refuse: values of the wrong type, length or range for
// the writable objects, any value for the read-only ones, and requests in
// which one varbind of several fails. A refused SET changes nothing, and the
// agent answers the next request as before.
#include "bad_input.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <climits>

namespace orv3::test {
namespace {

class BadInputSet : public SampleAgentSuite {};

const std::string kIdentityLED = oidJoin(kMonitorsRoot, {8, 1, 0});
const std::string kInformationLED = oidJoin(kMonitorsRoot, {8, 3, 0});
const std::string kCappingPolicy = oidJoin(kMonitorsRoot, {10, 1, 1, 0});
const std::string kCurrentCap = oidJoin(kMonitorsRoot, {10, 1, 4, 0});
const std::string kCapMode = oidJoin(kMonitorsRoot, {10, 1, 6, 0});
const std::string kPowerRemaining = oidJoin(kMonitorsRoot, {10, 1, 8, 0});
const std::string kMissingObject = oidJoin(kMonitorsRoot, {99, 0});
// snmpInASNParseErrs of the agent's own SNMPv2-MIB.
const std::string kInAsnParseErrs = "1.3.6.1.2.1.11.6.0";

// The writable objects as the MIB declares them.
TEST_F(BadInputSet, TheMibDeclaresTheLedsAndThreeCappingSettingsWritable)
{
    std::vector<std::string> names;
    for (const MibScalar &s : served().writableScalars())
        names.push_back(s.name);
    EXPECT_EQ(names,
              (std::vector<std::string>{"identityLED", "informationLED", "fuelGaugePowerCappingPolicySetting",
                                        "fuelGaugeStaticPowerPcapCurrentSetting", "fuelGaugeStaticPowerPcapMode"}));
}

// What a refused SET must leave: the same answer to a GET of every object it
// named, and no write to the data store.
class Unchanged {
public:
    explicit Unchanged(const std::vector<std::string> &oids) : oids_(oids)
    {
        for (const std::string &oid : oids_)
            before_.push_back(getOne(oid).toString());
        updates_ = agent().countCalls("quel_dm_UpdateVars");
    }
    void check() const
    {
        for (size_t i = 0; i < oids_.size(); ++i)
            EXPECT_EQ(getOne(oids_[i]).toString(), before_[i]);
        EXPECT_EQ(agent().countCalls("quel_dm_UpdateVars"), updates_) << "nothing was written to the store";
    }

private:
    std::vector<std::string> oids_;
    std::vector<std::string> before_;
    size_t updates_ = 0;
};

struct RefusedSet {
    std::string what;
    std::vector<SetValue> values;
    long status;
    long errorIndex;
    std::string community = "private";
};

void runRefusedSets(const std::vector<RefusedSet> &cases)
{
    for (const RefusedSet &c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<std::string> oids;
        for (const SetValue &v : c.values)
            if (served().answered(v.oid))
                oids.push_back(v.oid);
        Unchanged unchanged(oids);
        Response reply = agent().client(c.community).set(c.values);
        EXPECT_FALSE(reply.timedOut);
        EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(c.status)) << reply;
        EXPECT_EQ(reply.errorIndex, c.errorIndex) << reply;
        unchanged.check();
        expectStillAnswers();
    }
}

SetValue withType(const std::string &oid, unsigned char type, std::string octets = {}, long integer = 1)
{
    return SetValue{oid, type, integer, std::move(octets)};
}

TEST_F(BadInputSet, EveryWritableObjectRefusesEveryOtherTypeWithWrongType)
{
    std::vector<RefusedSet> cases;
    for (const MibScalar &s : served().writableScalars()) {
        const std::string oid = s.instance();
        const std::vector<std::pair<std::string, SetValue>> others = {
            {"OCTET STRING", SetValue::ofOctets(oid, "1")},
            {"empty OCTET STRING", SetValue::ofOctets(oid, "")},
            {"Gauge32", SetValue::ofGauge(oid, 1)},
            {"Counter32", SetValue::ofCounter(oid, 1)},
            {"TimeTicks", SetValue::ofTimeTicks(oid, 1)},
            {"Counter64", withType(oid, ASN_COUNTER64)},
            {"NULL", SetValue::ofNull(oid)},
            {"OBJECT IDENTIFIER", SetValue::ofOid(oid, "1.3.6.1")},
            {"IpAddress", withType(oid, ASN_IPADDRESS, std::string("\x7f\x00\x00\x01", 4))},
            {"Opaque", withType(oid, ASN_OPAQUE, std::string("\x02\x01\x01", 3))},
        };
        for (const auto &[type, value] : others)
            cases.push_back({s.name + " as " + type, {value}, SNMP_ERR_WRONGTYPE, 1});
    }
    EXPECT_EQ(cases.size(), 50u);
    runRefusedSets(cases);
}

TEST_F(BadInputSet, EveryWritableObjectRefusesAnOverlongStringWithWrongType)
{
    std::vector<RefusedSet> cases;
    for (const MibScalar &s : served().writableScalars())
        for (size_t length : {4u, 8u, 255u, 256u, 1024u})
            cases.push_back({s.name + " as " + std::to_string(length) + " bytes",
                             {SetValue::ofOctets(s.instance(), std::string(length, '7'))},
                             SNMP_ERR_WRONGTYPE,
                             1});
    runRefusedSets(cases);
}

TEST_F(BadInputSet, ValuesTheControllerRefusesLeaveTheLedsUnchanged)
{
    // The module passes any integer on; the sample controller accepts
    // identityLED 0 to 2 and informationLED 0 and 1, and refuses the update
    // of anything else at COMMIT, which the agent reports for the request as
    // a whole.
    std::vector<RefusedSet> cases;
    for (long value : {3L, -1L, 255L, 65536L, static_cast<long>(INT_MAX), static_cast<long>(INT_MIN)})
        cases.push_back(
            {"identityLED " + std::to_string(value), {SetValue::ofInteger(kIdentityLED, value)}, SNMP_ERR_GENERR, 0});
    for (long value : {2L, -1L, 256L, static_cast<long>(INT_MAX), static_cast<long>(INT_MIN)})
        cases.push_back({"informationLED " + std::to_string(value),
                         {SetValue::ofInteger(kInformationLED, value)},
                         SNMP_ERR_GENERR,
                         0});
    for (const RefusedSet &c : cases) {
        SCOPED_TRACE(c.what);
        const std::string before = getOne(c.values[0].oid).toString();
        Response reply = agent().client("private").set(c.values);
        EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(c.status)) << reply;
        EXPECT_EQ(reply.errorIndex, c.errorIndex) << reply;
        EXPECT_EQ(getOne(c.values[0].oid).toString(), before);
        expectStillAnswers();
    }
}

TEST_F(BadInputSet, TheCappingSettingsTakeEveryIntegerIntoTheAgentsCopyOnly)
{
    for (const std::string &oid : {kCappingPolicy, kCurrentCap, kCapMode}) {
        for (long value : {static_cast<long>(INT_MIN), -1L, 2L, 65536L, static_cast<long>(INT_MAX)}) {
            SCOPED_TRACE(oid + " = " + std::to_string(value));
            const std::string platform = getOne(oid).toString();
            Response reply = agent().client("private").set({SetValue::ofInteger(oid, value)});
            ASSERT_TRUE(reply.ok()) << reply;
            ASSERT_EQ(reply.varbinds.size(), 1u);
            EXPECT_EQ(reply.varbinds[0].integer, value);
            EXPECT_EQ(getOne(oid).toString(), platform) << "the next GET shows the platform's value";
        }
    }
}

// A SET request built byte by byte, for encodings the client library will
// not produce.
class RawSet {
public:
    // SetRequest of `name` with the value `encodedValue` (tag, length and contents).
    static std::string message(const std::string &community, const std::string &name, const std::string &encodedValue)
    {
        std::string varbind = tlv(0x30, tlv(0x06, oidContents(name)) + encodedValue);
        std::string pdu =
            tlv(0x02, "\x2a") + tlv(0x02, std::string(1, '\0')) + tlv(0x02, std::string(1, '\0')) + tlv(0x30, varbind);
        return tlv(0x30, tlv(0x02, "\x01") + tlv(0x04, community) + tlv(0xa3, pdu));
    }
    // Sends `message` to the agent and reports whether any answer came back within `waitMs`.
    static bool answered(int port, const std::string &message, int waitMs = 500)
    {
        int fd = socket(AF_INET, SOCK_DGRAM, 0);
        if (fd < 0)
            throw std::runtime_error("socket failed");
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(static_cast<uint16_t>(port));
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        sendto(fd, message.data(), message.size(), 0, reinterpret_cast<sockaddr *>(&to), sizeof to);
        pollfd wait{fd, POLLIN, 0};
        bool got = poll(&wait, 1, waitMs) > 0;
        close(fd);
        return got;
    }
    static std::string tlv(unsigned char tag, const std::string &contents)
    {
        std::string out(1, static_cast<char>(tag));
        size_t n = contents.size();
        if (n < 0x80) {
            out += static_cast<char>(n);
        } else {
            out += static_cast<char>(0x82);
            out += static_cast<char>(n >> 8);
            out += static_cast<char>(n & 0xff);
        }
        return out + contents;
    }

private:
    static std::string oidContents(const std::string &name)
    {
        std::vector<unsigned long> arcs = oidParse(name);
        std::string out(1, static_cast<char>(arcs[0] * 40 + arcs[1]));
        for (size_t i = 2; i < arcs.size(); ++i) {
            std::string base128(1, static_cast<char>(arcs[i] & 0x7f));
            for (unsigned long v = arcs[i] >> 7; v; v >>= 7)
                base128.insert(base128.begin(), static_cast<char>(0x80 | (v & 0x7f)));
            out += base128;
        }
        return out;
    }
};

long parseErrors()
{
    VarBind counter = getOne(kInAsnParseErrs);
    EXPECT_EQ(typeName(counter.type), "Counter32") << counter;
    return counter.integer;
}

TEST_F(BadInputSet, IntegerEncodingsNoAgentCanDecodeAreDroppedAsParseErrors)
{
    // A message that does not parse is discarded without an answer and
    // counted in snmpInASNParseErrs.
    const std::vector<std::pair<std::string, std::string>> encodings = {
        {"nine content bytes", RawSet::tlv(0x02, std::string("\x01\x00\x00\x00\x00\x00\x00\x00\x00", 9))},
        {"no content bytes", RawSet::tlv(0x02, "")},
    };
    for (const MibScalar &s : served().writableScalars()) {
        for (const auto &[what, encoded] : encodings) {
            SCOPED_TRACE(s.name + ", " + what);
            Unchanged unchanged({s.instance()});
            const long errorsBefore = parseErrors();
            EXPECT_FALSE(RawSet::answered(agent().port(), RawSet::message("private", s.instance(), encoded)));
            EXPECT_EQ(parseErrors(), errorsBefore + 1);
            unchanged.check();
            expectStillAnswers();
        }
    }
}

TEST_F(BadInputSet, AHandBuiltSetOfAWellEncodedIntegerIsAnswered)
{
    // The hand-built message itself is sound: with a one-byte INTEGER it is answered.
    EXPECT_TRUE(RawSet::answered(agent().port(), RawSet::message("private", kCurrentCap, RawSet::tlv(0x02, "\x05"))));
    expectStillAnswers();
}

TEST_F(BadInputSet, EveryReadOnlyScalarAndTableCellRefusesASetWithNotWritable)
{
    std::vector<RefusedSet> cases;
    for (const MibScalar &s : served().scalars)
        if (!s.writable)
            cases.push_back({s.name, {ownTypeValue(s.instance(), s.syntax)}, SNMP_ERR_NOTWRITABLE, 1});
    for (const MibTable &t : served().tables)
        for (const std::string &cell : t.answeredColumns)
            cases.push_back({t.name + " " + cell,
                             {ownTypeValue(cell, t.columns.at(oidParse(oidSuffix(cell, t.entry()))[0]))},
                             SNMP_ERR_NOTWRITABLE,
                             1});
    EXPECT_GT(cases.size(), 380u) << "every read-only scalar and every column";
    runRefusedSets(cases);
}

TEST_F(BadInputSet, TheReadOnlyCommunityCanSetNothing)
{
    std::vector<RefusedSet> cases;
    for (const MibScalar &s : served().scalars)
        cases.push_back({s.name, {ownTypeValue(s.instance(), s.syntax)}, SNMP_ERR_NOACCESS, 1, "public"});
    for (const MibTable &t : served().tables) {
        const std::string cell = t.answeredColumns.front();
        cases.push_back({t.name, {ownTypeValue(cell, t.columns.begin()->second)}, SNMP_ERR_NOACCESS, 1, "public"});
    }
    cases.push_back({"a missing object", {SetValue::ofInteger(kMissingObject, 1)}, SNMP_ERR_NOACCESS, 1, "public"});
    runRefusedSets(cases);
}

TEST_F(BadInputSet, ASetWithOneFailingVarbindChangesNoneOfItsObjects)
{
    const std::string fanCell = served().table("fanTable").answeredColumns.front();
    const std::vector<RefusedSet> cases = {
        {"read-only scalar second",
         {SetValue::ofInteger(kIdentityLED, 1), SetValue::ofInteger(kPowerRemaining, 1)},
         SNMP_ERR_NOTWRITABLE,
         2},
        {"read-only scalar first",
         {SetValue::ofInteger(kPowerRemaining, 1), SetValue::ofInteger(kIdentityLED, 1)},
         SNMP_ERR_NOTWRITABLE,
         1},
        {"wrong type beside a good LED",
         {SetValue::ofInteger(kIdentityLED, 1), SetValue::ofOctets(kInformationLED, "on")},
         SNMP_ERR_WRONGTYPE,
         2},
        {"table cell after both LEDs",
         {SetValue::ofInteger(kInformationLED, 1), SetValue::ofInteger(kIdentityLED, 2),
          SetValue::ofInteger(fanCell, 1)},
         SNMP_ERR_NOTWRITABLE,
         3},
        {"missing object",
         {SetValue::ofInteger(kIdentityLED, 1), SetValue::ofInteger(kMissingObject, 1)},
         SNMP_ERR_NOTWRITABLE,
         2},
        {"instance below a writable scalar",
         {SetValue::ofInteger(kIdentityLED, 1), SetValue::ofInteger(kInformationLED + ".0", 1)},
         SNMP_ERR_NOCREATION,
         2},
        {"across the capping settings and a count",
         {SetValue::ofInteger(kCapMode, 0), SetValue::ofInteger(kIdentityLED, 1), SetValue::ofInteger(kFanNumber, 1)},
         SNMP_ERR_NOTWRITABLE,
         3},
        {"wrong type for a capping setting",
         {SetValue::ofInteger(kInformationLED, 1), SetValue::ofGauge(kCurrentCap, 600)},
         SNMP_ERR_WRONGTYPE,
         2},
    };
    runRefusedSets(cases);
}

TEST_F(BadInputSet, ALedValueTheControllerRefusesKeepsTheOtherLedOfTheSameSetUnchanged)
{
    // Both LEDs travel in one variable list that the controller validates as
    // a whole; it refuses identityLED 7, so informationLED stays as well.
    const std::string identity = getOne(kIdentityLED).toString();
    const std::string information = getOne(kInformationLED).toString();
    Response reply =
        agent().client("private").set({SetValue::ofInteger(kInformationLED, 1), SetValue::ofInteger(kIdentityLED, 7)});
    EXPECT_EQ(errorStatusName(reply.errorStatus), errorStatusName(SNMP_ERR_GENERR)) << reply;
    EXPECT_EQ(reply.errorIndex, 0) << reply;
    EXPECT_EQ(getOne(kIdentityLED).toString(), identity);
    EXPECT_EQ(getOne(kInformationLED).toString(), information);
    expectStillAnswers();
}

} // namespace
} // namespace orv3::test

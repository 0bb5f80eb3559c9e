// SNMPv3-only access as contrib/snmpd/snmpv3-access.conf sets it up: the
// agent has no community, a read-only user and an operator user with
// SHA-256 authentication and AES-128 privacy. Each test asks the agent
// over the network as a manager would.
#include "harness/agent.h"
#include "harness/snmp_client.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orv3::test {
namespace {

constexpr const char *kAccessConf = ORV3_SOURCE_DIR "/contrib/snmpd/snmpv3-access.conf";
constexpr const char *kMonitors = "1.3.6.1.4.1.53917.11.1.1";
constexpr const char *kIdentityLed = "1.3.6.1.4.1.53917.11.1.1.8.1.0";
constexpr const char *kFanNumber = "1.3.6.1.4.1.53917.11.1.1.3.1.0";
constexpr const char *kSysContact = "1.3.6.1.2.1.1.4.0";

const UsmUser kReader{"orv3-reader", "reader auth passphrase", "reader privacy passphrase"};
const UsmUser kOperator{"orv3-operator", "operator auth passphrase", "operator privacy passphrase"};

std::string createUser(const UsmUser &user)
{
    return "createUser " + user.name + " SHA-256 \"" + user.authPassphrase + "\" AES \"" + user.privPassphrase + "\"";
}

AgentOptions snmpV3Only()
{
    AgentOptions options;
    options.machinePath = "sample.json";
    options.communityAccess = false;
    options.extraConfig = {std::string("includeFile ") + kAccessConf, createUser(kReader), createUser(kOperator)};
    return options;
}

long integerAt(SnmpClient &client, const std::string &oid)
{
    Response r = client.get({oid});
    EXPECT_TRUE(r.ok()) << r.toString();
    return r.ok() && r.varbinds.size() == 1 ? r.varbinds[0].integer : -1;
}

TEST(SnmpV3Access, TheReaderReadsTheWholeSubtreeAsACommunityDoesOnAnotherAgent)
{
    Agent agent(snmpV3Only());
    SnmpClient reader(agent.port(), kReader);
    std::vector<VarBind> overV3 = reader.walk(kMonitors);

    AgentOptions withCommunity;
    withCommunity.machinePath = "sample.json";
    Agent reference(withCommunity);
    std::vector<VarBind> overV2c = reference.client().walk(kMonitors);

    ASSERT_GT(overV2c.size(), 2000u);
    ASSERT_EQ(overV3.size(), overV2c.size());
    for (size_t i = 0; i < overV3.size(); ++i) {
        EXPECT_EQ(overV3[i].oid, overV2c[i].oid);
        EXPECT_EQ(overV3[i].type, overV2c[i].type) << overV3[i].oid;
    }
    EXPECT_EQ(integerAt(reader, kFanNumber), 8);
}

TEST(SnmpV3Access, TheReadersSetOfTheIdentifyLedIsRefusedAndTheLedKeepsItsState)
{
    Agent agent(snmpV3Only());
    SnmpClient reader(agent.port(), kReader);
    long before = integerAt(reader, kIdentityLed);

    Response r = reader.set({SetValue::ofInteger(kIdentityLed, before == 1 ? 0 : 1)});
    EXPECT_EQ(r.failure, "");
    EXPECT_EQ(r.errorStatus, SNMP_ERR_NOACCESS) << r.toString();
    EXPECT_EQ(r.errorIndex, 1);
    EXPECT_EQ(integerAt(reader, kIdentityLed), before);
}

TEST(SnmpV3Access, TheOperatorSetsTheIdentifyLedButNothingOutsideTheSettableObjects)
{
    Agent agent(snmpV3Only());
    SnmpClient op(agent.port(), kOperator);
    long before = integerAt(op, kIdentityLed);
    long wanted = before == 1 ? 0 : 1;

    Response r = op.set({SetValue::ofInteger(kIdentityLed, wanted)});
    EXPECT_TRUE(r.ok()) << r.toString();
    EXPECT_EQ(integerAt(op, kIdentityLed), wanted);

    // sysContact is writable in snmpd, but not by this user.
    r = op.set({SetValue::ofOctets(kSysContact, "operator")});
    EXPECT_EQ(r.errorStatus, SNMP_ERR_NOACCESS) << r.toString();
    r = op.set({SetValue::ofInteger(kFanNumber, 9)});
    EXPECT_EQ(r.errorStatus, SNMP_ERR_NOACCESS) << r.toString();
    EXPECT_EQ(integerAt(op, kFanNumber), 8);
}

TEST(SnmpV3Access, AWrongPassphraseGetsAnAuthenticationFailureAndNoData)
{
    Agent agent(snmpV3Only());
    UsmUser impostor = kReader;
    impostor.authPassphrase = "not the reader's passphrase";
    SnmpClient client(agent.port(), impostor, 300000, 0);
    Response r = client.get({kFanNumber});
    EXPECT_EQ(r.failure, "request failed: Authentication failure (incorrect password, community or key)");
    EXPECT_TRUE(r.varbinds.empty()) << r.toString();
}

TEST(SnmpV3Access, ACommunityRequestGetsNoAnswer)
{
    Agent agent(snmpV3Only());
    for (const char *community : {"public", "private"}) {
        SnmpClient client(agent.port(), community, 300000, 0);
        Response r = client.get({kFanNumber});
        EXPECT_TRUE(r.timedOut) << community << ": " << r.toString();
        EXPECT_TRUE(r.varbinds.empty());
    }
}

} // namespace
} // namespace orv3::test

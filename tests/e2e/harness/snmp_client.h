// In-process SNMPv2c client for the end-to-end tests, built on the net-snmp
// single-session API. One SnmpClient owns one UDP session to 127.0.0.1:<port>.
#pragma once

// The net-snmp headers give the tests the ASN_* / SNMP_* type and error constants.
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include <ostream>
#include <string>
#include <vector>

namespace orv3::test {

// One variable binding of a response.
struct VarBind {
    std::string oid;                 // dotted, no leading dot
    unsigned char type = 0;          // ASN_INTEGER, ASN_GAUGE, ASN_OCTET_STR, SNMP_NOSUCHOBJECT, ...
    long integer = 0;                // INTEGER as signed; for unsigned types a copy of unsignedValue
    unsigned long unsignedValue = 0; // Gauge32 / Counter32 / TimeTicks / Unsigned32 / Counter64
    std::string octets;              // OCTET STRING / Opaque / IpAddress bytes; OBJECT IDENTIFIER as dotted text

    // True for noSuchObject, noSuchInstance and endOfMibView.
    bool isException() const;
    // "oid = TYPE: value", for messages.
    std::string toString() const;
};

// Result of one request.
struct Response {
    bool timedOut = false; // no answer within timeout and retries
    long errorStatus = 0;  // SNMP_ERR_* of the response PDU
    long errorIndex = 0;
    std::vector<VarBind> varbinds;
    std::string failure; // non-empty when the request could not be completed (timeout, send error, walk loop)

    // No timeout, no failure and errorStatus == noError.
    bool ok() const { return !timedOut && failure.empty() && errorStatus == SNMP_ERR_NOERROR; }
    std::string toString() const;
};

// One value for a SET request. `integer` is used for INTEGER and the unsigned
// types (Gauge32, Counter32, TimeTicks, Unsigned32, Counter64); `octets` for
// OCTET STRING, Opaque, BITS, IpAddress (4 raw bytes) and OBJECT IDENTIFIER
// (dotted text). ASN_NULL sends a NULL value.
struct SetValue {
    std::string oid;
    unsigned char type = ASN_INTEGER;
    long integer = 0;
    std::string octets;

    static SetValue ofInteger(std::string oid, long v) { return {std::move(oid), ASN_INTEGER, v, {}}; }
    static SetValue ofOctets(std::string oid, std::string v)
    {
        return {std::move(oid), ASN_OCTET_STR, 0, std::move(v)};
    }
    static SetValue ofGauge(std::string oid, long v) { return {std::move(oid), ASN_GAUGE, v, {}}; }
    static SetValue ofUnsigned(std::string oid, long v) { return {std::move(oid), ASN_UNSIGNED, v, {}}; }
    static SetValue ofCounter(std::string oid, long v) { return {std::move(oid), ASN_COUNTER, v, {}}; }
    static SetValue ofTimeTicks(std::string oid, long v) { return {std::move(oid), ASN_TIMETICKS, v, {}}; }
    static SetValue ofOid(std::string oid, std::string v) { return {std::move(oid), ASN_OBJECT_ID, 0, std::move(v)}; }
    static SetValue ofNull(std::string oid) { return {std::move(oid), ASN_NULL, 0, {}}; }
};

// "INTEGER", "Gauge32", "OCTET STRING", "noSuchObject", "noSuchInstance", "endOfMibView", ...
std::string typeName(unsigned char type);
// "noError", "tooBig", "noSuchName", "badValue", "readOnly", "genErr", "noAccess", "wrongType", ...
std::string errorStatusName(long status);

// Initialises the net-snmp library for client use (idempotent, thread-safe):
// MIB loading off, no configuration files read, no persistent state written.
void initSnmpLibrary();

// An SNMPv3 user of the agent's USM: SHA-256 authentication and AES-128
// privacy (authPriv), keys made from the passphrases.
struct UsmUser {
    std::string name;
    std::string authPassphrase;
    std::string privPassphrase;
};

class SnmpClient {
public:
    static constexpr long kDefaultTimeoutUs = 1000000;
    static constexpr int kDefaultRetries = 1;

    // Opens a v2c session to 127.0.0.1:<port>. Throws std::runtime_error on failure.
    SnmpClient(int port, std::string community = "public", long timeoutUs = kDefaultTimeoutUs,
               int retries = kDefaultRetries);
    // Opens an SNMPv3 session as `user` (authPriv). Throws std::runtime_error
    // when the session cannot be opened, which includes the agent not
    // answering the discovery of its engine ID.
    SnmpClient(int port, const UsmUser &user, long timeoutUs = kDefaultTimeoutUs, int retries = kDefaultRetries);
    ~SnmpClient();
    SnmpClient(SnmpClient &&other) noexcept;
    SnmpClient &operator=(SnmpClient &&other) noexcept;
    SnmpClient(const SnmpClient &) = delete;
    SnmpClient &operator=(const SnmpClient &) = delete;

    // OIDs are numeric dotted strings, leading dot optional. A malformed OID throws
    // std::invalid_argument.
    Response get(const std::vector<std::string> &oids);
    Response getNext(const std::vector<std::string> &oids);
    Response getBulk(int nonRepeaters, int maxRepetitions, const std::vector<std::string> &oids);
    Response set(const std::vector<SetValue> &values);

    // GETNEXT from `root` until a varbind leaves the subtree or an exception
    // (endOfMibView) comes back; returns the varbinds inside the subtree.
    std::vector<VarBind> walk(const std::string &root);
    // Same walk, also reporting how it ended (timeout, error status, non-increasing OID).
    Response walkResponse(const std::string &root);

    int port() const { return port_; }
    const std::string &community() const { return community_; }

private:
    Response request(int command, const std::vector<std::string> &oids, int nonRepeaters = 0, int maxRepetitions = 0);
    Response send(struct snmp_pdu *pdu);
    void close();

    int port_ = 0;
    std::string community_;
    void *session_ = nullptr;
};

std::ostream &operator<<(std::ostream &os, const VarBind &vb);
std::ostream &operator<<(std::ostream &os, const Response &r);

} // namespace orv3::test

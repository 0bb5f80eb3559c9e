#include "harness/snmp_client.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <sstream>
#include <stdexcept>

#include "harness/oids.h"

namespace orv3::test {

namespace {

// Serialises session opening/closing: the library keeps some global state there.
std::mutex &sessionMutex()
{
    static std::mutex m;
    return m;
}

std::vector<oid> toOid(const std::string &text)
{
    std::vector<unsigned long> parts = oidParse(text);
    if (parts.empty())
        throw std::invalid_argument("empty OID");
    if (parts.size() > MAX_OID_LEN)
        throw std::invalid_argument("OID too long: " + text);
    return std::vector<oid>(parts.begin(), parts.end());
}

std::string fromOid(const oid *name, size_t len)
{
    std::string out;
    for (size_t i = 0; i < len; ++i) {
        if (i)
            out += '.';
        out += std::to_string(static_cast<unsigned long>(name[i]));
    }
    return out;
}

VarBind decode(const netsnmp_variable_list *v)
{
    VarBind vb;
    vb.oid = fromOid(v->name, v->name_length);
    vb.type = v->type;
    switch (v->type) {
    case ASN_INTEGER:
        if (v->val.integer)
            vb.integer = *v->val.integer;
        break;
    case ASN_COUNTER:
    case ASN_GAUGE: // == ASN_UNSIGNED
    case ASN_TIMETICKS:
    case ASN_UINTEGER:
        if (v->val.integer)
            vb.unsignedValue = static_cast<unsigned long>(*v->val.integer) & 0xffffffffUL;
        vb.integer = static_cast<long>(vb.unsignedValue);
        break;
    case ASN_COUNTER64:
        if (v->val.counter64) {
            vb.unsignedValue = (static_cast<unsigned long>(v->val.counter64->high) << 32) |
                               (static_cast<unsigned long>(v->val.counter64->low) & 0xffffffffUL);
        }
        vb.integer = static_cast<long>(vb.unsignedValue);
        break;
    case ASN_OBJECT_ID:
        if (v->val.objid)
            vb.octets = fromOid(v->val.objid, v->val_len / sizeof(oid));
        break;
    case SNMP_NOSUCHOBJECT:
    case SNMP_NOSUCHINSTANCE:
    case SNMP_ENDOFMIBVIEW:
    case ASN_NULL: break;
    default: // OCTET STRING, IpAddress, Opaque, BITS and anything else: raw bytes
        if (v->val.string && v->val_len) {
            vb.octets.assign(reinterpret_cast<const char *>(v->val.string), v->val_len);
        }
        break;
    }
    return vb;
}

bool printable(const std::string &s)
{
    for (unsigned char c : s) {
        if (c < 0x20 || c >= 0x7f)
            return false;
    }
    return true;
}

} // namespace

bool VarBind::isException() const
{
    return type == SNMP_NOSUCHOBJECT || type == SNMP_NOSUCHINSTANCE || type == SNMP_ENDOFMIBVIEW;
}

std::string VarBind::toString() const
{
    std::ostringstream os;
    os << oid << " = " << typeName(type);
    switch (type) {
    case ASN_INTEGER: os << ": " << integer; break;
    case ASN_COUNTER:
    case ASN_GAUGE:
    case ASN_TIMETICKS:
    case ASN_UINTEGER:
    case ASN_COUNTER64: os << ": " << unsignedValue; break;
    case ASN_OBJECT_ID: os << ": " << octets; break;
    case ASN_IPADDRESS:
        os << ": ";
        for (size_t i = 0; i < octets.size(); ++i) {
            os << (i ? "." : "") << static_cast<unsigned>(static_cast<unsigned char>(octets[i]));
        }
        break;
    case SNMP_NOSUCHOBJECT:
    case SNMP_NOSUCHINSTANCE:
    case SNMP_ENDOFMIBVIEW:
    case ASN_NULL: break;
    default:
        if (printable(octets)) {
            os << ": \"" << octets << '"';
        } else {
            os << ": hex";
            char buf[4];
            for (unsigned char c : octets) {
                std::snprintf(buf, sizeof buf, " %02x", c);
                os << buf;
            }
        }
        break;
    }
    return os.str();
}

std::string Response::toString() const
{
    std::ostringstream os;
    if (timedOut)
        os << "TIMEOUT ";
    if (!failure.empty())
        os << "failure: " << failure << ' ';
    os << "errorStatus=" << errorStatus << " (" << errorStatusName(errorStatus) << ") errorIndex=" << errorIndex;
    for (const VarBind &vb : varbinds)
        os << "\n  " << vb.toString();
    return os.str();
}

std::ostream &operator<<(std::ostream &os, const VarBind &vb)
{
    return os << vb.toString();
}
std::ostream &operator<<(std::ostream &os, const Response &r)
{
    return os << r.toString();
}

std::string typeName(unsigned char type)
{
    switch (type) {
    case ASN_INTEGER: return "INTEGER";
    case ASN_BIT_STR: return "BITS";
    case ASN_OCTET_STR: return "OCTET STRING";
    case ASN_NULL: return "NULL";
    case ASN_OBJECT_ID: return "OBJECT IDENTIFIER";
    case ASN_IPADDRESS: return "IpAddress";
    case ASN_COUNTER: return "Counter32";
    case ASN_GAUGE: return "Gauge32"; // also Unsigned32
    case ASN_TIMETICKS: return "TimeTicks";
    case ASN_OPAQUE: return "Opaque";
    case ASN_COUNTER64: return "Counter64";
    case ASN_UINTEGER: return "UInteger32";
    case SNMP_NOSUCHOBJECT: return "noSuchObject";
    case SNMP_NOSUCHINSTANCE: return "noSuchInstance";
    case SNMP_ENDOFMIBVIEW: return "endOfMibView";
    default: {
        char buf[32];
        std::snprintf(buf, sizeof buf, "type(0x%02x)", type);
        return buf;
    }
    }
}

std::string errorStatusName(long status)
{
    static const char *const names[] = {
        "noError",
        "tooBig",
        "noSuchName",
        "badValue",
        "readOnly",
        "genErr",
        "noAccess",
        "wrongType",
        "wrongLength",
        "wrongEncoding",
        "wrongValue",
        "noCreation",
        "inconsistentValue",
        "resourceUnavailable",
        "commitFailed",
        "undoFailed",
        "authorizationError",
        "notWritable",
        "inconsistentName",
    };
    if (status >= 0 && status < static_cast<long>(sizeof names / sizeof names[0]))
        return names[status];
    return "error(" + std::to_string(status) + ")";
}

void initSnmpLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] {
        // No MIB files: numeric OIDs only and no warnings about missing MIBs.
        setenv("MIBS", "", 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
        // Even so, init_snmp creates <persistent dir>/cert_indexes (TLS support): point
        // the persistent directory at a private temporary one and remove it afterwards,
        // so that nothing is written under /var/lib/snmp.
        char tmpl[] = "/tmp/orv3-e2e-client-XXXXXX";
        const char *persist = mkdtemp(tmpl);
        if (persist) {
            set_persistent_directory(persist);
            // Pre-created so that the library does not log "Created directory".
            std::filesystem::create_directory(std::string(persist) + "/cert_indexes");
        }
        init_snmp("orv3-e2e");
        if (persist) {
            std::error_code ec;
            std::filesystem::remove_all(persist, ec);
        }
    });
}

SnmpClient::SnmpClient(int port, std::string community, long timeoutUs, int retries)
    : port_(port), community_(std::move(community))
{
    initSnmpLibrary();
    std::string peer = "udp:127.0.0.1:" + std::to_string(port);
    netsnmp_session s;
    snmp_sess_init(&s);
    s.version = SNMP_VERSION_2c;
    s.peername = const_cast<char *>(peer.c_str());
    s.community = reinterpret_cast<u_char *>(const_cast<char *>(community_.c_str()));
    s.community_len = community_.size();
    s.timeout = timeoutUs;
    s.retries = retries;
    {
        std::lock_guard<std::mutex> lock(sessionMutex());
        session_ = snmp_sess_open(&s);
    }
    if (!session_) {
        throw std::runtime_error("snmp_sess_open failed for " + peer);
    }
}

SnmpClient::SnmpClient(int port, const UsmUser &user, long timeoutUs, int retries) : port_(port)
{
    initSnmpLibrary();
    std::string peer = "udp:127.0.0.1:" + std::to_string(port);
    netsnmp_session s;
    snmp_sess_init(&s);
    s.version = SNMP_VERSION_3;
    s.peername = const_cast<char *>(peer.c_str());
    s.securityName = const_cast<char *>(user.name.c_str());
    s.securityNameLen = user.name.size();
    s.securityLevel = SNMP_SEC_LEVEL_AUTHPRIV;
    s.securityAuthProto = usmHMAC192SHA256AuthProtocol;
    s.securityAuthProtoLen = OID_LENGTH(usmHMAC192SHA256AuthProtocol);
    s.securityAuthKeyLen = USM_AUTH_KU_LEN;
    // AES-128 (usmAesCfb128Protocol): the AES-192/256 key extensions differ
    // between implementations.
    s.securityPrivProto = usmAESPrivProtocol;
    s.securityPrivProtoLen = OID_LENGTH(usmAESPrivProtocol);
    s.securityPrivKeyLen = USM_PRIV_KU_LEN;
    auto passphrase = [](const std::string &p) {
        return reinterpret_cast<u_char *>(const_cast<char *>(p.c_str()));
    };
    if (generate_Ku(s.securityAuthProto, s.securityAuthProtoLen, passphrase(user.authPassphrase),
                    user.authPassphrase.size(), s.securityAuthKey, &s.securityAuthKeyLen) != SNMPERR_SUCCESS ||
        generate_Ku(s.securityAuthProto, s.securityAuthProtoLen, passphrase(user.privPassphrase),
                    user.privPassphrase.size(), s.securityPrivKey, &s.securityPrivKeyLen) != SNMPERR_SUCCESS) {
        throw std::runtime_error("cannot make keys for user " + user.name + " (passphrases need 8 characters)");
    }
    s.timeout = timeoutUs;
    s.retries = retries;
    {
        std::lock_guard<std::mutex> lock(sessionMutex());
        session_ = snmp_sess_open(&s);
    }
    if (!session_) {
        throw std::runtime_error("snmp_sess_open failed for user " + user.name + " at " + peer);
    }
}

SnmpClient::~SnmpClient()
{
    close();
}

SnmpClient::SnmpClient(SnmpClient &&other) noexcept
    : port_(other.port_), community_(std::move(other.community_)), session_(other.session_)
{
    other.session_ = nullptr;
}

SnmpClient &SnmpClient::operator=(SnmpClient &&other) noexcept
{
    if (this != &other) {
        close();
        port_ = other.port_;
        community_ = std::move(other.community_);
        session_ = other.session_;
        other.session_ = nullptr;
    }
    return *this;
}

void SnmpClient::close()
{
    if (session_) {
        std::lock_guard<std::mutex> lock(sessionMutex());
        snmp_sess_close(session_);
        session_ = nullptr;
    }
}

Response SnmpClient::send(netsnmp_pdu *pdu)
{
    Response r;
    if (!session_) {
        snmp_free_pdu(pdu);
        r.failure = "session is closed";
        return r;
    }
    netsnmp_pdu *resp = nullptr;
    int status = snmp_sess_synch_response(session_, pdu, &resp); // frees pdu
    if (status == STAT_SUCCESS && resp) {
        r.errorStatus = resp->errstat;
        r.errorIndex = resp->errindex;
        for (netsnmp_variable_list *v = resp->variables; v; v = v->next_variable) {
            r.varbinds.push_back(decode(v));
        }
    } else if (status == STAT_TIMEOUT) {
        r.timedOut = true;
        r.failure = "timeout";
    } else {
        int liberr = 0, syserr = 0;
        char *msg = nullptr;
        snmp_sess_error(session_, &liberr, &syserr, &msg);
        r.failure = std::string("request failed: ") + (msg ? msg : "unknown error");
        free(msg);
    }
    if (resp)
        snmp_free_pdu(resp);
    return r;
}

Response SnmpClient::request(int command, const std::vector<std::string> &oids, int nonRepeaters, int maxRepetitions)
{
    std::vector<std::vector<oid>> names;
    names.reserve(oids.size());
    for (const std::string &o : oids)
        names.push_back(toOid(o)); // may throw before allocating the PDU
    netsnmp_pdu *pdu = snmp_pdu_create(command);
    if (command == SNMP_MSG_GETBULK) {
        pdu->non_repeaters = nonRepeaters;
        pdu->max_repetitions = maxRepetitions;
    }
    for (const auto &n : names)
        snmp_add_null_var(pdu, n.data(), n.size());
    return send(pdu);
}

Response SnmpClient::get(const std::vector<std::string> &oids)
{
    return request(SNMP_MSG_GET, oids);
}

Response SnmpClient::getNext(const std::vector<std::string> &oids)
{
    return request(SNMP_MSG_GETNEXT, oids);
}

Response SnmpClient::getBulk(int nonRepeaters, int maxRepetitions, const std::vector<std::string> &oids)
{
    return request(SNMP_MSG_GETBULK, oids, nonRepeaters, maxRepetitions);
}

Response SnmpClient::set(const std::vector<SetValue> &values)
{
    // Validate everything before allocating the PDU so that a throw leaks nothing.
    std::vector<std::vector<oid>> names, oidValues(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
        names.push_back(toOid(values[i].oid));
        if (values[i].type == ASN_OBJECT_ID)
            oidValues[i] = toOid(values[i].octets);
    }
    netsnmp_pdu *pdu = snmp_pdu_create(SNMP_MSG_SET);
    for (size_t i = 0; i < values.size(); ++i) {
        const SetValue &v = values[i];
        const oid *name = names[i].data();
        size_t len = names[i].size();
        switch (v.type) {
        case ASN_INTEGER: {
            long x = v.integer;
            snmp_pdu_add_variable(pdu, name, len, v.type, &x, sizeof x);
            break;
        }
        case ASN_COUNTER:
        case ASN_GAUGE:
        case ASN_TIMETICKS:
        case ASN_UINTEGER: {
            u_long x = static_cast<u_long>(v.integer);
            snmp_pdu_add_variable(pdu, name, len, v.type, &x, sizeof x);
            break;
        }
        case ASN_COUNTER64: {
            struct counter64 c;
            unsigned long x = static_cast<unsigned long>(v.integer);
            c.high = x >> 32;
            c.low = x & 0xffffffffUL;
            snmp_pdu_add_variable(pdu, name, len, v.type, &c, sizeof c);
            break;
        }
        case ASN_OBJECT_ID:
            snmp_pdu_add_variable(pdu, name, len, v.type, oidValues[i].data(), oidValues[i].size() * sizeof(oid));
            break;
        case ASN_NULL: snmp_pdu_add_variable(pdu, name, len, v.type, nullptr, 0); break;
        default: snmp_pdu_add_variable(pdu, name, len, v.type, v.octets.data(), v.octets.size()); break;
        }
    }
    return send(pdu);
}

Response SnmpClient::walkResponse(const std::string &root)
{
    const std::string base = oidNormalize(root);
    Response out;
    std::string cur = base;
    for (int guard = 0; guard < 1000000; ++guard) {
        Response r = getNext({cur});
        if (!r.ok()) {
            out.timedOut = r.timedOut;
            out.errorStatus = r.errorStatus;
            out.errorIndex = r.errorIndex;
            out.failure = r.failure;
            return out;
        }
        if (r.varbinds.empty()) {
            out.failure = "GETNEXT response without varbinds after " + cur;
            return out;
        }
        VarBind &vb = r.varbinds.front();
        if (vb.isException() || !oidStartsWith(vb.oid, base))
            return out;
        if (oidCompare(vb.oid, cur) <= 0) {
            out.failure = "OID not increasing: " + vb.oid + " after " + cur;
            return out;
        }
        cur = vb.oid;
        out.varbinds.push_back(std::move(vb));
    }
    out.failure = "walk did not terminate";
    return out;
}

std::vector<VarBind> SnmpClient::walk(const std::string &root)
{
    return walkResponse(root).varbinds;
}

} // namespace orv3::test

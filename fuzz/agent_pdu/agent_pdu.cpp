// The whole agent in one process: net-snmp's agent library as a master agent
// with the module registered (init_snmp_module_monitors) and the simulator
// serving a private copy of the sample machine, fed SNMP messages through a
// transport of its own instead of a socket. Communities are those of a real
// configuration: public reads, private also writes.
//
// An input that starts with 0x30 (the BER sequence every SNMP message starts
// with) is one received message, as it would come off the wire. Any other
// input is a series of requests the harness encodes itself, so that the
// fuzzer reaches deep into the module without having to find BER first:
//
//   request   header [clock] [non-repeaters max-repetitions] count varbind...
//   header    bits 0-1 GET, GETNEXT, GETBULK, SET; bits 2-3 community public,
//             private, an unknown one, public again; bit 4 SNMPv1 (GETBULK is
//             always v2c); bit 5 a clock byte follows
//   clock     the simulator's clock moves on by that many seconds (above 127:
//             that many minutes less 127), so that cached tables reload
//   count     varbinds in the request, 0 to 8
//   varbind   node (two bytes, little-endian, modulo the node table) form
//             [form bytes] [for a SET: type value]
//
// The node table holds every object of the module's MIB (tests/mib/objects.tsv)
// and every node above one, up to the module's root; the form appends an
// instance to it (see appendInstance). A missing byte reads as zero. The
// agent's alarms run after each message, so that rows the module retires
// are freed before the next input.
#include "monitors.h"
#include "netsnmp.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <stdlib.h>
#include <sys/select.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

extern "C" {
// net-snmp's access control (agent/mibgroup/mibII/vacm_conf.h, not installed):
// the rocommunity and rwcommunity lines and the check of every request.
void init_vacm_conf(void);
}

namespace {

namespace fs = std::filesystem;

constexpr oid kRoot[] = {1, 3, 6, 1, 4, 1, 53917, 11, 1, 1};
constexpr time_t kClockStart = 1704067200; // 2024-01-01 00:00:00 UTC
constexpr size_t kMaxRequests = 8;
constexpr size_t kMaxVarbinds = 8;
// Moving the clock costs up to a millisecond of waiting (advanceClock); once
// per input is enough to make the tables reload.
constexpr int kMaxClockMoves = 1;

// The process's private directories: the simulator's machine and clock,
// net-snmp's configuration and persistent store, an empty MIB directory.
struct Paths {
    fs::path dir;
    fs::path clock;
};

Paths &paths()
{
    static Paths instance;
    return instance;
}

void removePrivateDir()
{
    std::error_code ignored;
    fs::remove_all(paths().dir, ignored);
}

[[noreturn]] void fail(const std::string &what)
{
    fprintf(stderr, "agent_pdu: %s\n", what.c_str());
    abort();
}

void writeText(const fs::path &path, const std::string &text)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out.flush())
        fail("cannot write " + path.string());
}

// Runs before the simulator, which reads its environment while the program
// starts (platform.cpp's constructor, of default priority in this same
// program), and before net-snmp reads anything.
__attribute__((constructor(101))) void preparePrivateDirs()
{
    const char *tmp = getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/orv3-agent-pdu.XXXXXX";
    if (!mkdtemp(pattern.data()))
        fail("cannot create a directory from " + pattern);
    Paths &p = paths();
    p.dir = pattern;
    atexit(removePrivateDir);
    for (const char *sub : {"conf", "persist", "mibs", "home"})
        fs::create_directory(p.dir / sub);

    const fs::path machine = p.dir / "machine.json";
    fs::copy_file(ORV3_SAMPLE_MACHINE, machine);
    p.clock = p.dir / "clock";
    writeText(p.clock, std::to_string(kClockStart) + "\n");
    writeText(p.dir / "conf" / "snmpd.conf", "rocommunity public 127.0.0.1\n"
                                             "rwcommunity private 127.0.0.1\n");

    setenv("ORV3_SIM_MACHINE", machine.c_str(), 1);
    setenv("ORV3_SIM_CLOCK", p.clock.c_str(), 1);
    setenv("ORV3_SIM_TRACE_LOG", "/dev/null", 0);
    setenv("SNMPCONFPATH", (p.dir / "conf").c_str(), 1);
    setenv("SNMP_PERSISTENT_DIR", (p.dir / "persist").c_str(), 1);
    setenv("MIBDIRS", (p.dir / "mibs").c_str(), 1);
    setenv("MIBS", "", 1);
    setenv("HOME", (p.dir / "home").c_str(), 1);
}

// ---------------------------------------------------------------------------
// The transport: the agent reads the pending message from it and sends its
// answer into it, from and to 127.0.0.1 as far as access control can tell.

struct Wire {
    const uint8_t *pending = nullptr;
    size_t pendingSize = 0;
    int fd = -1;
};
Wire wire;

int wireReceive(netsnmp_transport *, void *buffer, int size, void **opaque, int *opaqueLength)
{
    if (!wire.pending)
        return -1;
    const size_t length = std::min(wire.pendingSize, static_cast<size_t>(size));
    memcpy(buffer, wire.pending, length);
    wire.pending = nullptr;
    auto *from = static_cast<netsnmp_indexed_addr_pair *>(calloc(1, sizeof(netsnmp_indexed_addr_pair)));
    from->remote_addr.sin.sin_family = AF_INET;
    from->remote_addr.sin.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    from->remote_addr.sin.sin_port = htons(40161);
    from->local_addr.sin.sin_family = AF_INET;
    from->local_addr.sin.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    from->local_addr.sin.sin_port = htons(161);
    *opaque = from;
    *opaqueLength = sizeof *from;
    return static_cast<int>(length);
}

// The answer goes nowhere: what the fuzzer looks for happens before it.
int wireSend(netsnmp_transport *, const void *, int size, void **, int *)
{
    return size;
}

int wireClose(netsnmp_transport *transport)
{
    close(transport->sock);
    transport->sock = -1;
    return 0;
}

// Not an address with brackets, so that TCP wrappers, which the Debian agent
// library is built with, leave the message alone.
char *wireAddress(netsnmp_transport *, const void *, int)
{
    return strdup("callback: fuzz input");
}

void openWire()
{
    // A descriptor of its own, so that the library's read loop can select it.
    wire.fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (wire.fd < 0 || wire.fd >= FD_SETSIZE)
        fail("no descriptor for the transport");
    auto *transport = static_cast<netsnmp_transport *>(calloc(1, sizeof(netsnmp_transport)));
    transport->domain = netsnmpUDPDomain;
    transport->domain_length = netsnmpUDPDomain_len;
    transport->sock = wire.fd;
    transport->msgMaxSize = 0xffff - 28; // a UDP datagram's payload
    transport->f_recv = wireReceive;
    transport->f_send = wireSend;
    transport->f_close = wireClose;
    transport->f_fmtaddr = wireAddress;
    if (netsnmp_register_agent_nsap(transport) <= 0)
        fail("the agent did not take the transport");
}

// Hands one message to the agent as snmpd's receive loop would, then runs
// what the loop runs after it.
void deliver(const uint8_t *message, size_t size)
{
    wire.pending = message;
    wire.pendingSize = size;
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(wire.fd, &readable);
    snmp_read(&readable);
    wire.pending = nullptr;
    netsnmp_check_outstanding_agent_requests();
    run_alarms();
}

// ---------------------------------------------------------------------------
// The simulator's clock, moved forward by the input.

time_t clockNow = kClockStart;

void advanceClock(time_t seconds)
{
    clockNow += seconds;
    writeText(paths().clock, std::to_string(clockNow) + "\n");
    // The simulator looks at its clock file again once a millisecond has
    // passed; wait for it, so that the whole request sees the new time.
    for (int attempt = 0; attempt < 200 && time(nullptr) != clockNow; ++attempt) {
        const struct timespec pause = {0, 250 * 1000};
        nanosleep(&pause, nullptr);
    }
}

// ---------------------------------------------------------------------------
// The structured requests.

std::vector<std::vector<oid>> nodes;

void loadNodes()
{
    std::ifstream in(ORV3_MIB_OBJECTS);
    if (!in)
        fail(std::string("cannot read ") + ORV3_MIB_OBJECTS);
    std::set<std::vector<oid>> found{std::vector<oid>(std::begin(kRoot), std::end(kRoot))};
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::string name, dotted;
        if (!std::getline(fields, name, '\t') || !std::getline(fields, dotted, '\t'))
            continue;
        std::vector<oid> node;
        std::istringstream parts(dotted);
        for (std::string part; std::getline(parts, part, '.');)
            node.push_back(std::stoul(part));
        if (node.size() <= std::size(kRoot) || !std::equal(std::begin(kRoot), std::end(kRoot), node.begin()))
            fail("object outside the module: " + line);
        for (size_t length = std::size(kRoot) + 1; length <= node.size(); ++length)
            found.emplace(node.begin(), node.begin() + length);
    }
    nodes.assign(found.begin(), found.end());
}

class Input {
public:
    Input(const uint8_t *data, size_t size) : data_(data), size_(size) {}
    bool empty() const { return at_ >= size_; }
    uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
    uint32_t word()
    {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i)
            value |= uint32_t{byte()} << (8 * i);
        return value;
    }
    // A small number in one byte, or any 32-bit one in the four bytes after.
    long number()
    {
        const uint8_t first = byte();
        if (first & 0x80)
            return static_cast<int32_t>(word());
        return long{first} - 16;
    }
    std::string text(size_t length)
    {
        std::string value;
        while (value.size() < length && !empty())
            value.push_back(static_cast<char>(byte()));
        return value;
    }

private:
    const uint8_t *data_;
    size_t size_;
    size_t at_ = 0;
};

// Turns a node into the name of an instance, or of something near one.
void appendInstance(Input &input, std::vector<oid> &name)
{
    switch (input.byte() % 8) {
    case 0: break;                               // the node itself
    case 1: name.push_back(0); break;            // a scalar's instance
    case 2: name.push_back(input.byte()); break; // a row
    case 3: name.push_back(input.word()); break; // a row far out
    case 4:                                      // below a row
        name.push_back(input.byte());
        name.push_back(input.byte());
        break;
    case 5: // a few arbitrary sub-identifiers
        for (int n = input.byte() % 8; n > 0; --n)
            name.push_back(input.word());
        break;
    case 6: { // a node higher up, then a row
        const size_t drop = std::min<size_t>(input.byte() % 4, name.size() - 1);
        name.resize(name.size() - drop);
        name.push_back(input.byte());
        break;
    }
    default: // a name of the input's own
        name.clear();
        for (int n = input.byte() % 12 + 1; n > 0; --n)
            name.push_back(input.word());
        break;
    }
    if (name.size() > MAX_OID_LEN)
        name.resize(MAX_OID_LEN);
}

void addSetValue(Input &input, netsnmp_pdu *pdu, const std::vector<oid> &name)
{
    static constexpr u_char kTypes[] = {ASN_INTEGER,   ASN_OCTET_STR, ASN_GAUGE, ASN_COUNTER, ASN_TIMETICKS,
                                        ASN_IPADDRESS, ASN_OBJECT_ID, ASN_NULL,  ASN_OPAQUE,  ASN_COUNTER64};
    const u_char type = kTypes[input.byte() % std::size(kTypes)];
    switch (type) {
    case ASN_INTEGER:
    case ASN_GAUGE:
    case ASN_COUNTER:
    case ASN_TIMETICKS: {
        long value = input.number();
        if (type != ASN_INTEGER)
            value = static_cast<long>(static_cast<uint32_t>(value));
        snmp_pdu_add_variable(pdu, name.data(), name.size(), type, &value, sizeof value);
        break;
    }
    case ASN_OCTET_STR:
    case ASN_OPAQUE: {
        const std::string value = input.text(input.byte());
        snmp_pdu_add_variable(pdu, name.data(), name.size(), type, value.data(), value.size());
        break;
    }
    case ASN_IPADDRESS: {
        const uint32_t value = input.word();
        snmp_pdu_add_variable(pdu, name.data(), name.size(), type, &value, sizeof value);
        break;
    }
    case ASN_OBJECT_ID: {
        std::vector<oid> value{1, 3};
        for (int n = input.byte() % 16; n > 0; --n)
            value.push_back(input.byte());
        snmp_pdu_add_variable(pdu, name.data(), name.size(), type, value.data(), value.size() * sizeof(oid));
        break;
    }
    case ASN_COUNTER64: {
        struct counter64 value = {input.word(), input.word()};
        snmp_pdu_add_variable(pdu, name.data(), name.size(), type, &value, sizeof value);
        break;
    }
    default: snmp_pdu_add_variable(pdu, name.data(), name.size(), ASN_NULL, nullptr, 0); break;
    }
}

// Reads one request from the input.
netsnmp_pdu *readRequest(Input &input, int &clockMoves)
{
    static constexpr int kCommands[] = {SNMP_MSG_GET, SNMP_MSG_GETNEXT, SNMP_MSG_GETBULK, SNMP_MSG_SET};
    static constexpr const char *kCommunities[] = {"public", "private", "monitor", "public"};
    const uint8_t header = input.byte();
    const int command = kCommands[header & 3];
    const char *community = kCommunities[(header >> 2) & 3];
    const long version = (header & 0x10) && command != SNMP_MSG_GETBULK ? SNMP_VERSION_1 : SNMP_VERSION_2c;
    if (header & 0x20) {
        const uint8_t step = input.byte();
        if (clockMoves) {
            --clockMoves;
            advanceClock(step < 128 ? step : (step - 127) * 60);
        }
    }

    netsnmp_pdu *pdu = snmp_pdu_create(command);
    pdu->version = version;
    pdu->community = reinterpret_cast<u_char *>(strdup(community));
    pdu->community_len = strlen(community);
    if (command == SNMP_MSG_GETBULK) {
        pdu->non_repeaters = input.byte();
        pdu->max_repetitions = input.byte();
    }
    for (size_t count = input.byte() % (kMaxVarbinds + 1); count > 0; --count) {
        const size_t node = (input.byte() | (input.byte() << 8)) % nodes.size();
        std::vector<oid> name = nodes[node];
        appendInstance(input, name);
        if (command == SNMP_MSG_SET)
            addSetValue(input, pdu, name);
        else
            snmp_add_null_var(pdu, name.data(), name.size());
    }
    return pdu;
}

// Encodes a request as a manager would send it, and hands it to the agent.
void sendRequest(netsnmp_pdu *pdu)
{
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = pdu->version;
    size_t size = 65536;
    size_t offset = 0;
    auto *buffer = static_cast<u_char *>(malloc(size));
    if (snmp_build(&buffer, &size, &offset, &session, pdu) == SNMPERR_SUCCESS) {
        // The library encodes backwards: the message ends the buffer.
        deliver(buffer + size - offset, offset);
    }
    free(buffer);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    loadNodes();
    if (const char *tokens = getenv("ORV3_FUZZ_DEBUG")) {
        // ORV3_FUZZ_DEBUG=results shows every answer; any net-snmp debug
        // tokens work.
        snmp_enable_stderrlog();
        snmp_set_do_debugging(1);
        debug_register_tokens(tokens);
    } else {
        netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
    }
    const Paths &p = paths();
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_CONFIGURATION_DIR, (p.dir / "conf").c_str());
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR, (p.dir / "persist").c_str());
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE, 1);
    // The master agent (the role by default) on no network transport.
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_PORTS, "none");

    // No SMUX peer port: the agent listens nowhere.
    char noSmux[] = "!smux";
    add_to_init_list(noSmux);
    init_agent("snmpd");
    init_vacm_conf();
    init_snmp_module_monitors();
    init_snmp("snmpd");
    if (init_master_agent() != 0)
        fail("the master agent did not start");
    openWire();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    if (data[0] == 0x30) {
        deliver(data, size);
        return 0;
    }
    Input input(data, size);
    int clockMoves = kMaxClockMoves;
    for (size_t n = 0; n < kMaxRequests && !input.empty(); ++n) {
        netsnmp_pdu *pdu = readRequest(input, clockMoves);
        sendRequest(pdu);
        snmp_free_pdu(pdu);
    }
    return 0;
}

// The machine description: what the simulated controller serves.
//
// A description is a JSON file (see docs/machine-description.md). It is read
// at start and again whenever the file changes; a broken edit is reported
// with its line and the last good description keeps being served.
#pragma once

#include "file_watch.h"
#include "orv3/inventory_db.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace orv3::sim {

// Makes a platform call fail: every call of `call` whose key (namespace
// path, or the service's own key) equals `key`, or every call when `key` is
// empty, returns `result` and writes `status` as its status word. With
// `times` >= 0 only that many matching calls fail. A `count` is written to
// the count out-parameter of a failing quel_dm_GetRowCount as well; for
// get_chghist_log it is the record count the call reports instead of
// `result`. The first `after` matching calls go through untouched. A fault
// with `delayMs` holds each call it takes that long first. A fault with
// `fill` makes the call set every byte it writes for its caller to that
// byte: zero-filled records, texts without a terminator, counts and codes
// at the top of their width. A fault that gives neither `result` nor
// `status` (`answersAsUsual`) lets the call answer as usual, slowly or
// filled: a misbehaving call, not a failing one.
struct Fault {
    std::string call;
    std::string key;
    int32_t result = 1;
    int32_t status = 9;
    int64_t times = -1;
    std::optional<int32_t> count;
    int64_t after = 0;
    int32_t delayMs = 0;
    std::optional<uint8_t> fill;
    bool answersAsUsual = false;
};

// An active event of the event database: its severity (enumLogServ: 2
// warning, 3 error, any other value passed through) and its message.
struct ActiveEvent {
    int32_t severity = 0;
    std::string message;
};

// An open login session of the session manager. A session that is not
// describable is still listed by id but cannot be described any more, as a
// session that ended between the two calls.
struct Session {
    int32_t id = 0;
    std::string user;
    std::string access;
    std::string address;
    bool describable = true;
};

// A change of the controller's change-history log: its category (0
// firmware, 1 hardware, any other value configuration) and its two texts.
struct ChangeRecord {
    uint32_t category = 0;
    std::string text1;
    std::string text2;
};

// The power figures of one redundancy mode, as the power-management library
// reports them: the system power and the mode's maximum limit (watts) and a
// one-byte count (the power supplies the mode counts on).
struct PowerModeFigures {
    uint32_t systemPower = 0;
    uint32_t maxLimit = 0;
    uint8_t count = 0;
};

// What a restore-setting call answers: the completion code (0 success) and
// the value, any byte, so that values the controller would not give can be
// served as well.
struct RestoreReply {
    uint8_t completionCode = 0;
    uint8_t value = 0;
};

// One sample of the power history: its number, its time (seconds since the
// epoch; 0 ends the history) and six 16-bit readings, named after the
// table columns that publish them.
struct PowerSample {
    uint16_t sample = 0;
    uint32_t time = 0;
    uint16_t readings[6] = {}; // a, b, c, d, e, f
};

// The real-time power readings (watts) and what the call returns: the
// library reports a failure with 1 and other conditions with other nonzero
// results, after filling the readings all the same.
struct RealtimePowers {
    uint16_t total = 0;
    uint16_t cpu = 0;
    uint16_t memory = 0;
    int32_t result = 0;
};

// The power-management library and the restore settings. Every field
// defaults to 0, so a machine without a "power" section has a zeroed policy
// setting, no described mode and restore replies of 0.
struct PowerManagement {
    uint8_t bladeFamily = 0;
    uint8_t redundancyMode = 0; // POWER_MODE_* in force
    std::map<uint32_t, PowerModeFigures> modes;
    uint8_t cappingPolicy = 0;
    uint8_t capDomain = 0;
    uint16_t currentCap = 0;
    uint16_t softMinCap[2] = {}; // by cap domain
    uint16_t minCap[2] = {};
    uint16_t maxCap[2] = {};
    RestoreReply restorePolicy;
    RestoreReply restoreDelay;
    std::vector<PowerSample> history; // the system domain's last 24 hours, oldest first
    RealtimePowers realtime;
};

// One command the IPMI channel knows: the request bytes (network function,
// command, command data) and the response bytes (completion code first).
struct IpmiExchange {
    std::vector<uint8_t> request;
    std::vector<uint8_t> response;
};

// Every caller of the IPMI channel guarantees a response buffer of 16 bytes.
constexpr size_t kIpmiResponseCapacity = 16;

// The RAID link library's view of the storage. Each record image holds the
// bytes of a library record before the identifier the caller stores in it,
// packed from the description's fields. A list names identifiers in the
// order the library lists them; a count, when given, is reported instead of
// the list's length (the identifiers written stay those listed).
using RecordImage = std::vector<uint8_t>;

struct RaidController {
    uint32_t id = 0;
    RecordImage hardware;              // the hardware record's data
    std::vector<RecordImage> firmware; // firmware components
    std::vector<uint64_t> ports;       // port addresses
    std::vector<uint32_t> pools;
    std::vector<uint32_t> drives;
    std::optional<uint32_t> firmwareCount, portCount, poolCount, driveCount;
};

struct RaidDrive {
    uint32_t id = 0;
    RecordImage hardware;
    std::vector<RecordImage> firmware;
    std::optional<uint32_t> firmwareCount;
};

struct RaidPool {
    uint32_t id = 0;
    RecordImage record;
    std::vector<uint32_t> volumes;
    std::vector<uint32_t> drives;
    std::optional<uint32_t> volumeCount, driveCount;
};

struct RaidVolume {
    uint32_t id = 0;
    RecordImage record;
};

struct RaidInventory {
    std::vector<RaidController> controllers; // in the controller list's order
    std::vector<RaidDrive> drives;
    std::vector<RaidPool> pools;
    std::vector<RaidVolume> volumes;
    std::optional<uint32_t> controllerCount;
};

// The inventory database's view of the PCI adapters. Every record is
// packed from the description's fields when the description is read, so a
// query copies it out as it is.
struct NetworkPhysicalPort {
    inventory_db_physical_port_t record{};
    std::vector<inventory_db_logical_port_t> logicalPorts;
};

// One PCI function, found by its key (unique over all adapters). Every query
// about a known function answers; a part the description leaves out reads
// as a zeroed record or an empty list.
struct PciFunction {
    uint32_t key = 0;
    uint32_t type = INVENTORY_DB_FUNC_OTHER; // what orvdb_get_pci_function_type answers
    inventory_db_pci_info_t pci{};
    inventory_db_pci_vpd_t vpd{};
    inventory_db_pci_misc_t misc{};
    std::vector<inventory_db_firmware_t> firmware;
    inventory_db_network_info_t network{};
    std::vector<NetworkPhysicalPort> physicalPorts; // physical port N is element N - 1
    inventory_db_gpu_device_t gpu{};
    std::vector<inventory_db_gpu_chip_t> chips;
};

struct PciAdapter {
    inventory_db_adapter_t record{};
    std::vector<PciFunction> functions; // in the function-key list's order
};

struct PciInventory {
    std::vector<PciAdapter> adapters; // in the adapter list's order
};

// A persistent-memory module: the id the database lists it by and the
// record it answers for that id.
struct PersistentMemoryModule {
    uint32_t id = 0;
    inventory_db_memory_t record{};
};

struct Machine {
    std::string description;
    // data manager: path -> table rows, a value, or {"value", "accepted", "min", "max"}
    nlohmann::json store = nlohmann::json::object();
    std::vector<ActiveEvent> events;         // event database, in list order
    std::vector<Session> sessions;           // session manager, in id-list order
    std::vector<ChangeRecord> changeHistory; // change-history log, in log order
    PowerManagement power;                   // power-management library and restore settings
    std::vector<IpmiExchange> ipmi;          // the IPMI channel's known commands, first match answers
    std::map<uint32_t, uint8_t> features;    // optional platform functions: flag by feature number
    RaidInventory raid;                      // the RAID link library
    PciInventory pci;                        // the inventory database's PCI adapters
    // the inventory database's persistent-memory modules, in id-list order
    std::vector<PersistentMemoryModule> persistentMemory;
    std::vector<Fault> faults;
};

// A description that cannot be used, with where the problem is.
class MachineFileError : public std::runtime_error {
public:
    MachineFileError(const std::string &file, int line, const std::string &reason);
    int line() const { return line_; }

private:
    int line_;
};

// Parses and checks a description; `file` names it in errors.
std::shared_ptr<const Machine> parseMachine(const std::string &text, const std::string &file);

// An integer the services hand out as 32 signed bits: a description's value
// is checked with it as the file is read, a value written through the data
// manager as it is written, so that neither can be served cut.
inline bool fitsInt32(const nlohmann::json &value)
{
    if (value.is_number_unsigned())
        return value.get<uint64_t>() <= static_cast<uint64_t>(INT32_MAX);
    if (!value.is_number_integer())
        return false;
    auto wide = value.get<int64_t>();
    return wide >= INT32_MIN && wide <= INT32_MAX;
}

// The description file, re-read when it changes.
class MachineSource {
public:
    explicit MachineSource(std::string path) : path_(std::move(path)), watch_(path_) {}

    const std::string &path() const { return path_; }
    // Reads the file now; throws MachineFileError when it cannot be used.
    void loadOrThrow();
    // The description to serve: re-read first if the file changed. A broken
    // change is reported on standard error once and the last good one stays.
    std::shared_ptr<const Machine> current();
    // Increases on every successful (re)load.
    uint64_t generation() const { return generation_; }

private:
    struct FileStamp {
        int64_t mtimeNs = -1;
        int64_t size = -1;
        uint64_t inode = 0;
        bool operator==(const FileStamp &) const = default;
    };
    FileStamp stampNow() const;

    std::string path_;
    // The file is looked at (stat) only when the watch says it was touched.
    FileWatch watch_;
    FileStamp seen_;
    std::shared_ptr<const Machine> machine_;
    uint64_t generation_ = 0;
};

} // namespace orv3::sim

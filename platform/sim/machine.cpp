#include "machine.h"
#include "machine_checks.h"
#include "machine_inventory.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

namespace orv3::sim {

using nlohmann::json;

MachineFileError::MachineFileError(const std::string &file, int line, const std::string &reason)
    : std::runtime_error(line > 0 ? file + ":" + std::to_string(line) + ": " + reason : file + ": " + reason),
      line_(line)
{
}

namespace {

// Reads characters for the parser and counts the lines it has passed.
class LineCountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char *;
    using reference = const char &;

    LineCountingIterator(const char *at, int *line) : at_(at), line_(line) {}
    reference operator*() const { return *at_; }
    LineCountingIterator &operator++()
    {
        if (*at_ == '\n')
            ++*line_;
        ++at_;
        return *this;
    }
    bool operator==(const LineCountingIterator &other) const { return at_ == other.at_; }

private:
    const char *at_;
    int *line_;
};

json parseWithLines(const std::string &text, const std::string &file, LineMap &lines)
{
    struct Frame {
        bool isArray;
        size_t index;
        std::string key;
        std::string pointer;
    };
    std::vector<Frame> frames;
    int line = 1;
    auto childPointer = [&frames]() -> std::string {
        if (frames.empty())
            return "";
        const Frame &top = frames.back();
        return top.pointer + "/" + (top.isArray ? std::to_string(top.index) : escapeToken(top.key));
    };
    auto finishChild = [&frames]() {
        if (!frames.empty() && frames.back().isArray)
            ++frames.back().index;
    };
    auto callback = [&](int, json::parse_event_t event, json &parsed) {
        switch (event) {
        case json::parse_event_t::key: frames.back().key = parsed.get<std::string>(); break;
        case json::parse_event_t::value:
            lines.record(childPointer(), line);
            finishChild();
            break;
        case json::parse_event_t::object_start:
        case json::parse_event_t::array_start: {
            std::string pointer = childPointer();
            lines.record(pointer, line);
            frames.push_back({event == json::parse_event_t::array_start, 0, "", pointer});
            break;
        }
        case json::parse_event_t::object_end:
        case json::parse_event_t::array_end:
            frames.pop_back();
            finishChild();
            break;
        }
        return true;
    };
    try {
        return json::parse(LineCountingIterator(text.data(), &line),
                           LineCountingIterator(text.data() + text.size(), &line), callback);
    } catch (const json::parse_error &error) {
        // Count the lines up to the byte the parser stopped at.
        // error.byte counts from 1 and is one past the end at an early end of input.
        size_t before = std::min<size_t>(error.byte > 0 ? error.byte - 1 : 0, text.size());
        int errorLine = 1;
        for (size_t i = 0; i < before; ++i)
            if (text[i] == '\n')
                ++errorLine;
        std::string reason = error.what();
        auto colon = reason.find("syntax error");
        throw MachineFileError(file, errorLine, colon != std::string::npos ? reason.substr(colon) : reason);
    } catch (const json::exception &error) {
        // A text the parser read but could not hold, such as a number past
        // the range of a double ("number overflow parsing '1e400'"), on the
        // line the parser had reached.
        std::string reason = error.what();
        auto bracket = reason.find("] ");
        throw MachineFileError(file, line, bracket != std::string::npos ? reason.substr(bracket + 2) : reason);
    }
}

// A single variable with constraints on what may be written to it:
// {"value": 0, "accepted": [0, 1, 2]} or {"value": 10, "min": 0, "max": 100}.
// Problems are told with the variable's pointer and the field's line.
void checkVariableObject(const json &entry, const std::string &pointer, const Checker &check)
{
    auto field = [&pointer](const std::string &name) { return pointer + "/" + escapeToken(name); };
    if (!entry.contains("value"))
        check.fail(pointer, "a variable object needs \"value\" (an integer or a text)");
    const json &value = entry["value"];
    const bool integer = value.is_number_integer();
    if (!integer && !value.is_string())
        check.failAt(field("value"), pointer, "\"value\" must be an integer or a text");
    if (integer && !fitsInt32(value))
        check.failAt(field("value"), pointer, "\"value\" does not fit in 32 bits");
    std::optional<int64_t> min, max;
    for (const auto &[name, item] : entry.items()) {
        if (name == "value")
            continue;
        if (name == "accepted") {
            const char *kind = integer ? "\"accepted\" must be an array of integers (the kind of \"value\")"
                                       : "\"accepted\" must be an array of texts (the kind of \"value\")";
            if (!item.is_array())
                check.failAt(field(name), pointer, kind);
            size_t i = 0;
            for (const json &accepted : item) {
                std::string at = field(name) + "/" + std::to_string(i++);
                if (integer ? !accepted.is_number_integer() : !accepted.is_string())
                    check.failAt(at, pointer, kind);
                if (integer && !fitsInt32(accepted))
                    check.failAt(at, pointer, "\"accepted\" values must fit in 32 bits");
            }
        } else if (name == "min" || name == "max") {
            if (!item.is_number_integer())
                check.failAt(field(name), pointer, "\"" + name + "\" must be an integer");
            if (!fitsInt32(item))
                check.failAt(field(name), pointer, "\"" + name + "\" does not fit in 32 bits");
            if (!integer)
                check.failAt(field(name), pointer, "\"" + name + "\" applies only to an integer \"value\"");
            (name == "min" ? min : max) = item.get<int64_t>();
        } else {
            check.failAt(field(name), pointer,
                         "unknown variable field \"" + name + "\" (known: value, accepted, min, max)");
        }
    }
    if (min && max && *min > *max)
        check.failAt(field("min"), pointer, "\"min\" must not be greater than \"max\"");
}

void checkStore(const json &store, const Checker &check)
{
    check.expect(store.is_object(), "/store", "must be an object of namespace paths");
    for (const auto &[path, entry] : store.items()) {
        std::string pointer = "/store/" + escapeToken(path);
        check.expect(!path.empty(), pointer, "a namespace path cannot be empty");
        if (entry.is_array()) {
            size_t i = 0;
            for (const json &row : entry) {
                std::string rowPointer = pointer + "/" + std::to_string(i++);
                check.expect(row.is_object(), rowPointer, "a table row must be an object of variables");
                if (row.contains("index"))
                    check.int32(row["index"], rowPointer + "/index");
            }
        } else if (entry.is_object()) {
            checkVariableObject(entry, pointer, check);
        } else {
            check.expect(entry.is_number_integer() || entry.is_string(), pointer,
                         "must be a table (array of rows), an integer, a text or an object with \"value\"");
        }
    }
}

Fault readFault(const json &entry, const std::string &pointer, const Checker &check)
{
    check.expect(entry.is_object(), pointer, "a fault must be an object");
    Fault fault;
    check.expect(entry.contains("call") && entry["call"].is_string(), pointer, "a fault needs \"call\" (text)");
    fault.call = entry["call"].get<std::string>();
    for (const auto &[name, value] : entry.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "call")
            continue;
        if (name == "key") {
            check.expect(value.is_string(), field, "must be a text");
            fault.key = value.get<std::string>();
        } else if (name == "result") {
            fault.result = check.int32(value, field);
        } else if (name == "status") {
            fault.status = check.int32(value, field);
        } else if (name == "times") {
            fault.times = check.int32(value, field);
            check.expect(fault.times >= 0, field, "must not be negative");
        } else if (name == "count") {
            fault.count = check.int32(value, field);
            check.expect(fault.call == "quel_dm_GetRowCount" || fault.call == "get_chghist_log", field,
                         "only quel_dm_GetRowCount and get_chghist_log have a count to give");
        } else if (name == "after") {
            fault.after = check.int32(value, field);
            check.expect(fault.after >= 0, field, "must not be negative");
        } else if (name == "delayMs") {
            fault.delayMs = check.int32(value, field);
            check.expect(fault.delayMs >= 0 && fault.delayMs <= 10000, field, "must be between 0 and 10000");
        } else if (name == "fill") {
            const int32_t byte = check.int32(value, field);
            check.expect(byte >= 0 && byte <= 255, field, "must be a byte, between 0 and 255");
            fault.fill = static_cast<uint8_t>(byte);
        } else {
            check.fail(field,
                       "unknown fault field (known: call, key, result, status, times, count, after, delayMs, fill)");
        }
    }
    fault.answersAsUsual = (fault.delayMs > 0 || fault.fill) && !entry.contains("result") && !entry.contains("status");
    return fault;
}

std::string text(const json &value, const std::string &pointer, const Checker &check)
{
    check.expect(value.is_string(), pointer, "must be a text");
    return value.get<std::string>();
}

// {"severity": 3, "message": "Fan 3A Tach has failed."}: both required.
ActiveEvent readEvent(const json &entry, const std::string &pointer, const Checker &check)
{
    check.expect(entry.is_object(), pointer, "an event must be an object");
    ActiveEvent event;
    for (const auto &[name, value] : entry.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "severity")
            event.severity = check.int32(value, field);
        else if (name == "message")
            event.message = text(value, field, check);
        else
            check.fail(field, "unknown event field (known: severity, message)");
    }
    check.expect(entry.contains("severity"), pointer, "an event needs \"severity\" (integer)");
    check.expect(entry.contains("message"), pointer, "an event needs \"message\" (text)");
    return event;
}

// {"id": 7, "user": "admin", "access": "SSH", "address": "192.0.2.15",
//  "describable": true}: all but "describable" required.
Session readSession(const json &entry, const std::string &pointer, const Checker &check)
{
    check.expect(entry.is_object(), pointer, "a session must be an object");
    Session session;
    for (const auto &[name, value] : entry.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "id") {
            session.id = check.int32(value, field);
        } else if (name == "user") {
            session.user = text(value, field, check);
        } else if (name == "access") {
            session.access = text(value, field, check);
        } else if (name == "address") {
            session.address = text(value, field, check);
        } else if (name == "describable") {
            check.expect(value.is_boolean(), field, "must be true or false");
            session.describable = value.get<bool>();
        } else {
            check.fail(field, "unknown session field (known: id, user, access, address, describable)");
        }
    }
    check.expect(entry.contains("id"), pointer, "a session needs \"id\" (integer)");
    for (const char *name : {"user", "access", "address"})
        check.expect(entry.contains(name), pointer, std::string("a session needs \"") + name + "\" (text)");
    return session;
}

std::vector<Session> readSessions(const json &value, const std::string &pointer, const Checker &check)
{
    check.expect(value.is_array(), pointer, "must be an array of sessions");
    std::vector<Session> sessions;
    std::map<int32_t, size_t> firstWithId;
    for (size_t i = 0; i < value.size(); ++i) {
        std::string at = pointer + "/" + std::to_string(i);
        sessions.push_back(readSession(value[i], at, check));
        // A session is described by its id, so an id names one session.
        auto [first, fresh] = firstWithId.emplace(sessions.back().id, i);
        check.expect(fresh, at + "/id",
                     "session id " + std::to_string(sessions.back().id) + " is already that of " + pointer + "/" +
                         std::to_string(first->second));
    }
    return sessions;
}

// {"category": 1, "text1": "...", "text2": "..."}: the category required,
// the texts empty unless given.
ChangeRecord readChangeRecord(const json &entry, const std::string &pointer, const Checker &check)
{
    check.expect(entry.is_object(), pointer, "a change record must be an object");
    ChangeRecord change;
    for (const auto &[name, value] : entry.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "category") {
            check.expect(value.is_number_integer(), field, "must be an integer");
            check.expect(value.is_number_unsigned() && value.get<uint64_t>() <= UINT32_MAX, field,
                         "must be between 0 and 4294967295");
            change.category = static_cast<uint32_t>(value.get<uint64_t>());
        } else if (name == "text1") {
            change.text1 = text(value, field, check);
        } else if (name == "text2") {
            change.text2 = text(value, field, check);
        } else {
            check.fail(field, "unknown change record field (known: category, text1, text2)");
        }
    }
    check.expect(entry.contains("category"), pointer, "a change record needs \"category\" (unsigned integer)");
    return change;
}

// A mode code as a key of "modes": plain decimal digits without leading
// zeros, within 32 bits, so that one mode has one spelling.
uint32_t modeCode(const std::string &key, const std::string &pointer, const Checker &check)
{
    bool digits = !key.empty() && key.size() <= 10 && key.find_first_not_of("0123456789") == std::string::npos &&
                  (key.size() == 1 || key[0] != '0');
    check.expect(digits && std::stoull(key) <= UINT32_MAX, pointer,
                 "a mode must be named by its code in decimal, from 0 to 4294967295 (\"1\", \"2\", \"4\")");
    return static_cast<uint32_t>(std::stoull(key));
}

// {"systemPower": 450, "maxLimit": 1100, "count": 2}: each 0 unless given.
PowerModeFigures readPowerMode(const json &entry, const std::string &pointer, const Checker &check)
{
    check.expect(entry.is_object(), pointer, "a mode must be an object");
    PowerModeFigures figures;
    for (const auto &[name, value] : entry.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "systemPower")
            figures.systemPower = wordField(value, field, check);
        else if (name == "maxLimit")
            figures.maxLimit = wordField(value, field, check);
        else if (name == "count")
            figures.count = byteField(value, field, check);
        else
            check.fail(field, "unknown mode field (known: systemPower, maxLimit, count)");
    }
    return figures;
}

// [domain 0, domain 1]: exactly two 16-bit caps.
void readCapPair(const json &value, const std::string &pointer, uint16_t (&caps)[2], const Checker &check)
{
    check.expect(value.is_array() && value.size() == 2, pointer,
                 "must be an array of two caps (cap domain 0, cap domain 1)");
    for (size_t i = 0; i < 2; ++i)
        caps[i] = halfwordField(value[i], pointer + "/" + std::to_string(i), check);
}

void readCapping(const json &entry, const std::string &pointer, PowerManagement &power, const Checker &check)
{
    check.expect(entry.is_object(), pointer, "must be an object");
    for (const auto &[name, value] : entry.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "policy")
            power.cappingPolicy = byteField(value, field, check);
        else if (name == "domain")
            power.capDomain = byteField(value, field, check);
        else if (name == "currentCap")
            power.currentCap = halfwordField(value, field, check);
        else if (name == "softMinCap")
            readCapPair(value, field, power.softMinCap, check);
        else if (name == "minCap")
            readCapPair(value, field, power.minCap, check);
        else if (name == "maxCap")
            readCapPair(value, field, power.maxCap, check);
        else
            check.fail(field, "unknown capping field (known: policy, domain, currentCap, softMinCap, minCap, maxCap)");
    }
}

// {"value": 2, "completionCode": 0}: each 0 unless given.
RestoreReply readRestoreReply(const json &entry, const std::string &pointer, const Checker &check)
{
    check.expect(entry.is_object(), pointer, "must be an object");
    RestoreReply reply;
    for (const auto &[name, value] : entry.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "value")
            reply.value = byteField(value, field, check);
        else if (name == "completionCode")
            reply.completionCode = byteField(value, field, check);
        else
            check.fail(field, "unknown restore field (known: value, completionCode)");
    }
    return reply;
}

// {"sample": 1, "time": 1750000000, "a": 450, ..., "f": 20}: the time
// required, the rest 0 unless given.
PowerSample readPowerSample(const json &entry, const std::string &pointer, const Checker &check)
{
    check.expect(entry.is_object(), pointer, "a sample must be an object");
    PowerSample sample;
    for (const auto &[name, value] : entry.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "sample")
            sample.sample = halfwordField(value, field, check);
        else if (name == "time")
            sample.time = wordField(value, field, check);
        else if (name.size() == 1 && name[0] >= 'a' && name[0] <= 'f')
            sample.readings[name[0] - 'a'] = halfwordField(value, field, check);
        else
            check.fail(field, "unknown sample field (known: sample, time, a, b, c, d, e, f)");
    }
    check.expect(entry.contains("time"), pointer, "a sample needs \"time\" (seconds since the epoch)");
    return sample;
}

// {"total": 620, "cpu": 240, "memory": 90, "result": 0}: each 0 unless given.
RealtimePowers readRealtime(const json &entry, const std::string &pointer, const Checker &check)
{
    check.expect(entry.is_object(), pointer, "must be an object");
    RealtimePowers powers;
    for (const auto &[name, value] : entry.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "total")
            powers.total = halfwordField(value, field, check);
        else if (name == "cpu")
            powers.cpu = halfwordField(value, field, check);
        else if (name == "memory")
            powers.memory = halfwordField(value, field, check);
        else if (name == "result")
            powers.result = check.int32(value, field);
        else
            check.fail(field, "unknown realtime field (known: total, cpu, memory, result)");
    }
    return powers;
}

PowerManagement readPower(const json &section, const std::string &pointer, const Checker &check)
{
    check.expect(section.is_object(), pointer, "must be an object");
    PowerManagement power;
    for (const auto &[name, value] : section.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "bladeFamily") {
            power.bladeFamily = byteField(value, field, check);
        } else if (name == "redundancyMode") {
            power.redundancyMode = byteField(value, field, check);
        } else if (name == "modes") {
            check.expect(value.is_object(), field, "must be an object of modes by their code (\"1\", \"2\", \"4\")");
            for (const auto &[key, entry] : value.items()) {
                std::string at = field + "/" + escapeToken(key);
                power.modes[modeCode(key, at, check)] = readPowerMode(entry, at, check);
            }
        } else if (name == "capping") {
            readCapping(value, field, power, check);
        } else if (name == "restorePolicy") {
            power.restorePolicy = readRestoreReply(value, field, check);
        } else if (name == "restoreDelay") {
            power.restoreDelay = readRestoreReply(value, field, check);
        } else if (name == "history") {
            check.expect(value.is_array(), field, "must be an array of samples");
            size_t i = 0;
            for (const json &entry : value)
                power.history.push_back(readPowerSample(entry, field + "/" + std::to_string(i++), check));
        } else if (name == "realtime") {
            power.realtime = readRealtime(value, field, check);
        } else {
            check.fail(field, "unknown power field (known: bladeFamily, redundancyMode, modes, capping, "
                              "restorePolicy, restoreDelay, history, realtime)");
        }
    }
    return power;
}

// {"request": "06 01", "response": "00 20 01 ..."}; "_what" and any other
// name starting with "_" is a comment.
IpmiExchange readIpmiExchange(const json &entry, const std::string &pointer, const Checker &check)
{
    check.expect(entry.is_object(), pointer, "an IPMI exchange must be an object");
    IpmiExchange exchange;
    for (const auto &[name, value] : entry.items()) {
        std::string field = pointer + "/" + escapeToken(name);
        if (name == "request") {
            exchange.request = hexBytes(value, field, check);
            check.expect(exchange.request.size() >= 2, field,
                         "a request holds at least the network function and the command");
        } else if (name == "response") {
            exchange.response = hexBytes(value, field, check);
            check.expect(!exchange.response.empty() && exchange.response.size() <= kIpmiResponseCapacity, field,
                         "a response holds the completion code and at most " +
                             std::to_string(kIpmiResponseCapacity - 1) + " bytes after it");
        } else if (name.rfind("_", 0) != 0) {
            check.fail(field, "unknown IPMI exchange field (known: request, response; names starting with \"_\" "
                              "are free for comments)");
        }
    }
    check.expect(entry.contains("request") && entry.contains("response"), pointer,
                 "an IPMI exchange needs \"request\" and \"response\"");
    return exchange;
}

} // namespace

std::shared_ptr<const Machine> parseMachine(const std::string &text, const std::string &file)
{
    LineMap lines;
    json document = parseWithLines(text, file, lines);
    Checker check(file, lines);
    check.expect(document.is_object(), "", "the description must be a JSON object");

    auto machine = std::make_shared<Machine>();
    for (const auto &[name, value] : document.items()) {
        std::string pointer = "/" + escapeToken(name);
        if (name == "description") {
            check.expect(value.is_string(), pointer, "must be a text");
            machine->description = value.get<std::string>();
        } else if (name == "store") {
            checkStore(value, check);
            machine->store = value;
        } else if (name == "events") {
            check.expect(value.is_array(), pointer, "must be an array of events");
            size_t i = 0;
            for (const json &entry : value)
                machine->events.push_back(readEvent(entry, pointer + "/" + std::to_string(i++), check));
        } else if (name == "sessions") {
            machine->sessions = readSessions(value, pointer, check);
        } else if (name == "changeHistory") {
            check.expect(value.is_array(), pointer, "must be an array of change records");
            size_t i = 0;
            for (const json &entry : value)
                machine->changeHistory.push_back(readChangeRecord(entry, pointer + "/" + std::to_string(i++), check));
        } else if (name == "power") {
            machine->power = readPower(value, pointer, check);
        } else if (name == "features") {
            machine->features = readFeatures(value, pointer, check);
        } else if (name == "raid") {
            machine->raid = readRaid(value, pointer, check);
        } else if (name == "adapters") {
            machine->pci = readAdapters(value, pointer, check);
        } else if (name == "persistentMemory") {
            machine->persistentMemory = readPersistentMemory(value, pointer, check);
        } else if (name == "ipmi") {
            check.expect(value.is_array(), pointer, "must be an array of IPMI exchanges");
            size_t i = 0;
            for (const json &entry : value)
                machine->ipmi.push_back(readIpmiExchange(entry, pointer + "/" + std::to_string(i++), check));
        } else if (name == "faults") {
            check.expect(value.is_array(), pointer, "must be an array of faults");
            size_t i = 0;
            for (const json &entry : value)
                machine->faults.push_back(readFault(entry, pointer + "/" + std::to_string(i++), check));
        } else if (name.rfind("_", 0) != 0) {
            // Names starting with "_" are free for comments.
            check.fail(pointer,
                       "unknown section (known: description, store, events, sessions, changeHistory, power, ipmi, "
                       "features, raid, adapters, persistentMemory, faults)");
        }
    }
    return machine;
}

MachineSource::FileStamp MachineSource::stampNow() const
{
    struct stat info {};
    if (stat(path_.c_str(), &info) != 0)
        return {};
    return {static_cast<int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec,
            static_cast<int64_t>(info.st_size), static_cast<uint64_t>(info.st_ino)};
}

void MachineSource::loadOrThrow()
{
    // Remember the file as seen first, so that a broken edit is reported once.
    seen_ = stampNow();
    std::ifstream in(path_, std::ios::binary);
    if (!in)
        throw MachineFileError(path_, 0, std::string("cannot read the machine description: ") + strerror(errno));
    std::stringstream text;
    text << in.rdbuf();
    machine_ = parseMachine(text.str(), path_);
    ++generation_;
}

std::shared_ptr<const Machine> MachineSource::current()
{
    if (watch_.changed() && !(stampNow() == seen_)) {
        try {
            loadOrThrow();
            fprintf(stderr, "orv3-sim: %s: reloaded\n", path_.c_str());
        } catch (const MachineFileError &error) {
            fprintf(stderr, "orv3-sim: %s; still serving the last good description\n", error.what());
        }
    }
    if (!machine_)
        machine_ = std::make_shared<Machine>();
    return machine_;
}

} // namespace orv3::sim

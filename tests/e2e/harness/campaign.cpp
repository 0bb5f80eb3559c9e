#include "harness/campaign.h"

#include "harness/oids.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <map>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>

namespace orv3::test {

using json = nlohmann::json;
using Clock = std::chrono::steady_clock;

namespace {

const std::string kFanStore = "s/fans/status/fantbl";
const std::string kLedStore = "s/lightpathstatus/status/lightpathstatustbl";
const std::string kFanTable = oidJoin(kMonitorsRoot, {3, 2});
const std::string kFanNumber = oidJoin(kMonitorsRoot, {3, 1, 0});
const std::string kIdentityLed = oidJoin(kMonitorsRoot, {8, 1, 0});
const std::string kInformationLed = oidJoin(kMonitorsRoot, {8, 3, 0});
// fuelGaugePowerCappingPolicySetting, ...StaticPowerPcapCurrentSetting, ...StaticPowerPcapMode.
const std::string kCappingPolicy = oidJoin(kMonitorsRoot, {10, 1, 1, 0});
const std::string kCurrentCap = oidJoin(kMonitorsRoot, {10, 1, 4, 0});
const std::string kCapMode = oidJoin(kMonitorsRoot, {10, 1, 6, 0});
constexpr int kFanColumns = 10;

std::string fanCell(int column, long index)
{
    return oidJoin(kFanTable, {1, column, index});
}

// The edits of the cycle's states, as flags.
enum Edit : unsigned {
    FanSpeed = 1,
    FanRemoved = 2,
    LedState = 4,
    DriveState = 8,
    FunctionRemoved = 16,
};
constexpr unsigned kCycle[MachineEditCycle::kStates] = {
    0,
    FanSpeed,
    FanSpeed | FanRemoved,
    FanSpeed | FanRemoved | LedState,
    FanSpeed | FanRemoved | LedState | DriveState,
    FanSpeed | FanRemoved | LedState | DriveState | FunctionRemoved,
    LedState | DriveState | FunctionRemoved,
    FunctionRemoved,
};

unsigned editsOf(int step)
{
    return kCycle[((step % MachineEditCycle::kStates) + MachineEditCycle::kStates) % MachineEditCycle::kStates];
}

std::string speedText(int percent)
{
    if (percent == 0)
        return "offline";
    char text[32];
    std::snprintf(text, sizeof text, "%3d%% of maximum", percent);
    return text;
}

} // namespace

// ---- walks ---------------------------------------------------------------------

Response bulkWalk(SnmpClient &client, const std::string &root, int maxRepetitions)
{
    const std::string base = oidNormalize(root);
    Response out;
    std::string cursor = base;
    while (true) {
        Response reply = client.getBulk(0, maxRepetitions, {cursor});
        if (!reply.ok()) {
            out.timedOut = reply.timedOut;
            out.errorStatus = reply.errorStatus;
            out.errorIndex = reply.errorIndex;
            out.failure = reply.failure.empty() ? "GETBULK after " + cursor + " failed" : reply.failure;
            return out;
        }
        if (reply.varbinds.empty()) {
            out.failure = "GETBULK answer without varbinds after " + cursor;
            return out;
        }
        for (VarBind &vb : reply.varbinds) {
            if (vb.isException() || !oidStartsWith(vb.oid, base))
                return out;
            if (oidCompare(vb.oid, cursor) <= 0) {
                out.failure = "OID not increasing: " + vb.oid + " after " + cursor;
                return out;
            }
            cursor = vb.oid;
            out.varbinds.push_back(std::move(vb));
        }
    }
}

// ---- the soak's edit cycle -----------------------------------------------------------

MachineEditCycle::MachineEditCycle(json base) : base_(std::move(base))
{
    const json &fans = base_.at("store").at(kFanStore);
    if (fans.size() < 2 || base_.at("store").at(kLedStore).empty() || base_.at("raid").at("drives").size() < 2 ||
        base_.at("adapters").empty() || base_.at("adapters")[0].at("functions").size() < 2)
        throw std::invalid_argument("the machine to edit lacks fans, LEDs, RAID drives or adapter functions");
    editedFan_ = fans[0].at("index").get<int>();
    editedSpeed_ = fans[0].at("speedPct").get<int>() == 77 ? 78 : 77;
}

std::string MachineEditCycle::at(int step) const
{
    unsigned edits = editsOf(step);
    json machine = base_;
    json &store = machine["store"];
    if (edits & FanSpeed)
        store[kFanStore][0]["speedPct"] = editedSpeed_;
    if (edits & FanRemoved)
        store[kFanStore].erase(store[kFanStore].size() - 1);
    if (edits & LedState) {
        json &status = store[kLedStore][0]["status"];
        status = status.get<int>() == 1 ? 2 : 1;
    }
    if (edits & DriveState) {
        json &drives = machine["raid"]["drives"];
        drives[0]["state"] = drives[1].at("state") != drives[0].at("state") ? drives[1].at("state") : json(0);
    }
    if (edits & FunctionRemoved) {
        json &functions = machine["adapters"][0]["functions"];
        functions.erase(functions.size() - 1);
    }
    machine["description"] = base_.value("description", "") + " (soak state " + std::to_string(step) + ")";
    return machine.dump(1);
}

std::string MachineEditCycle::describe(int step) const
{
    unsigned edits = editsOf(step);
    std::string text;
    auto add = [&](unsigned edit, const char *what) {
        if (edits & edit)
            text += (text.empty() ? "" : ", ") + std::string(what);
    };
    add(FanSpeed, "fan speed");
    add(FanRemoved, "fan removed");
    add(LedState, "LED state");
    add(DriveState, "RAID drive state");
    add(FunctionRemoved, "adapter function removed");
    return text.empty() ? "as started" : text;
}

std::string MachineEditCycle::editedFanSpeed(int step) const
{
    return speedText(editsOf(step) & FanSpeed ? editedSpeed_
                                              : base_.at("store").at(kFanStore)[0].at("speedPct").get<int>());
}

long MachineEditCycle::fanCount(int step) const
{
    long fans = static_cast<long>(base_.at("store").at(kFanStore).size());
    return editsOf(step) & FanRemoved ? fans - 1 : fans;
}

// ---- the versioned machine --------------------------------------------------------------

int fanSpeedOfVersion(long version)
{
    return static_cast<int>(1 + version % 99);
}

std::string fanStatusOfVersion(long version)
{
    return version % 2 ? "Warning" : "Normal";
}

namespace {

bool fanInVersion(int index, long version)
{
    return index != 3 || version % 2 == 1;
}

} // namespace

std::string versionedMachine(const json &base, long version, int fans)
{
    json machine = base;
    json rows = json::array();
    for (int index = 1; index <= fans; ++index) {
        if (!fanInVersion(index, version))
            continue;
        rows.push_back({{"index", index},
                        {"descr", "Fan " + std::to_string(index) + " v" + std::to_string(version)},
                        {"speedPct", fanSpeedOfVersion(version)},
                        {"nonRecovLimitHigh", version},
                        {"critLimitHigh", version},
                        {"nonCritLimitHigh", version},
                        {"nonRecovLimitLow", version},
                        {"critLimitLow", version},
                        {"nonCritLimitLow", version},
                        {"status", fanStatusOfVersion(version)}});
    }
    machine["store"][kFanStore] = rows;
    machine["store"]["s/lightpathstatus/other/identification"] = {{"value", 0}, {"accepted", {0, 1, 2}}};
    machine["store"]["s/lightpathstatus/other/info"] = {{"value", 0}, {"accepted", {0, 1}}};
    machine["description"] = "concurrency machine, version " + std::to_string(version);
    return machine.dump(1);
}

// ---- the concurrency campaign --------------------------------------------------------------

namespace {

// One completed SET of an LED: who, what, and when it was asked and answered.
struct SetRecord {
    int setter;
    long value;
    Clock::time_point asked, answered;
};

// What a setter read back after its SET.
struct ReadBack {
    int setter;
    std::string oid;
    long value;
    Clock::time_point asked, read;
    long seen;
};

class Campaign {
public:
    Campaign(Agent &agent, const json &base, int fans, long clockStart)
        : agent_(agent), base_(base), fans_(fans), clock_(clockStart)
    {
    }

    void run(int managers, std::chrono::milliseconds duration, std::chrono::milliseconds editEvery)
    {
        std::vector<std::thread> threads;
        threads.emplace_back([this, editEvery] { editor(editEvery); });
        for (int manager = 0; manager < managers; ++manager)
            threads.emplace_back([this, manager] { walker(manager); });
        // Two managers share identityLED (1 and 2), one owns informationLED;
        // the file's value of both is 0, which only a reload brings back.
        threads.emplace_back([this] { ledSetter(0, kIdentityLed, 1); });
        threads.emplace_back([this] { ledSetter(1, kIdentityLed, 2); });
        threads.emplace_back([this] { ledSetter(2, kInformationLed, 1); });
        threads.emplace_back([this] { cappingSetter(); });
        std::this_thread::sleep_for(duration);
        stop_ = true;
        for (std::thread &thread : threads)
            thread.join();
        judgeReadBacks();
    }

    ConcurrencyReport report()
    {
        std::lock_guard lock(mutex_);
        report_.walks = walks_;
        report_.rowsChecked = rowsChecked_;
        report_.sets = sets_;
        report_.setsReadBack = setsReadBack_;
        report_.edits = edits_;
        return report_;
    }

private:
    void fail(const std::string &what)
    {
        std::lock_guard lock(mutex_);
        if (report_.failures.size() < 50)
            report_.failures.push_back(what);
    }

    void editor(std::chrono::milliseconds every)
    {
        for (long version = 1; !stop_; ++version) {
            std::this_thread::sleep_for(every);
            std::string machine = versionedMachine(base_, version, fans_);
            // The rename is what a reload follows, so it is what the setters'
            // read-backs are judged against: it happened within [before, after].
            Clock::time_point before = Clock::now();
            agent_.replaceMachine(machine);
            Clock::time_point after = Clock::now();
            {
                std::lock_guard lock(mutex_);
                editTimes_.push_back({before, after});
            }
            clock_ += 2;
            agent_.setClock(clock_);
            ++edits_;
        }
    }

    bool editBetween(Clock::time_point from, Clock::time_point to)
    {
        std::lock_guard lock(mutex_);
        return std::any_of(editTimes_.begin(), editTimes_.end(),
                           [&](const auto &edit) { return edit.second >= from && edit.first <= to; });
    }

    // A value another setter may have left: its SET overlaps [from, to].
    bool otherSetBetween(int setter, const std::string &oid, long value, Clock::time_point from, Clock::time_point to)
    {
        std::lock_guard lock(mutex_);
        const std::vector<SetRecord> &records = setRecords_[oid];
        return std::any_of(records.begin(), records.end(), [&](const SetRecord &other) {
            return other.setter != setter && other.value == value && other.answered >= from && other.asked <= to;
        });
    }

    void walker(int manager)
    {
        SnmpClient client = agent_.client("public", 5000000, 2);
        std::mt19937 random(static_cast<unsigned>(manager) * 7919u + 1u);
        for (long round = 0; !stop_; ++round) {
            switch ((round + manager) % 4) {
            case 0:
                checkWalk(bulkWalk(client, kMonitorsRoot, 1 + static_cast<int>(random() % 60)), "GETBULK walk");
                break;
            case 1: checkWalk(client.walkResponse(kFanTable), "GETNEXT walk of fanTable"); break;
            case 2: bulkRows(client, 1 + static_cast<int>(random() % 6)); break;
            case 3: getRow(client, 1 + static_cast<long>(random() % (fans_ + 1))); break;
            }
        }
    }

    void checkWalk(const Response &walk, const char *what)
    {
        if (!walk.failure.empty() || walk.timedOut || walk.errorStatus != SNMP_ERR_NOERROR) {
            fail(std::string(what) + " incomplete after " + std::to_string(walk.varbinds.size()) +
                 " varbinds: " + walk.toString());
            return;
        }
        if (walk.varbinds.empty()) {
            fail(std::string(what) + " returned nothing");
            return;
        }
        ++walks_;
    }

    // Checks that the cells of one fan row (columns 1 to 10, in order) come
    // from one version of the machine.
    void checkRow(const std::vector<const VarBind *> &cells, long index, const std::string &how)
    {
        const std::string &descr = cells[1]->octets;
        std::string prefix = "Fan " + std::to_string(index) + " v";
        long version = -1;
        if (descr.rfind(prefix, 0) == 0) {
            try {
                version = std::stol(descr.substr(prefix.size()));
            } catch (const std::exception &) {
            }
        }
        bool torn = version < 0 || cells[0]->integer != index;
        if (!torn) {
            torn = cells[2]->octets != speedText(fanSpeedOfVersion(version)) ||
                   cells[9]->octets != fanStatusOfVersion(version);
            for (int column = 4; column <= 9; ++column)
                torn = torn || cells[column - 1]->unsignedValue != static_cast<unsigned long>(version);
        }
        if (torn) {
            std::string text = "torn fan row " + std::to_string(index) + " (" + how + "):";
            for (const VarBind *cell : cells)
                text += "\n  " + cell->toString();
            fail(text);
            return;
        }
        ++rowsChecked_;
    }

    // Whole rows by GETBULK: one varbind per column, so that every
    // repetition is one row.
    void bulkRows(SnmpClient &client, int repetitions)
    {
        std::vector<std::string> cursors;
        for (int column = 1; column <= kFanColumns; ++column)
            cursors.push_back(oidJoin(kFanTable, {1, column}));
        for (int guard = 0; guard < 100 && !stop_; ++guard) {
            Response reply = client.getBulk(0, repetitions, cursors);
            if (!reply.ok() || reply.varbinds.size() != static_cast<size_t>(repetitions * kFanColumns)) {
                fail("GETBULK of whole fan rows: " + reply.toString());
                return;
            }
            for (int repetition = 0; repetition < repetitions; ++repetition) {
                std::vector<const VarBind *> cells;
                long index = -1;
                bool wholeRow = true;
                for (int column = 1; column <= kFanColumns; ++column) {
                    const VarBind &vb = reply.varbinds[repetition * kFanColumns + column - 1];
                    std::string columnRoot = oidJoin(kFanTable, {1, column});
                    if (vb.isException() || !oidStartsWith(vb.oid, columnRoot)) {
                        wholeRow = false;
                        break;
                    }
                    long rowIndex = std::stol(oidSuffix(vb.oid, columnRoot));
                    if (index >= 0 && rowIndex != index) {
                        // Columns of one repetition reached different rows: a row
                        // came or went between passes. Only a row missing in one
                        // column and not in another can do that.
                        wholeRow = false;
                        break;
                    }
                    index = rowIndex;
                    cells.push_back(&vb);
                }
                if (!wholeRow)
                    return;
                checkRow(cells, index, "GETBULK repetition " + std::to_string(repetition));
                for (int column = 0; column < kFanColumns; ++column)
                    cursors[column] = cells[column]->oid;
            }
        }
    }

    void getRow(SnmpClient &client, long index)
    {
        std::vector<std::string> oids;
        for (int column = 1; column <= kFanColumns; ++column)
            oids.push_back(fanCell(column, index));
        Response reply = client.get(oids);
        if (!reply.ok() || reply.varbinds.size() != kFanColumns) {
            fail("GET of fan row " + std::to_string(index) + ": " + reply.toString());
            return;
        }
        size_t missing = std::count_if(reply.varbinds.begin(), reply.varbinds.end(),
                                       [](const VarBind &vb) { return vb.type == SNMP_NOSUCHINSTANCE; });
        if (missing == kFanColumns)
            return; // the row is not in this version
        if (missing != 0) {
            fail("GET of fan row " + std::to_string(index) + " answered for some columns only: " + reply.toString());
            return;
        }
        std::vector<const VarBind *> cells;
        for (const VarBind &vb : reply.varbinds)
            cells.push_back(&vb);
        checkRow(cells, index, "GET");
    }

    // Sets `oid` to `value` and reads it back. What it read is judged once
    // every thread has stopped (judgeReadBacks), when every SET that could
    // explain it has been recorded.
    void ledSetter(int setter, const std::string &oid, long value)
    {
        SnmpClient writer = agent_.client("private", 5000000, 0);
        SnmpClient reader = agent_.client("public", 5000000, 2);
        while (!stop_) {
            Clock::time_point asked = Clock::now();
            Response set = writer.set({SetValue::ofInteger(oid, value)});
            Clock::time_point answered = Clock::now();
            if (set.timedOut) {
                // Not resent (no retries), but it may have been applied.
                std::lock_guard lock(mutex_);
                setRecords_[oid].push_back({setter, value, asked, Clock::time_point::max()});
                fail("SET " + oid + " = " + std::to_string(value) + " timed out");
                continue;
            }
            if (!set.ok()) {
                fail("SET " + oid + " = " + std::to_string(value) + " refused: " + set.toString());
                continue;
            }
            {
                std::lock_guard lock(mutex_);
                setRecords_[oid].push_back({setter, value, asked, answered});
            }
            ++sets_;
            Response get = reader.get({oid});
            Clock::time_point read = Clock::now();
            if (!get.ok() || get.varbinds.size() != 1 || get.varbinds[0].type != ASN_INTEGER) {
                fail("GET " + oid + " after a SET: " + get.toString());
                continue;
            }
            std::lock_guard lock(mutex_);
            readBacks_.push_back({setter, oid, value, asked, read, get.varbinds[0].integer});
        }
    }

    // A read-back is explained by the SET before it, by another setter's SET
    // that overlaps [SET asked, GET answered], or, for the file's 0, by a
    // machine file replaced in that time (a reload drops written values).
    void judgeReadBacks()
    {
        for (const ReadBack &back : readBacks_) {
            bool explained = back.seen == back.value || (back.seen == 0 && editBetween(back.asked, back.read)) ||
                             otherSetBetween(back.setter, back.oid, back.seen, back.asked, back.read);
            if (!explained)
                fail("SET " + back.oid + " = " + std::to_string(back.value) +
                     " answered noError, but the GET after it "
                     "read " +
                     std::to_string(back.seen) + " with no other SET or reload to explain it");
        }
        setsReadBack_ = static_cast<long>(readBacks_.size());
    }

    // The power-capping objects take a SET into the module's copy only, so
    // only the answer is judged: a known-good value is accepted.
    void cappingSetter()
    {
        SnmpClient writer = agent_.client("private", 5000000, 0);
        for (long round = 0; !stop_; ++round) {
            Response set =
                writer.set({SetValue::ofInteger(kCappingPolicy, round % 2),
                            SetValue::ofInteger(kCurrentCap, 700 + round % 50), SetValue::ofInteger(kCapMode, 1)});
            if (!set.ok())
                fail("SET of the power-capping settings refused: " + set.toString());
            else
                ++sets_;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    Agent &agent_;
    const json &base_;
    int fans_;
    long clock_;
    std::atomic<bool> stop_{false};
    std::atomic<long> walks_{0}, rowsChecked_{0}, sets_{0}, setsReadBack_{0}, edits_{0};
    std::mutex mutex_;
    std::vector<std::pair<Clock::time_point, Clock::time_point>> editTimes_;
    std::map<std::string, std::vector<SetRecord>> setRecords_;
    std::vector<ReadBack> readBacks_;
    ConcurrencyReport report_;
};

} // namespace

ConcurrencyReport runConcurrencyCampaign(Agent &agent, const json &base, int fans, long clockStart, int managers,
                                         std::chrono::milliseconds duration, std::chrono::milliseconds editEvery)
{
    Campaign campaign(agent, base, fans, clockStart);
    campaign.run(managers, duration, editEvery);
    return campaign.report();
}

} // namespace orv3::test

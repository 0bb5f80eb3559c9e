// Long campaigns against one agent, shared by the end-to-end tests and
// build/bench/soak: whole-subtree walks while the machine description
// changes under them, and several managers walking and setting at once.
#pragma once

#include "harness/agent.h"
#include "harness/snmp_client.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <string>
#include <vector>

namespace orv3::test {

// A GETBULK walk of everything below `root`, checked as it goes: it fails
// (Response::failure) on a timeout, an error status, an OID that does not
// increase, or an empty answer; it ends at the first varbind past `root`
// or at endOfMibView.
Response bulkWalk(SnmpClient &client, const std::string &root, int maxRepetitions = 50);

// The edits the soak makes to a machine description, as a cycle of states:
// each state sets some of the edits (a fan's speed, a fan row removed, an
// LED's state, a RAID drive's state, an adapter function removed), and
// state s + kStates is state s again, so the machine goes round and comes
// back to the description it started from.
class MachineEditCycle {
public:
    static constexpr int kStates = 8;

    // `base` is the description to edit; it must have the sample machine's
    // fan table (at least two fans), LED table, RAID drives and an adapter
    // with at least two functions.
    explicit MachineEditCycle(nlohmann::json base);

    // The description of state `step % kStates`.
    std::string at(int step) const;
    // What state `step % kStates` changes from the base, for messages.
    std::string describe(int step) const;
    // The fan whose speed the cycle edits, and the speed it shows in state `step`.
    int editedFan() const { return editedFan_; }
    std::string editedFanSpeed(int step) const;
    // The number of fans in state `step`.
    long fanCount(int step) const;

private:
    nlohmann::json base_;
    int editedFan_ = 0;
    int editedSpeed_ = 0;
};

// A description whose fan table is `fans` rows of which every cell carries
// the version: row i of version v has descr "Fan <i> v<v>", a speed of
// fanSpeedOfVersion(v), every limit v, and the status fanStatusOfVersion(v).
// Rows 1 and 2 are always there; row 3 only in odd versions; row 4 and
// above in every version. Everything else is `base` as it is.
std::string versionedMachine(const nlohmann::json &base, long version, int fans);
int fanSpeedOfVersion(long version);
std::string fanStatusOfVersion(long version);

// What the several managers of a concurrency campaign found.
struct ConcurrencyReport {
    long walks = 0;       // whole walks (subtree and fan table) completed
    long rowsChecked = 0; // whole fan rows read in one GET or one GETBULK repetition
    long sets = 0;        // SETs answered noError
    long setsReadBack = 0;
    long edits = 0; // machine versions written
    std::vector<std::string> failures;
};

// Runs `managers` walking threads, the LED and power-capping setters and a
// thread that writes a new version of the machine (versionedMachine over
// `base`) and moves the clock on every `editEvery`, for `duration`. The
// agent must have been started with versionedMachine(base, 0, fans) and a
// frozen clock at `clockStart`.
ConcurrencyReport runConcurrencyCampaign(Agent &agent, const nlohmann::json &base, int fans, long clockStart,
                                         int managers, std::chrono::milliseconds duration,
                                         std::chrono::milliseconds editEvery);

} // namespace orv3::test

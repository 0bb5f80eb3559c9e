// The machine-description loader on descriptions that are valid JSON and
// close to a real one: a section of the sample machine with a few of its
// values (any node, down to a single field of a record) replaced by a fuzzed number,
// text, array, object or nothing, so that the checks and the record
// packing deep in the description are reached, not only the parser. As for
// arbitrary text, a bad value must come out as a MachineFileError.
#include "machine.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

using nlohmann::json;

namespace {

// The sample machine cut into one description per top-level section: the
// loader reads a whole sample in tens of milliseconds under the sanitizers,
// one section in a fraction of that.
struct Section {
    json machine;                          // {"<section>": ...}
    std::vector<json::json_pointer> nodes; // every node of it, containers too
};
std::vector<Section> sections;

void collectNodes(const json &node, const json::json_pointer &at, std::vector<json::json_pointer> &nodes)
{
    nodes.push_back(at);
    if (node.is_object()) {
        for (const auto &[key, child] : node.items())
            collectNodes(child, at / key, nodes);
    } else if (node.is_array()) {
        for (size_t i = 0; i < node.size(); ++i)
            collectNodes(node[i], at / i, nodes);
    }
}

// Numbers at the edges of the widths the records use.
constexpr int64_t kEdges[] = {
    0,
    1,
    -1,
    127,
    128,
    255,
    256,
    32767,
    32768,
    65535,
    65536,
    INT32_MAX,
    int64_t{INT32_MAX} + 1,
    INT32_MIN,
    UINT32_MAX,
    int64_t{UINT32_MAX} + 1,
    INT64_MAX,
    INT64_MIN,
};

json fuzzedValue(FuzzedDataProvider &input, int depth)
{
    switch (input.ConsumeIntegralInRange(0, 9)) {
    case 0: return input.ConsumeIntegral<int64_t>();
    case 1: return input.ConsumeIntegral<uint64_t>();
    case 2: return input.PickValueInArray(kEdges);
    case 3: return input.ConsumeIntegralInRange<int64_t>(-2, 300);
    case 4: return input.ConsumeFloatingPoint<double>();
    case 5: return input.ConsumeRandomLengthString(400);
    case 6: return input.ConsumeBool();
    case 7: {
        json array = json::array();
        if (depth < 3)
            for (int n = input.ConsumeIntegralInRange(0, 4); n > 0; --n)
                array.push_back(fuzzedValue(input, depth + 1));
        return array;
    }
    case 8: {
        json object = json::object();
        if (depth < 3)
            for (int n = input.ConsumeIntegralInRange(0, 3); n > 0; --n)
                object[input.ConsumeRandomLengthString(16)] = fuzzedValue(input, depth + 1);
        return object;
    }
    default: return nullptr;
    }
}

// Replaces the node at `at`, removes it, or gives an object a new member.
void edit(json &machine, const json::json_pointer &at, FuzzedDataProvider &input)
{
    if (!machine.contains(at))
        return; // an earlier edit replaced a container above it
    switch (input.ConsumeIntegralInRange(0, 3)) {
    case 0: {
        if (at.empty())
            return;
        json &parent = machine[at.parent_pointer()];
        if (parent.is_object())
            parent.erase(at.back());
        else
            parent.erase(static_cast<size_t>(std::stoul(at.back())));
        return;
    }
    case 1:
        if (machine[at].is_object())
            machine[at][input.ConsumeRandomLengthString(24)] = fuzzedValue(input, 0);
        return;
    default: machine[at] = fuzzedValue(input, 0); return;
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    std::ifstream in(ORV3_SAMPLE_MACHINE);
    std::stringstream text;
    text << in.rdbuf();
    const json sample = json::parse(text.str());
    for (const auto &[name, value] : sample.items()) {
        Section section{{{name, value}}, {}};
        collectNodes(section.machine, json::json_pointer(), section.nodes);
        sections.push_back(std::move(section));
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedDataProvider input(data, size);
    const Section &section = sections[input.ConsumeIntegralInRange<size_t>(0, sections.size() - 1)];
    json machine = section.machine;
    for (int edits = input.ConsumeIntegralInRange(1, 4); edits > 0 && input.remaining_bytes() > 0; --edits)
        edit(machine, section.nodes[input.ConsumeIntegralInRange<size_t>(0, section.nodes.size() - 1)], input);
    // Texts from the input need not be UTF-8; the file gets them replaced.
    const std::string text = machine.dump(2, ' ', false, json::error_handler_t::replace);
    try {
        orv3::sim::parseMachine(text, "fuzz.json");
    } catch (const orv3::sim::MachineFileError &) {
    }
    return 0;
}

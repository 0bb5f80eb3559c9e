// Samples of a Prometheus scrape, read from the text exposition format
// (version 0.0.4) that the SNMP exporter answers with.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace orv3::test {

struct Sample {
    std::string name;
    std::map<std::string, std::string> labels; // label values unescaped
    double value = 0;
};

// Every sample line of `text`; comment (# HELP, # TYPE) and empty lines are
// skipped. Throws std::invalid_argument naming the line when a line is not a
// sample.
std::vector<Sample> parseExposition(const std::string &text);

// One sample as the exposition format writes it ("name{a=\"b\"} 1"), for messages.
std::string formatSample(const Sample &sample);

} // namespace orv3::test

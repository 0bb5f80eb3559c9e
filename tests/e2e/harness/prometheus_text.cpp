#include "harness/prometheus_text.h"

#include <cctype>
#include <cstdlib>
#include <iomanip>
#include <sstream>
#include <stdexcept>

namespace orv3::test {

namespace {

bool isNameChar(char c, bool first)
{
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_' || c == ':' ||
           (!first && std::isdigit(static_cast<unsigned char>(c)));
}

class LineReader {
public:
    explicit LineReader(const std::string &line) : line_(line) {}

    [[noreturn]] void fail(const std::string &what) const
    {
        throw std::invalid_argument("not a sample (" + what + " at column " + std::to_string(pos_ + 1) + "): " + line_);
    }
    bool atEnd() const { return pos_ >= line_.size(); }
    char peek() const { return atEnd() ? '\0' : line_[pos_]; }
    void expect(char c)
    {
        if (peek() != c)
            fail(std::string("'") + c + "' expected");
        ++pos_;
    }
    void skipBlanks()
    {
        while (peek() == ' ' || peek() == '\t')
            ++pos_;
    }

    std::string name()
    {
        size_t start = pos_;
        while (!atEnd() && isNameChar(line_[pos_], pos_ == start))
            ++pos_;
        if (pos_ == start)
            fail("name expected");
        return line_.substr(start, pos_ - start);
    }

    // A double-quoted label value with the format's three escapes.
    std::string quoted()
    {
        expect('"');
        std::string value;
        while (true) {
            if (atEnd())
                fail("unterminated label value");
            char c = line_[pos_++];
            if (c == '"')
                return value;
            if (c != '\\') {
                value += c;
                continue;
            }
            switch (peek()) {
            case '\\': value += '\\'; break;
            case '"': value += '"'; break;
            case 'n': value += '\n'; break;
            default: fail("unknown escape");
            }
            ++pos_;
        }
    }

    std::string rest() const { return line_.substr(pos_); }

private:
    const std::string &line_;
    size_t pos_ = 0;
};

Sample parseSample(const std::string &line)
{
    LineReader in(line);
    Sample sample;
    sample.name = in.name();
    if (in.peek() == '{') {
        in.expect('{');
        while (in.peek() != '}') {
            std::string label = in.name();
            in.expect('=');
            if (!sample.labels.emplace(label, in.quoted()).second)
                in.fail("label " + label + " twice");
            if (in.peek() == ',')
                in.expect(',');
            else if (in.peek() != '}')
                in.fail("',' or '}' expected");
        }
        in.expect('}');
    }
    in.skipBlanks();
    // The value, then an optional timestamp the exporter does not write.
    std::string value = in.rest();
    value = value.substr(0, value.find(' '));
    char *end = nullptr;
    sample.value = std::strtod(value.c_str(), &end);
    if (value.empty() || *end != '\0')
        in.fail("number expected");
    return sample;
}

} // namespace

std::vector<Sample> parseExposition(const std::string &text)
{
    std::vector<Sample> samples;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line.front() == '#')
            continue;
        samples.push_back(parseSample(line));
    }
    return samples;
}

std::string formatSample(const Sample &sample)
{
    std::ostringstream out;
    out << sample.name;
    if (!sample.labels.empty()) {
        out << '{';
        const char *separator = "";
        for (const auto &[label, value] : sample.labels) {
            out << separator << label << "=\"";
            for (char c : value) {
                if (c == '\\' || c == '"')
                    out << '\\' << c;
                else if (c == '\n')
                    out << "\\n";
                else
                    out << c;
            }
            out << '"';
            separator = ",";
        }
        out << '}';
    }
    // Enough digits for a 32-bit counter or gauge, and none of a double's noise.
    out << ' ' << std::setprecision(15) << sample.value;
    return out.str();
}

} // namespace orv3::test

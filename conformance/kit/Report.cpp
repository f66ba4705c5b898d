// The reports of a run: lines of text for people, JUnit XML for build servers.
#include <algorithm>
#include <cstdio>

#include "conformance/kit/Run.h"

namespace kit {

namespace {

std::string Seconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", seconds);
    return text;
}

std::string Indented(const std::string& text) {
    std::string result;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        result += "  " + text.substr(begin, end - begin) + "\n";
        begin = end + 1;
    }
    return result;
}

std::string FailureText(const Request& request, const Outcome& outcome) {
    return outcome.verdict.finding.report + "again: " + RepeatCommand(request, outcome) + "\n";
}

// As XML has it in texts and in attributes.
std::string Escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                // Control characters have no place in XML.
                result += static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t' ? '?' : c;
        }
    }
    return result;
}

std::string Attribute(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + Escaped(value) + "\"";
}

// Why a function was not tried.
const char* WhyUntried(const Outcome& outcome) {
    return outcome.offered ? "no such case" : "not in the table";
}

struct Totals {
    std::size_t same = 0;
    std::size_t differ = 0;
    std::size_t untried = 0;
    std::size_t cases = 0;
    double seconds = 0;

    explicit Totals(const std::vector<Outcome>& outcomes) {
        for (const Outcome& outcome : outcomes) {
            cases += outcome.verdict.cases;
            seconds += outcome.seconds;
            ++(!outcome.Tried() ? untried : outcome.verdict.Same() ? same
                                                                   : differ);
        }
    }
};

}  // namespace

std::string TextLine(const Request& request, const Outcome& outcome) {
    char line[128];
    if (!outcome.Tried()) {
        std::snprintf(line, sizeof line, "%-34s %s\n", outcome.entry->name, WhyUntried(outcome));
        return line;
    }
    const Verdict& verdict = outcome.verdict;
    std::snprintf(line, sizeof line, "%-34s %-8s %9zu cases %8s s\n", outcome.entry->name,
                  verdict.Same() ? "same" : "DIFFERS", verdict.cases, Seconds(outcome.seconds).c_str());
    return line + (verdict.Same() ? "" : Indented(FailureText(request, outcome)));
}

std::string TextSummary(const Request& request, const std::vector<Outcome>& outcomes) {
    const Totals totals(outcomes);
    return request.name + ": " + std::to_string(totals.same) + " same, " + std::to_string(totals.differ) +
           " different, " + std::to_string(totals.untried) + " not tried; " + std::to_string(totals.cases) +
           " cases in " + Seconds(totals.seconds) + " s, seed " + std::to_string(request.plan.seed) +
           (request.plan.randomSeed == request.plan.seed ? "" : ", of random cases " + std::to_string(request.plan.randomSeed)) +
           "\n";
}

std::string JUnitXml(const Request& request, const std::vector<Outcome>& outcomes) {
    const Totals totals(outcomes);
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n  <testsuite";
    xml += Attribute("name", request.name) + Attribute("tests", std::to_string(outcomes.size())) +
           Attribute("failures", std::to_string(totals.differ)) + Attribute("errors", "0") +
           Attribute("skipped", std::to_string(totals.untried)) + Attribute("time", Seconds(totals.seconds)) + ">\n";
    xml += "    <properties>\n      <property name=\"seed\"" + Attribute("value", std::to_string(request.plan.seed)) +
           "/>\n      <property name=\"random-seed\"" + Attribute("value", std::to_string(request.plan.randomSeed)) +
           "/>\n    </properties>\n";
    for (const Outcome& outcome : outcomes) {
        xml += "    <testcase" + Attribute("classname", request.name) + Attribute("name", outcome.entry->name) +
               Attribute("time", Seconds(outcome.seconds));
        if (!outcome.Tried()) {
            xml += ">\n      <skipped" + Attribute("message", WhyUntried(outcome)) + "/>\n    </testcase>\n";
        } else if (outcome.verdict.Same()) {
            xml += "/>\n";
        } else {
            xml += ">\n      <failure" + Attribute("message", outcome.verdict.finding.title) + ">" +
                   Escaped(FailureText(request, outcome)) + "</failure>\n    </testcase>\n";
        }
    }
    return xml + "  </testsuite>\n</testsuites>\n";
}

}  // namespace kit

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
std::string WhyUntried(const Outcome& outcome) {
    return !outcome.offered  ? "not in the table"
           : outcome.refused ? "not run: this machine cannot run target " + outcome.target->name
                             : "no such case";
}

// The names of the targets that this machine cannot run.
std::string Refused(const std::vector<Outcome>& outcomes) {
    std::string names;
    const Target* last = nullptr;
    for (const Outcome& outcome : outcomes) {
        if (outcome.refused && outcome.target != last) {
            names += (names.empty() ? "" : ", ") + outcome.target->name;
            last = outcome.target;
        }
    }
    return names;
}

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

struct Totals {
    std::size_t same = 0;
    std::size_t differ = 0;
    std::size_t untried = 0;
    std::size_t refused = 0;
    std::size_t cases = 0;
    double seconds = 0;

    explicit Totals(const std::vector<Outcome>& outcomes) {
        for (const Outcome& outcome : outcomes) {
            cases += outcome.verdict.cases;
            seconds += outcome.seconds;
            ++(outcome.refused ? refused : !outcome.Tried() ? untried : outcome.verdict.Same() ? same : differ);
        }
    }
};

}  // namespace

std::string TextHeading(const Target& target) {
    return target.Named() ? "target " + target.name + "\n" : "";
}

std::string TextName(const Entry& entry) {
    char text[64];
    std::snprintf(text, sizeof text, "%-34s ", entry.name);
    return text;
}

std::string TextResult(const Request& request, const Outcome& outcome) {
    if (!outcome.Tried()) {
        return WhyUntried(outcome) + "\n";
    }
    const Verdict& verdict = outcome.verdict;
    char line[128];
    std::snprintf(line, sizeof line, "%-8s %9zu cases %8s s\n", verdict.Same() ? "same" : "DIFFERS", verdict.cases,
                  Seconds(outcome.seconds).c_str());
    return line + (verdict.Same() ? "" : Indented(FailureText(request, outcome)));
}

std::string TextSummary(const Request& request, const std::vector<Outcome>& outcomes) {
    const Totals totals(outcomes);
    const std::string refused = Refused(outcomes);
    const std::string unchecked = Joined(NotChecked(request));
    return (unchecked.empty() ? "" : "not checked here: " + unchecked + "\n") +
           (refused.empty() ? "" : "targets not run, as this machine cannot: " + refused + "\n") + request.name + ": " +
           std::to_string(totals.same) + " same, " + std::to_string(totals.differ) + " different, " +
           std::to_string(totals.untried) + " not tried; " + std::to_string(totals.cases) + " cases in " +
           Seconds(totals.seconds) + " s, seed " + std::to_string(request.plan.seed) +
           (request.plan.randomSeed == request.plan.seed
                ? ""
                : ", of random cases " + std::to_string(request.plan.randomSeed)) +
           "\n";
}

std::string JUnitXml(const Request& request, const std::vector<Outcome>& outcomes) {
    const Totals totals(outcomes);
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n  <testsuite";
    xml += Attribute("name", request.name) + Attribute("tests", std::to_string(outcomes.size())) +
           Attribute("failures", std::to_string(totals.differ)) + Attribute("errors", "0") +
           Attribute("skipped", std::to_string(totals.untried + totals.refused)) +
           Attribute("time", Seconds(totals.seconds)) + ">\n";
    xml += "    <properties>\n      <property name=\"seed\"" + Attribute("value", std::to_string(request.plan.seed)) +
           "/>\n      <property name=\"random-seed\"" + Attribute("value", std::to_string(request.plan.randomSeed)) +
           "/>\n      <property name=\"not-checked\"" + Attribute("value", Joined(NotChecked(request))) +
           "/>\n    </properties>\n";
    for (const Outcome& outcome : outcomes) {
        const std::string target = outcome.target->Named() ? "." + outcome.target->name : "";
        xml += "    <testcase" + Attribute("classname", request.name + target) +
               Attribute("name", outcome.entry->name) + Attribute("time", Seconds(outcome.seconds));
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

// The outcomes of checks as lines and as JUnit XML.
#include "app/check/report.h"

#include <algorithm>

#include "app/check/checks.h"
#include "drawing/comparison/quoting.h"

namespace vorna::app::check {

namespace {

using drawing::comparison::markup_escaped;

std::ptrdiff_t count_of(const std::vector<Outcome>& outcomes, Outcome::Kind kind) {
    return std::count_if(outcomes.begin(), outcomes.end(), [kind](const Outcome& outcome) { return outcome.kind == kind; });
}

} // namespace

std::string line_of(const Outcome& outcome) {
    switch (outcome.kind) {
    case Outcome::Kind::passed:
        return "pass  " + outcome.check;
    case Outcome::Kind::failed:
        return "FAIL  " + outcome.check + ": " + outcome.reason;
    case Outcome::Kind::not_run:
        break;
    }
    return "----  " + outcome.check + ": not run, " + outcome.reason;
}

std::string total_of(const std::vector<Outcome>& outcomes) {
    return std::to_string(outcomes.size()) + " checks: " + std::to_string(count_of(outcomes, Outcome::Kind::passed)) +
           " passed, " + std::to_string(count_of(outcomes, Outcome::Kind::failed)) + " failed, " +
           std::to_string(count_of(outcomes, Outcome::Kind::not_run)) + " not run";
}

std::string junit_of(const std::string& name, const std::vector<Outcome>& outcomes) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"" + markup_escaped(name) + "\">\n";
    for (auto first = outcomes.begin(); first != outcomes.end();) {
        const std::string area(area_of(first->check));
        const auto last =
            std::find_if(first, outcomes.end(), [&area](const Outcome& outcome) { return area_of(outcome.check) != area; });
        const std::vector<Outcome> suite(first, last);
        text += "  <testsuite name=\"" + markup_escaped(area) + "\" tests=\"" + std::to_string(suite.size()) + "\" failures=\"" +
                std::to_string(count_of(suite, Outcome::Kind::failed)) + "\" skipped=\"" +
                std::to_string(count_of(suite, Outcome::Kind::not_run)) + "\">\n";
        for (const Outcome& outcome : suite) {
            text += "    <testcase classname=\"" + markup_escaped(area) + "\" name=\"" +
                    markup_escaped(outcome.check.substr(area.size() + 1)) + '"';
            if (outcome.kind == Outcome::Kind::passed) {
                text += "/>\n";
            } else {
                text += ">\n      <";
                text += outcome.kind == Outcome::Kind::failed ? "failure" : "skipped";
                text += " message=\"" + markup_escaped(outcome.reason) + "\"/>\n    </testcase>\n";
            }
        }
        text += "  </testsuite>\n";
        first = last;
    }
    return text + "</testsuites>\n";
}

} // namespace vorna::app::check

// Comparisons as documents for programs.
#include "drawing/comparison/reports.h"

#include <array>
#include <cmath>
#include <optional>

#include "drawing/comparison/quoting.h"
#include "drawing/files/json_text.h"
#include "drawing/files/printable.h"

namespace vorna::drawing::comparison {

namespace {

constexpr std::array verdicts{Verdict::same,    Verdict::near,  Verdict::different,
                              Verdict::missing, Verdict::extra, Verdict::unreadable};

std::string key_of(Verdict verdict) {
    return verdict == Verdict::near ? "near" : name_of(verdict);
}

bool is_right(const Pair_Result& pair) {
    return pair.verdict == Verdict::same || pair.verdict == Verdict::near;
}

// Further digits depend on the system's library of mathematics.
void add_rounded(Json_Text& json, const char* key, const std::optional<double>& value) {
    constexpr double scale = 1e6;
    json.name(key);
    value ? json.value(std::round(*value * scale) / scale) : json.value(nullptr);
}

void add_pair(Json_Text& json, const Pair_Result& pair) {
    json.start_object();
    json.member("name", pair.name);
    json.member("verdict", key_of(pair.verdict));
    json.member("text", pair.text);
    if (pair.difference) {
        const Image_Difference& difference = *pair.difference;
        json.member("width", pair.width);
        json.member("height", pair.height);
        json.member("pixels_compared", difference.compared);
        json.member("pixels_different", difference.count);
        json.member("largest_difference", difference.most);
        if (difference.count > 0) {
            const Pixel_Area& area = difference.area;
            json.list("columns", {area.left, area.right});
            json.list("rows", {area.top, area.bottom});
            json.name("first");
            json.start_object();
            json.member("column", difference.first.column);
            json.member("row", difference.first.row);
            json.list("values", {difference.first.in_a, difference.first.in_b});
            json.end_object();
        }
        add_rounded(json, "psnr", pair.measures ? pair.measures->psnr : std::nullopt);
        add_rounded(json, "ssim", pair.measures ? pair.measures->ssim : std::nullopt);
    }
    json.end_object();
}

} // namespace

std::string text_of(const Report& report) {
    std::string text;
    for (const Pair_Result& pair : report.pairs) {
        if (pair.verdict != Verdict::same) {
            text += printable(pair.name + ": " + pair.text) + '\n';
        }
    }
    text += std::to_string(report.pairs.size()) + (report.pairs.size() == 1 ? " image" : " images");
    const char* separator = ": ";
    for (const Verdict verdict : verdicts) {
        if (const std::size_t count = report.count_of(verdict); count > 0) {
            text += separator + std::to_string(count) + ' ' + name_of(verdict);
            separator = ", ";
        }
    }
    return text + '\n';
}

std::string json_of(const Report& report) {
    Json_Text json(true);
    json.start_object();
    json.member("comparison", 1);
    json.member("first", report.first);
    json.member("second", report.second);
    json.member("same", report.is_same());
    json.name("tolerance");
    if (report.accepted.fuzz) {
        json.start_object();
        json.member("difference", report.accepted.fuzz->difference);
        json.member("pixels", report.accepted.fuzz->count);
        json.end_object();
    } else {
        json.value(nullptr);
    }
    json.name("totals");
    json.start_object();
    for (const Verdict verdict : verdicts) {
        json.member(key_of(verdict), report.count_of(verdict));
    }
    json.end_object();
    json.member("other_files", report.other_files);
    json.name("images");
    json.start_list();
    for (const Pair_Result& pair : report.pairs) {
        add_pair(json, pair);
    }
    json.end_list();
    json.end_object();
    return json.take() + '\n';
}

std::string junit_of(const Report& report) {
    const std::size_t errors = report.count_of(Verdict::unreadable);
    std::size_t failures = 0;
    std::string cases;
    for (const Pair_Result& pair : report.pairs) {
        cases += "    <testcase classname=\"vorna.compare\" name=\"" + markup_escaped(pair.name) + "\" time=\"0\"";
        if (is_right(pair)) {
            cases += "/>\n";
            continue;
        }
        const bool is_error = pair.verdict == Verdict::unreadable;
        const std::string element = is_error ? "error" : "failure";
        failures += is_error ? 0 : 1;
        const std::string text = markup_escaped(pair.text);
        cases.append(">\n      <" + element + " type=\"" + key_of(pair.verdict) + "\" message=\"" + text + "\">")
            .append(text + "</" + element + ">\n    </testcase>\n");
    }
    const std::string counts = " tests=\"" + std::to_string(report.pairs.size()) + "\" failures=\"" + std::to_string(failures) +
                               "\" errors=\"" + std::to_string(errors) + "\"";
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"vorna compare\"" + counts +
           " time=\"0\">\n  <testsuite name=\"" + markup_escaped(report.first + " and " + report.second) + "\"" + counts +
           " skipped=\"0\" time=\"0\">\n" + cases + "  </testsuite>\n</testsuites>\n";
}

} // namespace vorna::drawing::comparison

// Comparisons as documents for programs.
#include "drawing/comparison/reports.h"

#include <array>
#include <cmath>
#include <nlohmann/json.hpp>

#include "drawing/comparison/quoting.h"
#include "drawing/files/printable.h"

namespace vorna::drawing::comparison {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::array verdicts{Verdict::same,    Verdict::near,  Verdict::different,
                              Verdict::missing, Verdict::extra, Verdict::unreadable};

std::string key_of(Verdict verdict) {
    return verdict == Verdict::near ? "near" : name_of(verdict);
}

bool is_right(const Pair_Result& pair) {
    return pair.verdict == Verdict::same || pair.verdict == Verdict::near;
}

// Further digits depend on the system's library of mathematics.
Json rounded(const std::optional<double>& value) {
    constexpr double scale = 1e6;
    return value ? Json(std::round(*value * scale) / scale) : Json(nullptr);
}

Json json_of(const Pair_Result& pair) {
    Json json{{"name", pair.name}, {"verdict", key_of(pair.verdict)}, {"text", pair.text}};
    if (!pair.difference) {
        return json;
    }
    const Image_Difference& difference = *pair.difference;
    json["width"] = pair.width;
    json["height"] = pair.height;
    json["pixels_compared"] = difference.compared;
    json["pixels_different"] = difference.count;
    json["largest_difference"] = difference.most;
    if (difference.count > 0) {
        const Pixel_Area& area = difference.area;
        json["columns"] = {area.left, area.right};
        json["rows"] = {area.top, area.bottom};
        json["first"] = {{"column", difference.first.column},
                         {"row", difference.first.row},
                         {"values", {difference.first.in_a, difference.first.in_b}}};
    }
    json["psnr"] = pair.measures ? rounded(pair.measures->psnr) : Json(nullptr);
    json["ssim"] = pair.measures ? rounded(pair.measures->ssim) : Json(nullptr);
    return json;
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
    Json json{{"comparison", 1}, {"first", report.first}, {"second", report.second}, {"same", report.is_same()}};
    json["tolerance"] = nullptr;
    if (report.accepted.fuzz) {
        json["tolerance"] = {{"difference", report.accepted.fuzz->difference}, {"pixels", report.accepted.fuzz->count}};
    }
    for (const Verdict verdict : verdicts) {
        json["totals"][key_of(verdict)] = report.count_of(verdict);
    }
    json["other_files"] = report.other_files;
    json["images"] = Json::array();
    for (const Pair_Result& pair : report.pairs) {
        json["images"].push_back(json_of(pair));
    }
    // Characters beyond ASCII are escaped, and invalid UTF-8 is replaced.
    return json.dump(1, ' ', true, Json::error_handler_t::replace) + '\n';
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

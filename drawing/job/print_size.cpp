// Sizes of images that are printed.
#include "drawing/job/print_size.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>

#include "drawing/files/setting_names.h"
#include "drawing/files/usage_error.h"
#include "drawing/job/image_plan.h"

namespace vorna::drawing {
namespace {

constexpr double inch = 0.0254; // metres
constexpr std::string_view landscape = "-landscape";

struct Paper {
    std::string_view name;
    double width, height; // millimetres
};
constexpr std::array papers{Paper{"A0", 841, 1189},        Paper{"A1", 594, 841},         Paper{"A2", 420, 594},
                            Paper{"A3", 297, 420},         Paper{"A4", 210, 297},         Paper{"A5", 148, 210},
                            Paper{"A6", 105, 148},         Paper{"letter", 215.9, 279.4}, Paper{"legal", 215.9, 355.6},
                            Paper{"tabloid", 279.4, 431.8}};

constexpr std::array<std::pair<std::string_view, double>, 6> units{
    {{"mm", 0.001}, {"cm", 0.01}, {"m", 1}, {"km", 1000}, {"in", inch}, {"ft", 12 * inch}}};

// All of the text as a number above 0.
std::optional<double> positive_number(std::string_view text) {
    double number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool is_whole = error == std::errc{} && stop == text.data() + text.size();
    return is_whole && number > 0 && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

// Sides in millimetres.
std::optional<std::pair<double, double>> parsed_paper(std::string_view text) {
    if (text.ends_with("mm")) {
        const std::size_t x = text.find('x');
        const auto width = positive_number(text.substr(0, x)),
                   height = x == text.npos ? std::nullopt : positive_number(text.substr(x + 1, text.size() - x - 3));
        return width && height ? std::optional(std::pair(*width, *height)) : std::nullopt;
    }
    const bool lies = text.ends_with(landscape);
    text.remove_suffix(lies ? landscape.size() : 0);
    const auto* const found = std::ranges::find(papers, text, &Paper::name);
    if (found == papers.end()) {
        return std::nullopt;
    }
    return lies ? std::pair(found->height, found->width) : std::pair(found->width, found->height);
}

} // namespace

std::vector<std::string> paper_names() {
    std::vector<std::string> names;
    for (const Paper& paper : papers) {
        names.emplace_back(paper.name);
        names.push_back(std::string(paper.name).append(landscape));
    }
    return names;
}

std::vector<std::string> unit_names() {
    std::vector<std::string> names;
    std::ranges::transform(units, std::back_inserter(names), [](const auto& unit) { return std::string(unit.first); });
    return names;
}

std::optional<VT_Int_Pair> paper_pixels(const Print_Settings& settings) {
    if (settings.paper.empty()) {
        return std::nullopt;
    }
    const auto sides = parsed_paper(settings.paper);
    if (!sides) {
        throw Usage_Error(name_of(Setting::paper) + ": expected " + list_of_names(paper_names()) + " or WIDTHxHEIGHTmm, found '" +
                          settings.paper + "'");
    }
    const double per_millimetre = settings.pixels_per_inch() / (1000 * inch);
    const double width = std::round(sides->first * per_millimetre), height = std::round(sides->second * per_millimetre);
    if (!(std::min(width, height) >= 1 && std::max(width, height) <= largest_side)) {
        throw Usage_Error(name_of(Setting::paper) + ": expected sides from 1 to " + std::to_string(largest_side) +
                          " pixels, found '" + settings.paper + "' with too many or too few at this " + name_of(Setting::dpi));
    }
    return VT_Int_Pair{static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
}

std::optional<double> scaled_pixels_per_metre(const Print_Settings& settings) {
    if (settings.scale.empty()) {
        return std::nullopt;
    }
    const std::string_view text = settings.scale;
    const std::size_t colon = text.find(':');
    const auto on_paper = positive_number(text.substr(0, colon)),
               drawn = colon == text.npos ? std::nullopt : positive_number(text.substr(colon + 1));
    const double pixels = on_paper && drawn ? settings.pixels_per_inch() / inch * (*on_paper / *drawn) : 0;
    if (!(pixels > 0 && std::isfinite(pixels))) {
        throw Usage_Error(name_of(Setting::scale) + ": expected two numbers as 1:50000, found '" + settings.scale + "'");
    }
    return pixels;
}

std::optional<double> unit_metres(const Print_Settings& settings) {
    const auto* const found = std::ranges::find(units, settings.unit, [](const auto& unit) { return unit.first; });
    return found == units.end() ? std::nullopt : std::optional(found->second);
}

} // namespace vorna::drawing

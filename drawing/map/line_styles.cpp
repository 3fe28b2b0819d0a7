// Names of line styles and symbols.
#include "drawing/map/line_styles.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "host/rendition.h"

namespace vorna::drawing::map {
namespace {

struct Named_Dashes {
    const char* name;
    Dashes dashes;
};

const std::vector<Named_Dashes>& styles() {
    static const std::vector<Named_Dashes> styles{{"solid", {}},
                                                  {"dashed", {6, 4}},
                                                  {"dotted", {0, 3}},
                                                  {"dash-dot", {8, 3, 0, 3}},
                                                  {"dash-dot-dot", {8, 3, 0, 3, 0, 3}},
                                                  {"long-dashed", {14, 5}}};
    return styles;
}

constexpr std::array<std::pair<const char*, std::int32_t>, 9> symbols{{{"dot", vorna::marker_symbol::dot},
                                                                       {"plus", vorna::marker_symbol::plus},
                                                                       {"cross", vorna::marker_symbol::cross},
                                                                       {"circle", vorna::marker_symbol::circle},
                                                                       {"disc", vorna::marker_symbol::filled_circle},
                                                                       {"square", vorna::marker_symbol::square},
                                                                       {"block", vorna::marker_symbol::filled_square},
                                                                       {"triangle", vorna::marker_symbol::triangle},
                                                                       {"star", vorna::marker_symbol::star}}};

} // namespace

const std::vector<std::string>& dash_names() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> list;
        std::ranges::transform(styles(), std::back_inserter(list), &Named_Dashes::name);
        return list;
    }();
    return names;
}

std::optional<Dashes> dashes_of(const std::string& text) {
    if (const auto known = std::ranges::find(styles(), text, &Named_Dashes::name); known != styles().end()) {
        return known->dashes;
    }
    const std::vector<double> lengths = numbers_between_commas(text);
    const bool fits = !lengths.empty() && lengths.size() % 2 == 0 && std::ranges::all_of(lengths, [&](const double& length) {
        return length <= 10000 && ((&length - lengths.data()) % 2 ? length > 0 : length >= 0);
    });
    return fits ? std::optional(lengths) : std::nullopt;
}

std::vector<std::string> symbol_names() {
    std::vector<std::string> names;
    names.reserve(std::size(symbols));
    for (const auto& [name, symbol] : symbols) {
        names.emplace_back(name);
    }
    return names;
}

std::optional<std::int32_t> symbol_of(const std::string& name) {
    const auto* found = std::ranges::find(symbols, name, [](const auto& symbol) { return std::string(symbol.first); });
    return found == symbols.end() ? std::nullopt : std::optional(found->second);
}

std::vector<double> numbers_between_commas(const std::string& text) {
    std::vector<double> numbers;
    const char* const end = text.data() + text.size();
    for (const char* place = text.data();; ++place) {
        double value = 0;
        const auto [stop, error] = std::from_chars(place, end, value);
        if (error != std::errc{} || !std::isfinite(value) || (stop != end && *stop != ',')) {
            return {};
        }
        numbers.push_back(value);
        place = stop;
        if (place == end) {
            return numbers;
        }
    }
}

} // namespace vorna::drawing::map

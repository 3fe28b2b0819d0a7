// Styles of shapes as GDAL states them.
#include "drawing/map/ogr_style.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace vorna::drawing::map {
namespace {

// The value of a parameter of a tool; empty without it. Values in quotation marks are none of those that are asked for.
std::string_view parameter(std::string_view style, std::string_view tool, std::string_view name) {
    const std::size_t start = style.find(tool);
    if (start == style.npos) {
        return {};
    }
    std::string_view rest = style.substr(start + tool.size());
    rest = rest.substr(0, rest.find(')'));
    while (!rest.empty()) {
        const std::string_view one = rest.substr(0, rest.find(','));
        if (one.starts_with(name) && one.substr(name.size()).starts_with(':')) {
            return one.substr(name.size() + 1);
        }
        rest.remove_prefix(std::min(one.size() + 1, rest.size()));
    }
    return {};
}

// #RRGGBB or #RRGGBBAA.
void set_color(std::optional<VT_RGB32>& color, std::string_view text) {
    std::uint32_t number = 0;
    if (color || !text.starts_with('#') || (text.size() != 7 && text.size() != 9)) {
        return;
    }
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + text.size(), number, 16);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return;
    }
    number = text.size() == 7 ? number << 8 | 255 : number;
    const auto channel = [=](int shift) { return static_cast<std::uint8_t>(number >> shift); };
    color = VT_RGB32{.blue = channel(8), .green = channel(16), .red = channel(24), .alpha = channel(0)};
}

} // namespace

void set_ogr_style(Shape& shape, std::string_view style) {
    set_color(shape.stroke, parameter(style, "PEN(", "c"));
    set_color(shape.fill, parameter(style, "BRUSH(", "fc"));
    set_color(shape.marker_color, parameter(style, "SYMBOL(", "c"));
    const std::string_view width = parameter(style, "PEN(", "w");
    double pixels = 0;
    const auto [end, error] = std::from_chars(width.data(), width.data() + width.size(), pixels);
    const std::string_view unit(end, static_cast<std::size_t>(width.data() + width.size() - end));
    if (!shape.stroke_width && error == std::errc{} && (unit.empty() || unit == "px") && pixels >= 0 && pixels <= 1000) {
        shape.stroke_width = static_cast<std::int32_t>(std::lround(pixels));
    }
}

} // namespace vorna::drawing::map

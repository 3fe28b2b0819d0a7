// Colours, widths and symbols that a shape's own fields state.
#include "drawing/map/simple_style.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "drawing/image/color_name.h"
#include "host/rendition.h"

namespace vorna::drawing::map {
namespace {

std::optional<VT_RGB32> color_of(const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text ? color_named(*text) : std::nullopt;
}

// A number, which files without types hold as text.
std::optional<double> number_of(const Value& value) {
    double number = 0;
    if (const auto* text = std::get_if<std::string>(&value)) {
        const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
        if (error != std::errc{} || end != text->data() + text->size()) {
            return std::nullopt;
        }
    } else if (const auto* found = std::get_if<double>(&value)) {
        number = *found;
    } else {
        return std::nullopt;
    }
    return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

void set_opacity(std::optional<VT_RGB32>& color, const Value& value) {
    if (const auto opacity = number_of(value); color && opacity && *opacity >= 0 && *opacity <= 1) {
        color->alpha = static_cast<std::uint8_t>(std::lround(255 * *opacity));
    }
}

} // namespace

void set_simple_style(Shape& shape, std::span<const Value> values) {
    shape.fill = color_of(values[0]);
    set_opacity(shape.fill, values[1]);
    shape.stroke = color_of(values[2]);
    set_opacity(shape.stroke, values[3]);
    if (const auto width = number_of(values[4]); width && *width >= 0) {
        shape.stroke_width = static_cast<std::int32_t>(std::lround(std::min(*width, 1000.0)));
    }
    shape.marker_color = color_of(values[5]);
    for (const auto& [name, size] : {std::pair("small", 5), {"medium", 9}, {"large", 13}}) {
        if (text_of(values[6]) == name) {
            shape.marker_size = size;
        }
    }
    namespace symbol = vorna::marker_symbol;
    for (const auto& [name, found] : {std::pair("circle", symbol::filled_circle),
                                      {"square", symbol::filled_square},
                                      {"triangle", symbol::triangle},
                                      {"star", symbol::star},
                                      {"cross", symbol::cross}}) {
        if (text_of(values[7]) == name) {
            shape.marker_symbol = found;
        }
    }
}

std::string text_of(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        return *text;
    }
    std::string text;
    if (const auto* number = std::get_if<double>(&value)) {
        char digits[32];
        text.assign(digits, std::to_chars(digits, digits + sizeof digits, *number).ptr);
    }
    return text;
}

std::string short_text_of(double number) {
    char digits[32];
    const bool is_large = std::abs(number) >= 1e4 && std::abs(number) < 1e15;
    const auto format = is_large ? std::chars_format::fixed : std::chars_format::general;
    const int precision = is_large ? 0 : 4;
    std::string text(digits, std::to_chars(digits, digits + sizeof digits, number, format, precision).ptr);
    for (std::size_t at = text.size(); is_large && at > 3 + (number < 0 ? 1U : 0U);) {
        at -= 3;
        text.insert(at, "\u202f"); // a narrow space between groups of three digits
    }
    return text;
}

} // namespace vorna::drawing::map

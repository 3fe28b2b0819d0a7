// Colours of drawings.
#include "drawing/map/dxf/colors.h"

#include <algorithm>
#include <cmath>

namespace vorna::drawing::map::dxf {
namespace {

VT_RGB32 rgb(double red, double green, double blue) {
    return {static_cast<std::uint8_t>(blue), static_cast<std::uint8_t>(green), static_cast<std::uint8_t>(red), 255};
}

} // namespace

// Nine plain colours, then 24 hues of five brightnesses, each fully and half saturated, then greys.
std::optional<VT_RGB32> table_color(std::int64_t number) {
    constexpr std::uint8_t greys[] = {51, 91, 132, 173, 214, 255};
    if (number < 1 || number > 255 || number == foreground) {
        return std::nullopt;
    }
    if (number < 7) {
        constexpr std::uint8_t plain[] = {1, 3, 2, 6, 4, 5}; // bit 0 red, 1 green, 2 blue
        const unsigned bits = plain[number - 1];
        return rgb(bits & 1 ? 255 : 0, bits & 2 ? 255 : 0, bits & 4 ? 255 : 0);
    }
    if (number < 10) {
        const double grey = number == 8 ? 128 : 192;
        return rgb(grey, grey, grey);
    }
    if (number >= 250) {
        const double grey = greys[number - 250];
        return rgb(grey, grey, grey);
    }
    constexpr double brightnesses[] = {255, 165, 127, 76, 38};
    const std::int64_t row = number / 10 - 1;
    const double hue = static_cast<double>(row) / 4, brightness = brightnesses[number % 10 / 2];
    const auto channel = [&](double middle) {
        const double distance = std::abs(std::remainder(hue - middle, 6));
        const double full = std::clamp(2 - distance, 0.0, 1.0);
        return std::floor(brightness * (number % 2 ? (1 + full) / 2 : full));
    };
    return rgb(channel(0), channel(2), channel(4));
}

VT_RGB32 true_color(std::int64_t value) {
    return rgb(static_cast<double>(value >> 16 & 0xFF), static_cast<double>(value >> 8 & 0xFF),
               static_cast<double>(value & 0xFF));
}

} // namespace vorna::drawing::map::dxf

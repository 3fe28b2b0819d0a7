// Palettes.
#include <stdexcept>
#include <utility>

#include "host/color.h"

namespace {

constexpr std::int32_t most_colors = 256;
constexpr std::int32_t cube_levels = 6;
constexpr std::int32_t cube_size = cube_levels * cube_levels * cube_levels;

std::vector<VT_RGB32> default_colors() {
    std::vector<VT_RGB32> colors;
    colors.reserve(most_colors);
    const auto channel = [](std::int32_t level) { return static_cast<std::uint8_t>(level * 255 / (cube_levels - 1)); };
    for (std::int32_t i = 0; i < cube_size; ++i) {
        colors.push_back(
            {channel(i % cube_levels), channel(i / cube_levels % cube_levels), channel(i / cube_levels / cube_levels), 255});
    }
    // Forty greys between black and white, which the cube contains.
    constexpr std::int32_t steps = most_colors - cube_size + 1;
    for (std::int32_t i = 1; i < steps; ++i) {
        const auto grey = static_cast<std::uint8_t>((2 * 255 * i + steps) / (2 * steps));
        colors.push_back({grey, grey, grey, 255});
    }
    return colors;
}

std::int32_t squared_distance(VT_RGB32 a, VT_RGB32 b) {
    const std::int32_t red = a.red - b.red;
    const std::int32_t green = a.green - b.green;
    const std::int32_t blue = a.blue - b.blue;
    return red * red + green * green + blue * blue;
}

} // namespace

VT_Palette::VT_Palette() : colors_(default_colors()), cube_(VT_Color_Cube({cube_levels, cube_levels, cube_levels}, 1.0F, 0)) {
}

VT_Palette::VT_Palette(std::vector<VT_RGB32> colors, std::optional<VT_Color_Cube> cube)
    : colors_(std::move(colors)), cube_(cube) {
    if (colors_.empty()) {
        throw std::invalid_argument("a palette needs 1 to 256 colours, not 0");
    }
    if (colors_.size() > most_colors) {
        colors_.resize(most_colors);
    }
}

std::int32_t VT_Palette::closest_match(VT_RGB32 color, bool exact) const noexcept {
    std::int32_t best = 0;
    std::int32_t least = squared_distance(colors_[0], color);
    for (std::int32_t i = 1; i < size() && least > 0; ++i) {
        const std::int32_t distance = squared_distance(colors_[static_cast<std::size_t>(i)], color);
        if (distance < least) {
            least = distance;
            best = i;
        }
    }
    return exact && least > 0 ? -1 : best;
}

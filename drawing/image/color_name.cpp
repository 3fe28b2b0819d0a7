// Colours as people write them.
#include "drawing/image/color_name.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace vorna::drawing {
namespace {

struct Named_Color {
    std::string_view name;
    std::uint32_t rgb;
};

constexpr std::array named_colors{
    Named_Color{"black", 0x000000},  Named_Color{"white", 0xFFFFFF},   Named_Color{"grey", 0x808080},
    Named_Color{"gray", 0x808080},   Named_Color{"silver", 0xC0C0C0},  Named_Color{"red", 0xFF0000},
    Named_Color{"green", 0x008000},  Named_Color{"blue", 0x0000FF},    Named_Color{"yellow", 0xFFFF00},
    Named_Color{"orange", 0xFFA500}, Named_Color{"brown", 0x8B4513},   Named_Color{"gold", 0xD4AF37},
    Named_Color{"cyan", 0x00FFFF},   Named_Color{"magenta", 0xFF00FF}, Named_Color{"purple", 0x800080},
    Named_Color{"navy", 0x000080},   Named_Color{"teal", 0x008080}};

VT_RGB32 opaque(std::uint32_t rgb) {
    return vorna::color_of(0xFF000000U | rgb);
}

} // namespace

std::optional<VT_RGB32> color_named(std::string_view text) {
    if (!text.starts_with('#')) {
        const auto found = std::ranges::find(named_colors, text, &Named_Color::name);
        return found == named_colors.end() ? std::nullopt : std::optional(opaque(found->rgb));
    }
    text.remove_prefix(1);
    std::uint32_t value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc{} || stop != text.data() + text.size()) {
        return std::nullopt;
    }
    if (text.size() == 3) {
        return opaque(((value & 0xF00) << 8 | (value & 0xF0) << 4 | (value & 0xF)) * 0x11);
    }
    return text.size() == 6 ? std::optional(opaque(value)) : std::nullopt;
}

std::vector<std::string> color_names() {
    std::vector<std::string> names;
    names.reserve(named_colors.size());
    for (const Named_Color& color : named_colors) {
        names.emplace_back(color.name);
    }
    return names;
}

} // namespace vorna::drawing

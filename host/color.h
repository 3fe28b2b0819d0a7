// Colours, the colour cube and the palette.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

#include "host/export.h"
#include "host/object.h"

// A colour and a 32-bit pixel: four bytes in this order. Alpha 255 is opaque.
struct VT_RGB32 {
    std::uint8_t blue = 0, green = 0, red = 0, alpha = 255;

    friend bool operator==(const VT_RGB32&, const VT_RGB32&) = default;
};

static_assert(sizeof(VT_RGB32) == 4);

namespace vorna {

// The pixel as one word, blue in the low byte on every machine.
constexpr std::uint32_t word_of(VT_RGB32 color) noexcept {
    return std::uint32_t{color.blue} | std::uint32_t{color.green} << 8 | std::uint32_t{color.red} << 16 |
           std::uint32_t{color.alpha} << 24;
}

constexpr VT_RGB32 color_of(std::uint32_t word) noexcept {
    return {static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8), static_cast<std::uint8_t>(word >> 16),
            static_cast<std::uint8_t>(word >> 24)};
}

} // namespace vorna

struct VT_Int_RGB {
    std::int32_t red = 0, green = 0, blue = 0;

    friend bool operator==(const VT_Int_RGB&, const VT_Int_RGB&) = default;
};

// A box of palette entries: cell (r, g, b) has the index base + r * red_stride + g * green_stride + b * blue_stride.
class VT_Color_Cube {
public:
    // levels: cells along each channel. The multiplier of a channel is (levels - 1) * scale. first_index: that of cell (0, 0, 0).
    VT_Color_Cube(VT_Int_RGB levels, float scale, std::int32_t first_index) noexcept
        : red_multiplier(multiplier(levels.red, scale)), green_multiplier(multiplier(levels.green, scale)),
          blue_multiplier(multiplier(levels.blue, scale)), red_stride(static_cast<std::uint8_t>(levels.blue * levels.green)),
          green_stride(static_cast<std::uint8_t>(levels.blue)), base(static_cast<std::uint8_t>(first_index)), levels_(levels) {}

    VT_Int_RGB levels() const noexcept { return levels_; }

    std::uint32_t red_multiplier, green_multiplier, blue_multiplier;
    std::uint8_t red_stride, green_stride, blue_stride = 1;
    std::uint8_t base;

private:
    static std::uint32_t multiplier(std::int32_t levels, float scale) noexcept {
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<float>(levels - 1) * scale));
    }

    VT_Int_RGB levels_;
};

// Up to 256 colours, and the colour cube among them, if any.
class VORNA_API VT_Palette final : public VT_Counted {
public:
    // The default palette: a 6 x 6 x 6 cube at 0, then forty greys.
    VT_Palette();
    // colors: 1 to 256; further ones are ignored.
    explicit VT_Palette(std::vector<VT_RGB32> colors, std::optional<VT_Color_Cube> cube = std::nullopt);

    VT_Counted* clone() const override { return new VT_Palette(*this); }

    std::int32_t size() const noexcept { return static_cast<std::int32_t>(colors_.size()); }
    // Black for an index beyond the palette.
    VT_RGB32 color(std::uint8_t index) const noexcept { return index < colors_.size() ? colors_[index] : VT_RGB32{}; }
    const std::optional<VT_Color_Cube>& color_cube() const noexcept { return cube_; }

    // The index with the least squared RGB distance, the lowest one of several. exact: only distance 0 counts, -1 without one.
    std::int32_t closest_match(VT_RGB32 color, bool exact) const noexcept;

private:
    std::vector<VT_RGB32> colors_;
    std::optional<VT_Color_Cube> cube_;
};

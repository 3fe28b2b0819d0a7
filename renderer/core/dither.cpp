// Ordered dithering of colours to the palette's colour cube.
#include "renderer/core/dither.h"

namespace krb {

Dither make_dither(const VT_Color_Cube& cube) noexcept {
    Dither dither{};
    dither.red_multiplier = static_cast<std::int32_t>(cube.red_multiplier);
    dither.green_multiplier = static_cast<std::int32_t>(cube.green_multiplier);
    dither.blue_multiplier = static_cast<std::int32_t>(cube.blue_multiplier);
    dither.red_stride = cube.red_stride;
    dither.green_stride = cube.green_stride;
    dither.blue_stride = cube.blue_stride;
    dither.base = cube.base;
    for (int b = 0; b < 8; ++b) {
        for (int a = 0; a < 24; ++a) {
            dither.thresholds[b][a] = SHARED.thresholds[(a & 7) + 8 * b];
        }
    }
    return dither;
}

std::uint8_t dithered_index(const Dither& dither, VT_RGB32 color, const std::uint8_t* pixel, std::int32_t row) noexcept {
    const auto threshold = static_cast<std::uint32_t>(dither.thresholds[row & 7][reinterpret_cast<std::uintptr_t>(pixel) & 7]);
    std::uint32_t index = static_cast<std::uint32_t>(dither.base);
    // The cell of blue counts once whatever the cube's blue stride; only its step up takes the stride.
    const auto channel = [&](std::uint8_t value, std::int32_t multiplier, std::int32_t cell_weight, std::int32_t stride) {
        const std::uint32_t scaled = value * static_cast<std::uint32_t>(multiplier) << 8;
        index += (scaled >> 16 & 0xFF) * static_cast<std::uint32_t>(cell_weight);
        index += threshold >= 0xFFFF - (scaled & 0xFFFF) ? static_cast<std::uint32_t>(stride) : 0;
    };
    channel(color.red, dither.red_multiplier, dither.red_stride, dither.red_stride);
    channel(color.green, dither.green_multiplier, dither.green_stride, dither.green_stride);
    channel(color.blue, dither.blue_multiplier, 1, dither.blue_stride);
    return static_cast<std::uint8_t>(index);
}

} // namespace krb

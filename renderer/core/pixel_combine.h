// Merge control of palette indices, which needs the palette. The formulas of 32-bit pixels stand in pixel_combine.inl.
#pragma once

#include <cstdint>

#include "renderer/core/software_z_buffer.h"

namespace krb {

// The index of an untouched pixel is replaced. Two different colours give the index of their bitwise AND. Unlike with 32-bit
// pixels, a combination that matches the background index is kept.
inline std::uint8_t merged_index8(const Software_Z_Buffer& renderer, std::uint8_t stored, std::uint8_t index) noexcept {
    if (stored == renderer.background_index) {
        return index == renderer.background_index ? renderer.alternate_background_index : index;
    }
    if (stored == index) {
        return stored;
    }
    const VT_Palette& palette = renderer.palette();
    VT_RGB32 both = vorna::color_of(vorna::word_of(palette.color(stored)) & vorna::word_of(palette.color(index)));
    both.alpha = 255;
    return static_cast<std::uint8_t>(palette.closest_match(both, false));
}

} // namespace krb

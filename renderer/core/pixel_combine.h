// Merge control: what two overlapping drawings leave in a pixel.
//
// A pixel of the background colour is untouched and takes the new colour; an equal colour stays; two different colours give their
// bitwise AND. Where the outcome would look untouched, the alternate background stands in.
#pragma once

#include <cstdint>
#include <cstring>

#include "renderer/core/software_z_buffer.h"

namespace krb {

// The combined 32-bit pixel. A pixel that already holds the colour stays as it is, its alpha byte included; any other outcome has
// alpha 255.
inline void merge_rgb32(const Software_Z_Buffer& renderer, std::uint8_t* pixel, VT_RGB32 color) noexcept {
    VT_RGB32 stored;
    std::memcpy(&stored, pixel, 4);
    VT_RGB32 merged = color;
    if (stored != renderer.background_color) {
        if (stored == color) {
            return;
        }
        merged = vorna::color_of(vorna::word_of(stored) & vorna::word_of(color));
    }
    merged.alpha = 255;
    if (merged == renderer.background_color) {
        merged = renderer.alternate_background_color;
    }
    std::memcpy(pixel, &merged, 4);
}

// The combined palette index. Deliberately unlike the 32-bit rule, a combination that happens to match the background index is
// kept.
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

inline void merge_index8(const Software_Z_Buffer& renderer, std::uint8_t* pixel, std::uint8_t index) noexcept {
    *pixel = merged_index8(renderer, *pixel, index);
}

// The blend of lines and dots: full alpha replaces the pixel exactly because it weighs 256. The pixel becomes opaque.
inline void blend_by_weight(std::uint8_t* pixel, VT_RGB32 color) noexcept {
    const int weight = color.alpha == 255 ? 256 : color.alpha;
    const auto blend = [weight](int stored, int fresh) {
        return static_cast<std::uint8_t>(stored + ((fresh - stored) * weight >> 8));
    };
    pixel[0] = blend(pixel[0], color.blue);
    pixel[1] = blend(pixel[1], color.green);
    pixel[2] = blend(pixel[2], color.red);
    pixel[3] = 255;
}

} // namespace krb

// What the members of the triangle families hand to their kernels, and the table of kernels of one instruction set.
#pragma once

#include <cstdint>

#include "host/color.h"
#include "host/geometry.h"
#include "renderer/core/cases.h"
#include "renderer/core/pixel_target.h"
#include "renderer/kernels/configurations.h"
#include "renderer/kernels/pixel_rules.h"

namespace krb {

// Where the colour comes from.
enum class Shading { flat, gouraud, textured };

struct Triangle_Configuration {
    Shading shading;
    Pixel_Format format;
    Depth_Rule depth;
    Pixel_Rule pixel;
    Clip_Rule clip;

    static constexpr int packed_bits = 10;
    constexpr std::uint32_t packed() const noexcept { return krb::packed(shading, format, depth, pixel, clip); }
};

// Merging belongs to flat triangles without depth. Textures blend, or as palette indices store what is not transparent; palette
// indices blend nowhere else and know the depth rule less_or_equal only.
inline constexpr auto triangle_configurations = [] {
    using Configuration = Triangle_Configuration;
    constexpr Choice flat{Shading::flat};
    constexpr Choice flat_or_gouraud{Shading::flat, Shading::gouraud};
    constexpr Choice textured{Shading::textured};
    constexpr Choice index8{Pixel_Format::index8};
    constexpr Choice rgb32{Pixel_Format::rgb32};
    constexpr Choice no_depth{Depth_Rule::none};
    constexpr Choice none_or_fixed{Depth_Rule::none, Depth_Rule::less_or_equal};
    constexpr Choice any_depth{Depth_Rule::none, Depth_Rule::less_or_equal, Depth_Rule::by_mode};
    constexpr Choice store{Pixel_Rule::store};
    constexpr Choice blend{Pixel_Rule::blend};
    constexpr Choice merge{Pixel_Rule::merge};
    constexpr Choice store_or_blend{Pixel_Rule::store, Pixel_Rule::blend};
    constexpr Choice any_clip{Clip_Rule::open, Clip_Rule::masked, Clip_Rule::patterned};
    return join(every<Configuration>(flat_or_gouraud, index8, none_or_fixed, store, any_clip),
                every<Configuration>(flat, index8, no_depth, merge, any_clip),
                every<Configuration>(textured, index8, none_or_fixed, store_or_blend, any_clip),
                every<Configuration>(flat_or_gouraud, rgb32, any_depth, store_or_blend, any_clip),
                every<Configuration>(flat, rgb32, no_depth, merge, any_clip),
                every<Configuration>(textured, rgb32, any_depth, blend, any_clip));
}();

// A pattern's cells, anchored to the buffer.
struct Face_Pattern {
    // An 8 x 8 pattern: row b with cell a in bit a, repeated through the word. Used when there is no bitmap.
    std::uint32_t stock_rows[8];
    // One byte a cell, row after row, lowest row first; null for an 8 x 8 pattern.
    const std::uint8_t* bitmap;
    std::int32_t width, height;
    bool inverted;
    // Gaps are filled with the contrast colour instead of being left out.
    bool opaque_gaps;
    VT_RGB32 contrast;
};

struct Triangle_Target : Pixel_Target {
    // Columns that may be drawn, half-open. They and the drawable rows are looked at only when scissored is set; a caller whose
    // triangles lie inside leaves it clear. The walk's columns then start column_bias before column 0, and origin_x lies as far
    // to the left: points may lie there, in columns 0 to 32767 of the walk.
    bool scissored;
    std::int32_t first_column, end_column;
    std::int32_t column_bias;
    // For 8-bit textures: the palette's pixels.
    const std::uint8_t* palette;
    // For Clip_Rule::patterned.
    const Face_Pattern* pattern;
    // For textured strips: rows of texels from the first on, sizes less 1 (powers of two).
    const std::uint8_t* texels;
    std::int32_t texture_width_mask, texture_height_mask;
    // The member's own, for near-flat triangles that it does not fill with a kernel.
    const void* hand_over;
};

struct Texel_Coordinates {
    std::int32_t s, t;
};

struct Triangle_Strip;

using Strip_Kernel = void(const Triangle_Target& target, const Triangle_Strip& strip);

// count points, count - 2 triangles. Points lie inside the window unless the target is scissored.
struct Triangle_Strip {
    std::int32_t count;
    const VT_DCI_Point* points;
    // One a triangle for flat strips, the first for all with single_color; one a point for Gouraud strips.
    const VT_RGB32* colors;
    bool single_color;
    // Draws the almost uniform triangles of a Gouraud strip: flat, one colour a triangle.
    Strip_Kernel* near_flat;
    // Of textured strips, one pair a point: texel coordinates in 16.16.
    const Texel_Coordinates* coordinates;

    // The triangles of length points from the first on.
    Triangle_Strip part(std::int32_t first, std::int32_t length) const noexcept {
        return {length,       points + first, single_color ? colors : colors + first,
                single_color, near_flat,      coordinates ? coordinates + first : nullptr};
    }
};

struct Triangle_Kernel_Table {
    Kernel_Table<Strip_Kernel, triangle_configurations> strips;
};

} // namespace krb

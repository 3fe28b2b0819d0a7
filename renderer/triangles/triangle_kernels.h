// What the members of the triangle families hand to their kernels, and the table of kernels of one instruction set.
//
// Everything here is plain data: kernels call no function that is not compiled with them.
#pragma once

#include <cstdint>

#include "renderer/core/dither.h"
#include "renderer/host/color.h"
#include "renderer/host/geometry.h"

namespace krb {

// The four rules that make up a member, and where its colour comes from.
enum class Shading { flat, gouraud, textured };
enum class Pixel_Format { index8, rgb32 };
enum class Depth_Rule {
    none,
    less_or_equal, // pass when new <= stored; a pass always writes
    by_mode,       // the renderer's test mode and write flag
};
enum class Pixel_Rule { store, blend, merge };
enum class Clip_Rule {
    open,
    masked,    // the pixels that the complex-clip mask leaves
    patterned, // the cells of a face pattern, less what a mask takes away when there is one
};

struct Triangle_Configuration {
    Shading shading;
    Pixel_Format format;
    Depth_Rule depth;
    Pixel_Rule pixel;
    Clip_Rule clip;

    // Combinations that exist. Merging belongs to flat triangles without depth, textures always blend, palette indices blend
    // nowhere else and know one depth rule only.
    constexpr bool valid() const noexcept {
        if (pixel == Pixel_Rule::merge && (shading != Shading::flat || depth != Depth_Rule::none)) {
            return false;
        }
        if (shading == Shading::textured && pixel != Pixel_Rule::blend) {
            return false;
        }
        return format == Pixel_Format::rgb32 ||
               (depth != Depth_Rule::by_mode && (pixel != Pixel_Rule::blend || shading == Shading::textured));
    }
    constexpr int position() const noexcept {
        return (((static_cast<int>(shading) * 2 + static_cast<int>(format)) * 3 + static_cast<int>(depth)) * 3 +
                static_cast<int>(pixel)) *
                   3 +
               static_cast<int>(clip);
    }
    static constexpr Triangle_Configuration at(int position) noexcept {
        return {static_cast<Shading>(position / 54), static_cast<Pixel_Format>(position / 27 % 2),
                static_cast<Depth_Rule>(position / 9 % 3), static_cast<Pixel_Rule>(position / 3 % 3),
                static_cast<Clip_Rule>(position % 3)};
    }
};

inline constexpr int triangle_configuration_count = 162;

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

// Where and how to draw: gathered once a call.
struct Triangle_Target {
    std::uint8_t* const* color_rows;
    std::uint8_t* const* depth_rows;
    std::int32_t width; // pixels in a row of either buffer
    std::int32_t origin_x, origin_y;
    // Columns and rows that may be drawn, half-open. Looked at only when scissored is set; a caller whose triangles lie inside
    // leaves it clear. The walk's columns then start column_bias before column 0, and origin_x lies as far to the left: points
    // may lie there, but no column may be negative.
    bool scissored;
    std::int32_t first_column, end_column, first_row, end_row;
    std::int32_t column_bias;
    // For Depth_Rule::by_mode: a pixel passes when new <= stored + depth_bias, or exactly when not, with depth_inverted.
    std::int32_t depth_bias;
    bool depth_inverted;
    bool depth_written;
    // For Pixel_Rule::merge.
    std::uint32_t background, alternate_background;
    std::uint8_t (*merged_index8)(const void* renderer, std::uint8_t stored, std::uint8_t index);
    const void* renderer;
    // For Pixel_Format::index8; the bias goes into the low bits of a scaled channel.
    const Dither* dither;
    std::int32_t dither_bias;
    // For 8-bit textures: the palette's pixels.
    const std::uint8_t* palette;
    // For Clip_Rule::patterned.
    const Face_Pattern* pattern;
    // For Clip_Rule::masked, and patterned when not null: start of each mask row, the leftmost pixel in the highest bit, set bits
    // clipped away. Three bytes from any pixel on can be read.
    const std::uint8_t* const* mask_rows;
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
};

// By position of the configuration; combinations that do not exist are null.
struct Triangle_Kernel_Table {
    Strip_Kernel* kernel[triangle_configuration_count];

    constexpr Strip_Kernel* operator[](Triangle_Configuration configuration) const noexcept {
        return kernel[configuration.position()];
    }
};

} // namespace krb

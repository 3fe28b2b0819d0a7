// What the members of the line families hand to their kernels, and the table of kernels of one instruction set.
#pragma once

#include <cstdint>
#include <type_traits>

#include "host/color.h"
#include "host/geometry.h"
#include "renderer/core/fixed_point.h"
#include "renderer/core/pixel_target.h"
#include "renderer/kernels/configurations.h"
#include "renderer/kernels/pixel_formats.h"
#include "renderer/kernels/pixel_rules.h"
#include "renderer/mask/clipped_cells.h"

namespace krb {

enum class Line_Shading {
    index,   // one palette index for the whole polyline
    flat,    // one colour a segment
    gouraud, // one colour a point
};

// How a colour becomes a palette index.
enum class Line_Dither {
    ordered,  // as everywhere: by the fractions within a cell of the colour cube
    additive, // of 2D lines: the threshold is added to the scaled channels
};

struct Line_Configuration {
    Line_Shading shading;
    Pixel_Format format;
    Line_Dither dither;
    Depth_Rule depth;
    Pixel_Rule pixel;
    Clip_Rule clip;

    static constexpr int packed_bits = 12;
    constexpr std::uint32_t packed() const noexcept { return krb::packed(shading, format, dither, depth, pixel, clip); }
};

struct Line_Target : Pixel_Target {
    // Draws the almost uniform segments of a Gouraud polyline, each as a polyline of its own with one colour; null = none are.
    void (*draw_near_flat)(const void* call, const VT_DCI_Point* points, const VT_RGB32* color);
    const void* call;
    Clipped_Cells clipped_cells; // of the mask; those of null are not known
};

// count points, at least 2. Segments are drawn as far as they lie inside the window; columns, counted from it, fit 16 bits.
struct Polyline {
    std::int32_t count;
    const VT_DCI_Point* points;
    // One a segment, the first for all with single_color; one a point for Gouraud polylines.
    const VT_RGB32* colors;
    bool single_color;
    std::uint8_t index; // for Line_Shading::index
};

// What the pixels of a segment are drawn with.
struct Line_Paint {
    VT_RGB32 color;          // of a flat segment
    Prepared_Color prepared; // the same colour, prepared by the pixel format; with ordered dithering
    std::uint8_t index;      // for Line_Shading::index
    // From pixel to pixel along the major axis. Depth; of a Gouraud segment the channels, scaled by the colour cube's multipliers
    // for additive dithering.
    Fixed_Interpolator depth, blue, green, red, alpha;
};

// A segment of which only some pixels are drawn: those of its rows first_row to last_row, counted from the start's row, that lie
// in columns left to right. All are inclusive, and the rows and columns lie in the window.
struct Cut_Segment {
    VT_DCI_Point from, to; // x fits 16.16
    std::int32_t first_row, last_row;
    std::int32_t left, right;
    Line_Paint paint;
    // Where the ramps have their values: x for segments with more columns than rows and horizontal ones, y for all others.
    VT_Int_Pair ramps_from;
};

template <class Shape> using Line_Kernel = void(const Line_Target& target, const Shape& shape);

// Values of the rules, for the lists below.
namespace line_choices {
inline constexpr Choice index{Line_Shading::index};
inline constexpr Choice flat{Line_Shading::flat};
inline constexpr Choice gouraud{Line_Shading::gouraud};
inline constexpr Choice index8{Pixel_Format::index8};
inline constexpr Choice rgb32{Pixel_Format::rgb32};
inline constexpr Choice ordered{Line_Dither::ordered};
inline constexpr Choice additive{Line_Dither::additive};
inline constexpr Choice no_depth{Depth_Rule::none};
inline constexpr Choice fixed{Depth_Rule::less_or_equal};
inline constexpr Choice by_mode{Depth_Rule::by_mode};
inline constexpr Choice none_or_fixed{Depth_Rule::none, Depth_Rule::less_or_equal};
inline constexpr Choice any_depth{Depth_Rule::none, Depth_Rule::less_or_equal, Depth_Rule::by_mode};
inline constexpr Choice store{Pixel_Rule::store};
inline constexpr Choice store_or_blend{Pixel_Rule::store, Pixel_Rule::blend};
inline constexpr Choice store_or_merge{Pixel_Rule::store, Pixel_Rule::merge};
inline constexpr Choice any_pixel{Pixel_Rule::store, Pixel_Rule::blend, Pixel_Rule::merge};
inline constexpr Choice open{Clip_Rule::open};
inline constexpr Choice any_clip{Clip_Rule::open, Clip_Rule::masked};
} // namespace line_choices

// Polylines in one palette index, in one colour a segment, and in interpolated colours. Indices, and colours without depth that
// are stored as words, may merge. Only open polylines in one colour a segment follow the test mode.
inline constexpr auto polyline_configurations = [] {
    using namespace line_choices;
    using Configuration = Line_Configuration;
    return join(every<Configuration>(index, index8, ordered, no_depth, store_or_merge, any_clip),
                every<Configuration>(flat, index8, ordered, no_depth, store, open),
                every<Configuration>(flat, index8, ordered, fixed, store, any_clip),
                every<Configuration>(flat, rgb32, ordered, no_depth, any_pixel, any_clip),
                every<Configuration>(flat, rgb32, ordered, fixed, store_or_blend, any_clip),
                every<Configuration>(flat, rgb32, ordered, by_mode, store_or_blend, open),
                every<Configuration>(gouraud, index8, ordered, none_or_fixed, store, any_clip),
                every<Configuration>(gouraud, rgb32, ordered, none_or_fixed, store_or_blend, any_clip));
}();

// Segments in one colour may merge. Palette indices dither additively; interpolated, they are drawn through masks.
inline constexpr auto cut_segment_configurations = [] {
    using namespace line_choices;
    using Configuration = Line_Configuration;
    return join(every<Configuration>(flat, index8, additive, none_or_fixed, store_or_merge, any_clip),
                every<Configuration>(gouraud, index8, additive, none_or_fixed, store, open),
                every<Configuration>(flat, rgb32, ordered, any_depth, any_pixel, any_clip),
                every<Configuration>(gouraud, rgb32, ordered, any_depth, store_or_blend, any_clip));
}();

struct Line_Kernel_Table {
    // Every segment without its last pixel, then the last point, which passes when its depth is not beyond the stored one and
    // then writes it, whatever the configuration's depth rule.
    Kernel_Table<Line_Kernel<Polyline>, polyline_configurations> polylines;
    Kernel_Table<Line_Kernel<Cut_Segment>, cut_segment_configurations> cut_segments;

    template <class Shape> constexpr const auto& of() const noexcept {
        if constexpr (std::is_same_v<Shape, Polyline>) {
            return polylines;
        } else {
            return cut_segments;
        }
    }
};

} // namespace krb

// What the members of the line families hand to their kernels, and the table of kernels of one instruction set.
#pragma once

#include <cstdint>

#include "host/color.h"
#include "host/geometry.h"
#include "renderer/core/pixel_target.h"
#include "renderer/kernels/pixel_rules.h"

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

    // Combinations that exist. Interpolated colours never merge, palette indices never blend and know one depth rule only; lines
    // have no pattern.
    constexpr bool valid() const noexcept {
        if (clip == Clip_Rule::patterned || (pixel == Pixel_Rule::merge && shading == Line_Shading::gouraud)) {
            return false;
        }
        if (format == Pixel_Format::rgb32) {
            return shading != Line_Shading::index && dither == Line_Dither::ordered;
        }
        if (pixel == Pixel_Rule::blend || depth == Depth_Rule::by_mode) {
            return false;
        }
        return shading != Line_Shading::index || (dither == Line_Dither::ordered && depth == Depth_Rule::none);
    }
    constexpr int position() const noexcept {
        return ((((static_cast<int>(shading) * 2 + static_cast<int>(format)) * 2 + static_cast<int>(dither)) * 3 +
                 static_cast<int>(depth)) *
                    3 +
                static_cast<int>(pixel)) *
                   2 +
               static_cast<int>(clip);
    }
    static constexpr Line_Configuration at(int position) noexcept {
        return {static_cast<Line_Shading>(position / 72),    static_cast<Pixel_Format>(position / 36 % 2),
                static_cast<Line_Dither>(position / 18 % 2), static_cast<Depth_Rule>(position / 6 % 3),
                static_cast<Pixel_Rule>(position / 2 % 3),   static_cast<Clip_Rule>(position % 2)};
    }
};

inline constexpr int line_configuration_count = 216;

struct Line_Target : Pixel_Target {
    // Draws the almost uniform segments of a Gouraud polyline, each as a polyline of its own with one colour; null = none are.
    void (*draw_near_flat)(const void* call, const VT_DCI_Point* points, const VT_RGB32* color);
    const void* call;
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

// A value at a segment's first pixel, and how it changes from pixel to pixel along the major axis.
struct Line_Ramp {
    std::int32_t value, step;
};

// The cell of the colour cube that a colour lies in, and the least threshold at which each channel steps up to the next cell.
struct Dithered_Paint {
    std::int32_t index, red, green, blue;
};

// What the pixels of a segment are drawn with.
struct Line_Paint {
    VT_RGB32 color;          // of a flat segment
    Dithered_Paint dithered; // the same colour on its way to a palette index; of 8-bit flat segments with ordered dithering
    std::uint8_t index;      // for Line_Shading::index
    // Depth in 17.15. Of a Gouraud segment the channels in 16.16, scaled by the colour cube's multipliers for additive dithering.
    Line_Ramp depth, blue, green, red, alpha;
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

using Polyline_Kernel = void(const Line_Target& target, const Polyline& polyline);
using Cut_Segment_Kernel = void(const Line_Target& target, const Cut_Segment& segment);

struct Line_Kernels {
    // Every segment without its last pixel, then the last point, which passes when its depth is not beyond the stored one and
    // then writes it, whatever the configuration's depth rule. Null where no member asks for it: additive dithering, colours that
    // merge as indices or under a depth rule, and the test mode under a mask or with shading.
    Polyline_Kernel* polyline;
    Cut_Segment_Kernel* cut_segment;
};

// By position of the configuration; combinations that do not exist are null.
struct Line_Kernel_Table {
    Line_Kernels kernels[line_configuration_count];

    constexpr const Line_Kernels& operator[](Line_Configuration configuration) const noexcept {
        return kernels[configuration.position()];
    }
};

} // namespace krb

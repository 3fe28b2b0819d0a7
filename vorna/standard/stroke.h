// Wide lines as regions of pixels.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "host/color.h"
#include "host/geometry.h"

namespace vorna {

// The colour is that of the point, or of the segment that begins there.
struct Stroke_Point {
    double x, y, z;
    VT_RGB32 color;
};

// The colour at t of the way from a to b.
inline VT_RGB32 mixed(VT_RGB32 a, VT_RGB32 b, double t) noexcept {
    const auto channel = [t](double from, double to) { return static_cast<std::uint8_t>(from + t * (to - from) + 0.5); };
    return {channel(a.blue, b.blue), channel(a.green, b.green), channel(a.red, b.red), channel(a.alpha, b.alpha)};
}

// A chain of segments. One that ends where it begins is joined there.
using Stroke_Path = std::vector<Stroke_Point>;

enum class Stroke_Colors { one, per_segment, per_point };

struct Stroke_Pen {
    std::int32_t weight;
    std::int32_t cap, join; // see line_cap and line_join
    Stroke_Colors colors;
    bool has_depth; // where the line covers itself its nearest part is seen, else its last
    bool smoothed;  // covers the pixels at its edges in part
};

// Neighbouring pixels of a row, with the depths and colours of the two at the ends, between which both change linearly.
struct Stroke_Run {
    std::int32_t y, first, last; // inclusive
    double first_depth, last_depth;
    VT_RGB32 first_color, last_color;
    double coverage; // above 0; 1 = wholly covered
};

// Calls draw for every pixel of the rectangle that the union of the paths covers, each pixel once.
//
// A pixel is covered when its sampling point lies in the rectangle around a segment, in a join or in a cap: for odd weights its
// centre, for even weights its upper right corner, so that level and upright lines of any weight are exactly that wide. With
// round joins and caps that is: when the point lies no farther than half the weight from the path. A path of one place is a dot:
// round with round caps, else square. Smoothed, a pixel has 64 points, spread evenly.
void fill_strokes(const std::vector<Stroke_Path>& paths, const Stroke_Pen& pen, const VT_Int_Rectangle& rectangle,
                  const std::function<void(const Stroke_Run&)>& draw);

} // namespace vorna

// Wide lines as sets of pixels.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "host/color.h"
#include "host/geometry.h"

namespace vorna {

// A point and its colour, or that of the segment that begins there.
struct Stroke_Point {
    double x, y, z;
    VT_RGB32 color;
};

// The colour a + t (b - a).
inline VT_RGB32 mixed(VT_RGB32 a, VT_RGB32 b, double t) noexcept {
    const auto channel = [t](double from, double to) { return static_cast<std::uint8_t>(from + t * (to - from) + 0.5); };
    return {channel(a.blue, b.blue), channel(a.green, b.green), channel(a.red, b.red), channel(a.alpha, b.alpha)};
}

// A chain of segments. A path that ends where it begins is joined there.
using Stroke_Path = std::vector<Stroke_Point>;

enum class Stroke_Colors { one, per_segment, per_point };

struct Stroke_Pen {
    std::int32_t weight;
    std::int32_t cap, join; // vorna::line_cap, vorna::line_join
    Stroke_Colors colors;
    bool has_depth; // where the line covers itself, the nearest part is drawn instead of the last one
    bool smoothed;  // pixels at the edges are partly covered
};

// Adjacent pixels of a row. Depth and colour are those of the first and of the last one, and linear in between.
struct Stroke_Run {
    std::int32_t y, first, last; // inclusive
    double first_depth, last_depth;
    VT_RGB32 first_color, last_color;
    double coverage; // in (0, 1]
};

// Calls draw for every pixel of the rectangle that the union of the paths covers, each pixel once.
//
// A pixel is covered when its sampling point lies in the rectangle around a segment, in a join or in a cap. The sampling point is
// the centre for odd weights and the upper right corner for even ones, so that level and upright lines are exactly as wide as
// their weight. With round joins and caps, a pixel is covered when its sampling point lies at most half the weight from the path.
// A path of one position is a dot, round with round caps, else square. Smoothed lines have 64 evenly spread sampling points in a
// pixel.
void fill_strokes(const std::vector<Stroke_Path>& paths, const Stroke_Pen& pen, const VT_Int_Rectangle& rectangle,
                  const std::function<void(const Stroke_Run&)>& draw);

} // namespace vorna

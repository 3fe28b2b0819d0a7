// What the benchmark draws besides triangles: lines, circles, an image or polylines, the same for the renderer and for its peers.
#pragma once

#include <cstdint>
#include <vector>

#include "bench/scene.h"

namespace bench {

struct Lines {
    std::vector<VT_DCI_Point> points; // two a line
    std::vector<VT_RGB32> colors;     // one a point; drawn flat, a line takes that of its first
};

struct Circles {
    bool filled;
    std::vector<VT_DCI_Point> centers;
    std::vector<std::int32_t> radii; // one a circle, as are the colours
    std::vector<VT_RGB32> colors;
};

// Drawn once, with its lowest left pixel at the place.
struct Image {
    VT_Int_Pair size, place;
    std::vector<VT_RGB32> pixels; // highest row first
    // What a row takes of the pixels.
    const VT_RGB32* row(std::int32_t from_top) const noexcept { return pixels.data() + std::ptrdiff_t{from_top} * size.x; }
};

// Drawn in one colour, for the renderer only.
struct Polylines {
    std::vector<VT_DCI_Point> points; // polyline after polyline
    std::vector<std::int32_t> lengths;
    bool dashed; // else plain
};

// Lines of about that length at random places, in random directions, colours and depths, at least two pixels from the window's
// edge. A smaller count gives the first ones of a larger.
Lines scattered_lines(std::int32_t length, std::int32_t count, const Variation& variation = {}, VT_Int_Pair window = window_size);

// Circles at random places inside the window, in random opaque colours.
Circles scattered_circles(std::int32_t radius, bool filled, std::int32_t count, const Variation& variation = {},
                          VT_Int_Pair window = window_size);

// An image of random colours with alphas between a quarter and three quarters, or opaque; varied, at another place.
Image noise_image(VT_Int_Pair size, bool translucent, const Variation& variation = {});

// The lengths in pixels that a dashed line is drawn and left out for.
inline constexpr double dash_length = 7, gap_length = 5;

// One random polyline of so many points, 10 to 30 pixels apart.
Polylines wandering_polyline(std::int32_t count, bool dashed);
// The dashes of a dashed one: the pattern runs on over the corners, where it cuts a dash in two.
Polylines dashes_of(const Polylines& polyline);

// Corners of a polygon with the circle's area, no more than a quarter of a pixel from it. radius: in pixels.
std::vector<VT_Point> polygon_round(double radius);

} // namespace bench

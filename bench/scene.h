// What the benchmarks draw: strips of device points, the same for the renderer and for its peer, or one polygon.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/random.h"
#include "host/color.h"
#include "host/geometry.h"

namespace bench {

inline constexpr VT_Int_Pair window_size{1920, 1080};

// Sides of the texture that textured scenes are drawn with.
inline constexpr std::int32_t texture_side = 256;

// Texels of random opaque colours, row after row.
std::vector<VT_RGB32> noise_texels();

// Texture coordinates of a point; the texture's highest row comes first in memory.
struct Texture_Point {
    VT_Parameter u, v;
};

struct Strip {
    std::int32_t length;
    const VT_DCI_Point* points;
    const VT_RGB32* colors;
    const Texture_Point* texture_points; // null = not for texturing
};

struct Scene {
    std::vector<VT_DCI_Point> points; // strip after strip
    std::vector<VT_RGB32> colors;     // one a point; drawn flat, a triangle takes the colour of its third point
    std::vector<std::int32_t> lengths;
    std::vector<Texture_Point> texture_points{}; // one a point, or none
    std::vector<VT_Point> polygon{};             // drawn after the strips; empty = none

    // Those that the polygon is cut into included.
    std::int64_t triangle_count() const noexcept;
    // Of the strips' triangles, in pixels.
    double area() const noexcept;
    // Calls visit(strip) for every strip.
    template <class Visitor> void for_each_strip(Visitor&& visit) const {
        std::size_t first = 0;
        for (const std::int32_t length : lengths) {
            visit(Strip{length, points.data() + first, colors.data() + first,
                        texture_points.empty() ? nullptr : texture_points.data() + first});
            first += static_cast<std::size_t>(length);
        }
    }
};

// Right triangles with legs of so many pixels, each a strip of its own, at random places and places of the texture. Their depths
// are random too, but come nearer from triangle to triangle, so that with 200 of 512 pixels half of the pixels pass the test.
Scene scattered_triangles(std::int32_t legs, std::int32_t count, const Variation& variation = {},
                          VT_Int_Pair window = window_size);

// The window tiled with right triangles in strips, so many layers deep, with random depths.
Scene tiled_triangles(std::int32_t legs, std::int32_t layers, const Variation& variation = {});

enum class Layer_Order { front_first, back_first, shuffled };

// The same, but every layer has depths of its own, nearer or farther than all of another layer's, and layers come in that order;
// shuffled, the strips of all layers do.
Scene layered_triangles(std::int32_t legs, std::int32_t layers, Layer_Order order, const Variation& variation = {});

// One strip of so many points, 10 pixels high, along the rows of the window and back to its beginning.
Scene long_strip(std::int32_t count);

// A jagged star that fills the window's height, its corners alternating between random distances from the centre.
Scene jagged_star(std::int32_t count);

// A circle around the window's centre.
struct Circle {
    std::int32_t radius;

    bool contains(std::int32_t column, std::int32_t row) const noexcept;
    // So many points along it.
    std::vector<VT_Point> outline(std::int32_t count) const;
};

} // namespace bench

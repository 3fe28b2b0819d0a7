// What the benchmarks draw: strips of device points, the same for the renderer and for its peer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "renderer/host/color.h"
#include "renderer/host/geometry.h"

namespace bench {

inline constexpr VT_Int_Pair window_size{1920, 1080};

struct Scene {
    std::vector<VT_DCI_Point> points; // strip after strip
    std::vector<VT_RGB32> colors;     // one a point; drawn flat, a triangle takes the colour of its third point
    std::vector<std::int32_t> lengths;

    std::int64_t triangle_count() const noexcept;
    // Calls visit(length, points, colors) for every strip.
    template <class Visitor> void for_each_strip(Visitor&& visit) const {
        std::size_t first = 0;
        for (const std::int32_t length : lengths) {
            visit(length, points.data() + first, colors.data() + first);
            first += static_cast<std::size_t>(length);
        }
    }
};

// Right triangles with legs of so many pixels, each a strip of its own, at random places and depths.
Scene scattered_triangles(std::int32_t legs, std::int32_t count);

// The window tiled with right triangles in strips, so many layers deep, with random depths.
Scene tiled_triangles(std::int32_t legs, std::int32_t layers);

// A model file as a camera in front of it sees it, lit, filling the window's height. Throws std::runtime_error.
Scene model_in_front(const std::string& file);

} // namespace bench

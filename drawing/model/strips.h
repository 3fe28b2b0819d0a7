// Triangles joined into strips: triangle k of a strip is its vertices k, k + 1 and k + 2, whatever their orientation.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "drawing/files/long_list.h"

namespace vorna::drawing::model {

struct Strips {
    Long_List<std::uint32_t> vertices; // strip after strip
    Long_List<std::uint32_t> starts;   // of each strip in vertices, and the end of the last one
    Long_List<std::uint32_t>
        triangle_order; // the triangle behind each place k of vertices; the last two places of a strip have none

    std::size_t count() const noexcept { return starts.size() - 1; }
};

inline constexpr std::uint32_t no_triangle = 0xFFFFFFFF;

// Every triangle exactly once. triangles: three different vertices below vertex_count each.
// The strips do not depend on the number of threads. Half of the time goes into a walk through the mesh on one thread; beside, if
// there is any, is called meanwhile on another one.
Strips make_strips(std::span<const std::uint32_t> triangles, std::uint32_t vertex_count, unsigned threads = 1,
                   const std::function<void()>& beside = {});

// Every triangle is a strip by itself, in the order given. triangles: three different vertices each.
Strips single_strips(std::span<const std::uint32_t> triangles);

} // namespace vorna::drawing::model

// Borders of faces: each segment once, also where faces share it.
#pragma once

#include <cstddef>
#include <vector>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

struct Border {
    Path path;         // closed when its ends are equal
    std::size_t shape; // the first shape whose face it bounds
    bool shared;       // by two faces, of one shape or of two
};

struct Borders {
    std::vector<Border> lines;
    std::vector<std::vector<std::size_t>> neighbours; // by shape: the shapes that share a segment with it, each once
};

// The borders of outlined shapes. around_globe: without the cuts of faces along the antimeridian and at the poles.
Borders find_borders(const std::vector<Shape>& shapes, bool around_globe);

// The number of segments of rings, and the cost of find_borders for each: bytes, and steps of Load_Limits.
std::size_t count_stretches(const std::vector<Shape>& shapes);
inline constexpr std::size_t stretch_memory = 116, stretch_steps = 20;

// Colours the graph of neighbours in smallest-last order (Matula and Beck): a number from 0 to count - 1 for each shape,
// different from those of its neighbours, the least used one that is free. Six are enough for shapes of one piece each; a shape
// whose neighbours have all numbers takes the least used one.
std::vector<std::size_t> numbers_unlike_neighbours(const std::vector<std::vector<std::size_t>>& neighbours, std::size_t count);

} // namespace vorna::drawing::map

// Borders of faces: each stretch once, however many faces share it.
#pragma once

#include <cstddef>
#include <vector>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

struct Border {
    Path path;         // a closed one ends where it began
    std::size_t shape; // whose face it bounds first
    bool shared;       // by two faces of different shapes, or of one
};

struct Borders {
    std::vector<Border> lines;
    std::vector<std::vector<std::size_t>> neighbours; // by shape: those with a common stretch, each once
};

// The borders of outlined shapes. around_globe: leave out where a face is only cut off, along the antimeridian and at the poles.
Borders find_borders(const std::vector<Shape>& shapes, bool around_globe);

// How many stretches of rings these are, and what find_borders takes for each: bytes, and steps of Load_Limits.
std::size_t count_stretches(const std::vector<Shape>& shapes);
inline constexpr std::size_t stretch_memory = 112, stretch_steps = 20;

// A number for each shape, other than those of its neighbours, from 0 to count - 1; the least used one that is free. Six are
// enough for shapes of one piece each; where a shape has neighbours with all numbers, it takes the least used of all.
// Smallest-last order (Matula and Beck).
std::vector<std::size_t> numbers_unlike_neighbours(const std::vector<std::vector<std::size_t>>& neighbours, std::size_t count);

} // namespace vorna::drawing::map

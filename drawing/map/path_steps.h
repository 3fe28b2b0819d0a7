// Paths on a globe with positions added so that straight pieces follow its curves.
#pragma once

#include <numbers>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

constexpr double degree = std::numbers::pi / 180; // in radians
constexpr double longest_step = 0.5;              // degrees between two positions of a curve

// The position at a fraction `part` of the way from a to b.
Position between(Position a, Position b, double part);

// The two ends of a segment in an order that does not depend on the direction of the path: neighbours compute the same positions
// along a common border, to the last bit.
struct Stretch {
    Position low, high;
};
Stretch stretch(Position a, Position b);
// The same the shorter way around the globe: a segment over the antimeridian goes on beyond 180 degrees.
Stretch shortest_stretch(Position a, Position b);

// The path with positions added where two are farther apart than longest_step; closed: also between the last and the first.
Path with_steps(const Path& path, bool closed, Stretch stretch_of(Position, Position) = stretch);

} // namespace vorna::drawing::map

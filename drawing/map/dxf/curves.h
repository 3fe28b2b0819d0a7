// Curves of drawings as paths.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map::dxf {

// An arc of an ellipse, center + major cos t + minor sin t, from one angle to another; clockwise when the second is smaller.
// Positions are at most a degree apart.
void add_arc(Position center, Position major, Position minor, double from, double to, Path& path);

// Adds the arc between two positions without the second. bulge: the tangent of a quarter of the arc's angle, positive when the
// arc lies to the right of the direction.
void add_bulge(Position from, Position to, double bulge, Path& path);

// A rational spline of pieces of polynomials. knots: points + degree + 1 or more numbers that do not decrease. weights: one for
// each point, or none.
struct Spline {
    std::size_t degree = 3;
    std::vector<double> knots, weights;
    Path points;

    bool is_whole() const;
    std::uint64_t work() const; // steps of Load_Limits
    std::size_t position_count() const;
    void add_to(Path& path) const;

private:
    std::size_t steps() const; // of each piece
    Position at(std::size_t span, double t) const;
};

inline constexpr std::size_t highest_degree = 32;

// A smooth curve through the points.
void add_fitted_curve(const Path& points, bool closed, Path& path);
inline constexpr std::size_t fitted_steps = 12; // positions for each point

} // namespace vorna::drawing::map::dxf

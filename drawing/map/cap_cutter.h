// Cuts paths at the circle that bounds the part of the globe around a projection's centre.
#pragma once

#include <vector>

#include "drawing/map/projection.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

class Cap_Cutter {
public:
    explicit Cap_Cutter(const Domain::Cap& cap);

    bool contains(Position p) const { return height(p) >= 0; }
    // The part of a ring inside, closed along the circle.
    Path ring(const Path& ring) const;
    // The parts of a line inside; some may be empty.
    std::vector<Path> line(const Path& line) const;
    Path outline() const;

private:
    // The distance above the circle's plane along the axis through the centre, in radii of the globe: positive inside.
    double height(Position p) const;
    Position crossing(Position a, Position b) const;
    // The direction from the centre in radians, from north clockwise.
    double bearing(Position p) const;
    Position on_circle(double bearing) const;
    // Adds positions along the circle, the shorter way; both ends are left out.
    void add_arc(Position from, Position to, Path& path) const;

    Domain::Cap cap_;
    double limit_;
};

} // namespace vorna::drawing::map

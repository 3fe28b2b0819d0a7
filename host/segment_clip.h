// The visible part of a segment, by the method of Liang and Barsky.
#pragma once

#include "host/geometry.h"

namespace vorna {

// A part of the line start + t * direction: t from `entering` to `leaving`, and the sides at which the part begins and ends.
struct Segment_Part {
    static constexpr int no_side = 4;

    double entering = 0, leaving = 1;
    int entry_side = no_side, exit_side = no_side;
    bool exists = true;

    // Cuts at one side. speed: growth per unit of t of the distance beyond the side; distance: how far inside the start lies.
    constexpr void cut_at(int side, double speed, double distance) noexcept {
        if (speed == 0) {
            exists = exists && distance >= 0;
        } else if (const double parameter = distance / speed; speed < 0) {
            if (parameter > entering) {
                entering = parameter;
                entry_side = side;
            }
        } else if (parameter < leaving) {
            leaving = parameter;
            exit_side = side;
        }
    }
    // Keeps the part where the coordinate start + t * speed lies in [low, high].
    constexpr void cut_between(double start, double speed, double low, double high) noexcept {
        cut_at(no_side, -speed, start - low);
        cut_at(no_side, speed, high - start);
    }
    // tolerance: by how much `entering` may exceed `leaving`.
    constexpr bool is_visible(double tolerance = 0) const noexcept { return exists && entering <= leaving + tolerance; }
};

// The part of start + t * direction, t from 0 to `leaving`, whose x and y lie at most margin beyond the rectangle's pixel
// centres.
template <class Place, class Direction>
constexpr Segment_Part part_near(const VT_Int_Rectangle& rectangle, double margin, const Place& start, const Direction& direction,
                                 double leaving = 1) noexcept {
    Segment_Part part{.leaving = leaving};
    part.cut_between(start.x, direction.x, rectangle.left - margin, rectangle.right + margin);
    part.cut_between(start.y, direction.y, rectangle.bottom - margin, rectangle.top + margin);
    return part;
}

} // namespace vorna

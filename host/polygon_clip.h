// Polygons cut at one side, by the method of Sutherland and Hodgman.
#pragma once

#include <cstddef>

namespace vorna {

// Cuts a closed polygon at one side. distance(corner): above 0 inside, 0 on the side, below 0 outside.
// crossing(from, distance of from, to, distance of to): the corner where an edge crosses the side. keep(corner) receives the
// corners of the part inside, in their order.
//
// An edge crosses only between distances of opposite signs: a corner on the side stays as it is and gets no second corner in the
// same place. Where a polygon falls into several parts, edges along the side join them back and forth; an even-odd fill does not
// show these.
template <class Polygon, class Distance, class Crossing, class Keep>
constexpr void clip_polygon_at_side(const Polygon& polygon, std::size_t count, Distance distance, Crossing crossing, Keep keep) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto& from = polygon[i];
        const auto& to = polygon[i + 1 < count ? i + 1 : 0];
        const double here = distance(from);
        const double there = distance(to);
        if (here >= 0) {
            keep(from);
        }
        if ((here < 0 && there > 0) || (here > 0 && there < 0)) {
            keep(crossing(from, here, to, there));
        }
    }
}

} // namespace vorna

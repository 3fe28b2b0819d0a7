// The box around the places of a model, and where it lies when the model fits the unit sphere.
#pragma once

#include <algorithm>
#include <limits>

#include "drawing/model/vectors.h"
#include "host/geometry.h"

namespace vorna::drawing::model {

// Of equal values the first one stays, so that parts joined in order have the bounds of the whole, to the sign of a zero.
struct Bounds {
    static constexpr double infinity = std::numeric_limits<double>::infinity();

    VT_Vector_D low{infinity, infinity, infinity}, high{-infinity, -infinity, -infinity};

    void add(const VT_Vector_D& p) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    void add(const Bounds& other) {
        if (!other.is_empty()) { // whose low is infinite and would become high
            add(other.low);
            add(other.high);
        }
    }
    bool is_empty() const noexcept { return low.x > high.x; }
    // Of the sphere around the box. The radius is 0 for a single place.
    VT_Vector_D center() const noexcept { return (low + high) * 0.5; }
    double radius() const noexcept { return length(high - low) * 0.5; }
};

// A place of a file in the unit sphere.
inline VT_Vector place_in_unit_sphere(const VT_Vector& place, const VT_Vector_D& center, double radius) noexcept {
    return narrowed((widened(place) - center) * (1 / radius));
}

} // namespace vorna::drawing::model

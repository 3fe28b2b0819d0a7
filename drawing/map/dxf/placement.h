// From an entity's coordinates to the drawing's.
#pragma once

#include <cmath>
#include <numbers>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map::dxf {

inline constexpr double degree = std::numbers::pi / 180;

// x · p.x + y · p.y + origin.
struct Placement {
    Position x{1, 0}, y{0, 1}, origin{};

    Position operator()(Position p) const { return {x.x * p.x + y.x * p.y + origin.x, x.y * p.x + y.y * p.y + origin.y}; }
    Placement operator*(const Placement& inner) const {
        const Position o = (*this)(inner.origin), e = (*this)({inner.origin.x + inner.x.x, inner.origin.y + inner.x.y}),
                       f = (*this)({inner.origin.x + inner.y.x, inner.origin.y + inner.y.y});
        return {{e.x - o.x, e.y - o.y}, {f.x - o.x, f.y - o.y}, o};
    }
    // The factor of lengths, averaged over directions.
    double scale() const { return std::sqrt(std::abs(x.x * y.y - x.y * y.x)); }

    static Placement turned(double angle, Position origin) {
        const double c = std::cos(angle), s = std::sin(angle);
        return {{c, s}, {-s, c}, origin};
    }
};

} // namespace vorna::drawing::map::dxf

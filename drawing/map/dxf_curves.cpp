// Curves of drawings as paths.
#include "drawing/map/dxf_curves.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vorna::drawing::map::dxf {

void add_arc(Position center, Position major, Position minor, double from, double to, Path& path) {
    const int steps = static_cast<int>(std::clamp(std::ceil(std::abs(to - from) * 180 / std::numbers::pi), 1.0, 720.0));
    for (int i = 0; i <= steps; ++i) {
        const double t = from + (to - from) * i / steps;
        path.push_back(
            {center.x + major.x * std::cos(t) + minor.x * std::sin(t), center.y + major.y * std::cos(t) + minor.y * std::sin(t)});
    }
}

void add_bulge(Position from, Position to, double bulge, Path& path) {
    const double angle = 4 * std::atan(bulge);
    if (angle == 0 || from == to) {
        return;
    }
    // The centre lies on the line through the middle of the chord, to the left of it for arcs below a half circle.
    const double rise = (1 / bulge - bulge) / 4;
    const Position chord{to.x - from.x, to.y - from.y};
    const Position center{(from.x + to.x) / 2 - chord.y * rise, (from.y + to.y) / 2 + chord.x * rise};
    const Position radius{from.x - center.x, from.y - center.y};
    Path arc;
    add_arc(center, radius, {-radius.y, radius.x}, 0, angle, arc);
    path.insert(path.end(), arc.begin() + 1, arc.end() - 1);
}

} // namespace vorna::drawing::map::dxf

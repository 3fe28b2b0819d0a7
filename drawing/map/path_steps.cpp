// Paths on a globe with positions added so that straight pieces follow its curves.
#include "drawing/map/path_steps.h"

#include <algorithm>
#include <cmath>

namespace vorna::drawing::map {

Position between(Position a, Position b, double part) {
    return {a.x + (b.x - a.x) * part, a.y + (b.y - a.y) * part};
}

Stretch stretch(Position a, Position b) {
    const auto [low, high] = std::minmax(a, b);
    return {low, high};
}

Stretch shortest_stretch(Position a, Position b) {
    if (std::abs(a.x - b.x) > 180) {
        (a.x < b.x ? a : b).x += 360;
    }
    return stretch(a, b);
}

Path with_steps(const Path& path, bool closed, Stretch stretch_of(Position, Position)) {
    Path result;
    result.reserve(path.size());
    for (std::size_t i = 0; i < path.size(); ++i) {
        result.push_back(path[i]);
        if (i + 1 == path.size() && !closed) {
            break;
        }
        const auto [low, high] = stretch_of(path[i], path[(i + 1) % path.size()]);
        const double span = std::max(high.x - low.x, std::abs(high.y - low.y));
        const auto steps = static_cast<int>(std::ceil(span / longest_step));
        const bool upwards = std::remainder(path[i].x - low.x, 360) == 0 && path[i].y == low.y;
        for (int s = 1; s < steps; ++s) {
            result.push_back(between(low, high, static_cast<double>(upwards ? s : steps - s) / steps));
        }
    }
    return result;
}

} // namespace vorna::drawing::map

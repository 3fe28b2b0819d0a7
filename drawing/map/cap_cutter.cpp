// Cuts paths at the circle that bounds the part of the globe around a projection's centre.
#include "drawing/map/cap_cutter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "drawing/map/path_steps.h"

namespace vorna::drawing::map {

Cap_Cutter::Cap_Cutter(const Domain::Cap& cap) : cap_(cap), limit_(std::cos(cap.radius * degree)) {
}

Path Cap_Cutter::ring(const Path& ring) const {
    const Path path = with_steps(ring, true, shortest_stretch);
    Path kept;
    std::optional<Position> left; // where the ring leaves the cap
    std::optional<Position> entered_first;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const Position& from = path[i];
        const Position& to = path[(i + 1) % path.size()];
        const double here = height(from), there = height(to);
        if (here >= 0) {
            kept.push_back(from);
        }
        if ((here < 0) == (there < 0)) {
            continue;
        }
        const Position p = crossing(from, to);
        if (there >= 0) {
            if (left) {
                add_arc(*left, p, kept);
            } else {
                entered_first = p;
            }
        }
        left = here >= 0 ? std::optional(p) : std::nullopt;
        kept.push_back(p);
    }
    if (left && entered_first) {
        add_arc(*left, *entered_first, kept);
    }
    return kept;
}

std::vector<Path> Cap_Cutter::line(const Path& line) const {
    const Path path = with_steps(line, false, shortest_stretch);
    std::vector<Path> pieces(1);
    for (std::size_t i = 0; i < path.size(); ++i) {
        const double here = height(path[i]), before = i > 0 ? height(path[i - 1]) : here;
        if ((here < 0) != (before < 0)) {
            pieces.back().push_back(crossing(path[i - 1], path[i]));
        }
        if (here >= 0) {
            pieces.back().push_back(path[i]);
        } else if (!pieces.back().empty()) {
            pieces.emplace_back();
        }
    }
    return pieces;
}

Path Cap_Cutter::outline() const {
    Path circle;
    for (double angle = 0; angle < 360; angle += longest_step) {
        circle.push_back(on_circle(angle * degree));
    }
    return circle;
}

double Cap_Cutter::height(Position p) const {
    const double y = p.y * degree, y0 = cap_.center.y * degree;
    return std::sin(y) * std::sin(y0) + std::cos(y) * std::cos(y0) * std::cos((p.x - cap_.center.x) * degree) - limit_;
}

Position Cap_Cutter::crossing(Position a, Position b) const {
    const auto [low, high] = shortest_stretch(a, b);
    const double first = height(low), last = height(high);
    return between(low, high, first / (first - last));
}

double Cap_Cutter::bearing(Position p) const {
    const double y = p.y * degree, y0 = cap_.center.y * degree, x = (p.x - cap_.center.x) * degree;
    return std::atan2(std::sin(x) * std::cos(y), std::cos(y0) * std::sin(y) - std::sin(y0) * std::cos(y) * std::cos(x));
}

Position Cap_Cutter::on_circle(double bearing) const {
    const double y0 = cap_.center.y * degree, radius = cap_.radius * degree;
    const double sine = std::sin(y0) * std::cos(radius) + std::cos(y0) * std::sin(radius) * std::cos(bearing);
    const double x = std::atan2(std::sin(bearing) * std::sin(radius),
                                std::cos(y0) * std::cos(radius) - std::sin(y0) * std::sin(radius) * std::cos(bearing));
    return {cap_.center.x + x / degree, std::asin(std::clamp(sine, -1.0, 1.0)) / degree};
}

void Cap_Cutter::add_arc(Position from, Position to, Path& path) const {
    const double start = bearing(from), turn = std::remainder(bearing(to) - start, 2 * std::numbers::pi);
    const int steps = static_cast<int>(std::abs(turn) / degree / longest_step) + 1;
    for (int s = 1; s < steps; ++s) {
        path.push_back(on_circle(start + turn * s / steps));
    }
}

} // namespace vorna::drawing::map

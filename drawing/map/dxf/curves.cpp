// Curves of drawings as paths.
#include "drawing/map/dxf/curves.h"

#include <algorithm>
#include <array>
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

bool Spline::is_whole() const {
    return degree > 0 && degree <= highest_degree && points.size() > degree && knots.size() >= points.size() + degree + 1 &&
           (weights.empty() || weights.size() == points.size()) && std::ranges::is_sorted(knots);
}

std::size_t Spline::steps() const {
    return degree == 1 ? 1 : std::clamp<std::size_t>(360 / (points.size() - degree), 8, 48);
}

std::uint64_t Spline::work() const {
    return (points.size() - degree) * steps() * (degree + 1) * (degree + 1);
}

std::size_t Spline::position_count() const {
    return (points.size() - degree) * steps() + 1;
}

void Spline::add_to(Path& path) const {
    for (std::size_t span = degree; span < points.size(); ++span) {
        const double from = knots[span], to = knots[span + 1];
        if (!(from < to)) {
            continue;
        }
        for (std::size_t i = path.empty() || span == degree ? 0 : 1; i <= steps(); ++i) {
            path.push_back(at(span, from + (to - from) * static_cast<double>(i) / static_cast<double>(steps())));
        }
    }
}

// De Boor's algorithm on points that are multiplied by their weights.
Position Spline::at(std::size_t span, double t) const {
    struct Weighted {
        double x, y, w;
    };
    std::array<Weighted, highest_degree + 1> d;
    for (std::size_t i = 0; i <= degree; ++i) {
        const std::size_t point = span - degree + i;
        const double w = weights.empty() ? 1 : weights[point];
        d[i] = {points[point].x * w, points[point].y * w, w};
    }
    for (std::size_t r = 1; r <= degree; ++r) {
        for (std::size_t i = degree; i >= r; --i) {
            const double low = knots[span - degree + i], high = knots[span + 1 + i - r];
            const double share = high > low ? (t - low) / (high - low) : 0, rest = 1 - share;
            d[i] = {rest * d[i - 1].x + share * d[i].x, rest * d[i - 1].y + share * d[i].y, rest * d[i - 1].w + share * d[i].w};
        }
    }
    const Weighted& point = d[degree];
    return {point.x / point.w, point.y / point.w};
}

// Tangents are parallel to the line between the neighbours of a point.
void add_fitted_curve(const Path& points, bool closed, Path& path) {
    const std::size_t size = points.size(), pieces = closed ? size : size - 1;
    const auto point = [&](std::size_t i) { return closed ? points[i % size] : points[std::clamp<std::size_t>(i, 1, size) - 1]; };
    for (std::size_t i = 0; size > 1 && i < pieces; ++i) {
        const std::size_t before = closed ? i + size - 1 : i, shift = closed ? 0 : 1;
        const Position a = point(before), b = point(i + shift), c = point(i + shift + 1), d = point(i + shift + 2);
        for (std::size_t step = path.empty() ? 0 : 1; step <= fitted_steps; ++step) {
            const double t = static_cast<double>(step) / fitted_steps;
            const auto value = [t](double p, double q, double r, double s) {
                return q + t / 2 * (r - p + t * (2 * p - 5 * q + 4 * r - s + t * (3 * (q - r) + s - p)));
            };
            path.push_back({value(a.x, b.x, c.x, d.x), value(a.y, b.y, c.y, d.y)});
        }
    }
}

} // namespace vorna::drawing::map::dxf

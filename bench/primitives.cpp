#include "bench/primitives.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "bench/random.h"

namespace bench {

namespace {

constexpr std::int32_t edge = 2; // pixels between the window's edge and what is drawn, for the fringes of smoothed lines

bool is_inside(VT_DCI_Point point) {
    return point.x >= edge && point.x < window_size.x - edge && point.y >= edge && point.y < window_size.y - edge;
}

VT_DCI_Point random_place(Random& random) {
    return {edge + random.below(window_size.x - 2 * edge), edge + random.below(window_size.y - 2 * edge), random.depth()};
}

// A place at that distance in a random direction.
VT_DCI_Point away_from(VT_DCI_Point point, double distance, Random& random) {
    const double angle = 2 * std::numbers::pi * random.below(1 << 20) / (1 << 20);
    return {point.x + static_cast<std::int32_t>(std::lround(distance * std::cos(angle))),
            point.y + static_cast<std::int32_t>(std::lround(distance * std::sin(angle))), random.depth()};
}

} // namespace

Lines scattered_lines(std::int32_t length, std::int32_t count) {
    Random random;
    Lines lines;
    while (lines.points.size() < 2 * static_cast<std::size_t>(count)) {
        const VT_DCI_Point from = random_place(random), to = away_from(from, length, random);
        if (is_inside(to)) {
            lines.points.insert(lines.points.end(), {from, to});
            lines.colors.insert(lines.colors.end(), {random.opaque_color(), random.opaque_color()});
        }
    }
    return lines;
}

Circles scattered_circles(std::int32_t radius, bool filled, std::int32_t count) {
    Random random;
    Circles circles{radius, filled, {}, {}};
    const auto place = [&](std::int32_t size) { return edge + radius + random.below(size - 2 * (edge + radius)); };
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int32_t x = place(window_size.x);
        circles.centers.push_back({x, place(window_size.y), 0});
        circles.colors.push_back(random.opaque_color());
    }
    return circles;
}

Image noise_image(VT_Int_Pair size, bool translucent) {
    Random random;
    Image image{size, {100, 100}, {}};
    for (std::int32_t i = 0; i < size.x * size.y; ++i) {
        image.pixels.push_back(translucent ? random.color() : random.opaque_color());
    }
    return image;
}

Polylines wandering_polyline(std::int32_t count, bool dashed) {
    Random random;
    Polylines polyline{{random_place(random)}, {count}, dashed};
    polyline.points[0].z = 0;
    while (polyline.points.size() < static_cast<std::size_t>(count)) {
        VT_DCI_Point next = away_from(polyline.points.back(), 10 + random.below(21), random);
        next.z = 0; // or the pattern would run along the depth
        if (is_inside(next)) {
            polyline.points.push_back(next);
        }
    }
    return polyline;
}

Polylines dashes_of(const Polylines& polyline) {
    Polylines dashes{{}, {}, false};
    double left = dash_length; // of the dash or gap
    bool drawn = true;
    for (std::size_t i = 1; i < polyline.points.size(); ++i) {
        const VT_DCI_Point from = polyline.points[i - 1], to = polyline.points[i];
        const double length = std::hypot(to.x - from.x, to.y - from.y);
        const auto at = [&](double distance) -> VT_DCI_Point {
            return {static_cast<std::int32_t>(from.x + (to.x - from.x) * distance / length),
                    static_cast<std::int32_t>(from.y + (to.y - from.y) * distance / length), 0};
        };
        for (double covered = 0; covered < length;) {
            const double advance = std::min(left, length - covered);
            if (drawn) {
                dashes.points.insert(dashes.points.end(), {at(covered), at(covered + advance)});
                dashes.lengths.push_back(2);
            }
            covered += advance;
            left -= advance;
            if (left <= 0) {
                drawn = !drawn;
                left = drawn ? dash_length : gap_length;
            }
        }
    }
    return dashes;
}

std::vector<VT_Point> polygon_round(double radius) {
    const double corners = std::ceil(std::numbers::pi / std::sqrt(0.5 / radius));
    const double angle = 2 * std::numbers::pi / corners;
    const double distance = radius * std::sqrt(angle / std::sin(angle));
    std::vector<VT_Point> polygon;
    for (double i = 0; i < corners; ++i) {
        polygon.push_back(
            {static_cast<float>(distance * std::cos(i * angle)), static_cast<float>(distance * std::sin(i * angle)), 0});
    }
    return polygon;
}

} // namespace bench

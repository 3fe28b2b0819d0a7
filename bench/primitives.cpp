#include "bench/primitives.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace bench {

namespace {

constexpr std::int32_t edge = 2; // pixels between the window's edge and what is drawn, for the fringes of smoothed lines

bool is_inside(VT_DCI_Point point, VT_Int_Pair window = window_size) {
    return point.x >= edge && point.x < window.x - edge && point.y >= edge && point.y < window.y - edge;
}

VT_DCI_Point random_place(Random& random, VT_Int_Pair window = window_size) {
    return {edge + random.below(window.x - 2 * edge), edge + random.below(window.y - 2 * edge), random.depth()};
}

// A place at that distance in a random direction.
VT_DCI_Point away_from(VT_DCI_Point point, double distance, Random& random) {
    const double angle = 2 * std::numbers::pi * random.below(1 << 20) / (1 << 20);
    return {point.x + static_cast<std::int32_t>(std::lround(distance * std::cos(angle))),
            point.y + static_cast<std::int32_t>(std::lround(distance * std::sin(angle))), random.depth()};
}

} // namespace

Lines scattered_lines(std::int32_t length, std::int32_t count, const Variation& variation, VT_Int_Pair window) {
    Random random(variation);
    Lines lines;
    while (lines.points.size() < 2 * static_cast<std::size_t>(count)) {
        const VT_DCI_Point from = random_place(random, window), to = away_from(from, random.varied(length), random);
        if (is_inside(to, window)) {
            lines.points.insert(lines.points.end(), {from, to});
            lines.colors.insert(lines.colors.end(), {random.opaque_color(), random.opaque_color()});
        }
    }
    return lines;
}

Circles scattered_circles(std::int32_t radius, bool filled, std::int32_t count, const Variation& variation, VT_Int_Pair window) {
    Random random(variation);
    Circles circles{filled, {}, {}, {}};
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int32_t r = random.varied(radius);
        const auto place = [&](std::int32_t size) { return edge + r + random.below(size - 2 * (edge + r)); };
        const std::int32_t x = place(window.x);
        circles.centers.push_back({x, place(window.y), 0});
        circles.radii.push_back(r);
        circles.colors.push_back(random.opaque_color());
    }
    return circles;
}

Image noise_image(VT_Int_Pair size, bool translucent, const Variation& variation) {
    Random random(variation);
    Image image{{random.varied(size.x), random.varied(size.y)}, {random.varied(100), random.varied(60)}, {}};
    for (std::int32_t i = 0; i < image.size.x * image.size.y; ++i) {
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

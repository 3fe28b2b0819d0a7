// What the positions of maps tell about their coordinates.
#include "drawing/map/map_center.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "drawing/map/map_choice.h"

namespace vorna::drawing::map {
namespace {

constexpr double degree = std::numbers::pi / 180;
constexpr double most_north = 90, most_east = 360;

template <class Visit> void for_each_position(std::span<const Map_Sheet> sheets, Visit visit) {
    for (const Map_Sheet& sheet : sheets) {
        for (const Shape& shape : sheet.map().shapes) {
            for_each_path(shape, [&](const Path& path) { std::ranges::for_each(path, visit); });
        }
    }
}

struct Direction {
    double x = 0, y = 0, z = 0;
};

Direction direction_of(Position p) {
    const double across = std::cos(p.y * degree);
    return {across * std::cos(p.x * degree), across * std::sin(p.x * degree), std::sin(p.y * degree)};
}

// The direction of the sum of all positions, if all lie within 90 degrees of it.
std::optional<Position> middle_of_cap(std::span<const Map_Sheet> sheets) {
    Direction sum;
    for_each_position(sheets, [&](Position p) {
        const Direction d = direction_of(p);
        sum = {sum.x + d.x, sum.y + d.y, sum.z + d.z};
    });
    bool is_within = true;
    for_each_position(sheets, [&](Position p) {
        const Direction d = direction_of(p);
        is_within = is_within && d.x * sum.x + d.y * sum.y + d.z * sum.z > 0;
    });
    const double across = std::hypot(sum.x, sum.y);
    // Whole degrees do not depend on the last bit of a sum.
    return is_within && (across > 0 || sum.z != 0) ? std::optional(Position{std::round(std::atan2(sum.y, sum.x) / degree),
                                                                            std::round(std::atan2(sum.z, across) / degree)})
                                                   : std::nullopt;
}

std::optional<Position> middle_across_antimeridian(std::span<const Map_Sheet> sheets) {
    constexpr std::size_t least_gap = 180;
    Longitudes longitudes;
    for_each_position(sheets, [&](Position p) { longitudes.add(p.x); });
    return longitudes.middle(least_gap);
}

} // namespace

Coordinate_Kind coordinate_kind(std::span<const Map_Sheet> sheets) {
    std::size_t count = 0, outside = 0;
    double farthest = 0;
    for (const Map_Sheet& sheet : sheets) {
        if (!std::ranges::all_of(sheet.map().layers,
                                 [](const Layer_Facts& layer) { return layer.system.empty() && layer.refusal.empty(); })) {
            return Coordinate_Kind::degrees;
        }
    }
    for_each_position(sheets, [&](Position p) {
        ++count;
        outside += std::abs(p.x) > most_east || std::abs(p.y) > most_north ? 1U : 0U;
        farthest = std::max({farthest, std::abs(p.x), std::abs(p.y)});
    });
    constexpr double largest_picture = 10000;
    return 2 * outside <= count         ? Coordinate_Kind::degrees
           : farthest > largest_picture ? Coordinate_Kind::plane
                                        : Coordinate_Kind::picture;
}

std::optional<Position> automatic_center(std::span<const Map_Sheet> sheets, bool azimuthal) {
    return azimuthal ? middle_of_cap(sheets) : middle_across_antimeridian(sheets);
}

} // namespace vorna::drawing::map

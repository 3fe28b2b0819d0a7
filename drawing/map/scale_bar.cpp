// Scale bars: lengths on the globe as lengths in the image.
#include "drawing/map/scale_bar.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "drawing/map/simple_style.h"

namespace vorna::drawing::map {
namespace {

constexpr double degree = std::numbers::pi / 180;

// A place of the globe with the plane's steps for a step of one degree to the east and to the north.
struct Local_Plane {
    Position degrees, place, east, north;

    double determinant() const { return east.x * north.y - east.y * north.x; }
    // The step in degrees that makes the given step on the plane.
    Position degrees_for(Position step) const {
        return {(step.x * north.y - step.y * north.x) / determinant(), (east.x * step.y - east.y * step.x) / determinant()};
    }
};

std::optional<Local_Plane> local_plane(const Projection& projection, Position degrees) {
    constexpr double step = 1e-4;
    const Domain& domain = *projection.domain();
    const double x = degrees.x + step > domain.center + domain.half_width ? -step : step;
    const double y = degrees.y + step > domain.north ? -step : step;
    const auto here = projection.place_of(degrees), east = projection.place_of({degrees.x + x, degrees.y}),
               north = projection.place_of({degrees.x, degrees.y + y});
    if (!here || !east || !north) {
        return std::nullopt;
    }
    return Local_Plane{
        degrees, *here, {(east->x - here->x) / x, (east->y - here->y) / x}, {(north->x - here->x) / y, (north->y - here->y) / y}};
}

double distance(Position a, Position b) {
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

// The place of the globe that the projection puts there: from the nearest of a grid of places, by Newton's method.
std::optional<Local_Plane> place_on_globe(const Projection& projection, Position wanted, double tolerance) {
    const Domain& domain = *projection.domain();
    constexpr int columns = 72, rows = 36, most_steps = 50;
    std::optional<Position> nearest;
    double least = INFINITY;
    for (int i = 0; i < columns; ++i) {
        for (int j = 0; j < rows; ++j) {
            const Position degrees{domain.center + domain.half_width * ((2 * i + 1.0) / columns - 1),
                                   domain.south + (domain.north - domain.south) * (j + 0.5) / rows};
            const auto place = projection.place_of(degrees);
            if (place && distance(*place, wanted) < least) {
                least = distance(*place, wanted);
                nearest = degrees;
            }
        }
    }
    for (int i = 0; nearest && i < most_steps; ++i) {
        const auto local = local_plane(projection, *nearest);
        if (!local || !(std::abs(local->determinant()) > 0)) {
            return std::nullopt;
        }
        if (distance(local->place, wanted) <= tolerance) {
            return local;
        }
        const Position step = local->degrees_for({wanted.x - local->place.x, wanted.y - local->place.y});
        nearest = Position{std::clamp(nearest->x + std::clamp(step.x, -10.0, 10.0), domain.center - domain.half_width,
                                      domain.center + domain.half_width),
                           std::clamp(nearest->y + std::clamp(step.y, -10.0, 10.0), domain.south, domain.north)};
    }
    return std::nullopt;
}

} // namespace

double metres_per_pixel(const Projection& projection, const View& view) {
    if (!projection.domain()) {
        return 0;
    }
    const auto middle = place_on_globe(projection, view.middle, 0.01 / view.scale);
    if (!middle) {
        return 0;
    }
    const Position step = middle->degrees_for({1 / view.scale, 0});
    // The radii of curvature along the meridian and across it.
    constexpr double equator = 6378137, flattening = 1 / 298.257223563, eccentricity = flattening * (2 - flattening);
    const double latitude = middle->degrees.y * degree, sine = std::sin(latitude);
    const double across = equator / std::sqrt(1 - eccentricity * sine * sine);
    const double along = across * (1 - eccentricity) / (1 - eccentricity * sine * sine);
    const double east = across * std::cos(latitude) * step.x * degree, north = along * step.y * degree;
    const double metres = std::sqrt(east * east + north * north);
    return std::isfinite(metres) ? metres : 0;
}

Scale_Bar scale_bar(double metres_per_pixel, bool in_miles, double most_pixels) {
    constexpr double foot = 0.3048, mile = 1609.344, kilometre = 1000;
    const double most = metres_per_pixel * most_pixels; // metres
    const double large = in_miles ? mile : kilometre, small = in_miles ? foot : 1;
    const double unit = most >= large ? large : small;
    const double power = std::pow(10, std::floor(std::log10(most / unit)));
    double length = power;
    for (const double times : {2, 5}) {
        length = times * power * unit <= most ? times * power : length;
    }
    const char* name = unit == large ? (in_miles ? " mi" : " km") : in_miles ? " ft" : " m";
    return {length * unit / metres_per_pixel, short_text_of(length) + name};
}

} // namespace vorna::drawing::map

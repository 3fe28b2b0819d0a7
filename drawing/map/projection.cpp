// Built-in projections.
#include "drawing/map/projection.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "drawing/files/setting_names.h"

namespace vorna::drawing::map {
namespace {

constexpr double degree = std::numbers::pi / 180;

// The latitude at which the Mercator map of the world is square.
const double mercator_end = std::atan(std::sinh(std::numbers::pi)) / degree;

// The identity.
class Plane final : public Projection {
public:
    Plane() : Projection(std::nullopt, 0, true) {}
    std::optional<Position> place_of(Position p) const override { return p; }
};

class Equirectangular final : public Projection {
public:
    explicit Equirectangular(double center) : Projection(Domain{.center = center, .cap = {}}, globe_radius * degree, true) {}
    std::optional<Position> place_of(Position p) const override { return p; }
};

class Mercator final : public Projection {
public:
    explicit Mercator(double center)
        : Projection(Domain{.center = center, .south = -mercator_end, .north = mercator_end, .cap = {}}, globe_radius * degree) {}
    std::optional<Position> place_of(Position p) const override {
        return Position{p.x, std::asinh(std::tan(p.y * degree)) / degree};
    }
};

// Albers' equal-area projection of a sphere of radius 1.
class Albers {
public:
    // parallels: those without distortion. middle: lies at the origin.
    Albers(double south_parallel, double north_parallel, Position middle)
        : n_((std::sin(south_parallel * degree) + std::sin(north_parallel * degree)) / 2),
          c_(std::pow(std::cos(south_parallel * degree), 2) + 2 * n_ * std::sin(south_parallel * degree)), meridian_(middle.x),
          origin_(radius_at(middle.y)) {}

    Position place_of(Position p) const {
        const double radius = radius_at(p.y), angle = n_ * std::remainder(p.x - meridian_, 360) * degree;
        return {radius * std::sin(angle), origin_ - radius * std::cos(angle)};
    }

private:
    double radius_at(double latitude) const { return std::sqrt(std::max(c_ - 2 * n_ * std::sin(latitude * degree), 0.0)) / n_; }

    double n_, c_, meridian_, origin_;
};

// The United States: Alaska at 0.35 of the scale and Hawaii below the other states. Other places are left out.
class Albers_Usa final : public Projection {
public:
    Albers_Usa() : Projection(Domain{.center = -96, .south = 15, .north = 75, .cap = {}}, globe_radius) {}
    std::optional<Position> place_of(Position p) const override {
        const double east = std::remainder(p.x, 360);
        if (p.y > 50 && (east < -129 || east > 170)) {
            const Position place = alaska_.place_of(p);
            return Position{0.35 * place.x - 0.3, 0.35 * place.y - 0.2};
        }
        if (p.y < 30 && p.y > 18 && east > -179 && east < -153) {
            const Position place = hawaii_.place_of(p);
            return Position{place.x - 0.18, place.y - 0.21};
        }
        return p.y > 24 && p.y < 50 && east > -126 && east < -66 ? std::optional(states_.place_of(p)) : std::nullopt;
    }

private:
    Albers states_{29.5, 45.5, {-96, 38.5}}, alaska_{55, 65, {-154, 60}}, hawaii_{19, 22, {-157.5, 20.5}};
};

} // namespace

std::unique_ptr<Projection> make_projection(const std::string& name, std::optional<Position> center) {
    const double meridian = center ? center->x : 0;
    if (name == "plane") {
        if (center) {
            throw Map_Error(name_of(Setting::center) + ": expected a projection of the globe, found " +
                            name_of(Setting::projection) + " plane");
        }
        return std::make_unique<Plane>();
    }
    if (name == "equirectangular") {
        return std::make_unique<Equirectangular>(meridian);
    }
    if (name == "mercator") {
        return std::make_unique<Mercator>(meridian);
    }
    if (name == "albers-usa") {
        if (center) {
            throw Map_Error(name_of(Setting::center) + ": expected a projection with one centre, found " +
                            name_of(Setting::projection) + " albers-usa");
        }
        return std::make_unique<Albers_Usa>();
    }
    if (std::unique_ptr<Projection> projection = make_proj_projection(name, center)) {
        return projection;
    }
    std::string expected;
    for (const std::string& known : projection_names()) {
        expected += known + ", ";
    }
    expected += proj_projection_names().empty() ? "or with PROJ, which this build is without, another one"
                                                : "a PROJ string or a code as EPSG:3035";
    throw Map_Error(name_of(Setting::projection) + ": expected " + expected + ", found '" + name + "'");
}

bool is_azimuthal(const std::string& name) {
    return name == "orthographic" || name == "equal-area" || name == "equidistant";
}

std::vector<std::string> projection_names() {
    std::vector<std::string> names{"equirectangular", "mercator", "albers-usa", "plane"};
    for (const std::string& name : proj_projection_names()) {
        names.push_back(name);
    }
    return names;
}

} // namespace vorna::drawing::map

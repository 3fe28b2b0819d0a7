// Built-in projections.
#include "drawing/map/projection.h"

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
    Plane() : Projection(std::nullopt, true) {}
    std::optional<Position> place_of(Position p) const override { return p; }
};

class Equirectangular final : public Projection {
public:
    explicit Equirectangular(double center) : Projection(Domain{.center = center, .cap = {}}, true) {}
    std::optional<Position> place_of(Position p) const override { return p; }
};

class Mercator final : public Projection {
public:
    explicit Mercator(double center)
        : Projection(Domain{.center = center, .south = -mercator_end, .north = mercator_end, .cap = {}}) {}
    std::optional<Position> place_of(Position p) const override {
        return Position{p.x, std::asinh(std::tan(p.y * degree)) / degree};
    }
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

std::vector<std::string> projection_names() {
    std::vector<std::string> names{"equirectangular", "mercator", "plane"};
    for (const std::string& name : proj_projection_names()) {
        names.push_back(name);
    }
    return names;
}

} // namespace vorna::drawing::map

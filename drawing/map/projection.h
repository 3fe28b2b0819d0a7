// Map projections and their domains on the globe.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// The part of the globe that a projection shows: between two meridians and two parallels, or around a centre.
struct Domain {
    struct Cap {
        Position center;
        double radius; // degrees, less than 180
    };

    double center = 0;       // meridian in the middle
    double half_width = 180; // degrees to the map's edge
    double south = -90, north = 90;
    std::optional<Cap> cap; // instead of the other members
};

// The mean radius of the globe in metres, which projections with a name of their own use.
inline constexpr double globe_radius = 6371008.8;

class Projection {
public:
    virtual ~Projection() = default;
    // The position on the map; empty where the projection is undefined. Longitudes must lie in the domain.
    virtual std::optional<Position> place_of(Position degrees) const = 0;

    const std::optional<Domain>& domain() const noexcept { return domain_; } // empty: coordinates of a plane
    bool keeps_straight() const noexcept { return keeps_straight_; }         // straight lines stay straight
    double unit_metres() const noexcept { return unit_metres_; }             // of the map's plane; 0 = not known

protected:
    explicit Projection(std::optional<Domain> domain, double unit_metres, bool keeps_straight = false)
        : domain_(domain), unit_metres_(unit_metres), keeps_straight_(keeps_straight) {}

private:
    std::optional<Domain> domain_;
    double unit_metres_;
    bool keeps_straight_;
};

// name: equirectangular, mercator or plane; with PROJ also robinson and others, any string that begins with +proj=, and the code
// of a coordinate system such as EPSG:3035. center: longitude and latitude of the centre of named projections; by default the
// equator at the prime meridian. Throws Map_Error.
std::unique_ptr<Projection> make_projection(const std::string& name, std::optional<Position> center);

// Projections of PROJ; null for unknown names.
std::unique_ptr<Projection> make_proj_projection(const std::string& name, std::optional<Position> center);
// The names of PROJ projections; none without PROJ.
std::vector<std::string> proj_projection_names();

// Whether a name is that of a projection around a centre.
bool is_azimuthal(const std::string& name);

// All names that make_projection accepts.
std::vector<std::string> projection_names();

} // namespace vorna::drawing::map

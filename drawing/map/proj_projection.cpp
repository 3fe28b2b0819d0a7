// Projections by PROJ.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numbers>
#include <shared_mutex>
#include <string_view>

#include "drawing/files/fork_gate.h"
#include "drawing/files/setting_names.h"
#include "drawing/map/proj_library.h"
#include "drawing/map/projection.h"

namespace vorna::drawing::map {
namespace {

constexpr double degree = std::numbers::pi / 180;

struct Named_Projection {
    std::string_view name, proj;
};

constexpr std::array named_projections{
    Named_Projection{"robinson", "robin"},      Named_Projection{"natural-earth", "natearth"},
    Named_Projection{"equal-earth", "eqearth"}, Named_Projection{"winkel-tripel", "wintri"},
    Named_Projection{"mollweide", "moll"},      Named_Projection{"sinusoidal", "sinu"},
    Named_Projection{"orthographic", "ortho"},  Named_Projection{"equal-area", "laea"},
    Named_Projection{"equidistant", "aeqd"},
};

// The value of a parameter in a PROJ string, else fallback.
std::string_view parameter(std::string_view text, std::string_view name, std::string_view fallback = "") {
    for (std::size_t start = text.find('+'); start != std::string_view::npos; start = text.find('+', start + 1)) {
        const std::string_view rest = text.substr(start + 1);
        if (rest.starts_with(name) && rest.substr(name.size()).starts_with('=')) {
            return rest.substr(name.size() + 1, rest.find_first_of(" \t", name.size() + 1) - name.size() - 1);
        }
    }
    return fallback;
}

double number(std::string_view text, std::string_view name, double fallback) {
    const std::string_view value = parameter(text, name);
    double result = fallback;
    std::from_chars(value.data(), value.data() + value.size(), result);
    return result;
}

// The domain of a projection, from its PROJ string: azimuthal ones show a part of the globe around their centre, transverse and
// conic ones the part without extreme distortion, the others the globe cut opposite to their central meridian.
Domain domain_of(std::string_view text) {
    const std::string_view kind = parameter(text, "proj");
    Domain domain;
    domain.center = number(text, "lon_0", 0);
    const double latitude = number(text, "lat_0", number(text, "lat_ts", 0) < 0 ? -90 : 0);
    const auto cap = [&](double radius) { domain.cap = Domain::Cap{{domain.center, latitude}, radius}; };
    if (kind == "ortho") {
        cap(89.999);
    } else if (kind == "gnom") {
        cap(70);
    } else if (kind == "stere" || kind == "sterea" || kind == "ups") {
        cap(120);
    } else if (kind == "laea" || kind == "aeqd") {
        cap(179); // beyond, shortest paths on an ellipsoid jump
    } else if (kind == "nsper" || kind == "geos") {
        const double radius = number(text, "R", number(text, "a", 6378137));
        cap(std::acos(radius / (radius + number(text, "h", 35785831))) / degree - 0.001);
    } else if (kind == "utm") {
        domain.center = 6 * number(text, "zone", 31) - 183;
        domain.half_width = 60;
    } else if (kind == "tmerc" || kind == "etmerc") {
        domain.half_width = 60;
    } else if (kind == "lcc" || kind == "aea" || kind == "eqdc") {
        const bool southern = number(text, "lat_1", latitude) < 0;
        (southern ? domain.north : domain.south) = southern ? 60 : -60;
    } else if (kind == "merc" || kind == "webmerc" || kind == "mill") {
        domain.south = -85.0511;
        domain.north = 85.0511;
    }
    return domain;
}

// Metres of a unit of the projection's plane; 0 = not known.
double unit_metres_of(std::string_view text) {
    struct Unit {
        std::string_view name;
        double metres;
    };
    constexpr std::array units{Unit{"m", 1},         Unit{"km", 1000},   Unit{"cm", 0.01},
                               Unit{"mm", 0.001},    Unit{"ft", 0.3048}, Unit{"us-ft", 1200.0 / 3937},
                               Unit{"mi", 1609.344}, Unit{"yd", 0.9144}, Unit{"kmi", 1852}};
    const std::string_view kind = parameter(text, "proj"), name = parameter(text, "units", "m");
    if (kind == "longlat" || kind == "latlong") {
        return globe_radius * degree;
    }
    const auto* const found = std::ranges::find(units, name, &Unit::name);
    return number(text, "to_meter", found == units.end() ? 0 : found->metres);
}

using Context = Proj_Context;
using Handle = Proj_Handle;

class Proj_Projection final : public Projection {
public:
    // text: of PROJ, with the parameters of the domain and the unit.
    Proj_Projection(std::unique_ptr<Context> context, Handle handle, std::string_view text)
        : Projection(domain_of(text), unit_metres_of(text)), context_(std::move(context)), handle_(std::move(handle)),
          takes_radians_(proj().proj_angular_input(handle_.get(), PJ_FWD) != 0), domain_(*domain()) {}

    std::optional<Position> place_of(Position p) const override {
        if (!domain_.cap) {
            // At the edge PROJ may return the other side of the map.
            constexpr double inside = 1 - 1e-12;
            p.x = domain_.center + (p.x - domain_.center) * inside;
        }
        PJ_COORD place{{p.x, p.y, 0, 0}};
        if (takes_radians_) {
            place.lp = {p.x * degree, p.y * degree};
        }
        place = proj().proj_trans(handle_.get(), PJ_FWD, place);
        if (!std::isfinite(place.xy.x) || !std::isfinite(place.xy.y)) {
            return std::nullopt;
        }
        return Position{place.xy.x, place.xy.y};
    }

private:
    std::unique_ptr<Context> context_;
    Handle handle_;
    bool takes_radians_;
    Domain domain_;
};

[[noreturn]] void refuse(const std::string& name, const Context& context) {
    const int error = proj().proj_context_errno(context.handle);
    const std::string reason = error ? proj().proj_context_errno_string(context.handle, error) : "";
    const bool says_something = !reason.empty() && !reason.starts_with("Unknown");
    throw Map_Error(name_of(Setting::projection) + ": PROJ cannot use '" + name + "'" + (says_something ? ": " + reason : ""));
}

// A coordinate system by its code: from longitude and latitude, in this order.
std::unique_ptr<Projection> coordinate_system(const std::string& code) {
    auto context = std::make_unique<Context>();
    PJ_CONTEXT* c = context->handle;
    const Handle target(proj().proj_create(c, code.c_str()));
    Handle handle(target ? proj_from_degrees(*context, code.c_str()) : nullptr);
    const char* text = handle ? proj().proj_as_proj_string(c, target.get(), PJ_PROJ_5, nullptr) : nullptr;
    if (!text) {
        refuse(code, *context);
    }
    const std::string parameters = text; // which live as long as the context's next call
    return std::make_unique<Proj_Projection>(std::move(context), std::move(handle), parameters);
}

std::unique_ptr<Projection> projection_of(const std::string& text) {
    for (const std::string_view interrupted : {"igh", "igh_o", "imoll", "imoll_o", "healpix", "rhealpix", "isea", "s2", "qsc"}) {
        if (parameter(text, "proj") == interrupted) {
            throw Map_Error(name_of(Setting::projection) + ": expected one that cuts the globe open along one meridian, found '" +
                            text + "'");
        }
    }
    auto context = std::make_unique<Context>();
    // Longitudes beyond 180 degrees stay on the side of the map's centre.
    Handle handle(proj().proj_create(context->handle, (text + " +over").c_str()));
    if (!handle || proj().proj_angular_output(handle.get(), PJ_FWD)) {
        refuse(text, *context);
    }
    return std::make_unique<Proj_Projection>(std::move(context), std::move(handle), text);
}

} // namespace

std::unique_ptr<Projection> make_proj_projection(const std::string& name, std::optional<Position> center) {
    const std::shared_lock shared(fork_gate());
    for (const auto& [known, proj] : named_projections) {
        if (name == known) {
            const Position middle = center.value_or(Position{});
            const bool turns = domain_of("+proj=" + std::string(proj)).cap.has_value();
            return projection_of("+proj=" + std::string(proj) + " +R=6371008.8 +lon_0=" + std::to_string(middle.x) +
                                 (turns ? " +lat_0=" + std::to_string(middle.y) : ""));
        }
    }
    const bool code = name.find(':') != std::string::npos;
    if (!code && !name.starts_with("+proj=")) {
        return nullptr;
    }
    if (center) {
        throw Map_Error(name_of(Setting::center) + ": expected a projection with a name of its own, found '" + name +
                        "', which says its middle itself");
    }
    return code ? coordinate_system(name) : projection_of(name);
}

std::vector<std::string> proj_projection_names() {
    std::vector<std::string> names;
    names.reserve(named_projections.size());
    for (const Named_Projection& projection : named_projections) {
        names.emplace_back(projection.name);
    }
    return names;
}

} // namespace vorna::drawing::map

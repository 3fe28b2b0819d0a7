// From the coordinate systems of files to degrees, by PROJ.
#include <cmath>
#include <shared_mutex>

#include "drawing/files/fork_gate.h"
#include "drawing/map/coordinate_system.h"
#include "drawing/map/proj_library.h"

namespace vorna::drawing::map {
namespace {

class Proj_Degrees final : public Degree_Conversion {
public:
    Proj_Degrees(std::unique_ptr<Proj_Context> context, Proj_Handle handle)
        : context_(std::move(context)), handle_(std::move(handle)) {}

    bool convert(Position& position) const override {
        const PJ_COORD place = proj().proj_trans(handle_.get(), PJ_INV, {{position.x, position.y, 0, 0}});
        position = {place.xy.x, place.xy.y};
        return std::isfinite(place.xy.x) && std::isfinite(place.xy.y);
    }

private:
    std::unique_ptr<Proj_Context> context_;
    Proj_Handle handle_;
};

} // namespace

std::unique_ptr<Degree_Conversion> make_degree_conversion(const std::string& system) {
    const std::shared_lock shared(fork_gate());
    auto context = std::make_unique<Proj_Context>();
    // A PROJ string without this type is a conversion and not a coordinate system.
    const bool is_text = system.starts_with('+') && system.find("+type=crs") == system.npos;
    Proj_Handle handle = proj_from_degrees(*context, (system + (is_text ? " +type=crs" : "")).c_str());
    return handle ? std::make_unique<Proj_Degrees>(std::move(context), std::move(handle)) : nullptr;
}

} // namespace vorna::drawing::map

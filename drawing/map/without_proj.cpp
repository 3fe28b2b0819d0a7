// Builds without PROJ have the built-in projections only.
#include <stdexcept>

#include "drawing/files/setting_names.h"
#include "drawing/map/coordinate_system.h"
#include "drawing/map/projection.h"

namespace vorna::drawing::map {

std::unique_ptr<Projection> make_proj_projection(const std::string&, std::optional<Position>) {
    return nullptr;
}

std::unique_ptr<Degree_Conversion> make_degree_conversion(const std::string& system) {
    throw std::runtime_error(system + ": expected degrees in a build without PROJ; " + name_of(Setting::projection) +
                             " plane draws coordinates as they are");
}

std::vector<std::string> proj_projection_names() {
    return {};
}

} // namespace vorna::drawing::map

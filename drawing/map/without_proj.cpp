// Builds without PROJ have the built-in projections only.
#include "drawing/map/projection.h"

namespace vorna::drawing::map {

std::unique_ptr<Projection> make_proj_projection(const std::string&, std::optional<Position>) {
    return nullptr;
}

std::vector<std::string> proj_projection_names() {
    return {};
}

} // namespace vorna::drawing::map

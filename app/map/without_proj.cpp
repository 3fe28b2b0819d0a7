// Builds without PROJ know the projections of our own only.
#include "app/map/projection.h"

namespace app::map {

std::unique_ptr<Projection> make_proj_projection(const std::string&, std::optional<Position>) {
    return nullptr;
}

std::vector<std::string> proj_projection_names() {
    return {};
}

} // namespace app::map

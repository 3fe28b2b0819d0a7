// A mesh with fewer triangles, for pictures in motion.
#pragma once

#include <cstddef>

#include "drawing/model/mesh.h"

namespace vorna::app::view {

// About so many triangles of a finished mesh, in the same place: vertices in one cell of a grid become one (Rossignac and
// Borrel), and triangles with corners in one cell go. Colours stay, materials do not.
drawing::model::Mesh coarse_mesh(const drawing::model::Mesh& mesh, std::size_t triangles);

} // namespace vorna::app::view

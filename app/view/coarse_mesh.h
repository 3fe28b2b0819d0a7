// A mesh with fewer triangles, for drawing while the camera moves.
#pragma once

#include <cstddef>

#include "drawing/model/mesh.h"

namespace vorna::app::view {

// Returns a mesh of about so many triangles with the same centre and radius. Vertices in the same cell of a grid become one
// (Rossignac and Borrel), and triangles with two corners in the same cell are dropped. Colours are kept, materials are not.
drawing::model::Mesh coarse_mesh(const drawing::model::Mesh& mesh, std::size_t triangles);

} // namespace vorna::app::view

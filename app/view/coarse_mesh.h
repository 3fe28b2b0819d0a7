// A mesh with fewer triangles, for pictures in motion.
#pragma once

#include <cstddef>

#include "app/scene/mesh.h"

namespace app::view {

// About so many triangles of a finished mesh, in the same place: vertices in one cell of a grid become one (Rossignac and
// Borrel), and triangles with corners in one cell go. Colours stay, materials do not.
scene::Mesh coarse_mesh(const scene::Mesh& mesh, std::size_t triangles);

} // namespace app::view

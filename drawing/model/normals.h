// Normals of vertices, where a model file gives none.
#pragma once

#include <cstdint>
#include <optional>

#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

inline constexpr double default_crease = 30;

// Gives every vertex a normal of length 1. Normals that the mesh has are kept. A corner without one gets the sum of the faces
// around its place that belong to the same surface as its own face; vertices whose corners differ are split. Corners of equal
// positions belong to one place, whatever vertices they are. The smoothing groups are given up.
// crease: faces that meet belong to one surface where their normals are at most so many degrees apart. None: the default, and
// smoothing groups go before it.
// The result does not depend on the number of threads.
void complete_normals(Mesh& mesh, std::optional<double> crease, unsigned threads = 1);

} // namespace vorna::drawing::model

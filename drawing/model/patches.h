// The smooth patches of a model's surface, between its sharp edges.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// By triangle of a finished mesh, a number that the triangles of one patch share. Two triangles belong to one patch when a chain
// of triangles leads from one to the other, each with a corner in common with the next: the same place, and normals there that
// are at most some 20 degrees apart.
std::vector<std::uint32_t> patches_of(const Mesh& mesh);

} // namespace vorna::drawing::model

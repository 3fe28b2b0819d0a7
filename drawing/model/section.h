// A model cut open by a plane.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// Cuts triangles, lines and points of a finished mesh. Nothing closes the cut: the inside of the model is seen there. Vertices on
// the cut are interpolated the same way for all triangles and lines that share an edge, so that these stay joined. file: for
// messages. origins: gets, by triangle, the number of the triangle before the cut; null = not wanted. Throws Model_Error when
// nothing is left.
void cut_open(Mesh& mesh, const Section& section, const std::string& file, Load_Limits& limits,
              std::vector<std::uint32_t>* origins = nullptr);

} // namespace vorna::drawing::model

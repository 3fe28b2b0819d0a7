// A model cut open by a plane.
#pragma once

#include <string>

#include "drawing/files/load_limits.h"
#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// What lies beyond the plane, where normal . place > offset, is removed. Places are those of the file.
struct Section {
    VT_Vector_D normal;
    double offset = 0;
};

// Cuts triangles, lines and points of a finished mesh. Nothing closes the cut: the inside of the model is seen there. Vertices on
// the cut are interpolated the same way for all triangles and lines that share an edge, so that these stay joined. file: for
// messages. Throws Model_Error when nothing is left.
void cut_open(Mesh& mesh, const Section& section, const std::string& file, Load_Limits& limits);

} // namespace vorna::drawing::model

// The lines of a model, as edges without faces.
#pragma once

#include <memory>

#include "drawing/model/edge_renderer.h"
#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// A line that begins where the one before it ends continues its chain. base_color: of vertices without a colour of their own; of
// all with own_colors off. Null when the mesh has no lines.
std::unique_ptr<Edge_Renderer> make_line_renderer(const Mesh& mesh, VT_RGB32 base_color, bool own_colors);

} // namespace vorna::drawing::model

// What of a model is drawn and how, with the defaults that follow from each other.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/job/model_drawing.h"
#include "drawing/job/print_settings.h"
#include "drawing/model/camera.h"
#include "drawing/model/facing.h"
#include "drawing/model/mesh.h"
#include "drawing/model/model_look.h"

namespace vorna::drawing {

using model::Model_Style;

// Of models without a colour of their own.
inline constexpr VT_RGB32 default_model_color{196, 169, 143, 255};

// background: none = transparent. Wireframes have the model's colour, edges over faces a dark one; without the colours of faces
// an image is a drawing, dark on light or light on dark.
model::Edge_Settings edge_settings_of(const Model_Style& style, const std::optional<Background>& background, bool smoothed);

// Of the model's own lines, which obey the depth buffer.
model::Edge_Settings line_settings_of(const Model_Style& style, bool smoothed);

// The look of all parts.
Model_Look look_of(const Model_Style& style, const std::optional<Background>& background, bool smoothed,
                   VT_Reference<const VT_Palette> palette);

// What the mesh is drawn with: never automatic.
model::Shading shading_of(const Model_Style& style, const model::Mesh& mesh);

// Textures are drawn where the shading is textured and the mesh has any; warnings gets one line for those that cannot be read.
// facing: of the mesh.
std::unique_ptr<model::Scene> make_faces(const model::Mesh& mesh, const model::Facing& facing, const Model_Style& style,
                                         Load_Limits& limits, std::vector<std::string>& warnings);
std::unique_ptr<model::Edge_Renderer> make_edges(const model::Mesh& mesh, const model::Facing& facing, const Model_Style& style,
                                                 unsigned threads);
// Lines and points of the mesh itself, and where they lie; axes and scale bar. background: none = transparent.
void add_forms(Model_Parts& parts, const model::Mesh& mesh, const Model_Style& style,
               const std::optional<Background>& background);
// Faces, edges or both, as the style says, neither when the mesh has no triangles; lines and points.
Model_Parts make_parts(const model::Mesh& mesh, const Model_Style& style, const std::optional<Background>& background,
                       Load_Limits& limits, std::vector<std::string>& warnings);
// The same for a mesh whose facing is kept.
Model_Parts make_parts(const model::Mesh& mesh, const model::Facing& facing, const Model_Style& style,
                       const std::optional<Background>& background, Load_Limits& limits, std::vector<std::string>& warnings);

// Settings whose aim is in the coordinates of the file, for an image of that size and the finished mesh. None when the aim has no
// direction, or none that points up.
std::optional<model::Camera_Settings> camera_of_mesh(model::Camera_Settings settings, const model::Mesh& mesh, VT_Int_Pair size);

// Sets what the camera shows so that lengths across the line of sight have the scale of the settings, if they give one, in an
// image of that size. The camera is without perspective and zoom.
void set_scale(model::Camera_Settings& camera, const Print_Settings& print, const model::Mesh& mesh, VT_Int_Pair size);

} // namespace vorna::drawing

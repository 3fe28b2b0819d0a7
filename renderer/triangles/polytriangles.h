// The members of the polytriangle slots, one a case.
#pragma once

#include <cstdint>

#include "renderer/core/cases.h"
#include "renderer/host/actions.h"

namespace krb {

// Strips of integer device points in the rendition's face colour. Only the window bounds them, not the hard clip; but while a 3D
// member draws through them, both do.
template <Case c>
void draw_dci_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points);
// One colour a triangle.
template <Case c>
void draw_dci_colorized_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                                     const VT_RGB32* colors, bool single_color);
// One colour a point, interpolated.
template <Case c>
void draw_dci_gouraud_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                                   const VT_RGB32* colors);

// The same with float device points, rounded to whole pixels.
template <Case c> void draw_dc_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points);
template <Case c>
void draw_dc_colorized_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points,
                                    const VT_RGB32* colors, bool single_color);
template <Case c>
void draw_dc_gouraud_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points,
                                  const VT_RGB32* colors);

// Texels times one colour a point. Faces without a texture whose sides are powers of two are the host's.
template <Case c>
void draw_dci_textured_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                                    const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t parameter_width,
                                    const float* weights, const VT_Vector* normals);
template <Case c>
void draw_dc_textured_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points,
                                   const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t parameter_width,
                                   const float* weights, const VT_Vector* normals);

// Strips without bounds, cut to the hard clip. Depth is that of the points; the 2D forms round their points.
template <Case c>
void draw_2di_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points);
template <Case c>
void draw_2di_colorized_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                                     const VT_RGB32* colors, bool single_color);
template <Case c>
void draw_2di_gouraud_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                                   const VT_RGB32* colors);
template <Case c>
void draw_2di_textured_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                                    const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t parameter_width,
                                    const float* weights, const VT_Vector* normals);
template <Case c> void draw_2d_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points);
template <Case c>
void draw_2d_colorized_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points,
                                    const VT_RGB32* colors, bool single_color);
template <Case c>
void draw_2d_gouraud_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points,
                                  const VT_RGB32* colors);
template <Case c>
void draw_2d_textured_polytriangle(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_Point* points,
                                   const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t parameter_width,
                                   const float* weights, const VT_Vector* normals);

} // namespace krb

// Members of the 2D and 2DI polytriangle slots: strips that may reach anywhere, cut to the clip rectangle.
//
// Runs of triangles that lie inside go to the device member as one strip. A triangle that crosses the rectangle is cut, and its
// pieces are filled by the device member's pixel rules. Triangles beyond one side are dropped.
#include <algorithm>

#include "host/clip.h"
#include "host/strip.h"
#include "host/triangle_clipper.h"
#include "renderer/kernels/call_target.h"
#include "renderer/triangles/polytriangles.h"
#include "renderer/triangles/texture_coordinates.h"
#include "renderer/triangles/triangle_target.h"

namespace krb {

namespace {

bool has_standard_pattern(const VT_Rendition& rendition) noexcept {
    return rendition.face.pattern > vorna::face_pattern::last_drawn_by_renderers;
}

// Patterns whose cells are all gaps draw nothing unless the gaps are filled.
bool draws_nothing(const VT_Face_Attributes& face) noexcept {
    const bool inverted = (face.flags & vorna::face_flag::inverted_pattern) != 0;
    return !(face.flags & vorna::face_flag::opaque_pattern) && face.pattern == (inverted ? vorna::face_pattern::solid : 0);
}

// Calls run(first point, count of points) for stretches inside the rectangle and piece(first point of a triangle) for triangles
// that cross it. Each returns nothing.
template <class Run, class Piece>
void draw_in_rectangle(const VT_Rendition& rendition, const VT_Int_Rectangle& rectangle, std::int32_t count,
                       const VT_DCI_Point* points, Run run, Piece piece) {
    if (vorna::is_empty(rectangle)) {
        return;
    }
    Scratch<std::uint16_t, 66> outcodes(std::int64_t{count} + 2);
    const std::int32_t inside = VD_Clip(rectangle, count, points, outcodes.data());
    if (inside == count) {
        run(0, count);
    } else if (inside != 0 && !draws_nothing(rendition.face)) {
        vorna::walk_strip(count, vorna::placements_by(outcodes.data()), run, piece);
    }
}

// Cut triangles of the 8-bit members are dithered with a rounding half.
void prepare_pieces(Triangle_Target& target) noexcept {
    target.dither_bias = 128;
}

// Fills what the rectangle leaves of a triangle in one colour.
void fill_flat_piece(const Triangle_Call& call, const VT_Int_Rectangle& rectangle, const VT_DCI_Point* points, VT_RGB32 color) {
    const vorna::Clip_Vertex<VT_DCI_Point> triangle[3] = {
        {points[0], color, 0, 0}, {points[1], color, 0, 0}, {points[2], color, 0, 0}};
    vorna::Clipped_Polygon polygon;
    if (clip_triangle_to_rectangle(rectangle, triangle, polygon) >= 3) {
        call.draw({polygon.count, polygon.points, &color, true, nullptr, nullptr});
    }
}

} // namespace

template <Case c>
void draw_2di_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                           const VT_DCI_Point* points) {
    if (has_standard_pattern(rendition)) {
        VD_Standard_Draw_2DI_Polytriangle(data, rendition, count, points);
        return;
    }
    Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 2) {
        return;
    }
    if (has_depth(c) && !renderer.draws_with_depth(rendition)) {
        draw_2di_polytriangle<without_depth(c)>(data, rendition, count, points);
        return;
    }
    const VT_Int_Rectangle rectangle = renderer.visible_rectangle(rendition);
    const Flat_Face face = flat_face(c, renderer, rendition);
    Triangle_Call pieces(c, renderer, rendition, Shading::flat, face.pixel);
    prepare_pieces(pieces.target);
    draw_in_rectangle(
        rendition, rectangle, count, points,
        [&](std::int32_t first, std::int32_t length) { draw_dci_polytriangle<c>(data, rendition, length, points + first); },
        [&](std::int32_t k) { fill_flat_piece(pieces, rectangle, points + k, face.color); });
}

template <Case c>
void draw_2di_colorized_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                     const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
    if (has_standard_pattern(rendition)) {
        VD_Standard_Draw_2DI_Colorized_Polytriangle(data, rendition, count, points, colors, single_color);
        return;
    }
    Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 2) {
        return;
    }
    if (has_depth(c) && !renderer.draws_with_depth(rendition)) {
        draw_2di_colorized_polytriangle<without_depth(c)>(data, rendition, count, points, colors, single_color);
        return;
    }
    const VT_Int_Rectangle rectangle = renderer.visible_rectangle(rendition);
    Triangle_Call pieces(c, renderer, rendition, Shading::flat, colorized_pixel_rule(c, renderer, rendition));
    prepare_pieces(pieces.target);
    draw_in_rectangle(
        rendition, rectangle, count, points,
        [&](std::int32_t first, std::int32_t length) {
            draw_dci_colorized_polytriangle<c>(data, rendition, length, points + first, single_color ? colors : colors + first,
                                               single_color);
        },
        [&](std::int32_t k) { fill_flat_piece(pieces, rectangle, points + k, colors[single_color ? 0 : k]); });
}

template <Case c>
void draw_2di_gouraud_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                   const VT_DCI_Point* points, const VT_RGB32* colors) {
    if (has_standard_pattern(rendition)) {
        VD_Standard_Draw_2DI_Gouraud_Polytriangle(data, rendition, count, points, colors);
        return;
    }
    Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 2) {
        return;
    }
    if (has_depth(c) && !renderer.draws_with_depth(rendition)) {
        draw_2di_gouraud_polytriangle<without_depth(c)>(data, rendition, count, points, colors);
        return;
    }
    if (c == Case::rgb32 && (rendition.face.flags & vorna::face_flag::translucent)) {
        draw_2di_gouraud_polytriangle<Case::rgb32_alpha>(data, rendition, count, points, colors);
        return;
    }
    const VT_Int_Rectangle rectangle = renderer.visible_rectangle(rendition);
    Triangle_Call pieces(c, renderer, rendition, Shading::gouraud, is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store);
    prepare_pieces(pieces.target);
    Strip_Kernel* near_flat = pieces.kernel(Shading::flat, colorized_pixel_rule(c, renderer, rendition));
    draw_in_rectangle(
        rendition, rectangle, count, points,
        [&](std::int32_t first, std::int32_t length) {
            draw_dci_gouraud_polytriangle<c>(data, rendition, length, points + first, colors + first);
        },
        [&](std::int32_t k) {
            vorna::Clip_Vertex<VT_DCI_Point> triangle[3];
            for (std::int32_t i = 0; i < 3; ++i) {
                triangle[i] = {points[k + i], colors[k + i], 0, 0};
            }
            vorna::Clipped_Polygon polygon;
            if (clip_triangle_to_rectangle(rectangle, triangle, polygon) >= 3) {
                pieces.draw({polygon.count, polygon.points, polygon.colors, false, near_flat, nullptr});
            }
        });
}

template <Case c, Pixel_Rule texels>
void draw_2di_textured_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                    const VT_DCI_Point* points, const VT_RGB32* colors, const VT_Parameter* parameters,
                                    std::int32_t parameter_width, const float* weights, const VT_Vector* normals) {
    Software_Z_Buffer& renderer = renderer_of(data);
    const VT_Shared_Image* texture = vorna::drawable_texture(rendition.face);
    if (has_standard_pattern(rendition) || !texture || (renderer.color_buffer && !holds_pixels_of(c, renderer))) {
        VD_Standard_Draw_2DI_Textured_Polytriangle(data, rendition, count, points, colors, parameters, parameter_width, weights,
                                                   normals);
        return;
    }
    if (!renderer.color_buffer || count < 2) {
        return;
    }
    if (has_depth(c) && !renderer.draws_with_depth(rendition)) {
        draw_2di_textured_polytriangle<without_depth(c), texels>(data, rendition, count, points, colors, parameters,
                                                                 parameter_width, weights, normals);
        return;
    }
    const VT_Int_Rectangle rectangle = renderer.visible_rectangle(rendition);
    Texture_Parameters pairs = texture_parameters(rendition.face, count, parameters, parameter_width);
    Triangle_Call pieces(c, renderer, rendition, Shading::textured, texels);
    prepare_pieces(pieces.target);
    set_texture(pieces.target, *texture);
    draw_in_rectangle(
        rendition, rectangle, count, points,
        [&](std::int32_t first, std::int32_t length) {
            draw_dci_textured_polytriangle<c, texels>(data, rendition, length, points + first, colors + first,
                                                      parameters + std::int64_t{first} * parameter_width, parameter_width,
                                                      weights ? weights + first : nullptr, normals ? normals + first : nullptr);
        },
        [&](std::int32_t k) {
            vorna::Clip_Vertex<VT_DCI_Point> triangle[3];
            for (std::int32_t i = 0; i < 3; ++i) {
                triangle[i] = {points[k + i], colors[k + i], pairs[2 * (k + i)], pairs[2 * (k + i) + 1]};
            }
            vorna::Clipped_Polygon polygon;
            if (clip_triangle_to_rectangle(rectangle, triangle, polygon) >= 3) {
                Texel_Coordinates coordinates[vorna::Clipped_Polygon::most_vertices];
                for (std::int32_t i = 0; i < polygon.count; ++i) {
                    coordinates[i] = texel_coordinates(*texture, polygon.u[i], polygon.v[i]);
                }
                pieces.draw({polygon.count, polygon.points, polygon.colors, false, nullptr, coordinates});
            }
        });
}

template <Case c>
void draw_2d_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point* points) {
    if (has_standard_pattern(rendition)) {
        VD_Standard_Draw_2D_Polytriangle(data, rendition, count, points);
    } else if (renderer_of(data).color_buffer && count >= 2) {
        draw_2di_polytriangle<c>(data, rendition, count, rounded_points(count, points).data());
    }
}

template <Case c>
void draw_2d_colorized_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                    const VT_Point* points, const VT_RGB32* colors, bool single_color) {
    if (has_standard_pattern(rendition)) {
        VD_Standard_Draw_2D_Colorized_Polytriangle(data, rendition, count, points, colors, single_color);
    } else if (renderer_of(data).color_buffer && count >= 2) {
        draw_2di_colorized_polytriangle<c>(data, rendition, count, rounded_points(count, points).data(), colors, single_color);
    }
}

template <Case c>
void draw_2d_gouraud_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                  const VT_Point* points, const VT_RGB32* colors) {
    if (has_standard_pattern(rendition)) {
        VD_Standard_Draw_2D_Gouraud_Polytriangle(data, rendition, count, points, colors);
    } else if (renderer_of(data).color_buffer && count >= 2) {
        draw_2di_gouraud_polytriangle<c>(data, rendition, count, rounded_points(count, points).data(), colors);
    }
}

template <Case c, Pixel_Rule texels>
void draw_2d_textured_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                   const VT_Point* points, const VT_RGB32* colors, const VT_Parameter* parameters,
                                   std::int32_t parameter_width, const float* weights, const VT_Vector* normals) {
    if (has_standard_pattern(rendition) || !vorna::drawable_texture(rendition.face)) {
        VD_Standard_Draw_2D_Textured_Polytriangle(data, rendition, count, points, colors, parameters, parameter_width, weights,
                                                  normals);
    } else if (renderer_of(data).color_buffer && count >= 2) {
        draw_2di_textured_polytriangle<c, texels>(data, rendition, count, rounded_points(count, points).data(), colors,
                                                  parameters, parameter_width, weights, normals);
    }
}

#define KRB_FOR_CASE(c)                                                                                                          \
    template VT_Draw_Points<VT_DCI_Point> draw_2di_polytriangle<c>;                                                              \
    template VT_Draw_Colorized<VT_DCI_Point> draw_2di_colorized_polytriangle<c>;                                                 \
    template VT_Draw_Gouraud<VT_DCI_Point> draw_2di_gouraud_polytriangle<c>;                                                     \
    template VT_Draw_Textured<VT_DCI_Point> draw_2di_textured_polytriangle<c, Pixel_Rule::blend>;                                \
    template VT_Draw_Points<VT_Point> draw_2d_polytriangle<c>;                                                                   \
    template VT_Draw_Colorized<VT_Point> draw_2d_colorized_polytriangle<c>;                                                      \
    template VT_Draw_Gouraud<VT_Point> draw_2d_gouraud_polytriangle<c>;                                                          \
    template VT_Draw_Textured<VT_Point> draw_2d_textured_polytriangle<c, Pixel_Rule::blend>;
KRB_FOR_EACH_CASE
#undef KRB_FOR_CASE
template VT_Draw_Textured<VT_DCI_Point> draw_2di_textured_polytriangle<Case::depth_index8, Pixel_Rule::store>;
template VT_Draw_Textured<VT_Point> draw_2d_textured_polytriangle<Case::depth_index8, Pixel_Rule::store>;

} // namespace krb

// Members of the 2D and 2DI polytriangle slots: strips that may reach anywhere, cut to the clip rectangle.
//
// Runs of triangles that lie inside go to the device member as one strip. A triangle that crosses the rectangle is cut, and its
// pieces are filled by the device member's pixel rules. Triangles beyond one side are dropped.
#include <algorithm>

#include "host/clip.h"
#include "host/strip.h"
#include "host/triangle_clipper.h"
#include "renderer/core/compiler_hints.h"
#include "renderer/kernels/call_target.h"
#include "renderer/triangles/polytriangles.h"
#include "renderer/triangles/strip_entry.h"
#include "renderer/triangles/texture_coordinates.h"
#include "renderer/triangles/triangle_target.h"

namespace krb {

namespace {

// Patterns whose cells are all gaps draw nothing unless the gaps are filled.
bool draws_nothing(const VT_Face_Attributes& face) noexcept {
    const bool inverted = (face.flags & vorna::face_flag::inverted_pattern) != 0;
    return !(face.flags & vorna::face_flag::opaque_pattern) && face.pattern == (inverted ? vorna::face_pattern::solid : 0);
}

// Calls run(first point, count of points) for stretches inside the visible rectangle. Only where triangles cross it,
// with_pieces(rectangle, walk) is called, which makes what pieces need and calls walk(piece) once: piece(first point of a
// triangle) draws such a triangle.
template <class Run, class With_Pieces>
KRB_NEVER_INLINE void draw_cut(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                               const VT_DCI_Point* points, Run run, With_Pieces with_pieces) {
    const VT_Int_Rectangle rectangle = renderer.visible_rectangle(rendition);
    if (vorna::is_empty(rectangle)) {
        return;
    }
    vorna::Scratch<std::uint16_t, 66> outcodes(std::int64_t{count} + 2);
    const std::int32_t inside = VD_Clip(rectangle, count, points, outcodes.data());
    if (inside == count) {
        run(0, count);
    } else if (inside != 0 && !draws_nothing(rendition.face)) {
        with_pieces(rectangle, [&](auto piece) { vorna::walk_strip(count, vorna::placements_by(outcodes.data()), run, piece); });
    }
}

// The same. Most strips lie inside, which is found in less time than what draw_cut needs takes. It gets copies of the functions,
// so that nothing of them is in memory before it is called.
template <class Run, class With_Pieces>
KRB_ALWAYS_INLINE void draw_in_rectangle(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                                         const VT_DCI_Point* points, Run run, With_Pieces with_pieces) {
    if (renderer.shows_all(rendition, count, points)) {
        run(0, count);
    } else {
        draw_cut(renderer, rendition, count, points, run, with_pieces);
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
        call.draw_any({polygon.count, polygon.points, &color, true, nullptr, nullptr});
    }
}

} // namespace

template <Case c> struct Entry<slots::Draw_2DI_Polytriangle, c> : Plane_Strip_Entry<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
        draw_in_rectangle(
            renderer, rendition, count, points,
            [=, &renderer, &rendition](std::int32_t first, std::int32_t length) {
                Member<slots::Draw_DCI_Polytriangle, c>::enter(renderer, rendition, length, points + first);
            },
            [=, &renderer, &rendition](const VT_Int_Rectangle& rectangle, auto walk) {
                const Flat_Face face = flat_face(c, renderer, rendition);
                Triangle_Call pieces(c, renderer, rendition, Shading::flat, face.pixel);
                prepare_pieces(pieces.target);
                walk([&](std::int32_t k) { fill_flat_piece(pieces, rectangle, points + k, face.color); });
            });
    }
};

template <Case c> struct Entry<slots::Draw_2DI_Colorized_Polytriangle, c> : Plane_Strip_Entry<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors, bool single_color) {
        draw_in_rectangle(
            renderer, rendition, count, points,
            [=, &renderer, &rendition](std::int32_t first, std::int32_t length) {
                Member<slots::Draw_DCI_Colorized_Polytriangle, c>::enter(renderer, rendition, length, points + first,
                                                                         single_color ? colors : colors + first, single_color);
            },
            [=, &renderer, &rendition](const VT_Int_Rectangle& rectangle, auto walk) {
                Triangle_Call pieces(c, renderer, rendition, Shading::flat, colorized_pixel_rule(c, renderer, rendition));
                prepare_pieces(pieces.target);
                walk([&](std::int32_t k) { fill_flat_piece(pieces, rectangle, points + k, colors[single_color ? 0 : k]); });
            });
    }
};

template <Case c> struct Entry<slots::Draw_2DI_Gouraud_Polytriangle, c> : Gouraud_Entry<Plane_Strip_Entry<c>, c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors) {
        draw_in_rectangle(
            renderer, rendition, count, points,
            [=, &renderer, &rendition](std::int32_t first, std::int32_t length) {
                Member<slots::Draw_DCI_Gouraud_Polytriangle, c>::enter(renderer, rendition, length, points + first,
                                                                       colors + first);
            },
            [=, &renderer, &rendition](const VT_Int_Rectangle& rectangle, auto walk) {
                Triangle_Call pieces(c, renderer, rendition, Shading::gouraud,
                                     is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store);
                prepare_pieces(pieces.target);
                Strip_Kernel* near_flat = pieces.kernel(Shading::flat, colorized_pixel_rule(c, renderer, rendition));
                walk([&](std::int32_t k) {
                    vorna::Clip_Vertex<VT_DCI_Point> triangle[3];
                    for (std::int32_t i = 0; i < 3; ++i) {
                        triangle[i] = {points[k + i], colors[k + i], 0, 0};
                    }
                    vorna::Clipped_Polygon polygon;
                    if (clip_triangle_to_rectangle(rectangle, triangle, polygon) >= 3) {
                        pieces.draw_any({polygon.count, polygon.points, polygon.colors, false, near_flat, nullptr});
                    }
                });
            });
    }
};

template <Pixel_Rule texels, Case c>
struct Entry<With_Texels<slots::Draw_2DI_Textured_Polytriangle, texels>, c> : Plane_Strip_Entry<c> {
    template <class... Arguments>
    static bool is_hosts(const Software_Z_Buffer& renderer, const VT_Rendition& rendition,
                         const Arguments&... arguments) noexcept {
        return Plane_Strip_Entry<c>::is_hosts(renderer, rendition, arguments...) || !vorna::drawable_texture(rendition.face) ||
               (renderer.color_buffer && !holds_pixels_of(c, renderer));
    }
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t parameter_width, const float* weights,
                     const VT_Vector* normals) {
        const VT_Shared_Image& texture = *vorna::drawable_texture(rendition.face);
        draw_in_rectangle(
            renderer, rendition, count, points,
            [=, &renderer, &rendition](std::int32_t first, std::int32_t length) {
                Member<With_Texels<slots::Draw_DCI_Textured_Polytriangle, texels>, c>::enter(
                    renderer, rendition, length, points + first, colors + first,
                    parameters + std::int64_t{first} * parameter_width, parameter_width, weights ? weights + first : nullptr,
                    normals ? normals + first : nullptr);
            },
            [=, &renderer, &rendition, &texture](const VT_Int_Rectangle& rectangle, auto walk) {
                Texture_Parameters pairs = texture_parameters(rendition.face, count, parameters, parameter_width);
                Triangle_Call pieces(c, renderer, rendition, Shading::textured, texels);
                prepare_pieces(pieces.target);
                set_texture(pieces.target, texture);
                walk([&](std::int32_t k) {
                    vorna::Clip_Vertex<VT_DCI_Point> triangle[3];
                    for (std::int32_t i = 0; i < 3; ++i) {
                        triangle[i] = {points[k + i], colors[k + i], pairs[2 * (k + i)], pairs[2 * (k + i) + 1]};
                    }
                    vorna::Clipped_Polygon polygon;
                    if (clip_triangle_to_rectangle(rectangle, triangle, polygon) >= 3) {
                        Texel_Coordinates coordinates[vorna::Clipped_Polygon::most_vertices];
                        for (std::int32_t i = 0; i < polygon.count; ++i) {
                            coordinates[i] = texel_coordinates(texture, polygon.u[i], polygon.v[i]);
                        }
                        pieces.draw_any({polygon.count, polygon.points, polygon.colors, false, nullptr, coordinates});
                    }
                });
            });
    }
};

template <Case c>
struct Entry<slots::Draw_2D_Polytriangle, c> : Rounded_Entry<Plane_Strip_Entry<c>, slots::Draw_2DI_Polytriangle, c> {};

template <Case c>
struct Entry<slots::Draw_2D_Colorized_Polytriangle, c>
    : Rounded_Entry<Plane_Strip_Entry<c>, slots::Draw_2DI_Colorized_Polytriangle, c> {};

template <Case c>
struct Entry<slots::Draw_2D_Gouraud_Polytriangle, c>
    : Rounded_Entry<Plane_Strip_Entry<c>, slots::Draw_2DI_Gouraud_Polytriangle, c> {};

// The member of the integer slot looks at the buffer's format.
template <Pixel_Rule texels, Case c>
struct Entry<With_Texels<slots::Draw_2D_Textured_Polytriangle, texels>, c>
    : Rounded_Entry<Plane_Strip_Entry<c>, With_Texels<slots::Draw_2DI_Textured_Polytriangle, texels>, c> {
    template <class... Arguments>
    static bool is_hosts(const Software_Z_Buffer& renderer, const VT_Rendition& rendition,
                         const Arguments&... arguments) noexcept {
        return Plane_Strip_Entry<c>::is_hosts(renderer, rendition, arguments...) || !vorna::drawable_texture(rendition.face);
    }
};

KRB_MEMBERS(, slots::Draw_2DI_Polytriangle)
KRB_MEMBERS(, slots::Draw_2DI_Colorized_Polytriangle)
KRB_MEMBERS(, slots::Draw_2DI_Gouraud_Polytriangle)
KRB_MEMBERS(, Blended_Texels<slots::Draw_2DI_Textured_Polytriangle>)
template struct Member<Stored_Texels<slots::Draw_2DI_Textured_Polytriangle>, Case::index8>;
template struct Member<Stored_Texels<slots::Draw_2DI_Textured_Polytriangle>, Case::depth_index8>;
KRB_MEMBERS(, slots::Draw_2D_Polytriangle)
KRB_MEMBERS(, slots::Draw_2D_Colorized_Polytriangle)
KRB_MEMBERS(, slots::Draw_2D_Gouraud_Polytriangle)
KRB_MEMBERS(, Blended_Texels<slots::Draw_2D_Textured_Polytriangle>)
template struct Member<Stored_Texels<slots::Draw_2D_Textured_Polytriangle>, Case::depth_index8>;

} // namespace krb

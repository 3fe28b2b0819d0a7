// Members of the flat and colorized device polytriangle slots.
#include "renderer/triangles/polytriangles.h"
#include "renderer/triangles/triangle_target.h"

namespace krb {

namespace {

// The member with depth and alpha has no masked sibling: it draws through the mask's holes.
constexpr bool consults_mask(Case c) noexcept {
    return c != Case::depth_rgb32_alpha;
}

} // namespace

template <Case c>
void draw_dci_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                           const VT_DCI_Point* points) {
    Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 3) {
        return;
    }
    if (!drawn_by_renderer(rendition.face)) {
        VD_Standard_Draw_DCI_Polytriangle(data, rendition, count, points);
        return;
    }
    if (has_depth(c) && !renderer.draws_with_depth(rendition)) {
        draw_dci_polytriangle<without_depth(c)>(data, rendition, count, points);
        return;
    }
    const Flat_Face face = flat_face(c, renderer, rendition);
    const Triangle_Call call(c, renderer, rendition, Shading::flat, face.pixel, consults_mask(c));
    call.draw_any({count, points, &face.color, true, nullptr, nullptr});
}

template <Case c>
void draw_dci_colorized_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                     const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
    Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 3) {
        return;
    }
    if (!drawn_by_renderer(rendition.face)) {
        VD_Standard_Draw_DCI_Colorized_Polytriangle(data, rendition, count, points, colors, single_color);
        return;
    }
    if (has_depth(c) && !renderer.draws_with_depth(rendition)) {
        draw_dci_colorized_polytriangle<without_depth(c)>(data, rendition, count, points, colors, single_color);
        return;
    }
    const Triangle_Call call(c, renderer, rendition, Shading::flat, colorized_pixel_rule(c, renderer, rendition),
                             consults_mask(c));
    call.draw_any({count, points, colors, single_color, nullptr, nullptr});
}

template <Case c>
void draw_dc_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_Point* points) {
    draw_dci_polytriangle<c>(data, rendition, count, rounded_points(count, points).data());
}

template <Case c>
void draw_dc_colorized_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                    const VT_Point* points, const VT_RGB32* colors, bool single_color) {
    draw_dci_colorized_polytriangle<c>(data, rendition, count, rounded_points(count, points).data(), colors, single_color);
}

#define KRB_FOR_CASE(c)                                                                                                          \
    template VT_Draw_Points<VT_DCI_Point> draw_dci_polytriangle<c>;                                                              \
    template VT_Draw_Colorized<VT_DCI_Point> draw_dci_colorized_polytriangle<c>;                                                 \
    template VT_Draw_Points<VT_Point> draw_dc_polytriangle<c>;                                                                   \
    template VT_Draw_Colorized<VT_Point> draw_dc_colorized_polytriangle<c>;
KRB_FOR_EACH_CASE
#undef KRB_FOR_CASE

} // namespace krb

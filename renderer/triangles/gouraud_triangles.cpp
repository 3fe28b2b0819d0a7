// Members of the Gouraud device polytriangle slots.
#include "renderer/triangles/polytriangles.h"
#include "renderer/triangles/triangle_target.h"

namespace krb {

namespace {

// What the near-flat triangles of a strip need when they cannot be filled at once.
struct Hand_Over {
    VT_Renderer_Data& data;
    const VT_Rendition& rendition;
};

// Gives near-flat triangles to the colorized member one by one, so that it can hand each of them on.
template <Case c> void call_colorized_member(const Triangle_Target& target, const Triangle_Strip& strip) {
    const auto& to = *static_cast<const Hand_Over*>(target.hand_over);
    for (std::int32_t k = 0; k < strip.count - 2; ++k) {
        draw_dci_colorized_polytriangle<c>(to.data, to.rendition, 3, strip.points + k, strip.colors + k, true);
    }
}

} // namespace

template <Case c>
void draw_dci_gouraud_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                   const VT_DCI_Point* points, const VT_RGB32* colors) {
    Software_Z_Buffer& renderer = renderer_of(data);
    const VT_Face_Attributes& face = rendition.face;
    if (!renderer.color_buffer || count < 3) {
        return;
    }
    if (c == Case::rgb32 && (face.flags & vorna::face_flag::translucent)) {
        draw_dci_gouraud_polytriangle<Case::rgb32_alpha>(data, rendition, count, points, colors);
        return;
    }
    // The opaque member without depth does not look at special shading.
    if (c == Case::rgb32 ? face.pattern > vorna::face_pattern::last_drawn_by_renderers : !drawn_by_renderer(face)) {
        VD_Standard_Draw_DCI_Gouraud_Polytriangle(data, rendition, count, points, colors);
        return;
    }
    if (has_depth(c) && !renderer.draws_with_depth(rendition)) {
        draw_dci_gouraud_polytriangle<without_depth(c)>(data, rendition, count, points, colors);
        return;
    }
    Triangle_Call call(c, renderer, rendition, Shading::gouraud, is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store);
    const Hand_Over hand_over{data, rendition};
    call.target.hand_over = &hand_over;
    Strip_Kernel* near_flat = drawn_by_renderer(face) ? call.kernel(Shading::flat, colorized_pixel_rule(c, renderer, rendition))
                                                      : &call_colorized_member<c>;
    call.draw_any({count, points, colors, false, near_flat, nullptr});
}

template <Case c>
void draw_dc_gouraud_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                  const VT_Point* points, const VT_RGB32* colors) {
    draw_dci_gouraud_polytriangle<c>(data, rendition, count, rounded_points(count, points).data(), colors);
}

#define KRB_FOR_CASE(c)                                                                                                          \
    template VT_Draw_Gouraud<VT_DCI_Point> draw_dci_gouraud_polytriangle<c>;                                                     \
    template VT_Draw_Gouraud<VT_Point> draw_dc_gouraud_polytriangle<c>;
KRB_FOR_EACH_CASE
#undef KRB_FOR_CASE

} // namespace krb

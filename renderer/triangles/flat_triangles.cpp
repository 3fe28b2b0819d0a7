// Members of the flat and colorized device polytriangle slots.
#include "renderer/triangles/flat_triangles.h"

#include "renderer/triangles/polytriangles.h"

namespace krb {

namespace {

void fill_strip(Case c, const Software_Z_Buffer& renderer, const VT_Rendition& rendition, Pixel_Rule pixel,
                const Triangle_Strip& strip) {
    const bool solid = is_solid(rendition.face);
    const Face_Pattern pattern = solid ? Face_Pattern{} : pattern_of(rendition.face);
    const Triangle_Configuration configuration{Shading::flat, pixel_format_of(c), depth_rule_of(c, renderer), pixel,
                                               solid ? Clip_Rule::open : Clip_Rule::patterned};
    (*renderer.kernels->triangles)[configuration](target_of(c, renderer, &pattern), strip);
}

} // namespace

template <Case c>
void draw_dci_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                           const VT_DCI_Point* points) {
    const Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 3) {
        return;
    }
    if (!drawn_by_renderer(rendition.face)) {
        VD_Standard_Draw_DCI_Polytriangle(data, rendition, count, points);
        return;
    }
    if (has_depth(c) && !rendition.clip.depth_test) {
        draw_dci_polytriangle<without_depth(c)>(data, rendition, count, points);
        return;
    }
    VT_RGB32 color = rendition.face.color;
    Pixel_Rule pixel = colorized_pixel_rule(c, renderer, rendition);
    if constexpr (c == Case::index8) {
        pixel = renderer.merges(rendition.face.mode) ? Pixel_Rule::merge : Pixel_Rule::store;
    } else if constexpr (c == Case::rgb32) {
        // A translucent or merging face is drawn as the alpha member draws it; one that only merges is opaque.
        const bool translucent = (rendition.face.flags & face_flag::translucent) != 0;
        if (translucent || renderer.merges(rendition.face.mode)) {
            pixel = colorized_pixel_rule(Case::rgb32_alpha, renderer, rendition);
            color.alpha = translucent ? color.alpha : 255;
        }
    }
    fill_strip(c, renderer, rendition, pixel, {count, points, &color, true, nullptr});
}

template <Case c>
void draw_dci_colorized_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                     const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
    const Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 3) {
        return;
    }
    if (!drawn_by_renderer(rendition.face)) {
        VD_Standard_Draw_DCI_Colorized_Polytriangle(data, rendition, count, points, colors, single_color);
        return;
    }
    if (has_depth(c) && !rendition.clip.depth_test) {
        draw_dci_colorized_polytriangle<without_depth(c)>(data, rendition, count, points, colors, single_color);
        return;
    }
    fill_strip(c, renderer, rendition, colorized_pixel_rule(c, renderer, rendition),
               {count, points, colors, single_color, nullptr});
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

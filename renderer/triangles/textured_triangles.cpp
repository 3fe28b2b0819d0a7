// Members of the textured device polytriangle slots.
#include "renderer/kernels/call_target.h"
#include "renderer/triangles/polytriangles.h"
#include "renderer/triangles/texture_coordinates.h"
#include "renderer/triangles/triangle_target.h"

namespace krb {

Texture_Parameters texture_parameters(const VT_Face_Attributes& face, std::int32_t count, const VT_Parameter* parameters,
                                      std::int32_t parameter_width) {
    Texture_Parameters pairs(std::int64_t{2} * count);
    vorna::set_texture_parameters(face, count, parameters, parameter_width, pairs.data());
    return pairs;
}

Texel_Coordinates texel_coordinates(const VT_Shared_Image& texture, float u, float v) noexcept {
    return {vorna::texel_coordinate(u, texture.width()), vorna::texel_coordinate(v, texture.height())};
}

void set_texture(Triangle_Target& target, const VT_Shared_Image& texture) noexcept {
    target.texels = texture.row(0);
    target.texture_width_mask = texture.width() - 1;
    target.texture_height_mask = texture.height() - 1;
}

namespace {

template <Case c, Pixel_Rule texels>
void draw_textured_strip(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                         const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t parameter_width,
                         const VT_Shared_Image& texture) {
    if (has_depth(c) && !renderer_of(data).draws_with_depth(rendition)) {
        draw_textured_strip<without_depth(c), texels>(data, rendition, count, points, colors, parameters, parameter_width,
                                                      texture);
        return;
    }
    Texture_Parameters pairs = texture_parameters(rendition.face, count, parameters, parameter_width);
    Scratch<Texel_Coordinates> coordinates(count);
    for (std::int32_t i = 0; i < count; ++i) {
        coordinates[i] = texel_coordinates(texture, pairs[2 * i], pairs[2 * i + 1]);
    }
    Triangle_Call call(c, renderer_of(data), rendition, Shading::textured, texels);
    set_texture(call.target, texture);
    call.draw_any({count, points, colors, false, nullptr, coordinates.data()});
}

} // namespace

template <Case c, Pixel_Rule texels>
void draw_dci_textured_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                    const VT_DCI_Point* points, const VT_RGB32* colors, const VT_Parameter* parameters,
                                    std::int32_t parameter_width, const float* weights, const VT_Vector* normals) {
    const Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 3) {
        return;
    }
    const VT_Shared_Image* texture = vorna::drawable_texture(rendition.face);
    if (!drawn_by_renderer(rendition.face) || !texture || !holds_pixels_of(c, renderer)) {
        VD_Standard_Draw_DCI_Textured_Polytriangle(data, rendition, count, points, colors, parameters, parameter_width, weights,
                                                   normals);
        return;
    }
    draw_textured_strip<c, texels>(data, rendition, count, points, colors, parameters, parameter_width, *texture);
}

template <Case c, Pixel_Rule texels>
void draw_dc_textured_polytriangle(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                   const VT_Point* points, const VT_RGB32* colors, const VT_Parameter* parameters,
                                   std::int32_t parameter_width, const float* weights, const VT_Vector* normals) {
    const Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 3) {
        return;
    }
    const VT_Shared_Image* texture = vorna::drawable_texture(rendition.face);
    if (!drawn_by_renderer(rendition.face) || !texture || !holds_pixels_of(c, renderer)) {
        VD_Standard_Draw_DC_Textured_Polytriangle(data, rendition, count, points, colors, parameters, parameter_width, weights,
                                                  normals);
        return;
    }
    draw_textured_strip<c, texels>(data, rendition, count, rounded_points(count, points).data(), colors, parameters,
                                   parameter_width, *texture);
}

#define KRB_FOR_CASE(c)                                                                                                          \
    template VT_Draw_Textured<VT_DCI_Point> draw_dci_textured_polytriangle<c, Pixel_Rule::blend>;                                \
    template VT_Draw_Textured<VT_Point> draw_dc_textured_polytriangle<c, Pixel_Rule::blend>;
KRB_FOR_EACH_CASE
#undef KRB_FOR_CASE
template VT_Draw_Textured<VT_DCI_Point> draw_dci_textured_polytriangle<Case::index8, Pixel_Rule::store>;
template VT_Draw_Textured<VT_DCI_Point> draw_dci_textured_polytriangle<Case::depth_index8, Pixel_Rule::store>;
template VT_Draw_Textured<VT_Point> draw_dc_textured_polytriangle<Case::depth_index8, Pixel_Rule::store>;

} // namespace krb

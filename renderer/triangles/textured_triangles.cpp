// Members of the textured device polytriangle slots.
#include "renderer/kernels/call_target.h"
#include "renderer/triangles/polytriangles.h"
#include "renderer/triangles/texture_coordinates.h"
#include "renderer/triangles/triangle_target.h"

namespace krb {

Texture_Parameters texture_parameters(const VT_Face_Attributes& face, std::int32_t count, const VT_Parameter* parameters,
                                      std::int32_t parameter_width) {
    Texture_Parameters pairs(std::int64_t{2} * count);
    const bool transformed = face.material && face.material->has_texture_matrix;
    for (std::int32_t i = 0; i < count; ++i) {
        const VT_Parameter* of_point = parameters + std::int64_t{i} * parameter_width;
        float u = parameter_width > 0 ? of_point[0] : 0;
        float v = parameter_width > 1 ? of_point[1] : 0;
        if (transformed) {
            const auto& m = face.material->texture_matrix.m;
            const double in_u = u;
            const double in_v = v;
            u = static_cast<float>(m[0][0] * in_u + m[0][1] * in_v + m[0][3]);
            v = static_cast<float>(m[1][0] * in_u + m[1][1] * in_v + m[1][3]);
        }
        pairs[2 * i] = u;
        pairs[2 * i + 1] = v;
    }
    return pairs;
}

const VT_Shared_Image* drawable_texture(const VT_Face_Attributes& face) noexcept {
    const VT_Shared_Image* image = face.material ? face.material->texture.get() : nullptr;
    const auto power_of_two = [](std::int32_t side) { return side > 0 && side <= 16384 && (side & (side - 1)) == 0; };
    const bool fits = image && image->format() == Buffer_Format::rgb32 && power_of_two(image->width()) &&
                      power_of_two(image->height()) && image->row_bytes() == 4 * image->width();
    return fits ? image : nullptr;
}

Texel_Coordinates texel_coordinates(const VT_Shared_Image& texture, float u, float v) noexcept {
    const auto fixed = [](float parameter, std::int32_t side) {
        const double scaled = double{parameter} * side * 65536.0;
        return scaled > -2147483649.0 && scaled < 2147483648.0 ? static_cast<std::int32_t>(scaled) : INT32_MIN;
    };
    return {fixed(u, texture.width()), fixed(v, texture.height())};
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
    const VT_Shared_Image* texture = drawable_texture(rendition.face);
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
    const VT_Shared_Image* texture = drawable_texture(rendition.face);
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

// Members of the textured device polytriangle slots.
#include "renderer/kernels/call_target.h"
#include "renderer/triangles/polytriangles.h"
#include "renderer/triangles/strip_entry.h"
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

// The texture must be one that the renderer draws, and pixels of the case's format must lie in the buffer: slots that the options
// do not name keep their members.
template <Case c> struct Textured_Entry : Device_Strip_Entry<c> {
    template <class... Arguments>
    static bool is_hosts(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, const Arguments&...) noexcept {
        return !drawn_by_renderer(rendition.face) || !vorna::drawable_texture(rendition.face) || !holds_pixels_of(c, renderer);
    }
};

} // namespace

template <Pixel_Rule texels, Case c>
struct Entry<With_Texels<slots::Draw_DCI_Textured_Polytriangle, texels>, c> : Textured_Entry<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors, const VT_Parameter* parameters, std::int32_t parameter_width, const float*,
                     const VT_Vector*) {
        const VT_Shared_Image& texture = *vorna::drawable_texture(rendition.face);
        Texture_Parameters pairs = texture_parameters(rendition.face, count, parameters, parameter_width);
        vorna::Scratch<Texel_Coordinates> coordinates(count);
        for (std::int32_t i = 0; i < count; ++i) {
            coordinates[i] = texel_coordinates(texture, pairs[2 * i], pairs[2 * i + 1]);
        }
        Triangle_Call call(c, renderer, rendition, Shading::textured, texels);
        set_texture(call.target, texture);
        call.draw_any({count, points, colors, false, nullptr, coordinates.data()});
    }
};

template <Pixel_Rule texels, Case c>
struct Entry<With_Texels<slots::Draw_DC_Textured_Polytriangle, texels>, c>
    : Rounded_Entry<Textured_Entry<c>, With_Texels<slots::Draw_DCI_Textured_Polytriangle, texels>, c> {};

KRB_MEMBERS(, Blended_Texels<slots::Draw_DCI_Textured_Polytriangle>)
template struct Member<Stored_Texels<slots::Draw_DCI_Textured_Polytriangle>, Case::index8>;
template struct Member<Stored_Texels<slots::Draw_DCI_Textured_Polytriangle>, Case::depth_index8>;
KRB_MEMBERS(, Blended_Texels<slots::Draw_DC_Textured_Polytriangle>)
template struct Member<Stored_Texels<slots::Draw_DC_Textured_Polytriangle>, Case::depth_index8>;

} // namespace krb

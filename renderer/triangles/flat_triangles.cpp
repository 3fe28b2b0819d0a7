// Members of the flat and colorized device polytriangle slots.
#include "renderer/triangles/polytriangles.h"
#include "renderer/triangles/strip_entry.h"
#include "renderer/triangles/triangle_target.h"

namespace krb {

namespace {

// The member with depth and alpha has no masked sibling: it draws through the mask's holes.
constexpr bool consults_mask(Case c) noexcept {
    return c != Case::depth_rgb32_alpha;
}

} // namespace

template <Case c> struct Entry<slots::Draw_DCI_Polytriangle, c> : Device_Strip_Entry<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
        const Flat_Face face = flat_face(c, renderer, rendition);
        const Triangle_Call call(c, renderer, rendition, Shading::flat, face.pixel, consults_mask(c));
        call.draw_any({count, points, &face.color, true, nullptr, nullptr});
    }
};

template <Case c> struct Entry<slots::Draw_DCI_Colorized_Polytriangle, c> : Device_Strip_Entry<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors, bool single_color) {
        const Triangle_Call call(c, renderer, rendition, Shading::flat, colorized_pixel_rule(c, renderer, rendition),
                                 consults_mask(c));
        call.draw_any({count, points, colors, single_color, nullptr, nullptr});
    }
};

template <Case c>
struct Entry<slots::Draw_DC_Polytriangle, c> : Rounded_Entry<Entry_Rules<c>, slots::Draw_DCI_Polytriangle, c> {};

template <Case c>
struct Entry<slots::Draw_DC_Colorized_Polytriangle, c>
    : Rounded_Entry<Entry_Rules<c>, slots::Draw_DCI_Colorized_Polytriangle, c> {};

KRB_MEMBERS(, slots::Draw_DCI_Polytriangle)
KRB_MEMBERS(, slots::Draw_DCI_Colorized_Polytriangle)
KRB_MEMBERS(, slots::Draw_DC_Polytriangle)
KRB_MEMBERS(, slots::Draw_DC_Colorized_Polytriangle)

} // namespace krb

// Members of the Gouraud device polytriangle slots.
#include "renderer/triangles/polytriangles.h"
#include "renderer/triangles/strip_entry.h"
#include "renderer/triangles/triangle_target.h"

namespace krb {

namespace {

// What the near-flat triangles of a strip need when they cannot be filled at once.
struct Hand_Over {
    Software_Z_Buffer& renderer;
    const VT_Rendition& rendition;
};

// Gives near-flat triangles to the colorized member one by one, so that it can hand each of them on.
template <Case c> void call_colorized_member(const Triangle_Target& target, const Triangle_Strip& strip) {
    const auto& to = *static_cast<const Hand_Over*>(target.hand_over);
    for (std::int32_t k = 0; k < strip.count - 2; ++k) {
        Member<slots::Draw_DCI_Colorized_Polytriangle, c>::enter(to.renderer, to.rendition, 3, strip.points + k, strip.colors + k,
                                                                 true);
    }
}

} // namespace

template <Case c> struct Entry<slots::Draw_DCI_Gouraud_Polytriangle, c> : Gouraud_Entry<Device_Strip_Entry<c>, c> {
    template <class... Arguments>
    static bool is_hosts(const Software_Z_Buffer& renderer, const VT_Rendition& rendition,
                         const Arguments&... arguments) noexcept {
        // The opaque member without depth does not look at special shading.
        using Rules = std::conditional_t<c == Case::rgb32, Plane_Strip_Entry<c>, Device_Strip_Entry<c>>;
        return Rules::is_hosts(renderer, rendition, arguments...);
    }
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors) {
        Triangle_Call call(c, renderer, rendition, Shading::gouraud, is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store);
        const Hand_Over hand_over{renderer, rendition};
        call.target.hand_over = &hand_over;
        Strip_Kernel* near_flat = drawn_by_renderer(rendition.face)
                                      ? call.kernel(Shading::flat, colorized_pixel_rule(c, renderer, rendition))
                                      : &call_colorized_member<c>;
        call.draw_any({count, points, colors, false, near_flat, nullptr});
    }
};

template <Case c>
struct Entry<slots::Draw_DC_Gouraud_Polytriangle, c> : Rounded_Entry<Entry_Rules<c>, slots::Draw_DCI_Gouraud_Polytriangle, c> {};

KRB_MEMBERS(, slots::Draw_DCI_Gouraud_Polytriangle)
KRB_MEMBERS(, slots::Draw_DC_Gouraud_Polytriangle)

} // namespace krb

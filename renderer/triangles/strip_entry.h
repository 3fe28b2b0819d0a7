// The entry rules that the polytriangle slots share.
#pragma once

#include "host/attributes.h"
#include "renderer/core/entry.h"
#include "renderer/triangles/triangle_target.h"

namespace krb {

template <Case c> struct Device_Strip_Entry : Entry_Rules<c> {
    static constexpr std::int32_t least_points = 3;

    template <class... Arguments>
    static bool is_hosts(const Software_Z_Buffer&, const VT_Rendition& rendition, const Arguments&...) noexcept {
        return !drawn_by_renderer(rendition.face);
    }
};

// Strips that may reach anywhere, two points included: the host decides about them before the renderer counts.
template <Case c> struct Plane_Strip_Entry : Entry_Rules<c> {
    static constexpr std::int32_t least_points = 2;
    static constexpr bool host_goes_first = true;

    template <class... Arguments>
    static bool is_hosts(const Software_Z_Buffer&, const VT_Rendition& rendition, const Arguments&...) noexcept {
        return rendition.face.pattern > vorna::face_pattern::last_drawn_by_renderers;
    }
};

// Opaque members without depth draw translucent Gouraud faces as those with alpha blending do.
template <class Rules, Case c> struct Gouraud_Entry : Rules {
    static constexpr Case other_case = c == Case::rgb32 ? Case::rgb32_alpha : c;

    template <class... Arguments> static bool goes_to_other_case(const VT_Rendition& rendition, const Arguments&...) noexcept {
        return (rendition.face.flags & vorna::face_flag::translucent) != 0;
    }
};

// Float points, rounded for the member of the integer slot, which also decides about depth.
template <class Rules, class Integer_Slot, Case c> struct Rounded_Entry : Rules {
    static constexpr bool has_sibling = false;

    template <class... Arguments>
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_Point* points,
                     const Arguments&... arguments) {
        Member<Integer_Slot, c>::enter(renderer, rendition, count, rounded_points(count, points).data(), arguments...);
    }
};

} // namespace krb

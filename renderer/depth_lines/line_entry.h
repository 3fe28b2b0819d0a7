// The entry rules that the polyline slots share.
#pragma once

#include "host/attributes.h"
#include "renderer/core/entry.h"
#include "renderer/depth_lines/cased_lines.h"
#include "renderer/depth_lines/line_target.h"
#include "renderer/depth_lines/line_types.h"

namespace krb {

template <Case c> struct Line_Entry : Entry_Rules<c> {
    static constexpr std::int32_t least_points = 2;

    template <class... Arguments>
    static bool is_hosts(const Software_Z_Buffer&, const VT_Rendition& rendition, const Arguments&...) noexcept {
        return !drawn_by_renderer(rendition.line);
    }
};

// Cased lines of a slot that has polylines in the rendition's colour, drawn by its member in two passes.
template <class Slot, Case c>
void draw_passes(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
    draw_in_two_passes(rendition, [&](const VT_Rendition& pass) { Member<Slot, c>::enter(renderer, pass, count, points); });
}

// Lines with line types, drawn by the member in plain pieces.
template <class Slot, Case c>
void draw_pieces(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
    draw_by_line_types(rendition, renderer.window_rectangle(), count, points,
                       [&renderer](const VT_Rendition* plain, int length, const VT_DCI_Point* piece) {
                           Member<Slot, c>::enter(renderer, *plain, length, piece);
                       });
}

} // namespace krb

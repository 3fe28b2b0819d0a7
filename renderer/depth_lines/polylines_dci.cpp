// Members of the device polyline slots.
#include "renderer/depth_lines/polylines_dci.h"

#include "renderer/depth_lines/cased_lines.h"
#include "renderer/depth_lines/line_target.h"
#include "renderer/depth_lines/line_types.h"
#include "renderer/depth_lines/smoothed_polylines.h"

namespace krb {

namespace {

// How the colorized members combine a colour with a pixel. Members without depth merge; dithered colours never do.
Pixel_Rule colorized_pixel_rule(Case c, const Software_Z_Buffer& renderer, const VT_Rendition& rendition) noexcept {
    if (facts_of(c).stores_words && !has_depth(c) && renderer.merges(rendition.line.mode)) {
        return Pixel_Rule::merge;
    }
    return is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store;
}

// Segments in one colour each, after all entry checks. Masked members have a depth rule of their own: the fixed one.
template <Case c>
void draw_colorized(Software_Z_Buffer& renderer, const VT_Rendition& rendition, bool consults_mask, const Polyline& polyline) {
    if constexpr (c == Case::rgb32 || c == Case::rgb32_alpha) {
        if (draws_smoothed(renderer, rendition)) {
            draw_smoothed_polyline(c, renderer, rendition, polyline);
            return;
        }
    }
    Line_Rules rules{Line_Shading::flat, colorized_pixel_rule(c, renderer, rendition)};
    rules.masked = consults_mask && is_masked(renderer, rendition);
    rules.follows_test_mode = has_depth(c) && !rules.masked;
    Line_Call<Polyline>(c, renderer, rules).draw(polyline);
}

// The palette index of the rendition, which may merge.
void draw_index(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
    const Pixel_Rule pixel = renderer.merges(rendition.line.mode) ? Pixel_Rule::merge : Pixel_Rule::store;
    Line_Rules rules{Line_Shading::index, pixel};
    rules.masked = is_masked(renderer, rendition);
    Line_Call<Polyline>(Case::index8, renderer, rules).draw({count, points, nullptr, true, rendition.line.index});
}

// One pass of a flat polyline.
template <Case c>
void draw_flat(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
    Software_Z_Buffer& renderer = renderer_of(data);
    // Only the 8-bit member without depth cuts lines by their types, whatever their style and weight.
    if (c == Case::index8 && has_line_types(rendition.line)) {
        draw_by_line_types(rendition, renderer.window_rectangle(), count, points,
                           [&data](const VT_Rendition* plain, int length, const VT_DCI_Point* piece) {
                               draw_flat<c>(data, *plain, length, piece);
                           });
        return;
    }
    if (!drawn_by_renderer(rendition.line)) {
        VD_Standard_Draw_DCI_Polyline(data, rendition, count, points);
        return;
    }
    if constexpr (c == Case::index8) {
        draw_index(renderer, rendition, count, points);
    } else {
        draw_colorized<c>(renderer, rendition, true, {count, points, &rendition.line.color, true, 0});
    }
}

// What a Gouraud call needs to hand its almost uniform segments to the colorized member.
struct Near_Flat_Call {
    VT_Renderer_Data& data;
    const VT_Rendition& rendition;
};

template <Case c> void draw_near_flat(const void* call, const VT_DCI_Point* points, const VT_RGB32* color) {
    const auto& [data, rendition] = *static_cast<const Near_Flat_Call*>(call);
    draw_dci_colorized_polyline<c>(data, rendition, 2, points, color, true);
}

} // namespace

template <Case c>
void draw_dci_polyline(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
    if (!renderer_of(data).color_buffer || count < 2) {
        return;
    }
    if (has_depth(c) && !renderer_of(data).draws_with_depth(rendition)) {
        draw_dci_polyline<without_depth(c)>(data, rendition, count, points);
        return;
    }
    if (c == Case::index8 || !is_cased(rendition.line)) {
        draw_flat<c>(data, rendition, count, points);
        return;
    }
    draw_in_two_passes(rendition, [&](const VT_Rendition& pass) { draw_flat<c>(data, pass, count, points); });
}

template <Case c>
void draw_dci_colorized_polyline(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                 const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
    Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 2) {
        return;
    }
    if (has_depth(c) && !renderer.draws_with_depth(rendition)) {
        draw_dci_colorized_polyline<without_depth(c)>(data, rendition, count, points, colors, single_color);
        return;
    }
    if (!drawn_by_renderer(rendition.line)) {
        VD_Standard_Draw_DCI_Colorized_Polyline(data, rendition, count, points, colors, single_color);
        return;
    }
    // The 8-bit member without depth has no masked sibling.
    draw_colorized<c>(renderer, rendition, c != Case::index8, {count, points, colors, single_color, 0});
}

template <Case c>
void draw_dci_gouraud_polyline(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                               const VT_DCI_Point* points, const VT_RGB32* colors) {
    Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer || count < 2) {
        return;
    }
    if (has_depth(c) && !renderer.draws_with_depth(rendition)) {
        draw_dci_gouraud_polyline<without_depth(c)>(data, rendition, count, points, colors);
        return;
    }
    if (!drawn_by_renderer(rendition.line)) {
        VD_Standard_Draw_DCI_Gouraud_Polyline(data, rendition, count, points, colors);
        return;
    }
    Line_Rules rules{Line_Shading::gouraud, is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store};
    rules.masked = is_masked(renderer, rendition);
    Line_Call<Polyline> call(c, renderer, rules);
    const Near_Flat_Call near_flat{data, rendition};
    // Members with depth that store words deliberately have no short cut. Neither has the masked member without depth that
    // dithers: the colorized member that would draw for it knows no mask.
    constexpr bool dithers = !facts_of(c).stores_words;
    if (dithers ? has_depth(c) || !rules.masked : !has_depth(c)) {
        call.target.draw_near_flat = draw_near_flat<c>;
        call.target.call = &near_flat;
    }
    call.draw({count, points, colors, false, 0});
}

#define KRB_FOR_CASE(c)                                                                                                          \
    template VT_Draw_Points<VT_DCI_Point> draw_dci_polyline<c>;                                                                  \
    template VT_Draw_Colorized<VT_DCI_Point> draw_dci_colorized_polyline<c>;                                                     \
    template VT_Draw_Gouraud<VT_DCI_Point> draw_dci_gouraud_polyline<c>;
KRB_FOR_EACH_CASE
#undef KRB_FOR_CASE

} // namespace krb

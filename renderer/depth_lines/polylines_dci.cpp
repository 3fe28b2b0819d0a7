// Members of the device polyline slots.
#include "renderer/depth_lines/polylines_dci.h"

#include "renderer/depth_lines/line_entry.h"
#include "renderer/depth_lines/line_target.h"
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
template <Case c>
void draw_index(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
    const Pixel_Rule pixel = renderer.merges(rendition.line.mode) ? Pixel_Rule::merge : Pixel_Rule::store;
    Line_Rules rules{Line_Shading::index, pixel};
    rules.masked = is_masked(renderer, rendition);
    Line_Call<Polyline>(c, renderer, rules).draw({count, points, nullptr, true, rendition.line.index});
}

// What a Gouraud call needs to hand its almost uniform segments to the colorized member.
struct Near_Flat_Call {
    Software_Z_Buffer& renderer;
    const VT_Rendition& rendition;
};

template <Case c> void draw_near_flat(const void* call, const VT_DCI_Point* points, const VT_RGB32* color) {
    const auto& [renderer, rendition] = *static_cast<const Near_Flat_Call*>(call);
    Member<slots::Draw_DCI_Colorized_Polyline, c>::enter(renderer, rendition, 2, points, color, true);
}

} // namespace

template <Case c> struct Entry<slots::Draw_DCI_Polyline, c> : Line_Entry<c> {
    // Only lines that are drawn as an index are cut by their line types, whatever their style and weight. They have no casing.
    static bool draw_in_parts(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                              const VT_DCI_Point* points) {
        const bool is_index = !facts_of(c).stores_words && !(has_depth(c) && renderer.draws_with_depth(rendition));
        if (is_index && has_line_types(rendition.line)) {
            draw_pieces<slots::Draw_DCI_Polyline, c>(renderer, rendition, count, points);
            return true;
        }
        if (!is_index && is_cased(rendition.line)) {
            draw_passes<slots::Draw_DCI_Polyline, c>(renderer, rendition, count, points);
            return true;
        }
        return false;
    }
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
        if constexpr (draws_indices(c)) {
            draw_index<c>(renderer, rendition, count, points);
        } else {
            draw_colorized<c>(renderer, rendition, true, {count, points, &rendition.line.color, true, 0});
        }
    }
};

template <Case c> struct Entry<slots::Draw_DCI_Colorized_Polyline, c> : Line_Entry<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors, bool single_color) {
        // The dithering member without depth has no masked sibling.
        draw_colorized<c>(renderer, rendition, !draws_indices(c), {count, points, colors, single_color, 0});
    }
};

template <Case c> struct Entry<slots::Draw_DCI_Gouraud_Polyline, c> : Line_Entry<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors) {
        Line_Rules rules{Line_Shading::gouraud, is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store};
        rules.masked = is_masked(renderer, rendition);
        Line_Call<Polyline> call(c, renderer, rules);
        const Near_Flat_Call near_flat{renderer, rendition};
        // Members with depth that store words deliberately have no short cut. Neither has the masked member without depth that
        // dithers: the colorized member that would draw for it knows no mask.
        constexpr bool dithers = !facts_of(c).stores_words;
        if (dithers ? has_depth(c) || !rules.masked : !has_depth(c)) {
            call.target.draw_near_flat = draw_near_flat<c>;
            call.target.call = &near_flat;
        }
        call.draw({count, points, colors, false, 0});
    }
};

KRB_MEMBERS(, slots::Draw_DCI_Polyline)
KRB_MEMBERS(, slots::Draw_DCI_Colorized_Polyline)
KRB_MEMBERS(, slots::Draw_DCI_Gouraud_Polyline)

} // namespace krb

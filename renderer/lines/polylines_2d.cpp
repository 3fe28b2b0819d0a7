// Members of the 2DI polyline slots.
//
// Runs of segments that lie inside the clip rectangle go to the device member as one polyline. Of a segment that crosses the
// rectangle's edge the visible pixels are drawn, by rules that differ a little from the device member's. Segments beyond one side
// are dropped.
#include "renderer/lines/polylines_2d.h"

#include "host/clip.h"
#include "host/scratch.h"
#include "renderer/core/compiler_hints.h"
#include "renderer/depth_lines/line_entry.h"
#include "renderer/depth_lines/line_target.h"
#include "renderer/depth_lines/polylines_dci.h"
#include "renderer/lines/line_setup.h"
#include "renderer/primitives/dots.h"

namespace krb {

namespace {

// Follows the last vertex's outcode. No vertex is there, so it ends every stretch.
constexpr std::uint16_t past_the_end = 4096;

// How a member draws its cut segments.
struct Cut_Rules {
    Line_Shading shading;
    Pixel_Rule pixel;
    bool consults_mask;
};

constexpr Pixel_Rule store_or_blend(Case c) noexcept {
    return is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store;
}

// Draws what the rectangle leaves of a polyline of 2 or more points, in order: inside(k, count, points) polylines whose first
// colour is that of vertex k, dot() the last vertex when its segment is cut, and cut segments, for which paint(k, ramps, paint)
// sets the colour of segment k.
template <Case c, class Inside, class Dot, class Paint>
void draw_visible(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                  const Cut_Rules& rules, Inside inside, Dot dot, Paint paint) {
    const VT_Int_Rectangle rectangle = renderer.visible_rectangle(rendition);
    if (vorna::is_empty(rectangle)) {
        return;
    }
    vorna::Scratch<std::uint16_t, 65> scratch(std::int64_t{count} + 1);
    std::uint16_t* outcodes = scratch.data();
    if (VD_Clip(rectangle, count, points, outcodes) == 0) {
        return;
    }
    outcodes[count] = past_the_end;
    if (outcodes[count - 1] == 0 && outcodes[count - 2] != 0) {
        dot();
    }
    const Line_Call<Cut_Segment> call(c, renderer,
                                      {rules.shading, rules.pixel, rules.consults_mask && is_masked(renderer, rendition), true});
    const auto cut = [&](std::int32_t k) {
        Cut_Segment segment{};
        segment.from = points[k];
        segment.to = points[k + 1];
        if (!is_in_guard_band(segment.from) || !is_in_guard_band(segment.to)) {
            if (!clip_to_guard_band(segment.from, segment.to)) {
                return;
            }
            const VT_DCI_Point ends[2] = {segment.from, segment.to};
            std::uint16_t end_outcodes[2];
            const std::int32_t visible_ends = VD_Clip(rectangle, 2, ends, end_outcodes);
            if (visible_ends == 2) {
                inside(k, 2, ends);
            }
            if (visible_ends == 2 || visible_ends == 0) {
                return;
            }
        }
        if (!set_visible_part(rectangle, segment)) {
            return;
        }
        const Line_Ramps ramps(points[k], points[k + 1], segment);
        segment.ramps_from = ramps.start();
        if constexpr (has_depth(c)) {
            segment.paint.depth = ramps.depth(points[k].z, points[k + 1].z);
        }
        paint(k, ramps, segment.paint);
        call.draw(segment);
    };
    for (std::int32_t k = 0; k < count - 1;) {
        if ((outcodes[k] | outcodes[k + 1]) != 0) {
            if ((outcodes[k] & outcodes[k + 1]) == 0) {
                cut(k);
            }
            ++k;
            continue;
        }
        const std::int32_t first = k;
        while (outcodes[k + 1] == 0) {
            ++k;
        }
        inside(first, k - first + 1, points + first);
    }
}

// Most polylines lie inside, which is found in less time than outcodes take, and than what draw_cut of the slot's entry needs in
// memory: that is a function of its own.
template <class Slot, class Device_Slot, Case c, class... Arguments>
KRB_ALWAYS_INLINE void draw_inside_or_cut(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                                          const VT_DCI_Point* points, Arguments... arguments) {
    if (renderer.shows_all(rendition, count, points)) {
        Member<Device_Slot, c>::enter(renderer, rendition, count, points, arguments...);
    } else {
        Entry<Slot, c>::draw_cut(renderer, rendition, count, points, arguments...);
    }
}

} // namespace

template <Case c> struct Entry<slots::Draw_2DI_Polyline, c> : Line_Entry<c> {
    // Opaque members that store words draw casings; all others cut cased lines by their line types too.
    static bool draw_in_parts(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                              const VT_DCI_Point* points) {
        if (facts_of(c).stores_words && !is_alpha(c) && is_cased(rendition.line)) {
            draw_passes<slots::Draw_2DI_Polyline, c>(renderer, rendition, count, points);
            return true;
        }
        if (has_line_types(rendition.line)) {
            draw_pieces<slots::Draw_2DI_Polyline, c>(renderer, rendition, count, points);
            return true;
        }
        return false;
    }
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
        draw_inside_or_cut<slots::Draw_2DI_Polyline, slots::Draw_DCI_Polyline, c>(renderer, rendition, count, points);
    }
    KRB_NEVER_INLINE static void draw_cut(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                                          const VT_DCI_Point* points) {
        // The only members whose cut segments merge.
        const Pixel_Rule pixel = renderer.merges(rendition.line.mode) ? Pixel_Rule::merge : store_or_blend(c);
        draw_visible<c>(
            renderer, rendition, count, points, {Line_Shading::flat, pixel, true},
            [&](std::int32_t, std::int32_t length, const VT_DCI_Point* stretch) {
                Member<slots::Draw_DCI_Polyline, c>::enter(renderer, rendition, length, stretch);
            },
            [&] { Member<slots::Draw_DCI_Dot, c>::enter(renderer, rendition, points + count - 1, nullptr); },
            [&](std::int32_t, const Line_Ramps&, Line_Paint& paint) { paint.color = rendition.line.color; });
    }
};

template <Case c> struct Entry<slots::Draw_2DI_Colorized_Polyline, c> : Line_Entry<c> {
    // One opaque colour for all does not blend.
    static constexpr Case other_case = without_alpha(c);

    static bool goes_to_other_case(const VT_Rendition& rendition, std::int32_t, const VT_DCI_Point*, const VT_RGB32* colors,
                                   bool single_color) noexcept {
        return (single_color || !colors) && (colors ? colors : &rendition.line.color)->alpha == 255;
    }
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors, bool single_color) {
        if (!colors) {
            colors = &rendition.line.color;
            single_color = true;
        }
        draw_inside_or_cut<slots::Draw_2DI_Colorized_Polyline, slots::Draw_DCI_Colorized_Polyline, c>(
            renderer, rendition, count, points, colors, single_color);
    }
    KRB_NEVER_INLINE static void draw_cut(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                                          const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
        // Cut segments with depth deliberately draw through the mask, as all dithered ones do.
        const bool consults_mask = facts_of(c).stores_words && !has_depth(c);
        draw_visible<c>(
            renderer, rendition, count, points, {Line_Shading::flat, store_or_blend(c), consults_mask},
            [&](std::int32_t k, std::int32_t length, const VT_DCI_Point* stretch) {
                Member<slots::Draw_DCI_Colorized_Polyline, c>::enter(renderer, rendition, length, stretch,
                                                                     single_color ? colors : colors + k, single_color);
            },
            [&] {
                Member<slots::Draw_DCI_Dot, c>::enter(renderer, rendition, points + count - 1,
                                                      single_color ? colors : colors + count - 2);
            },
            [&](std::int32_t k, const Line_Ramps&, Line_Paint& paint) { paint.color = colors[single_color ? 0 : k]; });
    }
};

template <Case c> struct Entry<slots::Draw_2DI_Gouraud_Polyline, c> : Line_Entry<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors) {
        draw_inside_or_cut<slots::Draw_2DI_Gouraud_Polyline, slots::Draw_DCI_Gouraud_Polyline, c>(renderer, rendition, count,
                                                                                                  points, colors);
    }
    KRB_NEVER_INLINE static void draw_cut(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                                          const VT_DCI_Point* points, const VT_RGB32* colors) {
        // Additive dithering takes channels in units of the colour cube's cells.
        constexpr bool dithers = !facts_of(c).stores_words;
        const auto scaled = [&](std::uint8_t value, std::int32_t multiplier) {
            return dithers ? static_cast<std::int32_t>(std::uint32_t{value} * static_cast<std::uint32_t>(multiplier)) : value;
        };
        draw_visible<c>(
            renderer, rendition, count, points, {Line_Shading::gouraud, store_or_blend(c), !dithers},
            [&](std::int32_t k, std::int32_t length, const VT_DCI_Point* stretch) {
                Member<slots::Draw_DCI_Gouraud_Polyline, c>::enter(renderer, rendition, length, stretch, colors + k);
            },
            [&] { Member<slots::Draw_DCI_Dot, c>::enter(renderer, rendition, points + count - 1, colors + count - 1); },
            [&](std::int32_t k, const Line_Ramps& ramps, Line_Paint& paint) {
                const Dither& dither = renderer.dither;
                const auto channel = [&](std::uint8_t from, std::uint8_t to, std::int32_t multiplier) {
                    return ramps.channel(scaled(from, multiplier), scaled(to, multiplier));
                };
                paint.blue = channel(colors[k].blue, colors[k + 1].blue, dither.blue_multiplier);
                paint.green = channel(colors[k].green, colors[k + 1].green, dither.green_multiplier);
                paint.red = channel(colors[k].red, colors[k + 1].red, dither.red_multiplier);
                if constexpr (is_alpha(c)) {
                    paint.alpha = channel(colors[k].alpha, colors[k + 1].alpha, 1);
                }
            });
    }
};

KRB_MEMBERS(, slots::Draw_2DI_Polyline)
KRB_MEMBERS(, slots::Draw_2DI_Colorized_Polyline)
KRB_MEMBERS(, slots::Draw_2DI_Gouraud_Polyline)

} // namespace krb

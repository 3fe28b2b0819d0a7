// Members of the polymarker slots.
#include "renderer/primitives/polymarkers.h"

#include "renderer/core/compiler_hints.h"
#include "renderer/core/entry.h"
#include "renderer/primitives/single_pixels.h"

namespace krb {

namespace {

// Calls draw(row, column, index of the point) for every point that lies in the hard clip and in the window.
template <class Draw>
KRB_ALWAYS_INLINE void for_each_pixel(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                                      const VT_DCI_Point* points, Draw draw) {
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    for (std::int32_t i = 0; i < count; ++i) {
        const VT_DCI_Point& point = points[i];
        if (point.x < clip.left || point.x > clip.right || point.y < clip.bottom || point.y > clip.top) {
            continue;
        }
        const std::int64_t column = std::int64_t{point.x} - renderer.window_origin.x;
        const std::int64_t row = std::int64_t{point.y} - renderer.window_origin.y;
        // A hard clip may reach beyond the window.
        if (column < 0 || column >= renderer.window_size.x || row < 0 || row >= renderer.window_size.y) {
            continue;
        }
        draw(static_cast<std::int32_t>(row), static_cast<std::int32_t>(column), i);
    }
}

} // namespace

template <Case c> struct Entry<slots::Draw_2DI_Polymarker, c> : Entry_Rules<c> {
    static constexpr std::int32_t least_points = 1;
    static constexpr bool host_goes_first = true;
    static constexpr Case other_case = without_alpha(c);

    static bool goes_to_other_case(const VT_Rendition& rendition, std::int32_t, const VT_DCI_Point*) noexcept {
        return rendition.marker.color.alpha == 255;
    }
    static bool is_hosts(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t,
                         const VT_DCI_Point*) noexcept {
        return rendition.marker.symbol != 0 || (renderer.color_buffer && !holds_pixels_of(c, renderer));
    }
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
        const VT_Marker_Attributes& marker = rendition.marker;
        const bool merges = !has_depth(c) && renderer.merges(marker.mode);
        const bool masked = !has_depth(c) && is_masked(renderer, rendition);
        const Single_Pixels<c> pixels(renderer, masked, merges);
        for_each_pixel(renderer, rendition, count, points, [&](std::int32_t row, std::int32_t column, std::int32_t i) {
            if constexpr (facts_of(c).stores_words) {
                pixels.draw(row, column, points[i].z, marker.color);
            } else {
                pixels.draw(row, column, points[i].z, marker.index);
            }
        });
    }
};

template <Case c> struct Entry<slots::Draw_2DI_Colorized_Polymarker, c> : Entry_Rules<c> {
    static constexpr std::int32_t least_points = 1;
    static constexpr bool host_goes_first = true;

    static bool is_hosts(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
                         const VT_DCI_Point* points, const VT_RGB32*, bool) noexcept {
        return rendition.marker.size > 1 || Entry<slots::Draw_2DI_Polymarker, c>::is_hosts(renderer, rendition, count, points);
    }
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                     const VT_RGB32* colors, bool single_color) {
        if (!colors) {
            Member<slots::Draw_2DI_Polymarker, c>::enter(renderer, rendition, count, points);
            return;
        }
        const Single_Pixels<c> pixels(renderer, is_masked(renderer, rendition), renderer.merges(rendition.marker.mode));
        for_each_pixel(renderer, rendition, count, points, [&](std::int32_t row, std::int32_t column, std::int32_t i) {
            pixels.draw(row, column, 0, colors[single_color ? 0 : i]);
        });
    }
};

template struct Member<slots::Draw_2DI_Polymarker, Case::index8>;
template struct Member<slots::Draw_2DI_Polymarker, Case::rgb32>;
template struct Member<slots::Draw_2DI_Polymarker, Case::rgb32_alpha>;
template struct Member<slots::Draw_2DI_Polymarker, Case::depth_rgb32>;
template struct Member<slots::Draw_2DI_Polymarker, Case::depth_rgb32_alpha>;
template struct Member<slots::Draw_2DI_Colorized_Polymarker, Case::rgb32_alpha>;

} // namespace krb

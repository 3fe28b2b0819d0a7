// Members of the polymarker slots.
#include "renderer/primitives/polymarkers.h"

#include "renderer/primitives/single_pixels.h"

namespace krb {

namespace {

// Calls draw(row, column, index of the point) for every point that lies in the hard clip and in the window.
template <class Draw>
void for_each_pixel(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count,
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

template <Case c>
void draw_2di_polymarker(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points) {
    const VT_Marker_Attributes& marker = rendition.marker;
    Software_Z_Buffer& renderer = renderer_of(data);
    if (marker.symbol != 0 || (renderer.color_buffer && !holds_pixels_of(c, renderer))) {
        VD_Standard_Draw_2DI_Polymarker(data, rendition, count, points);
        return;
    }
    if (!renderer.color_buffer || count < 1) {
        return;
    }
    if constexpr (is_alpha(c)) {
        if (marker.color.alpha == 255) {
            draw_2di_polymarker<static_cast<Case>(static_cast<int>(c) - 1)>(data, rendition, count, points);
            return;
        }
    }
    if constexpr (has_depth(c)) {
        if (!renderer.draws_with_depth(rendition)) {
            draw_2di_polymarker<without_depth(c)>(data, rendition, count, points);
            return;
        }
    }
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

void draw_2di_colorized_polymarker(VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                   const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
    const VT_Marker_Attributes& marker = rendition.marker;
    Software_Z_Buffer& renderer = renderer_of(data);
    if (marker.symbol != 0 || marker.size > 1 || (renderer.color_buffer && !holds_pixels_of(Case::rgb32_alpha, renderer))) {
        VD_Standard_Draw_2DI_Colorized_Polymarker(data, rendition, count, points, colors, single_color);
        return;
    }
    if (!colors) {
        draw_2di_polymarker<Case::rgb32_alpha>(data, rendition, count, points);
        return;
    }
    if (!renderer.color_buffer || count < 1) {
        return;
    }
    const Single_Pixels<Case::rgb32_alpha> pixels(renderer, is_masked(renderer, rendition), renderer.merges(marker.mode));
    for_each_pixel(renderer, rendition, count, points, [&](std::int32_t row, std::int32_t column, std::int32_t i) {
        pixels.draw(row, column, 0, colors[single_color ? 0 : i]);
    });
}

template VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker<Case::index8>;
template VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker<Case::rgb32>;
template VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker<Case::rgb32_alpha>;
template VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker<Case::depth_rgb32>;
template VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker<Case::depth_rgb32_alpha>;

} // namespace krb

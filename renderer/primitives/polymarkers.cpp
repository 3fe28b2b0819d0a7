// Members of the polymarker slots.
#include "renderer/primitives/polymarkers.h"

#include <cstring>

#include "renderer/core/pixel_combine.h"
#include "renderer/kernels/call_target.h"
#include "renderer/mask/mask_cache.h"
#include "renderer/primitives/single_pixels.h"

namespace krb {

namespace {

// Calls write(pixel, index of the point) for every point that lies in the hard clip, is not masked and passes the depth test.
template <Case c, class Write>
void for_each_pixel(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                    Write write) {
    constexpr std::int64_t pixel_bytes = facts_of(c).pixel_bytes;
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    const bool masked = !has_depth(c) && count > 0 && find_mask(renderer, rendition);
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
        const auto at_column = static_cast<std::int32_t>(column);
        const auto at_row = static_cast<std::int32_t>(row);
        if (masked && is_clipped_away(renderer, at_column, at_row)) {
            continue;
        }
        if constexpr (has_depth(c)) {
            if (!passes_depth<c>(renderer, at_column, at_row, point.z)) {
                continue;
            }
        }
        write(renderer.color_buffer->rows[row] + pixel_bytes * column, i);
    }
}

void blend_or_merge(const Software_Z_Buffer& renderer, bool merges, std::uint8_t* pixel, VT_RGB32 color) {
    if (merges) {
        merge_rgb32(renderer, pixel, color);
    } else {
        blend_by_weight(pixel, color);
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
    for_each_pixel<c>(renderer, rendition, count, points, [&](std::uint8_t* pixel, std::int32_t) {
        if constexpr (format_of(c) == Pixel_Format::index8) {
            *pixel = merges ? merged_index8(renderer, *pixel, marker.index) : marker.index;
        } else if constexpr (is_alpha(c)) {
            blend_or_merge(renderer, merges, pixel, marker.color);
        } else if (merges) {
            merge_rgb32(renderer, pixel, marker.color);
        } else {
            std::memcpy(pixel, &marker.color, 4);
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
    const bool merges = renderer.merges(marker.mode);
    for_each_pixel<Case::rgb32_alpha>(renderer, rendition, count, points, [&](std::uint8_t* pixel, std::int32_t i) {
        blend_or_merge(renderer, merges, pixel, colors[single_color ? 0 : i]);
    });
}

template VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker<Case::index8>;
template VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker<Case::rgb32>;
template VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker<Case::rgb32_alpha>;
template VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker<Case::depth_rgb32>;
template VT_Draw_Points<VT_DCI_Point> draw_2di_polymarker<Case::depth_rgb32_alpha>;

} // namespace krb

// Members of the slot draw_dci_dot.
#include "renderer/primitives/dots.h"

#include <cstring>

#include "renderer/core/pixel_combine.h"
#include "renderer/mask/mask_cache.h"
#include "renderer/primitives/single_pixels.h"

namespace krb {

namespace {

void write_index8(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::uint8_t* pixel, std::int32_t row,
                  const VT_RGB32* color) {
    if (color) {
        *pixel = dithered_index(renderer.dither, *color, pixel, row); // explicit colours never merge
    } else if (renderer.merges(rendition.line.mode)) {
        merge_index8(renderer, pixel, rendition.line.index);
    } else {
        *pixel = rendition.line.index;
    }
}

template <Case c>
void write_rgb32(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::uint8_t* pixel, VT_RGB32 color) {
    if (renderer.merges(rendition.line.mode)) {
        merge_rgb32(renderer, pixel, color);
    } else if constexpr (is_alpha(c)) {
        blend_by_weight(pixel, color);
    } else {
        std::memcpy(pixel, &color, 4);
    }
}

} // namespace

template <Case c>
void draw_dci_dot(VT_Renderer_Data& data, const VT_Rendition& rendition, const VT_DCI_Point* point, const VT_RGB32* color) {
    if constexpr (has_depth(c)) {
        if (!renderer_of(data).draws_with_depth(rendition)) {
            draw_dci_dot<without_depth(c)>(data, rendition, point, color);
            return;
        }
    }
    Software_Z_Buffer& renderer = renderer_of(data);
    if (!renderer.color_buffer) {
        return;
    }
    const std::int32_t column = point->x - renderer.window_origin.x;
    const std::int32_t row = point->y - renderer.window_origin.y;
    if (find_mask(renderer, rendition) && is_clipped_away(renderer, column, row)) {
        return;
    }
    if constexpr (has_depth(c)) {
        if (!passes_depth<c>(renderer, column, row, point->z)) {
            return;
        }
    }
    if constexpr (format_of(c) == Pixel_Format::index8) {
        write_index8(renderer, rendition, renderer.color_buffer->rows[row] + column, row, color);
    } else {
        write_rgb32<c>(renderer, rendition, renderer.color_buffer->rows[row] + std::int64_t{4} * column,
                       color ? *color : rendition.line.color);
    }
}

#define KRB_FOR_CASE(c) template VT_Draw_Dot draw_dci_dot<c>;
KRB_FOR_EACH_CASE
#undef KRB_FOR_CASE

} // namespace krb

// Members of the slot draw_dci_dot.
#include "renderer/primitives/dots.h"

#include <cstring>

#include "renderer/core/pixel_combine.h"
#include "renderer/mask/mask_cursor.h"

namespace krb {

namespace {

bool is_masked(Software_Z_Buffer& renderer, const VT_Rendition& rendition, std::int32_t column, std::int32_t row) {
    return find_mask(renderer, rendition) && !Mask_Cursor::at(*renderer.mask_cache->newest, row, column).drawable();
}

// The 8-bit member tests by a fixed rule and always writes; 32-bit members follow test mode and write flag.
template <Case c> bool passes_depth(const Software_Z_Buffer& renderer, std::int32_t column, std::int32_t row, std::int32_t z) {
    std::uint8_t* at = renderer.depth_buffer->rows[row] + std::int64_t{2} * column;
    std::uint16_t stored;
    std::memcpy(&stored, at, 2);
    if (!(is_index8(c) ? z <= stored : renderer.passes_z_test(z, stored))) {
        return false;
    }
    if (is_index8(c) || renderer.z_write) {
        const auto written = static_cast<std::uint16_t>(z);
        std::memcpy(at, &written, 2);
    }
    return true;
}

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
        if (!rendition.clip.depth_test) {
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
    if (is_masked(renderer, rendition, column, row)) {
        return;
    }
    if constexpr (has_depth(c)) {
        if (!passes_depth<c>(renderer, column, row, point->z)) {
            return;
        }
    }
    if constexpr (is_index8(c)) {
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

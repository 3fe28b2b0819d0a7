// Members of the image slots: copies of rows, with and without depth test. Masks and blending are still to come.
#include "renderer/primitives/images.h"

#include <algorithm>
#include <cstring>

#include "renderer/core/fixed_point.h"
#include "renderer/core/software_z_buffer.h"

namespace krb {

namespace {

void copy_row(std::uint8_t* to, const std::uint8_t* source, std::size_t bytes) {
    if (source) {
        std::memcpy(to, source, bytes);
    } else {
        std::memset(to, 0, bytes);
    }
}

// The depth moves on from pixel to pixel and, deliberately, from the end of a row to the start of the next.
void copy_tested_row(std::uint8_t* to, const std::uint8_t* source, std::int64_t count, std::size_t pixel_bytes,
                     std::uint8_t* depths, Fixed_Interpolator& depth) {
    for (std::int64_t i = 0; i < count; ++i) {
        const auto candidate = static_cast<std::uint16_t>(depth.value >> 15);
        std::uint16_t stored;
        std::memcpy(&stored, depths + 2 * i, 2);
        if (candidate <= stored) {
            const std::size_t at = static_cast<std::size_t>(i) * pixel_bytes;
            copy_row(to + at, source ? source + at : nullptr, pixel_bytes);
            std::memcpy(depths + 2 * i, &candidate, 2);
        }
        if (i + 1 < count) {
            depth.advance();
        }
    }
}

template <Case c>
void copy_rows(const Software_Z_Buffer& renderer, const VT_Rendition& rendition, const VT_DCI_Point& start,
               const VT_DCI_Point& end, std::int32_t stride, const std::uint8_t* source) {
    constexpr std::size_t pixel_bytes = is_index8(c) ? 1 : 4;
    const std::int32_t window_right = renderer.window_origin.x - 1 + renderer.window_size.x;
    const std::int64_t count = std::int64_t{std::min(end.x, window_right)} - start.x + 1;
    if (!renderer.color_buffer || count < 1) {
        return;
    }
    const std::int64_t column = std::int64_t{start.x} - renderer.window_origin.x;
    Fixed_Interpolator depth;
    depth.setup_15(start.z, end.z, end.x - start.x);
    for (std::int32_t y = start.y; y >= end.y; --y) {
        const std::int32_t row = y - renderer.window_origin.y;
        std::uint8_t* to = renderer.color_buffer->rows[row] + column * std::int64_t{pixel_bytes};
        if (has_depth(c) && rendition.clip.depth_test) {
            copy_tested_row(to, source, count, pixel_bytes, renderer.depth_buffer->rows[row] + 2 * column, depth);
        } else {
            copy_row(to, source, static_cast<std::size_t>(count) * pixel_bytes);
        }
        source = source ? source + stride : nullptr;
    }
}

} // namespace

template <Case c>
void draw_dci_index8_image(VT_Renderer_Data& data, const VT_Rendition& rendition, const VT_DCI_Point* start,
                           const VT_DCI_Point* end, std::int32_t stride, const std::uint8_t* pixels) {
    copy_rows<c>(renderer_of(data), rendition, *start, *end, stride, pixels);
}

template <Case c>
void draw_dci_rgb32_image(VT_Renderer_Data& data, const VT_Rendition& rendition, const VT_DCI_Point* start,
                          const VT_DCI_Point* end, std::int32_t stride, const VT_RGB32* pixels, std::int32_t, const VT_Packing*) {
    copy_rows<c>(renderer_of(data), rendition, *start, *end, stride, reinterpret_cast<const std::uint8_t*>(pixels));
}

template VT_Draw_Index8_Image draw_dci_index8_image<Case::index8>;
template VT_Draw_Index8_Image draw_dci_index8_image<Case::depth_index8>;
template VT_Draw_RGB32_Image draw_dci_rgb32_image<Case::rgb32>;
template VT_Draw_RGB32_Image draw_dci_rgb32_image<Case::depth_rgb32>;

} // namespace krb

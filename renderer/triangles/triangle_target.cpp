// What the members gather for their kernels, once a call.
#include "renderer/triangles/triangle_target.h"

#include "renderer/core/fixed_point.h"
#include "renderer/core/pixel_combine.h"

namespace krb {

namespace {

// A pattern row has its leftmost cell in the high bit; kernels want it in bit 0, and more than eight bits from any column on.
constexpr std::uint32_t repeated_row(std::uint8_t row) noexcept {
    std::uint32_t bits = 0;
    for (int a = 0; a < 8; ++a) {
        bits |= (row & 0x80U >> a) != 0 ? 1U << a : 0U;
    }
    return bits * 0x01010101U;
}

} // namespace

Face_Pattern pattern_of(const VT_Face_Attributes& face) noexcept {
    Face_Pattern pattern{};
    if (face.pattern == face_pattern::bitmap) {
        if (face.bitmap && face.bitmap->width() > 0 && face.bitmap->height() > 0) {
            pattern.bitmap = face.bitmap->row(0);
            pattern.width = face.bitmap->width();
            pattern.height = face.bitmap->height();
        }
    } else if (face.pattern >= 0) {
        for (int b = 0; b < 8; ++b) {
            pattern.stock_rows[b] = repeated_row(SHARED.stock_patterns[face.pattern][b]);
        }
    }
    pattern.inverted = (face.flags & face_flag::inverted_pattern) != 0;
    pattern.opaque_gaps = (face.flags & face_flag::opaque_pattern) != 0;
    pattern.contrast = face.contrast_color;
    return pattern;
}

Depth_Rule depth_rule_of(Case c, const Software_Z_Buffer& renderer) noexcept {
    if (!has_depth(c)) {
        return Depth_Rule::none;
    }
    const bool other_test = c == Case::depth_rgb32 && (renderer.z_test == 1 || renderer.z_test == 5);
    const bool fixed = is_index8(c) || (renderer.z_write && !other_test);
    return fixed ? Depth_Rule::less_or_equal : Depth_Rule::by_mode;
}

Triangle_Target target_of(Case c, const Software_Z_Buffer& renderer, const Face_Pattern* pattern) noexcept {
    Triangle_Target target{};
    target.color_rows = renderer.color_buffer->rows;
    target.depth_rows = has_depth(c) ? renderer.depth_buffer->rows : nullptr;
    target.width = renderer.window_size.x;
    target.origin_x = renderer.window_origin.x;
    target.origin_y = renderer.window_origin.y;
    target.end_column = renderer.window_size.x;
    target.end_row = renderer.window_size.y;
    const bool by_mode = c == Case::depth_rgb32;
    target.depth_bias = by_mode && renderer.z_test == 1 ? -1 : 0;
    target.depth_inverted = by_mode && renderer.z_test == 5;
    target.depth_written = renderer.z_write != 0;
    target.background = word_of(renderer.background_color);
    target.alternate_background = word_of(renderer.alternate_background_color);
    target.merged_index8 = [](const void* owner, std::uint8_t stored, std::uint8_t index) {
        return merged_index8(*static_cast<const Software_Z_Buffer*>(owner), stored, index);
    };
    target.renderer = &renderer;
    target.dither = &renderer.dither;
    target.pattern = pattern;
    return target;
}

Scratch<VT_DCI_Point> rounded_points(std::int32_t count, const VT_Point* points) {
    Scratch<VT_DCI_Point> rounded(count);
    for (std::int32_t i = 0; i < count; ++i) {
        rounded[i] = {rounded_coordinate(points[i].x), rounded_coordinate(points[i].y), rounded_coordinate(points[i].z)};
    }
    return rounded;
}

} // namespace krb

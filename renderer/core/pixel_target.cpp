// What every family's members gather for their kernels.
#include "renderer/core/pixel_target.h"

#include "renderer/core/pixel_combine.h"

namespace krb {

Depth_Rule depth_rule_of(Case c, const Software_Z_Buffer& renderer, Depth_Rules follows) noexcept {
    if (!has_depth(c)) {
        return Depth_Rule::none;
    }
    const bool other_test = follows.test_mode && (renderer.z_test == 1 || renderer.z_test == 5);
    const bool unwritten = follows.write_flag && !renderer.z_write;
    return !is_index8(c) && (other_test || unwritten) ? Depth_Rule::by_mode : Depth_Rule::less_or_equal;
}

Pixel_Target pixel_target_of(Case c, const Software_Z_Buffer& renderer, Depth_Rules follows) noexcept {
    Pixel_Target target{};
    target.color_rows = renderer.color_buffer->rows;
    target.depth_rows = has_depth(c) ? renderer.depth_buffer->rows : nullptr;
    target.width = renderer.window_size.x;
    target.origin_x = renderer.window_origin.x;
    target.origin_y = renderer.window_origin.y;
    target.depth_bias = follows.test_mode && renderer.z_test == 1 ? -1 : 0;
    target.depth_inverted = follows.test_mode && renderer.z_test == 5;
    target.depth_written = !follows.write_flag || renderer.z_write != 0;
    target.background = word_of(renderer.background_color);
    target.alternate_background = word_of(renderer.alternate_background_color);
    target.merged_index8 = [](const void* owner, std::uint8_t stored, std::uint8_t index) {
        return merged_index8(*static_cast<const Software_Z_Buffer*>(owner), stored, index);
    };
    target.renderer = &renderer;
    target.dither = &renderer.dither;
    return target;
}

} // namespace krb

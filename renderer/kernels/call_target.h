// What every family's members gather for their kernels.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/core/software_z_buffer.h"
#include "renderer/kernels/pixel_rules.h"

namespace krb {

// What a member's depth rule follows. Only 32-bit members may follow the test mode; the default mode with writing on is the fixed
// rule.
struct Depth_Rules {
    bool test_mode = false;
    bool write_flag = false;
};

inline Depth_Rule depth_rule_of(Case c, const Software_Z_Buffer& renderer, Depth_Rules follows) noexcept {
    if (!has_depth(c)) {
        return Depth_Rule::none;
    }
    const bool other_test = follows.test_mode && (renderer.z_test == 1 || renderer.z_test == 5);
    const bool unwritten = follows.write_flag && !renderer.z_write;
    return !is_index8(c) && (other_test || unwritten) ? Depth_Rule::by_mode : Depth_Rule::less_or_equal;
}

// Without a mask. The pointers in it are the renderer's.
inline Pixel_Target pixel_target_of(Case c, const Software_Z_Buffer& renderer, Depth_Rules follows) noexcept {
    Pixel_Target target = renderer.target;
    // Drawing of tiles moves the origin for the length of a call.
    target.origin_x = renderer.window_origin.x;
    target.origin_y = renderer.window_origin.y;
    if (has_depth(c)) {
        target.depth_bias = follows.test_mode && renderer.z_test == 1 ? -1 : 0;
        target.depth_inverted = follows.test_mode && renderer.z_test == 5;
        target.depth_written = !follows.write_flag || renderer.z_write != 0;
    }
    return target;
}

} // namespace krb

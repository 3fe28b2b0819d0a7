// What the members of every family ask of the renderer and gather for their kernels.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/core/software_z_buffer.h"
#include "renderer/kernels/pixel_formats.h"
#include "renderer/kernels/pixel_rules.h"

namespace krb {

// Whether the renderer has a colour buffer of the case's format. Slots that the current options do not name keep their members,
// which must not touch pixels of another format.
inline bool holds_pixels_of(Case c, const Software_Z_Buffer& renderer) noexcept {
    return facts_of(c).takes_any_buffer ? format_of(c) == format_of(renderer.installed_case)
                                        : renderer.color_buffer->format == facts_of(c).buffer;
}

// Without depth, members of formats that store no words draw lines and faces in the index of the rendition's attributes, and
// indices may merge. With depth they dither colours.
constexpr bool draws_indices(Case c) noexcept {
    return !facts_of(c).stores_words && !has_depth(c);
}

// What a member's depth rule follows where the format follows depth modes. The default mode with writing on is the fixed rule.
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
    return facts_of(c).follows_depth_modes && (other_test || unwritten) ? Depth_Rule::by_mode : Depth_Rule::less_or_equal;
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

// What every family's members gather for their kernels.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/core/pixel_rules.h"
#include "renderer/core/software_z_buffer.h"

namespace krb {

// The depth rule of a member. Only 32-bit members may follow the test mode; the default mode with writing on is the fixed rule.
struct Depth_Rules {
    bool test_mode = false;
    bool write_flag = false;
};

Depth_Rule depth_rule_of(Case c, const Software_Z_Buffer& renderer, Depth_Rules follows) noexcept;

// Without a mask. The pointers in it are the renderer's.
Pixel_Target pixel_target_of(Case c, const Software_Z_Buffer& renderer, Depth_Rules follows) noexcept;

} // namespace krb

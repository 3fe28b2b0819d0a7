// Rules of pixels that a kernel reads from its target, at random.
#pragma once

#include <cstdint>

#include "renderer/core/pixel_target.h"

// below(n): a random number from 0 to n - 1.
template <class Below> void set_random_rules(krb::Pixel_Target& target, Below below) {
    target.depth_bias = -below(2);
    target.depth_inverted = below(3) == 0;
    target.depth_written = below(2) == 0;
    target.background = 0xFF000000U | static_cast<std::uint32_t>(below(256));
    target.alternate_background = target.background ^ 1;
    // Not the palette's search: any function of both indices will do.
    target.merged_index8 = [](const void*, std::uint8_t stored, std::uint8_t index) {
        return static_cast<std::uint8_t>(stored * 3 + index);
    };
}

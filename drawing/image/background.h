// The colours behind what is drawn.
#pragma once

#include <algorithm>
#include <cstdint>

#include "host/color.h"
#include "host/geometry.h"

namespace vorna::drawing {

// One colour, or a gradient between the image's upper and lower border. Every row has a single colour, computed in integers at
// the row's middle, so that tiles and threads make no difference.
struct Background {
    VT_RGB32 top{255, 255, 255, 255}, bottom{255, 255, 255, 255};

    constexpr Background() = default;
    constexpr Background(VT_RGB32 color) : top(color), bottom(color) {}
    constexpr Background(VT_RGB32 highest, VT_RGB32 lowest) : top(highest), bottom(lowest) {}

    constexpr bool is_plain() const noexcept { return top == bottom; }
    // frame: the image's pixels, and one row above them.
    constexpr VT_RGB32 row_color(std::int32_t y, const VT_Int_Rectangle& frame) const noexcept {
        const std::int64_t rows = std::max(frame.top - frame.bottom, 1);
        const std::int64_t above = 2 * std::clamp<std::int64_t>(y - frame.bottom, 0, rows - 1) + 1, range = 2 * rows;
        const auto channel = [=](std::int64_t low, std::int64_t high) {
            return static_cast<std::uint8_t>((low * (range - above) + high * above + rows) / range);
        };
        return is_plain() ? top
                          : VT_RGB32{channel(bottom.blue, top.blue), channel(bottom.green, top.green),
                                     channel(bottom.red, top.red), top.alpha};
    }
};

// Behind models: darker above, where light from above makes white models brightest.
inline constexpr Background model_gradient{{205, 196, 188, 255}, {247, 244, 242, 255}};

} // namespace vorna::drawing

// From the view volume to the window's pixels.
#pragma once

#include <cstdint>

#include "host/geometry.h"

namespace vorna::drawing::model {

inline constexpr float farthest_depth = 65535.0F;

// From x / w, y / w and z / w to pixels. A point of the renderer lies on the lower left corner of its pixel, so points are
// rounded to the nearest corner; the view volume's far sides meet the last pixel's, for no point may lie outside the window.
struct Viewport {
    explicit Viewport(const VT_Int_Rectangle& window)
        : left(window.left), bottom(window.bottom), half_width(static_cast<float>(window.right - window.left) * 0.5F),
          half_height(static_cast<float>(window.top - window.bottom) * 0.5F) {}

    // Values a little outside, by rounding, are moved inside.
    static std::int32_t rounded(float value, float limit) noexcept {
        const float low = value > 0.0F ? value : 0.0F;
        return static_cast<std::int32_t>((low < limit ? low : limit) + 0.5F);
    }

    VT_DCI_Point device_point(float x, float y, float z) const noexcept {
        return {left + rounded((x + 1.0F) * half_width, 2.0F * half_width),
                bottom + rounded((y + 1.0F) * half_height, 2.0F * half_height), rounded(z * farthest_depth, farthest_depth)};
    }

    std::int32_t left, bottom;
    float half_width, half_height;
};

} // namespace vorna::drawing::model

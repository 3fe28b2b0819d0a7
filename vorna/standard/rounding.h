// Rounding of coordinates to whole pixels, as renderers do it: halves go up on both sides of zero. What no integer holds becomes
// the smallest one.
#pragma once

#include <cstdint>
#include <limits>

#include "host/geometry.h"

namespace vorna {

constexpr std::int32_t rounded(float v) noexcept {
    const float moved = v >= 0 ? v + 0.5F : v - 0.499999F;
    return moved > -2147483904.0F && moved < 2147483648.0F ? static_cast<std::int32_t>(moved)
                                                           : std::numeric_limits<std::int32_t>::min();
}

constexpr std::int32_t rounded(double v) noexcept {
    const double moved = v >= 0 ? v + 0.5 : v - 0.49999999999;
    return moved > -2147483649.0 && moved < 2147483648.0 ? static_cast<std::int32_t>(moved)
                                                         : std::numeric_limits<std::int32_t>::min();
}

template <class Point> constexpr VT_DCI_Point rounded_point(const Point& point) noexcept {
    return {rounded(point.x), rounded(point.y), rounded(point.z)};
}

} // namespace vorna

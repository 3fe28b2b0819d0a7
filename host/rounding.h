// Rounding of coordinates to whole device pixels, the same for renderers and the host.
#pragma once

#include <cstdint>

namespace vorna {

// The nearest whole device coordinate, halves upwards on both sides of zero, in single precision. A value beyond 32 bits, or none
// at all, becomes the smallest integer.
constexpr std::int32_t rounded_coordinate(float v) noexcept {
    const float moved = v >= 0 ? v + 0.5F : v - 0.499999F;
    return moved > -2147483904.0F && moved < 2147483648.0F ? static_cast<std::int32_t>(moved) : INT32_MIN;
}

// The same in double precision, for transformed points.
constexpr std::int32_t rounded_coordinate(double v) noexcept {
    const double moved = v >= 0 ? v + 0.5 : v - 0.49999999999;
    return moved > -2147483649.0 && moved < 2147483648.0 ? static_cast<std::int32_t>(moved) : INT32_MIN;
}

} // namespace vorna

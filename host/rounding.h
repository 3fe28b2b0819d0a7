// Conversion of coordinates to integers. Renderers and the host use the same functions, so that both choose the same pixel.
#pragma once

#include <cstdint>
#include <type_traits>

#include "host/geometry.h"

namespace vorna {

// The integer part. Values outside 32 bits and NaN become INT32_MIN, as the conversion instructions of x86 processors have it.
template <class Value> constexpr std::int32_t truncated(Value v) noexcept {
    constexpr Value too_small = std::is_same_v<Value, float> ? Value(-2147483904.0) : Value(-2147483649.0);
    return v > too_small && v < Value(2147483648.0) ? static_cast<std::int32_t>(v) : INT32_MIN;
}

// Device coordinates: the nearest integer; halves round towards positive infinity on both sides of zero. The sum is computed in
// the type of the argument. Values outside 32 bits and NaN become INT32_MIN.
constexpr std::int32_t rounded_coordinate(float v) noexcept {
    return truncated(v >= 0 ? v + 0.5F : v - 0.499999F);
}
constexpr std::int32_t rounded_coordinate(double v) noexcept {
    return truncated(v >= 0 ? v + 0.5 : v - 0.49999999999);
}

template <class Point> constexpr VT_DCI_Point rounded_point(const Point& point) noexcept {
    return {rounded_coordinate(point.x), rounded_coordinate(point.y), rounded_coordinate(point.z)};
}

// Interpolated values: floor(v + 0.5), clamped to [least, most]. NaN becomes 0. Unlike device coordinates, far values must keep
// their sign.
constexpr std::int32_t nearest_integer(double v, std::int32_t least = INT32_MIN, std::int32_t most = INT32_MAX) noexcept {
    if (v != v) {
        return 0;
    }
    const double moved = (v < least ? least : v > most ? most : v) + 0.5;
    const auto whole = static_cast<std::int64_t>(moved);
    return static_cast<std::int32_t>(moved < static_cast<double>(whole) ? whole - 1 : whole);
}

// Cut ends of segments: halves as in device coordinates, because an end that is not cut is rounded so; far values as in
// interpolated ones.
constexpr std::int32_t saturated_coordinate(double v) noexcept {
    return v != v ? 0 : v <= -2147483648.0 ? INT32_MIN : v >= 2147483647.0 ? INT32_MAX : rounded_coordinate(v);
}

} // namespace vorna

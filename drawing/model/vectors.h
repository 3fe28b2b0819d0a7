// Arithmetic on the host's vectors.
#pragma once

#include <cmath>
#include <optional>

#include "host/geometry.h"

namespace vorna::drawing::model {

template <class Vector>
concept Vector_Type = requires(Vector v) {
    v.x, v.y, v.z;
};

template <Vector_Type Vector> constexpr Vector operator+(const Vector& a, const Vector& b) noexcept {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

template <Vector_Type Vector> constexpr Vector operator-(const Vector& a, const Vector& b) noexcept {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

template <Vector_Type Vector> constexpr Vector operator*(const Vector& a, decltype(Vector::x) factor) noexcept {
    return {a.x * factor, a.y * factor, a.z * factor};
}

template <Vector_Type Vector> constexpr auto dot(const Vector& a, const Vector& b) noexcept {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

template <Vector_Type Vector> constexpr Vector cross(const Vector& a, const Vector& b) noexcept {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

template <Vector_Type Vector> auto length(const Vector& a) noexcept {
    return std::sqrt(dot(a, a));
}

constexpr VT_Vector_D widened(const VT_Vector& a) noexcept {
    return {a.x, a.y, a.z};
}

constexpr VT_Vector narrowed(const VT_Vector_D& a) noexcept {
    return {static_cast<float>(a.x), static_cast<float>(a.y), static_cast<float>(a.z)};
}

// The vector scaled to length 1; nothing for one without a direction. Works in doubles, where no float's square overflows or
// vanishes.
inline std::optional<VT_Vector> unit(const VT_Vector& a) noexcept {
    const VT_Vector_D wide = widened(a);
    const double size = length(wide);
    if (!(size > 0)) {
        return std::nullopt;
    }
    return narrowed(wide * (1 / size));
}

} // namespace vorna::drawing::model

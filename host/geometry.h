// Points, rectangles and vectors. Device y grows upwards.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

// Points of the forms 2D and DC: x and y in device pixels, z in units of the depth buffer.
struct VT_Point {
    float x = 0, y = 0, z = 0;
};

// Points of the form 3D: the same, transformed but not rounded.
struct VT_Point_D {
    double x = 0, y = 0, z = 0;
};

// Points of the forms 2DI and DCI: the same as integers.
struct VT_DCI_Point {
    std::int32_t x = 0, y = 0, z = 0;
};

// Device pixels, inclusive on every side.
struct VT_Int_Rectangle {
    std::int32_t left = 0, right = 0, bottom = 0, top = 0;

    friend bool operator==(const VT_Int_Rectangle&, const VT_Int_Rectangle&) = default;
};

namespace vorna {

constexpr bool is_empty(const VT_Int_Rectangle& rectangle) noexcept {
    return rectangle.left > rectangle.right || rectangle.bottom > rectangle.top;
}

constexpr VT_Int_Rectangle common_part(const VT_Int_Rectangle& a, const VT_Int_Rectangle& b) noexcept {
    return {std::max(a.left, b.left), std::min(a.right, b.right), std::max(a.bottom, b.bottom), std::min(a.top, b.top)};
}

constexpr bool contains(const VT_Int_Rectangle& rectangle, std::int64_t x, std::int64_t y) noexcept {
    return x >= rectangle.left && x <= rectangle.right && y >= rectangle.bottom && y <= rectangle.top;
}

} // namespace vorna

struct VT_Int_Pair {
    std::int32_t x = 0, y = 0;

    friend bool operator==(const VT_Int_Pair&, const VT_Int_Pair&) = default;
};

struct VT_Vector {
    float x = 0, y = 0, z = 0;
};

struct VT_Vector_D {
    double x = 0, y = 0, z = 0;

    // Scales to length 1; the zero vector stays as it is.
    void normalize() noexcept {
        const double length = std::sqrt(x * x + y * y + z * z);
        if (length > 0) {
            x /= length;
            y /= length;
            z /= length;
        }
    }
};

// Row-major; points are columns: out = m * in.
struct VT_Matrix {
    double m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
};

// One of the texture parameters of a point.
using VT_Parameter = float;

// A growable array.
template <class Element> using VT_Array = std::vector<Element>;

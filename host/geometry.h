// Points, rectangles and vectors of the host. Device y grows upwards.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

// 2D and DC points: device pixels, z in depth-buffer units.
struct VT_Point {
    float x = 0, y = 0, z = 0;
};

// 3D points that the host has transformed but not rounded.
struct VT_Point_D {
    double x = 0, y = 0, z = 0;
};

// 2DI and DCI points: whole device pixels, z in depth-buffer units.
struct VT_DCI_Point {
    std::int32_t x = 0, y = 0, z = 0;
};

// Inclusive on every side.
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

    // Scales to length 1; a vector without a length stays as it is.
    void normalize() noexcept {
        const double length = std::sqrt(x * x + y * y + z * z);
        if (length > 0) {
            x /= length;
            y /= length;
            z /= length;
        }
    }
};

// Row-major, points as columns: out = m * in.
struct VT_Matrix {
    double m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
};

// One texture coordinate value; a point has parameter-width of them in a row.
using VT_Parameter = float;

// The host's growable array.
template <class Element> using VT_Array = std::vector<Element>;

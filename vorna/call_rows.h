// The rows of the window that a call may touch.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <tuple>
#include <type_traits>

#include "host/attributes.h"
#include "host/rendition.h"
#include "host/window.h"
#include "vorna/call_list.h"
#include "vorna/draw.h"

namespace vorna {

inline constexpr Row_Range every_row{INT16_MIN, INT16_MAX};

// Device rows, inclusive. Without points it is empty.
class Row_Bounds {
public:
    // Rows of coordinates that do not fit, or are no numbers, are not known; nor are those of coordinates that the standard
    // functions' floats do not hold to the last bit.
    template <class Point> void add(const Point* points, std::int32_t count) noexcept {
        using Number = decltype(Point::y);
        if (count < 1) {
            return;
        }
        Number least = points[0].y, most = points[0].y;
        if constexpr (std::is_integral_v<Number>) {
            // Of numbers in [-farthest, farthest), and of no others.
            constexpr std::uint32_t bits_of_near = 2 * farthest - 1;
            std::uint32_t bits = 0;
            for (std::int32_t i = 0; i < count; ++i) {
                const Number x = points[i].x, y = points[i].y;
                least = y < least ? y : least;
                most = y > most ? y : most;
                bits |= (static_cast<std::uint32_t>(x) + farthest) | (static_cast<std::uint32_t>(y) + farthest);
            }
            is_known_ &= (bits & ~bits_of_near) == 0;
        } else {
            constexpr auto limit = static_cast<Number>(farthest);
            bool fits = true;
            for (std::int32_t i = 0; i < count; ++i) {
                const Number x = points[i].x, y = points[i].y;
                least = y < least ? y : least;
                most = y > most ? y : most;
                fits &= x > -limit && x < limit && y > -limit && y < limit;
            }
            is_known_ &= fits;
        }
        if (is_known_) {
            first_ = std::min(first_, static_cast<std::int32_t>(least));
            last_ = std::max(last_, static_cast<std::int32_t>(most));
        }
    }
    // As rows of a window with that origin, and as many more on both sides.
    Row_Range rows(std::int32_t origin, std::int64_t margin) const noexcept {
        static_assert(farthest + farthest_margin + farthest_window_side <= INT32_MAX);
        if (!is_known_ || margin > farthest_margin) {
            return every_row;
        }
        const auto beyond = static_cast<std::int32_t>(margin);
        return first_ > last_ ? Row_Range{1, 0} : Row_Range{first_ - origin - beyond, last_ - origin + beyond};
    }

private:
    static constexpr std::int32_t farthest = 1 << 24;
    static constexpr std::int32_t farthest_margin = 1 << 20;

    std::int32_t first_ = INT32_MAX, last_ = INT32_MIN;
    bool is_known_ = true;
};

// Rounding moves a point by less than a row, and cuts by less than another one; smoothed lines touch the rows beside them.
inline constexpr std::int64_t rounding_margin = 2;

// How far a line reaches beyond its points: tips of miter joins lie as far as twice the weight from a vertex, and casings are
// wider than the line.
inline std::int64_t line_margin(const VT_Line_Attributes& line) noexcept {
    std::int64_t weight = std::max(line.weight, 1);
    if (weight == 1 && !has_line_types(line)) {
        return rounding_margin;
    }
    if (has_line_types(line)) {
        double casing = 0;
        for (const VT_Reference<const VT_Line_Type>& type : line.line_types->types) {
            casing = type ? std::max(casing, type->width) : casing;
        }
        // No number above this is a width, and neither is one that is no number.
        weight = casing < 1 << 20 ? weight + 7 + 2 * static_cast<std::int64_t>(casing) : INT32_MAX;
    }
    return 2 * weight + rounding_margin;
}

inline std::int64_t margin_of(Primitive primitive, const VT_Rendition& rendition) noexcept {
    switch (primitive) {
    case Primitive::polyline:
        return line_margin(rendition.line);
    case Primitive::polymarker:
        return std::abs(std::int64_t{rendition.marker.size}) + rounding_margin;
    default:
        return rounding_margin;
    }
}

// By the kept arguments. origin: the device row of the window's lowest one.
template <Primitive primitive, class Point, class... More>
Row_Range rows_of(const VT_Rendition& rendition, std::int32_t origin,
                  const std::tuple<std::int32_t, const Point*, More...>& arguments) noexcept {
    Row_Bounds bounds;
    bounds.add(std::get<1>(arguments), std::get<0>(arguments));
    return bounds.rows(origin, margin_of(primitive, rendition));
}

template <Primitive>
Row_Range rows_of(const VT_Rendition&, std::int32_t origin,
                  const std::tuple<const VT_DCI_Point*, const VT_RGB32*>& dot) noexcept {
    Row_Bounds bounds;
    bounds.add(std::get<0>(dot), 1);
    return bounds.rows(origin, rounding_margin);
}

// The centre is a column and row of the buffer. Whatever its rotation, a shape stays as near to it as its radii are long.
template <Primitive>
Row_Range
rows_of(const VT_Rendition& rendition, std::int32_t origin,
        const std::tuple<const VT_DCI_Point*, const VT_DCI_Point*, double, double, double, const VT_RGB32*>& ellipse) noexcept {
    if (std::abs(std::int64_t{origin}) >= 1 << 24) {
        return every_row; // as above: such shapes may be drawn as polylines in device coordinates
    }
    const VT_DCI_Point& radii = *std::get<1>(ellipse);
    Row_Bounds bounds;
    bounds.add(std::get<0>(ellipse), 1);
    return bounds.rows(0, std::abs(std::int64_t{radii.x}) + std::abs(std::int64_t{radii.y}) + line_margin(rendition.line));
}

// Images and depths.
template <Primitive, class... More>
Row_Range rows_of(const VT_Rendition&, std::int32_t origin,
                  const std::tuple<const VT_DCI_Point*, const VT_DCI_Point*, std::int32_t, More...>& image) noexcept {
    Row_Bounds bounds;
    bounds.add(std::get<0>(image), 1);
    bounds.add(std::get<1>(image), 1);
    return bounds.rows(origin, 0);
}

template <Primitive> Row_Range rows_of(const VT_Rendition& rendition, std::int32_t origin, const std::tuple<>&) noexcept {
    const VT_Int_Rectangle& area = rendition.window.rectangle;
    const VT_DCI_Point corners[2] = {{area.left, area.bottom, 0}, {area.right, area.top, 0}};
    Row_Bounds bounds;
    bounds.add(corners, 2);
    return bounds.rows(origin, rounding_margin);
}

} // namespace vorna

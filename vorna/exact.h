// Comparisons of products without rounding: what decides on which side of an edge a point lies.
#pragma once

#include <cmath>

namespace vorna {

// The sign of a * b - c * d, as if the products were not rounded. Rounding keeps order, so rounded products that differ decide;
// equal ones are decided by what rounding took from each, which fma gives exactly.
inline int compare_products(double a, double b, double c, double d) noexcept {
    const double left = a * b;
    const double right = c * d;
    if (left != right) {
        return left < right ? -1 : 1;
    }
    const double left_rest = std::fma(a, b, -left);
    const double right_rest = std::fma(c, d, -right);
    return left_rest < right_rest ? -1 : left_rest > right_rest ? 1 : 0;
}

// Positive when c lies left of the way from a to b, negative right of it, 0 on the line. The differences of coordinates are exact
// as long as the finest bit of one and the highest of another are at most 53 places apart.
template <class Point> int turn(const Point& a, const Point& b, const Point& c) noexcept {
    const double x = a.x;
    const double y = a.y;
    return compare_products(b.x - x, c.y - y, b.y - y, c.x - x);
}

} // namespace vorna

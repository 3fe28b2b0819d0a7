// Exact signs of differences of products, which decide on which side of an edge a point lies.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace vorna {

// The exact rounding error of the product a * b, by the method of Dekker; the factors are split into halves of 26 bits by the
// method of Veltkamp. Some run-time libraries round std::fma twice. For factors below 2^970 whose product has no bit that
// underflows.
inline double product_rest(double a, double b) noexcept {
    constexpr double splitter = 134217729; // 2^27 + 1
    const double a_part = splitter * a;
    const double b_part = splitter * b;
    const double a_high = a_part - (a_part - a);
    const double b_high = b_part - (b_part - b);
    const double a_low = a - a_high;
    const double b_low = b - b_high;
    return a_low * b_low - (((a * b - a_high * b_high) - a_low * b_high) - a_high * b_low);
}

// The sign of a * b - c * d without rounding error. Rounding is monotone, so different rounded products decide; for equal ones
// their rounding errors decide.
inline int compare_products(double a, double b, double c, double d) noexcept {
    const double left = a * b;
    const double right = c * d;
    if (left != right) {
        return left < right ? -1 : 1;
    }
    const double left_rest = product_rest(a, b);
    const double right_rest = product_rest(c, d);
    return left_rest < right_rest ? -1 : left_rest > right_rest ? 1 : 0;
}

// An exact sum of doubles, as parts of increasing magnitude that have no bits in common.
class Exact_Sum {
public:
    void add(double value) noexcept {
        for (std::size_t i = 0; i < count_; ++i) {
            const double sum = value + parts_[i];
            const double added = sum - value;
            parts_[i] = (value - (sum - added)) + (parts_[i] - added);
            value = sum;
        }
        parts_[count_++] = value;
    }

    void add_product(double a, double b) noexcept {
        add(product_rest(a, b));
        add(a * b);
    }

    int sign() const noexcept {
        for (std::size_t i = count_; i-- > 0;) {
            if (parts_[i] != 0) {
                return parts_[i] < 0 ? -1 : 1;
            }
        }
        return 0;
    }

private:
    static constexpr std::size_t most_parts = 16;
    std::array<double, most_parts> parts_;
    std::size_t count_ = 0;
};

// The difference a - b and its rounding error.
struct Exact_Difference {
    Exact_Difference(double a, double b) noexcept : rounded(a - b) {
        const double taken = a - rounded;
        rest = (a - (rounded + taken)) + (taken - b);
    }

    double rounded, rest;
};

// Positive when c lies left of the line from a to b, negative right of it, 0 on it. Exact for coordinates of single precision and
// for crossings of lines between such points. The rounded products nearly always differ enough to decide.
template <class Point> int turn(const Point& a, const Point& b, const Point& c) noexcept {
    constexpr double half_unit = std::numeric_limits<double>::epsilon() / 2;
    constexpr double most_error = (3 + 16 * half_unit) * half_unit;
    const double x = a.x;
    const double y = a.y;
    const double left = (b.x - x) * (c.y - y);
    const double right = (b.y - y) * (c.x - x);
    const double difference = left - right;
    if (std::abs(difference) >= most_error * (std::abs(left) + std::abs(right))) {
        return difference < 0 ? -1 : difference > 0 ? 1 : 0;
    }
    const Exact_Difference bx(b.x, x);
    const Exact_Difference by(b.y, y);
    const Exact_Difference cx(c.x, x);
    const Exact_Difference cy(c.y, y);
    if (bx.rest == 0 && by.rest == 0 && cx.rest == 0 && cy.rest == 0) {
        return compare_products(bx.rounded, cy.rounded, by.rounded, cx.rounded);
    }
    Exact_Sum sum;
    for (const double p : {bx.rest, bx.rounded}) {
        sum.add_product(p, cy.rest);
        sum.add_product(p, cy.rounded);
    }
    for (const double p : {by.rest, by.rounded}) {
        sum.add_product(-p, cx.rest);
        sum.add_product(-p, cx.rounded);
    }
    return sum.sign();
}

} // namespace vorna

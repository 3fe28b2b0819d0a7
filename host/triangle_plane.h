// Linear interpolation of attributes over the plane of a triangle.
#pragma once

namespace vorna {

struct Position {
    double x, y;

    friend bool operator==(const Position&, const Position&) = default;
};

// The plane through the corners. For a triangle without area the gradient is that along its first edge that has a length.
class Triangle_Plane {
public:
    // A value at the first corner and its change per pixel along x and y.
    template <class Value> struct Gradient { Value at_first, along_x, along_y; };

    Triangle_Plane(Position first, Position second, Position third) noexcept
        : first_(first), dx1_(second.x - first.x), dy1_(second.y - first.y), dx2_(third.x - first.x), dy2_(third.y - first.y),
          determinant_(dy2_ * dx1_ - dy1_ * dx2_) {}

    // Twice the signed area, positive for counter-clockwise corners with y upwards.
    double determinant() const noexcept { return determinant_; }

    template <class Value> Gradient<Value> gradient(Value a0, Value a1, Value a2) const noexcept {
        const double da1 = double{a1} - double{a0};
        const double da2 = double{a2} - double{a0};
        if (determinant_ != 0) {
            return {a0, static_cast<Value>((da1 * dy2_ - da2 * dy1_) / determinant_),
                    static_cast<Value>((da1 * dx2_ - da2 * dx1_) * (-1 / determinant_))};
        }
        return {a0,
                static_cast<Value>(dx1_ != 0   ? da1 / dx1_
                                   : dx2_ != 0 ? da2 / dx2_
                                               : 0),
                static_cast<Value>(dy1_ != 0   ? da1 / dy1_
                                   : dy2_ != 0 ? da2 / dy2_
                                               : 0)};
    }

    template <class Value> double value_at(const Gradient<Value>& gradient, Position at) const noexcept {
        return gradient.at_first + (at.x - first_.x) * gradient.along_x + (at.y - first_.y) * gradient.along_y;
    }

private:
    Position first_;
    double dx1_, dy1_, dx2_, dy2_, determinant_;
};

} // namespace vorna

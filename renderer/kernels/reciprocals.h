// Division of 32-bit integers by a small count, for vocabularies whose attributes are vectors.
#pragma once

#include <cassert>
#include <cstdint>

namespace krb::KRB_KERNEL_SET {
namespace {

struct Reciprocals {
    static constexpr std::int32_t count = 128;
    double of[count];
};

// Larger than 1 / divisor by a factor of 1 + 2^-50, less rounding. The product with a 32-bit integer is therefore not below the
// exact quotient and exceeds it by less than 1 / (2 * divisor). Truncated, it is the quotient of integers: exact quotients are
// whole numbers or at least 1 / divisor below the next one.
inline constexpr double above_one = 1 + 0x1p-50;

constexpr double reciprocal_above(std::int32_t divisor) {
    return 1.0 / divisor * above_one;
}

constexpr Reciprocals make_reciprocals() {
    Reciprocals reciprocals{};
    for (std::int32_t divisor = 1; divisor < Reciprocals::count; ++divisor) {
        reciprocals.of[divisor] = reciprocal_above(divisor);
    }
    return reciprocals;
}

inline constexpr Reciprocals reciprocals = make_reciprocals();

// The product with a 32-bit integer, truncated, is the integer's quotient by the divisor, which is above 0. Small triangles have
// few rows and columns, and a division takes longer than all other work for one of their rows.
inline double reciprocal(std::int32_t divisor) {
    assert(divisor > 0);
    return divisor < Reciprocals::count ? reciprocals.of[divisor] : reciprocal_above(divisor);
}

} // namespace
} // namespace krb::KRB_KERNEL_SET

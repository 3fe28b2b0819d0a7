// Division of 32-bit integers by a small count, for vocabularies whose attributes are vectors.
#pragma once

#include <cstdint>

namespace krb::KRB_KERNEL_SET {
namespace {

struct Reciprocals {
    static constexpr std::int32_t count = 128;
    double of[count];
};

// A little too large on purpose: by a share of 2^-50, less what rounding takes. A product with a 32-bit integer then comes out at
// the quotient or above it, by less than half a divisor-th, and cut off it is the quotient of integers: a whole quotient is not
// missed, and the next one is a whole divisor-th away.
constexpr double reciprocal_above(std::int32_t divisor) {
    return 1.0 / divisor * (1 + 0x1p-50);
}

constexpr Reciprocals make_reciprocals() {
    Reciprocals reciprocals{};
    for (std::int32_t divisor = 1; divisor < Reciprocals::count; ++divisor) {
        reciprocals.of[divisor] = reciprocal_above(divisor);
    }
    return reciprocals;
}

inline constexpr Reciprocals reciprocals = make_reciprocals();

// Multiplied with an integer of 32 bits and cut off: the integer's quotient by the divisor, which is above 0. Most rows and
// columns of small triangles are few, and a division takes longer than all else that is done for a row of them.
inline double reciprocal(std::int32_t divisor) {
    return divisor < Reciprocals::count ? reciprocals.of[divisor] : reciprocal_above(divisor);
}

} // namespace
} // namespace krb::KRB_KERNEL_SET

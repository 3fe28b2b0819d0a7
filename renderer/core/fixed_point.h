// Fixed-point arithmetic that wraps at 32 bits, and values that move linearly by it. Inlined always, since kernels use it too.
#pragma once

#include <cstdint>

#include "renderer/core/compiler_hints.h"

namespace krb {

KRB_ALWAYS_INLINE constexpr std::int32_t wrapping_add(std::int32_t a, std::int32_t b) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

KRB_ALWAYS_INLINE constexpr std::int32_t wrapping_subtract(std::int32_t a, std::int32_t b) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

KRB_ALWAYS_INLINE constexpr std::int32_t wrapping_multiply(std::int32_t a, std::int32_t b) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

KRB_ALWAYS_INLINE constexpr std::int32_t wrapping_shift_left(std::int32_t a, int bits) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) << bits);
}

// A value that moves linearly: value + i * step at pixel i. 17.15 for depth, 16.16 for x and colours. A plain aggregate, which is
// left undefined where nothing reads it.
struct Fixed_Interpolator {
    std::int32_t value, step;

    // From whole number a towards b in n steps. The start lies half a unit in, so that truncation rounds to nearest. Divisions by
    // 2, 4 and 8 are smaller left shifts of the difference, all others truncate towards zero; the two differ only where the
    // shift wraps. n = 0 leaves the bare difference as the step, which is then never taken. Where n may have wrapped to -1 the
    // Quotient must have 64 bits.
    template <int fraction_bits, class Quotient = std::int32_t>
    KRB_ALWAYS_INLINE static constexpr Fixed_Interpolator between(std::int32_t a, std::int32_t b, std::int32_t n) noexcept {
        const std::int32_t start = wrapping_add(wrapping_shift_left(a, fraction_bits), 1 << (fraction_bits - 1));
        const std::int32_t difference = wrapping_subtract(b, a);
        if (n == 0) {
            return {start, difference};
        }
        const int dropped = n == 2 ? 1 : n == 4 ? 2 : n == 8 ? 3 : 0;
        const Quotient shifted = wrapping_shift_left(difference, fraction_bits - dropped);
        return {start, static_cast<std::int32_t>(shifted / (n >> dropped))};
    }

    KRB_ALWAYS_INLINE constexpr std::int32_t at(std::int32_t pixel) const noexcept {
        return wrapping_add(value, wrapping_multiply(step, pixel));
    }
    KRB_ALWAYS_INLINE constexpr void advance() noexcept { value = wrapping_add(value, step); }
    KRB_ALWAYS_INLINE constexpr void skip(std::int32_t pixels) noexcept { value = at(pixels); }
};

} // namespace krb

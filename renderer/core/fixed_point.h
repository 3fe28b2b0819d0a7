// Fixed-point arithmetic shared by every rasterizer: the linear steppers.
//
// All arithmetic wraps at 32 bits and goes through unsigned types. A division by 1, 2, 4 or 8 is a smaller left shift of the
// difference, any other one truncates towards zero; the two differ only where the shift wraps.
#pragma once

#include <cstdint>

namespace krb {

constexpr std::int32_t wrapping_add(std::int32_t a, std::int32_t b) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

constexpr std::int32_t wrapping_subtract(std::int32_t a, std::int32_t b) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

constexpr std::int32_t wrapping_shift_left(std::int32_t a, int bits) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) << bits);
}

// A value that moves linearly from a towards b in n equal steps.
struct Fixed_Interpolator {
    std::int32_t value = 0;
    std::int32_t step = 0;

    // 17.15, for depth: the start lies half a unit in, so that truncation rounds to nearest. n = 0 leaves the bare difference
    // as the step, which is then never taken.
    constexpr void setup_15(std::int32_t a, std::int32_t b, std::int32_t n) noexcept { setup<15>(a, b, n); }
    // 16.16, for x and colours.
    constexpr void setup_16(std::int32_t a, std::int32_t b, std::int32_t n) noexcept { setup<16>(a, b, n); }

    // For values that are fixed point already. The smaller shifts round down, the division towards zero.
    constexpr void setup_fixed(std::int32_t a, std::int32_t b, std::int32_t n) noexcept {
        value = a;
        step = wrapping_subtract(b, a);
        switch (n) {
        case 0:
        case 1:
            break;
        case 2:
            step >>= 1;
            break;
        case 4:
            step >>= 2;
            break;
        case 8:
            step >>= 3;
            break;
        default:
            step /= n;
        }
    }

    constexpr void advance() noexcept { value = wrapping_add(value, step); }
    constexpr void skip(std::int32_t steps) noexcept {
        value = static_cast<std::int32_t>(static_cast<std::uint32_t>(value) +
                                          static_cast<std::uint32_t>(step) * static_cast<std::uint32_t>(steps));
    }

private:
    template <int fraction_bits> constexpr void setup(std::int32_t a, std::int32_t b, std::int32_t n) noexcept {
        value = wrapping_add(wrapping_shift_left(a, fraction_bits), 1 << (fraction_bits - 1));
        step = wrapping_subtract(b, a);
        switch (n) {
        case 0:
            break;
        case 1:
            step = wrapping_shift_left(step, fraction_bits);
            break;
        case 2:
            step = wrapping_shift_left(step, fraction_bits - 1);
            break;
        case 4:
            step = wrapping_shift_left(step, fraction_bits - 2);
            break;
        case 8:
            step = wrapping_shift_left(step, fraction_bits - 3);
            break;
        default:
            step = static_cast<std::int32_t>(std::int64_t{wrapping_shift_left(step, fraction_bits)} / n);
        }
    }
};

} // namespace krb

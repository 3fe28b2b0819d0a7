// Fixed point as the rules tell it: 32-bit words that wrap, written with 64-bit numbers.
#pragma once

#include <cstdint>

namespace model {

using Number = std::int64_t;

// What a signed 32-bit word keeps of a number.
inline Number wrap_32(Number value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

// What an unsigned 16-bit word keeps of a number.
inline Number low_16(Number value) {
    return value & 0xFFFF;
}

// The integer part of a value with so many fraction bits, rounded down.
inline Number whole(Number value, int fraction_bits) {
    return value >> fraction_bits;
}

// A value that moves in equal steps; it starts half a unit up, so that cutting off the fraction rounds.
struct Steps {
    Number start = 0;
    Number step = 0;

    Number at(Number count) const { return wrap_32(start + count * step); }
};

// From one whole value to another one in so many steps. Only divisors that are not 1, 2, 4 or 8 are divided by; those are
// smaller shifts, which wrap later. Without any steps the difference stays as it is.
inline Steps steps_between(Number from, Number to, Number count, int fraction_bits) {
    const Number half = Number{1} << (fraction_bits - 1);
    const auto shifted = [](Number value, int bits) { return wrap_32(value * (Number{1} << bits)); };
    const Number difference = wrap_32(to - from);
    const Number start = wrap_32(shifted(from, fraction_bits) + half);
    switch (count) {
    case 0:
        return {start, difference};
    case 1:
        return {start, shifted(difference, fraction_bits)};
    case 2:
        return {start, shifted(difference, fraction_bits - 1)};
    case 4:
        return {start, shifted(difference, fraction_bits - 2)};
    case 8:
        return {start, shifted(difference, fraction_bits - 3)};
    default:
        return {start, shifted(difference, fraction_bits) / count};
    }
}

inline constexpr int depth_bits = 15;
inline constexpr int column_bits = 16;
inline constexpr int color_bits = 16;

} // namespace model

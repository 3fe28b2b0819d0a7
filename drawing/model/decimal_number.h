// Decimal numbers as floats, read fast where the result is sure to be the nearest float.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace vorna::drawing::model {

// The number that begins at `start`, after an optional sign, and in `stop` where it ends; false when it has none of the plain
// forms and the library's function is needed. Digits make a whole number below 2^53, and powers of ten up to 22 are exact, so
// that their product or quotient is the nearest double. The nearest float to that is the nearest to the number itself, unless the
// double lies exactly in the middle between two floats.
inline bool read_plain_number(const char* start, const char* end, const char*& stop, float& value) noexcept {
    constexpr std::array powers{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr int largest_power = static_cast<int>(powers.size()) - 1, most_digits = 18;
    const bool negative = start != end && *start == '-';
    const char* place = start + (negative ? 1 : 0);
    std::uint64_t digits = 0;
    const auto take_digits = [&] {
        const char* const first = place;
        for (; place != end; ++place) {
            const unsigned digit = static_cast<unsigned char>(*place) - unsigned{'0'};
            if (digit > 9) {
                break;
            }
            digits = digits * 10 + digit;
        }
        return static_cast<int>(place - first);
    };
    int count = take_digits(), power = 0;
    if (place != end && *place == '.') {
        ++place;
        power = -take_digits();
        count -= power;
    }
    if (count == 0 || count > most_digits) {
        return false;
    }
    if (place != end && (*place == 'e' || *place == 'E')) {
        const char* exponent = place + 1;
        const bool is_small = exponent != end && *exponent == '-';
        exponent += is_small || (exponent != end && *exponent == '+') ? 1 : 0;
        int given = 0, length = 0;
        for (; exponent != end && *exponent >= '0' && *exponent <= '9' && length < 3; ++exponent, ++length) {
            given = given * 10 + (*exponent - '0');
        }
        if (length == 0 || length == 3) {
            return false;
        }
        power += is_small ? -given : given;
        place = exponent;
    }
    if (digits >> 53 != 0 || power < -largest_power || power > largest_power) {
        return false;
    }
    const auto whole = static_cast<double>(digits);
    const double wide =
        power < 0 ? whole / powers[static_cast<std::size_t>(-power)] : whole * powers[static_cast<std::size_t>(power)];
    constexpr std::uint64_t below_float = (std::uint64_t{1} << 29) - 1, middle = std::uint64_t{1} << 28;
    if ((std::bit_cast<std::uint64_t>(wide) & below_float) == middle) {
        return false;
    }
    value = static_cast<float>(negative ? -wide : wide);
    stop = place;
    return true;
}

} // namespace vorna::drawing::model

// The thresholds of the ordered dither and the stock face patterns.
#pragma once

#include <cstdint>

#include "host/object.h"

namespace vorna {

inline constexpr int cell_count = 8; // the period of thresholds and stock patterns

// Rank of cell (a, b) in the Bayer matrix, M(2n) = [[4M, 4M+2], [4M+3, 4M+1]]: each further cell lies as far as possible from the
// preceding ones. The low bits of the coordinates choose the cell of the innermost 2 x 2 matrix, which has the largest weight.
constexpr int bayer_rank(int a, int b) {
    int rank = 0;
    int weight = 1;
    for (int half = cell_count / 2; half > 0; half /= 2) {
        const int right = a / half % 2;
        const int lower = b / half % 2;
        rank += weight * (lower ? 3 - 2 * right : 2 * right);
        weight *= 4;
    }
    return rank;
}

constexpr bool stock_cell_is_set(int pattern, int a, int b) {
    const bool horizontal = b % 4 == 0;
    const bool vertical = a % 4 == 0;
    const bool falling = (a + b) % 4 == 0;
    const bool rising = (a - b) % 4 == 0;
    switch (pattern) {
    case 65:
        return horizontal;
    case 66:
        return vertical;
    case 67:
        return falling;
    case 68:
        return rising;
    case 69:
        return horizontal || vertical;
    case 70:
        return falling || rising;
    case 71:
        return b % 2 == 0;
    case 72:
        return a % 2 == 0;
    case 73:
        return (a + b) % 2 == 0;
    default:
        return bayer_rank(a, b) < pattern; // 0 is empty, 64 solid
    }
}

constexpr VT_Shared_Data make_shared_data() {
    VT_Shared_Data data{};
    for (int b = 0; b < cell_count; ++b) {
        for (int a = 0; a < cell_count; ++a) {
            data.thresholds[a + cell_count * b] = static_cast<std::uint16_t>(1024 * bayer_rank(a, b) + 512);
        }
    }
    int number = 0;
    for (auto& pattern : data.stock_patterns) {
        for (int b = 0; b < cell_count; ++b) {
            for (int a = 0; a < cell_count; ++a) {
                if (stock_cell_is_set(number, a, b)) {
                    pattern[b] = static_cast<std::uint8_t>(pattern[b] | 0x80 >> a);
                }
            }
        }
        ++number;
    }
    return data;
}

} // namespace vorna

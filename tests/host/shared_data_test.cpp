// Thresholds and stock patterns against the definition by doubling matrices.
#include <vector>

#include <gtest/gtest.h>

#include "renderer/host/object.h"
#include "renderer/host/rendition.h"

namespace {

using Ranks = std::vector<std::vector<int>>;

// M(2n) = [[4M, 4M+2], [4M+3, 4M+1]], row b, column a.
Ranks doubled(const Ranks& m) {
    const std::size_t n = m.size();
    Ranks twice(2 * n, std::vector<int>(2 * n));
    for (std::size_t b = 0; b < n; ++b) {
        for (std::size_t a = 0; a < n; ++a) {
            twice[b][a] = 4 * m[b][a];
            twice[b][a + n] = 4 * m[b][a] + 2;
            twice[b + n][a] = 4 * m[b][a] + 3;
            twice[b + n][a + n] = 4 * m[b][a] + 1;
        }
    }
    return twice;
}

bool cell(int pattern, int a, int b) {
    return (SHARED.stock_patterns[pattern][b] >> (7 - a) & 1) != 0;
}

TEST(Shared_Data, Thresholds_And_Density_Patterns_Follow_The_Recursive_Ranks) {
    const Ranks ranks = doubled(doubled(doubled({{0}})));
    for (int b = 0; b < 8; ++b) {
        for (int a = 0; a < 8; ++a) {
            const int rank = ranks[static_cast<std::size_t>(b)][static_cast<std::size_t>(a)];
            EXPECT_EQ(SHARED.thresholds[a + 8 * b], 1024 * rank + 512);
            for (int pattern = 0; pattern <= face_pattern::solid; ++pattern) {
                EXPECT_EQ(cell(pattern, a, b), rank < pattern) << "pattern " << pattern << " cell " << a << ", " << b;
            }
        }
    }
}

TEST(Shared_Data, Line_Patterns_As_Bytes) {
    // Written out by hand, lowest row first.
    const std::vector<std::pair<int, std::vector<int>>> expected = {
        {65, {0xFF, 0, 0, 0, 0xFF, 0, 0, 0}},
        {66, {0x88, 0x88, 0x88, 0x88, 0x88, 0x88, 0x88, 0x88}},
        {67, {0x88, 0x11, 0x22, 0x44, 0x88, 0x11, 0x22, 0x44}},
        {68, {0x88, 0x44, 0x22, 0x11, 0x88, 0x44, 0x22, 0x11}},
        {69, {0xFF, 0x88, 0x88, 0x88, 0xFF, 0x88, 0x88, 0x88}},
        {70, {0x88, 0x55, 0x22, 0x55, 0x88, 0x55, 0x22, 0x55}},
        {71, {0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0}},
        {72, {0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA}},
        {73, {0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55}},
    };
    for (const auto& [pattern, rows] : expected) {
        for (int b = 0; b < 8; ++b) {
            EXPECT_EQ(SHARED.stock_patterns[pattern][b], rows[static_cast<std::size_t>(b)])
                << "pattern " << pattern << " row " << b;
        }
    }
}

} // namespace

// The pixels of faces.
#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "drawing/map/polygon_rows.h"

namespace vorna::drawing::map {
namespace {

// Corners on a lattice of sixths and tenths, so that sides often lead through pixel centres or miss them by a rounding error.
TEST(Polygon_Rows, faces_that_tile_a_window_cover_every_pixel_once) {
    constexpr int columns = 30, rows = 30, size = 60;
    const VT_Int_Rectangle window{0, size - 1, 0, size - 1};
    std::mt19937 random(7); // NOLINT(bugprone-random-generator-seed): the same faces each time
    for (int round = 0; round < 60; ++round) {
        const double lattice = round % 2 ? 10 : 6;
        std::vector<Position> corners;
        for (int i = 0; i < (rows + 1) * (columns + 1); ++i) {
            const auto crooked = [&] { return static_cast<double>(static_cast<int>(random() % 18) - 9) / lattice; };
            const int x = i % (columns + 1), y = i / (columns + 1);
            corners.push_back({x == 0         ? -5
                               : x == columns ? size + 5
                                              : 2 * x + crooked(),
                               y == 0      ? -5
                               : y == rows ? size + 5
                                           : 2 * y + crooked()});
        }
        std::vector<int> covered(size * size);
        for (int cell = 0; cell < rows * columns; ++cell) {
            const auto at = static_cast<std::size_t>(cell / columns * (columns + 1) + cell % columns);
            Path ring{corners[at], corners[at + 1], corners[at + columns + 2], corners[at + columns + 1]};
            if (random() % 2) {
                std::reverse(ring.begin(), ring.end());
            }
            for_each_rectangle({ring}, window, [&](const VT_Int_Rectangle& r) {
                for (std::int32_t y = r.bottom; y <= r.top; ++y) {
                    for (std::int32_t x = r.left; x <= r.right; ++x) {
                        ++covered.at(static_cast<std::size_t>(y * size + x));
                    }
                }
            });
        }
        // Cells may be turned inside out, and then overlap: an odd number of times.
        EXPECT_TRUE(std::ranges::all_of(covered, [](int times) { return times % 2 == 1; })) << round;
    }
}

} // namespace
} // namespace vorna::drawing::map

// The complex-clip mask against a naive even-odd test, one pixel at a time.
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "host/frame_buffer.h"
#include "tests/support/model/model.h"

namespace {

using Contour = VT_Contour_Set::Contour;

bool is_masked(const Frame_Buffer_Mask& mask, int x, int y) {
    return (mask.row(y)[x / 8] & 0x80 >> x % 8) != 0;
}

void expect_exact(const VT_Contour_Set& contours, int width, int height, int origin_x, int origin_y, const std::string& what) {
    Frame_Buffer_Mask mask;
    mask.establish_configuration(width, height, origin_x, origin_y);
    mask.clear_and_rasterize_mask(contours);
    ASSERT_EQ(mask.key(), contours.serial());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            ASSERT_NE(is_masked(mask, x, y), model::is_inside(contours, origin_x + x + 0.5L, origin_y + y + 0.5L))
                << what << ", pixel " << x << ", " << y;
        }
    }
}

class Random_Contours {
public:
    explicit Random_Contours(unsigned seed) : random_(seed) {}

    // Coordinates are multiples of 1/grid; grid 2 puts many corners and edges on pixel centres.
    Contour contour(int corners, int low, int high, int grid) {
        std::uniform_int_distribution<int> coordinate(low * grid, high * grid);
        Contour points;
        for (int i = 0; i < corners; ++i) {
            const auto value = [&] { return static_cast<float>(coordinate(random_)) / static_cast<float>(grid); };
            const float x = value();
            points.push_back({x, value(), 0});
        }
        return points;
    }

private:
    std::mt19937 random_;
};

TEST(Mask, Equals_The_Naive_Test_For_Random_Contours) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        Random_Contours random(seed);
        const int grid = seed % 3 == 0 ? 1 : seed % 3 == 1 ? 2 : 4096;
        std::vector<Contour> contours;
        for (unsigned i = 0; i <= seed % 4; ++i) {
            contours.push_back(random.contour(3 + static_cast<int>(seed % 17), -40, 90, grid));
        }
        expect_exact(VT_Contour_Set(contours), 37 + static_cast<int>(seed), 41, -3, 7, "seed " + std::to_string(seed));
    }
}

TEST(Mask, Holes_And_Contours_That_Touch) {
    const Contour outer = {{2, 2, 0}, {30, 2, 0}, {30, 30, 0}, {2, 30, 0}};
    const Contour hole = {{10, 10, 0}, {20, 10, 0}, {20, 20, 0}, {10, 20, 0}};
    const VT_Contour_Set ring({outer, hole});
    expect_exact(ring, 32, 32, 0, 0, "ring");
    // Through pixel centres: half-open, so each belongs to the region on its right or above.
    expect_exact(VT_Contour_Set({{{0.5F, 0.5F, 0}, {8.5F, 0.5F, 0}, {8.5F, 8.5F, 0}, {0.5F, 8.5F, 0}}}), 16, 16, 0, 0, "centres");
}

TEST(Mask, Huge_Missing_And_Unusable_Coordinates) {
    const float huge = 1e30F;
    const float nan = std::nanf("");
    Frame_Buffer_Mask mask;
    mask.establish_configuration(20, 10, 0, 0);
    mask.clear_and_rasterize_mask(VT_Contour_Set({{{-huge, -huge, 0}, {huge, -huge, 0}, {huge, huge, 0}, {-huge, huge, 0}}}));
    EXPECT_FALSE(is_masked(mask, 0, 0));
    EXPECT_FALSE(is_masked(mask, 19, 9));
    mask.clear_and_rasterize_mask(VT_Contour_Set());
    EXPECT_TRUE(is_masked(mask, 0, 0)) << "without contours nothing is inside";
    mask.clear_and_rasterize_mask(VT_Contour_Set({{{1, 1, 0}, {nan, 5, 0}, {9, 1, 0}, {9, 9, 0}, {1, 9, 0}}}));
    EXPECT_FALSE(is_masked(mask, 5, 5)) << "a corner that is no point is left out";
    EXPECT_TRUE(is_masked(mask, 15, 5));
    // A window of another size takes the place of the old one.
    mask.establish_configuration(100, 3, 0, 0);
    mask.clear_and_rasterize_mask(VT_Contour_Set({{{90, 0, 0}, {100, 0, 0}, {100, 3, 0}, {90, 3, 0}}}));
    EXPECT_TRUE(is_masked(mask, 89, 2));
    EXPECT_FALSE(is_masked(mask, 99, 2));
}

} // namespace

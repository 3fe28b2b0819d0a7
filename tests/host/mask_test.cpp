// The complex-clip mask against a naive even-odd test, one pixel at a time.
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "renderer/host/contour.h"
#include "renderer/host/frame_buffer.h"

namespace {

using Contour = VT_Contour_Set::Contour;

bool is_masked(const Frame_Buffer_Mask& mask, int x, int y) {
    return (mask.row(y)[x / 8] & 0x80 >> x % 8) != 0;
}

// Counts the edges left of or at the point in long double, whose 64 bits hold every product that these tests can make.
bool is_inside(const VT_Contour_Set& contours, long double x, long double y) {
    bool inside = false;
    for (const Contour& contour : contours.contours()) {
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const VT_Point& a = contour[i];
            const VT_Point& b = contour[(i + 1) % contour.size()];
            if ((a.y <= y) == (b.y <= y)) {
                continue;
            }
            const long double product =
                (x - a.x) * (static_cast<long double>(b.y) - a.y) - (y - a.y) * (static_cast<long double>(b.x) - a.x);
            inside ^= a.y <= y ? product >= 0 : product <= 0;
        }
    }
    return inside;
}

void expect_exact(const VT_Contour_Set& contours, int width, int height, int origin_x, int origin_y, const std::string& what) {
    Frame_Buffer_Mask mask;
    mask.establish_configuration(width, height, origin_x, origin_y);
    mask.clear_and_rasterize_mask(contours);
    ASSERT_EQ(mask.key(), contours.serial());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            ASSERT_NE(is_masked(mask, x, y), is_inside(contours, origin_x + x + 0.5L, origin_y + y + 0.5L))
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
    VT_Contour_Set ring({outer, hole});
    Frame_Buffer_Mask mask;
    mask.establish_configuration(32, 32, 0, 0);
    mask.clear_and_rasterize_mask(ring);
    int drawable = 0;
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 32; ++x) {
            drawable += !is_masked(mask, x, y);
        }
    }
    EXPECT_EQ(drawable, 28 * 28 - 10 * 10);
    EXPECT_FALSE(is_masked(mask, 2, 2));
    EXPECT_TRUE(is_masked(mask, 30, 2));
    EXPECT_TRUE(is_masked(mask, 15, 15));
    expect_exact(ring, 32, 32, 0, 0, "ring");
    // Through pixel centres: half-open, so each belongs to the region on its right or above.
    expect_exact(VT_Contour_Set({{{0.5F, 0.5F, 0}, {8.5F, 0.5F, 0}, {8.5F, 8.5F, 0}, {0.5F, 8.5F, 0}}}), 16, 16, 0, 0, "centres");
}

TEST(Mask, Regions_That_Share_Edges_Partition_The_Pixels) {
    for (unsigned seed = 100; seed < 120; ++seed) {
        Random_Contours random(seed);
        // A fan around a point inside a square: every pixel of the square lies in exactly one of the triangles.
        const VT_Point middle = random.contour(1, 10, 50, 1024)[0];
        const Contour corners = {{0, 0, 0}, {25.25F, 0, 0}, {64, 0, 0}, {64, 64, 0}, {31.5F, 64, 0}, {0, 64, 0}};
        std::vector<int> covered(64 * 64);
        for (std::size_t i = 0; i < corners.size(); ++i) {
            Contour triangle = {middle, corners[i], corners[(i + 1) % corners.size()]};
            if (i % 2 == 1) {
                std::swap(triangle[0], triangle[2]);
            }
            Frame_Buffer_Mask mask;
            mask.establish_configuration(64, 64, 0, 0);
            mask.clear_and_rasterize_mask(VT_Contour_Set({triangle}));
            for (int p = 0; p < 64 * 64; ++p) {
                covered[static_cast<std::size_t>(p)] += !is_masked(mask, p % 64, p / 64);
            }
        }
        EXPECT_EQ(covered, std::vector<int>(64 * 64, 1)) << "seed " << seed;
    }
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

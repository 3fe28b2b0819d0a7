// Palettes and colour cubes.
#include <stdexcept>

#include <gtest/gtest.h>

#include "host/color.h"

namespace {

VT_RGB32 rgb(int red, int green, int blue) {
    return {static_cast<std::uint8_t>(blue), static_cast<std::uint8_t>(green), static_cast<std::uint8_t>(red), 255};
}

TEST(Palette, Default_Holds_A_Cube_And_Greys_Between_Black_And_White) {
    const VT_Palette palette;
    ASSERT_EQ(palette.size(), 256);
    ASSERT_TRUE(palette.color_cube());
    const VT_Color_Cube& cube = *palette.color_cube();
    for (int r = 0; r < 6; ++r) {
        for (int g = 0; g < 6; ++g) {
            for (int b = 0; b < 6; ++b) {
                const int index = cube.base + r * cube.red_stride + g * cube.green_stride + b * cube.blue_stride;
                EXPECT_EQ(palette.color(static_cast<std::uint8_t>(index)), rgb(51 * r, 51 * g, 51 * b));
            }
        }
    }
    EXPECT_EQ(palette.color(216), rgb(6, 6, 6));
    EXPECT_EQ(palette.color(235), rgb(124, 124, 124)); // 255 * 20 / 41 = 124.4
    EXPECT_EQ(palette.color(255), rgb(249, 249, 249)); // 255 * 40 / 41 = 248.8
}

TEST(Palette, Closest_Match_Takes_The_Lowest_Of_Equals_And_Ignores_Alpha) {
    const VT_Palette palette({rgb(200, 0, 0), rgb(0, 0, 10), rgb(0, 10, 0), rgb(0, 0, 10), rgb(255, 255, 255)});
    EXPECT_EQ(palette.closest_match(rgb(0, 0, 0), false), 1);
    EXPECT_EQ(palette.closest_match(rgb(0, 10, 0), false), 2);
    EXPECT_EQ(palette.closest_match(rgb(0, 6, 5), false), 2);
    EXPECT_EQ(palette.closest_match({10, 0, 0, 0}, true), 1);
    EXPECT_EQ(palette.closest_match(rgb(255, 255, 255), true), 4);
    EXPECT_EQ(palette.closest_match(rgb(255, 255, 254), true), -1);
}

TEST(Palette, Size_Is_1_To_256) {
    EXPECT_EQ(VT_Palette(std::vector<VT_RGB32>(300)).size(), 256);
    EXPECT_EQ(VT_Palette({rgb(1, 2, 3)}).color(1), VT_RGB32{});
    EXPECT_THROW(VT_Palette(std::vector<VT_RGB32>{}), std::invalid_argument);
}

} // namespace

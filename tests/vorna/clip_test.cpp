// Outcodes and preclipping.
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/clip.h"
#include "host/rounding.h"
#include "host/triangle_clipper.h"

namespace {

constexpr VT_Int_Rectangle rectangle{10, 20, -5, 5};

template <class Point> std::vector<int> outcodes_of(const std::vector<Point>& points, std::int32_t& result) {
    std::vector<std::uint16_t> outcodes(points.size() + 1, 0x1234);
    result = VD_Clip(rectangle, static_cast<std::int32_t>(points.size()), points.data(), outcodes.data());
    EXPECT_EQ(outcodes.back(), 0x1234) << "written beyond the last point";
    return {outcodes.begin(), outcodes.end() - 1};
}

template <class Point> class Clip : public testing::Test {};
using Point_Types = testing::Types<VT_DCI_Point, VT_Point, VT_Point_D>;
TYPED_TEST_SUITE(Clip, Point_Types);

TYPED_TEST(Clip, Outcodes_Of_Sides_And_Corners) {
    std::int32_t result = 0;
    const std::vector<TypeParam> around = {{9, 6, 0},  {15, 6, 0}, {21, 6, 0}, {9, 0, 0},   {10, -5, 0},
                                           {20, 5, 0}, {21, 0, 0}, {9, -6, 0}, {15, -6, 0}, {21, -6, 0}};
    EXPECT_THAT(outcodes_of(around, result), testing::ElementsAre(3, 2, 6, 1, 0, 0, 4, 9, 8, 12));
    EXPECT_EQ(result, -1);
    outcodes_of(std::vector<TypeParam>{{10, -5, 0}, {20, 5, 0}, {15, 0, 99}}, result);
    EXPECT_EQ(result, 3);
    outcodes_of(std::vector<TypeParam>{{9, 6, 0}, {0, 0, 0}, {-9, -6, 0}}, result);
    EXPECT_EQ(result, 0) << "all are left";
    outcodes_of(std::vector<TypeParam>{{9, 6, 0}, {0, 0, 0}, {21, 6, 0}}, result);
    EXPECT_EQ(result, -1) << "no side is common to all";
    outcodes_of(std::vector<TypeParam>{}, result);
    EXPECT_EQ(result, 0);
}

TEST(Clip_Values, Floating_Points_Are_Compared_As_They_Are) {
    std::int32_t result = 0;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_THAT(
        outcodes_of(std::vector<VT_Point_D>{{nan, nan, 0}, {nan, 6, 0}, {9.999, 5.001, 0}, {infinity, -infinity, 0}}, result),
        testing::ElementsAre(0, 2, 3, 12));
    EXPECT_THAT(outcodes_of(std::vector<VT_Point>{{std::nanf(""), 0, 0}, {20.001F, 5.25F, 0}, {20, 5, 0}}, result),
                testing::ElementsAre(0, 6, 0));
    EXPECT_THAT(outcodes_of(std::vector<VT_DCI_Point>{{INT32_MIN, INT32_MAX, 0}, {INT32_MAX, INT32_MIN, 0}}, result),
                testing::ElementsAre(3, 12));
}

TEST(Preclip, Heads_And_Tails_Lie_On_The_Edge_That_Is_Crossed) {
    const VT_Point_D inward[2] = {{0, 0, 100}, {20, 4, 0}};
    const VT_Point_D outward[2] = {inward[1], inward[0]};
    const VT_RGB32 colors[2] = {{0, 0, 0, 255}, {200, 100, 50, 55}};
    VT_DCI_Point clipped;
    VT_RGB32 color;
    VD_Preclip_Head(vorna::outcode::left, rectangle, inward, &clipped, colors, &color);
    EXPECT_THAT((std::array{clipped.x, clipped.y, clipped.z}), testing::ElementsAre(10, 2, 50));
    EXPECT_EQ(color, (VT_RGB32{100, 50, 25, 155}));

    VD_Preclip_Tail(vorna::outcode::left, rectangle, outward, &clipped, nullptr, nullptr);
    EXPECT_THAT((std::array{clipped.x, clipped.y, clipped.z}), testing::ElementsAre(10, 2, 50));

    // Through a corner's outcode: the side that is passed last counts. Halves go up below zero too.
    const VT_Point_D corner[2] = {{0, 15, -5}, {20, 0, 5}};
    VD_Preclip_Head(vorna::outcode::left | vorna::outcode::above, rectangle, corner, &clipped, nullptr, nullptr);
    EXPECT_THAT((std::array{clipped.x, clipped.y}), testing::ElementsAre(13, 5));
    const VT_Point_D lower_corner[2] = {{0, 6, 0}, {20, 0, 0}};
    VD_Preclip_Head(vorna::outcode::left | vorna::outcode::above, rectangle, lower_corner, &clipped, nullptr, nullptr);
    EXPECT_THAT((std::array{clipped.x, clipped.y}), testing::ElementsAre(10, 3));
    const VT_Point_D negative[2] = {{15, -10, -2.5}, {15, 0, -2.5}};
    VD_Preclip_Head(vorna::outcode::below, rectangle, negative, &clipped, nullptr, nullptr);
    EXPECT_THAT((std::array{clipped.x, clipped.y, clipped.z}), testing::ElementsAre(15, -5, -2));
}

TEST(Preclip, Ends_Tells_Segments_That_Miss) {
    VT_DCI_Point clipped[2];
    VT_RGB32 clipped_colors[2];
    const VT_RGB32 colors[2] = {{0, 0, 0, 0}, {100, 100, 100, 100}};
    const std::uint16_t across[2] = {vorna::outcode::left, vorna::outcode::right};
    const VT_Point_D through[2] = {{0, 0, 0}, {40, 4, 400}};
    ASSERT_TRUE(VD_Preclip_Ends(across, rectangle, through, clipped, colors, clipped_colors));
    EXPECT_THAT((std::array{clipped[0].x, clipped[0].y, clipped[0].z}), testing::ElementsAre(10, 1, 100));
    EXPECT_THAT((std::array{clipped[1].x, clipped[1].y, clipped[1].z}), testing::ElementsAre(20, 2, 200));
    EXPECT_EQ(clipped_colors[0].red, 25);
    EXPECT_EQ(clipped_colors[1].red, 50);

    const std::uint16_t around[2] = {vorna::outcode::left, vorna::outcode::above};
    const VT_Point_D past[2] = {{0, 0, 0}, {11, 22, 0}};
    EXPECT_FALSE(VD_Preclip_Ends(around, rectangle, past, clipped, nullptr, nullptr));
    const std::uint16_t beside[2] = {vorna::outcode::left, vorna::outcode::left | vorna::outcode::above};
    const VT_Point_D left[2] = {{0, 0, 0}, {5, 22, 0}};
    EXPECT_FALSE(VD_Preclip_Ends(beside, rectangle, left, clipped, nullptr, nullptr));

    // A segment between ends that are not beside one side hits where corners lie on both sides of it, however short the hit is.
    std::mt19937 random(7);
    std::uniform_int_distribution<int> near_by(-30, 30);
    for (int round = 0; round < 5000; ++round) {
        const VT_Point_D ends[2] = {{15.0 + near_by(random), double(near_by(random)), 0},
                                    {15.0 + near_by(random), double(near_by(random)), 0}};
        std::uint16_t codes[2];
        VD_Clip(rectangle, 2, ends, codes);
        bool right = false, left_of = false, touches = false;
        for (const VT_Point_D& corner : {VT_Point_D{10, -5, 0}, {20, -5, 0}, {10, 5, 0}, {20, 5, 0}}) {
            const double turn =
                (ends[1].x - ends[0].x) * (corner.y - ends[0].y) - (ends[1].y - ends[0].y) * (corner.x - ends[0].x);
            right |= turn < 0;
            left_of |= turn > 0;
            touches |= turn == 0;
        }
        if (codes[0] != 0 && codes[1] != 0 && (codes[0] & codes[1]) == 0 && !touches) {
            ASSERT_EQ(VD_Preclip_Ends(codes, rectangle, ends, clipped, nullptr, nullptr), left_of && right) << round;
        }
    }
}

// In a plane, so that every cut corner has to lie in it, its colours too. What strips cover of the rectangle, regions see when
// they are drawn.
TEST(Preclip, Triangles_Stay_Inside_And_In_Their_Plane) {
    VT_DCI_Point clipped[8];
    const VT_Point_D covering[3] = {{-1000, -1000, 0}, {1000, -1000, 0}, {15, 2000, 0}};
    ASSERT_EQ(VD_Preclip_2D_Triangle(rectangle, covering, clipped, nullptr, nullptr), 4) << "the rectangle itself";
    const auto [low, high] = std::minmax_element(clipped, clipped + 4, [](auto& a, auto& b) { return a.x + a.y < b.x + b.y; });
    EXPECT_THAT((std::array{low->x, low->y, high->x, high->y}), testing::ElementsAre(10, -5, 21, 6)) << "all of its pixels";
    const VT_Point_D outside[3] = {{0, 0, 0}, {9, 20, 0}, {9, -20, 0}};
    EXPECT_EQ(VD_Preclip_2D_Triangle(rectangle, outside, clipped, nullptr, nullptr), 0);
    std::mt19937 random(20261121);
    std::uniform_int_distribution<int> cell(-75, 125); // where colours are whole numbers
    for (int round = 0; round < 300; ++round) {
        VT_Point_D points[3];
        for (VT_Point_D& point : points) {
            point = {20.0 * cell(random), 20.0 * cell(random), 0};
            point.z = 2 * point.x - 3 * point.y + 7;
        }
        const auto plane_color = [](const VT_Point_D& p) {
            return VT_RGB32{std::uint8_t(100 + p.x / 20), std::uint8_t(100 + p.y / 20), 9, 255};
        };
        const VT_RGB32 colors[3] = {plane_color(points[0]), plane_color(points[1]), plane_color(points[2])};
        VT_RGB32 clipped_colors[8];
        const std::int32_t count = VD_Preclip_2D_Triangle({0, 1000, 0, 1000}, points, clipped, colors, clipped_colors);
        ASSERT_TRUE(count == 0 || (count >= 3 && count <= 8)) << count;
        for (std::int32_t i = 0; i < count; ++i) {
            const VT_DCI_Point& p = clipped[i];
            EXPECT_TRUE(p.x >= 0 && p.x <= 1001 && p.y >= 0 && p.y <= 1001);
            EXPECT_NEAR(p.z, 2 * p.x - 3 * p.y + 7, 3.1) << "rounding moves x and y by a half, z by 2 * 0.5 + 3 * 0.5 + 0.5";
            EXPECT_NEAR(clipped_colors[i].blue, 100 + p.x / 20.0, 0.53) << "and colours by a half and 0.5 / 20";
            EXPECT_NEAR(clipped_colors[i].green, 100 + p.y / 20.0, 0.53);
        }
    }
}

// Beyond what integers hold, where a value at the first corner and its change up to the rectangle nearly cancel each other. A
// corner on a side stays one corner, though its other coordinate is no whole number.
TEST(Preclip, Triangles_Have_The_Same_Corners_And_Colors_Whichever_Corner_Comes_First) {
    const VT_Int_Rectangle window{0, 63, 0, 63};
    const VT_Point_D far[3] = {{-3e9, 833123438, 0}, {0, 22, 0}, {22.6, 21.7, 0}};
    const VT_Point_D on_side[3] = {
        {0, 40.69360042253083, 0}, {11.22632805592294, 30.798797628019006, 0}, {-3219.155493578473, 875.2171847186086, 0}};
    const VT_RGB32 colors[3] = {{255, 255, 255, 255}, {250, 255, 255, 255}, {0, 0, 0, 255}};
    for (const VT_Point_D* const triangle : {far, on_side}) {
        std::map<std::pair<int, int>, int> blue_at;
        for (int first = 0; first < 3; ++first) {
            VT_Point_D points[3];
            VT_RGB32 turned[3], clipped_colors[8];
            VT_DCI_Point clipped[8];
            for (int i = 0; i < 3; ++i) {
                points[i] = triangle[(first + i) % 3];
                turned[i] = colors[(first + i) % 3];
            }
            const std::int32_t count = VD_Preclip_2D_Triangle(window, points, clipped, turned, clipped_colors);
            EXPECT_EQ(count, 3);
            for (std::int32_t i = 0; i < count; ++i) {
                const auto [place, is_new] = blue_at.try_emplace({clipped[i].x, clipped[i].y}, clipped_colors[i].blue);
                EXPECT_TRUE(is_new == (first == 0)) << clipped[i].x << ' ' << clipped[i].y;
                EXPECT_NEAR(place->second, clipped_colors[i].blue, 1);
            }
        }
    }
}

// The gradients of slivers are too large for the precision of float, in which those of whole points are kept.
TEST(Preclip, Triangles_Keep_The_Corners_Inside_As_They_Are) {
    std::mt19937 random(3);
    const auto number = [&](int least, int most) { return std::uniform_int_distribution<int>(least, most)(random); };
    for (int round = 0; round < 500; ++round) {
        const VT_Point_D inside{double(number(1, 999)), double(number(1, 999)), double(number(0, 65535))};
        const VT_Point_D far{double(number(1500, 100000)), double(number(1500, 100000)), double(number(0, 65535))};
        const VT_Point_D points[3] = {far, inside, {far.x + number(-1, 1), far.y + number(1, 2), double(number(0, 65535))}};
        const auto channel = [&] { return static_cast<std::uint8_t>(number(0, 255)); };
        const VT_RGB32 colors[3] = {
            {channel(), 0, 255, 9}, {channel(), channel(), channel(), channel()}, {255, channel(), 0, 255}};
        const auto keeps_corner = [&](std::int32_t count, const VT_DCI_Point* clipped, const VT_RGB32* clipped_colors) {
            return std::any_of(clipped, clipped + count, [&](const VT_DCI_Point& p) {
                return p.x == inside.x && p.y == inside.y && p.z == inside.z && clipped_colors[&p - clipped] == colors[1];
            });
        };
        constexpr VT_Int_Rectangle window{0, 1000, 0, 1000};
        VT_DCI_Point clipped[8];
        VT_RGB32 clipped_colors[8];
        const std::int32_t count = VD_Preclip_2D_Triangle(window, points, clipped, colors, clipped_colors);
        ASSERT_TRUE(keeps_corner(count, clipped, clipped_colors)) << round;

        vorna::Clip_Vertex<VT_DCI_Point> whole[3];
        for (int i = 0; i < 3; ++i) {
            whole[i] = {vorna::rounded_point(points[i]), colors[i], 0, 0};
        }
        vorna::Clipped_Polygon polygon;
        clip_triangle_to_rectangle(window, whole, polygon);
        ASSERT_TRUE(keeps_corner(polygon.count, polygon.points, polygon.colors)) << "of whole points, " << round;
    }
}

} // namespace

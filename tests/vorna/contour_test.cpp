// Polygon ranks and triangulation.
#include <algorithm>
#include <cmath>
#include <ctime>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "host/contour.h"
#include "tests/support/model/model.h"
#include "vorna/exact.h"

namespace {

using Contour = VT_Contour_Set::Contour;

int rank(const Contour& points) {
    return VD_Rank_Polygon(static_cast<std::int32_t>(points.size()), points.data()).kind;
}

TEST(Rank, Convex_Means_One_Turn_Around) {
    const Contour square = {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}};
    EXPECT_EQ(rank(square), 0);
    EXPECT_EQ(rank({square.rbegin(), square.rend()}), 0) << "the other way round";
    EXPECT_EQ(rank({{0, 0, 0}, {5, 0, 0}, {10, 0, 0}, {10, 10, 0}, {10, 10, 0}, {0, 10, 0}, {0, 5, 0}}), 0)
        << "collinear, repeated";
    EXPECT_EQ(rank({{0, 0, 0}, {10, 0, 0}, {4, 4, 0}, {0, 10, 0}}), 1) << "a dent";
    EXPECT_EQ(rank({{0, 0, 0}, {10, 10, 0}, {10, 0, 0}, {0, 10, 0}}), 1) << "a bow tie";
    // Turns left at every corner, but goes around twice.
    EXPECT_EQ(rank({{0, 10, 0}, {-6, -8, 0}, {9, 3, 0}, {-9, 3, 0}, {6, -8, 0}}), 1) << "a star";
    Contour twice = square;
    twice.insert(twice.end(), square.begin(), square.end());
    EXPECT_EQ(rank(twice), 1);
}

struct Triangle {
    VT_Point corners[3];
};

std::vector<Triangle> triangles_of(const VT_Contour_Set& contours) {
    std::vector<Triangle> triangles;
    contours.triangulate(
        [](void* context, const VT_Point* corners) {
            static_cast<std::vector<Triangle>*>(context)->push_back({{corners[0], corners[1], corners[2]}});
        },
        &triangles);
    return triangles;
}

double area(const Triangle& t) {
    const VT_Point* p = t.corners;
    return ((double{p[1].x} - p[0].x) * (double{p[2].y} - p[0].y) - (double{p[1].y} - p[0].y) * (double{p[2].x} - p[0].x)) / 2;
}

double area(const std::vector<Triangle>& triangles) {
    double sum = 0;
    for (const Triangle& triangle : triangles) {
        EXPECT_GT(area(triangle), 0) << "counterclockwise, and never without an area";
        sum += area(triangle);
    }
    return sum;
}

bool is_in(const Triangle& t, double x, double y) {
    for (int i = 0; i < 3; ++i) {
        const VT_Point& a = t.corners[i];
        const VT_Point& b = t.corners[(i + 1) % 3];
        if ((double{b.x} - a.x) * (y - a.y) - (double{b.y} - a.y) * (x - a.x) < 0) {
            return false;
        }
    }
    return true;
}

// At random points, which lie on no edge: in exactly one triangle when inside, in none when outside.
void expect_partition(const std::vector<Contour>& contours, double low, double high, unsigned seed) {
    const VT_Contour_Set region(contours);
    const std::vector<Triangle> triangles = triangles_of(region);
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> coordinate(low, high);
    for (int i = 0; i < 400; ++i) {
        const double x = coordinate(random);
        const double y = coordinate(random);
        int found = 0;
        for (const Triangle& triangle : triangles) {
            found += is_in(triangle, x, y);
        }
        ASSERT_EQ(found, model::is_inside(region, x, y) ? 1 : 0) << "seed " << seed << " at " << x << ", " << y;
    }
}

TEST(Triangulation, Holes_Touching_Corners_And_Shared_Edges) {
    const Contour square = {{0, 0, 0}, {30, 0, 0}, {30, 30, 0}, {0, 30, 0}};
    const Contour hole = {{10, 10, 0}, {10, 20, 0}, {20, 20, 0}, {20, 10, 0}};
    const Contour island = {{13, 13, 0}, {17, 13, 0}, {15, 17, 0}};
    EXPECT_DOUBLE_EQ(area(triangles_of(VT_Contour_Set({square, hole, island}))), 900 - 100 + 8);
    expect_partition({square, hole, island}, -2, 32, 1);

    EXPECT_TRUE(triangles_of(VT_Contour_Set({square, square})).empty()) << "twice around is outside";
    EXPECT_TRUE(triangles_of(VT_Contour_Set({{{0, 0, 0}, {5, 5, 0}, {9, 9, 0}}})).empty());
    EXPECT_TRUE(triangles_of(VT_Contour_Set({{{0, 0, 0}, {5, 5, 0}}})).empty());
    // Corner to corner, corner on an edge, and two rectangles with a part of an edge in common.
    const Contour at_corner = {{0, 0, 0}, {-10, 0, 0}, {0, -10, 0}};
    const Contour at_edge = {{30, 15, 0}, {40, 10, 0}, {40, 20, 0}};
    const Contour beside = {{0, 5, 0}, {0, 12, 0}, {-8, 12, 0}, {-8, 5, 0}};
    EXPECT_DOUBLE_EQ(area(triangles_of(VT_Contour_Set({square, at_corner, at_edge, beside}))), 900 + 50 + 50 + 56);
    expect_partition({square, at_corner, at_edge, beside}, -12, 42, 2);
}

TEST(Triangulation, Crossing_Contours_Follow_The_Even_Odd_Rule) {
    const Contour bow_tie = {{0, 0, 0}, {10, 10, 0}, {10, 0, 0}, {0, 10, 0}};
    EXPECT_DOUBLE_EQ(area(triangles_of(VT_Contour_Set({bow_tie}))), 50);
    const Contour star = {{0, 10, 0}, {-6, -8, 0}, {9, 3, 0}, {-9, 3, 0}, {6, -8, 0}};
    expect_partition({star}, -10, 10, 3);
}

// Around the origin, so jagged that a line through the middle meets about every third edge. No two edges cross.
Contour jagged_outline(std::size_t corners, double smallest, double largest, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> radius(smallest, largest);
    Contour contour;
    for (std::size_t i = 0; i < corners; ++i) {
        const double angle = 2 * 3.14159265358979 * static_cast<double>(i) / static_cast<double>(corners);
        const double r = radius(random);
        contour.push_back({static_cast<float>(r * std::cos(angle)), static_cast<float>(r * std::sin(angle)), 0});
    }
    return contour;
}

TEST(Triangulation, Jagged_Outlines_With_Holes_And_Islands) {
    const Contour coast = jagged_outline(1500, 400, 1000, 1);
    expect_partition({coast, jagged_outline(700, 150, 390, 2), jagged_outline(300, 10, 140, 3)}, -1000, 1000, 4);
    // The same moved a little against itself, so that almost every edge is crossed near its ends.
    std::vector<Contour> twice = {coast, coast};
    for (VT_Point& point : twice[1]) {
        point.x += 0.25F;
    }
    expect_partition(twice, -1000, 1000, 5);
    // Corners are those of the contours, however far from whole numbers.
    for (const Triangle& triangle : triangles_of(VT_Contour_Set({coast}))) {
        for (const VT_Point& corner : triangle.corners) {
            EXPECT_TRUE(std::ranges::any_of(coast, [&](const VT_Point& p) { return p.x == corner.x && p.y == corner.y; }));
        }
    }
}

TEST(Triangulation, A_Border_That_Only_One_Side_Divides_Is_None) {
    constexpr int parts = 200;
    const Contour whole = {{0, 0, 0}, {7, 0, 0}, {7, parts, 0}, {0, parts, 0}};
    Contour divided = {{15, 0, 0}, {15, parts, 0}};
    for (int y = parts; y >= 0; --y) {
        divided.push_back({7, static_cast<float>(y), 0});
    }
    const std::vector<Triangle> triangles = triangles_of(VT_Contour_Set({whole, divided}));
    EXPECT_DOUBLE_EQ(area(triangles), 15 * parts);
}

// Crossings that coincide, and those that single precision cannot keep apart: nothing may be missing, whatever they round to.
TEST(Triangulation, Crossings_Anywhere) {
    for (unsigned seed = 0; seed < 250; ++seed) {
        std::mt19937 random(seed);
        const auto any = [&random](unsigned below) { return static_cast<float>(random() % below); };
        const auto coordinate = [&]() -> float {
            switch (seed % 4) {
            case 0:
                return any(33) / 3;
            case 3: // many corners, edges and crossings in the same places
                return any(9);
            case 1:
                return std::round(any(100) / 9) + (random() % 4 == 0 ? any(100) * 1e-6F : 0);
            default: // from tiny to huge, with more binary places between them than a double has
                return std::ldexp(1 + any(4096) / 4096, static_cast<int>(random() % 60) - 30);
            }
        };
        std::vector<Contour> contours(1 + seed % 3);
        for (Contour& contour : contours) {
            for (unsigned i = 0; i < 4 + seed % 21; ++i) {
                const float x = coordinate();
                contour.push_back({x, coordinate(), 0});
            }
        }
        const double reach = seed % 4 == 2 ? 1e9 : 12;
        expect_partition(contours, 0, reach, seed);
    }
    // Almost level: the rounded crossing lies before the low end of the one and is the low end of the other.
    const float above = std::nextafter(4.0F, 8.0F);
    const Contour level = {{100, 4, 0}, {0, above, 0}, {0, 9, 0}, {100, 9, 0}};
    const Contour steep = {{50, 4, 0}, {60, 4, 0}, {61, 9, 0}, {51, 9, 0}};
    expect_partition({level, steep}, -1, 101, 1);
    expect_partition({level, steep}, 3, 10, 1);
}

TEST(Triangulation, Time_Does_Not_Grow_With_The_Square_Of_The_Corners) {
    const auto seconds = [](const Contour& contour) {
        std::clock_t best = std::numeric_limits<std::clock_t>::max();
        for (int i = 0; i < 3; ++i) {
            const std::clock_t start = std::clock();
            EXPECT_EQ(triangles_of(VT_Contour_Set({contour})).size(), contour.size() - 2);
            best = std::min(best, std::clock() - start);
        }
        return static_cast<double>(best) / CLOCKS_PER_SEC;
    };
    // Eight times the corners: 64 times the time if it grew so.
    EXPECT_LT(seconds(jagged_outline(80000, 10, 1000, 1)), 32 * seconds(jagged_outline(10000, 10, 1000, 1)));
}

// Beside a line through the origin between far ends lies a point so near to it that all differences of coordinates round it away.
TEST(Exact_Turn, Sees_Points_That_Rounding_Hides) {
    struct Point {
        double x, y;
    };
    for (int exponent = 0; exponent < 100; ++exponent) {
        const double far = std::ldexp(1.0, exponent);
        const Point from{far, -3 * far};
        const Point to{-far, 3 * far};
        for (int x = -3; x <= 3; ++x) {
            for (int y = -9; y <= 9; ++y) {
                const Point near{std::ldexp(x, -40), std::ldexp(y, -40)};
                const int expected = 3 * x + y < 0 ? 1 : 3 * x + y > 0 ? -1 : 0;
                ASSERT_EQ(vorna::turn(from, to, near), expected) << exponent << ", " << x << ", " << y;
                ASSERT_EQ(vorna::turn(to, near, from), expected) << exponent << ", " << x << ", " << y;
                ASSERT_EQ(vorna::turn(near, to, from), -expected) << exponent << ", " << x << ", " << y;
            }
        }
    }
}

TEST(Triangulation, Sees_The_Contours_Along_The_Given_Direction) {
    VT_Contour_Set standing({{{7, 0, 0}, {7, 4, 0}, {7, 4, 3}, {7, 0, 3}}});
    EXPECT_TRUE(triangles_of(standing).empty()) << "edge on";
    standing.force_projection({1, 0, 0});
    double sum = 0;
    for (const Triangle& triangle : triangles_of(standing)) {
        const VT_Point* p = triangle.corners;
        sum += ((p[1].y - p[0].y) * (p[2].z - p[0].z) - (p[1].z - p[0].z) * (p[2].y - p[0].y)) / 2;
        EXPECT_EQ(p[0].x, 7);
    }
    EXPECT_DOUBLE_EQ(sum, 12);
}

} // namespace

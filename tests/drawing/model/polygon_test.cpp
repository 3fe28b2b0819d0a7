// Polygons of any shape, on their own and in model files.
#include <cmath>
#include <ctime>
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/model/model_reader.h"
#include "drawing/model/polygon.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing::model {
namespace {

std::vector<std::uint32_t> triangles_of(const std::vector<VT_Vector>& places) {
    std::vector<std::uint32_t> corners(places.size());
    std::iota(corners.begin(), corners.end(), 0U);
    Mesh mesh;
    Load_Limits limits;
    append_polygon(mesh, corners, places, "m", limits);
    return mesh.triangles;
}

// The sum of the triangles' sizes, and of their parts along the normal: equal when none is turned over or overlaps.
std::pair<double, double> areas_of(const std::vector<VT_Vector>& places, const std::vector<std::uint32_t>& triangles,
                                   const VT_Vector& normal) {
    std::pair<double, double> areas;
    for (std::size_t i = 0; i < triangles.size(); i += 3) {
        const VT_Vector &a = places[triangles[i]], &b = places[triangles[i + 1]], &c = places[triangles[i + 2]];
        const VT_Vector twice = cross(b - a, c - a);
        areas.first += length(twice) / 2;
        areas.second += dot(twice, normal) / 2;
    }
    return areas;
}

TEST(Polygons, concave_ones_are_covered_once_however_they_stand) {
    // A letter U, a star of twelve corners, and an arrow whose first corner sees the least.
    std::vector<std::vector<VT_Vector>> shapes{
        {{0, 0, 0}, {6, 0, 0}, {6, 5, 0}, {4, 5, 0}, {4, 2, 0}, {2, 2, 0}, {2, 5, 0}, {0, 5, 0}},
        {{4, 2, 0}, {0, 4, 0}, {1, 2, 0}, {0, 0, 0}}};
    auto& star = shapes.emplace_back();
    for (int i = 0; i < 12; ++i) {
        const double angle = 0.5235987755982988 * i, size = i % 2 ? 1 : 4;
        star.push_back({static_cast<float>(size * std::cos(angle)), static_cast<float>(size * std::sin(angle)), 0});
    }
    const double expected[] = {24, 6, 12 * 0.5 * 4 * std::sin(0.5235987755982988)};
    for (std::size_t shape = 0; shape < shapes.size(); ++shape) {
        for (int side = 0; side < 6; ++side) {
            const auto turned = [&](const VT_Vector& p) -> VT_Vector {
                const float y = side < 3 ? p.y : -p.y; // mirrored: the other way round
                return side % 3 == 0 ? VT_Vector{p.x, y, p.x} : side % 3 == 1 ? VT_Vector{p.x / 8, p.x, y} : VT_Vector{y, 3, p.x};
            };
            std::vector<VT_Vector> places = shapes[shape];
            std::ranges::transform(places, places.begin(), turned);
            const VT_Vector o = turned({0, 0, 0});
            VT_Vector normal = cross(turned({1, 0, 0}) - o, turned({0, 1, 0}) - o);
            const float stretch = length(normal);
            normal = normal * (1 / stretch);
            const auto triangles = triangles_of(places);
            EXPECT_EQ(triangles.size(), 3 * (places.size() - 2));
            const auto [size, along] = areas_of(places, triangles, normal);
            EXPECT_NEAR(size / stretch, expected[shape], 1e-4) << shape << ", " << side;
            EXPECT_NEAR(along, size, 1e-4) << shape << ", " << side;
        }
    }
}

TEST(Polygons, of_model_files_need_not_be_convex) {
    Load_Limits limits;
    const Mesh obj = read_obj("m.obj", "v 4 2 0\nv 0 4 0\nv 1 2 0\nv 0 0 0\nf 1 2 3 4\n", limits);
    EXPECT_EQ(areas_of(obj.positions, obj.triangles, {0, 0, 1}).first, 6);
}

// Of shapes that make it hard to find ears: a star, a comb, a comb aslant whose teeth all lie in each other's boxes, a spiral,
// and spokes that meet in one place.
TEST(Polygons, of_a_hundred_thousand_corners_are_covered_once_in_little_time) {
    constexpr int half = 50000;
    std::vector<std::vector<VT_Vector>> shapes(5);
    for (int i = 0; i < half; ++i) {
        const auto at = static_cast<float>(i);
        const double angle = 6.283185307179586 * i / half, turn = 400 * angle, r = 1 + i / 100.0;
        const auto around = [](double size, double where) {
            return VT_Vector{static_cast<float>(size * std::cos(where)), static_cast<float>(size * std::sin(where)), 0};
        };
        shapes[0].insert(shapes[0].end(), {around(1, angle), around(0.5, angle + 3.14159 / half)});
        shapes[1].insert(shapes[1].end(), {{at, 0, 0}, {at + 0.5F, 1000, 0}});
        shapes[2].insert(shapes[2].end(), {{at, at, 0}, {at + 30000.5F, at - 30000, 0}});
        shapes[3].push_back(around(r, turn));
        shapes[4].insert(shapes[4].end(), {{0, 0, 0}, around(1, angle), around(1, angle + 3.14159 / half)});
    }
    shapes[1].insert(shapes[1].end(), {{half, 0, 0}, {half, -10, 0}, {0, -10, 0}});
    shapes[2].insert(shapes[2].end(), {{half, half, 0}, {half - 10, half + 10, 0}, {-10, 10, 0}});
    for (int i = half; i-- > 0;) {
        const VT_Vector& p = shapes[3][static_cast<std::size_t>(i)];
        const float wide = 1 + 0.3F / std::hypot(p.x, p.y);
        shapes[3].push_back({p.x * wide, p.y * wide, 0});
    }
    for (std::size_t shape = 0; shape < shapes.size(); ++shape) {
        const std::vector<VT_Vector>& places = shapes[shape];
        double twice = 0;
        for (std::size_t i = 0; i < places.size(); ++i) {
            const VT_Vector &a = places[i], &b = places[(i + 1) % places.size()];
            twice += double{a.x} * b.y - double{b.x} * a.y;
        }
        const std::clock_t start = std::clock();
        const auto triangles = triangles_of(places);
        EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 2) << shape;
        EXPECT_EQ(triangles.size(), 3 * (places.size() - 2));
        const auto [size, along] = areas_of(places, triangles, {0, 0, 1});
        EXPECT_NEAR(size, std::abs(twice) / 2, std::abs(twice) * 1e-3) << shape;
        EXPECT_NEAR(std::abs(along), size, size * 1e-3) << shape;
    }
}

TEST(Polygons, that_cross_themselves_or_have_no_extent_still_give_all_their_triangles) {
    EXPECT_EQ(triangles_of({{0, 0, 0}, {2, 2, 0}, {2, 0, 0}, {0, 2, 0}, {-1, 1, 0}}).size(), 9U);
    EXPECT_EQ(triangles_of({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}}).size(), 6U);
    EXPECT_EQ(triangles_of({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {1, 0, 0}}).size(), 6U);
}

} // namespace
} // namespace vorna::drawing::model

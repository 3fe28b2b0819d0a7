// Polygons of any shape, on their own and in model files.
#include <cmath>
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/scene/model_reader.h"
#include "app/scene/polygon.h"
#include "app/scene/vectors.h"

namespace app::scene {
namespace {

std::vector<std::uint32_t> triangles_of(const std::vector<VT_Vector>& places) {
    std::vector<std::uint32_t> corners(places.size());
    std::iota(corners.begin(), corners.end(), 0U);
    Mesh mesh;
    append_polygon(mesh, corners, places);
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
    const Mesh obj = read_obj("m.obj", "v 4 2 0\nv 0 4 0\nv 1 2 0\nv 0 0 0\nf 1 2 3 4\n");
    EXPECT_EQ(areas_of(obj.positions, obj.triangles, {0, 0, 1}).first, 6);
}

TEST(Polygons, that_cross_themselves_or_have_no_extent_still_give_all_their_triangles) {
    EXPECT_EQ(triangles_of({{0, 0, 0}, {2, 2, 0}, {2, 0, 0}, {0, 2, 0}, {-1, 1, 0}}).size(), 9U);
    EXPECT_EQ(triangles_of({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}}).size(), 6U);
    EXPECT_EQ(triangles_of({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {1, 0, 0}}).size(), 6U);
}

} // namespace
} // namespace app::scene

// Normals of models that give none: which faces are shaded as one surface.
#include <cmath>
#include <numbers>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/model/model_reader.h"
#include "drawing/model/normals.h"
#include "drawing/model/vectors.h"
#include "tests/support/meshes.h"

namespace vorna::drawing::model {
namespace {

Mesh read(const std::string& obj, std::optional<double> crease = {}) {
    Load_Limits limits;
    Mesh mesh = read_obj("m.obj", obj, limits);
    finish_mesh(mesh, "m", crease);
    return mesh;
}

// The side of a cylinder, of quads. Each quad is cut by a diagonal that the seed chooses. shared: whether corners are vertices
// that neighbours share.
Mesh cylinder(std::uint32_t sides, unsigned seed, bool shared) {
    std::mt19937 random(seed);
    Mesh mesh;
    const auto add_vertex = [&](std::uint32_t side, float height) {
        const double around = 2 * std::numbers::pi * (side % sides) / sides;
        mesh.positions.push_back({static_cast<float>(std::cos(around)), static_cast<float>(std::sin(around)), height});
        return static_cast<std::uint32_t>(mesh.positions.size() - 1);
    };
    for (std::uint32_t side = 0; shared && side < sides; ++side) {
        add_vertex(side, -1);
        add_vertex(side, 1);
    }
    for (std::uint32_t side = 0; side < sides; ++side) {
        const auto corner = [&](std::uint32_t at, int top) {
            return shared ? 2 * (at % sides) + static_cast<std::uint32_t>(top) : add_vertex(at, top == 0 ? -1.0F : 1.0F);
        };
        const std::uint32_t a = corner(side, 0), b = corner(side + 1, 0), c = corner(side + 1, 1), d = corner(side, 1);
        if (random() % 2 == 0) {
            mesh.triangles.insert(mesh.triangles.end(), {a, b, c, a, c, d});
        } else {
            mesh.triangles.insert(mesh.triangles.end(), {a, b, d, b, c, d});
        }
    }
    return mesh;
}

// The largest angle between a corner's normal and the direction from the axis, in degrees.
double farthest_from_round(const Mesh& mesh) {
    double least = 1;
    for (const std::uint32_t vertex : mesh.triangles) {
        const VT_Vector p = mesh.positions[vertex] + narrowed(mesh.center * (1 / mesh.radius)), &n = mesh.normals[vertex];
        least =
            std::min(least, static_cast<double>(dot(n, {p.x, p.y, 0})) / std::sqrt(static_cast<double>(p.x * p.x + p.y * p.y)));
    }
    return std::acos(std::min(least, 1.0)) * 180 / std::numbers::pi;
}

TEST(Normals, surfaces_end_where_faces_bend_by_more_than_the_angle) {
    const std::string cube = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\nf 4 3 2 1\nf 5 6 7 8\n"
                             "f 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";
    for (const auto& [crease, vertices] : {std::pair(std::optional<double>(), 24U), {89.0, 24U}, {90.0, 8U}, {180.0, 8U}}) {
        const Mesh mesh = read(cube, crease);
        EXPECT_EQ(mesh.positions.size(), vertices);
        for (std::size_t t = 0; t < mesh.triangle_count(); ++t) {
            const VT_Vector& normal = mesh.normals[mesh.triangles[3 * t]];
            const float largest = std::max({std::abs(normal.x), std::abs(normal.y), std::abs(normal.z)});
            EXPECT_NEAR(largest, vertices == 24 ? 1 : std::sqrt(1.0 / 3), 1e-4); // as exact as angles are
            EXPECT_GT(dot(normal, mesh.positions[mesh.triangles[3 * t]]), 0);
        }
    }
}

TEST(Normals, of_cylinders_depend_on_neither_diagonals_nor_shared_vertices) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        for (const bool shared : {true, false}) {
            for (const std::uint32_t sides : {12U, 13U, 90U}) { // 30 degrees, just within the default, and less
                Mesh mesh = cylinder(sides, seed, shared);
                finish_mesh(mesh, "m");
                EXPECT_LT(farthest_from_round(mesh), 0.05) << sides;
                EXPECT_EQ(std::set<std::uint32_t>(mesh.triangles.begin(), mesh.triangles.end()).size(),
                          shared ? 2 * sides : mesh.positions.size());
            }
            Mesh edgy = cylinder(11, seed, shared);
            finish_mesh(edgy, "m");
            EXPECT_NEAR(farthest_from_round(edgy), 180.0 / 11, 0.05);
            finish_mesh(edgy = cylinder(90, seed, shared), "m", 0);
            EXPECT_NEAR(farthest_from_round(edgy), 2, 0.05);
        }
    }
}

// A file in which all faces have one number says nothing of edges.
TEST(Normals, smoothing_groups_go_before_the_default_angle_and_behind_a_given_one) {
    const auto roof = [](const char* first, const char* second, double bend) {
        std::ostringstream text;
        const double angle = bend * std::numbers::pi / 180;
        text << "v 0 0 0\nv 0 1 0\nv 1 0 0\nv 1 1 0\nv " << -std::cos(angle) << " 0 " << -std::sin(angle) << "\nv "
             << -std::cos(angle) << " 1 " << -std::sin(angle) << "\nv 5 5 0\nv 6 5 0\nv 5 6 0\n"
             << first << "f 1 3 4 2\n"
             << second << "f 5 1 2 6\ns 7\nf 7 8 9\n";
        return text.str();
    };
    const struct {
        const char *first, *second;
        double bend;
        std::optional<double> crease;
        bool smooth;
    } cases[] = {{"s 1\n", "", 60, {}, true},      {"s 1\n", "s 2\n", 5, {}, false}, {"s off\n", "", 5, {}, false},
                 {"s 0\n", "", 5, {}, false},      {"s 7\n", "", 60, {}, false},     {"s 7\n", "", 20, {}, true},
                 {"", "", 60, {}, false},          {"", "", 20, {}, true},           {"s 1\n", "", 60, 30, false},
                 {"s 1\n", "s 2\n", 60, 180, true}};
    for (const auto& [first, second, bend, crease, smooth] : cases) {
        EXPECT_EQ(read(roof(first, second, bend), crease).positions.size(), smooth ? 9U : 11U) << first << second << bend;
    }
}

TEST(Normals, of_the_file_win) {
    const Mesh mesh = read("v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 1\nvn 0 3 4\nf 1//1 2//1 3\nf 3 2 4\n");
    std::size_t given = 0;
    for (std::size_t v = 0; v < mesh.positions.size(); ++v) {
        given += std::abs(mesh.normals[v].y - 0.6F) < 1e-6F && std::abs(mesh.normals[v].z - 0.8F) < 1e-6F;
    }
    EXPECT_EQ(given, 2U);
}

// Where very many faces meet, the work must stay in proportion to them and the result near to the exact one.
TEST(Normals, of_a_tip_of_many_faces_are_nearly_exact) {
    constexpr std::uint32_t sides = 200000;
    for (const double height : {0.1, 1.0}) {
        Mesh mesh;
        mesh.positions.push_back({0, 0, static_cast<float>(height)});
        for (std::uint32_t i = 0; i < sides; ++i) {
            const double around = 2 * std::numbers::pi * i / sides;
            mesh.positions.push_back({static_cast<float>(std::cos(around)), static_cast<float>(std::sin(around)), 0});
            mesh.triangles.insert(mesh.triangles.end(), {0, 1 + i, 1 + (i + 1) % sides});
        }
        finish_mesh(mesh, "m");
        // A flat cone's tip is round; of a steep one each face is shaded with its neighbours.
        for (std::size_t t = 0; t < mesh.triangle_count(); t += 1000) {
            const VT_Vector &tip = mesh.normals[mesh.triangles[3 * t]], own = face_normal(mesh, t);
            EXPECT_GT(height < 0.5 ? tip.z : dot(tip, own), height < 0.5 ? 0.99F : 0.97F);
        }
    }
}

} // namespace
} // namespace vorna::drawing::model

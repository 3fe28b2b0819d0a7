// Strips, cameras, the clipper and what reaches the renderer.
#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/image/color_name.h"
#include "drawing/model/camera.h"
#include "drawing/model/clipper.h"
#include "drawing/model/facing.h"
#include "drawing/model/scene_renderer.h"
#include "drawing/model/strips.h"
#include "drawing/model/vectors.h"
#include "tests/support/meshes.h"

namespace vorna::drawing::model {
namespace {

using Triple = std::array<std::uint32_t, 3>;

Triple sorted_triple(const std::uint32_t* vertices) {
    Triple triple{vertices[0], vertices[1], vertices[2]};
    std::ranges::sort(triple);
    return triple;
}

// Loose triangles over few vertices: many edges have three sides and more.
Mesh tangle(unsigned seed) {
    std::mt19937 random(seed);
    const auto any_vertex = [&] { return static_cast<std::uint32_t>(random() % 20); };
    Mesh mesh;
    mesh.positions.resize(20);
    while (mesh.triangle_count() < 200) {
        const Triple t{any_vertex(), any_vertex(), any_vertex()};
        if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0]) {
            mesh.triangles.insert(mesh.triangles.end(), t.begin(), t.end());
        }
    }
    return mesh;
}

TEST(Strips, draw_every_triangle_once) {
    for (const Mesh& mesh : {bumpy_grid(1, 1, 0), bumpy_grid(31, 17, 0), ball(24, 12), tangle(4), tangle(5)}) {
        const Strips strips = make_strips(mesh.triangles, static_cast<std::uint32_t>(mesh.positions.size()));
        std::vector<int> drawn(mesh.triangle_count());
        for (std::size_t s = 0; s < strips.count(); ++s) {
            ASSERT_GE(strips.starts[s + 1], strips.starts[s] + 3);
            for (std::size_t place = strips.starts[s]; place < strips.starts[s + 1]; ++place) {
                const std::uint32_t triangle = strips.triangle_order[place];
                ASSERT_EQ(triangle == no_triangle, place + 2 >= strips.starts[s + 1]);
                if (triangle != no_triangle) {
                    ++drawn[triangle];
                    EXPECT_EQ(sorted_triple(&strips.vertices[place]), sorted_triple(&mesh.triangles[3 * triangle]));
                }
            }
        }
        EXPECT_THAT(drawn, testing::Each(1));
    }
    EXPECT_LE(make_strips(bumpy_grid(64, 64, 0).triangles, 65 * 65).count(), 128U);
}

TEST(Camera, fits_tightly_from_every_side) {
    std::mt19937 random(6);
    std::vector<VT_Vector> points;
    for (int i = 0; i < 300; ++i) {
        const auto coordinate = [&] { return static_cast<float>(random() % 2001) / 1000.0F - 1.0F; };
        points.push_back({coordinate() * 0.9F, coordinate() * 0.3F + 0.1F, coordinate() * 0.5F});
    }
    for (const View view : {View::front, View::back, View::left, View::right, View::top, View::bottom, View::iso}) {
        for (const Projection projection : {Projection::perspective, Projection::orthographic}) {
            for (const Up_Axis up : {Up_Axis::y, Up_Axis::z}) {
                for (const double aspect : {0.4, 1.0, 3.0}) {
                    const Camera camera = fit_camera({view, up, projection, aspect, 1}, points);
                    double left = 1, right = -1, bottom = 1, top = -1, nearest = 1, farthest = 0;
                    for (const VT_Vector& point : points) {
                        const Clip_Point p = transformed(camera.clip_from_model, point);
                        ASSERT_GT(p.w, 0);
                        left = std::min(left, p.x / p.w);
                        right = std::max(right, p.x / p.w);
                        bottom = std::min(bottom, p.y / p.w);
                        top = std::max(top, p.y / p.w);
                        nearest = std::min(nearest, p.z / p.w);
                        farthest = std::max(farthest, p.z / p.w);
                    }
                    EXPECT_NEAR(std::max(right, top), 0.94, 1e-6);
                    EXPECT_NEAR(right > top ? left : bottom, -0.94, 1e-6);
                    EXPECT_GE(std::min(left, bottom), -0.9400001);
                    EXPECT_GE(nearest, 0);
                    EXPECT_LE(nearest, 1e-3);
                    EXPECT_LE(farthest, 1);
                    EXPECT_GE(farthest, 1 - 1e-3);
                }
            }
        }
    }
}

// Where the tips of the three axes appear: to the right, above, nearer than the origin.
TEST(Camera, views_are_named_by_the_side_they_show_and_never_mirrored) {
    std::vector<VT_Vector> points{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}, {-1, -1, -1}, {1, 1, 1}};
    const struct {
        View view;
        Up_Axis up;
        std::size_t right, above, nearer;
        bool right_positive, above_positive, nearer_positive;
    } cases[] = {
        {View::front, Up_Axis::y, 0, 1, 2, true, true, true},         {View::back, Up_Axis::y, 0, 1, 2, false, true, false},
        {View::right, Up_Axis::y, 2, 1, 0, false, true, true},        {View::left, Up_Axis::y, 2, 1, 0, true, true, false},
        {View::top, Up_Axis::y, 0, 2, 1, true, false, true},          {View::bottom, Up_Axis::y, 0, 2, 1, true, true, false},
        {View::front, Up_Axis::z, 0, 2, 1, true, true, false},        {View::top, Up_Axis::z, 0, 1, 2, true, true, true},
        {View::right, Up_Axis::z, 1, 2, 0, true, true, true},         {View::front, Up_Axis::minus_z, 0, 2, 1, true, false, true},
        {View::front, Up_Axis::minus_y, 0, 1, 2, true, false, false}, {View::front, Up_Axis::x, 1, 0, 2, false, true, true},
        {View::front, Up_Axis::minus_x, 1, 0, 2, true, false, true}};
    for (const auto& expected : cases) {
        const Camera camera = fit_camera({expected.view, expected.up, Projection::orthographic, 1, 1}, points);
        const Clip_Point origin = transformed(camera.clip_from_model, points[3]);
        EXPECT_EQ(transformed(camera.clip_from_model, points[expected.right]).x > origin.x + 0.1, expected.right_positive);
        EXPECT_EQ(transformed(camera.clip_from_model, points[expected.above]).y > origin.y + 0.1, expected.above_positive);
        EXPECT_EQ(transformed(camera.clip_from_model, points[expected.nearer]).z < origin.z - 0.1, expected.nearer_positive);
    }
}

double distance_inside(const Clip_Point& p, int plane) {
    const double distances[] = {p.w + p.x, p.w - p.x, p.w + p.y, p.w - p.y, p.z, p.w - p.z};
    return distances[plane];
}

constexpr std::uint8_t every_plane = 63;

// The part of a triangle in the plane z = 0.5, w = 1 that lies inside, by counting points.
double part_inside(const std::array<Clip_Vertex, 3>& triangle) {
    int inside = 0, all = 0;
    for (int i = 0; i < 60; ++i) {
        for (int k = 0; i + k < 60; ++k, ++all) {
            const double u = (i + 1.0 / 3) / 60, v = (k + 1.0 / 3) / 60;
            const auto mix = [&](double Clip_Point::*m) {
                return triangle[0].point.*m * (1 - u - v) + triangle[1].point.*m * u + triangle[2].point.*m * v;
            };
            inside += std::max(std::abs(mix(&Clip_Point::x)), std::abs(mix(&Clip_Point::y))) < 1;
        }
    }
    return static_cast<double>(inside) / all;
}

template <class Vertices> double area(const Vertices& vertices, std::size_t count) {
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Clip_Point &a = vertices[i].point, &b = vertices[(i + 1) % count].point;
        sum += (a.x / a.w * b.y / b.w - a.y / a.w * b.x / b.w) / 2;
    }
    return std::abs(sum);
}

TEST(Clipper, keeps_exactly_what_lies_inside_the_view_volume) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-2.5, 2.5), weight(-0.5, 2.0);
    for (int round = 0; round < 2000; ++round) {
        std::array<Clip_Vertex, 3> triangle;
        for (Clip_Vertex& vertex : triangle) {
            const bool is_level = round % 4 == 0;
            vertex.point = {coordinate(random), coordinate(random), is_level ? 0.5 : coordinate(random),
                            is_level ? 1 : weight(random)};
        }
        const Clip_Polygon polygon = clip_triangle(triangle, every_plane);
        for (std::size_t i = 0; i < polygon.count; ++i) {
            for (int plane = 0; plane < 6; ++plane) {
                ASSERT_GE(distance_inside(polygon.vertices[i].point, plane), -1e-9);
            }
        }
        if (round % 4 == 0) {
            const double whole = area(triangle, 3);
            ASSERT_NEAR(area(polygon.vertices, polygon.count), part_inside(triangle) * whole, 0.05 * whole + 1e-9) << round;
        }
    }
}

// What a renderer is given instead of drawing it.
struct Recorded {
    std::size_t triangles = 0;
    std::vector<VT_DCI_Point> points;
    std::vector<VT_RGB32> colors;
};

Recorded* recorded = nullptr; // where the slots below write

void record_gouraud(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                    const VT_RGB32* colors) {
    recorded->triangles += static_cast<std::size_t>(count - 2);
    recorded->points.insert(recorded->points.end(), points, points + count);
    recorded->colors.insert(recorded->colors.end(), colors, colors + count);
}

void record_colorized(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                      const VT_RGB32* colors, bool single) {
    recorded->triangles += static_cast<std::size_t>(count - 2);
    recorded->points.insert(recorded->points.end(), points, points + count);
    recorded->colors.insert(recorded->colors.end(), colors, colors + (single ? 1 : count - 2));
}

class Recording : public testing::Test {
protected:
    Recording() {
        renderer_->actions.draw_dci_gouraud_polytriangle = {renderer_.get(), record_gouraud, 0, 1};
        renderer_->actions.draw_dci_colorized_polytriangle = {renderer_.get(), record_colorized, 0, 1};
    }

    Recorded draw(Mesh mesh, const Camera_Settings& camera_settings, const Model_Look& settings) {
        Recorded result;
        recorded = &result;
        finish_mesh(mesh, "m");
        Scene_Renderer scene(mesh, Facing(mesh), {200, 200, 200, 255}, true);
        scene.prepare(Tile_Grid(window_), fit_camera(camera_settings, scene.points()), settings);
        scene.draw(*renderer_, *rendition_, 0);
        return result;
    }

    VT_Reference<VT_Renderer_Data> renderer_{new VT_Renderer_Data};
    VT_Reference<VT_Rendition> rendition_{new VT_Rendition};
    VT_Int_Rectangle window_{10, 409, -20, 279};
};

// Without its last triangle.
Mesh opened(Mesh mesh) {
    mesh.triangles.resize(mesh.triangles.size() - 3);
    return mesh;
}

Mesh turned_inside_out(Mesh mesh) {
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        std::swap(mesh.triangles[i], mesh.triangles[i + 1]);
    }
    return mesh;
}

// Each triangle with vertices of its own.
Mesh parted(const Mesh& mesh) {
    Mesh result;
    for (const std::uint32_t vertex : mesh.triangles) {
        result.triangles.push_back(static_cast<std::uint32_t>(result.positions.size()));
        result.positions.push_back(mesh.positions[vertex]);
    }
    return result;
}

Mesh scaled(Mesh mesh, float factor) {
    std::ranges::transform(mesh.positions, mesh.positions.begin(), [=](const VT_Vector& p) { return p * factor; });
    return mesh;
}

// Beside each other.
Mesh pair_of(const Mesh& left, Mesh right) {
    for (VT_Vector& position : right.positions) {
        position.x += 5;
    }
    return joined_mesh({left, std::move(right)}, {"left", "right"}, false);
}

// A prism around an axis, without its ends unless it is closed. Its sides' triangles begin with sides around the axis.
Mesh prism(std::size_t axis, bool closed, float moved = 0) {
    constexpr std::uint32_t n = 4;
    Mesh mesh;
    for (std::uint32_t v = 0; v < 2 * n; ++v) {
        const std::array<float, 3> place{v % n % 3 == 0 ? 0.0F : 1.0F, v % n < 2 ? 0.0F : 1.0F, (v < n ? 0.0F : 1.0F) + moved};
        mesh.positions.push_back({place[(2 + 3 - axis) % 3], place[(3 + 3 - axis) % 3], place[(4 + 3 - axis) % 3]});
    }
    for (std::uint32_t v = 0; v < n; ++v) {
        const std::uint32_t next = (v + 1) % n;
        mesh.triangles.insert(mesh.triangles.end(), {v, next, next + n, next + n, v + n, v});
    }
    if (closed) {
        mesh.triangles.insert(mesh.triangles.end(), {0, 2, 1, 0, 3, 2, n, n + 1, n + 2, n, n + 2, n + 3});
    }
    return mesh;
}

TEST(Facing, closed_bodies_hide_backs_and_nothing_else_does) {
    const Mesh body = ball(16, 8);
    Mesh one_turned = body;
    std::swap(one_turned.triangles[0], one_turned.triangles[1]);
    Mesh inward_normals = body;
    for (const VT_Vector& position : body.positions) {
        inward_normals.normals.push_back({-position.x, -position.y, -position.z});
    }
    const struct {
        const char* what;
        Mesh mesh;
        bool hides;
    } cases[] = {{"a ball", body, true},
                 {"with parted vertices", parted(body), true},
                 {"two balls", pair_of(body, parted(body)), true},
                 {"whose normals are wrong", inward_normals, true},
                 {"with a hole", opened(body), false},
                 {"with a triangle turned over", one_turned, false},
                 {"inside out", turned_inside_out(body), false},
                 {"one of two inside out", pair_of(body, turned_inside_out(body)), false},
                 {"with a hole in one of two", pair_of(opened(body), body), false},
                 {"a large one and a small one inside out", pair_of(turned_inside_out(body), scaled(body, 3)), false},
                 {"a prism", prism(2, true), true},
                 // Seen from the middle of both, the sides of each that are near have the volume of the other sign.
                 {"two prisms", joined_mesh({prism(2, true), prism(2, true, 9)}, {"a", "b"}, false), true},
                 {"a tube along x", prism(0, false), false},
                 {"a tube along y", prism(1, false), false},
                 {"a tube along z", prism(2, false), false}};
    for (auto [what, mesh, hides] : cases) {
        finish_mesh(mesh, "m");
        const Facing facing(mesh);
        EXPECT_EQ(facing.hides_backs(), hides) << what;
        if (hides) {
            EXPECT_GT(dot(facing.normals()[0], winding_normal(mesh, 0)), 0.99F) << what;
        }
    }
}

TEST_F(Recording, a_fitted_model_arrives_whole_and_fills_the_window) {
    const Camera_Settings camera{View::iso, Up_Axis::y, Projection::perspective, 4.0 / 3, 1};
    for (const Shading shading : {Shading::flat, Shading::gouraud}) {
        const Mesh mesh = opened(ball(32, 16));
        const Recorded result = draw(mesh, camera, {shading, Culling::none, {0, 0, 1}});
        EXPECT_EQ(result.triangles, mesh.triangle_count());
        const auto [low, high] = std::ranges::minmax(result.points, {}, &VT_DCI_Point::y);
        EXPECT_NEAR(low.y, -20 + 0.03 * 299, 2);
        EXPECT_NEAR(high.y, 279 - 0.03 * 299, 2);
        const auto [near, far] = std::ranges::minmax(result.points, {}, &VT_DCI_Point::z);
        EXPECT_LT(near.z, 200);
        EXPECT_GT(far.z, 65335);
    }
    // Of closed bodies what is seen arrives, from inside all of it.
    const Model_Look look{Shading::gouraud, Culling::none, {0, 0, 1}};
    const Mesh closed = ball(32, 16);
    const std::size_t seen = draw(closed, camera, look).triangles;
    Model_Look culled = look;
    culled.culling = Culling::back;
    EXPECT_EQ(seen, draw(closed, camera, culled).triangles);
    Camera_Settings inside = camera;
    inside.aim = Aim{{0, 0, 0.2}, {0, 0, -1}, {0, 1, 0}};
    EXPECT_GT(draw(closed, inside, look).triangles, 0U);
}

TEST_F(Recording, light_comes_from_where_it_is_said_to_come) {
    const Mesh mesh = ball(32, 16);
    for (const double side : {-1.0, 1.0}) {
        const Recorded result = draw(mesh, {View::front, Up_Axis::y, Projection::orthographic, 1, 1},
                                     {Shading::gouraud, Culling::back, {side, 0, 0.2}});
        EXPECT_EQ(result.triangles, mesh.triangle_count() / 2);
        const auto brightest =
            static_cast<std::size_t>(std::ranges::max_element(result.colors, {}, &VT_RGB32::green) - result.colors.begin());
        EXPECT_EQ(result.points[brightest].x > 210, side > 0);
        EXPECT_THAT(result.colors, testing::Each(testing::Field(&VT_RGB32::alpha, 255)));
    }
}

TEST(Color_Name, reads_hexadecimal_forms_and_names) {
    EXPECT_EQ(color_named("#12ABef"), (VT_RGB32{0xEF, 0xAB, 0x12, 255}));
    EXPECT_EQ(color_named("#18f"), (VT_RGB32{0xFF, 0x88, 0x11, 255}));
    EXPECT_EQ(color_named("orange"), (VT_RGB32{0, 165, 255, 255}));
    for (const char* wrong : {"", "#", "#12", "#12345", "#1234567", "#12345g", "#-12345", "#+1234", "puce"}) {
        EXPECT_FALSE(color_named(wrong)) << wrong;
    }
}

} // namespace
} // namespace vorna::drawing::model

// Strips, cameras, the clipper and what reaches the renderer.
#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/scene/camera.h"
#include "app/scene/clipper.h"
#include "app/scene/color_name.h"
#include "app/scene/scene_renderer.h"
#include "app/scene/strips.h"
#include "tests/scene/meshes.h"

namespace app::scene {
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
}

TEST(Strips, are_long_on_regular_meshes) {
    const Mesh mesh = bumpy_grid(64, 64, 0);
    EXPECT_LE(make_strips(mesh.triangles, static_cast<std::uint32_t>(mesh.positions.size())).count(), 128U);
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
    } cases[] = {{View::front, Up_Axis::y, 0, 1, 2, true, true, true},  {View::back, Up_Axis::y, 0, 1, 2, false, true, false},
                 {View::right, Up_Axis::y, 2, 1, 0, false, true, true}, {View::left, Up_Axis::y, 2, 1, 0, true, true, false},
                 {View::top, Up_Axis::y, 0, 2, 1, true, false, true},   {View::bottom, Up_Axis::y, 0, 2, 1, true, true, false},
                 {View::front, Up_Axis::z, 0, 2, 1, true, true, false}, {View::top, Up_Axis::z, 0, 1, 2, true, true, true},
                 {View::right, Up_Axis::z, 1, 2, 0, true, true, true}};
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

// A place on a triangle: its first corner + u * first edge + v * second edge.
struct Place {
    double u, v;
};

Place place_of(const std::array<Clip_Vertex, 3>& triangle, const Clip_Point& p) {
    const auto difference = [](const Clip_Point& a, const Clip_Point& b) {
        return Clip_Point{a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w};
    };
    const auto product = [](const Clip_Point& a, const Clip_Point& b) { return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w; };
    const Clip_Point e = difference(triangle[1].point, triangle[0].point), f = difference(triangle[2].point, triangle[0].point),
                     d = difference(p, triangle[0].point);
    const double ee = product(e, e), ef = product(e, f), ff = product(f, f), de = product(d, e), df = product(d, f);
    const double determinant = ee * ff - ef * ef;
    return {(de * ff - df * ef) / determinant, (df * ee - de * ef) / determinant};
}

// The polygon's least distance to a place, negative outside. Polygons run around in the direction of their triangle.
double depth_within(const std::vector<Place>& polygon, Place p) {
    double least = polygon.size() < 3 ? -1 : 1;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Place a = polygon[i], b = polygon[(i + 1) % polygon.size()];
        const double size = std::hypot(b.u - a.u, b.v - a.v);
        if (size > 1e-9) {
            least = std::min(least, ((b.u - a.u) * (p.v - a.v) - (b.v - a.v) * (p.u - a.u)) / size);
        }
    }
    return least;
}

TEST(Clipper, keeps_exactly_what_lies_inside_the_view_volume) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-2.5, 2.5), weight(-0.5, 2.0), part(0, 1);
    int inside = 0, outside = 0;
    for (int round = 0; round < 2000; ++round) {
        std::array<Clip_Vertex, 3> triangle;
        for (Clip_Vertex& vertex : triangle) {
            vertex.point = {coordinate(random), coordinate(random), coordinate(random), weight(random)};
        }
        const Clip_Polygon polygon = clip_triangle(triangle, every_plane);
        std::vector<Place> places;
        for (std::size_t i = 0; i < polygon.count; ++i) {
            for (int plane = 0; plane < 6; ++plane) {
                ASSERT_GE(distance_inside(polygon.vertices[i].point, plane), -1e-9);
            }
            places.push_back(place_of(triangle, polygon.vertices[i].point));
        }
        for (int sample = 0; sample < 20; ++sample) {
            double u = part(random), v = part(random);
            if (u + v > 1) {
                u = 1 - u;
                v = 1 - v;
            }
            const Clip_Point &a = triangle[0].point, &b = triangle[1].point, &c = triangle[2].point;
            const auto mix = [&](double Clip_Point::*m) { return a.*m + (b.*m - a.*m) * u + (c.*m - a.*m) * v; };
            const Clip_Point p{mix(&Clip_Point::x), mix(&Clip_Point::y), mix(&Clip_Point::z), mix(&Clip_Point::w)};
            double margin = 1;
            for (int plane = 0; plane < 6; ++plane) {
                margin = std::min(margin, distance_inside(p, plane));
            }
            if (std::abs(margin) > 1e-6) {
                EXPECT_EQ(depth_within(places, {u, v}) > 0, margin > 0) << "round " << round;
                ++(margin > 0 ? inside : outside);
            }
        }
    }
    EXPECT_GT(inside, 1000);
    EXPECT_GT(outside, 1000);
}

TEST(Clipper, gives_triangles_on_both_sides_of_an_edge_the_same_points_on_it) {
    std::mt19937 random(8);
    std::uniform_real_distribution<double> coordinate(-2, 2);
    int shared = 0;
    for (int round = 0; round < 500; ++round) {
        const auto vertex = [&] { return Clip_Vertex{{coordinate(random), 0.5 * coordinate(random), 0.5, 1}, {}, 0}; };
        const Clip_Vertex a = vertex(), b = vertex(), c = vertex(), d = vertex();
        const Clip_Polygon one = clip_triangle({a, b, c}, beyond::left), other = clip_triangle({b, a, d}, beyond::left);
        const bool crosses = (a.point.x < -1) != (b.point.x < -1);
        const auto meets = [&](const Clip_Vertex& p) {
            return p.corner < 0 &&
                   std::any_of(other.vertices.begin(), other.vertices.begin() + static_cast<std::ptrdiff_t>(other.count),
                               [&](const Clip_Vertex& q) {
                                   return q.corner < 0 && q.point.x == p.point.x && q.point.y == p.point.y &&
                                          q.point.w == p.point.w;
                               });
        };
        EXPECT_EQ(std::any_of(one.vertices.begin(), one.vertices.begin() + static_cast<std::ptrdiff_t>(one.count), meets),
                  crosses);
        shared += crosses;
    }
    EXPECT_GT(shared, 50);
}

// What a renderer is given instead of drawing it.
struct Recorded {
    std::size_t triangles = 0, flat_calls = 0, gouraud_calls = 0;
    std::vector<VT_DCI_Point> points;
    std::vector<VT_RGB32> colors;
};

Recorded* recorded = nullptr; // where the slots below write

void record_gouraud(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                    const VT_RGB32* colors) {
    ++recorded->gouraud_calls;
    recorded->triangles += static_cast<std::size_t>(count - 2);
    recorded->points.insert(recorded->points.end(), points, points + count);
    recorded->colors.insert(recorded->colors.end(), colors, colors + count);
}

void record_colorized(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                      const VT_RGB32* colors, bool single) {
    ++recorded->flat_calls;
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

    Recorded draw(Mesh mesh, const Camera_Settings& camera_settings, const Picture_Settings& settings) {
        Recorded result;
        recorded = &result;
        finish_mesh(mesh, "m");
        Scene_Renderer scene(mesh, {200, 200, 200, 255}, true);
        scene.draw(*renderer_, *rendition_, window_, fit_camera(camera_settings, scene.points()), settings);
        return result;
    }

    VT_Reference<VT_Renderer_Data> renderer_{new VT_Renderer_Data};
    VT_Reference<VT_Rendition> rendition_{new VT_Rendition};
    VT_Int_Rectangle window_{10, 409, -20, 279};
};

TEST_F(Recording, a_fitted_model_arrives_whole_and_fills_the_window) {
    for (const Shading shading : {Shading::flat, Shading::gouraud}) {
        const Mesh mesh = ball(32, 16);
        const Recorded result =
            draw(mesh, {View::iso, Up_Axis::y, Projection::perspective, 4.0 / 3, 1}, {shading, Culling::none, {0, 0, 1}});
        EXPECT_EQ(result.triangles, mesh.triangle_count());
        EXPECT_EQ(shading == Shading::flat ? result.gouraud_calls : result.flat_calls, 0U);
        const auto [low, high] = std::ranges::minmax(result.points, {}, &VT_DCI_Point::y);
        EXPECT_NEAR(low.y, -20 + 0.03 * 299, 2);
        EXPECT_NEAR(high.y, 279 - 0.03 * 299, 2);
        const auto [near, far] = std::ranges::minmax(result.points, {}, &VT_DCI_Point::z);
        EXPECT_LT(near.z, 200);
        EXPECT_GT(far.z, 65335);
    }
}

TEST_F(Recording, no_point_leaves_the_window_however_much_is_cut_off) {
    for (const double zoom : {1.1, 2.0, 40.0}) {
        for (const Projection projection : {Projection::perspective, Projection::orthographic}) {
            const Recorded result = draw(ball(64, 32), {View::iso, Up_Axis::y, projection, 1, zoom}, {});
            EXPECT_GT(result.triangles, 0U);
            for (const VT_DCI_Point& p : result.points) {
                ASSERT_TRUE(p.x >= 10 && p.x <= 409 && p.y >= -20 && p.y <= 279 && p.z >= 0 && p.z <= 65535);
            }
        }
    }
}

TEST_F(Recording, culling_leaves_out_the_far_side) {
    const Mesh mesh = ball(32, 16);
    const Camera_Settings front{View::front, Up_Axis::y, Projection::orthographic, 1, 1};
    EXPECT_EQ(draw(mesh, front, {Shading::gouraud, Culling::back, {0, 0, 1}}).triangles, mesh.triangle_count() / 2);
}

TEST_F(Recording, open_surfaces_are_lit_alike_from_both_sides) {
    Mesh square;
    square.positions = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    square.triangles = {0, 1, 2, 0, 2, 3};
    for (const Shading shading : {Shading::flat, Shading::gouraud}) {
        const Picture_Settings settings{shading, Culling::none, {-0.5, 0.65, 0.7}};
        const Recorded front = draw(square, {View::front, Up_Axis::y, Projection::perspective, 1, 1}, settings);
        const Recorded back = draw(square, {View::back, Up_Axis::y, Projection::perspective, 1, 1}, settings);
        EXPECT_GT(front.colors[0].red, 100);
        EXPECT_EQ(front.colors[0], back.colors[0]);
    }
}

TEST_F(Recording, light_comes_from_where_it_is_said_to_come) {
    const Mesh mesh = ball(32, 16);
    for (const double side : {-1.0, 1.0}) {
        const Recorded result = draw(mesh, {View::front, Up_Axis::y, Projection::orthographic, 1, 1},
                                     {Shading::gouraud, Culling::back, {side, 0, 0.2}});
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
} // namespace app::scene

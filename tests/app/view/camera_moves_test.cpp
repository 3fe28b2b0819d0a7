// Turning, moving and zooming a camera, without a window.
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "app/view/camera_moves.h"
#include "app/view/coarse_mesh.h"
#include "drawing/model/clipper.h"
#include "drawing/model/vectors.h"
#include "tests/support/meshes.h"

namespace vorna::app::view {
namespace {

using namespace vorna::drawing::model;

constexpr VT_Int_Pair size{640, 480};
constexpr VT_Vector_D vertical{0, 1, 0};

// Where a picture shows a place.
Place shown(const Pose& pose, vorna::drawing::model::Projection projection, const VT_Vector_D& place) {
    vorna::drawing::model::Camera_Settings settings;
    settings.projection = projection;
    settings.aspect = static_cast<double>(size.x) / size.y;
    settings.zoom = pose.zoom;
    settings.aim = pose.aim;
    const std::vector<VT_Vector> points{{-1, -1, -1}, {1, 1, 1}};
    const vorna::drawing::model::Clip_Point p =
        transformed(vorna::drawing::model::fit_camera(settings, points).clip_from_model, vorna::drawing::model::narrowed(place));
    return {(1 + p.x / p.w) * size.x / 2, (1 - p.y / p.w) * size.y / 2};
}

void expect_near(const Place& found, const Place& expected) {
    EXPECT_NEAR(found.x, expected.x, 0.01);
    EXPECT_NEAR(found.y, expected.y, 0.01);
}

TEST(Camera_moves, a_drag_to_the_right_shows_more_of_the_left_and_a_drag_down_more_of_the_top) {
    const Pose front{{{0, 0, 5}, {0, 0, 0}, vertical}, 1};
    const Pose left = turned(front, vertical, -1, 0), above = turned(front, vertical, 0, 1);
    EXPECT_LT(left.aim.eye.x, -1);
    EXPECT_GT(above.aim.eye.y, 1);
}

TEST(Camera_moves, turning_keeps_target_distance_and_horizon_and_never_goes_over_the_top) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> angle(-2, 2);
    Pose pose{{{1, 2, 5}, {0.3, -0.2, 0.1}, vertical}, 2};
    const double distance = length(pose.aim.eye - pose.aim.target);
    for (int i = 0; i < 200; ++i) {
        pose = turned(pose, vertical, angle(random), angle(random));
        const VT_Vector_D toward = pose.aim.eye - pose.aim.target;
        EXPECT_NEAR(length(toward), distance, 1e-9);
        EXPECT_NEAR(dot(cross(pose.aim.up, toward), vertical), 0, 1e-9);
        EXPECT_GE(dot(pose.aim.up, vertical), -1e-9);
    }
    // From right above it still turns.
    const Pose top = turned(pose, vertical, 0, 10), turned_top = turned(top, vertical, 1, 0);
    EXPECT_NEAR(dot(top.aim.up, turned_top.aim.up), std::cos(1), 1e-9);
}

TEST(Camera_moves, what_is_under_the_pointer_follows_it_and_stays_under_it) {
    for (const auto projection :
         {vorna::drawing::model::Projection::perspective, vorna::drawing::model::Projection::orthographic}) {
        const Pose start{{{3, 2, 4}, {0.1, 0.2, -0.1}, vertical}, 1.5};
        const VT_Vector_D place{0.3, -0.2, 0.4};
        VT_Vector_D toward = start.aim.eye - start.aim.target;
        toward.normalize();
        const Pose pose = focused(start, projection, dot(toward, start.aim.eye - place));
        const Place before = shown(start, projection, place);
        expect_near(shown(pose, projection, place), before);
        expect_near(shown(moved(pose, size, {30, -20}), projection, place), {before.x + 30, before.y - 20});
        for (const double factor : {0.5, 3.0, 100.0}) {
            const Pose larger = zoomed(pose, size, factor, before);
            expect_near(shown(larger, projection, place), before);
            EXPECT_NEAR(larger.zoom, pose.zoom * factor, 1e-9);
        }
        EXPECT_EQ(zoomed(pose, size, 1e9, before).zoom, largest_zoom);
    }
}

TEST(Coarse_mesh, lies_where_the_mesh_lies_with_about_as_many_triangles_as_wanted) {
    vorna::drawing::model::Mesh mesh = vorna::drawing::model::ball(200, 150);
    vorna::drawing::model::finish_mesh(mesh, "ball");
    const vorna::drawing::model::Mesh coarse = coarse_mesh(mesh, 4000);
    EXPECT_GT(coarse.triangle_count(), 2000U);
    EXPECT_LT(coarse.triangle_count(), 8000U);
    ASSERT_EQ(coarse.normals.size(), coarse.positions.size());
    const float radius = length(mesh.positions.front());
    for (std::size_t v = 0; v < coarse.positions.size(); ++v) {
        EXPECT_NEAR(length(coarse.positions[v]), radius, 0.05);
        EXPECT_GT(dot(coarse.positions[v], coarse.normals[v]), 0.9 * radius);
    }
}

} // namespace
} // namespace vorna::app::view

// What the studio look is made of: patches of surfaces, and means of light.
#include <cmath>
#include <set>

#include <gtest/gtest.h>

#include "drawing/image/pixel_finish.h"
#include "drawing/model/clipper.h"
#include "drawing/model/patches.h"
#include "drawing/model/studio_view.h"
#include "drawing/model/vectors.h"
#include "tests/support/meshes.h"

namespace vorna::drawing::model {
namespace {

std::size_t patch_count(Mesh mesh) {
    finish_mesh(mesh, "m");
    const std::vector<std::uint32_t> patches = patches_of(mesh);
    return std::set(patches.begin(), patches.end()).size();
}

// A strip of quads with its own vertices for each quad, each bent against the one before by an angle of this sine and cosine.
Mesh bent_strip(int quads, float sine, float cosine) {
    Mesh mesh;
    float x = 0, z = 0, along = 1, up = 0;
    for (int q = 0; q < quads; ++q) {
        const auto first = static_cast<std::uint32_t>(mesh.positions.size());
        const float next_x = x + along, next_z = z + up;
        mesh.positions.insert(mesh.positions.end(), {{x, 0, z}, {next_x, 0, next_z}, {next_x, 1, next_z}, {x, 1, z}});
        mesh.normals.insert(mesh.normals.end(), 4, VT_Vector{-up, 0, along});
        mesh.triangles.insert(mesh.triangles.end(), {first, first + 1, first + 2, first, first + 2, first + 3});
        x = next_x;
        z = next_z;
        const float turned = along * cosine - up * sine;
        up = along * sine + up * cosine;
        along = turned;
    }
    return mesh;
}

TEST(Patches, end_at_sharp_edges_only) {
    EXPECT_EQ(patch_count(ball(24, 12)), 1U);
    EXPECT_EQ(patch_count(bent_strip(6, 0.6F, 0.8F)), 6U);   // 37 degrees
    EXPECT_EQ(patch_count(bent_strip(6, 0.28F, 0.96F)), 1U); // 16 degrees
    Mesh two = ball(24, 12), other = ball(24, 12);
    const auto first = static_cast<std::uint32_t>(two.positions.size());
    for (const VT_Vector& p : other.positions) {
        two.positions.push_back({p.x + 3, p.y, p.z});
    }
    for (const std::uint32_t vertex : other.triangles) {
        two.triangles.push_back(vertex + first);
    }
    EXPECT_EQ(patch_count(two), 2U);
}

TEST(Studio_Faces, have_the_slopes_and_sizes_that_the_depth_buffer_has) {
    Mesh mesh = bumpy_grid(9, 7, 5);
    finish_mesh(mesh, "m");
    const Studio_Faces faces(mesh, Facing(mesh));
    const VT_Int_Rectangle frame{0, 800, 0, 600};
    for (const Projection projection : {Projection::perspective, Projection::orthographic}) {
        const Camera camera = fit_camera({.projection = projection, .aspect = 4.0 / 3}, mesh.positions);
        const std::vector<Studio_Face> seen = faces.seen(camera, frame, 1e-6);
        const std::vector<float> sizes = pixels_per_step(camera, frame);
        const auto device = [&](const VT_Vector& place) {
            const Clip_Point p = transformed(camera.clip_from_model, place);
            return VT_Vector_D{(p.x / p.w + 1) * 400, (p.y / p.w + 1) * 300, p.z / p.w * 65535};
        };
        int compared = 0;
        for (std::size_t t = 0; t < mesh.triangle_count(); ++t) {
            const auto corner = [&](std::size_t k) { return mesh.positions[mesh.triangles[3 * t + k]]; };
            const VT_Vector_D a = device(corner(0)), b = device(corner(1)) - a, c = device(corner(2)) - a;
            const double area = b.x * c.y - b.y * c.x;
            const double across = (b.z * c.y - c.z * b.y) / area, up = (c.z * b.x - b.z * c.x) / area;
            const double size = sizes[static_cast<std::size_t>(a.z)];
            if (std::abs(across * size) + std::abs(up * size) < 5) {
                EXPECT_NEAR(seen[t + 1].across * size, across * size, 0.02);
                EXPECT_NEAR(seen[t + 1].up * size, up * size, 0.02);
                ++compared;
            }
            // As far behind the corner as a pixel is wide there.
            const VT_Vector right = corner(0) + narrowed(camera.right * 0.01),
                            behind = corner(0) + narrowed(camera.toward * -0.01);
            EXPECT_NEAR((device(behind).z - a.z) * size, device(right).x - a.x, 0.05);
        }
        EXPECT_GT(compared, 50);
    }
}

TEST(Finish, the_mean_of_light_is_that_of_squares_and_leaves_even_colours_alone) {
    Finish_Settings settings;
    settings.supersample = 2;
    settings.linear = true;
    Pixel_Finish finish(settings);
    std::vector<std::uint8_t> drawn(std::size_t{2} * 4 * 2 * 256, 255), samples(std::size_t{4} * 256);
    for (std::size_t row = 0; row < 2; ++row) {
        for (std::size_t value = 0; value < 256; ++value) {
            std::uint8_t* pixels = &drawn[4 * 512 * row + 8 * value];
            pixels[0] = pixels[4] = static_cast<std::uint8_t>(value);                   // blue
            pixels[1] = static_cast<std::uint8_t>(value), pixels[5] = 0;                // green: half of the light
            pixels[2] = row == 0 ? static_cast<std::uint8_t>(value) : 0, pixels[6] = 0; // red: a quarter
        }
    }
    finish.store_row({drawn.data(), 4 * 512, 512, 2, Buffer_Format::rgb32}, 0, {0, 0}, samples.data());
    for (int value = 0; value < 256; ++value) {
        const std::uint8_t* sample = &samples[static_cast<std::size_t>(4 * value)];
        EXPECT_NEAR(sample[0], value / 2.0, 0.51);
        EXPECT_NEAR(sample[1], value * 0.70710678, 0.51);
        EXPECT_EQ(sample[2], value);
        EXPECT_EQ(sample[3], 255);
    }
}

} // namespace
} // namespace vorna::drawing::model

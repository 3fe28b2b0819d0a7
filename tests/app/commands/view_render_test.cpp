// What lies behind a model, where it is seen from, and how it is cut open.
#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/model/camera.h"
#include "drawing/model/section.h"
#include "drawing/model/vectors.h"
#include "tests/support/meshes.h"
#include "tests/support/rendering.h"

namespace vorna::drawing::model {
namespace {

using testing::HasSubstr;
using Options = std::vector<std::string>;
using Color = std::array<int, 3>;

constexpr Color white{255, 255, 255};

const std::string square = "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n";
const std::string cube = "v -1 -1 -1\nv 1 -1 -1\nv 1 1 -1\nv -1 1 -1\nv -1 -1 1\nv 1 -1 1\nv 1 1 1\nv -1 1 1\n"
                         "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nf 3 4 8 7\nf 1 5 8 4\nf 2 3 7 6\n";

// Columns and rows from the first to the last pixel that is of the color, or that is not.
std::array<int, 2> extent(const Picture& picture, const Color& color, bool is_of_it) {
    const auto width = static_cast<int>(picture.width), height = static_cast<int>(picture.height);
    int left = width, right = -1, top = height, bottom = -1;
    for (int i = 0; i < width * height; ++i) {
        if ((picture.pixels[static_cast<std::size_t>(i)] == color) == is_of_it) {
            left = std::min(left, i % width);
            right = std::max(right, i % width);
            top = std::min(top, i / width);
            bottom = std::max(bottom, i / width);
        }
    }
    return {right - left + 1, bottom - top + 1};
}

// Of what is drawn over white.
std::array<int, 2> drawn_extent(const Picture& picture) {
    return extent(picture, white, false);
}

class View_Render : public Rendering {
protected:
    std::string errors(const std::string& input, Options options) { return run(input, std::move(options)).errors; }
    std::string digest(const std::string& input, Options options) {
        options.push_back("--hash");
        const replay_tests::Outcome outcome = run(input, std::move(options));
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    }
    // With pixels as the renderer draws them.
    Picture picture(const std::string& input, Options options) {
        options.insert(options.end(), {"--supersample", "1"});
        return render(input, std::move(options));
    }

private:
    replay_tests::Outcome run(const std::string& input, Options options) {
        options.insert(options.begin(), {"render", input, "-o", folder.file("out.png")});
        return replay_tests::run_vorna(options);
    }

protected:
    const std::string square_file = folder.file("square.obj", square), cube_file = folder.file("cube.obj", cube);
};

const Options beside{"--camera", "9,0,0,20,0,0"};

TEST_F(View_Render, a_gradient_is_exact_in_every_row) {
    Options options = beside;
    options.insert(options.end(), {"--allow-empty", "--background", "#000000,#ff2864", "--size", "30x51"});
    const Picture drawn = picture(square_file, options);
    for (std::uint32_t row = 0; row < 51; ++row) {
        const auto channel = [&](int full) { return static_cast<int>(std::floor(full * (2.0 * row + 1) / 102 + 0.5)); };
        for (std::uint32_t column = 0; column < 30; ++column) {
            ASSERT_EQ(drawn.at(column, row), (Color{channel(255), channel(40), channel(100)})) << column << ", " << row;
        }
    }
    // Behind models by default, darker above, and white where a palette would dither it.
    const Picture plain = picture(square_file, {"--size", "60x40"});
    EXPECT_LT(plain.at(0, 0)[0] + 30, plain.at(0, 39)[0]);
    EXPECT_EQ(picture(square_file, {"--size", "60x40", "--shading", "hidden-line"}).at(0, 0), white);
    EXPECT_THAT(errors(square_file, {"--background", "red,"}),
                HasSubstr("--background: expected two colours TOP,BOTTOM, each #rgb, #rrggbb or a colour's name, found 'red,'"));
}

TEST_F(View_Render, tiles_and_threads_make_no_difference) {
    const std::string ball_file = folder.file("ball.obj", obj_text(ball(24, 12)));
    for (const Options& look : std::vector<Options>{{"--background", "gradient", "--shading", "hidden-line"},
                                                    {"--supersample", "3", "--axes"},
                                                    {"--section", "1,2,3,0.3", "--edges", "--antialias", "--supersample", "1"},
                                                    {"--colors", "8", "--background", "gradient"},
                                                    {"--ortho", "--scale-bar", "--axes", "--section", "-y=0.1"}}) {
        const auto with = [&](const Options& more) {
            Options options = look;
            options.insert(options.end(), {"--size", "200x150"});
            options.insert(options.end(), more.begin(), more.end());
            return digest(ball_file, options);
        };
        const std::string whole = with({"--threads", "1"});
        for (const char* size : {"8", "56"}) {
            EXPECT_EQ(with({"--tile-size", size, "--threads", "3"}), whole) << testing::PrintToString(look) << size;
        }
    }
}

TEST_F(View_Render, a_model_in_the_colour_of_its_background_is_something) {
    const Options white_on_white{"--shading", "hidden-line", "--edge-color", "white", "--background", "white"};
    for (const Options& more : std::vector<Options>{{}, {"--colors", "8"}, {"--supersample", "2"}, {"--tile-size", "64"}}) {
        Options options = white_on_white, empty = beside;
        options.insert(options.end(), more.begin(), more.end());
        EXPECT_EQ(errors(square_file, options), "") << testing::PrintToString(more);
        empty.insert(empty.end(), more.begin(), more.end());
        EXPECT_THAT(errors(square_file, empty), HasSubstr("square.obj: nothing to be seen")) << testing::PrintToString(more);
    }
    EXPECT_EQ(picture(square_file, white_on_white).count(white), 1280 * 960);
    EXPECT_EQ(errors(square_file, {"--shading", "wireframe", "--color", "white", "--background", "none"}), "");
    EXPECT_EQ(errors(square_file, {"--shading", "wireframe", "--color", "black", "--background", "none"}), "");
}

TEST_F(View_Render, z_points_up_where_the_format_says_so) {
    const std::string facets = "facet normal 0 0 0\nouter loop\nvertex 0 0 0\nvertex 2 0 0\nvertex 0 1 3\nendloop\nendfacet\n",
                      stl = folder.file("m.stl", "solid m\n" + facets + "endsolid m\n"),
                      obj = folder.file("m.obj", "v 0 0 0\nv 2 0 0\nv 0 1 3\nf 1 2 3\n");
    const std::string y = digest(obj, {}), z = digest(obj, {"--up", "z"});
    EXPECT_NE(y, z);
    EXPECT_EQ(digest(stl, {}), z);
    EXPECT_EQ(digest(stl, {"--up", "y"}), y);
    EXPECT_EQ(digest(obj, {"--up=+z"}), z);
}

TEST_F(View_Render, iso_without_perspective_is_isometric) {
    const auto [width, height] = drawn_extent(picture(cube_file, {"--ortho", "--size", "300x300", "--background", "white"}));
    EXPECT_NEAR(width, height * std::sqrt(0.75), 1.5); // a regular hexagon on its corner
    EXPECT_NEAR(height, 300 * 0.94, 2);
}

TEST_F(View_Render, the_field_of_view_is_that_between_upper_and_lower_border) {
    for (const double degrees : {1.0, 30.0, 90.0, 150.0}) {
        EXPECT_NEAR(half_tangent_of(degrees), std::tan(degrees * 3.14159265358979323846 / 360), 1e-14 * half_tangent_of(degrees))
            << degrees;
    }
    const Options from_afar{"--camera", "0,0,10,0,0,0", "--size", "300x200", "--background", "white"};
    for (const auto& [degrees, rows] : {std::pair("90", 20), {"2.5", 200}, {"30", 75}}) {
        Options options = from_afar;
        options.insert(options.end(), {"--fov", degrees});
        EXPECT_NEAR(drawn_extent(picture(square_file, options))[1], rows, 1) << degrees;
    }
}

TEST_F(View_Render, a_section_opens_the_model) {
    const Options front{"--camera", "0,0,10,0,0,0", "--ortho", "--size", "200x200", "--background", "white", "--shading", "flat"};
    const auto cut = [&](const std::string& file, const char* section) {
        Options options = front;
        options.insert(options.end(), {"--section", section});
        return picture(file, options);
    };
    const int side = drawn_extent(picture(square_file, front))[0];
    EXPECT_NEAR(drawn_extent(cut(square_file, "x=0.5"))[0], side * 3 / 4, 1);
    EXPECT_NEAR(drawn_extent(cut(square_file, "-y=0.5"))[1], side / 4, 1);
    EXPECT_NEAR(drawn_extent(cut(square_file, "0,10,0,5"))[1], side * 3 / 4, 1);
    // Through the open side of the cube its back is seen from inside.
    const Color outside = picture(cube_file, front).at(100, 100), inside = cut(cube_file, "z=0").at(100, 100);
    EXPECT_NE(inside, white);
    EXPECT_EQ(cut(cube_file, "z=2").at(100, 100), outside);
    EXPECT_EQ(cut(cube_file, "-z=-0.5").at(100, 100), outside);
    EXPECT_THAT(errors(cube_file, {"--section", "x=-2"}), HasSubstr("found all of it removed"));
    for (const char* wrong : {"x", "x=", "a=1", "1,2,3", "0,0,0,1", "x=1,2", "--x=1"}) {
        EXPECT_THAT(errors(cube_file, {std::string("--section=") + wrong}),
                    HasSubstr("--section: expected an axis and a place as x=2 or -z=0.5"))
            << wrong;
    }
}

// Sides of triangles by their ends' places.
using Side = std::pair<std::array<float, 3>, std::array<float, 3>>;

TEST(Section, keeps_triangles_joined_and_what_they_carry) {
    Mesh mesh = ball(24, 12);
    for (const VT_Vector& p : mesh.positions) {
        mesh.colors.push_back({0, 0, static_cast<std::uint8_t>(127.5F + 127.4F * p.x), 255});
        mesh.coordinates.push_back({p.y, 3 * p.z});
        mesh.points.push_back(static_cast<std::uint32_t>(mesh.points.size()));
    }
    mesh.lines = {0, 100, 1, 2};
    finish_mesh(mesh, "m");
    Load_Limits limits;
    const VT_Vector_D normal{0.3, -2, 1};
    const auto height = [&](const VT_Vector& p) {
        const double r = mesh.radius;
        return (normal.x * (mesh.center.x + r * p.x) + normal.y * (mesh.center.y + r * p.y) +
                normal.z * (mesh.center.z + r * p.z)) /
               2.257;
    };
    cut_open(mesh, {normal, 0.4}, "m", limits);
    ASSERT_TRUE(is_consistent(mesh));
    std::map<Side, int> sides;
    std::size_t diagonals = 0, on_cut = 0;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const VT_Vector &a = mesh.positions[mesh.triangles[i]], &b = mesh.positions[mesh.triangles[i % 3 == 2 ? i - 2 : i + 1]];
        EXPECT_LT(height(a), 0.4 / 2.257 + 1e-6);
        const std::array<float, 3> from{a.x, a.y, a.z}, to{b.x, b.y, b.z};
        ++sides[std::minmax(from, to)];
        diagonals += i / 3 < mesh.diagonals.size() && (mesh.diagonals[i / 3] >> i % 3 & 1) != 0;
        on_cut += std::abs(height(a) - 0.4 / 2.257) < 1e-6 && std::abs(height(b) - 0.4 / 2.257) < 1e-6;
    }
    const auto borders = std::ranges::count(sides, 1, &std::map<Side, int>::value_type::second);
    EXPECT_GT(borders, 10);
    EXPECT_EQ(static_cast<std::size_t>(borders), on_cut); // and every other side has two triangles
    EXPECT_GT(diagonals, 10U);                            // inside of what a triangle has become
    EXPECT_EQ(diagonals % 2, 0U);
    for (std::size_t v = 0; v < mesh.positions.size(); ++v) {
        const VT_Vector p = mesh.positions[v] * static_cast<float>(mesh.radius);
        EXPECT_NEAR(mesh.coordinates[v].u, p.y, 1e-5);
        EXPECT_NEAR(mesh.coordinates[v].v, 3 * p.z, 1e-5);
        EXPECT_NEAR(mesh.colors[v].red, 127.5F + 127.4F * p.x, 1.6);
        EXPECT_NEAR(mesh.normals[v].x * p.x + mesh.normals[v].y * p.y + mesh.normals[v].z * p.z, 1, 0.04);
    }
    EXPECT_LT(mesh.points.size(), 200U);
    EXPECT_GT(mesh.points.size(), 100U);
}

TEST_F(View_Render, a_scale_bar_has_the_length_that_it_states) {
    const Options front{"--view", "front", "--ortho", "--size", "400x300", "--background", "white", "--color", "#ff0000"};
    Options options = front;
    options.push_back("--scale-bar");
    const Picture with = picture(square_file, options), without = picture(square_file, front);
    const int unit = drawn_extent(without)[0] / 2;
    // A square of 2 fills the height: half a unit is a quarter of the width or less, a whole one is more.
    const Color dark{30, 40, 51};
    EXPECT_NEAR(extent(with, dark, true)[0], unit / 2, 1);
    EXPECT_EQ(digest(square_file, {"--axes", "--size", "200x150"}).size(), 65U);
    EXPECT_THAT(errors(square_file, {"--scale-bar"}), HasSubstr("--scale-bar: expected --ortho beside it"));
    const Picture axes = picture(cube_file, {"--axes", "--size", "400x300", "--background", "white", "--view", "front"});
    const auto is_below_and_left = [&](Color color) {
        const auto [width, height] = extent(axes, color, true);
        return width > 0 && width < 60 && height > 0 && height < 60;
    };
    EXPECT_TRUE(is_below_and_left({205, 48, 48}));
    EXPECT_TRUE(is_below_and_left({40, 140, 40}));
    EXPECT_GT(extent(axes, {205, 48, 48}, true)[0], extent(axes, {40, 140, 40}, true)[0]);
}

} // namespace
} // namespace vorna::drawing::model

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
        if (!WITH_FREETYPE && has_letters(look)) {
            continue;
        }
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

// Sides of triangles by their ends' places, each with the faces of the model on either side and how often it is a diagonal.
using Side = std::pair<std::array<float, 3>, std::array<float, 3>>;
struct Neighbours {
    std::vector<std::uint32_t> faces;
    int diagonals = 0;
};

// A ball beside the origin whose quadrangles are two triangles each; the material's number is that of the face. parted: no vertex
// is shared.
Mesh faces_with_attributes(bool parted) {
    Mesh mesh = ball(24, 12);
    for (std::size_t t = 0; t < mesh.triangle_count(); ++t) {
        const std::uint32_t* corners = &mesh.triangles[3 * t];
        const bool begins = t + 1 < mesh.triangle_count() && corners[0] == corners[3] && corners[2] == corners[4],
                   ends = t > 0 && corners[0] == corners[-3] && corners[1] == corners[-1];
        mesh.diagonals.push_back(begins ? 4 : ends ? 1 : 0);
        mesh.triangle_materials.push_back(ends ? mesh.triangle_materials.back()
                                               : static_cast<std::uint32_t>(mesh.materials.size()));
        mesh.materials.resize(mesh.triangle_materials.back() + 1);
    }
    // Diagonals are any side of a triangle.
    for (std::size_t t = 0; t < mesh.triangle_count(); ++t) {
        const unsigned first = static_cast<unsigned>(t / 2 % 3), bits = mesh.diagonals[t] * 9U; // once more above the three
        std::rotate(&mesh.triangles[3 * t], &mesh.triangles[3 * t] + first, &mesh.triangles[3 * t] + 3);
        mesh.diagonals[t] = static_cast<std::uint8_t>(bits >> first & 7);
    }
    if (parted) {
        Mesh loose;
        for (std::uint32_t& vertex : mesh.triangles) {
            loose.positions.push_back(mesh.positions[vertex]);
            vertex = static_cast<std::uint32_t>(loose.positions.size() - 1);
        }
        mesh.positions = loose.positions;
    }
    // From top to bottom, and near the bottom.
    const auto number_of = [&](double low, double high) {
        const auto found = std::ranges::find_if(mesh.positions, [=](const VT_Vector& p) { return p.y >= low && p.y <= high; });
        return static_cast<std::uint32_t>(found - mesh.positions.begin());
    };
    const std::uint32_t bottom = number_of(-1, -0.99);
    const std::uint32_t top = number_of(0.99, 1);
    mesh.lines = {bottom, top, top, bottom, number_of(-0.98, -0.95), bottom};
    for (VT_Vector& p : mesh.positions) {
        mesh.normals.push_back(p);
        mesh.colors.push_back({0, 0, static_cast<std::uint8_t>(127.5F + 127.4F * p.x), 255});
        mesh.coordinates.push_back({p.y, 3 * p.z});
        mesh.points.push_back(static_cast<std::uint32_t>(mesh.points.size()));
        p = p * 2 + VT_Vector{3, 1, -2};
    }
    finish_mesh(mesh, "m");
    return mesh;
}

TEST(Section, keeps_triangles_joined_and_what_they_carry) {
    for (const bool parted : {false, true}) {
        Mesh mesh = faces_with_attributes(parted);
        const std::size_t points = mesh.points.size();
        Load_Limits limits;
        const VT_Vector_D normal{0.3, -2, 1};
        // In the coordinates of the file; the plane passes near the middle.
        const auto height = [&](const VT_Vector& p) {
            const double r = mesh.radius;
            return normal.x * (mesh.center.x + r * p.x) + normal.y * (mesh.center.y + r * p.y) +
                   normal.z * (mesh.center.z + r * p.z) - -2.6;
        };
        cut_open(mesh, {normal, -2.6}, "m", limits);
        ASSERT_TRUE(is_consistent(mesh));
        ASSERT_EQ(mesh.triangle_materials.size(), mesh.triangle_count());
        std::map<Side, Neighbours> sides;
        std::size_t on_cut = 0;
        for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
            const VT_Vector &a = mesh.positions[mesh.triangles[i]],
                            &b = mesh.positions[mesh.triangles[i % 3 == 2 ? i - 2 : i + 1]];
            EXPECT_LT(height(a), 2e-6);
            const std::array<float, 3> from{a.x, a.y, a.z}, to{b.x, b.y, b.z};
            Neighbours& side = sides[std::minmax(from, to)];
            side.faces.push_back(mesh.triangle_materials[i / 3]);
            side.diagonals += i / 3 < mesh.diagonals.size() && (mesh.diagonals[i / 3] >> i % 3 & 1) != 0;
            on_cut += std::abs(height(a)) < 2e-6 && std::abs(height(b)) < 2e-6;
        }
        std::size_t borders = 0;
        for (const auto& [ends, side] : sides) {
            borders += side.faces.size() == 1;
            const bool is_inside = side.faces.size() == 2 && side.faces[0] == side.faces[1];
            EXPECT_EQ(side.diagonals, is_inside ? 2 : 0);
        }
        EXPECT_GT(borders, 10U);
        EXPECT_EQ(borders, on_cut); // and every other side has two triangles
        for (const std::uint32_t v : mesh.triangles) {
            const VT_Vector n = mesh.normals[v];
            EXPECT_NEAR(mesh.coordinates[v].u, n.y, 0.03);
            EXPECT_NEAR(mesh.coordinates[v].v, 3 * n.z, 0.09);
            EXPECT_NEAR(mesh.colors[v].red, 127.5F + 127.4F * n.x, 5);
            EXPECT_EQ(mesh.colors[v].alpha, 255);
        }
        ASSERT_EQ(mesh.lines.size(), 4U); // the third one is removed
        for (std::size_t i = 0; i < 4; i += 2) {
            const double ends[] = {height(mesh.positions[mesh.lines[i]]), height(mesh.positions[mesh.lines[i + 1]])};
            EXPECT_LT(std::min(ends[0], ends[1]), -0.1);
            EXPECT_NEAR(std::max(ends[0], ends[1]), 0, 2e-6);
        }
        EXPECT_LT(mesh.points.size(), points * 3 / 4);
        EXPECT_GT(mesh.points.size(), points / 4);
        ASSERT_EQ(mesh.point_normals.size(), mesh.points.size());
        for (std::size_t p = 0; p < mesh.points.size(); ++p) {
            EXPECT_LT(height(mesh.positions[mesh.points[p]]), 2e-6);
            EXPECT_NEAR(dot(mesh.point_normals[p], mesh.normals[mesh.points[p]]), 1, 1e-4);
        }
    }
}

TEST_F(View_Render, a_scale_bar_has_the_length_that_it_states) {
    if (!WITH_FREETYPE) {
        GTEST_SKIP() << "a build without FreeType has no letters";
    }
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

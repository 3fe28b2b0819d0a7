// Points and lines of models, from the file to the pixels.
#include <algorithm>
#include <random>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/model/model_reader.h"
#include "tests/support/meshes.h"
#include "tests/support/rendering.h"

namespace vorna::drawing::model {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Options = std::vector<std::string>;

template <class Reader> Mesh read(Reader reader, const std::string& content) {
    Load_Limits limits;
    return reader("m", content, limits);
}

// Number of pixels of a colour, and where they lie.
struct Spot {
    int count = 0;
    int left = 1 << 20, right = -1, top = 1 << 20, bottom = -1;
};

class Forms_Render : public Rendering {
protected:
    std::string digest(const std::string& input, Options options) {
        options.insert(options.begin(), {"render", input, "-o", folder.file("out.png"), "--hash"});
        const replay_tests::Outcome outcome = replay_tests::run_vorna(options);
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    }

    // Seen from the front without perspective, 80 x 60 pixels.
    Picture front(const std::string& input, Options options) {
        options.insert(options.end(), {"--view", "front", "--ortho", "--size", "80x60", "--supersample", "1"});
        return render(input, options);
    }

    Spot spot(const std::string& input, const Options& options, std::array<int, 3> color) {
        const Picture picture = front(input, options);
        Spot found;
        for (int i = 0; i < 80 * 60; ++i) {
            if (picture.pixels[static_cast<std::size_t>(i)] == color) {
                ++found.count;
                found.left = std::min(found.left, i % 80);
                found.right = std::max(found.right, i % 80);
                found.top = std::min(found.top, i / 80);
                found.bottom = std::max(found.bottom, i / 80);
            }
        }
        return found;
    }
};

TEST(Forms, obj_and_ply_files_give_points_and_lines) {
    const Mesh obj = read(read_obj, "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nvt 0 0\n"
                                    "f 1 2 3\np 4 1/1 \nl 1/1 2/1 -1\nl 3 4\np 4\n");
    EXPECT_EQ(obj.triangle_count(), 1U);
    const auto x_of = [&](std::uint32_t vertex) { return obj.positions[vertex]; };
    ASSERT_EQ(obj.points.size(), 3U);
    EXPECT_EQ(x_of(obj.points[0]).z, 1);
    EXPECT_EQ(obj.points[0], obj.points[2]);
    ASSERT_EQ(obj.lines.size(), 6U);
    EXPECT_EQ(obj.lines[1], obj.lines[2]);
    EXPECT_EQ(x_of(obj.lines[1]).x, 1);
    EXPECT_EQ(x_of(obj.lines[3]).z, 1);
    // Vertices alone are a cloud, with their own normals.
    const Mesh cloud = read(read_obj, "vn 0 0 1\nv 0 0 0\nvn 1 0 0\nv 1 0 0\n");
    EXPECT_THAT(cloud.points, ElementsAre(0, 1));
    EXPECT_EQ(cloud.normals.at(1).x, 1);

    const std::string head = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n",
                      vertices = "0 0 0\n1 0 0\n0 1 0\n";
    EXPECT_THAT(read(read_ply, head + "element face 0\nproperty list uchar int vertex_indices\nend_header\n" + vertices).points,
                ElementsAre(0, 1, 2));
    const std::string edges = "element edge 2\nproperty int vertex1\nproperty uchar red\nproperty int vertex2\nend_header\n";
    const Mesh lines = read(read_ply, head + edges + vertices + "0 9 1\n1 9 2\n");
    EXPECT_THAT(lines.lines, ElementsAre(0, 1, 1, 2));
    EXPECT_TRUE(lines.points.empty());
    EXPECT_THAT([&] { read(read_ply, head + edges + vertices + "0 9 1\n1 9 3\n"); },
                testing::ThrowsMessage<Model_Error>(HasSubstr("m:16: expected a vertex index below 3, found '3'")));
    EXPECT_THAT([] { read(read_obj, "v 0 0 0\nl 1\n"); },
                testing::ThrowsMessage<Model_Error>(HasSubstr("m:2: expected a vertex index, found the end of the line")));
}

TEST(Forms, finished_points_keep_the_normals_of_the_file_only) {
    Mesh mesh = read(read_obj, "v 0 0 0\nv 4 0 0\nv 0 4 0\nv 0 0 4\nf 1 2 3\np 1 4\nl 1 1\nl 2 3\n");
    finish_mesh(mesh, "m");
    EXPECT_TRUE(mesh.point_normals.empty());
    EXPECT_EQ(mesh.line_count(), 1U); // The other one has no length.
    EXPECT_EQ(mesh.center.z, 2);      // Points count for the extent.
    Mesh cloud = read(read_obj, "vn 0 0 3\nv 0 0 0\nvn 0 0 0\nv 1 0 0\n");
    finish_mesh(cloud, "m");
    ASSERT_EQ(cloud.point_normals.size(), 2U);
    EXPECT_EQ(cloud.point_normals[0].z, 1);
    EXPECT_EQ(cloud.point_normals[1].z, 0);
    Mesh point = read(read_obj, "v 5 6 7\n");
    finish_mesh(point, "m"); // A single point has no extent and is drawn nevertheless.
    EXPECT_EQ(point.radius, 1);
}

// A square of 8 x 6 between points and lines.
TEST_F(Forms_Render, faces_hide_what_lies_behind_them) {
    folder.file("m.mtl", "newmtl red\nKd 1 0 0\nnewmtl green\nKd 0 1 0\nnewmtl blue\nKd 0 0 1\n");
    const std::string file = folder.file(
        "m.obj", "mtllib m.mtl\nv -4 -3 0\nv 4 -3 0\nv 4 3 0\nv -4 3 0\nv -2 1 1\nv 2 1 -1\nv -3 -1 1\nv 3 -1 1\nv -3 -2 -1\n"
                 "v 3 -2 -1\nusemtl red\np 5\nusemtl green\np 6\nl 9 10\nusemtl blue\nl 7 8\nusemtl none\nf 1 2 3 4\n");
    for (const Options& colors : {Options{}, {"--shading", "hidden-line"}, {"--edges"}}) {
        const auto drawn = [&](const char* option, const char* value, std::array<int, 3> color) {
            Options options = colors;
            options.insert(options.end(), {option, value});
            return spot(file, options, color);
        };
        const Spot two = drawn("--point-size", "2", {255, 0, 0}), six = drawn("--point-size", "6", {255, 0, 0});
        EXPECT_EQ(two.count, 4);
        EXPECT_EQ(two.right - two.left, 1);
        EXPECT_EQ(six.right - six.left, 5);
        EXPECT_EQ(six.bottom - six.top, 5);
        EXPECT_GT(six.count, 24);
        EXPECT_LT(six.count, 36); // corners are cut
        EXPECT_EQ(six.left + 2, two.left);
        EXPECT_EQ(drawn("--point-size", "6", {0, 255, 0}).count, 0);
        const Spot thin = drawn("--line-width", "1", {0, 0, 255}), wide = drawn("--line-width", "3", {0, 0, 255});
        EXPECT_EQ(thin.bottom, thin.top);
        EXPECT_EQ(wide.bottom - wide.top, 2);
        EXPECT_EQ(wide.count, 3 * thin.count);
    }
    // Without faces all of them are seen.
    EXPECT_GT(spot(file, {"--shading", "wireframe"}, {0, 255, 0}).count, 30);
}

TEST_F(Forms_Render, light_and_distance_give_points_without_a_colour_form) {
    const std::string head = "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\nproperty float z\n",
                      normals = "property float nx\nproperty float ny\nproperty float nz\n", rest = "end_header\n";
    const std::string plain = folder.file("plain.ply", head + rest + "0 0 1\n1 0 -1\n"),
                      lit = folder.file("lit.ply", head + normals + rest + "0 0 1 0 0 1\n1 0 -1 0 -1 0\n");
    const Options red{"--color", "#ff0000", "--point-size", "8"};
    EXPECT_EQ(spot(plain, red, {255, 0, 0}).count, 0); // The nearest point is not at depth 0.
    const auto reds_of = [&](const std::string& file) {
        std::vector<int> reds;
        for (const std::array<int, 3>& pixel : front(file, red).pixels) {
            if (pixel[0] > pixel[1] + 60) {
                reds.push_back(pixel[0]);
            }
        }
        std::ranges::sort(reds);
        const auto repeated = std::unique(reds.begin(), reds.end());
        reds.erase(repeated, reds.end());
        return reds;
    };
    for (const std::string& file : {plain, lit}) {
        const std::vector<int> reds = reds_of(file);
        ASSERT_EQ(reds.size(), 2U) << file;
        EXPECT_GT(reds[1], reds[0] + 50) << file;
    }
}

TEST_F(Forms_Render, points_are_chosen_as_large_as_there_is_room_and_stand_around_their_place) {
    const std::string head = "property float x\nproperty float y\nproperty float z\nproperty uchar red\nproperty uchar green\n"
                             "property uchar blue\nend_header\n";
    const auto cloud = [&](int count) {
        std::string text = "ply\nformat ascii 1.0\nelement vertex " + std::to_string(count) + "\n" + head;
        for (int i = 0; i < count; ++i) {
            text += "0 0 " + std::to_string(i % 2) + " 255 0 0\n";
        }
        return folder.file("cloud.ply", text);
    };
    for (const auto& [count, size] : {std::pair(2, 8), {100, 4}, {2000, 2}}) {
        const Spot chosen = spot(cloud(count), {}, {255, 0, 0}); // colours of the model do not depend on the depth
        EXPECT_EQ(chosen.right - chosen.left + 1, size);
        EXPECT_EQ(chosen.bottom - chosen.top + 1, size);
    }
    const Spot one = spot(cloud(1), {"--point-size", "1"}, {255, 0, 0});
    EXPECT_EQ(spot(cloud(1), {"--point-size", "2"}, {255, 0, 0}).left + 1, one.left);
    for (const int size : {3, 5, 9}) {
        const Spot odd = spot(cloud(1), {"--point-size", std::to_string(size)}, {255, 0, 0});
        EXPECT_EQ(odd.left + size / 2, one.left);
        EXPECT_EQ(odd.top + size / 2, one.top);
    }
}

TEST_F(Forms_Render, points_lie_on_faces_whole_and_turn_to_the_viewer) {
    folder.file("m.mtl", "newmtl red\nKd 1 0 0\nnewmtl green\nKd 0 1 0\n");
    const std::string slope = "v -4 -3 -3\nv 4 -3 3\nv 4 3 3\nv -4 3 -3\n";
    const std::string file = folder.file("m.obj", "mtllib m.mtl\n" + slope +
                                                      "v 0 0 0\nv 1 5 3\nv -1 5 -3\nusemtl red\nf 1 2 3 4\n"
                                                      "usemtl green\np 5\nusemtl none\np 6 7\n");
    const Spot on_face = spot(file, {"--point-size", "6"}, {0, 255, 0});
    EXPECT_EQ(on_face.right - on_face.left, 5);
    EXPECT_GT(on_face.count, 24);
    // A material that is not there leaves the usual colour, and faces keep it from growing darker with the distance.
    const Spot plain = spot(file, {"--point-size", "2"}, {143, 169, 196});
    EXPECT_EQ(plain.count, 2 * 4);
    const std::string colorless = folder.file("c.obj", slope + "v 1 5 3\nv -1 5 -3\nf 1 2 3 4\np 5 6\n");
    EXPECT_EQ(spot(colorless, {"--point-size", "2", "--color", "#ff0000", "--shading", "hidden-line"}, {255, 0, 0}).count, 2 * 4);
    const auto lit = [&](const std::string& normal) {
        const std::string properties =
            "property float x\nproperty float y\nproperty float z\nproperty float nx\nproperty float ny\n"
            "property float nz\nproperty uchar red\nproperty uchar green\nproperty uchar blue\n";
        return front(folder.file("lit.ply", "ply\nformat ascii 1.0\nelement vertex 2\n" + properties +
                                                "end_header\n0 0 0 0 0 1 9 9 9\n"
                                                "1 0 0 " +
                                                normal + " 200 100 50\n"),
                     {"--point-size", "5"})
            .pixels;
    };
    EXPECT_EQ(lit("0 0.6 0.8"), lit("0 -0.6 -0.8"));
    EXPECT_NE(lit("0 0.6 0.8"), lit("0 0.8 0.6"));
    EXPECT_GT(std::ranges::count(lit("0 0 0"), std::array<int, 3>{200, 100, 50}), 12); // neither lit nor dark
}

// Points, lines and faces that cross the borders of tiles and of the image.
TEST_F(Forms_Render, tiles_and_threads_draw_the_same_pixels) {
    std::mt19937 random(7);
    std::ostringstream text;
    const auto number = [&] { return static_cast<int>(random() % 200) - 100; };
    for (int i = 0; i < 600; ++i) {
        text << "v " << number() << ' ' << number() << ' ' << number() << '\n';
    }
    for (int i = 0; i < 20; ++i) {
        text << "f " << 3 * i + 1 << ' ' << 3 * i + 2 << ' ' << 3 * i + 3 << '\n';
    }
    for (int i = 60; i < 600; ++i) {
        text << "p " << i + 1 << "\nl " << i + 1 << ' ' << i - 1 << '\n';
    }
    const std::string file = folder.file("m.obj", text.str());
    const std::vector<Options> looks{{"--supersample", "1"},
                                     {"--supersample", "1", "--point-size", "17", "--line-width", "4"},
                                     {"--supersample", "3", "--point-size", "5"},
                                     {"--supersample", "1", "--antialias"},
                                     {"--supersample", "1", "--colors", "8"},
                                     {"--supersample", "1", "--zoom", "3", "--shading", "hidden-line"}};
    for (const Options& look : looks) {
        const auto with = [&](const Options& more) {
            Options options = look;
            options.insert(options.end(), {"--size", "200x150"});
            options.insert(options.end(), more.begin(), more.end());
            return digest(file, options);
        };
        const std::string whole = with({"--threads", "1"});
        for (const char* size : {"8", "40", "104"}) {
            EXPECT_EQ(with({"--tile-size", size, "--threads", "3"}), whole) << testing::PrintToString(look) << size;
        }
    }
}

TEST_F(Forms_Render, statistics_count_them_and_files_without_any_are_refused) {
    const auto outcome = [&](const std::string& input, const Options& options) {
        Options arguments{"render", input, "-o", folder.file("out.png")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return replay_tests::run_vorna(arguments);
    };
    const std::string file = folder.file("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\np 1 2\nl 1 2 3\np 3\n");
    EXPECT_THAT(outcome(file, {"--stats"}).errors, testing::StartsWith("2 lines, 3 points, load "));
    EXPECT_THAT(outcome(file, {"--dry-run"}).output, HasSubstr("\ndrawn: 2 lines, 3 points\n"));
    EXPECT_EQ(outcome(file, {"--antialias"}).errors, "");
    EXPECT_THAT(outcome(folder.file("p.obj", "v 0 0 0\n"), {"--stats"}).errors, testing::StartsWith("1 point, load "));
    EXPECT_THAT(outcome(folder.file("e.obj", "o nothing\n"), {}).errors,
                HasSubstr("e.obj: empty scene: expected triangles, lines or points, found none"));
    std::ostringstream many;
    many << "ply\nformat ascii 1.0\nelement vertex 30000\nproperty float x\nproperty float y\nproperty float z\nend_header\n";
    for (int i = 0; i < 30000; ++i) {
        many << "0 0 0\n";
    }
    EXPECT_THAT(outcome(folder.file("many.ply", many.str()), {"--max-memory", "2M"}).errors, HasSubstr("--max-memory"));
}

} // namespace
} // namespace vorna::drawing::model

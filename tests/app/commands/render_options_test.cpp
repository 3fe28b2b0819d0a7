// What vorna render makes of several models, standard streams, and options that change pixels after they are drawn.
#include <algorithm>
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/files/gzip.h"
#include "drawing/image/image_file.h"
#include "tests/support/command_line.h"
#include "tests/support/images.h"
#include "tests/support/meshes.h"
#include "tests/support/png_pixels.h"
#include "tests/support/rendering.h"

namespace vorna::drawing::model {
namespace {

using replay_tests::Outcome;
using replay_tests::Png_Pixels;
using replay_tests::read_file;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using Options = std::vector<std::string>;

class Render_Options : public testing::Test {
protected:
    // The file that is written, or what was said instead.
    std::string drawn(const Options& inputs, const Options& options, const std::string& input = "") {
        const std::string output = folder.file("out.png");
        Options arguments{"render", "-o", output};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.insert(arguments.end(), inputs.begin(), inputs.end());
        const Outcome outcome = replay_tests::run_vorna(with_drawn_pixels(arguments), input);
        return outcome.status == 0 ? read_file(output) : outcome.errors;
    }
    Png_Pixels pixels(const Options& inputs, const Options& options) {
        const std::string file = drawn(inputs, options);
        const std::string kept = folder.file("kept.png", file);
        const bool indexed = std::ranges::any_of(options, [](const auto& o) { return o == "--colors" || o == "--palette"; });
        return indexed ? replay_tests::read_png(kept) : replay_tests::read_colors(kept);
    }

    replay_tests::Temporary_Folder folder;
    const std::string ball_text = obj_text(ball(24, 12)), ball_file = folder.file("ball.obj", ball_text);
};

TEST_F(Render_Options, several_models_look_as_if_they_were_one_file) {
    folder.file("paint.png", png_file(gradient()));
    const std::string near = "v 0 0 1\nv 2 0 1\nv 2 2 1\nv 0 2 1\nvt 0 0\nvt 1 0\nvt 1 1\n",
                      far = "v -1 0 0\nv 1 0 0\nv 1 1 0\nv -1 1 0.5\n";
    const std::string glass = "newmtl NAME\nd 0.5\nmap_Kd paint.png\n", red = "newmtl NAME\nKd 1 0 0\n";
    const auto named = [](std::string text, const std::string& name) { return text.replace(text.find("NAME"), 4, name); };
    folder.file("a.mtl", named(glass, "same"));
    folder.file("b.mtl", named(red, "same"));
    folder.file("both.mtl", named(glass, "one") + named(red, "other"));
    const std::string near_faces = "f 1/1 2/2 3/3\nf 1/1 3/3 4/2\n";
    const std::string a = folder.file("a.obj", "mtllib a.mtl\n" + near + "usemtl same\n" + near_faces),
                      b = folder.file("b.obj", "mtllib b.mtl\n" + far + "usemtl same\nf 1 2 3 4\n"),
                      both = folder.file("both.obj", "mtllib both.mtl\n" + near + far + "usemtl one\n" + near_faces +
                                                         "usemtl other\nf 5 6 7 8\n");
    for (const Options& options :
         {Options{"--shading", "textured", "--edges"}, {"--shading", "flat"}, {"--shading", "wireframe"}}) {
        EXPECT_TRUE(drawn({a, b}, options) == drawn({both}, options)) << testing::PrintToString(options);
    }
    const std::string empty = folder.file("empty.obj", "o nothing\n");
    EXPECT_THAT(drawn({a, empty}, {}), HasSubstr("empty.obj: empty scene"));
    EXPECT_TRUE(drawn({empty, a}, {"--allow-empty"}) == drawn({a}, {}));
}

TEST_F(Render_Options, standard_streams_carry_what_files_hold) {
    const std::string map = R"({"type":"Polygon","coordinates":[[[0,0],[4,0],[4,4],[0,0]]]})";
    const std::string stl =
        "solid s\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n"
        "endsolid s\n";
    const std::string ply = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
                            "element face 1\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
    const std::string dxf =
        "999\nwritten by hand\n0\nSECTION\n2\nENTITIES\n0\nLINE\n10\n0\n20\n0\n11\n9\n21\n5\n0\nENDSEC\n0\nEOF\n";
    for (const auto& [name, text] :
         {std::pair("b.obj", "# first\n" + ball_text), {"m.json", map}, {"s.stl", stl}, {"p.ply", ply}, {"d.dxf", dxf}}) {
        const std::string file = drawn({folder.file(name, text)}, {"--size", "90x70"});
        EXPECT_EQ(file.substr(1, 3), "PNG") << file;
        EXPECT_TRUE(drawn({"-"}, {"--size", "90x70"}, text) == file) << name;
        EXPECT_TRUE(drawn({"-"}, {"--size", "90x70"}, gzip(text)) == file) << name;
        EXPECT_TRUE(drawn({folder.file(name + std::string(".gz"), gzip(text))}, {"--size", "90x70"}) == file) << name;
        EXPECT_TRUE(drawn({folder.file("unnamed", text)}, {"--size", "90x70"}) == file) << name;
        const Outcome piped = replay_tests::run_vorna({"render", "-", "--size", "90x70", "-o", "-", "--supersample", "1"}, text);
        EXPECT_TRUE(piped.output == file) << name;
        EXPECT_EQ(piped.errors, "");
    }
    const Outcome hashed = replay_tests::run_vorna({"render", ball_file, "-o", "-", "--hash"});
    EXPECT_EQ(hashed.output.substr(1, 3), "PNG");
    EXPECT_EQ(hashed.errors.size(), 65U);
    EXPECT_THAT(drawn({"-"}, {}, "what is this"), HasSubstr("vorna: standard input: expected a model, map or drawing"));
    EXPECT_THAT(drawn({"-"}, {"--input-format", "ply"}, ball_text), HasSubstr("vorna: standard input:1: expected 'ply'"));
    EXPECT_THAT(drawn({"-"}, {}, gzip(ball_text).substr(0, 60)),
                HasSubstr("standard input: compressed data that ends too early"));
}

TEST_F(Render_Options, a_pixel_is_the_mean_of_those_drawn_for_it) {
    const Png_Pixels small = pixels({ball_file}, {"--size", "70x51", "--supersample", "3", "--shading", "flat"}),
                     large = pixels({ball_file}, {"--size", "210x153", "--shading", "flat"});
    ASSERT_EQ(small.width, 70U);
    for (std::size_t y = 0; y < 51; ++y) {
        for (std::size_t i = 0; i < 4 * 70; ++i) {
            int sum = 0;
            for (std::size_t k = 0; k < 9; ++k) {
                sum += large.bytes[4 * 210 * (3 * y + k / 3) + 12 * (i / 4) + 4 * (k % 3) + i % 4];
            }
            ASSERT_EQ(small.bytes[4 * 70 * y + i], (2 * sum + 9) / 18) << i << ' ' << y;
        }
    }
}

TEST_F(Render_Options, transparent_pictures_laid_over_a_colour_are_those_drawn_over_it) {
    // Smoothed lines that lie over each other cut off a level each.
    const std::string square = folder.file("square.obj", "v 0 0 0\nv 2 0 1\nv 2 1 1\nv 0 1 0\nf 1 2 3 4\n");
    const struct {
        std::string model;
        Options options;
        int rounding; // of the picture over the colour, of alpha and of the colour below it
    } cases[] = {{ball_file, {}, 0},
                 {ball_file, {"--shading", "hidden-line"}, 0},
                 {square, {"--edges", "--antialias"}, 2},
                 {square, {"--shading", "wireframe", "--antialias"}, 2},
                 {ball_file, {"--edges=feature", "--supersample", "4"}, 2}};
    for (auto [model, options, rounding] : cases) {
        options.insert(options.end(), {"--size", "120x90", "--edge-color", "navy"});
        if (!std::ranges::any_of(options, [](const std::string& o) { return o.starts_with("--edges") || o == "--shading"; })) {
            options.resize(options.size() - 2);
        }
        Options none = options, orange = options;
        none.insert(none.end(), {"--background", "none"});
        orange.insert(orange.end(), {"--background", "orange"});
        const Png_Pixels clear = pixels({model}, none), solid = pixels({model}, orange);
        constexpr int below[] = {255, 165, 0};
        int transparent = 0;
        for (std::size_t i = 0; i < clear.bytes.size(); ++i) {
            const int alpha = clear.bytes[i / 4 * 4 + 3];
            transparent += alpha == 0;
            if (i % 4 < 3) {
                const int laid = (clear.bytes[i] * alpha + below[i % 4] * (255 - alpha) + 127) / 255;
                ASSERT_LE(std::abs(laid - solid.bytes[i]), rounding) << i << ' ' << testing::PrintToString(options);
            }
        }
        EXPECT_GT(transparent, 400) << testing::PrintToString(options);
    }
}

TEST_F(Render_Options, hidden_lines_are_the_edges_that_faces_leave_to_be_seen) {
    for (const Options& more : {Options{}, {"--cull", "back", "--zoom", "2.5"}, {"--supersample", "2"}, {"--colors", "8"}}) {
        Options over{"--edges", "--edge-color", "red", "--color", "blue", "--size", "160x120"}, lines = over;
        lines.insert(lines.end(), {"--shading", "hidden-line"});
        over.insert(over.end(), more.begin(), more.end());
        lines.insert(lines.end(), more.begin(), more.end());
        const Picture faces(pixels({ball_file}, over)), alone(pixels({ball_file}, lines));
        constexpr std::array<int, 3> red{255, 0, 0}, white{255, 255, 255};
        EXPECT_GT(alone.count(red), 400);
        for (std::size_t i = 0; i < alone.pixels.size(); ++i) {
            const std::array<int, 3>& pixel = alone.pixels[i];
            ASSERT_EQ(pixel == red, faces.pixels[i] == red) << i << ' ' << testing::PrintToString(more);
            const bool is_line = pixel[1] + pixel[2] == 0; // lines of palette pictures are dithered
            ASSERT_TRUE(pixel == white || is_line || (!more.empty() && more[0] == "--supersample"));
        }
    }
}

TEST_F(Render_Options, palettes_are_those_asked_for) {
    EXPECT_TRUE(drawn({ball_file}, {"--palette", "cube"}) == drawn({ball_file}, {"--colors", "8"}));
    EXPECT_EQ(pixels({ball_file}, {"--palette", "8x8x4"}).palette.size(), 768U);
    const std::string lines = folder.file("lines.txt", "#000000\n\n#f00\n#00ff00\n#0000ff\n#0ff\n#f0f\n#ffff00\n#fff\n"),
                      gimp = folder.file("p.gpl",
                                         "GIMP Palette\nName: eight\nColumns: 2\n# a comment\n0 0 0 Black\n255 0 0\n0\t255 0\n"
                                         "  0   0 255\tBlue\n0 255 255\n255 0 255\n255 255 0\n255 255 255 White paper\n");
    // White, which is in the palette, is nowhere dithered; elsewhere means come near to what would be drawn in 32 bits.
    const Options options{"--size", "160x160", "--zoom", "1.2", "--edges", "--antialias"};
    Options mapped = options;
    mapped.insert(mapped.end(), {"--palette", lines});
    const Png_Pixels file = pixels({ball_file}, mapped);
    EXPECT_THAT(file.palette, ElementsAreArray({0, 0,   0,   255, 0, 0,   0,   255, 0, 0,   0,   255,
                                                0, 255, 255, 255, 0, 255, 255, 255, 0, 255, 255, 255}));
    const Picture full(pixels({ball_file}, options)), few(file);
    long sums[2][3] = {};
    for (std::size_t i = 0; i < full.pixels.size(); ++i) {
        constexpr std::array<int, 3> white{255, 255, 255};
        ASSERT_TRUE(full.pixels[i] != white || few.pixels[i] == white);
        for (std::size_t channel = 0; channel < 3; ++channel) {
            sums[0][channel] += full.pixels[i][channel];
            sums[1][channel] += few.pixels[i][channel];
        }
    }
    for (std::size_t channel = 0; channel < 3; ++channel) {
        EXPECT_NEAR(static_cast<double>(sums[0][channel]), static_cast<double>(sums[1][channel]), 160 * 160 * 4.0);
    }
    const std::string by_lines = drawn({ball_file}, mapped), image = folder.file("palette.png", by_lines);
    mapped.back() = gimp;
    EXPECT_TRUE(drawn({ball_file}, mapped) == by_lines);
    mapped.back() = image;
    EXPECT_TRUE(drawn({ball_file}, mapped) == by_lines);
    for (const auto& [text, message] : {std::pair("#000\nblack\n", ":2: expected a colour as #rrggbb, found 'black'"),
                                        {"GIMP Palette\n1 2\n", ":2: expected red, green and blue from 0 to 255, found '1 2'"},
                                        {"", ": expected a palette of 1 to 256 colours, found 0"}}) {
        EXPECT_THAT(drawn({ball_file}, {"--palette", folder.file("wrong", text)}), HasSubstr(folder.file("wrong") + message));
    }
}

TEST_F(Render_Options, turntables_begin_with_the_picture_and_go_round_to_the_right) {
    // As large from every side.
    const std::string model = folder.file("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 2 3\nf 1 3 4\nf 1 4 2\n");
    const Options options{"--ortho", "--size", "90x80", "--edges"};
    const auto frames = [&](const std::string& names, const Options& more) {
        Options arguments{"render", model, "-o", folder.file(names), "--turntable", "4", "--hash"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.insert(arguments.end(), more.begin(), more.end());
        return replay_tests::run_vorna(with_drawn_pixels(arguments));
    };
    const Outcome outcome = frames("f-%03d.png", {"--view", "front", "--threads", "3"});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(std::ranges::count(outcome.output, '\n'), 4);
    EXPECT_EQ(frames("t-{}.png", {"--view", "front", "--tile-size", "32"}).status, 0);
    const char* const sides[] = {"front", "right", "back", "left"};
    for (int i = 0; i < 4; ++i) {
        Options side = options;
        side.insert(side.end(), {"--view", sides[i]});
        const std::string number = std::to_string(i), whole = drawn({model}, side);
        EXPECT_TRUE(read_file(folder.file("f-00" + number + ".png")) == whole) << sides[i];
        EXPECT_TRUE(read_file(folder.file("t-" + number + ".png")) == whole) << sides[i];
    }
    EXPECT_THAT(frames("f.png", {}).errors, HasSubstr("-o: expected one place for the frame's number, as in frame-%03d.png"));
    EXPECT_THAT(frames("nowhere/%d.png", {}).errors, ContainsRegex("nowhere/..png: cannot be written"));
    const Outcome long_model = replay_tests::run_vorna({"render", folder.file("l.obj", "v 0 0 0\nv 1 0 0\nv 0 1 2\nf 1 2 3\n"),
                                                        "-o", folder.file("l{}.png"), "--turntable", "4", "--view", "front"});
    EXPECT_THAT(long_model.errors, HasSubstr("3 of 4 frames do not show the whole model; --zoom "));
}

TEST_F(Render_Options, pictures_without_anything_in_them_are_written_on_demand_only) {
    const std::string map = folder.file("map.json", R"({"type":"Polygon","coordinates":[[[0,0],[4,0],[4,4],[0,0]]]})");
    const Options beside{"--camera", "9,0,0,20,0,0"};
    const struct {
        std::string input;
        Options options;
    } cases[] = {{ball_file, beside},
                 {ball_file, {"--camera", "9,0,0,20,0,0", "--colors", "8", "--background", "#123456"}},
                 {ball_file, {"--camera", "9,0,0,20,0,0", "--background", "none", "--tile-size", "64", "--edges"}},
                 {ball_file, {"--camera", "9,0,0,20,0,0", "--shading", "hidden-line", "--supersample", "2"}},
                 {map, {"--bbox", "50,50,60,60"}},
                 {map, {"--bbox", "50,50,60,60", "--background", "none"}},
                 {map, {"--bbox", "50,50,60,60", "--colors", "8"}}};
    for (auto [input, options] : cases) {
        options.insert(options.end(), {"--size", "100x80"});
        EXPECT_THAT(drawn({input}, options), testing::StartsWith("vorna: " + input + ": nothing to be seen"));
        EXPECT_THAT(folder.names(), ElementsAre("ball.obj", "map.json"));
        options.push_back("--allow-empty");
        EXPECT_EQ(drawn({input}, options).substr(1, 3), "PNG");
        std::filesystem::remove(folder.file("out.png"));
    }
    Options turning{"render", ball_file, "-o", folder.file("f{}.png"), "--turntable", "3"};
    turning.insert(turning.end(), beside.begin(), beside.end());
    EXPECT_EQ(replay_tests::run_vorna(turning).status, 1);
    EXPECT_EQ(replay_tests::run_vorna({"render", ball_file, "-o", "-", "--camera", "9,0,0,20,0,0"}).output, "");
    EXPECT_THAT(folder.names(), ElementsAre("ball.obj", "map.json"));
    // Parts of a poster may be empty.
    EXPECT_EQ(drawn({ball_file}, {"--size", "300x80", "--tiles-of", "5x1", "--tile", "0"}).substr(1, 3), "PNG");
}

TEST_F(Render_Options, dry_runs_tell_and_write_nothing) {
    const Outcome told = replay_tests::run_vorna({"render", ball_file, "-o", folder.file("f-{}.png"), "--size", "3000x2000",
                                                  "--dry-run", "--turntable", "12", "--threads", "2", "--supersample", "2"});
    EXPECT_EQ(told.status, 0) << told.errors;
    EXPECT_THAT(told.output, testing::ContainsRegex(
                                 "\ndrawn: 528 triangles in .*\nimage: 3000x2000, 32 bits a pixel, means of 2x2\ntiles: 24 of "
                                 "1024x1024 pixels, 2 threads\nframes: 12\nmemory: .* of 1024M"));
    EXPECT_THAT(told.output, HasSubstr("f-00.png to " + folder.file("f-11.png")));
    EXPECT_THAT(folder.names(), ElementsAre("ball.obj"));
    for (const auto& [output, more, status] : {std::tuple(folder.file("none") + "/out.png", "--stats", 1),
                                               {folder.file("."), "--stats", 1},
                                               {"out.png", "--edges=some", 2}}) {
        EXPECT_EQ(replay_tests::run_vorna({"render", ball_file, "--dry-run", "-o", output, more}).status, status) << output;
    }
    EXPECT_THAT(folder.names(), ElementsAre("ball.obj"));
}

} // namespace
} // namespace vorna::drawing::model

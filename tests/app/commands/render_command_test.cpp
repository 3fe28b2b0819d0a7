// vorna render as a user runs it: pictures, messages, and files that appear whole or not at all.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"
#include "tests/support/meshes.h"
#include "tests/support/rendering.h"

namespace vorna::drawing::model {
namespace {

using replay_tests::Outcome;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::array<int, 3> black{0, 0, 0}, white{255, 255, 255};

using Render_Command = Rendering;

// A corner of three walls, open to the viewer of its front: long to the right, half as long upwards, short towards the viewer.
const std::string corner = "v 0 0 0\nv 4 0 0\nv 0 2 0\nv 0 0 1\nf 1 2 3\nf 1 3 4\nf 1 4 2\n";

TEST_F(Render_Command, draws_models_upright_and_not_mirrored_in_both_colour_systems) {
    const std::string model = folder.file("corner.obj", corner);
    for (const char* colors : {"32", "8"}) {
        for (const char* shading : {"flat", "gouraud"}) {
            const Picture picture = render(model, {"--view", "front", "--ortho", "--size", "201x101", "--colors", colors,
                                                   "--shading", shading, "--background", "black"});
            ASSERT_EQ(picture.width, 201U);
            ASSERT_EQ(picture.height, 101U);
            // The wall fills the half below the diagonal from the upper left to the lower right.
            EXPECT_EQ(picture.at(0, 0), black);
            EXPECT_EQ(picture.at(190, 10), black);
            EXPECT_NE(picture.at(12, 90), black);
            EXPECT_NE(picture.at(12, 12), black);
            EXPECT_NE(picture.at(180, 95), black);
            EXPECT_NEAR(static_cast<double>(picture.count(black)) / (201 * 101), 1 - 0.94 * 0.94 / 2, 0.03);
        }
    }
}

TEST_F(Render_Command, surfaces_have_no_cracks_even_where_they_are_cut_off) {
    const std::string model = folder.file("ball.obj", obj_text(ball(61, 37)));
    for (const char* zoom : {"2", "7.3", "100"}) {
        for (const char* projection : {"--ortho", "--perspective"}) {
            const Picture picture =
                render(model, {projection, "--zoom", zoom, "--size", "150x150", "--background", "white", "--color", "navy"});
            EXPECT_EQ(picture.count(white), 0);
        }
    }
}

TEST_F(Render_Command, the_nearer_surface_hides_the_farther_whichever_comes_first) {
    const std::string vertices =
        "mtllib paint.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nv -1 -1 1\nv 1 -1 1\nv 1 1 1\nv -1 1 1\n";
    const std::string far = "usemtl red\nf 1 2 3 4\n", near = "usemtl blue\nf 5 6 7 8\n";
    folder.file("paint.mtl", "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\n");
    for (const std::string& faces : {far + near, near + far}) {
        const std::array<int, 3> middle =
            render(folder.file("two.obj", vertices + faces), {"--view", "front", "--size", "64x64"}).at(32, 32);
        EXPECT_GT(middle[2], middle[0]);
    }
}

TEST_F(Render_Command, stats_go_to_standard_error) {
    const std::string model = folder.file("corner.obj", corner);
    const Outcome outcome = replay_tests::run_vorna(
        {"render", model, "-o", folder.file("out.png"), "--stats", "--repeat", "3", "--supersample", "1", "--threads", "1"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, testing::ContainsRegex(
                                    "^3 triangles in .* strips, load .* ms, setup .* ms, draw .* ms at best, .* middle of 3\n$"));
}

TEST_F(Render_Command, wrong_usage_and_input_is_said_in_one_line_and_leaves_no_file) {
    const std::string model = folder.file("corner.obj", corner), broken = folder.file("broken.obj", "v 0 0\n");
    const std::string output = folder.file("out.png"), nowhere = folder.file("missing") + "/out.png";
    const std::string plain = folder.file("corner", corner),
                      map = folder.file("map.json", R"({"type": "Point", "coordinates": [1, 2]})"),
                      drawing = folder.file("plan.dxf", "0\nSECTION\n");
    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string message;
    } cases[] = {
        {{model}, 2, "render: expected -o FILE.png, found none; vorna render --help tells"},
        {{"-o", output}, 2, "render: expected MODEL, found none"},
        {{plain, "-o", plain}, 2, "corner: expected another file to write than those to read"},
        {{model, "-o", plain, "--record", plain}, 2, "corner: expected a file of its own for each output"},
        {{model, "-o", output, "--size", "64"}, 2, "--size: expected WIDTHxHEIGHT with sides from 1 to 262144, found '64'"},
        {{model, "-o", output, "--size", "64x262145"}, 2, "--size: expected"},
        {{model, "-o", output, "--tile", "1"}, 2, "--tile: expected --tiles-of beside it, found none"},
        {{model, "-o", output, "--tiles-of", "2x2", "--tile", "4"}, 2, "--tile: expected a number from 0 to 3, found 4"},
        {{model, "-o", output, "--size", "32x32", "--tiles-of", "5x1", "--tile", "0"},
         2,
         "--tiles-of: expected parts of 8 pixels"},
        {{model, "-o", output, "--tile-size", "100"}, 2, "--tile-size: expected a multiple of 8, found 100"},
        {{model, "-o", output, "--max-memory", "much"}, 2, "--max-memory: expected a number of bytes, or one with K, M, G or T"},
        {{model, "-o", output, "--color", "puce"}, 2, "--color: expected #rgb, #rrggbb or a colour's name, found 'puce'\n"},
        {{model, "-o", output, "--light", "0,0,0"}, 2, "--light: expected a direction x,y,z, found '0,0,0'"},
        {{model, "-o", output, "--view", "above"},
         2,
         "--view: expected iso, front, back, left, right, top or bottom, found 'above'"},
        {{model, "-o", output, "--colors", "16"}, 2, "--colors: expected 32 or 8, found '16'"},
        {{model, "-o", output, "--ortho", "--perspective"}, 2, "--perspective: expected no --ortho beside it, found both"},
        {{model, "-o", output, "--edges=some"}, 2, "--edges: expected all or feature, found 'some'"},
        {{model, "-o", output, "--edge-color", "red"},
         2,
         "--edge-color: expected --edges, --shading wireframe or hidden-line beside it"},
        {{model, "-o", output, "--antialias"}, 2, "--antialias: expected --edges, --shading wireframe or hidden-line beside it"},
        {{model, "-o", output, "--edges", "--antialias", "--colors", "8"},
         2,
         "--antialias: expected 32 bits a pixel, found --colors 8"},
        {{model, "-o", output, "--supersample", "2", "--colors", "8"},
         2,
         "--supersample: expected 32 bits a pixel or a palette from a file"},
        {{model, "-o", output, "--background", "none", "--palette", "cube"},
         2,
         "--background none: expected 32 bits a pixel, found --palette cube"},
        {{model, "-o", output, "--palette", "9x9x9"},
         2,
         "--palette: expected 2 levels or more of each colour and 256 colours at most"},
        {{model, "-o", output, "--palette", "cube", "--colors", "32"},
         2,
         "--palette: expected 8 bits a pixel, found --colors 32"},
        {{model, "-o", output, "--record", folder.file("r.json"), "--supersample", "2"},
         2,
         "--record: expected pixels as the renderer draws them"},
        {{model, "-o", output, "--tile-size", "4096", "--supersample", "4"}, 2, "--tile-size: expected tiles that enlarged have"},
        {{model, "-o", "-", "--record", "-"}, 2, "--record -: expected another file, found -o -"},
        {{"-", "-", "-o", output}, 2, "-: expected standard input once, found it twice"},
        {{model, map, "-o", output}, 2, map + ": expected a model beside " + model + ", found a map or drawing"},
        {{map, drawing, "-o", output}, 2, drawing + ": expected a map beside " + map},
        {{model, "-o", output, "--input-format", "xyzzy"}, 2, "--input-format: expected a suffix of files that can be read"},
        {{broken, "-o", output}, 2, broken + ":1: expected a vertex coordinate, found the end of the line"},
        {{model, "-o", nowhere}, 1, nowhere},
        {{model, "-o", output, "--module", folder.file("missing.vrd")}, 1, "missing.vrd"},
    };
    for (const auto& [arguments, status, message] : cases) {
        SCOPED_TRACE(message);
        std::vector<std::string> command = arguments;
        command.insert(command.begin(), "render");
        const Outcome outcome = replay_tests::run_vorna(command);
        EXPECT_EQ(outcome.status, status) << message;
        EXPECT_THAT(outcome.errors, testing::AllOf(StartsWith("vorna: "), HasSubstr(message)));
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
        EXPECT_THAT(folder.names(), ElementsAre("broken.obj", "corner", "corner.obj", "map.json", "plan.dxf")) << message;
    }
}

TEST_F(Render_Command, arguments_that_are_not_understood_are_answered_with_what_was_expected) {
    const std::string model = folder.file("corner.obj", corner), output = folder.file("out.png");
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--zoom", "2000"}, "--zoom: expected a number from 0.01 to 1000, found '2000'"},
        {{"--threads", "1.5"}, "--threads: expected a whole number from 1 to 1024, found '1.5'"},
        {{"--suprsample", "2"},
         "--suprsample: no option of vorna render; did you mean --supersample? vorna render --help lists them"},
        {{"--quux=3"}, "--quux: no option of vorna render; vorna render --help lists them"},
        {{"--hash=3"}, "--hash: expected no value, found '3'"},
        {{"--edges", "feature"}, "--edges: expected --edges=feature, found '--edges feature'; a file of that name is ./feature"},
        {{"--edges", "--edges=feature"}, "--edges: expected once, found 2 times"},
        {{"--size", "2x2", "--size", "3x3"}, "--size: expected once, found 2 times"},
        {{"--color", ""}, "--color: expected COLOR, found ''"},
        {{"--record", "--hash"}, "--record: expected RECORDING, found the option --hash"},
        {{"--record=", "--size=3x4"}, "--record: expected RECORDING, found the option --size=3x4"},
        {{"--record"}, "--record: expected RECORDING behind it, found nothing"},
        {{"--record", folder.file("r.png")},
         "--record: expected a name that ends in .json, .gz, .zst or .cbor, found '" + folder.file("r.png")},
        {{"--camera", "1,2,3,0,0,0", "--view", "top"}, "--view: expected no --camera beside it, found both"},
        {{"--background", "None"},
         "--background: expected none, gradient, TOP,BOTTOM, #rgb, #rrggbb or a colour's name, found 'None'; did you mean none?"},
        {{"--background", "none,red"},
         "--background: expected two colours TOP,BOTTOM, each #rgb, #rrggbb or a colour's name, found 'none,red'"},
        {{"--camera", "0,0,5,0,0,0,0,0,0"},
         "--camera: expected a direction that points up across the line of sight, found '0,0,5,0,0,0,0,0,0'"},
        {{"--camera", "0,5,0,0,0,0"}, "or another direction that points up behind them, found '0,5,0,0,0,0'"},
        {{"--max-memory", "1M"}, "M or more for this image, found 1M"},
        {{"--kernels", "sse"}, "--kernels: expected portable, baseline, avx2, avx512 or neon, found 'sse'"},
        {{"--", "--nosuch.obj"}, "./--nosuch.obj: cannot be read: No such file or directory"},
    };
    for (const auto& [arguments, message] : cases) {
        std::vector<std::string> command{"render", model, "-o", output};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const Outcome outcome = replay_tests::run_vorna(command);
        EXPECT_EQ(outcome.status, 2) << message;
        EXPECT_THAT(outcome.errors, HasSubstr(message));
        EXPECT_THAT(folder.names(), ElementsAre("corner.obj")) << message;
    }
    EXPECT_THAT(replay_tests::run_vorna({"render", model, "-o", folder.file("out.GIF")}).errors,
                HasSubstr("--output: expected a name that ends in .png, .jpg, "));
    EXPECT_EQ(replay_tests::run_vorna({"render", model, "-o", output, "--up", "-z", "--size", "8x8"}).status, 0);
}

} // namespace
} // namespace vorna::drawing::model

// Recordings of rendered models replay to the same pictures.
#include <random>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/images.h"
#include "tests/support/meshes.h"
#include "tests/support/rendering.h"

namespace vorna::drawing::model {
namespace {

using Render_Record = Rendering;

TEST_F(Render_Record, replays_to_the_same_bytes) {
    folder.file("paint.png", png_file(gradient()));
    folder.file("paint.mtl", "newmtl paint\nmap_Kd paint.png\nnewmtl glass\nd 0.5\nmap_Kd paint.png\n");
    const std::string ball_model = folder.file("ball.obj", obj_text(ball(31, 17)));
    const std::string textured_model =
        folder.file("square.obj", "mtllib paint.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nv 0 0 1\nvt -1 0\nvt 2 0\nvt 2 3\n"
                                  "usemtl paint\nf 1/1 2/2 3/3\nf 1/1 3/2 4/3\nusemtl glass\nf 1/1 2/2 5/3\nf 2/1 3/2 5/3\n");
    const std::string picture = folder.file("out.png"), record = folder.file("record.json.gz"), again = folder.file("again.png");
    for (const std::string& model : {ball_model, textured_model}) {
        for (const std::vector<std::string>& options :
             std::vector<std::vector<std::string>>{{},
                                                   {"--shading", "flat", "--zoom", "3"},
                                                   {"--shading", "textured"},
                                                   {"--shading", "textured", "--colors", "8", "--repeat", "2"},
                                                   {"--shading", "wireframe", "--colors", "8"},
                                                   {"--shading", "wireframe", "--antialias"},
                                                   {"--edges", "--zoom", "2"},
                                                   {"--edges=feature", "--antialias"},
                                                   {"--colors", "8", "--background", "#123456"}}) {
            std::vector<std::string> arguments = options;
            arguments.insert(arguments.end(), {"--record", record, "--size", "161x120"});
            render(model, arguments);
            const replay_tests::Outcome outcome = replay_tests::run_vorna({"replay", record, "--color", again});
            ASSERT_EQ(outcome.status, 0) << outcome.errors;
            EXPECT_TRUE(replay_tests::read_file(picture) == replay_tests::read_file(again)) << testing::PrintToString(options);
        }
    }
}

// Points and wide lines reach over the border; long and short smoothed edges are hidden in part.
TEST_F(Render_Record, replays_lines_and_points_over_faces_and_beyond_the_border) {
    std::mt19937 random(3);
    std::ostringstream text;
    const auto number = [&] { return static_cast<int>(random() % 200) - 100; };
    for (int i = 0; i < 150; ++i) {
        text << "v " << number() << ' ' << number() << ' ' << number() << '\n';
    }
    for (int i = 1; i < 40; i += 3) {
        text << "f " << i << ' ' << i + 1 << ' ' << i + 2 << '\n';
    }
    for (int i = 40; i < 120; i += 2) {
        text << "p " << i << "\nl " << i << ' ' << i - 3 << ' ' << i + 5 << '\n';
    }
    const std::string faces = folder.file("ball.obj", obj_text(ball(9, 7))), forms = folder.file("forms.obj", text.str());
    const std::string record = folder.file("record.json"), again = folder.file("again.png");
    using Options = std::vector<std::string>;
    for (const Options& look : {Options{"--edges", "--antialias"},
                                {"--shading", "hidden-line", "--antialias", "--background", "red,blue"},
                                {"--antialias", "--edges=feature", "--point-size", "1"},
                                {"--line-width", "2", "--point-size", "3", "--shading", "flat"},
                                {"--line-width", "17", "--point-size", "64", "--colors", "8"},
                                {"--line-width", "64", "--point-size", "7", "--axes"},
                                {"--edges", "--ortho", "--scale-bar", "--supersample", "1"}}) {
        if (!WITH_FREETYPE && has_letters(look)) {
            continue;
        }
        for (const std::string& model : {faces, forms}) {
            for (const char* zoom : {"1", "4"}) {
                Options options = look;
                options.insert(options.end(), {"--zoom", zoom, "--record", record, "--size", "233x150"});
                render(model, options);
                const replay_tests::Outcome outcome = replay_tests::run_vorna({"replay", record, "--color", again});
                ASSERT_EQ(outcome.errors, "") << testing::PrintToString(options);
                EXPECT_TRUE(replay_tests::read_file(folder.file("out.png")) == replay_tests::read_file(again))
                    << testing::PrintToString(options);
            }
        }
    }
}

TEST_F(Render_Record, refuses_images_that_no_window_holds) {
    const std::string file = folder.file("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nl 1 2\n");
    const auto errors = [&](const char* size, const char* width) {
        return replay_tests::run_vorna({"render", file, "-o", folder.file("o.png"), "--record", folder.file("r.json"), "--size",
                                        size, "--line-width", width})
            .errors;
    };
    EXPECT_EQ(errors("16383x8", "1"), "");
    EXPECT_THAT(errors("16384x8", "1"),
                testing::HasSubstr("--record: expected an image that is drawn in one piece, of up to 16383 "));
    EXPECT_EQ(errors("16351x8", "20"), "");
    EXPECT_THAT(errors("16352x8", "20"), testing::HasSubstr("of up to 16351 pixels"));
}

} // namespace
} // namespace vorna::drawing::model

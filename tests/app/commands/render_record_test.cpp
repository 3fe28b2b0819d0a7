// Recordings of rendered models replay to the same pictures.
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

} // namespace
} // namespace vorna::drawing::model

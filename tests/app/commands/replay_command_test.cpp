// vorna replay as a user runs it: exit statuses, messages, and files that appear whole or not at all.
#include <cstdlib>
#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"
#include "tests/support/png_pixels.h"

namespace replay_tests {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Two rows of three pixels: red with an alpha of its own, and one dot that has a depth.
const std::string small = R"({"picture": 1, "window": {"width": 3, "height": 2}, "calls": [
    {"call": "draw_window", "rectangle": [0, 2, 0, 1], "color": [200, 10, 20, 77]},
    {"call": "clear_depth_rectangle", "rectangle": [0, 2, 0, 1]},
    {"call": "draw_dci_dot", "point": [2, 0, 258], "color": [1, 2, 3, 4]}]})";

std::string with_call(const std::string& call, const std::string& more = "") {
    return R"({"picture": 1, "window": {"width": 8, "height": 8, "origin": [100, -4]}, )" + more + R"("calls": [)" + call + "]}";
}

class Replay_Command : public testing::Test {
protected:
    // Replays the text with every output asked for and expects that none has been touched.
    void expect_refused(const std::string& text, int status, const std::string& message) {
        const std::string path = folder.file("picture.json", text);
        const std::string color = folder.file("color.png", "before");
        const Outcome outcome = run_vorna({"replay", path, "--color", color, "--report", folder.file("report.json")});
        EXPECT_EQ(outcome.status, status) << text;
        EXPECT_EQ(outcome.errors, "vorna: " + path + ": " + message + '\n') << text;
        EXPECT_EQ(read_file(color), "before");
        EXPECT_THAT(folder.names(), ElementsAre("color.png", "picture.json"));
    }

    Temporary_Folder folder;
};

TEST_F(Replay_Command, writes_what_the_buffers_hold) {
    const Outcome outcome =
        run_vorna({"replay", "-", "--color", folder.file("c.png"), "--depth", folder.file("d.png"), "--color-raw",
                   folder.file("c"), "--depth-raw", folder.file("d"), "--report", folder.file("r.json")},
                  small);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(folder.names(), ElementsAre("c", "c.png", "d", "d.png", "r.json"));

    const std::string red = "\x14\x0A\xC8\x4D";
    EXPECT_EQ(read_file(folder.file("c")), red + red + red + red + red + "\x03\x02\x01\x04");
    EXPECT_EQ(read_file(folder.file("d")), std::string(10, '\xFF') + "\x02\x01");
    EXPECT_EQ(nlohmann::json::parse(read_file(folder.file("r.json"))),
              nlohmann::json::parse(R"({"standard": [], "reads": [], "presented": []})"));

    const Png_Pixels color = replay_tests::read_colors(folder.file("c.png"));
    EXPECT_THAT(std::vector(color.bytes.end() - 8, color.bytes.end()), ElementsAre(200, 10, 20, 77, 1, 2, 3, 4));
    const Png_Pixels depth = read_png(folder.file("d.png"));
    EXPECT_EQ(depth.bit_depth, 16);
    EXPECT_THAT(std::vector(depth.bytes.end() - 4, depth.bytes.end()), ElementsAre(255, 255, 1, 2));
}

// Presenting and reading come in between, and the report is that of one thread.
TEST_F(Replay_Command, draws_the_same_with_several_threads) {
    const std::string text = with_call(R"(
        {"call": "draw_window", "rectangle": [100, 107, -4, 3], "color": [9, 8, 7, 255]},
        {"call": "draw_2di_polytriangle", "points": [[90, -9, 5], [120, -2, 5], [101, 9, 5]]},
        {"call": "present", "rectangle": [100, 107, -4, 3]},
        {"call": "set_zbuffer_write", "value": false},
        {"call": "draw_2d_polyline", "points": [[95, -4, 1], [109, 3.5, 1], [103, -9, 2]]},
        {"call": "read_depth_image", "top_left": [100, 3], "bottom_right": [107, -4], "format": 3},
        {"call": "draw_dci_dot", "point": [104, 0, 1], "color": [1, 2, 3, 4]})");
    for (const std::string threads : {"1", "3"}) {
        const Outcome drawn = run_vorna({"replay", "-", "--threads", threads, "--color-raw", folder.file("c" + threads),
                                         "--depth-raw", folder.file("d" + threads)},
                                        text);
        EXPECT_EQ(drawn.errors, "");
        EXPECT_EQ(run_vorna({"replay", "-", "--threads", threads, "--report", folder.file("r" + threads)}, text).status, 0);
    }
    EXPECT_EQ(read_file(folder.file("c1")).size(), 8U * 8 * 4);
    EXPECT_EQ(read_file(folder.file("c1")), read_file(folder.file("c3")));
    EXPECT_EQ(read_file(folder.file("d1")), read_file(folder.file("d3")));
    EXPECT_EQ(read_file(folder.file("r1")), read_file(folder.file("r3")));
}

TEST_F(Replay_Command, writes_palette_indices_as_stored) {
    const std::string text = R"({"picture": 1, "window": {"width": 3, "height": 1}, "color_system": 0, "buffer_depth": 0,
        "palette": {"colors": [[9, 8, 7], [255, 0, 0]]},
        "calls": [{"call": "draw_dci_index8_image", "start": [0, 0], "end": [1, 0], "pixels": [[1, 200]]}]})";
    const Outcome outcome = run_vorna({"replay", "-", "--color", folder.file("c.png"), "--color-raw", folder.file("c")}, text);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(read_file(folder.file("c")), std::string("\x01\xC8\x00", 3));
    const Png_Pixels color = read_png(folder.file("c.png"));
    EXPECT_THAT(color.bytes, ElementsAre(1, 200, 0));
    EXPECT_THAT(std::vector(color.palette.begin(), color.palette.begin() + 6), ElementsAre(9, 8, 7, 255, 0, 0));
}

TEST_F(Replay_Command, reports_reads_presentations_and_standard_drawing) {
    const std::string calls = R"(
        {"call": "draw_window", "rectangle": [100, 107, -4, 3], "color": [1, 2, 3, 4]},
        {"call": "draw_dci_index8_image", "start": [100, 0], "end": [100, 0], "pixels": [[1]]},
        {"call": "read_color_image", "top_left": [100, 3], "bottom_right": [101, 3], "format": 8},
        {"call": "read_depth_image", "top_left": [100, 3], "bottom_right": [100, 2], "format": 3},
        {"call": "read_depth_image", "top_left": [100, 3], "bottom_right": [100, 2], "format": 2},
        {"call": "present", "rectangle": [101, 104, -2, 1]})";
    const Outcome outcome = run_vorna({"replay", "-", "--report", folder.file("r.json")}, with_call(calls));
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(nlohmann::json::parse(read_file(folder.file("r.json"))), nlohmann::json::parse(R"({
        "standard": [[1, "VD_Standard_Draw_DCI_Index8_Image"]],
        "reads": [{"call": 2, "width": 2, "height": 1, "format": 2, "rows": [[[1, 2, 3, 4], [1, 2, 3, 4]]]},
                  {"call": 3, "width": 1, "height": 2, "format": 3, "rows": [[0], [0]]}, null],
        "presented": [[[101, 1, 0], [104, -2, 0], 201, 2]]})"));
}

TEST_F(Replay_Command, refuses_what_a_host_would_never_send) {
    const std::string inside = "inside the window, columns 100 to 107, rows -4 to 3";
    expect_refused(with_call(R"({"call": "draw_dci_dot", "point": [108, 0]})"), 2, "calls[0].point: expected a point " + inside);
    expect_refused(with_call(R"({"call": "draw_dc_polytriangle", "points": [[99.5, -4.5], [99.49, 0]]})"), 2,
                   "calls[0].points[1]: expected a point " + inside);
    expect_refused(with_call(R"({"call": "draw_dci_rgb32_image", "start": [99, 0], "end": [99, 0], "pixels": [[[1, 2, 3]]]})"), 2,
                   "calls[0].start and end: expected corners " + inside);
    expect_refused(with_call(R"({"call": "clear_depth_rectangle", "rectangle": [100, 108, -4, 3]})"), 2,
                   "calls[0].rectangle: expected corners " + inside);
    expect_refused(with_call(R"({"call": "clear_depth_rectangle", "rectangle": [103, 102, -4, 3]})"), 2,
                   "calls[0].rectangle: expected the greater coordinates to the right and at the top");
    expect_refused(with_call(R"({"call": "establish", "window": {"width": 2}}, {"call": "draw_dci_dot", "point": [103, 0]})"), 2,
                   "calls[1].point: expected a point inside the window, columns 100 to 101, rows -4 to 3");
    // The centre of an ellipse is a column and row, whether it is flat or not.
    expect_refused(R"({"picture": 1, "window": {"width": 8, "height": 8, "origin": [1, 0]}, "buffer_depth": 0, "calls": [
                       {"call": "draw_dci_ellipse", "center": [4, 5], "radii": [2, 5], "rotation": 4.712389}]})",
                   2, "calls[0].center and radii: expected an ellipse inside columns 0 to 7, rows 0 to 7");
    expect_refused(R"({"picture": 1, "window": {"width": 8, "height": 8, "origin": [1, 0]}, "buffer_depth": 0, "calls": [
                       {"call": "draw_dci_elliptical_arc", "center": [4, 5], "radii": [3, 2]},
                       {"call": "draw_dci_elliptical_arc", "center": [4, 5], "radii": [4, 0]}]})",
                   2, "calls[1].center and radii: expected an ellipse inside columns 0 to 7, rows 0 to 7");
    // What the renderer cuts by itself goes to it.
    EXPECT_EQ(run_vorna({"replay", "-"}, with_call(R"({"call": "draw_window", "rectangle": [-9, 999, -9, 999]},
        {"call": "draw_dci_rgb32_image", "start": [107, 0], "end": [108, 0], "pixels": [[[1, 2, 3], [4, 5, 6]]]},
        {"call": "draw_dc_polytriangle", "points": [[99.51, -4.49], [107.49, 3.49], [100, 0]]})"))
                  .status,
              0);
}

TEST_F(Replay_Command, refuses_options_that_the_renderer_does_not_have) {
    expect_refused(with_call("", R"("options": {"Use Masks": true}, )"), 2, "options.Use Masks: the renderer has no such option");
    expect_refused(with_call("", R"("options": {"Use Mask": 1}, )"), 2, "options.Use Mask: expected true or false");
    expect_refused(with_call(R"({"call": "establish", "options": {"Color Buffer": 1}})"), 2,
                   "calls[0].options.Color Buffer: expected an object or a function, which only a program can give");
    expect_refused(R"({"picture": 1, "window": {"origin": [2147483600, 0]}, "calls": []})", 2,
                   "window: expected a window between -2^30 and 2^30, found the origin [2147483600, 0]");
    expect_refused(with_call(R"({"call": "establish", "window": {"origin": [-3, 1073741824]}})"), 2,
                   "calls[0].window: expected a window between -2^30 and 2^30, found the origin [-3, 1073741824]");
}

TEST_F(Replay_Command, tells_wrong_usage_in_one_line) {
#if defined(_WIN32)
    const std::string folder_reason = "Permission denied"; // all that the system says
#else
    const std::string folder_reason = "Is a directory";
#endif
    const auto expect = [](const std::vector<std::string>& arguments, int status, const std::string& message) {
        const Outcome outcome = run_vorna(arguments, small);
        EXPECT_EQ(outcome.status, status) << message;
        EXPECT_THAT(outcome.errors, testing::StartsWith("vorna: "));
        EXPECT_THAT(outcome.errors, HasSubstr(message));
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    };
    expect({}, 2, "vorna: expected a command, found none; vorna --help lists them");
    expect({"rply"}, 2, "vorna: expected a command, found 'rply'; did you mean replay? vorna --help lists them");
    expect({"replay"}, 2, "replay: expected RECORDING, found none; vorna replay --help tells what it takes");
    expect({"replay", "-", "more"}, 2, "replay: expected no further argument, found 'more'");
    expect({"replay", "-", "--colour", "c.png"}, 2, "--colour: no option of vorna replay; did you mean --color?");
    expect({"replay", "-", "--sort", "time"}, 2, "--sort: expected --timing beside it, found none");
    expect({"replay", "missing.json"}, 2, "missing.json: cannot be read: No such file or directory");
    expect({"replay", "/"}, 2, "/: cannot be read: " + folder_reason);
    expect({"replay", "-", "--module", "missing.vrd"}, 1, "missing.vrd");
    expect({"replay", "-", "--kernels", "abacus"}, 2,
           "--kernels: expected portable, baseline, avx2, avx512 or neon, found 'abacus'");
    expect({"replay", "-", "--color", folder.file("none/c.png")}, 1, "none/c.png: cannot be written: No such file or directory");
    EXPECT_EQ(run_vorna({"--version"}).status, 0);
    EXPECT_EQ(run_vorna({"help"}).output, run_vorna({"--help"}).output);
    EXPECT_EQ(run_vorna({"help", "replay"}).output, run_vorna({"replay", "--help"}).output);
    EXPECT_THAT(run_vorna({"replay", "--help"}).output, testing::StartsWith("Draw a recording"));
}

TEST_F(Replay_Command, writes_all_files_or_none) {
    const Outcome outcome =
        run_vorna({"replay", "-", "--color", folder.file("c.png"), "--depth", folder.file("none/d.png")}, small);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(folder.names(), IsEmpty());
    const Outcome twice = run_vorna({"replay", "-", "--color", folder.file("c"), "--color-raw", folder.file("c")}, small);
    EXPECT_EQ(twice.errors, "vorna: " + folder.file("c") + ": expected a file of its own for each output\n");
    EXPECT_THAT(folder.names(), IsEmpty());

    const std::string flat = R"({"picture": 1, "buffer_depth": 0, "calls": []})";
    const Outcome without = run_vorna({"replay", "-", "--color", folder.file("c.png"), "--depth-raw", folder.file("d")}, flat);
    EXPECT_EQ(without.status, 2);
    EXPECT_EQ(without.errors, "vorna: standard input: there is no depth buffer for --depth or --depth-raw\n");
    EXPECT_THAT(folder.names(), IsEmpty());

    // The line of --hash counts like a file.
    EXPECT_EQ(run_vorna({"replay", "-", "--color", folder.file("c.png"), "--hash"}, small).output.size(), 65U);
    EXPECT_THAT(folder.names(), testing::ElementsAre("c.png"));
#if defined(__linux__)
    const std::string recording = folder.file("small.json", small);
    const std::string line = std::string(VORNA_EMULATOR) + "'" VORNA_COMMAND "' replay '" + recording + "' --color '" +
                             folder.file("new.png") + "' --hash >/dev/full 2>/dev/null";
    EXPECT_NE(std::system(line.c_str()), 0);
    EXPECT_THAT(folder.names(), testing::ElementsAre("c.png", "small.json"));
#endif
}

} // namespace

} // namespace replay_tests

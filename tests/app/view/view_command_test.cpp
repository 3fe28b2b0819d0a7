// vorna view as a user runs it, without a display: what its pictures show is what vorna render draws.
#include <cstdlib>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"
#include "tests/support/meshes.h"
#include "tests/support/png_pixels.h"

namespace vorna::app::view {
namespace {

using replay_tests::Outcome;
using testing::HasSubstr;

class View_Command : public testing::Test {
protected:
    // SDL's driver that shows nothing.
    View_Command() { setenv("SDL_VIDEODRIVER", "dummy", 1); }

    Outcome view(const std::string& script, std::vector<std::string> options = {}) {
        options.insert(options.begin(),
                       {"view", model, "--screenshots", folder.file(""), "--script", folder.file("script", script)});
        return replay_tests::run_vorna(options);
    }

    replay_tests::Temporary_Folder folder;
    const std::string model = folder.file("ball.obj", vorna::drawing::model::obj_text(vorna::drawing::model::ball(24, 12)));
};

TEST_F(View_Command, shows_and_records_the_bytes_that_render_draws) {
    const std::vector<std::string> steps{"",
                                         "drag left 100,100 160,140",
                                         "drag right 80,80 100,70",
                                         "wheel 3 90,60",
                                         "key s",
                                         "key e",
                                         "key a",
                                         "drag shift+left 10,10 40,30",
                                         "key e",
                                         "key p",
                                         "key p",
                                         "key p",
                                         "key 5",
                                         "wheel -2 20,20",
                                         "key ctrl+1",
                                         "key +",
                                         "resize 150x170",
                                         "key p",
                                         "key s",
                                         "key s",
                                         "key h",
                                         "key Home"};
    std::string script;
    for (const std::string& step : steps) {
        script += step + "\nkey c\nkey w\n";
    }
    const Outcome outcome = view(script + "key q\n", {"--size", "200x150", "--up", "z"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    std::istringstream lines(outcome.output);
    std::set<std::string> seen;
    for (const std::string& step : steps) {
        // A file's name and the command that draws it again: of the screenshot, then of the recording.
        std::string shot, line;
        ASSERT_TRUE(std::getline(lines, shot) && std::getline(lines, line));
        const std::string bytes = replay_tests::read_file(shot);
        seen.insert(bytes);
        for (const char* command : {"render", "replay"}) {
            std::istringstream stream(line);
            std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
            ASSERT_EQ(words.front(), "vorna");
            words.erase(words.begin());
            ASSERT_EQ(words.front(), command);
            words.back() = folder.file("again.png");
            ASSERT_EQ(replay_tests::run_vorna(words).status, 0) << line;
            EXPECT_EQ(bytes == replay_tests::read_file(words.back()), true) << step << '\n' << line;
            if (std::string(command) == "render") {
                std::string recording;
                ASSERT_TRUE(std::getline(lines, recording) && std::getline(lines, line));
            }
        }
    }
    // All steps but the help change the picture; the last one goes back to the first camera.
    EXPECT_EQ(seen.size(), steps.size() - 1);
}

// A map fills the window as render draws it, moves and comes back; what is recorded is what is shown.
TEST_F(View_Command, moves_maps) {
    const std::string map = folder.file("map.json", R"({"type":"FeatureCollection","features":[
        {"type":"Feature","properties":{},"geometry":{"type":"Polygon","coordinates":[[[0,0],[40,0],[40,30],[0,30],[0,0]]]}},
        {"type":"Feature","properties":{},"geometry":{"type":"Polygon","coordinates":[[[40,0],[70,5],[40,30],[40,0]]]}}]})");
    const std::vector<std::string> steps{"",      "drag left 100,80 130,70", "wheel 2 60,60", "key a", "key p", "resize 150x120",
                                         "key h", "resize 200x150",          "key p",         "key a", "key r"};
    std::string script;
    for (const std::string& step : steps) {
        script += step + "\nkey c\nkey w\n";
    }
    const Outcome outcome = replay_tests::run_vorna({"view", map, "--size", "200x150", "--border", "dashed", "--screenshots",
                                                     folder.file(""), "--script", folder.file("script", script + "key q\n")});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    std::istringstream lines(outcome.output);
    std::vector<std::string> shots;
    for (const std::string& step : steps) {
        std::string shot, recording, line;
        ASSERT_TRUE(std::getline(lines, shot) && std::getline(lines, recording) && std::getline(lines, line));
        shots.push_back(replay_tests::read_file(shot));
        const std::string again = folder.file("again.png");
        ASSERT_EQ(replay_tests::run_vorna({"replay", recording, "--color", again}).status, 0) << step;
        EXPECT_EQ(shots.back() == replay_tests::read_file(again), true) << step;
    }
    const std::string rendered = folder.file("rendered.png");
    ASSERT_EQ(replay_tests::run_vorna({"render", map, "-o", rendered, "--size", "200x150", "--border", "dashed"}).status, 0);
    EXPECT_EQ(shots.front() == replay_tests::read_file(rendered), true);
    EXPECT_EQ(shots.back() == shots.front(), true);
    // The first six steps show something new, the help is not in the files, and the rest takes back what was done.
    EXPECT_EQ(std::set<std::string>(shots.begin(), shots.end()).size(), 6U);
    EXPECT_EQ(std::set<std::string>(shots.begin(), shots.begin() + 6).size(), 6U);
    EXPECT_THAT(replay_tests::run_vorna({"view", map, "--zoom", "2"}).errors, HasSubstr("--zoom: expected a model, found "));
}

TEST_F(View_Command, shows_the_depth_buffer_and_never_writes_over_a_file) {
    folder.file("ball-001.png", "mine");
    const Outcome outcome = view("key d\nkey c\nkey q\n", {"--size", "64x64", "--view", "front"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, folder.file("ball-002.png") + "\n");
    EXPECT_EQ(replay_tests::read_file(folder.file("ball-001.png")), "mine");
    const replay_tests::Png_Pixels depth = replay_tests::read_colors(folder.file("ball-002.png"));
    const auto level = [&](std::size_t x, std::size_t y) { return int{depth.bytes[(y * depth.width + x) * depth.pixel_bytes]}; };
    EXPECT_EQ(level(0, 0), 255) << "the background";
    EXPECT_GT(level(32, 32), 240);
    EXPECT_LT(level(32, 4), level(32, 16));
    EXPECT_LT(level(32, 16), level(32, 32));
}

TEST_F(View_Command, prints_commands_that_draw_views_without_a_model_too) {
    const Outcome outcome = view("key c\ndrag right 32,32 3200,32\nkey c\nkey p\nkey c\nkey q\n",
                                 {"--size", "64x64", "--camera", "0,0,9,0,0,0", "--edges"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    std::istringstream lines(outcome.output);
    std::string shot, command;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(std::getline(lines, shot) && std::getline(lines, command));
        EXPECT_EQ(command.find("--allow-empty") != command.npos, i > 0) << command;
        std::vector<std::string> words;
        std::istringstream stream(command);
        for (std::string word; stream >> word;) {
            words.push_back(word);
        }
        const std::string again = words.back() = folder.file("again.png");
        const Outcome drawn = replay_tests::run_vorna({words.begin() + 1, words.end()});
        EXPECT_EQ(drawn.errors, "") << command;
        EXPECT_EQ(replay_tests::read_file(again) == replay_tests::read_file(shot), true) << command;
    }
}

TEST_F(View_Command, says_in_one_line_what_is_wrong) {
    const std::string script = folder.file("script");
    const struct {
        std::string script, message;
    } cases[] = {{"key s\nkey\n", script + ":2: expected a key, found the end of the line"},
                 {"press s\n", script + ":1: expected key, drag, click, wheel or resize, found 'press'"},
                 {"drag top 1,1 2,2\n", script + ":1: expected left, middle or right, found 'top'"},
                 {"drag left 1,1 2;2\n", script + ":1: expected X,Y, found '2;2'"},
                 {"resize 0x5\n", script + ":1: expected a size of 1 or more, found '0x5'"},
                 {"key q q\n", script + ":1: expected the end of the line, found 'q'"}};
    for (const auto& [text, message] : cases) {
        const Outcome outcome = view(text);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.errors, "vorna: " + message + "\n");
    }
    EXPECT_THAT(view("key q\n", {"--camera", "1,2,3"}).errors, HasSubstr("--camera: expected two places"));
    EXPECT_THAT(view("key q\n", {"--camera", "0,5,0,0,0,0"}).errors, HasSubstr("or another direction that points up"));
    EXPECT_EQ(view("key q\n", {"--background", "none"}).errors,
              "vorna: --background: expected a colour in a window, found 'none'\n");
    EXPECT_EQ(view("key q\n", {"--palette", "3x3x3"}).errors,
              "vorna: --palette: expected cube, 8x8x4 or 2x2x2 in a window, found '3x3x3'\n");
    const std::string nowhere = folder.file("nowhere");
    EXPECT_EQ(replay_tests::run_vorna({"view", model, "--screenshots", nowhere}).errors,
              "vorna: --screenshots: expected a folder, found none called '" + nowhere + "'\n");
    unsetenv("SDL_VIDEODRIVER");
    unsetenv("WAYLAND_DISPLAY");
    for (const char* display : {"", ":65500"}) {
        *display ? setenv("DISPLAY", display, 1) : unsetenv("DISPLAY");
        const Outcome outcome = view("key q\n");
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors, HasSubstr("vorna: view: no display to open a window on: "));
        EXPECT_THAT(view("key q\n", {"--palette", "3x3x3"}).errors, HasSubstr("--palette: expected cube"));
        EXPECT_THAT(replay_tests::run_vorna({"view", nowhere + ".obj"}).errors, HasSubstr("nowhere.obj: cannot be read: "));
    }
}

} // namespace
} // namespace vorna::app::view

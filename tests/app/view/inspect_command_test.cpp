// vorna inspect as a user runs it, without a display: where mouse and keys lead, and what the window shows there.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/view/text_panel.h"
#include "tests/support/command_line.h"
#include "tests/support/png_pixels.h"

namespace vorna::app::view {
namespace {

using replay_tests::Outcome;
using replay_tests::Png_Pixels;
using testing::ElementsAre;
using testing::HasSubstr;

// Shown at twice its size in a window of 128 by 201 pixels: below lie 28 rows of times and 45 of text.
const std::string overlapping = R"({"picture": 1, "window": {"width": 64, "height": 64}, "calls": [
    {"call": "draw_window", "rectangle": [0, 63, 0, 63], "color": [20, 40, 60]},
    {"call": "clear_depth_rectangle", "rectangle": [0, 63, 0, 63]},
    {"call": "draw_dci_polytriangle", "points": [[4, 4, 900], [60, 8, 900], [30, 60, 900]],
     "rendition": {"face": {"color": [200, 100, 0]}}},
    {"call": "draw_dci_polytriangle", "points": [[4, 40, 300], [60, 40, 300], [30, 10, 300]],
     "rendition": {"face": {"color": [0, 200, 100]}}},
    {"call": "draw_dci_polytriangle", "points": [[10, 10, 700], [50, 10, 700], [30, 50, 700]],
     "rendition": {"face": {"color": [250, 250, 0]}}},
    {"call": "draw_dci_dot", "point": [30, 30, 0], "color": [255, 255, 255]}]})";

class Inspect_Command : public testing::Test {
protected:
    Inspect_Command() { setenv("SDL_VIDEODRIVER", "dummy", 1); }

    // The position and the file of each screenshot; the position before the first call is -1.
    struct Shot {
        int call;
        std::string file;
    };

    Outcome inspect(const std::string& script, std::vector<std::string> options = {"--size", "128x201"}) {
        options.insert(options.begin(), {"inspect", recording, "--screenshots", folder.file(""), "--script",
                                         folder.file("script", script + "key q\n")});
        return replay_tests::run_vorna(options);
    }
    // A screenshot after each step.
    std::vector<Shot> shots_after(const std::vector<std::string>& steps,
                                  const std::vector<std::string>& options = {"--size", "128x201"}) {
        std::string script;
        for (const std::string& step : steps) {
            script += step + "\nkey c\n";
        }
        const Outcome outcome = inspect(script, options);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        std::vector<Shot> shots;
        std::istringstream lines(outcome.output);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("  vorna replay " + recording)) {
                shots.back().call = std::stoi(line.substr(line.find("--until ") + 8));
            } else {
                shots.push_back({-1, line});
            }
        }
        return shots;
    }
    std::vector<int> calls_after(const std::vector<std::string>& steps) {
        std::vector<int> calls;
        for (const Shot& shot : shots_after(steps)) {
            calls.push_back(shot.call);
        }
        return calls;
    }

    // Red, green and blue of a pixel.
    static std::string color_at(const Png_Pixels& image, std::size_t x, std::size_t y) {
        const std::uint8_t* const at = image.bytes.data() + (y * image.width + x) * image.pixel_bytes;
        return std::to_string(at[0]) + ' ' + std::to_string(at[1]) + ' ' + std::to_string(at[2]);
    }

    const std::string outlined = "255 60 180";
    replay_tests::Temporary_Folder folder;
    const std::string recording = folder.file("overlapping.json", overlapping);
};

TEST_F(Inspect_Command, goes_from_call_to_call_by_keys_and_by_the_slider) {
    EXPECT_THAT(calls_after({"", "key Left", "key Left", "key Right", "key Home", "key Left", "key Right", "key End", "key Right",
                             "key PageUp", "key PageDown", "key ctrl+Left", "key shift+Right"}),
                ElementsAre(5, 4, 3, 4, -1, -1, 0, 5, 5, 4, 5, -1, 5));
    // Columns 8 to 119 of the times stand for the positions 0 to 6.
    EXPECT_THAT(calls_after({"click 8,140", "click 119,155", "drag left 8,140 64,140", "drag left 64,140 500,10", "click 80,140",
                             "click 0,130", "drag left 64,60 64,140"}),
                ElementsAre(-1, 5, 2, 5, 3, -1, -1));
    // To the calls that did something to the pixel 30,33 from the top left: the green face and the dot, and back.
    const std::vector<std::string> pixel{"click 60,66", "key Home", "key Down", "key Down", "key Down",
                                         "key Down",    "key Down", "key Down", "key Down", "key Up"};
    const Outcome replayed = replay_tests::run_vorna({"replay", recording, "--pixel", "30,33", "--json"});
    const auto history = nlohmann::json::parse(replayed.output);
    std::vector<int> expected{5, -1};
    for (const auto& event : history["pixels"][0]["events"]) {
        expected.push_back(event["call"]);
    }
    ASSERT_EQ(expected.size(), 8U) << replayed.output;
    expected.insert(expected.end(), {5, 4});
    EXPECT_EQ(calls_after(pixel), expected);
    // Beside the image nothing is chosen.
    EXPECT_THAT(calls_after({"key -", "click 4,4", "key Up"}), ElementsAre(5, 5, 5));
    // The slowest call first; of each call once.
    std::vector<int> slow = calls_after({"key t", "key t", "key t", "key t", "key t", "key t", "key t", "key ctrl+t"});
    EXPECT_EQ(slow[6], slow[5]);
    EXPECT_EQ(slow[7], slow[4]);
    EXPECT_EQ(std::set<int>(slow.begin(), slow.begin() + 6).size(), 6U);
}

// At twice its size and without marks the image is the one that a replay draws. The outline lies beside changed pixels only.
TEST_F(Inspect_Command, shows_what_replays_draw_and_outlines_what_the_call_changed) {
    const std::vector<Shot> shots = shots_after({"key Left", "key m", "key m", "key m", "key m"});
    ASSERT_EQ(shots.size(), 5U);
    const auto replayed = [&](const char* until) {
        EXPECT_EQ(replay_tests::run_vorna({"replay", recording, "--until", until, "--color", folder.file("r.png")}).status, 0);
        return replay_tests::read_colors(folder.file("r.png"));
    };
    const Png_Pixels before = replayed("3"), after = replayed("4");
    const Png_Pixels marked = replay_tests::read_colors(shots[0].file), alone = replay_tests::read_colors(shots[1].file),
                     plain = replay_tests::read_colors(shots[2].file);
    const auto has_changed = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < 64 && y < 64 &&
               color_at(before, static_cast<std::size_t>(x), static_cast<std::size_t>(y)) !=
                   color_at(after, static_cast<std::size_t>(x), static_cast<std::size_t>(y));
    };
    int outline = 0, changed = 0, wrong = 0;
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 128; ++x) {
            const auto column = static_cast<std::size_t>(x), row = static_cast<std::size_t>(y);
            const std::string color = color_at(after, column / 2, row / 2);
            const auto is_near = [&] {
                for (const int dy : {-1, 0, 1}) {
                    for (const int dx : {-1, 0, 1}) {
                        if (has_changed((x + dx + 2) / 2 - 1, (y + dy + 2) / 2 - 1)) {
                            return true;
                        }
                    }
                }
                return false;
            };
            const bool is_changed = has_changed(x / 2, y / 2), is_outline = !is_changed && is_near();
            outline += is_outline;
            changed += is_changed;
            wrong += color_at(plain, column, row) != color;
            wrong += color_at(marked, column, row) != (is_outline ? outlined : color);
            wrong += (color_at(alone, column, row) == color) != is_changed;
        }
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(outline, 100);
    EXPECT_GT(changed, 100);
    EXPECT_EQ(replay_tests::difference(replay_tests::read_colors(shots[3].file), marked), "");
    EXPECT_EQ(replay_tests::difference(replay_tests::read_colors(shots[4].file), alone), "");
}

TEST_F(Inspect_Command, shows_depths_masks_and_heat) {
    const std::vector<Shot> shots =
        shots_after({"key m\nkey m", "key 2", "key 3", "key 4", "key 5", "key 1", "key Left\nkey Right"});
    ASSERT_EQ(shots.size(), 7U);
    std::vector<Png_Pixels> images;
    for (const Shot& shot : shots) {
        images.push_back(replay_tests::read_colors(shot.file));
        EXPECT_EQ(shot.call, 5);
    }
    // The dot is nearest and white, the farthest face dark, and where nothing is drawn it is black.
    EXPECT_EQ(color_at(images[1], 60, 67), "255 255 255");
    EXPECT_EQ(color_at(images[1], 60, 60), "186 186 186");
    EXPECT_EQ(color_at(images[1], 0, 0), "0 0 0");
    EXPECT_EQ(color_at(images[1], 60, 20), "48 48 48");
    EXPECT_EQ(color_at(images[2], 0, 0), color_at(images[2], 60, 60));
    // Drawn once in the corner, by the first and the last face above; by all but the hidden one in the middle.
    EXPECT_NE(color_at(images[3], 0, 0), color_at(images[3], 60, 20));
    EXPECT_NE(color_at(images[3], 60, 20), color_at(images[3], 60, 60));
    EXPECT_EQ(color_at(images[3], 60, 67), "255 255 255") << "under the dot";
    EXPECT_NE(color_at(images[4], 0, 0), color_at(images[4], 60, 60));
    // The times below may have become shorter.
    const auto image_of = [](Png_Pixels shot) {
        shot.height = 128;
        shot.bytes.resize(shot.bytes.size() / 201 * 128);
        return shot;
    };
    EXPECT_EQ(replay_tests::difference(image_of(images[5]), image_of(images[0])), "");
    EXPECT_EQ(replay_tests::difference(image_of(images[6]), image_of(images[0])), "");
}

TEST_F(Inspect_Command, moves_and_zooms_and_shows_its_keys) {
    const std::vector<std::string> steps{
        "key m\nkey m", "wheel 3 60,60", "drag left 60,60 90,80", "drag right 90,80 60,60", "key r",         "key +", "key r",
        "key h",        "key h",         "click 60,66",           "click 60,66\nkey -",     "resize 300x260"};
    std::vector<std::string> images;
    for (const Shot& shot : shots_after(steps)) {
        images.push_back(replay_tests::read_file(shot.file));
    }
    ASSERT_EQ(images.size(), steps.size());
    for (const std::size_t same : {4U, 6U, 8U}) {
        EXPECT_EQ(images[same] == images[0], true) << steps[same];
    }
    EXPECT_EQ(images[3] == images[1], true) << "moved back";
    EXPECT_EQ(std::set<std::string>(images.begin(), images.end()).size(), 8U);
}

TEST_F(Inspect_Command, says_in_one_line_what_is_wrong) {
    const std::string broken = folder.file("broken.json", R"({"picture": 1, "window": {"width": 4, "height": 4}, "calls": [
        {"call": "draw_dci_dot", "point": [4, 1, 9]}]})");
    const Outcome refused = replay_tests::run_vorna({"inspect", broken});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.errors, HasSubstr("vorna: " + broken + ": calls[0].point: "));
    EXPECT_EQ(replay_tests::run_vorna({"inspect", broken, "--unchecked", "--script", folder.file("script", "key q\n")}).status,
              0);
    EXPECT_THAT(inspect("", {"--size", "0x5"}).errors, HasSubstr("--size: expected WIDTHxHEIGHT"));
    EXPECT_THAT(inspect("", {"--max-memory", "1K"}).errors, HasSubstr("--max-memory"));
    EXPECT_THAT(inspect("key Insert\n").errors, HasSubstr("expected a letter, a sign, F1, Escape, Home, End, PageUp, PageDown"));
    unsetenv("SDL_VIDEODRIVER");
    unsetenv("WAYLAND_DISPLAY");
    unsetenv("DISPLAY");
    const Outcome outcome = inspect("");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "vorna: inspect: no display to open a window on: neither DISPLAY nor WAYLAND_DISPLAY is set\n");
}

// Whether the image has the line of text somewhere at its left side.
bool has_text(const Png_Pixels& image, const std::string& line) {
    const auto panel = text_panel({line}, 1);
    const auto is_lit = [](VT_RGB32 color) { return color.red != panel_background.red; };
    const auto row_at = [&](std::int32_t y) { return reinterpret_cast<const VT_RGB32*>(panel->row(y)); };
    std::vector<VT_Int_Pair> lit;
    for (std::int32_t y = 0; y < panel->height(); ++y) {
        for (std::int32_t x = 0; x < panel->width(); ++x) {
            if (is_lit(row_at(y)[x])) {
                lit.push_back({x, y});
            }
        }
    }
    for (std::uint32_t top = 0; top + static_cast<std::uint32_t>(panel->height()) <= image.height; ++top) {
        const auto is_in_image = [&](VT_Int_Pair at) {
            const std::size_t pixel = (top + static_cast<std::size_t>(at.y)) * image.width + static_cast<std::size_t>(at.x);
            return image.bytes[4 * pixel] == row_at(at.y)[at.x].red;
        };
        if (std::ranges::all_of(lit, is_in_image)) {
            return !lit.empty();
        }
    }
    return false;
}

TEST_F(Inspect_Command, tells_of_changes_in_the_image_that_is_shown) {
    const std::string cut = folder.file("cut.json", R"({"picture": 1, "window": {"width": 40, "height": 30},
        "output": [10, 29, 5, 24], "calls": [
        {"call": "draw_window", "rectangle": [0, 39, 0, 29], "color": [10, 20, 30]},
        {"call": "draw_window", "rectangle": [0, 14, 20, 29], "color": [200, 0, 0]},
        {"call": "draw_window", "rectangle": [0, 5, 0, 3], "color": [0, 90, 0]}]})");
    const Outcome outcome = replay_tests::run_vorna({"inspect", cut, "--size", "500x150", "--screenshots", folder.file(""),
                                                     "--script", folder.file("script", "key c\nkey Left\nkey c\nkey q\n")});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const Png_Pixels last = replay_tests::read_colors(folder.file("cut-001.png")),
                     second = replay_tests::read_colors(folder.file("cut-002.png"));
    EXPECT_TRUE(has_text(last, "changed 24 colours and 0 depths, none of them in the image"));
    EXPECT_TRUE(has_text(second, "changed 150 colours and 0 depths in columns 0 to 4, rows 0 to 4"));
    EXPECT_FALSE(has_text(second, "changed 150 colours and 0 depths in columns 0 to 4, rows 0 to 5"));
}

// A recording without calls, and one whose window changes.
TEST_F(Inspect_Command, shows_recordings_of_any_form) {
    const std::string empty = folder.file("empty.json", R"({"picture": 1, "calls": []})");
    const auto show = [&](const std::string& file, const std::string& script) {
        return replay_tests::run_vorna({"inspect", file, "--size", "200x150", "--screenshots", folder.file(""), "--script",
                                        folder.file("script", script + "key q\n")});
    };
    const std::string keys = "key Left\nkey t\nkey 2\nkey 4\nclick 100,30\nkey Up\nkey PageDown\nclick 50,130\nkey c\n";
    EXPECT_EQ(show(empty, keys).output, folder.file("empty-001.png") + "\n");
    const std::string changing = folder.file("changing.json", R"({"picture": 1, "window": {"width": 30, "height": 20}, "calls": [
        {"call": "draw_window", "rectangle": [0, 29, 0, 19], "color": [20, 40, 60]},
        {"call": "establish", "window": {"width": 9, "height": 40}, "buffer_depth": 0, "color_system": 0},
        {"call": "draw_window", "rectangle": [0, 29, 0, 19], "index": 5}]})");
    const Outcome outcome = show(changing, keys + "key Left\nkey Left\nclick 100,30\nkey c\n");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
}

} // namespace
} // namespace vorna::app::view

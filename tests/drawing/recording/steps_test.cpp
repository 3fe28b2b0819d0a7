// Recordings that are drawn call by call, forwards and backwards.
#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/files/load_limits.h"
#include "drawing/recording/recording_reader.h"
#include "drawing/recording/step_views.h"
#include "drawing/recording/steps.h"
#include "tests/support/command_line.h"

namespace {

using namespace vorna::drawing;
using namespace vorna::drawing::recording;
using testing::ElementsAre;

const Module_Choice module{KRB_MODULE, {}};

// Everything that calls can change besides pixels: buffers of another size and kind, options, depth rules.
const std::string changing = R"({"picture": 1, "window": {"width": 90, "height": 70, "origin": [5, -3]},
    "options": {"Depth Blocks": true}, "rendition": {"face": {"color": [200, 100, 0]}}, "calls": [
    {"call": "clear_depth_rectangle", "rectangle": [5, 94, -3, 66]},
    {"call": "draw_dci_polytriangle", "points": [[8, 0, 900], [90, 5, 100], [30, 60, 500]]},
    {"call": "set_zbuffer_write", "value": false},
    {"call": "draw_dci_polytriangle", "points": [[8, 60, 50], [90, 55, 60], [40, 0, 400]], "rendition": {"face": {"color": [0, 9, 255]}}},
    {"call": "set_zbuffer_test", "value": 5},
    {"call": "draw_dci_polytriangle", "points": [[5, 30, 300], [94, 30, 300], [40, 66, 300]], "rendition": {"face": {"color": [9, 200, 9]}}},
    {"call": "establish", "color_system": 0},
    {"call": "draw_window", "rectangle": [10, 40, 0, 30], "index": 17},
    {"call": "set_zbuffer_write", "value": true},
    {"call": "draw_dci_polytriangle", "points": [[8, 10, 700], [90, 15, 800], [30, 50, 600]], "rendition": {"face": {"index": 40}}},
    {"call": "establish", "color_system": 1, "window": {"width": 64, "height": 130}, "options": {"Use Mask": true}},
    {"call": "draw_window", "rectangle": [5, 68, -3, 126], "color": [30, 30, 90]},
    {"call": "read_color_image", "top_left": [5, 9], "bottom_right": [9, 5], "format": 2},
    {"call": "establish"},
    {"call": "draw_dci_polytriangle", "points": [[8, 0, 900], [60, 5, 100], [30, 120, 500]],
     "rendition": {"complex_clip": [[[10, 10], [50, 10], [50, 40], [10, 40]]]}},
    {"call": "establish", "buffer_depth": 0},
    {"call": "draw_dci_polyline", "points": [[8, 0, 0], [60, 110, 0]], "rendition": {"line": {"weight": 3}}}]})";

std::string text_of(const std::string& name) {
    return replay_tests::read_file(std::string(VORNA_PICTURES) + '/' + name + ".json");
}

std::string bytes_of(const Raster& raster) {
    return raster.top ? raw_bytes_of(raster) : std::string();
}

// What a replay leaves before the first call and after each one.
struct State {
    std::string colors, depths;
    VT_Int_Rectangle window;

    friend bool operator==(const State&, const State&) = default;
};

std::vector<State> states_of(const Recording& recording) {
    Session session(module);
    std::vector<State> states;
    const auto note = [&](std::size_t) {
        states.push_back({bytes_of(raster_of(session.color_buffer())),
                          session.has_depth_buffer() ? bytes_of(raster_of(*session.read_depth())) : "", session.window()});
    };
    Replay_Settings settings;
    settings.before_call = [&](std::size_t call) { call == 0 ? note(call) : void(); };
    settings.after_call = note;
    replay(recording, session, settings);
    return states;
}

State state_of(const Recording_Steps& steps) {
    return {bytes_of(steps.colors()), bytes_of(steps.depths()), steps.window()};
}

class Steps : public testing::TestWithParam<std::string> {};

// With states after nearly every call, with a few, of which most are given up again, and with none.
TEST_P(Steps, show_at_every_position_what_a_replay_draws_up_to_there) {
    const Recording recording = read_recording(GetParam() == "changing" ? changing : text_of(GetParam()));
    const std::vector<State> states = states_of(recording);
    ASSERT_EQ(states.size(), recording.calls.size() + 1);
    for (const std::uint64_t memory : {std::uint64_t{1} << 30, std::uint64_t{600000}, std::uint64_t{0}}) {
        for (const bool has_heat : {false, true}) {
            Recording_Steps steps(recording, module, {.memory = memory, .interval = 1, .has_heat = has_heat});
            std::mt19937 random(20);
            std::vector<std::size_t> positions{0, states.size() - 1, states.size() - 2, 1, states.size() + 5};
            for (std::size_t i = 0; i < 2 * states.size() && i < 60; ++i) {
                positions.push_back(random() % states.size());
            }
            for (const std::size_t position : positions) {
                steps.go_to(position);
                ASSERT_EQ(steps.position(), std::min(position, states.size() - 1));
                ASSERT_TRUE(state_of(steps) == states[steps.position()]) << position << " with " << memory << " bytes";
                ASSERT_LE(steps.memory_used(), memory);
            }
            EXPECT_TRUE(steps.memory_used() > 0 || memory < std::uint64_t{1} << 30);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Recordings, Steps,
                         testing::Values("changing", "crystals", "depth-modes", "gallery", "glass", "strokes"));

// Pixels of an image whose top row is first, as letters.
template <class Pixel, class Letter>
std::vector<std::string> rows_of(const std::vector<Pixel>& pixels, std::size_t width, const Letter& letter) {
    std::vector<std::string> rows;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (i % width == 0) {
            rows.emplace_back();
        }
        rows.back() += letter(pixels[i]);
    }
    return rows;
}

constexpr auto digit = [](auto number) { return static_cast<char>('0' + static_cast<int>(number)); };

const std::string overlapping = R"({"picture": 1, "window": {"width": 6, "height": 3}, "calls": [
    {"call": "clear_depth_rectangle", "rectangle": [0, 5, 0, 2]},
    {"call": "draw_window", "rectangle": [0, 3, 0, 1], "color": [9, 9, 9]},
    {"call": "draw_window", "rectangle": [2, 5, 1, 2], "color": [9, 9, 9]},
    {"call": "draw_dci_dot", "point": [2, 2, 40], "color": [1, 2, 3]},
    {"call": "draw_dci_dot", "point": [2, 2, 50], "color": [4, 5, 6]},
    {"call": "set_zbuffer_write", "value": false}]})";

TEST(Step_Changes, are_the_pixels_that_hold_something_else) {
    const Recording recording = read_recording(overlapping);
    Recording_Steps steps(recording, module);
    const auto change_at = [&](std::size_t position) {
        steps.go_to(position);
        const Step_Change& change = steps.change();
        const auto [left, right, bottom, top] = change.bounds;
        return std::tuple(std::vector{left, right, bottom, top}, change.colors, change.depths,
                          rows_of(change.pixels, static_cast<std::size_t>(right - left + 1), digit));
    };
    using Change = decltype(change_at(0));
    const Change nothing({0, -1, 0, -1}, 0, 0, {});
    const std::vector<Change> changes{nothing,
                                      {{0, 5, 0, 2}, 0, 18, {"222222", "222222", "222222"}},
                                      {{0, 3, 0, 1}, 8, 0, {"1111", "1111"}},
                                      {{2, 5, 1, 2}, 6, 0, {"1111", "0011"}},
                                      {{2, 2, 2, 2}, 1, 1, {"3"}},
                                      nothing,
                                      nothing};
    for (const std::size_t position : {6U, 0U, 3U, 2U, 4U, 1U, 5U, 6U, 4U}) {
        EXPECT_EQ(change_at(position), changes[position]) << position;
    }
}

// A call that draws the same colour again counts, one that is hidden does not.
TEST(Step_Heat_Maps, count_the_calls_that_draw_a_pixel) {
    const Recording recording = read_recording(overlapping);
    Recording_Steps steps(recording, module, {.interval = 0, .has_heat = true});
    const auto draws_at = [&](std::size_t position) {
        steps.go_to(position);
        return rows_of(steps.heat()->draws, 6, digit);
    };
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(draws_at(6), ElementsAre("002111", "112211", "111100"));
        EXPECT_THAT(draws_at(2), ElementsAre("000000", "111100", "111100"));
        EXPECT_THAT(draws_at(1), ElementsAre("000000", "000000", "000000"));
        EXPECT_THAT(draws_at(3), ElementsAre("001111", "112211", "111100"));
    }
    // The time of each call that drew anything is shared by its pixels.
    double time = 0, sum = 0;
    Recording_Steps once(recording, module, {.has_heat = true});
    once.go_to(6);
    for (const std::size_t call : {0U, 1U, 2U, 3U}) {
        time += once.microseconds(call).value();
    }
    std::ranges::for_each(once.heat()->costs, [&](float cost) { sum += cost; });
    EXPECT_NEAR(sum, time, time * 1e-5);
    EXPECT_EQ(Recording_Steps(recording, module).heat(), nullptr);
}

TEST(Step_Views, show_depths_clips_and_heat) {
    const Recording recording = read_recording(R"({"picture": 1, "window": {"width": 4, "height": 2, "origin": [10, 20]},
        "options": {"Use Mask": true}, "calls": [
        {"call": "clear_depth_rectangle", "rectangle": [10, 13, 20, 21]},
        {"call": "draw_dci_dot", "point": [10, 21, 100], "color": [255, 0, 0]},
        {"call": "draw_dci_dot", "point": [11, 21, 300], "color": [255, 0, 0]},
        {"call": "draw_dci_dot", "point": [12, 20, 200], "color": [0, 0, 255], "rendition": {"hard_clip": [11, 13, 20, 21],
         "complex_clip": [[[10, 20], [13, 20], [13, 21], [10, 21]]]}}]})");
    Recording_Steps steps(recording, module, {.has_heat = true});
    const auto shown = [&](Step_View view) {
        const Step_Image image = image_of(steps, view);
        return rows_of(image.pixels, 4, [](VT_RGB32 c) { return c.red == 255 && c.blue < 255 ? 'r' : digit(c.green / 26); });
    };
    steps.go_to(4);
    EXPECT_THAT(shown(Step_View::colors), ElementsAre("rr00", "0000"));
    EXPECT_THAT(shown(Step_View::depths), ElementsAre("9100", "0050"));
    EXPECT_EQ(image_of(steps, Step_View::depths).legend, "depths 100 white to 300 dark, 65535 black");
    // A pixel is in the complex clip when its centre is: the lower row and the columns up to 12.
    EXPECT_THAT(shown(Step_View::mask), ElementsAre("1111", "1881"));
    EXPECT_EQ(image_of(steps, Step_View::mask).legend, "light: 2 of 8 pixels that the clips of the call let through");
    EXPECT_EQ(image_of(steps, Step_View::overdraw).legend, "draws a pixel: 1 dark red to 1 white, 1.00 on average");
    steps.go_to(3);
    EXPECT_THAT(shown(Step_View::mask), ElementsAre("8888", "8888"));
    steps.go_to(0);
    EXPECT_EQ(image_of(steps, Step_View::cost).legend, "nothing drawn yet");
}

// A call that a replay refuses leaves the position before it.
TEST(Step_Failures, name_the_call_and_keep_the_position) {
    const Recording recording = read_recording(R"({"picture": 1, "window": {"width": 4, "height": 4}, "calls": [
        {"call": "draw_dci_dot", "point": [1, 1, 9], "color": [255, 0, 0]}, {"call": "draw_dci_dot", "point": [4, 1, 9]}]})");
    Recording_Steps steps(recording, module);
    try {
        steps.go_to(2);
        ADD_FAILURE();
    } catch (const vorna::drawing::Usage_Error& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("calls[1].point"));
    }
    EXPECT_EQ(steps.position(), 1U);
    // 7 bytes a pixel, and with heat 19, are drawn from the limits; they are given back.
    Load_Limits limits(std::uint64_t{16 * 7});
    for (int i = 0; i < 2; ++i) {
        const Recording_Steps fitting(recording, module, {.name = "r", .limits = &limits});
    }
    EXPECT_THROW(Recording_Steps(recording, module, {.has_heat = true, .name = "r", .limits = &limits}), Load_Error);
    Replay_Settings unchecked;
    unchecked.unchecked = true;
    Recording_Steps trusting(recording, module, {.replay = unchecked});
    trusting.go_to(2);
    EXPECT_EQ(trusting.position(), 2U);
}

} // namespace

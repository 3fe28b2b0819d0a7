// What happened at pixels of a replay: the values of a whole replay after every call, and the rules that refuse.
#include <cstring>
#include <iterator>
#include <nlohmann/json.hpp>
#include <span>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/check/configuration.h"
#include "app/check/scene.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/pixel_history.h"
#include "drawing/recording/recorder.h"
#include "drawing/recording/recording_file.h"
#include "tests/support/command_line.h"

namespace pixel_history_tests {

namespace {

using namespace vorna::drawing::recording;
using nlohmann::json;
using replay_tests::run_vorna;
using replay_tests::Temporary_Folder;
using testing::ElementsAre;
using testing::HasSubstr;
using vorna::app::check::Random;

const vorna::drawing::Module_Choice module{KRB_MODULE, ""};

// Calls of every slot with random attributes, regions and depth rules, and buffers that are made anew in between.
Recording random_recording(const vorna::app::check::Configuration& configuration, std::uint64_t seed) {
    Random random(seed);
    vorna::app::check::Window window{
        {random.number(1, 90), random.number(1, 90)}, {random.number(-30, 30), random.number(-30, 30)}, 0};
    vorna::drawing::Session session(module);
    Recorder recorder(session);
    session.canvas().set_option("Use Mask", true);
    session.canvas().set_option("Enable Tiling", true);
    configure(session.options(), configuration, window.size, window.origin);
    session.establish();
    for (const bool is_last : {false, true}) {
        for (const vorna::app::check::Call& call : random_scene(random, window, 3, vorna::app::check::Callee::drawing_function)) {
            if (random.chance(20)) {
                call.rendition->clip.complex_clip = random_region(random, window.area());
            }
            if (random.chance(20)) {
                session.canvas().set_depth_write(random.chance(70));
                session.canvas().set_depth_test(vorna::Depth_Test{random.one_of(std::vector<std::int32_t>{1, 2, 5})});
            }
            call.draw_with(session.renderer());
        }
        if (!is_last) {
            window.size = random.chance(50) ? window.size : VT_Int_Pair{window.size.y, window.size.x};
            configure(session.options(), random.chance(50) ? configuration : vorna::app::check::configurations[seed % 6],
                      window.size, window.origin);
            session.establish();
        }
    }
    return recorder.finish();
}

// What one renderer that draws everything has at these pixels of the image, after each call.
class Whole_Replay {
public:
    Whole_Replay(const Recording& recording, const std::vector<Pixel_History>& histories) {
        vorna::drawing::Session trial(module), session(module);
        Replay_Settings settings{.unchecked = true};
        replay(recording, trial, settings);
        last_ = trial.window();
        settings.after_call = [&](std::size_t) {
            const VT_Int_Rectangle window = session.window();
            const Frame_Buffer& buffer = session.color_buffer();
            values_.emplace_back();
            for (const Pixel_History& history : histories) {
                // A pixel stays where it is in the buffer when the window moves.
                const VT_Int_Pair place{history.device.x - last_.left, history.device.y - last_.bottom};
                Pixel_Value value;
                if (place.x <= window.right - window.left && place.y <= window.top - window.bottom) {
                    const std::uint8_t* const row = buffer.rows[place.y];
                    const bool is_indexed = buffer.format == Buffer_Format::index8;
                    value.kind = is_indexed ? Pixel_Value::Kind::index : Pixel_Value::Kind::color;
                    std::memcpy(&value.color, row + place.x * (is_indexed ? 1 : 4), is_indexed ? 1 : 4);
                    value.has_depth = session.has_depth_buffer();
                    if (value.has_depth) {
                        std::memcpy(&value.depth, session.canvas().depth_buffer().rows[place.y] + place.x * 2, 2);
                    }
                }
                values_.back().push_back(value);
            }
        };
        replay(recording, session, settings);
    }

    const std::vector<Pixel_Value>& after(std::size_t call) const { return values_[call]; }

private:
    VT_Int_Rectangle last_;
    std::vector<std::vector<Pixel_Value>> values_;
};

void expect_whole(const Recording& recording, const std::vector<Pixel_History>& histories, const std::string& place) {
    const Whole_Replay whole(recording, histories);
    for (std::size_t i = 0; i < histories.size(); ++i) {
        const Pixel_History& history = histories[i];
        Pixel_Value value = history.first;
        auto event = history.events.begin();
        for (std::size_t call = 0; call < recording.calls.size(); ++call) {
            if (event != history.events.end() && event->call == call) {
                ASSERT_EQ(event->before, value) << place << ", call " << call;
                const bool draws = event->outcome != Outcome::refused && event->outcome != Outcome::outside;
                ASSERT_TRUE(draws || event->before == event->after) << place << ", call " << call;
                value = event->after;
                ++event;
            }
            ASSERT_EQ(value, whole.after(call)[i]) << place << ", call " << call << ' ' << recording.calls[call].kind->name;
        }
        ASSERT_EQ(history.last, value);
        ASSERT_EQ(event, history.events.end());
    }
}

std::vector<VT_Int_Pair> all_pixels(VT_Int_Pair size) {
    std::vector<VT_Int_Pair> pixels;
    for (std::int32_t y = 0; y < size.y; ++y) {
        for (std::int32_t x = 0; x < size.x; ++x) {
            pixels.push_back({x, y});
        }
    }
    return pixels;
}

TEST(Pixel_History, has_the_values_of_a_whole_replay_after_every_call) {
    std::size_t pixels = 0, unexplained = 0, refused = 0;
    std::uint64_t seed = 0;
    for (const auto& configuration : vorna::app::check::configurations) {
        for (int i = 0; i < 2; ++i) {
            const Recording recording = random_recording(configuration, ++seed);
            const std::string place = std::string(configuration.name) + ", seed " + std::to_string(seed);
            const Replay_Histories histories(recording, module, {.replay = {.unchecked = true}, .has_outside = true});
            const std::vector<VT_Int_Pair> all = all_pixels(histories.image_size());
            const std::vector<Pixel_History> found = histories.of_pixels(all);
            expect_whole(recording, found, place);
            pixels += found.size();
            for (const Pixel_History& history : found) {
                for (const Pixel_Event& event : history.events) {
                    refused += event.outcome == Outcome::refused;
                    unexplained += event.outcome == Outcome::refused && event.rules == Rules();
                }
            }
            // A pixel alone is drawn in its own row only.
            for (std::size_t k = 0; k < all.size(); k += 211) {
                const std::vector<Pixel_History> alone = histories.of_pixels(std::span(&all[k], 1));
                ASSERT_EQ(alone[0].last, found[k].last) << place;
                ASSERT_EQ(alone[0].events.size(), found[k].events.size()) << place;
                for (std::size_t e = 0; e < alone[0].events.size(); ++e) {
                    ASSERT_EQ(alone[0].events[e].outcome, found[k].events[e].outcome) << place;
                    ASSERT_EQ(alone[0].events[e].after, found[k].events[e].after) << place;
                }
            }
        }
    }
    EXPECT_GT(pixels, 10000U);
    // Nearly always one rule is enough.
    EXPECT_LT(100 * unexplained, refused);
}

TEST(Pixel_History, of_examples_is_that_of_whole_replays) {
    for (const auto& entry : std::filesystem::directory_iterator(VORNA_PICTURES)) {
        if (entry.path().extension() != ".json") {
            continue;
        }
        vorna::drawing::Load_Limits limits;
        const Recording recording = load(entry.path().string(), limits);
        const Replay_Histories histories(recording, module, {.replay = {.unchecked = true}});
        const VT_Int_Pair size = histories.image_size();
        Random random(7);
        std::vector<VT_Int_Pair> pixels;
        for (int i = 0; i < 200; ++i) {
            pixels.push_back({random.number(0, size.x - 1), random.number(0, size.y - 1)});
        }
        expect_whole(recording, histories.of_pixels(pixels), entry.path().filename().string());
    }
}

// Calls that each rule keeps from the pixel at column 5, row 10 from the top, alone or together.
const std::string rules = R"({"picture": 1, "window": {"width": 16, "height": 16}, "options": {"Use Mask": true}, "calls": [
    {"call": "draw_window", "rectangle": [0, 15, 0, 15], "color": [255, 255, 255]},
    {"call": "clear_depth_rectangle", "rectangle": [0, 15, 0, 15]},
    {"call": "draw_2di_polytriangle", "points": [0, 0, 100, 15, 0, 100, 0, 15, 100], "rendition": {"face": {"color": [255, 0, 0]}}},
    {"call": "draw_2di_polytriangle", "points": [0, 0, 300, 15, 0, 300, 0, 15, 300]},
    {"call": "draw_2di_polytriangle", "points": [0, 0, 50, 15, 0, 50, 0, 15, 50], "rendition": {"hard_clip": [0, 3, 0, 15]}},
    {"call": "draw_2di_polytriangle", "points": [0, 0, 50, 15, 0, 50, 0, 15, 50],
     "rendition": {"complex_clip": [[[0, 0], [3, 0], [3, 3]]]}},
    {"call": "draw_2di_polytriangle", "points": [0, 0, 50, 15, 0, 50, 0, 15, 50], "rendition": {"face": {"pattern": 0}}},
    {"call": "draw_2di_polytriangle", "points": [0, 15, 50, 15, 0, 50, 15, 15, 50]},
    {"call": "draw_2di_polytriangle", "points": [0, 0, 400, 15, 0, 400, 0, 15, 400], "rendition": {"hard_clip": [0, 3, 0, 15]}},
    {"call": "draw_2di_polytriangle", "points": [0, 0, 9, 15, 0, 9, 0, 15, 9],
     "rendition": {"depth_test": false, "drawing_mode": 20, "face": {"color": [255, 255, 255]}}},
    {"call": "draw_dci_dot", "point": [5, 5, 10], "color": [0, 0, 255]},
    {"call": "set_zbuffer_test", "value": 5},
    {"call": "draw_dci_dot", "point": [5, 5, 10], "color": [0, 255, 0]},
    {"call": "draw_dci_dot", "point": [15, 15, 10], "color": [0, 255, 0]}]})";

json events_of(const std::string& recording, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"replay", "-", "--pixel", "5,10", "--json"});
    const replay_tests::Outcome outcome = run_vorna(options, recording);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    return json::parse(outcome.output)["pixels"][0];
}

TEST(Pixel_History, names_the_rules_that_refuse) {
    const json pixel = events_of(rules, {"--all"});
    EXPECT_EQ(pixel["pixel"], json({5, 10}));
    EXPECT_EQ(pixel["device"], json({5, 5}));
    EXPECT_EQ(pixel["last"], json({{"color", {0, 0, 255, 255}}, {"depth", 10}}));
    std::vector<std::string> found;
    for (const json& event : pixel["events"]) {
        found.push_back(event["call"].dump() + ' ' + event["outcome"].get<std::string>() + ' ' +
                        event.value("rules", json::array()).dump());
    }
    EXPECT_THAT(found,
                ElementsAre("0 drawn []", "1 drawn []", "2 drawn []", R"(3 refused ["depth"])", R"(4 refused ["clip"])",
                            R"(5 refused ["mask"])", R"(6 refused ["pattern"])", "7 outside []", R"(8 refused ["clip","depth"])",
                            R"(9 refused ["mode"])", "10 drawn []", R"(12 refused ["depth"])"));
    EXPECT_EQ(pixel["events"][0]["drawn_over_by"], 2);
    EXPECT_EQ(pixel["events"][2]["drawn_over_by"], 10);
    EXPECT_EQ(pixel["events"][10]["drawn_over_by"], nullptr);
    EXPECT_FALSE(pixel["events"][1]["writes_color"].get<bool>());
    EXPECT_EQ(pixel["events"][1]["after"]["depth"], 65535);
    EXPECT_EQ(events_of(rules)["outside"], 1);
    EXPECT_EQ(events_of(rules)["events"].size(), found.size() - 1);
    EXPECT_EQ(events_of(rules, {"--until", "2"})["last"]["color"], json({255, 0, 0, 255}));

    const std::string text = run_vorna({"replay", "-", "--pixel", "5,10"}, rules).output;
    for (const char* line : {"pixel 5,10 from the top left, device coordinates 5,5: #0000ff at depth 10\n",
                             "drew #ff0000 over #ffffff, depth 65535 to 100; drawn over by call 10  [face #ff0000]\n",
                             "refused: depth (200 behind, 300 against 100)  [face #000000]\n",
                             "refused: clip, depth (300 behind, 400 against 100)  [face #000000, clip 0 to 3, 0 to 15]\n",
                             "refused: depth (equal, 10 against 10)  [colour #00ff00]\n", "1 more call comes near"}) {
        EXPECT_THAT(text, HasSubstr(line));
    }
}

TEST(Pixel_History, tells_blended_colours_from_stored_ones) {
    const json pixel =
        events_of(R"({"picture": 1, "window": {"width": 16, "height": 16}, "buffer_depth": 0, "alpha_blending": true, "calls": [
        {"call": "draw_window", "rectangle": [0, 15, 0, 15], "color": [10, 20, 30]},
        {"call": "draw_2di_polytriangle", "points": [[0, 0], [15, 0], [0, 15]], "rendition": {"face": {"color": [0, 0, 200, 128]}}},
        {"call": "draw_2di_polytriangle", "points": [[0, 0], [15, 0], [0, 15]], "rendition": {"face": {"color": [9, 9, 9, 0]}}},
        {"call": "draw_window", "rectangle": [0, 15, 0, 15], "color": [10, 20, 30]},
        {"call": "draw_window", "rectangle": [0, 15, 0, 15], "color": [10, 20, 30]},
        {"call": "establish", "window": {"width": 20}}]})");
    std::vector<std::string> found;
    for (const json& event : pixel["events"]) {
        found.push_back(event["outcome"].get<std::string>() + ' ' + event.value("rules", json::array()).dump() + ' ' +
                        event["drawn_over_by"].dump());
    }
    EXPECT_THAT(found, ElementsAre("drawn [] 3", "blended [] 3", R"(refused ["alpha"] null)", "drawn [] 4", "drawn [] 5",
                                   "renewed [] null"));
    EXPECT_EQ(pixel["events"][4]["before"], pixel["events"][4]["after"]);
    EXPECT_EQ(pixel["last"], json({{"color", {0, 0, 0, 0}}}));
}

// Colour system 7 keeps the buffer of colours. Its bytes depend on depths of other columns, from calls before it too.
TEST(Pixel_History, has_the_values_of_indices_in_buffers_of_colors) {
    for (const char* depth : {"0", "16"}) {
        const std::string head = R"({"picture": 1, "window": {"width": 16, "height": 16}, "buffer_depth": )";
        const std::string text = head + depth + R"(, "calls": [
            {"call": "draw_window", "rectangle": [0, 15, 0, 15], "color": [1, 2, 3]},
            {"call": "clear_depth_rectangle", "rectangle": [0, 12, 0, 15]},
            {"call": "draw_2di_polytriangle", "points": [8, 0, 50, 15, 0, 50, 15, 15, 50]},
            {"call": "establish", "color_system": 7},
            {"call": "draw_dci_dot", "point": [5, 3, 20], "color": [200, 100, 50]},
            {"call": "draw_2di_polytriangle", "points": [0, 0, 60, 15, 0, 60, 0, 15, 60], "rendition": {"face": {"index": 77}}},
            {"call": "draw_2di_polyline", "points": [15, 0, 9, 9, 15, 9], "rendition": {"line": {"index": 5}}},
            {"call": "establish", "color_system": 1},
            {"call": "draw_dci_dot", "point": [2, 9, 5], "color": [9, 8, 7]}]})";
        vorna::drawing::Load_Limits limits;
        const Temporary_Folder folder;
        const Recording recording = load(folder.file("kept.json", text), limits);
        const Replay_Histories histories(recording, module, {.replay = {.unchecked = true}});
        std::size_t changed_by_dot = 0;
        for (const VT_Int_Pair pixel : all_pixels(histories.image_size())) { // alone, so that other columns are not watched
            const std::vector<Pixel_History> found = histories.of_pixels(std::span(&pixel, 1));
            expect_whole(recording, found, text);
            for (const Pixel_Event& event : found[0].events) {
                changed_by_dot += event.call == 4 && event.before.color != event.after.color;
            }
        }
        EXPECT_EQ(changed_by_dot, 1U);
    }
}

TEST(Pixel_History, tells_new_depths_from_new_colors) {
    const std::string recording = R"({"picture": 1, "window": {"width": 16, "height": 16}, "calls": [
        {"call": "draw_window", "rectangle": [0, 15, 0, 15], "color": [9, 9, 9]},
        {"call": "establish", "buffer_depth": 0},
        {"call": "establish", "window": {"width": 20}}]})";
    const json pixel = events_of(recording);
    EXPECT_EQ(pixel["events"][0]["drawn_over_by"], 2);
    EXPECT_FALSE(pixel["events"][1]["writes_color"].get<bool>());
    EXPECT_TRUE(pixel["events"][2]["writes_color"].get<bool>());
    const std::string text = run_vorna({"replay", "-", "--pixel", "5,10"}, recording).output;
    EXPECT_THAT(text, HasSubstr("changed the depth buffer: #090909, was #090909 at depth 0\n"));
    EXPECT_THAT(text, HasSubstr("made new buffers: #00000000, was #090909\n"));
}

TEST(Pixel_History, leaves_pixels_out_that_smoothed_lines_do_not_cover) {
    for (const char* depth : {"0", "16"}) {
        const std::string recording =
            std::string(R"({"picture": 1, "window": {"width": 32, "height": 32}, "buffer_depth": )") + depth + R"(, "calls": [
            {"call": "draw_window", "rectangle": [0, 31, 0, 31], "color": [207, 121, 49]},
            {"call": "clear_depth_rectangle", "rectangle": [0, 31, 0, 31]},
            {"call": "draw_dci_polyline", "points": [[4, 20, 0], [28, 17, 0]],
             "rendition": {"line": {"color": [66, 7, 88], "flags": 2}}}]})";
        const json area = json::parse(run_vorna({"replay", "-", "--area", "0,0,32x32", "--json"}, recording).output);
        const json& line = area["calls"].back();
        EXPECT_GE(line["drawn"].get<int>() + line["blended"].get<int>(), 25);
        EXPECT_EQ(line["refused"], 0);
    }
}

TEST(Pixel_History, of_areas_counts_pixels) {
    const replay_tests::Outcome outcome = run_vorna({"replay", "-", "--area", "4,9,4x3", "--json"}, rules);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const json area = json::parse(outcome.output);
    EXPECT_EQ(area["area"], json({4, 9, 4, 3}));
    ASSERT_EQ(area["calls"].size(), 11U);
    EXPECT_EQ(area["calls"][0]["drawn"], 12);
    EXPECT_EQ(area["calls"][7]["refused_by"], json({{"clip", 12}, {"depth", 12}}));
    EXPECT_EQ(area["calls"][9]["drawn"], 1);
    EXPECT_EQ(area["calls"][9]["outside"], 11);
    EXPECT_THAT(run_vorna({"replay", "-", "--area", "4,9,4x3"}, rules).output,
                HasSubstr("       4  draw_2di_polytriangle                    0          0         12          0  clip 12  ["));
}

// The probe draws the near triangles at the left pixel too, where the region refuses them, and then sets the pixel back to the
// farthest depth: by the bounds of a block the last call would be hidden there.
TEST(Pixel_History, does_not_depend_on_depth_blocks) {
    const auto strip = [](int left, int depth, const std::string& more) {
        std::string points;
        for (const auto& [x, y] : {std::pair(left, 0), {63, 0}, {left, 63}, {63, 63}}) {
            points += (points.empty() ? "[" : ", [") + std::to_string(x) + ", " + std::to_string(y) + ", " +
                      std::to_string(depth) + "]";
        }
        return R"({"call": "draw_dci_polytriangle", "points": [)" + points + "]" + more + "}";
    };
    const auto histories_with = [&](const std::string& blocks) {
        const std::string text = R"({"picture": 1, "window": {"width": 64, "height": 64},
            "options": {"Use Mask": true, "Depth Blocks": )" +
                                 blocks + R"(}, "calls": [{"call": "clear_depth_rectangle", "rectangle": [0, 63, 0, 63]}, )" +
                                 strip(0, 100, R"(, "rendition": {"complex_clip": [[[8, 0], [63, 0], [63, 63], [8, 63]]]})") +
                                 ", " + strip(8, 500, "") + ", " + strip(0, 500, "") + "]}";
        return run_vorna({"replay", "-", "--pixel", "3,20", "--pixel", "12,20", "--pixel", "40,0", "--pixel", "40,63", "--json"},
                         text)
            .output;
    };
    const std::string expected = histories_with("false");
    EXPECT_THAT(json::parse(expected)["pixels"][0]["events"].back()["outcome"], "drawn");
    EXPECT_EQ(histories_with("true"), expected);
}

TEST(Pixel_History, options_are_refused_by_place) {
    const Temporary_Folder folder;
    const std::string file = folder.file("pixels.txt", "5,10 # the dot\r\n\n4,9\n");
    EXPECT_EQ(
        json::parse(run_vorna({"replay", "-", "--pixels", file, "--pixel", "0,0", "--json"}, rules).output)["pixels"].size(), 3U);
    const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
        {{"--pixel", "5"}, "--pixel: expected X,Y, a column and a row of the image from its top left, found '5'"},
        {{"--pixel", "5,10,1"}, "--pixel: expected X,Y"},
        {{"--pixel", "16,0"}, "--pixel: expected a pixel of the image of 16 x 16, found 16,0"},
        {{"--pixel", "0,-1"}, "found 0,-1"},
        {{"--pixels", folder.file("a.txt", "1,1\n\n2;2\n")}, "a.txt:3: expected X,Y, a column and a row"},
        {{"--pixels", folder.file("b.txt", "1,1\n\n2,99\n")}, "b.txt:3: expected a pixel of the image of 16 x 16, found 2,99"},
        {{"--pixels", folder.file("no")}, "cannot be read"},
        {{"--pixels", "-"}, "--pixels: expected a file beside a recording from standard input"},
        {{"--area", "1,1,2"}, "--area: expected X,Y,WxH"},
        {{"--area", "10,10,7x2"}, "--area: expected at most 4194304 pixels inside the image of 16 x 16, found '10,10,7x2'"},
        {{"--area", "1,1,1x0"}, "--area: expected at most"},
        {{"--all"}, "--all: expected --pixel, --pixels or --area beside it, found none"},
        {{"--json"}, "--json: expected --pixel"},
        {{"--pixel", "1,1", "--timing"}, "--timing: expected no --pixel beside it"}};
    for (const auto& [options, message] : wrong) {
        std::vector<std::string> arguments{"replay", "-"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const replay_tests::Outcome outcome = run_vorna(arguments, rules);
        EXPECT_EQ(outcome.status, 2) << message;
        EXPECT_THAT(outcome.errors, HasSubstr(message));
    }
    // Calls that are left out are checked all the same.
    const std::string far = R"({"picture": 1, "calls": [{"call": "draw_dci_dot", "point": [64, 0, 0]}]})";
    const replay_tests::Outcome outcome = run_vorna({"replay", "-", "--pixel", "0,0"}, far);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("calls[0].point: expected a point inside the window"));
}

// Every command of the page's section, and what it prints.
TEST(Pixel_History, page_shows_what_its_commands_print) {
    const std::string page = replay_tests::read_file(VORNA_PICTURES "/../docs/recordings.md");
    std::size_t at = page.find("### What happened at a pixel");
    const std::size_t end = page.find("\n### ", at + 1);
    const auto block = [&](const std::string& language) {
        const std::string fence = "\n```" + language + "\n";
        const std::size_t start = page.find(fence, at) + fence.size();
        at = page.find("\n```\n", start - 1);
        return page.substr(start, at + 1 - start);
    };
    int commands = 0;
    for (; page.find("\n```text\n", at) < end; ++commands) {
        std::istringstream words(block("sh"));
        std::vector<std::string> arguments{std::istream_iterator<std::string>(words), {}};
        ASSERT_EQ(arguments.at(0), "vorna");
        arguments.erase(arguments.begin());
        arguments.at(1) = VORNA_PICTURES "/../" + arguments.at(1);
        EXPECT_EQ(run_vorna(arguments).output, block("text"));
    }
    EXPECT_EQ(commands, 2);
}

} // namespace

} // namespace pixel_history_tests

// Recordings that the threads of a canvas draw.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/check/random.h"
#include "drawing/image/image_file.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_reader.h"
#include "drawing/recording/replay.h"

namespace {

using namespace vorna::drawing;
using namespace vorna::drawing::recording;
using nlohmann::json;
using vorna::app::check::Random;

constexpr int side = 200;

json random_points(Random& random, int count, int reach) {
    const int x = random.number(0, side - 1), y = random.number(0, side - 1);
    json points = json::array();
    const auto near = [&](int place) { return std::clamp(place + random.number(-reach, reach), 0, side - 1); };
    for (int i = 0; i < count; ++i) {
        points.push_back({near(x), near(y), random.number(0, 1000)});
    }
    return points;
}

json random_colors(Random& random, int count) {
    json colors = json::array();
    for (int i = 0; i < count; ++i) {
        colors.push_back({random.number(0, 255), random.number(0, 255), random.number(0, 255)});
    }
    return colors;
}

// Mostly short calls, between them long ones, changes of the depth rules and reads.
json random_call(Random& random) {
    const int kind = random.number(0, 99), count = random.number(2, 8);
    const auto points_of = [&](const char* name, int points, int reach) {
        json call{{"call", name}, {"points", random_points(random, points, reach)}};
        if (random.chance(20)) {
            call["rendition"] = {{"line", {{"color", random_colors(random, 1)[0]}, {"weight", random.number(1, 4)}}},
                                 {"face", {{"color", random_colors(random, 1)[0]}}}};
        }
        return call;
    };
    if (kind < 40) {
        return points_of("draw_2di_polyline", count, 12);
    }
    if (kind < 60) {
        return points_of("draw_dci_polyline", 2, 150);
    }
    if (kind < 75) {
        json call = points_of("draw_dci_gouraud_polytriangle", count + 1, 30);
        call["colors"] = random_colors(random, count + 1);
        return call;
    }
    if (kind < 85) {
        return points_of("draw_2di_polymarker", count, 40);
    }
    if (kind < 90) {
        return points_of("draw_2di_polyline", 120, 100);
    }
    if (kind < 94) {
        return {{"call", "draw_dci_dot"}, {"point", random_points(random, 1, 0)[0]}, {"color", random_colors(random, 1)[0]}};
    }
    if (kind < 96) {
        return {{"call", "set_zbuffer_write"}, {"value", random.chance(70)}};
    }
    if (kind < 98) {
        return {{"call", "set_zbuffer_test"}, {"value", random.chance(60) ? 2 : 1}};
    }
    return {{"call", "read_color_image"}, {"top_left", {20, 120}}, {"bottom_right", {90, 60}}, {"format", 2}};
}

Recording random_recording(std::uint64_t seed, int calls) {
    Random random(seed);
    json recording{{"picture", 1},
                   {"window", {{"width", side}, {"height", side}}},
                   {"calls", {{{"call", "clear_depth_rectangle"}, {"rectangle", {0, side - 1, 0, side - 1}}}}}};
    for (int i = 0; i < calls; ++i) {
        recording["calls"].push_back(random_call(random));
        if (i == calls / 2) {
            recording["calls"].push_back({{"call", "establish"}, {"color_system", seed % 2}});
        }
    }
    return read_recording(recording.dump());
}

std::string bytes_left_by(const Recording& recording, unsigned threads, bool reads_between = false) {
    Session session({KRB_MODULE, ""}, threads);
    std::string bytes;
    Replay_Settings settings{.reports_standard = false};
    settings.after_call = [&](std::size_t call) {
        if (reads_between && call % 500 == 499) {
            bytes += raw_bytes_of(raster_of(session.color_buffer()));
        }
    };
    for (const Report::Read& read : replay(recording, session, settings).reads) {
        bytes += read.image ? raw_bytes_of(raster_of(*read.image)) : "none";
    }
    return bytes + raw_bytes_of(raster_of(session.color_buffer())) + raw_bytes_of(raster_of(*session.read_depth()));
}

TEST(Replay_Threads, draw_recordings_as_one_thread_does) {
    for (const std::uint64_t seed : {1U, 2U}) {
        const Recording recording = random_recording(seed, 4000);
        for (const bool reads : {false, true}) {
            const std::string expected = bytes_left_by(recording, 1, reads);
            for (const unsigned threads : {2U, 3U, 7U}) {
                EXPECT_TRUE(bytes_left_by(recording, threads, reads) == expected) << "seed " << seed << ", threads " << threads;
            }
        }
    }
}

TEST(Replay_Threads, draw_recordings_that_ask_for_depth_blocks) {
    const Recording recording = read_recording(R"({"picture": 1, "window": {"width": 8, "height": 8},
        "options": {"Depth Blocks": true}, "calls": [{"call": "draw_dci_dot", "point": [3, 4, 5], "color": [1, 2, 3]}]})");
    EXPECT_EQ(bytes_left_by(recording, 2), bytes_left_by(recording, 1));
}

TEST(Replay_Threads, draw_what_was_kept_before_a_call_that_is_refused) {
    Recording recording = random_recording(5, 60000);
    std::get<Points<VT_DCI_Point>>(recording.calls
                                       .emplace_back(read_recording(R"({"picture": 1, "calls": [
        {"call": "draw_dci_polyline", "points": [[0, 0, 0], [9, 9, 0]]}]})")
                                                         .calls[0])
                                       .arguments)
        .points[1]
        .x = side;
    std::string left[2];
    for (const unsigned threads : {1U, 2U}) {
        Session session({KRB_MODULE, ""}, threads);
        EXPECT_THROW(replay(recording, session, {.reports_standard = false}), Recording_Error);
        left[threads - 1] = raw_bytes_of(raster_of(session.color_buffer()));
    }
    EXPECT_TRUE(left[0] == left[1]);
}

} // namespace

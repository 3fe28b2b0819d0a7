// The times of calls as events for viewers of timelines.
#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/command_line.h"

namespace call_trace_tests {

namespace {

using nlohmann::json;
using replay_tests::run_vorna;
using replay_tests::Temporary_Folder;

const std::string recording = R"({"picture": 1, "window": {"width": 16, "height": 16}, "calls": [
    {"call": "draw_window", "rectangle": [0, 15, 0, 15], "color": [255, 255, 255]},
    {"call": "clear_depth_rectangle", "rectangle": [0, 15, 0, 15]},
    {"call": "set_zbuffer_test", "value": 5},
    {"call": "draw_2di_polytriangle", "points": [0, 0, 100, 15, 0, 100, 0, 15, 100]},
    {"call": "draw_dci_dot", "point": [5, 5, 10], "color": [0, 0, 255]},
    {"call": "draw_dci_dot", "point": [15, 15, 10], "color": [0, 255, 0]}]})";

TEST(Call_Trace, has_an_event_for_each_call) {
    const Temporary_Folder folder;
    const std::string file = folder.file("trace.json");
    const replay_tests::Outcome outcome = run_vorna({"replay", "-", "--until", "4", "--trace", file}, recording);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const json trace = json::parse(replay_tests::read_file(file));
    std::size_t call = 0;
    double end = 0;
    for (const json& event : trace["traceEvents"]) {
        EXPECT_EQ(event["pid"], 1);
        EXPECT_EQ(event["tid"], 1);
        if (event["ph"] == "M") {
            EXPECT_TRUE(event["args"]["name"].is_string());
            continue;
        }
        EXPECT_EQ(event["ph"], "X");
        EXPECT_EQ(event["args"]["call"], call++);
        EXPECT_EQ(event["args"]["points"], call == 4 ? 3 : 0);
        EXPECT_NEAR(event["ts"].get<double>(), end, 0.002);
        EXPECT_GE(event["dur"].get<double>(), 0);
        end = event["ts"].get<double>() + event["dur"].get<double>();
    }
    EXPECT_EQ(call, 5U);
    EXPECT_GT(end, 0);
    EXPECT_EQ(trace["traceEvents"][5]["name"], "draw_2di_polytriangle");
}

// Calls that cover all rows are drawn by every thread that takes a band, in the order of the calls within a thread's row of
// events.
TEST(Call_Trace, has_a_lane_for_each_thread) {
    std::string calls;
    for (int i = 0; i < 400; ++i) {
        calls += R"(, {"call": "draw_2di_polytriangle", "points": [0, 0, 100, 399, 0, 100, 200, 399, 100]})";
    }
    const std::string many = R"({"picture": 1, "window": {"width": 400, "height": 400}, "calls": [
        {"call": "clear_depth_rectangle", "rectangle": [0, 399, 0, 399]})" +
                             calls + "]}";
    const Temporary_Folder folder;
    const std::string file = folder.file("trace.json");
    const replay_tests::Outcome outcome = run_vorna({"replay", "-", "--trace", file, "--threads", "3"}, many);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    std::map<int, std::string> names;
    std::map<int, double> ends;                // of each lane's last event
    std::map<std::size_t, double> kept, ended; // by call: when the application began with it, and when its last part was drawn
    const json trace = json::parse(replay_tests::read_file(file));
    for (const json& event : trace["traceEvents"]) {
        const int lane = event["tid"];
        if (event["ph"] == "M") {
            names[lane] = event["args"]["name"];
            continue;
        }
        const double start = event["ts"], end = start + event["dur"].get<double>();
        const std::size_t call = event["args"]["call"];
        EXPECT_GE(start, ends[lane] - 0.002) << "events of a lane overlap";
        ends[lane] = end;
        if (lane == 1) {
            kept[call] = start;
        } else {
            EXPECT_GE(start, kept.at(call)) << "drawn before it was kept";
            ended[call] = std::max(ended[call], end);
        }
    }
    EXPECT_EQ(names[1], "calls");
    EXPECT_EQ(names[2], "thread 0");
    EXPECT_EQ(names[4], "thread 2");
    EXPECT_EQ(names.size(), 4U);
    EXPECT_EQ(kept.size(), 401U);
    EXPECT_EQ(ended.size(), 401U);
}

// The recording itself takes less than 1 MiB, events of one lane twice as much and those of the threads' lanes more.
TEST(Call_Trace, takes_memory_for_its_events) {
    std::string calls = R"({"call": "clear_depth_rectangle", "rectangle": [0, 15, 0, 15]})";
    for (int i = 0; i < 4000; ++i) {
        calls += R"(, {"call": "draw_2di_polytriangle", "points": [0, 0, 100, 15, 0, 100, 0, 15, 100]})";
    }
    const std::string many = R"({"picture": 1, "window": {"width": 16, "height": 16}, "calls": [)" + calls + "]}";
    const Temporary_Folder folder;
    const auto run = [&](const std::string& memory, const std::string& threads, bool traces) {
        std::vector<std::string> words{"replay", "-", "--threads", threads, "--max-memory", memory};
        if (traces) {
            words.insert(words.end(), {"--trace", folder.file("trace.json")});
        }
        return run_vorna(words, many);
    };
    for (const std::string threads : {"1", "2"}) {
        EXPECT_EQ(run("8M", threads, false).status, 0);
        const replay_tests::Outcome outcome = run("8M", threads, true);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_NE(outcome.errors.find("standard input: expected what can be read within 8M of memory"), std::string::npos)
            << outcome.errors;
        EXPECT_EQ(run("64M", threads, true).status, 0);
    }
}

} // namespace

} // namespace call_trace_tests

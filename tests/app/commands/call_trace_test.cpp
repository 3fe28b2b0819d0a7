// The times of calls as events for viewers of timelines.
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
    EXPECT_EQ(run_vorna({"replay", "-", "--trace", file, "--threads", "2"}, recording).status, 2);
}

} // namespace

} // namespace call_trace_tests

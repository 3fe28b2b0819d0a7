// vorna report: pages and what is refused. What browsers make of a page shows report_page.py.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"

namespace report_command_tests {

namespace {

using replay_tests::Outcome;
using replay_tests::read_file;
using replay_tests::run_vorna;
using testing::HasSubstr;
using testing::Not;

const std::string square = R"({"picture": 1, "window": {"width": 40, "height": 30}, "calls": [
    {"call": "draw_window", "rectangle": [0, 39, 0, 29], "color": [10, 20, 30]},
    {"call": "draw_dci_dot", "point": [3, 3], "color": [200, 0, 0]}]})";

std::size_t count_of(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

class Report : public testing::Test {
protected:
    Outcome reported(std::vector<std::string> options = {}, const std::string& recording = square) {
        options.insert(options.begin(), {"report", "-", "-o", page});
        return run_vorna(options, recording);
    }

    replay_tests::Temporary_Folder folder;
    const std::string page = folder.file("page.html");
};

TEST_F(Report, is_one_file_whose_elements_no_text_ends) {
    const Outcome outcome = reported({"--note", "</script><b>&", "--repeat", "0"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const std::string text = read_file(page);
    EXPECT_EQ(outcome.output, "standard input: a page of " + std::to_string(text.size()) +
                                  " bytes, 2 calls, 2 thumbnails, histories of 1200 pixels\n");
    EXPECT_EQ(count_of(text, "<script"), 4U);
    EXPECT_EQ(count_of(text, "</script"), 4U);
    EXPECT_THAT(text, HasSubstr("<p class=\"note\">&lt;/script&gt;&lt;b&gt;&amp;</p>"));
    EXPECT_THAT(text, HasSubstr("default-src 'none'; img-src data:; style-src 'sha256-"));
    EXPECT_THAT(text, Not(HasSubstr("http://")));
    EXPECT_THAT(text, Not(HasSubstr("https://")));
    EXPECT_EQ(reported({"--note", "</script><b>&", "--repeat", "0"}).status, 0);
    EXPECT_EQ(read_file(page), text) << "without times every run writes the same page";
}

TEST_F(Report, keeps_the_bounds_that_options_set) {
    EXPECT_THAT(reported({"--thumbnails", "1", "--pixel", "3,26", "--pixel", "3,26", "--pixel", "0,0"}).output,
                HasSubstr(" 2 calls, 1 thumbnail, histories of 2 pixels\n"));
    EXPECT_THAT(read_file(page), HasSubstr("The 1 calls that changed the most pixels have one; for 1 others a box"));
    EXPECT_THAT(reported({"--area", "0,0,40x2"}).output, HasSubstr("histories of 80 pixels"));
    // Histories of all pixels only where calls are probed at few.
    const std::string large = R"({"picture": 1, "window": {"width": 2000, "height": 2000}, "buffer_depth": 0, "calls": [
        {"call": "draw_window", "rectangle": [0, 1999, 0, 1999], "color": [1, 2, 3]}]})";
    EXPECT_THAT(reported({}, large).output, HasSubstr(" 1 call, 1 thumbnail, histories of 0 pixels\n"));
    EXPECT_THAT(read_file(page), HasSubstr("Histories of pixels are not recorded: "));
}

TEST_F(Report, frames_of_calls_lie_in_the_image_that_is_shown) {
    const std::string cut = R"({"picture": 1, "window": {"width": 40, "height": 30}, "output": [10, 29, 5, 24], "calls": [
        {"call": "draw_window", "rectangle": [0, 39, 0, 29], "color": [10, 20, 30]},
        {"call": "draw_window", "rectangle": [0, 14, 20, 29], "color": [200, 0, 0]},
        {"call": "draw_window", "rectangle": [0, 5, 0, 3], "color": [0, 90, 0]}]})";
    ASSERT_EQ(reported({}, cut).status, 0);
    // Columns and rows of the image, widths and heights; the last call lies outside.
    EXPECT_THAT(read_file(page), HasSubstr("\"bounds\":[0,0,20,20,0,0,5,5,0,0,0,0]"));
}

TEST_F(Report, refuses_what_replays_and_histories_refuse) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
        {{"--pixel", "5"}, "--pixel: expected X,Y"},
        {{"--pixel", "40,0"}, "standard input: expected a pixel of the image of 40 x 30, found 40,0"},
        {{"--area", "1,1,1x1", "--pixel", "1,1"}, "--pixel: expected no --area beside it"},
        {{"--thumbnails", "10001"}, "--thumbnails: expected a whole number from 0 to 10000"},
        {{"--max-memory", "1K"}, "standard input: "}};
    for (const auto& [options, message] : wrong) {
        const Outcome outcome = reported(options);
        EXPECT_EQ(outcome.status, 2) << message;
        EXPECT_THAT(outcome.errors, HasSubstr(message));
    }
    const Outcome outcome = reported({}, R"({"picture": 1, "calls": [{"call": "draw_dci_dot", "point": [64, 0]}]})");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("standard input: calls[0].point: expected a point inside the window"));
    EXPECT_EQ(run_vorna({"report", "-", "-o", "page.png"}, square).status, 2);
    EXPECT_TRUE(folder.names().empty());
}

} // namespace

} // namespace report_command_tests

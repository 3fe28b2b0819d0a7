// Images that lines of JSON ask for.
#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"

namespace {

using nlohmann::json;
using replay_tests::run_vorna;
using testing::HasSubstr;

TEST(Serve, jobs_become_the_files_of_the_command_and_failures_are_answers) {
    const replay_tests::Temporary_Folder folder;
    std::string jobs;
    const auto add = [&](const json& job) { jobs += job.dump() + '\n'; };
    for (int i = 0; i < 6; ++i) {
        const std::string n = std::to_string(i);
        const std::string model = folder.file(n + ".obj", "v 0 0 0\nv 1 0 " + n + "\nv 0 1 0\nf 1 2 3\n");
        add({{"id", i}, {"render", {model, "-o", folder.file(n + ".png"), "--size", "40x30", "--view", "front"}}});
    }
    add({{"id", "none"}, {"render", {folder.file("none.obj"), "-o", folder.file("none.png")}}});
    add({{"id", "word"}, {"render", {folder.file("0.obj"), "--colour", "red", "-o", folder.file("none.png")}}});
    add({{"id", "stdout"}, {"render", {folder.file("0.obj"), "-o", "-"}}});
    add({{"id", "stdin"}, {"render", {"/dev/stdin", "-o", folder.file("none.png"), "--input-format", "obj"}}});
    add({{"id", "hash"}, {"render", {folder.file("0.obj"), "-o", folder.file("none.png"), "--hash"}}});
    add({{"id", "help"}, {"render", {"--help"}}});
    add({{"id", "numbers"}, {"render", {1, 2}}});
    jobs += "no json\n[]\n";
    const auto outcome = run_vorna({"serve", "--threads", "3"}, jobs);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    std::map<std::string, json> answers;
    int without_id = 0;
    std::istringstream lines(outcome.output);
    for (std::string line; std::getline(lines, line);) {
        const json answer = json::parse(line);
        without_id += answer.at("id").is_null() ? 1 : 0;
        answers[answer.at("id").dump()] = answer;
    }
    EXPECT_EQ(without_id, 2);
    for (int i = 0; i < 6; ++i) {
        const std::string n = std::to_string(i), alone = folder.file("alone.png");
        EXPECT_EQ(answers[n].at("status"), "drawn") << answers[n];
        ASSERT_EQ(run_vorna({"render", folder.file(n + ".obj"), "-o", alone, "--size", "40x30", "--view", "front"}).status, 0);
        EXPECT_EQ(replay_tests::read_file(folder.file(n + ".png")), replay_tests::read_file(alone));
    }
    const std::pair<const char*, const char*> failures[] = {{"\"none\"", "none.obj: cannot be read"},
                                                            {"\"word\"", "--colour: no option of vorna render"},
                                                            {"\"stdout\"", "expected files with names, found -"},
                                                            {"\"stdin\"", "expected files with names, found /dev/stdin"},
                                                            {"\"hash\"", "--hash: expected no such option"},
                                                            {"\"help\"", "found a question for help"},
                                                            {"\"numbers\"", "expected texts as words"},
                                                            {"null", "job: expected {"}};
    for (const auto& [id, message] : failures) {
        EXPECT_EQ(answers[id].value("status", ""), "failed") << id;
        EXPECT_THAT(answers[id].value("message", ""), HasSubstr(message));
    }
    EXPECT_FALSE(std::filesystem::exists(folder.file("none.png")));
}

TEST(Serve, lines_that_are_too_long_or_too_deep_do_not_end_it) {
    const replay_tests::Temporary_Folder folder;
    const std::string model = folder.file("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"), image = folder.file("a.png");
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    const std::string jobs = R"({"id": )" + deep + "}\n" + std::string(3 << 20, 'a') + "\n" + R"({"id": [4], "render": []})" +
                             '\n' + json{{"id", 5}, {"render", {model, "-o", image, "--size", "8x8"}}}.dump();
    const auto outcome = run_vorna({"serve", "--threads", "1"}, jobs);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(std::ranges::count(outcome.output, '\n'), 4) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("expected a line of up to 1 MiB"));
    EXPECT_THAT(outcome.output, HasSubstr("expected a number or a text as id"));
    EXPECT_TRUE(std::filesystem::exists(image));
}

} // namespace

// vorna check as a user runs it: exit status, complaints, JUnit. What the checks find is the business of --selftest.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"

namespace {

using replay_tests::Outcome;
using replay_tests::read_file;
using replay_tests::run_vorna;
using replay_tests::Temporary_Folder;
using testing::HasSubstr;
using testing::Not;

TEST(Check_Command, Says_in_one_line_what_is_wrong_with_the_input) {
    const Temporary_Folder folder;
    const auto expect_wrong_usage = [](const std::vector<std::string>& arguments, const std::string& complaint) {
        const Outcome outcome = run_vorna(arguments);
        EXPECT_EQ(outcome.status, 2) << complaint;
        EXPECT_THAT(outcome.errors, HasSubstr(complaint));
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    };
    expect_wrong_usage({"check", folder.file("none.vrd")}, "none.vrd: not loadable as a renderer module: ");
    expect_wrong_usage({"check", folder.file("text.vrd", "no module")}, "text.vrd: not loadable as a renderer module: ");
    expect_wrong_usage({"check", KRB_MODULE, "--only", "drawing.everything"}, "--only drawing.everything: no check and no area");
    expect_wrong_usage({"check", KRB_MODULE, "--profile", "strict"}, "--profile");
    expect_wrong_usage({"check", "--selftest", folder.file("none")}, "none: expected a folder of faulty modules");
}

TEST(Check_Command, Reports_failures_and_what_could_not_run_as_junit) {
    const Temporary_Folder folder;
    const std::string junit = folder.file("outcomes.xml");
    const Outcome outcome =
        run_vorna({"check", FAULTY_MODULES "/missing_export.vrd", "--junit", junit, "--only", "exports", "--only", "life.heap"});
    EXPECT_EQ(outcome.status, 1);
    const std::string text = read_file(junit);
    EXPECT_THAT(text, HasSubstr("<testsuite name=\"exports\" tests=\"4\" failures=\"1\" skipped=\"2\">"));
    EXPECT_THAT(text, HasSubstr("<failure message=\"no entry point VD_Unload_KRB_Renderer\"/>"));
    EXPECT_THAT(text, HasSubstr("<skipped message=\"it needs exports.entry_points\"/>"));
    EXPECT_THAT(text, HasSubstr("name=\"heap\""));
    EXPECT_THAT(text, Not(HasSubstr("name=\"growth\"")));
}

TEST(Check_Command, Says_where_a_module_hangs) {
    const Temporary_Folder folder;
    const std::string junit = folder.file("outcomes.xml");
    const Outcome outcome =
        run_vorna({"check", FAULTY_MODULES "/hangs.vrd", "--junit", junit, "--only", "drawing.calls", "--timeout", "3"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(read_file(junit), HasSubstr("draw_dci_ellipse, 32-bit: still running when the time limit"));
}

} // namespace

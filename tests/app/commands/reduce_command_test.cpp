// vorna reduce: the command that it runs, its limits, and what it leaves behind.
#include <chrono>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"

namespace replay_tests {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

// A dot that replays refuse among some that they draw.
const std::string with_a_fault = R"({"picture": 1, "window": {"width": 40, "height": 30}, "calls": [
    {"call": "draw_window", "rectangle": [0, 39, 0, 29], "color": [10, 20, 30]},
    {"call": "draw_dci_dot", "point": [1, 2]}, {"call": "draw_dci_dot", "point": [2, 2]},
    {"call": "draw_dci_polyline", "points": [[3, 3], [5, 5], [50, 5], [7, 7]], "rendition": {"line": {"weight": 2}}},
    {"call": "draw_dci_dot", "point": [4, 2]}]})";

class Reduce : public testing::Test {
protected:
    Outcome reduced(const std::string& command, std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"reduce", recording, "-o", small, "--keeps", command});
        return run_vorna(options);
    }

    Temporary_Folder folder;
    const std::string recording = folder.file("bad.json", with_a_fault), small = folder.file("small.json");
};

TEST_F(Reduce, finds_what_a_replay_refuses) {
    const std::string refused = "! " + std::string(VORNA_EMULATOR) + VORNA_COMMAND + " replay \"$1\"";
    const Outcome outcome = reduced(refused);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, StartsWith(recording + ": from 5 calls, 4 points, "));
    EXPECT_THAT(outcome.output, HasSubstr(" to 1 call, 1 point, "));
    EXPECT_EQ(read_file(small), R"({"picture": 1, "window": {"width": 1, "height": 1},
"calls": [{"call": "draw_dci_polyline", "points": [50,5,0]}]}
)");
    const std::string first = read_file(small);
    ASSERT_EQ(reduced(refused).status, 0);
    EXPECT_EQ(read_file(small), first);
}

TEST_F(Reduce, the_command_gets_recordings_of_the_output_s_form_and_nothing_else) {
    const std::string packed = folder.file("small.cbor.gz");
    // Only the standard streams are open, and there is no input.
    const std::string command = "case $1 in *.cbor.gz) ;; *) exit 1;; esac; ls /proc/self/fd | wc -l | grep -qx 4 && "
                                "[ -z \"$(cat)\" ]";
    const Outcome outcome = run_vorna({"reduce", recording, "-o", packed, "--keeps", command});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("to 0 calls"));
    EXPECT_THAT(read_file(packed), StartsWith("\x1F\x8B"));
}

TEST_F(Reduce, refuses_a_command_that_does_not_see_the_fault) {
    for (const auto& [command, message] : {std::pair("exit 3", "found status 3"),
                                           {"echo no such fault >&2; exit 1", "found status 1: no such fault"},
                                           {"kill -9 $$", "found signal 9"},
                                           {"/none", "found status 127: sh: "}}) {
        const Outcome outcome = reduced(command);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.errors, HasSubstr("--keeps: expected a command that ends with status 0 for the whole recording, " +
                                              std::string(message)));
    }
    EXPECT_THAT(reduced("sleep 30", {"--timeout", "0.1"}).errors, HasSubstr("found the time limit"));
    EXPECT_EQ(run_vorna({"reduce", recording, "-o", recording, "--keeps", "true"}).status, 2) << "one file for both";
    EXPECT_EQ(run_vorna({"reduce", "-", "-o", small, "--keeps", "true"}, "{}").status, 2);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"bad.json"});
}

TEST_F(Reduce, ends_in_time_with_the_smallest_so_far) {
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = reduced("grep -q '50,5' \"$1\" && sleep 0.2", {"--time-limit", "0.7"});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("; --time-limit ended it"));
    EXPECT_THAT(read_file(small), HasSubstr("50,5"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

// One process in a session of its own, and one whose parent has ended before the command does.
TEST_F(Reduce, kills_processes_that_have_left_the_command_s_group) {
#if !defined(__linux__)
    GTEST_SKIP() << "needs Linux";
#endif
    const std::string started = folder.file("started");
    const std::string script = folder.file("leave.sh", "setsid sleep 100 & echo $! >>'" + started +
                                                           "'\n"
                                                           "setsid sh -c \"sleep 100 & echo \\$! >>'" +
                                                           started + "'; wait\" &\nsleep 0.1\n");
    const Outcome outcome = reduced("sh " + script);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    std::istringstream lines(read_file(started));
    int count = 0;
    for (std::string process; std::getline(lines, process); ++count) {
        EXPECT_FALSE(std::filesystem::exists("/proc/" + process)) << process;
    }
    EXPECT_GE(count, 4);
}

// A shell starts it in a folder for temporary files of its own, interrupts it, and lists what is left.
TEST_F(Reduce, an_interrupt_leaves_neither_files_nor_processes) {
    std::filesystem::create_directory(folder.file("temporary"));
    const std::string script = "export TMPDIR='" + folder.file("temporary") + "'; cd \"$TMPDIR\"/..; trap : INT\n" +
                               std::string(VORNA_EMULATOR) +
                               "'" VORNA_COMMAND "' reduce bad.json -o small.json --keeps "
                               "'echo $$ >>started; [ $(wc -l <started) = 1 ] || { sleep 100 & echo $! >>started; wait; }' &\n"
                               "sleeper=$!\n"
                               "for i in $(seq 200); do [ $(wc -l <started) -ge 3 ] 2>/dev/null && break; sleep 0.05; done\n"
                               "kill -TERM $sleeper; wait $sleeper; echo status $?; ls temporary\n"
                               "grep -qs ') [RSD] ' /proc/$(tail -n 1 started)/stat && echo still there";
    const std::string out = folder.file("out"), file = folder.file("script.sh", script);
    ASSERT_NE(std::system(("sh '" + file + "' >'" + out + "' 2>/dev/null").c_str()), -1);
    EXPECT_EQ(read_file(out), "status 143\n");
    EXPECT_FALSE(std::filesystem::exists(small));
}

} // namespace

} // namespace replay_tests

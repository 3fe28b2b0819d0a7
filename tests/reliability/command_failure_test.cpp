// Commands with a failing allocation, a failing read, short reads, or a limit on the size of files. Command lines are the inputs
// of the fuzzer of commands. A failed command prints a message and leaves the files that were there before; a command that
// succeeds writes the same files as without the failure.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <new>
#include <optional>
#include <ranges>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "tests/fuzz/command_script.h"
#include "tests/reliability/counted_heap.h"

namespace {

using namespace fuzzing;
using testing::AnyOf;
using testing::HasSubstr;

thread_local std::int64_t reads = 0;
thread_local std::int64_t failing_read = 0; // 0 = none
thread_local std::size_t longest_read = SIZE_MAX;

} // namespace

// Replaces the C library's function for file streams too; FILE does not call it.
// Named by its label: with _FORTIFY_SOURCE the C library defines an inline read of its own.
extern "C" __attribute__((visibility("default"))) ssize_t failing_or_short_read(int file, void* bytes,
                                                                                std::size_t count) asm("read");
ssize_t failing_or_short_read(int file, void* bytes, std::size_t count) {
    if (++reads == failing_read) {
        errno = EIO;
        return -1;
    }
    return syscall(SYS_read, file, bytes, std::min(count, longest_read));
}

namespace {

std::string content_of(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

using Files = std::map<std::string, std::string>;

Files files_in(const Command_Folder& folder) {
    Files files;
    for (const std::string& name : folder.names()) {
        if (name.ends_with(".vorna-tiles")) { // a log, which serves to resume
            continue;
        }
        if (!std::filesystem::is_directory(name)) {
            files[name] = content_of(name);
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(name)) {
            if (entry.is_regular_file()) {
                files[entry.path().string()] = content_of(entry.path());
            }
        }
    }
    return files;
}

void restore(const Command_Folder& folder, const Files& files) {
    folder.clear();
    for (const auto& [name, content] : files) {
        if (const auto parent = std::filesystem::path(name).parent_path(); !parent.empty()) {
            std::filesystem::create_directories(parent);
        }
        std::ofstream(name, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
    }
}

// Whether outputs hold measured times, which differ from run to run.
bool writes_times(const std::vector<std::string>& line) {
    return std::ranges::any_of(
        line, [](const std::string& a) { return a.starts_with("--timing") || a == "--stats" || a == "--manifest"; });
}

// Whether the command commits each file by itself: screenshots of windows, tiles, images of many models and after each call.
bool writes_one_by_one(const std::vector<std::string>& line) {
    return std::ranges::any_of(line, [](const std::string& a) {
        return a == "view" || a == "inspect" || a == "tiles" || a == "--manifest" || a == "--every-call";
    });
}

// A command line, and its outcome without failures.
struct Trial {
    const Command_Folder& folder;
    const std::vector<std::string>& line;
    Files before, after;
    vorna::app::Ending right;

    void begin() const { restore(folder, before); }

    void check_files(int status) const {
        const Files found = files_in(folder);
        const auto name = &Files::value_type::first;
        if (writes_one_by_one(line)) {
            EXPECT_TRUE(writes_times(line) ? std::ranges::includes(after, found, {}, name, name)
                                           : std::ranges::includes(after, found))
                << "status " << status << ", files: " << testing::PrintToString(folder.names());
        } else if (writes_times(line)) {
            const auto has_names_of = [&](const Files& files) { return std::ranges::equal(files, found, {}, name, name); };
            EXPECT_TRUE(status == right.status || has_names_of(before) || has_names_of(after))
                << testing::PrintToString(folder.names());
        } else {
            // A command may fail after its last file is written, as while it prints a digest.
            EXPECT_TRUE(found == after || (found == before && status != right.status))
                << "status " << status << ", files: " << testing::PrintToString(folder.names());
        }
    }
};

void for_each_line(const auto& try_line) {
    int lines = 0;
    for (const auto& entry : std::filesystem::directory_iterator(COMMAND_SCRIPTS)) {
        const Command_Script script = parsed_commands(content_of(entry.path()));
        const Command_Folder folder;
        folder.write_files(script);
        for (const auto& line : script.lines) {
            SCOPED_TRACE(entry.path().filename().string() + ": " + testing::PrintToString(line));
            Trial trial{folder, line, files_in(folder), {}, {}};
            vorna::app::fail_with(vorna::app::exit_status::failed); // commands may set another status
            trial.right = run_command(line);
            trial.after = files_in(folder);
            try_line(trial);
            restore(folder, trial.after);
            ++lines;
        }
    }
    EXPECT_GT(lines, 50);
}

// The numbers of the allocations or reads that fail: 1, 2, 4, 7, 12, …; with VORNA_TEST_SCALE the steps grow more slowly.
std::int64_t next_failure(std::int64_t n) {
    const char* const scale = std::getenv("VORNA_TEST_SCALE");
    return n + 1 + static_cast<std::int64_t>(static_cast<double>(n) / (scale ? std::atof(scale) : 1));
}

// Whether two messages differ in numbers at most: some tell how much memory the process holds.
bool are_alike(std::string first, std::string second) {
    for (std::string* message : {&first, &second}) {
        std::erase_if(*message, [](char c) { return c >= '0' && c <= '9'; });
    }
    return first == second;
}

// Exit statuses beside those of commands: the message names the lack of memory; the command made fewer allocations.
constexpr int names_memory = 4, has_not_failed = 8;

// Runs in a copy of the process: libraries may end the process, and may leak when an allocation fails.
int status_with_failing_allocation(const Trial& trial, std::int64_t n) {
    const pid_t copy = fork();
    if (copy == 0) {
        vorna::app::report_lack_of_memory();
        std::optional<Failing_Allocation> failing;
        int status = vorna::app::failure_status();
        try {
            const vorna::app::Ending outcome = run_command(trial.line, [&] { failing.emplace(n); });
            // The library for other models catches std::bad_alloc, or its process ends.
            const auto names = [&](const char* text) { return outcome.message.find(text) != std::string::npos; };
            const bool says = names("out of memory") || names("enough memory") || names("of memory, found more") ||
                              names("bad_alloc") || names("Unknown exception") || names("library for its format came to its end");
            const bool is_right = are_alike(outcome.message, trial.right.message);
            status = says && !is_right ? names_memory : outcome.status;
            if (!says && !is_right) {
                std::fprintf(stderr, "allocation %d: %s\n", static_cast<int>(n), outcome.message.c_str());
                status = 64;
            }
        } catch (const std::bad_alloc&) {
        }
        _exit(status | (failing->has_failed() ? 0 : has_not_failed));
    }
    int status = 0;
    waitpid(copy, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

TEST(Command_Failures, of_each_allocation) {
    int failures = 0;
    for_each_line([&](const Trial& trial) {
        for (std::int64_t n = 1;; n = next_failure(n)) {
            trial.begin();
            const int status = status_with_failing_allocation(trial, n);
            if (status == (trial.right.status | has_not_failed)) {
                break;
            }
            // The process for other models is another copy, whose allocations are not counted here.
            EXPECT_THAT(status,
                        AnyOf(trial.right.status, vorna::app::failure_status(), int{names_memory}, names_memory | has_not_failed))
                << "allocation " << n;
            trial.check_files(status);
            ++failures;
        }
    });
    std::printf("%d allocations failed\n", failures);
    EXPECT_GT(failures, 500);
}

TEST(Command_Failures, of_each_read) {
    int failures = 0;
    for_each_line([&](const Trial& trial) {
        for (std::int64_t n = 1;; n = next_failure(n)) {
            trial.begin();
            testing::internal::CaptureStderr();
            const vorna::app::Ending outcome = run_command(trial.line, [&] {
                reads = 0;
                failing_read = n;
            });
            const bool warned = testing::internal::GetCapturedStderr().find("cannot be read") != std::string::npos;
            const bool has_failed = reads >= failing_read;
            failing_read = 0;
            if (!has_failed) {
                break;
            }
            // Without --strict a model is drawn without the materials that cannot be read.
            if (outcome.status != trial.right.status || !warned) {
                trial.check_files(outcome.status);
            }
            ++failures;
        }
    });
    std::printf("%d reads failed\n", failures);
    EXPECT_GT(failures, 100);
}

TEST(Command_Failures, of_no_short_read) {
    for_each_line([&](const Trial& trial) {
        trial.begin();
        longest_read = 3;
        const int status = run_command(trial.line).status;
        longest_read = SIZE_MAX;
        EXPECT_EQ(status, trial.right.status);
        trial.check_files(status);
    });
}

TEST(Command_Failures, of_writing_beyond_a_limit) {
    signal(SIGXFSZ, SIG_IGN); // as main does
    rlimit usual;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    for_each_line([&](const Trial& trial) {
        std::size_t largest = 0;
        for (const auto& [name, content] : trial.after) {
            largest = trial.before.count(name) != 0 ? largest : std::max(largest, content.size());
        }
        for (std::size_t size = 0; size < largest && !writes_one_by_one(trial.line); size += 1 + size / 2) {
            trial.begin();
            const rlimit limit{size, usual.rlim_max};
            const vorna::app::Ending outcome = run_command(trial.line, [&] { setrlimit(RLIMIT_FSIZE, &limit); });
            setrlimit(RLIMIT_FSIZE, &usual);
            EXPECT_NE(outcome.status, trial.right.status) << size;
            EXPECT_THAT(outcome.message, HasSubstr("cannot be written")) << size;
            trial.check_files(outcome.status);
        }
    });
}

} // namespace

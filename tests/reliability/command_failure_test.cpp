// Commands whose memory, reads or writes fail: of the inputs of the fuzzer of commands, each line with the first allocation
// failing, the second, and so on, and the same for what it reads and writes. It fails with a word about it, leaves no file
// behind, and works afterwards; or it succeeds, with the same files as ever.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <exception>
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

#include "app/command.h"
#include "app/memory.h"
#include "tests/fuzz/command_script.h"
#include "tests/reliability/counted_heap.h"

namespace {

using namespace fuzzing;
using testing::AnyOf;
using testing::HasSubstr;

thread_local std::int64_t until_read_fails = 0; // 0 = none is to fail
thread_local std::size_t longest_read = SIZE_MAX;

} // namespace

// Of file streams; stdio reads without it.
extern "C" ssize_t read(int file, void* bytes, std::size_t count) {
    if (until_read_fails > 0 && --until_read_fails == 0) {
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
        files[name] = content_of(name);
    }
    return files;
}

void restore(const Command_Folder& folder, const Files& files) {
    folder.clear();
    for (const auto& [name, content] : files) {
        std::ofstream(name, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
    }
}

// Those whose outcome is the same each time: times are told by some.
bool tells_times(const std::vector<std::string>& line) {
    return std::ranges::any_of(line, [](const std::string& a) { return a.starts_with("--timing") || a == "--stats"; });
}

// Calls try_line(line, files before it, its outcome, files after it) for each line of each input.
void for_each_line(const auto& try_line) {
    int lines = 0;
    for (const auto& entry : std::filesystem::directory_iterator(COMMAND_SCRIPTS)) {
        const Command_Script script = parsed_commands(content_of(entry.path()));
        const Command_Folder folder;
        folder.write_files(script);
        for (const auto& line : script.lines) {
            SCOPED_TRACE(entry.path().filename().string() + ": " + testing::PrintToString(line));
            const Files before = files_in(folder);
            const Command_Outcome outcome = run_command(line);
            const Files after = files_in(folder);
            try_line(folder, line, before, outcome, after);
            restore(folder, after);
            ++lines;
        }
    }
    EXPECT_GT(lines, 50);
}

// Windows take pictures when they are asked to, and of pictures after every call each is a file of its own.
bool writes_one_by_one(const std::vector<std::string>& line) {
    return std::ranges::any_of(line, [](const std::string& a) { return a == "view" || a == "--every-call"; });
}

// What may follow a failure: the files that were there and none beside them, or everything as ever.
void check_files(const Command_Folder& folder, const std::vector<std::string>& line, int status, const Command_Outcome& right,
                 const Files& before, const Files& after) {
    const Files found = files_in(folder);
    if (tells_times(line)) {
        const auto has_names_of = [&](const Files& files) {
            return std::ranges::equal(files | std::views::keys, found | std::views::keys);
        };
        EXPECT_TRUE(status == right.status || has_names_of(before) || has_names_of(after))
            << testing::PrintToString(folder.names());
    } else if (writes_one_by_one(line)) {
        EXPECT_TRUE(std::ranges::includes(after, found)) << testing::PrintToString(folder.names());
    } else {
        // What lies behind the last file, as printing a digest, may fail too.
        EXPECT_TRUE(found == after || (found == before && status != right.status))
            << "status " << status << ", files: " << testing::PrintToString(folder.names());
    }
}

// Statuses beside those of commands.
constexpr int says_so = 4, has_not_failed = 8;

// In a copy of the process, because the library of options ends it in functions that must not throw: then the command says the
// same. Libraries that leak when they fail do no harm there either.
int status_with_failing_allocation(const std::vector<std::string>& line, const Command_Outcome& right, std::int64_t n) {
    const pid_t copy = fork();
    if (copy == 0) {
        std::set_terminate(app::end_for_lack_of_memory);
        std::optional<Failing_Allocation> failing;
        int status = app::exit_status::failed;
        try {
            const Command_Outcome outcome = run_command(line, [&] { failing.emplace(n); });
            // Foreign libraries do not always say why they refuse, and streams that read a value take the lack for its end.
            constexpr const char* reasons[] = {"memory",          "bad_alloc",       "Unknown exception",
                                               "came to its end", "PROJ cannot use", "--light: expected a direction"};
            const bool says = std::ranges::any_of(
                reasons, [&](const char* reason) { return outcome.message.find(reason) != std::string::npos; });
            status = says && outcome.message != right.message ? says_so : outcome.status;
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
    const auto try_line = [&](const Command_Folder& folder, const auto& line, const Files& before, const Command_Outcome& right,
                              const Files& after) {
        const char* const scale = std::getenv("VORNA_TEST_SCALE");
        const double step = 1 / (scale ? std::atof(scale) : 1);
        for (std::int64_t n = 1;; n += 1 + static_cast<std::int64_t>(step * static_cast<double>(n))) {
            restore(folder, before);
            const int status = status_with_failing_allocation(line, right, n);
            if (status == (right.status | has_not_failed)) {
                break;
            }
            // A copy of the process has less memory too, and says so.
            EXPECT_THAT(status, AnyOf(right.status, int{app::exit_status::failed}, int{says_so}, says_so | has_not_failed))
                << "allocation " << n;
            check_files(folder, line, status, right, before, after);
            ++failures;
        }
    };
    for_each_line(try_line);
    std::printf("%d allocations failed\n", failures);
}

TEST(Command_Failures, of_each_read) {
    const auto try_line = [&](const Command_Folder& folder, const auto& line, const Files& before, const Command_Outcome& right,
                              const Files& after) {
        restore(folder, before);
        longest_read = 3;
        const int status = run_command(line).status;
        longest_read = SIZE_MAX;
        EXPECT_EQ(status, right.status);
        if (!tells_times(line)) {
            EXPECT_EQ(files_in(folder), after);
        }
        for (std::int64_t n = 1;; ++n) {
            restore(folder, before);
            bool has_failed = false;
            const Command_Outcome outcome = run_command(line, [&] { until_read_fails = n; });
            has_failed = until_read_fails == 0;
            until_read_fails = 0;
            if (!has_failed) {
                break;
            }
            EXPECT_TRUE(outcome.status != 0 || files_in(folder) == after) << "read " << n << " failed and was not missed";
        }
    };
    for_each_line(try_line);
}

TEST(Command_Failures, of_writing_beyond_a_limit) {
    signal(SIGXFSZ, SIG_IGN); // as main does
    rlimit usual;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    const auto try_line = [&](const Command_Folder& folder, const auto& line, const Files& before, const Command_Outcome& right,
                              const Files& after) {
        std::size_t largest = 0;
        for (const auto& [name, content] : after) {
            largest = before.count(name) != 0 ? largest : std::max(largest, content.size());
        }
        for (std::size_t size = 0; size < largest && !writes_one_by_one(line); size += 1 + size / 2) {
            restore(folder, before);
            const rlimit limit{size, usual.rlim_max};
            const Command_Outcome outcome = run_command(line, [&] { setrlimit(RLIMIT_FSIZE, &limit); });
            setrlimit(RLIMIT_FSIZE, &usual);
            EXPECT_NE(outcome.status, right.status) << size;
            EXPECT_THAT(outcome.message, HasSubstr("cannot be written")) << size;
            check_files(folder, line, outcome.status, right, before, after);
        }
    };
    for_each_line(try_line);
}

} // namespace

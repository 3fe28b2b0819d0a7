// Commands that users give, run by the shell.
#include "drawing/files/shell_command.h"

#include <stdexcept>
#include <system_error>

#include "drawing/files/interruption.h"
#include "drawing/files/process_wait.h"

#if !defined(_WIN32)
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <optional>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <filesystem>

#include <sys/prctl.h>
#include <sys/syscall.h>
#endif
#endif

namespace vorna::drawing {

#if defined(_WIN32)

Shell_Ending run_shell(const std::string&, const std::string&, std::chrono::milliseconds, const std::string&) {
    throw std::runtime_error("commands are run on Unix only");
}

#else

namespace {

// Between fork and exec only functions that signal handlers may call are safe.
[[noreturn]] void become_shell(const char* command, const char* argument, const char* errors) noexcept {
    setpgid(0, 0);
    const int nothing = open("/dev/null", O_RDWR);
    const int error_file = *errors != '\0' ? open(errors, O_WRONLY | O_CREAT | O_TRUNC, 0600) : nothing;
    if (nothing < 0 || error_file < 0 || dup2(nothing, STDIN_FILENO) < 0 || dup2(nothing, STDOUT_FILENO) < 0 ||
        dup2(error_file, STDERR_FILENO) < 0) {
        _exit(126);
    }
    bool are_closed = false;
#if defined(__linux__) && defined(SYS_close_range)
    are_closed = syscall(SYS_close_range, 3U, ~0U, 0U) == 0;
#endif
    for (long file = sysconf(_SC_OPEN_MAX) - 1; !are_closed && file > 2; --file) {
        close(static_cast<int>(file));
    }
    // Ignored signals stay ignored in new programs.
    for (const int number : {SIGXFSZ, SIGPIPE, SIGINT, SIGTERM, SIGHUP}) {
        std::signal(number, SIG_DFL);
    }
    execl("/bin/sh", "sh", "-c", command, "sh", argument, static_cast<char*>(nullptr));
    _exit(127);
}

#if defined(__linux__)

// As long as an object exists, processes whose parents have ended become children of this one, also those that have left their
// group or session. Without /proc, which tells them from earlier ones, they live on.
class Orphans {
public:
    Orphans() : earlier_(descendants()) {
        prctl(PR_GET_CHILD_SUBREAPER, &before_);
        if (!earlier_) {
            return;
        }
        prctl(PR_SET_CHILD_SUBREAPER, 1UL);
    }
    Orphans(const Orphans&) = delete;
    Orphans& operator=(const Orphans&) = delete;
    ~Orphans() {
        try {
            if (earlier_) {
                end();
            }
        } catch (const std::exception&) {
            // Without memory some live on.
        }
        prctl(PR_SET_CHILD_SUBREAPER, static_cast<unsigned long>(before_));
    }

private:
    // Each one that is killed leaves its children to this process.
    void end() const {
        for (bool has_killed = true; has_killed;) {
            has_killed = false;
            for (const pid_t child : children("self").value_or(std::vector<pid_t>())) {
                if (std::ranges::count(*earlier_, child) == 0 && kill(child, SIGKILL) == 0) {
                    has_killed = true;
                    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
                    }
                }
            }
        }
    }

    // None where /proc does not tell.
    static std::optional<std::vector<pid_t>> children(const std::string& process) {
        std::error_code error;
        std::vector<pid_t> found;
        for (std::filesystem::directory_iterator thread("/proc/" + process + "/task", error), end; !error && thread != end;
             thread.increment(error)) {
            std::ifstream list(thread->path() / "children");
            if (!list) {
                return std::nullopt;
            }
            for (pid_t child = 0; list >> child;) {
                found.push_back(child);
            }
        }
        return error ? std::nullopt : std::optional(std::move(found));
    }

    // Whoever ends among them leaves its children to this process, too.
    static std::optional<std::vector<pid_t>> descendants() {
        std::optional<std::vector<pid_t>> found = children("self");
        for (std::size_t i = 0; found && i < found->size(); ++i) {
            if (const auto more = children(std::to_string((*found)[i]))) { // none: it has ended
                found->insert(found->end(), more->begin(), more->end());
            }
        }
        return found;
    }

    const std::optional<std::vector<pid_t>> earlier_;
    int before_ = 0;
};

#else

class Orphans {};

#endif

// A process and all that it has started, which are one group.
class Process_Group {
public:
    explicit Process_Group(pid_t leader) noexcept : leader_(leader) {}
    Process_Group(const Process_Group&) = delete;
    Process_Group& operator=(const Process_Group&) = delete;
    ~Process_Group() {
        if (leader_ > 0) {
            end();
        }
    }

    // Leaves the leader to `end`, so that its number stays taken.
    bool has_ended() const {
        siginfo_t information{};
        return waitid(P_PID, static_cast<id_t>(leader_), &information, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               information.si_pid == leader_;
    }
    // The leader's status.
    int end() {
        kill(-leader_, SIGKILL);
        kill(leader_, SIGKILL); // it may not lead a group yet
        int status = 0;
        while (waitpid(leader_, &status, 0) < 0 && errno == EINTR) {
        }
        leader_ = 0;
        return status;
    }

private:
    pid_t leader_;
};

} // namespace

Shell_Ending run_shell(const std::string& command, const std::string& argument, std::chrono::milliseconds limit,
                       const std::string& errors) {
    const auto end = std::chrono::steady_clock::now() + limit;
    [[maybe_unused]] const Orphans orphans; // ends them after the group
    const pid_t process = fork();
    if (process < 0) {
        throw std::system_error(errno, std::generic_category(), "no process could be started");
    }
    if (process == 0) {
        become_shell(command.c_str(), argument.c_str(), errors.c_str());
    }
    setpgid(process, process); // so does the child: the group exists before either goes on
    Process_Group group(process);
    const bool has_ended = wait_until(end, [&] {
        Interruption::check();
        return group.has_ended();
    });
    const int status = group.end();
    if (!has_ended) {
        return {Shell_Ending::Kind::out_of_time, 0};
    }
    return WIFSIGNALED(status) ? Shell_Ending{Shell_Ending::Kind::signalled, WTERMSIG(status)}
                               : Shell_Ending{Shell_Ending::Kind::exited, WEXITSTATUS(status)};
}

#endif

} // namespace vorna::drawing

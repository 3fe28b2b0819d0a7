// Runs this command again in another process.
#include "app/check/child_process.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "app/cli/command.h"
#include "drawing/files/process_wait.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif

extern char** environ; // NOLINT(readability-redundant-declaration): not every system declares it
#endif

namespace vorna::app::check {

#if defined(_WIN32)

namespace {

// The inverse of how the run-time library splits a command line: backslashes are special only before quotes.
std::wstring quoted(const std::wstring& argument) {
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        text.append(c == L'"' ? backslashes + 1 : 0, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        text += c;
    }
    return text.append(backslashes, L'\\') + L'"';
}

std::wstring wide(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
}

std::string described(DWORD status) {
    char text[64];
    std::snprintf(text, sizeof text, status >= 0xC0000000 ? "exception 0x%lX" : "status %lu", static_cast<unsigned long>(status));
    return text;
}

} // namespace

Ending run_beside(const std::vector<std::string>& arguments, std::chrono::milliseconds limit) {
    const std::wstring program = executable_path().wstring();
    std::wstring line = quoted(program);
    for (const std::string& argument : arguments) {
        line += L' ' + quoted(wide(argument));
    }
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    start.hStdOutput = start.hStdError;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process)) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "no process could be started");
    }
    Ending ending;
    if (WaitForSingleObject(process.hProcess, static_cast<DWORD>(limit.count())) == WAIT_TIMEOUT) {
        TerminateProcess(process.hProcess, 1);
        WaitForSingleObject(process.hProcess, INFINITE);
        ending.kind = Ending::Kind::out_of_time;
    } else {
        DWORD status = 1;
        GetExitCodeProcess(process.hProcess, &status);
        if (status != 0) {
            ending = {Ending::Kind::died, described(status)};
        }
    }
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    return ending;
}

int own_process_id() {
    return static_cast<int>(GetCurrentProcessId());
}

void end_with(int) {
}

void expect_to_crash(bool quiet) {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    if (quiet) {
        std::freopen("NUL", "w", stderr);
    }
}

#else

namespace {

std::string described(int status) {
    if (WIFSIGNALED(status)) {
        return "signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")";
    }
    return "status " + std::to_string(WEXITSTATUS(status));
}

} // namespace

Ending run_beside(const std::vector<std::string>& arguments, std::chrono::milliseconds limit) {
    std::string program = executable_path().string();
    std::vector<std::string> owned = arguments;
    std::vector<char*> list{program.data()};
    for (std::string& argument : owned) {
        list.push_back(argument.data());
    }
    list.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
    pid_t process = 0;
    const int error = posix_spawn(&process, program.c_str(), &files, nullptr, list.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), "no process could be started");
    }

    int status = 0;
    const bool has_ended =
        drawing::wait_until(std::chrono::steady_clock::now() + limit, [&] { return waitpid(process, &status, WNOHANG) != 0; });
    if (!has_ended) {
        kill(process, SIGKILL);
        waitpid(process, &status, 0);
        return {Ending::Kind::out_of_time, ""};
    }
    return status == 0 ? Ending{} : Ending{Ending::Kind::died, described(status)};
}

int own_process_id() {
    return getpid();
}

void end_with([[maybe_unused]] int parent) {
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        std::_Exit(1); // the parent has ended before
    }
#endif
}

void expect_to_crash(bool quiet) {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    if (quiet) {
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
    }
}

#endif

} // namespace vorna::app::check

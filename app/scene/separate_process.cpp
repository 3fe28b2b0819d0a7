// Work in a copy of this process.
#include "app/scene/separate_process.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif

#include "app/check/address_sanitizer.h"

namespace app::scene {
namespace {

// A file that is open.
struct Open_File {
    int number;

    explicit Open_File(int file) noexcept : number(file) {}
    Open_File(const Open_File&) = delete;
    Open_File& operator=(const Open_File&) = delete;
    ~Open_File() { close(number); }
};

// Its faults end it without a word or a core file, and it does not outlive who waits for it.
void prepare_copy([[maybe_unused]] std::size_t memory) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, SIG_DFL);
    }
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    const rlimit no_core{0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
#if !defined(HAS_ADDRESS_SANITIZER) // which has reports to print, and takes terabytes of addresses
    const rlimit most_memory{memory, memory};
    setrlimit(RLIMIT_AS, &most_memory);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
#endif
}

std::string ending_of(int status) {
    if (WIFSIGNALED(status)) {
        return "signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")";
    }
    return "status " + std::to_string(WEXITSTATUS(status));
}

} // namespace

void Process_Pipe::write(const void* bytes, std::size_t count) {
    for (const auto* next = static_cast<const char*>(bytes); count > 0;) {
        const ssize_t written = ::write(file_, next, count);
        if (written < 0 && errno != EINTR) {
            throw Broken_Off("nobody reads");
        }
        next += written < 0 ? 0 : written;
        count -= static_cast<std::size_t>(written < 0 ? 0 : written);
    }
}

void Process_Pipe::read(void* bytes, std::size_t count) {
    for (auto* next = static_cast<char*>(bytes); count > 0;) {
        const ssize_t found = ::read(file_, next, count);
        if (found == 0 || (found < 0 && errno != EINTR)) {
            throw Broken_Off("nobody writes");
        }
        next += found < 0 ? 0 : found;
        count -= static_cast<std::size_t>(found < 0 ? 0 : found);
    }
}

void run_apart(std::size_t memory, const std::function<void(Process_Pipe&)>& work,
               const std::function<void(Process_Pipe&)>& take) {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::system_error(errno, std::generic_category(), "a process cannot be started");
    }
    const pid_t copy = fork();
    if (copy == 0) {
        close(ends[0]);
        prepare_copy(memory);
        int status = 0;
        try {
            Process_Pipe pipe(ends[1]);
            work(pipe);
        } catch (...) {
            status = 1;
        }
        _exit(status);
    }
    const Open_File from(ends[0]);
    close(ends[1]);
    if (copy < 0) {
        throw std::system_error(errno, std::generic_category(), "a process cannot be started");
    }
    // Whatever happens here, the copy is waited for.
    struct Waiting {
        pid_t process;
        int end() noexcept {
            int status = 0;
            while (process > 0 && waitpid(process, &status, 0) < 0 && errno == EINTR) {
            }
            process = 0;
            return status;
        }
        ~Waiting() {
            if (process > 0) {
                kill(process, SIGKILL);
                end();
            }
        }
    } waiting{copy};
    try {
        Process_Pipe pipe(from.number);
        take(pipe);
    } catch (const Broken_Off&) {
        throw Broken_Off(ending_of(waiting.end()));
    }
    if (const int status = waiting.end(); status != 0) {
        throw Broken_Off(ending_of(status));
    }
}

} // namespace app::scene

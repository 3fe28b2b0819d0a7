// Work in a copy of this process.
#include "drawing/model/separate_process.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/prctl.h>
#include <sys/syscall.h>
#if __has_include(<linux/landlock.h>)
#include <linux/landlock.h>
#endif
#endif

#include "drawing/files/address_sanitizer.h"
#include "drawing/files/fork_gate.h"
#include "drawing/files/interruption.h"
#include "drawing/files/memory.h"
#include "drawing/model/system_calls.h"

namespace vorna::drawing::model {
namespace {

// A file that is open.
struct Open_File {
    int number;

    explicit Open_File(int file) noexcept : number(file) {}
    Open_File(const Open_File&) = delete;
    Open_File& operator=(const Open_File&) = delete;
    ~Open_File() { close(number); }
};

// Sanitizers have reports to print and to make readable with other programs, and take terabytes of addresses.
#if defined(HAS_ADDRESS_SANITIZER) || defined(HAS_THREAD_SANITIZER)
constexpr bool is_confined = false;
#else
constexpr bool is_confined = true;
#endif

// With rules that allow nothing: no file can be opened any more, whatever its name.
void refuse_files() noexcept {
#if defined(__linux__) && __has_include(<linux/landlock.h>)
    const auto create = [](const void* rules, std::size_t size, unsigned flags) {
        return static_cast<int>(syscall(SYS_landlock_create_ruleset, rules, size, flags));
    };
    const int version = create(nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1) {
        return;
    }
    // Kinds of access: thirteen in the first version, one more in each of the next two.
    const int kinds = version == 1 ? 13 : version == 2 ? 14 : 15;
    const landlock_ruleset_attr rules{.handled_access_fs = (std::uint64_t{1} << kinds) - 1};
    const int file = create(&rules, sizeof rules.handled_access_fs, 0);
    if (file >= 0) {
        syscall(SYS_landlock_restrict_self, file, 0);
        close(file);
    }
#endif
}

void close_all_but(int kept) {
    dup2(kept, 3);
    int next = 4;
#if defined(SYS_close_range)
    if (syscall(SYS_close_range, 4U, ~0U, 0U) == 0) {
        return;
    }
#endif
    for (const long end = sysconf(_SC_OPEN_MAX); next < end; ++next) {
        close(next);
    }
}

// Its faults end it without a word or a core file, and it does not outlive who waits for it. Whatever the system does not know or
// permit is done without. Returns the number of the socket, which may have changed.
int prepare_copy(const Process_Limits& limits, pid_t parent, int socket) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, SIG_DFL);
    }
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    if (getppid() != parent) {
        _exit(1);
    }
    const auto limit = [](auto what, rlim_t most, rlim_t end) {
        const rlimit value{most, end};
        setrlimit(what, &value);
    };
    limit(RLIMIT_CORE, 0, 0);
    limit(RLIMIT_CPU, limits.seconds, limits.seconds + 1);
    if (is_confined) {
        const int nowhere = open("/dev/null", O_RDWR);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            dup2(nowhere, stream);
        }
        close_all_but(socket);
        socket = 3;
        limit(RLIMIT_FSIZE, 0, 0);
        limit(RLIMIT_AS, limits.bytes, limits.bytes);
#if defined(__linux__)
        prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
#endif
        refuse_files();
        allow_only_computing();
    }
    return socket;
}

std::string ending_of(int status) {
    if (WIFSIGNALED(status)) {
        return "signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")";
    }
    return "status " + std::to_string(WEXITSTATUS(status));
}

struct Limit_Exceeded : Broken_Off {
    using Broken_Off::Broken_Off;
};

// Requests come before the answer.
constexpr char request = 'f', answer = 'a';

// A file travels beside the byte that says whether there is one.
union File_Message {
    cmsghdr header;
    char bytes[CMSG_SPACE(sizeof(int))];
};

} // namespace

Process_Limits limits_of_reader(const Load_Limits& limits, std::uintmax_t file_size) {
    constexpr unsigned seconds = 60;
    const std::uint64_t used = address_space(), left = limits.memory_left();
    return {static_cast<std::size_t>(left > UINT64_MAX - used ? UINT64_MAX : used + left),
            seconds + static_cast<unsigned>(std::min<std::uintmax_t>(file_size >> 20, 86400))};
}

void Process_Pipe::send(const void* bytes, std::size_t count) {
    for (const auto* next = static_cast<const char*>(bytes); count > 0;) {
        const ssize_t written = ::write(socket_, next, count);
        if (written < 0 && errno != EINTR) {
            throw Broken_Off("nobody reads");
        }
        next += written < 0 ? 0 : written;
        count -= static_cast<std::size_t>(written < 0 ? 0 : written);
    }
}

void Process_Pipe::receive(void* bytes, std::size_t count) {
    if (count > left_) {
        throw Limit_Exceeded("sending too much");
    }
    left_ -= count;
    for (auto* next = static_cast<char*>(bytes); count > 0;) {
        wait();
        const ssize_t found = ::read(socket_, next, count);
        if (found < 0 && errno != EINTR) {
            // The other process may still run and write.
            throw std::system_error(errno, std::generic_category(), "a process cannot be read from");
        }
        if (found == 0) {
            throw Broken_Off("nobody writes");
        }
        next += found < 0 ? 0 : found;
        count -= static_cast<std::size_t>(found < 0 ? 0 : found);
    }
}

// Until there is something to read.
void Process_Pipe::wait() const {
    using Clock = std::chrono::steady_clock;
    constexpr int between_looks = 50; // milliseconds
    const auto end = Clock::now() + std::chrono::seconds(10) * seconds_;
    pollfd readiness{socket_, POLLIN, 0};
    while (poll(&readiness, 1, between_looks) <= 0) {
        Interruption::check();
        if (Clock::now() >= end) {
            throw Limit_Exceeded("doing nothing");
        }
    }
}

void Process_Pipe::write(const void* bytes, std::size_t count) {
    if (!std::exchange(is_answering_, true)) {
        send(&answer, 1);
    }
    send(bytes, count);
}

void Process_Pipe::read(void* bytes, std::size_t count) {
    if (!std::exchange(is_answering_, true)) {
        serve_requests();
    }
    receive(bytes, count);
}

int Process_Pipe::request_file(const std::string& name) {
    const std::size_t size = name.size();
    send(&request, 1);
    send(&size, sizeof size);
    send(name.data(), size);
    int error = 0;
    File_Message control = {};
    iovec part{&error, sizeof error};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = &control;
    message.msg_controllen = sizeof control;
    ssize_t found = 0;
    do {
        found = recvmsg(socket_, &message, MSG_WAITALL | MSG_CMSG_CLOEXEC);
    } while (found < 0 && errno == EINTR);
    if (found != sizeof error) {
        throw Broken_Off("nobody answers");
    }
    int file = -1;
    if (const cmsghdr* header = CMSG_FIRSTHDR(&message)) {
        std::memcpy(&file, CMSG_DATA(header), sizeof file);
    }
    errno = error;
    return file;
}

void Process_Pipe::serve_requests() {
    for (;;) {
        char kind = 0;
        receive(&kind, 1);
        if (kind != request) {
            return;
        }
        constexpr std::size_t longest = 4096; // of names
        std::size_t size = 0;
        receive(&size, sizeof size);
        if (size > longest) {
            throw Limit_Exceeded("sending too much");
        }
        std::string name(size, '\0');
        receive(name.data(), size);
        errno = 0;
        const Open_File file(open_ ? open_(name) : -1);
        int error = errno;
        File_Message control = {};
        iovec part{&error, sizeof error};
        msghdr message = {};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        if (file.number >= 0) {
            message.msg_control = &control;
            message.msg_controllen = sizeof control;
            cmsghdr* header = CMSG_FIRSTHDR(&message);
            header->cmsg_level = SOL_SOCKET;
            header->cmsg_type = SCM_RIGHTS;
            header->cmsg_len = CMSG_LEN(sizeof file.number);
            std::memcpy(CMSG_DATA(header), &file.number, sizeof file.number);
        }
        // Who is gone is noticed when nothing comes any more.
        while (sendmsg(socket_, &message, MSG_NOSIGNAL) < 0 && errno == EINTR) {
        }
    }
}

void run_apart(const Process_Limits& limits, const Process_Pipe::Opener& open, const std::function<void(Process_Pipe&)>& work,
               const std::function<void(Process_Pipe&)>& take) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        throw std::system_error(errno, std::generic_category(), "a process cannot be started");
    }
    const pid_t parent = getpid();
    const pid_t copy = [] {
        const std::unique_lock alone(fork_gate());
        return fork();
    }();
    if (copy == 0) {
        close(ends[0]);
        int status = 0;
        Interruption::set_stop_check(nullptr); // the program's, which is not here
        try {
            Process_Pipe pipe(prepare_copy(limits, parent, ends[1]), {}, nullptr);
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
        Process_Pipe pipe(from.number, limits, open);
        take(pipe);
    } catch (const Limit_Exceeded&) {
        throw; // the copy goes on until it is killed
    } catch (const Broken_Off&) {
        throw Broken_Off(ending_of(waiting.end()));
    }
    if (const int status = waiting.end(); status != 0) {
        throw Broken_Off(ending_of(status));
    }
}

} // namespace vorna::drawing::model

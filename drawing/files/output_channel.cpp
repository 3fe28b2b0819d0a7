// Bytes on their way into an open file.
#include "drawing/files/output_channel.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#if defined(_WIN32)
#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

#include "drawing/files/interruption.h"

namespace vorna::drawing {

namespace {

std::error_code last_error() {
    return {errno, std::generic_category()};
}

#if defined(_WIN32)

int open_file(const std::filesystem::path& path, int flags) {
    return _wopen(path.c_str(), flags | _O_WRONLY | _O_BINARY, _S_IREAD | _S_IWRITE);
}

#else

// A signal that arrives just before a call that waits goes unnoticed until it returns, so nothing waits longer than this.
constexpr int most_milliseconds = 50;

// So many bytes do not make a write wait where there is room for any.
constexpr std::size_t most_at_once = PIPE_BUF;

// The system decides whether links, pipes and files of others may be opened here; it does so only when asked to create them.
int open_existing(const std::filesystem::path& path) {
    struct stat status = {};
    const bool is_pipe = stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
    for (;;) {
        const int number = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
        if (number >= 0) {
            fcntl(number, F_SETFL, O_APPEND);
            return number;
        }
        if (errno != EINTR && (errno != ENXIO || !is_pipe)) {
            return number;
        }
        Interruption::check();
        poll(nullptr, 0, most_milliseconds); // for somebody who reads
    }
}

#endif

} // namespace

Output_Channel::Output_Channel(int number, bool is_owned) : number_(number), is_owned_(is_owned) {
#if !defined(_WIN32)
    struct stat status = {};
    is_file_ = fstat(number, &status) == 0 && S_ISREG(status.st_mode);
#endif
}

Output_Channel::Output_Channel(Output_Channel&& other) noexcept
    : number_(std::exchange(other.number_, -1)), is_owned_(other.is_owned_), is_file_(other.is_file_) {
}

Output_Channel& Output_Channel::operator=(Output_Channel&& other) noexcept {
    close();
    number_ = std::exchange(other.number_, -1);
    is_owned_ = other.is_owned_;
    is_file_ = other.is_file_;
    return *this;
}

Output_Channel Output_Channel::created(const std::filesystem::path& path, [[maybe_unused]] unsigned mode,
                                       std::error_code& error) {
#if defined(_WIN32)
    const int number = open_file(path, _O_CREAT | _O_EXCL);
#else
    const int number = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
#endif
    error = number < 0 ? last_error() : std::error_code();
    return {number, true};
}

Output_Channel Output_Channel::opened(const std::filesystem::path& path, std::error_code& error) {
#if defined(_WIN32)
    const int number = open_file(path, 0);
#else
    const int number = open_existing(path);
#endif
    error = number < 0 ? last_error() : std::error_code();
    return {number, true};
}

Output_Channel Output_Channel::borrowed(int number) {
    return {number, false};
}

std::error_code Output_Channel::write(std::string_view bytes) {
    while (!bytes.empty()) {
#if defined(_WIN32)
        const auto written = _write(number_, bytes.data(), static_cast<unsigned>(std::min<std::size_t>(bytes.size(), 1 << 30)));
#else
        pollfd readiness{number_, POLLOUT, 0};
        if (!is_file_ && poll(&readiness, 1, most_milliseconds) <= 0) {
            Interruption::check();
            continue;
        }
        const auto written = ::write(number_, bytes.data(), is_file_ ? bytes.size() : std::min(bytes.size(), most_at_once));
#endif
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        const std::error_code error = last_error();
        Interruption::check(); // a pipe that nobody reads any more interrupts too
        if (error.value() != EINTR && error.value() != EAGAIN) {
            return error;
        }
    }
    return {};
}

std::error_code Output_Channel::rewrite(std::uint64_t place, std::string_view bytes) {
#if defined(_WIN32)
    const auto seek = [this](std::uint64_t to, int from) { return _lseeki64(number_, static_cast<std::int64_t>(to), from) >= 0; };
#else
    const auto seek = [this](std::uint64_t to, int from) { return lseek(number_, static_cast<off_t>(to), from) >= 0; };
#endif
    if (!seek(place, SEEK_SET)) {
        return last_error();
    }
    const std::error_code error = write(bytes);
    return !error && !seek(0, SEEK_END) ? last_error() : error;
}

std::error_code Output_Channel::sync() {
#if !defined(_WIN32)
    // Some file systems have no such thing.
    if (is_file_ && fsync(number_) != 0 && errno != EINVAL && errno != ENOTSUP && errno != EROFS) {
        return last_error();
    }
#endif
    return {};
}

std::error_code Output_Channel::close() {
    const int number = std::exchange(number_, -1);
    // What is interrupted here is closed nevertheless.
    return number >= 0 && is_owned_ && ::close(number) != 0 && errno != EINTR ? last_error() : std::error_code();
}

void sync_folder([[maybe_unused]] const std::filesystem::path& folder) {
#if !defined(_WIN32)
    const int number = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (number >= 0) {
        fsync(number);
        ::close(number);
    }
#endif
}

} // namespace vorna::drawing

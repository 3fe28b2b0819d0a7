// Files that are read whole.
#include "drawing/files/input_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <system_error>
#include <vector>

#if !defined(_WIN32)
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#endif

#include "drawing/files/gzip.h"
#include "drawing/files/interruption.h"
#include "drawing/files/path.h"
#include "drawing/files/standard_streams.h"
#include "drawing/files/usage_error.h"
#include "drawing/files/zstd.h"

namespace vorna::drawing {
namespace {

[[noreturn]] void throw_too_large(const std::string& name, std::size_t most) {
    throw Usage_Error(name + ": expected at most " + std::to_string(most >> 20) + " MiB, found more");
}

bool is_named_pipe(const std::string& path) {
    std::error_code none;
    return std::filesystem::is_fifo(path_of(path), none);
}

#if defined(_WIN32)

bool read_named_pipe(const std::string&, std::size_t, std::string&) {
    return false; // there are none among files
}

#else

// Opening would wait for a program that writes, and reading for its bytes: both must end when the time is up. False where errno
// says why.
bool read_named_pipe(const std::string& path, std::size_t most, std::string& bytes) {
    struct Pipe {
        int number;
        ~Pipe() { ::close(number); }
    };
    const int number = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (number < 0) {
        return false;
    }
    const Pipe pipe{number};
    std::vector<char> block(std::size_t{1} << 16);
    for (;;) {
        constexpr int milliseconds = 50;
        pollfd ready{pipe.number, POLLIN, 0};
        Interruption::check();
        const int found = ::poll(&ready, 1, milliseconds);
        if (found < 0 && errno != EINTR) {
            return false;
        }
        if (found <= 0) {
            continue;
        }
        const ssize_t count = ::read(pipe.number, block.data(), block.size());
        if (count == 0) {
            return true;
        }
        if (count > 0) {
            bytes.append(block.data(), static_cast<std::size_t>(count));
        } else if (errno != EAGAIN && errno != EINTR) {
            return false;
        }
        if (bytes.size() > most) {
            throw_too_large(path, most);
        }
    }
}

#endif

} // namespace

std::string name_of_input(const std::string& path) {
    return path == "-" ? "standard input" : path;
}

namespace {

std::string read_stream(std::istream& stream, const std::string& name, std::size_t most) {
    std::string bytes;
    std::vector<char> block(std::size_t{1} << 16);
    while (stream.read(block.data(), static_cast<std::streamsize>(block.size())) || stream.gcount() > 0) {
        bytes.append(block.data(), static_cast<std::size_t>(stream.gcount()));
        if (bytes.size() > most) {
            throw_too_large(name, most);
        }
    }
    return bytes;
}

} // namespace

std::string read_input(const std::string& path, Load_Limits& limits, std::size_t most) {
    most = std::min<std::size_t>(most, limits.most_of_a_file());
    std::string name = name_of_input(path);
    std::ranges::replace(name, '\0', ' '); // messages of exceptions end there
    std::string bytes;
    errno = 0;
    bool is_read = false;
    if (path == "-") {
        set_binary(stdin);
        bytes = read_stream(std::cin, name, most);
        is_read = !std::cin.bad() && std::ferror(stdin) == 0; // the stream knows only that nothing comes any more
    } else if (path.find('\0') != path.npos) {
        errno = ENOENT; // the system would open the name up to there
    } else if (is_named_pipe(path)) {
        is_read = read_named_pipe(path, most, bytes);
    } else {
        std::ifstream file(path_of(path), std::ios::binary);
        bytes = read_stream(file, name, most);
        is_read = !file.bad() && file.is_open();
    }
    if (!is_read) {
        throw Usage_Error(name + ": cannot be read: " + std::generic_category().message(errno));
    }
    limits.add_file(name, bytes.size());
    limits.take_memory(name, bytes.size());
    return bytes;
}

std::string unpacked_input(const std::string& name, std::string packed, Load_Limits& limits, std::size_t most) {
    if (!is_gzip(packed) && !is_zstd(packed)) {
        return packed;
    }
    const Load_Limits::Loan window(limits, name, is_zstd(packed) ? zstd_window(packed) : 0);
    try {
        std::string content = (is_gzip(packed) ? gunzip : unzstd)(packed, most, [&](std::size_t bytes) {
            limits.take_memory(name, bytes);
            limits.take_work(name, bytes);
        });
        // Texts shrink to a quarter at least, so that so much gives room as if it had not been packed.
        constexpr std::size_t usual_ratio = 4;
        limits.add_file(name + ", unpacked", std::min(content.size(), usual_ratio * packed.size()));
        return content;
    } catch (const Load_Error&) {
        throw;
    } catch (const std::runtime_error& error) {
        throw Usage_Error(name + ": " + error.what());
    }
}

} // namespace vorna::drawing

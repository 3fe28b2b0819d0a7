// What the names of files to write lead to.
#include "drawing/files/output_place.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <stdexcept>
#include <string>

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif
#if defined(__linux__)
#include <linux/magic.h>
#include <sys/vfs.h>
#endif

namespace vorna::drawing {

namespace {

namespace fs = std::filesystem;

#if defined(_WIN32)

bool is_open_file(const fs::path&) {
    return false;
}

int own_number(const fs::path&) {
    return -1;
}

bool is_by_stranger(const fs::path&) {
    return false;
}

#else

fs::path folder_of(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

// Links of this file system lead to what a process has open, even where no name does.
bool is_open_file([[maybe_unused]] const fs::path& link) {
#if defined(__linux__)
    struct statfs system = {};
    return statfs(folder_of(link).c_str(), &system) == 0 && system.f_type == PROC_SUPER_MAGIC;
#else
    return false;
#endif
}

int own_number(const fs::path& link) {
    std::error_code none;
    const std::string name = link.filename().string();
    int number = -1;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const fs::path folder = folder_of(link);
    const bool is_own = fs::equivalent(folder, "/proc/self/fd", none) || fs::equivalent(folder, "/proc/thread-self/fd", none);
    return is_own && error == std::errc() && end == name.data() + name.size() ? number : -1;
}

// What systems with protected links refuse to follow: those of others in folders where everybody may lay them, as /tmp.
bool is_by_stranger(const fs::path& link) {
    struct stat own = {}, folder = {};
    return lstat(link.c_str(), &own) == 0 && stat(folder_of(link).c_str(), &folder) == 0 && (folder.st_mode & S_ISVTX) != 0 &&
           (folder.st_mode & S_IWOTH) != 0 && own.st_uid != geteuid() && own.st_uid != folder.st_uid;
}

#endif

} // namespace

#if defined(_WIN32)

bool is_writable(const fs::path& path) {
    return _waccess(path.c_str(), 2) == 0;
}

#else

bool is_writable(const fs::path& path) {
    std::error_code none;
    if (!fs::is_regular_file(path, none)) {
        return access(path.c_str(), W_OK) == 0;
    }
    const int number = open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
    return number >= 0 && close(number) == 0;
}

#endif

void fail_to_write(const fs::path& path, const std::error_code& reason) {
    std::string name = path.empty() ? "a file without a name" : path.string();
    std::ranges::replace(name, '\0', ' '); // messages of exceptions end there
    throw std::runtime_error(name + ": cannot be written: " + reason.message());
}

// A link stays a link.
Output_Place output_place_of(const fs::path& path) {
    constexpr int most_links = 40;
    std::error_code none;
    Output_Place place{path};
    for (int links = 0; fs::is_symlink(place.target, none); ++links) {
        if (links == most_links) {
            fail_to_write(path, std::make_error_code(std::errc::too_many_symbolic_link_levels));
        }
        if (is_open_file(place.target)) {
            place.is_open = true;
            place.number = own_number(place.target);
            return place;
        }
        place.is_by_stranger |= is_by_stranger(place.target);
        place.target = place.target.parent_path() / fs::read_symlink(place.target, none);
    }
    return place;
}

// As it may be written.
Output_Place checked_output_place_of(const fs::path& path) {
    std::error_code none;
    if (path.native().find(fs::path::value_type{}) != path.native().npos) { // the system would take the name up to there
        fail_to_write(path, std::make_error_code(std::errc::invalid_argument));
    }
    if (fs::is_directory(path, none)) {
        fail_to_write(path, std::make_error_code(std::errc::is_a_directory));
    }
    Output_Place place = output_place_of(path);
    if (place.is_by_stranger) {
        fail_to_write(path, std::make_error_code(std::errc::permission_denied));
    }
    // Devices and pipes cannot be replaced either.
    place.is_open |= fs::exists(path, none) && !fs::is_regular_file(path, none);
    errno = 0;
#if !defined(_WIN32)
    if (place.number >= 0) {
        if ((fcntl(place.number, F_GETFL) & O_ACCMODE) == O_RDONLY) {
            fail_to_write(path, std::make_error_code(std::errc::bad_file_descriptor));
        }
        return place;
    }
#endif
    if (fs::exists(place.target, none) && !is_writable(place.target)) {
        fail_to_write(path, {errno, std::generic_category()});
    }
    return place;
}

} // namespace vorna::drawing

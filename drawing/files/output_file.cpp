// Files that appear whole or not at all.
#include "drawing/files/output_file.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif
#if defined(__linux__)
#include <linux/magic.h>
#include <sys/vfs.h>
#endif

#include "drawing/files/path.h"
#include "drawing/files/standard_streams.h"
#include "drawing/files/usage_error.h"

namespace vorna::drawing {

namespace {

namespace fs = std::filesystem;

// Bytes for standard output that are kept in memory; more go into a file that has no name.
constexpr std::size_t most_held = std::size_t{4} << 20;

[[noreturn]] void fail(const fs::path& path, const std::error_code& reason) {
    throw std::runtime_error((path.empty() ? "a file without a name" : path.string()) +
                             ": cannot be written: " + reason.message());
}

std::error_code last_error() {
    return {errno, std::generic_category()};
}

// In the same folder, because only there a move replaces the target in one step. Systems take names of up to 255 bytes. What a
// killed run leaves behind can be told by this name, and stands in nobody's way.
fs::path temporary_beside(const fs::path& target) {
    constexpr std::size_t longest = 200;
    char ending[32];
    std::snprintf(ending, sizeof ending, ".vorna-unfinished-%08x", static_cast<unsigned>(std::random_device()()));
    fs::path temporary = target;
    temporary.replace_filename(target.filename().native().substr(0, longest));
    return temporary += ending;
}

// What a name leads to.
struct Place {
    fs::path target;             // whether it exists or not
    int number = -1;             // what this process has open, when it is that
    bool is_open = false;        // somebody has it open: it can be written only, for what the link says may be no name of it
    bool is_by_stranger = false; // somebody else may have laid a link where all may write
};

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

bool is_writable(const fs::path& path) {
    return _waccess(path.c_str(), 2) == 0;
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

// Asks the system, whose rules go beyond permissions. Nothing is changed.
bool is_writable(const fs::path& path) {
    std::error_code none;
    if (!fs::is_regular_file(path, none)) {
        return access(path.c_str(), W_OK) == 0;
    }
    const int number = open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
    return number >= 0 && close(number) == 0;
}

#endif

// A link stays a link.
Place place_of(const fs::path& path) {
    constexpr int most_links = 40;
    std::error_code none;
    Place place{path};
    for (int links = 0; fs::is_symlink(place.target, none); ++links) {
        if (links == most_links) {
            fail(path, std::make_error_code(std::errc::too_many_symbolic_link_levels));
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
Place checked_place_of(const fs::path& path) {
    std::error_code none;
    if (fs::is_directory(path, none)) {
        fail(path, std::make_error_code(std::errc::is_a_directory));
    }
    Place place = place_of(path);
    if (place.is_by_stranger) {
        fail(path, std::make_error_code(std::errc::permission_denied));
    }
    // Devices and pipes cannot be replaced either.
    place.is_open |= fs::exists(path, none) && !fs::is_regular_file(path, none);
    errno = 0;
#if !defined(_WIN32)
    if (place.number >= 0) {
        if ((fcntl(place.number, F_GETFL) & O_ACCMODE) == O_RDONLY) {
            fail(path, std::make_error_code(std::errc::bad_file_descriptor));
        }
        return place;
    }
#endif
    if (fs::exists(place.target, none) && !is_writable(place.target)) {
        fail(path, last_error());
    }
    return place;
}

} // namespace

Output_File::Output_File(const std::string& name) : path_(path_of(name)) {
    std::error_code error;
    if (name == "-") {
        path_ = "standard output";
        set_binary(stdout);
        channel_ = Output_Channel::borrowed(number_of(stdout));
        is_held_ = true;
        return;
    }
    const Place place = checked_place_of(path_);
    if (place.number >= 0) {
        channel_ = Output_Channel::borrowed(place.number);
        is_held_ = true;
    } else if (place.is_open) {
        channel_ = Output_Channel::opened(path_, error);
    } else {
        target_ = place.target;
        const fs::file_status replaced = fs::status(target_, error);
        const bool is_replaced = fs::exists(replaced);
        const fs::perms permissions = is_replaced ? replaced.permissions() & fs::perms::all : fs::perms::none;
        do {
            temporary_ = temporary_beside(target_);
            channel_ = Output_Channel::created(temporary_, is_replaced ? static_cast<unsigned>(permissions) : 0666, error);
        } while (error == std::errc::file_exists);
        if (error) {
            temporary_.clear();
        } else if (is_replaced) {
            std::error_code none; // the user's mask may have taken some away
            fs::permissions(temporary_, permissions, none);
        }
    }
    if (!channel_.is_open()) {
        fail(path_, error);
    }
}

Output_File::~Output_File() {
    channel_.close();
    if (!temporary_.empty()) {
        std::error_code ignored;
        fs::remove(temporary_, ignored);
    }
}

void Output_File::write(std::string_view bytes) {
    if (is_held_) {
        hold(bytes);
    } else if (const std::error_code error = channel_.write(bytes)) {
        fail(path_, error);
    }
}

void Output_File::hold(std::string_view bytes) {
    errno = 0;
    if (!held_file_) {
        held_ += bytes;
        if (held_.size() <= most_held) {
            return;
        }
        held_file_.reset(std::tmpfile());
        if (!held_file_) {
            fail(path_, last_error());
        }
        bytes = held_;
    }
    if (std::fwrite(bytes.data(), 1, bytes.size(), held_file_.get()) != bytes.size()) {
        fail(path_, last_error());
    }
    held_.clear();
}

void Output_File::check(const std::string& name) {
    if (name == "-") {
        return;
    }
    const fs::path path = path_of(name);
    const Place place = checked_place_of(path);
    if (place.is_open) {
        return;
    }
    std::error_code none;
    const fs::path folder = place.target.has_parent_path() ? place.target.parent_path() : fs::path(".");
    errno = 0;
    if (!is_writable(folder)) {
        fail(path, last_error());
    }
    if (!fs::is_directory(folder, none)) {
        fail(path, std::make_error_code(std::errc::not_a_directory));
    }
}

void Output_File::close() {
    if (is_held_ || !channel_.is_open()) {
        return;
    }
    const std::error_code not_synced = channel_.sync(), not_closed = channel_.close();
    if (not_synced || not_closed) {
        fail(path_, not_synced ? not_synced : not_closed);
    }
}

void Output_File::commit() {
    if (is_held_) {
        copy_held();
        return;
    }
    close();
    if (!temporary_.empty()) {
        std::error_code reason;
        fs::rename(temporary_, target_, reason);
        if (reason) {
            fail(target_, reason);
        }
        temporary_.clear();
        sync_folder(target_.parent_path());
    }
}

void Output_File::copy_held() {
    std::fflush(stdout); // what has been printed comes first
    std::error_code error = channel_.write(held_);
    if (held_file_) {
        std::rewind(held_file_.get());
        std::vector<char> block(std::size_t{1} << 16);
        for (std::size_t count = 1; !error && count > 0;) {
            errno = 0;
            count = std::fread(block.data(), 1, block.size(), held_file_.get());
            error = std::ferror(held_file_.get()) != 0 ? last_error() : channel_.write({block.data(), count});
        }
    }
    if (error) {
        fail(path_, error);
    }
    held_file_ = nullptr;
    held_.clear();
}

void Output_Files::add(const std::string& name, std::string_view bytes) {
    if (is_standard_output(name)) {
        if (standard_output_) {
            throw Usage_Error("-: expected standard output for one file, found it for two");
        }
        standard_output_ = std::make_unique<Output_File>(name);
        standard_output_->write(bytes);
        return;
    }
    if (!interruption_) {
        interruption_.emplace();
    }
    auto file = std::make_unique<Output_File>(name);
    if (std::ranges::any_of(files_, [&](const auto& other) { return file->replaces_same_as(*other); })) {
        throw Usage_Error(name + ": expected a name for one file, found it for two");
    }
    files_.push_back(std::move(file));
    files_.back()->write(bytes);
    files_.back()->close();
    Interruption::check();
}

void Output_Files::commit() {
    Interruption::check();
    for (const auto& file : files_) {
        file->commit();
    }
    files_.clear();
    if (standard_output_) {
        standard_output_->commit();
        standard_output_ = nullptr;
    }
}

void refuse_same_files(const std::vector<std::string>& read, const std::vector<std::string>& written) {
    const auto is_same = [](const std::string& one, const std::string& other) {
        std::error_code none;
        const fs::path path = path_of(one);
        if (one.empty() || other.empty() || one == "-" || other == "-" ||
            (fs::exists(path, none) && !fs::is_regular_file(path, none))) {
            return false;
        }
        const auto target_of = [&none](const std::string& name) {
            return fs::weakly_canonical(fs::absolute(place_of(path_of(name)).target, none), none);
        };
        // Empty where it cannot be known.
        const fs::path target = target_of(one);
        return fs::equivalent(path, path_of(other), none) || (!target.empty() && target == target_of(other));
    };
    for (std::size_t i = 0; i < written.size(); ++i) {
        for (const std::string& file : read) {
            if (is_same(file, written[i])) {
                throw Usage_Error(written[i] + ": expected another file to write than those to read");
            }
        }
        for (std::size_t k = 0; k < i; ++k) {
            if (is_same(written[k], written[i])) {
                throw Usage_Error(written[i] + ": expected a file of its own for each output");
            }
        }
    }
}

bool is_standard_output(const std::string& name) {
    return name == "-" || place_of(path_of(name)).number == number_of(stdout);
}

void refuse_terminal(const char* option, const std::string& name) {
    if (is_standard_output(name) && is_terminal(stdout)) {
        throw Usage_Error(std::string(option) + ' ' + name + ": expected a file or a pipe for a picture, found a terminal");
    }
}

void print_line(const std::string& output, const std::string& line) {
    std::fprintf(is_standard_output(output) ? stderr : stdout, "%s\n", line.c_str());
}

void write_file(const std::string& path, std::string_view bytes) {
    const Interruption interruption;
    Output_File file(path);
    file.write(bytes);
    Interruption::check();
    file.commit();
}

} // namespace vorna::drawing

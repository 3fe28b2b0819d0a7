// Files that appear whole or not at all.
#include "drawing/files/output_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <random>
#include <set>
#include <system_error>
#include <utility>

#include "drawing/files/interruption.h"
#include "drawing/files/output_place.h"
#include "drawing/files/path.h"
#include "drawing/files/standard_streams.h"

namespace vorna::drawing {

namespace {

namespace fs = std::filesystem;

// Bytes for standard output that are kept in memory; more go into a file that has no name.
constexpr std::size_t most_held = std::size_t{4} << 20;

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

// Temporary files that exist, of all threads. The mutex is locked while one is created, moved or removed.
struct Unfinished {
    std::mutex mutex;
    std::set<fs::path> files;
};

Unfinished& unfinished() {
    static auto& all = *new Unfinished; // never destroyed, because other threads may still write while the process ends
    return all;
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
    const Output_Place place = checked_output_place_of(path_);
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
        create(is_replaced ? static_cast<unsigned>(permissions) : 0666, error);
        if (!error && is_replaced) {
            std::error_code none; // the user's mask may have taken some away
            fs::permissions(temporary_, permissions, none);
        }
    }
    if (!channel_.is_open()) {
        fail_to_write(path_, error);
    }
}

Output_File::~Output_File() {
    channel_.close();
    if (!temporary_.empty()) {
        const std::lock_guard lock(unfinished().mutex);
        std::error_code ignored;
        fs::remove(temporary_, ignored);
        unfinished().files.erase(temporary_);
    }
}

void Output_File::create(unsigned permissions, std::error_code& error) {
    const std::lock_guard lock(unfinished().mutex);
    do {
        temporary_ = temporary_beside(target_);
        // Before there is a file: a lack of memory leaves none.
        const auto known = unfinished().files.insert(temporary_).first;
        channel_ = Output_Channel::created(temporary_, permissions, error);
        if (error) {
            unfinished().files.erase(known);
        }
    } while (error == std::errc::file_exists);
    if (error) {
        temporary_.clear();
    }
}

void Output_File::remove_unfinished() {
    unfinished().mutex.lock();
    for (const fs::path& file : unfinished().files) {
        std::error_code ignored;
        fs::remove(file, ignored);
    }
}

void Output_File::write(std::string_view bytes) {
    if (is_held_) {
        hold(bytes);
    } else if (const std::error_code error = channel_.write(bytes)) {
        fail_to_write(path_, error);
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
            fail_to_write(path_, last_error());
        }
        bytes = held_;
    }
    if (std::fwrite(bytes.data(), 1, bytes.size(), held_file_.get()) != bytes.size()) {
        fail_to_write(path_, last_error());
    }
    held_.clear();
}

void Output_File::rewrite(std::uint64_t place, std::string_view bytes) {
    std::error_code error;
    errno = 0;
    if (!is_held_) {
        error = temporary_.empty() ? std::make_error_code(std::errc::invalid_seek) : channel_.rewrite(place, bytes);
    } else if (!held_file_) {
        std::ranges::copy(bytes, held_.begin() + static_cast<std::ptrdiff_t>(place));
    } else if (std::fseek(held_file_.get(), static_cast<long>(place), SEEK_SET) != 0 ||
               std::fwrite(bytes.data(), 1, bytes.size(), held_file_.get()) != bytes.size() ||
               std::fseek(held_file_.get(), 0, SEEK_END) != 0) {
        error = last_error();
    }
    if (error) {
        fail_to_write(path_, error);
    }
}

void Output_File::check(const std::string& name) {
    if (name == "-") {
        return;
    }
    const fs::path path = path_of(name);
    const Output_Place place = checked_output_place_of(path);
    if (place.is_open) {
        return;
    }
    std::error_code none;
    const fs::path folder = place.target.has_parent_path() ? place.target.parent_path() : fs::path(".");
    errno = 0;
    if (!is_writable(folder)) {
        fail_to_write(path, last_error());
    }
    if (!fs::is_directory(folder, none)) {
        fail_to_write(path, std::make_error_code(std::errc::not_a_directory));
    }
}

bool Output_File::can_rewrite(const std::string& name) {
    if (name == "-") {
        return true;
    }
    std::error_code none;
    const fs::path path = path_of(name);
    const Output_Place place = output_place_of(path);
    return place.number >= 0 || (!place.is_open && (!fs::exists(path, none) || fs::is_regular_file(path, none)));
}

void Output_File::close() {
    if (is_held_ || !channel_.is_open()) {
        return;
    }
    const std::error_code not_synced = channel_.sync(), not_closed = channel_.close();
    if (not_synced || not_closed) {
        fail_to_write(path_, not_synced ? not_synced : not_closed);
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
        {
            const std::lock_guard lock(unfinished().mutex);
            fs::rename(temporary_, target_, reason);
            if (!reason) {
                unfinished().files.erase(std::exchange(temporary_, {}));
            }
        }
        if (reason) {
            fail_to_write(target_, reason);
        }
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
        fail_to_write(path_, error);
    }
    held_file_ = nullptr;
    held_.clear();
}

void write_file(const std::string& path, std::string_view bytes) {
    const Interruption interruption;
    Output_File file(path);
    file.write(bytes);
    Interruption::check();
    file.commit();
}

} // namespace vorna::drawing

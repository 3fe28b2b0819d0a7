// Files that appear whole or not at all.
#include "app/output_file.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <random>
#include <stdexcept>
#include <system_error>

#include "app/path.h"
#include "app/standard_streams.h"

namespace app {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path, const std::error_code& reason) {
    throw std::runtime_error(path.string() + ": cannot be written: " + reason.message());
}

std::error_code last_error() {
    return {errno, std::generic_category()};
}

void write_bytes(std::FILE* file, const fs::path& target, std::string_view bytes) {
    if (!file) {
        fail(target, last_error());
    }
    errno = 0;
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const std::error_code reason = last_error();
    if (std::fclose(file) != 0 || !written) {
        fail(target, written ? last_error() : reason);
    }
}

// In the same folder, because only there a move replaces the target in one step.
fs::path temporary_beside(const fs::path& target) {
    std::random_device random;
    fs::path temporary = target;
    return temporary += ".part-" + std::to_string(random());
}

} // namespace

Output_Files::~Output_Files() {
    std::error_code ignored;
    for (const Pending& file : pending_) {
        fs::remove(file.temporary, ignored);
    }
}

void Output_Files::add(const std::string& name, std::string_view bytes) {
    if (name == "-") {
        standard_output_ += bytes;
        return;
    }
    const fs::path path = path_of(name);
    std::error_code none;
    if (fs::is_directory(path, none)) {
        fail(path, std::make_error_code(std::errc::is_a_directory));
    }
    // Devices and pipes cannot be replaced, only written.
    if (fs::exists(path, none) && !fs::is_regular_file(path, none)) {
        write_bytes(std::fopen(name.c_str(), "wb"), path, bytes);
        return;
    }
    // A link stays a link: the file that it leads to is replaced.
    const fs::path target = fs::is_symlink(path, none) ? fs::weakly_canonical(path, none) : path;
    const fs::path temporary = temporary_beside(target);
    std::FILE* file = std::fopen(temporary.string().c_str(), "wbx");
    if (file) {
        pending_.push_back({temporary, target});
    }
    write_bytes(file, path, bytes);
}

void Output_Files::commit() {
    while (!pending_.empty()) {
        std::error_code reason;
        fs::rename(pending_.front().temporary, pending_.front().target, reason);
        if (reason) {
            fail(pending_.front().target, reason);
        }
        pending_.erase(pending_.begin());
    }
    if (!standard_output_.empty()) {
        set_binary(stdout);
        errno = 0;
        if (std::fwrite(standard_output_.data(), 1, standard_output_.size(), stdout) != standard_output_.size() ||
            std::fflush(stdout) != 0) {
            fail("standard output", last_error());
        }
        standard_output_.clear();
    }
}

void write_file(const std::string& path, std::string_view bytes) {
    Output_Files files;
    files.add(path, bytes);
    files.commit();
}

} // namespace app

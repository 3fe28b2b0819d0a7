// Files that appear whole or not at all.
#include "app/output_file.h"

#include <cerrno>
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

// In the same folder, because only there a move replaces the target in one step.
fs::path temporary_beside(const fs::path& target) {
    std::random_device random;
    fs::path temporary = target;
    return temporary += ".part-" + std::to_string(random());
}

} // namespace

Output_File::Output_File(const std::string& name) : path_(path_of(name)) {
    std::error_code none;
    if (fs::is_directory(path_, none)) {
        fail(path_, std::make_error_code(std::errc::is_a_directory));
    }
    // Devices and pipes cannot be replaced, only written.
    if (fs::exists(path_, none) && !fs::is_regular_file(path_, none)) {
        file_.reset(std::fopen(name.c_str(), "wb"));
    } else {
        // A link stays a link: the file that it leads to is replaced.
        target_ = fs::is_symlink(path_, none) ? fs::weakly_canonical(path_, none) : path_;
        const fs::path temporary = temporary_beside(target_);
        file_.reset(std::fopen(temporary.string().c_str(), "wbx"));
        if (file_) {
            temporary_ = temporary;
        }
    }
    if (!file_) {
        fail(path_, last_error());
    }
}

Output_File::~Output_File() {
    file_ = nullptr;
    if (!temporary_.empty()) {
        std::error_code ignored;
        fs::remove(temporary_, ignored);
    }
}

void Output_File::write(std::string_view bytes) {
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
        fail(path_, last_error());
    }
}

void Output_File::close() {
    if (file_ && std::fclose(file_.release()) != 0) {
        fail(path_, last_error());
    }
}

void Output_File::commit() {
    close();
    if (!temporary_.empty()) {
        std::error_code reason;
        fs::rename(temporary_, target_, reason);
        if (reason) {
            fail(target_, reason);
        }
        temporary_.clear();
    }
}

void Output_Files::add(const std::string& name, std::string_view bytes) {
    if (name == "-") {
        standard_output_ += bytes;
        return;
    }
    if (!interruption_) {
        interruption_.emplace();
    }
    files_.push_back(std::make_unique<Output_File>(name));
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
    const Interruption interruption;
    Output_File file(path);
    file.write(bytes);
    Interruption::check();
    file.commit();
}

} // namespace app

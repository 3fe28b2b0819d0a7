// Files that appear whole or not at all.
#include "app/output_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "app/command.h"
#include "app/path.h"
#include "app/standard_streams.h"

namespace app {

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

// In the same folder, because only there a move replaces the target in one step. Systems take names of up to 255 bytes.
fs::path temporary_beside(const fs::path& target) {
    constexpr std::size_t longest = 200;
    std::random_device random;
    fs::path temporary = target;
    temporary.replace_filename(target.filename().native().substr(0, longest));
    return temporary += ".part-" + std::to_string(random());
}

// What links lead to, whether it exists or not: a link stays a link.
fs::path target_of(const fs::path& path) {
    constexpr int most_links = 40;
    std::error_code none;
    fs::path target = path;
    for (int links = 0; fs::is_symlink(target, none); ++links) {
        if (links == most_links) {
            fail(path, std::make_error_code(std::errc::too_many_symbolic_link_levels));
        }
        target = target.parent_path() / fs::read_symlink(target, none);
    }
    return target;
}

bool is_writable(const fs::path& path) {
#if defined(_WIN32)
    return _waccess(path.c_str(), 2) == 0;
#else
    return access(path.c_str(), W_OK) == 0;
#endif
}

} // namespace

Output_File::Output_File(const std::string& name) : path_(path_of(name)) {
    std::error_code none;
    if (name == "-") {
        path_ = "standard output";
        is_standard_output_ = true;
        return;
    }
    if (fs::is_directory(path_, none)) {
        fail(path_, std::make_error_code(std::errc::is_a_directory));
    }
    // Devices and pipes cannot be replaced, only written.
    if (fs::exists(path_, none) && !fs::is_regular_file(path_, none)) {
        file_.reset(std::fopen(name.c_str(), "wb"));
    } else {
        target_ = target_of(path_);
        const bool is_replaced = fs::exists(target_, none);
        if (is_replaced && !is_writable(target_)) {
            fail(path_, last_error());
        }
        // Nothing may throw from the moment that there is a file until the destructor knows of it.
        temporary_ = temporary_beside(target_);
        file_.reset(std::fopen(temporary_.string().c_str(), "wbx"));
        if (!file_) {
            temporary_.clear();
        } else if (is_replaced) {
            fs::permissions(temporary_, fs::status(target_, none).permissions() & fs::perms::all, none);
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
    if (is_standard_output_ && !file_) {
        held_ += bytes;
        if (held_.size() <= most_held) {
            return;
        }
        file_.reset(std::tmpfile());
        if (!file_) {
            fail(path_, last_error());
        }
        bytes = held_;
    }
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
        fail(path_, last_error());
    }
    held_.clear();
}

void Output_File::check(const std::string& name) {
    if (name == "-") {
        return;
    }
    const fs::path path = path_of(name);
    std::error_code none;
    if (fs::is_directory(path, none)) {
        fail(path, std::make_error_code(std::errc::is_a_directory));
    }
    const bool is_device = fs::exists(path, none) && !fs::is_regular_file(path, none);
    const fs::path target = is_device ? path : target_of(path);
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    errno = 0;
    if (!is_writable(is_device ? path : folder) || (fs::exists(target, none) && !is_writable(target))) {
        fail(path, last_error());
    }
    if (!is_device && !fs::is_directory(folder, none)) {
        fail(path, std::make_error_code(std::errc::not_a_directory));
    }
}

void Output_File::close() {
    if (file_ && !is_standard_output_ && std::fclose(file_.release()) != 0) {
        fail(path_, last_error());
    }
}

void Output_File::commit() {
    if (is_standard_output_) {
        copy_to_standard_output();
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
    }
}

void Output_File::copy_to_standard_output() {
    set_binary(stdout);
    errno = 0;
    bool fine = std::fwrite(held_.data(), 1, held_.size(), stdout) == held_.size();
    if (file_) {
        std::rewind(file_.get());
        std::vector<char> block(std::size_t{1} << 16);
        for (std::size_t count = 1; fine && count > 0;) {
            count = std::fread(block.data(), 1, block.size(), file_.get());
            fine = std::fwrite(block.data(), 1, count, stdout) == count && std::ferror(file_.get()) == 0;
        }
    }
    if (!fine || std::fflush(stdout) != 0) {
        fail(path_, last_error());
    }
    file_ = nullptr;
    held_.clear();
}

void Output_Files::add(const std::string& name, std::string_view bytes) {
    if (name == "-") {
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
        const auto place_of = [&none](const std::string& name) {
            return fs::weakly_canonical(fs::absolute(target_of(path_of(name)), none), none);
        };
        // Empty where it cannot be known.
        const fs::path place = place_of(one);
        return fs::equivalent(path, path_of(other), none) || (!place.empty() && place == place_of(other));
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

void refuse_terminal(const char* option, const std::string& name) {
    if (name == "-" && is_terminal(stdout)) {
        throw Usage_Error(std::string(option) + " -: expected a file or a pipe for a picture, found a terminal");
    }
}

void print_line(const std::string& output, const std::string& line) {
    std::fprintf(output == "-" ? stderr : stdout, "%s\n", line.c_str());
}

void write_file(const std::string& path, std::string_view bytes) {
    const Interruption interruption;
    Output_File file(path);
    file.write(bytes);
    Interruption::check();
    file.commit();
}

} // namespace app

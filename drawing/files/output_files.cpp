// Files that are written together.
#include "drawing/files/output_files.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "drawing/files/output_place.h"
#include "drawing/files/path.h"
#include "drawing/files/standard_streams.h"
#include "drawing/files/usage_error.h"

namespace vorna::drawing {

namespace fs = std::filesystem;

void Output_Files::add(const std::string& name, std::string_view bytes) {
    add(name, [bytes](Output_File& file) { file.write(bytes); });
}

void Output_Files::add(const std::string& name, const std::function<void(Output_File&)>& write) {
    if (is_standard_output(name)) {
        if (has_standard_output_) {
            throw Usage_Error("-: expected standard output for one file, found it for two");
        }
        has_standard_output_ = true;
    } else if (!interruption_) {
        interruption_.emplace();
    }
    auto file = std::make_unique<Output_File>(name);
    if (std::ranges::any_of(files_, [&](const auto& other) { return file->replaces_same_as(*other); })) {
        throw Usage_Error(name + ": expected a name for one file, found it for two");
    }
    write(*file);
    add(std::move(file));
}

void Output_Files::add(std::unique_ptr<Output_File> file) {
    file->close();
    files_.push_back(std::move(file));
    Interruption::check();
}

void Output_Files::commit() {
    Interruption::check();
    std::stable_partition(files_.begin(), files_.end(), [](const auto& file) { return file->is_held(); });
    for (const auto& file : files_) {
        file->commit();
    }
    files_.clear();
    has_standard_output_ = false;
}

void refuse_same_files(const std::vector<std::string>& read, const std::vector<std::string>& written) {
    const auto is_same = [](const std::string& one, const std::string& other) {
        std::error_code none;
        const fs::path path = path_of(one);
        if (one.empty() || other.empty() || one == "-" || other == "-" ||
            (fs::exists(path, none) && !fs::is_regular_file(path, none))) {
            return false;
        }
        // Empty for names that lead nowhere; whoever opens the file reports those.
        const auto target_of = [&none](const std::string& name) {
            try {
                return fs::weakly_canonical(fs::absolute(output_place_of(path_of(name)).target, none), none);
            } catch (const std::runtime_error&) {
                return fs::path();
            }
        };
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
    return name == "-" || output_place_of(path_of(name)).number == number_of(stdout);
}

} // namespace vorna::drawing

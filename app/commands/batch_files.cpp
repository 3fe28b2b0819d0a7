// The files of a batch.
#include "app/commands/batch_files.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "drawing/files/input_file.h"
#include "drawing/files/load_limits.h"
#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"
#include "drawing/job/formats.h"

namespace vorna::app {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t longest_list = std::size_t{1} << 30; // bytes

std::vector<std::string> files_in(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code error;
    for (fs::directory_iterator entry(drawing::path_of(folder), error), end; !error && entry != end; entry.increment(error)) {
        fs::path name = entry->path().filename();
        if (name.extension() == ".gz" || name.extension() == ".zst") {
            name.replace_extension();
        }
        std::string suffix = name.extension().string();
        suffix.erase(0, 1); // the dot
        std::ranges::transform(suffix, suffix.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        std::error_code none;
        if (entry->is_regular_file(none) && drawing::find_format(suffix)) {
            files.push_back(entry->path().string());
        }
    }
    if (error) {
        throw drawing::Usage_Error(folder + ": cannot be read: " + error.message());
    }
    if (files.empty()) {
        throw drawing::Usage_Error(folder + ": expected a folder with models, maps or drawings, found none in it");
    }
    std::ranges::sort(files);
    return files;
}

} // namespace

std::vector<std::string> batch_files(const std::vector<std::string>& given, const std::string& list) {
    std::vector<std::string> named = given, files;
    if (!list.empty()) {
        drawing::Load_Limits limits;
        const std::string text = drawing::read_input(list, limits, longest_list);
        std::string_view rest = text;
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            std::string_view line = rest.substr(0, end);
            line = line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
            if (!line.empty()) {
                named.emplace_back(line);
            }
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    for (const std::string& name : named) {
        std::error_code none;
        if (fs::is_directory(drawing::path_of(name), none)) {
            const std::vector<std::string> found = files_in(name);
            files.insert(files.end(), found.begin(), found.end());
        } else {
            files.push_back(name);
        }
    }
    if (files.empty()) {
        throw drawing::Usage_Error(drawing::name_of_input(list) + ": expected names of files, one a line, found none");
    }
    return files;
}

Manifest::Manifest(const std::string& name) : name_(name) {
    if (!name.empty()) {
        errno = 0;
        file_.reset(name == "-" ? stdout : std::fopen(name.c_str(), "ab"));
        if (!file_) {
            throw std::runtime_error(name + ": cannot be written: " + std::generic_category().message(errno));
        }
    }
}

void Manifest::add(const std::string& file, const std::string& image, const char* status, const std::string& message,
                   double seconds) {
    if (!file_) {
        return;
    }
    nlohmann::ordered_json line{{"file", file}, {"image", image}, {"status", status}};
    if (!message.empty()) {
        line["message"] = message;
    }
    line["seconds"] = std::round(seconds * 1e4) / 1e4;
    constexpr auto replace = nlohmann::ordered_json::error_handler_t::replace;
    const std::string text = line.dump(-1, ' ', false, replace) + '\n';
    const std::lock_guard lock(writing_);
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size() || std::fflush(file_.get()) != 0) {
        throw std::runtime_error(name_ + ": cannot be written: " + std::generic_category().message(errno));
    }
}

} // namespace vorna::app

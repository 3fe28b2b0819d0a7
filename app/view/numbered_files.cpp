// Names of files in a folder that are not there yet.
#include "app/view/numbered_files.h"

#include <filesystem>
#include <utility>

#include "drawing/files/path.h"

namespace vorna::app::view {
namespace {

std::string utf8_of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

} // namespace

Numbered_Files::Numbered_Files(std::string file, std::string folder) : file_(std::move(file)), folder_(std::move(folder)) {
}

std::string Numbered_Files::next(const std::string& ending) {
    std::string name;
    do {
        std::string number = std::to_string(number_++);
        number.insert(0, number.size() < 3 ? 3 - number.size() : 0, '0');
        const std::string file = utf8_of(drawing::path_of(file_).stem()) + "-" + number + ending;
        name = utf8_of(drawing::path_of(folder_) / drawing::path_of(file));
    } while (std::filesystem::exists(drawing::path_of(name)));
    return name;
}

std::string file_name_of(const std::string& path) {
    return utf8_of(drawing::path_of(path).filename());
}

} // namespace vorna::app::view

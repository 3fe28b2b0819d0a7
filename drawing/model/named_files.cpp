// Files that a model, or a file that belongs to it, names.
#include "drawing/model/named_files.h"

#include <algorithm>
#include <cctype>
#include <system_error>

#include "drawing/files/path.h"

namespace vorna::drawing::model {
namespace {

namespace fs = std::filesystem;

std::string lower_case(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

fs::path given_path(const std::string& file, std::string name) {
    std::ranges::replace(name, '\\', '/');
    return (path_of(file).parent_path() / path_of(name)).lexically_normal();
}

} // namespace

std::optional<std::string> Named_Files::find(const std::string& file, const std::string& name) {
    constexpr std::uint64_t file_steps = 1000;
    limits_.take_work(model_, file_steps + name.size());
    const fs::path given = given_path(file, name), folder = path_of(file).parent_path();
    std::error_code error;
    if (limits_.allows(model_, given.string()) && fs::exists(given, error) && !fs::is_directory(given, error)) {
        return given.string();
    }
    const Names& names = names_in(folder);
    const auto found = names.find(lower_case(given.filename().string()));
    return found == names.end() ? std::nullopt : std::optional((folder / path_of(found->second)).string());
}

std::string Named_Files::path(const std::string& file, const std::string& name) {
    return find(file, name).value_or(given_path(file, name).string());
}

// Of names that differ in capitals only, the first in the order of bytes.
const Named_Files::Names& Named_Files::names_in(const fs::path& folder) {
    constexpr std::uint64_t neighbour_steps = 100, neighbour_memory = 160;
    const auto [place, is_new] = folders_.try_emplace(folder.string());
    if (is_new) {
        std::error_code error;
        for (const fs::directory_entry& beside : fs::directory_iterator(folder.empty() ? "." : folder, error)) {
            const std::string name = beside.path().filename().string();
            limits_.take_work(model_, neighbour_steps);
            limits_.take_memory(model_, neighbour_memory + 2 * name.size());
            std::string& known = place->second[lower_case(name)];
            known = known.empty() ? name : std::min(known, name);
        }
    }
    return place->second;
}

} // namespace vorna::drawing::model

// What the parts of one image have in common.
#include "app/commands/part_origin.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>
#include <utility>

#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/sha256.h"
#include "vorna/version.h"

namespace vorna::app {
namespace {

namespace fs = std::filesystem;

// Options that leave the pixels of the image as they are. Those of input files decide them by the files' contents.
constexpr std::array keeps_pixels{
    std::string_view("--allow-empty"), std::string_view("--allow-outside"), std::string_view("--area"),
    std::string_view("--compress"),    std::string_view("--dry-run"),       std::string_view("--framing"),
    std::string_view("--hash"),        std::string_view("--kernels"),       std::string_view("--max-memory"),
    std::string_view("--module"),      std::string_view("--output"),        std::string_view("--output-format"),
    std::string_view("--part"),        std::string_view("--parts-of"),      std::string_view("--plan"),
    std::string_view("--plan-lines"),  std::string_view("--repeat"),        std::string_view("--resume"),
    std::string_view("--stats"),       std::string_view("--stream"),        std::string_view("--strict"),
    std::string_view("--threads"),     std::string_view("--tile"),          std::string_view("--tile-size"),
    std::string_view("--tile-times"),  std::string_view("--tiles-of"),
};

void add(drawing::Sha256& digest, std::string_view bytes) {
    digest.add(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

const Option& option_of(const Given& given, const std::string& name) {
    return *std::ranges::find(given.command->options, name, [](const Option& option) { return option.names.back(); });
}

// Whether it is one of the command's own options, not an argument and not one that every command takes.
bool is_own_option(const Given& given, const std::string& name) {
    return std::ranges::any_of(given.command->options, [&](const Option& option) { return option.names.back() == name; });
}

bool is_flag(const Option& option) {
    return option.value.word.empty();
}

// The same for all names of a file.
fs::path place_of(const std::string& file) {
    std::error_code none;
    fs::path place = fs::weakly_canonical(drawing::path_of(file), none);
    return place.is_absolute() ? place : fs::absolute(place, none);
}

} // namespace

std::string digest_of_file(const std::string& name) {
    std::error_code none;
    if (!std::filesystem::is_regular_file(drawing::path_of(name), none)) {
        return {};
    }
    std::ifstream file(drawing::path_of(name), std::ios::binary);
    drawing::Sha256 digest;
    std::vector<char> block(std::size_t{1} << 16);
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount() > 0) {
        add(digest, {block.data(), static_cast<std::size_t>(file.gcount())});
    }
    if (!file.eof()) {
        throw drawing::Usage_Error(name + ": cannot be read");
    }
    return digest.finish();
}

std::string digest_of_inputs(const std::vector<drawing::Input>& inputs) {
    drawing::Sha256 digest;
    for (const drawing::Input& input : inputs) {
        if (input.content) {
            drawing::Sha256 own;
            add(own, *input.content);
            add(digest, own.finish());
        } else {
            add(digest, digest_of_file(input.name));
        }
    }
    return digest.finish();
}

std::string part_origin(const Render_Options& options, std::int32_t supersample) {
    const Given& given = *options.given;
    drawing::Sha256 digest;
    // How many pixels are drawn for one depends on options that leave them as they are otherwise.
    add(digest, VORNA_VERSION_TEXT "\n" + options.models_digest + '\n' + std::to_string(supersample) + '\n');
    // Models and the files of options count by their contents, at their places among the words. Other files, which those name,
    // count with their places in the first model's folder: folders of the same files may differ between machines.
    const fs::path folder = place_of(options.models.front()).parent_path();
    std::set<fs::path> given_files, read_files;
    std::ranges::transform(options.models, std::inserter(given_files, given_files.end()), place_of);
    for (const std::vector<std::string>& values : given.values) {
        std::ranges::transform(values, std::inserter(given_files, given_files.end()), place_of);
    }
    std::set<std::pair<std::string, std::string>> others;
    for (const std::string& file : options.limits->files()) {
        const fs::path place = place_of(file), inside = place.lexically_relative(folder);
        read_files.insert(place);
        if (const std::string content = digest_of_file(file); !content.empty() && !given_files.contains(place)) {
            const bool is_beside = !inside.empty() && *inside.begin() != "..";
            others.emplace((is_beside ? inside : place.filename()).generic_string(), content);
        }
    }
    for (const auto& [name, content] : others) {
        add(digest, name + '\n' + content + '\n');
    }
    for (std::size_t i = 0; i < given.names.size(); ++i) {
        const std::string& name = given.names[i];
        if (!is_own_option(given, name) || std::ranges::find(keeps_pixels, name) != keeps_pixels.end()) {
            continue;
        }
        const std::string& by_default = option_of(given, name).by_default;
        if (given.values[i].size() != 1 || by_default.empty() || given.values[i].front() != by_default) {
            add(digest, name);
            for (const std::string& value : given.values[i]) {
                const std::string content = read_files.contains(place_of(value)) ? digest_of_file(value) : std::string();
                add(digest, '\0' + (content.empty() ? value : content));
            }
            add(digest, "\n");
        }
    }
    return digest.finish();
}

std::vector<std::string> option_words(const Given& given, std::initializer_list<std::string_view> without) {
    std::vector<std::string> words;
    for (std::size_t i = 0; i < given.names.size(); ++i) {
        const std::string& name = given.names[i];
        const bool is_programs = name == "--module" || name == "--kernels";
        if ((!is_programs && !is_own_option(given, name)) || std::ranges::find(without, name) != without.end()) {
            continue;
        }
        if (!is_programs && is_flag(option_of(given, name))) {
            words.push_back(name);
            continue;
        }
        for (const std::string& value : given.values[i]) {
            words.push_back(name + '=' + value);
        }
    }
    return words;
}

} // namespace vorna::app

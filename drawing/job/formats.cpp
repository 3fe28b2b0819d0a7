// The formats of files to draw.
#include "drawing/job/formats.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "drawing/files/gzip.h"
#include "drawing/files/input_file.h"
#include "drawing/files/json_memory.h"
#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"
#include "drawing/map/map_reader.h"
#include "drawing/map/shapes.h"
#include "drawing/model/model_reader.h"

namespace vorna::drawing {
namespace {

constexpr std::size_t largest_input = std::size_t{1} << 32;
constexpr std::string_view blanks = " \t\r\n";

// The name's suffix in lower case without its dot.
std::string suffix_of(const std::filesystem::path& path) {
    std::string suffix = path.extension().string();
    std::ranges::transform(suffix, suffix.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return suffix.empty() ? suffix : suffix.substr(1);
}

std::string_view without_blanks(std::string_view text) {
    const std::size_t start = text.find_first_not_of(blanks);
    return start == text.npos ? std::string_view() : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

std::string_view first_word(std::string_view text) {
    text = without_blanks(text);
    return text.substr(0, text.find_first_of(blanks));
}

// The next line without blanks around it.
std::string_view take_line(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return without_blanks(line);
}

// Pairs of lines, the first of them a number; 999 is a comment.
bool is_dxf(const Content_Probe& probe) {
    std::string_view content = probe.text;
    std::string_view code = take_line(content), value = take_line(content);
    while (code == "999") {
        code = take_line(content);
        value = take_line(content);
    }
    return code == "0" && value == "SECTION";
}

// Binary files may begin in any way, so their size decides.
bool is_stl(const Content_Probe& probe) {
    const std::string_view content = probe.text;
    constexpr std::size_t header = 84, facet = 50;
    std::uint32_t count = 0;
    if (content.size() >= header) {
        std::memcpy(&count, content.data() + 80, sizeof count);
        if constexpr (std::endian::native == std::endian::big) {
            count = count >> 24 | (count >> 8 & 0xFF00) | (count & 0xFF00) << 8 | count << 24;
        }
        if (count > 0 && header + facet * std::uint64_t{count} == content.size()) {
            return true;
        }
    }
    return first_word(content.substr(0, 256)) == "solid";
}

// The first line that says something has a vertex, a name or a material.
bool is_obj(const Content_Probe& probe) {
    std::string_view content = probe.text;
    constexpr std::array known{"v", "vn", "vt", "vp", "f", "o", "g", "s", "mtllib", "usemtl"};
    while (!content.empty()) {
        const std::string_view word = first_word(take_line(content));
        if (!word.empty() && word.front() != '#') {
            return std::ranges::find(known, word) != known.end();
        }
    }
    return false;
}

// Pipes have a name too, and can be read once only.
bool is_stream(const std::string& path) {
    std::error_code none;
    return std::filesystem::exists(path_of(path), none) && !std::filesystem::is_regular_file(path_of(path), none);
}

// Can be read later, as it is.
bool is_plain(const std::string& path) {
    std::ifstream stream(path_of(path), std::ios::binary);
    char magic[2] = {};
    return stream.is_open() && !(stream.read(magic, 2) && is_gzip({magic, 2}));
}

// Readers that take the whole content.
template <auto& read> model::Mesh read_content(Input& input, Load_Limits& limits) {
    const std::string content = input.content ? std::move(*input.content) : model::read_file(input.name, limits);
    return read(input.name, content, limits);
}

constexpr bool is_ply(const Content_Probe& content) {
    return content.text.starts_with("ply\n") || content.text.starts_with("ply\r");
}

constexpr bool is_glb(const Content_Probe& content) {
    return content.text.starts_with("glTF");
}

constexpr bool is_gltf(const Content_Probe& content) {
    return content.has_asset;
}

constexpr bool is_other_json(const Content_Probe& content) {
    return content.is_json && !content.has_asset;
}

constexpr Format table[] = {
    {.suffix = "ply", .kind = Input_Kind::model, .detect = is_ply, .read_model = read_content<model::read_ply>},
    {.suffix = "glb", .kind = Input_Kind::model, .detect = is_glb},
    {.suffix = "gltf", .kind = Input_Kind::model, .detect = is_gltf},
    {.suffix = "json", .kind = Input_Kind::map, .detect = is_other_json, .read_map = map::read_json_map},
    {.suffix = "geojson", .kind = Input_Kind::map, .read_map = map::read_json_map},
    {.suffix = "topojson", .kind = Input_Kind::map, .read_map = map::read_json_map},
    {.suffix = "dxf", .kind = Input_Kind::map, .detect = is_dxf, .read_map = map::read_dxf_map},
    {.suffix = "stl", .kind = Input_Kind::model, .has_z_up = true, .detect = is_stl, .read_model = read_content<model::read_stl>},
    {.suffix = "obj", .kind = Input_Kind::model, .detect = is_obj, .read_model = read_content<model::read_obj>},
    // Others that the general reader knows, for completion.
    {.suffix = "3ds", .kind = Input_Kind::model},
    {.suffix = "dae", .kind = Input_Kind::model},
    {.suffix = "fbx", .kind = Input_Kind::model},
    {.suffix = "blend", .kind = Input_Kind::model},
    {.suffix = "off", .kind = Input_Kind::model, .has_z_up = true},
    {.suffix = "x3d", .kind = Input_Kind::model},
    {.suffix = "wrl", .kind = Input_Kind::model},
    {.suffix = "3mf", .kind = Input_Kind::model},
};

// Whether this build reads the format.
bool is_readable(const std::string& suffix) {
    const Format* format = find_format(suffix);
    return (format && (format->read_model || format->read_map)) || model::is_assimp_format(suffix);
}

const Format* format_of_content(const std::string& name, const std::string& content, Load_Limits& limits) {
    Content_Probe probe{.text = content};
    if (const std::size_t start = content.find_first_not_of(blanks); start != content.npos && content[start] == '{') {
        const Load_Limits::Loan document_memory(limits, name, json_memory(content));
        const auto document = nlohmann::json::parse(content, nullptr, false);
        probe.is_json = true;
        probe.has_asset = document.is_object() && document.contains("asset");
    }
    const auto found = std::ranges::find_if(table, [&](const Format& format) { return format.detect && format.detect(probe); });
    return found == std::end(table) ? nullptr : found;
}

} // namespace

std::span<const Format> formats() {
    return table;
}

const Format* find_format(std::string_view suffix) {
    const auto* found = std::ranges::find(table, suffix, &Format::suffix);
    return found == std::end(table) ? nullptr : found;
}

Input open_input(const std::string& path, const std::string& suffix, Load_Limits& limits) {
    if (!suffix.empty() && !is_readable(suffix)) {
        throw Usage_Error("--input-format: expected a suffix of files that can be read, as obj, ply, stl, json or dxf, found '" +
                          suffix + "'");
    }
    const bool is_named = path != "-";
    const std::string own_suffix = is_named ? suffix_of(path_of(path)) : "";
    Input input{.name = name_of_input(path), .suffix = suffix.empty() ? own_suffix : suffix, .content = {}};
    if (!is_named || input.suffix != own_suffix || !is_readable(own_suffix) || is_stream(path) || !is_plain(path)) {
        input.content = read_input(path, limits, largest_input);
        if (is_gzip(*input.content)) {
            input.content = unpacked_input(input.name, *input.content, limits, largest_input);
        }
        if (input.suffix == "gz") {
            input.suffix = suffix_of(path_of(path).stem());
        }
        if (suffix.empty() && !is_readable(input.suffix)) {
            const Format* found = format_of_content(input.name, *input.content, limits);
            input.suffix = found ? std::string(found->suffix) : input.suffix;
        }
    }
    input.format = find_format(input.suffix);
    return input;
}

std::optional<Input> open_overlay(const map::Map_Settings& settings, Load_Limits& limits) {
    return settings.overlay.empty() ? std::nullopt : std::optional(open_input(settings.overlay, "", limits));
}

model::Mesh load_model(const std::string& file) {
    const std::string suffix = suffix_of(path_of(file));
    std::vector<Input> inputs{{.name = file, .suffix = suffix, .format = find_format(suffix), .content = {}}};
    Load_Limits limits;
    return model::load_models(inputs, limits);
}

} // namespace vorna::drawing

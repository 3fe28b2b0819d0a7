// Files to draw: models, maps and drawings, from where they come.
#include "drawing/files/input.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>

#include "drawing/files/gzip.h"
#include "drawing/files/input_file.h"
#include "drawing/files/json_memory.h"
#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"
#include "drawing/model/model_reader.h"

namespace vorna::drawing {
namespace {

constexpr std::size_t largest_input = std::size_t{1} << 32;
constexpr std::array map_formats{"json", "geojson", "topojson", "dxf"};
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
bool is_dxf(std::string_view content) {
    std::string_view code = take_line(content), value = take_line(content);
    while (code == "999") {
        code = take_line(content);
        value = take_line(content);
    }
    return code == "0" && value == "SECTION";
}

// Binary files may begin in any way, so their size decides.
bool is_stl(std::string_view content) {
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
bool is_obj(std::string_view content) {
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

// As a suffix: ply, stl, obj, glb, gltf, json (a map) or dxf; empty for others.
std::string format_of_content(const std::string& name, const std::string& content, Load_Limits& limits) {
    const std::string_view text = content;
    if (text.starts_with("ply\n") || text.starts_with("ply\r")) {
        return "ply";
    }
    if (text.starts_with("glTF")) {
        return "glb";
    }
    if (const std::size_t start = text.find_first_not_of(blanks); start != text.npos && text[start] == '{') {
        const Load_Limits::Loan document_memory(limits, name, json_memory(content));
        const auto document = nlohmann::json::parse(content, nullptr, false);
        return document.is_object() && document.contains("asset") ? "gltf" : "json";
    }
    return is_dxf(text) ? "dxf" : is_stl(text) ? "stl" : is_obj(text) ? "obj" : "";
}

} // namespace

Input open_input(const std::string& path, const std::string& format, Load_Limits& limits) {
    if (!format.empty() && std::ranges::find(map_formats, format) == map_formats.end() && !model::is_model_format(format)) {
        throw Usage_Error("--input-format: expected a suffix of files that can be read, as obj, ply, stl, json or dxf, found '" +
                          format + "'");
    }
    const bool is_named = path != "-";
    const std::string suffix = is_named ? suffix_of(path_of(path)) : "";
    Input input{name_of_input(path), format.empty() ? suffix : format, std::nullopt};
    if (is_named && input.format == suffix && (is_map(input) || model::is_model_format(suffix)) && !is_stream(path) &&
        is_plain(path)) {
        return input;
    }
    input.content = read_input(path, limits, largest_input);
    if (is_gzip(*input.content)) {
        input.content = unpacked_input(input.name, *input.content, limits, largest_input);
    }
    if (input.format == "gz") {
        input.format = suffix_of(path_of(path).stem());
    }
    if (format.empty() && !is_map(input) && !model::is_model_format(input.format)) {
        const std::string found = format_of_content(input.name, *input.content, limits);
        input.format = found.empty() ? input.format : found;
    }
    return input;
}

bool is_map(const Input& input) {
    return std::ranges::find(map_formats, input.format) != map_formats.end();
}

} // namespace vorna::drawing

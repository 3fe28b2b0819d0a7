// The formats of files to draw.
#include "drawing/job/formats.h"

#include <algorithm>
#include <cctype>
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
#include "drawing/files/json_document.h"
#include "drawing/files/json_memory.h"
#include "drawing/files/path.h"
#include "drawing/files/setting_names.h"
#include "drawing/files/text_encoding.h"
#include "drawing/files/usage_error.h"
#include "drawing/job/content_tests.h"
#include "drawing/map/map_reader.h"
#include "drawing/map/shapes.h"
#include "drawing/model/model_reader.h"

namespace vorna::drawing {
namespace {

constexpr std::uint64_t largest_input = std::uint64_t{1} << 32;
constexpr std::string_view blanks = " \t\r\n";

// The name's suffix in lower case without its dot.
std::string suffix_of(const std::filesystem::path& path) {
    std::string suffix = path.extension().string();
    std::ranges::transform(suffix, suffix.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return suffix.empty() ? suffix : suffix.substr(1);
}

// Pipes have a name too, and can be read once only.
bool is_stream(const std::string& path) {
    std::error_code none;
    return std::filesystem::exists(path_of(path), none) && !std::filesystem::is_regular_file(path_of(path), none);
}

// Can be read later, as it is.
bool is_plain(const std::string& path) {
    std::ifstream stream(path_of(path), std::ios::binary);
    char bytes[4] = {};
    stream.read(bytes, sizeof bytes);
    const std::string_view start(bytes, static_cast<std::size_t>(stream.gcount()));
    return stream.is_open() && !is_gzip(start) && !is_utf16(start);
}

// Readers that take the whole content, which stays for another reader. is_text: lines may end as old systems end them.
template <auto& read, bool is_text = false> model::Mesh read_content(Input& input, Load_Limits& limits) {
    if (!input.content) {
        input.content = model::read_file(input.name, limits);
    }
    if (is_text && input.content->find('\n') == std::string::npos) {
        std::ranges::replace(*input.content, '\r', '\n');
    }
    return read(input.name, without_byte_order_mark(*input.content), limits);
}

// Refused where assimp does not read it either.
model::Mesh read_vrml(Input& input, Load_Limits& limits) {
    if (model::is_assimp_format("wrl")) {
        return model::read_with_assimp(input, limits);
    }
    throw model::Model_Error(input.name + ": expected a model that can be read, found VRML; glTF, X3D, PLY, OBJ and STL can be");
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
    {.suffix = "obj", .kind = Input_Kind::model, .detect = is_obj, .read_model = read_content<model::read_obj, true>},
    {.suffix = "wrl", .kind = Input_Kind::model, .detect = is_vrml, .read_model = read_vrml},
#ifdef VORNA_WITH_GDAL
    {.suffix = "shp", .kind = Input_Kind::map, .read_map = map::read_gdal_map},
    {.suffix = "zip", .kind = Input_Kind::map, .read_map = map::read_gdal_map},
    {.suffix = "gpkg", .kind = Input_Kind::map, .detect = is_geopackage, .read_map = map::read_gdal_map},
    {.suffix = "kml", .kind = Input_Kind::map, .detect = is_kml, .read_map = map::read_gdal_map},
    {.suffix = "kmz", .kind = Input_Kind::map, .read_map = map::read_gdal_map},
    {.suffix = "gpx", .kind = Input_Kind::map, .detect = is_gpx, .read_map = map::read_gdal_map},
    {.suffix = "csv", .kind = Input_Kind::map, .read_map = map::read_gdal_map},
    {.suffix = "geojsonl", .kind = Input_Kind::map, .read_map = map::read_gdal_map},
    {.suffix = "geojsons", .kind = Input_Kind::map, .read_map = map::read_gdal_map},
    {.suffix = "ndjson", .kind = Input_Kind::map, .read_map = map::read_gdal_map},
    {.suffix = "jsonl", .kind = Input_Kind::map, .read_map = map::read_gdal_map},
    {.suffix = "fgb", .kind = Input_Kind::map, .detect = is_flatgeobuf, .read_map = map::read_gdal_map},
    {.suffix = "gml", .kind = Input_Kind::map, .detect = is_gml, .read_map = map::read_gdal_map},
    {.suffix = "mif", .kind = Input_Kind::map, .read_map = map::read_gdal_map},
    {.suffix = "tab", .kind = Input_Kind::map, .read_map = map::read_gdal_map},
#endif
    // Others that the general reader knows, for completion.
    {.suffix = "3ds", .kind = Input_Kind::model},
    {.suffix = "dae", .kind = Input_Kind::model},
    {.suffix = "fbx", .kind = Input_Kind::model},
    {.suffix = "blend", .kind = Input_Kind::model, .has_z_up = true},
    {.suffix = "off", .kind = Input_Kind::model, .has_z_up = true},
    {.suffix = "x3d", .kind = Input_Kind::model},
    {.suffix = "3mf", .kind = Input_Kind::model},
};

// What a DXF file is that shows faces in space.
constexpr Format dxf_model{.suffix = "dxf", .kind = Input_Kind::model};

// Whether this build reads the format.
bool is_readable(const std::string& suffix) {
    const Format* format = find_format(suffix);
    return (format && (format->read_model || format->read_map)) || model::is_assimp_format(suffix);
}

const Format* format_of_content(const std::string& name, const std::string& content, Load_Limits& limits) {
    Content_Probe probe{.text = content};
    if (const std::size_t start = content.find_first_not_of(blanks); start != content.npos && content[start] == '{') {
        const Load_Limits::Loan document_memory(limits, name, json_memory(content));
        Released_Json<nlohmann::json> document;
        probe.is_json = true;
        probe.has_asset = read_json(content, document, false) && (*document).is_object() && (*document).contains("asset");
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

void check_input_format(const std::string& suffix) {
    if (!suffix.empty() && !is_readable(suffix)) {
        throw Usage_Error(name_of(Setting::format) +
                          ": expected a suffix of files that can be read, as obj, ply, stl, json or dxf, found '" + suffix + "'");
    }
}

Input open_input(const std::string& path, const std::string& suffix, Load_Limits& limits) {
    check_input_format(suffix);
    const bool is_named = path != "-";
    const std::string own_suffix = is_named ? suffix_of(path_of(path)) : "";
    Input input{.name = name_of_input(path), .suffix = suffix.empty() ? own_suffix : suffix, .content = {}};
    if (!is_named || input.suffix != own_suffix || !is_readable(own_suffix) || is_stream(path) || !is_plain(path)) {
        input.content = unpacked_input(input.name, read_input(path, limits, largest_input), limits, largest_input);
        if (is_utf16(*input.content)) {
            limits.take_memory(input.name, input.content->size() / 2 * 3); // of UTF-8, at the most
            input.content = utf8_from_utf16(*input.content);
        }
        if (input.suffix == "gz" || input.suffix == "zst") {
            input.suffix = suffix_of(path_of(path).stem());
        }
        if (suffix.empty() && !is_readable(input.suffix)) {
            const Format* found = format_of_content(input.name, *input.content, limits);
            input.suffix = found ? std::string(found->suffix) : input.suffix;
        }
    }
    input.format = find_format(input.suffix);
    if (input.suffix == "dxf") {
        if (!input.content) {
            input.content = model::read_file(input.name, limits);
        }
        if (model::is_assimp_format("dxf") && is_dxf_model(*input.content)) {
            input.format = &dxf_model;
        }
    }
    return input;
}

model::Up_Axis up_axis_of(const Input& input) {
    return input.format && input.format->has_z_up ? model::Up_Axis::z : model::Up_Axis::y;
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

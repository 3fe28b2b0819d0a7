// Chooses the reader of a map or drawing.
#include "app/map/map_reader.h"

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "app/path.h"

namespace app::map {
namespace {

using Json = nlohmann::ordered_json;

std::string content_of(const std::string& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path_of(file), error);
    if (error) {
        throw Map_Error(file + ": cannot be read: " + error.message());
    }
    std::ifstream stream(path_of(file), std::ios::binary);
    std::string content(size, '\0');
    if (!stream.read(content.data(), static_cast<std::streamsize>(size))) {
        throw Map_Error(file + ": cannot be read");
    }
    return content;
}

Json parsed(const std::string& file, const std::string& content) {
    try {
        return Json::parse(content);
    } catch (const Json::exception& error) {
        // The library's own classification stands in brackets before the message.
        const std::string_view text = error.what();
        const std::size_t start = text.find("] ");
        throw Map_Error(file + ": " + std::string(start == std::string_view::npos ? text : text.substr(start + 2)));
    }
}

} // namespace

Map load_map(const Input& input, const std::string& layer) {
    const std::string& file = input.name;
    const bool drawing = input.format == "dxf";
    const std::string read = input.content ? std::string() : content_of(file);
    const std::string& content = input.content ? *input.content : read;
    const Json document = drawing ? Json() : parsed(file, content);
    const bool topology = document.is_object() && document.value("type", Json()) == "Topology";
    if (!layer.empty() && !topology) {
        throw Map_Error("--layer: expected TopoJSON, found " + file);
    }
    if (drawing) {
        return read_dxf(file, content);
    }
    if (document.is_object() && document.contains("picture")) {
        throw Map_Error(file + ": expected a map, found a picture; draw it with vorna replay");
    }
    return topology ? read_topojson(file, document, layer) : read_geojson(file, document);
}

} // namespace app::map

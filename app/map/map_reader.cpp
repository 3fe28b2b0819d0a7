// Chooses the reader of a map or drawing.
#include "app/map/map_reader.h"

#include <new>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "app/scene/model_reader.h"

namespace app::map {
namespace {

using Json = nlohmann::ordered_json;

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

Map read_map(const Input& input, const std::string& layer) {
    const std::string& file = input.name;
    const bool drawing = input.format == "dxf";
    const std::string read = input.content ? std::string() : scene::read_file(file);
    const std::string& content = input.content ? *input.content : read;
    const Json document = drawing ? Json() : parsed(file, content);
    // Not copied: values nest as deeply as the file says.
    const auto type = document.is_object() ? document.find("type") : document.end();
    const bool topology = type != document.end() && *type == "Topology";
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

} // namespace

Map load_map(const Input& input, const std::string& layer) {
    try {
        return read_map(input, layer);
    } catch (const std::bad_alloc&) {
        throw std::runtime_error(input.name + ": not enough memory to read it");
    }
}

} // namespace app::map

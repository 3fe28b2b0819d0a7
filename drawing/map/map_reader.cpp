// Reads maps and drawings.
#include "drawing/map/map_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <new>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "drawing/files/json_document.h"
#include "drawing/files/json_memory.h"
#include "drawing/files/setting_names.h"
#include "drawing/map/coordinate_lists.h"
#include "drawing/map/geojson_features.h"
#include "drawing/model/model_reader.h"

namespace vorna::drawing::map {
namespace {

using Json = nlohmann::ordered_json;

void parse(const std::string& file, const std::string& content, Released_Json<Json>& document) {
    if (json_nesting(content) > deepest_json) {
        throw Map_Error(file + ": nested too deeply");
    }
    try {
        read_json(content, document);
    } catch (const Json::exception& error) {
        // The library puts its error class in brackets before the message.
        const std::string_view text = error.what();
        const std::size_t start = text.find("] ");
        throw Map_Error(file + ": " + std::string(start == std::string_view::npos ? text : text.substr(start + 2)));
    }
}

// The file's text. `read` owns it unless the input does.
const std::string& content_of(const Input& input, std::string& read, Load_Limits& limits) {
    return input.content ? *input.content : read = model::read_file(input.name, limits);
}

// layer: empty, or an object of a TopoJSON file.
void check_layer(const std::string& file, const std::string& layer, bool is_topology) {
    if (!layer.empty() && !is_topology) {
        throw Map_Error(name_of(Setting::layer) + ": expected TopoJSON, found " + file);
    }
}

// Products of coordinates up to this stay finite.
constexpr double farthest = 1e100;

// Sums and products of finite numbers may be infinite: the check is on the final positions.
void check_positions(const std::string& file, const Map& map) {
    for (std::size_t s = 0; s < map.shapes.size(); ++s) {
        for_each_path(map.shapes[s], [&](const Path& path) {
            for (const Position& p : path) {
                if (!(std::abs(p.x) <= farthest && std::abs(p.y) <= farthest)) {
                    std::array<char, 80> found;
                    std::snprintf(found.data(), found.size(), "%.10g, %.10g", p.x, p.y);
                    throw Map_Error(file + ": shape " + std::to_string(s) + ": expected coordinates up to 1e100, found " +
                                    found.data());
                }
            }
        });
    }
}

Map read_json_map(const std::string& file, const std::string& content, const Coordinate_Lists* lists, std::vector<Shape> read,
                  const Map_Query& query, Load_Limits& limits) {
    const Load_Limits::Loan document_memory(limits, file, json_memory(content));
    Released_Json<Json> owned;
    parse(file, content, owned);
    const Json& document = *owned;
    const auto type = document.is_object() ? document.find("type") : document.end();
    const bool topology = type != document.end() && is_text(*type, "Topology");
    check_layer(file, query.layer, topology);
    if (document.is_object() && document.contains("picture")) {
        throw Map_Error(file + ": expected a map, found a recording; draw it with vorna replay");
    }
    return topology ? read_topojson(file, document, query, limits)
                    : read_geojson(file, document, lists, std::move(read), query, limits);
}

} // namespace

Map read_dxf_map(const Input& input, const Map_Query& query, Load_Limits& limits) {
    std::string read;
    const std::string& content = content_of(input, read, limits);
    return read_dxf(input.name, content, query, limits);
}

Map read_json_map(const Input& input, const Map_Query& query, Load_Limits& limits) {
    std::string read;
    const std::string& content = content_of(input, read, limits);
    // From the fastest reader to the one that accepts all documents and whose messages name places.
    if (content.find("Topology\"") == content.npos) { // searching for a quotation mark first would take ten times as long
        try {
            if (auto features = read_features(input.name, content, query, limits)) {
                return read_json_map(input.name, features->rest, nullptr, std::move(features->shapes), query, limits);
            }
            if (const auto lists = Coordinate_Lists::split(input.name, content, limits)) {
                return read_json_map(input.name, lists->rest(), &*lists, {}, query, limits);
            }
        } catch (const Map_Error&) {
        }
    }
    return read_json_map(input.name, content, nullptr, {}, query, limits);
}

std::vector<std::string> parts_between(std::string_view text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        parts.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

Map load_map(const Input& input, const Map_Query& query, Load_Limits& limits) {
    if (!query.layout.empty() && input.format->read_map != read_dxf_map) {
        throw Map_Error(name_of(Setting::layout) + ": expected a drawing (DXF), found " + input.name);
    }
    try {
        Map map = input.format->read_map(input, query, limits);
        check_positions(input.name, map);
        if (map.layers.empty()) {
            map.layers.emplace_back();
        }
        for (Shape& shape : map.shapes) {
            shape.values.resize(query.fields.size());
        }
        return map;
    } catch (const std::bad_alloc&) {
        throw std::runtime_error(input.name + ": not enough memory to read it");
    }
}

} // namespace vorna::drawing::map

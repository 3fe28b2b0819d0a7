// What a map file consists of.
#include "drawing/map/map_facts.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "drawing/files/printable.h"
#include "drawing/map/map_layer.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {

using Json = nlohmann::ordered_json;

Json json_facts_of(const Input& input, Load_Limits& limits) {
    Map_Query query;
    query.lists_fields = true;
    const Map map = load_map(input, query, limits);
    struct Counts {
        std::size_t shapes = 0, faces = 0, lines = 0, points = 0;
        Bounds bounds = Bounds::nothing();
    };
    std::vector<Counts> counts(map.layers.size());
    for (const Shape& shape : map.shapes) {
        Counts& count = counts[shape.layer];
        ++count.shapes;
        count.faces += shape.faces.size();
        count.lines += shape.lines.size();
        count.points += shape.points.size();
        for_each_path(shape,
                      [&](const Path& path) { std::ranges::for_each(path, [&](Position place) { count.bounds.add(place); }); });
    }
    Json list = Json::array();
    for (std::size_t i = 0; i < map.layers.size(); ++i) {
        const Layer_Facts& layer = map.layers[i];
        const Counts& count = counts[i];
        Json entry{{"name", layer.name},     {"projection", !layer.system.empty() ? layer.system : layer.refusal},
                   {"shapes", count.shapes}, {"faces", count.faces},
                   {"lines", count.lines},   {"points", count.points}};
        if (!count.bounds.empty()) {
            entry["extent"] = {count.bounds.left, count.bounds.bottom, count.bounds.right, count.bounds.top};
        }
        entry["fields"] = Json::array();
        for (const Field_Facts& field : layer.fields) {
            entry["fields"].push_back({{"name", field.name}, {"type", field.type.empty() ? "none" : field.type}});
        }
        list.push_back(std::move(entry));
    }
    return list;
}

std::string text_of_facts(const Json& layers) {
    std::string text;
    const auto count = [&](const Json& layer, const char* key) {
        return std::to_string(layer[key].get<std::size_t>()) + ' ' + key;
    };
    for (const Json& layer : layers) {
        const std::string name = layer["name"], projection = layer["projection"];
        text += "  " + (name.empty() ? "" : "layer " + printable(name) + ": ") + count(layer, "shapes") + ", " +
                count(layer, "faces") + ", " + count(layer, "lines") + ", " + count(layer, "points") + '\n';
        text += "    projection: " + (projection.empty() ? "degrees, or not stated" : printable(projection)) + '\n';
        if (layer.contains("extent")) {
            text += "    extent: ";
            for (const Json& number : layer["extent"]) {
                char digits[40];
                std::snprintf(digits, sizeof digits, "%s%.10g", &number == &layer["extent"][0] ? "" : ",", number.get<double>());
                text += digits;
            }
            text += '\n';
        }
        std::string fields;
        for (const Json& field : layer["fields"]) {
            fields += (fields.empty() ? "" : ", ") + printable(field["name"].get<std::string>()) + " (" +
                      field["type"].get<std::string>() + ")";
        }
        text += fields.empty() ? "" : "    fields: " + fields + '\n';
    }
    return text;
}

} // namespace vorna::drawing::map

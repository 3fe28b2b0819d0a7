// What a map file consists of.
#include "drawing/map/map_facts.h"

#include <algorithm>
#include <cstdio>

#include "drawing/files/printable.h"
#include "drawing/map/map_layer.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

std::string type_of(const Field_Facts& field) {
    return field.type.empty() ? "none" : field.type;
}

const std::string& projection_of(const Layer_Facts& layer) {
    return !layer.system.empty() ? layer.system : layer.refusal;
}

} // namespace

std::vector<Layer_Summary> layer_summaries_of(const Input& input, Load_Limits& limits) {
    Map_Query query;
    query.lists_fields = true;
    const Map map = load_map(input, query, limits);
    std::vector<Layer_Summary> layers(map.layers.size());
    for (const Shape& shape : map.shapes) {
        Layer_Summary& layer = layers[shape.layer];
        ++layer.shapes;
        layer.faces += shape.faces.size();
        layer.lines += shape.lines.size();
        layer.points += shape.points.size();
        for_each_path(shape,
                      [&](const Path& path) { std::ranges::for_each(path, [&](Position place) { layer.bounds.add(place); }); });
    }
    for (std::size_t i = 0; i < layers.size(); ++i) {
        layers[i].facts = map.layers[i];
    }
    return layers;
}

void add_layers(Json_Text& json, const std::vector<Layer_Summary>& layers) {
    json.start_list();
    for (const Layer_Summary& layer : layers) {
        json.start_object();
        json.member("name", layer.facts.name);
        json.member("projection", projection_of(layer.facts));
        json.member("shapes", layer.shapes);
        json.member("faces", layer.faces);
        json.member("lines", layer.lines);
        json.member("points", layer.points);
        if (const Bounds& bounds = layer.bounds; !bounds.empty()) {
            json.list("extent", {bounds.left, bounds.bottom, bounds.right, bounds.top});
        }
        json.name("fields");
        json.start_list();
        for (const Field_Facts& field : layer.facts.fields) {
            json.start_object();
            json.member("name", field.name);
            json.member("type", type_of(field));
            json.end_object();
        }
        json.end_list();
        json.end_object();
    }
    json.end_list();
}

std::string text_of(const std::vector<Layer_Summary>& layers) {
    std::string text;
    for (const Layer_Summary& layer : layers) {
        const std::string& name = layer.facts.name;
        text += "  " + (name.empty() ? "" : "layer " + printable(name) + ": ") + std::to_string(layer.shapes) + " shapes, " +
                std::to_string(layer.faces) + " faces, " + std::to_string(layer.lines) + " lines, " +
                std::to_string(layer.points) + " points\n";
        const std::string& projection = projection_of(layer.facts);
        text += "    projection: " + (projection.empty() ? "degrees, or not stated" : printable(projection)) + '\n';
        if (const Bounds& bounds = layer.bounds; !bounds.empty()) {
            char digits[128];
            std::snprintf(digits, sizeof digits, "    extent: %.10g,%.10g,%.10g,%.10g\n", bounds.left, bounds.bottom,
                          bounds.right, bounds.top);
            text += digits;
        }
        std::string fields;
        for (const Field_Facts& field : layer.facts.fields) {
            fields += (fields.empty() ? "" : ", ") + printable(field.name) + " (" + type_of(field) + ")";
        }
        text += fields.empty() ? "" : "    fields: " + fields + '\n';
    }
    return text;
}

} // namespace vorna::drawing::map

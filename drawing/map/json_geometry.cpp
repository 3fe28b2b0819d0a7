// Geometry objects of GeoJSON and TopoJSON.
#include "drawing/map/json_geometry.h"

#include <algorithm>
#include <array>

#include "drawing/map/coordinate_system.h"
#include "drawing/map/simple_style.h"

namespace vorna::drawing::map {
namespace {

constexpr int deepest_collection = 32;

Value value_of(const Json& value) {
    if (value.is_string()) {
        return value.get<std::string>();
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? 1.0 : 0.0;
    }
    return value.is_number() ? Value(value.get<double>()) : Value();
}

Value value_of(const Json& object, const std::string& key) {
    const auto found = object.find(key);
    return found == object.end() ? Value() : value_of(*found);
}

} // namespace

std::string Place::text() const {
    std::string text = above ? above->text() : "";
    if (!key.empty()) {
        return text + (text.empty() ? "" : ".") + std::string(key);
    }
    return above ? text + '[' + std::to_string(index) + ']' : text;
}

void Json_Geometry_Reader::fail(const Place& place, const std::string& expected, const Json& found) const {
    const std::string where = place.text();
    std::string shown = found.is_string() ? "'" + found.get<std::string>().substr(0, 40) + "'" : found.type_name();
    throw Map_Error(file_ + ": " + (where.empty() ? "" : where + ": ") + "expected " + expected + ", found " + shown);
}

const Json& Json_Geometry_Reader::member(const Json& object, const char* key, const Place& place) const {
    if (!object.is_object()) {
        fail(place, "an object", object);
    }
    const auto found = object.find(key);
    if (found == object.end()) {
        const std::string where = place.text();
        throw Map_Error(file_ + ": " + (where.empty() ? "" : where + ": ") + "expected a member '" + key + "', found none");
    }
    return *found;
}

const Json& Json_Geometry_Reader::array(const Json& value, const Place& place, const char* expected) const {
    if (!value.is_array()) {
        fail(place, expected, value);
    }
    return value;
}

const std::string& Json_Geometry_Reader::string(const Json& value, const Place& place, const char* expected) const {
    if (!value.is_string()) {
        fail(place, expected, value);
    }
    return value.get_ref<const std::string&>();
}

double Json_Geometry_Reader::number(const Json& value, const Place& place) const {
    if (!value.is_number()) {
        fail(place, "a number", value);
    }
    return value.get<double>();
}

Position Json_Geometry_Reader::position(const Json& value, const Place& place) const {
    if (!value.is_array() || value.size() < 2) {
        fail(place, "a position of two numbers", value);
    }
    return {number(value[0], {&place, "", 0}), number(value[1], {&place, "", 1})};
}

template <class Read> void Json_Geometry_Reader::for_each(const Json& value, const Place& place, Read read) const {
    array(value, place);
    for (std::size_t i = 0; i < value.size(); ++i) {
        read(value[i], Place{&place, "", i});
    }
}

Face Json_Geometry_Reader::polygon(const Json& value, const Place& place) const {
    Face face;
    for_each(value, place, [&](const Json& ring, const Place& at) { face.push_back(without_closing_point(path(ring, at))); });
    return face;
}

void Json_Geometry_Reader::read_geometry(const Json& geometry, const Place& place, Shape& shape, int depth) const {
    if (geometry.is_null()) {
        return;
    }
    if (read_otherwise(geometry, shape)) {
        return;
    }
    if (depth > deepest_collection) {
        throw Map_Error(file_ + ": geometry collections are nested too deeply");
    }
    const Place type_place{&place, "type"};
    const Json& type_value = member(geometry, "type", place);
    const std::string& type = string(type_value, type_place, "a kind of geometry");
    const auto read = [&](const char* key, auto action) { action(member(geometry, key, place), Place{&place, key}); };
    const auto read_point = [&](const Json& value, const Place& at) { shape.points.push_back(point(value, at)); };
    const auto read_line = [&](const Json& value, const Place& at) { shape.lines.push_back(path(value, at)); };
    if (type == "Point") {
        read("coordinates", read_point);
    } else if (type == "MultiPoint") {
        read("coordinates", [&](const Json& value, const Place& at) { for_each(value, at, read_point); });
    } else if (type == "LineString") {
        read(path_key(), read_line);
    } else if (type == "MultiLineString") {
        read(path_key(), [&](const Json& value, const Place& at) { for_each(value, at, read_line); });
    } else if (type == "Polygon") {
        read(path_key(), [&](const Json& value, const Place& at) { shape.faces.push_back(polygon(value, at)); });
    } else if (type == "MultiPolygon") {
        // Its polygons do not overlap: even-odd, all of them are one face.
        Face& face = shape.faces.emplace_back();
        read(path_key(), [&](const Json& value, const Place& at) {
            for_each(value, at, [&](const Json& part, const Place& part_place) {
                for (Path& ring : polygon(part, part_place)) {
                    face.push_back(std::move(ring));
                }
            });
        });
    } else if (type == "GeometryCollection") {
        read("geometries", [&](const Json& value, const Place& at) {
            for_each(value, at,
                     [&](const Json& part, const Place& part_place) { read_geometry(part, part_place, shape, depth + 1); });
        });
    } else {
        fail(type_place, "a kind of geometry", type_value);
    }
}

void Json_Geometry_Reader::read_properties(const Json& feature, const Place& place, const Map_Query& query, Layer_Facts& layer,
                                           Shape& shape) const {
    if (const auto id = feature.find("id"); id != feature.end()) {
        shape.id = id->is_number() ? id->dump() : text_of(value_of(*id));
    }
    const auto found = feature.find("properties");
    if (found == feature.end() || found->is_null()) {
        return;
    }
    if (!found->is_object()) {
        fail({&place, "properties"}, "an object or null", *found);
    }
    for (const char* key : name_keys) {
        if (const auto value = found->find(key); shape.name.empty() && value != found->end()) {
            shape.name = value->is_number() ? value->dump() : text_of(value_of(*value));
        }
    }
    std::array<Value, simple_style_keys.size()> style;
    std::ranges::transform(simple_style_keys, style.begin(), [&](const char* key) { return value_of(*found, key); });
    set_simple_style(shape, style);
    limits_.take_memory(file_, query.fields.size() * sizeof(Value));
    for (const std::string& field : query.fields) {
        shape.values.push_back(value_of(*found, field));
    }
    for (auto item = found->begin(); query.lists_fields && item != found->end(); ++item) {
        auto known = std::ranges::find(layer.fields, item.key(), &Field_Facts::name);
        if (known == layer.fields.end()) {
            limits_.take_memory(file_, sizeof(Field_Facts) + item.key().size());
            known = layer.fields.insert(known, {item.key(), ""});
        }
        limits_.take_work(file_, layer.fields.size());
        if (!item->is_null() && known->type != "text") {
            known->type = item->is_number() ? "number" : "text";
        }
    }
}

void Json_Geometry_Reader::read_system(const Json& document, Layer_Facts& layer) const {
    const auto found = document.find("crs");
    if (found == document.end() || found->is_null()) {
        return;
    }
    // Links, which other files would have to answer, are not followed.
    const Json::json_pointer name_place("/properties/name"), code_place("/properties/code");
    const std::string text = found->contains(name_place)   ? text_of(value_of((*found)[name_place]))
                             : found->contains(code_place) ? "EPSG:" + text_of(value_of((*found)[code_place]))
                                                           : "";
    const std::optional<std::string> system = coordinate_system_of(text);
    layer.system = system.value_or("");
    layer.refusal = system ? "" : text.empty() ? "crs without a name" : text;
}

std::optional<Extent> Json_Geometry_Reader::read_extent(const Json& object, const Place& place) const {
    const auto found = object.find("bbox");
    if (found == object.end() || found->is_null()) {
        return std::nullopt;
    }
    const Place here{&place, "bbox"};
    if (!found->is_array() || (found->size() != 4 && found->size() != 6)) {
        fail(here, "four or six numbers", *found);
    }
    const auto value = [&](std::size_t i) { return number((*found)[i], {&here, "", i}); };
    const std::size_t upper = found->size() / 2; // boxes with heights have three numbers for each corner
    return Extent{value(0), value(1), value(upper), value(upper + 1)};
}

} // namespace vorna::drawing::map

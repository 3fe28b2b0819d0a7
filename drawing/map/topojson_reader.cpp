// TopoJSON: paths are sequences of shared arcs.
#include <span>
#include <utility>

#include "drawing/files/json_document.h"
#include "drawing/files/setting_names.h"
#include "drawing/map/json_geometry.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

class Topojson_Reader final : public Json_Geometry_Reader {
public:
    Topojson_Reader(const std::string& file, const Json& document, Load_Limits& limits) : Json_Geometry_Reader(file, limits) {
        const Place root;
        if (document.contains("transform")) {
            const Place place{&root, "transform"};
            const Json& transform = document["transform"];
            quantized_ = true;
            scale_ = position(member(transform, "scale", place), {&place, "scale"});
            start_ = position(member(transform, "translate", place), {&place, "translate"});
        }
        const Place place{&root, "arcs"};
        const Json& arcs = array(member(document, "arcs", root), place);
        arcs_.reserve(arcs.size());
        for (std::size_t i = 0; i < arcs.size(); ++i) {
            arcs_.push_back(arc(arcs[i], {&place, "", i}));
        }
    }

private:
    const char* path_key() const override { return "arcs"; }

    Position placed(Position p) const { return quantized_ ? Position{p.x * scale_.x + start_.x, p.y * scale_.y + start_.y} : p; }

    // Quantized positions are differences from the previous position.
    Path arc(const Json& value, const Place& place) const {
        Path path;
        take_positions(array(value, place).size());
        path.reserve(value.size());
        Position sum;
        for (std::size_t i = 0; i < value.size(); ++i) {
            const Position p = position(value[i], {&place, "", i});
            sum = quantized_ ? Position{sum.x + p.x, sum.y + p.y} : p;
            path.push_back(placed(sum));
        }
        return path;
    }

    Position point(const Json& value, const Place& place) const override { return placed(position(value, place)); }

    // An arc begins at the end of the previous one; the ones' complement of a number is the reversed arc. A short file can use a
    // long arc any number of times.
    Path path(const Json& value, const Place& place) const override {
        std::size_t count = array(value, place).size();
        for (std::size_t i = 0; i < value.size(); ++i) {
            count += arc_of(value[i], {&place, "", i}).first.size();
        }
        take_positions(count);
        Path path;
        path.reserve(count);
        for (std::size_t i = 0; i < value.size(); ++i) {
            const auto [arc, backwards] = arc_of(value[i], {&place, "", i});
            const std::ptrdiff_t joined = path.empty() || arc.empty() ? 0 : 1;
            if (backwards) {
                path.insert(path.end(), arc.rbegin() + joined, arc.rend());
            } else {
                path.insert(path.end(), arc.begin() + joined, arc.end());
            }
        }
        return path;
    }

    // Its positions, and whether it is reversed.
    std::pair<std::span<const Position>, bool> arc_of(const Json& value, const Place& place) const {
        const std::int64_t number = value.is_number_integer() ? value.get<std::int64_t>() : INT64_MAX;
        const auto index = static_cast<std::uint64_t>(number < 0 ? ~number : number);
        if (index >= arcs_.size()) {
            fail(place, "the number of one of " + std::to_string(arcs_.size()) + " arcs", value);
        }
        return {arcs_[index], number < 0};
    }

    bool quantized_ = false;
    Position scale_, start_;
    std::vector<Path> arcs_;
};

// The names of the objects that the query asks for.
std::vector<std::string> chosen_objects(const Json& objects, const std::string& layer, const std::string& file) {
    if (layer.empty() && !objects.empty()) {
        return {objects.begin().key()};
    }
    if (objects.empty()) {
        throw Map_Error(file + ": objects: expected a layer, found none");
    }
    std::vector<std::string> chosen = objects.contains(layer) ? std::vector{layer} : parts_between(layer);
    for (const std::string& name : chosen) {
        if (!objects.contains(name)) {
            std::string names;
            for (const auto& [known, object] : objects.items()) {
                names += (names.empty() ? "" : ", ") + known;
            }
            throw Map_Error(name_of(Setting::layer) + ": expected one of " + names + ", found '" + name + "'");
        }
    }
    return chosen;
}

} // namespace

Map read_topojson(const std::string& file, const Json& document, const Map_Query& query, Load_Limits& limits) {
    const Topojson_Reader reader(file, document, limits);
    const Place root, objects_place{&root, "objects"};
    const Json& objects = reader.member(document, "objects", root);
    if (!objects.is_object()) {
        reader.fail(objects_place, "an object", objects);
    }
    Map map;
    std::vector<std::string> names;
    if (query.lists_fields) {
        for (const auto& [name, object] : objects.items()) {
            names.push_back(name);
        }
    } else {
        names = chosen_objects(objects, query.layer, file);
    }
    for (const std::string& name : names) {
        const Json& object = objects[name];
        const Place place{&objects_place, name};
        Layer_Facts& layer = map.layers.emplace_back(Layer_Facts{.name = name, .system = {}, .refusal = {}, .fields = {}});
        reader.read_system(document, layer);
        const auto add = [&](const Json& geometry, const Place& at) {
            Shape& shape = map.shapes.emplace_back();
            shape.layer = static_cast<std::uint32_t>(map.layers.size() - 1);
            reader.read_geometry(geometry, at, shape);
            if (geometry.is_object()) {
                reader.read_properties(geometry, at, query, layer, shape);
            }
        };
        if (is_text(reader.member(object, "type", place), "GeometryCollection")) {
            const Place list_place{&place, "geometries"};
            const Json& list = reader.array(reader.member(object, "geometries", place), list_place);
            for (std::size_t i = 0; i < list.size(); ++i) {
                add(list[i], {&list_place, "", i});
            }
        } else {
            add(object, place);
        }
    }
    map.extent = reader.read_extent(document, root);
    return map;
}

} // namespace vorna::drawing::map

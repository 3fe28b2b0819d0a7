// GeoJSON (RFC 7946).
#include "drawing/files/json_document.h"
#include "drawing/map/coordinate_lists.h"
#include "drawing/map/json_geometry.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

class Geojson_Reader final : public Json_Geometry_Reader {
public:
    Geojson_Reader(const std::string& file, const Coordinate_Lists* lists, Load_Limits& limits)
        : Json_Geometry_Reader(file, limits), lists_(lists) {}

private:
    const char* path_key() const override { return "coordinates"; }
    Position point(const Json& value, const Place& place) const override { return position(value, place); }
    Path path(const Json& value, const Place& place) const override {
        Path path;
        take_positions(array(value, place).size());
        path.reserve(value.size());
        for (std::size_t i = 0; i < value.size(); ++i) {
            path.push_back(position(value[i], {&place, "", i}));
        }
        return path;
    }

    // Kinds of geometry and lists that do not belong together are for the reader of the whole document.
    bool read_otherwise(const Json& geometry, Shape& shape) const override {
        const auto found = lists_ && geometry.is_object() ? geometry.find("coordinates") : geometry.end();
        if (!lists_ || found == geometry.end() || !found->is_array()) {
            return false;
        }
        const Coordinate_Lists::Value& value = lists_->value((*found)[0].get<std::size_t>());
        const auto& [first, end] = value.parts;
        const auto type = geometry.find("type");
        const auto is = [&](const char* kind, int depth) {
            return type != geometry.end() && is_text(*type, kind) && value.depth == depth;
        };
        if (is("Point", 1)) {
            shape.points.push_back(lists_->position(first));
        } else if (is("MultiPoint", 2)) {
            const Path points = path(first);
            shape.points.insert(shape.points.end(), points.begin(), points.end());
        } else if (is("LineString", 2)) {
            shape.lines.push_back(path(first));
        } else if (is("MultiLineString", 3)) {
            for (std::size_t line = first; line < end; ++line) {
                shape.lines.push_back(path(line));
            }
        } else if (is("Polygon", 3)) {
            add_rings(value.parts, shape.faces.emplace_back());
        } else if (is("MultiPolygon", 4)) {
            Face& face = shape.faces.emplace_back();
            for (std::size_t polygon = first; polygon < end; ++polygon) {
                add_rings(lists_->polygon(polygon), face);
            }
        } else {
            fail({}, "coordinates of the kind of geometry", *found);
        }
        return true;
    }

    Path path(std::size_t number) const {
        Path path = lists_->path(number);
        take_positions(path.size());
        return path;
    }

    void add_rings(const Coordinate_Lists::Range& paths, Face& face) const {
        for (std::size_t ring = paths.first; ring < paths.end; ++ring) {
            face.push_back(without_closing_point(path(ring)));
        }
    }

    const Coordinate_Lists* lists_;
};

} // namespace

Map read_geojson(const std::string& file, const Json& document, const Coordinate_Lists* lists, const Map_Query& query,
                 Load_Limits& limits) {
    const Geojson_Reader reader(file, lists, limits);
    const Place root;
    Map map;
    Layer_Facts& layer = map.layers.emplace_back();
    const auto add_feature = [&](const Json& feature, const Place& place) {
        Shape& shape = map.shapes.emplace_back();
        reader.read_geometry(reader.member(feature, "geometry", place), {&place, "geometry"}, shape);
        reader.read_properties(feature, place, query, layer, shape);
    };
    if (!document.is_object() || !document.contains("type")) {
        throw Map_Error(file + ": expected GeoJSON or TopoJSON, found neither");
    }
    const Json& type = document["type"];
    if (is_text(type, "FeatureCollection")) {
        const Place place{&root, "features"};
        const Json& features = reader.array(reader.member(document, "features", root), place);
        for (std::size_t i = 0; i < features.size(); ++i) {
            const Place at{&place, "", i};
            const Json& kind = reader.member(features[i], "type", at);
            if (!is_text(kind, "Feature")) {
                reader.fail({&at, "type"}, "'Feature'", kind);
            }
            add_feature(features[i], at);
        }
    } else if (is_text(type, "Feature")) {
        add_feature(document, root);
    } else {
        reader.read_geometry(document, root, map.shapes.emplace_back());
    }
    reader.read_system(document, layer);
    map.extent = reader.read_extent(document, root);
    return map;
}

} // namespace vorna::drawing::map

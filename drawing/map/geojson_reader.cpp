// GeoJSON (RFC 7946).
#include <utility>

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
        const auto number = (*found)[0].get<std::size_t>();
        const auto type = geometry.find("type");
        const auto* const kind = type != geometry.end() ? type->get_ptr<const std::string*>() : nullptr;
        take_positions(lists_->position_count(number));
        if (!kind || !lists_->add_to(shape, *kind, number)) {
            fail({}, "coordinates of the kind of geometry", *found);
        }
        return true;
    }

    const Coordinate_Lists* lists_;
};

} // namespace

Map read_geojson(const std::string& file, const Json& document, const Coordinate_Lists* lists, std::vector<Shape> read,
                 const Map_Query& query, Load_Limits& limits) {
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
        map.shapes = std::move(read);
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

// GeoJSON (RFC 7946).
#include "drawing/map/json_geometry.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

class Geojson_Reader final : public Json_Geometry_Reader {
public:
    using Json_Geometry_Reader::Json_Geometry_Reader;

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
};

} // namespace

Map read_geojson(const std::string& file, const Json& document, const Map_Query& query, Load_Limits& limits) {
    const Geojson_Reader reader(file, limits);
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
    if (type == "FeatureCollection") {
        const Place place{&root, "features"};
        const Json& features = reader.array(reader.member(document, "features", root), place);
        for (std::size_t i = 0; i < features.size(); ++i) {
            const Place at{&place, "", i};
            const Json& kind = reader.member(features[i], "type", at);
            if (kind != "Feature") {
                reader.fail({&at, "type"}, "'Feature'", kind);
            }
            add_feature(features[i], at);
        }
    } else if (type == "Feature") {
        add_feature(document, root);
    } else {
        reader.read_geometry(document, root, map.shapes.emplace_back());
    }
    reader.read_system(document, layer);
    map.extent = reader.read_extent(document, root);
    return map;
}

} // namespace vorna::drawing::map

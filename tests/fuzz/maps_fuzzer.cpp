// GeoJSON and TopoJSON: read, projected and drawn. The document's length chooses how.
#include "tests/fuzz/json_mutator.h"
#include "tests/fuzz/map_drawing.h"

namespace {

using vorna::app::check::Random;
using Json = nlohmann::ordered_json;

constexpr std::string_view keys[] = {"type", "features",  "geometry", "geometries", "coordinates", "properties",
                                     "bbox", "id",        "name",     "fill",       "stroke",      "objects",
                                     "arcs", "transform", "scale",    "translate"};
constexpr std::string_view words[] = {"FeatureCollection",  "Feature",         "Point",   "MultiPoint",
                                      "LineString",         "MultiLineString", "Polygon", "MultiPolygon",
                                      "GeometryCollection", "Topology",        "#ff8000", "red"};

Json place(Random& random) {
    if (random.chance(5)) {
        return {fuzzing::odd_number(random), fuzzing::odd_number(random)};
    }
    if (random.chance(20)) { // the poles, and where the map is cut open
        return {90 * random.number(-2, 2), 45 * random.number(-2, 2)};
    }
    return {random.number(-180000, 180000) / 1000.0, random.number(-90000, 90000) / 1000.0};
}

Json path(Random& random) {
    Json list = Json::array();
    for (int i = random.number(0, 8); i > 0; --i) {
        list.push_back(place(random));
    }
    if (!list.empty() && random.chance(60)) {
        list.push_back(list[0]);
    }
    return list;
}

Json new_feature(Random& random) {
    constexpr std::string_view kinds[] = {"Point", "MultiPoint", "LineString", "MultiLineString", "Polygon", "MultiPolygon"};
    const std::string kind(random.one_of(kinds));
    Json coordinates = kind == "Point" ? place(random) : path(random);
    for (int depth = kind.ends_with("Polygon") + (kind.starts_with("Multi") && kind != "MultiPoint"); depth > 0; --depth) {
        coordinates = Json::array({coordinates});
    }
    return {
        {"type", "Feature"}, {"properties", {{"name", "here"}}}, {"geometry", {{"type", kind}, {"coordinates", coordinates}}}};
}

} // namespace

const fuzzing::Vocabulary fuzzing::vocabulary{keys, words, "features", new_feature};

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::try_out([&] { fuzzing::draw_map(fuzzing::text_of(data, size), size, false); });
    return 0;
}

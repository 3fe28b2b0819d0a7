// GeoJSON and TopoJSON files.
#include <array>
#include <cstdio>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/job/formats.h"
#include "drawing/map/map_reader.h"
#include "drawing/map/map_scene.h"
#include "tests/support/command_line.h"

namespace vorna::drawing::map {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Json_Maps : public testing::Test {
protected:
    Map load(const std::string& text, const std::string& layer = "") {
        Load_Limits limits;
        return load_map({"map.json", "json", find_format("json"), text}, {layer, {}}, limits);
    }
    std::string error_of(const std::string& text, const std::string& layer = "") {
        try {
            load(text, layer);
        } catch (const Map_Error& error) {
            return error.what();
        }
        return "no error";
    }

    replay_tests::Temporary_Folder folder;
};

const std::string features = R"({"type": "FeatureCollection", "bbox": [0, 0, -5, 9, 9, 5], "features": [
  {"type": "Feature", "id": 7, "properties": {"name": "Both", "fill": "#102030"}, "geometry": {"type": "GeometryCollection",
    "geometries": [{"type": "Polygon", "coordinates": [[[0, 0], [4, 0], [4, 4], [0, 0]], [[1, 0.5], [2, 1], [3, 1], [1, 0.5]]]},
                   {"type": "MultiPoint", "coordinates": [[5, 6, 100], [7, 8]]}]}},
  {"type": "Feature", "properties": null, "geometry": {"type": "MultiLineString", "coordinates": [[[0, 1], [2, 3]], []]}},
  {"type": "Feature", "geometry": null, "properties": {}},
  {"type": "Feature", "properties": {}, "geometry": {"type": "MultiPolygon",
    "coordinates": [[[[0, 0], [1, 0], [1, 1], [0, 0]]], [[[5, 5], [6, 5], [6, 6], [5, 5]]]]}}]})";

TEST_F(Json_Maps, all_kinds_of_geometry_become_faces_lines_and_points) {
    const Map map = load(features);
    ASSERT_EQ(map.shapes.size(), 4U);
    const Shape& both = map.shapes[0];
    EXPECT_EQ(both.name, "Both");
    EXPECT_EQ(both.id, "7");
    EXPECT_EQ(both.fill, (VT_RGB32{0x30, 0x20, 0x10, 255}));
    EXPECT_THAT(both.faces, ElementsAre(Face{{{0, 0}, {4, 0}, {4, 4}}, {{1, 0.5}, {2, 1}, {3, 1}}}));
    EXPECT_EQ(both.points, (Path{{5, 6}, {7, 8}}));
    EXPECT_THAT(map.shapes[1].lines, ElementsAre(Path{{0, 1}, {2, 3}}, Path{}));
    EXPECT_THAT(map.shapes[3].faces, ElementsAre(Face{{{0, 0}, {1, 0}, {1, 1}}, {{5, 5}, {6, 5}, {6, 6}}}));
    ASSERT_TRUE(map.extent);
    EXPECT_EQ(map.extent->north, 9);
    EXPECT_THAT(load(R"({"type": "Point", "coordinates": [1, 2]})").shapes[0].points, ElementsAre(Position{1, 2}));
}

// A key with an escape sequence makes the library read the whole document.
TEST_F(Json_Maps, coordinates_are_the_same_whether_they_are_read_apart_from_the_document_or_with_it) {
    const std::vector<std::string> values{"[1,2]",
                                          "[ 1 ,\n2 ]",
                                          "[1,2,3]",
                                          "[1]",
                                          "[]",
                                          "[0]",
                                          "[[0]]",
                                          "[[1,2],[3,4]]",
                                          "[[1,2],[3,4],[1,2]]",
                                          "[[1,2],[3]]",
                                          "[[1,2] [3,4]]",
                                          "[[1,2],[]]",
                                          "[[],[1,2]]",
                                          "[[[0,0],[1,0],[1,1],[0,0]]]",
                                          "[[[0,0],[1,0],[1,1]],[[4,4],[5,5]]]",
                                          "[[[[0,0],[1,0],[1,1],[0,0]]],[[[5,5],[6,5],[6,6]],[[5.25,5],[6,5]]]]",
                                          "[[[[[1,2]]]]]",
                                          "[[[1,2]],[1,2]]",
                                          "[[1,2],[[1,2]]]",
                                          "[1e2,-2.5E-3]",
                                          "[1e-7,-0]",
                                          "[0.1234567890123456789,1]",
                                          "[18446744073709551615,1]",
                                          "[123456789012345678901234567890,1]",
                                          "[1e999,2]",
                                          "[1e-400,2]",
                                          "[01,2]",
                                          "[-01,2]",
                                          "[1.,2]",
                                          "[.5,2]",
                                          "[+1,2]",
                                          "[1e,2]",
                                          "[-,2]",
                                          "[nan,1]",
                                          "[inf,1]",
                                          "[1,2,]",
                                          "[1,,2]",
                                          "[1 2]",
                                          "[1,2",
                                          "[\"1\",2]",
                                          "[1,\"]\"]",
                                          "[null,1]",
                                          "5",
                                          "\"[1,2]\"",
                                          "null",
                                          "{\"coordinates\":[0]}"};
    const auto text_of = [&](const std::string& text) {
        try {
            std::string found;
            for (const Shape& shape : load(text).shapes) {
                const auto add = [&](const Path& path) {
                    for (const Position& p : path) {
                        std::array<char, 64> place;
                        std::snprintf(place.data(), place.size(), "%a %a,", p.x, p.y);
                        found += place.data();
                    }
                    found += ';';
                };
                for_each_path(shape, add);
                found += std::to_string(shape.faces.size()) + shape.name + '|';
            }
            return found;
        } catch (const Map_Error&) {
            return std::string("refused");
        }
    };
    int refused = 0, read = 0;
    for (const char* type :
         {"Point", "MultiPoint", "LineString", "MultiLineString", "Polygon", "MultiPolygon", "GeometryCollection", "Circle"}) {
        for (const std::string& value : values) {
            const std::string tail = R"("type":"FeatureCollection","features":[{"type":"Feature","geometry":{"type":")" +
                                     std::string(type) + R"(","coordinates" : )" + value +
                                     R"(},"properties":{"name":"[\"","coordinates":[0],"a":{"coordinates":[[1,2]]}}},)" +
                                     R"({"type":"Feature","geometry":{"type":"Point","coordinates":[7,8]},"properties":null}]})";
            const std::string apart = text_of('{' + tail);
            EXPECT_EQ(apart, text_of(R"({"\u0078":1,)" + tail)) << type << ' ' << value;
            ++(apart == "refused" ? refused : read);
        }
    }
    EXPECT_GT(refused, 200);
    EXPECT_GT(read, 20);
    // A name of the member that only the library knows.
    EXPECT_EQ(text_of(R"({"type":"Point","coordin\u0061tes":[5,6]})"), text_of(R"({"type":"Point","coordinates":[5,6]})"));
    EXPECT_THAT(error_of(R"({"type":"LineString","coordinates":[[1,2],[3]]})"), HasSubstr("coordinates[1]: expected a position"));
    EXPECT_THAT(error_of("{\"type\":\"Point\",\n\"coordinates\":[1,2],}"), HasSubstr("line 2, column 21"));
}

// Two triangles share arc 1; quantized positions are steps, scaled by two and moved by ten.
const std::string topology = R"({"type": "Topology", "transform": {"scale": [2, 2], "translate": [10, 0]},
  "arcs": [[[0, 0], [2, 0]], [[2, 0], [0, 2]], [[2, 2], [-2, -2]], [[2, 2], [2, -2], [-2, 0]]],
  "objects": {"lands": {"type": "GeometryCollection", "geometries": [
      {"type": "Polygon", "arcs": [[0, 1, 2]], "id": "A", "properties": {"name": "Left"}},
      {"type": "MultiPolygon", "arcs": [[[-2, -4]]]}]},
    "way": {"type": "LineString", "arcs": [0, 1]}, "town": {"type": "Point", "coordinates": [1, 1]}}})";

TEST_F(Json_Maps, arcs_are_joined_forwards_and_backwards_and_layers_chosen_by_name) {
    const Map map = load(topology);
    ASSERT_EQ(map.shapes.size(), 2U);
    EXPECT_EQ(map.shapes[0].name, "Left");
    EXPECT_THAT(map.shapes[0].faces, ElementsAre(Face{{{10, 0}, {14, 0}, {14, 4}}}));
    EXPECT_THAT(map.shapes[1].faces, ElementsAre(Face{{{14, 4}, {14, 0}, {18, 0}}}));
    EXPECT_THAT(load(topology, "way").shapes[0].lines, ElementsAre(Path{{10, 0}, {14, 0}, {14, 4}}));
    EXPECT_THAT(load(topology, "town").shapes[0].points, ElementsAre(Position{12, 2}));
}

TEST_F(Json_Maps, errors_name_the_place_and_what_was_expected) {
    const auto with = [](std::string text, const std::string& old, const std::string& fresh) {
        return text.replace(text.find(old), old.size(), fresh);
    };
    EXPECT_THAT(error_of("{\n\"type\": }"), HasSubstr("map.json: parse error at line 2, column 9"));
    EXPECT_THAT(error_of("[1]"), HasSubstr("expected GeoJSON or TopoJSON, found neither"));
    EXPECT_THAT(error_of(R"({"picture": 1, "calls": []})"), HasSubstr("draw it with vorna replay"));
    EXPECT_THAT(
        error_of(with(features, "[4, 4]", "[4]")),
        HasSubstr("features[0].geometry.geometries[0].coordinates[0][2]: expected a position of two numbers, found array"));
    EXPECT_THAT(error_of(with(features, "[2, 3]", "[2, \"x\"]")),
                HasSubstr("features[1].geometry.coordinates[0][1][1]: expected a number, found 'x'"));
    EXPECT_THAT(error_of(with(features, "MultiPoint", "Dot")),
                HasSubstr("geometries[1].type: expected a kind of geometry, found 'Dot'"));
    EXPECT_THAT(error_of(with(features, "[0, 0, -5, 9, 9, 5]", "[0]")), HasSubstr("bbox: expected four or six numbers"));
    EXPECT_THAT(error_of(with(topology, "[-2, -4]", "[-2, -5]")),
                HasSubstr("objects.lands.geometries[1].arcs[0][0][1]: expected the number of one of 4 arcs"));
    EXPECT_THAT(error_of(topology, "seas"), HasSubstr("layer: expected one of lands, way, town, found 'seas'"));
    EXPECT_THAT(error_of(features, "seas"), HasSubstr("layer: expected TopoJSON"));
}

// A height that is chosen is never less than an eighth of the width, not even of images wider than eight times the largest
// height.
TEST(Map_Scene, chooses_heights_of_images_of_any_width) {
    const std::string line = R"({"type": "LineString", "coordinates": [[0, 0], [10, 0.1]]})";
    const Map_Scene scene({{{"map.json", "json", find_format("json"), line}, {}}}, {}, {}, {255, 255, 255, 255},
                          std::make_shared<Load_Limits>());
    for (const auto& [width, height] : {std::pair(800, 100), {65536, 8192}, {262144, 32768}}) {
        EXPECT_EQ(scene.fitted({width, 0}).size.y, height);
    }
}

// Not as many labels as a large image has room for.
TEST(Map_Scene, counts_labels_of_what_can_have_some) {
    if (!WITH_FREETYPE) {
        GTEST_SKIP() << "a build without FreeType has no texts";
    }
    Map_Settings settings;
    settings.labels = true;
    settings.bbox = Extent{0, 0, 20, 20};
    const auto count = [&](const std::string& shape) {
        const Map_Scene scene({{{"map.json", "json", find_format("json"), shape}, settings}}, {}, settings, {255, 255, 255, 255},
                              std::make_shared<Load_Limits>());
        return scene.item_count(scene.fitted({250000, 250000}));
    };
    EXPECT_LT(count(R"({"type": "Point", "coordinates": [1, 1]})"), 100U);
    // Half of the image's width: one label in 250 pixels.
    const std::size_t of_line = count(R"({"type": "LineString", "coordinates": [[0, 1], [10, 1]]})");
    EXPECT_GE(of_line, 500U);
    EXPECT_LT(of_line, 600U);
}

} // namespace
} // namespace vorna::drawing::map

// Maps that GDAL reads, in its own process.
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/job/formats.h"
#include "drawing/map/coordinate_system.h"
#include "drawing/map/map_facts.h"
#include "drawing/map/map_reader.h"
#include "drawing/map/ogr_style.h"
#include "drawing/map/packed_shapes.h"
#include "drawing/map/stated_system.h"
#include "tests/support/command_line.h"

namespace vorna::drawing::map {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Gdal_Maps : public testing::Test {
protected:
    void SetUp() override {
        if (!find_format("shp")) {
            GTEST_SKIP() << "built without GDAL";
        }
        try {
            load("probe.csv", "x,y\n1,2\n");
        } catch (const std::runtime_error& error) {
            if (std::string(error.what()).find("cannot be loaded") != std::string::npos) {
                GTEST_SKIP() << error.what();
            }
        }
    }

    Map load_file(const std::string& path, const Map_Query& query = {}) {
        Load_Limits limits;
        return load_map(open_input(path, "", limits), query, limits);
    }
    Map load(const std::string& name, const std::string& content, const Map_Query& query = {}) {
        return load_file(folder.file(name, content), query);
    }
    std::string error_of(const std::string& name, const std::string& content, const Map_Query& query = {}) {
        try {
            load(name, content, query);
        } catch (const Usage_Error& error) {
            return error.what();
        }
        return "no error";
    }

    replay_tests::Temporary_Folder folder;
};

const std::string gpx = R"(<?xml version="1.0"?><gpx version="1.1" creator="t" xmlns="http://www.topografix.com/GPX/1/1">
<wpt lat="10" lon="20"><name>Camp</name></wpt>
<trk><name>Path</name><trkseg><trkpt lat="1" lon="2"/><trkpt lat="3" lon="4"/></trkseg></trk></gpx>)";

const std::string kml = R"(<?xml version="1.0"?><kml xmlns="http://www.opengis.net/kml/2.2"><Document>
<Placemark><name>Field</name><Polygon><outerBoundaryIs><LinearRing><coordinates>0,0 4,0 4,4 0,0</coordinates></LinearRing>
</outerBoundaryIs><innerBoundaryIs><LinearRing><coordinates>2,1 3,1 3,2 2,1</coordinates></LinearRing></innerBoundaryIs></Polygon>
</Placemark></Document></kml>)";

TEST_F(Gdal_Maps, of_kml_have_its_styles) {
    const std::string shared = R"(<Style id="s"><LineStyle><color>ff0000ff</color><width>3</width></LineStyle>
<PolyStyle><color>8000ff00</color></PolyStyle></Style>)";
    std::string text = kml;
    text.insert(text.find("<Placemark>"), shared);
    text.insert(text.find("<Polygon>"), "<styleUrl>#s</styleUrl>");
    const Map styled = load("styled.kml", text);
    ASSERT_EQ(styled.shapes.size(), 1U);
    EXPECT_EQ(styled.shapes[0].stroke, (VT_RGB32{0, 0, 255, 255})); // blue, green, red, alpha
    EXPECT_EQ(styled.shapes[0].stroke_width, 3);
    EXPECT_EQ(styled.shapes[0].fill, (VT_RGB32{0, 255, 0, 128}));
    EXPECT_FALSE(load("plain.kml", kml).shapes[0].fill);
    Shape shape;
    shape.stroke = VT_RGB32{1, 2, 3, 4}; // of its fields
    set_ogr_style(shape, "PEN(w:2.6px,c:#FF0000);SYMBOL(id:\"a,c:#000000\",c:#0A0B0C);BRUSH(fc:#12);LABEL(");
    EXPECT_EQ(shape.stroke, (VT_RGB32{1, 2, 3, 4}));
    EXPECT_EQ(shape.stroke_width, 3);
    EXPECT_FALSE(shape.fill);
}

TEST_F(Gdal_Maps, of_text_formats_have_their_shapes_names_and_values) {
    const Map csv = load("towns.csv", "name,pop,lon,lat,fill\nA,5,1,2,#102030\nB,,3,4,\n", {"", {"pop", "none", "name"}});
    ASSERT_EQ(csv.shapes.size(), 2U);
    EXPECT_EQ(csv.shapes[0].name, "A");
    EXPECT_EQ(csv.shapes[0].fill, (VT_RGB32{0x30, 0x20, 0x10, 255}));
    EXPECT_THAT(csv.shapes[0].points, ElementsAre(Position{1, 2}));
    EXPECT_THAT(csv.shapes[0].values, ElementsAre(Value(5.0), Value(), Value("A")));
    EXPECT_EQ(csv.shapes[1].values[0], Value());

    const Map field = load("field.kml", kml);
    ASSERT_EQ(field.shapes.size(), 1U);
    EXPECT_EQ(field.shapes[0].name, "Field");
    EXPECT_THAT(field.shapes[0].faces, ElementsAre(Face{{{0, 0}, {4, 0}, {4, 4}}, {{2, 1}, {3, 1}, {3, 2}}}));

    const Map way = load("way.gpx", gpx);
    ASSERT_EQ(way.shapes.size(), 2U); // the points of tracks, a layer of their own, are left out
    EXPECT_EQ(way.shapes[0].name, "Camp");
    EXPECT_THAT(way.shapes[1].lines, ElementsAre(Path{{2, 1}, {4, 3}}));
    EXPECT_EQ(load("way.gpx", gpx, {"waypoints,track_points", {}}).shapes.size(), 3U);
    EXPECT_THAT(error_of("way.gpx", gpx, {"lakes", {}}), HasSubstr("layer: expected one of waypoints, routes, tracks"));

    const std::string feature = R"({"type":"Feature","properties":{"name":"S"},"geometry":{"type":"Point","coordinates":[1,2]}})";
    EXPECT_EQ(load("more.geojsonl", feature + '\n' + feature + '\n').shapes.size(), 2U);
    EXPECT_EQ(load("more.ndjson", feature + '\n' + feature + '\n').shapes.size(), 2U);
    // Found out by the content.
    EXPECT_EQ(load("way.data", gpx).shapes.size(), 2U);
    EXPECT_EQ(load("field.data", "<!-- k -->\n" + kml.substr(kml.find("<kml"))).shapes.size(), 1U);
}

// The library may open nothing but the file and its siblings.
TEST_F(Gdal_Maps, that_lead_to_other_files_do_not_get_them) {
    load("secret.csv", "name,x,y\nsecret,1,2\n");
    EXPECT_THAT(error_of("other.csv", "<OGRVRTDataSource><OGRVRTLayer name=\"secret\"><SrcDataSource>" +
                                          folder.file("secret.csv") + "</SrcDataSource></OGRVRTLayer></OGRVRTDataSource>"),
                HasSubstr("other.csv: expected"));
    const std::string link = R"(<?xml version="1.0"?><kml xmlns="http://www.opengis.net/kml/2.2"><NetworkLink><Link><href>)" +
                             folder.file("field.kml") + "</href></Link></NetworkLink></kml>";
    load("field.kml", kml);
    EXPECT_THAT(error_of("link.kml", link), HasSubstr("link.kml: expected"));
}

TEST_F(Gdal_Maps, that_are_damaged_are_refused) {
    EXPECT_THAT(error_of("no.csv", "name,pop\nA,5\n"), HasSubstr("no.csv: expected a layer with geometry"));
    EXPECT_THAT(error_of("cut.kml", kml.substr(0, 200)), HasSubstr("cut.kml: expected"));
    EXPECT_THAT(error_of("empty.shp", ""), HasSubstr("expected a map, found an empty file"));
    EXPECT_THAT(error_of("wrong.gpkg", "SQLite format 3"), HasSubstr("wrong.gpkg: expected a map in the format gpkg: "));
    EXPECT_THAT(error_of("far.csv", "x,y\n1,nan\n"), testing::AnyOf(HasSubstr("expected"), HasSubstr("no error")));
    EXPECT_THAT(error_of("far.csv", "x,y\n1,1e200\n"), HasSubstr("shape 0: expected coordinates up to 1e100"));
    std::string nested = "<Point><coordinates>1,2</coordinates></Point>";
    for (int i = 0; i < 40; ++i) {
        nested = "<MultiGeometry>" + nested + "</MultiGeometry>";
    }
    EXPECT_THAT(
        error_of("deep.kml", kml.substr(0, kml.find("<Placemark>")) + "<Placemark>" + nested + "</Placemark></Document></kml>"),
        HasSubstr("nests more than 32 levels deep"));
    for (const std::size_t size : {99U, 120U, 200U}) {
        EXPECT_THAT(error_of("cut.shp", std::string(size, '\1')), HasSubstr("cut.shp: expected"));
    }
}

// Formats without a text form, as another program writes them.
TEST_F(Gdal_Maps, of_all_formats_hold_the_same_shapes) {
    if (std::system("command -v ogr2ogr >/dev/null") != 0) {
        GTEST_SKIP() << "ogr2ogr is missing; Debian's package gdal-bin has it";
    }
    const std::string json = folder.file("all.geojson", R"({"type":"FeatureCollection","features":[
        {"type":"Feature","properties":{"name":"Á","n":1.5},"geometry":{"type":"Polygon","coordinates":[[[0,0],[0,4],[4,4],[0,0]]]}},
        {"type":"Feature","properties":{"name":"B","n":2},"geometry":{"type":"Polygon","coordinates":[[[9,9],[9,10],[10,10],[9,9]]]}}]})");
    const auto convert = [&](const std::string& name, const std::string& options) {
        const std::string path = folder.file(name);
        EXPECT_EQ(std::system(("ogr2ogr -q " + options + " '" + path + "' '" + json + "' 2>/dev/null").c_str()), 0) << name;
        return path;
    };
    for (const char* suffix : {"shp", "shp.zip", "gpkg", "kml", "kmz", "fgb", "gml", "tab", "mif"}) {
        const Map map = load_file(convert(std::string("all.") + suffix, ""), {"", {"n"}});
        ASSERT_EQ(map.shapes.size(), 2U) << suffix;
        double area = 0;
        for (const Shape& shape : map.shapes) {
            const Path& ring = shape.faces.at(0).at(0);
            for (std::size_t i = 0; i < ring.size(); ++i) {
                const Position a = ring[i], b = ring[(i + 1) % ring.size()];
                area += std::abs(a.x * b.y - a.y * b.x) > 0 ? (a.x * b.y - a.y * b.x) / 2 : 0;
            }
        }
        EXPECT_NEAR(std::abs(area), 8.5, 1e-3) << suffix;
        const auto has = [&](const std::string& name, const Value& value) {
            return std::ranges::any_of(map.shapes, [&](const Shape& s) { return s.name == name && s.values[0] == value; });
        };
        EXPECT_TRUE(has("Á", 1.5)) << suffix;
        EXPECT_TRUE(has("B", 2.0)) << suffix;
    }
    for (const char* system : {"EPSG:3857", "EPSG:2154", "EPSG:32633"}) {
        for (const char* suffix : {"shp", "gpkg", "fgb"}) {
            Map map =
                load_file(convert(std::string(system).substr(5) + '.' + suffix,
                                  std::string(suffix == std::string("fgb") ? "-lco SPATIAL_INDEX=NO " : "") + "-t_srs " + system),
                          {});
            Load_Limits limits;
            EXPECT_GT(std::abs(map.shapes[1].faces[0][0][0].x), 1000);
            convert_to_degrees("moved", map, limits);
            EXPECT_NEAR(map.shapes[1].faces[0][0][0].x, 9, 1e-5) << system << suffix;
            EXPECT_NEAR(map.shapes[1].faces[0][0][0].y, 9, 1e-5) << system << suffix;
        }
    }
}

TEST_F(Gdal_Maps, are_described) {
    Load_Limits limits;
    const std::string way = folder.file("way.gpx", gpx);
    const auto facts = layer_summaries_of(open_input(way, "", limits), limits);
    ASSERT_EQ(facts.size(), 3U); // waypoints, routes, tracks
    EXPECT_EQ(facts[0].facts.name, "waypoints");
    EXPECT_EQ(facts[2].lines, 1U);
    EXPECT_THAT(text_of(facts), HasSubstr("  layer tracks: 1 shapes, 0 faces, 1 lines, 0 points\n"));
    const std::string topology = folder.file("t.json", R"({"type":"Topology","arcs":[],"objects":{
        "a":{"type":"Point","coordinates":[1,2],"properties":{"n":1,"t":"x"}},"b":{"type":"Point","coordinates":[3,4]}}})");
    Json_Text text(false);
    add_layers(text, layer_summaries_of(open_input(topology, "", limits), limits));
    const auto layers = nlohmann::json::parse(text.take());
    ASSERT_EQ(layers.size(), 2U);
    EXPECT_EQ(layers[0]["fields"].dump(), R"([{"name":"n","type":"number"},{"name":"t","type":"text"}])");
    EXPECT_EQ(layers[1]["extent"].dump(), "[3.0,4.0,3.0,4.0]");
}

TEST(Coordinate_Systems, are_codes_or_harmless_parameters) {
    EXPECT_EQ(coordinate_system_of("EPSG:3857"), "EPSG:3857");
    EXPECT_EQ(coordinate_system_of("urn:ogc:def:crs:EPSG::3035"), "EPSG:3035");
    EXPECT_EQ(coordinate_system_of("urn:ogc:def:crs:OGC:1.3:CRS84"), "");
    EXPECT_EQ(coordinate_system_of("http://www.opengis.net/def/crs/EPSG/0/25832"), "EPSG:25832");
    EXPECT_EQ(coordinate_system_of("+proj=utm +zone=33 +datum=WGS84 +units=m +no_defs"),
              "+proj=utm +zone=33 +datum=WGS84 +units=m +no_defs");
    EXPECT_EQ(coordinate_system_of("+proj=longlat +datum=WGS84 +no_defs"), "");
    for (const char* refused :
         {"", "x", "+proj=utm +nadgrids=/etc/passwd", "+proj=utm +nadgrids=@null,x", "+proj=pipeline +step +proj=utm",
          "+proj=utm +zone=3;4", "+init=file:1", "+proj=utm +file", "EPSG:../3", "a b:3"}) {
        EXPECT_FALSE(coordinate_system_of(refused)) << refused;
    }
}

std::string gml_with(const std::string& system, const std::string& position) {
    return R"(<?xml version="1.0"?><ogr:FeatureCollection xmlns:ogr="http://ogr.maptools.org/" xmlns:gml="http://www.opengis.net/gml">
<gml:featureMember><ogr:place><ogr:shape><gml:Point srsName=")" +
           system + R"("><gml:pos>)" + position +
           "</gml:pos></gml:Point></ogr:shape></ogr:place></gml:featureMember></ogr:FeatureCollection>";
}

// The library itself finds none of these systems in its process, but for degrees.
TEST_F(Gdal_Maps, of_gml_have_the_systems_and_axes_that_they_state) {
    for (const char* latitude_first : {"urn:ogc:def:crs:EPSG::4326", "urn:ogc:def:crs:EPSG::4258"}) {
        const Map map = load("degrees.gml", gml_with(latitude_first, "50 7"));
        EXPECT_EQ(map.layers[0].system + map.layers[0].refusal, "");
        EXPECT_THAT(map.shapes[0].points, ElementsAre(Position{7, 50})) << latitude_first;
    }
    const Map east_first = load("east.gml", gml_with("urn:ogc:def:crs:OGC:1.3:CRS84", "7 50"));
    EXPECT_THAT(east_first.shapes[0].points, ElementsAre(Position{7, 50}));
    for (const char* plain : {"EPSG:25832", "http://www.opengis.net/gml/srs/epsg.xml#25832"}) {
        const Map map = load("metres.gml", gml_with(plain, "356000 5541000"));
        EXPECT_EQ(map.layers[0].system, "EPSG:25832");
        EXPECT_THAT(map.shapes[0].points, ElementsAre(Position{356000, 5541000}));
    }
    Map map = load("north.gml", gml_with("urn:ogc:def:crs:EPSG::3035", "3000000 4000000"));
    Load_Limits limits;
    try {
        convert_to_degrees("north.gml", map, limits);
        ADD_FAILURE();
    } catch (const Map_Error& error) {
        EXPECT_THAT(error.what(), testing::AllOf(HasSubstr("found 'urn:ogc:def:crs:EPSG::3035'; ogr2ogr"), HasSubstr("plane")));
    }
}

// Headers that are cut or damaged may say anything, and are read to their end at most.
TEST(Coordinate_Systems, of_damaged_flatgeobuf_are_read_within_the_file) {
    std::mt19937 random(7); // NOLINT(bugprone-random-generator-seed): the same bytes each time
    for (int round = 0; round < 2000; ++round) {
        std::string bytes("fgb\3fgb\0", 8);
        for (std::size_t size = random() % 200; size > 0; --size) {
            bytes += static_cast<char>(random() % 3 == 0 ? random() : random() % 40);
        }
        const auto system = stated_system("fgb", bytes);
        EXPECT_TRUE(!system || system->system.empty() || coordinate_system_of(system->system) == system->system);
    }
}

TEST(Coordinate_Systems, of_geojson_become_degrees) {
    Load_Limits limits;
    const std::string head = R"({"type":"FeatureCollection","crs":{"type":"name","properties":{"name":"urn:ogc:def:crs:EPSG::)";
    const std::string tail = R"("}},"features":[{"type":"Feature","properties":{},"geometry":{"type":"Point","coordinates":[)";
    Map map =
        load_map({"m.json", "json", find_format("json"), head + "3857" + tail + "1113194.9079,5621521.4862]}}]}"}, {}, limits);
    convert_to_degrees("m.json", map, limits);
    EXPECT_NEAR(map.shapes[0].points[0].x, 10, 1e-6);
    EXPECT_NEAR(map.shapes[0].points[0].y, 45, 1e-6);
    map = load_map({"m.json", "json", find_format("json"), head + "987654" + tail + "1,2]}}]}"}, {}, limits);
    EXPECT_THROW(convert_to_degrees("m.json", map, limits), Map_Error);
}

// The other process may send anything.
TEST(Packed_Shapes, that_are_damaged_are_refused) {
    Shape shape;
    shape.faces = {{{{0, 0}, {1, 0}, {1, 1}}}};
    shape.lines = {{{2, 2}, {3, 3}}};
    shape.points = {{4, 4}};
    shape.values = {Value(), Value(1.0), Value("text")};
    Shape_Packer packer;
    packer.add(shape);
    const std::string file = "m.shp", bytes = packer.bytes();
    const Shape same = Shape_Unpacker(file, bytes).shape();
    EXPECT_EQ(same.faces, shape.faces);
    EXPECT_EQ(same.lines, shape.lines);
    EXPECT_EQ(same.points, shape.points);
    EXPECT_EQ(same.values, shape.values);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_THROW(Shape_Unpacker(file, std::string_view(bytes).substr(0, size)).shape(), Map_Error);
    }
    std::string huge = bytes;
    huge.replace(sizeof shape.layer, sizeof(std::size_t), sizeof(std::size_t), '\x7F');
    EXPECT_THROW(Shape_Unpacker(file, huge).shape(), Map_Error);
}

} // namespace
} // namespace vorna::drawing::map

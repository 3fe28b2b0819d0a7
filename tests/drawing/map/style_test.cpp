// Styles from data, style files, and what coordinates tell by themselves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/job/formats.h"
#include "drawing/job/map_sources.h"
#include "drawing/map/json_place.h"
#include "drawing/map/map_scene.h"
#include "drawing/map/style_file.h"
#include "tests/support/command_line.h"

namespace vorna::drawing::map {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string square(double x, double y, const std::string& properties) {
    const auto at = [&](double dx, double dy) { return '[' + std::to_string(x + dx) + ',' + std::to_string(y + dy) + ']'; };
    return R"({"type":"Feature","properties":)" + properties + R"(,"geometry":{"type":"Polygon","coordinates":[[)" + at(0, 0) +
           ',' + at(1, 0) + ',' + at(1, 1) + ',' + at(0, 1) + ',' + at(0, 0) + "]]}}";
}

std::string collection(const std::vector<std::string>& features) {
    std::string list;
    for (const std::string& feature : features) {
        list += (list.empty() ? "" : ",") + feature;
    }
    return R"({"type":"FeatureCollection","features":[)" + list + "]}";
}

Input input_of(const std::string& text) {
    return {"map.json", "json", find_format("json"), text};
}

class Map_Styles : public testing::Test {
protected:
    std::unique_ptr<Map_Scene> scene_of(std::vector<Input> inputs, Map_Settings settings) {
        const auto limits = std::make_shared<Load_Limits>();
        const auto sources = open_map_sources(std::move(inputs), settings, *limits);
        auto scene = std::make_unique<Map_Scene>(sources, std::nullopt, settings, VT_RGB32{255, 255, 255, 255}, limits);
        scene->lay_out(scene->fitted({400, 300}), 1);
        return scene;
    }
    std::string error_of(const std::string& style) {
        Load_Limits limits;
        try {
            read_style(folder.file("style.json", style), {}, limits);
        } catch (const Usage_Error& error) {
            return std::string(error.what()).substr(folder.file("").size());
        }
        return "no error";
    }

    replay_tests::Temporary_Folder folder;
};

std::vector<VT_RGB32> fills_of(const Map_Scene& scene) {
    std::vector<VT_RGB32> fills;
    for (const Map_Item& item : scene.items()) {
        if (const auto* face = std::get_if<Face_Item>(&item)) {
            fills.push_back(face->color);
        }
    }
    return fills;
}

const std::string squares = collection({square(0, 0, R"({"n":1,"kind":"a"})"), square(2, 0, R"({"n":2,"kind":"b"})"),
                                        square(4, 0, R"({"n":30,"kind":"a"})"), square(6, 0, "{}")});

TEST_F(Map_Styles, colour_by_numbers_categories_and_breaks) {
    Map_Settings settings;
    settings.fill_by = "n";
    settings.classing = {"natural", 3, {}, "YlOrRd", false};
    const VT_RGB32 low{0xa0, 0xed, 0xff, 255}, middle{0x4c, 0xb2, 0xfe, 255}, high{0x20, 0x3b, 0xf0, 255},
        none{217, 217, 217, 255};
    EXPECT_THAT(fills_of(*scene_of({input_of(squares)}, settings)), ElementsAre(low, middle, high, none));
    settings.classing.breaks = {5, 100};
    EXPECT_THAT(fills_of(*scene_of({input_of(squares)}, settings)), ElementsAre(low, low, middle, none));
    settings.classing.reversed = true;
    EXPECT_THAT(fills_of(*scene_of({input_of(squares)}, settings)), ElementsAre(high, high, middle, none));
    settings.classing = {"", 3, {}, "Set1", false};
    settings.fill_by = "kind";
    const VT_RGB32 a{0x1c, 0x1a, 0xe4, 255}, b{0xb8, 0x7e, 0x37, 255};
    EXPECT_THAT(fills_of(*scene_of({input_of(squares)}, settings)), ElementsAre(a, b, a, none));
    settings.filter = "n < 30";
    EXPECT_THAT(fills_of(*scene_of({input_of(squares)}, settings)), ElementsAre(a, b));
    settings.classing.method = "equal";
    EXPECT_THROW(scene_of({input_of(squares)}, settings), Usage_Error);

    // Breaks are limits of numbers, among texts too.
    settings.filter.clear();
    settings.classing = {"", 5, {5}, "YlOrRd", false};
    EXPECT_THROW(scene_of({input_of(squares)}, settings), Usage_Error);
    settings.fill_by = "n";
    const std::string mixed = collection({square(0, 0, R"({"n":1})"), square(2, 0, R"({"n":"few"})")});
    const auto scene = scene_of({input_of(mixed)}, settings);
    EXPECT_EQ(fills_of(*scene)[1], none);
    EXPECT_NE(fills_of(*scene)[0], none);
    Load_Limits limits;
    Map_Sheet sheet(input_of(mixed), settings, limits);
    sheet.project(*make_projection("equirectangular", std::nullopt), {255, 255, 255, 255}, limits);
    ASSERT_EQ(sheet.legend().size(), 3U);
    EXPECT_EQ(sheet.legend().back().text, "no value");
}

TEST_F(Map_Styles, widths_follow_values) {
    const auto line = [](int y, int n) {
        const std::string at = "," + std::to_string(y) + "]";
        return R"({"type":"Feature","properties":{"n":)" + std::to_string(n) +
               R"(},"geometry":{"type":"LineString","coordinates":[[0)" + at + ",[9" + at + "]}}";
    };
    Map_Settings settings;
    settings.width_by = "n";
    settings.width_from = 2;
    settings.width_to = 12;
    std::vector<std::int32_t> widths;
    const auto scene = scene_of({input_of(collection({line(0, -5), line(1, 0), line(2, 5)}))}, settings);
    for (const Map_Item& item : scene->items()) {
        widths.push_back(std::get<Line_Item>(item).paint.width);
    }
    EXPECT_THAT(widths, ElementsAre(2, 7, 12));
    settings.width_from = 0;
    const auto thin = scene_of({input_of(collection({line(0, -5), line(1, 0), line(2, 5)}))}, settings);
    EXPECT_TRUE(std::ranges::all_of(thin->line_paints({}, 1), [](const Line_Paint& paint) { return paint.width > 0; }));
    EXPECT_FALSE(thin->line_paints({}, 1).empty());
}

std::vector<std::size_t> letters_of(const Map_Scene& scene) {
    std::vector<std::size_t> counts;
    for (const Map_Item& item : scene.labels()) {
        if (const auto* text = std::get_if<Text_Item>(&item)) {
            counts.push_back(text->lettering->letters.size());
        }
    }
    return counts;
}

TEST_F(Map_Styles, labels_are_placed_by_their_key_and_stay_in_the_image) {
    if (!WITH_FREETYPE) {
        GTEST_SKIP() << "a build without FreeType has no labels";
    }
    const auto feature = [](const std::string& geometry, std::size_t letters) {
        return R"({"type":"Feature","properties":{"name":")" + std::string(letters, 'W') + R"(","n":)" + std::to_string(letters) +
               R"(},"geometry":)" + geometry + "}";
    };
    // At one place, where not all of them have room.
    std::vector<std::string> features;
    for (std::size_t n = 1; n <= 12; ++n) {
        features.push_back(feature(R"({"type":"Point","coordinates":[5,5]})", n));
    }
    features.push_back(feature(R"({"type":"LineString","coordinates":[[0,7],[10,7]]})", 5));
    features.push_back(feature(R"({"type":"Polygon","coordinates":[[[0,0],[10,0],[10,2],[0,2],[0,0]]]})", 6));
    Map_Settings settings;
    settings.labels = true;
    const std::string map = collection(features);
    const auto in_order = scene_of({input_of(map)}, settings);
    const std::vector<std::size_t> counts = letters_of(*in_order);
    ASSERT_GT(counts.size(), 3U);
    EXPECT_LT(counts.size(), features.size());
    EXPECT_EQ(counts[0], 1U);
    EXPECT_THAT(counts, testing::IsSupersetOf({5U, 6U}));
    settings.label_key = "n";
    const std::vector<std::size_t> by_key = letters_of(*scene_of({input_of(map)}, settings));
    EXPECT_EQ(by_key[0], 12U);
    EXPECT_TRUE(std::ranges::is_sorted(by_key, std::greater{}));
    for (const double halo : {0.0, 9.0}) {
        settings.halo = halo;
        settings.label_size = 40;
        const auto scene = scene_of({input_of(map)}, settings);
        for (const Map_Item& item : scene->labels()) {
            const VT_Int_Rectangle& box = std::get<Text_Item>(item).lettering->box;
            EXPECT_TRUE(box.left >= -2 && box.bottom >= -2 && box.right < 402 && box.top < 302);
        }
    }
}

TEST_F(Map_Styles, of_files_have_layers_in_order) {
    if (!WITH_FREETYPE) {
        GTEST_SKIP() << "a build without FreeType has no title";
    }
    folder.file("more.json", collection({square(0, 3, "{}")}));
    Map_Settings settings;
    settings.style = folder.file("style.json", R"({"title": "T", "layers": [
        {"fill": "red", "filter": "n = 1"}, {"fill": "#00ff00", "filter": "n = 2", "order": -1},
        {"source": "more.json", "fill": "blue", "dash": "none", "width": 3}]})");
    const auto scene = scene_of({input_of(squares)}, settings);
    EXPECT_THAT(fills_of(*scene), ElementsAre(VT_RGB32{0, 255, 0, 255}, VT_RGB32{0, 0, 255, 255}, VT_RGB32{255, 0, 0, 255}));
    EXPECT_EQ(scene->summary(), "3 shapes, 12 positions");
    EXPECT_FALSE(scene->labels().empty()); // the title
}

TEST_F(Map_Styles, of_files_name_line_column_and_key_of_errors) {
    EXPECT_EQ(error_of("{\"layers\": [\n  {\"fill\": \"puce\"}]}"),
              "style.json: line 2, column 4: layers[0].fill: expected a colour, palette or none, found \"puce\"");
    EXPECT_THAT(error_of("{\"layers\": [{}, {\n\n   \"fil\\u006c\": 3}]}"),
                HasSubstr("line 3, column 4: layers[1].fill: expected"));
    EXPECT_THAT(error_of(R"({"layer": []})"), HasSubstr("line 1, column 2: layer: expected one of the keys title"));
    EXPECT_THAT(error_of("{\"layers\": [{\"width\": 1.5}]}"), HasSubstr("expected a whole number from 1 to 1000, found 1.5"));
    EXPECT_THAT(error_of("{\"layers\": [{\"breaks\": [2, 1]}]}"), HasSubstr("expected an array of up to 63 increasing numbers"));
    EXPECT_THAT(error_of("{\"layers\": [{\"ramp\": \"x\"}]}"), HasSubstr("expected one of YlGn, "));
    EXPECT_THAT(error_of("{\"layers\": [{\"filter\": \"a >\"}]}"),
                HasSubstr("column 14: layers[0].filter: condition: column 4: expected a value"));
    EXPECT_THAT(error_of("{\"layers\": [{\"source\": \"/etc/passwd\"}]}"), HasSubstr("layers[0].source: "));
    EXPECT_THAT(error_of(R"({"layers": [{"classes": "categories", "breaks": [1]}]})"),
                HasSubstr("layers[0]: expected either classes categories or breaks, found both"));
    EXPECT_THAT(error_of(R"({"layers": [{"halo": 21}]})"), HasSubstr("layers[0].halo: expected a number from 0 to 20, found 21"));
    EXPECT_THAT(error_of(R"({"scale-bar": "leagues"})"), HasSubstr("scale-bar: expected one of km, miles"));
    EXPECT_THAT(error_of("{\"layers\": []}"), HasSubstr("line 1, column 2: layers: expected an array of one layer or more"));
    EXPECT_THAT(error_of("{\"graticule\": 1e999}"), HasSubstr("style.json: expected a style file in JSON with numbers up to"));
    EXPECT_THAT(error_of("[]"), HasSubstr("line 1, column 1: expected an object, found []"));
    EXPECT_THAT(error_of("{\n \"layers\" []}"), HasSubstr("style.json: line 2, column 11: expected a style file in JSON"));
    EXPECT_EQ(json_place(R"({"a": "}{", "b": [1, [2, {"c": 0}]]})", {"b", std::size_t{1}, std::size_t{1}, "c"}),
              "line 1, column 27");
}

// Coordinates of pictures grow downwards; those of projections upwards.
TEST_F(Map_Styles, are_of_planes_where_coordinates_are_no_degrees) {
    const auto first_y = [&](const std::string& text, Map_Settings settings = {}) {
        const auto scene = scene_of({input_of(text)}, settings);
        return std::get<Face_Item>(scene->items().front()).face->front().front().y;
    };
    EXPECT_EQ(first_y(collection({square(500, 300, "{}")})), -300);
    EXPECT_EQ(first_y(collection({square(500000, 300, "{}")})), 300);
    // Half of the positions are no reason.
    EXPECT_THROW(first_y(collection({square(50, 30, "{}"), square(50, 300, "{}")})), Map_Error);
}

TEST_F(Map_Styles, are_centred_over_the_antimeridian) {
    const auto width_of = [&](const std::string& text, const std::string& projection = "") {
        Map_Settings settings;
        settings.projection = projection;
        const View view = scene_of({input_of(text)}, settings)->fitted({1000, 0});
        return 960 / view.scale;
    };
    EXPECT_NEAR(width_of(collection({square(178.5, 0, "{}"), square(-180, 0, "{}"), square(-175, 0, "{}")})), 7.5, 0.1);
    EXPECT_GT(width_of(collection({square(179, 0, "{}"), square(-180, 0, "{}"), square(0, 0, "{}")})), 300);
    if (WITH_PROJ) {
        EXPECT_LT(width_of(collection({square(100, 40, "{}"), square(102, 40, "{}")}), "orthographic"), 300000);
    }
    // Not where the file says its extent.
    const std::string across = collection({square(178.5, 0, "{}"), square(-180, 0, "{}")});
    EXPECT_NEAR(width_of(R"({"bbox":[-180,0,180,1],)" + across.substr(1)), 360, 0.1);
    if (WITH_PROJ) {
        Map_Settings settings;
        settings.projection = "orthographic";
        settings.bbox = Extent{-20, 60, 20, 130};
        EXPECT_NO_THROW(scene_of({input_of(collection({square(0, 85, "{}")}))}, settings));
    }
}

} // namespace
} // namespace vorna::drawing::map

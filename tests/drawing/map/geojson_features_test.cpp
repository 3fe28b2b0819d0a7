// Features of GeoJSON read without a document, compared with those of the document.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/check/random.h"
#include "drawing/job/formats.h"
#include "drawing/map/geojson_features.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

using app::check::Random;
using testing::HasSubstr;

const std::vector<std::string> fields{"pop", "name", "empty"};

std::string text_of(const Map& map) {
    std::string text;
    const auto add_number = [&](double number) {
        std::array<char, 40> digits;
        std::snprintf(digits.data(), digits.size(), "%a,", number);
        text += digits.data();
    };
    for (const Shape& shape : map.shapes) {
        text += '\n' + shape.name + '#' + shape.id + '#' + std::to_string(shape.fill ? shape.fill->alpha : -1) + ',' +
                std::to_string(shape.stroke_width.value_or(-1)) + ',' + std::to_string(shape.marker_size.value_or(-1)) + '#';
        for (const Value& value : shape.values) {
            if (const auto* number = std::get_if<double>(&value)) {
                add_number(*number);
            } else {
                text += value.index() == 0 ? "none," : '\'' + std::get<std::string>(value) + "',";
            }
        }
        text += std::to_string(shape.faces.size()) + ',' + std::to_string(shape.lines.size());
        for_each_path(shape, [&](const Path& path) {
            text += ';';
            for (const Position& p : path) {
                add_number(p.x);
                add_number(p.y);
            }
        });
    }
    if (map.extent) {
        add_number(map.extent->west);
    }
    return text + '\n' + map.layers.front().system;
}

// The shapes, or the message.
std::string read(const std::string& text) {
    Load_Limits limits;
    try {
        return text_of(load_map({"map.json", "json", find_format("json"), text}, {"", fields}, limits));
    } catch (const Map_Error& error) {
        return error.what();
    }
}

// The same from the whole document, which a key with an escape sequence asks for. Messages lack the place of a parse error.
std::string read_whole(const std::string& members) {
    return read(R"({"\u0078":1,)" + members);
}

std::string without_column(const std::string& text) {
    const std::size_t start = text.find(", column ");
    return start == text.npos ? text : text.substr(0, start) + text.substr(text.find(':', start));
}

bool is_read_apart(const std::string& text) {
    Load_Limits limits;
    return read_features("map.json", text, {"", fields}, limits).has_value();
}

// Documents with members in any order, some of them twice or with unusual values.
class Document_Maker {
public:
    explicit Document_Maker(Random& random) : random_(random) {}

    std::string members() {
        std::vector<std::string> list{R"("type":"FeatureCollection")", "\"features\":[" + features() + ']'};
        add_sometimes(list, R"("bbox":[1,2,3,4])", 20);
        add_sometimes(list, R"("crs":{"properties":{"name":"EPSG:3857"}})", 20);
        add_sometimes(list, R"("features":[])", 3);
        add_sometimes(list, R"("more":{"features":[1,{"coordinates":[true,null]}]})", 20);
        return joined(list) + '}';
    }

private:
    void add_sometimes(std::vector<std::string>& list, const std::string& member, int percent) {
        if (random_.chance(percent)) {
            list.push_back(member);
        }
    }
    std::string joined(std::vector<std::string> list) {
        std::string text;
        while (!list.empty()) {
            const auto next = list.begin() + random_.number(0, static_cast<std::int32_t>(list.size()) - 1);
            text += (text.empty() ? "" : random_.chance(20) ? " ,\n" : ",") + *next;
            list.erase(next);
        }
        return text;
    }
    std::string features() {
        std::vector<std::string> list;
        for (int i = random_.number(0, 4); i > 0; --i) {
            std::vector<std::string> members{R"("type":"Feature")", "\"geometry\":" + geometry(),
                                             "\"properties\":" + (random_.chance(10) ? "null" : '{' + properties() + '}')};
            add_sometimes(members, "\"id\":" + value(), 40);
            add_sometimes(members, "\"bbox\":[" + value() + ']', 10);
            add_sometimes(members, R"("type":"Feature")", 2);
            list.push_back('{' + joined(members) + '}');
        }
        return joined(list);
    }
    std::string geometry() {
        constexpr std::array kinds{R"("type":"Point","coordinates":[-1.5,2e1,3])",
                                   R"("coordinates":[[1,2],[-0,0.0],[3,123456789012345678901]],"type":"MultiPoint")",
                                   R"("type":"LineString","coordinates":[[1,2],[ 3 , 4.25 ]],"bbox":[1])",
                                   R"("type":"Polygon","coordinates":[[[0,0],[4,0],[4,4],[0,0]],[[1,0.5],[2,1],[3,1]]])",
                                   R"("type":"MultiPolygon","coordinates":[[[[0,0],[1,0],[1,1],[0,0]]],[[[5,5],[6,5],[6,6]]]])",
                                   R"("type":"MultiLineString","coordinates":[[[0,1],[2,3]],[[4,5],[6,7]]])",
                                   R"("type":"GeometryCollection","geometries":[{"type":"Point","coordinates":[1,2]}])",
                                   R"("type":"Point","coordinates":[[1,2]])",
                                   R"("type":"Point","coordinates":[1,2],"coordinates":[3,4])",
                                   R"("type":"LineString","coordinates":[])"};
        const int kind = random_.chance(90) ? random_.number(0, 5) : random_.number(6, 9);
        return random_.chance(10) ? "null" : '{' + std::string(kinds[static_cast<std::size_t>(kind)]) + '}';
    }
    std::string properties() {
        constexpr std::array keys{"name",         "NAME",         "pop",         "pop", "fill",
                                  "fill-opacity", "stroke-width", "marker-size", "x",   "coordinates"};
        std::vector<std::string> list;
        for (int i = random_.number(0, 5); i > 0; --i) {
            list.push_back('"' + std::string(random_.one_of(keys)) + "\":" + value());
        }
        return joined(list);
    }
    std::string value() {
        constexpr std::array values{R"("Ab")",
                                    R"("#80ff00")",
                                    R"("small")",
                                    R"("")",
                                    R"("é\u00e9\n\"")",
                                    R"("\ud83d\ude00")",
                                    "0",
                                    "-0",
                                    "-0.0",
                                    "7",
                                    "-12",
                                    "0.5",
                                    "1e2",
                                    "12345678901234567890",
                                    "98765432109876543210",
                                    "0.1000",
                                    "1E-7",
                                    "true",
                                    "false",
                                    "null",
                                    "[]",
                                    R"({"name":"in"})",
                                    R"([1,"]"])",
                                    R"("\ud83d")",
                                    "1e999",
                                    "1e-400",
                                    "\"\xC3\"",
                                    "\"\t\"",
                                    "01",
                                    "nul"};
        return values[static_cast<std::size_t>(random_.number(0, random_.chance(97) ? 22 : 29))];
    }

    Random& random_;
};

TEST(Geojson_Features, are_those_of_the_document_for_random_and_damaged_texts) {
    Random random(1);
    Document_Maker maker(random);
    constexpr std::string_view signs = "\"\\{}[],:0.-e \n\x01\xC3";
    int apart = 0, refused = 0;
    const char* const scale = std::getenv("VORNA_TEST_SCALE");
    const int count = scale ? std::max(static_cast<int>(3000 * std::atof(scale)), 300) : 3000;
    for (int i = 0; i < count; ++i) {
        std::string members = maker.members();
        if (random.chance(30)) {
            const auto at = static_cast<std::size_t>(random.number(1, static_cast<std::int32_t>(members.size()) - 1));
            const auto length = static_cast<std::size_t>(random.number(0, 3));
            members.replace(at, length, random.chance(50) ? "" : std::string(1, random.one_of(signs)));
        }
        const std::string text = '{' + members, found = read(text);
        ASSERT_EQ(without_column(found), without_column(read_whole(members))) << text;
        apart += is_read_apart(text) ? 1 : 0;
        refused += found.starts_with("map.json") ? 1 : 0;
    }
    EXPECT_GT(apart, count / 4);
    EXPECT_GT(refused, count / 10);
}

TEST(Geojson_Features, are_read_without_a_document_behind_a_byte_order_mark_and_with_repeated_keys_that_shapes_do_not_have) {
    const std::string feature = R"({"type":"Feature","properties":{"a":1,"a":2,"name":"N"},"geometry":null})";
    const std::string text = R"({"features":[)" + feature + ',' + feature + R"(],"type":"FeatureCollection"})";
    for (const std::string start : {"", "\xEF\xBB\xBF", " \n"}) {
        EXPECT_TRUE(is_read_apart(start + text));
        EXPECT_EQ(read(start + text), read(text));
    }
    EXPECT_FALSE(is_read_apart(text + ','));
    EXPECT_FALSE(is_read_apart(text.substr(0, text.size() - 1)));
    EXPECT_EQ(read(R"({"features":[)" + feature + R"(],"type":"Point","coordinates":[1,2]})"),
              read(R"({"type":"Point","coordinates":[1,2]})"));
    std::string deep = "1";
    for (int i = 0; i < 300; ++i) {
        deep = '[' + deep + ']';
    }
    EXPECT_THAT(read(R"({"type":"FeatureCollection","features":[{"deep":)" + deep + "}]}"), HasSubstr("nested too deeply"));
}

// Where the limits leave no room, the reader of documents names the file and what is missing.
TEST(Geojson_Features, draw_their_memory_from_the_limits) {
    const std::string text =
        R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{},"geometry":{"type":"Point","coordinates":[1,2]}}]})";
    Load_Limits narrow(20 * text.size()), wide(30 * text.size() + 1000);
    EXPECT_FALSE(read_features("map.json", text, {}, narrow));
    EXPECT_TRUE(read_features("map.json", text, {}, wide));
    Map_Query many;
    many.fields.assign(1000, "pop");
    EXPECT_FALSE(read_features("map.json", text, many, wide));
}

} // namespace
} // namespace vorna::drawing::map

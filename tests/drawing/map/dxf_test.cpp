// DXF drawings. Groups are written in one line here, parted by bars.
#include <algorithm>
#include <cmath>
#include <numbers>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string lines(std::string text) {
    std::ranges::replace(text, '|', '\n');
    return text;
}

std::string drawing(const std::string& entities, const std::string& tables = "", const std::string& blocks = "") {
    return lines("0|SECTION|2|TABLES|" + tables + "0|ENDSEC|0|SECTION|2|BLOCKS|" + blocks + "0|ENDSEC|0|SECTION|2|ENTITIES|" +
                 entities + "0|ENDSEC|0|EOF|");
}

Map read(const std::string& content) {
    Load_Limits limits;
    return read_dxf("test.dxf", content, limits);
}

Shape only_shape(const std::string& entity) {
    const Map map = read(drawing(entity));
    EXPECT_EQ(map.shapes.size(), 1U);
    return map.shapes.at(0);
}

double twice_area(const Path& ring) {
    double area = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Position &a = ring[i], &b = ring[(i + 1) % ring.size()];
        area += a.x * b.y - b.x * a.y;
    }
    return area;
}

TEST(Dxf, curves_turn_the_right_way) {
    const Path arc = only_shape("0|ARC|10|5|20|5|40|2|50|90|51|360|").lines.at(0);
    EXPECT_NEAR(arc.front().y, 7, 1e-9);
    EXPECT_NEAR(arc.back().x, 7, 1e-9);
    EXPECT_NEAR(arc[arc.size() / 3].x, 3, 0.1); // over the left side
    const Path ellipse = only_shape("0|ELLIPSE|10|0|20|0|11|0|21|4|40|0.5|41|0|42|1.5707963267948966|").lines.at(0);
    EXPECT_NEAR(ellipse.front().y, 4, 1e-9);
    EXPECT_NEAR(ellipse.back().x, -2, 1e-9);
    // A half circle to the right of the way, then a straight side back.
    for (const char* polyline : {"0|LWPOLYLINE|90|2|70|1|10|0|20|0|42|1|10|0|20|2|",
                                 "0|POLYLINE|66|1|70|1|0|VERTEX|10|0|20|0|42|1|0|VERTEX|10|0|20|2|0|SEQEND|"}) {
        const Path path = only_shape(polyline).lines.at(0);
        EXPECT_EQ(path.front(), path.back());
        EXPECT_NEAR(std::ranges::max(path, {}, &Position::x).x, 1, 1e-9);
        EXPECT_NEAR(twice_area(path), std::numbers::pi, 1e-3);
    }
    EXPECT_NEAR(std::ranges::min(only_shape("0|CIRCLE|10|3|20|0|40|1|230|-1|").lines.at(0), {}, &Position::x).x, -4, 1e-9);
}

TEST(Dxf, solid_hatches_have_boundaries_of_polylines_and_edges) {
    const Shape hatch = only_shape("0|HATCH|10|0|20|0|2|SOLID|70|1|91|2|"
                                   "92|3|72|1|73|1|93|2|10|0|20|0|42|1|10|0|20|2|42|0|"
                                   "92|1|93|2|72|1|10|0|20|0|11|0|21|1|72|2|10|0|20|0|40|1|50|270|51|360|73|0|");
    ASSERT_EQ(hatch.faces.size(), 1U);
    ASSERT_EQ(hatch.faces[0].size(), 2U);
    EXPECT_NEAR(twice_area(hatch.faces[0][0]), std::numbers::pi, 1e-3);
    // The clockwise arc from -270 to -360 degrees lies above the x axis.
    EXPECT_NEAR(std::abs(twice_area(hatch.faces[0][1])), std::numbers::pi / 2, 1e-3);
    EXPECT_GE(std::ranges::min(hatch.faces[0][1], {}, &Position::y).y, -1e-9);
}

TEST(Dxf, blocks_are_placed_and_colours_taken_from_where_they_are_said) {
    const std::string layers = "0|LAYER|2|Walls|62|1|0|LAYER|2|Off|62|-1|0|LAYER|2|Plain|62|7|420|1056816|";
    const std::string block = "0|BLOCK|2|Peg|10|1|20|0|0|POINT|8|0|62|0|10|2|20|0|0|POINT|8|0|62|256|10|1|20|0|0|ENDBLK|";
    const Map map = read(drawing("0|INSERT|8|Walls|62|3|2|Peg|10|10|20|20|41|2|50|90|70|2|44|5|"
                                 "0|LINE|8|Off|10|0|20|0|11|1|21|1|0|POINT|8|Plain|10|0|20|0|"
                                 "0|POINT|62|12|10|0|20|0|",
                                 layers, block));
    ASSERT_EQ(map.shapes.size(), 6U);
    EXPECT_NEAR(map.shapes[0].points[0].x, 10, 1e-9);
    EXPECT_NEAR(map.shapes[0].points[0].y, 22, 1e-9);
    EXPECT_NEAR(map.shapes[2].points[0].y, 27, 1e-9);
    EXPECT_EQ(map.shapes[0].stroke, (VT_RGB32{0, 255, 0, 255}));
    EXPECT_EQ(map.shapes[1].stroke, (VT_RGB32{0, 0, 255, 255}));
    EXPECT_EQ(map.shapes[4].stroke, (VT_RGB32{0x30, 0x20, 0x10, 255}));
    EXPECT_EQ(map.shapes[5].stroke, (VT_RGB32{0, 0, 165, 255}));
}

TEST(Dxf, what_is_not_drawn_is_counted_in_one_warning) {
    const Map map = read(drawing("0|TEXT|1|a|0|MTEXT|1|b|0|TEXT|1|c|0|POINT|10|0|20|0|"));
    EXPECT_THAT(map.warnings, ElementsAre("test.dxf: not drawn: 1 MTEXT, 2 TEXT"));
}

TEST(Dxf, errors_name_the_line) {
    const std::string block = "0|BLOCK|2|A|0|INSERT|2|A|10|0|20|0|0|ENDBLK|";
    const struct {
        std::string content, message;
    } cases[] = {
        {lines("0|SECTION|2|ENTITIES|0|CIRCLE|10|1|20|x|40|1|0|ENDSEC|"), "test.dxf:10: expected a number, found 'x'"},
        {drawing("0|CIRCLE|10|1|20|1|"), "expected a group 40 in this CIRCLE, found none"},
        {drawing("0|INSERT|2|B|10|1|20|1|"), "expected the name of a block, found 'B'"},
        {drawing("0|INSERT|2|A|10|0|20|0|", "", block), "expected blocks at most 16 deep"},
        {lines("0|SECTION|2|ENTITIES|0|POINT|10|1"), "expected 0 ENDSEC, found the end of the file"},
        {"hello\nworld\n", "test.dxf:1: expected a whole number, found 'hello'"},
        {std::string("\0\0", 2), "expected DXF as text"},
        {"", "expected DXF with sections, found none"},
    };
    for (const auto& [content, message] : cases) {
        try {
            read(content);
            ADD_FAILURE() << message;
        } catch (const Map_Error& error) {
            EXPECT_THAT(error.what(), HasSubstr(message));
        }
    }
}

} // namespace
} // namespace vorna::drawing::map

// Entities, blocks and styles of DXF drawings.
#include <algorithm>
#include <cmath>
#include <numbers>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/drawing/map/dxf/dxf_text.h"

namespace vorna::drawing::map {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

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
    const Map map = read(drawing("0|RAY|10|0|0|IMAGE|1|b|0|RAY|10|0|0|POINT|10|0|20|0|"));
    EXPECT_THAT(map.warnings, ElementsAre("test.dxf: not drawn: 1 IMAGE, 2 RAY"));
}

TEST(Dxf, splines_follow_control_points_or_fit_points) {
    // A quarter of the unit circle is a rational curve of degree 2.
    const Path arc = only_shape("0|SPLINE|71|2|40|0|40|0|40|0|40|1|40|1|40|1|10|1|20|0|10|1|20|1|10|0|20|1|"
                                "41|1|41|0.70710678118654752|41|1|")
                         .lines.at(0);
    EXPECT_GT(arc.size(), 10U);
    for (const Position& p : arc) {
        EXPECT_NEAR(std::hypot(p.x, p.y), 1, 1e-9);
    }
    EXPECT_NEAR(arc.back().y, 1, 1e-12);
    const Path fitted = only_shape("0|SPLINE|71|3|11|0|21|0|11|1|21|1|11|2|21|0|").lines.at(0);
    EXPECT_THAT(fitted, testing::Contains(testing::AllOf(testing::Field(&Position::x, 1), testing::Field(&Position::y, 1))));
    EXPECT_EQ(fitted.back(), (Position{2, 0}));
}

TEST(Dxf, polylines_have_widths) {
    const Map map = read(drawing("0|LWPOLYLINE|43|2|10|0|20|0|10|10|20|0|"
                                 "0|LWPOLYLINE|10|0|20|0|40|0|41|4|10|10|20|0|40|1|41|1|10|20|20|0|10|30|20|0|"));
    ASSERT_EQ(map.shapes.size(), 4U);
    EXPECT_EQ(map.shapes[0].pen.width, 2);
    const Extent wedge = extent_of(map.shapes[1]);
    EXPECT_EQ(map.shapes[1].faces.size(), 1U);
    EXPECT_NEAR(wedge.north - wedge.south, 4, 1e-9);
    EXPECT_EQ(map.shapes[2].pen.width, 1);
    EXPECT_EQ(length_of(map.shapes[2]), 10);
    EXPECT_EQ(map.shapes[3].pen.width, 0);
}

TEST(Dxf, entities_on_tilted_planes_are_seen_from_above) {
    // On the plane x = 5, whose axes are y and z.
    const Extent side = extent_of(only_shape("0|CIRCLE|10|3|20|4|30|5|40|1|210|1|220|0|230|0|"));
    EXPECT_NEAR(side.west, 5, 1e-9);
    EXPECT_NEAR(side.east, 5, 1e-9);
    EXPECT_NEAR(side.south, 2, 1e-9);
    EXPECT_NEAR(side.north, 4, 1e-9);
}

TEST(Dxf, line_types_and_weights_come_from_entity_layer_or_block) {
    const std::string tables = "0|LTYPE|2|Centre|49|12|49|-3|49|0|49|-3|0|LTYPE|2|Gap first|49|-1|49|2|49|-3|"
                               "0|LAYER|2|A|62|7|6|CENTRE|370|50|";
    const std::string block = "0|BLOCK|2|b|0|LINE|8|0|6|BYBLOCK|370|-2|10|0|20|0|11|9|21|0|0|ENDBLK|";
    const Map map = read(drawing("0|LINE|8|A|10|0|20|0|11|9|21|0|0|LINE|8|A|6|Gap first|48|2|370|0|10|0|20|0|11|9|21|0|"
                                 "0|INSERT|2|B|8|A|6|Gap first|370|100|10|0|20|0|0|LINE|8|A|6|CONTINUOUS|10|0|20|0|11|9|21|0|",
                                 tables, block, "9|$LTSCALE|40|0.5|"));
    ASSERT_EQ(map.shapes.size(), 4U);
    const auto dashes = [&](std::size_t shape) { return map.dashes.at(map.shapes[shape].pen.dashes - 1); };
    EXPECT_THAT(dashes(0), ElementsAre(6, 1.5, 0, 1.5));
    EXPECT_FLOAT_EQ(map.shapes[0].pen.weight, 0.5F);
    EXPECT_THAT(dashes(1), ElementsAre(2, 4)); // the gaps at both ends are one
    EXPECT_GT(map.shapes[1].pen.weight, 0);
    EXPECT_LT(map.shapes[1].pen.weight, 0.05F);
    EXPECT_THAT(dashes(2), ElementsAre(1, 2));
    EXPECT_FLOAT_EQ(map.shapes[2].pen.weight, 1);
    EXPECT_EQ(map.shapes[3].pen.dashes, 0U);
}

TEST(Dxf, layers_that_are_off_frozen_or_not_plotted_are_not_drawn) {
    const std::string layers = "0|LAYER|2|Off|62|-7|0|LAYER|2|Frozen|62|7|70|1|0|LAYER|2|Screen|62|7|290|0|0|LAYER|2|Shown|62|7|"
                               "0|LAYER|2|Defpoints|62|7|";
    const std::string block = "0|BLOCK|2|b|0|POINT|8|Shown|10|1|20|0|0|ENDBLK|";
    const std::string entities = "0|POINT|8|Off|10|0|20|0|0|POINT|8|FROZEN|10|0|20|0|0|POINT|8|Screen|10|0|20|0|"
                                 "0|POINT|8|Defpoints|10|0|20|0|0|INSERT|8|Frozen|2|b|10|0|20|0|0|INSERT|8|Off|2|b|10|5|20|0|"
                                 "0|POINT|8|Other|10|9|20|0|";
    const Map map = read(drawing(entities, layers, block));
    ASSERT_EQ(map.shapes.size(), 2U);
    EXPECT_EQ(map.shapes[0].points.at(0).x, 6);
    Map_Query query;
    query.layer = "shown";
    EXPECT_EQ(read(drawing(entities, layers, block), query).shapes.size(), 1U);
    query.layer = "Shown,None";
    EXPECT_THROW(read(drawing(entities, layers, block), query), Map_Error);
}

TEST(Dxf, points_look_as_the_file_says) {
    EXPECT_FALSE(only_shape("0|POINT|10|0|20|0|").marker_symbol);
    const Map crosses = read(drawing("0|POINT|10|5|20|5|", "", "", "9|$PDMODE|70|35|9|$PDSIZE|40|2|"));
    EXPECT_NEAR(length_of(crosses.shapes.at(0)), 2 * std::hypot(2, 2) + 2 * std::numbers::pi, 1e-3);
    EXPECT_TRUE(read(drawing("0|POINT|10|5|20|5|", "", "", "9|$PDMODE|70|1|")).shapes.empty());
    EXPECT_EQ(read(drawing("0|POINT|10|5|20|5|", "", "", "9|$PDMODE|70|0|")).shapes.at(0).marker_size, 1);
}

TEST(Dxf, meshes_and_faces_in_space_are_drawn_as_edges) {
    const std::string vertices =
        "0|VERTEX|10|0|20|0|70|64|0|VERTEX|10|1|20|0|70|64|0|VERTEX|10|1|20|1|70|64|0|VERTEX|10|0|20|1|70|64|";
    EXPECT_NEAR(length_of(only_shape("0|POLYLINE|70|16|71|2|72|2|" + vertices + "0|SEQEND|")), 2 + 2 * std::sqrt(2), 1e-9);
    EXPECT_NEAR(length_of(only_shape("0|POLYLINE|70|64|" + vertices + "0|VERTEX|70|128|71|1|72|2|73|-3|74|4|0|SEQEND|")), 3,
                1e-9);
    EXPECT_EQ(read(drawing("0|3DFACE|70|2|10|0|20|0|11|1|21|0|12|1|22|1|13|0|23|1|")).shapes.size(), 3U);
}

TEST(Dxf, dimensions_are_their_block_or_made_of_their_points) {
    const std::string block = "0|BLOCK|2|*D1|10|5|20|5|0|LINE|10|0|20|3|11|10|21|3|0|ENDBLK|";
    const std::string dimension = "0|DIMENSION|2|*D1|70|0|10|10|20|3|13|0|23|0|14|10|24|0|1| |";
    EXPECT_EQ(read(drawing(dimension, "", block)).shapes.at(0).lines.at(0).at(0), (Position{0, 3}));
    const Map made = read(drawing(dimension));
    ASSERT_EQ(made.shapes.size(), 4U);
    EXPECT_EQ(made.shapes[1].lines.at(0), (Path{{0, 3}, {10, 3}}));
    EXPECT_EQ(made.shapes[2].faces.at(0).at(0).at(0), (Position{10, 3})); // the tip of an arrow
    const Map leader = read(drawing("0|LEADER|10|0|20|0|10|5|20|5|10|9|20|5|"));
    ASSERT_EQ(leader.shapes.size(), 2U);
    EXPECT_EQ(leader.shapes[0].faces.at(0).at(0).at(0), (Position{0, 0}));
    EXPECT_EQ(leader.shapes[1].lines.at(0).back(), (Position{9, 5}));
    // An arrow of its own size.
    const Map sized = read(drawing("0|LEADER|10|0|20|0|10|5|20|0|1001|ACAD|1000|DSTYLE|1002|{|1070|41|1040|2|1002|}|"));
    EXPECT_EQ(sized.shapes.at(0).faces.at(0).at(0).at(1).x, 2);
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
        {drawing("0|LINE|10|nan|20|1|11|1|21|1|"), "expected a number, found 'nan'"},
        {drawing("0|SPLINE|71|3|40|0|10|1|20|1|"), "expected a SPLINE of degree 1 to 32"},
        {drawing("0|POLYLINE|70|64|0|VERTEX|10|0|20|0|0|VERTEX|70|128|71|2|0|SEQEND|"), "expected the number of a vertex"},
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

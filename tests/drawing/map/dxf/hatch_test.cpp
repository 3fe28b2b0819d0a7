// Patterns of hatches and their islands.
#include <cmath>

#include <gmock/gmock.h>

#include "tests/drawing/map/dxf/dxf_text.h"

namespace vorna::drawing::map {
namespace {

std::string square(int flags, double low, double high) {
    const std::string a = std::to_string(low), b = std::to_string(high);
    return "92|" + std::to_string(flags) + "|72|0|73|1|93|4|10|" + a + "|20|" + a + "|10|" + b + "|20|" + a + "|10|" + b +
           "|20|" + b + "|10|" + a + "|20|" + b + "|97|0|";
}

const std::string rows = "78|1|53|0|43|0|44|0.25|45|0|46|1|79|0|";

TEST(Dxf_Hatch, lines_end_at_the_boundary_and_at_islands) {
    const Shape plain = only_shape("0|HATCH|70|0|91|1|" + square(3, 0, 10) + "75|0|" + rows);
    EXPECT_EQ(plain.lines.size(), 10U);
    EXPECT_NEAR(length_of(plain), 100, 1e-9);
    EXPECT_NEAR(extent_of(plain).south, 0.25, 1e-9);
    // An island with another island in it, by each of the three rules.
    const std::string rings = "91|3|" + square(3, 0, 10) + square(18, 2, 8) + square(2, 4, 6);
    for (const auto& [rule, area] : {std::pair("75|0|", 100 - 36 + 4), {"75|1|", 100 - 36}, {"75|2|", 100}}) {
        EXPECT_NEAR(length_of(only_shape("0|HATCH|70|0|" + rings + rule + rows)), area, 1e-9) << rule;
    }
    EXPECT_EQ(only_shape("0|HATCH|70|1|" + rings + "75|1|").faces.at(0).size(), 2U);
}

TEST(Dxf_Hatch, turned_lines_have_dashes_that_start_at_their_base) {
    // At 45 degrees, 1 apart, dashes of 1 and gaps of 1: half of the area, as far as whole dashes tell.
    const std::string family = "78|1|53|45|43|0|44|0|45|-0.70710678|46|0.70710678|79|2|49|1|49|-1|";
    const Shape dashed = only_shape("0|HATCH|70|0|91|1|" + square(3, 0, 100) + family);
    EXPECT_NEAR(length_of(dashed), 5000, 100);
    for (const Path& line : dashed.lines) {
        EXPECT_NEAR(line[1].x - line[0].x, line[1].y - line[0].y, 1e-6);
        const double along = (line[0].x + line[0].y) / std::sqrt(2);
        const bool is_cut = std::min(line[0].x, line[0].y) < 1e-6; // at the boundary
        EXPECT_TRUE(is_cut || std::abs(std::remainder(along, 2)) < 1e-5) << along;
    }
    const Shape dots = only_shape("0|HATCH|70|0|91|1|" + square(3, 0, 10) + "78|1|53|0|43|0.5|44|0.5|45|0|46|1|79|2|49|0|49|-1|");
    EXPECT_EQ(dots.points.size(), 100U);
}

TEST(Dxf_Hatch, boundaries_have_edges_in_either_direction_and_splines) {
    // The second and the third side run backwards; the last one is a spline of degree 1.
    const Shape hatch = only_shape("0|HATCH|70|0|91|1|92|1|93|4|72|1|10|0|20|0|11|10|21|0|72|1|10|10|20|10|11|10|21|0|"
                                   "72|1|10|0|20|10|11|10|21|10|"
                                   "72|4|94|1|73|0|74|0|95|4|96|2|40|0|40|0|40|1|40|1|10|0|20|10|10|0|20|0|97|0|" +
                                   rows);
    EXPECT_NEAR(length_of(hatch), 100, 1e-9);
}

TEST(Dxf_Hatch, dense_patterns_are_refused_before_they_are_made) {
    const std::string dense = "78|1|53|0|43|0|44|0|45|0|46|1e-9|79|0|",
                      dotted = "78|1|53|0|43|0|44|0|45|0|46|1|79|2|49|0|49|-1e-12|";
    for (const std::string& family : {dense, dotted}) {
        EXPECT_THROW(read(drawing("0|HATCH|70|0|91|1|" + square(3, 0, 10) + family)), Load_Error) << family;
    }
    for (const char* family : {"78|1|53|0|43|0|44|0|45|1|46|0|79|0|", "78|1|53|0|43|1e300|44|0|45|0|46|1|79|0|",
                               "78|1|53|0|43|0|44|0|45|0|46|1|79|1|49|1e308|"}) {
        EXPECT_LE(only_shape("0|HATCH|70|0|91|1|" + square(3, 0, 10) + family).lines.size(), 10U) << family;
    }
}

// Each pass over the edges of a boundary is work, though no line crosses it.
TEST(Dxf_Hatch, families_without_lines_inside_take_work) {
    std::string corners = "92|3|72|0|73|1|93|1000|";
    for (int i = 0; i < 1000; ++i) {
        corners += "10|" + std::to_string(i) + "|20|" + std::to_string(i % 2 + 1) + "|";
    }
    const auto read_with = [&](int families) {
        std::string patterns = "78|" + std::to_string(families) + "|";
        for (int i = 0; i < families; ++i) {
            patterns += "53|0|43|0|44|0.5|45|0|46|1000|79|0|";
        }
        Load_Limits limits(400000); // a step for each 8 bytes
        read_dxf("test.dxf", drawing("0|HATCH|70|0|91|1|" + corners + "97|0|75|0|" + patterns), {}, limits);
    };
    EXPECT_NO_THROW(read_with(1));
    EXPECT_THROW(read_with(20), Load_Error);
}

} // namespace
} // namespace vorna::drawing::map

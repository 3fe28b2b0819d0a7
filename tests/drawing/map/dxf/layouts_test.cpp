// Sheets of paper with windows into model space.
#include <gmock/gmock.h>

#include "tests/drawing/map/dxf/dxf_text.h"

namespace vorna::drawing::map {
namespace {

using testing::HasSubstr;

const std::string records =
    "0|BLOCK_RECORD|5|1A|2|*Model_Space|0|BLOCK_RECORD|5|1B|2|*Paper_Space|0|BLOCK_RECORD|5|1C|2|*Paper_Space0|"
    "0|LAYER|2|Hidden|62|7|5|2A|0|LTYPE|2|Dashed|49|2|49|-1|";

std::string layout(const std::string& name, const std::string& record, int order, const std::string& paper) {
    return "0|LAYOUT|102|{ACAD_REACTORS|330|FF|102|}|330|FE|100|AcDbPlotSettings|1||" + paper + "100|AcDbLayout|1|" + name +
           "|71|" + std::to_string(order) + "|330|" + record + "|";
}

const std::string objects = layout("Model", "1A", 0, "") +
                            layout("Back", "1C", 2, "40|5|41|5|44|100|45|200|73|1|72|0|142|1|143|1|") +
                            layout("Front", "1B", 1, "40|10|41|20|44|420|45|297|72|1|142|1|143|1|");

// A line from the origin to the right, seen at half of its size in a window of 100 by 50 around (200, 100).
const std::string model = "0|LINE|8|0|6|Dashed|10|-1000|20|0|11|1000|21|0|0|LINE|8|Hidden|10|-1000|20|1|11|1000|21|1|"
                          "0|SOLID|8|0|10|0|20|0|11|500|21|0|12|0|22|500|13|500|23|500|";
const std::string window =
    "0|VIEWPORT|67|1|8|0|10|200|20|100|40|100|41|50|68|1|69|1|0|VIEWPORT|67|1|8|0|10|200|20|100|40|100|41|50|"
    "68|2|69|2|12|0|22|0|45|100|331|2A|";

Map read_layout(const std::string& entities, const std::string& name, const std::string& header = "") {
    Map_Query query;
    query.layout = name;
    const std::string block = "0|BLOCK|2|*Paper_Space0|0|LINE|8|0|10|1|20|1|11|2|21|2|0|ENDBLK|";
    return read(drawing(entities, records, block, header, objects), query);
}

TEST(Dxf_Layouts, windows_show_model_space_within_their_frame) {
    const Map map = read_layout(model + window + "0|LINE|67|1|8|0|10|0|20|0|11|5|21|5|", "front");
    ASSERT_TRUE(map.extent);
    EXPECT_EQ(map.extent->west, -10);
    EXPECT_EQ(map.extent->south, -20);
    EXPECT_EQ(map.extent->east, 410);
    EXPECT_EQ(map.extent->north, 277);
    EXPECT_EQ(map.paper_unit, 1);
    ASSERT_EQ(map.shapes.size(), 4U); // the line, the face, the frame, and what lies on paper
    EXPECT_EQ(map.shapes[0].lines.at(0), (Path{{150, 100}, {250, 100}}));
    EXPECT_THAT(map.dashes.at(0), testing::ElementsAre(2, 1));
    const Extent face = extent_of(map.shapes[1]);
    EXPECT_NEAR(face.west, 200, 1e-9);
    EXPECT_NEAR(face.east, 250, 1e-9);
    EXPECT_NEAR(face.north, 125, 1e-9);
    EXPECT_EQ(map.shapes[2].lines.at(0).size(), 5U);
    const Map scaled = read_layout(model + window, "Front", "9|$PSLTSCALE|70|0|");
    EXPECT_THAT(scaled.dashes.at(0), testing::ElementsAre(1, 0.5));
    EXPECT_EQ(read_layout(model + window, "Model").shapes.size(), 3U);
}

TEST(Dxf_Layouts, views_may_be_turned_and_off) {
    const std::string line = "0|LINE|8|0|10|10|20|20|11|11|21|20|";
    const std::string turned = "0|VIEWPORT|67|1|8|0|10|0|20|0|40|100|41|50|68|2|69|2|12|0|22|0|17|10|27|20|45|25|51|90|";
    const Map map = read_layout(line + turned, "Front");
    const Path& path = map.shapes.at(0).lines.at(0);
    EXPECT_NEAR(path[1].x, 0, 1e-9);
    EXPECT_NEAR(path[1].y, 2, 1e-9);
    EXPECT_TRUE(read_layout(line + "0|VIEWPORT|67|1|8|0|10|0|20|0|40|100|41|50|68|0|69|2|45|25|", "Front").shapes.empty());
    EXPECT_THAT(read_layout(line + "0|VIEWPORT|67|1|8|0|10|0|20|0|40|100|41|50|68|2|69|2|45|25|16|1|", "Front").warnings,
                testing::ElementsAre("test.dxf: not drawn: 1 VIEWPORT"));
}

TEST(Dxf_Layouts, other_sheets_stand_in_blocks_and_may_lie_on_their_side) {
    const Map map = read_layout(model, "Back");
    ASSERT_EQ(map.shapes.size(), 1U);
    EXPECT_DOUBLE_EQ(map.paper_unit, 25.4);
    EXPECT_NEAR(map.extent->east - map.extent->west, 200 / 25.4, 1e-9);
    EXPECT_NEAR(map.extent->north - map.extent->south, 100 / 25.4, 1e-9);
    try {
        read_layout(model, "Side");
        ADD_FAILURE();
    } catch (const Map_Error& error) {
        EXPECT_THAT(error.what(), HasSubstr("expected a layout of test.dxf: Model, Front, Back; found 'Side'"));
    }
}

} // namespace
} // namespace vorna::drawing::map

// Texts of drawings. Their size is that of the default font's letters.
#include <cmath>

#include <gmock/gmock.h>

#include "drawing/map/dxf/text_codes.h"
#include "tests/drawing/map/dxf/dxf_text.h"

namespace vorna::drawing::map {
namespace {

using dxf::Token;
using testing::ElementsAre;

// Where all shapes lie together.
Extent extent_of(const Map& map) {
    Shape all;
    for (const Shape& shape : map.shapes) {
        all.faces.insert(all.faces.end(), shape.faces.begin(), shape.faces.end());
    }
    return extent_of(all);
}

Extent extent_of_text(const std::string& entity) {
    const Map map = read(drawing(entity));
    EXPECT_THAT(map.warnings, ElementsAre());
    return extent_of(map);
}

std::vector<std::string> texts(const std::vector<Token>& tokens) {
    std::vector<std::string> list;
    for (const Token& token : tokens) {
        using Kind = Token::Kind;
        list.push_back(token.kind == Kind::word       ? token.text
                       : token.kind == Kind::space    ? " "
                       : token.kind == Kind::tab      ? "tab"
                       : token.kind == Kind::line_end ? "end"
                                                      : token.text + (token.has_bar ? "/" : "^") + token.below);
    }
    return list;
}

TEST(Dxf_Texts, codes_become_letters_breaks_and_fractions) {
    EXPECT_THAT(texts(dxf::tokens_of_line("%%c20%%p0.1%%d %%065\\U+00E9%%%", {})), ElementsAre("Ø20±0.1° Aé%"));
    EXPECT_THAT(texts(dxf::tokens_of_line("M\xFC\x80", {})), ElementsAre("Mü€")); // Windows-1252
    EXPECT_THAT(texts(dxf::tokens_of_paragraphs("{\\fArial|b1;a} b\\~c\\Pd^Ie\\\\\\{f\\}", {})),
                ElementsAre("a", " ", "b\u00A0c", "end", "d", "tab", "e\\{f}"));
    EXPECT_THAT(texts(dxf::tokens_of_paragraphs("1\\S1/2;\\S+0.1^ -0.2;\\S3#4;", {})),
                ElementsAre("1", "1/2", "+0.1^ -0.2", "3/4"));
    const std::vector<Token> tokens = dxf::tokens_of_paragraphs("{\\H2x;\\C1;\\Lb}\\W0.5;c\\pi-2,l3,qc;\\c65280;d", {});
    ASSERT_EQ(tokens.size(), 3U);
    EXPECT_EQ(tokens[0].letters.height, 2);
    EXPECT_TRUE(tokens[0].letters.underlined);
    EXPECT_EQ(tokens[0].letters.color, dxf::Color(VT_RGB32{0, 0, 255, 255}));
    EXPECT_EQ(tokens[1].letters.height, 1);
    EXPECT_EQ(tokens[1].letters.width, 0.5);
    EXPECT_FALSE(tokens[1].letters.color);
    EXPECT_EQ(tokens[2].paragraph.left_indent, 3);
    EXPECT_EQ(tokens[2].paragraph.alignment, dxf::Alignment::center);
    EXPECT_EQ(tokens[2].letters.color, dxf::Color(VT_RGB32{0, 255, 0, 255}));
}

TEST(Dxf_Texts, lines_have_the_height_and_the_alignment_of_the_entity) {
    const Extent plain = extent_of_text("0|TEXT|10|10|20|20|40|5|1|HH|");
    const double width = plain.east - plain.west;
    EXPECT_NEAR(plain.north - plain.south, 5, 0.02);
    EXPECT_NEAR(plain.south, 20, 0.02);
    EXPECT_GT(plain.west, 10);
    const Extent wide = extent_of_text("0|TEXT|10|10|20|20|40|5|41|2|1|HH|");
    EXPECT_NEAR(wide.east - wide.west, 2 * width, 0.02);
    const Extent turned = extent_of_text("0|TEXT|10|10|20|20|40|5|50|90|1|HH|");
    EXPECT_NEAR(turned.west, 5, 0.02);
    EXPECT_NEAR(turned.north - turned.south, width, 0.02);
    const Extent centered = extent_of_text("0|TEXT|10|0|20|0|11|10|21|20|72|1|73|2|40|5|1|HH|");
    EXPECT_NEAR(centered.west + centered.east, 20, 0.1);
    EXPECT_NEAR(centered.south + centered.north, 40, 0.1);
    const Extent right = extent_of_text("0|TEXT|10|0|20|0|11|10|21|20|72|2|73|3|40|5|1|HH|");
    EXPECT_LT(right.east, 10);
    EXPECT_NEAR(right.north, 20, 0.02);
    // Aligned between two points the height follows from the width, fitted it is kept.
    const Extent aligned = extent_of_text("0|TEXT|10|0|20|0|11|100|21|0|72|3|40|5|1|HH|");
    EXPECT_GT(aligned.north, 20);
    EXPECT_NEAR(aligned.east - aligned.west, 100 * width / (width + 2 * (plain.west - 10)), 0.5);
    EXPECT_NEAR(extent_of_text("0|TEXT|10|0|20|0|11|100|21|0|72|5|40|5|1|HH|").north, 5, 0.02);
    const Extent slanted = extent_of_text("0|TEXT|10|10|20|20|40|5|51|45|1|HH|");
    EXPECT_NEAR(slanted.east - slanted.west, width + 5, 0.05);
    const Extent mirrored = extent_of_text("0|TEXT|10|10|20|20|40|5|71|6|1|HH|");
    EXPECT_NEAR(mirrored.east, 20 - plain.west, 0.02);
    EXPECT_NEAR(mirrored.north, 20, 0.02);
}

TEST(Dxf_Texts, paragraphs_break_at_spaces_and_hang_from_their_point) {
    const Extent one = extent_of_text("0|MTEXT|10|0|20|0|40|3|1|HH HH|");
    EXPECT_NEAR(one.north, 0, 0.02);
    EXPECT_NEAR(one.south, -3, 0.02);
    const Extent two = extent_of_text("0|MTEXT|10|0|20|0|40|3|41|" + std::to_string(one.east * 0.7) + "|1|HH HH|");
    EXPECT_NEAR(two.south, -8, 0.02); // lines are 5/3 of the height apart
    EXPECT_LT(two.east, one.east * 0.7);
    const Extent low = extent_of_text("0|MTEXT|10|0|20|0|40|3|71|9|44|2|3|HH\\P|1|H|");
    EXPECT_NEAR(low.south, 0, 0.02);
    EXPECT_NEAR(low.north, 13, 0.02);
    EXPECT_LT(low.east, 0.01);
    const Extent upright = extent_of_text("0|MTEXT|10|0|20|0|40|3|71|5|11|0|21|1|1|H\\S1/2;|");
    EXPECT_NEAR(upright.south + upright.north, 0, 0.7);
    EXPECT_GT(upright.east - upright.west, 3);
}

TEST(Dxf_Texts, attributes_belong_to_insertions_and_definitions_to_blocks) {
    const std::string block =
        "0|BLOCK|2|b|0|ATTDEF|10|0|20|0|40|1|1|default|2|TAG|70|0|0|ATTDEF|10|0|20|50|40|1|1|H|2|TAG|70|2|0|ENDBLK|";
    const Map map =
        read(drawing("0|INSERT|66|1|2|b|10|100|20|0|0|ATTRIB|10|200|20|5|40|2|1|H|70|0|0|ATTRIB|10|0|20|0|40|2|1|H|70|1|"
                     "0|SEQEND|0|POINT|10|0|20|0|",
                     "", block));
    ASSERT_EQ(map.shapes.size(), 3U);
    EXPECT_NEAR(extent_of(map.shapes[0]).south, 50, 0.02); // the constant one
    EXPECT_NEAR(extent_of(map.shapes[1]).south, 5, 0.02);
    EXPECT_GT(extent_of(map.shapes[1]).west, 200);
}

TEST(Dxf_Texts, leaders_with_several_lines_lead_to_their_text) {
    const Map map = read(drawing("0|MULTILEADER|300|CONTEXT_DATA{|41|2|140|1|304|HH|12|10|22|5|42|0|43|0|302|LEADER{|10|9|20|4|"
                                 "304|LEADER_LINE{|10|0|20|0|305|}|304|LEADER_LINE{|10|0|20|9|305|}|303|}|301|}|"));
    ASSERT_EQ(map.shapes.size(), 5U); // an arrow and a line each, and the text
    EXPECT_EQ(map.shapes[0].faces.at(0).at(0).at(0), (Position{0, 0}));
    EXPECT_EQ(map.shapes[3].lines.at(0).back(), (Position{9, 4}));
    EXPECT_NEAR(extent_of(map.shapes[4]).north, 5, 0.02);
    EXPECT_NEAR(extent_of(map.shapes[4]).south, 3, 0.02);
}

TEST(Dxf_Texts, many_long_texts_are_refused_by_their_cost) {
    const std::string block = "0|BLOCK|2|b|0|TEXT|10|0|20|0|40|1|1|" + std::string(2000, 'B') + "|0|ENDBLK|";
    Load_Limits limits(std::uint64_t{64} << 20);
    EXPECT_THROW(read_dxf("test.dxf", drawing("0|INSERT|2|b|10|0|20|0|70|10000|44|1|", "", block), {}, limits), Load_Error);
    // What one text needs is counted before it is all there.
    std::string words;
    for (int i = 0; i < 20000; ++i) {
        words += "BB ";
    }
    Load_Limits few(std::uint64_t{64} << 20);
    const std::string paragraphs = drawing("0|MTEXT|10|0|20|0|40|1|1|" + words + "|");
    EXPECT_THROW(read_dxf("test.dxf", paragraphs, {}, few), Load_Error);
    EXPECT_GT(few.memory_left(), std::uint64_t{32} << 20); // nothing has been placed
}

} // namespace
} // namespace vorna::drawing::map

// How line types cut polylines.
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "renderer/depth_lines/line_types.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

struct Element {
    double length, kind;
};

constexpr double dash = 1, gap = -2, dot = 0;

VT_Reference<VT_Line_Type> type_of(const std::vector<Element>& elements, double leading = 0, double trailing = 0, int mode = 0) {
    VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    for (const Element& element : elements) {
        type->lengths.push_back(element.length);
        type->kinds.push_back(element.kind);
    }
    type->leading[0] = leading;
    type->trailing[0] = trailing;
    type->mode = mode;
    return type;
}

using Types = std::vector<VT_Reference<const VT_Line_Type>>;

VT_Reference<VT_Rendition> rendition_of(const Types& types, bool per_segment = false, double scale = 1) {
    VT_Reference<VT_Line_Type_Set> set(new VT_Line_Type_Set);
    set->types = types;
    set->per_segment = per_segment;
    set->scale = scale;
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->line.line_types = set;
    return rendition;
}

constexpr VT_Int_Rectangle everywhere{INT32_MIN, INT32_MAX, INT32_MIN, INT32_MAX};

// The pieces as "x,y-x,y" one after the other, a dot as "x,y".
std::string pieces_of(const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points,
                      const VT_Int_Rectangle& window = everywhere) {
    std::string pieces;
    const auto text = [](const VT_DCI_Point& point) { return std::to_string(point.x) + "," + std::to_string(point.y); };
    krb::draw_by_line_types(rendition, window, static_cast<std::int32_t>(points.size()), points.data(),
                            [&](const VT_Rendition* plain, int count, const VT_DCI_Point* piece) {
                                EXPECT_EQ(plain->line.line_types, VT_Line_Type_Set::None);
                                EXPECT_EQ(count, 2);
                                const std::string from = text(piece[0]);
                                const std::string to = text(piece[1]);
                                pieces += (pieces.empty() ? "" : " ") + (from == to ? from : from + "-" + to);
                            });
    return pieces;
}

std::string pieces_along(const VT_Reference<VT_Line_Type>& type, const std::vector<VT_DCI_Point>& points, double scale = 1) {
    return pieces_of(*rendition_of({type}, false, scale), points);
}

const std::vector<VT_DCI_Point> straight{{0, 0, 0}, {4, 0, 0}, {10, 0, 0}};
const std::vector<VT_DCI_Point> corner{{0, 0, 0}, {4, 0, 0}, {4, 6, 0}};

} // namespace

TEST(Line_types, Pattern_runs_on_across_vertices) {
    EXPECT_EQ(pieces_along(type_of({{3, dash}, {2, gap}}), straight), "0,0-3,0 5,0-8,0");
    EXPECT_EQ(pieces_along(type_of({{3, dash}, {2, gap}}), corner), "0,0-3,0 4,1-4,4");
    // A dash that a vertex divides, and an element that ends at the vertex.
    EXPECT_EQ(pieces_along(type_of({{6, dash}, {2, gap}}), corner), "0,0-4,0 4,0-4,2 4,4-4,6");
    EXPECT_EQ(pieces_along(type_of({{2, gap}, {2, dash}}), corner), "2,0-4,0 4,2-4,4");
    // A dot at a vertex belongs to the segment that begins there.
    EXPECT_EQ(pieces_along(type_of({{4, gap}, {0, dot}}), straight), "4,0 8,0");
    EXPECT_EQ(pieces_along(type_of({{1.5, dash}, {1, gap}}), straight, 2), "0,0-3,0 5,0-8,0");
}

TEST(Line_types, Parts_at_the_ends_lie_outside_the_pattern) {
    EXPECT_EQ(pieces_along(type_of({{1, gap}, {1, dash}}, 5, 2), straight), "0,0-4,0 4,0-5,0 6,0-7,0 8,0-10,0");
    EXPECT_EQ(pieces_along(type_of({{1, gap}, {1, dash}}, 50, 2), straight), "0,0-4,0 4,0-10,0");
    // Without a pattern that leads anywhere all is solid.
    EXPECT_EQ(pieces_along(type_of({}, 1), straight), "0,0-1,0 1,0-4,0 4,0-10,0");
    EXPECT_EQ(pieces_along(type_of({{0, dot}}), straight), "0,0-4,0 4,0-10,0");
}

TEST(Line_types, Ends_are_dots_in_mode_2) {
    EXPECT_EQ(pieces_along(type_of({{0, dot}, {3, gap}}, 1, 3, 2), straight), "0,0 4,0 10,0");
    EXPECT_EQ(pieces_along(type_of({{0, dot}, {3, gap}}, 1, 3, 0), straight), "0,0-1,0 1,0 4,0 7,0-10,0");
    // Only the polyline's own ends count, however many segments the parts are long.
    EXPECT_EQ(pieces_along(type_of({{1, gap}}, 7, 0, 2), straight), "0,0");
    EXPECT_EQ(pieces_along(type_of({{1, gap}}, 0, 7, 2), straight), "10,0");
}

TEST(Line_types, Ends_of_pieces_are_cut_off_towards_zero) {
    EXPECT_EQ(pieces_along(type_of({{1.75, dash}, {1.75, gap}}), {{-4, 0, 0}, {-2, 0, 0}, {4, 0, 0}}),
              "-4,0--2,0 0,0-1,0 3,0-4,0");
    EXPECT_EQ(pieces_along(type_of({{5, dash}, {10, gap}}), {{0, 0, 0}, {3, 4, 0}, {6, 8, 0}}), "0,0-3,4");
}

TEST(Line_types, Segments_have_their_own_types) {
    const auto dashed = type_of({{1, gap}, {2, dash}});
    EXPECT_EQ(pieces_of(*rendition_of({dashed, VT_Line_Type::None}, true), straight), "1,0-3,0 4,0-10,0");
    EXPECT_EQ(pieces_of(*rendition_of({dashed, dashed}, true, 2), straight), "2,0-4,0 6,0-10,0");
    EXPECT_EQ(dashed->lengths[0], 1) << "the type itself stays as it is";
    EXPECT_EQ(pieces_of(*rendition_of({VT_Line_Type::None}), straight), "0,0-4,0 4,0-10,0");
    // Two points are one segment; a set must have a type for each, or one at least.
    EXPECT_EQ(pieces_of(*rendition_of({dashed}), {{0, 0, 0}, {4, 0, 0}}), "1,0-3,0");
    EXPECT_EQ(pieces_of(*rendition_of({dashed, dashed}), {{0, 0, 0}, {4, 0, 0}}), "");
    EXPECT_EQ(pieces_of(*rendition_of({dashed}, true), straight), "");
    EXPECT_EQ(pieces_of(*rendition_of({}), straight), "");
}

TEST(Line_types, Nothing_is_lost_or_kept_when_drawing_fails) {
    const auto type = type_of({{1, dash}, {1, gap}});
    const auto rendition = rendition_of({type});
    const VT_Reference<const VT_Line_Type_Set> set = rendition->line.line_types;
    const auto references = set->reference_count();
    EXPECT_THROW(krb::draw_by_line_types(*rendition, everywhere, 3, straight.data(), {}), std::bad_function_call);
    EXPECT_THROW(krb::draw_by_line_types(*rendition, everywhere, 3, straight.data(),
                                         [](const VT_Rendition*, int, const VT_DCI_Point*) { throw std::runtime_error("no"); }),
                 std::runtime_error);
    EXPECT_EQ(set->reference_count(), references);
    EXPECT_EQ(type->reference_count(), 2U);
    // More pieces than are kept at once.
    int drawn = 0;
    const VT_DCI_Point points[] = {{0, 0, 0}, {5000, 0, 0}, {10000, 0, 0}};
    krb::draw_by_line_types(*rendition, everywhere, 3, points,
                            [&](const VT_Rendition*, int, const VT_DCI_Point* piece) { EXPECT_EQ(piece[0].x, 2 * drawn++); });
    EXPECT_EQ(drawn, 5000);
}

TEST(Line_Types, End_on_lines_of_any_length) {
    const std::vector<VT_DCI_Point> far{{INT32_MIN, 0, 0}, {INT32_MAX, 0, 0}};
    EXPECT_EQ(pieces_along(type_of({{1e-8, gap}, {1e-8, dash}}), far), "-2147483648,0-2147483647,0")
        << "no gap that a pixel could show";
    EXPECT_EQ(pieces_along(type_of({{1e-8, gap}, {0, gap}}), far), "") << "nothing but gaps";
    // Near the window the dashes lie where they lie on the whole line.
    const VT_Int_Rectangle window{0, 9, 0, 9};
    const auto dashed = type_of({{2, dash}, {2, gap}});
    EXPECT_EQ(pieces_of(*rendition_of({dashed}), far, window),
              "-8,0--6,0 -4,0--2,0 0,0-2,0 4,0-6,0 8,0-10,0 12,0-14,0 16,0-17,0");
    EXPECT_EQ(pieces_of(*rendition_of({dashed}), {{INT32_MIN, 99, 0}, {INT32_MAX, 99, 0}}, window), "") << "beside the window";
    EXPECT_EQ(pieces_along(dashed, {{INT32_MIN, 0, 0}, {1, 0, 0}, {7, 0, 0}}), "1,0-2,0 4,0-6,0") << "too many dashes, then few";
    // A hundred segments, none of which is too long by itself.
    std::vector<VT_DCI_Point> zigzag;
    for (std::int32_t i = 0; i <= 100; ++i) {
        zigzag.push_back({i % 2 * 400000, i == 100 ? 0 : 99, 0});
    }
    EXPECT_EQ(pieces_of(*rendition_of({dashed}), zigzag, window).find("200000"), std::string::npos);
}

// Adding up the lengths leads a little beyond the last vertex, which lies in the window's last column, and cutting off into the
// next. The renderer's guards tell.
TEST(Line_types, Stay_in_the_window_however_their_lengths_add_up) {
    Renderer_Setup setup = setup_of_case(0, {49, 10}, {-62, 45});
    setup.color_layout.padding = 3;
    Test_Renderer renderer(setup);
    const VT_Reference<VT_Rendition> rendition = rendition_of({type_of({{5, gap}, {2, dash}, {5, dot}})}, false, 2);
    const VT_DCI_Point points[] = {{-51, 48, 9871},  {-14, 49, 64796}, {-24, 49, 45781}, {-18, 50, 7889}, {-19, 48, 50743},
                                   {-52, 48, 47123}, {-58, 45, 11065}, {-62, 50, 49694}, {-39, 51, 10101}};
    VD_Draw_DCI_Polyline(*renderer, *rendition, 9, points);
}

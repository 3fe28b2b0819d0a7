// Wide lines, dashes and markers that the host's standard functions draw, against rules worked out here.
#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/rendition.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"
#include "vorna/standard/conversion.h"

namespace {

using Points = std::vector<VT_DCI_Point>;
using Contents = std::vector<std::uint32_t>;

constexpr VT_RGB32 ink{30, 90, 200, 100};

VT_Reference<VT_Rendition> rendition_for(const Renderer_Setup& setup, std::int32_t weight) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->set_color(ink);
    rendition->line.index = rendition->marker.index = 77;
    rendition->line.weight = weight;
    rendition->clip.hard_clip = {setup.origin.x, setup.origin.x + setup.size.x - 1, setup.origin.y,
                                 setup.origin.y + setup.size.y - 1};
    return rendition;
}

void clear(Test_Renderer& renderer, std::uint32_t color = 0, std::uint32_t depth = 0xFFFF) {
    for (std::int32_t y = 0; y < renderer.color().height; ++y) {
        for (std::int32_t x = 0; x < renderer.color().width; ++x) {
            renderer.color().set_pixel(x, y, color);
            if (renderer.depth()) {
                renderer.depth()->set_pixel(x, y, depth);
            }
        }
    }
}

Contents contents(const Frame_Buffer* buffer) {
    Contents all;
    for (std::int32_t y = 0; buffer && y < buffer->height; ++y) {
        for (std::int32_t x = 0; x < buffer->width; ++x) {
            all.push_back(static_cast<const Guarded_Buffer*>(buffer)->pixel(x, y));
        }
    }
    return all;
}

// What a call leaves on a cleared window.
template <class Draw> Contents drawn(Test_Renderer& renderer, Draw draw) {
    clear(renderer);
    draw();
    return contents(&renderer.color());
}

// Rows from the top down; '#' for what is not zero.
std::vector<std::string> sketch(Test_Renderer& renderer, VT_Int_Rectangle part) {
    std::vector<std::string> rows;
    for (std::int32_t y = part.top; y >= part.bottom; --y) {
        rows.emplace_back();
        for (std::int32_t x = part.left; x <= part.right; ++x) {
            rows.back() += renderer.color().pixel(x, y) != 0 ? '#' : '.';
        }
    }
    return rows;
}

double distance(double x, double y, const Points& points) {
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t s = 0; s + 1 < points.size(); ++s) {
        const double dx = double(points[s + 1].x) - points[s].x, dy = double(points[s + 1].y) - points[s].y;
        const double length = dx * dx + dy * dy;
        const double along = length > 0 ? ((x - points[s].x) * dx + (y - points[s].y) * dy) / length : 0;
        const double t = std::fmin(std::fmax(along, 0.0), 1.0);
        least = std::fmin(least, std::hypot(x - points[s].x - t * dx, y - points[s].y - t * dy));
    }
    return least;
}

Points random_points(Random& random, VT_Int_Pair size) {
    Points points;
    for (int i = random.number(2, 6); i > 0; --i) {
        points.push_back({random.number(-10, size.x + 10), random.number(-10, size.y + 10), random.number(0, 65535)});
    }
    return points;
}

// Whether some pixel of a line from (x0, y0) to (x1, y1) lies in the rectangle.
bool crosses(const VT_Int_Rectangle& clip, const std::vector<std::int32_t>& line) {
    const int steps = std::max({std::abs(line[2] - line[0]), std::abs(line[3] - line[1]), 1});
    for (int i = 0; i <= steps; ++i) {
        const double x = line[0] + double(line[2] - line[0]) * i / steps;
        const double y = line[1] + double(line[3] - line[1]) * i / steps;
        if (x >= clip.left && x <= clip.right && y >= clip.bottom && y <= clip.top) {
            return true;
        }
    }
    return false;
}

class Standard_Lines : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(every_case, Standard_Lines, testing::Range<std::size_t>(0, 6));

// Covered pixels get what one dot of the colour leaves there, so that translucent lines blend once.
TEST_P(Standard_Lines, cover_each_pixel_within_half_the_weight_once) {
    const Renderer_Setup setup = setup_of_case(GetParam(), {70, 50});
    Test_Renderer renderer(setup);
    for (int seed = 0; seed < scaled(60); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const std::int32_t weight = random.number(2, 17);
        const VT_Reference<VT_Rendition> rendition = rendition_for(setup, weight);
        rendition->line.cap = vorna::line_cap::round;
        const Points points = random_points(random, setup.size);
        const auto count = static_cast<std::int32_t>(points.size());
        const Contents dots = drawn(renderer, [&] {
            for (std::int32_t y = 0; y < setup.size.y; ++y) {
                const VT_DCI_Point row[] = {{0, y, 0}, {setup.size.x - 1, y, 0}};
                rendition->line.weight = 1;
                VD_Draw_2DI_Polyline(*renderer, *rendition, 2, row);
            }
        });
        rendition->line.weight = weight;
        const Contents line = drawn(renderer, [&] { VD_Draw_2DI_Polyline(*renderer, *rendition, count, points.data()); });
        const double corner = weight % 2 == 0 ? 0.5 : 0;
        for (std::int32_t y = 0; y < setup.size.y; ++y) {
            for (std::int32_t x = 0; x < setup.size.x; ++x) {
                const double beyond = distance(x + corner, y + corner, points) - weight / 2.0;
                const auto i = static_cast<std::size_t>(y * setup.size.x + x);
                if (std::abs(beyond) > 1e-5) {
                    ASSERT_EQ(line[i], beyond < 0 ? dots[i] : 0) << "seed " << seed << ", pixel " << x << ' ' << y;
                }
            }
        }
    }
}

TEST(Standard_Line, smoothed_covers_by_the_share_of_64_points) {
    Renderer_Setup setup = setup_of_case(1, {60, 40});
    Test_Renderer renderer(setup);
    for (int seed = 0; seed < scaled(20); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const VT_Reference<VT_Rendition> rendition = rendition_for(setup, 2 * random.number(1, 5) + 1);
        rendition->line.cap = vorna::line_cap::round;
        rendition->line.flags = vorna::line_flag::smoothed;
        rendition->line.color = {255, 255, 255, 100}; // without alpha blending it counts as opaque
        const Points points = random_points(random, setup.size);
        const Contents line = drawn(renderer, [&] {
            VD_Draw_2DI_Polyline(*renderer, *rendition, static_cast<std::int32_t>(points.size()), points.data());
        });
        for (std::int32_t y = 0; y < setup.size.y; ++y) {
            for (std::int32_t x = 0; x < setup.size.x; ++x) {
                int covered = 0;
                for (int k = 0; k < 64; ++k) {
                    covered +=
                        distance(x + (k % 8 + 0.5) / 8 - 0.5, y + (k / 8 + 0.5) / 8 - 0.5, points) < rendition->line.weight / 2.0;
                }
                const std::uint32_t green = line[static_cast<std::size_t>(y * setup.size.x + x)] >> 8 & 0xFF;
                ASSERT_NEAR(green, covered * 255 / 64.0, 4.5) << "seed " << seed << ", pixel " << x << ' ' << y; // one point
            }
        }
    }
}

TEST(Standard_Line, ends_and_turns_as_caps_and_joins_say) {
    const Renderer_Setup setup = setup_of_case(1, {32, 32});
    Test_Renderer renderer(setup);
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup, 4);
    rendition->line.join = vorna::line_join::miter;
    const VT_DCI_Point corner[] = {{4, 5, 0}, {10, 5, 0}, {10, 1, 0}};
    const auto sketched = [&](std::int32_t cap, std::int32_t join) {
        rendition->line.cap = cap;
        rendition->line.join = join;
        clear(renderer);
        VD_Draw_2DI_Polyline(*renderer, *rendition, 3, corner);
        return sketch(renderer, {1, 13, 0, 8});
    };
    using testing::ElementsAre;
    EXPECT_THAT(sketched(vorna::line_cap::butt, vorna::line_join::miter),
                ElementsAre(".............", ".............", "...########..", "...########..", "...########..", "...########..",
                            ".......####..", ".......####..", "............."));
    EXPECT_THAT(sketched(vorna::line_cap::square, vorna::line_join::bevel),
                ElementsAre(".............", ".............", ".########....", ".#########...", ".##########..", ".##########..",
                            ".......####..", ".......####..", ".......####.."));
    EXPECT_THAT(sketched(vorna::line_cap::round, vorna::line_join::round),
                ElementsAre(".............", ".............", "..########...", ".##########..", ".##########..", "..#########..",
                            ".......####..", ".......####..", ".......####.."));
}

// Whatever is drawn, clipped it shows the same pixels less those outside; nothing leaves the buffers.
TEST_P(Standard_Lines, keep_to_hard_and_complex_clip) {
    Renderer_Setup setup = setup_of_case(GetParam(), {64, 48}, {-7, 30});
    setup.use_mask = true;
    Test_Renderer renderer(setup);
    for (int seed = 0; seed < scaled(60); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const VT_Reference<VT_Rendition> rendition = rendition_for(setup, random.number(2, 12));
        rendition->line.style = random.number(0, 5);
        rendition->line.join = random.number(0, 2);
        rendition->line.cap = random.number(0, 2);
        rendition->line.flags = random.chance(50) ? vorna::line_flag::smoothed : 0;
        rendition->marker.symbol = random.number(1, 8);
        rendition->marker.size = random.number(1, 20);
        Points points = random_points(random, setup.size);
        for (VT_DCI_Point& point : points) {
            point.x += setup.origin.x;
            point.y += setup.origin.y;
        }
        if (random.chance(20)) {
            points.push_back({INT32_MAX, INT32_MIN, INT32_MAX});
        }
        const std::vector<VT_RGB32> colors = random_colors(random, points.size());
        const int kind = random.number(0, 3);
        const auto draw = [&] {
            const auto count = static_cast<std::int32_t>(points.size());
            switch (kind) {
            case 0:
                return VD_Standard_Draw_DCI_Polyline(*renderer, *rendition, count, points.data());
            case 1:
                return VD_Draw_2DI_Colorized_Polyline(*renderer, *rendition, count, points.data(), colors.data(), false);
            case 2:
                return VD_Draw_2DI_Gouraud_Polyline(*renderer, *rendition, count, points.data(), colors.data());
            default:
                return VD_Draw_2DI_Colorized_Polymarker(*renderer, *rendition, count, points.data(), colors.data(), false);
            }
        };
        const Contents expected = drawn(renderer, draw);
        rendition->clip.hard_clip = {setup.origin.x + 9, setup.origin.x + 50, setup.origin.y + 5, setup.origin.y + 40};
        // The 8-bit slots without depth draw lines of given colours through complex clips.
        const bool masks = GetParam() != 0 || kind == 0 || kind == 3;
        if (masks) {
            const float left = 20.0F + static_cast<float>(setup.origin.x);
            rendition->clip.complex_clip = new VT_Contour_Set({{{left, -100, 0}, {900, -100, 0}, {900, 900, 0}, {left, 900, 0}}});
        }
        const Contents clipped = drawn(renderer, draw);
        for (std::int32_t y = 0; y < setup.size.y; ++y) {
            for (std::int32_t x = 0; x < setup.size.x; ++x) {
                const auto i = static_cast<std::size_t>(y * setup.size.x + x);
                const bool is_inside = x >= (masks ? 20 : 9) && x <= 50 && y >= 5 && y <= 40;
                if (!is_inside) {
                    ASSERT_EQ(clipped[i], 0U) << "seed " << seed << ", pixel " << x << ' ' << y;
                } else if (kind != 2) { // Gouraud colours step from where a run begins
                    ASSERT_EQ(clipped[i] != 0, expected[i] != 0) << "seed " << seed << ", pixel " << x << ' ' << y;
                }
            }
        }
    }
}

TEST(Standard_Line, near_points_are_rounded_as_far_ones) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN(), infinite = std::numeric_limits<double>::infinity();
    const double edge = vorna::farthest_coordinate;
    const double values[] = {0,    0.49999999, 0.5,  -0.5,      1.5,        -1.5,  -1.50000001, -7,       edge - 0.5,
                             edge, edge + 0.5, 1e30, -edge + 1, 0.5 - edge, -edge, -edge - 1,   infinite, none};
    for (const double x : values) {
        for (const double other : {2.5, -0.5, none}) {
            const VT_DCI_Point point = vorna::nearest_point(VT_Point_D{x, other, x});
            EXPECT_EQ(point.x, vorna::nearest_coordinate(x)) << x;
            EXPECT_EQ(point.y, vorna::nearest_coordinate(other)) << x;
            EXPECT_EQ(point.z, vorna::nearest_coordinate(x)) << x;
        }
    }
}

TEST(Standard_Line, has_the_depth_of_its_points_and_shows_its_nearest_part) {
    const Renderer_Setup setup = setup_of_case(4, {64, 64});
    Test_Renderer renderer(setup);
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup, 7);
    clear(renderer);
    const VT_DCI_Point ramp[] = {{4, 30, 100}, {54, 30, 1100}};
    VD_Draw_DCI_Polyline(*renderer, *rendition, 2, ramp);
    for (std::int32_t x = 4; x < 54; ++x) {
        for (std::int32_t y = 27; y <= 33; ++y) {
            ASSERT_NEAR(renderer.depth()->pixel(x, y), 100 + 20 * (x - 4), 1) << x << ' ' << y;
        }
    }
    clear(renderer);
    const VT_DCI_Point crossing[] = {{10, 10, 5}, {50, 50, 5}, {50, 10, 900}, {10, 50, 900}};
    const VT_RGB32 colors[] = {{1, 1, 1, 255}, {2, 2, 2, 255}, {3, 3, 3, 255}};
    VD_Draw_DCI_Colorized_Polyline(*renderer, *rendition, 4, crossing, colors, false);
    EXPECT_EQ(vorna::color_of(renderer.color().pixel(30, 30)), colors[0]) << "the first segment lies nearer than the last";
    EXPECT_EQ(vorna::color_of(renderer.color().pixel(20, 40)), colors[2]);
    rendition->clip.depth_test = false;
    VD_Draw_DCI_Colorized_Polyline(*renderer, *rendition, 4, crossing, colors, false);
    EXPECT_EQ(vorna::color_of(renderer.color().pixel(30, 30)), colors[2]);
}

// Also where a run of pixels ends, and where it is one pixel long.
TEST_P(Standard_Lines, follow_depth_test_and_writing_in_every_pixel) {
    const Renderer_Setup setup = setup_of_case(GetParam(), {40, 40});
    if (!setup.depth || setup.has_indices()) {
        return; // fixed rules
    }
    Test_Renderer renderer(setup);
    for (const VT_DCI_Point end : {VT_DCI_Point{70, 55, 900}, {9, 38, 900}, {30, 9, 900}}) {
        const VT_Reference<VT_Rendition> rendition = rendition_for(setup, 2 + end.x % 4);
        const VT_DCI_Point line[] = {{8, 8, 900}, end};
        const VT_RGB32 color{1, 2, 3, 255};
        for (const bool is_colorized : {false, true}) {
            const auto draw = [&] {
                is_colorized ? VD_Draw_2DI_Colorized_Polyline(*renderer, *rendition, 2, line, &color, true)
                             : VD_Draw_2DI_Polyline(*renderer, *rendition, 2, line);
                return contents(&renderer.color());
            };
            clear(renderer);
            const Contents whole = draw();
            clear(renderer, 0, 500);
            const Contents depths = contents(renderer.depth());
            renderer.set_z_test(5);
            renderer.set_z_write(false);
            EXPECT_EQ(draw(), whole) << "all lies farther";
            EXPECT_EQ(contents(renderer.depth()), depths);
            clear(renderer, 0, 900);
            renderer.set_z_test(1);
            EXPECT_THAT(draw(), testing::Each(0U)) << "nothing lies nearer";
            renderer.set_z_test(2);
            renderer.set_z_write(true);
        }
    }
}

TEST(Standard_Line, smoothed_edges_combine_as_the_line_does) {
    Renderer_Setup setup = setup_of_case(1, {40, 40});
    const auto picture = [&](std::uint32_t flags, std::int32_t face_mode) {
        Test_Renderer renderer(setup);
        const VT_Reference<VT_Rendition> rendition = rendition_for(setup, 5);
        rendition->line.flags = flags;
        rendition->face.mode = face_mode;
        const VT_DCI_Point line[] = {{5, 5, 0}, {33, 21, 0}};
        clear(renderer, 0xFF8040C0);
        VD_Draw_2DI_Polyline(*renderer, *rendition, 2, line);
        return contents(&renderer.color());
    };
    EXPECT_EQ(picture(vorna::line_flag::smoothed, vorna::merge_drawing_mode), picture(vorna::line_flag::smoothed, 0));
    setup.force_merge = true;
    EXPECT_EQ(picture(vorna::line_flag::smoothed, 0), picture(0, 0)) << "what merges is not smoothed";
}

// Dashes that were cut would run at another slope.
TEST(Standard_Line, dashes_are_whole_or_left_out) {
    const Renderer_Setup setup = setup_of_case(1, {200, 200});
    Test_Renderer renderer(setup);
    static std::set<std::vector<std::int32_t>> dashes;
    renderer->actions.draw_2di_polyline.function = [](VT_Renderer_Data& data, const VT_Rendition& rendition, std::int32_t count,
                                                      const VT_DCI_Point* points) {
        if (rendition.line.style != vorna::line_style::solid) {
            VD_Standard_Draw_2DI_Polyline(data, rendition, count, points);
            return;
        }
        ASSERT_EQ(count, 2);
        dashes.insert({points[0].x, points[0].y, points[1].x, points[1].y});
    };
    for (int seed = 0; seed < scaled(100); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const VT_Reference<VT_Rendition> rendition = rendition_for(setup, 1);
        rendition->line.style = random.number(1, 5);
        const VT_DCI_Point line[] = {{random.number(-300, 500), random.number(-300, 500), 0},
                                     {random.number(-300, 500), random.number(-300, 500), 0}};
        const auto drawn_dashes = [&](const VT_Int_Rectangle& clip) {
            rendition->clip.hard_clip = clip;
            dashes.clear();
            VD_Draw_2DI_Polyline(*renderer, *rendition, 2, line);
            return dashes;
        };
        const VT_Int_Rectangle clip{random.number(0, 90), random.number(100, 199), random.number(0, 90), random.number(100, 199)};
        const auto all = drawn_dashes({0, 199, 0, 199});
        const auto some = drawn_dashes(clip);
        EXPECT_TRUE(std::includes(all.begin(), all.end(), some.begin(), some.end())) << "seed " << seed;
        for (const auto& dash : all) {
            EXPECT_TRUE(some.count(dash) || !crosses(clip, dash)) << "seed " << seed;
        }
    }
}

// Not dash by dash, whose ends would cover each other at corners and blend twice.
TEST_P(Standard_Lines, with_line_types_that_are_wide_go_to_the_host_as_a_whole) {
    const Renderer_Setup setup = setup_of_case(GetParam(), {64, 48});
    Test_Renderer renderer(setup);
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup, 7);
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->lengths = {9, 2};
    type->kinds = {1, -1};
    const VT_Reference<VT_Line_Type_Set> set(new VT_Line_Type_Set);
    set->types = {type};
    rendition->line.line_types = set;
    const VT_DCI_Point line[] = {{9, 9, 5}, {40, 12, 5}, {30, 40, 5}};
    const Contents expected = drawn(renderer, [&] { VD_Standard_Draw_2DI_Polyline(*renderer, *rendition, 3, line); });
    EXPECT_THAT(expected, testing::Contains(testing::Ne(0U)));
    EXPECT_EQ(drawn(renderer, [&] { VD_Draw_2DI_Polyline(*renderer, *rendition, 3, line); }), expected);
}

TEST_P(Standard_Lines, are_the_same_in_every_form_and_dot_by_dot) {
    const Renderer_Setup setup = setup_of_case(GetParam(), {64, 48});
    Test_Renderer renderer(setup);
    for (const std::int32_t weight : {1, 6}) {
        for (const std::int32_t style : {vorna::line_style::solid, vorna::line_style::dash_dot}) {
            const VT_Reference<VT_Rendition> rendition = rendition_for(setup, weight);
            rendition->line.style = style;
            rendition->set_color({30, 90, 200, 255});
            const VT_DCI_Point whole[] = {{5, 5, 9}, {55, 21, 900}, {20, 44, 20}};
            const VT_Point floating[] = {{5.4F, 4.5F, 9}, {54.6F, 21.3F, 900}, {19.5F, 44, 20}};
            const VT_Point_D doubles[] = {{5.4, 4.5, 9}, {54.6, 21.3, 900}, {19.5, 44, 20}};
            const Contents expected = drawn(renderer, [&] { VD_Draw_2DI_Polyline(*renderer, *rendition, 3, whole); });
            EXPECT_THAT(expected, testing::Contains(testing::Ne(0U)));
            const auto expect_same = [&](const char* form, auto draw) { EXPECT_EQ(drawn(renderer, draw), expected) << form; };
            expect_same("DCI", [&] { VD_Draw_DCI_Polyline(*renderer, *rendition, 3, whole); });
            expect_same("2D", [&] { VD_Draw_2D_Polyline(*renderer, *rendition, 3, floating); });
            expect_same("DC", [&] { VD_Draw_DC_Polyline(*renderer, *rendition, 3, floating); });
            expect_same("3D", [&] { VD_Draw_3D_Polyline(*renderer, *rendition, 3, doubles); });
            if (weight > 1 && !setup.has_indices()) {
                // Only dots are left, and in the end nothing.
                const auto dot = renderer->actions.draw_dci_dot;
                const VT_Action_Table actions = renderer->actions;
                renderer->set_standard_actions(true);
                expect_same("dots", [&] {
                    renderer->actions.draw_dci_dot = dot;
                    VD_Draw_2DI_Polyline(*renderer, *rendition, 3, whole);
                    renderer->actions.draw_dci_dot = {};
                    VD_Draw_2DI_Polyline(*renderer, *rendition, 3, whole);
                });
                renderer->actions = actions;
            }
        }
    }
}

TEST(Standard_Line, is_cut_into_dashes_of_its_weight) {
    const Renderer_Setup setup = setup_of_case(1, {64, 16});
    Test_Renderer renderer(setup);
    const auto row = [&](const VT_Rendition& rendition, std::int32_t to) {
        clear(renderer);
        const VT_DCI_Point line[] = {{2, 8, 0}, {to, 8, 0}};
        VD_Standard_Draw_DCI_Polyline(*renderer, rendition, 2, line);
        return sketch(renderer, {0, 31, 8, 8}).front();
    };
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup, 1);
    rendition->line.style = vorna::line_style::dashed;
    EXPECT_EQ(row(*rendition, 31), "..######...######...######...###");
    rendition->line.weight = 3;
    rendition->line.style = vorna::line_style::dotted;
    EXPECT_EQ(row(*rendition, 31), "..###......###......###......##.");
    rendition->line.style = vorna::line_style::solid;
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->leading[0] = 2;
    type->trailing[0] = 1;
    type->lengths = {2, 0, 3};
    type->kinds = {-1, 1, 1};
    const VT_Reference<VT_Line_Type_Set> set(new VT_Line_Type_Set);
    set->scale = 2;
    set->per_segment = true;
    set->types = {type};
    rendition->line.line_types = set;
    EXPECT_EQ(row(*rendition, 24), "..####....######....####........");
    // However long a line is, only its visible part is cut.
    rendition->line.line_types = VT_Line_Type_Set::None;
    rendition->line.style = vorna::line_style::dashed;
    const VT_DCI_Point line[] = {{INT32_MIN, 8, 0}, {INT32_MAX, 8, 0}};
    VD_Draw_2DI_Polyline(*renderer, *rendition, 2, line);
}

TEST(Standard_Marker, symbols_fill_their_size) {
    const Renderer_Setup setup = setup_of_case(3, {32, 32});
    Test_Renderer renderer(setup);
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup, 1);
    const auto sketched = [&](std::int32_t symbol, std::int32_t size) {
        clear(renderer);
        rendition->marker.symbol = symbol;
        rendition->marker.size = size;
        const VT_Point_D at{9.2, 9.9, 3};
        VD_Draw_3D_Polymarker(*renderer, *rendition, 1, &at);
        return sketch(renderer, {7, 11, 8, 12});
    };
    using testing::ElementsAre;
    EXPECT_THAT(sketched(vorna::marker_symbol::dot, 5), ElementsAre(".....", ".....", "..#..", ".....", "....."));
    EXPECT_EQ(renderer.color().pixel(9, 10), 77U) << "the marker's index";
    EXPECT_EQ(renderer.depth()->pixel(9, 10), 3U);
    EXPECT_THAT(sketched(vorna::marker_symbol::plus, 4), ElementsAre(".....", "..#..", "####.", "..#..", "..#.."));
    EXPECT_THAT(sketched(vorna::marker_symbol::cross, 5), ElementsAre("#...#", ".#.#.", "..#..", ".#.#.", "#...#"));
    EXPECT_THAT(sketched(vorna::marker_symbol::circle, 5), ElementsAre(".###.", "#...#", "#...#", "#...#", ".###."));
    EXPECT_THAT(sketched(vorna::marker_symbol::filled_circle, 5), ElementsAre(".###.", "#####", "#####", "#####", ".###."));
    EXPECT_THAT(sketched(vorna::marker_symbol::square, 4), ElementsAre(".....", "####.", "#..#.", "#..#.", "####."));
    EXPECT_THAT(sketched(vorna::marker_symbol::filled_square, 3), ElementsAre(".....", ".###.", ".###.", ".###.", "....."));
    EXPECT_THAT(sketched(vorna::marker_symbol::triangle, 5), ElementsAre("..#..", "..#..", ".#.#.", ".#.#.", "#####"));
    EXPECT_THAT(sketched(vorna::marker_symbol::star, 5), ElementsAre("#.#.#", ".###.", "#####", ".###.", "#.#.#"));
}

} // namespace

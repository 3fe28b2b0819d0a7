// The model itself, against numbers and small pictures worked out by hand: what agrees with it has to agree with these.
#include <gtest/gtest.h>

#include "tests/model/fixed_point.h"
#include "tests/model/model.h"

namespace {

using model::Model;

Renderer_Setup setup_of(std::int32_t color_system, VT_Int_Pair size) {
    Renderer_Setup setup;
    setup.color_system = color_system;
    setup.depth = false;
    setup.size = size;
    return setup;
}

VT_Reference<VT_Rendition> rendition_of(VT_RGB32 color) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->set_color(color);
    return rendition;
}

// One line a row, the highest first; '#' where the pixel is not 0.
std::string picture(const Model& model) {
    std::string lines;
    for (std::int32_t row = model.setup.size.y - 1; row >= 0; --row) {
        for (std::int32_t column = 0; column < model.setup.size.x; ++column) {
            lines += model.color.at(column, row) != 0 ? '#' : '.';
        }
        lines += '\n';
    }
    return lines;
}

} // namespace

TEST(Model, Steps_shift_by_powers_of_two_and_truncate_otherwise) {
    EXPECT_EQ(model::steps_between(3, 7, 4, 16).start, 0x38000);
    EXPECT_EQ(model::steps_between(3, 7, 4, 16).step, 0x10000);
    EXPECT_EQ(model::steps_between(0, -5, 3, 16).step, -109226);
    EXPECT_EQ(model::steps_between(9, 4, 0, 15).start, (9 << 15) + 0x4000);
    EXPECT_EQ(model::steps_between(9, 4, 0, 15).step, -5);
}

TEST(Model, Triangles_leave_out_their_right_column_and_their_last_row) {
    Model square(setup_of(1, {6, 5}));
    square.draw_polytriangle(*rendition_of({1, 1, 1, 255}), {{1, 1, 0}, {4, 1, 0}, {1, 4, 0}, {4, 4, 0}});
    EXPECT_EQ(picture(square), "......\n"
                               ".###..\n"
                               ".###..\n"
                               ".###..\n"
                               "......\n");
    // Step of the slanted edge: -4/3, from 5.5 through 4.17 to 2.83.
    Model slanted(setup_of(1, {6, 4}));
    slanted.draw_polytriangle(*rendition_of({1, 1, 1, 255}), {{1, 0, 0}, {5, 0, 0}, {1, 3, 0}});
    EXPECT_EQ(picture(slanted), "......\n"
                                ".#....\n"
                                ".###..\n"
                                ".####.\n");
}

TEST(Model, Two_pixels_take_the_left_value_and_the_mean) {
    Renderer_Setup setup = setup_of(1, {4, 2});
    setup.depth = true;
    Model model(setup);
    model.depth = model::Plane(setup.size, 0xFFFF);
    model.draw_gouraud_polytriangle(*rendition_of({}), {{0, 0, 100}, {2, 0, 201}, {0, 1, 0}},
                                    {{10, 0, 200, 255}, {21, 100, 0, 255}, {0, 0, 0, 255}});
    EXPECT_EQ(model.color.at(0, 0), word_of({10, 0, 200, 255}));
    EXPECT_EQ(model.color.at(1, 0), word_of({16, 50, 100, 255}));
    EXPECT_EQ(model.depth.at(0, 0), 100U);
    EXPECT_EQ(model.depth.at(1, 0), 151U);
    EXPECT_EQ(model.color.at(2, 0), 0U);
}

TEST(Model, Merge_control_knows_untouched_equal_and_different_pixels) {
    Renderer_Setup setup = setup_of(1, {4, 1});
    setup.force_merge = true;
    Model model(setup);
    const VT_RGB32 white{255, 255, 255, 255}, translucent_white{255, 255, 255, 9};
    model.color = model::Plane(setup.size, word_of(white));
    const auto dot = [&](std::int32_t x, VT_RGB32 color) {
        const VT_DCI_Point point{x, 0, 0};
        model.draw_dot(*rendition_of({}), point, &color);
        return color_of(model.color.at(x, 0));
    };
    EXPECT_EQ(dot(0, white), (VT_RGB32{254, 255, 255, 255}));
    EXPECT_EQ(dot(1, {0xF0, 0x3C, 1, 7}), (VT_RGB32{0xF0, 0x3C, 1, 255}));
    EXPECT_EQ(dot(1, {0x3F, 0xF0, 2, 7}), (VT_RGB32{0x30, 0x30, 0, 255}));
    model.color.at(2, 0) = word_of(translucent_white);
    EXPECT_EQ(dot(2, translucent_white), translucent_white);
    EXPECT_EQ(dot(2, {255, 255, 255, 8}), (VT_RGB32{254, 255, 255, 255}));
}

TEST(Model, Combined_indices_may_be_the_background_but_fresh_ones_may_not) {
    Renderer_Setup setup = setup_of(0, {3, 1});
    setup.force_merge = true;
    setup.background = {0, 0, 0};
    Model model(setup);
    ASSERT_EQ(model.background, 0U);
    // Of the steps (5, 5, 5), (10, 10, 10) ... the first one that is closer to grey 6 than to black.
    ASSERT_EQ(model.alternate, 216U);
    const auto dot = [&](std::int32_t x, std::uint8_t index) {
        const VT_Reference<VT_Rendition> rendition = rendition_of({});
        rendition->line.index = index;
        model.draw_dot(*rendition, {x, 0, 0}, nullptr);
        return model.color.at(x, 0);
    };
    EXPECT_EQ(dot(0, 0), model.alternate);
    EXPECT_EQ(dot(1, 5), 5U);
    EXPECT_EQ(dot(1, 30), 0U); // blue AND green is black
}

TEST(Model, Dither_thresholds_and_corners_of_the_color_cube) {
    EXPECT_EQ(model::threshold(0, 0), 512U);
    EXPECT_EQ(model::threshold(1, 0), 1024U * 32 + 512);
    EXPECT_EQ(model::threshold(0, 1), 1024U * 48 + 512);
    EXPECT_EQ(model::threshold(1, 1), 1024U * 16 + 512);

    const Model model(setup_of(0, {8, 8}));
    // Pure values of the 6 x 6 x 6 cube: 5 * 255 << 8 is cell 4 with fraction 0xFB00, which nearly always rounds up.
    EXPECT_EQ(model.dithered({0, 0, 0, 255}, 3, 4), 0U);
    EXPECT_EQ(model.dithered({255, 255, 255, 255}, 0, 0), 4U * 43);
    EXPECT_EQ(model.dithered({255, 255, 255, 255}, 1, 0), 5U * 43);
    // Half a cell of red and a quarter of blue: fractions 0x8000 and 0x4100.
    const VT_RGB32 mixed{13, 0, 0, 255};
    EXPECT_EQ(model.dithered(mixed, 1, 1), 0U);
    EXPECT_EQ(model.dithered(mixed, 0, 1), 1U);
}

TEST(Model, Points_round_halves_upwards) {
    const auto points = model::rounded({{0.5F, -0.5F, 2.5F}, {-2.5F, 0.49999997F, -0.25F}});
    EXPECT_EQ(points[0].x, 1);
    EXPECT_EQ(points[0].y, 0);
    EXPECT_EQ(points[0].z, 3);
    EXPECT_EQ(points[1].x, -2);
    EXPECT_EQ(points[1].y, 1); // single precision: the sum is 1
    EXPECT_EQ(points[1].z, 0);
}

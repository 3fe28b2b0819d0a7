// The model itself, against numbers and small pictures worked out by hand: what agrees with it has to agree with these.
#include <gtest/gtest.h>

#include "app/check/random.h"
#include "renderer/core/fixed_point.h"
#include "tests/support/model/fixed_point.h"
#include "tests/support/model/model.h"

namespace {

using model::Model;
using vorna::app::check::Random;

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

// The renderer's own interpolators; its members and kernels need few of these ends and counts.
TEST(Fixed_Interpolator, Steps_as_the_model_does_for_any_ends_and_counts) {
    Random random(1);
    constexpr std::int32_t telling[] = {0, 1, -1, 3, 7, 255, 65535, 65536, -65536, INT32_MAX, INT32_MIN};
    for (int i = 0; i < 20000; ++i) {
        const auto any = [&] { return random.chance(50) ? random.one_of(telling) : random.number(INT32_MIN, INT32_MAX); };
        const std::int32_t from = any(), to = any(),
                           count = random.chance(80) ? random.number(0, 17) : random.number(0, INT32_MAX);
        auto of_depth = krb::Fixed_Interpolator::between<15>(from, to, count);
        const auto of_channel = krb::Fixed_Interpolator::between<16>(from, to, count);
        const model::Steps depth = model::steps_between(from, to, count, 15), channel = model::steps_between(from, to, count, 16);
        ASSERT_TRUE(of_depth.value == depth.start && of_depth.step == depth.step && of_channel.value == channel.start &&
                    of_channel.step == channel.step)
            << from << " to " << to << " in " << count;
        of_depth.advance();
        ASSERT_EQ(of_depth.value, depth.at(1));
    }
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

TEST(Model, Merge_control_knows_untouched_equal_and_different_pixels) {
    Renderer_Setup setup = setup_of(1, {4, 1});
    setup.force_merge = true;
    Model model(setup);
    const VT_RGB32 white{255, 255, 255, 255}, translucent_white{255, 255, 255, 9};
    model.color = model::Plane(setup.size, vorna::word_of(white));
    const auto dot = [&](std::int32_t x, VT_RGB32 color) {
        const VT_DCI_Point point{x, 0, 0};
        model.draw_dot(*rendition_of({}), point, &color);
        return vorna::color_of(model.color.at(x, 0));
    };
    EXPECT_EQ(dot(0, white), (VT_RGB32{254, 255, 255, 255}));
    EXPECT_EQ(dot(1, {0xF0, 0x3C, 1, 7}), (VT_RGB32{0xF0, 0x3C, 1, 255}));
    EXPECT_EQ(dot(1, {0x3F, 0xF0, 2, 7}), (VT_RGB32{0x30, 0x30, 0, 255}));
    model.color.at(2, 0) = vorna::word_of(translucent_white);
    EXPECT_EQ(dot(2, translucent_white), translucent_white);
    EXPECT_EQ(dot(2, {255, 255, 255, 8}), (VT_RGB32{254, 255, 255, 255}));
}

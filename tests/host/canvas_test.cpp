// Canvases as applications use them.
#include <array>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_renderer.h"
#include "vorna/canvas.h"

namespace {

using testing::ElementsAre;

template <class Call> std::string complaint_of(Call call) {
    try {
        call();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "none";
}

// The lower left of 3 x 2 pixels is drawn, so that rows, columns and channels can be told apart.
void expect_read_back(bool indexed) {
    vorna::Canvas canvas(renderer_module(), {.size = {3, 2}, .indexed = indexed, .depth_buffer = true});
    const VT_RGB32 white = vorna::rgb(255, 255, 255), orange = vorna::rgb(255, 153, 51);
    canvas.begin_picture(white);
    canvas.set_color(orange);
    VD_Draw_DCI_Dot(canvas, {0, 0, 7});
    VD_Draw_2DI_Polymarker(canvas, std::vector<VT_DCI_Point>{{2, 1, 9}, {1, 500, 9}});
    canvas.end_picture();
    EXPECT_THAT(canvas.read_pixels(), ElementsAre(white, white, orange, orange, white, white)) << indexed;
    EXPECT_THAT(canvas.read_depths(), ElementsAre(65535, 65535, 9, 7, 65535, 65535)) << indexed;
}

TEST(Canvas, reads_back_what_was_drawn) {
    expect_read_back(false);
    expect_read_back(true);
}

TEST(Canvas, draws_in_its_own_colour_or_in_a_given_one) {
    vorna::Canvas canvas(renderer_module(), {.size = {5, 5}});
    const VT_RGB32 white = vorna::rgb(255, 255, 255), red = vorna::rgb(200, 0, 0), blue = vorna::rgb(0, 0, 200);
    canvas.begin_picture(white);
    canvas.set_color(red);
    VD_Draw_DCI_Ellipse(canvas, {2, 2}, {2, 2});
    VD_Draw_2D_Polygon(canvas, std::vector<VT_Point>{{3, 3}, {5, 3}, {5, 5}, {3, 5}}, blue);
    VD_Draw_2DI_Colorized_Polyline(canvas, std::vector<VT_DCI_Point>{{0, 0}, {4, 0}}, blue);
    const std::vector<VT_RGB32> pixels = canvas.read_pixels();
    EXPECT_THAT(std::vector(pixels.begin(), pixels.begin() + 5), ElementsAre(white, red, red, blue, blue));
    EXPECT_THAT(std::vector(pixels.begin() + 10, pixels.begin() + 15), ElementsAre(red, red, red, red, red));
    EXPECT_THAT(std::vector(pixels.begin() + 20, pixels.end()), ElementsAre(blue, blue, blue, blue, blue));
}

TEST(Canvas, steers_depth_and_presents_the_window_and_parts_of_it) {
    vorna::Canvas canvas(renderer_module(), {.size = {4, 4}, .depth_buffer = true});
    std::vector<std::array<std::int32_t, 6>> shown;
    canvas.on_present([&](const vorna::Presentation& p) {
        EXPECT_EQ(&p.buffer, &canvas.color_buffer());
        shown.push_back({p.area.left, p.area.right, p.area.bottom, p.area.top, p.destination.x, p.destination.y});
    });
    canvas.begin_picture(vorna::rgb(0, 0, 0));
    canvas.set_depth_test(vorna::Depth_Test::farther);
    VD_Draw_DCI_Dot(canvas, {0, 3, 5}, vorna::rgb(1, 2, 3)); // nothing is farther than empty
    canvas.set_depth_test(vorna::Depth_Test::nearer);
    canvas.set_depth_write(false);
    VD_Draw_DCI_Dot(canvas, {1, 3, 5}, vorna::rgb(4, 5, 6));
    canvas.end_picture();
    canvas.present({1, 2, 0, 1});
    EXPECT_THAT(shown, ElementsAre(std::array{0, 3, 0, 3, 0, 0}, std::array{1, 2, 0, 1, 1, 2}));
    const std::vector<VT_RGB32> pixels = canvas.read_pixels();
    EXPECT_EQ(pixels[0], vorna::rgb(0, 0, 0));
    EXPECT_EQ(pixels[1], vorna::rgb(4, 5, 6));
    EXPECT_EQ(canvas.read_depths()[1], 65535);
}

TEST(Canvas, refuses_what_cannot_be_and_stays_usable) {
    vorna::Canvas canvas(renderer_module(), {.size = {4, 4}});
    const Frame_Buffer* buffer = &canvas.color_buffer();
    canvas.options().set_window_size({4, 0});
    EXPECT_EQ(complaint_of([&] { canvas.establish(); }), "a window has 1 to 16384 columns and rows, not 4 x 0");
    EXPECT_EQ(&canvas.color_buffer(), buffer);
    EXPECT_EQ(complaint_of([&] { canvas.set_option("Use Masks", true); }), "Use Masks: the renderer has no such option");
    EXPECT_EQ(complaint_of([&] { canvas.set_option("Use Mask", 1); }), "Use Mask: expected true or false");
    EXPECT_THROW(canvas.read_depths(), std::runtime_error);

    const std::vector<VT_Point> points(4);
    const std::vector<VT_RGB32> colors(2);
    VD_Draw_2D_Colorized_Polytriangle(canvas, points, colors); // just enough
    EXPECT_EQ(complaint_of([&] { VD_Draw_2D_Colorized_Polyline(canvas, points, colors); }), "3 colours are needed, not 2");
    EXPECT_EQ(complaint_of([&] { VD_Draw_2D_Colorized_Polymarker(canvas, points, colors); }), "4 colours are needed, not 2");
    EXPECT_EQ(complaint_of([&] { VD_Draw_2D_Gouraud_Polyline(canvas, points, colors); }), "4 colours are needed, not 2");
    const std::vector<VT_RGB32> enough(4);
    const std::vector<VT_Parameter> parameters(7);
    EXPECT_EQ(complaint_of([&] { VD_Draw_2D_Textured_Polytriangle(canvas, points, enough, parameters); }),
              "8 texture parameters are needed, not 7");
}

} // namespace

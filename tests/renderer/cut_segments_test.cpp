// Segments of 2D lines that reach far beyond the window.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "host/rendition.h"
#include "renderer/lines/line_setup.h"
#include "tests/support/test_renderer.h"

namespace {

constexpr std::int32_t width = 40, height = 24;

// Pixels of the columns from x on, of a window whose column 0 is origin_x.
std::vector<std::uint32_t> drawn_from(std::int32_t x, std::int32_t origin_x, const VT_DCI_Point (&points)[2]) {
    Renderer_Setup setup;
    setup.size = {width, height};
    setup.origin = {origin_x, 0};
    Test_Renderer renderer(setup);
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = {x, x + 9, 0, height - 1};
    rendition->clip.depth_test = false;
    const VT_RGB32 colors[2] = {{0, 10, 250, 255}, {200, 100, 5, 255}};
    renderer->actions.draw_2di_gouraud_polyline.function(*renderer, *rendition, 2, points, colors);
    std::vector<std::uint32_t> pixels;
    for (std::int32_t row = 0; row < height; ++row) {
        for (std::int32_t column = x - origin_x; column < x - origin_x + 10; ++column) {
            pixels.push_back(renderer.color().pixel(column, row));
        }
    }
    return pixels;
}

} // namespace

// Columns counted from a window that begins left of the guard band do not fit 16.16 at the band's other end.
TEST(Cut_segments, Have_the_same_pixels_wherever_the_window_begins) {
    const VT_DCI_Point segments[][2] = {{{-3997, 10, 0}, {28760, 900, 0}},
                                        {{28760, 900, 0}, {-3997, 10, 0}},
                                        {{28750, 5, 0}, {-30000, 14, 0}},
                                        {{-3995, -20000, 0}, {-3988, 25000, 0}}};
    for (const auto& segment : segments) {
        const std::vector<std::uint32_t> pixels = drawn_from(-4000, -4000, segment);
        EXPECT_NE(pixels, std::vector<std::uint32_t>(pixels.size()));
        EXPECT_EQ(drawn_from(-4000, -4030, segment), pixels) << segment[0].x;
    }
}

TEST(Cut_segments, Are_cut_to_the_guard_band_without_turning) {
    struct {
        VT_DCI_Point from, to, cut_from, cut_to;
    } const cases[] = {
        {{-4000, 28760, 1}, {28760, -4000, 2}, {-4000, 28760, 1}, {28760, -4000, 2}},
        {{INT32_MIN, 7, INT32_MIN}, {INT32_MAX, 7, INT32_MAX}, {-4000, 7, -4000}, {28760, 7, 28760}},
        {{5, 40000, 0}, {5, 20000, 20000}, {5, 28760, 11240}, {5, 20000, 20000}},
        {{-8000, 3, 0}, {0, 4, 9}, {-4000, 4, 5}, {0, 4, 9}},
    };
    for (const auto& c : cases) {
        VT_DCI_Point from = c.from;
        VT_DCI_Point to = c.to;
        EXPECT_TRUE(krb::clip_to_guard_band(from, to));
        EXPECT_EQ(from.x, c.cut_from.x);
        EXPECT_EQ(from.y, c.cut_from.y);
        EXPECT_EQ(from.z, c.cut_from.z);
        EXPECT_EQ(to.x, c.cut_to.x);
        EXPECT_EQ(to.y, c.cut_to.y);
        EXPECT_EQ(to.z, c.cut_to.z);
    }
    VT_DCI_Point past_corner[2] = {{-4002, 28759, 0}, {-3999, 28762, 0}};
    EXPECT_FALSE(krb::clip_to_guard_band(past_corner[0], past_corner[1]));
    VT_DCI_Point beside[2] = {{INT32_MAX, 0, 0}, {INT32_MAX, 9, 0}};
    EXPECT_FALSE(krb::clip_to_guard_band(beside[0], beside[1]));
}

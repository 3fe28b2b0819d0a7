// The option "Scissor Rows": a renderer that draws everything once for each of several parts of the rows leaves what one that
// draws it at once leaves.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/check/configuration.h"
#include "app/check/scene.h"
#include "vorna/canvas.h"

namespace {

using namespace vorna::app::check;

constexpr const char* scissor_rows = "Scissor Rows";

vorna::Canvas canvas_of(const vorna::Module& module, const Configuration& configuration, const Window& window) {
    vorna::Canvas canvas(module);
    configure(canvas.options(), configuration, window.size, window.origin);
    canvas.set_option("Use Mask", true);
    canvas.set_option("Enable Tiling", true);
    canvas.renderer().requested_table.add(VT_Option(scissor_rows, 0, VT_Pointer(nullptr)));
    canvas.establish();
    return canvas;
}

void set_scissor(vorna::Canvas& canvas, std::int32_t first, std::int32_t last) {
    const auto set = canvas.renderer().current_table.find(scissor_rows)->as_setter<VT_Int_Setter>();
    const std::int32_t rows[2] = {first, last};
    set(canvas.renderer(), rows);
}

// First rows of parts that make up the window, and the row behind the last.
std::vector<std::int32_t> parts_of(std::int32_t height, Random& random) {
    std::vector<std::int32_t> starts{0};
    while (starts.back() < height) {
        starts.push_back(std::min(height, starts.back() + random.number(1, random.chance(30) ? 3 : height)));
    }
    return starts;
}

std::vector<std::uint16_t> depths_of(vorna::Canvas& canvas) {
    return canvas.has_depth_buffer() ? canvas.read_depths() : std::vector<std::uint16_t>();
}

TEST(Row_Scissor, parts_of_the_rows_make_up_the_whole) {
    const vorna::Module module(KRB_MODULE);
    for (const Configuration& configuration : configurations) {
        for (std::uint64_t seed = 1; seed <= 6; ++seed) {
            Random random(seed);
            const Window window{
                {random.number(1, 90), random.number(1, 60)}, {random.number(-30, 30), random.number(-30, 30)}, 0};
            vorna::Canvas whole = canvas_of(module, configuration, window), parts = canvas_of(module, configuration, window);
            for (const Call& call : random_scene(random, window, 3)) {
                if (random.chance(20)) {
                    call.rendition->clip.complex_clip = random_region(random, window.area());
                }
                const bool writes = random.chance(80);
                const auto test = random.one_of(std::vector<std::int32_t>{1, 2, 2, 2, 5});
                for (vorna::Canvas* canvas : {&whole, &parts}) {
                    canvas->set_depth_write(writes);
                    canvas->set_depth_test(vorna::Depth_Test{test});
                }
                call.draw_with(whole.renderer());
                const auto starts = parts_of(window.size.y, random);
                for (std::size_t i = 0; i + 1 < starts.size(); ++i) {
                    set_scissor(parts, starts[i], starts[i + 1] - 1);
                    call.draw_with(parts.renderer());
                }
                set_scissor(parts, 0, INT32_MAX);
                const std::string place = std::string(configuration.name) + ", " + std::string(call.slot) + ", seed ";
                ASSERT_EQ(whole.read_pixels(), parts.read_pixels()) << place << seed;
                ASSERT_EQ(depths_of(whole), depths_of(parts)) << place << seed;
            }
        }
    }
}

// From pixel to pixel, over all rows above those that are drawn.
TEST(Row_Scissor, depths_of_images_go_on_below_rows_that_are_left_out) {
    const vorna::Module module(KRB_MODULE);
    const Window window{{20, 30}, {}, 0};
    vorna::Canvas whole = canvas_of(module, configurations[4], window), parts = canvas_of(module, configurations[4], window);
    const std::vector<VT_RGB32> pixels(20 * 30, vorna::rgb(1, 2, 3));
    const VT_DCI_Point start{0, 29, 0}, end{19, 0, 2000};
    for (vorna::Canvas* canvas : {&whole, &parts}) {
        canvas->begin_picture(vorna::rgb(0, 0, 0));
    }
    VD_Draw_DCI_RGB32_Image(whole.renderer(), whole.rendition(), &start, &end, 80, pixels.data(), 0, nullptr);
    for (const std::int32_t first : {0, 10, 20}) {
        set_scissor(parts, first, first + 9);
        VD_Draw_DCI_RGB32_Image(parts.renderer(), parts.rendition(), &start, &end, 80, pixels.data(), 0, nullptr);
    }
    set_scissor(parts, 0, INT32_MAX);
    EXPECT_EQ(whole.read_depths(), parts.read_depths());
}

// Hosts that do not ask for the option see the same table as ever.
TEST(Row_Scissor, is_published_only_when_asked_for) {
    const vorna::Module module(KRB_MODULE);
    vorna::Canvas canvas(module, {.size = {8, 8}});
    EXPECT_EQ(canvas.renderer().current_table.find(scissor_rows), nullptr);
}

} // namespace

// Canvases that several threads draw: the bytes of one thread, whatever is drawn, and its errors.
#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/check/configuration.h"
#include "app/check/scene.h"
#include "tests/reliability/counted_heap.h"
#include "vorna/canvas.h"

namespace {

using namespace vorna::app::check;

struct Drawn {
    std::vector<VT_RGB32> colors;
    std::vector<std::uint16_t> depths;
    std::vector<std::uint8_t> read; // in between

    friend bool operator==(const Drawn&, const Drawn&) = default;
};

vorna::Canvas canvas_of(const vorna::Module& module, const Configuration& configuration, const Window& window, unsigned threads) {
    vorna::Canvas canvas(module, threads);
    configure(canvas.options(), configuration, window.size, window.origin);
    canvas.set_option("Use Mask", true);
    canvas.set_option("Enable Tiling", true);
    canvas.establish();
    return canvas;
}

void keep_bytes(const VT_Reference<VT_Shared_Image>& image, std::vector<std::uint8_t>& bytes) {
    for (std::int32_t row = 0; image && row < image->height(); ++row) {
        bytes.insert(bytes.end(), image->row(row), image->row(row) + image->row_bytes());
    }
}

// Strips and lines of many points that go all over the window and beyond.
void draw_long_lists(Random& random, const Window& window, vorna::Canvas& canvas) {
    constexpr int count = 150;
    std::vector<VT_DCI_Point> points;
    std::vector<VT_Point_D> exact_points;
    for (int i = 0; i < count; ++i) {
        const VT_Int_Rectangle around = grown(window.area(), 20);
        points.push_back(
            {random.number(around.left, around.right), random.number(around.bottom, around.top), random.number(0, 65535)});
        exact_points.push_back({points.back().x + 0.3, points.back().y - 0.2, double(points.back().z)});
    }
    const std::vector<VT_RGB32> colors = random_colors(random, count);
    const std::vector<VT_Parameter> parameters(2 * count, 0.4F);
    VD_Draw_2DI_Polytriangle(canvas, points);
    VD_Draw_DCI_Colorized_Polytriangle(canvas, points, colors);
    VD_Draw_3D_Gouraud_Polytriangle(canvas, exact_points, colors);
    VD_Draw_2DI_Textured_Polytriangle(canvas, points, colors, parameters);
    VD_Draw_3D_Colorized_Polyline(canvas, exact_points, colors);
    VD_Draw_DCI_Gouraud_Polyline(canvas, points, colors);
}

Drawn drawn(const vorna::Module& module, const Configuration& configuration, std::uint64_t seed, unsigned threads) {
    Random random(seed);
    Window window{{random.number(1, 90), random.number(1, 90)}, {random.number(-30, 30), random.number(-30, 30)}, 0};
    vorna::Canvas canvas = canvas_of(module, configuration, window, threads);
    Drawn result;
    for (int picture = 0; picture < 2; ++picture) {
        canvas.begin_picture(vorna::rgb(10, 20, 30));
        for (const Call& call : random_scene(random, window, 3, Callee::drawing_function)) {
            // One rendition for all calls, which changes between them.
            canvas.rendition() = *call.rendition;
            if (random.chance(20)) {
                canvas.rendition().clip.complex_clip = random_region(random, window.area());
            }
            if (random.chance(20)) {
                canvas.set_depth_write(random.chance(70));
                canvas.set_depth_test(vorna::Depth_Test{random.one_of(std::vector<std::int32_t>{1, 2, 5})});
            }
            call.draw(canvas.renderer(), canvas.rendition());
            if (random.chance(2)) {
                canvas.flush();
            }
            if (random.chance(2) && canvas.has_depth_buffer()) {
                keep_bytes(canvas.read_depth_image(), result.read);
            }
        }
        draw_long_lists(random, window, canvas);
        canvas.end_picture();
        const auto colors = canvas.read_pixels();
        result.colors.insert(result.colors.end(), colors.begin(), colors.end());
        if (canvas.has_depth_buffer()) {
            const auto depths = canvas.read_depths();
            result.depths.insert(result.depths.end(), depths.begin(), depths.end());
        }
        window.size = {window.size.y, window.size.x};
        canvas.options().set_window_size(window.size);
        canvas.establish();
    }
    return result;
}

TEST(Canvas_Threads, draw_the_bytes_of_one) {
    const vorna::Module module(KRB_MODULE);
    for (const Configuration& configuration : configurations) {
        for (std::uint64_t seed = 1; seed <= 4; ++seed) {
            const Drawn expected = drawn(module, configuration, seed, 1);
            for (const unsigned threads : {2U, 3U, 7U}) {
                const Drawn found = drawn(module, configuration, seed, threads);
                EXPECT_EQ(expected.colors, found.colors) << configuration.name << ", seed " << seed << ", threads " << threads;
                EXPECT_EQ(expected.depths, found.depths) << configuration.name << ", seed " << seed << ", threads " << threads;
                EXPECT_EQ(expected.read, found.read) << configuration.name << ", seed " << seed << ", threads " << threads;
            }
        }
    }
}

} // namespace

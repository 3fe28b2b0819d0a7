// Canvases that several threads draw: the bytes of one thread, whatever is drawn, and its errors.
#include <algorithm>
#include <new>
#include <string>
#include <thread>
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
    canvas.renderer().requested_table.add(VT_Option("Depth Blocks", 0, true));
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
    VT_Line_Attributes& line = canvas.rendition().line;
    const VT_Line_Attributes thin = line;
    line.weight = random.number(2, 9);
    line.cap = random.number(0, 2);
    line.join = random.number(0, 2);
    points.back() = points.front();
    VD_Draw_2DI_Gouraud_Polyline(canvas, points, colors);
    line = thin;
}

// A strip that is too long to be copied.
void draw_longest_list(const Window& window, vorna::Canvas& canvas) {
    std::vector<VT_DCI_Point> points;
    for (int i = 0; i < 30000; ++i) {
        points.push_back({window.origin.x + i % 60, window.origin.y + i * 7 % 90, i});
    }
    VD_Draw_2DI_Colorized_Polytriangle(canvas, points, vorna::rgb(10, 200, 90));
}

Drawn drawn(const vorna::Module& module, const Configuration& configuration, std::uint64_t seed, unsigned threads) {
    Random random(seed);
    Window window{{random.number(1, 90), random.number(1, 90)}, {random.number(-30, 30), random.number(-30, 30)}, 0};
    vorna::Canvas canvas = canvas_of(module, configuration, window, threads);
    Drawn result;
    for (int picture = 0; picture < 3; ++picture) {
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
        if (seed == 1 && picture == 0) {
            draw_longest_list(window, canvas);
        }
        canvas.end_picture();
        const auto colors = canvas.read_pixels();
        result.colors.insert(result.colors.end(), colors.begin(), colors.end());
        if (canvas.has_depth_buffer()) {
            const auto depths = canvas.read_depths();
            result.depths.insert(result.depths.end(), depths.begin(), depths.end());
        }
        // Members of slots that the new options do not name stay.
        window.size = {window.size.y, window.size.x};
        const auto other = static_cast<std::size_t>(random.number(0, static_cast<std::int32_t>(std::size(configurations)) - 1));
        configure(canvas.options(), configurations[other], window.size, window.origin);
        canvas.set_option("Enable Tiling", random.chance(50));
        if (random.chance(50)) {
            const std::vector<VT_RGB32> entries{vorna::rgb(0, 0, 0), vorna::rgb(200, 30, 30), vorna::rgb(250, 250, 250)};
            canvas.options().set_palette(VT_Reference<const VT_Palette>(new VT_Palette(entries, {})));
        }
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

// What the renderer decides for a polyline as a whole holds for its runs.
TEST(Canvas_Threads, draw_polylines_that_are_cut_as_one_does) {
    const vorna::Module module(KRB_MODULE);
    const auto pixels = [&module](unsigned threads, const auto& draw) {
        vorna::Canvas canvas(module, {.size = {100, 100}, .threads = threads});
        canvas.begin_picture(vorna::rgb(0, 0, 0));
        draw(canvas);
        canvas.end_picture();
        return canvas.read_pixels();
    };
    // The last segment comes from outside and ends where the first ones cross.
    const auto ends_on_itself = [](vorna::Canvas& canvas) {
        std::vector<VT_DCI_Point> points;
        for (int i = 0; i < 80; ++i) {
            points.push_back({i % 2 ? 80 : 20, i < 32 ? 50 : 30, 0});
        }
        points.insert(points.end(), {{50, 120, 0}, {50, 50, 0}});
        std::vector<VT_RGB32> colors(80, vorna::rgb(200, 0, 0));
        colors.resize(82, vorna::rgb(90, 0, 0));
        VD_Draw_2DI_Colorized_Polyline(canvas, points, colors);
    };
    // One point lies outside of the window.
    const auto is_clipped = [](vorna::Canvas& canvas) {
        std::vector<VT_Point> points{{50, 105, 0}};
        for (int i = 1; i < 80; ++i) {
            points.push_back({i < 40 ? (i % 2 ? 45.0F : 55.0F) : (i % 2 ? 90.0F : 10.0F), 50, 0});
        }
        canvas.rendition().clip.hard_clip = {40, 60, 0, 99};
        VD_Draw_DC_Gouraud_Polyline(canvas, points, std::vector<VT_RGB32>(80, vorna::rgb(200, 0, 0)));
    };
    EXPECT_EQ(pixels(2, ends_on_itself), pixels(1, ends_on_itself));
    EXPECT_EQ(pixels(2, is_clipped), pixels(1, is_clipped));
}

TEST(Canvas_Threads, of_several_canvases_draw_at_once) {
    const vorna::Module module(KRB_MODULE);
    constexpr std::size_t canvases = 3;
    std::vector<Drawn> together(canvases);
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < canvases; ++i) {
            threads.emplace_back([&, i] { together[i] = drawn(module, configurations[i], i + 1, 3); });
        }
    }
    for (std::size_t i = 0; i < canvases; ++i) {
        const Drawn alone = drawn(module, configurations[i], i + 1, 1);
        EXPECT_TRUE(together[i] == alone) << configurations[i].name;
    }
}

// Allocations fail at moments spread over the drawing of a picture, in whichever thread makes them: the exception arrives,
// nothing is presented, and the next picture is whole.
TEST(Canvas_Threads, present_no_picture_that_one_of_them_could_not_draw) {
    const vorna::Module module(KRB_MODULE);
    vorna::Canvas canvas(module, {.size = {60, 200}, .depth_buffer = true, .threads = 3});
    int presented = 0;
    canvas.on_present([&](const vorna::Presentation&) { ++presented; });
    // Wide lines and 3D forms allocate while they are drawn.
    std::vector<VT_Point_D> points;
    for (int i = 0; i < 300; ++i) {
        points.push_back({double(i % 60), double(i * 37 % 200), 5});
    }
    const auto draw = [&] {
        canvas.begin_picture(vorna::rgb(1, 2, 3));
        canvas.rendition().line.weight = 3;
        VD_Draw_3D_Polyline(canvas, points);
        VD_Draw_3D_Colorized_Polytriangle(canvas, points, vorna::rgb(200, 100, 50));
        canvas.end_picture();
        return canvas.read_pixels();
    };
    const std::vector<VT_RGB32> whole = draw();
    bool has_failed = true;
    int failures = 0;
    for (std::int64_t before = 0; has_failed; before += before / 16 + 1) {
        presented = 0;
        has_failed = false;
        try {
            const Failing_Allocations failing(before, 1);
            canvas.begin_picture();
            VD_Draw_3D_Polyline(canvas, points);
            VD_Draw_3D_Colorized_Polytriangle(canvas, points, vorna::rgb(200, 100, 50));
            canvas.end_picture();
        } catch (const std::bad_alloc&) {
            has_failed = true;
            ++failures;
        }
        EXPECT_EQ(presented, has_failed ? 0 : 1) << before;
        EXPECT_EQ(draw(), whole) << before;
    }
    EXPECT_GT(failures, 20);
}

} // namespace

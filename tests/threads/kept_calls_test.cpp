// Calls that a canvas keeps for its threads: many short ones, drawn while others are kept, and long polylines in runs.
#include <algorithm>
#include <functional>
#include <new>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/check/configuration.h"
#include "app/check/random_values.h"
#include "tests/reliability/counted_heap.h"
#include "vorna/canvas.h"
#include "vorna/drawn_rows.h"

namespace {

using namespace vorna::app::check;

constexpr VT_Int_Pair window_size{120, 200};

using Draw = std::function<void(vorna::Canvas&, int picture)>;

vorna::Canvas canvas_of(const vorna::Module& module, const Configuration& configuration, unsigned threads) {
    vorna::Canvas canvas(module, threads);
    configure(canvas.options(), configuration, window_size, {-10, 20});
    canvas.set_option("Use Mask", true);
    canvas.renderer().requested_table.add(VT_Option("Depth Blocks", 0, true));
    canvas.establish();
    return canvas;
}

// Everything that so many pictures leave in the buffers.
std::vector<std::uint8_t> bytes_of(vorna::Canvas& canvas, int pictures, const Draw& draw) {
    std::vector<std::uint8_t> bytes;
    for (int picture = 0; picture < pictures; ++picture) {
        canvas.begin_picture(vorna::rgb(10, 20, 30));
        draw(canvas, picture);
        canvas.end_picture();
        const Frame_Buffer& colors = canvas.color_buffer();
        const std::int32_t row_bytes = colors.width * vorna::bytes_per_pixel(colors.format);
        for (std::int32_t row = 0; row < colors.height; ++row) {
            bytes.insert(bytes.end(), colors.rows[row], colors.rows[row] + row_bytes);
        }
        if (canvas.has_depth_buffer()) {
            for (const std::uint16_t depth : canvas.read_depths()) {
                bytes.insert(bytes.end(), {static_cast<std::uint8_t>(depth), static_cast<std::uint8_t>(depth >> 8)});
            }
        }
    }
    return bytes;
}

void expect_bytes_of_one_thread(const vorna::Module& module, const Configuration& configuration, int pictures, const Draw& draw) {
    vorna::Canvas one = canvas_of(module, configuration, 1);
    const std::vector<std::uint8_t> expected = bytes_of(one, pictures, draw);
    for (const unsigned threads : {2U, 3U, 7U}) {
        vorna::Canvas several = canvas_of(module, configuration, threads);
        EXPECT_TRUE(bytes_of(several, pictures, draw) == expected) << configuration.name << ", threads " << threads;
    }
}

// Runs of calls with the same attributes, and changes of attributes, depth rules and regions between them. within: where most of
// the points lie.
void draw_short_calls(vorna::Canvas& canvas, const VT_Int_Rectangle& within, int count) {
    Random random(5);
    const auto point = [&] {
        return VT_DCI_Point{random.number(within.left, within.right), random.number(within.bottom, within.top),
                            random.number(0, 65535)};
    };
    for (int i = 0; i < count; ++i) {
        if (random.chance(3)) {
            canvas.set_color(random_color(random));
            canvas.rendition().face.flags = random.chance(50) ? vorna::face_flag::translucent : 0;
            canvas.rendition().line.weight = random.chance(20) ? 3 : 1;
        }
        if (random.chance(1)) {
            canvas.set_depth_write(random.chance(70));
            canvas.set_depth_test(vorna::Depth_Test{random.one_of(std::vector<std::int32_t>{1, 2, 5})});
            canvas.rendition().clip.complex_clip =
                random.chance(30) ? random_region(random, canvas.window()) : VT_Reference<const VT_Contour_Set>();
        }
        const VT_DCI_Point points[4] = {point(), point(), point(), point()};
        const VT_RGB32 colors[4] = {random_color(random), random_color(random), random_color(random), random_color(random)};
        switch (random.number(0, 5)) {
        case 0:
            VD_Draw_2DI_Polyline(canvas, std::span(points, 2));
            break;
        case 1:
            VD_Draw_2DI_Polytriangle(canvas, std::span(points, 3));
            break;
        case 2:
            VD_Draw_DCI_Gouraud_Polytriangle(canvas, points, colors);
            break;
        case 3:
            VD_Draw_2DI_Colorized_Polymarker(canvas, points, colors);
            break;
        case 4:
            VD_Draw_DCI_Dot(canvas, points[0], colors[0]);
            break;
        default:
            // More bytes than are copied for each band.
            const std::vector<VT_RGB32> pixels(20 * 20, colors[1]);
            VD_Draw_DCI_RGB32_Image(canvas, points[0], {pixels, {20, 20}});
        }
    }
}

TEST(Kept_Calls, are_drawn_in_order_while_others_are_kept) {
    const vorna::Module module(KRB_MODULE);
    for (const Configuration& configuration : configurations) {
        expect_bytes_of_one_thread(module, configuration, 2, [](vorna::Canvas& canvas, int) {
            draw_short_calls(canvas, grown(canvas.window(), 10), 6000);
            // Few rows, so that one band's calls fill all the memory that it has.
            const VT_Int_Rectangle window = canvas.window();
            draw_short_calls(canvas, {window.left, window.right, window.bottom + 3, window.bottom + 8}, 12000);
        });
    }
}

// A long polyline, in attributes with which vertices that are drawn twice may show: with lines that blend, merge or are smoothed,
// under other depth rules, and at equal points of different depths.
void draw_long_polyline(vorna::Canvas& canvas, int picture) {
    Random random(static_cast<std::uint64_t>(picture));
    const VT_Int_Rectangle around = grown(canvas.window(), picture % 4 == 0 ? 5 : -3);
    std::vector<VT_DCI_Point> points{{around.left, around.bottom, 500}};
    while (points.size() < 400) {
        VT_DCI_Point next = points.back();
        if (!random.chance(15)) {
            next.x = std::clamp(next.x + random.number(-6, 6), around.left, around.right);
            next.y = std::clamp(next.y + random.number(-6, 6), around.bottom, around.top);
        }
        next.z = random.chance(picture % 5 == 0 ? 20 : 0) ? random.number(-9, 80000) : random.number(0, 65535);
        points.push_back(next);
    }
    const std::vector<VT_RGB32> colors = random_colors(random, points.size());
    VT_Rendition& rendition = canvas.rendition();
    canvas.set_color(random_color(random));
    rendition.line.mode = random.chance(20) ? vorna::merge_drawing_mode : 0;
    rendition.line.flags = random.chance(20) ? vorna::line_flag::smoothed : 0;
    rendition.line.weight = random.chance(10) ? 2 : 1;
    rendition.clip.depth_test = random.chance(70);
    rendition.clip.complex_clip =
        random.chance(20) ? random_region(random, canvas.window()) : VT_Reference<const VT_Contour_Set>();
    canvas.set_depth_write(random.chance(80));
    canvas.set_depth_test(vorna::Depth_Test{random.chance(70) ? 2 : random.one_of(std::vector<std::int32_t>{1, 5})});
    std::vector<VT_Point> floats;
    for (const VT_DCI_Point& point : points) {
        floats.push_back({static_cast<float>(point.x) + 0.4F, static_cast<float>(point.y) - 0.3F, static_cast<float>(point.z)});
    }
    switch (random.number(0, 3)) {
    case 0:
        VD_Draw_2DI_Polyline(canvas, points);
        break;
    case 1:
        VD_Draw_DCI_Colorized_Polyline(canvas, points, colors);
        break;
    case 2:
        VD_Draw_2DI_Gouraud_Polyline(canvas, points, colors);
        break;
    default:
        VD_Draw_2D_Colorized_Polyline(canvas, floats, colors);
    }
}

// One in each picture, since others would hide what shows.
TEST(Kept_Calls, cut_long_polylines_where_no_pixel_changes) {
    const vorna::Module module(KRB_MODULE);
    for (const Configuration& configuration : configurations) {
        expect_bytes_of_one_thread(module, configuration, 100, draw_long_polyline);
    }
}

// The pixels of a wide line in some rows are those of the whole line, and no others are made: each band of rows costs its share.
TEST(Kept_Calls, of_wide_lines_are_made_in_the_rows_of_a_band) {
    constexpr std::int32_t side = 100, first_row = 37, last_row = 52;
    const vorna::Module module(KRB_MODULE);
    std::vector<VT_DCI_Point> points;
    for (std::int32_t i = 0; i < 120; ++i) {
        points.push_back({i * 37 % 110 - 5, i * i * 13 % 110 - 5, i});
    }
    points.push_back(points.front());
    for (const std::int32_t join : {vorna::line_join::round, vorna::line_join::miter, vorna::line_join::bevel}) {
        const auto pixels = [&](bool is_cut) {
            vorna::Canvas canvas(module, {.size = {side, side}});
            if (is_cut) {
                vorna::note_drawn_rows(canvas.renderer(), first_row, last_row);
            }
            canvas.begin_picture(vorna::rgb(0, 0, 0));
            canvas.set_color(vorna::rgb(200, 100, 50));
            canvas.rendition().line.weight = 3;
            canvas.rendition().line.join = join;
            VD_Draw_2DI_Polyline(canvas, points);
            canvas.end_picture();
            return canvas.read_pixels();
        };
        std::vector<VT_RGB32> expected = pixels(false);
        for (std::int32_t i = 0; i < side * side; ++i) {
            const std::int32_t row = side - 1 - i / side; // images begin with the uppermost one
            if (row < first_row || row > last_row) {
                expected[static_cast<std::size_t>(i)] = vorna::rgb(0, 0, 0);
            }
        }
        EXPECT_EQ(pixels(true), expected) << "join " << join;
    }
}

// Small calls are drawn with the threads and without them by turns, to see which is faster.
TEST(Kept_Calls, may_be_left_out_for_whole_pictures) {
    const vorna::Module module(KRB_MODULE);
    vorna::Canvas one = canvas_of(module, configurations[4], 1), several = canvas_of(module, configurations[4], 2);
    constexpr int enough = 10, most = 20000;
    int alone = 0, with_threads = 0;
    for (int picture = 0; picture < most && (alone < enough || with_threads < enough); ++picture) {
        const bool is_alone = several.renderer().actions.draw_dci_dot.owner == &several.renderer();
        alone += is_alone;
        with_threads += alone > 0 && !is_alone;
        for (vorna::Canvas* const canvas : {&one, &several}) {
            canvas->begin_picture();
            draw_short_calls(*canvas, canvas->window(), 100);
            // Above the window, where nothing is drawn in little time.
            const std::vector<VT_DCI_Point> beside{{0, 3000, 1}, {5, 3000, 1}};
            for (int i = 0; i < 10000; ++i) {
                VD_Draw_2DI_Polyline(*canvas, beside);
            }
            canvas->end_picture();
        }
        if (picture % 16 == 0 || is_alone) {
            ASSERT_TRUE(one.read_pixels() == several.read_pixels() && one.read_depths() == several.read_depths()) << picture;
        }
    }
    EXPECT_GE(alone, 1);
    EXPECT_GE(with_threads, 1);
}

// Allocations fail in whichever thread makes them, while calls are kept and drawn: the exception arrives in a drawing function or
// at the end, nothing is presented, and the next picture is whole.
TEST(Kept_Calls, are_dropped_when_one_cannot_be_drawn) {
    const vorna::Module module(KRB_MODULE);
    vorna::Canvas canvas = canvas_of(module, configurations[4], 3);
    int presented = 0;
    canvas.on_present([&](const vorna::Presentation&) { ++presented; });
    const auto draw = [&] {
        canvas.begin_picture(vorna::rgb(1, 2, 3));
        canvas.set_depth_write(true);
        canvas.set_depth_test(vorna::Depth_Test::nearer_or_equal);
        canvas.rendition().clip.complex_clip = nullptr;
        draw_short_calls(canvas, canvas.window(), 9000);
        canvas.end_picture();
    };
    draw();
    const std::vector<VT_RGB32> whole = canvas.read_pixels();
    int failures = 0;
    bool has_failed = true;
    for (std::int64_t before = 0; has_failed; before += before / 2 + 7) {
        presented = 0;
        has_failed = false;
        try {
            const Failing_Allocations failing(before, 1);
            draw();
        } catch (const std::bad_alloc&) {
            has_failed = true;
            ++failures;
        }
        EXPECT_EQ(presented, has_failed ? 0 : 1) << before;
        draw();
        EXPECT_TRUE(canvas.read_pixels() == whole) << before;
    }
    EXPECT_GT(failures, 5);
}

} // namespace

// Polylines: what renderers draw is what the model draws, and what lines promise beyond that.
#include <algorithm>
#include <cstdlib>
#include <iterator>

#include <gtest/gtest.h>

#include "tests/support/comparison.h"
#include "tests/support/scene.h"

namespace {

// One test a renderer case.
class Lines : public testing::TestWithParam<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(Every_case, Lines, testing::Range(std::size_t{0}, std::size(renderer_cases)));

std::int32_t clamped(std::int64_t value) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

// The next point of a line within reach of the window: anywhere, level with or diagonal to the last one, or the same.
VT_DCI_Point next_point(Random& random, const std::vector<VT_DCI_Point>& before, const VT_Int_Rectangle& window,
                        std::int32_t reach) {
    const auto within = [&](std::int32_t low, std::int32_t high) {
        // Far points lie at every distance, not all near the largest one.
        const std::int32_t far = reach < 1000 ? reach : random.number(0, random.chance(50) ? reach : reach / 1000);
        return random.number(clamped(std::int64_t{low} - far), clamped(std::int64_t{high} + far));
    };
    VT_DCI_Point point{within(window.left, window.right), within(window.bottom, window.top), random.number(0, 65535)};
    if (!before.empty() && random.chance(40)) {
        const VT_DCI_Point& last = before.back();
        const std::int32_t what = random.number(0, 3);
        const std::int64_t along = std::int64_t{point.x} - last.x;
        const std::int32_t diagonal = clamped(last.y + (random.chance(50) ? along : -along));
        const bool fits = reach > 0 || (diagonal >= window.bottom && diagonal <= window.top);
        point.x = (what & 1) ? last.x : point.x;
        point.y = (what & 2) ? last.y : what == 0 && fits ? diagonal : point.y;
    }
    return point;
}

// Device lines stay inside the window, as hosts send them.
Call random_line(Random& random, const Renderer_Setup& setup, Shape shape) {
    constexpr Call_Kind kinds[] = {Call_Kind::flat, Call_Kind::colorized, Call_Kind::gouraud};
    constexpr std::int32_t reaches[] = {0, 3, 30, 3000, 100'000, INT32_MAX};
    constexpr std::int32_t z_tests[] = {2, 2, 1, 5, 0};
    const VT_Int_Rectangle window = window_of(setup);
    Call call;
    call.kind = random.one_of(kinds);
    call.shape = shape;
    call.z_write = random.chance(75);
    call.z_test = random.one_of(z_tests);
    call.rendition = VT_Reference<VT_Rendition>(new VT_Rendition);
    VT_Line_Attributes& line = call.rendition->line;
    line.color = random_color(random);
    line.index = random.byte();
    line.mode = random.chance(20) ? vorna::merge_drawing_mode : 0;
    line.flags = random.chance(25) ? vorna::line_flag::smoothed : 0;
    line.weight = random.chance(2) ? 2 : random.number(0, 1);
    line.style = random.chance(1) ? 1 : 0;
    VT_Clip_Attributes& clip = call.rendition->clip;
    clip.depth_test = random.chance(80);
    clip.hard_clip = random_rectangle(random, window);
    if (shape == Shape::device_line && random.chance(40)) {
        // Device lines look at the hard clip only beside smoothed ones, wherever its sides lie.
        std::int32_t VT_Int_Rectangle::*const sides[] = {&VT_Int_Rectangle::left, &VT_Int_Rectangle::right,
                                                         &VT_Int_Rectangle::bottom, &VT_Int_Rectangle::top};
        for (const auto side : sides) {
            clip.hard_clip.*side += random.number(-3, 3);
            clip.hard_clip.*side = random.chance(90) ? clip.hard_clip.*side : random.chance(50) ? INT32_MIN : INT32_MAX;
        }
    }
    if (random.chance(25)) {
        clip.complex_clip = random_region(random, setup);
        clip.window_offset = {random.number(-2, 2), random.number(-2, 2)};
    }
    const std::int32_t reach = shape == Shape::device_line ? 0 : random.one_of(reaches);
    for (std::int32_t count = random.chance(80) ? random.number(2, 8) : random.number(60, 70); count > 0; --count) {
        call.points.push_back(next_point(random, call.points, window, reach));
        call.points.back().z += random.chance(3) ? random.number(-3, 3) * 65536 : 0;
    }
    call.single_color = call.kind == Call_Kind::colorized && random.chance(30);
    call.colors = random_colors(random, call.points.size());
    return call;
}

void expect_equal_to_model(std::size_t renderer_case, Shape shape, int count) {
    for (int seed = 0; seed < count; ++seed) {
        Random random(static_cast<std::uint64_t>(seed) * std::size(renderer_cases) + renderer_case);
        Renderer_Setup setup = random_setup(random, renderer_case);
        setup.use_mask = random.chance(90);
        if (random.chance(3)) {
            (random.chance(50) ? setup.size.x : setup.size.y) = random.number(100, 1500);
        } else if (shape == Shape::plane_line && random.chance(15)) {
            // Windows at the ends of what clipped lines can reach.
            setup.origin = {random.chance(50) ? 28700 : -4050, random.chance(50) ? 28720 : -4030};
        }
        Comparison comparison(setup);
        std::vector<std::uint32_t> colors;
        std::vector<std::uint16_t> depths;
        for (std::int32_t i = 0; i < setup.size.x * setup.size.y; ++i) {
            const std::uint32_t word = vorna::word_of(random_color(random));
            colors.push_back(setup.has_indices() ? word >> 8 & 0xFF : word);
            depths.push_back(random.chance(50) ? std::uint16_t{0xFFFF} : static_cast<std::uint16_t>(random.number(0, 65535)));
        }
        comparison.set_contents(colors, depths);
        for (int k = 0; k < 6; ++k) {
            const Call call = random_line(random, setup, shape);
            const std::string difference = comparison.draw(call);
            ASSERT_TRUE(difference.empty()) << difference << "\nseed " << seed << ", call " << k << ", " << describe(setup)
                                            << '\n'
                                            << describe(call);
        }
    }
}

// A line of one opaque colour, not clipped more than to the window.
Call plain_line(const Renderer_Setup& setup, Shape shape, std::vector<VT_DCI_Point> points) {
    Call call;
    call.kind = Call_Kind::colorized;
    call.shape = shape;
    call.rendition = VT_Reference<VT_Rendition>(new VT_Rendition);
    call.rendition->clip.hard_clip = window_of(setup);
    call.points = std::move(points);
    call.colors = {{200, 220, 240, 255}};
    call.single_color = true;
    return call;
}

std::vector<std::uint32_t> contents(Test_Renderer& renderer, bool of_depth = false) {
    std::vector<std::uint32_t> pixels;
    const Guarded_Buffer& buffer = of_depth ? *renderer.depth() : renderer.color();
    for (std::int32_t i = 0; i < buffer.width * buffer.height; ++i) {
        pixels.push_back(buffer.pixel(i % buffer.width, i / buffer.width));
    }
    return pixels;
}

void clear(Test_Renderer& renderer, std::uint32_t color) {
    for (std::int32_t i = 0; i < renderer.color().width * renderer.color().height; ++i) {
        renderer.color().set_pixel(i % renderer.color().width, i / renderer.color().width, color);
        if (renderer.depth()) {
            renderer.depth()->set_pixel(i % renderer.color().width, i / renderer.color().width, 0xFFFF);
        }
    }
}

std::vector<std::uint32_t> drawn(Test_Renderer& renderer, const Call& call, bool of_depth = false) {
    clear(renderer, 0x11);
    draw(renderer, call);
    return contents(renderer, of_depth);
}

// Where a line crosses from pixel to pixel exactly in the middle between two of them, and its slope is rounded.
bool has_rounded_tie(std::int64_t dx, std::int64_t dy) {
    if (dy == 0 || dx * 65536 % dy == 0) {
        return false;
    }
    bool has_tie = false;
    for (std::int64_t row = 0; row < std::abs(dy); ++row) {
        has_tie |= std::abs(dx) > std::abs(dy) ? (2 * row + 1) * dx % (2 * dy) == 0 : (2 * row * dx + dy) % (2 * dy) == 0;
    }
    return has_tie;
}

} // namespace

TEST_P(Lines, On_the_device_match_the_model) {
    expect_equal_to_model(GetParam(), Shape::device_line, scaled(250));
}

TEST_P(Lines, In_the_plane_match_the_model) {
    expect_equal_to_model(GetParam(), Shape::plane_line, scaled(250));
}

TEST_P(Lines, Cover_the_same_pixels_in_both_directions) {
    const Renderer_Setup setup = setup_of_case(GetParam(), {120, 100});
    Test_Renderer renderer(setup);
    Random random(5);
    for (int i = 0; i < scaled(250); ++i) {
        const VT_DCI_Point from{random.number(0, 119), random.number(0, 99), 9};
        const VT_DCI_Point to{random.number(0, 119), random.number(0, 99), 9};
        if (!has_rounded_tie(to.x - from.x, to.y - from.y)) {
            ASSERT_EQ(drawn(renderer, plain_line(setup, Shape::device_line, {from, to})),
                      drawn(renderer, plain_line(setup, Shape::device_line, {to, from})))
                << from.x << ' ' << from.y << " to " << to.x << ' ' << to.y;
        }
    }
}

// A part's last point is drawn once more as the next part's first one, which stores the same.
TEST_P(Lines, Cut_at_their_points_draw_the_same) {
    const Renderer_Setup setup = setup_of_case(GetParam(), {50, 40});
    if (setup.alpha) {
        return;
    }
    Test_Renderer renderer(setup);
    for (int seed = 0; seed < scaled(300); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        Call call = random_line(random, setup, seed % 2 == 0 ? Shape::device_line : Shape::plane_line);
        call.rendition->line.mode = 0;
        call.rendition->line.flags = 0;
        call.rendition->line.weight = 1;
        call.rendition->line.style = 0;
        call.rendition->clip.depth_test = false;
        // A last point that is reached from outside is drawn before all else, and may be drawn over.
        call.points.push_back(call.points.back());
        call.colors.push_back(call.colors.back());
        const auto whole = drawn(renderer, call);
        clear(renderer, 0x11);
        for (std::size_t begin = 0, end = 0; end + 1 < call.points.size(); begin = end) {
            end = static_cast<std::size_t>(
                random.number(static_cast<std::int32_t>(begin) + 1, static_cast<std::int32_t>(call.points.size()) - 1));
            Call part = call;
            const auto b = static_cast<std::ptrdiff_t>(begin), e = static_cast<std::ptrdiff_t>(end) + 1;
            part.points.assign(call.points.begin() + b, call.points.begin() + e);
            if (!call.single_color) {
                part.colors.assign(call.colors.begin() + b, call.colors.begin() + e);
            }
            draw(renderer, part);
        }
        ASSERT_EQ(contents(renderer), whole) << "seed " << seed << '\n' << describe(call);
    }
}

// Steep lines may begin and end half a column later: the row at which they cross an edge is that of the column's middle.
TEST_P(Lines, Clipped_show_the_colors_and_depths_of_whole_ones) {
    const Renderer_Setup setup = setup_of_case(GetParam(), {90, 70});
    if (setup.has_indices()) {
        return; // clipped and whole lines dither each in their own way
    }
    Test_Renderer renderer(setup);
    for (int seed = 0; seed < scaled(400); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        Call call = plain_line(setup, Shape::plane_line, {});
        call.kind = Call_Kind::gouraud;
        call.colors = {{10, 20, 200, 255}, {90, 255, 3, static_cast<std::uint8_t>(setup.alpha ? 128 : 255)}};
        while (call.points.size() < 2) {
            call.points.push_back(next_point(random, call.points, window_of(setup), 0));
        }
        const VT_DCI_Point a = call.points[0], b = call.points[1];
        const bool is_steep = a.x != b.x && std::abs(b.y - a.y) > std::abs(b.x - a.x);
        Call clipped = call;
        clipped.rendition = VT_Reference<VT_Rendition>(new VT_Rendition(*call.rendition));
        const VT_Int_Rectangle r = random_rectangle(random, window_of(setup));
        clipped.rendition->clip.hard_clip = r;
        for (const bool of_depth : {false, true}) {
            if (of_depth && !setup.depth) {
                continue;
            }
            const auto whole = drawn(renderer, call, of_depth), seen = drawn(renderer, clipped, of_depth);
            const std::uint32_t blank = of_depth ? 0xFFFF : 0x11;
            for (std::int32_t i = 0; i < setup.size.x * setup.size.y; ++i) {
                const std::int32_t x = i % setup.size.x, y = i / setup.size.x;
                const bool is_inside = x >= r.left && x <= r.right && y >= r.bottom && y <= r.top;
                const bool may_miss = is_steep && (x == r.left || x == r.right);
                const std::uint32_t pixel = seen[static_cast<std::size_t>(i)];
                ASSERT_TRUE(pixel == (is_inside ? whole[static_cast<std::size_t>(i)] : blank) || (may_miss && pixel == blank))
                    << "seed " << seed << " at " << x << ", " << y << '\n'
                    << describe(clipped);
            }
        }
    }
}

// Rectangles larger than the window, or empty. Guards are looked at when renderers go.
TEST_P(Lines, Never_leave_the_rectangle_or_the_buffers) {
    for (int seed = 0; seed < scaled(150); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        Renderer_Setup setup = setup_of_case(GetParam(), {random.number(1, 70), random.number(1, 50)});
        setup.origin = {random.number(-50, 50), random.number(-50, 50)};
        Call call = random_line(random, setup, Shape::plane_line);
        call.rendition->line.weight = 1;
        call.rendition->line.style = 0;
        VT_Int_Rectangle& r = call.rendition->clip.hard_clip;
        r = {setup.origin.x + random.number(-90, 60), setup.origin.x + random.number(10, 160),
             setup.origin.y + random.number(-90, 40), setup.origin.y + random.number(5, 140)};
        std::vector<std::uint32_t> first;
        for (const std::string& kernels : available_kernel_sets()) {
            Test_Renderer renderer(setup, kernels);
            const auto seen = drawn(renderer, call);
            first = first.empty() ? seen : first;
            ASSERT_EQ(seen, first) << kernels << ", seed " << seed << '\n' << describe(call);
        }
        for (std::int32_t i = 0; i < setup.size.x * setup.size.y; ++i) {
            const std::int32_t x = setup.origin.x + i % setup.size.x, y = setup.origin.y + i / setup.size.x;
            const bool is_inside = x >= r.left && x <= r.right && y >= r.bottom && y <= r.top;
            ASSERT_TRUE(is_inside || first[static_cast<std::size_t>(i)] == 0x11)
                << "seed " << seed << " at " << x << ", " << y << '\n'
                << describe(call);
        }
    }
}

// Device polylines that leave the window: inside it they have the pixels and depths that a larger window shows there.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

enum class Family { flat, colorized, gouraud };

void draw(VT_Renderer_Data& renderer, Family family, const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points,
          const std::vector<VT_RGB32>& colors) {
    const auto count = static_cast<std::int32_t>(points.size());
    switch (family) {
    case Family::flat:
        return VD_Draw_DCI_Polyline(renderer, rendition, count, points.data());
    case Family::colorized:
        return VD_Draw_DCI_Colorized_Polyline(renderer, rendition, count, points.data(), colors.data(), false);
    case Family::gouraud:
        return VD_Draw_DCI_Gouraud_Polyline(renderer, rendition, count, points.data(), colors.data());
    }
}

TEST(Lines_Anywhere, windows_show_what_a_larger_window_shows_there) {
    constexpr VT_Int_Pair large{320, 240}, small{64, 48}, origin{128, 96}; // a multiple of 8 keeps the dither where it is
    for (std::size_t c = 0; c < std::size(renderer_cases); ++c) {
        for (const Family family : {Family::flat, Family::colorized, Family::gouraud}) {
            for (const bool smoothed : {false, true}) {
                const Renderer_Setup part_setup = setup_of_case(c, small, origin);
                Test_Renderer whole(setup_of_case(c, large)), part(part_setup);
                Random random(c + 1);
                for (int round = 0; round < scaled(150); ++round) {
                    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
                    rendition->clip.hard_clip = {0, large.x - 1, 0, large.y - 1};
                    rendition->line.color = random_color(random);
                    rendition->line.index = random.byte();
                    rendition->line.flags = smoothed ? vorna::line_flag::smoothed : 0;
                    rendition->clip.depth_test = !smoothed;
                    std::vector<VT_DCI_Point> points;
                    for (int count = random.number(2, 6); count > 0; --count) {
                        points.push_back({random.number(0, large.x - 1), random.number(0, large.y - 1), random.number(0, 65535)});
                        if (points.size() > 1 && random.chance(25)) {
                            // Level and upright segments, also along the window's sides and just beside them.
                            const bool upright = random.chance(50);
                            const std::int32_t low = upright ? origin.x : origin.y, size = upright ? small.x : small.y;
                            const std::int32_t place = random.chance(50)
                                                           ? low + size / 2
                                                           : (random.chance(50) ? low : low + size - 1) + random.number(-1, 1);
                            for (std::size_t i = points.size() - 2; i < points.size(); ++i) {
                                (upright ? points[i].x : points[i].y) = place;
                            }
                        }
                    }
                    const std::vector<VT_RGB32> colors = random_colors(random, points.size());
                    draw(*whole, family, *rendition, points, colors);
                    draw(*part, family, *rendition, points, colors);
                }
                for (std::int32_t row = 0; row < small.y; ++row) {
                    for (std::int32_t column = 0; column < small.x; ++column) {
                        const std::int32_t x = origin.x + column, y = origin.y + row;
                        ASSERT_EQ(part.color().pixel(column, row), whole.color().pixel(x, y))
                            << describe(part_setup) << column << ' ' << row;
                        if (part.depth()) {
                            ASSERT_EQ(part.depth()->pixel(column, row), whole.depth()->pixel(x, y));
                        }
                    }
                }
            }
        }
    }
}

} // namespace

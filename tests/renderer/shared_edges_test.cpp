// Neighbouring triangles cover every pixel between them exactly once.
#include <gtest/gtest.h>

#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

constexpr VT_Int_Pair window_size{150, 110};
constexpr std::int32_t cell = 10;
constexpr std::int32_t columns = window_size.x / cell - 1;
constexpr std::int32_t rows = window_size.y / cell - 1;

// The corners of a grid; those inside lie anywhere near their place.
std::vector<std::vector<VT_DCI_Point>> jittered_grid(Random& random) {
    std::vector<std::vector<VT_DCI_Point>> grid;
    for (std::int32_t j = 0; j <= rows; ++j) {
        grid.emplace_back();
        for (std::int32_t i = 0; i <= columns; ++i) {
            const bool is_inside = i > 0 && i < columns && j > 0 && j < rows;
            const std::int32_t reach = is_inside ? 2 : 0; // far enough to fold nothing over
            grid.back().push_back(
                {i * cell + random.number(-reach, reach), j * cell + random.number(-reach, reach), random.number(0, 1000)});
        }
    }
    return grid;
}

// How often each touch of half white has been there: black, 128, 191, ...
std::int32_t touches(std::uint32_t word) {
    const int level = vorna::color_of(word).red;
    return level == 0 ? 0 : level == 128 ? 1 : 2;
}

} // namespace

TEST(Shared_edges, Are_drawn_exactly_once) {
    Random random(20261121);
    for (int i = 0; i < scaled(30); ++i) {
        const auto grid = jittered_grid(random);
        const Call_Kind kind = i % 2 == 0 ? Call_Kind::colorized : Call_Kind::gouraud;
        for (const std::string& kernels : available_kernel_sets()) {
            Renderer_Setup setup;
            setup.depth = false;
            setup.alpha = true;
            setup.size = window_size;
            Test_Renderer renderer(setup, kernels);
            const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
            for (std::size_t j = 0; j + 1 < grid.size(); ++j) {
                std::vector<VT_DCI_Point> strip;
                for (std::size_t k = 0; k < grid[j].size(); ++k) {
                    strip.push_back(grid[j][k]);
                    strip.push_back(grid[j + 1][k]);
                }
                const auto count = static_cast<std::int32_t>(strip.size());
                std::vector<VT_RGB32> colors(strip.size(), {255, 255, 255, 128});
                if (kind == Call_Kind::gouraud) {
                    for (std::size_t k = 0; k < colors.size(); k += 2) {
                        colors[k].blue = 0; // not nearly flat
                    }
                    VD_Draw_DCI_Gouraud_Polytriangle(*renderer, *rendition, count, strip.data(), colors.data());
                } else {
                    VD_Draw_DCI_Colorized_Polytriangle(*renderer, *rendition, count, strip.data(), colors.data(), false);
                }
            }
            for (std::int32_t row = 0; row < window_size.y; ++row) {
                for (std::int32_t column = 0; column < window_size.x; ++column) {
                    const bool is_covered = column < columns * cell && row < rows * cell;
                    ASSERT_EQ(touches(renderer.color().pixel(column, row)), is_covered ? 1 : 0)
                        << "mesh " << i << ", kernel set " << kernels << ", column " << column << ", row " << row;
                }
            }
        }
    }
}

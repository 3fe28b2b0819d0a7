// Attributes that the host's standard functions honour on the way to the slots.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/line_type.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

constexpr VT_RGB32 ink{30, 90, 200, 255};

VT_Reference<VT_Rendition> rendition_for(const Renderer_Setup& setup) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->set_color(ink);
    rendition->clip.hard_clip = window_of(setup);
    return rendition;
}

// What draw(renderer) leaves of noise; depths, all far at first, follow colours.
template <class Draw> std::vector<std::uint32_t> drawn_on_noise(const Renderer_Setup& setup, Draw draw) {
    Test_Renderer renderer(setup);
    for (std::int32_t i = 0; renderer.depth() && i < setup.size.x * setup.size.y; ++i) {
        renderer.depth()->set_pixel(i % setup.size.x, i / setup.size.x, 0xFFFF);
    }
    Random random(3);
    std::vector<std::uint32_t> pixels;
    for (const bool reads : {false, true}) {
        if (reads) {
            draw(renderer);
        }
        for (std::int32_t i = 0; i < setup.size.x * setup.size.y; ++i) {
            const std::int32_t x = i % setup.size.x, y = i / setup.size.x;
            const std::uint32_t noise = vorna::word_of(random_color(random));
            reads ? pixels.push_back(renderer.color().pixel(x, y))
                  : renderer.color().set_pixel(x, y, setup.has_indices() ? noise & 0xFF : noise);
        }
    }
    for (std::int32_t i = 0; renderer.depth() && i < setup.size.x * setup.size.y; ++i) {
        pixels.push_back(renderer.depth()->pixel(i % setup.size.x, i / setup.size.x));
    }
    return pixels;
}

VT_Reference<VT_Line_Type_Set> set_of(const VT_Reference<VT_Line_Type>& type) {
    VT_Reference<VT_Line_Type_Set> set(new VT_Line_Type_Set);
    set->types = {type};
    return set;
}

// A line of pixels as letters: '.' for 0, '#' for the ink, 'o' for others.
std::string sketch(Test_Renderer& renderer, const VT_Rendition& rendition, VT_DCI_Point to, VT_Int_Pair step) {
    const VT_DCI_Point points[] = {{2, 8, 0}, to};
    VD_Standard_Draw_2DI_Polyline(*renderer, rendition, 2, points);
    std::string seen;
    for (VT_Int_Pair at{8 * step.y, 8 * step.x}; at.x < 30 && at.y < 16; at.x += step.x, at.y += step.y) {
        const std::uint32_t pixel = renderer.color().pixel(at.x, at.y);
        seen += pixel == 0 ? '.' : pixel == vorna::word_of(ink) ? '#' : 'o';
    }
    return seen;
}

} // namespace

class Standard_Attributes : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Every_case, Standard_Attributes, testing::Range(std::size_t{0}, std::size(renderer_cases)));

// Dots have the attributes of lines, symbols those of markers.
TEST_P(Standard_Attributes, Symbols_have_the_markers_mode) {
    const Renderer_Setup setup = setup_of_case(GetParam(), {9, 9});
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup);
    rendition->line.mode = vorna::merge_drawing_mode;
    rendition->line.index = rendition->marker.index = 77;
    const auto dots = drawn_on_noise(setup, [&](Test_Renderer& renderer) {
        for (std::int32_t i = 0; i < 9; ++i) {
            const VT_DCI_Point point{3 + i % 3, 3 + i / 3, 0};
            VD_Draw_DCI_Dot(*renderer, *rendition, &point, nullptr);
        }
    });
    std::swap(rendition->line.mode, rendition->marker.mode);
    rendition->marker.symbol = vorna::marker_symbol::filled_square;
    rendition->marker.size = 3;
    EXPECT_EQ(drawn_on_noise(setup,
                             [&](Test_Renderer& renderer) {
                                 const VT_DCI_Point middle{4, 4, 0};
                                 VD_Draw_2DI_Polymarker(*renderer, *rendition, 1, &middle);
                             }),
              dots);
}

TEST_P(Standard_Attributes, Presentation_images_are_copied_and_never_blended) {
    const Renderer_Setup setup = setup_of_case(GetParam(), {20, 12}, {-3, 40});
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup);
    rendition->clip.hard_clip = {2, 16, 3, 11}; // columns and rows of the window
    const VT_Reference<VT_Shared_Image> image(
        new VT_Shared_Image(20, 12, Buffer_Format::presentation_rgb32, 80, nullptr, false, true));
    Random random(5);
    std::generate(image->row(0), image->row(0) + 12 * 80, [&] { return random.byte(); });
    const VT_DCI_Point start{4, 9, 0};
    const auto before = drawn_on_noise(setup, [](Test_Renderer&) {});
    rendition->drawing_flags = vorna::drawing_flag::translucent;
    const auto seen =
        drawn_on_noise(setup, [&](Test_Renderer& renderer) { VD_Draw_DCI_Image(*renderer, *rendition, &start, image.get()); });
    for (std::int32_t i = 0; i < 240; ++i) {
        const std::int32_t column = i % 20, row = i / 20;
        const std::uint8_t* at = image->row(row) + 4 * column;
        const VT_RGB32 pixel{at[0], at[1], at[2], at[3]};
        const bool is_drawn = column >= 4 && column <= 16 && row >= 3 && row <= 9;
        const std::uint32_t fresh =
            setup.has_indices() ? static_cast<std::uint32_t>(VT_Palette().closest_match(pixel, false)) : vorna::word_of(pixel);
        ASSERT_EQ(seen[static_cast<std::size_t>(i)], is_drawn ? fresh : before[static_cast<std::size_t>(i)])
            << column << ' ' << row;
    }
}

// Of the other pixel kind; the clip cuts off both ends.
TEST(Standard_Images, Have_the_depths_of_the_whole_image) {
    const Renderer_Setup setup = setup_of_case(4, {40, 4});
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup);
    rendition->clip.hard_clip = {5, 33, 0, 3};
    const VT_DCI_Point start{2, 1, 100}, end{38, 1, 100 + 36 * 50};
    const std::vector<std::uint8_t> indices(37, 7);
    const auto pixels = drawn_on_noise(setup, [&](Test_Renderer& renderer) {
        VD_Draw_DCI_Index8_Image(*renderer, *rendition, &start, &end, 37, indices.data());
    });
    for (std::uint32_t x = 0; x < 40; ++x) {
        ASSERT_EQ(pixels[160 + 40 + x], x < 5 || x > 33 ? 0xFFFF : 100 + 50 * (x - 2)) << x;
    }
}

// The renderer's textures with depth, the host's without.
TEST_P(Standard_Attributes, Texture_matrices_transform_parameters) {
    const Renderer_Setup setup = setup_of_case(GetParam(), {40, 30});
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup);
    const VT_Reference<VT_Shared_Image> image(new VT_Shared_Image(8, 4, Buffer_Format::rgb32, 32, nullptr, false, true));
    Random random(4);
    std::generate(image->row(0), image->row(0) + 128, [&] { return random.byte(); });
    const VT_DCI_Point points[] = {{1, 2, 0}, {38, 4, 9000}, {3, 27, 700}, {36, 29, 0}};
    const VT_RGB32 colors[] = {ink, {255, 255, 255, 200}, {99, 88, 77, 255}, {250, 240, 230, 128}};
    const VT_Parameter parameters[] = {0, 0, 1, 0.125F, 0.25F, 1, 0.875F, 0.75F};
    const float m[2][4] = {{0.5F, 0.25F, 9, 0.125F}, {-0.25F, 0.75F, 9, 0.25F}};
    VT_Parameter transformed[8];
    for (int i = 0; i < 8; ++i) {
        const float* row = m[i % 2];
        transformed[i] = row[0] * parameters[i / 2 * 2] + row[1] * parameters[i / 2 * 2 + 1] + row[3];
    }
    const auto draw_with = [&](const VT_Parameter* of_points, bool has_matrix) {
        const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
        material->texture = image;
        material->has_texture_matrix = has_matrix;
        for (int i = 0; i < 8; ++i) {
            material->texture_matrix.m[i / 4][i % 4] = m[i / 4][i % 4];
        }
        rendition->face.material = material;
        return drawn_on_noise(setup, [&](Test_Renderer& renderer) {
            VD_Draw_2DI_Textured_Polytriangle(*renderer, *rendition, 4, points, colors, of_points, 2, nullptr, nullptr);
        });
    };
    EXPECT_EQ(draw_with(parameters, true), draw_with(transformed, false));
}

// Opaque faces of one colour: rows, spans and depths by the renderer's rules.
TEST(Standard_Faces, Painted_by_the_host_look_as_the_renderers) {
    for (int seed = 0; seed < scaled(60); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const Renderer_Setup setup = setup_of_case(4, {40, 30}, {random.number(-60, 60), random.number(-60, 60)});
        const VT_Reference<VT_Rendition> rendition = rendition_for(setup);
        const std::int32_t width = random.number(1, 40);
        std::vector<VT_DCI_Point> points;
        for (std::int32_t i = random.number(3, 9); i > 0; --i) {
            points.push_back(
                {setup.origin.x + random.number(0, width), setup.origin.y + random.number(0, 30), random.number(0, 65535)});
        }
        const auto count = static_cast<std::int32_t>(points.size());
        const std::vector<VT_RGB32> colors(points.size(), ink);
        const auto draw_by = [&](auto& function) {
            return drawn_on_noise(setup, [&](Test_Renderer& renderer) {
                function(*renderer, *rendition, count, points.data(), colors.data(), false);
            });
        };
        ASSERT_EQ(draw_by(VD_Standard_Draw_DCI_Colorized_Polytriangle), draw_by(VD_Draw_DCI_Colorized_Polytriangle)) << seed;
    }
}

// Of a material without texture its colour remains, times the points' colour and rounded.
TEST(Standard_Faces, Have_their_materials_color) {
    const Renderer_Setup setup = setup_of_case(4, {9, 9});
    Test_Renderer renderer(setup);
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup);
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    rendition->face.material = material;
    const VT_DCI_Point points[] = {{0, 0, 0}, {9, 0, 0}, {0, 9, 0}, {9, 9, 0}};
    const VT_Parameter parameters[8] = {};
    Random random(9);
    for (int i = 0; i < 40; ++i) {
        const VT_RGB32 color{random.byte(), random.byte(), random.byte(), 255};
        material->color = {random.byte(), random.byte(), random.byte(), 255};
        const std::vector<VT_RGB32> colors(4, color);
        VD_Draw_DCI_Textured_Polytriangle(*renderer, *rendition, 4, points, colors.data(), parameters, 2, nullptr, nullptr);
        const auto product = [](int a, int b) { return static_cast<std::uint8_t>(std::lround(a * b / 255.0)); };
        ASSERT_EQ(vorna::color_of(renderer.color().pixel(4, 4)),
                  (VT_RGB32{product(color.blue, material->color.blue), product(color.green, material->color.green),
                            product(color.red, material->color.red), 255}));
    }
}

TEST(Standard_Line_Types, Measure_depth_and_have_casings) {
    const Renderer_Setup setup = setup_of_case(1, {32, 16});
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup);
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->lengths = {5, 5};
    type->kinds = {1, -1};
    rendition->line.line_types = set_of(type);
    rendition->line.weight = 3;
    Test_Renderer dashed(setup);
    EXPECT_EQ(sketch(dashed, *rendition, {26, 8, 18}, {1, 0}), "..####....####....####........") << "30 long over 24 columns";
    const VT_Reference<VT_Line_Type> casing(new VT_Line_Type);
    casing->kind = 7;
    casing->width = 1.75;
    casing->color = {1, 2, 3, 255};
    rendition->line.line_types = set_of(casing);
    rendition->line.weight = 1;
    Test_Renderer cased(setup);
    EXPECT_EQ(sketch(cased, *rendition, {26, 8, 0}, {0, 1}), "......oo#oo.....") << "2 * 1.75, cut off, and 2 more";
}

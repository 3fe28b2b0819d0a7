// The standard functions of faces, ellipses and images: what they draw, and that they honour what slots honour.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/model/model.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

constexpr VT_Int_Pair window_size{48, 40};
constexpr double full_turn = 6.283185307179586;

using Pixels = std::vector<std::uint32_t>;

Pixels pixels_of(const Guarded_Buffer& buffer) {
    Pixels result;
    for (std::int32_t row = 0; row < buffer.height; ++row) {
        for (std::int32_t column = 0; column < buffer.width; ++column) {
            result.push_back(buffer.pixel(column, row));
        }
    }
    return result;
}

VT_Reference<VT_Rendition> rendition_for(const Renderer_Setup& setup) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->set_color({200, 90, 30, 255});
    rendition->line.index = 77;
    rendition->clip.hard_clip = window_of(setup);
    return rendition;
}

VT_Reference<VT_Shared_Image> random_image(Random& random, std::int32_t width, std::int32_t height, Buffer_Format format) {
    const std::int32_t bytes = format == Buffer_Format::index8 ? 1 : 4;
    const VT_Reference<VT_Shared_Image> image(new VT_Shared_Image(width, height, format, bytes * width, nullptr, false, true));
    for (std::int32_t row = 0; row < height; ++row) {
        std::generate(image->row(row), image->row(row) + bytes * width, [&random] { return random.byte(); });
    }
    return image;
}

void set_texture(VT_Rendition& rendition, const VT_Reference<VT_Shared_Image>& image) {
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    material->texture = image;
    rendition.face.material = material;
}

struct Textured_Strip {
    std::vector<VT_DCI_Point> points;
    std::vector<VT_RGB32> colors;
    std::vector<VT_Parameter> parameters;

    Textured_Strip(Random& random, VT_Int_Pair origin) {
        for (std::int32_t i = 0; i < random.number(3, 8); ++i) {
            points.push_back({origin.x + random.number(0, window_size.x), origin.y + random.number(0, window_size.y),
                              random.number(0, 65535)});
            colors.push_back(random_color(random));
            parameters.push_back(static_cast<float>(random.number(-10, 110)) / 100);
            parameters.push_back(static_cast<float>(random.number(-10, 110)) / 100);
        }
    }
    // The 2DI form reaches beyond the window on all sides.
    void draw(Test_Renderer& renderer, const VT_Rendition& rendition, bool is_cut) const {
        const auto count = static_cast<std::int32_t>(points.size());
        std::vector<VT_DCI_Point> wide = points;
        for (VT_DCI_Point& point : wide) {
            point.x = 3 * point.x - 2 * points[0].x;
            point.y = 3 * point.y - 2 * points[0].y;
        }
        if (is_cut) {
            VD_Draw_2DI_Textured_Polytriangle(*renderer, rendition, count, wide.data(), colors.data(), parameters.data(), 2,
                                              nullptr, nullptr);
        } else {
            VD_Draw_DCI_Textured_Polytriangle(*renderer, rendition, count, points.data(), colors.data(), parameters.data(), 2,
                                              nullptr, nullptr);
        }
    }
};

} // namespace

class Standard_Shapes : public testing::TestWithParam<std::size_t> {
protected:
    static Renderer_Setup setup(VT_Int_Pair origin = {}) {
        Renderer_Setup setup = setup_of_case(GetParam(), window_size, origin);
        setup.use_mask = true;
        return setup;
    }
};

INSTANTIATE_TEST_SUITE_P(Every_case, Standard_Shapes, testing::Range(std::size_t{0}, std::size(renderer_cases)));

// A renderer that loses its depth buffer keeps its textured members, which then draw without depth.
TEST_P(Standard_Shapes, Textures_without_depth_buffer_look_as_the_renderers) {
    for (std::int32_t seed = 0; seed < scaled(60); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const Renderer_Setup without = setup({random.number(-60, 60), random.number(-60, 60)});
        if (without.depth) {
            return;
        }
        Renderer_Setup with = without;
        with.depth = true;
        const Textured_Strip strip(random, without.origin);
        const VT_Reference<VT_Rendition> rendition = rendition_for(without);
        set_texture(*rendition, random_image(random, 16, 8, Buffer_Format::rgb32));
        rendition->face.pattern = random.chance(60) ? vorna::face_pattern::solid : random.number(0, 73);
        rendition->face.flags = static_cast<std::uint32_t>(random.number(0, 3));
        rendition->face.contrast_color = random_color(random);
        if (random.chance(30)) {
            rendition->clip.complex_clip = random_region(random, without);
        }
        Test_Renderer fresh(without);
        Test_Renderer kept(with);
        kept->current_options.set_buffer_depth(0);
        kept->establish_all();
        fill_with_noise(fresh);
        fill_with_noise(kept);
        const bool is_cut = random.chance(60);
        if (is_cut) {
            rendition->clip.hard_clip.left += 11;
            rendition->clip.hard_clip.top -= 9;
        }
        strip.draw(fresh, *rendition, is_cut);
        strip.draw(kept, *rendition, is_cut);
        ASSERT_EQ(kept.take_handed_over().size(), 0U);
        ASSERT_EQ(pixels_of(fresh.color()), pixels_of(kept.color())) << "seed " << seed;
    }
}

// Sides that are no powers of two, and palette indices: padding and conversion leave every texel in its place.
TEST_P(Standard_Shapes, Textures_of_any_size_show_their_texels) {
    const Renderer_Setup of_case = setup({-7, 90});
    Random random(5);
    const VT_Reference<VT_Rendition> rendition = rendition_for(of_case);
    const VT_Reference<VT_Shared_Image> texture = random_image(random, 11, 6, Buffer_Format::index8);
    set_texture(*rendition, texture);
    const std::int32_t x = of_case.origin.x + 3;
    const std::int32_t y = of_case.origin.y + 4;
    const VT_DCI_Point points[] = {{x, y, 0}, {x + 22, y, 0}, {x, y + 12, 0}, {x + 22, y + 12, 0}};
    const std::vector<VT_RGB32> white(4, {255, 255, 255, 255});
    // Every pixel well inside its texel.
    const float u = 0.25F / 11;
    const float v = 0.25F / 6;
    const VT_Parameter parameters[] = {u, v, 1 + u, v, u, 1 + v, 1 + u, 1 + v};
    Test_Renderer renderer(of_case);
    VD_Draw_2DI_Textured_Polytriangle(*renderer, *rendition, 4, points, white.data(), parameters, 2, nullptr, nullptr);
    if (of_case.has_indices()) {
        return; // dithered
    }
    for (std::int32_t row = 0; row < window_size.y; ++row) {
        for (std::int32_t column = 0; column < window_size.x; ++column) {
            const bool is_inside = column >= 3 && column < 25 && row >= 4 && row < 16;
            const std::uint8_t index = is_inside ? texture->row(5 - (row - 4) / 2)[(column - 3) / 2] : std::uint8_t{0};
            const VT_RGB32 expected = is_inside ? VT_Palette().color(index) : VT_RGB32{0, 0, 0, 0};
            const VT_RGB32 drawn = vorna::color_of(renderer.color().pixel(column, row));
            // A full channel times a full colour lies one below, and so does the alpha it is blended with.
            ASSERT_TRUE(std::abs(drawn.red - expected.red) <= 2 && std::abs(drawn.green - expected.green) <= 2 &&
                        std::abs(drawn.blue - expected.blue) <= 2 && drawn.alpha == expected.alpha)
                << column << "," << row;
        }
    }
}

// A hatch draws pixels of its face only, every one of its line's, in every form; opaque gaps complete the face.
TEST_P(Standard_Shapes, Hatches_are_cells_of_their_face) {
    const Renderer_Setup of_case = setup({20, -15});
    const VT_Reference<VT_Rendition> solid = rendition_for(of_case);
    const VT_Point corners[] = {{22, -10, 5}, {90, -14, 5}, {60, 24, 5}, {45, 0, 5}, {25, 20, 5}};
    VT_DCI_Point whole[5];
    VT_Point_D transformed[5];
    for (int i = 0; i < 5; ++i) {
        whole[i] = {static_cast<std::int32_t>(corners[i].x), static_cast<std::int32_t>(corners[i].y), 5};
        transformed[i] = {corners[i].x, corners[i].y, 5};
    }
    const VT_RGB32 color{10, 250, 120, 255};
    const auto draw = [&](const VT_Rendition& rendition, int form) {
        Test_Renderer renderer(of_case);
        for (std::int32_t row = 0; renderer.depth() && row < window_size.y; ++row) {
            for (std::int32_t column = 0; column < window_size.x; ++column) {
                renderer.depth()->set_pixel(column, row, row < 20 ? 0xFFFF : 0);
            }
        }
        form == 0   ? VD_Draw_2D_Polygon(*renderer, rendition, 5, corners, nullptr)
        : form == 1 ? VD_Draw_2DI_Polygon(*renderer, rendition, 5, whole, &color)
        : form == 2 ? VD_Draw_3D_Polygon(*renderer, rendition, 5, transformed, nullptr)
                    : VD_Draw_3D_Colorized_Polytriangle(*renderer, rendition, 5, transformed, &color, true);
        return pixels_of(renderer.color());
    };
    for (int form = 0; form < 4; ++form) {
        const Pixels face = draw(*solid, form);
        for (const std::int32_t pattern : {75, 77, 80, 84, 92, 93, 1000000}) {
            VT_Rendition hatched(*solid);
            hatched.face.pattern = pattern;
            hatched.face.flags = vorna::face_flag::special_shading;
            const Pixels lines = draw(hatched, form);
            hatched.face.flags |= vorna::face_flag::inverted_pattern;
            const Pixels gaps = draw(hatched, form);
            std::size_t count = 0;
            for (std::size_t i = 0; i < face.size(); ++i) {
                ASSERT_TRUE((lines[i] == 0 ? gaps[i] : gaps[i] == 0 ? lines[i] : ~face[i]) == face[i]) << form << " " << pattern;
                count += lines[i] != 0;
            }
            EXPECT_GT(count, 0U) << form << " " << pattern;
        }
    }
}

// Against the equation of the curve: filled shapes hold every centre inside and none far outside, outlines lie within a pixel of
// it, symmetric about the centre, and the clip, the region and the depth are honoured.
TEST_P(Standard_Shapes, Ellipses_follow_their_curve) {
    for (std::int32_t seed = 0; seed < scaled(60); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const Renderer_Setup of_case = setup({random.number(-60, 60), random.number(-60, 60)});
        const VT_Reference<VT_Rendition> rendition = rendition_for(of_case);
        const VT_Int_Rectangle window = window_of(of_case);
        rendition->clip.hard_clip = {window.left + 2, window.right - 3, window.bottom + 1, window.top - 2};
        if (random.chance(40)) {
            rendition->clip.complex_clip = random_region(random, of_case);
        }
        const VT_DCI_Point center{random.number(0, 47), random.number(0, 39), 100};
        const VT_DCI_Point radii{random.number(3, 40), random.number(3, 40), 0};
        const double rotation = 0.1 + random.number(0, 620) / 100.0;
        const double start = random.number(0, 628) / 100.0;
        const double sweep = random.chance(40) ? full_turn : random.number(20, 600) / 100.0;
        Test_Renderer renderer(of_case);
        for (std::int32_t row = 0; renderer.depth() && row < window_size.y; ++row) {
            for (std::int32_t column = 0; column < window_size.x; ++column) {
                renderer.depth()->set_pixel(column, row, (row + column) % 7 < 5 ? 200 : 50);
            }
        }
        const VT_RGB32 color{255, 255, 255, 255};
        VD_Standard_Draw_DCI_Ellipse(*renderer, *rendition, &center, &radii, start, start + sweep, rotation, &color);
        for (std::int32_t row = 0; row < window_size.y; ++row) {
            for (std::int32_t column = 0; column < window_size.x; ++column) {
                const double dx = column - center.x;
                const double dy = row - center.y;
                const double u = (dx * std::cos(rotation) + dy * std::sin(rotation)) / radii.x;
                const double v = (dy * std::cos(rotation) - dx * std::sin(rotation)) / radii.y;
                const double beyond = std::fmod(std::atan2(v, u) - start + 2 * full_turn, full_turn);
                const bool is_shown =
                    column >= 2 && column < window_size.x - 3 && row >= 1 && row < window_size.y - 2 &&
                    (!rendition->clip.complex_clip ||
                     model::is_inside(*rendition->clip.complex_clip, window.left + column + 0.5L, window.bottom + row + 0.5L)) &&
                    (!of_case.depth || (row + column) % 7 < 5);
                const bool is_drawn = renderer.color().pixel(column, row) != 0;
                if (!is_shown) {
                    ASSERT_FALSE(is_drawn) << "seed " << seed << " " << column << "," << row;
                } else if (std::hypot(u, v) < 1 && (beyond < sweep || sweep == full_turn)) {
                    ASSERT_TRUE(is_drawn) << "seed " << seed << " " << column << "," << row;
                } else if (is_drawn) {
                    ASSERT_LT(std::hypot(u, v), 1 + 0.75 / std::min(radii.x, radii.y)) << "seed " << seed;
                    // Beside the radii only their own pixels.
                    const double aside = std::min(beyond - sweep, full_turn - beyond);
                    ASSERT_TRUE(sweep == full_turn || aside * std::hypot(dx, dy) < 2.0 * std::max(radii.x, radii.y) / 3)
                        << "seed " << seed;
                }
            }
        }
    }
}

// By one rule with region or without, turned or not, opaque or not, whatever may merge.
TEST_P(Standard_Shapes, Ellipses_combine_as_the_renderers_own) {
    for (int i = 0; i < 16 && renderer_cases[GetParam()].color_system == 1; ++i) {
        Renderer_Setup of_case = setup();
        of_case.force_merge = i & 1;
        Test_Renderer renderer(of_case);
        const VT_Reference<VT_Rendition> rendition = rendition_for(of_case);
        rendition->line.mode = rendition->face.mode = i & 2 ? vorna::merge_drawing_mode : 0;
        if (i & 4) {
            rendition->clip.complex_clip =
                new VT_Contour_Set(std::vector<VT_Contour_Set::Contour>{{{-9, -9, 0}, {99, -9, 0}, {99, 99, 0}, {-9, 99, 0}}});
        }
        const VT_RGB32 color{10, 200, 90, static_cast<std::uint8_t>(i & 8 ? 255 : 100)};
        const VT_DCI_Point center{20, 20, 0};
        const VT_DCI_Point radii{15, 9, 0};
        for (const bool is_arc : {false, true}) {
            fill_with_noise(renderer);
            const Pixels before = pixels_of(renderer.color());
            if (is_arc) {
                VD_Draw_DCI_Elliptical_Arc(*renderer, *rendition, &center, &radii, 0.5, 3.0, 0.3, &color);
            } else {
                VD_Draw_DCI_Ellipse(*renderer, *rendition, &center, &radii, 0.0, full_turn, 0.3, &color);
            }
            const Pixels after = pixels_of(renderer.color());
            std::size_t drawn = 0;
            for (std::size_t p = 0; p < before.size(); ++p) {
                const VT_RGB32 under = vorna::color_of(before[p]);
                const int weight = color.alpha == 255 ? 256 : color.alpha;
                const auto mix = [&](int from, int to) { return static_cast<std::uint8_t>(from + ((to - from) * weight >> 8)); };
                const std::uint32_t over =
                    vorna::word_of({mix(under.blue, color.blue), mix(under.green, color.green), mix(under.red, color.red), 255});
                ASSERT_TRUE(after[p] == before[p] || after[p] == over) << i << ", pixel " << p;
                drawn += after[p] == over;
            }
            EXPECT_GT(drawn, is_arc ? 20U : 300U) << i;
        }
    }
}

TEST_P(Standard_Shapes, Arcs_in_a_colour_keep_to_regions_and_types_at_every_width) {
    const Renderer_Setup of_case = setup();
    const VT_DCI_Point center{24, 20, 9};
    const VT_DCI_Point radii{14, 14, 0};
    const VT_RGB32 color{90, 90, 255, 255};
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->lengths = {5, 9};
    type->kinds = {1, -1};
    const VT_Reference<VT_Line_Type_Set> types(new VT_Line_Type_Set);
    types->types = {type};
    for (const std::int32_t weight : {1, 2, 6}) {
        std::size_t counts[2];
        for (const bool is_typed : {false, true}) {
            const VT_Reference<VT_Rendition> rendition = rendition_for(of_case);
            rendition->line.weight = weight;
            rendition->line.line_types = is_typed ? types : VT_Line_Type_Set::None;
            rendition->clip.complex_clip =
                new VT_Contour_Set(std::vector<VT_Contour_Set::Contour>{{{24, -9, 0}, {99, -9, 0}, {99, 99, 0}, {24, 99, 0}}});
            Test_Renderer renderer(of_case);
            rendition->window.rectangle = window_of(of_case);
            VD_Clear_Depth_Rectangle(*renderer, *rendition);
            VD_Draw_DCI_Elliptical_Arc(*renderer, *rendition, &center, &radii, 0.0, full_turn, 0.0, &color);
            const Pixels pixels = pixels_of(renderer.color());
            counts[is_typed] = 0;
            for (std::size_t i = 0; i < pixels.size(); ++i) {
                ASSERT_TRUE(pixels[i] == 0 || i % 48 >= 24) << "weight " << weight << ", pixel " << i;
                counts[is_typed] += pixels[i] != 0;
            }
        }
        EXPECT_LT(counts[1], counts[0] * 3 / 4) << weight;
        EXPECT_GT(counts[1], 0U);
    }
}

// Where the last dash meets the first as well.
TEST(Standard_Shape, Dashed_arcs_blend_every_pixel_once) {
    Renderer_Setup setup = setup_of_case(2, window_size);
    Test_Renderer renderer(setup);
    const VT_Reference<VT_Rendition> rendition = rendition_for(setup);
    rendition->line.color.alpha = 100;
    const VT_DCI_Point center{20, 20, 9};
    for (std::int32_t radius = 5; radius < 18; ++radius) {
        rendition->line.style = 1 + radius % 5;
        for (std::int32_t i = 0; i < window_size.x * window_size.y; ++i) {
            renderer.color().set_pixel(i % window_size.x, i / window_size.x, 0xFF000000);
        }
        const VT_DCI_Point radii{radius, radius, 0};
        VD_Draw_DCI_Elliptical_Arc(*renderer, *rendition, &center, &radii, 0.0, full_turn, 0.0, nullptr);
        const Pixels pixels = pixels_of(renderer.color());
        const std::uint32_t once = vorna::word_of({78, 35, 11, 255});
        EXPECT_THAT(pixels, testing::Each(testing::AnyOf(0xFF000000U, once))) << radius;
        EXPECT_THAT(pixels, testing::Contains(once));
    }
}

TEST_P(Standard_Shapes, Patterned_windows_store_their_colour) {
    for (const bool force_merge : {false, true}) {
        Renderer_Setup of_case = setup({7, -9});
        of_case.force_merge = force_merge;
        Test_Renderer renderer(of_case);
        const VT_Reference<VT_Rendition> rendition = rendition_for(of_case);
        rendition->window = {window_of(of_case), 0, {1, 2, 3, 100}, 55};
        for (const std::int32_t fill : {64, 20, 75}) {
            rendition->window.fill = fill;
            fill_with_noise(renderer);
            const Pixels before = pixels_of(renderer.color());
            VD_Draw_Window(*renderer, *rendition);
            const Pixels after = pixels_of(renderer.color());
            const std::uint32_t stored = of_case.has_indices() ? 55 : vorna::word_of(rendition->window.color);
            std::size_t drawn = 0;
            for (std::size_t i = 0; i < after.size(); ++i) {
                ASSERT_TRUE(after[i] == stored || (fill != 64 && after[i] == before[i])) << fill << ", pixel " << i;
                drawn += after[i] == stored;
            }
            EXPECT_GE(drawn, after.size() / 8);
        }
    }
}

// Standard functions of strips that their slots could have drawn.
TEST_P(Standard_Shapes, Faces_combine_as_those_of_slots) {
    for (int seed = 0; seed < scaled(100); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        Renderer_Setup of_case = setup({random.number(-60, 60), random.number(-60, 60)});
        of_case.force_merge = random.chance(30);
        const VT_Reference<VT_Rendition> rendition = rendition_for(of_case);
        rendition->set_color(random_color(random));
        rendition->set_contrast_color(random_color(random));
        rendition->face.mode = random.chance(30) ? vorna::merge_drawing_mode : 0;
        rendition->face.pattern = random.chance(60) ? vorna::face_pattern::solid : random.number(0, 73);
        rendition->face.flags =
            (random.chance(30) ? vorna::face_flag::opaque_pattern : 0) | (random.chance(40) ? vorna::face_flag::translucent : 0);
        rendition->clip.depth_test = random.chance(80);
        const Textured_Strip strip(random, of_case.origin);
        const auto count = static_cast<std::int32_t>(strip.points.size());
        const auto picture = [&](bool is_standard, bool is_colorized) {
            Test_Renderer renderer(of_case);
            fill_with_noise(renderer);
            if (is_colorized) {
                (is_standard ? VD_Standard_Draw_DCI_Colorized_Polytriangle
                             : renderer->actions.draw_dci_colorized_polytriangle.function)(
                    *renderer, *rendition, count, strip.points.data(), strip.colors.data(), false);
            } else {
                (is_standard ? VD_Standard_Draw_DCI_Polytriangle : renderer->actions.draw_dci_polytriangle.function)(
                    *renderer, *rendition, count, strip.points.data());
            }
            return std::pair(pixels_of(renderer.color()), renderer.depth() ? pixels_of(*renderer.depth()) : Pixels());
        };
        for (const bool is_colorized : {false, true}) {
            ASSERT_EQ(picture(true, is_colorized), picture(false, is_colorized)) << "seed " << seed << ' ' << is_colorized;
        }
    }
}

TEST_P(Standard_Shapes, Images_of_the_other_kind_go_through_the_palette) {
    const Renderer_Setup of_case = setup({30, -8});
    const VT_Reference<VT_Rendition> rendition = rendition_for(of_case);
    const VT_Int_Rectangle window = window_of(of_case);
    rendition->clip.hard_clip.left += 5;
    Random random(3);
    const Buffer_Format other = of_case.has_indices() ? Buffer_Format::rgb32 : Buffer_Format::index8;
    const VT_Reference<VT_Shared_Image> image = random_image(random, 60, 9, other);
    const VT_DCI_Point start{window.left + 2, window.top - 1, 0}; // hangs over the right side, and over the clip's left one
    Test_Renderer renderer(of_case);
    VD_Draw_DCI_Image(*renderer, *rendition, &start, image.get());
    const VT_Palette palette;
    for (std::int32_t row = 0; row < window_size.y; ++row) {
        for (std::int32_t column = 0; column < window_size.x; ++column) {
            const std::int32_t source_row = row - (window_size.y - 10);
            std::uint32_t expected = 0;
            if (column >= 5 && source_row >= 0 && source_row < 9) {
                const std::uint8_t* source = image->row(source_row);
                const std::int32_t at = column - 2;
                expected = of_case.has_indices() ? static_cast<std::uint32_t>(palette.closest_match(
                                                       {source[4 * at], source[4 * at + 1], source[4 * at + 2], 255}, false))
                                                 : vorna::word_of(palette.color(source[at]));
            }
            ASSERT_EQ(renderer.color().pixel(column, row), expected) << column << "," << row;
        }
    }
}

// Nothing calls itself without end when every slot holds the standard function.
TEST(Standard_Functions, Come_to_an_end_without_a_renderer) {
    VT_Renderer_Data renderer;
    renderer.current_options.set_window_size({8, 8});
    renderer.set_standard_actions(true);
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = {0, 7, 0, 7};
    const VT_Point_D points[] = {{0, 0, 0}, {7, 0, 0}, {0, 7, 0}, {7, 7, 0}};
    const VT_RGB32 colors[4];
    const VT_Parameter parameters[8] = {};
    const VT_DCI_Point center{3, 3, 0};
    for (const std::int32_t pattern : {64, 75}) {
        rendition->face.pattern = pattern;
        for (const std::int32_t system : {0, 1}) {
            renderer.current_options.set_color_system(system);
            VD_Draw_3D_Polytriangle(renderer, *rendition, 4, points);
            VD_Draw_3D_Textured_Polytriangle(renderer, *rendition, 4, points, colors, parameters, 2, nullptr, nullptr);
            VD_Draw_3D_Polygon(renderer, *rendition, 4, points, nullptr);
            VD_Draw_DCI_Ellipse(renderer, *rendition, &center, &center, 0.0, 1.0, 0.0, nullptr);
            VD_Draw_DCI_Index8_Image(renderer, *rendition, &center, &center, 1, nullptr);
            VD_Draw_DCI_RGB32_Image(renderer, *rendition, &center, &center, 4, nullptr, 0, nullptr);
        }
    }
    EXPECT_EQ(renderer.standard_depth, 0);
}

// Clip regions and clip rectangles: what lies inside is drawn as without them, everything else stays as it was.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "tests/support/model/model.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

constexpr VT_Int_Pair window_size{71, 53};
constexpr std::int32_t seeds = 40;

enum class Shading { flat, colorized, gouraud, textured };
constexpr Shading shadings[] = {Shading::flat, Shading::colorized, Shading::gouraud, Shading::textured};

Renderer_Setup setup_of(std::size_t renderer_case, VT_Int_Pair origin) {
    Renderer_Setup setup = setup_of_case(renderer_case, window_size, origin);
    setup.use_mask = true;
    return setup;
}

// A strip whose points lie within reach of the window's edges.
struct Strip {
    std::vector<VT_DCI_Point> points;
    std::vector<VT_RGB32> colors;
    std::vector<VT_Parameter> parameters;

    Strip(Random& random, VT_Int_Pair origin, std::int32_t reach) {
        const std::int32_t count = random.number(3, 12);
        for (std::int32_t i = 0; i < count; ++i) {
            points.push_back({origin.x + random.number(-reach, window_size.x - 1 + reach),
                              origin.y + random.number(-reach, window_size.y - 1 + reach), random.number(0, 65535)});
            colors.push_back(random_color(random));
            parameters.push_back(static_cast<float>(random.number(0, 1000)) / 1000.0F);
            parameters.push_back(static_cast<float>(random.number(0, 1000)) / 1000.0F);
        }
    }
    // Triangle k alone.
    Strip part(std::ptrdiff_t k) const {
        Strip triangle(*this);
        triangle.points = {points.begin() + k, points.begin() + k + 3};
        triangle.colors = {colors.begin() + k, colors.begin() + k + 3};
        triangle.parameters = {parameters.begin() + 2 * k, parameters.begin() + 2 * k + 6};
        return triangle;
    }
    std::int32_t count() const { return static_cast<std::int32_t>(points.size()); }
};

enum class Form { device, plane, tiled };

void draw(Test_Renderer& renderer, const VT_Rendition& rendition, Shading shading, const Strip& strip, Form form) {
    const VT_DCI_Point* points = strip.points.data();
    const VT_RGB32* colors = strip.colors.data();
    std::vector<VT_Point_D> in_space;
    for (const VT_DCI_Point& point : strip.points) {
        in_space.push_back({double(point.x), double(point.y), double(point.z)});
    }
    const auto call = [&](auto& on_device, auto& plane, auto& space, auto... more) {
        form == Form::device  ? on_device(*renderer, rendition, strip.count(), points, more...)
        : form == Form::plane ? plane(*renderer, rendition, strip.count(), points, more...)
                              : space(*renderer, rendition, strip.count(), in_space.data(), more...);
    };
    switch (shading) {
    case Shading::flat:
        return call(VD_Draw_DCI_Polytriangle, VD_Draw_2DI_Polytriangle, VD_Draw_3D_Polytriangle);
    case Shading::colorized:
        return call(VD_Draw_DCI_Colorized_Polytriangle, VD_Draw_2DI_Colorized_Polytriangle, VD_Draw_3D_Colorized_Polytriangle,
                    colors, false);
    case Shading::gouraud:
        return call(VD_Draw_DCI_Gouraud_Polytriangle, VD_Draw_2DI_Gouraud_Polytriangle, VD_Draw_3D_Gouraud_Polytriangle, colors);
    case Shading::textured:
        return call(VD_Draw_DCI_Textured_Polytriangle, VD_Draw_2DI_Textured_Polytriangle, VD_Draw_3D_Textured_Polytriangle,
                    colors, strip.parameters.data(), 2, nullptr, nullptr);
    }
}

VT_Reference<VT_Rendition> random_rendition(Random& random, const Renderer_Setup& setup) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->face = random_face(random);
    rendition->clip.hard_clip = window_of(setup);
    return rendition;
}

struct Contents {
    std::vector<std::uint32_t> colors, depths;

    explicit Contents(Test_Renderer& renderer) {
        for (std::int32_t row = 0; row < window_size.y; ++row) {
            for (std::int32_t column = 0; column < window_size.x; ++column) {
                colors.push_back(renderer.color().pixel(column, row));
                depths.push_back(renderer.depth() ? renderer.depth()->pixel(column, row) : 0);
            }
        }
    }
};

} // namespace

class Regions : public testing::TestWithParam<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(Every_case, Regions, testing::Range(std::size_t{0}, std::size(renderer_cases)));

TEST_P(Regions, Masked_strips_are_open_strips_less_the_mask) {
    for (std::int32_t seed = 0; seed < scaled(seeds); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const VT_Int_Pair origin{random.number(-50, 50), random.number(-50, 50)};
        const Renderer_Setup setup = setup_of(GetParam(), origin);
        const Shading shading = random.one_of(shadings);
        // Flat and colorized strips with depth and alpha are drawn through the holes: that member has no masked sibling.
        const bool knows_mask =
            !(setup.depth && setup.alpha && !setup.has_indices()) || shading == Shading::gouraud || shading == Shading::textured;
        if ((shading == Shading::textured && !setup.depth) || !knows_mask) {
            continue;
        }
        const Strip strip(random, origin, 0);
        const VT_Reference<VT_Rendition> open = random_rendition(random, setup);
        const VT_Reference<VT_Rendition> clipped(static_cast<VT_Rendition*>(open->clone()));
        clipped->clip.complex_clip = random_region(random, setup);
        // Tiles have coordinates of their own, and the region moves into them as the strip does.
        const Form form = random.chance(50) ? Form::device : Form::tiled;
        const VT_Int_Pair offset{random.number(-3, 3), random.number(-3, 3)};
        clipped->clip.window_offset = offset;
        const VT_Int_Pair shift = offset.x < 0 || offset.y < 0 ? offset : VT_Int_Pair{};
        for (const std::string& kernels : available_kernel_sets()) {
            Test_Renderer renderer(setup, kernels);
            renderer->current_table.find("Enable Tiling")->set(form == Form::tiled);
            renderer->establish_all();
            fill_with_noise(renderer);
            const Contents before(renderer);
            draw(renderer, *open, shading, strip, form);
            const Contents whole(renderer);
            fill_with_noise(renderer);
            draw(renderer, *clipped, shading, strip, form);
            const Contents masked(renderer);
            std::size_t i = 0;
            for (std::int32_t row = 0; row < window_size.y; ++row) {
                for (std::int32_t column = 0; column < window_size.x; ++column, ++i) {
                    const bool is_open = model::is_inside(*clipped->clip.complex_clip, origin.x + column - shift.x + 0.5L,
                                                          origin.y + row - shift.y + 0.5L);
                    const Contents& expected = is_open ? whole : before;
                    ASSERT_TRUE(masked.colors[i] == expected.colors[i] && masked.depths[i] == expected.depths[i])
                        << kernels << " seed " << seed << " column " << column << " row " << row;
                }
            }
        }
    }
}

TEST_P(Regions, Strips_inside_the_rectangle_are_drawn_as_device_strips) {
    for (std::int32_t seed = 0; seed < scaled(seeds); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const VT_Int_Pair origin{random.number(-50, 50), random.number(-50, 50)};
        const Renderer_Setup setup = setup_of(GetParam(), origin);
        const Shading shading = random.one_of(shadings);
        const Strip strip(random, origin, 0);
        const VT_Reference<VT_Rendition> rendition = random_rendition(random, setup);
        Test_Renderer renderer(setup);
        fill_with_noise(renderer);
        draw(renderer, *rendition, shading, strip, Form::device);
        const Contents device(renderer);
        fill_with_noise(renderer);
        draw(renderer, *rendition, shading, strip, Form::plane);
        const Contents plane(renderer);
        ASSERT_EQ(plane.colors, device.colors) << "seed " << seed;
        ASSERT_EQ(plane.depths, device.depths) << "seed " << seed;
    }
}

// Points beyond what tiles hold are cut off each triangle by itself, which keeps its colours and parameters.
TEST_P(Regions, Strips_far_beyond_the_tile_are_their_triangles) {
    for (std::int32_t seed = 0; seed < scaled(seeds); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const VT_Int_Pair origin{random.number(-50, 50), random.number(-50, 50)};
        const Renderer_Setup setup = setup_of(GetParam(), origin);
        const Shading shading = random.one_of(shadings);
        Strip strip(random, origin, 2'000'000'000);
        for (VT_DCI_Point& point : strip.points) {
            point = random.chance(40) ? Strip(random, origin, 0).points[0] : point;
        }
        const VT_Reference<VT_Rendition> rendition = random_rendition(random, setup);
        Test_Renderer renderer(setup);
        renderer->current_table.find("Enable Tiling")->set(true);
        renderer->establish_all();
        fill_with_noise(renderer);
        draw(renderer, *rendition, shading, strip, Form::tiled);
        const Contents whole(renderer);
        fill_with_noise(renderer);
        for (std::int32_t k = 0; k + 2 < strip.count(); ++k) {
            draw(renderer, *rendition, shading, strip.part(k), Form::tiled);
        }
        const Contents parts(renderer);
        ASSERT_EQ(whole.colors, parts.colors) << "seed " << seed;
        ASSERT_EQ(whole.depths, parts.depths) << "seed " << seed;
    }
}

// Far points as well: nothing outside the rectangle changes, and neither do the guards around the buffers.
TEST_P(Regions, Strips_across_the_rectangle_stay_within_it) {
    constexpr std::int32_t reaches[] = {3, 40, 3000, 100000, 1'000'000'000};
    for (std::int32_t seed = 0; seed < scaled(4 * seeds); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const VT_Int_Pair origin{random.number(-50, 50), random.number(-50, 50)};
        const Renderer_Setup setup = setup_of(GetParam(), origin);
        const Shading shading = random.one_of(shadings);
        const Strip strip(random, origin, random.one_of(reaches));
        const VT_Reference<VT_Rendition> rendition = random_rendition(random, setup);
        // Now and then larger than the window, or empty.
        VT_Int_Rectangle& clip = rendition->clip.hard_clip;
        clip = {origin.x + random.number(-9, 40), origin.x + random.number(20, 90), origin.y + random.number(-9, 30),
                origin.y + random.number(15, 70)};
        Test_Renderer renderer(setup);
        fill_with_noise(renderer);
        const Contents before(renderer);
        draw(renderer, *rendition, shading, strip, Form::plane);
        const Contents after(renderer);
        std::size_t i = 0;
        for (std::int32_t row = 0; row < window_size.y; ++row) {
            for (std::int32_t column = 0; column < window_size.x; ++column, ++i) {
                ASSERT_TRUE(vorna::contains(clip, origin.x + column, origin.y + row) ||
                            (after.colors[i] == before.colors[i] && after.depths[i] == before.depths[i]))
                    << "seed " << seed << " column " << column << " row " << row;
            }
        }
    }
}

// Slivers that just miss a corner of the rectangle once left the long way round and painted all of it.
TEST_P(Regions, Triangles_without_area_paint_nothing) {
    const Renderer_Setup setup = setup_of(GetParam(), {});
    Test_Renderer renderer(setup);
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = {0, window_size.x - 1, 0, window_size.y - 1};
    const Contents before(renderer);
    const VT_DCI_Point sliver[] = {{591299, 979664, 0}, {-599775, -993934, 0}, {-4238, -7135, 0}};
    const VT_RGB32 color{255, 255, 255, 255};
    VD_Draw_2DI_Colorized_Polytriangle(*renderer, *rendition, 3, sliver, &color, true);
    const VT_DCI_Point corner_miss[] = {{1549127, 1497199, 0}, {664261, 641921, 0}, {-221562, -214282, 0}};
    VD_Draw_2DI_Colorized_Polytriangle(*renderer, *rendition, 3, corner_miss, &color, true);
    EXPECT_EQ(Contents(renderer).colors, before.colors);
}

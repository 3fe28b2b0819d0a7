// Images without depth: every pixel follows the copy or blend rule, whatever the width, the place and the mask.
#include <cstring>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "tests/properties/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

std::uint32_t blended(std::uint32_t stored, VT_RGB32 source) {
    const VT_RGB32 old = vorna::color_of(stored);
    const auto channel = [&source](int from, int to) {
        return static_cast<std::uint8_t>((to * source.alpha + from * (255 - source.alpha)) / 255);
    };
    if (source.alpha == 0) {
        return stored;
    }
    return vorna::word_of({channel(old.blue, source.blue), channel(old.green, source.green), channel(old.red, source.red), 255});
}

} // namespace

// The source is exactly as long as the image, so that a sanitizer sees reads beyond it. A null source is all zeros.
TEST(Images, Follow_their_rule_at_every_width_and_place) {
    constexpr std::int32_t width = 83, height = 4;
    for (int seed = 0; seed < scaled(300); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        Renderer_Setup setup;
        setup.depth = false;
        setup.color_system = random.number(0, 1);
        setup.size = {width, height};
        setup.origin = {random.number(-9, 9), random.number(-9, 9)};
        setup.color_layout = {random.number(0, 64), random.number(0, 9)};
        const bool blends = random.chance(60), masked = random.chance(50), empty = random.chance(5);
        const std::int32_t first = random.number(0, width - 1), last = random.number(first, width - 1);
        const std::int32_t hole_begin = random.number(0, width - 1), hole_end = hole_begin + random.number(1, 40);
        const std::size_t count = static_cast<std::size_t>(last - first) + 1;
        const auto bytes = count * (setup.has_indices() ? 1 : 4);
        const auto source = std::make_unique<std::uint8_t[]>(bytes);
        std::vector<VT_RGB32> pixels(count);
        for (VT_RGB32& pixel : pixels) {
            pixel = empty ? VT_RGB32{0, 0, 0, 0} : random_color(random);
        }
        for (std::size_t i = 0; i < count; ++i) {
            if (setup.has_indices()) {
                source[i] = pixels[i].blue;
            } else {
                std::memcpy(source.get() + 4 * i, &pixels[i], 4);
            }
        }
        const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
        rendition->drawing_flags = blends ? vorna::drawing_flag::translucent : 0;
        if (masked) {
            const auto x = [&](std::int32_t column) { return static_cast<float>(setup.origin.x + column); };
            const float bottom = -50, top = 50;
            rendition->clip.complex_clip = VT_Reference<const VT_Contour_Set>(new VT_Contour_Set(
                {{{x(-1), bottom, 0}, {x(width), bottom, 0}, {x(width), top, 0}, {x(-1), top, 0}},
                 {{x(hole_begin), bottom, 0}, {x(hole_end), bottom, 0}, {x(hole_end), top, 0}, {x(hole_begin), top, 0}}}));
        }
        const std::uint32_t stored = vorna::word_of(random_color(random)) & (setup.has_indices() ? 0xFFU : 0xFFFFFFFFU);
        for (const std::string& kernels : available_kernel_sets()) {
            Test_Renderer renderer(setup, kernels);
            renderer->requested_table.find("Use Mask")->set(true);
            renderer->establish_all();
            for (std::int32_t column = 0; column < width; ++column) {
                renderer.color().set_pixel(column, 2, stored);
            }
            const VT_DCI_Point start{setup.origin.x + first, setup.origin.y + 2, 0};
            const VT_DCI_Point end{setup.origin.x + last, setup.origin.y + 2, 0};
            const std::uint8_t* from = empty ? nullptr : source.get();
            if (setup.has_indices()) {
                VD_Draw_DCI_Index8_Image(*renderer, *rendition, &start, &end, 0, from);
            } else {
                VD_Draw_DCI_RGB32_Image(*renderer, *rendition, &start, &end, 0, reinterpret_cast<const VT_RGB32*>(from), 0,
                                        nullptr);
            }
            for (std::int32_t column = 0; column < width; ++column) {
                const bool drawn = column >= first && column <= last && !(masked && column >= hole_begin && column < hole_end);
                const VT_RGB32 pixel = drawn ? pixels[static_cast<std::size_t>(column - first)] : VT_RGB32{};
                const std::uint32_t fresh = setup.has_indices() ? pixel.blue
                                            : blends            ? blended(stored, pixel)
                                                                : vorna::word_of(pixel);
                ASSERT_EQ(renderer.color().pixel(column, 2), drawn ? fresh : stored)
                    << kernels << " seed " << seed << " column " << column << ", drawn " << first << " to " << last;
            }
        }
    }
}

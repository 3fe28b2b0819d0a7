// Images: every pixel follows the copy, blend or depth rule, whatever the width, the place and the mask.
#include <cstring>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/model/fixed_point.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

constexpr std::int32_t width = 83, height = 5;

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

// One drawing of an image: where it lies, in columns and rows of the window, and by what rules.
struct Drawing {
    Renderer_Setup setup;
    bool blends, masked, empty, depth_switch;
    std::int32_t first, last, top, bottom; // the last column may lie beyond the window
    std::int32_t from_z, to_z;
    std::int32_t hole_begin, hole_end; // columns that the mask takes away
    std::int32_t stride;               // pixels from row to row of the source
    std::vector<VT_RGB32> pixels;      // the source up to its last visible pixel
    std::uint32_t stored;
    std::uint32_t stored_depth;

    explicit Drawing(Random& random) {
        setup.depth = random.chance(50);
        setup.color_system = random.number(0, 1);
        setup.size = {width, height};
        setup.origin = {random.number(-9, 9), random.number(-9, 9)};
        const std::int32_t unit = setup.has_indices() ? 1 : 4;
        setup.color_layout = {random.number(0, 64 / unit) * unit, random.number(0, 9) * unit};
        setup.use_mask = true;
        blends = random.chance(60);
        masked = random.chance(50);
        empty = random.chance(5);
        depth_switch = random.chance(90);
        first = random.number(0, width - 1);
        last = random.number(first, random.chance(30) ? width + 40 : width - 1);
        top = random.number(0, height - 1);
        bottom = random.number(0, top);
        from_z = random.number(0, 65535);
        to_z = random.chance(50) ? from_z : random.number(0, 65535);
        hole_begin = random.number(0, width - 1);
        hole_end = hole_begin + random.number(1, 40);
        stride = last - first + 1 + random.number(0, 3);
        for (std::int32_t i = (top - bottom) * stride + visible(); i > 0; --i) {
            pixels.push_back(empty ? VT_RGB32{0, 0, 0, 0} : random_color(random));
        }
        stored = vorna::word_of(random_color(random)) & (setup.has_indices() ? 0xFFU : 0xFFFFFFFFU);
        stored_depth = static_cast<std::uint32_t>(random.chance(50) ? from_z : random.number(0, 65535));
    }

    // Columns that lie in the window.
    std::int32_t visible() const { return std::min(last, width - 1) - first + 1; }

    VT_Reference<const VT_Rendition> rendition() const {
        VT_Reference<VT_Rendition> rendition(new VT_Rendition);
        rendition->drawing_flags = blends ? vorna::drawing_flag::translucent : 0;
        rendition->clip.depth_test = depth_switch;
        if (masked) {
            const auto x = [&](std::int32_t column) { return static_cast<float>(setup.origin.x + column); };
            const auto box = [&](std::int32_t left, std::int32_t right) -> VT_Contour_Set::Contour {
                return {{x(left), -50, 0}, {x(right), -50, 0}, {x(right), 50, 0}, {x(left), 50, 0}};
            };
            rendition->clip.complex_clip =
                VT_Reference<const VT_Contour_Set>(new VT_Contour_Set({box(-1, width), box(hole_begin, hole_end)}));
        }
        return rendition;
    }

    // The source is exactly as long as what is visible of it, so that a sanitizer sees reads beyond it.
    void draw(Test_Renderer& renderer) const {
        const std::size_t pixel_bytes = setup.has_indices() ? 1 : 4;
        const auto source = std::make_unique<std::uint8_t[]>(pixels.size() * pixel_bytes);
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            std::memcpy(&source[i * pixel_bytes], &pixels[i], pixel_bytes);
        }
        const VT_DCI_Point start{setup.origin.x + first, setup.origin.y + top, from_z};
        const VT_DCI_Point end{setup.origin.x + last, setup.origin.y + bottom, to_z};
        const std::uint8_t* from = empty ? nullptr : source.get();
        const std::int32_t row_bytes = stride * static_cast<std::int32_t>(pixel_bytes);
        if (setup.has_indices()) {
            VD_Draw_DCI_Index8_Image(*renderer, *rendition(), &start, &end, row_bytes, from);
        } else {
            VD_Draw_DCI_RGB32_Image(*renderer, *rendition(), &start, &end, row_bytes, reinterpret_cast<const VT_RGB32*>(from), 0,
                                    nullptr);
        }
    }
};

} // namespace

// A null source is all zeros. Depths move on by the whole image's step, from the end of what is visible of a row to the next one.
TEST(Images, Follow_their_rule_at_every_width_and_place) {
    for (int seed = 0; seed < scaled(400); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const Drawing drawing(random);
        const bool tests_depth = drawing.setup.depth && drawing.depth_switch;
        const model::Steps depths =
            model::steps_between(drawing.from_z, drawing.to_z, drawing.last - drawing.first, model::depth_bits);
        for (const std::string& kernels : available_kernel_sets()) {
            Test_Renderer renderer(drawing.setup, kernels);
            for (std::int32_t i = 0; i < width * height; ++i) {
                renderer.color().set_pixel(i % width, i / width, drawing.stored);
                if (renderer.depth()) {
                    renderer.depth()->set_pixel(i % width, i / width, drawing.stored_depth);
                }
            }
            drawing.draw(renderer);
            for (std::int32_t i = 0; i < width * height; ++i) {
                const std::int32_t column = i % width, row = i / width;
                const std::int32_t x = column - drawing.first, y = drawing.top - row;
                bool drawn = x >= 0 && column <= drawing.last && y >= 0 && row >= drawing.bottom &&
                             !(drawing.masked && column >= drawing.hole_begin && column < drawing.hole_end);
                const VT_RGB32 pixel = drawn ? drawing.pixels[static_cast<std::size_t>(y * drawing.stride + x)] : VT_RGB32{};
                const bool blends = drawing.blends && !drawing.setup.has_indices();
                drawn = drawn && !(blends && pixel.alpha == 0);
                std::uint32_t depth = drawing.stored_depth;
                if (drawn && tests_depth) {
                    const auto candidate = static_cast<std::uint32_t>(
                        model::low_16(model::whole(depths.at(y * (drawing.visible() - 1) + x), model::depth_bits)));
                    drawn = candidate <= depth;
                    depth = drawn ? candidate : depth;
                }
                const std::uint32_t fresh = drawing.setup.has_indices() ? pixel.blue
                                            : blends                    ? blended(drawing.stored, pixel)
                                                                        : vorna::word_of(pixel);
                ASSERT_TRUE(renderer.color().pixel(column, row) == (drawn ? fresh : drawing.stored) &&
                            (!renderer.depth() || renderer.depth()->pixel(column, row) == depth))
                    << kernels << " seed " << seed << " column " << column << ", row " << row << ", drawn " << drawing.first
                    << " to " << drawing.last << ", depth test " << tests_depth;
            }
        }
    }
}

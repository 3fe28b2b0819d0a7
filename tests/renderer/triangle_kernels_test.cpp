// Triangle kernels by themselves: every instruction set writes the same bytes, and a scissor rectangle cuts exactly.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "renderer/configuration_words.h"
#include "renderer/kernels/kernel_sets.h"
#include "renderer/kernels/pixel_formats.h"
#include "renderer/triangles/triangle_kernels.h"
#include "tests/support/random_rules.h"

namespace {

using krb::Triangle_Configuration;

// Buffers of one drawing, filled with noise. Rows start at odd places, and what lies between them must never change. All drawings
// go to the same memory, since the dither phase follows addresses.
struct Canvas {
    static constexpr std::int32_t width = 61, height = 40, guard = 96;
    static constexpr std::int32_t color_stride = width * 4 + guard, depth_stride = width * 2 + guard;

    using Bytes = std::vector<std::uint8_t>;

    explicit Canvas(std::uint32_t seed) {
        std::mt19937 random(seed);
        for (Bytes* bytes : {&color(), &depth()}) {
            for (std::uint8_t& byte : *bytes) {
                byte = static_cast<std::uint8_t>(random());
            }
        }
    }

    static Bytes& color() {
        static Bytes bytes(static_cast<std::size_t>(color_stride * (height + 2)));
        return bytes;
    }
    static Bytes& depth() {
        static Bytes bytes(static_cast<std::size_t>(depth_stride * (height + 2)));
        return bytes;
    }
    static std::size_t color_offset(std::int32_t row) { return offset(row, color_stride); }
    static std::size_t depth_offset(std::int32_t row) { return offset(row, depth_stride); }

private:
    static std::size_t offset(std::int32_t row, std::int32_t stride) {
        return static_cast<std::size_t>((height - row) * stride + guard / 2 + 3);
    }
};

// What a drawing left in the buffers.
struct Drawing {
    Canvas::Bytes color, depth;

    bool operator==(const Drawing&) const = default;
};

struct Scene {
    std::vector<VT_DCI_Point> points;
    std::vector<VT_RGB32> colors;
    krb::Dither dither;
    krb::Face_Pattern pattern{};
    std::vector<std::uint8_t> bitmap;
    std::vector<std::uint8_t> mask;
    std::vector<const std::uint8_t*> mask_rows;
    std::vector<VT_RGB32> texels;
    std::vector<VT_RGB32> palette;
    std::vector<krb::Texel_Coordinates> coordinates;
    krb::Triangle_Target target{};

    explicit Scene(std::uint32_t seed) : dither(krb::make_dither(VT_Color_Cube({6, 5, 4}, 1, 7))) {
        std::mt19937 random(seed);
        const auto below = [&random](std::uint32_t end) { return static_cast<std::int32_t>(random() % end); };
        // Half of the strips are long ones of small triangles, some of them almost flat.
        const bool is_fine = below(2) == 0;
        const std::int32_t count = 3 + below(is_fine ? 60 : 12);
        for (std::int32_t i = 0; i < count; ++i) {
            // Small steps now and then, so that spans of every length, slivers and repeated points occur.
            if (i > 0 && (is_fine ? below(30) > 0 : below(3) == 0)) {
                VT_DCI_Point near = points.back();
                const auto step = [&] { return is_fine ? below(19) - 9 : below(4); };
                near.x = std::clamp(near.x + step(), 0, Canvas::width - 1);
                near.y = std::clamp(near.y + step(), 0, Canvas::height - 1);
                near.z = is_fine && below(4) == 0 ? static_cast<std::int32_t>(random()) : near.z + below(40) - 20;
                points.push_back(near);
                colors.push_back(below(2) == 0 ? colors.back() : random_color(random));
            } else {
                points.push_back({below(Canvas::width), below(Canvas::height), below(65536)});
                colors.push_back(random_color(random));
            }
        }
        for (std::uint32_t& row : pattern.stock_rows) {
            row = static_cast<std::uint32_t>(below(256)) * 0x01010101U;
        }
        if (below(2) == 0) {
            pattern.width = 1 + below(23);
            pattern.height = 1 + below(9);
            for (std::int32_t i = 0; i < pattern.width * pattern.height; ++i) {
                bitmap.push_back(static_cast<std::uint8_t>(below(2)));
            }
            pattern.bitmap = bitmap.data();
        }
        pattern.inverted = below(2) == 0;
        pattern.opaque_gaps = below(2) == 0;
        pattern.contrast = random_color(random);
        // Long stretches of either kind and single bits: whole groups inside, outside and mixed.
        constexpr std::int32_t mask_stride = Canvas::width / 8 + 5;
        for (std::int32_t i = 0; i < mask_stride * Canvas::height; ++i) {
            mask.push_back(static_cast<std::uint8_t>(below(3) == 0 ? below(256) : below(2) == 0 ? 0 : 255));
        }
        for (std::int32_t row = 0; row < Canvas::height; ++row) {
            mask_rows.push_back(mask.data() + row * mask_stride);
        }
        target.texture_width_mask = (1 << below(7)) - 1;
        target.texture_height_mask = (1 << below(7)) - 1;
        for (std::int32_t i = 0; i < (target.texture_width_mask + 1) * (target.texture_height_mask + 1); ++i) {
            texels.push_back(random_color(random));
        }
        for (std::int32_t i = 0; i < 256; ++i) {
            palette.push_back(random_color(random));
        }
        // The whole texture or a small part of it, at an edge or between them, so that neighbouring pixels take texels that lie
        // far apart, close together or next to the end of the texture. Half of the scenes have pixels that lie off the texture.
        const std::int32_t outside = 0x8000 * below(2);
        const auto coordinate_along = [&](std::int32_t last_texel) {
            const std::int32_t size = ((last_texel + 1) << 16) + 2 * outside;
            return [&below, size, outside, part = size >> below(6), place = below(3)] {
                return (size - part) / 2 * place + below(static_cast<std::uint32_t>(part)) - outside;
            };
        };
        const auto s = coordinate_along(target.texture_width_mask);
        const auto t = coordinate_along(target.texture_height_mask);
        for (std::size_t i = 0; i < points.size(); ++i) {
            coordinates.push_back({s(), t()});
        }
        target.dither_bias = 128 * below(2);
        target.width = Canvas::width;
        target.height = Canvas::height;
        set_random_rules(target, below);
    }

    Drawing draw(const krb::Kernel_Set& set, Triangle_Configuration configuration, std::uint32_t seed) {
        const Canvas canvas(seed);
        std::vector<std::uint8_t*> color_rows, depth_rows;
        for (std::int32_t row = 0; row < Canvas::height; ++row) {
            color_rows.push_back(Canvas::color().data() + Canvas::color_offset(row));
            depth_rows.push_back(Canvas::depth().data() + Canvas::depth_offset(row));
        }
        target.color_rows = color_rows.data();
        target.depth_rows = depth_rows.data();
        target.color_row_bytes = static_cast<std::int32_t>(color_rows[1] - color_rows[0]);
        target.depth_row_bytes = static_cast<std::int32_t>(depth_rows[1] - depth_rows[0]);
        target.dither = &dither;
        target.pattern = &pattern;
        target.palette = reinterpret_cast<const std::uint8_t*>(palette.data());
        target.texels = reinterpret_cast<const std::uint8_t*>(texels.data());
        // A pattern comes with a mask now and then.
        const bool masked =
            configuration.clip == krb::Clip_Rule::masked || (configuration.clip == krb::Clip_Rule::patterned && seed % 2 == 0);
        target.mask_rows = masked ? mask_rows.data() : nullptr;
        Triangle_Configuration flat = configuration;
        flat.shading = krb::Shading::flat;
        // Gouraud members hand over to flat ones; others have no use for them.
        krb::Strip_Kernel* const near_flat =
            configuration.shading == krb::Shading::gouraud ? set.triangles->strips[flat] : nullptr;
        set.triangles->strips[configuration](target, {static_cast<std::int32_t>(points.size()), points.data(), colors.data(),
                                                      false, near_flat, coordinates.data()});
        return {Canvas::color(), Canvas::depth()};
    }

private:
    static VT_RGB32 random_color(std::mt19937& random) {
        VT_RGB32 color = vorna::color_of(static_cast<std::uint32_t>(random()));
        color.alpha = random() % 3 == 0 ? std::uint8_t{255} : random() % 3 == 0 ? std::uint8_t{0} : color.alpha;
        return color;
    }
};

// Inside the rectangle the bytes of the uncut drawing, everywhere else what was there before.
Drawing cut(const Drawing& before, const Drawing& whole, const krb::Triangle_Target& to, std::int32_t pixel_bytes) {
    Drawing expected = before;
    for (std::int32_t row = to.first_row; row < to.end_row; ++row) {
        const auto copy = [&](const Canvas::Bytes& from, Canvas::Bytes& into, std::size_t start, std::int32_t bytes) {
            const auto begin = static_cast<std::ptrdiff_t>(start) + to.first_column * bytes;
            std::copy(from.begin() + begin, from.begin() + begin + (to.end_column - to.first_column) * bytes,
                      into.begin() + begin);
        };
        copy(whole.color, expected.color, Canvas::color_offset(row), pixel_bytes);
        copy(whole.depth, expected.depth, Canvas::depth_offset(row), 2);
    }
    return expected;
}

TEST(Triangle_Kernels, write_the_same_bytes_in_every_set_and_inside_a_scissor_rectangle) {
    for (const Triangle_Configuration& configuration : krb::triangle_configurations.each) {
        for (std::uint32_t seed = 0; seed < 40; ++seed) {
            Scene scene(seed);
            std::mt19937 random(~seed);
            for (const krb::Kernel_Set* set : krb::supported_kernel_sets()) {
                scene.target.scissored = false;
                scene.target.first_row = 0;
                scene.target.end_row = Canvas::height;
                const Drawing whole = scene.draw(*set, configuration, seed);
                ASSERT_EQ(whole, scene.draw(krb::portable_kernel_set(), configuration, seed))
                    << set->name << ' ' << words_of(configuration) << " seed " << seed;
                const Canvas canvas(seed);
                const Drawing before{Canvas::color(), Canvas::depth()};
                scene.target.scissored = true;
                scene.target.first_column = static_cast<std::int32_t>(random() % Canvas::width);
                scene.target.end_column = scene.target.first_column + static_cast<std::int32_t>(random() & 0xFFFF) %
                                                                          (Canvas::width - scene.target.first_column + 1);
                scene.target.first_row = static_cast<std::int32_t>(random() % Canvas::height);
                scene.target.end_row =
                    scene.target.first_row +
                    static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(Canvas::height - scene.target.first_row + 1));
                const std::int32_t pixel_bytes = krb::facts_of(configuration.format).pixel_bytes;
                ASSERT_EQ(scene.draw(*set, configuration, seed), cut(before, whole, scene.target, pixel_bytes))
                    << set->name << ' ' << words_of(configuration) << " seed " << seed;
            }
        }
    }
}

// Two edges' blue and a texel's, whose product in the second pixel of a span of two depends on the half unit of the edges' mean.
struct Pair_Case {
    std::uint8_t left, right, texel;

    std::uint32_t product() const { return static_cast<std::uint32_t>((left + right) * 257 * texel) >> 17; }
    bool depends_on_half() const { return product() != static_cast<std::uint32_t>((left + right) * 257 / 2 * texel) >> 16; }
};

std::vector<Pair_Case> pairs_that_depend_on_half() {
    std::vector<Pair_Case> cases;
    for (unsigned all = 0; all < 1U << 24; all += 7) {
        const Pair_Case one{static_cast<std::uint8_t>(all), static_cast<std::uint8_t>(all >> 8),
                            static_cast<std::uint8_t>(all >> 16)};
        if (one.depends_on_half()) {
            cases.push_back(one);
        }
    }
    return cases;
}

TEST(Triangle_Kernels, multiply_texels_by_the_exact_mean_in_spans_of_two) {
    const std::vector<Pair_Case> cases = pairs_that_depend_on_half();
    ASSERT_GT(cases.size(), 20U);
    for (const krb::Kernel_Set* set : krb::supported_kernel_sets()) {
        for (const Pair_Case& one : cases) {
            std::uint8_t pixels[16][4] = {};
            std::uint8_t* const row = pixels[0];
            const std::uint8_t texel[4] = {one.texel, 0, 0, 255};
            krb::Triangle_Target target{};
            target.color_rows = &row;
            target.width = 16;
            target.height = 1;
            target.texels = texel;
            const VT_DCI_Point points[] = {{0, 0, 0}, {2, 0, 0}, {0, 1, 0}};
            const auto blue = [](std::uint8_t of) { return vorna::color_of(0xFF000000U | of); };
            const VT_RGB32 colors[] = {blue(one.left), blue(one.right), blue(one.left)};
            const krb::Texel_Coordinates coordinates[3] = {};
            const Triangle_Configuration blended{krb::Shading::textured, krb::Pixel_Format::rgb32, krb::Depth_Rule::none,
                                                 krb::Pixel_Rule::blend, krb::Clip_Rule::open};
            set->triangles->strips[blended](target, {3, points, colors, false, nullptr, coordinates});
            // The product of two full alphas is 254.
            ASSERT_EQ(pixels[1][0], one.product() * 254 / 255)
                << set->name << ' ' << int{one.left} << ' ' << int{one.right} << ' ' << int{one.texel};
        }
    }
}

} // namespace

// Image files as decoders of others read them, and the compression of their rows.
#include <algorithm>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include "drawing/image/deflate.h"
#include "drawing/image/image.h"
#include "drawing/image/image_formats.h"
#include "drawing/image/png_writer.h"

namespace vorna::drawing {
namespace {

using Bytes = std::vector<std::uint8_t>;
using testing::HasSubstr;

constexpr Compression all_compressions[] = {Compression::fast, Compression::standard, Compression::best};

// Raw deflate data as zlib unpacks it; nothing when it finds a fault or more than one stream.
Bytes inflated(const std::string& stream, std::size_t size) {
    Bytes bytes(size + 1);
    z_stream state = {};
    EXPECT_EQ(inflateInit2(&state, -15), Z_OK);
    state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.data()));
    state.avail_in = static_cast<uInt>(stream.size());
    state.next_out = bytes.data();
    state.avail_out = static_cast<uInt>(bytes.size());
    const bool is_whole = inflate(&state, Z_FINISH) == Z_STREAM_END && state.avail_in == 0;
    bytes.resize(is_whole ? state.total_out : 0);
    inflateEnd(&state);
    return bytes;
}

// Literals of all values and of few, runs of all lengths, and repetitions: everything that a code can stand for.
Bytes mixed_bytes(std::mt19937& random, std::size_t size) {
    Bytes bytes;
    while (bytes.size() < size) {
        const std::size_t count = random() % (random() % 8 == 0 ? 5000 : 300) + 1;
        const unsigned kind = random() % 4;
        const unsigned bits = random() % 8 + 1;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t back = std::min<std::size_t>(bytes.size(), kind == 1 ? 3 : 700);
            bytes.push_back(kind == 0 || back == 0 ? static_cast<std::uint8_t>(random() & ((1U << bits) - 1))
                            : kind == 3            ? std::uint8_t{0}
                                                   : bytes[bytes.size() - back]);
        }
    }
    bytes.resize(size);
    return bytes;
}

TEST(Deflate, pieces_are_one_stream) {
    std::mt19937 random(5);
    for (int round = 0; round < 60; ++round) {
        const Compression compression = all_compressions[random() % 3];
        Bytes all;
        std::string stream;
        const std::size_t pieces = random() % 4 + 1, step = random() % 4 + 1;
        for (std::size_t piece = 0; piece < pieces; ++piece) {
            const Bytes bytes = mixed_bytes(random, round < 20 ? random() % 12 : random() % 400000);
            all.insert(all.end(), bytes.begin(), bytes.end());
            stream += deflate_piece(bytes, compression, step, piece + 1 == pieces);
        }
        EXPECT_TRUE(inflated(stream, all.size()) == all) << "round " << round;
    }
}

// A distribution whose code would have more than 15 bits, were they not limited.
TEST(Deflate, codes_have_15_bits_at_most) {
    Bytes bytes;
    std::size_t before = 1, count = 1;
    for (std::uint8_t value = 0; value < 24; ++value) {
        for (std::size_t i = 0; i < count; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(value + (i % 2 ? 100 : 0))); // no runs
        }
        count += std::exchange(before, count);
    }
    EXPECT_TRUE(inflated(deflate_runs(bytes, 1, true), bytes.size()) == bytes);
}

TEST(Deflate, the_end_of_a_stream_is_that_which_its_blocks_have) {
    const std::string one = deflate_runs(Bytes(100, 7), 1, true);
    const Deflate_End end = deflate_end({reinterpret_cast<const std::uint8_t*>(one.data()), one.size()});
    EXPECT_EQ(end.last_block, 0U);
    EXPECT_EQ((end.end + 7) / 8, one.size());
    const std::string cut = one.substr(0, one.size() - 1);
    EXPECT_THROW(deflate_end({reinterpret_cast<const std::uint8_t*>(cut.data()), cut.size()}), std::runtime_error);
    EXPECT_THROW(deflate_end(Bytes{7}), std::runtime_error) << "a kind of block that there is not";
}

struct Case {
    std::uint32_t width, height;
    int colors; // as many as there are; 0 = a gradient with noise
    bool opaque;
};

Bytes samples_of(const Case& image) {
    std::mt19937 random(9);
    Bytes samples;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const unsigned n = image.colors > 0 ? (x / 3 + y * 5) % static_cast<unsigned>(image.colors)
                                                : x * 3 + y + static_cast<unsigned>(random() % 3);
            const std::uint8_t alpha = image.opaque ? 255 : static_cast<std::uint8_t>(n * 40);
            samples.insert(samples.end(), {static_cast<std::uint8_t>(n), static_cast<std::uint8_t>(n * 7),
                                           static_cast<std::uint8_t>(n >> 3), alpha});
        }
    }
    return samples;
}

TEST(Image_Files, png_stores_colours_in_as_little_as_they_need_and_keeps_every_bit) {
    const struct {
        Case image;
        Png_Layout::Colors colors;
        int bits;
    } cases[] = {
        {{1, 1, 1, true}, Png_Layout::Colors::palette, 1},
        {{37, 20, 2, true}, Png_Layout::Colors::palette, 1},
        {{37, 20, 3, false}, Png_Layout::Colors::palette, 2},
        {{37, 20, 16, true}, Png_Layout::Colors::palette, 4},
        {{37, 20, 17, false}, Png_Layout::Colors::palette, 8},
        {{300, 40, 256, true}, Png_Layout::Colors::palette, 8},
        {{301, 300, 0, true}, Png_Layout::Colors::red_green_blue, 8},
        {{301, 300, 0, false}, Png_Layout::Colors::red_green_blue_alpha, 8},
        {{1500, 900, 0, true}, Png_Layout::Colors::red_green_blue, 8}, // several blocks
        {{1, 3000, 0, true}, Png_Layout::Colors::red_green_blue, 8},
    };
    for (const auto& [image, colors, bits] : cases) {
        const Bytes samples = samples_of(image);
        for (const Compression compression : all_compressions) {
            const Image_Form form{.width = image.width, .height = image.height, .reducible = true, .compression = compression};
            const Png_Layout layout(form, samples.data());
            EXPECT_EQ(layout.colors(), colors) << image.width;
            EXPECT_EQ(layout.sample_bits(), bits) << image.width;
            const std::string file = png_file(form, [&](std::uint32_t row, std::uint8_t* target) {
                std::copy_n(&samples[row * form.row_bytes()], form.row_bytes(), target);
            });
            const Image read = decode_image(file);
            ASSERT_EQ(read.pixels.size() * 4, samples.size());
            for (std::size_t i = 0; i < read.pixels.size(); ++i) {
                const VT_RGB32 expected{samples[4 * i + 2], samples[4 * i + 1], samples[4 * i], samples[4 * i + 3]};
                ASSERT_EQ(read.pixels[i], expected) << "pixel " << i << " of " << image.width << " x " << image.height;
            }
        }
    }
}

TEST(Image_Files, a_pixel_that_is_not_opaque_is_never_stored_as_one_that_is) {
    const Bytes samples = samples_of({301, 300, 0, false});
    const Image_Form form{.width = 301, .height = 300, .opaque = true};
    EXPECT_THROW(
        png_file(form, [&](std::uint32_t row,
                           std::uint8_t* target) { std::copy_n(&samples[row * form.row_bytes()], form.row_bytes(), target); }),
        std::runtime_error);
}

TEST(Image_Files, formats_are_found_by_their_suffixes) {
    EXPECT_EQ(image_format_of("a.b/c.JPEG"), &image_format(Image_File::jpeg));
    EXPECT_EQ(image_format_of("x.tif"), image_format_of("x.tiff"));
    for (const char* name : {"", "-", "png", "a.gif", "a."}) {
        EXPECT_EQ(image_format_of(name), nullptr) << name;
    }
    for (const Image_Format& format : image_formats()) {
        const Image_Form form{.width = 3, .height = 2, .opaque = true, .file = format.file};
        if (!format.encoder) {
            EXPECT_THROW(image_encoder(form), std::runtime_error) << format.suffix;
        } else {
            EXPECT_GE(image_encoder(form)->block_rows(), 1U) << format.suffix;
        }
    }
}

} // namespace
} // namespace vorna::drawing

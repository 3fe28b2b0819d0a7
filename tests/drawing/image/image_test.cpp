// Images: what is decoded, what is refused, and other sizes of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/images.h"

namespace vorna::drawing::model {
namespace {

using testing::HasSubstr;

TEST(Images, png_files_keep_every_bit) {
    Image original = gradient();
    original.pixels[7].alpha = 90;
    EXPECT_EQ(decode_image(png_file(original)).pixels, original.pixels);
}

TEST(Images, damaged_files_are_refused) {
    const std::string png = png_file(gradient());
    EXPECT_THAT(message_of(""), HasSubstr("expected a PNG, JPEG, WebP, TGA, BMP or DDS image"));
    EXPECT_THAT(message_of("GIF89a"), HasSubstr("expected a PNG, JPEG, WebP, TGA, BMP or DDS image"));
    for (const std::size_t part : {3U, 5U, 9U}) {
        EXPECT_THAT(message_of(png.substr(0, png.size() * part / 10)), HasSubstr("expected a PNG image: ")) << part;
    }
    std::string huge = png;
    huge[16] = huge[20] = 1; // The sides' highest bytes; the checksum would be looked at after them.
    EXPECT_THAT(message_of(huge), testing::StartsWith("expected "));
}

// Red, green; blue, translucent yellow.
const std::vector<VT_RGB32> four_colors{{0, 0, 255, 255}, {0, 255, 0, 255}, {255, 0, 0, 255}, {0, 255, 255, 128}};

std::string words(std::initializer_list<std::uint32_t> list) {
    std::string bytes;
    for (const std::uint32_t word : list) {
        for (int shift = 0; shift < 32; shift += 8) {
            bytes += static_cast<char>(word >> shift & 0xFF);
        }
    }
    return bytes;
}

std::string dds_header(std::uint32_t flags, std::uint32_t code, std::uint32_t bits, std::initializer_list<std::uint32_t> masks) {
    std::string header =
        "DDS " + words({124, 0x100F, 2, 2}) + std::string(56, '\0') + words({32, flags, code, bits}) + words(masks);
    header.resize(128);
    return header;
}

#if defined(VORNA_WITH_STB)
TEST(Images, tga_and_bmp_files_are_read_upright) {
    const std::string rows = words({0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0x80FFFF00}), lower = rows.substr(8) + rows.substr(0, 8);
    const std::string tga = std::string("\0\0\2\0\0\0\0\0\0\0\0\0\2\0\2\0\40", 17);
    EXPECT_EQ(decode_image(tga + '\x28' + rows).pixels, four_colors); // from the top
    EXPECT_EQ(decode_image(tga + '\x08' + lower).pixels, four_colors);
    std::uint64_t asked = 0;
    const std::string bmp = "BM" + words({54 + 16, 0, 54, 40, 2, 2, 0x00180001, 0, 16, 0, 0, 0, 0}) +
                            std::string("\377\0\0\0\377\377\0\0\0\0\377\0\377\0\0\0", 16);
    const Image image = decode_image(bmp, [&](std::uint64_t pixels) { asked = pixels; });
    EXPECT_EQ(asked, 8U);
    for (std::size_t i = 0; i < 4; ++i) {
        VT_RGB32 opaque = four_colors[i];
        opaque.alpha = 255;
        EXPECT_EQ(image.pixels[i], opaque);
    }
    std::string huge = tga + '\x28' + rows;
    huge[13] = huge[15] = 127;
    EXPECT_THAT(message_of(huge), HasSubstr("expected "));
}
#endif

#if defined(VORNA_WITH_WEBP)
TEST(Images, webp_files_are_read) {
    const std::string webp(
        "RIFF\x30\0\0\0WEBPVP8L\x23\0\0\0\x2F\x01\x40\0\x10\x1F\x20\x10\x48\xDE\x1F\x3A\x8D\xF9\x17\x10\x14\xF9?"
        "\x9A\x80\xA0\xE8\xBA\xE5\x22\x4F\x0E\xC2\r\x18\x22\xFA\x1F\x02\0",
        56);
    EXPECT_EQ(decode_image(webp).pixels, four_colors);
    EXPECT_THAT(message_of(webp.substr(0, 40)), HasSubstr("expected a WebP image: "));
    EXPECT_THAT(message_of(webp.substr(0, 16)), HasSubstr("expected a WebP image: "));
}
#endif

TEST(Images, dds_files_without_compression_are_read_by_their_masks) {
    const std::string pixels = words({0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0x80FFFF00});
    EXPECT_EQ(decode_image(dds_header(0x41, 0, 32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}) + pixels).pixels, four_colors);
    const Image small = decode_image(dds_header(0x40, 0, 16, {0xF800, 0x7E0, 0x1F}) + words({0x07E0F800, 0xFFFF8410}));
    EXPECT_EQ(small.pixels[0], four_colors[0]);
    EXPECT_EQ(small.pixels[1], four_colors[1]);
    EXPECT_EQ(small.pixels[2], (VT_RGB32{132, 130, 132, 255}));
    EXPECT_EQ(small.pixels[3], (VT_RGB32{255, 255, 255, 255}));
    const Image grey = decode_image(dds_header(0x20000, 0, 8, {0xFF}) + words({0x80FF00C0}));
    EXPECT_EQ(grey.pixels[0], (VT_RGB32{192, 192, 192, 255}));
    EXPECT_EQ(message_of(dds_header(4, 0x31545844, 0, {}) + pixels), "expected a DDS image without compression, found DXT1");
    EXPECT_THAT(message_of(dds_header(0x41, 0, 32, {}) + pixels.substr(1)), HasSubstr("it ends before its last pixel"));
    EXPECT_THAT(message_of("DDS "), HasSubstr("it ends in its header"));
    EXPECT_THAT(message_of(dds_header(0x41, 0, 12, {}) + pixels), HasSubstr("found 12"));
}

TEST(Images, shrinking_takes_the_mean_and_growing_runs_evenly) {
    const auto grey = [](int value) {
        const auto byte = static_cast<std::uint8_t>(value);
        return VT_RGB32{byte, byte, byte, 255};
    };
    const auto row_of = [](const Image& image) {
        std::vector<int> greens;
        std::ranges::transform(image.pixels, std::back_inserter(greens), [](VT_RGB32 p) { return p.green; });
        return greens;
    };
    const Image six = painted(6, 1, [&](int c, int) { return grey(30 * c); });
    EXPECT_THAT(row_of(resampled(six, 3, 1, Wrap::repeat, Wrap::repeat)), testing::ElementsAre(21, 76, 136));
    EXPECT_THAT(row_of(resampled(six, 4, 1, Wrap::clamp, Wrap::clamp)), testing::ElementsAre(17, 52, 101, 141));
    const Image two = painted(2, 1, [&](int c, int) { return grey(200 * c); });
    EXPECT_THAT(row_of(resampled(two, 4, 1, Wrap::clamp, Wrap::clamp)), testing::ElementsAre(0, 100, 173, 200));
    EXPECT_THAT(row_of(resampled(two, 4, 1, Wrap::repeat, Wrap::repeat)), testing::ElementsAre(100, 100, 173, 173));
    // A shape's edge keeps its colour: what is not there has none to give.
    const Image edge = painted(2, 2, [](int c, int) { return c ? VT_RGB32{0, 0, 250, 255} : VT_RGB32{9, 255, 0, 0}; });
    EXPECT_EQ(resampled(edge, 1, 1, Wrap::clamp, Wrap::clamp).pixels[0], (VT_RGB32{0, 0, 250, 128}));
}

} // namespace
} // namespace vorna::drawing::model

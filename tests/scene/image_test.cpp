// Images: what is decoded, what is refused, and other sizes of them.
#include <cstdio>
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <jpeglib.h>

#include "tests/scene/images.h"

namespace app::scene {
namespace {

using testing::HasSubstr;

// components: 3 = colours, 1 = grey, 4 = inks.
std::string jpeg_file(const Image& image, int components) {
    jpeg_compress_struct codec = {};
    jpeg_error_mgr errors = {};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &bytes, &size);
    codec.image_width = static_cast<JDIMENSION>(image.width);
    codec.image_height = static_cast<JDIMENSION>(image.height);
    codec.input_components = components;
    codec.in_color_space = components == 1 ? JCS_GRAYSCALE : components == 3 ? JCS_RGB : JCS_CMYK;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, 100, TRUE);
    codec.comp_info[0].h_samp_factor = codec.comp_info[0].v_samp_factor = 1; // colours as fine as light
    jpeg_start_compress(&codec, TRUE);
    for (std::int32_t r = 0; r < image.height; ++r) {
        std::vector<JSAMPLE> row;
        for (std::int32_t c = 0; c < image.width; ++c) {
            const VT_RGB32 p = image.row(r)[c];
            const JSAMPLE channels[4] = {p.red, p.green, p.blue, 255}; // Inks are stored inverted: this is no black at all.
            row.insert(row.end(), channels, channels + components);
        }
        JSAMPROW rows[1] = {row.data()};
        jpeg_write_scanlines(&codec, rows, 1);
    }
    jpeg_finish_compress(&codec);
    const std::string file(reinterpret_cast<const char*>(bytes), size);
    jpeg_destroy_compress(&codec);
    std::free(bytes);
    return file;
}

std::string message_of(std::string_view bytes) {
    try {
        decode_image(bytes);
    } catch (const Image_Error& error) {
        return error.what();
    }
    return "no error";
}

Image gradient() {
    return painted(40, 24, [](int c, int r) {
        return VT_RGB32{static_cast<std::uint8_t>(6 * c), static_cast<std::uint8_t>(10 * r), 90, 255};
    });
}

TEST(Images, jpeg_files_of_colours_greys_and_inks_are_decoded) {
    const Image original = gradient();
    for (const int components : {1, 3, 4}) {
        const Image decoded = decode_image(jpeg_file(original, components));
        ASSERT_EQ(decoded.width, 40);
        ASSERT_EQ(decoded.height, 24);
        for (std::size_t i = 0; i < decoded.pixels.size(); ++i) {
            const VT_RGB32 p = decoded.pixels[i], q = original.pixels[i];
            EXPECT_NEAR(p.red, q.red, 4);
            EXPECT_NEAR(p.green, components == 1 ? q.red : q.green, 4);
            EXPECT_NEAR(p.blue, components == 1 ? q.red : q.blue, 4);
            EXPECT_EQ(p.alpha, 255);
        }
    }
}

TEST(Images, damaged_files_are_refused) {
    const std::string jpeg = jpeg_file(gradient(), 3), png = png_file(gradient());
    EXPECT_THAT(message_of(""), HasSubstr("expected a PNG or JPEG image"));
    EXPECT_THAT(message_of("GIF89a"), HasSubstr("expected a PNG or JPEG image"));
    for (const std::size_t part : {3U, 5U, 9U}) {
        EXPECT_THAT(message_of(jpeg.substr(0, jpeg.size() * part / 10)), HasSubstr("expected a JPEG image: ")) << part;
        EXPECT_THAT(message_of(png.substr(0, png.size() * part / 10)), HasSubstr("expected a PNG image: ")) << part;
    }
    std::string huge = png;
    huge[16] = huge[20] = 1; // The sides' highest bytes; the checksum would be looked at after them.
    EXPECT_THAT(message_of(huge), testing::StartsWith("expected "));
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
    EXPECT_THAT(row_of(resampled(six, 3, 1, Wrap::repeat, Wrap::repeat)), testing::ElementsAre(15, 75, 135));
    EXPECT_THAT(row_of(resampled(six, 4, 1, Wrap::clamp, Wrap::clamp)), testing::ElementsAre(10, 50, 100, 140));
    const Image two = painted(2, 1, [&](int c, int) { return grey(200 * c); });
    EXPECT_THAT(row_of(resampled(two, 4, 1, Wrap::clamp, Wrap::clamp)), testing::ElementsAre(0, 50, 150, 200));
    EXPECT_THAT(row_of(resampled(two, 4, 1, Wrap::repeat, Wrap::repeat)), testing::ElementsAre(50, 50, 150, 150));
    // A shape's edge keeps its colour: what is not there has none to give.
    const Image edge = painted(2, 2, [](int c, int) { return c ? VT_RGB32{0, 0, 250, 255} : VT_RGB32{9, 255, 0, 0}; });
    EXPECT_EQ(resampled(edge, 1, 1, Wrap::clamp, Wrap::clamp).pixels[0], (VT_RGB32{0, 0, 250, 128}));
}

} // namespace
} // namespace app::scene

// JPEG images: what is decoded and what is refused.
#include <cstdio>
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <jpeglib.h>

#include "tests/support/images.h"

namespace vorna::drawing::model {
namespace {

// components: 3 = colours, 1 = grey, 4 = inks. A progressive file with these scans, if any.
std::string jpeg_file(const Image& image, int components, const std::vector<jpeg_scan_info>& scans = {}) {
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
    if (!scans.empty()) {
        codec.scan_info = scans.data();
        codec.num_scans = static_cast<int>(scans.size());
    }
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

TEST(Jpeg_Images, of_colours_greys_and_inks_are_decoded) {
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

TEST(Jpeg_Images, damaged_files_are_refused) {
    const std::string jpeg = jpeg_file(gradient(), 3);
    for (const std::size_t part : {3U, 5U, 9U}) {
        EXPECT_THAT(message_of(jpeg.substr(0, jpeg.size() * part / 10)), testing::HasSubstr("expected a JPEG image: ")) << part;
    }
}

// Each scan takes time for the whole image.
TEST(Jpeg_Images, of_more_than_a_hundred_scans_are_refused) {
    const auto scans = [](int count) {
        std::vector<jpeg_scan_info> list{{3, {0, 1, 2}, 0, 0, 0, 0}};
        for (int i = 0; i + 1 < count; ++i) {
            list.push_back({1, {i / 63}, i % 63 + 1, i % 63 + 1, 0, 0}); // one coefficient of a channel
        }
        return list;
    };
    EXPECT_EQ(decode_image(jpeg_file(gradient(), 3, scans(100))).width, 40);
    EXPECT_THAT(message_of(jpeg_file(gradient(), 3, scans(101))), testing::HasSubstr("expected a JPEG image: "));
}

} // namespace
} // namespace vorna::drawing::model

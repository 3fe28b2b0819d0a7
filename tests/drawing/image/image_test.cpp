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
    EXPECT_THAT(message_of(""), HasSubstr("expected a PNG or JPEG image"));
    EXPECT_THAT(message_of("GIF89a"), HasSubstr("expected a PNG or JPEG image"));
    for (const std::size_t part : {3U, 5U, 9U}) {
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
} // namespace vorna::drawing::model

// Measures of quality against the formulas, pixel by pixel, and masks.
#include <array>
#include <cmath>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/files/usage_error.h"
#include "drawing/image/image_comparison.h"
#include "drawing/image/image_measures.h"

namespace replay_tests {

namespace {

using namespace vorna::drawing;

using Colors = Png_Image::Colors;

Png_Image random_image(std::int32_t width, std::int32_t height, unsigned seed, Colors colors = Colors::rgb) {
    std::mt19937 random(seed);
    Png_Image image;
    image.width = width;
    image.height = height;
    image.colors = colors;
    image.samples.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * image.pixel_bytes());
    for (std::uint8_t& sample : image.samples) {
        sample = static_cast<std::uint8_t>(random());
    }
    return image;
}

double luminance(const Png_Image& image, std::int32_t x, std::int32_t y) {
    const std::uint8_t* pixel = &image.samples[static_cast<std::size_t>(y * image.width + x) * image.pixel_bytes()];
    return 0.299 * pixel[0] + 0.587 * pixel[1] + 0.114 * pixel[2];
}

// The definition: at each place the two-dimensional window, with means first and then deviations from them.
double similarity(const Png_Image& a, const Png_Image& b) {
    double sum = 0;
    int count = 0;
    for (std::int32_t y = 5; y + 5 < a.height; ++y) {
        for (std::int32_t x = 5; x + 5 < a.width; ++x, ++count) {
            double weights = 0, mean_a = 0, mean_b = 0, variance_a = 0, variance_b = 0, covariance = 0;
            const auto each = [&](const auto& visit) {
                for (std::int32_t dy = -5; dy <= 5; ++dy) {
                    for (std::int32_t dx = -5; dx <= 5; ++dx) {
                        visit(std::exp(-(dx * dx + dy * dy) / 4.5), luminance(a, x + dx, y + dy), luminance(b, x + dx, y + dy));
                    }
                }
            };
            each([&](double weight, double p, double q) {
                weights += weight;
                mean_a += weight * p;
                mean_b += weight * q;
            });
            mean_a /= weights;
            mean_b /= weights;
            each([&](double weight, double p, double q) {
                variance_a += weight / weights * (p - mean_a) * (p - mean_a);
                variance_b += weight / weights * (q - mean_b) * (q - mean_b);
                covariance += weight / weights * (p - mean_a) * (q - mean_b);
            });
            const double c1 = 6.5025, c2 = 58.5225;
            sum += (2 * mean_a * mean_b + c1) * (2 * covariance + c2) /
                   ((mean_a * mean_a + mean_b * mean_b + c1) * (variance_a + variance_b + c2));
        }
    }
    return sum / count;
}

Png_Image mask_of(const Png_Image& image, std::int32_t first_column) {
    Png_Image mask = random_image(image.width, image.height, 1, Colors::grey);
    for (std::size_t i = 0; i < mask.samples.size(); ++i) {
        mask.samples[i] = static_cast<std::int32_t>(i) % image.width >= first_column ? 1 : 0;
    }
    return mask;
}

TEST(Image_Measures, structural_similarity_is_that_of_its_definition) {
    const Png_Image a = random_image(19, 14, 1);
    Png_Image b = a;
    std::mt19937 random(2);
    for (std::uint8_t& sample : b.samples) {
        sample = static_cast<std::uint8_t>(std::min(255, sample + static_cast<int>(random() % 60)));
    }
    const double expected = similarity(a, b);
    EXPECT_LT(expected, 0.99);
    EXPECT_NEAR(*measure(a, b)->ssim, expected, 1e-9);
    EXPECT_NEAR(*measure(random_image(11, 11, 3), random_image(11, 11, 4))->ssim,
                similarity(random_image(11, 11, 3), random_image(11, 11, 4)), 1e-9);
    EXPECT_EQ(measure(a, a)->ssim, 1);
    EXPECT_FALSE(measure(random_image(10, 30, 1), random_image(10, 30, 2))->ssim) << "no window has room";
}

TEST(Image_Measures, the_signal_to_noise_ratio_is_over_the_channels_that_both_have) {
    const Png_Image a = random_image(12, 12, 5);
    Png_Image b = a;
    b.samples[7] = static_cast<std::uint8_t>(a.samples[7] < 128 ? a.samples[7] + 10 : a.samples[7] - 10);
    EXPECT_NEAR(*measure(a, b)->psnr, 10 * std::log10(255.0 * 255 / (100.0 / (12 * 12 * 3))), 1e-9);
    Png_Image c = random_image(12, 12, 5, Colors::rgb_alpha), d = c;
    d.samples[7] ^= 1; // an alpha
    EXPECT_NEAR(*measure(c, d)->psnr, 10 * std::log10(255.0 * 255 / (1.0 / (12 * 12 * 4))), 1e-9);
    EXPECT_FALSE(measure(a, a)->psnr) << "infinite";
    EXPECT_FALSE(measure(a, random_image(12, 13, 5)));
}

TEST(Image_Measures, masked_pixels_do_not_count) {
    const Png_Image a = random_image(24, 12, 6);
    Png_Image b = a;
    b.samples[0] ^= 128;           // in column 0
    b.samples[(24 + 20) * 3] ^= 1; // in row 1, column 20
    const Pixel_Mask mask(mask_of(a, 12)), narrower(mask_of(a, 21));
    const Image_Difference difference = compare(a, b, {.mask = &mask});
    EXPECT_EQ(difference.count, 1);
    EXPECT_EQ(difference.most, 1);
    EXPECT_EQ(difference.compared, 12 * 12);
    EXPECT_EQ(difference.area.left, 20);
    EXPECT_THAT(difference.text, testing::HasSubstr("1 of 144 compared pixels"));
    EXPECT_NEAR(*measure(a, b, &mask)->psnr, 10 * std::log10(255.0 * 255 / (1.0 / (144 * 3))), 1e-9);
    Png_Image c = b;
    c.samples[0] = a.samples[0];
    EXPECT_EQ(*measure(a, b, &mask)->ssim, *measure(a, c, &mask)->ssim);
    EXPECT_TRUE(compare(a, b, {.mask = &narrower}).is_same);
    EXPECT_FALSE(measure(a, b, &narrower)->ssim) << "no window has its centre there";
    // What is transparent is left out whatever its colour.
    Png_Image transparent = random_image(24, 12, 7, Colors::rgb_alpha);
    for (std::size_t i = 3; i < transparent.samples.size(); i += 4) {
        transparent.samples[i] = 0;
    }
    const Pixel_Mask none(transparent), small(random_image(3, 3, 1));
    EXPECT_EQ(compare(a, b, {.mask = &none}).compared, 0);
    EXPECT_THROW(compare(a, b, {.mask = &small}), Usage_Error);
}

} // namespace

} // namespace replay_tests

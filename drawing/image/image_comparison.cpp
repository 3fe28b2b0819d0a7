// How two images differ.
#include "drawing/image/image_comparison.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "drawing/files/usage_error.h"
#include "drawing/image/pixel_values.h"
#include "drawing/image/png_writer.h"

namespace vorna::drawing {

namespace {

using Colors = Png_Image::Colors;

std::string name_of(Colors colors) {
    switch (colors) {
    case Colors::grey:
        return "grey";
    case Colors::rgb:
        return "RGB";
    case Colors::palette:
        return "palette";
    case Colors::grey_alpha:
        return "grey with alpha";
    case Colors::rgb_alpha:
        return "RGBA";
    }
    return "unknown";
}

std::string text_of(const Png_Image& image) {
    return std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels, " + name_of(image.colors) + " of " +
           std::to_string(image.sample_bits) + " bits";
}

std::int32_t distance(const Pixel& a, const Pixel& b) noexcept {
    std::int32_t most = 0;
    for (std::size_t c = 0; c < a.size(); ++c) {
        most = std::max(most, std::abs(a[c] - b[c]));
    }
    return most;
}

std::string text_of(const Pixel& pixel, std::size_t channels) {
    std::string text;
    for (std::size_t c = 0; c < channels; ++c) {
        text += (c == 0 ? "" : ",") + std::to_string(pixel[c]);
    }
    return channels == 1 ? text : "(" + text + ")";
}

std::string range_of(std::int32_t first, std::int32_t last) {
    return std::to_string(first) + " to " + std::to_string(last);
}

bool are_of_one_kind(const Png_Image& a, const Png_Image& b) noexcept {
    return a.colors == b.colors && a.sample_bits == b.sample_bits;
}

// Whether the colours of both have as many bits.
bool have_like_colors(const Png_Image& a, const Png_Image& b) noexcept {
    return (a.sample_bits == 16) == (b.sample_bits == 16);
}

bool is_within(const Image_Difference& difference, const std::optional<Fuzz>& fuzz) {
    return difference.count == 0 || (fuzz && difference.most <= fuzz->difference && difference.count <= fuzz->count);
}

std::string number_of_pixels(std::int64_t compared, std::int64_t all) {
    return std::to_string(compared) + (compared < all ? " compared" : "") + " pixels";
}

// Counts the pixels that differ.
void count(Image_Difference& difference, const Png_Image& a, const Png_Image& b, const Pixel_Mask* mask, bool as_colors,
           std::size_t shown_channels) {
    const Pixel_Values of_a(a, as_colors), of_b(b, as_colors);
    Pixel_Area& area = difference.area;
    area = {a.width, 0, a.height, 0};
    for (std::int32_t y = 0; y < a.height; ++y) {
        for (std::int32_t x = 0; x < a.width; ++x) {
            const std::size_t i = static_cast<std::size_t>(y) * static_cast<std::size_t>(a.width) + static_cast<std::size_t>(x);
            if (mask && !mask->counts(i)) {
                continue;
            }
            ++difference.compared;
            const Pixel in_a = of_a.at(i), in_b = of_b.at(i);
            const std::int32_t most = distance(in_a, in_b);
            if (most == 0) {
                continue;
            }
            if (difference.count++ == 0) {
                difference.first = {x, y, text_of(in_a, shown_channels), text_of(in_b, shown_channels)};
            }
            difference.most = std::max(difference.most, most);
            area = {std::min(area.left, x), std::max(area.right, x), std::min(area.top, y), std::max(area.bottom, y)};
        }
    }
}

} // namespace

Image_Difference compare(const Png_Image& a, const Png_Image& b, const Comparison_Settings& settings) {
    const auto& [fuzz, by_colors, mask] = settings;
    if (a.width != b.width || a.height != b.height) {
        return {.text = "different sizes: " + text_of(a) + ", and " + text_of(b)};
    }
    const bool of_one_kind = are_of_one_kind(a, b);
    if (!have_like_colors(a, b)) {
        return {.text = "different kinds of pixels: " + text_of(a) + ", and " + text_of(b)};
    }
    if (mask && (mask->width() != a.width || mask->height() != a.height)) {
        throw Usage_Error("mask: expected " + std::to_string(a.width) + " x " + std::to_string(a.height) +
                          " pixels as in the images, found " + std::to_string(mask->width()) + " x " +
                          std::to_string(mask->height()));
    }
    const bool are_alike = of_one_kind && a.palette == b.palette && a.transparency == b.transparency;
    const bool as_colors = fuzz || by_colors || !are_alike;
    const bool are_greys = of_one_kind && a.colors == Colors::grey && a.transparency.empty() && b.transparency.empty();
    const std::int64_t all = std::int64_t{a.width} * a.height;
    Image_Difference difference;
    if (a.samples == b.samples && are_alike && !mask) {
        difference.compared = all;
    } else {
        count(difference, a, b, mask, as_colors, are_greys ? 1 : as_colors ? 4 : static_cast<std::size_t>(a.channels()));
    }
    const std::string compared = number_of_pixels(difference.compared, all);
    if (difference.count == 0 && !fuzz && !by_colors && of_one_kind && !are_alike) {
        difference.text = a.palette != b.palette ? "different palettes" : "different transparency";
        return difference;
    }
    difference.is_same = is_within(difference, fuzz);
    if (difference.count == 0) {
        difference.area = {};
        difference.text = "same: " + text_of(a) + (difference.compared < all ? ", " + compared : "");
        return difference;
    }
    const Pixel_Area& area = difference.area;
    difference.text = std::string(difference.is_same ? "near enough: " : "different: ") + std::to_string(difference.count) +
                      " of " + compared + ", by at most " + std::to_string(difference.most) + ", in columns " +
                      range_of(area.left, area.right) + ", rows " + range_of(area.top, area.bottom) + "; first at column " +
                      std::to_string(difference.first.column) + ", row " + std::to_string(difference.first.row) +
                      " from the top: " + difference.first.in_a + " and " + difference.first.in_b;
    return difference;
}

std::string difference_png(const Png_Image& a, const Png_Image& b, const Comparison_Settings& settings) {
    const bool is_comparable = have_like_colors(a, b);
    const bool by_samples = !settings.by_colors && are_of_one_kind(a, b);
    const Pixel_Mask* mask = settings.mask;
    const Pixel_Values of_a(a, true), of_b(b, true), stored_a(a, false), stored_b(b, false);
    const int excess_bits = a.sample_bits == 16 ? 8 : 0;
    const Image_Form form{.width = static_cast<std::uint32_t>(a.width), .height = static_cast<std::uint32_t>(a.height)};
    return png_file(form, [&](std::uint32_t row, std::uint8_t* samples) {
        for (std::size_t x = 0; x < form.width; ++x, samples += 4) {
            const std::size_t i = row * std::size_t{form.width} + x;
            const Pixel in_a = of_a.at(i), in_b = of_b.at(i);
            const bool differs = !is_comparable || (by_samples && stored_a.at(i) != stored_b.at(i)) || in_a != in_b;
            const std::int32_t grey = (in_a[0] + in_a[1] + in_a[2]) / 3 >> excess_bits;
            const auto pale = static_cast<std::uint8_t>(192 + grey / 4);
            const auto strength = static_cast<std::uint8_t>(std::max(0, 160 - (distance(in_a, in_b) >> excess_bits)));
            std::array<std::uint8_t, 4> pixel{pale, pale, pale, 255};
            if (mask && !mask->counts(i)) {
                pixel = {176, 196, static_cast<std::uint8_t>(224 + grey / 8), 255};
            } else if (differs) {
                pixel = {255, strength, strength, 255};
            }
            std::memcpy(samples, pixel.data(), pixel.size());
        }
    });
}

} // namespace vorna::drawing

// How two images differ.
#include "drawing/image/image_comparison.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

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

// Up to four channels of up to 16 bits.
using Pixel = std::array<std::int32_t, 4>;

// Reads the pixels of an image: samples as they are stored, or colours, which are red, green, blue and alpha of 8 bits, or of 16
// where samples have them.
class Pixels {
public:
    Pixels(const Png_Image& image, bool as_colors) noexcept : image_(image), as_colors_(as_colors) {
        for (std::size_t c = 0; c < key_.size() && 2 * c + 1 < image.transparency.size(); ++c) {
            const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(image.transparency[2 * c + i]); };
            key_[c] = (byte(0) << 8 | byte(1)) & ((1 << image.sample_bits) - 1);
        }
    }

    Pixel at(std::size_t i) const noexcept {
        const std::uint8_t* samples = image_.samples.data() + i * image_.pixel_bytes();
        Pixel stored{};
        for (std::size_t c = 0; c < static_cast<std::size_t>(image_.channels()); ++c) {
            stored[c] = image_.sample_bytes() == 2 ? samples[2 * c] << 8 | samples[2 * c + 1] : samples[c];
        }
        return as_colors_ ? color_of(stored) : stored;
    }

private:
    Pixel color_of(const Pixel& stored) const noexcept {
        const std::int32_t most = image_.sample_bits == 16 ? 65535 : 255;
        const std::int32_t scale = most / ((1 << image_.sample_bits) - 1);
        const std::int32_t alpha = stored == key_ ? 0 : most; // of a kind without
        switch (image_.colors) {
        case Colors::grey:
            return {stored[0] * scale, stored[0] * scale, stored[0] * scale, alpha};
        case Colors::rgb:
            return {stored[0], stored[1], stored[2], alpha};
        case Colors::palette:
            return color_of(static_cast<std::size_t>(stored[0]));
        case Colors::grey_alpha:
            return {stored[0], stored[0], stored[0], stored[1]};
        case Colors::rgb_alpha:
            break;
        }
        return stored;
    }
    // An index beyond the palette is black.
    Pixel color_of(std::size_t index) const noexcept {
        Pixel color{0, 0, 0, 255};
        for (std::size_t c = 0; c < 3 && 3 * index + c < image_.palette.size(); ++c) {
            color[c] = static_cast<std::uint8_t>(image_.palette[3 * index + c]);
        }
        if (index < image_.transparency.size()) {
            color[3] = static_cast<std::uint8_t>(image_.transparency[index]);
        }
        return color;
    }

    const Png_Image& image_;
    bool as_colors_;
    Pixel key_{-1}; // the stored samples that are transparent, in kinds that have such; none has a negative sample
};

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

} // namespace

Image_Difference compare(const Png_Image& a, const Png_Image& b, const std::optional<Fuzz>& fuzz) {
    if (a.width != b.width || a.height != b.height) {
        return {.text = "different sizes: " + text_of(a) + ", and " + text_of(b)};
    }
    const bool of_one_kind = are_of_one_kind(a, b);
    if (!have_like_colors(a, b)) {
        return {.text = "different kinds of pixels: " + text_of(a) + ", and " + text_of(b)};
    }
    const bool are_alike = of_one_kind && a.palette == b.palette && a.transparency == b.transparency;
    const bool as_colors = fuzz || !are_alike;
    const bool are_greys = of_one_kind && a.colors == Colors::grey && a.transparency.empty() && b.transparency.empty();
    const Pixels of_a(a, as_colors), of_b(b, as_colors);
    const std::size_t shown_channels = are_greys ? 1 : as_colors ? 4 : static_cast<std::size_t>(a.channels());
    std::int64_t count = 0;
    std::int32_t most = 0, left = a.width, right = 0, top = a.height, bottom = 0;
    std::string first;
    if (a.samples != b.samples || !are_alike) {
        for (std::int32_t y = 0; y < a.height; ++y) {
            for (std::int32_t x = 0; x < a.width; ++x) {
                const std::size_t i =
                    static_cast<std::size_t>(y) * static_cast<std::size_t>(a.width) + static_cast<std::size_t>(x);
                const Pixel in_a = of_a.at(i), in_b = of_b.at(i);
                const std::int32_t difference = distance(in_a, in_b);
                if (difference == 0) {
                    continue;
                }
                if (count++ == 0) {
                    first = "first at column " + std::to_string(x) + ", row " + std::to_string(y) +
                            " from the top: " + text_of(in_a, shown_channels) + " and " + text_of(in_b, shown_channels);
                }
                most = std::max(most, difference);
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        }
    }
    if (count == 0 && !fuzz && of_one_kind && !are_alike) {
        return {.text = a.palette != b.palette ? "different palettes" : "different transparency"};
    }
    if (count == 0) {
        return {.is_same = true, .text = "same: " + text_of(a)};
    }
    const bool is_same = fuzz && most <= fuzz->difference && count <= fuzz->count;
    const std::int64_t all = std::int64_t{a.width} * a.height;
    return {is_same,
            std::string(is_same ? "near enough: " : "different: ") + std::to_string(count) + " of " + std::to_string(all) +
                " pixels, by at most " + std::to_string(most) + ", in columns " + range_of(left, right) + ", rows " +
                range_of(top, bottom) + "; " + first,
            count, most};
}

std::string difference_png(const Png_Image& a, const Png_Image& b) {
    const bool is_one_kind = are_of_one_kind(a, b), is_comparable = have_like_colors(a, b);
    const Pixels of_a(a, true), of_b(b, true), stored_a(a, false), stored_b(b, false);
    const int excess_bits = a.sample_bits == 16 ? 8 : 0;
    const Image_Form form{.width = static_cast<std::uint32_t>(a.width), .height = static_cast<std::uint32_t>(a.height)};
    return png_file(form, [&](std::uint32_t row, std::uint8_t* samples) {
        for (std::size_t x = 0; x < form.width; ++x, samples += 4) {
            const std::size_t i = row * std::size_t{form.width} + x;
            const Pixel in_a = of_a.at(i), in_b = of_b.at(i);
            const bool differs = !is_comparable || (is_one_kind && stored_a.at(i) != stored_b.at(i)) || in_a != in_b;
            const std::int32_t grey = (in_a[0] + in_a[1] + in_a[2]) / 3 >> excess_bits;
            const auto pale = static_cast<std::uint8_t>(192 + grey / 4);
            const auto strength = static_cast<std::uint8_t>(std::max(0, 160 - (distance(in_a, in_b) >> excess_bits)));
            const std::array<std::uint8_t, 4> pixel = differs ? std::array<std::uint8_t, 4>{255, strength, strength, 255}
                                                              : std::array<std::uint8_t, 4>{pale, pale, pale, 255};
            std::memcpy(samples, pixel.data(), pixel.size());
        }
    });
}

} // namespace vorna::drawing

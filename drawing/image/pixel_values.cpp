// Pixels of images as files store them, one by one.
#include "drawing/image/pixel_values.h"

#include "drawing/image/png_writer.h"

namespace vorna::drawing {

using Colors = Png_Image::Colors;

Pixel_Values::Pixel_Values(const Png_Image& image, bool as_colors) noexcept : image_(image), as_colors_(as_colors) {
    for (std::size_t c = 0; c < key_.size() && 2 * c + 1 < image.transparency.size(); ++c) {
        const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(image.transparency[2 * c + i]); };
        key_[c] = (byte(0) << 8 | byte(1)) & ((1 << image.sample_bits) - 1);
    }
}

Pixel Pixel_Values::at(std::size_t i) const noexcept {
    const std::uint8_t* samples = image_.samples.data() + i * image_.pixel_bytes();
    Pixel stored{};
    for (std::size_t c = 0; c < static_cast<std::size_t>(image_.channels()); ++c) {
        stored[c] = image_.sample_bytes() == 2 ? samples[2 * c] << 8 | samples[2 * c + 1] : samples[c];
    }
    return as_colors_ ? color_of(stored) : stored;
}

Pixel Pixel_Values::color_of(const Pixel& stored) const noexcept {
    const std::int32_t scale = most() / ((1 << image_.sample_bits) - 1);
    const std::int32_t alpha = stored == key_ ? 0 : most(); // of a kind without
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
Pixel Pixel_Values::color_of(std::size_t index) const noexcept {
    Pixel color{0, 0, 0, 255};
    for (std::size_t c = 0; c < 3 && 3 * index + c < image_.palette.size(); ++c) {
        color[c] = static_cast<std::uint8_t>(image_.palette[3 * index + c]);
    }
    if (index < image_.transparency.size()) {
        color[3] = static_cast<std::uint8_t>(image_.transparency[index]);
    }
    return color;
}

bool is_opaque(const Png_Image& image) {
    if (image.colors != Colors::rgb_alpha && image.colors != Colors::grey_alpha && image.transparency.empty()) {
        return true;
    }
    const Pixel_Values colors(image, true);
    const std::size_t count = image.samples.size() / image.pixel_bytes();
    for (std::size_t i = 0; i < count; ++i) {
        if (colors.at(i)[3] != colors.most()) {
            return false;
        }
    }
    return true;
}

std::string color_png(const Png_Image& image) {
    const Pixel_Values colors(image, true);
    const int excess_bits = image.sample_bits == 16 ? 8 : 0;
    Image_Form form{.width = static_cast<std::uint32_t>(image.width), .height = static_cast<std::uint32_t>(image.height)};
    form.opaque = is_opaque(image);
    form.reducible = true;
    return png_file(form, [&](std::uint32_t row, std::uint8_t* samples) {
        for (std::size_t x = 0; x < form.width; ++x) {
            for (const std::int32_t channel : colors.at(row * std::size_t{form.width} + x)) {
                *samples++ = static_cast<std::uint8_t>(channel >> excess_bits);
            }
        }
    });
}

} // namespace vorna::drawing

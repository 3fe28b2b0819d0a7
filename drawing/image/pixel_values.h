// Pixels of images as files store them, one by one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "drawing/image/png_reader.h"

namespace vorna::drawing {

// Up to four channels of up to 16 bits.
using Pixel = std::array<std::int32_t, 4>;

// Reads samples as they are stored, or colours, which are red, green, blue and alpha of 8 bits, or of 16 where samples have them.
// The image must outlive it.
class Pixel_Values {
public:
    Pixel_Values(const Png_Image& image, bool as_colors) noexcept;

    // i: counts from the left of the top row.
    Pixel at(std::size_t i) const noexcept;
    // The largest value of a channel of colours.
    std::int32_t most() const noexcept { return image_.sample_bits == 16 ? 65535 : 255; }

private:
    Pixel color_of(const Pixel& stored) const noexcept;
    Pixel color_of(std::size_t index) const noexcept;

    const Png_Image& image_;
    bool as_colors_;
    Pixel key_{-1}; // the stored samples that are transparent, in kinds that have such; none has a negative sample
};

// Whether every pixel's colour has the largest alpha.
bool is_opaque(const Png_Image& image);

// The colours as a PNG file with 8 bits a channel.
std::string color_png(const Png_Image& image);

} // namespace vorna::drawing

// Pictures in memory, for textures.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "host/color.h"

namespace vorna::drawing {

// How a texture goes on beyond its borders.
enum class Wrap { repeat, mirror, clamp };

struct Image {
    std::int32_t width = 0, height = 0;
    std::vector<VT_RGB32> pixels; // rows from the top down

    Image() = default;
    Image(std::int32_t columns, std::int32_t rows)
        : width(columns), height(rows), pixels(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) {}
    VT_RGB32* row(std::int32_t r) noexcept { return pixels.data() + std::ptrdiff_t{r} * width; }
    const VT_RGB32* row(std::int32_t r) const noexcept { return pixels.data() + std::ptrdiff_t{r} * width; }
};

// What is wrong with an image: what was expected and what was found, without the image's name.
struct Image_Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

inline constexpr std::int32_t largest_image_side = 16384;

// Is told how many pixels an image has, or takes the memory of, before there is any for them, and may throw.
using Before_Pixels = std::function<void(std::uint64_t pixels)>;

// The bytes of a PNG, JPEG, WebP, TGA, BMP or DDS file, told apart by their beginning. Throws Image_Error.
Image decode_image(std::string_view bytes, const Before_Pixels& before = {});

// The image in another size, side by side: the mean of what a pixel covers where it shrinks, linear between pixel centres where
// it grows. Means are of light, the squares of channels, in integers: every machine gets the same. Pixels count by their alpha,
// so that the colour of invisible ones does not bleed. The wraps say what lies beyond the borders.
Image resampled(const Image& image, std::int32_t width, std::int32_t height, Wrap across, Wrap along);

} // namespace vorna::drawing

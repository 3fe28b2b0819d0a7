// Images to test with, as files.
#pragma once

#include <string>

#include "drawing/image/image.h"
#include "drawing/image/image_file.h"

namespace vorna::drawing::model {

// Calls color(column, row from the top) for every pixel.
template <class Color> Image painted(std::int32_t width, std::int32_t height, Color color) {
    Image image(width, height);
    for (std::int32_t r = 0; r < height; ++r) {
        for (std::int32_t c = 0; c < width; ++c) {
            image.row(r)[c] = color(c, r);
        }
    }
    return image;
}

inline std::string png_file(const Image& image) {
    const auto* top = reinterpret_cast<const std::uint8_t*>(image.pixels.data());
    return png_of({top, std::ptrdiff_t{4} * image.width, image.width, image.height, Buffer_Format::rgb32}, VT_Palette());
}

// What is wrong with a file.
inline std::string message_of(std::string_view bytes) {
    try {
        decode_image(bytes);
    } catch (const Image_Error& error) {
        return error.what();
    }
    return "no error";
}

inline Image gradient() {
    return painted(40, 24, [](int c, int r) {
        return VT_RGB32{static_cast<std::uint8_t>(6 * c), static_cast<std::uint8_t>(10 * r), 90, 255};
    });
}

} // namespace vorna::drawing::model

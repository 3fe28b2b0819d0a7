// Images to test with, as files.
#pragma once

#include <stdexcept>
#include <string>

#include <png.h>

#include "app/scene/image.h"

namespace app::scene {

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
    png_image png = {};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(image.width);
    png.height = static_cast<png_uint_32>(image.height);
    png.format = PNG_FORMAT_BGRA;
    std::string bytes(PNG_IMAGE_PNG_SIZE_MAX(png), '\0');
    png_alloc_size_t size = bytes.size();
    if (!png_image_write_to_memory(&png, bytes.data(), &size, 0, image.pixels.data(), 0, nullptr)) {
        throw std::runtime_error(png.message);
    }
    bytes.resize(size);
    return bytes;
}

} // namespace app::scene

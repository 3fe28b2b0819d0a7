// Rasters as files.
#include "app/image_file.h"

#include <array>
#include <bit>
#include <stdexcept>

#include <png.h>

namespace app {

namespace {

struct Png_Colors {
    std::array<std::uint8_t, 3 * 256> red_green_blue;
};

Png_Colors png_colors_of(const VT_Palette& palette) {
    Png_Colors colors;
    for (std::size_t i = 0; i < 256; ++i) {
        const VT_RGB32 color = palette.color(static_cast<std::uint8_t>(i));
        colors.red_green_blue[3 * i] = color.red;
        colors.red_green_blue[3 * i + 1] = color.green;
        colors.red_green_blue[3 * i + 2] = color.blue;
    }
    return colors;
}

png_uint_32 png_format_of(Buffer_Format format) noexcept {
    switch (format) {
    case Buffer_Format::index8:
        return PNG_FORMAT_RGB_COLORMAP;
    case Buffer_Format::depth16:
        return PNG_FORMAT_LINEAR_Y;
    default:
        return PNG_FORMAT_BGRA;
    }
}

} // namespace

Raster raster_of(const Frame_Buffer& buffer) {
    return {buffer.rows[buffer.height - 1], buffer.bytes_per_row, buffer.width, buffer.height, buffer.format};
}

Raster raster_of(const VT_Shared_Image& image) {
    const bool up = image.bottom_up();
    return {image.row(up ? image.height() - 1 : 0), up ? -image.row_bytes() : image.row_bytes(), image.width(), image.height(),
            image.format()};
}

std::int32_t bytes_per_pixel(Buffer_Format format) noexcept {
    switch (format) {
    case Buffer_Format::index8:
        return 1;
    case Buffer_Format::depth16:
        return 2;
    default:
        return 4;
    }
}

std::string png_of(const Raster& raster, const VT_Palette& palette) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(raster.width);
    image.height = static_cast<png_uint_32>(raster.height);
    image.format = png_format_of(raster.format);
    image.colormap_entries = 256;
    const Png_Colors colors = png_colors_of(palette);
    // The library counts the distance of rows in components, and takes the top row's address also when rows run backwards.
    const std::ptrdiff_t component_bytes = raster.format == Buffer_Format::depth16 ? 2 : 1;
    const auto stride = static_cast<png_int_32>(raster.row_bytes / component_bytes);
    const std::uint8_t* first = stride < 0 ? raster.top + (raster.height - 1) * raster.row_bytes : raster.top;

    std::string bytes(PNG_IMAGE_PNG_SIZE_MAX(image), '\0');
    png_alloc_size_t size = bytes.size();
    if (!png_image_write_to_memory(&image, bytes.data(), &size, 0, first, stride, colors.red_green_blue.data())) {
        throw std::runtime_error(std::string("the picture cannot be written as PNG: ") + image.message);
    }
    bytes.resize(size);
    return bytes;
}

std::string raw_bytes_of(const Raster& raster) {
    const auto pixel_bytes = static_cast<std::size_t>(bytes_per_pixel(raster.format));
    const std::size_t row_bytes = static_cast<std::size_t>(raster.width) * pixel_bytes;
    std::string bytes;
    bytes.reserve(row_bytes * static_cast<std::size_t>(raster.height));
    for (std::int32_t r = 0; r < raster.height; ++r) {
        bytes.append(reinterpret_cast<const char*>(raster.top + r * raster.row_bytes), row_bytes);
    }
    if constexpr (std::endian::native == std::endian::big) {
        if (raster.format == Buffer_Format::depth16) {
            for (std::size_t i = 0; i < bytes.size(); i += 2) {
                std::swap(bytes[i], bytes[i + 1]);
            }
        }
    }
    return bytes;
}

} // namespace app

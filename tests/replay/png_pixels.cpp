// PNG files as they are stored.
#include "tests/replay/png_pixels.h"

#include <csetjmp>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include <png.h>

namespace replay_tests {

namespace {

struct Reading {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);

    Reading() = default;
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    ~Reading() { png_destroy_read_struct(&png, &info, nullptr); }

    // No object with a destructor lives where the library jumps back from.
    bool read(std::FILE* file) {
        if (setjmp(png_jmpbuf(png))) {
            return false;
        }
        png_init_io(png, file);
        png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
        return true;
    }
};

std::string hex(const std::uint8_t* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", bytes[i]);
        text += digits;
    }
    return text;
}

} // namespace

Png_Pixels read_png(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    Reading reading;
    if (!file || !reading.read(file.get())) {
        throw std::runtime_error(path + ": not a readable PNG file");
    }
    Png_Pixels pixels;
    pixels.width = png_get_image_width(reading.png, reading.info);
    pixels.height = png_get_image_height(reading.png, reading.info);
    pixels.bit_depth = png_get_bit_depth(reading.png, reading.info);
    pixels.color_type = png_get_color_type(reading.png, reading.info);
    const std::size_t row_bytes = png_get_rowbytes(reading.png, reading.info);
    pixels.pixel_bytes = row_bytes / pixels.width;
    for (std::uint32_t r = 0; r < pixels.height; ++r) {
        const png_bytep row = png_get_rows(reading.png, reading.info)[r];
        pixels.bytes.insert(pixels.bytes.end(), row, row + row_bytes);
    }
    png_colorp colors = nullptr;
    int count = 0;
    if (png_get_PLTE(reading.png, reading.info, &colors, &count)) {
        for (int i = 0; i < count; ++i) {
            pixels.palette.insert(pixels.palette.end(), {colors[i].red, colors[i].green, colors[i].blue});
        }
    }
    return pixels;
}

std::string difference(const Png_Pixels& drawn, const Png_Pixels& expected) {
    const auto form = [](const Png_Pixels& pixels) {
        return std::to_string(pixels.width) + " x " + std::to_string(pixels.height) + ", " + std::to_string(pixels.bit_depth) +
               " bits, colour type " + std::to_string(pixels.color_type);
    };
    if (form(drawn) != form(expected)) {
        return form(drawn) + ", expected " + form(expected);
    }
    if (drawn.palette != expected.palette) {
        return "another palette";
    }
    for (std::size_t i = 0; i < drawn.bytes.size(); i += drawn.pixel_bytes) {
        const std::string pixel = hex(&drawn.bytes[i], drawn.pixel_bytes);
        const std::string wanted = hex(&expected.bytes[i], drawn.pixel_bytes);
        if (pixel != wanted) {
            const std::size_t position = i / drawn.pixel_bytes;
            return "column " + std::to_string(position % drawn.width) + ", row " + std::to_string(position / drawn.width) +
                   " from the top: " + pixel + ", expected " + wanted;
        }
    }
    return {};
}

} // namespace replay_tests

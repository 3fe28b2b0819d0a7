// Rasters as files.
#include "drawing/image/image_file.h"

#include <bit>
#include <cstring>
#include <utility>

#include "drawing/image/png_writer.h"
#include "drawing/image/sha256.h"

namespace vorna::drawing {

namespace {

// Of 32 bits a pixel.
bool is_opaque(const Raster& raster) {
    std::uint8_t alphas = 255;
    for (std::int32_t row = 0; row < raster.height; ++row) {
        const std::uint8_t* pixels = raster.top + row * raster.row_bytes;
        for (std::int32_t i = 0; i < raster.width; ++i) {
            alphas &= pixels[4 * i + 3];
        }
    }
    return alphas == 255;
}

} // namespace

Image_Form image_form_of(const Raster& raster, const VT_Palette& palette) {
    const auto width = static_cast<std::uint32_t>(raster.width), height = static_cast<std::uint32_t>(raster.height);
    switch (raster.format) {
    case Buffer_Format::index8:
        return {.width = width, .height = height, .colors = Image_Form::Colors::palette, .palette = png_palette_of(palette)};
    case Buffer_Format::depth16:
        return {.width = width, .height = height, .sample_bits = 16, .colors = Image_Form::Colors::grey, .linear = true};
    default:
        return {.width = width, .height = height, .opaque = is_opaque(raster), .reducible = true};
    }
}

Raster raster_of(const Frame_Buffer& buffer) {
    return {buffer.rows[buffer.height - 1], buffer.bytes_per_row, buffer.width, buffer.height, buffer.format};
}

Raster raster_of(const VT_Shared_Image& image) {
    const bool up = image.bottom_up();
    return {image.row(up ? image.height() - 1 : 0), up ? -image.row_bytes() : image.row_bytes(), image.width(), image.height(),
            image.format()};
}

Raster cut(Raster raster, const VT_Int_Rectangle& window, const VT_Int_Rectangle& area) noexcept {
    raster.top += (window.top - area.top) * raster.row_bytes +
                  std::ptrdiff_t{area.left - window.left} * vorna::bytes_per_pixel(raster.format);
    raster.width = area.right - area.left + 1;
    raster.height = area.top - area.bottom + 1;
    return raster;
}

void store_samples(const std::uint8_t* pixels, std::int32_t width, Buffer_Format format, std::uint8_t* samples) {
    if (format == Buffer_Format::index8) {
        std::memcpy(samples, pixels, static_cast<std::size_t>(width));
        return;
    }
    const std::uint8_t* end = pixels + std::ptrdiff_t{width} * vorna::bytes_per_pixel(format);
    if (format == Buffer_Format::depth16) {
        for (; pixels < end; pixels += 2, samples += 2) {
            std::uint16_t depth;
            std::memcpy(&depth, pixels, sizeof depth);
            samples[0] = static_cast<std::uint8_t>(depth >> 8);
            samples[1] = static_cast<std::uint8_t>(depth & 0xFF);
        }
        return;
    }
    for (; pixels < end; pixels += 4, samples += 4) {
        samples[0] = pixels[2];
        samples[1] = pixels[1];
        samples[2] = pixels[0];
        samples[3] = pixels[3];
    }
}

std::string png_palette_of(const VT_Palette& palette) {
    std::vector<VT_RGB32> colors;
    for (std::size_t i = 0; i < 256; ++i) {
        colors.push_back(palette.color(static_cast<std::uint8_t>(i)));
    }
    return png_palette_of(colors);
}

std::string png_palette_of(const std::vector<VT_RGB32>& colors) {
    std::string bytes;
    for (const VT_RGB32& color : colors) {
        for (const std::uint8_t level : {color.red, color.green, color.blue}) {
            bytes += static_cast<char>(level);
        }
    }
    return bytes;
}

std::string png_of(const Raster& raster, const VT_Palette& palette) {
    return png_file(image_form_of(raster, palette), [&raster](std::uint32_t row, std::uint8_t* samples) {
        store_samples(raster.top + static_cast<std::ptrdiff_t>(row) * raster.row_bytes, raster.width, raster.format, samples);
    });
}

std::string digest_of(const Raster& raster) {
    Sha256 sum;
    std::vector<std::uint8_t> samples(static_cast<std::size_t>(raster.width) *
                                      static_cast<std::size_t>(vorna::bytes_per_pixel(raster.format)));
    for (std::int32_t row = 0; row < raster.height; ++row) {
        store_samples(raster.top + row * raster.row_bytes, raster.width, raster.format, samples.data());
        sum.add(samples.data(), samples.size());
    }
    return sum.finish();
}

std::string raw_bytes_of(const Raster& raster) {
    const auto pixel_bytes = static_cast<std::size_t>(vorna::bytes_per_pixel(raster.format));
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

} // namespace vorna::drawing

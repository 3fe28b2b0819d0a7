// Rasters as files: PNG, and plain rows of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "drawing/image/image_form.h"
#include "host/color.h"
#include "host/frame_buffer.h"
#include "host/geometry.h"

namespace vorna::drawing {

// A look at somebody's pixels.
struct Raster {
    const std::uint8_t* top = nullptr; // the top row
    std::ptrdiff_t row_bytes = 0;      // from a row to the one below it
    std::int32_t width = 0;
    std::int32_t height = 0;
    Buffer_Format format = Buffer_Format::rgb32;
};

Raster raster_of(const Frame_Buffer& buffer);
Raster raster_of(const VT_Shared_Image& image);
// The part of a window's raster that shows these device pixels of it.
Raster cut(Raster raster, const VT_Int_Rectangle& window, const VT_Int_Rectangle& area) noexcept;

// Pixels as a buffer holds them, in the order of PNG: red first, high byte first.
void store_samples(const std::uint8_t* pixels, std::int32_t width, Buffer_Format format, std::uint8_t* samples);

// Red, green and blue of all 256 colours, as PNG has them.
std::string png_palette_of(const VT_Palette& palette);
// Of these colours and no more.
std::string png_palette_of(const std::vector<VT_RGB32>& colors);

// The form of the file that png_of makes.
Image_Form image_form_of(const Raster& raster, const VT_Palette& palette);

// 32-bit colours keep all four bytes: as RGBA, as RGB when all are opaque, or as a palette when they are few in a small image.
// Palette indices become a palette PNG with the indices as stored, depths 16-bit greyscale. The palette is read for indices only.
std::string png_of(const Raster& raster, const VT_Palette& palette);

// The SHA-256 of the samples in the order of files.
std::string digest_of(const Raster& raster);

// The rows from the top down without padding: blue, green, red, alpha; index; depth with its low byte first.
std::string raw_bytes_of(const Raster& raster);

} // namespace vorna::drawing

// Decoders of image files by format: png_libpng.cpp and jpeg_libjpeg.cpp, or png_stb.cpp where those libraries are not available.
#pragma once

#include "drawing/image/image.h"

namespace vorna::drawing {

// Throw Image_Error.
Image decode_png(std::string_view bytes, const Before_Pixels& before);
Image decode_jpeg(std::string_view bytes, const Before_Pixels& before);

// For decoders, before they ask for memory. Throws Image_Error, and what is thrown before there are pixels.
void check_sides(std::uint32_t width, std::uint32_t height, const Before_Pixels& before);

} // namespace vorna::drawing

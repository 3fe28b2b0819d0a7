// Decoders of image files by format. png_stb.cpp and without_webp.cpp stand in where libpng, libjpeg or libwebp is not available.
#pragma once

#include <optional>

#include "drawing/image/image.h"

namespace vorna::drawing {

// Throw Image_Error.
Image decode_png(std::string_view bytes, const Before_Pixels& before);
Image decode_jpeg(std::string_view bytes, const Before_Pixels& before);
Image decode_webp(std::string_view bytes, const Before_Pixels& before);
Image decode_dds(std::string_view bytes, const Before_Pixels& before);
// None when it is neither: TGA files have no signature.
std::optional<Image> decode_tga_or_bmp(std::string_view bytes, const Before_Pixels& before);

// For decoders, before they ask for memory. Throws Image_Error, and what is thrown before there are pixels.
void check_sides(std::uint32_t width, std::uint32_t height, const Before_Pixels& before);

} // namespace vorna::drawing
